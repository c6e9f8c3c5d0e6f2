// aafbridge media: every clip of every sample is listed; linked media is looked for as
// written, relative to the AAF and beside it, and the exit status says whether any is missing.
#include <gtest/gtest.h>

#include <filesystem>

#include "EmbeddedFiles.h"

namespace {

namespace fs = std::filesystem;

size_t fileMobCount(const aafkit::File& file) {
    std::vector<aafkit::Object*> mobs;
    aafkit::getMobs(file, aafkit::kAAFFileMob, mobs);
    return mobs.size();
}

size_t essenceCount(const aafkit::File& file) {
    const std::vector<aafkit::Object*>* essence = nullptr;
    return aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_EssenceData, essence) == AAFRESULT_SUCCESS
               ? essence->size()
               : 0;
}

TEST(MediaCommand, EverySampleListsEveryClip) {
    SKIP_WITHOUT_SAMPLES();
    for (const std::string& path : testsupport::sampleFiles()) {
        const testsupport::ToolRun run = testsupport::runTool("media " + testsupport::quoted(path) + " --json", false);
        const nlohmann::json listing = nlohmann::json::parse(run.output, nullptr, false);
        ASSERT_FALSE(listing.is_discarded()) << path << ": " << run.output;
        const std::unique_ptr<aafkit::File> file = testsupport::openAaf(path);
        ASSERT_TRUE(file);
        EXPECT_EQ(listing["media"].size(), fileMobCount(*file)) << path;
        EXPECT_EQ(listing["embedded"], essenceCount(*file)) << path;
        // Nothing linked from these files exists on this machine.
        EXPECT_EQ(run.exitCode, listing["missing"] == 0 ? 0 : 1) << path;
        EXPECT_EQ(listing["missing"], listing["linked"]) << path;
    }
}

TEST(MediaCommand, EmbeddedSamplesStateTheirFormat) {
    SKIP_WITHOUT_SAMPLES();
    const testsupport::ToolRun run =
        testsupport::runTool("media " + testsupport::quoted(testsupport::sample("pro-tools/PT_PCM_Internal.aaf")));
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("\"1000hz-18dbs16b44.1k-01\"  sound  embedded  PCM 1ch 16000Hz 16bit, 32000 frames"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("1 media: 1 embedded, 0 linked and found, 0 missing"), std::string::npos) << run.output;
}

TEST(MediaCommand, FindsLinkedMediaAsWrittenRelativeAndBesideTheFile) {
    const std::string folder = testsupport::temporaryPath("media");
    fs::remove_all(folder);
    fs::create_directories(folder + "/sub");
    const std::vector<uint8_t> wav = testsupport::wavBytes(testsupport::knownPcm(1, 16, 48000, 10));
    for (const char* name : {"/sub/absolute.wav", "/sub/relative.wav", "/beside.wav"})
        testsupport::writeBytes(folder + name, wav);
    testsupport::writeClips(folder + "/in.aaf",
                            {testsupport::audioClip("Absolute", folder + "/sub/absolute.wav", 1, 16, 10),
                             testsupport::audioClip("Relative", "sub/relative.wav", 1, 16, 10),
                             testsupport::audioClip("Beside", "file:///Volumes/Editor%20Media/beside.wav", 1, 16, 10),
                             testsupport::audioClip("Gone", folder + "/sub/gone.wav", 1, 16, 10)});
    testsupport::ToolRun run = testsupport::runTool("media " + folder + "/in.aaf --json", false);
    EXPECT_EQ(run.exitCode, 1);
    const nlohmann::json listing = nlohmann::json::parse(run.output);
    std::map<std::string, std::pair<std::string, nlohmann::json>> found;
    for (const auto& item : listing["media"]) found[item["clip"]] = {item["how"], item["foundAt"]};
    EXPECT_EQ(found["Absolute"].first, "as written");
    EXPECT_EQ(found["Relative"].first, "relative to the AAF");
    EXPECT_EQ(found["Relative"].second, folder + "/sub/relative.wav");
    EXPECT_EQ(found["Beside"].first, "beside the AAF");
    EXPECT_EQ(found["Gone"].first, "missing");
    EXPECT_TRUE(found["Gone"].second.is_null());
    EXPECT_EQ(listing["missing"], 1);

    fs::remove(folder + "/sub/gone.wav");
    testsupport::writeBytes(folder + "/sub/gone.wav", wav);
    run = testsupport::runTool("media " + folder + "/in.aaf");
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("4 media: 0 embedded, 4 linked and found, 0 missing"), std::string::npos) << run.output;
    fs::remove_all(folder);

    run = testsupport::runTool("media " + folder + "/in.aaf");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(testsupport::runTool("media a.aaf --yaml").exitCode, 2);
}

}  // namespace

// aafbridge extract: the audio that comes out is the audio the essence streams hold,
// sample for sample; what cannot be extracted is named, and nothing half-written stays.
#include <gtest/gtest.h>

#include <filesystem>

#include "EmbeddedFiles.h"

namespace {

namespace fs = std::filesystem;
using testsupport::Pcm;

std::string freshFolder(const std::string& name) {
    const std::string folder = testsupport::temporaryPath(name);
    fs::remove_all(folder);
    return folder;
}

// The Data stream of the file's only EssenceData, read through aafkit's own objects.
std::vector<uint8_t> onlyEssenceStream(const aafkit::File& file) {
    const std::vector<aafkit::Object*>* essence = nullptr;
    const aafkit::StreamContent* stream = nullptr;
    std::vector<uint8_t> bytes;
    if (aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_EssenceData, essence) == AAFRESULT_SUCCESS &&
        essence->size() == 1 && aafkit::getStream(*essence->front(), PID_EssenceData_Data, stream) == AAFRESULT_SUCCESS)
        aafkit::readAll(*stream, bytes);
    return bytes;
}

// Where each sample's samples start in its stream, found by reading the stream's bytes:
// raw PCM from 0; the stored WAVs carry a 44-byte header; the stored AIFF-C carries
// FORM (12), COMM (8 + 38) and the SSND header with its offset and block size (16).
struct SampleEssence {
    const char* path;
    const char* extension;
    int channels, bits, rate;
    size_t dataOffset, frames;
    bool bigEndian;
};
const SampleEssence kSampleEssence[] = {
    {"pro-tools/PT_PCM_Internal.aaf", ".wav", 1, 16, 16000, 0, 32000, false},
    {"premiere/PR_WAV_Internal.aaf", ".wav", 1, 16, 48000, 44, 51252, false},
    {"premiere/PR_AIFF_Internal.aaf", ".aifc", 1, 16, 48000, 74, 51256, true},
    {"premiere/PR_Clip_length_beyond_EOF.aaf", ".wav", 1, 16, 48000, 44, 3792, false},
};

TEST(ExtractCommand, SamplesGiveTheAudioTheirStreamsHold) {
    SKIP_WITHOUT_SAMPLES();
    for (const SampleEssence& sample : kSampleEssence) {
        const std::string folder = freshFolder("extract-sample");
        const testsupport::ToolRun run =
            testsupport::runTool("extract " + testsupport::quoted(testsupport::sample(sample.path)) + " " + folder);
        ASSERT_EQ(run.exitCode, 0) << sample.path << ": " << run.output;
        const nlohmann::json manifest = testsupport::readJson(folder + "/manifest.json");
        ASSERT_EQ(manifest["files"].size(), 1u) << sample.path;
        const std::string name = manifest["files"][0]["file"];
        EXPECT_EQ(fs::path(name).extension(), sample.extension) << sample.path;

        const std::unique_ptr<aafkit::File> file = testsupport::openAaf(testsupport::sample(sample.path));
        ASSERT_TRUE(file);
        const Pcm held = testsupport::decodePcm(onlyEssenceStream(*file), sample.dataOffset, sample.frames,
                                                sample.channels, sample.bits, sample.bigEndian);
        const Pcm extracted = testsupport::readAudioFile(folder + "/" + name);
        EXPECT_EQ(extracted.channels, sample.channels) << sample.path;
        EXPECT_EQ(extracted.bits, sample.bits) << sample.path;
        EXPECT_EQ(extracted.rate, sample.rate) << sample.path;
        ASSERT_EQ(held.frames(), sample.frames) << sample.path;
        EXPECT_TRUE(extracted.samples == held.samples) << sample.path;
        fs::remove_all(folder);
    }
}

TEST(ExtractCommand, SaysWhenTheDescriptorClaimsMoreThanTheStreamHolds) {
    SKIP_WITHOUT_SAMPLES();
    const std::string folder = freshFolder("extract-claims");
    const testsupport::ToolRun run = testsupport::runTool(
        "extract " + testsupport::quoted(testsupport::sample("premiere/PR_AIFF_Internal.aaf")) + " " + folder);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_NE(run.output.find("claims 51260 frames; the stream holds 51256"), std::string::npos) << run.output;
    fs::remove_all(folder);
}

// Four clips: raw PCM with its source's timecode, raw PCM cut short, a stored WAV whose
// header is broken and one cut short.
class ExtractFromBuiltFile : public ::testing::Test {
protected:
    void SetUp() override {
        // Per test: ctest runs the tests in parallel.
        const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        path_ = testsupport::temporaryPath("extract-" + test + ".aaf");
        folder_ = freshFolder("extract-" + test);
        testsupport::writeClips(path_, {testsupport::audioClip("Dialogue 1/2: take \"A\"", "/none/a.wav", 2, 24, 1000),
                                        testsupport::audioClip("Cut short", "/none/b.wav", 1, 16, 1000),
                                        testsupport::audioClip("Broken", "/none/c.wav", 1, 16, 1000),
                                        testsupport::audioClip("Cut short 2", "/none/d.wav", 1, 16, 1000)});
    }
    void TearDown() override {
        std::remove(path_.c_str());
        fs::remove_all(folder_);
    }
    std::string path_, folder_;
};

TEST_F(ExtractFromBuiltFile, WritesWhatItCanAndNamesWhatFailed) {
    const Pcm dialogue = testsupport::knownPcm(2, 24, 48000, 1000);
    const Pcm shortOne = testsupport::knownPcm(1, 16, 48000, 1000);
    {
        std::unique_ptr<aafkit::File> file = testsupport::openAaf(path_);
        ASSERT_TRUE(file);
        testsupport::embedRawPcm(*file, "Dialogue 1/2: take \"A\"", dialogue, 1000,
                                 testsupport::rawPcm(dialogue, false));
        std::vector<uint8_t> cut = testsupport::rawPcm(shortOne, false);
        cut.resize(cut.size() / 2);
        testsupport::embedRawPcm(*file, "Cut short", shortOne, 1000, cut);
        const std::vector<uint8_t> wav = testsupport::wavBytes(shortOne);
        std::vector<uint8_t> broken = wav;
        broken[20] = 0x55;  // format tag: MP3 in a WAV header
        testsupport::embedStored(*file, "Broken", AUID_AAFWAVEDescriptor,
                                 std::vector<uint8_t>(wav.begin(), wav.begin() + 44), broken);
        std::vector<uint8_t> truncated = wav;
        truncated.resize(wav.size() - 100);
        testsupport::embedStored(*file, "Cut short 2", AUID_AAFWAVEDescriptor,
                                 std::vector<uint8_t>(wav.begin(), wav.begin() + 44), truncated);
        ASSERT_TRUE(file->save(path_ + ".new").ok());
        fs::rename(path_ + ".new", path_);
    }
    const testsupport::ToolRun run = testsupport::runTool("extract " + path_ + " " + folder_);
    EXPECT_EQ(run.exitCode, 1) << run.output;
    EXPECT_NE(run.output.find("\"Cut short\": the essence stream holds 1000 bytes; its descriptor claims 1000 frames"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("\"Broken\": the stored file: the header does not parse"), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("\"Cut short 2\": the stored file: the header declares 2000 sample bytes from offset 44; "
                              "there are only 1944 bytes"),
              std::string::npos)
        << run.output;

    // The good clip is written under a name every file system takes, with the time
    // reference of 01:00:00:00 at 48 kHz; the failed ones leave nothing behind.
    const nlohmann::json manifest = testsupport::readJson(folder_ + "/manifest.json");
    ASSERT_EQ(manifest["files"].size(), 1u) << manifest.dump();
    EXPECT_EQ(manifest["files"][0]["file"], "Dialogue 1_2_ take _A_.wav");
    EXPECT_EQ(manifest["errors"].size(), 3u);
    std::vector<std::string> written;
    for (const auto& entry : fs::directory_iterator(folder_)) written.push_back(entry.path().filename().string());
    std::sort(written.begin(), written.end());
    EXPECT_EQ(written, (std::vector<std::string>{"Dialogue 1_2_ take _A_.wav", "manifest.json"}));

    SF_INFO info;
    const Pcm extracted = testsupport::readAudioFile(folder_ + "/Dialogue 1_2_ take _A_.wav", &info);
    EXPECT_EQ(extracted.bits, 24);
    EXPECT_TRUE(extracted.samples == dialogue.samples);
    SNDFILE* sound = sf_open((folder_ + "/Dialogue 1_2_ take _A_.wav").c_str(), SFM_READ, &info);
    ASSERT_NE(sound, nullptr);
    SF_BROADCAST_INFO bext = {};
    EXPECT_EQ(sf_command(sound, SFC_GET_BROADCAST_INFO, &bext, sizeof bext), SF_TRUE);
    sf_close(sound);
    EXPECT_EQ(uint64_t(bext.time_reference_high) << 32 | bext.time_reference_low, 3600ull * 48000);
}

TEST_F(ExtractFromBuiltFile, DuplicateNamesAreNumberedAndPictureIsSkipped) {
    const Pcm pcm = testsupport::knownPcm(1, 16, 48000, 1000);
    {
        std::unique_ptr<aafkit::File> file = testsupport::openAaf(path_);
        ASSERT_TRUE(file);
        for (const char* clip : {"Cut short", "Dialogue 1/2: take \"A\""})
            testsupport::embedRawPcm(*file, clip, pcm, 1000, testsupport::rawPcm(pcm, false));
        testsupport::embedStored(*file, "Broken", AUID_AAFCDCIDescriptor, {}, {1, 2, 3});
        // Every clip gets the same name.
        for (aafkit::Object* master : [&] {
                 std::vector<aafkit::Object*> masters;
                 aafkit::getMobs(*file, aafkit::kAAFMasterMob, masters);
                 return masters;
             }())
            aafkit::setString(*master, PID_Mob_Name, L"Same");
        ASSERT_TRUE(file->save(path_ + ".new").ok());
        fs::rename(path_ + ".new", path_);
    }
    const testsupport::ToolRun run = testsupport::runTool("extract " + path_ + " " + folder_);
    EXPECT_EQ(run.exitCode, 0) << run.output;
    const nlohmann::json manifest = testsupport::readJson(folder_ + "/manifest.json");
    ASSERT_EQ(manifest["files"].size(), 2u) << manifest.dump();
    EXPECT_EQ(manifest["files"][0]["file"], "Same.wav");
    EXPECT_EQ(manifest["files"][1]["file"], "Same-2.wav");
    ASSERT_EQ(manifest["skipped"].size(), 1u);
    EXPECT_NE(manifest["skipped"][0]["reason"].get<std::string>().find("video essence"), std::string::npos);
}

// The samples alone under the AIFC descriptor the writer gives every sound clip: read in
// the Summary's layout (big-endian, 2 channels of 24 bits) and written as WAV.
TEST_F(ExtractFromBuiltFile, SamplesAloneFollowTheirDescriptorsSummary) {
    const Pcm pcm = testsupport::knownPcm(2, 24, 48000, 1000);
    {
        std::unique_ptr<aafkit::File> file = testsupport::openAaf(path_);
        ASSERT_TRUE(file);
        aafMobID_t id;
        aafkit::getMobId(*testsupport::fileMobOf(*file, "Dialogue 1/2: take \"A\""), PID_Mob_MobID, id);
        ASSERT_EQ(aafkit::addEssenceData(*file, id,
                                         std::make_unique<aafkit::MemoryStream>(testsupport::rawPcm(pcm, true))),
                  AAFRESULT_SUCCESS);
        ASSERT_TRUE(file->save(path_ + ".new").ok());
        fs::rename(path_ + ".new", path_);
    }
    const testsupport::ToolRun run = testsupport::runTool("extract " + path_ + " " + folder_);
    EXPECT_EQ(run.exitCode, 0) << run.output;
    const Pcm extracted = testsupport::readAudioFile(folder_ + "/Dialogue 1_2_ take _A_.wav");
    EXPECT_EQ(extracted.channels, 2);
    EXPECT_EQ(extracted.bits, 24);
    EXPECT_TRUE(extracted.samples == pcm.samples);
}

TEST(ExtractCommand, RefusesFilesWithoutEssenceAndFoldersItCannotWrite) {
    const std::string plain = testsupport::temporaryPath("extract-plain.aaf");
    testsupport::writeClips(plain, {testsupport::audioClip("Linked", "/none/a.wav", 1, 16, 100)});
    const std::string folder = freshFolder("extract-never");
    testsupport::ToolRun run = testsupport::runTool("extract " + plain + " " + folder);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("holds no embedded essence; nothing written"), std::string::npos) << run.output;
    EXPECT_FALSE(fs::exists(folder));
    std::remove(plain.c_str());

    SKIP_WITHOUT_SAMPLES();
    // A folder below a regular file cannot be made.
    const std::string blocker = testsupport::temporaryPath("extract-blocker");
    testsupport::writeBytes(blocker, {1});
    run = testsupport::runTool("extract " + testsupport::quoted(testsupport::sample("pro-tools/PT_PCM_Internal.aaf")) +
                               " " + blocker + "/out");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("cannot create " + blocker + "/out"), std::string::npos) << run.output;
    std::remove(blocker.c_str());
    EXPECT_EQ(testsupport::runTool("extract only-one").exitCode, 2);
}

}  // namespace

// aafbridge embed: linked WAV and AIFF-C media goes inside the file and comes back out
// with the same samples; the file stays readable by an independent compound-file reader
// and keeps every object it had; what cannot be embedded stays linked, with the reason.
#include <gtest/gtest.h>

#include <filesystem>

#include "EmbeddedFiles.h"
#include "support/OleFileCheck.h"
#include "support/TreeCompare.h"

namespace {

namespace fs = std::filesystem;
using testsupport::Pcm;

class EmbedCommand : public ::testing::Test {
protected:
    void SetUp() override {
        // One folder per test: ctest runs the tests in parallel.
        folder_ = testsupport::testFile("");
        fs::remove_all(folder_);
        fs::create_directories(folder_ + "/media");
    }
    void TearDown() override { fs::remove_all(folder_); }
    std::string at(const std::string& name) const { return folder_ + "/" + name; }

    // The trees with every file mob's descriptor and the essence set left out.
    static std::string differenceApartFromEssence(aafkit::File& before, aafkit::File& after) {
        for (aafkit::File* file : {&before, &after}) {
            file->contentStorage()->remove(PID_ContentStorage_EssenceData);
            std::vector<aafkit::Object*> mobs;
            aafkit::getMobs(*file, aafkit::kAAFAllMob, mobs);
            for (aafkit::Object* mob : mobs)
                if (aafkit::mobKind(*mob) == aafkit::kAAFFileMob) mob->remove(PID_SourceMob_EssenceDescription);
        }
        return testsupport::firstDifference(before, after);
    }

    std::string folder_;
};

TEST_F(EmbedCommand, WavAndAifcComeBackOutWithTheSameSamples) {
    const Pcm stereo = testsupport::knownPcm(2, 24, 48000, 48000);
    const Pcm mono = testsupport::knownPcm(1, 16, 48000, 30001);
    testsupport::writeBytes(at("media/stereo.wav"), testsupport::wavBytes(stereo));
    testsupport::writeBytes(at("media/mono.aifc"), testsupport::aifcBytes(mono));
    // One locator absolute, one relative to the AAF's folder.
    testsupport::writeClips(at("in.aaf"), {testsupport::audioClip("Stereo", at("media/stereo.wav"), 2, 24, 48000),
                                           testsupport::audioClip("Mono", "media/mono.aifc", 1, 16, 30001)});

    testsupport::ToolRun run = testsupport::runTool("embed " + at("in.aaf") + " " + at("out.aaf"));
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_NE(run.output.find("2 embedded, 0 linked"), std::string::npos) << run.output;

    run = testsupport::runTool("media " + at("out.aaf") + " --json", false);
    EXPECT_EQ(run.exitCode, 0);
    const nlohmann::json media = nlohmann::json::parse(run.output);
    EXPECT_EQ(media["embedded"], 2);

    run = testsupport::runTool("extract " + at("out.aaf") + " " + at("back"));
    ASSERT_EQ(run.exitCode, 0) << run.output;
    const Pcm stereoBack = testsupport::readAudioFile(at("back/Stereo.wav"));
    const Pcm monoBack = testsupport::readAudioFile(at("back/Mono.aifc"));
    EXPECT_EQ(stereoBack.channels, 2);
    EXPECT_EQ(stereoBack.bits, 24);
    EXPECT_EQ(stereoBack.rate, 48000);
    EXPECT_TRUE(stereoBack.samples == stereo.samples);
    EXPECT_EQ(monoBack.channels, 1);
    EXPECT_TRUE(monoBack.samples == mono.samples);
    // Stored files come out byte for byte.
    EXPECT_EQ(testsupport::readBytes(at("back/Mono.aifc")), testsupport::readBytes(at("media/mono.aifc")));

    if (testsupport::olefileAvailable()) {
        EXPECT_EQ(testsupport::olefileProblems({at("out.aaf")}), "");
    }
    std::unique_ptr<aafkit::File> before = testsupport::openAaf(at("in.aaf"));
    std::unique_ptr<aafkit::File> after = testsupport::openAaf(at("out.aaf"));
    ASSERT_TRUE(before && after);
    // The stereo clip's descriptor now describes the stored WAV, as Premiere writes it.
    aafkit::Object* descriptor = nullptr;
    aafkit::getEssenceDescriptor(*testsupport::fileMobOf(*after, "Stereo"), descriptor);
    ASSERT_NE(descriptor, nullptr);
    EXPECT_TRUE(descriptor->isA(AUID_AAFWAVEDescriptor));
    std::vector<uint8_t> summary;
    aafkit::getBytes(*descriptor, PID_WAVEDescriptor_Summary, summary);
    const std::vector<uint8_t> wav = testsupport::wavBytes(stereo);
    EXPECT_EQ(summary, std::vector<uint8_t>(wav.begin(), wav.begin() + 44));
    int64_t length = 0;
    aafkit::getInt64(*descriptor, PID_FileDescriptor_Length, length);
    EXPECT_EQ(length, 48000);
    EXPECT_EQ(differenceApartFromEssence(*before, *after), "");
}

TEST_F(EmbedCommand, WhatCannotBeEmbeddedStaysLinkedWithItsReason) {
    const Pcm stereo = testsupport::knownPcm(2, 16, 48000, 100);
    testsupport::writeBytes(at("media/stereo.wav"), testsupport::wavBytes(stereo));
    std::vector<uint8_t> broken = testsupport::wavBytes(stereo);
    broken.resize(20);  // the fmt chunk is cut off
    testsupport::writeBytes(at("media/broken.wav"), broken);
    testsupport::writeBytes(at("media/notes.txt"), {'h', 'e', 'l', 'l', 'o'});
    testsupport::writeClips(at("in.aaf"), {testsupport::audioClip("Missing", at("media/gone.wav"), 1, 16, 100),
                                           testsupport::audioClip("Wrong channels", at("media/stereo.wav"), 1, 16, 100),
                                           testsupport::audioClip("Broken", at("media/broken.wav"), 1, 16, 100),
                                           testsupport::audioClip("Not audio", at("media/notes.txt"), 1, 16, 100)});

    const testsupport::ToolRun run = testsupport::runTool("embed " + at("in.aaf") + " " + at("out.aaf"));
    EXPECT_EQ(run.exitCode, 1) << run.output;
    EXPECT_NE(run.output.find("stays linked \"Missing\": file not found: " + at("media/gone.wav")), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("stays linked \"Wrong channels\": the file has 2 channels; the clip's descriptor says 1"),
              std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("stays linked \"Broken\": " + at("media/broken.wav") + ": "), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("stays linked \"Not audio\": " + at("media/notes.txt") + ": "), std::string::npos)
        << run.output;
    EXPECT_NE(run.output.find("0 embedded, 4 linked"), std::string::npos) << run.output;

    // Written all the same, with every object as it was.
    std::unique_ptr<aafkit::File> before = testsupport::openAaf(at("in.aaf"));
    std::unique_ptr<aafkit::File> after = testsupport::openAaf(at("out.aaf"));
    ASSERT_TRUE(before && after);
    EXPECT_EQ(testsupport::firstDifference(*before, *after), "");
}

TEST_F(EmbedCommand, BadArgumentsWriteNothing) {
    testsupport::writeClips(at("in.aaf"), {testsupport::audioClip("Missing", at("media/gone.wav"), 1, 16, 100)});
    testsupport::ToolRun run = testsupport::runTool("embed " + at("in.aaf") + " " + at("no/such/folder/out.aaf"));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("aafbridge embed: cannot write " + at("no/such/folder/out.aaf")), std::string::npos)
        << run.output;
    run = testsupport::runTool("embed " + at("absent.aaf") + " " + at("out.aaf"));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_FALSE(fs::exists(at("out.aaf")));
    EXPECT_EQ(testsupport::runTool("embed " + at("in.aaf")).exitCode, 2);
    std::vector<std::string> left;
    for (const auto& entry : fs::directory_iterator(folder_)) left.push_back(entry.path().filename().string());
    std::sort(left.begin(), left.end());
    EXPECT_EQ(left, (std::vector<std::string>{"in.aaf", "media"}));
}

}  // namespace

// `aafbridge diff` as a user runs it: its exit status, its two outputs, timelines and AAF files
// mixed, and the inputs it must refuse.
#include <gtest/gtest.h>

#include "OtioDocuments.h"
#include "aafkit/File.h"

using namespace otiodoc;
using testsupport::runTool;
using testsupport::testFile;

namespace {

Json cut(double tailOfSecond) {
    return timeline({track("Video", {clip("A", 100, 50, 25, "/media/a.mov"), clip("B", 200, tailOfSecond, 25, "/media/b.mov"),
                                     clip("C", 300, 40, 25, "/media/c.mov")}),
                     track("Audio", {clip("A", 100, 50, 25, "/media/a.wav"), clip("B", 200, 60, 25, "/media/b.wav")})});
}

struct DiffCommand : testing::Test {
    std::string old = testFile(".old.otio"), now = testFile(".new.otio"), aaf = testFile(".aaf");
    void TearDown() override {
        for (const std::string& path : {old, now, aaf}) std::filesystem::remove(path);
    }
    testsupport::ToolRun diff(const std::string& a, const std::string& b, const std::string& flags = "") {
        return runTool("diff " + a + " " + b + flags);
    }
};

TEST_F(DiffCommand, ExitStatusSaysWhetherTheCutsDiffer) {
    otiotest::saveText(old, cut(60).dump());
    otiotest::saveText(now, cut(52).dump());
    testsupport::ToolRun same = diff(old, old);
    EXPECT_EQ(same.exitCode, 0) << same.output;
    EXPECT_NE(same.output.find("no changes"), std::string::npos) << same.output;

    const testsupport::ToolRun changed = diff(old, now);
    EXPECT_EQ(changed.exitCode, 1) << changed.output;
    EXPECT_NE(changed.output.find("tail trimmed            00:00:02:00-00:00:04:10 -> 00:00:02:00-00:00:04:02  B 00:00:08:00  by 8"),
              std::string::npos)
        << changed.output;
    EXPECT_NE(changed.output.find("V1  tail trimmed  "), std::string::npos) << "the whole cut names the track";
    EXPECT_NE(changed.output.find("A1: no changes"), std::string::npos) << changed.output;
    EXPECT_EQ(changed.output.find("(audio only)"), std::string::npos) << "the picture was trimmed, not the sound";
}

TEST_F(DiffCommand, AnAafFileAndTheTimelineItWasWrittenFromAreTheSame) {
    otiotest::saveText(old, cut(60).dump());
    ASSERT_EQ(runTool("write " + old + " " + aaf).exitCode, 0);
    const testsupport::ToolRun run = diff(aaf, old);
    EXPECT_EQ(run.exitCode, 0) << run.output;
    const std::string copy = aaf + ".copy.aaf";
    ASSERT_EQ(runTool("copy " + aaf + " " + copy).exitCode, 0);
    EXPECT_EQ(diff(aaf, copy).exitCode, 0);
    std::filesystem::remove(copy);
}

TEST_F(DiffCommand, JsonIsVersionedAndCarriesTheConformMap) {
    otiotest::saveText(old, cut(60).dump());
    otiotest::saveText(now, cut(52).dump());
    EXPECT_NE(diff(old, now, " --tracks V1-V3").output.find("aafbridge diff: neither cut has a track V2"), std::string::npos);
    const testsupport::ToolRun run = runTool("diff " + old + " " + now + " --json --tracks V1", false);
    ASSERT_EQ(run.exitCode, 1);
    const Json json = Json::parse(run.output);
    EXPECT_EQ(json["aafbridgeDiff"], 1);
    EXPECT_EQ(json["new"]["editRates"]["A1"], Json::parse("[25, 1]"));
    ASSERT_EQ(json["tracks"].size(), 1u);
    const Json& change = json["tracks"][0]["changes"][0];
    EXPECT_EQ(change["class"], "tail trimmed");
    EXPECT_EQ(change["amount"], 8);
    EXPECT_EQ(change["new"]["recordOut"], 102);
    EXPECT_EQ(change["source"]["name"], "B");
    // A whole, B's first 52 frames, then C 8 frames earlier.
    EXPECT_EQ(json["conformMap"], Json::parse(R"([
        {"fromTrack": "V1", "track": "V1", "oldIn": 0, "oldOut": 102, "newIn": 0, "newOut": 102},
        {"fromTrack": "V1", "track": "V1", "oldIn": 110, "oldOut": 150, "newIn": 102, "newOut": 142}])"));
}

TEST_F(DiffCommand, RefusesWhatItCannotCompareWithStatusTwo) {
    otiotest::saveText(old, cut(60).dump());
    testsupport::ToolRun run = diff(old, "/nonexistent/cut.aaf");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.output.find("/nonexistent/cut.aaf"), std::string::npos) << run.output;

    otiotest::saveText(now, "not a cut");
    run = diff(now, old);
    EXPECT_EQ(run.exitCode, 2) << run.output;

    aafkit::ProductIdentification id;
    id.productName = L"empty";
    ASSERT_TRUE(aafkit::File::createNew(id)->save(aaf).ok());
    run = diff(aaf, old);
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.output.find("composition"), std::string::npos) << run.output;

    EXPECT_EQ(diff(old, old, " --tracks X9").exitCode, 2);
    EXPECT_EQ(diff(old, old, " --tolerance -1").exitCode, 2);
}

}  // namespace

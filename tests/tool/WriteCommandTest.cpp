// aafbridge write: a JSON description becomes a file through the writer calls;
// bad descriptions and refused calls are named and leave no file behind.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

namespace {

const char* const kCut = R"({
  "clips": [{"name": "Shot", "path": "/media/shot.mov", "length": 100, "rate": [25, 1],
             "tracks": [{"kind": "video", "editRate": [25, 1], "length": 100, "width": 1280, "height": 720}]}],
  "composition": {"name": "Cut", "rate": [25, 1]},
  "tracks": [{"kind": "video", "events": [
    {"type": "filler", "length": 10},
    {"type": "clip", "clip": "Shot", "inPoint": 5, "length": 40}]}],
  "markers": [{"position": 12, "text": "here"}]
})";

// ctest runs the tests in parallel: each test has its own files.
std::string testFile(const std::string& suffix) {
    return testsupport::temporaryPath(std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
                                      suffix);
}

struct WriteCommand : testing::Test {
    std::string input = testFile("-input.json");
    std::string output = testFile("-output.aaf");
    void SetUp() override { std::filesystem::remove(output); }
    void TearDown() override {
        std::filesystem::remove(input);
        std::filesystem::remove(output);
    }
    testsupport::ToolRun write(const std::string& json) {
        std::ofstream(input) << json;
        return testsupport::runTool("write " + input + " " + output);
    }
};

TEST_F(WriteCommand, WritesWhatTheDescriptionSays) {
    ASSERT_EQ(write(kCut).exitCode, 0);
    // Writing again replaces the file.
    ASSERT_EQ(write(kCut).exitCode, 0);
    const testsupport::ToolRun read = testsupport::runTool("timeline " + output + " --json", false);
    const nlohmann::json shown = nlohmann::json::parse(read.output);
    ASSERT_EQ(shown["tracks"].size(), 1u);
    const nlohmann::json& events = shown["tracks"][0]["events"];
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0]["kind"], "filler");
    EXPECT_EQ(events[1]["name"], "Shot");
    EXPECT_EQ(events[1]["inPoint"], 5);
    EXPECT_EQ(shown["markers"][0]["text"], "here");
}

TEST_F(WriteCommand, BadDescriptionsAreNamedAndLeaveNothing) {
    const struct {
        std::string json, message;
    } cases[] = {
        {"{ not json", "is not valid JSON"},
        {R"({"composition": {"name": "C"}})", "missing \"rate\""},
        {R"({"composition": {"name": "C", "rate": [25, 1]}, "tracks": [{"kind": "video", "events": [
            {"type": "clip", "clip": 7, "length": 5}]}]})",
         "tracks[0].events[0]"},
    };
    for (const auto& c : cases) {
        const testsupport::ToolRun run = write(c.json);
        EXPECT_EQ(run.exitCode, 1) << c.json;
        EXPECT_NE(run.output.find(c.message), std::string::npos) << run.output;
        EXPECT_FALSE(std::filesystem::exists(output)) << c.json;
    }
}

TEST_F(WriteCommand, AFailureInsideTheWriteKeepsThePartialFile) {
    const testsupport::ToolRun run = write(R"({"composition": {"name": "C", "rate": [25, 1]},
      "tracks": [{"kind": "audio", "events": [{"type": "filler", "length": 10},
                                              {"type": "volume", "length": 10, "values": [0.5]}]}]})");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("0x8012010D"), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("holds what was written"), std::string::npos) << run.output;
    EXPECT_TRUE(std::filesystem::exists(output));
}

}  // namespace

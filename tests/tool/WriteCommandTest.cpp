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

using testsupport::testFile;

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

// A description around one value: a clip with a sound track, a composition and a track
// whose second event is a filler; `%` marks where the value goes.
std::string around(const std::string& json, const std::string& value) {
    return json.substr(0, json.find('%')) + value + json.substr(json.find('%') + 1);
}

const char* const kValued = R"({
  "clips": [{"name": "Shot", "path": "/media/shot.wav", "length": 100, "rate": [25, 1],
             "tracks": [{"kind": "audio", "editRate": [25, 1], "length": 100, %}]}],
  "composition": {"name": "Cut", "rate": [25, 1]},
  "tracks": [{"kind": "audio", "events": [{"type": "clip", "clip": "Shot", "length": 40}, %]}]
})";

TEST_F(WriteCommand, NumbersOutsideWhatTheWriterTakesAreNamedWithTheirPath) {
    const std::string ok = R"("channels": 2)", filler = R"({"type": "filler", "length": 4})";
    const struct {
        std::string track, event, message;
    } cases[] = {
        {ok, R"({"type": "filler", "length": -7})", "tracks[0].events[1].length: -7 is not a length"},
        {ok, R"({"type": "filler", "length": 1.5})", "tracks[0].events[1].length: 1.5 is not a length"},
        {ok, R"({"type": "filler", "length": 1e300})", "tracks[0].events[1].length: 1e+300 is not a length"},
        {ok, R"({"type": "filler", "length": 18446744073709551615})", "18446744073709551615 is not a length"},
        {ok, R"({"type": "clip", "clip": 4294967296, "length": 1})", "tracks[0].events[1].clip: 4294967296"},
        {ok, R"({"type": "clip", "clip": "Shot", "track": 0, "length": 1})", "tracks[0].events[1].track: 0"},
        {R"("channels": -1)", filler, "clips[0].tracks[0].channels: -1 is not a channel count"},
        {R"("channels": 256)", filler, "clips[0].tracks[0].channels: 256 is not a channel count"},
        {R"("sampleRate": 1e12)", filler, "clips[0].tracks[0].sampleRate: 1000000000000.0 is not a sample rate"},
        {R"("sampleRate": 0)", filler, "clips[0].tracks[0].sampleRate: 0 is not a sample rate"},
        {R"("editRate": [25, 0])", filler, "clips[0].tracks[0].editRate[1]: 0 is not a rate part"},
        {R"("editRate": [4294967295, 1])", filler, "clips[0].tracks[0].editRate[0]: 4294967295 is not a rate part"},
        {R"("sampleLength": -1)", filler, "clips[0].tracks[0].sampleLength: -1 is not a length"},
    };
    for (const auto& c : cases) {
        const std::string json = around(around(kValued, c.track), c.event);
        const testsupport::ToolRun run = write(json);
        EXPECT_EQ(run.exitCode, 1) << json;
        EXPECT_NE(run.output.find(c.message), std::string::npos) << run.output;
        EXPECT_FALSE(std::filesystem::exists(output)) << json;
    }
    // The same description with ordinary values is written: only the values were wrong.
    EXPECT_EQ(write(around(around(kValued, ok), filler)).exitCode, 0);
}

TEST_F(WriteCommand, NumbersPastWhatJsonReadingHoldsAreParseErrorsWithAPlace) {
    const struct {
        std::string json, message;
    } cases[] = {
        {R"({"composition": {"name": "x", "rate": [25, 1e999]}})", "line 1, column 48: number overflow parsing '1e999'"},
        {"{\n  \"composition\": -1e400}", "line 2, column 23: number overflow parsing '-1e400'"},
        {"[1, 2", "line 1, column 6: syntax error"},
    };
    for (const auto& c : cases) {
        const testsupport::ToolRun run = write(c.json);
        EXPECT_EQ(run.exitCode, 1) << c.json;
        EXPECT_NE(run.output.find("is not valid JSON: " + c.message), std::string::npos) << run.output;
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

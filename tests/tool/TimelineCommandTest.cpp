// aafbridge timeline shows what a host reads through the exported functions:
// its JSON agrees with the reference reads of every sample, and the README's
// main job (demo, then timeline) shows the demo composition.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

using Json = nlohmann::json;

namespace {

Json referenceFor(const std::string& sample) {
    const std::string relative = std::filesystem::relative(sample, testsupport::samplesDir()).string();
    std::ifstream in(std::string(AAFBRIDGE_SHARED_DIR) + "/reader-reference/" +
                     relative.substr(0, relative.size() - 4) + ".json");
    return Json::parse(in);
}

Json timeline(const std::string& path) {
    // Standard error carries the reader's error lines; the JSON is standard output alone.
    const testsupport::ToolRun run = testsupport::runTool("timeline " + testsupport::quoted(path) + " --json", false);
    EXPECT_EQ(run.exitCode, 0) << run.output;
    return Json::parse(run.output, nullptr, false);
}

void expectSameEvent(const Json& shown, const Json& reference, const std::string& where) {
    EXPECT_EQ(shown["kind"], reference["kind"]) << where;
    EXPECT_EQ(shown["length"], reference["GetEventLen"]) << where;
    if (reference["kind"] == "clip") {
        EXPECT_EQ(shown["inPoint"], reference["GetEventInPoint"]) << where;
        EXPECT_EQ(shown["name"], reference["GetEventName"]) << where;
        EXPECT_EQ(shown["id"], reference["GetEventId"]) << where;
        EXPECT_EQ(shown["slot"], reference["GetEventSlot"]) << where;
    }
    if (reference["kind"] == "transition") {
        EXPECT_EQ(shown["cutPoint"], reference["GetTransitionCutPoint"]) << where;
    }
}

TEST(TimelineCommand, AgreesWithTheReferenceReads) {
    SKIP_WITHOUT_SAMPLES();
    for (const std::string& path : testsupport::sampleFiles()) {
        const Json shown = timeline(path);
        const Json reference = referenceFor(path);
        ASSERT_FALSE(shown.is_discarded()) << path;
        EXPECT_EQ(shown["proTools"], reference["IsProToolsFile"] == 1) << path;
        EXPECT_EQ(shown["timecode"]["start"], reference["GetTimeCode"]["start"]) << path;
        ASSERT_EQ(shown["clips"].size(), reference["clips"].size()) << path;
        for (size_t c = 0; c < shown["clips"].size(); ++c)
            EXPECT_EQ(shown["clips"][c]["name"], reference["clips"][c]["LoadClipName"]) << path;
        ASSERT_EQ(shown["markers"].size(), reference["markers"].size()) << path;
        for (size_t m = 0; m < shown["markers"].size(); ++m)
            EXPECT_EQ(shown["markers"][m]["position"], reference["markers"][m]["GetMarkerPosition"]) << path;
        ASSERT_EQ(shown["tracks"].size(), reference["tracks"].size()) << path;
        for (size_t t = 0; t < shown["tracks"].size(); ++t) {
            const Json& events = shown["tracks"][t]["events"];
            ASSERT_EQ(events.size(), reference["tracks"][t]["events"].size()) << path << " track " << t;
            for (size_t e = 0; e < events.size(); ++e)
                expectSameEvent(events[e], reference["tracks"][t]["events"][e],
                                path + " track " + std::to_string(t) + " event " + std::to_string(e));
        }
    }
}

TEST(TimelineCommand, ShowsTheDemoComposition) {
    const std::string demo = testsupport::temporaryPath("demo.aaf");
    std::remove(demo.c_str());
    const testsupport::ToolRun written = testsupport::runTool("demo " + demo);
    ASSERT_EQ(written.exitCode, 0) << written.output;
    const Json shown = timeline(demo);
    ASSERT_EQ(shown["tracks"].size(), 2u);
    EXPECT_EQ(shown["tracks"][0]["type"], "video");
    EXPECT_EQ(shown["tracks"][1]["type"], "audio");
    EXPECT_EQ(shown["markers"].size(), 2u);
    bool transition = false, volumeCurve = false;
    for (const Json& track : shown["tracks"])
        for (const Json& event : track["events"]) {
            transition = transition || event["kind"] == "transition";
            volumeCurve = volumeCurve || (event["kind"] == "effect" && event["keyFrames"].size() > 1);
        }
    EXPECT_TRUE(transition);
    EXPECT_TRUE(volumeCurve);
    const testsupport::ToolRun text = testsupport::runTool("timeline " + demo);
    EXPECT_NE(text.output.find("tracks: 2"), std::string::npos) << text.output;
    std::remove(demo.c_str());
}

TEST(TimelineCommand, NamesAFileItCannotOpen) {
    const testsupport::ToolRun run = testsupport::runTool("timeline /nonexistent.aaf");
    EXPECT_NE(run.exitCode, 0);
    EXPECT_NE(run.output.find("/nonexistent.aaf"), std::string::npos) << run.output;
}

}  // namespace

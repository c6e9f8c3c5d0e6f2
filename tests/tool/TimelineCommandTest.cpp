// aafbridge timeline shows what a host reads through the exported functions:
// its JSON agrees with the reference reads of every sample and is, byte for byte, the
// view the OpenTimelineIO export reads whole; the README's main job (demo, then
// timeline) shows the demo composition; files it cannot show are reported, not crashed on.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "view/HostView.h"
#include "ToolRunner.h"
#include "aafbridge/aaf_writer.h"
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

    const std::string notAaf = testsupport::testFile(".aaf");
    std::ofstream(notAaf) << "not a compound file";
    const testsupport::ToolRun refused = testsupport::runTool("timeline " + notAaf);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.output.find("cannot open " + notAaf + " as an AAF file"), std::string::npos) << refused.output;
    std::remove(notAaf.c_str());
}

// A file written through the exported writer, filled by `fill`.
void writeFile(const std::string& path, const std::function<void(AafWriterContext*)>& fill) {
    AafWriterContext* context = nullptr;
    ASSERT_EQ(CreateAafWriterContext(&context), 0);
    fill(context);
    EXPECT_EQ(WriteAafFile(std::wstring(path.begin(), path.end()).c_str(), context), 0) << path;
    FreeAafWriterContext(context);
}

// What timeline --json prints is the view readHostView keeps whole, dumped.
void expectPrintsTheWholeView(const std::string& path) {
    nlohmann::ordered_json view;
    ASSERT_EQ(readHostView(path, view), 0) << path;
    const std::string whole = view.dump(2) + "\n";
    const testsupport::ToolRun run = testsupport::runTool("timeline " + testsupport::quoted(path) + " --json", false);
    EXPECT_EQ(run.exitCode, 0) << path;
    const auto differ = std::mismatch(whole.begin(), whole.end(), run.output.begin(), run.output.end());
    EXPECT_TRUE(run.output == whole) << path << " differs from byte " << differ.first - whole.begin() << ": "
                                     << run.output.substr(differ.second - run.output.begin(), 80);
}

TEST(TimelineCommand, PrintsExactlyTheViewTheExportReads) {
    const std::string demo = testsupport::testFile(".aaf");
    std::remove(demo.c_str());
    ASSERT_EQ(testsupport::runTool("demo " + demo).exitCode, 0);
    expectPrintsTheWholeView(demo);
    std::remove(demo.c_str());
    for (const std::string& path : testsupport::sampleFiles()) expectPrintsTheWholeView(path);
}

TEST(TimelineCommand, PrintsEmptyPartsAsEmptyArrays) {
    const std::string emptyTrack = testsupport::testFile("-track.aaf"), nothing = testsupport::testFile("-none.aaf");
    writeFile(emptyTrack, [](AafWriterContext* c) {
        InitComposition(25, 1, 1000, false, 0, L"Empty", c);
        AddTrackToComposition(true, 25.0, c);
    });
    writeFile(nothing, [](AafWriterContext*) {});

    const Json track = timeline(emptyTrack);
    ASSERT_FALSE(track.is_discarded());
    EXPECT_EQ(track["clips"], Json::array());
    EXPECT_EQ(track["markers"], Json::array());
    ASSERT_EQ(track["tracks"].size(), 1u);
    EXPECT_EQ(track["tracks"][0]["events"], Json::array());
    const Json none = timeline(nothing);
    ASSERT_FALSE(none.is_discarded());
    EXPECT_EQ(none["tracks"], Json::array());
    expectPrintsTheWholeView(emptyTrack);
    expectPrintsTheWholeView(nothing);

    const testsupport::ToolRun text = testsupport::runTool("timeline " + emptyTrack);
    EXPECT_EQ(text.exitCode, 0);
    EXPECT_NE(text.output.find("clips: 0\nmarkers: 0\ntracks: 1\n  track 0: "), std::string::npos) << text.output;
    EXPECT_NE(text.output.find(", 0 events\n"), std::string::npos) << text.output;
    std::remove(emptyTrack.c_str());
    std::remove(nothing.c_str());
}

// A lone UTF-16 surrogate in the file cannot be printed as UTF-8: both forms say so and
// fail, where they used to terminate.
TEST(TimelineCommand, ReportsTextItCannotShowInsteadOfCrashing) {
    const wchar_t unpaired[] = {L'A', wchar_t(0xD800), L'B', 0};
    const std::string clipName = testsupport::testFile("-clip.aaf"), markerText = testsupport::testFile("-marker.aaf");
    writeFile(clipName, [&](AafWriterContext* c) {
        InitComposition(25, 1, 1000, false, 0, L"Cut", c);
        const int32_t clip = AddClip(unpaired, L"/media/a.mov", 100, 0, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(clip, true, 25, 1, 100, c);
        AppendClipToTrack(AddTrackToComposition(true, 25.0, c), 0, 100, false, clip, 1, c);
    });
    writeFile(markerText, [&](AafWriterContext* c) {
        InitComposition(25, 1, 1000, false, 0, L"Cut", c);
        AddTrackToComposition(true, 25.0, c);
        AddMarker(5, unpaired, c);
    });
    for (const std::string& path : {clipName, markerText})
        for (const char* form : {"", " --json"}) {
            const testsupport::ToolRun run = testsupport::runTool("timeline " + path + form);
            EXPECT_EQ(run.exitCode, 1) << path << form << run.output;
            EXPECT_NE(run.output.find("aafbridge timeline: cannot show all of " + path + ": it holds text that is not valid Unicode"),
                      std::string::npos)
                << run.output;
        }
    std::remove(clipName.c_str());
    std::remove(markerText.c_str());
}

}  // namespace

// --sources adds, and only adds, each clip's source: the tape or file behind its master clip,
// the source timecode it plays, its media and channel.
TEST(TimelineSources, EveryClipSaysWhereItComesFromAndNothingElseChanges) {
    const std::string simple = testsupport::sample("media-composer/simple.aaf");
    if (!std::filesystem::exists(simple)) GTEST_SKIP() << "no " << simple;
    const testsupport::ToolRun run =
        testsupport::runTool("timeline " + testsupport::quoted(simple) + " --json --sources", false);
    ASSERT_EQ(run.exitCode, 0);
    Json withSources = Json::parse(run.output);
    int clips = 0;
    for (Json& track : withSources["tracks"])
        for (Json& event : track["events"]) {
            if (event["kind"] != "clip") continue;
            ++clips;
            ASSERT_TRUE(event.contains("source")) << event;
            const Json& source = event["source"];
            EXPECT_EQ(source["kind"], "import");
            EXPECT_EQ(source["name"], event["name"]);
            EXPECT_EQ(source["timecode"]["in"], "01:00:00:00");  // the clips play from their first frame
            EXPECT_EQ(source["embedded"], false);
            EXPECT_EQ(source["url"], "file:///Users/joshm/Desktop/DemoClips/" + event["name"].get<std::string>());
            event.erase("source");
        }
    EXPECT_GT(clips, 0);
    EXPECT_EQ(withSources, timeline(simple));

    const std::string text = testsupport::runTool("timeline " + testsupport::quoted(simple) + " --sources", false).output;
    EXPECT_NE(text.find("source import \"tech.fux (loop)-HD.mp4\" 01:00:00:00-01:00:30:00 linked"), std::string::npos)
        << text;
}

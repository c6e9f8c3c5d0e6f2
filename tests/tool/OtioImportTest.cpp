// aafbridge write IN.otio: hand-written OpenTimelineIO documents become files whose reader
// view follows the interchange rules; a broken document is refused, naming the item's path,
// and leaves no file. What is changed to fit the writer is tested in OtioConversionTest.
#include <string>
#include <vector>

#include "OtioDocuments.h"

namespace {

using namespace otiodoc;

TEST_F(OtioWrite, ClipsGiveBackTheirTransitionOverlapAndShareTheirMedia) {
    Json b = clip("B", 20, 40, 25, "/media/b.mov");
    b["markers"].push_back(marker("on B", 30, 25));
    const Json view = written(timeline(
        {track("Video", {gap(10, 25), clip("A", 100, 50, 25), transition(5, 5, 25), b}),
         track("Audio", {clip("A", 100, 60, 25)})},
        {marker("top", 12, 25)}, time(90000, 25)));
    const Json& events = view["tracks"][0]["events"];
    ASSERT_EQ(events.size(), 4u);
    EXPECT_EQ(events[0]["kind"], "filler");
    EXPECT_EQ(events[0]["length"], 10);
    EXPECT_EQ(events[1]["name"], "A");
    EXPECT_EQ(events[1]["inPoint"], 100);
    EXPECT_EQ(events[1]["length"], 55);
    EXPECT_EQ(events[2]["length"], 10);
    EXPECT_EQ(events[2]["cutPoint"], 5);
    EXPECT_EQ(events[3]["inPoint"], 15);
    EXPECT_EQ(events[3]["length"], 45);
    // One clip for A, with a picture and a sound track; its length covers both uses. The
    // catalogue follows the file's mob set, ordered by the (new, random) mob IDs.
    ASSERT_EQ(view["clips"].size(), 2u);
    const bool aFirst = view["clips"][0]["path"] == "/media/a.mov";
    EXPECT_EQ(view["clips"][aFirst ? 0 : 1]["path"], "/media/a.mov");
    EXPECT_EQ(view["clips"][aFirst ? 0 : 1]["tracks"].size(), 2u);
    EXPECT_EQ(view["clips"][aFirst ? 1 : 0]["path"], "/media/b.mov");
    EXPECT_EQ(view["tracks"][1]["events"][0]["name"], "A");
    // The clip's marker at its own time 30 sits 10 into B, which starts at 60.
    ASSERT_EQ(view["markers"].size(), 2u);
    EXPECT_EQ(view["markers"][0]["position"], 12);
    EXPECT_EQ(view["markers"][1]["position"], 70);
    EXPECT_EQ(view["markers"][1]["text"], "on B");
    EXPECT_EQ(view["timecode"], Json({{"start", 90000}, {"fps", 25}, {"drop", false}}));
}

TEST_F(OtioWrite, RatesAre2398AndTracksAtOtherRatesAreConverted) {
    const double ntsc = 24000.0 / 1001;
    // The sound track comes first; the picture's rate is still the composition's.
    const Json view = written(timeline({track("Audio", {clip("A", 0, 96096, 48000)}),
                                        track("Video", {clip("A", 0, 48, 23.976), clip("B", 10, 24, ntsc)})},
                                       Json::array(), time(86400, 24)));
    EXPECT_DOUBLE_EQ(view["tracks"][1]["editRate"].get<double>(), ntsc);
    EXPECT_EQ(view["timecode"]["fps"], 24);
    EXPECT_EQ(view["timecode"]["start"], 86400);
    EXPECT_EQ(view["tracks"][1]["events"][1]["length"], 24);
    // Every track is written at the composition's rate: 96096 samples at 48000 are 48 frames
    // at 23.976 (96000 would fall between two frames and be refused).
    EXPECT_EQ(view["tracks"][0]["events"][0]["length"], 48);
}

TEST_F(OtioWrite, ATransitionFirstOrLastFacesTheWritersOwnFiller) {
    const Json view = written(timeline({track("Video", {transition(0, 10, 25), clip("A", 0, 50, 25), transition(10, 0, 25)})}));
    const Json& events = view["tracks"][0]["events"];
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[0]["kind"], "filler");
    EXPECT_EQ(events[0]["length"], 10);
    EXPECT_EQ(events[1]["cutPoint"], 0);
    EXPECT_EQ(events[2]["length"], 50);
    EXPECT_EQ(events[3]["cutPoint"], 10);
    EXPECT_EQ(events[4]["kind"], "filler");
}

TEST_F(OtioWrite, EffectsFollowTheirClip) {
    Json a = clip("A", 0, 100, 25, "/media/a.wav");
    a["effects"] = {{{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"effect_name", "LinearTimeWarp"}, {"time_scalar", 2.0}},
                    effect("Volume", {0.0, 1.0}, {0.0, 1.0})};
    const Json view = written(timeline({track("Audio", {a})}));
    const Json& events = view["tracks"][0]["events"];
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[1]["kind"], "effect");
    EXPECT_EQ(events[2]["effect"], "gain");
    EXPECT_EQ(events[2]["length"], 100);
    EXPECT_EQ(events[2]["params"], Json({0.0, 1.0}));
    EXPECT_EQ(events[2]["keyFrames"], Json({0, 100}));
}

// Refused with or without --strict: there is nothing to convert.
TEST_F(OtioWrite, BadDocumentsAreNamed) {
    for (const std::string flags : {"", " --strict"}) {
        SCOPED_TRACE(flags);
        const testsupport::ToolRun broken = write("{\"OTIO_SCHEMA\": \"Timeline.1\", ", flags);
        EXPECT_EQ(broken.exitCode, 1);
        EXPECT_NE(broken.output.find("is not valid JSON: line 1, column"), std::string::npos) << broken.output;
        expectRefused({{"OTIO_SCHEMA", "Timeline.1"}, {"name", "Cut"}}, "document: missing \"tracks\"", flags);
        expectRefused({{"OTIO_SCHEMA", "Clip.2"}}, "document: Clip is not supported: expected a Timeline", flags);
        Json noRange = clip("A", 0, 10, 25);
        noRange.erase("source_range");
        expectRefused(timeline({track("Video", {noRange})}), "tracks.children[0].children[0]: missing \"source_range\"",
                      flags);
        Json badTime = clip("A", 0, 10, 25);
        badTime["source_range"]["duration"]["value"] = "ten";
        expectRefused(timeline({track("Video", {badTime})}),
                      "tracks.children[0].children[0].source_range.duration.value: expected a number", flags);
        expectRefused(timeline({track("Video", {clip("A", 0, -10, 25)})}),
                      "tracks.children[0].children[0].source_range.duration: negative", flags);
        expectRefused(timeline({track("Video", {clip("A", 0, 10, 25), clip("B", 0, 10, 0)})}),
                      "tracks.children[0].children[1].source_range.start_time.rate: not a usable frame rate", flags);
        expectRefused(timeline({clip("A", 0, 10, 25)}), "tracks.children[0]: Clip is not supported here", flags);
        // The tool's own description in a file named .otio is taken for OTIO, and says so.
        expectRefused({{"composition", {{"name", "C"}, {"rate", {25, 1}}}}}, "document: missing \"OTIO_SCHEMA\"", flags);
    }
}

TEST_F(OtioWrite, ATimelineInAFileOfAnyNameIsKnownByItsContent) {
    const std::string json = otiotest::testFile(".json");
    otiotest::saveText(json, timeline({track("Video", {gap(5, 25), clip("A", 100, 50, 25)})}).dump());
    const testsupport::ToolRun run = testsupport::runTool("write " + json + " " + output);
    std::filesystem::remove(json);
    ASSERT_EQ(run.exitCode, 0) << run.output;
    const Json events = otiotest::hostView(output)["tracks"][0]["events"];
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[1]["name"], "A");
    EXPECT_EQ(events[1]["inPoint"], 100);
    EXPECT_EQ(events[1]["length"], 50);
}

// Every value of a small document replaced in turn by a value of another kind: each write
// either succeeds or is refused, never crashes.
void collectPointers(const Json& value, const Json::json_pointer& at, std::vector<Json::json_pointer>& out) {
    out.push_back(at);
    if (value.is_object())
        for (const auto& [key, child] : value.items()) collectPointers(child, at / key, out);
    if (value.is_array())
        for (size_t i = 0; i < value.size(); ++i) collectPointers(value[i], at / i, out);
}

TEST_F(OtioWrite, ValuesOfTheWrongKindAreRefusedNeverFatal) {
    Json a = clip("A", 0, 50, 25);
    a["effects"].push_back(effect("Volume", {0.0, 1.0}, {0.0, 1.0}));
    const Json document = timeline({track("Audio", {a, transition(5, 5, 25), gap(20, 25)})}, {marker("m", 3, 25)},
                                   time(90000, 25));
    std::vector<Json::json_pointer> pointers;
    collectPointers(document, Json::json_pointer(), pointers);
    for (const Json& replacement : {Json(nullptr), Json(-1e300)}) {
        for (const Json::json_pointer& at : pointers) {
            Json changed = document;
            changed[at] = replacement;
            const testsupport::ToolRun run = write(changed.dump());
            EXPECT_TRUE(run.exitCode == 0 || run.exitCode == 1) << at.to_string() << " " << run.output;
        }
    }
}

}  // namespace

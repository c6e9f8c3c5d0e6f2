// Facts read by hand from the object trees of a few samples (aafbridge objects), checked
// through the exported functions: timecode and markers, transitions and cut points, and
// the values and key frames of an automated pan and of Pro Tools volume automation.
#include "HostView.h"
#include "support/SampleFiles.h"

namespace {

using readertest::json;

json read(const std::string& relative) {
    json view = readertest::hostView(testsupport::sample(relative));
    EXPECT_EQ(view["OpenAafFile"], 0) << relative;
    EXPECT_EQ(view["errorLines"], 0) << view["stderr"];
    return view;
}

TEST(SampleFacts, ResolveMarkersAndTimecode) {
    SKIP_WITHOUT_SAMPLES();
    json file = read("resolve/DR_Markers.aaf");
    EXPECT_EQ(file["GetTimeCode"], json({{"start", 86400}, {"fps", 24}, {"drop", 0}}));
    ASSERT_EQ(file["markers"].size(), 2u);
    EXPECT_EQ(file["markers"][0]["GetMarkerPosition"], 1440);
    EXPECT_EQ(file["markers"][1]["GetMarkerPosition"], 2160);
    EXPECT_EQ(file["markers"][1]["GetMarkerText"],
              "This is a maker note.  Marker is at position 01:01:30:00, last 10 frames and its color is purple.");
    ASSERT_EQ(file["tracks"].size(), 1u) << "timecode and event slots make no track";
    EXPECT_EQ(file["tracks"][0]["GetNumEvents"], 0);
}

TEST(SampleFacts, MediaComposerTransitionsAndCutPoints) {
    SKIP_WITHOUT_SAMPLES();
    json file = read("media-composer/transitions.aaf");
    EXPECT_EQ(file["GetTimeCode"]["fps"], 24);
    // Slot 9, the picture track; before it one timecode slot (no track) and seven others.
    const json& track = file["tracks"][7];
    EXPECT_EQ(track["GetTrackType"], 1);
    EXPECT_EQ(track["GetTrackEditRate"], 24.0);
    // Fillers by length, transitions by length and cut point, clips by length, in-point and slot.
    const json expected = json::parse(R"([["filler", 12], ["transition", 12, 0], ["clip", 117, 0, 3],
        ["transition", 48, 48], ["clip", 137, 75, 3], ["transition", 24, 12], ["filler", 89],
        ["transition", 48, 24], ["clip", 168, 31, 3], ["clip", 130, 0, 3], ["transition", 48, 48], ["filler", 48]])");
    json events = json::array();
    for (const json& e : track["events"]) {
        if (e["IsEventFiller"] == 1)
            events.push_back(json::array({"filler", e["GetEventLen"]}));
        else if (e["IsEventTransition"] == 1)
            events.push_back(json::array({"transition", e["GetEventLen"], e["GetTransitionCutPoint"]}));
        else
            events.push_back(json::array({"clip", e["GetEventLen"], e["GetEventInPoint"], e["GetEventSlot"]}));
    }
    EXPECT_EQ(events, expected);
}

TEST(SampleFacts, MediaComposerPanAutomation) {
    SKIP_WITHOUT_SAMPLES();
    json file = read("media-composer/MC_Audio_Pan.aaf");
    EXPECT_EQ(file["GetTimeCode"], json({{"start", 108000}, {"fps", 30}, {"drop", 0}})) << "30000/1001 rounds up";
    // Slot 3: a pan group over a sequence of two 30-frame clips.
    const json& events = file["tracks"][1]["events"];
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0]["GetEventLen"], 30);
    EXPECT_EQ(events[1]["GetEventLen"], 30);
    const json& pan = events[2];
    EXPECT_EQ(pan["IsEventEffect"], 1);
    EXPECT_EQ(pan["GetEffectType"], 1);
    EXPECT_EQ(pan["GetEventLen"], 60);
    EXPECT_EQ(pan["GetEffectParam"], json({0.0, 0.0, 0.5, 1.0, 0.0, 0.5})) << "only the pan curve is read";
    ASSERT_EQ(pan["GetEffectKeyFrame"].size(), 6u);
    EXPECT_EQ(pan["GetEffectKeyFrame"][0], 0);
    EXPECT_EQ(pan["GetEffectKeyFrame"][2], 30);
    EXPECT_EQ(pan["GetEffectKeyFrame"][4], 48);
    EXPECT_EQ(pan["GetEffectElementId"], json({"{0b0005990324a50678bb18c04da9a950}"}));
}

TEST(SampleFacts, ProToolsVolumeAutomation) {
    SKIP_WITHOUT_SAMPLES();
    json file = read("pro-tools/PT_Audio_Levels-noEMCC-noExpTracksAsMultiChannel.aaf");
    // The composition's first slot: [gain group over a clip, filler] three times, then an
    // automated gain group (the seventh component) over a 132300-sample clip.
    const json& events = file["tracks"][0]["events"];
    ASSERT_GT(events.size(), 10u);
    EXPECT_EQ(events[8]["IsEventFiller"], 1);
    EXPECT_EQ(events[8]["GetEventLen"], 1190700);
    EXPECT_EQ(events[9]["GetEventLen"], 132300);
    const json& gain = events[10];
    EXPECT_EQ(gain["GetEffectType"], 0);
    EXPECT_EQ(gain["GetEventLen"], 132300);
    // Control point times n/132300 of a 132300-long group land on n; values are n/2^29.
    EXPECT_EQ(gain["GetEffectKeyFrame"],
              json({0, 16152, 29912, 44824, 58136, 75544, 91928, 113688, 129816, 132300, 132300}));
    ASSERT_EQ(gain["GetEffectParam"].size(), 11u);
    EXPECT_DOUBLE_EQ(gain["GetEffectParam"][0].get<double>(), 2112855879.0 / 536870912.0);
    EXPECT_DOUBLE_EQ(gain["GetEffectParam"][2].get<double>(), 1.0);
    EXPECT_DOUBLE_EQ(gain["GetEffectParam"][3].get<double>(), 5493762.0 / 536870912.0);
    EXPECT_DOUBLE_EQ(gain["GetEffectParam"][10].get<double>(), 1071198298.0 / 536870912.0);
}

}  // namespace

// Facts read by hand from the object trees of a few samples (aafbridge objects), checked
// through the exported functions: timecode and markers, transitions and cut points, and
// the values and key frames of an automated pan.
#include "HostView.h"
#include "support/SampleFiles.h"

namespace {

// An open, parsed sample, closed at the end of the test.
class Sample {
public:
    explicit Sample(const std::string& relative) {
        testing::internal::CaptureStderr();
        opened_ = OpenAafFile(readertest::widen(testsupport::sample(relative)).c_str(), &context_) == 0;
        if (opened_) {
            ParseClips(context_);
            ParseComposition(context_);
        }
        errors_ = testing::internal::GetCapturedStderr();
    }
    ~Sample() {
        if (opened_) CloseFile(context_);
    }
    bool opened() const { return opened_; }
    const std::string& errors() const { return errors_; }
    AafParseContext* operator*() const { return context_; }

private:
    AafParseContext* context_ = nullptr;
    bool opened_ = false;
    std::string errors_;
};

std::wstring text(AAFRESULT (*call)(uint32_t, wchar_t*, int32_t, AafParseContext*), uint32_t index,
                  AafParseContext* c) {
    wchar_t buffer[513] = {};
    EXPECT_EQ(call(index, buffer, 512, c), 0);
    return buffer;
}

TEST(SampleFacts, ResolveMarkersAndTimecode) {
    SKIP_WITHOUT_SAMPLES();
    Sample s("resolve/DR_Markers.aaf");
    ASSERT_TRUE(s.opened());
    uint32_t start = 0, fps = 0, drop = 9;
    GetTimeCode(&start, &fps, &drop, *s);
    EXPECT_EQ(start, 86400u);
    EXPECT_EQ(fps, 24u);
    EXPECT_EQ(drop, 0u);
    ASSERT_EQ(GetNumMarkers(*s), 2u);
    EXPECT_EQ(GetMarkerPosition(0, *s), 1440);
    EXPECT_EQ(GetMarkerPosition(1, *s), 2160);
    EXPECT_EQ(text(GetMarkerText, 1, *s),
              L"This is a maker note.  Marker is at position 01:01:30:00, last 10 frames and its color is purple.");
    ASSERT_EQ(GetNumTracks(*s), 1u) << "timecode and event slots make no track";
    EXPECT_EQ(GetNumEvents(0, *s), 0u);
    EXPECT_EQ(s.errors(), "");
}

TEST(SampleFacts, MediaComposerTransitionsAndCutPoints) {
    SKIP_WITHOUT_SAMPLES();
    Sample s("media-composer/transitions.aaf");
    ASSERT_TRUE(s.opened());
    // Slot 9, the picture track; before it one timecode slot (no track) and seven others.
    const uint32_t t = 7;
    ASSERT_EQ(GetNumEvents(t, *s), 12u);
    EXPECT_EQ(GetTrackType(t, *s), 1u);
    EXPECT_EQ(GetTrackEditRate(t, *s), 24.0);
    struct Expected {
        const char* kind;
        int64_t length, inPointOrCut;
    };
    const Expected events[] = {{"filler", 12, 0},  {"transition", 12, 0},  {"clip", 117, 0},
                               {"transition", 48, 48}, {"clip", 137, 75},   {"transition", 24, 12},
                               {"filler", 89, 0},  {"transition", 48, 24}, {"clip", 168, 31},
                               {"clip", 130, 0},   {"transition", 48, 48}, {"filler", 48, 0}};
    for (uint32_t e = 0; e < 12; ++e) {
        const std::string kind = events[e].kind;
        EXPECT_EQ(GetEventLen(t, e, *s), events[e].length) << e;
        EXPECT_EQ(IsEventFiller(t, e, *s), kind == "filler" ? 1u : 0u) << e;
        EXPECT_EQ(IsEventTransition(t, e, *s), kind == "transition" ? 1u : 0u) << e;
        if (kind == "transition") {
            EXPECT_EQ(GetTransitionCutPoint(t, e, *s), events[e].inPointOrCut) << e;
        } else if (kind == "clip") {
            EXPECT_EQ(GetEventInPoint(t, e, *s), events[e].inPointOrCut) << e;
            EXPECT_EQ(GetEventSlot(t, e, *s), 3u) << e;
        }
    }
    uint32_t start = 0, fps = 0, drop = 9;
    GetTimeCode(&start, &fps, &drop, *s);
    EXPECT_EQ(fps, 24u);
}

TEST(SampleFacts, MediaComposerPanAutomation) {
    SKIP_WITHOUT_SAMPLES();
    Sample s("media-composer/MC_Audio_Pan.aaf");
    ASSERT_TRUE(s.opened());
    uint32_t start = 0, fps = 0, drop = 9;
    GetTimeCode(&start, &fps, &drop, *s);
    EXPECT_EQ(start, 108000u);
    EXPECT_EQ(fps, 30u) << "30000/1001 rounds up";
    EXPECT_EQ(drop, 0u);
    // Slot 3: a pan group over a sequence of two 30-frame clips.
    const uint32_t t = 1;
    ASSERT_EQ(GetNumEvents(t, *s), 3u);
    EXPECT_EQ(GetEventLen(t, 0, *s), 30);
    EXPECT_EQ(GetEventLen(t, 1, *s), 30);
    ASSERT_EQ(IsEventEffect(t, 2, *s), 1u);
    EXPECT_EQ(GetEffectType(t, 2, *s), 1u);
    EXPECT_EQ(GetEventLen(t, 2, *s), 60);
    const double pan[] = {0.0, 0.0, 0.5, 1.0, 0.0, 0.5};
    ASSERT_EQ(GetEffectParamCount(t, 2, *s), 6u) << "only the pan curve is a parameter the host reads";
    for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(GetEffectParam(t, 2, i, *s), pan[i]) << i;
    ASSERT_EQ(GetEffectKeyFrameCount(t, 2, *s), 6u);
    EXPECT_EQ(GetEffectKeyFrame(t, 2, 0, *s), 0);
    EXPECT_EQ(GetEffectKeyFrame(t, 2, 2, *s), 30);
    EXPECT_EQ(GetEffectKeyFrame(t, 2, 4, *s), 48);
    wchar_t id[40];
    ASSERT_EQ(GetEffectElementId(t, 2, 0, id, 39, *s), 0);
    EXPECT_STREQ(id, L"{0b0005990324a50678bb18c04da9a950}");
}

}  // namespace

// The queries over hand-built records: unit conversions, neutral answers for bad handles,
// indices and kinds, and the host's text copies.
#include <gtest/gtest.h>

#include <memory>

#include "AafParser/aaf_basic.h"
#include "model/Effect.h"
#include "model/Filler.h"
#include "model/TrackClip.h"
#include "model/Transition.h"

namespace {

constexpr uint32_t kNone = 0xFFFFFFFFu;
constexpr AAFRESULT kInvalid = AAFRESULT(0x80000003u);

// One track [clip, filler, transition, effect over the clip and the filler], one marker, no clips.
class Queries : public testing::Test {
protected:
    void SetUp() override {
        Events& events = c->sequence.events;
        clip = events.make<TrackClip>().release();
        clip->length = 100;
        clip->inPoint = 3;
        clip->clipName = c->texts.text(L"ABCDEFGHIJ");
        Filler* filler = events.make<Filler>().release();
        transition = events.make<Transition>().release();
        transition->length = 5;
        transition->cutPoint = 2;
        effect = events.make<Effect>().release();
        effect->length = 48;
        effect->inputs = {clip, filler};
        effect->keyFrames = {0.0, 0.5, 1.0};
        effect->params = {0.25, -1.0};
        Track track;
        track.events = {clip, filler, transition, effect};
        c->sequence.tracks.push_back(track);
        Marker marker;
        std::wcscpy(marker.text, L"note");
        c->sequence.markers.push_back(marker);
    }
    void TearDown() override { CloseFile(c); }

    AafParseContext* c = new AafParseContext;
    TrackClip* clip = nullptr;
    Transition* transition = nullptr;
    Effect* effect = nullptr;
};

TEST_F(Queries, LengthsRoundDownAndInPointsUpBySpeed) {
    EXPECT_EQ(GetEventLen(0, 0, c), 100);
    clip->speed = 0.5;
    EXPECT_EQ(GetEventLen(0, 0, c), 50);
    clip->length = 3;
    clip->speed = 1.5;
    EXPECT_EQ(GetEventLen(0, 0, c), 4);      // floor(4.5)
    EXPECT_EQ(GetEventInPoint(0, 0, c), 5);  // ceil(4.5)
    clip->inPoint = -3;
    EXPECT_EQ(GetEventInPoint(0, 0, c), -4);  // ceil(-4.5)
    transition->speed = 0.5;
    EXPECT_EQ(GetEventLen(0, 2, c), 2);
    EXPECT_EQ(GetTransitionCutPoint(0, 2, c), 2) << "cut points are not scaled";
}

TEST_F(Queries, KeyFramesScaleByRawLengthAndTruncate) {
    effect->speed = 2.0;  // ignored for key frames
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 1, c), 24);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 2, c), 48);
    effect->length = 10;
    effect->keyFrames = {1.0 / 3.0, -0.25};
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 0, c), 3);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 1, c), -2) << "toward zero, not down";
}

TEST_F(Queries, NeutralAnswersForBadHandleIndexOrKind) {
    wchar_t text[8];
    for (AafParseContext* handle : {static_cast<AafParseContext*>(nullptr), c}) {
        const uint32_t track = handle ? 1 : 0;  // null handle, or a track one past the end
        EXPECT_EQ(GetNumEvents(track, handle), 0u);
        EXPECT_EQ(GetTrackType(track, handle), 0u);
        EXPECT_EQ(GetTrackEditRate(track, handle), 0.0);
        EXPECT_EQ(GetEventLen(track, 0, handle), 0);
        EXPECT_EQ(GetEventInPoint(track, 0, handle), 0);
        EXPECT_EQ(GetEventSlot(track, 0, handle), 0u);
        EXPECT_EQ(GetEventPhysicalNumber(track, 0, handle), 0u);
        EXPECT_EQ(GetEventName(track, 0, text, 4, handle), kInvalid);
        EXPECT_EQ(GetEventId(track, 0, text, 4, handle), kInvalid);
        EXPECT_EQ(IsEventFiller(track, 1, handle), 0u);
        EXPECT_EQ(IsEventTransition(track, 2, handle), 0u);
        EXPECT_EQ(GetTransitionCutPoint(track, 2, handle), -1);
        EXPECT_EQ(IsEventEffect(track, 3, handle), 0u);
        EXPECT_EQ(GetEffectType(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectNumInputs(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectParamCount(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectParam(track, 3, 0, handle), 0.0);
        EXPECT_EQ(GetEffectKeyFrameCount(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectKeyFrame(track, 3, 0, handle), 0);
        EXPECT_EQ(GetEffectElementId(track, 3, 0, text, 4, handle), kInvalid);
        // No clips: index 0 is past the end.
        EXPECT_EQ(GetClipIsVideo(0, 0, handle), kNone);
        EXPECT_EQ(LoadClipType(0, handle), 0u);
        EXPECT_EQ(LoadClipName(0, text, 4, handle), kInvalid);
        EXPECT_EQ(GetMarkerPosition(1, handle), -1);
        EXPECT_EQ(GetMarkerText(1, text, 4, handle), kInvalid);
    }
    EXPECT_EQ(GetNumTracks(nullptr), 0u);
    EXPECT_EQ(GetNumMarkers(nullptr), 0u);
    EXPECT_EQ(GetNumClips(nullptr), 0u);
    EXPECT_EQ(ParseClips(nullptr), 0);
    EXPECT_EQ(ParseComposition(nullptr), 0);
    uint32_t start = 1, fps = 1, drop = 1;
    GetTimeCode(&start, &fps, &drop, nullptr);
    EXPECT_EQ(start + fps + drop, 3u) << "a null handle writes nothing";
    c->sequence.timecodeStart = 108000;
    GetTimeCode(&start, nullptr, nullptr, c);
    EXPECT_EQ(start, 108000u) << "only where asked";
    // An event index equal to the count is a bad index (0), not a wrong kind (kNone).
    EXPECT_EQ(GetEventSlot(0, 4, c), 0u);
    EXPECT_EQ(GetEventSlot(0, 1, c), kNone);
    // Indices past an effect's lists; text calls with a null buffer or a size below 1.
    EXPECT_EQ(GetEffectParam(0, 3, 2, c), 0.0);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 3, c), 0);
    EXPECT_EQ(GetEffectElementId(0, 3, 2, text, 4, c), kInvalid);
    EXPECT_EQ(GetEventName(0, 0, nullptr, 4, c), kInvalid);
    EXPECT_EQ(GetEventId(0, 0, text, 0, c), kInvalid);
}

TEST_F(Queries, TextCopiesEndOnePastTheLastCharacter) {
    wchar_t buffer[8];
    std::wmemset(buffer, L'#', 8);
    ASSERT_EQ(GetEventName(0, 0, buffer, 4, c), 0);
    EXPECT_EQ(std::wstring(buffer, 6), std::wstring(L"ABCD\0#", 6)) << "zero in the fifth slot, sixth untouched";
    std::wmemset(buffer, L'#', 8);
    ASSERT_EQ(GetMarkerText(0, buffer, 6, c), 0);
    EXPECT_EQ(std::wstring(buffer, 8), std::wstring(L"note\0\0##", 8)) << "a short text is zero-padded up to n only";
}

}  // namespace

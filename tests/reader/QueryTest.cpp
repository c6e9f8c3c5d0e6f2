// The composition and catalogue queries over hand-built records: unit conversions,
// neutral answers for bad handles, indices and kinds, and the host's text copies.
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

// One track [clip, filler, transition, effect over the clip] and one marker.
class Queries : public testing::Test {
protected:
    void SetUp() override {
        clip = new TrackClip;
        clip->length = 100;
        clip->inPoint = 3;
        clip->slotId = 2;
        clip->physicalNumber = 7;
        std::wcscpy(clip->clipName, L"ABCDEFGHIJ");
        std::wcscpy(clip->mobIdText, L"{id}");
        auto* filler = new Filler;
        filler->length = 10;
        transition = new Transition;
        transition->length = 5;
        transition->cutPoint = 2;
        effect = new Effect;
        effect->length = 48;
        effect->numInputs = 1;
        effect->effectType = 0;
        effect->inputs = {clip, filler};
        effect->keyFrames = {0.0, 0.5, 1.0};
        effect->params = {0.25, -1.0};
        Track track;
        track.index = 1;
        track.editRate = 25.0;
        track.isVideo = 1;
        track.events = {clip, filler, transition, effect};
        context->sequence.tracks.push_back(track);
        Marker marker;
        marker.position = 99;
        std::wcscpy(marker.text, L"note");
        context->sequence.markers.push_back(marker);
    }
    void TearDown() override { CloseFile(context.release()); }

    std::unique_ptr<AafParseContext> context = std::make_unique<AafParseContext>();
    TrackClip* clip = nullptr;
    Transition* transition = nullptr;
    Effect* effect = nullptr;
};

TEST_F(Queries, LengthsRoundDownAndInPointsUpBySpeed) {
    AafParseContext* c = context.get();
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
    AafParseContext* c = context.get();
    effect->speed = 2.0;  // ignored for key frames
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 0, c), 0);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 1, c), 24);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 2, c), 48);
    effect->length = 10;
    effect->keyFrames = {1.0 / 3.0, -0.25};
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 0, c), 3);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 1, c), -2) << "toward zero, not down";
}

TEST_F(Queries, AnswersForEachKind) {
    AafParseContext* c = context.get();
    EXPECT_EQ(GetNumTracks(c), 1u);
    EXPECT_EQ(GetNumEvents(0, c), 4u);
    EXPECT_EQ(GetTrackType(0, c), 1u);
    EXPECT_EQ(GetTrackEditRate(0, c), 25.0);
    EXPECT_EQ(GetEventSlot(0, 0, c), 2u);
    EXPECT_EQ(GetEventPhysicalNumber(0, 0, c), 7u);
    EXPECT_EQ(IsEventFiller(0, 1, c), 1u);
    EXPECT_EQ(IsEventTransition(0, 2, c), 1u);
    EXPECT_EQ(IsEventEffect(0, 3, c), 1u);
    EXPECT_EQ(GetEffectType(0, 3, c), 0u);
    EXPECT_EQ(GetEffectNumInputs(0, 3, c), 1u);
    EXPECT_EQ(GetEffectParamCount(0, 3, c), 2u);
    EXPECT_EQ(GetEffectParam(0, 3, 1, c), -1.0);
    EXPECT_EQ(GetEffectKeyFrameCount(0, 3, c), 3u);
    EXPECT_EQ(GetMarkerPosition(0, c), 99);
}

TEST_F(Queries, NeutralAnswersForBadHandleIndexOrKind) {
    AafParseContext* c = context.get();
    wchar_t text[8];
    for (AafParseContext* handle : {static_cast<AafParseContext*>(nullptr), c}) {
        const uint32_t track = handle ? 1 : 0;  // null handle, or a track one past the end
        EXPECT_EQ(GetNumEvents(track, handle), 0u);
        EXPECT_EQ(GetTrackType(track, handle), 0u);
        EXPECT_EQ(GetTrackEditRate(track, handle), 0.0);
        EXPECT_EQ(GetEventLen(track, 0, handle), 0);
        EXPECT_EQ(GetEventSlot(track, 0, handle), 0u);
        EXPECT_EQ(GetEventPhysicalNumber(track, 0, handle), 0u);
        EXPECT_EQ(IsEventFiller(track, 1, handle), 0u);
        EXPECT_EQ(GetTransitionCutPoint(track, 2, handle), -1);
        EXPECT_EQ(GetEventInPoint(track, 0, handle), 0);
        EXPECT_EQ(IsEventTransition(track, 2, handle), 0u);
        EXPECT_EQ(IsEventEffect(track, 3, handle), 0u);
        EXPECT_EQ(GetEffectType(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectNumInputs(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectParamCount(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectKeyFrameCount(track, 3, handle), kNone);
        EXPECT_EQ(GetEffectElementId(track, 3, 0, text, 4, handle), kInvalid);
        EXPECT_EQ(GetEventId(track, 0, text, 4, handle), kInvalid);
        EXPECT_EQ(GetEffectKeyFrame(track, 3, 0, handle), 0);
        EXPECT_EQ(GetEffectParam(track, 3, 0, handle), 0.0);
        EXPECT_EQ(GetEventName(track, 0, text, 4, handle), kInvalid);
    }
    EXPECT_EQ(GetNumTracks(nullptr), 0u);
    EXPECT_EQ(GetNumMarkers(nullptr), 0u);
    EXPECT_EQ(GetMarkerPosition(0, nullptr), -1);
    EXPECT_EQ(GetMarkerText(0, text, 4, nullptr), kInvalid);
    EXPECT_EQ(ParseClips(nullptr), 0);
    EXPECT_EQ(ParseComposition(nullptr), 0);
    EXPECT_EQ(GetNumClips(nullptr), 0u);
    EXPECT_EQ(LoadClipType(0, nullptr), 0u);
    EXPECT_EQ(GetMarkerPosition(1, c), -1);
    EXPECT_EQ(GetMarkerText(1, text, 4, c), kInvalid);
    // An event index equal to the count is a bad index, not a wrong kind.
    EXPECT_EQ(GetEventSlot(0, 4, c), 0u);
    EXPECT_EQ(GetEventInPoint(0, 4, c), 0);
    // Wrong kinds.
    EXPECT_EQ(GetEventSlot(0, 1, c), kNone);
    EXPECT_EQ(GetEventPhysicalNumber(0, 2, c), kNone);
    EXPECT_EQ(GetEventInPoint(0, 1, c), 0);
    EXPECT_EQ(GetTransitionCutPoint(0, 0, c), -1);
    EXPECT_EQ(IsEventEffect(0, 0, c), 0u);
    EXPECT_EQ(GetEffectType(0, 0, c), kNone);
    EXPECT_EQ(GetEffectNumInputs(0, 0, c), kNone);
    EXPECT_EQ(GetEffectParamCount(0, 0, c), kNone);
    EXPECT_EQ(GetEffectKeyFrameCount(0, 0, c), kNone);
    EXPECT_EQ(GetEffectParam(0, 3, 2, c), 0.0);
    EXPECT_EQ(GetEffectKeyFrame(0, 3, 3, c), 0);
    // Text calls: null buffer, size below 1, element past the inputs.
    EXPECT_EQ(GetEventName(0, 0, nullptr, 4, c), kInvalid);
    EXPECT_EQ(GetEventId(0, 0, text, 0, c), kInvalid);
    EXPECT_EQ(GetEffectElementId(0, 3, 2, text, 4, c), kInvalid);
    EXPECT_EQ(GetEffectElementId(0, 0, 0, text, 4, c), kInvalid);
}

TEST_F(Queries, TextCopiesEndOnePastTheLastCharacter) {
    AafParseContext* c = context.get();
    wchar_t buffer[8];
    std::wmemset(buffer, L'#', 8);
    ASSERT_EQ(GetEventName(0, 0, buffer, 4, c), 0);
    EXPECT_EQ(std::wstring(buffer, 6), std::wstring(L"ABCD\0#", 6)) << "zero in the fifth slot, sixth untouched";
    std::wmemset(buffer, L'#', 8);
    ASSERT_EQ(GetMarkerText(0, buffer, 6, c), 0);
    EXPECT_EQ(std::wstring(buffer, 8), std::wstring(L"note\0\0##", 8)) << "a short text is zero-padded up to n only";
    ASSERT_EQ(GetEffectElementId(0, 3, 0, buffer, 7, c), 0);
    EXPECT_STREQ(buffer, L"{id}");
    ASSERT_EQ(GetEffectElementId(0, 3, 1, buffer, 7, c), 0);
    EXPECT_STREQ(buffer, L"") << "an input that is not a clip has no id";
    ASSERT_EQ(GetEventId(0, 1, buffer, 7, c), 0);
    EXPECT_STREQ(buffer, L"");
}

TEST_F(Queries, TimecodeWritesOnlyWhereAsked) {
    context->sequence.timecodeStart = 108000;
    context->sequence.timecodeFps = 30;
    context->sequence.dropFrame = 1;
    uint32_t start = 1, fps = 1, drop = 7;
    GetTimeCode(&start, nullptr, &drop, context.get());
    EXPECT_EQ(start, 108000u);
    EXPECT_EQ(fps, 1u);
    EXPECT_EQ(drop, 1u);
    GetTimeCode(nullptr, nullptr, nullptr, context.get());
    GetTimeCode(&start, &fps, &drop, nullptr);
    EXPECT_EQ(fps, 1u) << "a null handle writes nothing";
}

TEST(ClipQueries, TrackFlagsTypesAndBadIndices) {
    AafParseContext context;
    SourceClip clip;
    clip.tracks = {{{}, 1, 1}, {{}, 0, 2}};
    clip.hasAudio = 1;
    std::wcscpy(clip.name, L"clip");
    context.clips.push_back(clip);
    EXPECT_EQ(GetNumClips(&context), 1u);
    EXPECT_EQ(GetClipIsVideo(0, 0, &context), 3u);
    EXPECT_EQ(GetClipIsVideo(0, 1, &context), 4u);
    EXPECT_EQ(GetClipIsVideo(0, 2, &context), kNone);
    EXPECT_EQ(GetClipIsVideo(1, 0, &context), kNone);
    EXPECT_EQ(GetClipIsVideo(0, 0, nullptr), kNone);
    EXPECT_EQ(LoadClipType(0, &context), 2u);
    context.clips[0].hasVideo = 1;
    EXPECT_EQ(LoadClipType(0, &context), 3u);
    EXPECT_EQ(LoadClipType(1, &context), 0u);
    wchar_t buffer[8];
    EXPECT_EQ(LoadClipID(0, nullptr, 4, &context), kInvalid);
    EXPECT_EQ(LoadClipName(1, buffer, 4, &context), kInvalid);
    EXPECT_EQ(LoadClipPath(0, buffer, 4, nullptr), kInvalid);
    ASSERT_EQ(LoadClipName(0, buffer, 2, &context), 0);
    EXPECT_EQ(std::wstring(buffer, 3), std::wstring(L"cl\0", 3));
    ASSERT_EQ(LoadClipPath(0, buffer, 4, &context), 0);
    EXPECT_STREQ(buffer, L"") << "no locator gives an empty path";
}

}  // namespace

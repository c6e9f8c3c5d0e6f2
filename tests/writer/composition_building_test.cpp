#include <gtest/gtest.h>

#include <string>

#include "AAFWriter/aaf_composition.h"
#include "WriterTestSupport.h"
#include "aafkit/ResultCodes.h"
#include "model/Effect.h"
#include "model/TrackClip.h"
#include "model/Transition.h"

namespace {

// A started composition at 25 fps with one picture clip of two tracks and one video track.
ContextPtr startedContext() {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"clip", L"/a.mov", 100, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, true, 25, 1, 100, c);
    AddClipTrack(1, false, 48000, 1, 192000, c);
    InitComposition(25, 1, 1000, false, 90000, L"Comp", c);
    AddTrackToComposition(true, 25.0, c);
    return context;
}

TEST(CompositionBuilding, InitCompositionStoresRatesAndRefusesTwice) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    EXPECT_EQ(InitComposition(30000, 1001, 10, true, 5, L"C", nullptr), AAFRESULT_NULL_PARAM);
    EXPECT_EQ(InitComposition(0, 1001, 10, true, 5, L"C", c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(InitComposition(30000, 0, 10, true, 5, L"C", c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(InitComposition(30000, 1001, 10, true, 5, nullptr, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(c->sequence.compositionStarted, 0);

    ASSERT_EQ(InitComposition(30000, 1001, 10, true, 5, L"C", c), AAFRESULT_SUCCESS);
    EXPECT_EQ(c->sequence.timecodeFps, 30u);
    EXPECT_NEAR(c->sequence.frameRate, 29.97002997, 1e-8);
    EXPECT_EQ(c->sequence.timecodeStart, 5u);
    EXPECT_EQ(c->sequence.dropFrame, 1);
    EXPECT_EQ(c->sequence.timecodeLength, 10);
    EXPECT_EQ(std::wstring(c->sequence.name), L"C");

    EXPECT_EQ(InitComposition(24, 1, 99, false, 7, L"D", c), AAFRESULT_ALREADY_INITIALIZED);
    EXPECT_EQ(InitComposition(0, 0, 99, false, 7, nullptr, c), AAFRESULT_ALREADY_INITIALIZED);
    EXPECT_EQ(c->sequence.timecodeFps, 30u);
    EXPECT_EQ(std::wstring(c->sequence.name), L"C");
}

TEST(CompositionBuilding, CallsBeforeTheStartAreRefused) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    EXPECT_EQ(AddTrackToComposition(false, 25.0, c), 0u);  // tracks need no start
    EXPECT_EQ(AddTrackToComposition(false, 25.0, nullptr), 0xFFFFFFFFu);
    const double value = 1.0;
    EXPECT_EQ(AppendFiller(0, 10, c), AAFRESULT_NOT_INITIALIZED);
    EXPECT_EQ(AppendTransition(0, 5, 10, c), AAFRESULT_NOT_INITIALIZED);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 1, 1, c), AAFRESULT_NOT_INITIALIZED);
    EXPECT_EQ(AppendVolumeEffect(0, 10, &value, 1, nullptr, 0, c), AAFRESULT_NOT_INITIALIZED);
    EXPECT_EQ(AddMarker(0, L"m", c), AAFRESULT_NOT_INITIALIZED);
    EXPECT_EQ(AppendFiller(0, 10, nullptr), AAFRESULT_NULL_PARAM);
    EXPECT_EQ(AddMarker(0, L"m", nullptr), AAFRESULT_NULL_PARAM);
    EXPECT_TRUE(c->sequence.tracks[0].events.empty());
    EXPECT_TRUE(c->sequence.markers.empty());
}

TEST(CompositionBuilding, AppendCallsCheckTrackAndClipIndexes) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    const double value = 1.0;
    EXPECT_EQ(AppendFiller(1, 10, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendTransition(1, 5, 10, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendPanEffect(1, 10, &value, 1, nullptr, 0, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(1, 0, 10, false, 1, 1, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 0, 1, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 2, 1, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 1, 0, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 1, 3, c), AAFRESULT_INVALID_PARAM);
    EXPECT_TRUE(c->sequence.tracks[0].events.empty());
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, false, 1, 2, c), AAFRESULT_SUCCESS);
}

TEST(CompositionBuilding, SubClipsAreCheckedAgainstTheirParent) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    ASSERT_EQ(AddSubClip(L"sub", L"/a.mov", 10, 3, c), 2);
    ASSERT_EQ(AddSubClip(L"orphan", L"/A.mov", 10, 3, c), 3);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, true, 2, 3, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendClipToTrack(0, 0, 10, true, 3, 1, c), AAFRESULT_NULL_PARAM);
    ASSERT_EQ(AppendClipToTrack(0, 4, 10, false, 2, 2, c), AAFRESULT_SUCCESS);
    auto* clip = static_cast<TrackClip*>(c->sequence.tracks[0].events.at(0));
    EXPECT_EQ(std::wstring(clip->clipName), L"sub");
    EXPECT_EQ(clip->clipIndex, 2u);
    EXPECT_EQ(clip->slotId, 2u);
    EXPECT_EQ(clip->inPoint, 4);
    EXPECT_FALSE(clip->isSubClip);  // the flag is the caller's, stored as given
}

TEST(CompositionBuilding, EventsRecordTheirPositionAndValues) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    ASSERT_EQ(AppendFiller(0, 7, c), AAFRESULT_SUCCESS);
    ASSERT_EQ(AppendClipToTrack(0, 12, 20, false, 1, 1, c), AAFRESULT_SUCCESS);
    ASSERT_EQ(AppendTransition(0, 30, 10, c), AAFRESULT_SUCCESS);  // a cut point past the end is kept
    ASSERT_EQ(AddMarker(-5, L"note", c), AAFRESULT_SUCCESS);
    const auto& events = c->sequence.tracks[0].events;
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[0]->getType(), uint32_t(kEventFiller));
    EXPECT_EQ(events[1]->getType(), uint32_t(kEventClip));
    EXPECT_EQ(events[2]->getType(), uint32_t(kEventTransition));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(events[i]->index, i);
        EXPECT_EQ(events[i]->speed, 1.0);
    }
    EXPECT_EQ(events[0]->length, 7);
    EXPECT_EQ(static_cast<Transition*>(events[2])->cutPoint, 30);
    ASSERT_EQ(c->sequence.markers.size(), 1u);
    EXPECT_EQ(c->sequence.markers[0].position, -5);
    EXPECT_EQ(std::wstring(c->sequence.markers[0].text), L"note");
}

TEST(CompositionBuilding, EffectsCoverThePrecedingEventsLastFirst) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    AppendClipToTrack(0, 0, 10, false, 1, 1, c);
    AppendClipToTrack(0, 0, 20, false, 1, 1, c);
    AppendClipToTrack(0, 0, 30, false, 1, 1, c);
    const double values[] = {0.5, 0.75, 1.0};
    const double times[] = {0.0, 0.5, 1.0};
    ASSERT_EQ(AppendVolumeEffect(0, 40, values, 3, times, 3, c), AAFRESULT_SUCCESS);
    ASSERT_EQ(AppendPanEffect(0, 30, values, 1, times, -1, c), AAFRESULT_SUCCESS);
    const auto& events = c->sequence.tracks[0].events;
    auto* volume = static_cast<Effect*>(events[3]);
    ASSERT_EQ(volume->inputs.size(), 2u);
    EXPECT_EQ(volume->inputs[0], events[2]);
    EXPECT_EQ(volume->inputs[1], events[1]);
    EXPECT_EQ(volume->effectType, uint32_t(kEffectGain));
    EXPECT_EQ(volume->numInputs, 1u);
    EXPECT_EQ(volume->index, 3);
    EXPECT_EQ(volume->params, std::vector<double>(values, values + 3));
    EXPECT_EQ(volume->keyFrames, std::vector<double>(times, times + 3));

    auto* pan = static_cast<Effect*>(events[4]);
    ASSERT_EQ(pan->inputs.size(), 1u);
    EXPECT_EQ(pan->inputs[0], events[3]);
    EXPECT_TRUE(pan->keyFrames.empty());
    EXPECT_EQ(pan->params.size(), 1u);
}

TEST(CompositionBuilding, EffectWalkStopsAtTheFirstEvent) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    const double value = 1.0;
    ASSERT_EQ(AppendVideoCompositeEffect(0, 50, &value, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    EXPECT_TRUE(static_cast<Effect*>(c->sequence.tracks[0].events[0])->inputs.empty());
    AppendFiller(0, 10, c);
    ASSERT_EQ(AppendVideoCompositeEffect(0, 0, &value, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    EXPECT_TRUE(static_cast<Effect*>(c->sequence.tracks[0].events[2])->inputs.empty());
}

TEST(CompositionBuilding, SpeedEffectsCarryTheirFirstValueAsSpeed) {
    ContextPtr context = startedContext();
    AafWriterContext* c = context.get();
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    const double values[] = {2.0, 3.0};
    ASSERT_EQ(AppendSpeedEffect(0, true, 100, values, 2, nullptr, 0, c), AAFRESULT_SUCCESS);
    ASSERT_EQ(AppendSpeedEffect(0, false, 100, values + 1, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    EXPECT_EQ(AppendSpeedEffect(0, false, 100, nullptr, 0, nullptr, 0, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendVolumeEffect(0, 100, nullptr, 2, nullptr, 0, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendVolumeEffect(0, 100, values, 0, nullptr, 0, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AppendVolumeEffect(0, 100, values, 2, values, 3, c), AAFRESULT_INVALID_PARAM);  // a key frame without value
    EXPECT_EQ(AppendVolumeEffect(0, 100, values, 2, nullptr, 2, c), AAFRESULT_INVALID_PARAM);
    const auto& events = c->sequence.tracks[0].events;
    ASSERT_EQ(events.size(), 3u);
    auto* first = static_cast<Effect*>(events[1]);
    EXPECT_EQ(first->effectType, uint32_t(kEffectSpeed));
    EXPECT_EQ(first->speed, 2.0);
    auto* second = static_cast<Effect*>(events[2]);
    EXPECT_EQ(second->effectType, uint32_t(kEffectSpeedAlternate));
    EXPECT_EQ(second->speed, 3.0);
}

TEST(RateHelpers, EditRatesAndDecimalRatios) {
    auto rational = [](aafRational_t r) { return std::make_pair(r.numerator, r.denominator); };
    EXPECT_EQ(rational(getEditRate(25.0)), std::make_pair(25, 1));
    EXPECT_EQ(rational(getEditRate(29.97)), std::make_pair(30000, 1001));
    EXPECT_EQ(rational(getEditRate(30000.0 / 1001.0)), std::make_pair(30000, 1001));
    EXPECT_EQ(rational(getEditRate(23.976)), std::make_pair(24000, 1001));
    EXPECT_EQ(rational(getEditRate(12.5)), std::make_pair(13000, 1001));
    EXPECT_EQ(rational(doubleToRatio(0.25)), std::make_pair(25, 100));
    EXPECT_EQ(rational(doubleToRatio(1.5)), std::make_pair(15, 10));
    EXPECT_EQ(rational(doubleToRatio(0.1)), std::make_pair(1, 10));
    EXPECT_EQ(rational(doubleToRatio(0.5)), std::make_pair(5, 10));
    EXPECT_EQ(rational(doubleToRatio(2.0)), std::make_pair(2, 1));
    EXPECT_EQ(rational(doubleToRatio(-0.5)), std::make_pair(-5, 10));
    EXPECT_LE(doubleToRatio(1.0 / 3.0).denominator, 10000000);
    EXPECT_EQ(truncateToInt32(1e12), INT32_MAX);
    EXPECT_EQ(truncateToInt32(-2.7), -2);
}

}  // namespace

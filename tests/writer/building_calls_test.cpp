#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "AAFWriter/aaf_composition.h"
#include "WriterTestSupport.h"
#include "aafkit/ResultCodes.h"

namespace {

struct Answer {
    const char* call;
    std::function<int32_t(AafWriterContext*)> run;
    int32_t expected;  // negative: a refusal
};
// A table row: the call as written, run on a fresh context `c`, and its expected answer.
#define ANSWER(call, expected) {#call, [](AafWriterContext* c) -> int32_t { (void)c; return call; }, expected}

constexpr int32_t kOk = AAFRESULT_SUCCESS;
constexpr int32_t kInvalid = AAFRESULT_INVALID_PARAM;
constexpr int32_t kNull = AAFRESULT_NULL_PARAM;
constexpr int32_t kNotStarted = AAFRESULT_NOT_INITIALIZED;
constexpr int32_t kStarted = AAFRESULT_ALREADY_INITIALIZED;

// Clip 1 (/a.mov: a picture and a sound track), clip 2 (/b.mov, no track) and one
// composition track; the composition itself not started.
ContextPtr registered() {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"a", L"/a.mov", 100, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, true, 25, 1, 100, c);
    AddClipTrack(1, false, 48000, 1, 192000, c);
    AddClip(L"b", L"/b.mov", 100, 0, false, nullptr, nullptr, 25, 1, c);
    AddTrackToComposition(true, 25.0, c);  // tracks need no start
    return context;
}

// The same, started, with sub-clip 3 of /a.mov and sub-clip 4 of a path no clip has.
ContextPtr started() {
    ContextPtr context = registered();
    AafWriterContext* c = context.get();
    AddSubClip(L"sub", L"/a.mov", 10, 3, c);
    AddSubClip(L"orphan", L"/A.mov", 10, 3, c);
    InitComposition(25, 1, 1000, false, 90000, L"Comp", c);
    return context;
}

// Everything the building calls record; a refused call must leave it as it was.
std::string snapshot(const AafWriterContext& c) {
    std::string s = std::to_string(c.clips.size()) + "/" + std::to_string(c.sequence.compositionStarted) + "/" +
                    std::to_string(c.sequence.timecodeFps) + "/" + std::to_string(c.sequence.markers.size());
    for (const Clip& clip : c.clips)
        for (const ClipTrack& track : clip.tracks)
            s += " " + std::to_string(track.widthOrChannels) + "x" + std::to_string(track.sampleRate);
    for (const Track& track : c.sequence.tracks) s += " t" + std::to_string(track.events.size());
    return s;
}

void expectAnswers(ContextPtr (*make)(), const std::vector<Answer>& answers) {
    for (const Answer& answer : answers) {
        ContextPtr context = make();
        const std::string before = snapshot(*context);
        EXPECT_EQ(answer.run(context.get()), answer.expected) << answer.call;
        if (answer.expected < 0) {
            EXPECT_EQ(snapshot(*context), before) << answer.call << " recorded something";
        }
    }
}

const double kValues[] = {0.5, 1.0, 0.0};

TEST(BuildingCalls, ClipRegistryAnswers) {
    expectAnswers(registered, {
        ANSWER(AddClip(nullptr, L"/x", 1, 0, false, nullptr, nullptr, 25, 1, c), -1),
        ANSWER(AddClip(L"x", nullptr, 1, 0, false, nullptr, nullptr, 25, 1, c), -1),
        ANSWER(AddClip(L"x", L"/x", 1, 0, false, nullptr, nullptr, 25, 1, nullptr), -1),
        ANSWER(AddClip(L"x", L"/x", 1, 0, false, nullptr, nullptr, 25, 1, c), 3),
        ANSWER(AddSubClip(nullptr, L"/a.mov", 1, 0, c), -1),
        ANSWER(AddSubClip(L"s", nullptr, 1, 0, c), -1),
        ANSWER(AddSubClip(L"s", L"/a.mov", 1, 0, nullptr), -1),
        ANSWER(AddSubClip(L"s", L"/a.mov", 1, 0, c), 3),
        ANSWER(AddClipTrack(1, true, 25, 1, 9, c), kInvalid),
        ANSWER(AddClipTrack(0, true, 25, 1, 9, c), kInvalid),
        ANSWER(AddClipTrack(3, true, 25, 1, 9, c), kInvalid),
        ANSWER(AddClipTrack(2, true, 25, 1, 9, nullptr), kInvalid),
        ANSWER(AddClipTrack(2, true, 25, 1, 9, c), kOk),
        ANSWER(SetVideoTrackInfo(1, 2, 1920, 1080, c), kInvalid),
        ANSWER(SetAudioTrackInfo(1, 1, 2, 24, 48000, 9, c), kInvalid),
        ANSWER(SetVideoTrackInfo(1, 3, 1920, 1080, c), kInvalid),
        ANSWER(SetVideoTrackInfo(1, 0, 1920, 1080, c), kInvalid),
        ANSWER(SetVideoTrackInfo(0, 1, 1920, 1080, c), kInvalid),
        ANSWER(SetVideoTrackInfo(2, 1, 1920, 1080, c), kInvalid),
        ANSWER(SetVideoTrackInfo(1, 1, 1920, 1080, nullptr), kInvalid),
        ANSWER(SetVideoTrackInfo(1, 1, 1920, 1080, c), kOk),
        ANSWER(SetAudioTrackInfo(1, 2, 2, 24, 44100, 9, c), kOk),
    });
}

TEST(BuildingCalls, CompositionAnswersBeforeTheStart) {
    expectAnswers(registered, {
        ANSWER(InitComposition(30000, 1001, 10, true, 5, L"C", nullptr), kNull),
        ANSWER(InitComposition(0, 1001, 10, true, 5, L"C", c), kInvalid),
        ANSWER(InitComposition(30000, 0, 10, true, 5, L"C", c), kInvalid),
        ANSWER(InitComposition(30000, 1001, 10, true, 5, nullptr, c), kInvalid),
        ANSWER(int32_t(AddTrackToComposition(false, 25.0, nullptr)), -1),
        ANSWER(AppendFiller(0, 10, c), kNotStarted),
        ANSWER(AppendTransition(0, 5, 10, c), kNotStarted),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 1, 1, c), kNotStarted),
        ANSWER(AppendVolumeEffect(0, 10, kValues, 1, nullptr, 0, c), kNotStarted),
        ANSWER(AddMarker(0, L"m", c), kNotStarted),
        ANSWER(AppendFiller(0, 10, nullptr), kNull),
        ANSWER(AddMarker(0, L"m", nullptr), kNull),
    });
}

TEST(BuildingCalls, CompositionAnswersOnceStarted) {
    expectAnswers(started, {
        ANSWER(InitComposition(24, 1, 99, false, 7, L"D", c), kStarted),
        ANSWER(InitComposition(0, 0, 99, false, 7, nullptr, c), kStarted),
        ANSWER(AppendFiller(1, 10, c), kInvalid),
        ANSWER(AppendTransition(1, 5, 10, c), kInvalid),
        ANSWER(AppendPanEffect(1, 10, kValues, 1, nullptr, 0, c), kInvalid),
        ANSWER(AppendClipToTrack(1, 0, 10, false, 1, 1, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 0, 1, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 5, 1, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 1, 0, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 1, 3, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, false, 1, 2, c), kOk),
        ANSWER(AppendClipToTrack(0, 0, 10, true, 3, 3, c), kInvalid),
        ANSWER(AppendClipToTrack(0, 0, 10, true, 4, 1, c), kNull),
        ANSWER(AppendClipToTrack(0, 4, 10, true, 3, 2, c), kOk),
        ANSWER(AppendSpeedEffect(0, false, 100, nullptr, 0, nullptr, 0, c), kInvalid),
        ANSWER(AppendVolumeEffect(0, 100, nullptr, 2, nullptr, 0, c), kInvalid),
        ANSWER(AppendVolumeEffect(0, 100, kValues, 0, nullptr, 0, c), kInvalid),
        ANSWER(AppendVolumeEffect(0, 100, kValues, 2, kValues, 3, c), kInvalid),
        ANSWER(AppendVolumeEffect(0, 100, kValues, 2, nullptr, 2, c), kInvalid),
        ANSWER(AppendVolumeEffect(0, 100, kValues, 2, kValues, 2, c), kOk),
        ANSWER(AddMarker(-5, L"m", c), kOk),
    });
}

TEST(BuildingCalls, LongTextsAreCutAndFreeingNullIsHarmless) {
    ContextPtr context = newContext();
    std::wstring longPath(2000, L'p');
    ASSERT_EQ(AddClip(L"n", longPath.c_str(), 1, 0, false, nullptr, nullptr, 25, 1, context.get()), 1);
    EXPECT_LE(std::wcslen(context->clips[0].path), kClipTextLength);
    FreeAafWriterContext(nullptr);
}

TEST(WriterHelpers, RatesRatiosAndMxfPaths) {
    auto pair = [](aafRational_t r) { return std::make_pair(r.numerator, r.denominator); };
    EXPECT_EQ(pair(getEditRate(30000.0 / 1001.0)), std::make_pair(30000, 1001));
    EXPECT_EQ(pair(getEditRate(12.5)), std::make_pair(13000, 1001));  // any fraction reads as NTSC
    EXPECT_EQ(pair(doubleToRatio(1.5)), std::make_pair(15, 10));
    EXPECT_EQ(pair(doubleToRatio(0.1)), std::make_pair(1, 10));
    EXPECT_EQ(pair(doubleToRatio(-0.5)), std::make_pair(-5, 10));
    EXPECT_LE(doubleToRatio(1.0 / 3.0).denominator, 10000000);
    EXPECT_EQ(truncateToInt32(1e12), INT32_MAX);
    EXPECT_EQ(truncateToInt32(-2.7), -2);
    for (const wchar_t* mxf : {L"a.mxf", L"A.MXF", L"x.MxF", L".mxf"}) EXPECT_TRUE(isMxfFile(mxf)) << mxf;
    for (const wchar_t* other : {L"mxf", L"a.mxf ", L"a.mxf.wav", L""}) EXPECT_FALSE(isMxfFile(other)) << other;
}

}  // namespace

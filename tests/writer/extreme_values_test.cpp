#include <gtest/gtest.h>

#include <pthread.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"
#include "model/Effect.h"
#include "support/SampleFiles.h"

// Values at the ends of their types, as a host with an uninitialised variable passes
// them: the calls accept them as they accept any value, and the arithmetic on them
// stops at the limits instead of wrapping into unrelated numbers.
namespace {

using aafkit::Object;

constexpr int64_t kImportLength = 12960000;

// The import source mob's timecode of a clip with a start timecode: the timecode
// runs one past the clip, a filler takes the rest of the import length.
struct ImportTimecode {
    int64_t timecode, filler;
};

ImportTimecode importTimecodeOf(int64_t clipLength, const char* name) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    aafMobID_t tape{};
    reinterpret_cast<uint8_t*>(&tape)[31] = 9;
    const int32_t clip = AddClip(L"Long", L"/m/long.mov", clipLength, 3600, false, &tape, nullptr, 25, 1, c);
    AddClipTrack(clip, true, 25, 1, 100, c);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    WrittenFile written = writeAndLoad(c, name);
    EXPECT_EQ(written.result, AAFRESULT_SUCCESS);
    if (!written.file) return {};
    const Object& timecodes = segment(slot(mob(*written.file, c->clips[0].tapeMobId), 0));
    return {i64(component(timecodes, 0), PID_Component_Length), i64(component(timecodes, 1), PID_Component_Length)};
}

TEST(ExtremeValues, ImportTimecodeLengthsStopAtTheLimits) {
    const ImportTimecode ordinary = importTimecodeOf(250, "import_ordinary");
    EXPECT_EQ(ordinary.timecode, 251);
    EXPECT_EQ(ordinary.filler, kImportLength - 251);
    const ImportTimecode longest = importTimecodeOf(INT64_MAX, "import_longest");
    EXPECT_EQ(longest.timecode, INT64_MAX);
    EXPECT_EQ(longest.filler, kImportLength - INT64_MAX);
    const ImportTimecode lowest = importTimecodeOf(INT64_MIN, "import_lowest");
    EXPECT_EQ(lowest.timecode, INT64_MIN + 1);
    EXPECT_EQ(lowest.filler, INT64_MAX);
}

// A started composition whose sound track 0 holds a 10-unit clip of clip 1.
ContextPtr soundTrackWithAClip() {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"Snd", L"/m/snd.wav", 1000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, false, 48000, 1, 1000, c);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    AddTrackToComposition(false, 25.0, c);
    AppendClipToTrack(0, 0, 10, false, 1, 1, c);
    return context;
}

TEST(ExtremeValues, TrackLengthsStopAtTheLimits) {
    ContextPtr context = soundTrackWithAClip();
    AafWriterContext* c = context.get();
    AppendClipToTrack(0, 0, INT64_MAX, false, 1, 1, c);
    AppendFiller(0, INT64_MAX, c);
    AddMarker(INT64_MIN, L"first", c);
    AddMarker(INT64_MAX, L"last", c);
    WrittenFile written = writeAndLoad(c, "track_lengths");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    EXPECT_EQ(i64(segment(slot(compositionMob(*written.file), 1)), PID_Component_Length), INT64_MAX);
}

// An effect covers events back from its end while its length is not used up; an event
// of a hugely negative length leaves more to cover, not less.
TEST(ExtremeValues, AnEffectWalksPastANegativeLengthWithoutWrapping) {
    ContextPtr context = soundTrackWithAClip();
    AafWriterContext* c = context.get();
    AppendClipToTrack(0, 0, INT64_MIN + 1, false, 1, 1, c);
    const double gain = 0.5;
    ASSERT_EQ(AppendVolumeEffect(0, 5, &gain, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    const auto* effect = static_cast<const Effect*>(c->sequence.tracks[0].events.back());
    EXPECT_EQ(effect->inputs.size(), 2u);
    ASSERT_EQ(AppendVolumeEffect(0, INT64_MIN, &gain, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    EXPECT_TRUE(static_cast<const Effect*>(c->sequence.tracks[0].events.back())->inputs.empty());
}

// Rates no editor uses, but a caller may pass: the lowest numerator over -1, and a
// composition rate whose NTSC-style form (fps * 1000 / 1001) is past 32 bits.
TEST(ExtremeValues, RatesPastTheirTypesStayDefined) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    aafMobID_t tape{};
    reinterpret_cast<uint8_t*>(&tape)[31] = 3;
    const int32_t clip = AddClip(L"Odd", L"/m/odd.mov", 10, 0, false, &tape, nullptr, INT32_MIN, -1, c);
    AddClipTrack(clip, true, 25, 1, 10, c);
    InitComposition(INT32_MAX, 2, 100, false, 0, L"Comp", c);
    AddTrackToComposition(true, 25.0, c);
    WrittenFile written = writeAndLoad(c, "odd_rates");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const Object& importTimecode = component(segment(slot(mob(*written.file, c->clips[0].tapeMobId), 0)), 0);
    EXPECT_EQ(u16(importTimecode, PID_Timecode_FPS), uint16_t(2147483648u));  // 2^31 frames per second, low bits
    aafRational_t rate{};
    ASSERT_EQ(aafkit::getRational(slot(compositionMob(*written.file), 0), PID_TimelineMobSlot_EditRate, rate), 0);
    EXPECT_EQ(rate.numerator, INT32_MAX);
    EXPECT_EQ(rate.denominator, 1001);
}

// Runs `work` on a thread with a small stack: how deep the writer goes must not
// depend on how many events a host appended.
template <class Work>
void onSmallStack(Work& work) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 256 * 1024);
    pthread_t thread;
    auto run = [](void* argument) -> void* {
        (*static_cast<Work*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(ExtremeValues, ALongChainOfEffectsOverEffectsIsWritten) {
    ContextPtr context = soundTrackWithAClip();
    AafWriterContext* c = context.get();
    const double gain = 0.5;
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(AppendVolumeEffect(0, 10, &gain, 1, nullptr, 0, c), AAFRESULT_SUCCESS);
    const std::string path = testsupport::temporaryPath("effect_chain.aaf");
    std::remove(path.c_str());
    AAFRESULT result = -1;
    auto write = [&] { result = WriteAafFile(std::wstring(path.begin(), path.end()).c_str(), c); };
    onSmallStack(write);
    std::remove(path.c_str());
    EXPECT_EQ(result, AAFRESULT_SUCCESS);
}

}  // namespace

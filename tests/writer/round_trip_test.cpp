#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "WriterTestSupport.h"
#include "aafbridge/aaf_reader.h"
#include "aafkit/ResultCodes.h"
#include "support/SampleFiles.h"

namespace {

struct ReaderDeleter {
    void operator()(AafParseContext* context) const { CloseFile(context); }
};
using ReaderPtr = std::unique_ptr<AafParseContext, ReaderDeleter>;

std::wstring eventName(uint32_t track, uint32_t event, AafParseContext* reader) {
    wchar_t name[64] = {};
    GetEventName(track, event, name, 63, reader);
    return name;
}

// A timeline with every kind of event, written and read back through the reader.
ReaderPtr writeAndRead(AafWriterContext* c, const std::string& path) {
    AddClip(L"Picture", L"/m/pic.mov", 2000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, true, 25, 1, 2000, c);
    SetVideoTrackInfo(1, 1, 1920, 1080, c);
    AddClip(L"Sound", L"/m/snd.wav", 2000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(2, false, 25, 1, 2000, c);
    SetAudioTrackInfo(2, 1, 1, 24, 48000, 3840000, c);
    InitComposition(25, 1, 1000, false, 90000, L"Round trip", c);
    AddTrackToComposition(true, 25.0, c);
    AddTrackToComposition(false, 25.0, c);
    AddTrackToComposition(true, 25.0, c);

    AppendFiller(0, 25, c);
    AppendClipToTrack(0, 100, 250, false, 1, 1, c);
    AppendTransition(0, 12, 25, c);
    AppendClipToTrack(0, 400, 300, false, 1, 1, c);
    const double opacity[] = {1.0, 0.5, 1.0}, times[] = {0.0, 0.5, 1.0};
    AppendVideoCompositeEffect(0, 300, opacity, 3, times, 3, c);

    AppendClipToTrack(1, 10, 200, false, 2, 1, c);
    const double gain[] = {0.25}, pan[] = {-1.0, 1.0};
    AppendVolumeEffect(1, 200, gain, 1, nullptr, 0, c);
    AppendPanEffect(1, 200, pan, 2, times + 1, 2, c);

    AppendClipToTrack(2, 0, 100, false, 1, 1, c);
    const double speed[] = {2.0, 0.0};
    AppendSpeedEffect(2, true, 100, speed, 2, nullptr, 0, c);

    AddMarker(10, L"first", c);
    AddMarker(40, L"second", c);

    const std::wstring widePath(path.begin(), path.end());
    std::remove(path.c_str());
    EXPECT_EQ(WriteAafFile(widePath.c_str(), c), AAFRESULT_SUCCESS);
    AafParseContext* reader = nullptr;
    EXPECT_EQ(OpenAafFile(widePath.c_str(), &reader), AAFRESULT_SUCCESS);
    ReaderPtr owned(reader);
    EXPECT_EQ(ParseClips(reader), AAFRESULT_SUCCESS);
    EXPECT_EQ(ParseComposition(reader), AAFRESULT_SUCCESS);
    return owned;
}

TEST(RoundTrip, TheReaderGetsBackWhatWasWritten) {
    ContextPtr writer = newContext();
    const std::string path = testsupport::temporaryPath("writer_round_trip.aaf");
    ReaderPtr reader = writeAndRead(writer.get(), path);
    ASSERT_TRUE(reader);
    AafParseContext* r = reader.get();
    EXPECT_EQ(GetNumClips(r), 2u);
    uint32_t start = 0, fps = 0, drop = 9;
    GetTimeCode(&start, &fps, &drop, r);
    EXPECT_EQ(start, 90000u);
    EXPECT_EQ(fps, 25u);
    EXPECT_EQ(drop, 0u);
    ASSERT_EQ(GetNumMarkers(r), 2u);
    EXPECT_EQ(GetMarkerPosition(0, r), 10);
    EXPECT_EQ(GetMarkerPosition(1, r), 40);
    wchar_t text[16] = {};
    GetMarkerText(1, text, 15, r);
    EXPECT_EQ(std::wstring(text), L"second");
    ASSERT_EQ(GetNumTracks(r), 3u);
    EXPECT_EQ(GetTrackType(0, r), 1u);
    EXPECT_EQ(GetTrackType(1, r), 0u);
    EXPECT_EQ(GetTrackEditRate(1, r), 25.0);

    // The picture track: filler, clip, transition, clip, composite.
    ASSERT_EQ(GetNumEvents(0, r), 5u);
    EXPECT_EQ(IsEventFiller(0, 0, r), 1u);
    EXPECT_EQ(GetEventLen(0, 0, r), 25);
    EXPECT_EQ(eventName(0, 1, r), L"Picture");
    EXPECT_EQ(GetEventInPoint(0, 1, r), 100);
    EXPECT_EQ(GetEventLen(0, 1, r), 250);
    EXPECT_EQ(GetEventSlot(0, 1, r), 1u);
    EXPECT_EQ(IsEventTransition(0, 2, r), 1u);
    EXPECT_EQ(GetTransitionCutPoint(0, 2, r), 12);
    EXPECT_EQ(GetEventLen(0, 2, r), 25);
    EXPECT_EQ(GetEventInPoint(0, 3, r), 400);
    EXPECT_EQ(GetEventLen(0, 3, r), 300);
    ASSERT_EQ(IsEventEffect(0, 4, r), 1u);
    EXPECT_EQ(GetEffectType(0, 4, r), 2u);
    ASSERT_EQ(GetEffectParamCount(0, 4, r), 3u);
    EXPECT_EQ(GetEffectParam(0, 4, 1, r), 0.5);
    ASSERT_EQ(GetEffectKeyFrameCount(0, 4, r), 3u);
    EXPECT_EQ(GetEffectKeyFrame(0, 4, 1, r), 150);
    EXPECT_EQ(GetEffectKeyFrame(0, 4, 2, r), 300);

    // The sound track: a clip under a volume and a pan; the last track: a speed change.
    ASSERT_EQ(GetNumEvents(1, r), 3u);
    EXPECT_EQ(eventName(1, 0, r), L"Sound");
    EXPECT_EQ(GetEventInPoint(1, 0, r), 10);
    EXPECT_EQ(GetEffectType(1, 1, r), 0u);
    ASSERT_EQ(GetEffectParamCount(1, 1, r), 1u);
    EXPECT_EQ(GetEffectParam(1, 1, 0, r), 0.25);
    EXPECT_EQ(GetEffectType(1, 2, r), 1u);
    ASSERT_EQ(GetEffectParamCount(1, 2, r), 2u);
    EXPECT_EQ(GetEffectParam(1, 2, 0, r), -1.0);
    EXPECT_EQ(GetEffectParam(1, 2, 1, r), 1.0);
    EXPECT_EQ(GetEffectKeyFrame(1, 2, 0, r), 100);
    ASSERT_EQ(GetNumEvents(2, r), 2u);
    EXPECT_EQ(GetEventLen(2, 0, r), 100);  // stored at half length, played at double speed
    EXPECT_EQ(IsEventEffect(2, 1, r), 1u);
    EXPECT_EQ(GetEventLen(2, 1, r), 100);
    reader.reset();
    std::remove(path.c_str());
}

}  // namespace

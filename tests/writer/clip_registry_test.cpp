#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "WriterTestSupport.h"
#include "aafkit/ResultCodes.h"

namespace {

int32_t addClip(AafWriterContext* context, const wchar_t* path, const aafMobID_t* tape = nullptr,
                const aafMobID_t* file = nullptr) {
    return AddClip(L"clip", path, 100, 0, false, tape, file, 25, 1, context);
}

TEST(ClipRegistry, MasterAndSubClipsShareOneNumbering) {
    ContextPtr context = newContext();
    EXPECT_EQ(addClip(context.get(), L"/a.mov"), 1);
    EXPECT_EQ(AddSubClip(L"sub", L"/a.mov", 10, 5, context.get()), 2);
    EXPECT_EQ(addClip(context.get(), L"/b.mov"), 3);
    const Clip& sub = context->clips[1];
    EXPECT_TRUE(sub.isSubClip);
    EXPECT_EQ(std::wstring(sub.path), L"/a.mov");
    EXPECT_EQ(sub.startTimecode, 5);
    EXPECT_EQ(sub.length, 10);
}

TEST(ClipRegistry, NullArgumentsAnswerMinusOne) {
    ContextPtr context = newContext();
    EXPECT_EQ(AddClip(nullptr, L"/a", 1, 0, false, nullptr, nullptr, 25, 1, context.get()), -1);
    EXPECT_EQ(AddClip(L"n", nullptr, 1, 0, false, nullptr, nullptr, 25, 1, context.get()), -1);
    EXPECT_EQ(AddClip(L"n", L"/a", 1, 0, false, nullptr, nullptr, 25, 1, nullptr), -1);
    EXPECT_EQ(AddSubClip(nullptr, L"/a", 1, 0, context.get()), -1);
    EXPECT_EQ(AddSubClip(L"n", nullptr, 1, 0, context.get()), -1);
    EXPECT_EQ(AddSubClip(L"n", L"/a", 1, 0, nullptr), -1);
    EXPECT_TRUE(context->clips.empty());
}

TEST(ClipRegistry, LongTextsAreCutToTheArray) {
    ContextPtr context = newContext();
    std::wstring longPath(2000, L'p');
    ASSERT_EQ(AddClip(L"n", longPath.c_str(), 1, 0, false, nullptr, nullptr, 25, 1, context.get()), 1);
    const Clip& clip = context->clips[0];
    size_t stored = std::wcslen(clip.path);
    EXPECT_GE(stored, kClipTextLength - 1);
    EXPECT_LE(stored, kClipTextLength);
    EXPECT_EQ(std::wstring(clip.name), L"n");
}

TEST(ClipRegistry, TracksGoOnlyToTheLastClip) {
    ContextPtr context = newContext();
    addClip(context.get(), L"/a.mov");
    addClip(context.get(), L"/b.mov");
    EXPECT_EQ(AddClipTrack(1, true, 25, 1, 100, context.get()), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AddClipTrack(0, true, 25, 1, 100, context.get()), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AddClipTrack(3, true, 25, 1, 100, context.get()), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(AddClipTrack(2, true, 25, 1, 100, nullptr), AAFRESULT_INVALID_PARAM);
    ASSERT_EQ(AddClipTrack(2, true, 25, 1, 100, context.get()), AAFRESULT_SUCCESS);
    ASSERT_EQ(AddClipTrack(2, false, 48000, 1, 4800, context.get()), AAFRESULT_SUCCESS);
    EXPECT_TRUE(context->clips[0].tracks.empty());
    const auto& tracks = context->clips[1].tracks;
    ASSERT_EQ(tracks.size(), 2u);
    EXPECT_EQ(tracks[0].kind, kClipTrackPicture);
    EXPECT_EQ(tracks[0].trackNumber, 1u);
    EXPECT_EQ(tracks[1].kind, kClipTrackSound);
    EXPECT_EQ(tracks[1].trackNumber, 2u);
    EXPECT_EQ(tracks[1].editRate.numerator, 48000);
    EXPECT_EQ(tracks[1].length, 4800);
}

TEST(ClipRegistry, TrackInfoChecksIndexesAndKind) {
    ContextPtr context = newContext();
    addClip(context.get(), L"/a.mov");
    AddClipTrack(1, true, 25, 1, 100, context.get());
    AddClipTrack(1, false, 48000, 1, 4800, context.get());
    AafWriterContext* c = context.get();
    EXPECT_EQ(SetVideoTrackInfo(1, 2, 1920, 1080, c), AAFRESULT_INVALID_PARAM);  // a sound track
    EXPECT_EQ(SetAudioTrackInfo(1, 1, 2, 24, 48000, 9, c), AAFRESULT_INVALID_PARAM);  // a picture track
    EXPECT_EQ(SetVideoTrackInfo(1, 3, 1920, 1080, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(SetVideoTrackInfo(0, 1, 1920, 1080, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(SetVideoTrackInfo(1, 0, 1920, 1080, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(SetVideoTrackInfo(2, 1, 1920, 1080, c), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(SetVideoTrackInfo(1, 1, 1920, 1080, nullptr), AAFRESULT_INVALID_PARAM);
    EXPECT_EQ(c->clips[0].tracks[0].widthOrChannels, 0u);
    EXPECT_EQ(c->clips[0].tracks[1].sampleRate, 0u);

    ASSERT_EQ(SetVideoTrackInfo(1, 1, 1920, 1080, c), AAFRESULT_SUCCESS);
    ASSERT_EQ(SetAudioTrackInfo(1, 2, 2, 24, 44100, 441000, c), AAFRESULT_SUCCESS);
    const auto& tracks = c->clips[0].tracks;
    EXPECT_EQ(tracks[0].widthOrChannels, 1920u);
    EXPECT_EQ(tracks[0].heightOrBits, 1080u);
    EXPECT_EQ(tracks[1].widthOrChannels, 2u);
    EXPECT_EQ(tracks[1].heightOrBits, 24u);
    EXPECT_EQ(tracks[1].sampleRate, 44100u);
    EXPECT_EQ(tracks[1].sampleLength, 441000);
}

TEST(ClipRegistry, CallerMobIdsAreStoredInHostOrder) {
    ContextPtr context = newContext();
    aafMobID_t given;
    uint8_t bytes[32];
    for (int i = 0; i < 32; ++i) bytes[i] = uint8_t(0xa0 + i);
    const uint8_t material[8] = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
    std::memcpy(bytes + 16, material, 8);
    std::memcpy(&given, bytes, 32);
    addClip(context.get(), L"/a.mxf", &given, nullptr);
    const Clip& clip = context->clips[0];
    EXPECT_TRUE(clip.hasTapeMobId);
    EXPECT_FALSE(clip.hasFileMobId);
    uint8_t stored[32];
    std::memcpy(stored, &clip.tapeMobId, 32);
    const uint8_t expected[8] = {0x33, 0x22, 0x11, 0x00, 0x55, 0x44, 0x77, 0x66};
    EXPECT_EQ(0, std::memcmp(stored + 16, expected, 8));
    EXPECT_EQ(0, std::memcmp(stored, bytes, 16));
    EXPECT_EQ(0, std::memcmp(stored + 24, bytes + 24, 8));
}

TEST(ClipRegistry, FindClipTakesTheFirstMasterClipWithTheExactPath) {
    ContextPtr context = newContext();
    AddSubClip(L"sub", L"/a.mov", 1, 0, context.get());
    AddClip(L"first", L"/a.mov", 1, 0, false, nullptr, nullptr, 25, 1, context.get());
    AddClip(L"second", L"/a.mov", 1, 0, false, nullptr, nullptr, 25, 1, context.get());
    Clip found;
    ASSERT_TRUE(FindClip(L"/a.mov", context->clips, found));
    EXPECT_EQ(std::wstring(found.name), L"first");
    EXPECT_FALSE(FindClip(L"/A.mov", context->clips, found));
    EXPECT_FALSE(FindClip(L"/a.mo", context->clips, found));
}

TEST(ClipRegistry, MxfIsKnownByItsEndingInAnyCase) {
    EXPECT_TRUE(isMxfFile(L"a.mxf"));
    EXPECT_TRUE(isMxfFile(L"A.MXF"));
    EXPECT_TRUE(isMxfFile(L"x.MxF"));
    EXPECT_TRUE(isMxfFile(L".mxf"));
    EXPECT_FALSE(isMxfFile(L"mxf"));
    EXPECT_FALSE(isMxfFile(L"a.mxf "));
    EXPECT_FALSE(isMxfFile(L"a.mxf.wav"));
    EXPECT_FALSE(isMxfFile(L""));
}

TEST(WriterContext, StartsEmptyAndFreesNull) {
    AafWriterContext* context = reinterpret_cast<AafWriterContext*>(1);
    EXPECT_EQ(CreateAafWriterContext(&context), AAFRESULT_SUCCESS);
    ASSERT_NE(context, nullptr);
    EXPECT_TRUE(context->clips.empty());
    EXPECT_TRUE(context->sequence.tracks.empty());
    EXPECT_TRUE(context->sequence.markers.empty());
    EXPECT_EQ(context->sequence.compositionStarted, 0);
    EXPECT_EQ(context->sequence.timecodeFps, 0u);
    FreeAafWriterContext(context);
    FreeAafWriterContext(nullptr);
}

}  // namespace

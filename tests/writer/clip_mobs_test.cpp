#include <gtest/gtest.h>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"

// Written clip mobs where they go beyond the reference files: channel counts past a
// byte, rates other than 44100 and 48000, an MXF clip under a composition at another
// rate, sub-clips registered before their parent, and the files refused writes leave.
namespace {

using aafkit::Object;

Object& fileMobOf(const aafkit::File& file, const Object& masterSlot) {
    return mob(file, mobId(segment(masterSlot), PID_SourceReference_SourceID));
}

std::vector<Object*> subClipMobs(const aafkit::File& file) {
    std::vector<Object*> found;
    for (Object* mob : mobsOfKind(file, aafkit::kAAFCompMob)) {
        aafUID_t usage;
        if (aafkit::getUsageCode(*mob, usage) == 0 && usage == kAAFUsage_SubClip) found.push_back(mob);
    }
    return found;
}

void addParent(AafWriterContext* c, int tracks) {
    int32_t clip = AddClip(L"Parent", L"/m/p.mov", 500, 0, false, nullptr, nullptr, 25, 1, c);
    for (int i = 0; i < tracks; ++i) AddClipTrack(clip, i == 0, i == 0 ? 25 : 48000, 1, 500, c);
}

// An upper-case MXF clip (picture and sound), a .mov picture clip and a 300-channel
// 32 kHz sound clip, under a 29.97 drop-frame composition.
class ClipMobs : public ::testing::Test {
protected:
    void SetUp() override {
        AafWriterContext* c = context_.get();
        aafMobID_t tape{}, fileId{};
        reinterpret_cast<uint8_t*>(&tape)[31] = 1;
        reinterpret_cast<uint8_t*>(&fileId)[31] = 2;
        AddClip(L"M", L"/m/CLIP.MXF", 250, 3600, false, &tape, &fileId, 25, 1, c);
        AddClipTrack(1, true, 25, 1, 250, c);
        AddClipTrack(1, false, 48000, 1, 480000, c);
        AddClip(L"P", L"/m/p.mov", 250, 0, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(2, true, 25, 1, 250, c);
        AddClip(L"S", L"/m/s.aif", 10, 0, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(3, false, 32000, 1, 320, c);
        SetAudioTrackInfo(3, 1, 300, 16, 32000, 320, c);
        InitComposition(30000, 1001, 100, true, 0, L"Comp", c);
        written_ = writeAndLoad(c, ::testing::UnitTest::GetInstance()->current_test_info()->name());
        ASSERT_EQ(written_.result, AAFRESULT_SUCCESS);
    }
    const Object& master(size_t clip) { return mob(*written_.file, context_->clips[clip].masterMobId); }

    ContextPtr context_ = newContext();
    WrittenFile written_;
};

TEST_F(ClipMobs, AifcSummaryKeepsTheLowChannelByteAndThe48000Template) {
    const Object& descriptor = object(fileMobOf(*written_.file, slot(master(2), 0)), PID_SourceMob_EssenceDescription);
    std::vector<uint8_t> summary = bytes(descriptor, PID_AIFCDescriptor_Summary);
    ASSERT_EQ(summary.size(), 74u);
    const std::vector<uint8_t> channelsFramesBitsRate = {0, 0x2c, 0, 0, 0, 0, 0, 0x10,
                                                         0x40, 0x0e, 0xbb, 0x80, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(std::vector<uint8_t>(summary.begin() + 20, summary.begin() + 38), channelsFramesBitsRate);
}

TEST_F(ClipMobs, PictureClipsShareOneCodecDefinition) {
    EXPECT_EQ(objects(*written_.file->dictionary(), PID_Dictionary_CodecDefinitions).size(), 2u);  // CDCI, AIFC
}

TEST_F(ClipMobs, MxfTimecodeTakesTheCompositionRate) {
    const Object& fileMob = mob(*written_.file, context_->clips[0].fileMobId);  // one for all its tracks
    ASSERT_EQ(objects(fileMob, PID_Mob_Slots).size(), 3u);
    const Object& timecode = component(segment(slot(fileMob, 1)), 0);
    EXPECT_EQ(u16(timecode, PID_Timecode_FPS), 30u);
    EXPECT_EQ(i64(timecode, PID_Timecode_Start), 3600);
    const Object& tape = mob(*written_.file, context_->clips[0].tapeMobId);
    EXPECT_EQ(i64(segment(slot(tape, 0)), PID_Component_Length), 12947040);  // 120 hours at 29.97
}

TEST(SubClipMobs, ASubClipRegisteredBeforeItsParentReachesIt) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddSubClip(L"Early", L"/m/p.mov", 40, 7, c);
    addParent(c, 2);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    WrittenFile written = writeAndLoad(c, "subclip_first");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    auto subClips = subClipMobs(*written.file);
    ASSERT_EQ(subClips.size(), 1u);
    ASSERT_EQ(objects(*subClips[0], PID_Mob_Slots).size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const Object& clip = segment(slot(*subClips[0], i));
        EXPECT_TRUE(mobId(clip, PID_SourceReference_SourceID) == c->clips[1].masterMobId);
        EXPECT_EQ(u32(clip, PID_SourceReference_SourceMobSlotID), i + 1);
        EXPECT_EQ(i64(clip, PID_SourceClip_StartTime), 7);
        EXPECT_EQ(i64(clip, PID_Component_Length), 40);
    }
}

TEST(RefusedWrites, SaveWhatCameBeforeTheRefusal) {
    ContextPtr orphans = newContext();
    AafWriterContext* c = orphans.get();
    addParent(c, 0);
    AddSubClip(L"NoTracks", L"/m/p.mov", 10, 0, c);
    AddSubClip(L"WrongCase", L"/m/P.mov", 10, 0, c);
    AddSubClip(L"NeverWritten", L"/m/p.mov", 10, 0, c);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    WrittenFile missingParent = writeAndLoad(c, "subclip_missing_parent");
    EXPECT_EQ(missingParent.result, AAFRESULT_NULL_PARAM);
    auto subClips = subClipMobs(*missingParent.file);
    ASSERT_EQ(subClips.size(), 2u);
    for (const Object* sub : subClips) {
        EXPECT_TRUE(objects(*sub, PID_Mob_Slots).empty());
        EXPECT_NE(text(*sub, PID_Mob_Name), L"NeverWritten");
    }

    ContextPtr unstarted = newContext();
    addParent(unstarted.get(), 1);
    AddClip(L"B", L"/m/b.mov", 10, 0, false, nullptr, nullptr, 25, 1, unstarted.get());
    WrittenFile noComposition = writeAndLoad(unstarted.get(), "unstarted");
    EXPECT_EQ(noComposition.result, AAFRESULT_NOT_INITIALIZED);
    auto all = mobsOfKind(*noComposition.file, aafkit::kAAFAllMob);
    ASSERT_EQ(all.size(), 1u);  // the first clip's master mob
    EXPECT_EQ(text(*all[0], PID_Mob_Name), L"Parent");
}

}  // namespace

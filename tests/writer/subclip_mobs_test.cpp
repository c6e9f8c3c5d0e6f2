#include <gtest/gtest.h>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"

namespace {

using aafkit::Object;

void addParent(AafWriterContext* c, const wchar_t* path, int tracks) {
    int32_t clip = AddClip(L"Parent", path, 500, 0, false, nullptr, nullptr, 25, 1, c);
    for (int i = 0; i < tracks; ++i) AddClipTrack(clip, i == 0, i == 0 ? 25 : 48000, 1, 500, c);
}

std::vector<Object*> subClipMobs(const aafkit::File& file) {
    std::vector<Object*> found;
    for (Object* mob : mobsOfKind(file, aafkit::kAAFCompMob)) {
        aafUID_t usage;
        if (aafkit::getUsageCode(*mob, usage) == 0 && usage == kAAFUsage_SubClip) found.push_back(mob);
    }
    return found;
}

TEST(SubClipMobs, ReferenceEveryParentTrackWithTheSubClipsRange) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddSubClip(L"Early", L"/m/p.mov", 40, 7, c);  // registered before its parent
    addParent(c, L"/m/p.mov", 3);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    WrittenFile written = writeAndLoad(c, "subclip");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    auto subClips = subClipMobs(*written.file);
    ASSERT_EQ(subClips.size(), 1u);
    const Object& sub = *subClips[0];
    EXPECT_EQ(text(sub, PID_Mob_Name), L"Early");
    EXPECT_TRUE(mobId(sub, PID_Mob_MobID) == c->clips[0].masterMobId);
    ASSERT_EQ(objects(sub, PID_Mob_Slots).size(), 3u);
    const uint32_t physical[3] = {1, 1, 2};
    for (size_t i = 0; i < 3; ++i) {
        const Object& s = slot(sub, i);
        EXPECT_EQ(u32(s, PID_MobSlot_SlotID), i + 1);
        EXPECT_EQ(u32(s, PID_MobSlot_PhysicalTrackNumber), physical[i]);
        EXPECT_EQ(rational(s, PID_TimelineMobSlot_EditRate), std::make_pair(i == 0 ? 25 : 48000, 1));
        const Object& clip = segment(s);
        EXPECT_TRUE(mobId(clip, PID_SourceReference_SourceID) == c->clips[1].masterMobId);
        EXPECT_EQ(u32(clip, PID_SourceReference_SourceMobSlotID), i + 1);
        EXPECT_EQ(i64(clip, PID_SourceClip_StartTime), 7);
        EXPECT_EQ(i64(clip, PID_Component_Length), 40);
        EXPECT_TRUE(dataDefinition(clip) == (i == 0 ? kAAFDataDef_Picture : kAAFDataDef_Sound));
    }
}

TEST(SubClipMobs, AMissingParentStopsTheSubClips) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    addParent(c, L"/m/p.mov", 0);
    AddSubClip(L"NoTracks", L"/m/p.mov", 10, 0, c);
    AddSubClip(L"WrongCase", L"/m/P.mov", 10, 0, c);
    AddSubClip(L"NeverWritten", L"/m/p.mov", 10, 0, c);
    InitComposition(25, 1, 100, false, 0, L"Comp", c);
    WrittenFile written = writeAndLoad(c, "subclip_missing_parent");
    EXPECT_EQ(written.result, AAFRESULT_NULL_PARAM);
    auto subClips = subClipMobs(*written.file);
    ASSERT_EQ(subClips.size(), 2u);
    for (const Object* sub : subClips) {
        EXPECT_TRUE(objects(*sub, PID_Mob_Slots).empty());
        EXPECT_NE(text(*sub, PID_Mob_Name), L"NeverWritten");
    }
    EXPECT_EQ(WriteSubClips(nullptr), AAFRESULT_NULL_PARAM);
}

}  // namespace

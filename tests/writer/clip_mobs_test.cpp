#include <gtest/gtest.h>

#include <cstring>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"

namespace {

using aafkit::Object;

void startComposition(AafWriterContext* c) { InitComposition(25, 1, 100, false, 0, L"Comp", c); }

void addSoundTrack(AafWriterContext* c, int32_t clip, uint32_t channels, uint32_t bits, uint32_t rate) {
    AddClipTrack(clip, false, 48000, 1, 96000, c);
    SetAudioTrackInfo(clip, uint32_t(c->clips[clip - 1].tracks.size()), channels, bits, rate, 96000, c);
}

void addPictureTrack(AafWriterContext* c, int32_t clip) {
    AddClipTrack(clip, true, 25, 1, 250, c);
    SetVideoTrackInfo(clip, uint32_t(c->clips[clip - 1].tracks.size()), 1920, 1080, c);
}

// The file source mob a master slot's source clip refers to, and the slot it names.
Object& fileMobOf(const aafkit::File& file, const Object& masterSlot) {
    return mob(file, mobId(segment(masterSlot), PID_SourceReference_SourceID));
}

TEST(ClipMobs, TwoSoundTracksMakeTwoFileMobsAndOneImportMob) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"Dialog", L"/m/dialog.wav", 250, 90000, false, nullptr, nullptr, 25, 1, c);
    addSoundTrack(c, 1, 1, 24, 48000);
    addSoundTrack(c, 1, 1, 24, 48000);
    startComposition(c);
    WrittenFile written = writeAndLoad(c, "two_sound_tracks");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;

    auto masters = mobsOfKind(file, aafkit::kAAFMasterMob);
    ASSERT_EQ(masters.size(), 1u);
    EXPECT_EQ(mobsOfKind(file, aafkit::kAAFFileMob).size(), 2u);
    auto imports = mobsOfKind(file, aafkit::kAAFPhysicalMob);
    ASSERT_EQ(imports.size(), 1u);
    EXPECT_EQ(mobsOfKind(file, aafkit::kAAFCompMob).size(), 0u);  // no track, no composition
    const Object& master = *masters[0];
    EXPECT_EQ(text(master, PID_Mob_Name), L"Dialog");
    EXPECT_TRUE(mobId(master, PID_Mob_MobID) == c->clips[0].masterMobId);

    const Object& import = *imports[0];
    EXPECT_EQ(objects(import, PID_Mob_Slots).size(), 3u);
    EXPECT_EQ(text(slot(import, 0), PID_MobSlot_SlotName), L"TC1");
    for (size_t i = 0; i < 2; ++i) {
        const Object& masterSlot = slot(master, i);
        EXPECT_EQ(u32(masterSlot, PID_MobSlot_SlotID), i + 1);
        EXPECT_EQ(u32(masterSlot, PID_MobSlot_PhysicalTrackNumber), 1u);
        EXPECT_EQ(rational(masterSlot, PID_TimelineMobSlot_EditRate), std::make_pair(48000, 1));
        EXPECT_EQ(i64(masterSlot, PID_TimelineMobSlot_Origin), 0);
        EXPECT_EQ(text(masterSlot, PID_MobSlot_SlotName), L"");

        const Object& fileMob = fileMobOf(file, masterSlot);
        EXPECT_EQ(text(fileMob, PID_Mob_Name), L"/m/dialog.wav");
        ASSERT_EQ(objects(fileMob, PID_Mob_Slots).size(), 1u);
        EXPECT_EQ(u32(segment(masterSlot), PID_SourceReference_SourceMobSlotID), 1u);
        const Object& descriptor = object(fileMob, PID_SourceMob_EssenceDescription);
        EXPECT_EQ(className(descriptor), "AIFCDescriptor");
        const auto& locators = objects(descriptor, PID_EssenceDescriptor_Locator);
        ASSERT_EQ(locators.size(), 1u);
        EXPECT_EQ(text(*locators[0], PID_NetworkLocator_URLString), L"/m/dialog.wav");

        // file source mob slot -> import source mob slot of the track
        const Object& toImport = segment(slot(fileMob, 0));
        EXPECT_TRUE(mobId(toImport, PID_SourceReference_SourceID) == mobId(import, PID_Mob_MobID));
        EXPECT_EQ(u32(toImport, PID_SourceReference_SourceMobSlotID), i + 2);
        EXPECT_EQ(i64(toImport, PID_SourceClip_StartTime), 0);
        const Object& importSlot = slot(import, i + 1);
        EXPECT_EQ(u32(importSlot, PID_MobSlot_SlotID), i + 2);
        EXPECT_EQ(u32(importSlot, PID_MobSlot_PhysicalTrackNumber), 1u);
    }
}

TEST(ClipMobs, ImportTimecodeAndTrackSlotsCoverTheWholeSource) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"A", L"/m/a.wav", 250, 90000, true, nullptr, nullptr, 30000, 1001, c);
    addSoundTrack(c, 1, 1, 16, 48000);
    AddClip(L"B", L"/m/b.wav", 250, 0, false, nullptr, nullptr, 25, 1, c);
    addSoundTrack(c, 2, 1, 16, 48000);
    startComposition(c);
    WrittenFile written = writeAndLoad(c, "import_timecode");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    auto imports = mobsOfKind(*written.file, aafkit::kAAFPhysicalMob);
    ASSERT_EQ(imports.size(), 2u);
    for (const Object* import : imports) {
        const Object& tcSlot = slot(*import, 0);
        const Object& tcSequence = segment(tcSlot);
        const Object& timecode = component(tcSequence, 0);
        EXPECT_TRUE(dataDefinition(timecode) == kAAFDataDef_Timecode);
        EXPECT_TRUE(dataDefinition(tcSequence) == kAAFDataDef_Timecode);
        const Object& trackSegment = segment(slot(*import, 1));
        if (i64(timecode, PID_Timecode_Start) == 90000) {  // clip A
            EXPECT_EQ(rational(tcSlot, PID_TimelineMobSlot_EditRate), std::make_pair(30000, 1001));
            EXPECT_EQ(u16(timecode, PID_Timecode_FPS), 30u);
            EXPECT_EQ(i64(timecode, PID_Component_Length), 251);
            const Object& filler = component(tcSequence, 1);
            EXPECT_EQ(className(filler), "Filler");
            EXPECT_EQ(i64(filler, PID_Component_Length), 12959749);
            EXPECT_EQ(i64(tcSequence, PID_Component_Length), 12960000);
            EXPECT_EQ(className(trackSegment), "SourceClip");
            EXPECT_EQ(i64(trackSegment, PID_Component_Length), 12960001);
            EXPECT_EQ(u32(trackSegment, PID_SourceReference_SourceMobSlotID), 0u);
            EXPECT_TRUE(mobId(trackSegment, PID_SourceReference_SourceID) == aafMobID_t{});
        } else {
            EXPECT_EQ(objects(tcSequence, PID_Sequence_Components).size(), 1u);
            EXPECT_EQ(i64(timecode, PID_Component_Length), 12960001);
            EXPECT_EQ(i64(tcSequence, PID_Component_Length), 12960001);
            EXPECT_EQ(className(trackSegment), "Sequence");
            EXPECT_EQ(i64(component(trackSegment, 0), PID_Component_Length), 12960001);
            EXPECT_EQ(i64(component(trackSegment, 1), PID_Component_Length), 1);
            EXPECT_EQ(i64(trackSegment, PID_Component_Length), 12960001);
        }
    }
}

TEST(ClipMobs, AifcSummaryIsTheTemplatePatchedPerTrack) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"S", L"/m/s.aif", 10, 0, false, nullptr, nullptr, 25, 1, c);
    addSoundTrack(c, 1, 2, 24, 44100);
    addSoundTrack(c, 1, 300, 16, 32000);
    startComposition(c);
    WrittenFile written = writeAndLoad(c, "aifc");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const Object& master = *mobsOfKind(*written.file, aafkit::kAAFMasterMob).at(0);
    const uint8_t head[20] = {'F', 'O', 'R', 'M', 0, 0, 0, 0x42, 'A', 'I', 'F', 'C', 'C', 'O', 'M', 'M', 0, 0, 0, 0x26};
    const uint8_t tail[36] = {'N', 'O', 'N', 'E', 0x0e, 'N', 'o', 't', ' ', 'C', 'o', 'm', 'p', 'r', 'e', 's', 's',
                              'e', 'd', 0, 'S', 'S', 'N', 'D', 0x01, 0x13, 0x23, 0x2c, 0, 0, 0, 0, 0, 0, 0, 0};
    const uint8_t rate44100[10] = {0x40, 0x0e, 0xac, 0x44, 0, 0, 0, 0, 0, 0};
    const uint8_t rate48000[10] = {0x40, 0x0e, 0xbb, 0x80, 0, 0, 0, 0, 0, 0};
    for (size_t i = 0; i < 2; ++i) {
        const Object& descriptor =
            object(fileMobOf(*written.file, slot(master, i)), PID_SourceMob_EssenceDescription);
        std::vector<uint8_t> summary = bytes(descriptor, PID_AIFCDescriptor_Summary);
        ASSERT_EQ(summary.size(), 74u);
        EXPECT_EQ(0, std::memcmp(summary.data(), head, 20));
        EXPECT_EQ(0, std::memcmp(summary.data() + 38, tail, 36));
        EXPECT_EQ(summary[20], 0);
        EXPECT_EQ(summary[21], i == 0 ? 0x02 : 0x2c);  // 300 channels keep their low byte
        EXPECT_EQ(std::vector<uint8_t>(summary.begin() + 22, summary.begin() + 26), std::vector<uint8_t>(4, 0));
        EXPECT_EQ(summary[26], 0);
        EXPECT_EQ(summary[27], i == 0 ? 0x18 : 0x10);
        EXPECT_EQ(0, std::memcmp(summary.data() + 28, i == 0 ? rate44100 : rate48000, 10));
        EXPECT_EQ(rational(descriptor, PID_FileDescriptor_SampleRate), std::make_pair(i == 0 ? 44100 : 32000, 1));
        EXPECT_EQ(i64(descriptor, PID_FileDescriptor_Length), 96000);
        EXPECT_TRUE(definitionId(referenced(descriptor, PID_FileDescriptor_CodecDefinition)) == kAAFCodecDef_AIFC);
    }
}

TEST(ClipMobs, PictureTracksGetCdciDescriptorsWithTheirViews) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"P", L"/m/p.mov", 250, 0, false, nullptr, nullptr, 25, 1, c);
    addPictureTrack(c, 1);
    AddClip(L"Q", L"/m/q.mov", 250, 0, false, nullptr, nullptr, 25, 1, c);
    addPictureTrack(c, 2);
    startComposition(c);
    WrittenFile written = writeAndLoad(c, "cdci");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    auto fileMobs = mobsOfKind(*written.file, aafkit::kAAFFileMob);
    ASSERT_EQ(fileMobs.size(), 2u);
    const Object& descriptor = object(*fileMobs[0], PID_SourceMob_EssenceDescription);
    EXPECT_EQ(className(descriptor), "CDCIDescriptor");
    EXPECT_EQ(rational(descriptor, PID_FileDescriptor_SampleRate), std::make_pair(25, 1));
    EXPECT_EQ(i64(descriptor, PID_FileDescriptor_Length), 250);
    for (uint16_t pid : {PID_DigitalImageDescriptor_StoredHeight, PID_DigitalImageDescriptor_SampledHeight,
                         PID_DigitalImageDescriptor_DisplayHeight})
        EXPECT_EQ(u32(descriptor, pid), 1080u);
    for (uint16_t pid : {PID_DigitalImageDescriptor_StoredWidth, PID_DigitalImageDescriptor_SampledWidth,
                         PID_DigitalImageDescriptor_DisplayWidth})
        EXPECT_EQ(u32(descriptor, pid), 1920u);
    for (uint16_t pid : {PID_DigitalImageDescriptor_SampledXOffset, PID_DigitalImageDescriptor_SampledYOffset,
                         PID_DigitalImageDescriptor_DisplayXOffset, PID_DigitalImageDescriptor_DisplayYOffset})
        EXPECT_EQ(u32(descriptor, pid), 0u);
    EXPECT_EQ(u32(descriptor, PID_CDCIDescriptor_ComponentWidth), 8u);
    EXPECT_EQ(u32(descriptor, PID_CDCIDescriptor_HorizontalSubsampling), 1u);
    EXPECT_TRUE(definitionId(referenced(descriptor, PID_FileDescriptor_ContainerFormat)) ==
                kAAFContainerDef_External);
    const Object& codec = referenced(descriptor, PID_FileDescriptor_CodecDefinition);
    EXPECT_TRUE(definitionId(codec) == kAAFCodecDef_CDCI);
    EXPECT_EQ(text(codec, PID_DefinitionObject_Name), L"CDCI");
    EXPECT_EQ(objects(*written.file->dictionary(), PID_Dictionary_CodecDefinitions).size(), 1u);  // once per file
}

TEST(ClipMobs, MxfClipSharesOneFileMobWithATimecodeSlot) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    aafMobID_t tape, fileId;
    for (int i = 0; i < 32; ++i) {
        reinterpret_cast<uint8_t*>(&tape)[i] = uint8_t(i);
        reinterpret_cast<uint8_t*>(&fileId)[i] = uint8_t(0x80 + i);
    }
    AddClip(L"M", L"/m/CLIP.MXF", 250, 3600, false, &tape, &fileId, 25, 1, c);
    addPictureTrack(c, 1);
    addSoundTrack(c, 1, 1, 24, 48000);
    addSoundTrack(c, 1, 1, 24, 48000);
    InitComposition(30000, 1001, 100, true, 0, L"Comp", c);
    WrittenFile written = writeAndLoad(c, "mxf");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;

    auto fileMobs = mobsOfKind(file, aafkit::kAAFFileMob);
    ASSERT_EQ(fileMobs.size(), 1u);
    const Object& fileMob = *fileMobs[0];
    EXPECT_TRUE(mobId(fileMob, PID_Mob_MobID) == c->clips[0].fileMobId);
    EXPECT_EQ(className(object(fileMob, PID_SourceMob_EssenceDescription)), "CDCIDescriptor");
    ASSERT_EQ(objects(fileMob, PID_Mob_Slots).size(), 4u);
    const Object& tcSlot = slot(fileMob, 1);
    EXPECT_EQ(u32(tcSlot, PID_MobSlot_SlotID), 2u);
    EXPECT_EQ(u32(tcSlot, PID_MobSlot_PhysicalTrackNumber), 256u);
    EXPECT_EQ(rational(tcSlot, PID_TimelineMobSlot_EditRate), std::make_pair(25, 1));
    const Object& tc = component(segment(tcSlot), 0);
    EXPECT_EQ(i64(tc, PID_Timecode_Start), 3600);
    EXPECT_EQ(u16(tc, PID_Timecode_FPS), 30u);  // the composition's rate
    EXPECT_EQ(i64(tc, PID_Component_Length), 250);
    EXPECT_TRUE(dataDefinition(segment(tcSlot)) == kAAFDataDef_Timecode);

    const Object& master = *mobsOfKind(file, aafkit::kAAFMasterMob).at(0);
    const uint32_t fileSlots[3] = {1, 3, 4};
    for (size_t i = 0; i < 3; ++i) {
        const Object& wrapped = segment(slot(master, i));  // a tape ID wraps the clip in a sequence
        EXPECT_EQ(className(wrapped), "Sequence");
        const Object& toFile = component(wrapped, 0);
        EXPECT_EQ(u32(toFile, PID_SourceReference_SourceMobSlotID), fileSlots[i]);
        const Object& toImport = segment(slot(fileMob, fileSlots[i] - 1));
        EXPECT_EQ(u32(toImport, PID_SourceReference_SourceMobSlotID), i + 2);
        EXPECT_EQ(i64(toImport, PID_SourceClip_StartTime), 3600);
    }
    const Object& import = *mobsOfKind(file, aafkit::kAAFPhysicalMob).at(0);
    EXPECT_TRUE(mobId(import, PID_Mob_MobID) == c->clips[0].tapeMobId);
    const Object& importTimecode = segment(slot(import, 0));
    EXPECT_EQ(className(importTimecode), "Timecode");
    EXPECT_EQ(i64(importTimecode, PID_Component_Length), 12947040);
    EXPECT_EQ(i64(importTimecode, PID_Timecode_Start), 0);
}

TEST(ClipMobs, WritingRefusesClipsBeforeTheCompositionStarts) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddSubClip(L"orphan-free", L"/m/none.mov", 1, 0, c);
    EXPECT_EQ(WriteClips(nullptr), AAFRESULT_INVALID_PARAM);
    WrittenFile onlySubClips = writeAndLoad(c, "only_subclip");
    EXPECT_EQ(onlySubClips.result, AAFRESULT_NULL_PARAM);  // its parent is missing

    ContextPtr unstarted = newContext();
    AddClip(L"A", L"/m/a.mov", 10, 0, false, nullptr, nullptr, 25, 1, unstarted.get());
    addPictureTrack(unstarted.get(), 1);
    AddClip(L"B", L"/m/b.mov", 10, 0, false, nullptr, nullptr, 25, 1, unstarted.get());
    WrittenFile written = writeAndLoad(unstarted.get(), "unstarted");
    EXPECT_EQ(written.result, AAFRESULT_NOT_INITIALIZED);
    auto all = mobsOfKind(*written.file, aafkit::kAAFAllMob);
    ASSERT_EQ(all.size(), 1u);  // the first clip's master mob, saved
    EXPECT_EQ(text(*all[0], PID_Mob_Name), L"A");
}

TEST(ClipMobs, ATrackOfUnknownKindStopsTheWrite) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"A", L"/m/a.mov", 10, 0, false, nullptr, nullptr, 25, 1, c);
    addPictureTrack(c, 1);
    c->clips[0].tracks[0].kind = 7;
    startComposition(c);
    EXPECT_EQ(writeAndLoad(c, "unknown_kind").result, AAFRESULT_ILLEGAL_VALUE);
}

}  // namespace

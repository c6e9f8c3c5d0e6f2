#include <gtest/gtest.h>

#include "AAFWriter/aaf_composition.h"
#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"

namespace {

using aafkit::Object;

Object& composition(const aafkit::File& file) {
    auto mobs = mobsOfKind(file, aafkit::kAAFCompMob);
    EXPECT_EQ(mobs.size(), 1u);
    return *mobs.at(0);
}

// A started context with a picture clip (clip 1) and a sound clip (clip 2).
ContextPtr contextWithClips(uint32_t rateNumerator, uint32_t rateDenominator) {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"Pic", L"/m/pic.mov", 1000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, true, 25, 1, 1000, c);
    AddClip(L"Snd", L"/m/snd.wav", 1000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(2, false, 48000, 1, 1000, c);
    InitComposition(rateNumerator, rateDenominator, 500, true, 108000, L"Cut", c);
    return context;
}

TEST(CompositionMob, SlotsForTimecodeTracksAndMarkers) {
    ContextPtr context = contextWithClips(30000, 1001);
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 29.97, c);
    AddTrackToComposition(false, 29.97, c);
    AppendClipToTrack(0, 10, 100, false, 1, 1, c);
    AppendClipToTrack(1, 20, 100, false, 2, 1, c);
    AddMarker(42, L"Look here", c);
    WrittenFile written = writeAndLoad(c, "composition_slots");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const Object& mob = composition(*written.file);
    EXPECT_EQ(text(mob, PID_Mob_Name), L"Cut");
    ASSERT_EQ(objects(mob, PID_Mob_Slots).size(), 4u);

    const Object& tcSlot = slot(mob, 0);
    EXPECT_EQ(u32(tcSlot, PID_MobSlot_SlotID), 1u);
    EXPECT_EQ(text(tcSlot, PID_MobSlot_SlotName), L"Timecode");
    EXPECT_EQ(u32(tcSlot, PID_MobSlot_PhysicalTrackNumber), 1u);
    EXPECT_EQ(rational(tcSlot, PID_TimelineMobSlot_EditRate), std::make_pair(30000, 1001));
    const Object& timecode = segment(tcSlot);
    EXPECT_EQ(i64(timecode, PID_Component_Length), 500);
    EXPECT_EQ(i64(timecode, PID_Timecode_Start), 108000);
    EXPECT_EQ(u16(timecode, PID_Timecode_FPS), 30u);
    EXPECT_EQ(bytes(timecode, PID_Timecode_Drop), std::vector<uint8_t>{1});
    EXPECT_TRUE(dataDefinition(timecode) == kAAFDataDef_LegacyTimecode);

    const wchar_t* names[2] = {L"Video track", L"Audio track"};
    for (size_t i = 0; i < 2; ++i) {
        const Object& track = slot(mob, i + 1);
        EXPECT_EQ(u32(track, PID_MobSlot_SlotID), i + 2);
        EXPECT_EQ(text(track, PID_MobSlot_SlotName), names[i]);
        EXPECT_EQ(u32(track, PID_MobSlot_PhysicalTrackNumber), i + 1);
        EXPECT_EQ(rational(track, PID_TimelineMobSlot_EditRate), std::make_pair(30000, 1001));
        EXPECT_EQ(i64(track, PID_TimelineMobSlot_Origin), 0);
        const Object& clip = component(segment(track), 0);
        EXPECT_TRUE(mobId(clip, PID_SourceReference_SourceID) == c->clips[i].masterMobId);
        EXPECT_EQ(i64(clip, PID_SourceClip_StartTime), int64_t(10 * (i + 1)));
        EXPECT_TRUE(dataDefinition(segment(track)) == (i == 0 ? kAAFDataDef_Picture : kAAFDataDef_Sound));
    }

    const Object& markers = slot(mob, 3);
    EXPECT_EQ(className(markers), "EventMobSlot");
    EXPECT_EQ(u32(markers, PID_MobSlot_SlotID), 2u);  // the number of tracks
    EXPECT_EQ(text(markers, PID_MobSlot_SlotName), L"Markers");
    EXPECT_EQ(u32(markers, PID_MobSlot_PhysicalTrackNumber), 1u);
    EXPECT_EQ(rational(markers, PID_EventMobSlot_EditRate), std::make_pair(30000, 1001));
    const Object& marker = component(segment(markers), 0);
    EXPECT_EQ(className(marker), "DescriptiveMarker");
    EXPECT_EQ(i64(marker, PID_Event_Position), 42);
    EXPECT_EQ(text(marker, PID_Event_Comment), L"Look here");
    EXPECT_EQ(bytes(marker, PID_DescriptiveMarker_DescribedSlots), (std::vector<uint8_t>{1, 0, 0, 0}));
    EXPECT_TRUE(dataDefinition(marker) == kAAFDataDef_DescriptiveMetadata);
    const Object& comment = *objects(marker, PID_Component_UserComments).at(0);
    EXPECT_EQ(text(comment, PID_TaggedValue_Name), L"Comment");

    for (const Track& track : c->sequence.tracks) EXPECT_TRUE(track.events.empty());  // consumed
}

TEST(CompositionMob, OneTrackAndAMarkerShareSlotIdOne) {
    ContextPtr context = contextWithClips(25, 1);
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 25.0, c);
    AddMarker(0, L"m", c);
    WrittenFile written = writeAndLoad(c, "one_track_marker");
    const Object& mob = composition(*written.file);
    EXPECT_EQ(u32(slot(mob, 0), PID_MobSlot_SlotID), 1u);
    EXPECT_EQ(u32(slot(mob, 2), PID_MobSlot_SlotID), 1u);
    EXPECT_EQ(rational(slot(mob, 0), PID_TimelineMobSlot_EditRate), std::make_pair(25, 1));
    EXPECT_TRUE(objects(segment(slot(mob, 1)), PID_Sequence_Components).empty());
}

TEST(CompositionMob, TransitionsGetFillersWhereTheCutSitsAtAnEnd) {
    ContextPtr context = contextWithClips(25, 1);
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 25.0, c);
    AddTrackToComposition(false, 25.0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendTransition(0, 0, 20, c);   // cut at the start: filler before
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendTransition(0, 20, 20, c);  // cut at the end: filler after
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendTransition(0, 10, 20, c);  // in between: none
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendTransition(1, 5, 10, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    WrittenFile written = writeAndLoad(c, "transitions");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const Object& video = segment(slot(composition(*written.file), 1));
    const char* expected[] = {"SourceClip", "Filler", "Transition", "SourceClip", "Transition",
                              "Filler",     "SourceClip", "Transition", "SourceClip"};
    const auto& components = objects(video, PID_Sequence_Components);
    ASSERT_EQ(components.size(), 9u);
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(className(*components[i]), expected[i]) << i;
    EXPECT_EQ(i64(*components[1], PID_Component_Length), 20);
    EXPECT_EQ(i64(*components[5], PID_Component_Length), 20);
    EXPECT_EQ(i64(*components[7], PID_Transition_CutPoint), 10);
    EXPECT_EQ(i64(video, PID_Component_Length), 100 + 20 - 20 + 100 - 20 + 20 + 100 - 20 + 100);

    const Object& dissolve = referenced(object(*components[2], PID_Transition_OperationGroup),
                                        PID_OperationGroup_Operation);
    EXPECT_TRUE(definitionId(dissolve) == kAAFOperationDef_VideoDissolve);
    EXPECT_EQ(text(dissolve, PID_DefinitionObject_Name), L"Video Effect");
    EXPECT_EQ(i64(object(*components[2], PID_Transition_OperationGroup), PID_Component_Length), 20);
    const Object& audio = segment(slot(composition(*written.file), 2));
    const Object& audioDissolve =
        referenced(object(component(audio, 1), PID_Transition_OperationGroup), PID_OperationGroup_Operation);
    EXPECT_TRUE(definitionId(audioDissolve) == kAAFOperationDef_MonoAudioDissolve);
    EXPECT_EQ(text(audioDissolve, PID_DefinitionObject_Name), L"Audio Effect");
    int32_t inputs = 0;
    EXPECT_EQ(aafkit::getInt32(audioDissolve, PID_OperationDefinition_NumberInputs, inputs), 0);
    EXPECT_EQ(inputs, 2);
}

TEST(CompositionMob, EffectInputsAreWrittenOnlyInsideTheirEffect) {
    ContextPtr context = contextWithClips(25, 1);
    AafWriterContext* c = context.get();
    AddTrackToComposition(false, 25.0, c);
    AppendClipToTrack(0, 0, 10, false, 2, 1, c);
    AppendClipToTrack(0, 0, 20, false, 2, 1, c);
    AppendClipToTrack(0, 0, 30, false, 2, 1, c);
    const double gain = 0.5;
    AppendVolumeEffect(0, 50, &gain, 1, nullptr, 0, c);
    WrittenFile written = writeAndLoad(c, "effect_inputs");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const Object& audio = segment(slot(composition(*written.file), 1));
    const auto& components = objects(audio, PID_Sequence_Components);
    ASSERT_EQ(components.size(), 2u);
    EXPECT_EQ(i64(*components[0], PID_Component_Length), 10);
    EXPECT_EQ(className(*components[1]), "OperationGroup");
}

TEST(CompositionMob, NothingToComposeWritesNoCompositionMob) {
    ContextPtr fresh = newContext();
    WrittenFile empty = writeAndLoad(fresh.get(), "fresh");
    EXPECT_EQ(empty.result, AAFRESULT_SUCCESS);
    EXPECT_TRUE(mobsOfKind(*empty.file, aafkit::kAAFAllMob).empty());

    ContextPtr noTracks = newContext();
    InitComposition(25, 1, 100, false, 0, L"Empty", noTracks.get());
    WrittenFile started = writeAndLoad(noTracks.get(), "no_tracks");
    EXPECT_EQ(started.result, AAFRESULT_SUCCESS);
    EXPECT_TRUE(mobsOfKind(*started.file, aafkit::kAAFAllMob).empty());
    EXPECT_EQ(EndComposition(nullptr), AAFRESULT_NULL_PARAM);
}

TEST(CompositionMob, ASecondWriteRepeatsClipsWithEmptyTracks) {
    ContextPtr context = contextWithClips(25, 1);
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 25.0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    ASSERT_EQ(writeAndLoad(c, "first_write").result, AAFRESULT_SUCCESS);
    WrittenFile second = writeAndLoad(c, "second_write");
    ASSERT_EQ(second.result, AAFRESULT_SUCCESS);
    EXPECT_EQ(mobsOfKind(*second.file, aafkit::kAAFMasterMob).size(), 2u);
    const Object& track = segment(slot(composition(*second.file), 1));
    EXPECT_TRUE(objects(track, PID_Sequence_Components).empty());
}

}  // namespace

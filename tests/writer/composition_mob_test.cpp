#include <gtest/gtest.h>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"

// The written composition mob where it goes beyond the reference files: a cut at a
// transition's end, sound dissolves, an effect over several clips, empty and repeated writes.
namespace {

using aafkit::Object;

// A started 25 fps context with a picture clip (clip 1) and a sound clip (clip 2).
ContextPtr contextWithClips() {
    ContextPtr context = newContext();
    AafWriterContext* c = context.get();
    AddClip(L"Pic", L"/m/pic.mov", 1000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(1, true, 25, 1, 1000, c);
    AddClip(L"Snd", L"/m/snd.wav", 1000, 0, false, nullptr, nullptr, 25, 1, c);
    AddClipTrack(2, false, 48000, 1, 1000, c);
    InitComposition(25, 1, 500, false, 90000, L"Cut", c);
    return context;
}

TEST(CompositionMob, TransitionsAndEffectInputs) {
    ContextPtr context = contextWithClips();
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 25.0, c);
    AddTrackToComposition(false, 25.0, c);
    AddTrackToComposition(false, 25.0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendTransition(0, 20, 20, c);  // the cut at the end: a filler after it
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendTransition(1, 5, 10, c);
    AppendClipToTrack(1, 0, 100, false, 2, 1, c);
    AppendClipToTrack(2, 0, 10, false, 2, 1, c);
    AppendClipToTrack(2, 0, 20, false, 2, 1, c);
    AppendClipToTrack(2, 0, 30, false, 2, 1, c);
    const double gain = 0.5;
    AppendVolumeEffect(2, 50, &gain, 1, nullptr, 0, c);  // covers the last two clips
    WrittenFile written = writeAndLoad(c, "transitions");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    const aafkit::File& file = *written.file;

    const auto& video = trackComponents(file, 0);
    ASSERT_EQ(video.size(), 4u);
    EXPECT_EQ(className(*video[1]), "Transition");
    EXPECT_EQ(className(*video[2]), "Filler");
    EXPECT_EQ(i64(*video[2], PID_Component_Length), 20);
    EXPECT_EQ(i64(segment(slot(compositionMob(file), 1)), PID_Component_Length), 200);

    const Object& dissolve = referenced(object(*trackComponents(file, 1).at(1), PID_Transition_OperationGroup),
                                        PID_OperationGroup_Operation);
    EXPECT_TRUE(definitionId(dissolve) == kAAFOperationDef_MonoAudioDissolve);
    EXPECT_EQ(text(dissolve, PID_DefinitionObject_Name), L"Audio Effect");

    const auto& sound = trackComponents(file, 2);
    ASSERT_EQ(sound.size(), 2u);  // the covered clips are written inside the effect only
    EXPECT_EQ(i64(*sound[0], PID_Component_Length), 10);
    EXPECT_EQ(className(*sound[1]), "OperationGroup");
}

TEST(CompositionMob, NothingToComposeWritesNoMob) {
    ContextPtr fresh = newContext();
    WrittenFile empty = writeAndLoad(fresh.get(), "fresh");
    EXPECT_EQ(empty.result, AAFRESULT_SUCCESS);
    EXPECT_TRUE(mobsOfKind(*empty.file, aafkit::kAAFAllMob).empty());

    ContextPtr noTracks = newContext();
    InitComposition(25, 1, 100, false, 0, L"Empty", noTracks.get());
    WrittenFile started = writeAndLoad(noTracks.get(), "no_tracks");
    EXPECT_EQ(started.result, AAFRESULT_SUCCESS);
    EXPECT_TRUE(mobsOfKind(*started.file, aafkit::kAAFAllMob).empty());
}

TEST(CompositionMob, ASecondWriteRepeatsClipsWithEmptyTracks) {
    ContextPtr context = contextWithClips();
    AafWriterContext* c = context.get();
    AddTrackToComposition(true, 25.0, c);
    AppendClipToTrack(0, 0, 100, false, 1, 1, c);
    ASSERT_EQ(writeAndLoad(c, "first_write").result, AAFRESULT_SUCCESS);
    WrittenFile second = writeAndLoad(c, "second_write");
    ASSERT_EQ(second.result, AAFRESULT_SUCCESS);
    EXPECT_EQ(mobsOfKind(*second.file, aafkit::kAAFMasterMob).size(), 2u);
    EXPECT_TRUE(trackComponents(*second.file, 0).empty());
}

}  // namespace

// The composition walk over small files built in memory: which composition is taken, the
// timecode rule, flattening, the sub-clip follow, dropped clips, markers and effects.
#include <regex>

#include "InMemoryFile.h"
#include "AafParser/reader_ids.h"

namespace {

using readertest::kMaster;
using readertest::lines;
using readertest::Object;

using Walk = readertest::Composed;

TEST_F(Walk, TakesTheFirstCompositionThatIsTopLevelOrHasNoUsage) {
    Object& subClip = s.mob(AUID_AAFCompositionMob, 1, L"sub", &kAAFUsage_SubClip);
    s.slot(subClip, 1, s.filler(3));
    compose(s.filler(7), 2);
    compose(s.filler(9), 3);
    s.parse();
    ASSERT_EQ(GetNumTracks(c()), 1u);
    EXPECT_EQ(GetEventLen(0, 0, c()), 7);
}

TEST_F(Walk, NoCompositionLeavesTheSequenceEmptyWithoutAWord) {
    Object& other = s.mob(AUID_AAFCompositionMob, 1, L"sub", &kAAFUsage_LowerLevel);
    s.slot(other, 1, s.filler(3));
    EXPECT_EQ(s.parse(), "");
    EXPECT_EQ(GetNumTracks(c()), 0u);
}

TEST_F(Walk, FirstTimecodeSlotSetsWholeFramesAndMakesNoTrack) {
    Object& comp = s.mob(AUID_AAFCompositionMob, 50, L"comp");
    s.slot(comp, 1, aafkit::createTimecode(s.file(), 10, {108000, 1, 30}), 0, {30000, 1001});
    s.slot(comp, 2, aafkit::createTimecode(s.file(), 10, {5, 0, 24}), 0, {24000, 1001});
    s.parse();
    uint32_t start = 0, fps = 0, drop = 0;
    GetTimeCode(&start, &fps, &drop, c());
    EXPECT_EQ(start, 108000u);
    EXPECT_EQ(fps, 30u);
    EXPECT_EQ(drop, 1u);
    ASSERT_EQ(GetNumTracks(c()), 1u) << "a later timecode slot is an ordinary, empty track";
    EXPECT_EQ(GetNumEvents(0, c()), 0u);
}

TEST_F(Walk, TimecodeRateIsTheCeilingOfTheSlotRate) {
    Object& comp = s.mob(AUID_AAFCompositionMob, 50, L"comp");
    s.slot(comp, 1, aafkit::createTimecode(s.file(), 10, {86400, 0, 30}), 0, {24000, 1001});
    s.parse();
    uint32_t fps = 0, drop = 9;
    GetTimeCode(nullptr, &fps, &drop, c());
    EXPECT_EQ(fps, 24u) << "the timecode's own 30 is not used";
    EXPECT_EQ(drop, 0u);
}

TEST_F(Walk, SequencesFlattenIntoOneTrackInOrder) {
    Object& inner = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(inner, s.clip(kMaster, 1, 50, 4));
    Object& outer = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(outer, s.filler(10));
    aafkit::appendComponent(outer, inner);
    Object& dissolve = s.group(kAAFOperationDef_MonoAudioDissolve, 5);
    aafkit::appendComponent(outer, aafkit::createTransition(s.file(), kAAFDataDef_Sound, 5, 2, dissolve));
    aafkit::appendComponent(outer, s.clip(kMaster, 1, 40, 0));
    compose(outer);
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetNumTracks(c()), 1u);
    ASSERT_EQ(GetNumEvents(0, c()), 4u);
    EXPECT_EQ(IsEventFiller(0, 0, c()), 1u);
    EXPECT_EQ(GetEventLen(0, 0, c()), 10);
    EXPECT_EQ(GetEventLen(0, 1, c()), 50);
    EXPECT_EQ(GetEventInPoint(0, 1, c()), 4);
    EXPECT_EQ(IsEventTransition(0, 2, c()), 1u);
    EXPECT_EQ(GetTransitionCutPoint(0, 2, c()), 2);
    EXPECT_EQ(GetEventLen(0, 2, c()), 5);
    EXPECT_EQ(GetEventLen(0, 3, c()), 40);
    EXPECT_EQ(GetTrackEditRate(0, c()), 25.0);
}

TEST_F(Walk, ClipThroughASubClipFollowsOneLevelToTheMaster) {
    Object& sub = s.mob(AUID_AAFCompositionMob, 60, L"sub", &kAAFUsage_SubClip);
    s.slot(sub, 1, s.clip(kMaster, 1, 500, 100));
    compose(s.clip(60, 1, 30, 20));
    EXPECT_EQ(s.parse(), "");
    ASSERT_EQ(GetNumEvents(0, c()), 1u);
    EXPECT_EQ(GetEventInPoint(0, 0, c()), 120);
    wchar_t text[40];
    ASSERT_EQ(GetEventName(0, 0, text, 39, c()), 0);
    EXPECT_STREQ(text, L"master");
    ASSERT_EQ(GetEventId(0, 0, text, 39, c()), 0);
    EXPECT_STREQ(text, L"{00000064000000000000000000000000}");
    EXPECT_EQ(GetEventSlot(0, 0, c()), 1u);
    EXPECT_EQ(GetEventPhysicalNumber(0, 0, c()), 1u);
}

TEST_F(Walk, ClipsWithoutPhysicalNumberOrNameAreDroppedWithOneErrorLineEach) {
    Object& unnumbered = s.mob(AUID_AAFMasterMob, 101, L"unnumbered");
    s.slot(unnumbered, 1, s.clip(0, 0, 10, 0));
    Object& nameless = s.mob(AUID_AAFMasterMob, 102, L"");
    s.slot(nameless, 1, s.clip(0, 0, 10, 0), 1);
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, s.clip(101, 1, 10, 0));
    aafkit::appendComponent(sequence, s.clip(102, 1, 20, 0));
    aafkit::appendComponent(sequence, s.clip(kMaster, 1, 30, 0));
    aafkit::appendComponent(sequence, s.clip(103, 1, 40, 0));  // no such mob
    compose(sequence);
    std::vector<std::string> errors = lines(s.parse(false));
    ASSERT_EQ(GetNumEvents(0, c()), 1u);
    EXPECT_EQ(GetEventLen(0, 0, c()), 30);
    ASSERT_EQ(errors.size(), 3u);
    const std::regex line("Error '([0-9a-f]+)' returned at line [0-9]+ in AafParser/composition");
    std::smatch match;
    const char* codes[] = {"801200cf", "801200cf", "80120106"};  // absent property twice, then mob not found
    for (size_t i = 0; i < 3; ++i) {
        ASSERT_TRUE(std::regex_match(errors[i], match, line)) << errors[i];
        EXPECT_EQ(match[1], codes[i]);
    }
}

TEST_F(Walk, EventsOfAnEventSlotBecomeMarkersAndNoTrack) {
    Object& comp = s.mob(AUID_AAFCompositionMob, 50, L"comp");
    Object& markers = aafkit::createSequence(s.file(), kAAFDataDef_DescriptiveMetadata);
    for (int64_t position : {12, 40, 41}) {
        Object& marker = aafkit::createObject(s.file(), AUID_AAFCommentMarker);
        aafkit::setDataDefinition(marker, kAAFDataDef_DescriptiveMetadata);
        aafkit::setInt64(marker, PID_Event_Position, position);
        if (position != 41) aafkit::setString(marker, PID_Event_Comment, L"at " + std::to_wstring(position));
        aafkit::appendComponent(markers, marker);
    }
    s.eventSlot(comp, 9, markers);
    std::vector<std::string> errors = lines(s.parse());
    EXPECT_EQ(errors.size(), 1u) << "the marker without a comment";
    EXPECT_EQ(GetNumTracks(c()), 0u);
    ASSERT_EQ(GetNumMarkers(c()), 2u);
    EXPECT_EQ(GetMarkerPosition(1, c()), 40);
    wchar_t text[16];
    ASSERT_EQ(GetMarkerText(1, text, 15, c()), 0);
    EXPECT_STREQ(text, L"at 40");
}

TEST_F(Walk, TrackKindComesFromTheCatalogue) {
    Object& video = s.mob(AUID_AAFMasterMob, 110, L"video");
    s.slot(video, 2, s.clip(0, 0, 100, 0, kAAFDataDef_Picture), 1);
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Picture);
    aafkit::appendComponent(sequence, s.clip(110, 2, 10, 0, kAAFDataDef_Picture));
    compose(sequence);
    s.parse(false);
    EXPECT_EQ(GetTrackType(0, c()), 0u) << "without the catalogue the kind stays audio";
    s.parse(true);
    ASSERT_EQ(GetNumTracks(c()), 2u) << "a second walk appends its tracks again";
    EXPECT_EQ(GetTrackType(1, c()), 1u);
}

}  // namespace

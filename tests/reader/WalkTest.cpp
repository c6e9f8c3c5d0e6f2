// The composition walk over small files built in memory: which composition is taken, the
// timecode rule, the sub-clip follow, dropped clips and markers.
#include <cstdio>

#include "InMemoryFile.h"

namespace {

using readertest::kMaster;
using readertest::lines;
using readertest::Object;

using Walk = readertest::Composed;

TEST_F(Walk, TakesTheFirstCompositionThatIsTopLevelOrHasNoUsage) {
    s.slot(s.mob(AUID_AAFCompositionMob, 1, L"sub", &kAAFUsage_SubClip), 1, s.filler(3));
    s.slot(s.mob(AUID_AAFCompositionMob, 2, L"lower", &kAAFUsage_LowerLevel), 1, s.filler(5));
    EXPECT_EQ(s.parse(), "") << "no composition to take is no error";
    EXPECT_EQ(GetNumTracks(c()), 0u);
    s.slot(s.mob(AUID_AAFCompositionMob, 3, L"top", &kAAFUsage_TopLevel), 1, s.filler(7));
    compose(s.filler(9), 4);  // no usage: would be taken too, but comes later
    s.parse();
    ASSERT_EQ(GetNumTracks(c()), 1u);
    EXPECT_EQ(GetEventLen(0, 0, c()), 7);
}

TEST_F(Walk, FirstTimecodeSlotSetsStartDropAndTheCeilingOfTheSlotRate) {
    Object& comp = s.mob(AUID_AAFCompositionMob, 50, L"comp");
    s.slot(comp, 1, aafkit::createTimecode(s.file(), 10, {108000, 1, 30}), 0, {2401, 100});
    s.slot(comp, 2, aafkit::createTimecode(s.file(), 10, {5, 0, 24}), 0, {24000, 1001});
    s.parse();
    uint32_t start = 0, fps = 0, drop = 0;
    GetTimeCode(&start, &fps, &drop, c());
    EXPECT_EQ(start, 108000u);
    EXPECT_EQ(fps, 25u) << "the ceiling of 24.01; not the timecode's own 30";
    EXPECT_EQ(drop, 1u);
    ASSERT_EQ(GetNumTracks(c()), 1u) << "a later timecode slot is an ordinary, empty track";
    EXPECT_EQ(GetNumEvents(0, c()), 0u);
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
    const char* codes[] = {"801200cf", "801200cf", "80120106"};  // absent property twice, then mob not found
    for (size_t i = 0; i < 3; ++i) {
        unsigned code = 0;
        int sourceLine = 0;
        char source[64] = {};
        ASSERT_EQ(std::sscanf(errors[i].c_str(), "Error '%x' returned at line %d in %63s", &code, &sourceLine, source), 3)
            << errors[i];
        EXPECT_STREQ(source, "AafParser/composition");
        char hex[16];
        std::snprintf(hex, sizeof hex, "%x", code);
        EXPECT_STREQ(hex, codes[i]);
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

}  // namespace

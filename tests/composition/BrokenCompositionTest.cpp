// The composition read as the file holds it, over files that break it: source chains that
// end early or loop, compositions that include themselves, nests deeper than any editor
// makes, markers that describe slots that are not there. Nothing crashes or recurses
// without bound, and every item is kept with the reason it stops.
#include <functional>

#include "composition/Composition.h"
#include "reader/InMemoryFile.h"

namespace {

using readertest::InMemorySession;
using readertest::mobId;
using readertest::Object;
using composition::Segment;
using composition::SegmentKind;

class BrokenComposition : public testing::Test {
protected:
    // The top-level composition (id 1) with `segment` in slot 1, read.
    composition::Composition read(Object& segment) {
        s.slot(s.mob(AUID_AAFCompositionMob, 1, L"top", &kAAFUsage_TopLevel), 1, segment);
        composition::Composition out;
        std::string why;
        EXPECT_TRUE(composition::readComposition(s.file(), out, why)) << why;
        return out;
    }

    static const Segment& only(const composition::Composition& c) {
        EXPECT_EQ(c.tracks.size(), 1u);
        return c.tracks.at(0).segment;
    }

    InMemorySession s;
};

TEST_F(BrokenComposition, SourceChainsKeepWhatTheyReachedAndSayWhyTheyStop) {
    // A master whose file mob is missing; a master without the slot the clip names.
    s.slot(s.mob(AUID_AAFMasterMob, 10, L"master"), 1, s.clip(11, 1, 100, 0), 1);
    Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, s.clip(10, 1, 20, 5));
    aafkit::appendComponent(sequence, s.clip(10, 7, 20, 5));
    aafkit::appendComponent(sequence, s.clip(12, 1, 20, 5));  // no such mob at all
    const composition::Composition c = read(sequence);
    const Segment& track = only(c);
    ASSERT_EQ(track.children.size(), 3u);

    const composition::SourceChain& noFile = track.children[0].source.chain;
    ASSERT_EQ(noFile.links.size(), 1u);
    EXPECT_EQ(noFile.links[0].mob->name, "master");
    EXPECT_EQ(noFile.links[0].start, 5);
    EXPECT_NE(noFile.broken.find("is not in the file"), std::string::npos) << noFile.broken;

    const composition::SourceChain& noSlot = track.children[1].source.chain;
    ASSERT_EQ(noSlot.links.size(), 1u);
    EXPECT_FALSE(noSlot.links[0].placed());
    EXPECT_NE(noSlot.broken.find("has no slot 7"), std::string::npos) << noSlot.broken;

    EXPECT_TRUE(track.children[2].source.chain.links.empty());
    EXPECT_NE(track.children[2].source.chain.broken.find("is not in the file"), std::string::npos);
}

TEST_F(BrokenComposition, ASourceChainThatComesBackIsCutWhereItLoops) {
    s.slot(s.mob(AUID_AAFMasterMob, 10, L"master"), 1, s.clip(20, 1, 100, 0), 1);
    s.slot(s.mob(AUID_AAFSourceMob, 20, L"file"), 1, s.clip(10, 1, 100, 0), 1);
    const composition::Composition c = read(s.clip(10, 1, 30, 0));
    const composition::SourceChain& chain = only(c).source.chain;
    EXPECT_EQ(chain.links.size(), 2u);
    EXPECT_NE(chain.broken.find("comes back"), std::string::npos) << chain.broken;
}

TEST_F(BrokenComposition, ACompositionThatIncludesItselfIsKeptEmptyWithTheReason) {
    Object& nest = s.mob(AUID_AAFCompositionMob, 2, L"nest", &kAAFUsage_LowerLevel);
    s.slot(nest, 1, s.clip(2, 1, 40, 0));  // nest shows itself
    const composition::Composition c = read(s.clip(2, 1, 40, 0));
    const Segment& outer = only(c);
    ASSERT_EQ(outer.kind, SegmentKind::NestedComposition);
    EXPECT_EQ(outer.nestedName, "nest");
    ASSERT_EQ(outer.children.size(), 1u);
    const Segment& inner = outer.children[0];
    EXPECT_EQ(inner.kind, SegmentKind::NestedComposition);
    EXPECT_TRUE(inner.children.empty());
    EXPECT_NE(inner.problem.find("includes itself"), std::string::npos) << inner.problem;
}

TEST_F(BrokenComposition, NestingAThousandDeepStopsAtABoundWithTheReason) {
    for (uint32_t level = 0; level < 1000; ++level)
        s.slot(s.mob(AUID_AAFCompositionMob, 100 + level, L"level", &kAAFUsage_LowerLevel), 1,
               level == 999 ? s.filler(10) : s.clip(101 + level, 1, 10, 0));
    const composition::Composition c = read(s.clip(100, 1, 10, 0));
    int depth = 0;
    const Segment* deepest = &only(c);
    while (!deepest->children.empty()) {
        deepest = &deepest->children.front();
        ++depth;
    }
    EXPECT_LT(depth, 100);
    EXPECT_NE(deepest->problem.find("nested deeper than"), std::string::npos) << deepest->problem;
}

TEST_F(BrokenComposition, NestsThatDoubleAtEveryLevelStopAtABound) {
    // Each level shows the next twice: read out, 2^40 clips.
    for (uint32_t level = 0; level < 40; ++level) {
        aafkit::Object& twice = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
        for (int i = 0; i < 2; ++i) aafkit::appendComponent(twice, level == 39 ? s.filler(10) : s.clip(101 + level, 1, 10, 0));
        s.slot(s.mob(AUID_AAFCompositionMob, 100 + level, L"level", &kAAFUsage_LowerLevel), 1, twice);
    }
    const composition::Composition c = read(s.clip(100, 1, 20, 0));
    size_t segments = 0;
    bool bounded = false;
    std::function<void(const Segment&)> count = [&](const Segment& segment) {
        ++segments;
        bounded = bounded || segment.problem.find("more than") != std::string::npos;
        for (const Segment& child : segment.children) count(child);
    };
    count(only(c));
    EXPECT_TRUE(bounded);
    EXPECT_LT(segments, 3000000u);
}

TEST_F(BrokenComposition, AMarkerOfASlotThatIsNotThereIsKeptAsItIs) {
    Object& top = s.mob(AUID_AAFCompositionMob, 1, L"top", &kAAFUsage_TopLevel);
    s.slot(top, 1, s.filler(50), 1);
    Object& marker = aafkit::createDescriptiveMarker(s.file());
    aafkit::setDataDefinition(marker, kAAFDataDef_DescriptiveMetadata);
    aafkit::setInt64(marker, PID_Event_Position, 12);
    aafkit::setString(marker, PID_Event_Comment, L"where?");
    const uint8_t slot99[] = {99, 0, 0, 0};
    aafkit::setBytes(marker, PID_DescriptiveMarker_DescribedSlots, {slot99, slot99 + 4});
    Object& events = aafkit::createSequence(s.file(), kAAFDataDef_DescriptiveMetadata);
    aafkit::appendComponent(events, marker);
    s.eventSlot(top, 1000, events);
    composition::Composition c;
    std::string why;
    ASSERT_TRUE(composition::readComposition(s.file(), c, why)) << why;
    ASSERT_EQ(c.markers.size(), 1u);
    EXPECT_EQ(c.markers[0].position, 12);
    EXPECT_EQ(c.markers[0].comment, "where?");
    EXPECT_EQ(c.markers[0].describedSlots, std::vector<uint32_t>{99});
    EXPECT_EQ(c.findTrack(99), nullptr);
}

TEST_F(BrokenComposition, AFileWithoutATopLevelCompositionSaysSo) {
    s.slot(s.mob(AUID_AAFCompositionMob, 1, L"sub", &kAAFUsage_SubClip), 1, s.filler(3));
    composition::Composition c;
    std::string why;
    EXPECT_FALSE(composition::readComposition(s.file(), c, why));
    EXPECT_EQ(why, "the file holds no top-level composition");
}

}  // namespace

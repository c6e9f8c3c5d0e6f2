// The diff on cuts read from the shared samples and edited in memory: known edits found on
// real material, rates compared in time, and tracks that cannot be compared refused.
#include <gtest/gtest.h>

#include "DiffHarness.h"

using namespace diffharness;

namespace {

std::vector<cutdiff::Cut> sampleCuts() {
    std::vector<cutdiff::Cut> cuts;
    for (const std::string& path : testsupport::sampleFiles()) {
        std::unique_ptr<aafkit::File> file;
        composition::Composition read;
        std::string why;
        if (aafkit::File::openExistingRead(path, file) == 0 && composition::readComposition(*file, read, why))
            cuts.push_back(cutdiff::cutFromComposition(read));
    }
    return cuts;
}

int64_t recordLength(const cutdiff::CutTrack& track) {
    int64_t length = 0;
    for (const cutdiff::CutEvent& event : track.events) length += event.recordLength();
    return length;
}

int64_t conformLength(const cutdiff::CutDiff& diff, const std::string& track) {
    int64_t length = 0;
    for (const cutdiff::ConformRange& range : diff.conform)
        if (range.fromTrack == track) length += range.oldOut - range.oldIn;
    return length;
}

// Every sample against itself: nothing changed, and the conform map carries every frame over.
TEST(SampleCuts, EachAgainstItselfHasNoChangesAndConformsWhole) {
    const std::vector<cutdiff::Cut> cuts = sampleCuts();
    if (cuts.empty()) GTEST_SKIP() << "no samples";
    for (const cutdiff::Cut& cut : cuts) {
        SCOPED_TRACE(cut.name);
        cutdiff::Cut before = cut, after = cut;
        const cutdiff::CutDiff diff = diffOf(before, after);
        EXPECT_TRUE(diff.changes.empty()) << ::testing::PrintToString(changeLines(diff));
        for (const cutdiff::CutTrack& track : cut.tracks) EXPECT_EQ(conformLength(diff, track.label), recordLength(track));
    }
}

// Whether an event's material shows elsewhere on its track: lifting one of two identical uses
// out can as well be read as lifting the other.
bool usedTwice(const std::vector<cutdiff::CutEvent>& events, size_t index) {
    return std::any_of(events.begin(), events.end(), [&](const cutdiff::CutEvent& other) {
        return &other != &events[index] && other.source == events[index].source &&
               std::min(other.sourceOut, events[index].sourceOut) > std::max(other.sourceIn, events[index].sourceIn);
    });
}

// On each sample's busiest track: its second event lifted out and the rest rippled up.
TEST(SampleCuts, ARippleDeleteOnRealMaterialIsOneDeletionAndTheShifts) {
    size_t edited = 0;
    for (cutdiff::Cut& before : sampleCuts()) {
        auto busiest = std::max_element(before.tracks.begin(), before.tracks.end(), [](const auto& a, const auto& b) {
            return a.events.size() < b.events.size();
        });
        if (busiest == before.tracks.end() || busiest->events.size() < 4 || usedTwice(busiest->events, 1)) continue;
        SCOPED_TRACE(before.name + " " + busiest->label);
        cutdiff::Cut after = before;
        std::vector<cutdiff::CutEvent>& events = after.tracks[size_t(busiest - before.tracks.begin())].events;
        const int64_t gap = events[1].recordLength();
        events.erase(events.begin() + 1);
        for (size_t e = 1; e < events.size(); ++e) events[e].recordIn -= gap, events[e].recordOut -= gap;
        after.markers.clear();
        before.markers.clear();
        const bool sound = busiest->kind == cutdiff::TrackKind::Sound;
        std::vector<std::string> expected = {busiest->label + " deleted @" + std::to_string(busiest->events[1].recordIn) +
                                             " 0 +0" + (sound ? " audio only" : "")};
        for (size_t e = 1; e < events.size(); ++e)
            expected.push_back(busiest->label + " shifted @" + std::to_string(events[e].recordIn) + " " +
                               std::to_string(-gap) + " " + std::to_string(-gap));
        std::vector<std::string> lines = changeLines(diffOf(before, after));
        std::sort(lines.begin(), lines.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(lines, expected);
        ++edited;
    }
    if (edited == 0) GTEST_SKIP() << "no samples";
}

// The same cut at twice the rate: the same cut, compared in time.
TEST(CutModel, CutsAtDifferentRatesAreComparedInTime) {
    cutdiff::Cut before = written(baseCut(), ".aaf");
    cutdiff::Cut after = before;
    for (cutdiff::CutTrack& track : after.tracks) {
        track.editRate = {50, 1};
        for (cutdiff::CutEvent& event : track.events)
            for (int64_t* time : {&event.recordIn, &event.recordOut, &event.sourceIn, &event.sourceOut}) *time *= 2;
    }
    for (cutdiff::CutMarker& marker : after.markers) marker.position *= 2;
    const cutdiff::CutDiff diff = diffOf(before, after);
    EXPECT_TRUE(diff.comparedInTime);
    EXPECT_TRUE(diff.changes.empty()) << ::testing::PrintToString(changeLines(diff));
    after.tracks[0].events[1].recordOut -= 4;
    after.tracks[0].events[1].sourceOut -= 4;
    EXPECT_EQ(changeLines(diffOf(before, after)), (std::vector<std::string>{"V1 tail trimmed @50 2 +0"}));
}

TEST(CutModel, ATrackOfAnotherKindInTheOtherCutIsRefused) {
    cutdiff::Cut before = written(baseCut(), ".aaf");
    cutdiff::Cut after = before;
    after.tracks[1].kind = cutdiff::TrackKind::Picture;
    cutdiff::CutDiff diff;
    std::string why;
    EXPECT_FALSE(cutdiff::diffCuts(before, after, {}, diff, why));
    EXPECT_EQ(why, "track A1 is sound in the old cut and picture in the new one");
}

}  // namespace

namespace {

composition::Segment segment(composition::SegmentKind kind, int64_t length, std::vector<composition::Segment> children = {}) {
    composition::Segment made;
    made.kind = kind;
    made.data = composition::DataKind::Picture;
    made.length = length;
    made.children = std::move(children);
    return made;
}

// Forty layers, each showing the one below through two references: walked once per layer, not
// once per path down (2^40 of them).
TEST(CutModel, LayersReferringDownManyTimesAreWalkedOnce) {
    constexpr int64_t kLength = 1000;
    composition::Segment clip = segment(composition::SegmentKind::SourceClip, kLength);
    clip.source.startTime = 5000;
    std::vector<composition::Segment> layers = {segment(composition::SegmentKind::Sequence, kLength, {clip})};
    for (int layer = 1; layer < 40; ++layer) {
        composition::Segment below = segment(composition::SegmentKind::ScopeReference, kLength / 2);
        below.relativeSlot = 1;
        layers.push_back(segment(composition::SegmentKind::Sequence, kLength, {below, below}));
    }
    composition::Composition read;
    composition::Track track;
    track.data = composition::DataKind::Picture;
    track.editRate = {25, 1};
    track.segment = segment(composition::SegmentKind::NestedScope, kLength, std::move(layers));
    read.tracks.push_back(std::move(track));

    const cutdiff::Cut cut = cutdiff::cutFromComposition(read);
    ASSERT_EQ(cut.tracks.size(), 1u);
    const std::vector<cutdiff::CutEvent>& events = cut.tracks[0].events;
    ASSERT_EQ(events.size(), 2u);  // the clip, cut where the references meet
    EXPECT_EQ(events[0].sourceIn, 5000);
    EXPECT_EQ(events[1].recordIn, kLength / 2);
    EXPECT_EQ(events[1].sourceIn, 5000 + kLength / 2);
    EXPECT_EQ(events[1].recordOut, kLength);
}

}  // namespace

namespace {

cutdiff::CutEvent event(int64_t recordIn, int64_t length, uint32_t source, int64_t sourceIn) {
    cutdiff::CutEvent made;
    made.recordIn = recordIn;
    made.recordOut = recordIn + length;
    made.source = source;
    made.sourceIn = sourceIn;
    made.sourceOut = sourceIn + length;
    return made;
}

// Black between every shot, five hundred times: each use of it stays paired with itself.
TEST(CutModel, MaterialUsedHundredsOfTimesStaysInPlace) {
    cutdiff::Cut cut;
    cut.sources = {{"black", "black", "Black"}, {"shots", "shots", "Shots"}};
    cutdiff::CutTrack track;
    track.label = "V1";
    track.editRate = {25, 1};
    for (int64_t shot = 0; shot < 500; ++shot) {
        const int64_t at = shot * 30;
        track.events.push_back(event(at, 10, 0, 0));
        track.events.push_back(event(at + 10, 20, 1, shot * 100));
    }
    cut.tracks.push_back(track);
    EXPECT_TRUE(diffOf(cut, cut).changes.empty()) << ::testing::PrintToString(changeLines(diffOf(cut, cut)));

    cutdiff::Cut lifted = cut;
    std::vector<cutdiff::CutEvent>& events = lifted.tracks[0].events;
    events.erase(events.begin() + 600);  // the black before shot 300
    for (size_t e = 600; e < events.size(); ++e) events[e].recordIn -= 10, events[e].recordOut -= 10;
    const std::vector<std::string> lines = changeLines(diffOf(cut, lifted));
    ASSERT_EQ(lines.size(), 400u);  // the black, and the 399 events after it
    EXPECT_EQ(lines.front(), "V1 shifted @9000 -10 -10");
    EXPECT_EQ(lines[1], "V1 deleted @9000 0 +0");
}

}  // namespace

namespace {

// Media Composer's motion adapter: a 30 fps clip in a 25 fps sequence, its input counted at 30.
// The event plays 100 frames of the sequence and shows 121 frames at 30 of its source: 101 at 25.
TEST(SampleCuts, AMixedRateInputIsCountedAtItsOwnRate) {
    const std::string path = testsupport::sample("media-composer/MC_Audio_Warp.aaf");
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no " << path;
    const cutdiff::Cut cut = readCut(path);
    const cutdiff::CutEvent* adapted = nullptr;
    for (const cutdiff::CutTrack& track : cut.tracks)
        for (const cutdiff::CutEvent& event : track.events)
            if (std::abs(event.speed - 5.0 / 6.0) < 1e-9) adapted = &event;
    ASSERT_NE(adapted, nullptr);
    EXPECT_EQ(adapted->recordLength(), 100);
    EXPECT_EQ(adapted->sourceLength(), 101);
}

}  // namespace

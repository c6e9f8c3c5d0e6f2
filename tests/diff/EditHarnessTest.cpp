// Known edits made to a written cut; the diff must name exactly those edits, in class, place
// and amount, its conform map must carry the old cut onto the new one frame for frame, and
// the diff the other way must undo it.
#include <algorithm>
#include <functional>

#include "DiffHarness.h"
#include "diff/SourceIdentity.h"

using namespace diffharness;
using cutdiff::ChangeKind;

namespace {

HarnessTrack& V1(HarnessCut& cut) { return cut.tracks[0]; }
HarnessTrack& A1(HarnessCut& cut) { return cut.tracks[1]; }
HarnessTrack& V2(HarnessCut& cut) { return cut.tracks[2]; }

// Markers at or after `from` move with a ripple, as a track's markers do in an editor.
void rippleMarkers(HarnessCut& cut, int64_t from, int64_t by) {
    for (auto& marker : cut.markers)
        if (marker.first >= from) marker.first += by;
}

struct EditCase {
    const char* name;
    std::function<void(HarnessCut&)> edit;
    std::vector<std::string> expected;
};

// Old and new: base layout A[0,50) B[50,110) C[110,150) D[150,220) E[220,250) on V1 and A1.
const std::vector<EditCase>& editCases() {
    static const std::vector<EditCase> cases = {
        {"ripple insert",
         [](HarnessCut& cut) {
             for (HarnessTrack* track : {&V1(cut), &A1(cut)}) track->events.insert(track->events.begin() + 2, {"F", 700, 20});
             rippleMarkers(cut, 110, 20);
         },
         {"V1 inserted @110 0 +0", "V1 shifted @130 20 +20", "V1 shifted @170 20 +20", "V1 shifted @240 20 +20",
          "A1 inserted @110 0 +0", "A1 shifted @130 20 +20", "A1 shifted @170 20 +20", "A1 shifted @240 20 +20"}},
        {"ripple delete",
         [](HarnessCut& cut) {
             for (HarnessTrack* track : {&V1(cut), &A1(cut)}) track->events.erase(track->events.begin() + 2);
             rippleMarkers(cut, 150, -40);
         },
         {"V1 deleted @110 0 +0", "V1 shifted @110 -40 -40", "V1 shifted @180 -40 -40", "A1 deleted @110 0 +0",
          "A1 shifted @110 -40 -40", "A1 shifted @180 -40 -40"}},
        {"head trim",
         [](HarnessCut& cut) {
             for (HarnessTrack* track : {&V1(cut), &A1(cut)}) track->events[1] = {"B", 210, 50};
             rippleMarkers(cut, 110, -10);
         },
         {"V1 head trimmed @50 10 +0", "V1 shifted @100 -10 -10", "V1 shifted @140 -10 -10", "V1 shifted @210 -10 -10",
          "A1 head trimmed @50 10 +0", "A1 shifted @100 -10 -10", "A1 shifted @140 -10 -10", "A1 shifted @210 -10 -10"}},
        {"tail trim",
         [](HarnessCut& cut) {
             for (HarnessTrack* track : {&V1(cut), &A1(cut)}) track->events[3] = {"D", 400, 65};
         },
         {"V1 tail trimmed @150 5 +0", "V1 shifted @215 -5 -5", "A1 tail trimmed @150 5 +0", "A1 shifted @215 -5 -5"}},
        {"tail extend and slip",
         [](HarnessCut& cut) {
             V1(cut).events[0] = {"A", 100, 53};
             V1(cut).events[1] = {"B", 203, 57};
             V1(cut).events[2] = {"C", 307, 40};
         },
         {"V1 tail extended @0 3 +0", "V1 head trimmed @53 3 +3", "V1 slipped @110 7 +0"}},
        {"slide",
         [](HarnessCut& cut) {
             auto& events = V1(cut).events;
             events[1] = {"B", 200, 65};
             events[3] = {"D", 405, 65};
         },
         {"V1 tail extended @50 5 +0", "V1 shifted @115 5 +5", "V1 head trimmed @155 5 +5"}},
        {"move to another track",
         [](HarnessCut& cut) {
             V1(cut).events[3] = {"", 0, 70};
             V2(cut).events = {{"", 0, 150}, {"D", 400, 70}, {"", 0, 30}};
         },
         {"V2 moved @150 0 +0 from V1"}},
        {"split",
         [](HarnessCut& cut) {
             for (HarnessTrack* track : {&V1(cut), &A1(cut)}) {
                 track->events[2] = {"C", 300, 15};
                 track->events.insert(track->events.begin() + 3, {"C", 325, 15});
             }
             rippleMarkers(cut, 150, -10);
         },
         {"V1 split @110 10 +0", "V1 shifted @140 -10 -10", "V1 shifted @210 -10 -10", "A1 split @110 10 +0",
          "A1 shifted @140 -10 -10", "A1 shifted @210 -10 -10"}},
        {"replace", [](HarnessCut& cut) { V1(cut).events[2] = {"F", 800, 40}; }, {"V1 replaced @110 0 +0"}},
        // The writer gives a sped-up clip the start inPoint / speed, in the master clip's edit
        // units: at twice the speed, in point 800 starts where D did.
        {"speed change", [](HarnessCut& cut) { V1(cut).events[3] = {"D", 800, 70, 2.0}; }, {"V1 speed changed @150 0 +0"}},
        {"level change", [](HarnessCut& cut) { A1(cut).events[1].gain = 0.5; }, {"A1 level changed @50 0 +0"}},
        {"marker changes",
         [](HarnessCut& cut) { cut.markers = {{25, "Title"}, {100, "Cut here"}}; },
         {"V1 marker moved @25 5 +5", "V1 marker added @100 0 +0", "V1 marker removed @160 0 +0"}},
        {"start timecode", [](HarnessCut& cut) { cut.timecodeStart = 90250; }, {"cut start timecode changed @0 0 +0"}},
        {"audio-only trim",
         [](HarnessCut& cut) { A1(cut).events[3] = {"D", 400, 65}; },
         {"A1 tail trimmed @150 5 +0 audio only", "A1 shifted @215 -5 -5"}},
    };
    return cases;
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
    std::sort(lines.begin(), lines.end());
    return lines;
}

// Each frame of a track: the source it shows (as both cuts know it) and where in it; -1 for nothing.
using SourceFrame = std::pair<int64_t, int64_t>;
std::vector<SourceFrame> sourceFrames(const cutdiff::CutTrack& track, const std::vector<uint32_t>& identities) {
    std::vector<SourceFrame> frames;
    for (const cutdiff::CutEvent& event : track.events) {
        frames.resize(size_t(event.recordOut), {-1, 0});
        for (int64_t f = event.recordIn; f < event.recordOut; ++f)
            frames[size_t(f)] = {identities[event.source],
                                 event.sourceIn + (f - event.recordIn) * event.sourceLength() / event.recordLength()};
    }
    return frames;
}

bool newMaterial(const cutdiff::CutDiff& diff, const cutdiff::Cut& after, const std::string& track, int64_t frame) {
    return std::any_of(diff.changes.begin(), diff.changes.end(), [&](const cutdiff::Change& change) {
        static const std::vector<ChangeKind> bringing = {ChangeKind::Inserted, ChangeKind::Replaced, ChangeKind::HeadExtended,
                                                         ChangeKind::TailExtended, ChangeKind::Slipped};
        if (std::find(bringing.begin(), bringing.end(), change.kind) == bringing.end() || change.track != track) return false;
        const cutdiff::CutEvent& event = after.tracks[change.after.track].events[change.after.event];
        return frame >= event.recordIn && frame < event.recordOut;
    });
}

// The conform map applied to the old cut gives the new cut's source at every frame of every
// track; the rest is material the old cut did not show, each frame of it named by a change.
void expectConformGivesNew(const cutdiff::Cut& before, const cutdiff::Cut& after, const cutdiff::CutDiff& diff) {
    const cutdiff::SourceIdentities identities = cutdiff::identifySources(before, after);
    for (const cutdiff::CutTrack& track : after.tracks) {
        const std::vector<SourceFrame> now = sourceFrames(track, identities.after);
        std::vector<bool> covered(now.size());
        for (const cutdiff::ConformRange& range : diff.conform) {
            if (range.track != track.label) continue;
            const std::vector<SourceFrame> old = sourceFrames(*before.find(range.fromTrack), identities.before);
            for (int64_t f = range.newIn; f < range.newOut; ++f) {
                const int64_t g = range.oldIn + (f - range.newIn) * (range.oldOut - range.oldIn) / (range.newOut - range.newIn);
                ASSERT_LT(size_t(f), now.size());
                ASSERT_LT(size_t(g), old.size());
                EXPECT_EQ(now[size_t(f)].first, old[size_t(g)].first) << track.label << " frame " << f;
                EXPECT_NEAR(double(now[size_t(f)].second), double(old[size_t(g)].second), 1.0) << track.label << " frame " << f;
                covered[size_t(f)] = true;
            }
        }
        for (size_t f = 0; f < now.size(); ++f)
            if (now[f].first >= 0 && !covered[f]) {
                EXPECT_TRUE(newMaterial(diff, after, track.label, int64_t(f))) << track.label << " frame " << f << " unaccounted";
            }
    }
}

ChangeKind inverse(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::HeadTrimmed: return ChangeKind::HeadExtended;
    case ChangeKind::HeadExtended: return ChangeKind::HeadTrimmed;
    case ChangeKind::TailTrimmed: return ChangeKind::TailExtended;
    case ChangeKind::TailExtended: return ChangeKind::TailTrimmed;
    case ChangeKind::Inserted: return ChangeKind::Deleted;
    case ChangeKind::Deleted: return ChangeKind::Inserted;
    case ChangeKind::MarkerAdded: return ChangeKind::MarkerRemoved;
    case ChangeKind::MarkerRemoved: return ChangeKind::MarkerAdded;
    default: return kind;
    }
}

// What a change undoes, whichever way it is read: class undone, amounts and values swapped.
std::vector<std::string> undone(const cutdiff::CutDiff& diff, bool invert) {
    std::vector<std::string> lines;
    for (const cutdiff::Change& change : diff.changes) {
        const ChangeKind kind = invert ? inverse(change.kind) : change.kind;
        const bool signedAmount = kind == ChangeKind::Slipped || kind == ChangeKind::Shifted || kind == ChangeKind::MarkerMoved;
        const int64_t sign = invert ? -1 : 1;
        std::vector<std::string> tracks = {change.track, change.fromTrack};
        std::sort(tracks.begin(), tracks.end());
        lines.push_back(std::string(cutdiff::changeKindName(kind)) + " " + tracks[0] + tracks[1] + " " +
                        std::to_string(signedAmount ? sign * change.amount : change.amount) + " " +
                        std::to_string(sign * change.shift) + " " + (invert ? change.to + ">" + change.from
                                                                            : change.from + ">" + change.to));
    }
    return sorted(lines);
}

TEST(EditHarness, EachEditIsReportedExactlyAndTheConformMapRebuildsTheNewCut) {
    const cutdiff::Cut before = written(baseCut(), ".old.aaf");
    for (const EditCase& edit : editCases()) {
        SCOPED_TRACE(edit.name);
        HarnessCut changed = baseCut();
        edit.edit(changed);
        const cutdiff::Cut after = written(changed, ".new.aaf");
        const cutdiff::CutDiff diff = diffOf(before, after);
        EXPECT_EQ(sorted(changeLines(diff)), sorted(edit.expected));
        expectConformGivesNew(before, after, diff);
        if (std::string(edit.name) != "split") {  // a split read backwards is a join: a trim and a deletion
            EXPECT_EQ(undone(diffOf(after, before), true), undone(diff, false));
        }
    }
}

TEST(EditHarness, ACutComparedWithItselfHasNoChanges) {
    const cutdiff::Cut before = written(baseCut(), ".a.aaf");
    const cutdiff::Cut again = written(baseCut(), ".b.aaf");
    const cutdiff::CutDiff diff = diffOf(before, again);
    EXPECT_TRUE(diff.changes.empty()) << ::testing::PrintToString(changeLines(diff));
    ASSERT_EQ(diff.conform.size(), 2u);  // V1 and A1 each carried whole, as one range; V2 empty
    EXPECT_EQ(diff.conform[0].oldOut, 250);
    EXPECT_EQ(diff.conform[0].newOut, 250);
}

TEST(EditHarness, TracksAndToleranceNarrowWhatIsCompared) {
    const cutdiff::Cut before = written(baseCut(), ".old.aaf");
    HarnessCut changed = baseCut();
    A1(changed).events[3] = {"D", 400, 68};
    V1(changed).events[0] = {"A", 100, 45};
    V1(changed).events.insert(V1(changed).events.begin() + 1, {"", 0, 5});
    const cutdiff::Cut after = written(changed, ".new.aaf");
    cutdiff::DiffOptions options;
    options.tracks = {"A1"};
    EXPECT_EQ(changeLines(diffOf(before, after, options)),
              (std::vector<std::string>{"A1 tail trimmed @150 2 +0 audio only", "A1 shifted @218 -2 -2"}));
    options.tolerance = 2;
    EXPECT_TRUE(diffOf(before, after, options).changes.empty());
}

}  // namespace

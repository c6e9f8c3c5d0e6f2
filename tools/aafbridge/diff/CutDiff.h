#pragma once
// What changed between two versions of a cut: each event of the old one followed to where its
// material went in the new one (by source, never by place or name), each change classified
// with its amount, and the conform map that carries old record time to new.
#include <cstdint>
#include <string>
#include <vector>

#include "diff/Cut.h"

namespace cutdiff {

enum class ChangeKind {
    StartTimecodeChanged,
    Shifted,  // rippled by an earlier change only
    HeadTrimmed,
    HeadExtended,
    TailTrimmed,
    TailExtended,
    Slipped,
    Moved,
    Inserted,
    Deleted,
    Replaced,
    Split,
    Duplicated,
    SpeedChanged,
    LevelChanged,
    EffectChanged,
    TransitionChanged,
    MarkerAdded,
    MarkerMoved,
    MarkerRemoved,
};
const char* changeKindName(ChangeKind kind);

constexpr size_t kNone = size_t(-1);

struct EventAt {
    size_t track = kNone, event = kNone;  // into a cut's tracks and that track's events
    bool valid() const { return track != kNone; }
};

struct Change {
    ChangeKind kind = ChangeKind::Shifted;
    std::string track;     // where it is: the new track, or the old one for what went
    std::string fromTrack; // Moved: where it was
    EventAt before, after; // the old and new events; Split: `also` holds the second piece
    EventAt also;
    size_t marker = kNone, newMarker = kNone;  // into the cuts' markers
    // In the old track's edit units: the trim, extension, slip or the middle a split took
    // out; shift is new record minus old.
    int64_t amount = 0;
    int64_t shift = 0;
    std::string from, to;  // what a speed, level, effect, transition or timecode was and is
    bool audioOnly = false;  // a sound change the picture does not share
    int64_t position = 0;    // where on the track, for ordering: new record where there is one
};

// Old record [oldIn, oldOut) on `fromTrack` plays at new record [newIn, newOut) on `track`;
// new times in the old track's edit units (the same as the new one's unless the rates differ).
struct ConformRange {
    std::string fromTrack, track;
    int64_t oldIn = 0, oldOut = 0, newIn = 0, newOut = 0;
};

struct DiffOptions {
    std::vector<std::string> tracks;  // labels to compare; empty for all
    int64_t tolerance = 0;             // differences this small (edit units) are none
};

struct CutDiff {
    bool comparedInTime = false;   // the cuts' rates differ: compared in time, not frames
    std::vector<std::string> tracks;  // compared, in order
    std::vector<Change> changes;      // track by track in `tracks` order, each in record order
    std::vector<ConformRange> conform;
};

// False, with why, when the cuts cannot be compared (a track of one kind in one and of the
// other in the other).
bool diffCuts(const Cut& before, const Cut& after, const DiffOptions& options, CutDiff& out, std::string& why);

}  // namespace cutdiff

#pragma once
// Each old event followed to where its material went: the tracks aligned, then what the
// alignment left paired again across tracks and order (moves), then new events that show
// material already placed (the second piece of a split, else a copy).
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "diff/CutDiff.h"
#include "diff/SourceSpan.h"

namespace cutdiff {

// A track of either cut or both, by label; kNone where one cut lacks it.
struct TrackPair {
    std::string label;
    size_t before = kNone, after = kNone;
};

// Both cuts' events as spans, by each cut's track index (empty for tracks not compared).
struct CutSpans {
    std::vector<std::vector<SourceSpan>> before, after;
};

// An old event and where its material went.
struct Match {
    EventAt before, after;
    EventAt also;  // a split's second piece
    bool moved = false, duplicate = false;
};

// Old events by their source's identity.
using SourceUses = std::unordered_map<uint32_t, std::vector<EventAt>>;

class EventMatching {
public:
    EventMatching(const CutSpans& spans, const std::vector<TrackPair>& pairs);

    const std::vector<Match>& matches() const { return matches_; }
    // The match an event is part of; kNone for none.
    size_t ofOld(const EventAt& at) const { return beforeMatch_[at.track][at.event]; }
    size_t ofNew(const EventAt& at) const { return afterMatch_[at.track][at.event]; }

private:
    void record(const Match& match);
    void align();
    void matchMoves();
    void matchCopies();
    bool isSecondPiece(const Match& match, const EventAt& at) const;
    // The old event among `candidates` sharing most source with `span`; none when none does.
    EventAt mostShared(const std::vector<EventAt>& candidates, const SourceSpan& span, bool unmatchedOnly) const;
    template <typename Visit>
    void eachNewEvent(Visit visit) const;
    // The old events by source: all, or only those nothing was found for yet.
    SourceUses oldBySource(bool unmatchedOnly) const;
    // Each new event nothing was found for yet, with the old event of `uses` sharing most source with it.
    template <typename Found>
    void eachNewLeft(const SourceUses& uses, bool unmatchedOnly, Found found);

    const CutSpans& spans_;
    const std::vector<TrackPair>& pairs_;
    std::vector<Match> matches_;
    std::vector<std::vector<size_t>> beforeMatch_, afterMatch_;
};

}  // namespace cutdiff

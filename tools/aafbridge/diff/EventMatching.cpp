#include "diff/EventMatching.h"

#include <unordered_map>

#include "diff/TrackAlignment.h"

namespace cutdiff {
namespace {

// A source shared by more old events than this (black, a slate) is looked for among its first
// uses only.
constexpr size_t kMostLookedAt = 64;

}  // namespace

EventMatching::EventMatching(const CutSpans& spans, const std::vector<TrackPair>& pairs) : spans_(spans), pairs_(pairs) {
    for (const auto& track : spans.before) beforeMatch_.emplace_back(track.size(), kNone);
    for (const auto& track : spans.after) afterMatch_.emplace_back(track.size(), kNone);
    align();
    matchMoves();
    matchCopies();
}

void EventMatching::record(const Match& match) {
    beforeMatch_[match.before.track][match.before.event] = matches_.size();
    afterMatch_[match.after.track][match.after.event] = matches_.size();
    matches_.push_back(match);
}

void EventMatching::align() {
    for (const TrackPair& pair : pairs_) {
        if (pair.before == kNone || pair.after == kNone) continue;
        for (const EventPair& aligned : alignEvents(spans_.before[pair.before], spans_.after[pair.after]))
            record({{pair.before, aligned.before}, {pair.after, aligned.after}, {}, false, false});
    }
}

template <typename Visit>
void EventMatching::eachNewEvent(Visit visit) const {
    for (const TrackPair& pair : pairs_)
        if (pair.after != kNone)
            for (size_t e = 0; e < spans_.after[pair.after].size(); ++e) visit(EventAt{pair.after, e});
}

EventAt EventMatching::mostShared(const std::vector<EventAt>& candidates, const SourceSpan& span,
                                  bool unmatchedOnly) const {
    EventAt best;
    int64_t most = 0;
    for (size_t i = 0; i < candidates.size() && i < kMostLookedAt; ++i) {
        const EventAt& at = candidates[i];
        if (unmatchedOnly && ofOld(at) != kNone) continue;
        const int64_t shared = sourceOverlap(spans_.before[at.track][at.event], span);
        if (shared > most) most = shared, best = at;
    }
    return best;
}

SourceUses EventMatching::oldBySource(bool unmatchedOnly) const {
    SourceUses uses;
    for (size_t t = 0; t < spans_.before.size(); ++t)
        for (size_t e = 0; e < spans_.before[t].size(); ++e)
            if (!unmatchedOnly || beforeMatch_[t][e] == kNone) uses[spans_.before[t][e].source].push_back({t, e});
    return uses;
}

template <typename Found>
void EventMatching::eachNewLeft(const SourceUses& uses, bool unmatchedOnly, Found found) {
    eachNewEvent([&](const EventAt& at) {
        if (ofNew(at) != kNone) return;
        const SourceSpan& span = spans_.after[at.track][at.event];
        const auto candidates = uses.find(span.source);
        if (candidates == uses.end()) return;
        const EventAt from = mostShared(candidates->second, span, unmatchedOnly);
        if (from.valid()) found(from, at);
    });
}

// Old and new events the alignment left, paired again across tracks and order.
void EventMatching::matchMoves() {
    eachNewLeft(oldBySource(true), true, [&](const EventAt& from, const EventAt& at) { record({from, at, {}, true, false}); });
}

// New events showing material an old event already went to: beside its first piece after a
// middle was taken out, the second piece of a split; else a copy.
void EventMatching::matchCopies() {
    eachNewLeft(oldBySource(false), false, [&](const EventAt& from, const EventAt& at) {
        const size_t existing = ofOld(from);
        if (existing != kNone && isSecondPiece(matches_[existing], at)) {
            matches_[existing].also = at;
            afterMatch_[at.track][at.event] = existing;
            return;
        }
        matches_.push_back({from, at, {}, false, true});
        afterMatch_[at.track][at.event] = matches_.size() - 1;
    });
}

bool EventMatching::isSecondPiece(const Match& match, const EventAt& at) const {
    if (match.moved || match.duplicate || match.also.valid() || match.after.track != at.track) return false;
    const size_t gap = match.after.event > at.event ? match.after.event - at.event : at.event - match.after.event;
    const std::vector<SourceSpan>& track = spans_.after[at.track];
    return gap == 1 && sourceOverlap(track[match.after.event], track[at.event]) == 0;
}

}  // namespace cutdiff

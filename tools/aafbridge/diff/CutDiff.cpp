#include "diff/CutDiff.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string_view>
#include <unordered_map>

#include "composition/EditTime.h"
#include "composition/TimecodeText.h"
#include "diff/TrackAlignment.h"

namespace cutdiff {
namespace {

// A source shared by more events than this (black, a slate) is looked for among its first uses only.
constexpr size_t kMostLookedAt = 64;

struct TrackPair {
    std::string label;
    size_t before = kNone, after = kNone;
};

// An old event and where its material went.
struct Match {
    EventAt before, after, also;  // also: a split's second piece
    bool moved = false, duplicate = false;
};

std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::string startText(const std::optional<StartTimecode>& start) {
    return start ? composition::timecodeText(start->frame, start->fps, start->drop) : "none";
}

bool sameStart(const std::optional<StartTimecode>& a, const std::optional<StartTimecode>& b) {
    if (!a || !b) return !a && !b;
    return a->frame * b->fps == b->frame * a->fps;
}

bool soundOnlyKind(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::HeadTrimmed:
    case ChangeKind::HeadExtended:
    case ChangeKind::TailTrimmed:
    case ChangeKind::TailExtended:
    case ChangeKind::Slipped:
    case ChangeKind::Moved:
    case ChangeKind::Inserted:
    case ChangeKind::Deleted:
    case ChangeKind::Replaced:
    case ChangeKind::Split: return true;
    default: return false;
    }
}

// Record time of `offset` source units into an event, at its speed.
int64_t recordAt(const CutEvent& event, int64_t offset) {
    if (event.sourceLength() == event.recordLength() || event.sourceLength() <= 0) return event.recordIn + offset;
    return event.recordIn + int64_t(std::llround(double(offset) * double(event.recordLength()) / double(event.sourceLength())));
}

class CutComparison {
public:
    CutComparison(const Cut& before, const Cut& after, const DiffOptions& options)
        : before_(before), after_(after), options_(options) {}

    bool run(CutDiff& out, std::string& why) {
        if (!pairTracks(why)) return false;
        inBeforeUnits(out);
        align();
        matchMoves();
        matchCopies();
        for (const Match& match : matches_) classify(match);
        gone();
        conform(out);
        markers();
        if (!sameStart(before_.start, after_.start)) {
            Change change;
            change.kind = ChangeKind::StartTimecodeChanged;
            change.from = startText(before_.start);
            change.to = startText(after_.start);
            changes_.push_back(std::move(change));
        }
        markSoundOnly();
        order(out);
        return true;
    }

private:
    bool wanted(const std::string& label) const {
        return options_.tracks.empty() ||
               std::find(options_.tracks.begin(), options_.tracks.end(), label) != options_.tracks.end();
    }

    bool pairTracks(std::string& why) {
        for (size_t t = 0; t < before_.tracks.size(); ++t)
            if (wanted(before_.tracks[t].label)) pairs_.push_back({before_.tracks[t].label, t, kNone});
        for (size_t t = 0; t < after_.tracks.size(); ++t) {
            const CutTrack& track = after_.tracks[t];
            if (!wanted(track.label)) continue;
            auto pair = std::find_if(pairs_.begin(), pairs_.end(), [&](const TrackPair& p) { return p.label == track.label; });
            if (pair == pairs_.end()) {
                pairs_.push_back({track.label, kNone, t});
                continue;
            }
            if (before_.tracks[pair->before].kind != track.kind) {
                why = "track " + track.label + " is " + kindName(before_.tracks[pair->before].kind) +
                      " in the old cut and " + kindName(track.kind) + " in the new one";
                return false;
            }
            pair->after = t;
        }
        return true;
    }

    static const char* kindName(TrackKind kind) { return kind == TrackKind::Picture ? "picture" : "sound"; }

    // The new cut's times in the old one's edit units, track by track, where their rates differ.
    void inBeforeUnits(CutDiff& out) {
        after_units_ = &after_;
        for (const TrackPair& pair : pairs_) {
            if (pair.before == kNone || pair.after == kNone) continue;
            const aafRational_t from = after_.tracks[pair.after].editRate, to = before_.tracks[pair.before].editRate;
            if (composition::sameRate(from, to)) continue;
            out.comparedInTime = true;
            if (!converted_) converted_ = std::make_unique<Cut>(after_);
            for (CutEvent& event : converted_->tracks[pair.after].events)
                for (int64_t* time : {&event.recordIn, &event.recordOut, &event.sourceIn, &event.sourceOut})
                    *time = composition::convertEditUnits(*time, from, to);
            for (CutMarker& marker : converted_->markers)
                if (marker.track == pair.label) marker.position = composition::convertEditUnits(marker.position, from, to);
        }
        if (converted_) after_units_ = converted_.get();
        beforeMatch_.resize(before_.tracks.size());
        afterMatch_.resize(after_.tracks.size());
        for (size_t t = 0; t < before_.tracks.size(); ++t) beforeMatch_[t].assign(before_.tracks[t].events.size(), kNone);
        for (size_t t = 0; t < after_.tracks.size(); ++t) afterMatch_[t].assign(after_.tracks[t].events.size(), kNone);
    }

    const CutEvent& oldEvent(const EventAt& at) const { return before_.tracks[at.track].events[at.event]; }
    const CutEvent& newEvent(const EventAt& at) const { return after_units_->tracks[at.track].events[at.event]; }
    size_t& matchOf(const EventAt& at, bool old) { return (old ? beforeMatch_ : afterMatch_)[at.track][at.event]; }

    void record(Match match) {
        matchOf(match.before, true) = matches_.size();
        matchOf(match.after, false) = matches_.size();
        if (match.also.valid()) matchOf(match.also, false) = matches_.size();
        matches_.push_back(match);
    }

    void align() {
        for (const TrackPair& pair : pairs_) {
            if (pair.before == kNone || pair.after == kNone) continue;
            for (const EventPair& aligned :
                 alignEvents(before_.tracks[pair.before].events, after_units_->tracks[pair.after].events))
                record({{pair.before, aligned.before}, {pair.after, aligned.after}, {}, false, false});
        }
    }

    template <typename Visit>
    void eachAfterEvent(Visit visit) const {
        for (const TrackPair& pair : pairs_)
            if (pair.after != kNone)
                for (size_t e = 0; e < after_.tracks[pair.after].events.size(); ++e) visit(EventAt{pair.after, e});
    }

    // The old events by source: all of them, or only those nothing was found for yet.
    std::unordered_map<std::string_view, std::vector<EventAt>> oldBySource(bool unmatchedOnly) const {
        std::unordered_map<std::string_view, std::vector<EventAt>> index;
        for (const TrackPair& pair : pairs_) {
            if (pair.before == kNone) continue;
            const std::vector<CutEvent>& events = before_.tracks[pair.before].events;
            for (size_t e = 0; e < events.size(); ++e)
                if (!unmatchedOnly || beforeMatch_[pair.before][e] == kNone)
                    index[events[e].sourceKey].push_back({pair.before, e});
        }
        return index;
    }

    // The old event in `candidates` sharing most source with `event`, none when none does.
    EventAt mostShared(const std::vector<EventAt>& candidates, const CutEvent& event, bool unmatchedOnly) const {
        EventAt best;
        int64_t most = 0;
        for (size_t i = 0; i < candidates.size() && i < kMostLookedAt; ++i) {
            if (unmatchedOnly && beforeMatch_[candidates[i].track][candidates[i].event] != kNone) continue;
            const int64_t shared = sourceOverlap(oldEvent(candidates[i]), event);
            if (shared > most) most = shared, best = candidates[i];
        }
        return best;
    }

    // What the alignment left on both sides, paired again across tracks and order: moves.
    void matchMoves() {
        const auto index = oldBySource(true);
        eachAfterEvent([&](const EventAt& at) {
            if (matchOf(at, false) != kNone) return;
            const auto found = index.find(newEvent(at).sourceKey);
            if (found == index.end()) return;
            const EventAt from = mostShared(found->second, newEvent(at), true);
            if (from.valid()) record({from, at, {}, true, false});
        });
    }

    // New events showing material an old event already went to: the second piece of a split
    // (beside the first, after a middle was taken out), else a copy.
    void matchCopies() {
        const auto index = oldBySource(false);
        eachAfterEvent([&](const EventAt& at) {
            if (matchOf(at, false) != kNone) return;
            const auto found = index.find(newEvent(at).sourceKey);
            if (found == index.end()) return;
            const EventAt from = mostShared(found->second, newEvent(at), false);
            if (!from.valid()) return;
            const size_t existing = matchOf(from, true);
            if (existing != kNone && isSecondPiece(matches_[existing], at)) {
                matches_[existing].also = at;
                matchOf(at, false) = existing;
                return;
            }
            matches_.push_back({from, at, {}, false, true});
            matchOf(at, false) = matches_.size() - 1;
        });
    }

    bool isSecondPiece(const Match& match, const EventAt& at) const {
        if (match.moved || match.duplicate || match.also.valid() || match.after.track != at.track) return false;
        const size_t gap = match.after.event > at.event ? match.after.event - at.event : at.event - match.after.event;
        return gap == 1 && sourceOverlap(newEvent(match.after), newEvent(at)) == 0;
    }

    int64_t settled(int64_t difference) const { return std::llabs(difference) <= options_.tolerance ? 0 : difference; }

    const std::string& labelOf(size_t track, bool old) const {
        return (old ? before_ : after_).tracks[track].label;
    }

    Change changeFor(const Match& match, ChangeKind kind, int64_t amount = 0) const {
        Change change;
        change.kind = kind;
        change.track = labelOf(match.after.track, false);
        change.before = match.before;
        change.after = match.after;
        change.also = match.also;
        change.amount = amount;
        change.shift = settled(newEvent(match.after).recordIn - oldEvent(match.before).recordIn);
        change.position = newEvent(match.after).recordIn;
        return change;
    }

    // The new side of a match as one event: a split's two pieces from the first's start to the second's end.
    CutEvent newSide(const Match& match) const {
        CutEvent side = newEvent(match.after);
        if (!match.also.valid()) return side;
        const CutEvent& second = newEvent(match.also);
        side.recordIn = std::min(side.recordIn, second.recordIn);
        side.recordOut = std::max(side.recordOut, second.recordOut);
        side.sourceIn = std::min(side.sourceIn, second.sourceIn);
        side.sourceOut = std::max(side.sourceOut, second.sourceOut);
        return side;
    }

    void classify(const Match& match) {
        const size_t first = changes_.size();
        const CutEvent& old = oldEvent(match.before);
        const CutEvent now = newSide(match);
        if (match.duplicate) return changes_.push_back(changeFor(match, ChangeKind::Duplicated));
        if (match.moved) {
            Change change = changeFor(match, ChangeKind::Moved, settled(now.recordIn - old.recordIn));
            change.fromTrack = labelOf(match.before.track, true);
            changes_.push_back(std::move(change));
        }
        if (match.also.valid()) {
            const CutEvent& a = newEvent(match.after);
            const CutEvent& b = newEvent(match.also);
            const int64_t middle = std::max(a.sourceIn, b.sourceIn) - std::min(a.sourceOut, b.sourceOut);
            changes_.push_back(changeFor(match, ChangeKind::Split, middle));
        }
        if (old.speed != now.speed) {
            Change change = changeFor(match, ChangeKind::SpeedChanged);
            change.from = numberText(old.speed);
            change.to = numberText(now.speed);
            changes_.push_back(std::move(change));
        } else {
            classifyTrims(match, old, now);
        }
        compareText(match, ChangeKind::LevelChanged, old.levels, now.levels);
        compareText(match, ChangeKind::EffectChanged, old.effects, now.effects);
        compareText(match, ChangeKind::TransitionChanged, old.transition, now.transition);
        Change shifted = changeFor(match, ChangeKind::Shifted);
        shifted.amount = shifted.shift;
        if (changes_.size() == first && shifted.shift != 0) changes_.push_back(std::move(shifted));
    }

    void classifyTrims(const Match& match, const CutEvent& old, const CutEvent& now) {
        const int64_t head = settled(now.sourceIn - old.sourceIn), tail = settled(now.sourceOut - old.sourceOut);
        if (head == tail && head != 0) return changes_.push_back(changeFor(match, ChangeKind::Slipped, head));
        if (head > 0) changes_.push_back(changeFor(match, ChangeKind::HeadTrimmed, head));
        if (head < 0) changes_.push_back(changeFor(match, ChangeKind::HeadExtended, -head));
        if (tail < 0) changes_.push_back(changeFor(match, ChangeKind::TailTrimmed, -tail));
        if (tail > 0) changes_.push_back(changeFor(match, ChangeKind::TailExtended, tail));
    }

    void compareText(const Match& match, ChangeKind kind, const std::string& old, const std::string& now) {
        if (old == now) return;
        Change change = changeFor(match, kind);
        change.from = old;
        change.to = now;
        changes_.push_back(std::move(change));
    }

    // Old events nothing was found for (deleted), new ones (inserted), and where one took the
    // other's place, rippled as the events before it were, replaced.
    void gone() {
        for (const TrackPair& pair : pairs_) {
            std::vector<Change> deleted = unmatchedOld(pair), inserted = unmatchedNew(pair);
            size_t d = 0, i = 0;
            while (d < deleted.size() && i < inserted.size()) {
                const CutEvent& now = newEvent(inserted[i].after);
                const int64_t in = deleted[d].position, out = in + oldEvent(deleted[d].before).recordLength();
                if (std::min(out, now.recordOut) > std::max(in, now.recordIn)) {
                    Change replaced = inserted[i];
                    replaced.kind = ChangeKind::Replaced;
                    replaced.before = deleted[d].before;
                    replaced.shift = settled(now.recordIn - oldEvent(replaced.before).recordIn);
                    changes_.push_back(std::move(replaced));
                    deleted[d++].kind = inserted[i++].kind = ChangeKind::Replaced;
                } else if (out <= now.recordIn) {
                    ++d;
                } else {
                    ++i;
                }
            }
            for (std::vector<Change>* list : {&deleted, &inserted})
                for (Change& change : *list)
                    if (change.kind != ChangeKind::Replaced) changes_.push_back(std::move(change));
        }
    }

    // Each with its position rippled by the shift of the nearest kept event before it.
    std::vector<Change> unmatchedOld(const TrackPair& pair) const {
        std::vector<Change> deleted;
        if (pair.before == kNone) return deleted;
        int64_t shift = 0;
        const std::vector<CutEvent>& events = before_.tracks[pair.before].events;
        for (size_t e = 0; e < events.size(); ++e) {
            const size_t match = beforeMatch_[pair.before][e];
            if (match != kNone) {
                const Match& kept = matches_[match];
                if (kept.after.track == pair.after) shift = newSide(kept).recordIn - events[e].recordIn;
                continue;
            }
            Change change;
            change.kind = ChangeKind::Deleted;
            change.track = pair.label;
            change.before = {pair.before, e};
            change.position = events[e].recordIn + shift;
            deleted.push_back(std::move(change));
        }
        return deleted;
    }

    std::vector<Change> unmatchedNew(const TrackPair& pair) const {
        std::vector<Change> inserted;
        if (pair.after == kNone) return inserted;
        const std::vector<CutEvent>& events = after_units_->tracks[pair.after].events;
        for (size_t e = 0; e < events.size(); ++e) {
            if (afterMatch_[pair.after][e] != kNone) continue;
            Change change;
            change.kind = ChangeKind::Inserted;
            change.track = pair.label;
            change.after = {pair.after, e};
            change.position = events[e].recordIn;
            inserted.push_back(std::move(change));
        }
        return inserted;
    }

    // Where each stretch of old record went: the source an old event shares with each new
    // event its material went to, placed on both.
    void conform(CutDiff& out) {
        for (const Match& match : matches_)
            for (const EventAt& piece : {match.after, match.also}) {
                if (!piece.valid()) continue;
                const CutEvent& old = oldEvent(match.before);
                const CutEvent& now = newEvent(piece);
                const int64_t from = std::max(old.sourceIn, now.sourceIn), to = std::min(old.sourceOut, now.sourceOut);
                if (to <= from) continue;
                out.conform.push_back({labelOf(match.before.track, true), labelOf(piece.track, false),
                                       recordAt(old, from - old.sourceIn), recordAt(old, to - old.sourceIn),
                                       recordAt(now, from - now.sourceIn), recordAt(now, to - now.sourceIn)});
            }
        std::sort(out.conform.begin(), out.conform.end(), [&](const ConformRange& a, const ConformRange& b) {
            return a.fromTrack != b.fromTrack ? trackOrder(a.fromTrack) < trackOrder(b.fromTrack) : a.oldIn < b.oldIn;
        });
        mergeContiguous(out.conform);
        conform_ = &out.conform;
    }

    static void mergeContiguous(std::vector<ConformRange>& ranges) {
        std::vector<ConformRange> merged;
        for (ConformRange& range : ranges) {
            if (!merged.empty()) {
                ConformRange& last = merged.back();
                if (last.fromTrack == range.fromTrack && last.track == range.track && last.oldOut == range.oldIn &&
                    last.newOut == range.newIn && last.oldOut - last.oldIn == last.newOut - last.newIn &&
                    range.oldOut - range.oldIn == range.newOut - range.newIn) {
                    last.oldOut = range.oldOut;
                    last.newOut = range.newOut;
                    continue;
                }
            }
            merged.push_back(std::move(range));
        }
        ranges = std::move(merged);
    }

    size_t trackOrder(const std::string& label) const {
        for (size_t i = 0; i < pairs_.size(); ++i)
            if (pairs_[i].label == label) return i;
        return pairs_.size();
    }

    // Where an old track's record time went on the same track; unchanged where the conform map
    // does not say. A marker stays on its track when a clip under it moves to another.
    std::pair<std::string, int64_t> conformed(const std::string& track, int64_t position) const {
        const size_t order = trackOrder(track);
        auto after = std::upper_bound(conform_->begin(), conform_->end(), std::make_pair(order, position),
                                      [&](const std::pair<size_t, int64_t>& at, const ConformRange& range) {
                                          const size_t rangeOrder = trackOrder(range.fromTrack);
                                          return order != rangeOrder ? at.first < rangeOrder : at.second < range.oldIn;
                                      });
        if (after != conform_->begin()) {
            const ConformRange& range = *std::prev(after);
            if (range.fromTrack == track && range.track == track && position < range.oldOut)
                return {range.track, range.newIn + (position - range.oldIn)};
        }
        return {track, position};
    }

    // Markers paired by what they say, each old one expected where its record time went.
    void markers() {
        std::unordered_map<std::string_view, std::vector<size_t>> unmatched;
        const std::vector<CutMarker>& now = after_units_->markers;
        for (size_t m = 0; m < now.size(); ++m)
            if (trackOrder(now[m].track) < pairs_.size()) unmatched[now[m].text].push_back(m);
        for (size_t m = 0; m < before_.markers.size(); ++m) {
            const CutMarker& old = before_.markers[m];
            if (trackOrder(old.track) == pairs_.size()) continue;
            const auto [track, expected] = conformed(old.track, old.position);
            std::vector<size_t>& candidates = unmatched[old.text];
            auto nearest = std::min_element(candidates.begin(), candidates.end(), [&](size_t a, size_t b) {
                return std::llabs(now[a].position - expected) < std::llabs(now[b].position - expected);
            });
            Change change;
            change.track = old.track;
            change.marker = m;
            change.position = old.position;
            if (nearest == candidates.end()) {
                change.kind = ChangeKind::MarkerRemoved;
                changes_.push_back(std::move(change));
                continue;
            }
            const CutMarker& found = now[*nearest];
            change.newMarker = *nearest;
            candidates.erase(nearest);
            if (found.track == track && settled(found.position - expected) == 0) continue;
            change.kind = ChangeKind::MarkerMoved;
            change.track = found.track;
            change.amount = found.position - expected;
            change.shift = found.position - old.position;
            change.position = found.position;
            changes_.push_back(std::move(change));
        }
        for (const auto& [text, left] : unmatched)
            for (size_t m : left) {
                Change change;
                change.kind = ChangeKind::MarkerAdded;
                change.track = now[m].track;
                change.newMarker = m;
                change.position = now[m].position;
                changes_.push_back(std::move(change));
            }
    }

    // A sound change the picture tracks do not share: no picture change of its kind overlaps it.
    void markSoundOnly() {
        std::vector<const Change*> pictures;
        for (const Change& change : changes_)
            if (isPicture(change.track) && soundOnlyKind(change.kind)) pictures.push_back(&change);
        for (Change& change : changes_) {
            if (isPicture(change.track) || !soundOnlyKind(change.kind) || change.track.empty()) continue;
            const auto [in, out] = span(change);
            change.audioOnly = std::none_of(pictures.begin(), pictures.end(), [&](const Change* picture) {
                const auto [pictureIn, pictureOut] = span(*picture);
                return picture->kind == change.kind && std::min(out, pictureOut) > std::max(in, pictureIn);
            });
        }
    }

    bool isPicture(const std::string& label) const {
        for (const TrackPair& pair : pairs_)
            if (pair.label == label)
                return (pair.before != kNone ? before_.tracks[pair.before] : after_.tracks[pair.after]).kind ==
                       TrackKind::Picture;
        return false;
    }

    std::pair<int64_t, int64_t> span(const Change& change) const {
        if (change.after.valid()) return {newEvent(change.after).recordIn, newEvent(change.after).recordOut};
        if (change.before.valid()) return {change.position, change.position + oldEvent(change.before).recordLength()};
        return {change.position, change.position + 1};
    }

    void order(CutDiff& out) {
        for (const TrackPair& pair : pairs_) out.tracks.push_back(pair.label);
        std::stable_sort(changes_.begin(), changes_.end(), [&](const Change& a, const Change& b) {
            const size_t ta = a.track.empty() ? 0 : trackOrder(a.track) + 1, tb = b.track.empty() ? 0 : trackOrder(b.track) + 1;
            return ta != tb ? ta < tb : a.position < b.position;
        });
        out.changes = std::move(changes_);
    }

    const Cut& before_;
    const Cut& after_;
    const DiffOptions& options_;
    std::unique_ptr<Cut> converted_;
    const Cut* after_units_ = nullptr;
    std::vector<TrackPair> pairs_;
    std::vector<Match> matches_;
    std::vector<std::vector<size_t>> beforeMatch_, afterMatch_;
    std::vector<Change> changes_;
    const std::vector<ConformRange>* conform_ = nullptr;
};

}  // namespace

const char* changeKindName(ChangeKind kind) {
    switch (kind) {
    case ChangeKind::StartTimecodeChanged: return "start timecode changed";
    case ChangeKind::Shifted: return "shifted";
    case ChangeKind::HeadTrimmed: return "head trimmed";
    case ChangeKind::HeadExtended: return "head extended";
    case ChangeKind::TailTrimmed: return "tail trimmed";
    case ChangeKind::TailExtended: return "tail extended";
    case ChangeKind::Slipped: return "slipped";
    case ChangeKind::Moved: return "moved";
    case ChangeKind::Inserted: return "inserted";
    case ChangeKind::Deleted: return "deleted";
    case ChangeKind::Replaced: return "replaced";
    case ChangeKind::Split: return "split";
    case ChangeKind::Duplicated: return "duplicated";
    case ChangeKind::SpeedChanged: return "speed changed";
    case ChangeKind::LevelChanged: return "level changed";
    case ChangeKind::EffectChanged: return "effect changed";
    case ChangeKind::TransitionChanged: return "transition changed";
    case ChangeKind::MarkerAdded: return "marker added";
    case ChangeKind::MarkerMoved: return "marker moved";
    case ChangeKind::MarkerRemoved: return "marker removed";
    }
    return "changed";
}

bool diffCuts(const Cut& before, const Cut& after, const DiffOptions& options, CutDiff& out, std::string& why) {
    return CutComparison(before, after, options).run(out, why);
}

}  // namespace cutdiff

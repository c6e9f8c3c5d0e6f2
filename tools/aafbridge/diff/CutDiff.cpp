#include "diff/CutDiff.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

#include "composition/EditTime.h"
#include "composition/TimecodeText.h"
#include "diff/EventMatching.h"
#include "diff/SourceIdentity.h"

namespace cutdiff {
namespace {

std::string startText(const std::optional<StartTimecode>& start) {
    return start ? composition::timecodeText(start->frame, start->fps, start->drop) : "none";
}

bool sameStart(const std::optional<StartTimecode>& a, const std::optional<StartTimecode>& b) {
    if (!a || !b) return !a && !b;
    return a->frame * b->fps == b->frame * a->fps;
}

// Edits to material that a sound track can make without the picture.
bool isCutEdit(ChangeKind kind) {
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

// Record time of `offset` source units into a span, at its speed.
int64_t recordAt(const SourceSpan& span, int64_t offset) {
    if (span.sourceLength() == span.recordLength() || span.sourceLength() <= 0) return span.recordIn + offset;
    return span.recordIn + roundedInRange(double(offset) * double(span.recordLength()) / double(span.sourceLength()));
}

// Each old track's stretch of the conform map, which holds them one after another, each in
// record order.
using ConformStretches = std::unordered_map<std::string, std::pair<size_t, size_t>>;

ConformStretches conformStretches(const std::vector<ConformRange>& conform) {
    ConformStretches stretches;
    for (size_t i = 0; i < conform.size(); ++i) {
        auto [stretch, added] = stretches.emplace(conform[i].fromTrack, std::make_pair(i, i + 1));
        if (!added) stretch->second.second = i + 1;
    }
    return stretches;
}

class CutComparison {
public:
    CutComparison(const Cut& before, const Cut& after, const DiffOptions& options)
        : before_(before), after_(after), options_(options) {}

    bool run(CutDiff& out, std::string& why) {
        if (!pairTracks(why)) return false;
        makeSpans(out);
        const EventMatching matching(spans_, pairs_);
        for (const Match& match : matching.matches()) classify(match);
        gone(matching);
        conform(matching, out);
        markers(out.conform);
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

    static const char* kindName(TrackKind kind) { return kind == TrackKind::Picture ? "picture" : "sound"; }

    bool pairTracks(std::string& why) {
        for (size_t t = 0; t < before_.tracks.size(); ++t)
            if (wanted(before_.tracks[t].label)) pairs_.push_back({before_.tracks[t].label, t, kNone});
        for (size_t t = 0; t < after_.tracks.size(); ++t) {
            const CutTrack& track = after_.tracks[t];
            if (!wanted(track.label)) continue;
            auto pair = std::find_if(pairs_.begin(), pairs_.end(), [&](const TrackPair& p) { return p.label == track.label; });
            if (pair == pairs_.end()) {
                pairs_.push_back({track.label, kNone, t});
            } else if (before_.tracks[pair->before].kind != track.kind) {
                why = "track " + track.label + " is " + kindName(before_.tracks[pair->before].kind) +
                      " in the old cut and " + kindName(track.kind) + " in the new one";
                return false;
            } else {
                pair->after = t;
            }
        }
        return true;
    }

    // The edit units a pair of tracks is compared in: the old track's, where there is one.
    aafRational_t units(const TrackPair& pair) const {
        return pair.before != kNone ? before_.tracks[pair.before].editRate : after_.tracks[pair.after].editRate;
    }

    const TrackPair* pairOf(const std::string& label) const {
        for (const TrackPair& pair : pairs_)
            if (pair.label == label) return &pair;
        return nullptr;
    }

    void makeSpans(CutDiff& out) {
        const SourceIdentities identities = identifySources(before_, after_);
        spans_.before.resize(before_.tracks.size());
        spans_.after.resize(after_.tracks.size());
        for (const TrackPair& pair : pairs_) {
            if (pair.before != kNone)
                spans_.before[pair.before] = trackSpans(before_.tracks[pair.before], identities.before, units(pair));
            if (pair.after != kNone)
                spans_.after[pair.after] = trackSpans(after_.tracks[pair.after], identities.after, units(pair));
            if (pair.before != kNone && pair.after != kNone &&
                !composition::sameRate(before_.tracks[pair.before].editRate, after_.tracks[pair.after].editRate))
                out.comparedInTime = true;
        }
    }

    const SourceSpan& oldSpan(const EventAt& at) const { return spans_.before[at.track][at.event]; }
    const SourceSpan& newSpan(const EventAt& at) const { return spans_.after[at.track][at.event]; }
    const CutEvent& oldEvent(const EventAt& at) const { return before_.tracks[at.track].events[at.event]; }
    const CutEvent& newEvent(const EventAt& at) const { return after_.tracks[at.track].events[at.event]; }

    int64_t settled(int64_t difference) const { return std::llabs(difference) <= options_.tolerance ? 0 : difference; }

    Change changeFor(const Match& match, ChangeKind kind, int64_t amount = 0) const {
        Change change;
        change.kind = kind;
        change.track = after_.tracks[match.after.track].label;
        change.before = match.before;
        change.after = match.after;
        change.also = match.also;
        change.amount = amount;
        change.shift = settled(newSpan(match.after).recordIn - oldSpan(match.before).recordIn);
        change.position = newSpan(match.after).recordIn;
        return change;
    }

    // The new side of a match as one span: a split's two pieces from the first's start to the second's end.
    SourceSpan newSide(const Match& match) const {
        SourceSpan side = newSpan(match.after);
        if (!match.also.valid()) return side;
        const SourceSpan& second = newSpan(match.also);
        side.recordIn = std::min(side.recordIn, second.recordIn);
        side.recordOut = std::max(side.recordOut, second.recordOut);
        side.sourceIn = std::min(side.sourceIn, second.sourceIn);
        side.sourceOut = std::max(side.sourceOut, second.sourceOut);
        return side;
    }

    void classify(const Match& match) {
        if (match.duplicate) return changes_.push_back(changeFor(match, ChangeKind::Duplicated));
        const size_t first = changes_.size();
        if (match.moved) {
            Change change = changeFor(match, ChangeKind::Moved, settled(newSide(match).recordIn - oldSpan(match.before).recordIn));
            change.fromTrack = before_.tracks[match.before.track].label;
            changes_.push_back(std::move(change));
        }
        if (match.also.valid()) {
            const SourceSpan &a = newSpan(match.after), &b = newSpan(match.also);
            const int64_t middle = std::max(a.sourceIn, b.sourceIn) - std::min(a.sourceOut, b.sourceOut);
            changes_.push_back(changeFor(match, ChangeKind::Split, middle));
        }
        const CutEvent &old = oldEvent(match.before), &now = newEvent(match.after);
        if (old.speed != now.speed)
            compareText(match, ChangeKind::SpeedChanged, numberText(old.speed), numberText(now.speed));
        else
            classifyTrims(match);
        compareText(match, ChangeKind::LevelChanged, old.levels, now.levels);
        compareText(match, ChangeKind::EffectChanged, old.effects, now.effects);
        compareText(match, ChangeKind::TransitionChanged, old.transition, now.transition);
        Change shifted = changeFor(match, ChangeKind::Shifted);
        shifted.amount = shifted.shift;
        if (changes_.size() == first && shifted.shift != 0) changes_.push_back(std::move(shifted));
    }

    void classifyTrims(const Match& match) {
        const SourceSpan &old = oldSpan(match.before), now = newSide(match);
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
    void gone(const EventMatching& matching) {
        for (const TrackPair& pair : pairs_) {
            std::vector<Change> deleted = unmatchedOld(pair, matching), inserted = unmatchedNew(pair, matching);
            size_t d = 0, i = 0;
            while (d < deleted.size() && i < inserted.size()) {
                const SourceSpan& now = newSpan(inserted[i].after);
                const int64_t in = deleted[d].position, out = in + oldSpan(deleted[d].before).recordLength();
                if (std::min(out, now.recordOut) > std::max(in, now.recordIn)) {
                    Change replaced = inserted[i];
                    replaced.kind = ChangeKind::Replaced;
                    replaced.before = deleted[d].before;
                    replaced.shift = settled(now.recordIn - oldSpan(replaced.before).recordIn);
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

    // Each placed where the ripple of the nearest kept event before it puts it.
    std::vector<Change> unmatchedOld(const TrackPair& pair, const EventMatching& matching) const {
        std::vector<Change> deleted;
        if (pair.before == kNone) return deleted;
        int64_t shift = 0;
        const std::vector<SourceSpan>& spans = spans_.before[pair.before];
        for (size_t e = 0; e < spans.size(); ++e) {
            const size_t match = matching.ofOld({pair.before, e});
            if (match != kNone) {
                const Match& kept = matching.matches()[match];
                if (kept.after.track == pair.after) shift = newSide(kept).recordIn - spans[e].recordIn;
                continue;
            }
            Change change;
            change.kind = ChangeKind::Deleted;
            change.track = pair.label;
            change.before = {pair.before, e};
            change.position = spans[e].recordIn + shift;
            deleted.push_back(std::move(change));
        }
        return deleted;
    }

    std::vector<Change> unmatchedNew(const TrackPair& pair, const EventMatching& matching) const {
        std::vector<Change> inserted;
        if (pair.after == kNone) return inserted;
        const std::vector<SourceSpan>& spans = spans_.after[pair.after];
        for (size_t e = 0; e < spans.size(); ++e) {
            if (matching.ofNew({pair.after, e}) != kNone) continue;
            Change change;
            change.kind = ChangeKind::Inserted;
            change.track = pair.label;
            change.after = {pair.after, e};
            change.position = spans[e].recordIn;
            inserted.push_back(std::move(change));
        }
        return inserted;
    }

    // Where each stretch of old record went: the source an old event shares with each new
    // event its material went to, placed on both. In the old cut's order, track by track.
    void conform(const EventMatching& matching, CutDiff& out) const {
        std::vector<std::vector<ConformRange>> byOldTrack(before_.tracks.size());
        for (const Match& match : matching.matches())
            for (const EventAt& piece : {match.after, match.also}) {
                if (!piece.valid()) continue;
                const SourceSpan &old = oldSpan(match.before), &now = newSpan(piece);
                const int64_t from = std::max(old.sourceIn, now.sourceIn), to = std::min(old.sourceOut, now.sourceOut);
                if (to <= from) continue;
                byOldTrack[match.before.track].push_back(
                    {before_.tracks[match.before.track].label, after_.tracks[piece.track].label,
                     recordAt(old, from - old.sourceIn), recordAt(old, to - old.sourceIn), recordAt(now, from - now.sourceIn),
                     recordAt(now, to - now.sourceIn)});
            }
        for (const TrackPair& pair : pairs_) {
            if (pair.before == kNone) continue;
            std::vector<ConformRange>& ranges = byOldTrack[pair.before];
            std::sort(ranges.begin(), ranges.end(), [](const ConformRange& a, const ConformRange& b) { return a.oldIn < b.oldIn; });
            mergeContiguous(ranges);
            out.conform.insert(out.conform.end(), std::make_move_iterator(ranges.begin()), std::make_move_iterator(ranges.end()));
        }
    }

    static void mergeContiguous(std::vector<ConformRange>& ranges) {
        std::vector<ConformRange> merged;
        const auto plain = [](const ConformRange& range) { return range.oldOut - range.oldIn == range.newOut - range.newIn; };
        for (ConformRange& range : ranges) {
            if (!merged.empty()) {
                ConformRange& last = merged.back();
                if (last.track == range.track && last.oldOut == range.oldIn && last.newOut == range.newIn && plain(last) &&
                    plain(range)) {
                    last.oldOut = range.oldOut;
                    last.newOut = range.newOut;
                    continue;
                }
            }
            merged.push_back(std::move(range));
        }
        ranges = std::move(merged);
    }

    // Where an old track's record time went on the same track; unchanged where the conform map
    // does not say. A marker stays on its track when a clip under it moves to another.
    static int64_t conformed(const std::vector<ConformRange>& conform, const ConformStretches& stretches,
                             const std::string& track, int64_t position) {
        const auto stretch = stretches.find(track);
        if (stretch == stretches.end()) return position;
        const auto first = conform.begin() + long(stretch->second.first), last = conform.begin() + long(stretch->second.second);
        auto after = std::upper_bound(first, last, position, [](int64_t at, const ConformRange& range) { return at < range.oldIn; });
        if (after != first) {
            const ConformRange& range = *std::prev(after);
            if (range.track == track && position < range.oldOut) return range.newIn + (position - range.oldIn);
        }
        return position;
    }

    // A new marker's position in its track's comparison units.
    int64_t newMarkerPosition(const CutMarker& marker) const {
        const TrackPair* pair = pairOf(marker.track);
        const CutTrack* track = after_.find(marker.track);
        return pair && track ? heldInRange(composition::convertEditUnits(marker.position, track->editRate, units(*pair)))
                             : marker.position;
    }

    // Markers paired by what they say, each old one expected where its record time went.
    void markers(const std::vector<ConformRange>& conform) {
        const ConformStretches stretches = conformStretches(conform);
        std::unordered_map<std::string_view, std::vector<size_t>> unmatched;
        const std::vector<CutMarker>& now = after_.markers;
        for (size_t m = 0; m < now.size(); ++m)
            if (pairOf(now[m].track)) unmatched[now[m].text].push_back(m);
        for (size_t m = 0; m < before_.markers.size(); ++m) {
            const CutMarker& old = before_.markers[m];
            if (!pairOf(old.track)) continue;
            const int64_t expected = conformed(conform, stretches, old.track, old.position);
            std::vector<size_t>& candidates = unmatched[old.text];
            auto nearest = std::min_element(candidates.begin(), candidates.end(), [&](size_t a, size_t b) {
                return std::llabs(newMarkerPosition(now[a]) - expected) < std::llabs(newMarkerPosition(now[b]) - expected);
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
            const int64_t position = newMarkerPosition(found);
            change.newMarker = *nearest;
            candidates.erase(nearest);
            if (found.track == old.track && settled(position - expected) == 0) continue;
            change.kind = ChangeKind::MarkerMoved;
            change.track = found.track;
            change.amount = position - expected;
            change.shift = position - old.position;
            change.position = position;
            changes_.push_back(std::move(change));
        }
        for (const auto& [text, left] : unmatched)
            for (size_t m : left) {
                Change change;
                change.kind = ChangeKind::MarkerAdded;
                change.track = now[m].track;
                change.newMarker = m;
                change.position = newMarkerPosition(now[m]);
                changes_.push_back(std::move(change));
            }
    }

    bool isPicture(const std::string& label) const {
        const TrackPair* pair = pairOf(label);
        if (!pair) return false;
        return (pair->before != kNone ? before_.tracks[pair->before] : after_.tracks[pair->after]).kind == TrackKind::Picture;
    }

    std::pair<int64_t, int64_t> span(const Change& change) const {
        if (change.after.valid()) return {newSpan(change.after).recordIn, newSpan(change.after).recordOut};
        if (change.before.valid()) return {change.position, change.position + oldSpan(change.before).recordLength()};
        return {change.position, change.position + 1};
    }

    // A sound edit the picture does not share: no picture edit of its kind overlaps it.
    void markSoundOnly() {
        std::vector<const Change*> pictures;
        for (const Change& change : changes_)
            if (isCutEdit(change.kind) && isPicture(change.track)) pictures.push_back(&change);
        for (Change& change : changes_) {
            if (!isCutEdit(change.kind) || isPicture(change.track)) continue;
            const std::pair<int64_t, int64_t> sound = span(change);
            change.audioOnly = std::none_of(pictures.begin(), pictures.end(), [&](const Change* picture) {
                const std::pair<int64_t, int64_t> shared = span(*picture);
                return picture->kind == change.kind && std::min(sound.second, shared.second) > std::max(sound.first, shared.first);
            });
        }
    }

    void order(CutDiff& out) {
        for (const TrackPair& pair : pairs_) out.tracks.push_back(pair.label);
        // The cut's own changes (its start) first, then track by track, each in record order.
        std::unordered_map<std::string, size_t> ranks;
        for (size_t i = 0; i < pairs_.size(); ++i) ranks[pairs_[i].label] = i + 1;
        std::vector<std::pair<size_t, int64_t>> keys;
        for (const Change& change : changes_) keys.emplace_back(change.track.empty() ? 0 : ranks[change.track], change.position);
        std::vector<size_t> order(changes_.size());
        for (size_t i = 0; i < order.size(); ++i) order[i] = i;
        std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return keys[a] < keys[b]; });
        out.changes.reserve(changes_.size());
        for (size_t i : order) out.changes.push_back(std::move(changes_[i]));
    }

    const Cut& before_;
    const Cut& after_;
    const DiffOptions& options_;
    std::vector<TrackPair> pairs_;
    CutSpans spans_;
    std::vector<Change> changes_;
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

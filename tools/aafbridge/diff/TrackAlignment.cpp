#include "diff/TrackAlignment.h"

#include <algorithm>
#include <cstdlib>
#include <unordered_map>

namespace cutdiff {
namespace {

// A source used many times (a slate, black, one long interview cut into short pieces) is weighed
// against its uses nearest in source and nearest in record only: at most this many of each.
constexpr size_t kNearestInSource = 48;
constexpr size_t kNearestInRecord = 16;
// How far along a source's uses the search for ones that overlap goes.
constexpr size_t kMostLookedAt = 256;

struct Candidate {
    size_t before, after;
    int64_t weight;
};

// The events of a track by source: each source's uses in source order and in record order.
class SourceIndex {
public:
    explicit SourceIndex(const std::vector<SourceSpan>& events) : events_(events) {
        for (size_t i = 0; i < events.size(); ++i) {
            Uses& uses = bySource_[events[i].source];
            uses.inRecordOrder.push_back(i);
            uses.longest = std::max(uses.longest, events[i].sourceLength());
        }
        for (auto& [key, uses] : bySource_) {
            uses.inSourceOrder = uses.inRecordOrder;
            std::stable_sort(uses.inSourceOrder.begin(), uses.inSourceOrder.end(),
                             [&](size_t a, size_t b) { return events[a].sourceIn < events[b].sourceIn; });
        }
    }

    // The events whose source overlaps `event`'s, nearest first; an event that stayed in place
    // is always among them.
    std::vector<size_t> overlapping(const SourceSpan& event) const {
        std::vector<size_t> found;
        const auto uses = bySource_.find(event.source);
        if (uses == bySource_.end()) return found;
        nearestInSource(event, uses->second, found);
        nearestInRecord(event, uses->second, found);
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return found;
    }

private:
    struct Uses {
        std::vector<size_t> inRecordOrder, inSourceOrder;
        int64_t longest = 0;
    };

    void nearestInSource(const SourceSpan& event, const Uses& uses, std::vector<size_t>& found) const {
        const std::vector<size_t>& order = uses.inSourceOrder;
        auto use = std::lower_bound(order.begin(), order.end(), event.sourceIn - uses.longest,
                                    [&](size_t i, int64_t in) { return events_[i].sourceIn < in; });
        size_t looked = 0, kept = 0;
        for (; use != order.end() && events_[*use].sourceIn < event.sourceOut; ++use) {
            if (++looked > kMostLookedAt || kept == kNearestInSource) break;
            if (sourceOverlap(event, events_[*use]) > 0) found.push_back(*use), ++kept;
        }
    }

    void nearestInRecord(const SourceSpan& event, const Uses& uses, std::vector<size_t>& found) const {
        const std::vector<size_t>& order = uses.inRecordOrder;
        const auto at = std::lower_bound(order.begin(), order.end(), event.recordIn,
                                         [&](size_t i, int64_t in) { return events_[i].recordIn < in; });
        const size_t middle = size_t(at - order.begin());
        const size_t from = middle > kNearestInRecord / 2 ? middle - kNearestInRecord / 2 : 0;
        for (size_t k = from; k < order.size() && k < from + kNearestInRecord; ++k)
            if (sourceOverlap(event, events_[order[k]]) > 0) found.push_back(order[k]);
    }

    const std::vector<SourceSpan>& events_;
    std::unordered_map<uint32_t, Uses> bySource_;
};

// Prefix maxima over the after track's events: the best chain ending before each.
class BestChains {
public:
    explicit BestChains(size_t size) : tree_(size + 1) {}

    struct Best {
        int64_t total = 0;
        long candidate = -1;
    };
    Best before(size_t index) const {
        Best best;
        for (size_t i = index; i > 0; i -= i & (~i + 1))
            if (tree_[i].total > best.total) best = tree_[i];
        return best;
    }
    void end(size_t index, Best chain) {
        for (size_t i = index + 1; i < tree_.size(); i += i & (~i + 1))
            if (chain.total > tree_[i].total) tree_[i] = chain;
    }

private:
    std::vector<Best> tree_;
};

// The overlap first (past 2^31 units, twelve hours at 48000 Hz, all overlaps weigh alike, so
// that a chain's total stays in range); of equal overlaps (the same material used again alike),
// the event treated alike (speed, levels, effects), then the one nearest where it was.
int64_t weight(const SourceSpan& before, const SourceSpan& after) {
    const int64_t overlap = std::min<int64_t>(sourceOverlap(before, after), int64_t(1) << 31);
    const int64_t shift = std::llabs(after.recordIn - before.recordIn);
    return 1024 * overlap + (before.treatment == after.treatment ? 512 : 0) + 255 / (1 + std::min<int64_t>(shift, 255));
}

std::vector<Candidate> candidates(const std::vector<SourceSpan>& before, const std::vector<SourceSpan>& after) {
    const SourceIndex index(after);
    std::vector<Candidate> found;
    for (size_t i = 0; i < before.size(); ++i)
        for (size_t j : index.overlapping(before[i])) found.push_back({i, j, weight(before[i], after[j])});
    // Each before event's candidates last first, so that one chain never takes two of them.
    std::sort(found.begin(), found.end(), [](const Candidate& a, const Candidate& b) {
        return a.before != b.before ? a.before < b.before : a.after > b.after;
    });
    return found;
}

}  // namespace

std::vector<EventPair> alignEvents(const std::vector<SourceSpan>& before, const std::vector<SourceSpan>& after) {
    const std::vector<Candidate> found = candidates(before, after);
    BestChains chains(after.size());
    std::vector<long> previous(found.size(), -1);
    BestChains::Best best;
    for (size_t c = 0; c < found.size(); ++c) {
        const BestChains::Best prior = chains.before(found[c].after);
        previous[c] = prior.candidate;
        const BestChains::Best chain{prior.total + found[c].weight, long(c)};
        chains.end(found[c].after, chain);
        if (chain.total > best.total) best = chain;
    }
    std::vector<EventPair> pairs;
    for (long c = best.candidate; c >= 0; c = previous[size_t(c)]) pairs.push_back({found[c].before, found[c].after});
    std::reverse(pairs.begin(), pairs.end());
    return pairs;
}

}  // namespace cutdiff

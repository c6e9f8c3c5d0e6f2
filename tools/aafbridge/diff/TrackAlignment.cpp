#include "diff/TrackAlignment.h"

#include <algorithm>
#include <unordered_map>

namespace cutdiff {
namespace {

// An event used more times than this (a slate, black) is weighed against its nearest uses only.
constexpr size_t kMostCandidates = 48;

struct Candidate {
    size_t before, after;
    int64_t weight;
};

// The events of a track by source, each source's uses in source order.
class SourceIndex {
public:
    explicit SourceIndex(const std::vector<SourceSpan>& events) : events_(events) {
        for (size_t i = 0; i < events.size(); ++i) {
            Uses& uses = bySource_[events[i].source];
            uses.events.push_back(i);
            uses.longest = std::max(uses.longest, events[i].sourceLength());
        }
        for (auto& [key, uses] : bySource_)
            std::sort(uses.events.begin(), uses.events.end(),
                      [&](size_t a, size_t b) { return events[a].sourceIn < events[b].sourceIn; });
    }

    // The events whose source overlaps `event`'s.
    template <typename Visit>
    void overlapping(const SourceSpan& event, Visit visit) const {
        const auto found = bySource_.find(event.source);
        if (found == bySource_.end()) return;
        const Uses& uses = found->second;
        const int64_t earliest = event.sourceIn - uses.longest;
        auto first = std::lower_bound(uses.events.begin(), uses.events.end(), earliest,
                                      [&](size_t i, int64_t in) { return events_[i].sourceIn < in; });
        size_t visited = 0;
        for (auto i = first; i != uses.events.end() && events_[*i].sourceIn < event.sourceOut; ++i)
            if (sourceOverlap(event, events_[*i]) > 0 && visited++ < kMostCandidates) visit(*i);
    }

private:
    struct Uses {
        std::vector<size_t> events;
        int64_t longest = 0;
    };
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

std::vector<Candidate> candidates(const std::vector<SourceSpan>& before, const std::vector<SourceSpan>& after) {
    const SourceIndex index(after);
    std::vector<Candidate> found;
    for (size_t i = 0; i < before.size(); ++i)
        index.overlapping(before[i], [&](size_t j) {
            // The overlap first; of equal overlaps, the event treated alike (speed, levels,
            // effects), then the one that stayed in place.
            const int64_t weight = 4 * sourceOverlap(before[i], after[j]) + (before[i].treatment == after[j].treatment ? 2 : 0) +
                                   (before[i].recordIn == after[j].recordIn ? 1 : 0);
            found.push_back({i, j, weight});
        });
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

#pragma once
// A track's segments walked into events, in record order: sequences in turn, transitions
// settled at their cut points, effects and speed changes carried onto the events under them,
// nests, mixed-rate sequences and the layers of nested scopes spliced in where they show.
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "composition/Segment.h"
#include "diff/Cut.h"
#include "diff/SourceTable.h"

namespace cutdiff {

// What the walks of one track share: the sources, and each nested scope's slot once walked, so
// that a slot referred to many times is walked once.
struct TrackWalk {
    explicit TrackWalk(SourceTable& sources) : sources(sources) {}
    SourceTable& sources;
    std::map<std::pair<const composition::Segment*, size_t>, std::vector<CutEvent>> scopeSlots;
};

class EventCollector {
public:
    // The nested scopes around what is read, innermost last: each with the slot being read and
    // where the scope starts in the one around it.
    struct Scope {
        const composition::Segment* scope;
        size_t slot;
        int64_t start;
    };

    EventCollector(const aafRational_t& rate, TrackWalk& walk, std::vector<Scope> scopes = {}, int64_t base = 0)
        : rate_(rate), walk_(walk), scopes_(std::move(scopes)), base_(base) {}

    void add(const composition::Segment& segment);
    std::vector<CutEvent> take() { return std::move(events_); }

private:
    struct PendingTransition {
        int64_t cut;
        std::string text;
        size_t eventsBefore;
    };

    void emit(CutEvent event);
    void addSequence(const composition::Segment& sequence);
    void addClip(const composition::Segment& clip);
    void addTransition(const composition::Segment& transition);
    void addFirstChild(const composition::Segment& segment);
    void addOperation(const composition::Segment& group);
    void addNest(const composition::Segment& nest);
    void addAtRate(const composition::Segment& segment, const aafRational_t& rate);
    void addScope(const composition::Segment& scope);
    void addScopeReference(const composition::Segment& reference);
    void skip(const composition::Segment& segment);
    // The part [start, start + length) of `inner` placed at the current position.
    void splice(const std::vector<CutEvent>& inner, int64_t start, int64_t length);
    // The events of `segment` read as if it began here, inside the same scopes.
    std::vector<CutEvent> collectHere(const composition::Segment& segment);
    const std::vector<CutEvent>& scopeSlot(std::vector<Scope> scopes);

    aafRational_t rate_;
    TrackWalk& walk_;
    std::vector<Scope> scopes_;
    int64_t base_;  // where this walk's position 0 is in the innermost scope
    int64_t position_ = 0;
    std::vector<CutEvent> events_;
    std::optional<PendingTransition> pending_;
};

}  // namespace cutdiff

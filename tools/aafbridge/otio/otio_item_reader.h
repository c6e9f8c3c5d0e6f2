#pragma once
// The items of an OpenTimelineIO track read into entries the writer can take: clips with
// their media and effects, gaps, transitions, and nested Stacks and Tracks flattened to what
// they show. Times stay exact here, in edit units of the composition; they are rounded once
// a track is laid out, at its cut points.
#include <optional>
#include <string>

#include "otio/otio_flat.h"
#include "otio/otio_node.h"
#include "otio/otio_notes.h"
#include "otio/otio_time.h"

class OtioItemReader {
public:
    OtioItemReader(const OtioRate& rate, OtioNotes& notes) : rate_(rate), notes_(notes) {}

    // A time in edit units of the composition rate, exact; off those units it is refused
    // with --strict.
    double units(const OtioNode& time) const;
    double length(const OtioNode& time) const;

    // A track of the timeline's Stack, its nests flattened, its transitions kept, with its
    // markers and its children's, before its own trim.
    FlatItems track(const OtioNode& track);
    // The markers of an item, in its own time, less `origin`.
    void addMarkers(const OtioNode& owner, double origin, FlatItems& items) const;
    // Effects where the writer has none (a Track, a Gap): left out, each named.
    void dropEffects(const OtioNode& owner, const std::string& where) const;
    // Cut to a trim (`source_range`), a gap named by `filler` where the trim outlasts the items;
    // markers outside it are left out, and named.
    FlatItems trimmed(const FlatItems& items, const OtioNode& range, const OtioNode& filler) const;

private:
    FlatItems item(const OtioNode& child, const OtioNode& top, int depth);
    FlatItems nest(const OtioNode& nest, const OtioNode& top, int depth);
    FlatItems layers(const OtioNode& stack, const OtioNode& top, int depth);
    FlatItems sequence(const OtioNode& track, const OtioNode& top, int depth);
    FlatItems gap(const OtioNode& child, const OtioNode& top) const;
    FlatEntry transition(const OtioNode& child) const;
    FlatItems clip(const OtioNode& child, const OtioNode& top);
    OtioMedia media(const OtioNode& clip) const;
    // The clip's effects as effect events; the nest's effects are carried to its clips.
    void addEffects(const OtioNode& owner, std::vector<FlatEffect>& effects) const;
    std::optional<FlatEffect> effect(const OtioNode& effect) const;
    // A nest's own time warps and effects, applied to what it shows.
    void applyNestEffects(const OtioNode& nest, FlatItems& shown) const;

    OtioRate rate_;
    OtioNotes& notes_;
};

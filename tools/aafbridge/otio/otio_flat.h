#pragma once
// A track's items laid end to end in exact (unrounded) edit units of the composition, as
// nests are flattened into it: what a nest shows is cut to its trim, slowed or sped by its
// time warps and laid over what the layers below it show.
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "otio/otio_node.h"

// One media reference as the clip the writer registers for it.
struct OtioMedia {
    std::string name, path;
    double start = 0, length = 0;  // available range, when the document gives one
};

// An effect event for the clip it follows; its length is the clip's, set once the track is laid out.
struct FlatEffect {
    nlohmann::json event;
    // What the effect covered in the file it came from, checked against the clip's final
    // length (transitions lengthen it), and the effect's place in the document to name it.
    std::optional<double> covers;
    std::shared_ptr<const OtioNode> node;
    bool operator==(const FlatEffect& other) const { return event == other.event && covers == other.covers; }
};

struct FlatEntry {
    enum class Kind { clip, gap, transition };
    FlatEntry(Kind kind, const OtioNode& node) : kind(kind), node(node) {}
    Kind kind;
    // The track's child the entry comes from (for what a nest shows, the nest), detached.
    OtioNode node;
    double start = 0;     // clips: the source time at the entry's start
    double duration = 0;  // clips and gaps: on the track
    double in = 0, out = 0;           // transitions
    double speed = 1;                 // clips: source time per unit of track time, from nests' time warps
    OtioMedia media;                  // clips
    std::vector<FlatEffect> effects;  // clips
};

struct FlatMarker {
    double at;
    std::string text;
};

struct FlatItems {
    std::vector<FlatEntry> entries;
    std::vector<FlatMarker> markers;
    double length = 0;

    // `other` laid after what is here.
    void append(FlatItems other);
};

// The part of `items` between two of its times, from 0 on; transitions at either end are kept
// for their neighbours to be checked. Beyond the items' end a gap of `filler`.
FlatItems cropFlatItems(const FlatItems& items, double from, double to, const OtioNode& filler);
// Played at `speed` times its own rate: shorter by that factor, its clips' speeds multiplied.
void warpFlatItems(FlatItems& items, double speed);
// `upper` over `lower`: the upper layer's clips, and the lower's where the upper has gaps or has ended.
FlatItems overlayFlatItems(const FlatItems& lower, FlatItems upper);

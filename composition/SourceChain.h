#pragma once
// Where a clip's material comes from: the mobs its source reference leads through, from the
// master clip down to the tape or file it was captured or imported from.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Marker.h"
#include "aafkit/AafTypes.h"

namespace composition {

enum class MobKind { Composition, Master, File, Tape, Film, Import, Source };
const char* mobKindName(MobKind kind);

// A timecode track's start: frame `start` at `fps` frames per second is the slot's origin.
struct Timecode {
    int64_t start = 0;
    uint16_t fps = 0;
    bool drop = false;
    aafRational_t editRate = {0, 1};  // of the slot that holds it
};

// What a mob of a chain states about itself: read once per mob, and shared by every clip whose
// chain passes it.
struct SourceMob {
    MobKind kind = MobKind::Source;
    std::string name;
    aafMobID_t mobId = {};
    std::optional<Timecode> timecode;

    // Source mobs: what their descriptor says.
    std::string descriptor;  // class name, e.g. "WAVEDescriptor"
    uint32_t channels = 0;
    aafRational_t sampleRate = {0, 1};
    int64_t essenceLength = 0;  // in sample-rate units
    std::vector<std::string> locators;
    bool embedded = false;
    // Where the editor imported the media from, as it recorded it (Avid's "UNC Path").
    std::string importPath;
    // Master clips: the markers an editor left on the clip itself, in its slots' edit units.
    std::vector<Marker> markers;
};

// One mob of the chain, and where in its slot the clip's material starts.
struct SourceLink {
    std::shared_ptr<const SourceMob> mob;  // never null
    uint32_t slotId = 0;
    uint32_t physicalTrack = 0;
    aafRational_t editRate = {0, 1};
    int64_t start = 0;  // in this slot's edit units

    // Whether the chain reached the slot, so that `start` and `editRate` say where it is.
    bool placed() const { return editRate.numerator > 0 && editRate.denominator > 0; }
};

struct SourceChain {
    std::vector<SourceLink> links;  // master first
    std::string broken;             // why the chain stops short; empty when it reached its end

    const SourceLink* find(MobKind kind) const;
    // The deepest mob that stands for physical media: tape, film or import source, else the file.
    const SourceLink* origin() const;
    // The deepest placed link that carries a timecode track.
    const SourceLink* timecoded() const;
    // The deepest placed link; null when there is none.
    const SourceLink* deepestPlaced() const;
};

}  // namespace composition

#pragma once
// The top-level composition as the file holds it: every slot in file order, every segment
// as stored, every clip resolved to its sources, the markers. The tool's OpenTimelineIO
// and source listings read it; the exported reader does not.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Marker.h"
#include "Segment.h"
#include "TaggedValue.h"

namespace aafkit {
class File;
}

namespace composition {

enum class SlotClass { Timeline, Event, Static };

struct Track {
    std::string name;
    uint32_t slotId = 0;
    uint32_t physicalTrack = 0;
    SlotClass slotClass = SlotClass::Timeline;
    DataKind data = DataKind::Other;
    aafRational_t editRate = {0, 1};
    int64_t origin = 0;
    // Avid's track format attribute: 1 mono, 2 stereo, 3 5.1, 4 7.1; 0 when the slot has none.
    uint32_t trackFormat = 0;
    Segment segment;
    Metadata metadata;
};

struct Composition {
    std::string name;
    aafMobID_t mobId = {};
    std::vector<Track> tracks;  // every slot, in file order
    std::vector<Marker> markers;
    std::optional<Timecode> timecode;  // the first timecode track's
    Metadata metadata;

    const Track* findTrack(uint32_t slotId) const;
};

// Reads the top-level composition (the first composition mob whose usage is top-level or
// unset). False, with why, when the file holds none; anything that breaks below that is kept
// with its reason on the segment or source chain it concerns.
bool readComposition(const aafkit::File& file, Composition& out, std::string& why);

}  // namespace composition

#pragma once
// A marker an editor left on the composition: where, how long, what it says, which colour.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TaggedValue.h"
#include "aafkit/AafTypes.h"

namespace composition {

struct Rgb {
    uint16_t red = 0, green = 0, blue = 0;
};

struct Marker {
    int64_t position = 0;  // in the edit units of the slot that holds it
    int64_t length = 0;
    aafRational_t editRate = {0, 1};
    std::string name;     // the editor's marker name (Avid: the user field)
    std::string comment;
    std::optional<Rgb> rgb;  // CommentMarkerColor
    std::string colour;      // the editor's own colour name, where it names one ("Red")
    uint32_t slotId = 0;     // the slot that holds it
    std::vector<uint32_t> describedSlots;
    Metadata metadata;
};

// The colour's name as OpenTimelineIO spells it ("RED", "CYAN", ...): the editor's name where
// it gives one, else the named colour nearest to the RGB value; "" when the marker has neither.
std::string colourName(const Marker& marker);

}  // namespace composition

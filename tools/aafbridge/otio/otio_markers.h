#pragma once
// Markers as OpenTimelineIO places them: on the track of the slot they belong to, else on
// the top Stack, with their colour, comment and length.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "composition/Composition.h"

// `start` is where the marker sits in its item's time, in edit units at `rate`.
nlohmann::ordered_json otioMarker(const composition::Marker& marker, const composition::Track* attached, int64_t start,
                                  const aafRational_t& rate);

struct PlacedMarkers {
    nlohmann::ordered_json stack = nlohmann::ordered_json::array();
    std::vector<nlohmann::ordered_json> tracks;  // by the exported tracks' order
};
// The composition's markers, for the top Stack and for each of the `exported` tracks.
PlacedMarkers placeMarkers(const composition::Composition& composition,
                           const std::vector<const composition::Track*>& exported);

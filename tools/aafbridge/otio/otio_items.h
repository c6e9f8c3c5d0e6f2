#pragma once
// The pieces both OpenTimelineIO exports build tracks from: schema objects with every field,
// and items whose ranges are settled once the transitions have taken their overlap.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

// A schema object with `metadata.aafbridge` set when there is anything to keep.
nlohmann::ordered_json otioObject(const char* schema, const std::string& name, nlohmann::ordered_json aafbridge);
// The fields every item of a track carries; the range is set once the trims are known.
nlohmann::ordered_json otioTrackItem(const char* schema, const std::string& name, nlohmann::ordered_json aafbridge);
nlohmann::ordered_json otioTransition(int64_t length, int64_t cutPoint, double rate, nlohmann::ordered_json aafbridge);

// A track item before the transitions take their overlap out of their neighbours.
struct OtioPiece {
    nlohmann::ordered_json item;
    int64_t start = 0, duration = 0;  // clips, gaps and nests, in the track's edit units
    bool transition = false;
    int64_t length = 0, cutPoint = 0;  // transitions
};

// In AAF the items on both sides of a transition include the overlap; in OTIO they do not.
// A transition first or last on its track trims nothing on its open side.
void trimAroundTransitions(std::vector<OtioPiece>& pieces);
// The pieces as a track's children, each item's source range set at `rate`.
nlohmann::ordered_json otioChildren(std::vector<OtioPiece>& pieces, double rate);

#pragma once
// A cut as an editor compares it: per track, the events in record order, each with where its
// material comes from and what is done to it. Read from the composition as the file holds
// it, nests and effects flattened, so that two versions of an edit compare event by event.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "aafkit/AafTypes.h"

namespace composition {
struct Composition;
}

namespace cutdiff {

// Times past any real track (2^40 edit units: 265 days at 48000 Hz). A damaged file's times are
// held within it, so that no sum or difference of them overflows.
constexpr int64_t kFarthest = int64_t(1) << 40;
inline int64_t heldInRange(int64_t value) { return std::clamp(value, -kFarthest, kFarthest); }
inline int64_t roundedInRange(double value) {
    return std::isnan(value) ? 0 : int64_t(std::llround(std::clamp(value, -double(kFarthest), double(kFarthest))));
}

// A parameter's or speed's value as the diff shows and compares it: six significant digits.
std::string numberText(double value);

// What events show: a tape's or file's channel, under a master clip's name.
struct CutSource {
    // The tape or file source's identifier (else the master clip's) and channel: what an event
    // is, whatever it is named.
    std::string key;
    // The same source as files made apart know it: its media file, else its name, and channel.
    std::string media;
    std::string name;  // the master clip's name, as editors know it
};

struct CutEvent {
    int64_t recordIn = 0, recordOut = 0;  // edit units from the track's start
    uint32_t source = 0;                  // into the cut's sources
    int64_t sourceIn = 0, sourceOut = 0;  // the source's own timecode, in the track's edit units
    double speed = 1;                     // the speed effect's ratio, 1 without one
    std::string levels;      // gain and pan, with key frames, as comparable text ("" none)
    std::string effects;     // every other effect on the event, the same way
    std::string transition;  // the transition into the event ("" a cut)

    int64_t recordLength() const { return recordOut - recordIn; }
    int64_t sourceLength() const { return sourceOut - sourceIn; }
};

enum class TrackKind { Picture, Sound };

struct CutTrack {
    std::string label;  // "V1", "A2": what the two cuts' tracks are paired by
    TrackKind kind = TrackKind::Picture;
    aafRational_t editRate = {0, 1};
    std::vector<CutEvent> events;  // in record order, never overlapping
};

struct CutMarker {
    std::string track;  // the label of the track it belongs to
    int64_t position = 0;  // in that track's edit units from its start
    std::string text;
    std::string colour;
};

struct StartTimecode {
    int64_t frame = 0;
    uint16_t fps = 0;
    bool drop = false;
    aafRational_t editRate = {0, 1};  // of the timecode track: frame counts at it
};

struct Cut {
    std::string name;
    std::optional<StartTimecode> start;
    std::vector<CutTrack> tracks;  // in the file's order
    std::vector<CutMarker> markers;
    std::vector<CutSource> sources;

    const CutTrack* find(const std::string& label) const;
};

Cut cutFromComposition(const composition::Composition& composition);

// "V2" or "A12": a track label's kind letter and number (1 to 9999); false for anything else.
bool parseTrackLabel(const std::string& text, char& letter, int& number);

}  // namespace cutdiff

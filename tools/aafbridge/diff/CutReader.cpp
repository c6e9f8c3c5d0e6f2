#include <cstdio>
#include <set>

#include "composition/Composition.h"
#include "composition/EditTime.h"
#include "diff/Cut.h"
#include "diff/EventCollector.h"

using namespace composition;

namespace cutdiff {
namespace {

bool isCutTrack(const Track& track) {
    return track.slotClass == SlotClass::Timeline && (track.data == DataKind::Picture || track.data == DataKind::Sound);
}

// A track's name where it is a track label ("V2", "A12") not yet taken, else its kind and number.
std::string trackLabel(const Track& track, uint32_t number, std::set<std::string>& taken) {
    char letter = 0;
    int named = 0;
    if (parseTrackLabel(track.name, letter, named) && taken.insert(track.name).second) return track.name;
    const std::string kind = track.data == DataKind::Picture ? "V" : "A";
    while (!taken.insert(kind + std::to_string(number)).second) ++number;
    return kind + std::to_string(number);
}

std::vector<CutTrack> cutTracks(const Composition& composition, SourceTable& sources) {
    std::vector<CutTrack> tracks;
    std::set<std::string> taken;
    uint32_t pictures = 0, sounds = 0;
    for (const Track& track : composition.tracks) {
        if (!isCutTrack(track)) continue;
        CutTrack cut;
        cut.kind = track.data == DataKind::Picture ? TrackKind::Picture : TrackKind::Sound;
        cut.label = trackLabel(track, cut.kind == TrackKind::Picture ? ++pictures : ++sounds, taken);
        cut.editRate = track.editRate;
        TrackWalk walk(sources);
        EventCollector collector(track.editRate, walk);
        collector.add(track.segment);
        cut.events = collector.take();
        tracks.push_back(std::move(cut));
    }
    return tracks;
}

// The track a marker belongs to: the first it describes, else (describing none) the one that
// holds it; a marker on the timecode, as sequence markers are, goes with the first picture track.
const CutTrack* markerTrack(const Marker& marker, const Composition& composition, const std::vector<CutTrack>& tracks) {
    std::vector<uint32_t> slots = marker.describedSlots;
    if (slots.empty()) slots.push_back(marker.slotId);
    for (uint32_t slot : slots) {
        size_t index = 0;
        for (const Track& track : composition.tracks) {
            if (!isCutTrack(track)) continue;
            if (track.slotId == slot) return &tracks[index];
            ++index;
        }
    }
    for (const CutTrack& track : tracks)
        if (track.kind == TrackKind::Picture) return &track;
    return tracks.empty() ? nullptr : &tracks.front();
}

std::vector<CutMarker> cutMarkers(const Composition& composition, const std::vector<CutTrack>& tracks) {
    std::vector<CutMarker> markers;
    for (const Marker& marker : composition.markers) {
        const CutTrack* track = markerTrack(marker, composition, tracks);
        if (!track) break;
        markers.push_back({track->label, heldInRange(convertEditUnits(marker.position, marker.editRate, track->editRate)),
                           marker.comment.empty() ? marker.name : marker.comment, colourName(marker)});
    }
    return markers;
}

}  // namespace

bool parseTrackLabel(const std::string& text, char& letter, int& number) {
    if (text.size() < 2 || text.size() > 5 || (text[0] != 'V' && text[0] != 'A') || text[1] == '0' ||
        text.find_first_not_of("0123456789", 1) != std::string::npos)
        return false;
    letter = text[0];
    number = std::stoi(text.substr(1));
    return true;
}

std::string numberText(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", value);
    return text;
}

const CutTrack* Cut::find(const std::string& label) const {
    for (const CutTrack& track : tracks)
        if (track.label == label) return &track;
    return nullptr;
}

Cut cutFromComposition(const Composition& composition) {
    Cut cut;
    cut.name = composition.name;
    if (composition.timecode)
        cut.start = StartTimecode{heldInRange(composition.timecode->start), composition.timecode->fps, composition.timecode->drop,
                                  composition.timecode->editRate};
    SourceTable sources;
    cut.tracks = cutTracks(composition, sources);
    cut.sources = sources.take();
    cut.markers = cutMarkers(composition, cut.tracks);
    return cut;
}

}  // namespace cutdiff

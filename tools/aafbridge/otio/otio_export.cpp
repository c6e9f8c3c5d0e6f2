// The host's view of a composition (what the reader functions answer) as an
// OpenTimelineIO Timeline.
#include <map>
#include <string>
#include <vector>

#include "otio/otio.h"
#include "otio/otio_items.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;

namespace {

struct MediaEntry {
    std::string name, path;
};
using Catalogue = std::map<std::string, MediaEntry>;  // by mob id text

Json mediaReference(const Json& event, const Catalogue& catalogue) {
    auto found = catalogue.find(event["id"].get<std::string>());
    if (found == catalogue.end() || found->second.path.empty()) {
        Json missing = otioObject("MissingReference.1", event["name"].get<std::string>(), {});
        missing["available_range"] = nullptr;
        missing["available_image_bounds"] = nullptr;
        return missing;
    }
    Json external = otioObject("ExternalReference.1", found->second.name, {});
    external["target_url"] = found->second.path;
    // The reader's catalogue does not say how long the media is.
    external["available_range"] = nullptr;
    external["available_image_bounds"] = nullptr;
    return external;
}

OtioPiece clipPiece(const Json& event, const Catalogue& catalogue) {
    OtioPiece piece{otioTrackItem("Clip.2", event["name"].get<std::string>(),
                                  {{"mobId", event["id"]}, {"slot", event["slot"]}, {"physicalNumber", event["physicalNumber"]}}),
                    event["inPoint"].get<int64_t>(), event["length"].get<int64_t>()};
    piece.item["media_references"] = {{"DEFAULT_MEDIA", mediaReference(event, catalogue)}};
    piece.item["active_media_reference_key"] = "DEFAULT_MEDIA";
    return piece;
}

OtioPiece transitionPiece(const Json& event, double rate) {
    const int64_t length = event["length"], cut = event["cutPoint"];
    OtioPiece piece{otioTransition(length, cut, rate, {{"length", length}, {"cutPoint", cut}})};
    piece.transition = true;
    piece.length = length;
    piece.cutPoint = cut;
    return piece;
}

// Values and key frames travel in metadata; key frames as fractions of the effect's length,
// as the writer takes them (none when the effect has no length to divide by).
//
// A speed change cannot be told from any other operation the reader does not know, so it is
// named "Other" like them and never made a LinearTimeWarp: the reader reports it as type 5
// with no values and no key frames (the speed ratio and phase are not among the parameters
// it reads), and folds the speed into the clip it covers, whose length becomes the effect's
// and whose in-point is recomputed from the ratio (over 1001, as the writer stores it, every
// in-point below 1001 becomes 0). Neither the speed nor the original in-point is left.
Json effectItem(const Json& event) {
    static const char* const kNames[] = {"Volume", "Pan", "Composite"};
    const uint32_t type = event["effectType"];
    const int64_t length = event["length"];
    Json fractions = Json::array();
    if (length > 0)
        for (const Json& offset : event["keyFrames"]) fractions.push_back(offset.get<double>() / double(length));
    Json effect = otioObject("Effect.1", "", {{"effectType", type},
                                              {"numInputs", event["numInputs"]},
                                              {"inputs", event["inputs"]},
                                              {"length", length},
                                              {"params", event["params"]},
                                              {"keyFrames", fractions},
                                              {"keyFrameOffsets", event["keyFrames"]}});
    effect["effect_name"] = type < 3 ? kNames[type] : "Other";
    return effect;
}

// An effect covers the clips and fillers just before it, as many as its length needs (the
// writer's rule); nested effects land on the same items, innermost first. Answers false when
// nothing precedes it on the track.
bool attachEffect(std::vector<OtioPiece>& pieces, const Json& event) {
    const Json effect = effectItem(event);
    int64_t remaining = event["length"];
    bool attached = false;
    for (size_t i = pieces.size(); i-- > 0 && remaining > 0 && !pieces[i].transition;) {
        pieces[i].item["effects"].push_back(effect);
        remaining -= pieces[i].duration;
        attached = true;
    }
    return attached;
}

Json trackJson(const Json& track, uint32_t index, const std::string& name, const Catalogue& catalogue) {
    const double rate = track["editRate"];
    std::vector<OtioPiece> pieces;
    Json uncovered = Json::array();
    for (const Json& event : track["events"]) {
        const std::string kind = event["kind"];
        if (kind == "clip")
            pieces.push_back(clipPiece(event, catalogue));
        else if (kind == "filler")
            pieces.push_back({otioTrackItem("Gap.1", "", {}), 0, event["length"].get<int64_t>()});
        else if (kind == "transition")
            pieces.push_back(transitionPiece(event, rate));
        else if (!attachEffect(pieces, event))
            uncovered.push_back(effectItem(event));
    }
    trimAroundTransitions(pieces);
    Json children = otioChildren(pieces, rate);
    Json object = otioTrackItem("Track.1", name, {{"trackIndex", index}, {"editRate", rate}});
    object["effects"] = std::move(uncovered);
    object["kind"] = track["type"] == "video" ? "Video" : "Audio";
    object["children"] = std::move(children);
    return object;
}

// The composition's rate, which the reader does not report: the first video track's, else
// the first track's, else the timecode's, else OTIO's default of 24.
double compositionRate(const Json& view) {
    for (const Json& track : view["tracks"])
        if (track["type"] == "video") return track["editRate"];
    if (!view["tracks"].empty()) return view["tracks"][0]["editRate"];
    const uint32_t fps = view["timecode"]["fps"];
    return fps ? fps : 24.0;
}

// Markers sit on the top Stack at the composition's rate.
Json markersJson(const Json& view) {
    const double rate = compositionRate(view);
    Json markers = Json::array();
    for (const Json& marker : view["markers"]) {
        Json object = otioObject("Marker.2", marker["text"].get<std::string>(), {});
        object["marked_range"] = otioRange(marker["position"].get<double>(), 0, rate);
        object["color"] = "RED";
        object["comment"] = "";
        markers.push_back(std::move(object));
    }
    return markers;
}

Json stackJson(const Json& view) {
    Catalogue catalogue;
    for (const Json& clip : view["clips"]) catalogue[clip["id"]] = {clip["name"], clip["path"]};
    Json children = Json::array();
    uint32_t video = 0, audio = 0, index = 0;
    for (const Json& track : view["tracks"]) {
        const bool isVideo = track["type"] == "video";
        const std::string name = (isVideo ? "V" : "A") + std::to_string(isVideo ? ++video : ++audio);
        children.push_back(trackJson(track, index++, name, catalogue));
    }
    Json stack = otioTrackItem("Stack.1", "tracks", {});
    stack["markers"] = markersJson(view);
    stack["children"] = std::move(children);
    return stack;
}

}  // namespace

Json otioFromHostView(const Json& view, const std::string& name) {
    const Json& timecode = view["timecode"];
    const uint32_t fps = timecode["fps"];
    Json timeline = otioObject("Timeline.1", name, {{"timecode", timecode}, {"proTools", view["proTools"]}});
    timeline["global_start_time"] = fps ? otioTime(timecode["start"].get<double>(), fps) : Json();
    timeline["tracks"] = stackJson(view);
    return timeline;
}

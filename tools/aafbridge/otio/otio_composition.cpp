#include "otio/otio_composition.h"

#include <algorithm>
#include <optional>

#include "aafkit/meta/EditorIds.h"
#include "aafkit/meta/Ids.h"
#include "composition/ClipSourceTime.h"
#include "composition/EditTime.h"
#include "otio/otio_items.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

const char* trackKind(DataKind data) { return data == DataKind::Picture ? "Video" : "Audio"; }

Json rationalJson(const aafRational_t& rate) { return Json::array({rate.numerator, rate.denominator}); }

Json parametersJson(const Operation& operation) {
    Json parameters = Json::array();
    for (const Parameter& parameter : operation.parameters) {
        Json keyFrames = Json::array();
        for (const KeyFrame& frame : parameter.keyFrames) keyFrames.push_back({frame.time, frame.value});
        parameters.push_back({{"name", parameter.name},
                              {"id", aafkit::auidToText(parameter.id)},
                              {"value", parameter.value},
                              {"interpolation", parameter.interpolation},
                              {"keyFrames", std::move(keyFrames)}});
    }
    return parameters;
}

// Avid's speed map: the play speed at each key frame.
constexpr aafUID_t kAvidSpeedMap = {0x8d56827c, 0x847e, 0x11d5, {0x93, 0x5a, 0x50, 0xf8, 0x57, 0xc1, 0x00, 0x00}};

// The constant speed a time warp plays its input at: Avid's speed map where there is one, else
// the ratio of output to input length that the model defines, else the speed factor editors
// write with it. None when the speed changes over the effect (a ramp is no linear warp).
std::optional<double> constantSpeed(const Operation& operation) {
    if (const Parameter* map = operation.find(kAvidSpeedMap)) {
        for (const KeyFrame& frame : map->keyFrames)
            if (frame.value != map->value) return std::nullopt;
        return map->value;
    }
    if (const Parameter* ratio = operation.find(kAAFParameterDef_SpeedRatio))
        return ratio->value != 0 ? 1.0 / ratio->value : 0.0;
    if (const Parameter* factor = operation.find(kAAFParameterDef_Ratio)) return factor->value;
    return 1.0;
}

Json effectJson(const Operation& operation, int64_t length) {
    Json data = {{"operationId", aafkit::auidToText(operation.id)}, {"length", length},
                 {"parameters", parametersJson(operation)}};
    const std::optional<double> speed = operation.timeWarp ? constantSpeed(operation) : std::nullopt;
    if (speed) {
        Json warp = otioObject(*speed == 0 ? "FreezeFrame.1" : "LinearTimeWarp.1", operation.name, std::move(data));
        warp["effect_name"] = *speed == 0 ? "FreezeFrame" : "LinearTimeWarp";
        warp["time_scalar"] = *speed;
        return warp;
    }
    Json effect = otioObject("Effect.1", operation.name, std::move(data));
    if (operation.id == kAAFOperationDef_MonoAudioGain || operation.id == kAAFOperationDef_StereoAudioGain)
        effect["effect_name"] = "Volume";
    else if (operation.id == kAAFOperationDef_MonoAudioPan)
        effect["effect_name"] = "Pan";
    else
        effect["effect_name"] = operation.name;
    return effect;
}

Json taggedJson(const std::vector<TaggedValue>& values) {
    Json out = Json::object();
    for (const TaggedValue& value : values)
        out[value.name] = value.children.empty() ? Json(value.value) : taggedJson(value.children);
    return out;
}

// User comments and attribute lists, where the object has any.
void addMetadata(const Metadata& metadata, Json& data) {
    if (!metadata.comments.empty()) data["comments"] = taggedJson(metadata.comments);
    if (!metadata.attributes.empty()) data["attributes"] = taggedJson(metadata.attributes);
}

Json timecodeJson(const Timecode& timecode) {
    return {{"start", timecode.start}, {"fps", timecode.fps}, {"drop", timecode.drop}};
}

// A mob of a clip's chain, with only what it states: a chain is written for every clip.
Json linkJson(const SourceLink& link) {
    Json data = {{"kind", mobKindName(link.mob->kind)}, {"mobId", aafkit::mobIdToText(link.mob->mobId)}, {"slotId", link.slotId}};
    if (!link.mob->name.empty()) data["name"] = link.mob->name;
    if (link.physicalTrack) data["physicalTrack"] = link.physicalTrack;
    if (link.placed()) {
        data["editRate"] = rationalJson(link.editRate);
        data["start"] = link.start;
    }
    if (link.mob->timecode) data["timecode"] = timecodeJson(*link.mob->timecode);
    if (!link.mob->descriptor.empty()) data["descriptor"] = link.mob->descriptor;
    if (link.mob->channels) data["channels"] = link.mob->channels;
    if (link.mob->sampleRate.numerator > 0) {
        data["sampleRate"] = rationalJson(link.mob->sampleRate);
        data["length"] = link.mob->essenceLength;
    }
    if (!link.mob->locators.empty()) data["locators"] = link.mob->locators;
    if (link.mob->embedded) data["embedded"] = true;
    return data;
}

Json clipMetadata(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    Json links = Json::array();
    for (const SourceLink& link : chain.links) links.push_back(linkJson(link));
    Json data = {{"mobId", aafkit::mobIdToText(clip.source.mobId)}, {"slotId", clip.source.slotId},
                 {"startTime", clip.source.startTime}, {"sourceChain", std::move(links)}};
    if (const SourceLink* origin = chain.origin(); origin && !origin->mob->name.empty()) data["tapeName"] = origin->mob->name;
    if (!chain.broken.empty()) data["broken"] = chain.broken;
    addMetadata(clip.metadata, data);
    return data;
}

Json availableRange(const SourceLink& link) {
    return otioRange(0, double(link.mob->essenceLength), rateValue(link.mob->sampleRate));
}

// DEFAULT_MEDIA is the media file (mediaUrl); every other file a mob of the chain locates is
// listed too, under that mob's name.
Json mediaReferences(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    Json references = Json::object();
    const std::string url = mediaUrl(chain);
    if (url.empty()) {
        Json missing = otioObject("MissingReference.1", clipName(clip), {});
        missing["available_range"] = nullptr;
        missing["available_image_bounds"] = nullptr;
        references["DEFAULT_MEDIA"] = std::move(missing);
    }
    for (const SourceLink& link : chain.links) {
        if (link.mob->locators.empty() && link.mob->importPath.empty()) continue;
        const std::string linkUrl = fileUrl(link.mob->importPath.empty() ? link.mob->locators.front() : link.mob->importPath);
        std::string key = linkUrl == url ? "DEFAULT_MEDIA" : link.mob->name.empty() ? mobKindName(link.mob->kind) : link.mob->name;
        if (references.contains(key) && key == "DEFAULT_MEDIA") continue;
        while (references.contains(key)) key += "+";
        Json external = otioObject("ExternalReference.1", link.mob->name, {});
        external["target_url"] = linkUrl;
        external["available_range"] = link.mob->essenceLength > 0 && link.mob->sampleRate.numerator > 0 ? availableRange(link) : Json();
        external["available_image_bounds"] = nullptr;
        references[key] = std::move(external);
    }
    return references;
}

// `start` is where the marker sits in its item's time, in edit units at `rate`.
Json markerJson(const Marker& marker, const Track* attached, int64_t start, const aafRational_t& rate) {
    Json data = {{"slotId", marker.slotId}, {"describedSlots", marker.describedSlots}};
    if (attached) {
        data["attachedSlotId"] = attached->slotId;
        data["attachedPhysicalTrack"] = attached->physicalTrack;
        data["attachedKind"] = dataKindName(attached->data);
    }
    if (marker.rgb) data["rgb"] = {marker.rgb->red, marker.rgb->green, marker.rgb->blue};
    if (!marker.colour.empty()) data["colour"] = marker.colour;
    addMetadata(marker.metadata, data);
    Json object = otioObject("Marker.2", marker.name, std::move(data));
    object["marked_range"] = otioRange(double(start), double(convertEditUnits(marker.length, marker.editRate, rate)),
                                       rateValue(rate));
    const std::string colour = colourName(marker);
    object["color"] = colour.empty() ? "RED" : colour;
    object["comment"] = marker.comment;
    return object;
}

class TrackBuilder {
public:
    TrackBuilder(const aafRational_t& rate, const OtioExportOptions& options) : rate_(rate), options_(options) {}

    std::vector<OtioPiece> pieces(const Segment& segment) {
        std::vector<OtioPiece> out;
        add(segment, out);
        return out;
    }

    Json track(const std::string& name, DataKind data, std::vector<OtioPiece> pieces, Json aafbridge) const {
        trimAroundTransitions(pieces);
        Json object = otioTrackItem("Track.1", name, std::move(aafbridge));
        object["kind"] = trackKind(data);
        object["children"] = otioChildren(pieces, rateValue(rate_));
        return object;
    }

private:
    void add(const Segment& segment, std::vector<OtioPiece>& out) {
        switch (segment.kind) {
        case SegmentKind::Sequence:
            for (const Segment& child : segment.children) add(child, out);
            return;
        case SegmentKind::SourceClip: return out.push_back(clipPiece(segment));
        case SegmentKind::Transition: return out.push_back(transitionPiece(segment));
        case SegmentKind::OperationGroup: return addOperation(segment, out);
        case SegmentKind::MultichannelAudio: return addInputStack(segment, out);
        case SegmentKind::NestedComposition: return addNest(segment, out);
        case SegmentKind::Selector:
        case SegmentKind::EssenceGroup:
            if (!segment.children.empty()) return add(segment.children.front(), out);
            break;
        case SegmentKind::NestedScope: return addScope(segment, out);
        case SegmentKind::Marker: return;  // markers go with the composition's
        default: break;
        }
        out.push_back(gapPiece(segment));
    }

    // A nested scope's slots are layers, each composited over the ones before it (Avid's
    // video tracks above V1 are scope slots whose references name the slot below): a Stack
    // with a Track per slot, first at the bottom. References stay gaps that say what they name.
    void addScope(const Segment& scope, std::vector<OtioPiece>& out) {
        Json stack = otioTrackItem("Stack.1", "", {{"kind", "NestedScope"}, {"slots", scope.children.size()}});
        stack["children"] = Json::array();
        for (const Segment& slot : scope.children) stack["children"].push_back(track("", slot.data, pieces(slot), {}));
        out.push_back({std::move(stack), 0, scope.length});
    }

    // An operation plays as long as it is, however long its inputs run.
    static void clipToLength(std::vector<OtioPiece>& pieces, int64_t length) {
        int64_t position = 0;
        for (OtioPiece& piece : pieces) {
            if (piece.transition) continue;
            piece.duration = std::max<int64_t>(0, std::min(piece.duration, length - position));
            position += piece.duration;
        }
    }

    OtioPiece gapPiece(const Segment& segment) const {
        Json data = Json::object();
        if (segment.kind != SegmentKind::Filler) data["kind"] = segment.className;
        if (segment.kind == SegmentKind::ScopeReference)
            data["refersTo"] = {{"relativeScope", segment.relativeScope}, {"relativeSlot", segment.relativeSlot}};
        if (!segment.problem.empty()) data["problem"] = segment.problem;
        return {otioTrackItem("Gap.1", "", std::move(data)), 0, segment.length};
    }

    OtioPiece clipPiece(const Segment& segment) const {
        Json item = otioTrackItem("Clip.2", clipName(segment), clipMetadata(segment));
        item["media_references"] = mediaReferences(segment);
        item["active_media_reference_key"] = "DEFAULT_MEDIA";
        const int64_t start = sourceStart(segment, rate_);
        addClipMarkers(segment, start, item);
        return {std::move(item), start, segment.length};
    }

    // The markers on the master clip that fall within what the clip uses, in its source time.
    void addClipMarkers(const Segment& clip, int64_t start, Json& item) const {
        const SourceLink* master = clip.source.chain.find(MobKind::Master);
        if (!master || !master->placed()) return;
        const int64_t clipIn = convertEditUnits(master->start, master->editRate, rate_);
        for (const Marker& marker : master->mob->markers) {
            const int64_t offset = convertEditUnits(marker.position, marker.editRate, rate_) - clipIn;
            if (offset >= 0 && offset < clip.length) item["markers"].push_back(markerJson(marker, nullptr, start + offset, rate_));
        }
    }

    OtioPiece transitionPiece(const Segment& segment) const {
        Json data = {{"length", segment.length}, {"cutPoint", segment.cutPoint},
                     {"operation", segment.operation.name}, {"operationId", aafkit::auidToText(segment.operation.id)},
                     {"parameters", parametersJson(segment.operation)}};
        OtioPiece piece{otioTransition(segment.length, segment.cutPoint, rateValue(rate_), std::move(data))};
        piece.transition = true;
        piece.length = segment.length;
        piece.cutPoint = segment.cutPoint;
        return piece;
    }

    // Inputs played at once, each as a track of a Stack: the channels of a multichannel clip
    // (Avid's audio channel combiner), or the layers of a title or composite. The Stack is
    // named after the first clip in it.
    void addInputStack(const Segment& group, std::vector<OtioPiece>& out) {
        Json tracks = Json::array();
        std::string name;
        for (const Segment& input : group.children) {
            std::vector<OtioPiece> layer = pieces(input);
            clipToLength(layer, group.length);
            for (const OtioPiece& piece : layer)
                if (name.empty() && piece.item["OTIO_SCHEMA"] == "Clip.2") name = piece.item["name"];
            tracks.push_back(track("", group.data, std::move(layer), Json::object()));
        }
        for (Json& layer : tracks) layer["name"] = name;
        Json stack = otioTrackItem("Stack.1", name, {{"inputs", group.children.size()}});
        stack["effects"].push_back(effectJson(group.operation, group.length));
        stack["children"] = std::move(tracks);
        out.push_back({std::move(stack), 0, group.length});
    }

    void addOperation(const Segment& group, std::vector<OtioPiece>& out) {
        if (group.children.size() > 1) return addInputStack(group, out);
        std::vector<OtioPiece> inner = group.children.empty() ? std::vector<OtioPiece>{gapPiece(group)}
                                                              : pieces(group.children.front());
        const Json effect = effectJson(group.operation, group.length);
        if (inner.size() == 1 && !inner.front().transition) {
            OtioPiece piece = std::move(inner.front());
            piece.item["effects"].push_back(effect);
            piece.duration = group.length;
            out.push_back(std::move(piece));
            return;
        }
        if (options_.flatten) return spliceWithEffect(std::move(inner), effect, group.length, out);
        Json nested = track("", group.data, std::move(inner), Json::object());
        nested["effects"].push_back(effect);
        out.push_back({std::move(nested), 0, group.length});
    }

    // An effect over several items (Avid's nests are Submaster effects over a sequence),
    // spliced into the track with the effect on each of them.
    void spliceWithEffect(std::vector<OtioPiece> inner, const Json& effect, int64_t length,
                          std::vector<OtioPiece>& out) {
        std::vector<OtioPiece> spliced;
        spliceWindow(std::move(inner), 0, length, spliced);
        for (OtioPiece& piece : spliced) {
            if (!piece.transition) piece.item["effects"].push_back(effect);
            out.push_back(std::move(piece));
        }
    }

    void addNest(const Segment& nest, std::vector<OtioPiece>& out) {
        if (nest.children.empty()) {
            OtioPiece gap = gapPiece(nest);
            gap.item["metadata"]["aafbridge"]["nestedComposition"] = nest.nestedName;
            return out.push_back(std::move(gap));
        }
        TrackBuilder inner(nest.nestedRate, options_);
        std::vector<OtioPiece> children = inner.pieces(nest.children.front());
        const int64_t start = convertEditUnits(nest.source.startTime, nest.nestedRate, rate_);
        if (options_.flatten) return spliceWindow(std::move(children), start, nest.length, out);
        Json stack = otioTrackItem("Stack.1", nest.nestedName,
                                   {{"mobId", aafkit::mobIdToText(nest.source.mobId)}, {"slotId", nest.source.slotId}});
        stack["children"].push_back(inner.track(nest.nestedName, nest.children.front().data, std::move(children),
                                                Json::object()));
        if (!nest.problem.empty()) stack["metadata"]["aafbridge"]["problem"] = nest.problem;
        out.push_back({std::move(stack), start, nest.length});
    }

    // The part of a nest's track that its source clip shows, spliced in place. Transitions
    // inside are settled first, so the track's own trimming leaves them alone.
    void spliceWindow(std::vector<OtioPiece> children, int64_t start, int64_t length, std::vector<OtioPiece>& out) {
        trimAroundTransitions(children);
        int64_t position = 0;
        const int64_t end = start + length;
        for (OtioPiece& piece : children) {
            if (piece.transition) {
                piece.length = piece.cutPoint = 0;
                if (position > start && position < end) out.push_back(std::move(piece));
                continue;
            }
            const int64_t itemStart = position;
            position += piece.duration;
            const int64_t from = std::max(itemStart, start), to = std::min(position, end);
            if (to <= from) continue;
            piece.start += from - itemStart;
            piece.duration = to - from;
            out.push_back(std::move(piece));
        }
    }

    aafRational_t rate_;
    OtioExportOptions options_;
};

}  // namespace

namespace {

bool isOtioTrack(const Track& track) {
    return track.slotClass == SlotClass::Timeline && (track.data == DataKind::Picture || track.data == DataKind::Sound);
}

std::string trackName(const Track& track, uint32_t number) {
    if (!track.name.empty()) return track.name;
    return (track.data == DataKind::Picture ? "V" : "A") + std::to_string(number);
}

Json trackJson(const Track& track, uint32_t number, const OtioExportOptions& options) {
    TrackBuilder builder(track.editRate, options);
    Json data = {{"slotId", track.slotId}, {"physicalTrack", track.physicalTrack},
                 {"editRate", rationalJson(track.editRate)}, {"origin", track.origin},
                 {"length", track.segment.length}};
    if (track.trackFormat) data["trackFormat"] = track.trackFormat;
    addMetadata(track.metadata, data);
    return builder.track(trackName(track, number), track.data, builder.pieces(track.segment), std::move(data));
}

// The track a marker belongs to: the first slot it describes; Avid leaves that out for
// markers on the timecode track.
const Track* attachedTrack(const Composition& composition, const Marker& marker) {
    if (!marker.describedSlots.empty()) return composition.findTrack(marker.describedSlots.front());
    for (const Track& track : composition.tracks)
        if (track.data == DataKind::Timecode && track.slotClass == SlotClass::Timeline) return &track;
    return nullptr;
}

// Markers by where they go: on the exported track of the slot they belong to, else on the
// top Stack.
struct PlacedMarkers {
    Json stack = Json::array();
    std::vector<Json> tracks;
};

PlacedMarkers placeMarkers(const Composition& composition, const std::vector<const Track*>& exported) {
    PlacedMarkers placed;
    placed.tracks.assign(exported.size(), Json::array());
    for (const Marker& marker : composition.markers) {
        const Track* attached = attachedTrack(composition, marker);
        auto found = std::find(exported.begin(), exported.end(), attached);
        if (found == exported.end()) {
            placed.stack.push_back(markerJson(marker, attached, marker.position, marker.editRate));
            continue;
        }
        const int64_t position = convertEditUnits(marker.position, marker.editRate, attached->editRate);
        placed.tracks[size_t(found - exported.begin())].push_back(
            markerJson(marker, attached, position, attached->editRate));
    }
    return placed;
}

std::vector<const Track*> exportedTracks(const Composition& composition) {
    std::vector<const Track*> exported;
    for (const Track& track : composition.tracks)
        if (isOtioTrack(track)) exported.push_back(&track);
    return exported;
}

// A track handed over an item at a time: the printer then never holds a whole track's text.
void sendItemByItem(const Json& track, JsonSink& sink) {
    sink.openObject(nullptr);
    for (const auto& member : track.items())
        if (member.key() != "children") sink.add(member.key().c_str(), member.value());
    sink.openArray("children");
    for (const Json& item : track["children"]) sink.add(nullptr, item);
    sink.close();
    sink.close();
}

// The top Stack, its tracks handed over one at a time.
void sendStack(const Composition& composition, const OtioExportOptions& options, JsonSink& sink) {
    const std::vector<const Track*> exported = exportedTracks(composition);
    PlacedMarkers markers = placeMarkers(composition, exported);
    Json stack = otioTrackItem("Stack.1", "tracks", {});
    stack["markers"] = std::move(markers.stack);
    sink.openObject("tracks");
    for (const auto& member : stack.items()) sink.add(member.key().c_str(), member.value());
    sink.openArray("children");
    uint32_t pictures = 0, sounds = 0;
    for (size_t i = 0; i < exported.size(); ++i) {
        const Track& track = *exported[i];
        const uint32_t number = track.data == DataKind::Picture ? ++pictures : ++sounds;
        Json object = trackJson(track, number, options);
        object["markers"] = std::move(markers.tracks[i]);
        sendItemByItem(object, sink);
    }
    sink.close();
    sink.close();
}

}  // namespace

void sendOtioFromComposition(const Composition& composition, const std::string& fallbackName,
                             const OtioExportOptions& options, JsonSink& sink) {
    Json data = {{"mobId", aafkit::mobIdToText(composition.mobId)}};
    if (composition.timecode) data["timecode"] = timecodeJson(*composition.timecode);
    addMetadata(composition.metadata, data);
    const Json timeline = otioObject("Timeline.1", composition.name.empty() ? fallbackName : composition.name,
                                     std::move(data));
    sink.openObject(nullptr);
    for (const auto& member : timeline.items()) sink.add(member.key().c_str(), member.value());
    const std::optional<Timecode>& timecode = composition.timecode;
    sink.add("global_start_time",
             timecode ? otioTime(double(timecode->start), timecode->editRate.numerator > 0
                                                              ? rateValue(timecode->editRate)
                                                              : double(timecode->fps))
                      : Json());
    sendStack(composition, options, sink);
    sink.close();
}

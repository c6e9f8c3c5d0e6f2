#include "otio/otio_composition.h"

#include <algorithm>

#include "composition/ClipSourceTime.h"
#include "composition/EditTime.h"
#include "otio/otio_effects.h"
#include "otio/otio_items.h"
#include "otio/otio_markers.h"
#include "otio/otio_sources.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

const char* trackKind(DataKind data) { return data == DataKind::Picture ? "Video" : "Audio"; }

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
            if (offset >= 0 && offset < clip.length) item["markers"].push_back(otioMarker(marker, nullptr, start + offset, rate_));
        }
    }

    OtioPiece transitionPiece(const Segment& segment) const {
        Json data = {{"length", segment.length}, {"cutPoint", segment.cutPoint},
                     {"operation", segment.operation.name}, {"operationId", aafkit::auidToText(segment.operation.id)},
                     {"parameters", otioParameters(segment.operation)}};
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
        stack["effects"].push_back(otioEffect(group.operation, group.length));
        stack["children"] = std::move(tracks);
        out.push_back({std::move(stack), 0, group.length});
    }

    void addOperation(const Segment& group, std::vector<OtioPiece>& out) {
        if (group.children.size() > 1) return addInputStack(group, out);
        std::vector<OtioPiece> inner = group.children.empty() ? std::vector<OtioPiece>{gapPiece(group)}
                                                              : pieces(group.children.front());
        const Json effect = otioEffect(group.operation, group.length);
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

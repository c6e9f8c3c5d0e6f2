// An OpenTimelineIO Timeline read backwards into the tool's own JSON description, so that
// one driver makes the writer calls and checks their answers. What the writer cannot express
// is refused with the item's path; nothing is dropped.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "otio/otio.h"
#include "otio/otio_node.h"

using Json = nlohmann::json;

namespace {

// One media reference as the clip the writer registers for it.
struct Media {
    std::string name, path;
    int64_t start = 0, length = 0;  // available range, when the document gives one
};

// A child of a track while the transitions give their overlap back to their neighbours.
struct Entry {
    enum class Kind { clip, gap, transition };
    Entry(Kind kind, const OtioNode& node) : kind(kind), node(node) {}
    Kind kind;
    OtioNode node;
    int64_t start = 0, duration = 0;  // clips and gaps
    int64_t in = 0, out = 0;          // transitions
    Media media;                      // clips
    std::vector<Json> effects;        // clips: the effect events that follow it, lengths to come
};

// Times beyond this many edit units are refused, so that sums of them stay far from overflow.
constexpr double kLongest = 1e12;

using Index = FlatJson::Index;

// The rate of a track's first clip or gap that gives one.
Index firstItemRate(const FlatJson& document, Index track) {
    const Index children = document.member(track, "children");
    for (size_t i = 0; i < document.size(children); ++i) {
        const Index range = document.member(document.element(children, i), "source_range");
        const Index rate = document.member(document.member(range, "duration"), "rate");
        if (document.isNumber(rate)) return rate;
    }
    return FlatJson::kAbsent;
}

// The rate every time is converted to: the first clip's or gap's, on a video track if there
// is one (sound at the sample rate would make the picture's timecode count samples); else the
// edit rate an empty track kept from its AAF file, else the global start time's, else OTIO's
// default of 24.
double firstRate(const FlatJson& document, Index timeline) {
    const Index tracks = document.member(document.member(timeline, "tracks"), "children");
    for (const bool videoOnly : {true, false}) {
        for (size_t t = 0; t < document.size(tracks); ++t) {
            const Index track = document.element(tracks, t);
            const Index kind = document.member(track, "kind");
            const Index rate = firstItemRate(document, track);
            const bool video = document.kind(kind) == FlatJson::Kind::text && document.text(kind) == "Video";
            if (rate != FlatJson::kAbsent && (!videoOnly || video)) return document.number(rate);
        }
    }
    for (size_t t = 0; t < document.size(tracks); ++t) {
        const Index own = document.member(document.member(document.element(tracks, t), "metadata"), "aafbridge");
        const Index rate = document.member(own, "editRate");
        if (document.isNumber(rate)) return document.number(rate);
    }
    const Index rate = document.member(document.member(timeline, "global_start_time"), "rate");
    return document.isNumber(rate) ? document.number(rate) : 24.0;
}

const char* kindName(bool video) { return video ? "video" : "audio"; }

class Import {
public:
    explicit Import(const OtioNode& timeline) : timeline_(timeline) {
        if (!otioRate(firstRate(timeline.document(), timeline.index()), rate_))
            timeline.refuse("no usable frame rate");
    }

    Json description() {
        const OtioNode stack = timeline_["tracks"];
        if (stack.schema() != "Stack") stack.refuse(stack.schema() + " is not supported here: expected a Stack");
        refuseTrimsAndEffects(stack);
        addMarkers(stack, 0);
        const OtioNode tracks = stack["children"];
        for (size_t t = 0; t < tracks.size(); ++t) addTrack(tracks.at(t));
        // Markers have no order in OTIO; the writer needs them in time order.
        std::stable_sort(markers_.begin(), markers_.end(),
                         [](const Json& a, const Json& b) { return a["position"] < b["position"]; });
        for (size_t c = 0; c < clips_.size(); ++c)
            for (Json& track : clips_[c]["tracks"]) track["length"] = clips_[c]["length"];
        // Built member by member: a braced list would copy every event.
        Json description = Json::object();
        description["clips"] = std::move(clips_);
        description["composition"] = {{"name", timeline_.text("name", "")},
                                      {"rate", {rate_.numerator, rate_.denominator}},
                                      {"timecodeStart", timecodeStart()},
                                      {"timecodeLength", longestTrack_},
                                      {"dropFrame", dropFrame()}};
        description["tracks"] = std::move(tracks_);
        description["markers"] = std::move(markers_);
        return description;
    }

private:
    // A time in edit units of the composition rate; times at other rates must land on them.
    int64_t units(const OtioNode& time) const {
        const double value = time["value"].number(), rate = time["rate"].number();
        OtioRate own;
        if (!otioRate(rate, own)) time["rate"].refuse("not a usable frame rate");
        const double converted = own == rate_ ? value : value * rate_.value() / own.value();
        const double whole = std::round(converted);
        if (std::fabs(converted - whole) > 1e-6)
            time.refuse(time["value"].shown() + " at " + time["rate"].shown() +
                        " is not a whole number of edit units at " + std::to_string(rate_.numerator) + "/" +
                        std::to_string(rate_.denominator) + ", the rate every track is written at");
        if (std::fabs(whole) > kLongest) time.refuse("out of range");
        return int64_t(whole);
    }

    int64_t length(const OtioNode& time) const {
        const int64_t value = units(time);
        if (value < 0) time.refuse("negative");
        return value;
    }

    uint32_t timecodeStart() const {
        if (!timeline_.has("global_start_time")) return 0;
        const OtioNode start = timeline_["global_start_time"];
        const double value = start["value"].number(), rate = start["rate"].number();
        if (rate <= 0) start["rate"].refuse("not a frame rate");
        // Timecode counts frames at the whole rate, 24 for 23.976.
        const double frames = std::ceil(rate) == std::ceil(rate_.value()) ? value : value * std::ceil(rate_.value()) / rate;
        if (frames < 0 || frames > 4294967295.0 || std::fabs(frames - std::round(frames)) > 1e-6)
            start.refuse("not a whole timecode frame count at " + std::to_string(int(std::ceil(rate_.value()))) + " fps");
        return uint32_t(std::round(frames));
    }

    bool dropFrame() const {
        const FlatJson& document = timeline_.document();
        const Index own = document.member(document.member(timeline_.index(), "metadata"), "aafbridge");
        const Index drop = document.member(document.member(own, "timecode"), "drop");
        return document.kind(drop) == FlatJson::Kind::boolean && document.boolean(drop);
    }

    static void refuseTrimsAndEffects(const OtioNode& composition) {
        if (!composition.flag("enabled", true)) composition["enabled"].refuse("disabled items are not supported");
        if (composition.has("source_range")) composition["source_range"].refuse("a trimmed " + composition.schema() + " is not supported");
        if (composition.count("effects") > 0)
            composition["effects"].at(0).refuse("effects on a " + composition.schema() + " are not supported");
    }

    // Markers of an item whose own time `sourceStart` sits at `position` on the timeline.
    void addMarkers(const OtioNode& owner, int64_t offset) {
        if (owner.count("markers") == 0) return;
        const OtioNode markers = owner["markers"];
        for (size_t m = 0; m < markers.size(); ++m) {
            const OtioNode marker = markers.at(m);
            if (marker.schema() != "Marker") marker.refuse(marker.schema() + " is not supported here: expected a Marker");
            const std::string name = marker.text("name", ""), comment = marker.text("comment", "");
            const std::string text = comment.empty() ? name : name.empty() ? comment : name + ": " + comment;
            markers_.push_back({{"position", offset + units(marker["marked_range"]["start_time"])}, {"text", text}});
        }
    }

    void addTrack(const OtioNode& track) {
        if (track.schema() != "Track") track.refuse(track.schema() + " is not supported here: the Stack's children must be Tracks");
        refuseTrimsAndEffects(track);
        const std::string kind = track["kind"].text();
        if (kind != "Video" && kind != "Audio") track["kind"].refuse("\"" + kind + "\" is not Video or Audio");
        addMarkers(track, 0);
        std::vector<Entry> entries;
        int64_t position = 0;
        const OtioNode children = track["children"];
        for (size_t i = 0; i < children.size(); ++i) {
            entries.push_back(entry(children.at(i)));
            const Entry& added = entries.back();
            if (added.kind != Entry::Kind::transition) addMarkers(added.node, position - added.start);
            position += added.duration;
            if (position > kLongest) added.node.refuse("the track is longer than the writer can take");
        }
        longestTrack_ = std::max(longestTrack_, position);
        giveBackOverlaps(entries);
        Json& added = tracks_.emplace_back(Json::object());
        added["kind"] = kind == "Video" ? "video" : "audio";
        added["events"] = events(entries, kind == "Video");
    }

    Entry entry(const OtioNode& child) {
        const std::string schema = child.schema();
        if (schema == "Transition") return transition(child);
        if (schema == "Gap") {
            if (child.count("effects") > 0)
                child["effects"].at(0).refuse("effects on a Gap are not supported: the writer's effects cover a clip");
            Entry gap(Entry::Kind::gap, child);
            gap.start = units(child["source_range"]["start_time"]);
            gap.duration = length(child["source_range"]["duration"]);
            return gap;
        }
        if (schema == "Clip") return clip(child);
        if (schema == "Stack" || schema == "Track")
            child.refuse(schema + " inside a Track is not supported: nested compositions are refused, not flattened");
        child.refuse(schema + " is not supported");
    }

    Entry transition(const OtioNode& child) {
        const std::string type = child.text("transition_type", "SMPTE_Dissolve");
        if (type != "SMPTE_Dissolve")
            child["transition_type"].refuse("\"" + type + "\" is not supported: the writer writes dissolves");
        Entry entry(Entry::Kind::transition, child);
        entry.in = length(child["in_offset"]);
        entry.out = length(child["out_offset"]);
        return entry;
    }

    Entry clip(const OtioNode& child) {
        if (!child.flag("enabled", true)) child["enabled"].refuse("disabled items are not supported");
        Entry entry(Entry::Kind::clip, child);
        entry.media = media(child);
        const OtioNode range = child["source_range"];
        entry.start = units(range["start_time"]);
        entry.duration = length(range["duration"]);
        if (entry.media.name.empty()) entry.media.name = child.text("name", "");
        for (size_t e = 0; e < child.count("effects"); ++e) entry.effects.push_back(effect(child["effects"].at(e)));
        return entry;
    }

    Media media(const OtioNode& clip) {
        Media media;
        media.name = clip.text("name", "");
        if (!clip.has("media_references") && !clip.has("media_reference")) return media;  // OTIO's default: missing
        const std::string key = clip.text("active_media_reference_key", "DEFAULT_MEDIA");
        // Older documents hold a single reference.
        const OtioNode references = clip[clip.has("media_references") ? "media_references" : "media_reference"];
        const OtioNode reference = clip.has("media_references") ? references[key.c_str()] : references;
        const std::string schema = reference.schema();
        if (schema == "ExternalReference")
            media.path = reference["target_url"].text();
        else if (schema != "MissingReference")
            reference.refuse(schema + " is not supported");
        if (media.name.empty()) media.name = reference.text("name", "");
        if (reference.has("available_range")) {
            media.start = units(reference["available_range"]["start_time"]);
            media.length = length(reference["available_range"]["duration"]);
        }
        return media;
    }

    // One effect event for the clip it sits on; its length is the clip's.
    static Json effect(const OtioNode& effect) {
        const std::string schema = effect.schema();
        if (schema == "LinearTimeWarp") {
            const double speed = effect["time_scalar"].number();
            if (speed <= 0 || speed > 1000) effect["time_scalar"].refuse("the writer takes forward speeds up to 1000 only");
            return {{"type", "speed"}, {"values", {speed}}};
        }
        if (schema != "Effect") effect.refuse(schema + " is not supported");
        static const std::map<std::string, const char*> kTypes = {
            {"Volume", "volume"}, {"Pan", "pan"}, {"Composite", "composite"}};
        const std::string name = effect["effect_name"].text();
        auto type = kTypes.find(name);
        if (type == kTypes.end())
            effect["effect_name"].refuse("\"" + name + "\" is not supported: the writer takes Volume, Pan, Composite and LinearTimeWarp");
        const OtioNode metadata = effect["metadata"];
        const OtioNode data = metadata["aafbridge"];
        const std::vector<double> values = numbers(data["params"]);
        const std::vector<double> keyFrames = data.has("keyFrames") ? numbers(data["keyFrames"]) : std::vector<double>();
        if (values.empty()) data["params"].refuse("an effect needs at least one value");
        if (keyFrames.size() > values.size()) data["keyFrames"].refuse("more key frames than values");
        Json event = {{"type", type->second}, {"values", values}, {"keyFrames", keyFrames}};
        // An effect read from an AAF file says how much it covered there.
        if (data.has("length")) event["covers"] = data["length"].number();
        return event;
    }

    static std::vector<double> numbers(const OtioNode& list) {
        std::vector<double> values;
        for (size_t i = 0; i < list.size(); ++i) values.push_back(list.at(i).number());
        return values;
    }

    // The writer fills a transition's open side itself: a filler of the transition's length
    // before one that starts at its cut (in_offset 0) and after one that ends there
    // (out_offset 0). Such a side must face a gap or the track's end; any other side must
    // face a clip or gap, which gets its overlap back.
    static void giveBackOverlaps(std::vector<Entry>& entries) {
        for (size_t i = 0; i < entries.size(); ++i) {
            Entry& transition = entries[i];
            if (transition.kind != Entry::Kind::transition) continue;
            Entry* before = i > 0 ? &entries[i - 1] : nullptr;
            Entry* after = i + 1 < entries.size() ? &entries[i + 1] : nullptr;
            checkSide(transition, before, transition.in, "in_offset", "before");
            checkSide(transition, after, transition.out, "out_offset", "after");
            if (transition.in > 0 && transition.out > 0) {
                before->duration += transition.out;
                after->start -= transition.in;
                after->duration += transition.in;
            }
        }
    }

    static void checkSide(const Entry& transition, const Entry* neighbour, int64_t offset, const char* key,
                          const char* side) {
        const bool item = neighbour && neighbour->kind != Entry::Kind::transition;
        if (offset > 0 && !item)
            transition.node[key].refuse(std::string("needs a clip or gap ") + side + " the Transition");
        if (offset == 0 && neighbour && neighbour->kind != Entry::Kind::gap)
            transition.node[key].refuse(std::string("is 0: the writer puts a filler ") + side +
                                        " such a Transition, so it must face a Gap or the track's end");
    }

    static Json event(const char* type, int64_t length) {
        Json event = Json::object();
        event["type"] = type;
        event["length"] = length;
        return event;
    }

    Json events(std::vector<Entry>& entries, bool video) {
        Json events = Json::array();
        for (Entry& entry : entries) {
            if (entry.kind == Entry::Kind::transition) {
                events.push_back(event("transition", entry.in + entry.out));
                events.back()["cutPoint"] = entry.in;
            } else if (entry.kind == Entry::Kind::gap) {
                if (entry.duration > 0) events.push_back(event("filler", entry.duration));
            } else {
                events.push_back(clipEvent(entry, video));
                for (size_t e = 0; e < entry.effects.size(); ++e) {
                    Json& effect = entry.effects[e];
                    if (effect.contains("covers") && effect["covers"].get<double>() != double(entry.duration))
                        entry.node["effects"].at(e).refuse("covers " + effect["covers"].dump() +
                                                           " edit units, more than this clip: the writer's effects cover one clip");
                    effect.erase("covers");
                    effect["length"] = entry.duration;
                    events.push_back(std::move(effect));
                }
            }
        }
        return events;
    }

    // Each distinct media reference is registered once, with one track per kind of track it
    // is used on; its length covers every use.
    Json clipEvent(const Entry& entry, bool video) {
        const int64_t inPoint = entry.start - entry.media.start;
        if (inPoint < 0)
            entry.node["source_range"].refuse("starts before its media's available range (or its Transition's overlap does)");
        auto found = clipByMedia_.try_emplace({entry.media.path, entry.media.name}, clips_.size());
        if (found.second)
            clips_.push_back({{"name", entry.media.name},
                              {"path", entry.media.path},
                              {"length", entry.media.length},
                              {"rate", {rate_.numerator, rate_.denominator}},
                              {"startTimecode", entry.media.start},
                              {"tracks", Json::array()}});
        Json& clip = clips_[found.first->second];
        clip["length"] = std::max(clip["length"].get<int64_t>(), inPoint + entry.duration);
        Json& tracks = clip["tracks"];
        size_t track = 0;
        while (track < tracks.size() && tracks[track]["kind"] != kindName(video)) ++track;
        if (track == tracks.size())
            tracks.push_back({{"kind", kindName(video)}, {"editRate", {rate_.numerator, rate_.denominator}}});
        Json event = Import::event("clip", entry.duration);
        event["clip"] = uint32_t(found.first->second + 1);
        event["track"] = uint32_t(track + 1);
        event["inPoint"] = inPoint;
        return event;
    }

    OtioNode timeline_;
    OtioRate rate_;
    std::vector<Json> clips_;
    std::map<std::pair<std::string, std::string>, size_t> clipByMedia_;
    Json tracks_ = Json::array(), markers_ = Json::array();
    int64_t longestTrack_ = 0;
};

}  // namespace

bool hasOtioExtension(const std::string& path) {
    std::string extension = path.size() >= 5 ? path.substr(path.size() - 5) : "";
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return extension == ".otio";
}

bool isOtioDocument(const Json& document) { return document.is_object() && document.contains("OTIO_SCHEMA"); }

Json descriptionFromOtio(const FlatJson& document) {
    const OtioNode timeline(document, document.root());
    if (timeline.schema() != "Timeline") timeline.refuse(timeline.schema() + " is not supported: expected a Timeline");
    return Import(timeline).description();
}

// An OpenTimelineIO Timeline read backwards into the tool's own JSON description, so that
// one driver makes the writer calls and checks their answers. What the writer cannot express
// as it stands is changed into what it can, each change noted with the item's path (with
// --strict, refused instead); a document that is broken is refused either way.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "otio/otio.h"
#include "otio/otio_item_reader.h"
#include "otio/otio_node.h"
#include "otio/otio_notes.h"

using Json = nlohmann::json;
using Kind = FlatEntry::Kind;
using Change = OtioNotes::Change;

namespace {

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

// A media reference as the clip the writer registers for it: its range covers every use.
struct ClipUse {
    std::string name, path;
    int64_t mediaStart = 0;     // the available range's, rounded
    int64_t first = 0, end = 0;  // the range, widened to what the events use of it
    std::vector<std::string> kinds;        // one clip track per kind of track it is used on
};

class Import {
public:
    Import(const OtioNode& timeline, OtioNotes& notes)
        : timeline_(timeline), notes_(notes), rate_(timelineRate(timeline)), reader_(rate_, notes) {}

    Json description() {
        const OtioNode stack = timeline_["tracks"];
        if (stack.schema() != "Stack") stack.refuse(stack.schema() + " is not supported here: expected a Stack");
        if (!stack.flag("enabled", true)) stack["enabled"].refuse("a disabled Stack leaves nothing to write");
        if (stack.has("source_range")) stack["source_range"].refuse("a trimmed Stack is not supported");
        reader_.dropEffects(stack, "the timeline's Stack");
        FlatItems top;
        reader_.addMarkers(stack, 0, top);
        addMarkers(top.markers);
        const OtioNode tracks = stack["children"];
        for (size_t t = 0; t < tracks.size(); ++t) addTrack(tracks.at(t));
        // Markers have no order in OTIO; the writer needs them in time order.
        std::stable_sort(markers_.begin(), markers_.end(),
                         [](const Json& a, const Json& b) { return a["position"] < b["position"]; });
        notes_.written(written_);
        // Built member by member: a braced list would copy every event.
        Json description = Json::object();
        description["clips"] = clips();
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
    static OtioRate timelineRate(const OtioNode& timeline) {
        OtioRate rate;
        if (!otioRate(firstRate(timeline.document(), timeline.index()), rate)) timeline.refuse("no usable frame rate");
        return rate;
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

    void addMarkers(const std::vector<FlatMarker>& markers) {
        for (const FlatMarker& marker : markers)
            markers_.push_back({{"position", int64_t(std::llround(marker.at))}, {"text", marker.text}});
    }

    void addTrack(const OtioNode& track) {
        if (track.schema() != "Track") track.refuse(track.schema() + " is not supported here: the Stack's children must be Tracks");
        const std::string kind = track["kind"].text();
        if (kind != "Video" && kind != "Audio") {
            notes_.change(track["kind"], Change::dropped, "\"" + kind + "\" is not Video or Audio", "the track left out");
            return;
        }
        reader_.dropEffects(track, "a Track");
        FlatItems items = reader_.track(track);
        if (!track.flag("enabled", true)) {
            notes_.change(track["enabled"], Change::changed, "a disabled Track", "written as a gap of its length");
            items = cropFlatItems(FlatItems(), 0, items.length, track);
        }
        if (track.has("source_range")) items = trimmed(track, items);
        giveBackOverlaps(items.entries);
        addMarkers(items.markers);
        Json& added = tracks_.emplace_back(Json::object());
        added["kind"] = kind == "Video" ? "video" : "audio";
        added["events"] = events(items.entries, kind == "Video");
    }

    FlatItems trimmed(const OtioNode& track, const FlatItems& items) {
        const OtioNode range = track["source_range"];
        notes_.change(range, Change::changed, "a trimmed Track is not supported",
                      "the trim applied: " + std::to_string(std::llround(reader_.length(range["duration"]))) +
                          " edit units from " + std::to_string(std::llround(reader_.units(range["start_time"]))));
        return reader_.trimmed(items, range, track);
    }

    // The writer fills a transition's open side itself: a filler of the transition's length
    // before one that starts at its cut (in_offset 0) and after one that ends there
    // (out_offset 0), which it fades from or into. Any other side must face a clip or gap,
    // which gets its overlap back; a transition with nothing to overlap is left out.
    void giveBackOverlaps(std::vector<FlatEntry>& entries) const {
        std::vector<FlatEntry> kept;
        kept.reserve(entries.size());
        for (size_t i = 0; i < entries.size(); ++i) {
            FlatEntry& entry = entries[i];
            if (entry.kind != Kind::transition) {
                kept.push_back(std::move(entry));
                continue;
            }
            FlatEntry* before = !kept.empty() && kept.back().kind != Kind::transition ? &kept.back() : nullptr;
            FlatEntry* after = i + 1 < entries.size() && entries[i + 1].kind != Kind::transition ? &entries[i + 1] : nullptr;
            if (!sideFits(entry, before, entry.in, "in_offset", "before") ||
                !sideFits(entry, after, entry.out, "out_offset", "after"))
                continue;
            if (entry.in > 0 && entry.out > 0) {
                before->duration += entry.out;
                after->start -= entry.in * after->speed;
                after->duration += entry.in;
            }
            kept.push_back(std::move(entry));
        }
        entries = std::move(kept);
    }

    bool sideFits(const FlatEntry& transition, const FlatEntry* neighbour, double offset, const char* key,
                  const char* side) const {
        if (offset > 0 && !neighbour) {
            notes_.change(transition.node[key], Change::dropped, std::string("needs a clip or gap ") + side + " the Transition",
                          "the Transition left out");
            return false;
        }
        if (offset == 0 && neighbour && neighbour->kind == Kind::clip)
            notes_.change(transition.node[key], Change::changed,
                          std::string("is 0: the writer puts a filler ") + side +
                              " such a Transition, so it must face a Gap or the track's end",
                          std::string("the writer's filler goes ") + side + " it, the clip keeps its place");
        return true;
    }

    // The entries at whole edit units: every cut point rounded to the nearest, lengths the
    // differences between them, so that no error adds up along the track.
    Json events(std::vector<FlatEntry>& entries, bool video) {
        Json events = Json::array();
        double position = 0;
        RoundingNotes rounding(notes_, rate_.value());
        for (FlatEntry& entry : entries) {
            if (entry.kind == Kind::transition) {
                const double start = position - entry.in - entry.out;
                const int64_t first = std::llround(start), cut = std::llround(start + entry.in), last = std::llround(position);
                rounding.add(entry.node, {double(first) - start, double(cut) - (start + entry.in), double(last) - position});
                events.push_back(event("transition", last - first));
                events.back()["cutPoint"] = cut - first;
                position = start;
                continue;
            }
            const int64_t first = std::llround(position), last = std::llround(position + entry.duration);
            rounding.add(entry.node, {double(first) - position, double(last) - (position + entry.duration)});
            position += entry.duration;
            if (entry.kind == Kind::gap) {
                if (last > first) events.push_back(event("filler", last - first));
            } else if (last > first) {
                addClip(entry, last - first, video, rounding, events);
            } else {
                notes_.change(entry.node, Change::dropped, "a clip shorter than half an edit unit", "left out");
            }
        }
        rounding.flush();
        longestTrack_ = std::max(longestTrack_, int64_t(std::llround(position)));
        written_ += events.size();
        return events;
    }

    void addClip(FlatEntry& entry, int64_t length, bool video, RoundingNotes& rounding, Json& events) {
        const int64_t start = std::llround(entry.start);
        rounding.add(entry.node, {double(start) - entry.start, std::round(entry.media.start) - entry.media.start});
        const double speed = addSpeed(entry);
        events.push_back(clipEvent(entry, start, length, speed, video));
        for (FlatEffect& effect : entry.effects) {
            if (effect.covers && std::fabs(*effect.covers - double(length)) > 1e-6) {
                notes_.change(*effect.node, Change::dropped,
                              "covers " + std::to_string(std::llround(*effect.covers)) + " edit units, its clip " +
                                  std::to_string(length) + ": the writer's effects cover one clip",
                              "left out");
                continue;
            }
            effect.event["length"] = length;
            events.push_back(std::move(effect.event));
        }
    }

    // Time warps of the nests around a clip, as its speed: the speed it plays at.
    double addSpeed(FlatEntry& entry) const {
        auto own = std::find_if(entry.effects.begin(), entry.effects.end(),
                                [](const FlatEffect& e) { return e.event["type"] == "speed"; });
        const double clipSpeed = own == entry.effects.end() ? 1.0 : own->event["values"][0].get<double>();
        if (std::fabs(entry.speed - 1) < 1e-9) return clipSpeed;
        const double speed = clipSpeed * entry.speed;
        if (speed > 1000) {
            notes_.change(entry.node, Change::dropped,
                          "a speed of " + std::to_string(speed) + " through its nests' time warps",
                          "the nests' time warps left out: the writer takes forward speeds up to 1000 only");
            return clipSpeed;
        }
        if (own == entry.effects.end())
            own = entry.effects.insert(entry.effects.begin(),
                                       FlatEffect{Json{{"type", "speed"}, {"values", {1.0}}}, std::nullopt, nullptr});
        own->event["values"][0] = speed;
        return speed;
    }

    static Json event(const char* type, int64_t length) {
        Json event = Json::object();
        event["type"] = type;
        event["length"] = length;
        return event;
    }

    // Each distinct media reference is registered once; the event holds its source start
    // until every use is known and the clip's start with it.
    Json clipEvent(const FlatEntry& entry, int64_t start, int64_t length, double speed, bool video) {
        const int64_t mediaStart = std::llround(entry.media.start);
        auto found = clipByMedia_.try_emplace({entry.media.path, entry.media.name}, uses_.size());
        if (found.second) {
            ClipUse& use = uses_.emplace_back();
            use.name = entry.media.name;
            use.path = entry.media.path;
            use.mediaStart = use.first = mediaStart;
            use.end = mediaStart + std::llround(entry.media.length);
        }
        ClipUse& use = uses_[found.first->second];
        if (start < use.mediaStart && start < use.first)
            notes_.change(entry.node, Change::changed,
                          "starts before its media's available range (or its Transition's overlap does)",
                          "the media's range taken to start " + std::to_string(use.mediaStart - start) + " edit units earlier");
        use.first = std::min(use.first, start);
        use.end = std::max(use.end, start + std::max(length, int64_t(std::ceil(double(length) * speed))));
        const std::string kind = kindName(video);
        auto track = std::find(use.kinds.begin(), use.kinds.end(), kind);
        if (track == use.kinds.end()) track = use.kinds.insert(use.kinds.end(), kind);
        Json event = Import::event("clip", length);
        event["clip"] = uint32_t(found.first->second + 1);
        event["track"] = uint32_t(track - use.kinds.begin() + 1);
        event["inPoint"] = start;
        return event;
    }

    // The clips as registered, and every clip event's in-point counted from its clip's start.
    Json clips() {
        Json clips = Json::array();
        for (const ClipUse& use : uses_) {
            Json tracks = Json::array();
            for (const std::string& kind : use.kinds)
                tracks.push_back({{"kind", kind}, {"editRate", {rate_.numerator, rate_.denominator}}, {"length", use.end - use.first}});
            clips.push_back({{"name", use.name},
                             {"path", use.path},
                             {"length", use.end - use.first},
                             {"rate", {rate_.numerator, rate_.denominator}},
                             {"startTimecode", use.first},
                             {"tracks", std::move(tracks)}});
        }
        for (Json& track : tracks_)
            for (Json& event : track["events"])
                if (event["type"] == "clip")
                    event["inPoint"] = event["inPoint"].get<int64_t>() - uses_[event["clip"].get<size_t>() - 1].first;
        return clips;
    }

    OtioNode timeline_;
    OtioNotes& notes_;
    OtioRate rate_;
    OtioItemReader reader_;
    std::vector<ClipUse> uses_;
    std::map<std::pair<std::string, std::string>, size_t> clipByMedia_;
    Json tracks_ = Json::array(), markers_ = Json::array();
    int64_t longestTrack_ = 0;
    size_t written_ = 0;
};

// Which of a SerializableCollection's children is the Timeline to write.
size_t chosenTimeline(const OtioNode& collection, const OtioNode& children, const OtioImportOptions& options,
                      OtioNotes& notes) {
    std::vector<size_t> timelines;
    for (size_t i = 0; i < children.size(); ++i)
        if (children.at(i).schema() == "Timeline") timelines.push_back(i);
    if (timelines.empty()) collection.refuse("a SerializableCollection with no Timeline");
    const size_t chosen = options.timeline ? options.timeline : 1;
    if (chosen > timelines.size())
        collection.refuse("--timeline " + std::to_string(chosen) + ": the collection holds " +
                          std::to_string(timelines.size()) + " Timelines");
    if (timelines.size() > 1 && !options.timeline)
        notes.change(collection, Change::changed,
                     "a SerializableCollection of " + std::to_string(timelines.size()) + " Timelines",
                     "the first written; --timeline N picks another");
    return timelines[chosen - 1];
}

}  // namespace

bool hasOtioExtension(const std::string& path) {
    std::string extension = path.size() >= 5 ? path.substr(path.size() - 5) : "";
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return extension == ".otio";
}

bool isOtioDocument(const Json& document) { return document.is_object() && document.contains("OTIO_SCHEMA"); }

Json descriptionFromOtio(const FlatJson& document, const OtioImportOptions& options, OtioNotes& notes) {
    const OtioNode root(document, document.root());
    if (root.schema() == "Timeline") {
        if (options.timeline > 1) root.refuse("--timeline " + std::to_string(options.timeline) + ": the document is one Timeline");
        return Import(root, notes).description();
    }
    if (root.schema() != "SerializableCollection") root.refuse(root.schema() + " is not supported: expected a Timeline");
    const OtioNode children = root["children"];
    return Import(children.at(chosenTimeline(root, children, options, notes)), notes).description();
}

#include "otio/otio_item_reader.h"

#include <cmath>
#include <map>
#include <vector>

using Json = nlohmann::json;
using Kind = FlatEntry::Kind;
using Change = OtioNotes::Change;

namespace {

// Times beyond this many edit units are refused, so that sums of them stay far from overflow.
constexpr double kLongest = 1e12;
// Nests deeper than this are refused: real timelines nest a few levels, a hostile document
// would otherwise take the stack.
constexpr int kMaxNesting = 64;
// A nest slowed further would outlast any track.
constexpr double kSlowest = 0.001;

std::string rateText(const OtioRate& rate) {
    return std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator);
}

FlatItems single(FlatEntry entry) {
    FlatItems items;
    items.length = entry.duration;
    items.entries.push_back(std::move(entry));
    return items;
}

std::vector<double> numbers(const OtioNode& list) {
    std::vector<double> values;
    for (size_t i = 0; i < list.size(); ++i) values.push_back(list.at(i).number());
    return values;
}

}  // namespace

double OtioItemReader::units(const OtioNode& time) const {
    const double value = time["value"].number(), rate = time["rate"].number();
    OtioRate own;
    if (!otioRate(rate, own)) time["rate"].refuse("not a usable frame rate");
    const double converted = own == rate_ ? value
                                          : value * double(rate_.numerator) * own.denominator /
                                                (double(rate_.denominator) * own.numerator);
    if (std::fabs(converted) > kLongest) time.refuse("out of range");
    if (notes_.strict() && std::fabs(converted - std::round(converted)) > 1e-6)
        time.refuse(time["value"].shown() + " at " + time["rate"].shown() + " is not a whole number of edit units at " +
                    rateText(rate_) + ", the rate every track is written at");
    return converted;
}

double OtioItemReader::length(const OtioNode& time) const {
    const double value = units(time);
    if (value < 0) time.refuse("negative");
    return value;
}

FlatItems OtioItemReader::track(const OtioNode& track) {
    FlatItems shown = sequence(track, track, -1);
    addMarkers(track, 0, shown);
    return shown;
}

FlatItems OtioItemReader::item(const OtioNode& child, const OtioNode& top, int depth) {
    const std::string schema = child.schema();
    FlatItems shown;
    if (schema == "Clip")
        shown = clip(child, top);
    else if (schema == "Gap")
        shown = gap(child, top);
    else if (schema == "Stack" || schema == "Track")
        shown = nest(child, top, depth);
    else
        child.refuse(schema + " is not supported here");
    if (child.flag("enabled", true)) return shown;
    notes_.change(child["enabled"], Change::changed, "a disabled " + schema, "written as a gap of its length");
    FlatEntry blank(Kind::gap, top);
    blank.duration = shown.length;
    FlatItems gap = single(std::move(blank));
    gap.markers = std::move(shown.markers);
    return gap;
}

FlatItems OtioItemReader::nest(const OtioNode& nest, const OtioNode& top, int depth) {
    if (depth >= kMaxNesting) nest.refuse("nested more than " + std::to_string(kMaxNesting) + " deep");
    if (depth == 0)
        notes_.change(nest, Change::flattened, nest.schema() + " inside a Track is not supported",
                      "flattened to what it shows, the top-most enabled item at each time");
    FlatItems shown = nest.schema() == "Stack" ? layers(nest, top, depth) : sequence(nest, top, depth);
    addMarkers(nest, 0, shown);
    if (nest.has("source_range")) shown = trimmed(shown, nest["source_range"], top);
    applyNestEffects(nest, shown);
    if (shown.length > kLongest) nest.refuse("longer than the writer can take");
    return shown;
}

FlatItems OtioItemReader::trimmed(const FlatItems& items, const OtioNode& range, const OtioNode& filler) const {
    const double from = units(range["start_time"]);
    FlatItems cropped = cropFlatItems(items, from, from + length(range["duration"]), filler);
    if (const size_t outside = items.markers.size() - cropped.markers.size())
        notes_.change(range, Change::dropped, std::to_string(outside) + " markers outside the trim", "left out");
    return cropped;
}

FlatItems OtioItemReader::layers(const OtioNode& stack, const OtioNode& top, int depth) {
    FlatItems shown;
    if (stack.count("children") == 0) return shown;
    const OtioNode children = stack["children"];
    for (size_t i = 0; i < children.size(); ++i) shown = overlayFlatItems(shown, item(children.at(i), top, depth + 1));
    return shown;
}

// A top-level track (depth -1) keeps its transitions; a nest is flattened to cuts.
FlatItems OtioItemReader::sequence(const OtioNode& track, const OtioNode& top, int depth) {
    FlatItems shown;
    if (track.count("children") == 0) return shown;
    const OtioNode children = track["children"];
    for (size_t i = 0; i < children.size(); ++i) {
        const OtioNode child = children.at(i);
        const bool topLevel = depth < 0;
        if (child.schema() != "Transition")
            shown.append(item(child, topLevel ? child.detached() : top, depth + 1));
        else if (topLevel)
            shown.entries.push_back(transition(child));
        else
            notes_.change(child, Change::dropped, "a Transition inside a nest", "left out: the nest becomes cuts");
        if (shown.length > kLongest) child.refuse("the track is longer than the writer can take");
    }
    return shown;
}

FlatItems OtioItemReader::gap(const OtioNode& child, const OtioNode& top) const {
    FlatEntry gap(Kind::gap, top);
    const OtioNode range = child["source_range"];
    gap.start = units(range["start_time"]);
    gap.duration = length(range["duration"]);
    dropEffects(child, "a Gap");
    FlatItems items = single(std::move(gap));
    addMarkers(child, items.entries.front().start, items);
    return items;
}

FlatItems OtioItemReader::clip(const OtioNode& child, const OtioNode& top) {
    FlatEntry clip(Kind::clip, top);
    clip.media = media(child);
    const OtioNode range = child["source_range"];
    clip.start = units(range["start_time"]);
    clip.duration = length(range["duration"]);
    addEffects(child, clip.effects);
    FlatItems items = single(std::move(clip));
    addMarkers(child, items.entries.front().start, items);
    return items;
}

FlatEntry OtioItemReader::transition(const OtioNode& child) const {
    const std::string type = child.text("transition_type", "SMPTE_Dissolve");
    if (type != "SMPTE_Dissolve")
        notes_.change(child["transition_type"], Change::changed, "\"" + type + "\" is not supported",
                      "written as a dissolve, the writer's one transition");
    FlatEntry entry(Kind::transition, child.detached());
    entry.in = length(child["in_offset"]);
    entry.out = length(child["out_offset"]);
    return entry;
}

OtioMedia OtioItemReader::media(const OtioNode& clip) const {
    OtioMedia media;
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
        notes_.change(reference, Change::changed, schema + " is not supported", "the clip is written without media");
    if (media.name.empty()) media.name = reference.text("name", "");
    if (reference.has("available_range")) {
        media.start = units(reference["available_range"]["start_time"]);
        media.length = length(reference["available_range"]["duration"]);
    }
    return media;
}

void OtioItemReader::addMarkers(const OtioNode& owner, double origin, FlatItems& items) const {
    if (owner.count("markers") == 0) return;
    const OtioNode markers = owner["markers"];
    for (size_t m = 0; m < markers.size(); ++m) {
        const OtioNode marker = markers.at(m);
        if (marker.schema() != "Marker") marker.refuse(marker.schema() + " is not supported here: expected a Marker");
        const std::string name = marker.text("name", ""), comment = marker.text("comment", "");
        const std::string text = comment.empty() ? name : name.empty() ? comment : name + ": " + comment;
        items.markers.push_back({units(marker["marked_range"]["start_time"]) - origin, text});
    }
}

void OtioItemReader::dropEffects(const OtioNode& owner, const std::string& where) const {
    for (size_t e = 0; e < owner.count("effects"); ++e)
        notes_.change(owner["effects"].at(e), Change::dropped, "effects on " + where + " are not supported",
                      "left out: the writer's effects cover a clip");
}

void OtioItemReader::addEffects(const OtioNode& owner, std::vector<FlatEffect>& effects) const {
    for (size_t e = 0; e < owner.count("effects"); ++e)
        if (std::optional<FlatEffect> added = effect(owner["effects"].at(e))) effects.push_back(std::move(*added));
}

// One effect event for the clip it sits on; its length is the clip's.
std::optional<FlatEffect> OtioItemReader::effect(const OtioNode& effect) const {
    const auto leftOut = [&](const OtioNode& where, const std::string& why) {
        notes_.change(where, Change::dropped, why, "left out");
        return std::nullopt;
    };
    const std::string schema = effect.schema();
    if (schema == "LinearTimeWarp") {
        const double speed = effect["time_scalar"].number();
        if (speed <= 0 || speed > 1000) return leftOut(effect["time_scalar"], "the writer takes forward speeds up to 1000 only");
        return FlatEffect{Json{{"type", "speed"}, {"values", {speed}}}, std::nullopt, nullptr};
    }
    if (schema == "FreezeFrame") return leftOut(effect, "a FreezeFrame: the writer holds no frame");
    if (schema != "Effect") return leftOut(effect, schema + " is not supported");
    static const std::map<std::string, const char*> kTypes = {{"Volume", "volume"}, {"Pan", "pan"}, {"Composite", "composite"}};
    const std::string name = effect.text("effect_name", "");
    auto type = kTypes.find(name);
    if (type == kTypes.end())
        return leftOut(effect.has("effect_name") ? effect["effect_name"] : effect,
                       "\"" + name + "\" is not supported: the writer takes Volume, Pan, Composite and LinearTimeWarp");
    if (!effect.has("metadata") || !effect["metadata"].has("aafbridge"))
        return leftOut(effect, "no parameter values for the writer (metadata.aafbridge)");
    const OtioNode metadata = effect["metadata"];  // a node's parent must outlive it
    const OtioNode data = metadata["aafbridge"];
    const std::vector<double> values = numbers(data["params"]);
    const std::vector<double> keyFrames = data.has("keyFrames") ? numbers(data["keyFrames"]) : std::vector<double>();
    if (values.empty()) return leftOut(data["params"], "an effect needs at least one value");
    if (keyFrames.size() > values.size()) return leftOut(data["keyFrames"], "more key frames than values");
    FlatEffect added{Json{{"type", type->second}, {"values", values}, {"keyFrames", keyFrames}}, std::nullopt, nullptr};
    // An effect read from an AAF file says how much it covered there.
    if (data.has("length")) {
        added.covers = data["length"].number();
        added.node = std::make_shared<const OtioNode>(effect.detached());
    }
    return added;
}

void OtioItemReader::applyNestEffects(const OtioNode& nest, FlatItems& shown) const {
    if (nest.count("effects") == 0) return;
    const OtioNode effects = nest["effects"];
    for (size_t e = 0; e < effects.size(); ++e) {
        const OtioNode effect = effects.at(e);
        if (effect.schema() == "LinearTimeWarp") {
            const double speed = effect["time_scalar"].number();
            if (speed >= kSlowest && speed <= 1000)
                warpFlatItems(shown, speed);
            else
                notes_.change(effect["time_scalar"], Change::dropped, "a nest plays at forward speeds from 0.001 to 1000 only",
                              "left out");
            continue;
        }
        std::optional<FlatEffect> carried = this->effect(effect);
        if (!carried) continue;
        for (FlatEntry& entry : shown.entries)
            if (entry.kind == Kind::clip) entry.effects.push_back(*carried);
    }
}

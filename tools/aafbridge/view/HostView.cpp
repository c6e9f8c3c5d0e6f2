#include "view/HostView.h"

#include <vector>

#include "cli/OpenFile.h"
#include "aafkit/om/Values.h"
#include "description/ResultText.h"

using Json = nlohmann::ordered_json;

namespace {

constexpr int32_t kTextSize = 512;
constexpr uint32_t kNone = 0xFFFFFFFFu;

template <class Call>
std::string hostText(Call call) {
    wchar_t buffer[kTextSize + 1] = {};
    return call(buffer, kTextSize) == 0 ? aafkit::wideToUtf8(buffer) : std::string();
}

const char* eventKind(AafParseContext* c, uint32_t t, uint32_t e) {
    if (IsEventFiller(t, e, c)) return "filler";
    if (IsEventTransition(t, e, c)) return "transition";
    if (IsEventEffect(t, e, c)) return "effect";
    return "clip";
}

const char* effectName(uint32_t type) {
    static const char* const kNames[] = {"gain", "pan", "superimpose", "speed", "speed", "other"};
    return type < 6 ? kNames[type] : "unknown";
}

void addEffect(AafParseContext* c, uint32_t t, uint32_t e, Json& event) {
    Json inputs = Json::array(), params = Json::array(), keyFrames = Json::array();
    wchar_t probe[2];
    for (uint32_t i = 0; GetEffectElementId(t, e, i, probe, 1, c) == 0; ++i)
        inputs.push_back(hostText([&](wchar_t* b, int32_t n) { return GetEffectElementId(t, e, i, b, n, c); }));
    for (uint32_t i = 0; i < GetEffectParamCount(t, e, c); ++i) params.push_back(GetEffectParam(t, e, i, c));
    for (uint32_t i = 0; i < GetEffectKeyFrameCount(t, e, c); ++i) keyFrames.push_back(GetEffectKeyFrame(t, e, i, c));
    event["effectType"] = GetEffectType(t, e, c);
    event["effect"] = effectName(GetEffectType(t, e, c));
    event["numInputs"] = GetEffectNumInputs(t, e, c);
    event["inputs"] = inputs;
    event["params"] = params;
    event["keyFrames"] = keyFrames;
}

void sendTrack(AafParseContext* c, uint32_t t, JsonSink& sink, const EventExtra& extra) {
    sink.openObject(nullptr);
    const Json track = trackJson(c, t);
    for (const auto& member : track.items()) sink.add(member.key().c_str(), member.value());
    sink.openArray("events");
    for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) {
        Json event = eventJson(c, t, e);
        if (extra) extra(t, event);
        sink.add(nullptr, event);
    }
    sink.close();
    sink.close();
}

// Keeps the document whole. Only the chain of open containers is pointed into, and a
// container gains a child only while it is the innermost, so the pointers stay valid.
class JsonTree : public JsonSink {
public:
    explicit JsonTree(Json& root) : root_(root) {}
    void openObject(const char* key) override { open_.push_back(&(place(key) = Json::object())); }
    void openArray(const char* key) override { open_.push_back(&(place(key) = Json::array())); }
    void add(const char* key, const Json& value) override { place(key) = value; }
    void close() override { open_.pop_back(); }

private:
    Json& place(const char* key) {
        if (open_.empty()) return root_;
        Json& parent = *open_.back();
        if (key) return parent[key];
        parent.push_back(nullptr);
        return parent.back();
    }

    Json& root_;
    std::vector<Json*> open_;
};

void keepWhole(AafParseContext* c, Json& view) {
    JsonTree tree(view);
    sendHostView(c, tree);
}

}  // namespace

AAFRESULT parseFile(const std::string& path, ParsedFile& file) {
    AafParseContext* context = nullptr;
    // A failed open has freed its context already: only an opened one is owned.
    if (AAFRESULT opened = OpenAafFile(aafkit::utf8ToWide(path).c_str(), &context); opened != 0) return opened;
    file.reset(context);
    ParseClips(context);
    ParseComposition(context);
    return 0;
}

ParsedFile parseFileOrReport(const Invocation& invocation, const std::string& path) {
    ParsedFile file;
    if (!readableOrReport(invocation, path)) return file;
    if (AAFRESULT opened = parseFile(path, file); opened != 0)
        fail(invocation, "cannot open " + path + " as an AAF file: " + codeText(opened));
    return file;
}

Json timecodeJson(AafParseContext* c) {
    uint32_t start = 0, fps = 0, drop = 0;
    GetTimeCode(&start, &fps, &drop, c);
    return {{"start", start}, {"fps", fps}, {"drop", drop != 0}};
}

Json clipJson(AafParseContext* c, uint32_t i) {
    Json tracks = Json::array();
    for (uint32_t t = 0; GetClipIsVideo(i, t, c) != kNone; ++t) {
        const uint32_t value = GetClipIsVideo(i, t, c);
        tracks.push_back({{"slot", value >> 1}, {"video", (value & 1) != 0}});
    }
    static const char* const kTypes[] = {"none", "picture", "sound", "picture+sound"};
    return {{"id", hostText([&](wchar_t* b, int32_t n) { return LoadClipID(i, b, n, c); })},
            {"name", hostText([&](wchar_t* b, int32_t n) { return LoadClipName(i, b, n, c); })},
            {"path", hostText([&](wchar_t* b, int32_t n) { return LoadClipPath(i, b, n, c); })},
            {"type", kTypes[LoadClipType(i, c) & 3]},
            {"tracks", tracks}};
}

Json markerJson(AafParseContext* c, uint32_t m) {
    return {{"position", GetMarkerPosition(m, c)},
            {"text", hostText([&](wchar_t* b, int32_t n) { return GetMarkerText(m, b, n, c); })}};
}

Json trackJson(AafParseContext* c, uint32_t t) {
    return {{"type", GetTrackType(t, c) ? "video" : "audio"}, {"editRate", GetTrackEditRate(t, c)}};
}

Json eventJson(AafParseContext* c, uint32_t t, uint32_t e) {
    const std::string kind = eventKind(c, t, e);
    Json event = {{"kind", kind}, {"length", GetEventLen(t, e, c)}};
    if (kind == "clip") {
        event["inPoint"] = GetEventInPoint(t, e, c);
        event["name"] = hostText([&](wchar_t* b, int32_t n) { return GetEventName(t, e, b, n, c); });
        event["id"] = hostText([&](wchar_t* b, int32_t n) { return GetEventId(t, e, b, n, c); });
        event["slot"] = GetEventSlot(t, e, c);
        event["physicalNumber"] = GetEventPhysicalNumber(t, e, c);
    } else if (kind == "transition") {
        event["cutPoint"] = GetTransitionCutPoint(t, e, c);
    } else if (kind == "effect") {
        addEffect(c, t, e, event);
    }
    return event;
}

void sendHostView(AafParseContext* c, JsonSink& sink, const EventExtra& extra) {
    sink.openObject(nullptr);
    sink.add("proTools", IsProToolsFile(c) != 0);
    sink.add("timecode", timecodeJson(c));
    sink.openArray("clips");
    for (uint32_t i = 0; i < GetNumClips(c); ++i) sink.add(nullptr, clipJson(c, i));
    sink.close();
    sink.openArray("markers");
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m) sink.add(nullptr, markerJson(c, m));
    sink.close();
    sink.openArray("tracks");
    for (uint32_t t = 0; t < GetNumTracks(c); ++t) sendTrack(c, t, sink, extra);
    sink.close();
    sink.close();
}

AAFRESULT readHostView(const std::string& path, Json& view) {
    ParsedFile file;
    if (AAFRESULT opened = parseFile(path, file); opened != 0) return opened;
    keepWhole(file.get(), view);
    return 0;
}

bool readHostViewOrReport(const Invocation& invocation, const std::string& path, Json& view) {
    const ParsedFile file = parseFileOrReport(invocation, path);
    if (file) keepWhole(file.get(), view);
    return file != nullptr;
}

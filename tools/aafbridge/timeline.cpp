// aafbridge timeline FILE [--json]: the composition exactly as a host reads it through
// the exported reader functions, as readable text or as JSON.
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>

#include "Commands.h"
#include "HostView.h"
#include "OpenFile.h"
#include "description/ResultText.h"
#include "aafbridge/aaf_reader.h"
#include "aafkit/om/Values.h"

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

Json timelineJson(AafParseContext* c) {
    Json clips = Json::array(), markers = Json::array(), tracks = Json::array();
    for (uint32_t i = 0; i < GetNumClips(c); ++i) clips.push_back(clipJson(c, i));
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m)
        markers.push_back({{"position", GetMarkerPosition(m, c)},
                           {"text", hostText([&](wchar_t* b, int32_t n) { return GetMarkerText(m, b, n, c); })}});
    for (uint32_t t = 0; t < GetNumTracks(c); ++t) {
        Json events = Json::array();
        for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) events.push_back(eventJson(c, t, e));
        tracks.push_back({{"type", GetTrackType(t, c) ? "video" : "audio"},
                          {"editRate", GetTrackEditRate(t, c)},
                          {"events", events}});
    }
    uint32_t start = 0, fps = 0, drop = 0;
    GetTimeCode(&start, &fps, &drop, c);
    return {{"proTools", IsProToolsFile(c) != 0},
            {"timecode", {{"start", start}, {"fps", fps}, {"drop", drop != 0}}},
            {"clips", clips},
            {"markers", markers},
            {"tracks", tracks}};
}

std::string list(const Json& values) {
    std::string out;
    for (const Json& v : values) out += (out.empty() ? "" : ", ") + (v.is_string() ? v.get<std::string>() : v.dump());
    return "[" + out + "]";
}

void printEvent(size_t index, const Json& e) {
    std::cout << "    [" << index << "] " << e["kind"].get<std::string>() << " length " << e["length"];
    const std::string kind = e["kind"];
    if (kind == "clip")
        std::cout << " in " << e["inPoint"] << " " << e["name"] << " " << e["id"].get<std::string>() << " slot "
                  << e["slot"] << " physical " << e["physicalNumber"];
    else if (kind == "transition")
        std::cout << " cut " << e["cutPoint"];
    else if (kind == "effect")
        std::cout << " " << e["effect"].get<std::string>() << " (" << e["effectType"] << ") inputs "
                  << e["numInputs"] << " " << list(e["inputs"]) << " params " << list(e["params"])
                  << " key frames " << list(e["keyFrames"]);
    std::cout << "\n";
}

void printText(const Json& t) {
    const Json& tc = t["timecode"];
    std::cout << "pro tools: " << (t["proTools"].get<bool>() ? "yes" : "no") << "\n"
              << "timecode: start " << tc["start"] << ", " << tc["fps"] << " fps, "
              << (tc["drop"].get<bool>() ? "drop" : "non-drop") << "\n"
              << "clips: " << t["clips"].size() << "\n";
    size_t i = 0;
    for (const Json& c : t["clips"]) {
        std::cout << "  [" << i++ << "] " << c["id"].get<std::string>() << " " << c["name"] << " "
                  << c["type"].get<std::string>() << " path " << c["path"] << " tracks";
        for (const Json& tr : c["tracks"])
            std::cout << " " << tr["slot"] << (tr["video"].get<bool>() ? ":video" : ":audio");
        std::cout << "\n";
    }
    std::cout << "markers: " << t["markers"].size() << "\n";
    i = 0;
    for (const Json& m : t["markers"]) std::cout << "  [" << i++ << "] at " << m["position"] << " " << m["text"] << "\n";
    std::cout << "tracks: " << t["tracks"].size() << "\n";
    i = 0;
    for (const Json& tr : t["tracks"]) {
        std::cout << "  track " << i++ << ": " << tr["type"].get<std::string>() << ", edit rate " << tr["editRate"]
                  << ", " << tr["events"].size() << " events\n";
        size_t e = 0;
        for (const Json& event : tr["events"]) printEvent(e++, event);
    }
}

}  // namespace

AAFRESULT readHostView(const std::string& path, Json& view) {
    AafParseContext* context = nullptr;
    if (AAFRESULT opened = OpenAafFile(aafkit::utf8ToWide(path).c_str(), &context); opened != 0) return opened;
    ParseClips(context);
    ParseComposition(context);
    view = timelineJson(context);
    CloseFile(context);
    return 0;
}

bool readHostViewOrReport(const Invocation& invocation, const std::string& path, Json& view) {
    if (!readableOrReport(invocation, path)) return false;
    if (AAFRESULT opened = readHostView(path, view); opened != 0) {
        fail(invocation, "cannot open " + path + " as an AAF file: " + codeText(opened));
        return false;
    }
    return true;
}

int runTimeline(const Invocation& invocation) {
    Json timeline;
    if (!readHostViewOrReport(invocation, invocation.operand(0), timeline)) return kExitFailure;
    if (invocation.has("--json"))
        std::cout << timeline.dump(2) << "\n";
    else
        printText(timeline);
    return kExitSuccess;
}

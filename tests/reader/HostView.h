#pragma once
// What a host sees of a file through the exported reader functions, in the shape of the
// reference reads (keys named after the functions), plus the error lines printed.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "aafbridge/aaf_reader.h"
#include "aafkit/Values.h"

namespace readertest {

using nlohmann::json;

inline std::wstring widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// A text as the host receives it, through a buffer one longer than the size passed.
template <class Call>
json hostText(Call call) {
    wchar_t buffer[513] = {};
    AAFRESULT result = call(buffer, 512);
    if (result != 0) return json(result);
    return aafkit::wideToUtf8(buffer);
}

inline json clipView(AafParseContext* c, uint32_t i) {
    json clip;
    clip["LoadClipID"] = hostText([&](wchar_t* b, int32_t n) { return LoadClipID(i, b, n, c); });
    clip["LoadClipName"] = hostText([&](wchar_t* b, int32_t n) { return LoadClipName(i, b, n, c); });
    clip["LoadClipPath"] = hostText([&](wchar_t* b, int32_t n) { return LoadClipPath(i, b, n, c); });
    clip["LoadClipType"] = LoadClipType(i, c);
    json tracks = json::array();
    for (uint32_t t = 0; GetClipIsVideo(i, t, c) != 0xFFFFFFFFu; ++t) tracks.push_back(GetClipIsVideo(i, t, c));
    clip["GetClipIsVideo"] = tracks;
    return clip;
}

inline json effectLists(AafParseContext* c, uint32_t t, uint32_t e, json& event) {
    json ids = json::array(), params = json::array(), keys = json::array();
    for (uint32_t i = 0;; ++i) {
        wchar_t probe[2];
        if (GetEffectElementId(t, e, i, probe, 1, c) != 0) break;
        ids.push_back(hostText([&](wchar_t* b, int32_t n) { return GetEffectElementId(t, e, i, b, n, c); }));
    }
    for (uint32_t i = 0; i < GetEffectParamCount(t, e, c); ++i) params.push_back(GetEffectParam(t, e, i, c));
    for (uint32_t i = 0; i < GetEffectKeyFrameCount(t, e, c); ++i) keys.push_back(GetEffectKeyFrame(t, e, i, c));
    event["GetEffectElementId"] = ids;
    event["GetEffectParam"] = params;
    event["GetEffectKeyFrame"] = keys;
    return event;
}

inline json eventView(AafParseContext* c, uint32_t t, uint32_t e) {
    json event;
    event["GetEventLen"] = GetEventLen(t, e, c);
    event["GetEventInPoint"] = GetEventInPoint(t, e, c);
    event["GetEventName"] = hostText([&](wchar_t* b, int32_t n) { return GetEventName(t, e, b, n, c); });
    event["GetEventId"] = hostText([&](wchar_t* b, int32_t n) { return GetEventId(t, e, b, n, c); });
    event["GetEventSlot"] = GetEventSlot(t, e, c);
    event["GetEventPhysicalNumber"] = GetEventPhysicalNumber(t, e, c);
    event["IsEventFiller"] = IsEventFiller(t, e, c);
    event["IsEventTransition"] = IsEventTransition(t, e, c);
    event["IsEventEffect"] = IsEventEffect(t, e, c);
    event["GetTransitionCutPoint"] = GetTransitionCutPoint(t, e, c);
    event["GetEffectType"] = GetEffectType(t, e, c);
    event["GetEffectNumInputs"] = GetEffectNumInputs(t, e, c);
    event["GetEffectKeyFrameCount"] = GetEffectKeyFrameCount(t, e, c);
    event["GetEffectParamCount"] = GetEffectParamCount(t, e, c);
    if (IsEventEffect(t, e, c)) effectLists(c, t, e, event);
    return event;
}

inline json trackView(AafParseContext* c, uint32_t t) {
    json track;
    track["GetTrackType"] = GetTrackType(t, c);
    track["GetTrackEditRate"] = GetTrackEditRate(t, c);
    track["GetNumEvents"] = GetNumEvents(t, c);
    json events = json::array();
    for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) events.push_back(eventView(c, t, e));
    track["events"] = events;
    return track;
}

// Opens, parses and reads back everything; closes the session.
inline json hostView(const std::string& path) {
    testing::internal::CaptureStderr();
    AafParseContext* c = nullptr;
    json view;
    view["OpenAafFile"] = OpenAafFile(widen(path).c_str(), &c);
    if (view["OpenAafFile"] == 0) {
        ParseClips(c);
        ParseComposition(c);
        view["IsProToolsFile"] = IsProToolsFile(c);
        view["GetNumClips"] = GetNumClips(c);
        view["clips"] = json::array();
        for (uint32_t i = 0; i < GetNumClips(c); ++i) view["clips"].push_back(clipView(c, i));
        uint32_t start = 0, fps = 0, drop = 0;
        GetTimeCode(&start, &fps, &drop, c);
        view["GetTimeCode"] = {{"start", start}, {"fps", fps}, {"drop", drop}};
        view["GetNumMarkers"] = GetNumMarkers(c);
        view["markers"] = json::array();
        for (uint32_t m = 0; m < GetNumMarkers(c); ++m)
            view["markers"].push_back(
                {{"GetMarkerPosition", GetMarkerPosition(m, c)},
                 {"GetMarkerText", hostText([&](wchar_t* b, int32_t n) { return GetMarkerText(m, b, n, c); })}});
        view["GetNumTracks"] = GetNumTracks(c);
        view["tracks"] = json::array();
        for (uint32_t t = 0; t < GetNumTracks(c); ++t) view["tracks"].push_back(trackView(c, t));
        CloseFile(c);
    }
    std::string errors = testing::internal::GetCapturedStderr();
    view["errorLines"] = std::count(errors.begin(), errors.end(), '\n');
    view["stderr"] = errors;
    return view;
}

}  // namespace readertest

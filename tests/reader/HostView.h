#pragma once
// What a host sees of a file through the exported reader functions, in the shape of the
// reference reads (keys named after the functions), plus the error lines printed.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "aafbridge/aaf_reader.h"
#include "aafkit/om/Values.h"

namespace readertest {

using nlohmann::json;

inline std::wstring widen(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// A text as the host receives it, through a buffer one longer than the size passed.
template <class Call>
json hostText(Call call) {
    wchar_t buffer[513] = {};
    AAFRESULT result = call(buffer, 512);
    return result != 0 ? json(result) : json(aafkit::wideToUtf8(buffer));
}

inline json clipView(AafParseContext* c, uint32_t i) {
    json tracks = json::array();
    for (uint32_t t = 0; GetClipIsVideo(i, t, c) != 0xFFFFFFFFu; ++t) tracks.push_back(GetClipIsVideo(i, t, c));
    return {{"LoadClipID", hostText([&](wchar_t* b, int32_t n) { return LoadClipID(i, b, n, c); })},
            {"LoadClipName", hostText([&](wchar_t* b, int32_t n) { return LoadClipName(i, b, n, c); })},
            {"LoadClipPath", hostText([&](wchar_t* b, int32_t n) { return LoadClipPath(i, b, n, c); })},
            {"LoadClipType", LoadClipType(i, c)},
            {"GetClipIsVideo", tracks}};
}

inline void addEffectLists(AafParseContext* c, uint32_t t, uint32_t e, json& event) {
    json& ids = event["GetEffectElementId"] = json::array();
    for (uint32_t i = 0;; ++i) {
        json id = hostText([&](wchar_t* b, int32_t n) { return GetEffectElementId(t, e, i, b, n, c); });
        if (!id.is_string()) break;
        ids.push_back(id);
    }
    json& params = event["GetEffectParam"] = json::array();
    for (uint32_t i = 0; i < GetEffectParamCount(t, e, c); ++i) params.push_back(GetEffectParam(t, e, i, c));
    json& keys = event["GetEffectKeyFrame"] = json::array();
    for (uint32_t i = 0; i < GetEffectKeyFrameCount(t, e, c); ++i) keys.push_back(GetEffectKeyFrame(t, e, i, c));
}

inline json eventView(AafParseContext* c, uint32_t t, uint32_t e) {
    json event = {
        {"GetEventLen", GetEventLen(t, e, c)},
        {"GetEventInPoint", GetEventInPoint(t, e, c)},
        {"GetEventName", hostText([&](wchar_t* b, int32_t n) { return GetEventName(t, e, b, n, c); })},
        {"GetEventId", hostText([&](wchar_t* b, int32_t n) { return GetEventId(t, e, b, n, c); })},
        {"GetEventSlot", GetEventSlot(t, e, c)},
        {"GetEventPhysicalNumber", GetEventPhysicalNumber(t, e, c)},
        {"IsEventFiller", IsEventFiller(t, e, c)},
        {"IsEventTransition", IsEventTransition(t, e, c)},
        {"IsEventEffect", IsEventEffect(t, e, c)},
        {"GetTransitionCutPoint", GetTransitionCutPoint(t, e, c)},
        {"GetEffectType", GetEffectType(t, e, c)},
        {"GetEffectNumInputs", GetEffectNumInputs(t, e, c)},
        {"GetEffectKeyFrameCount", GetEffectKeyFrameCount(t, e, c)},
        {"GetEffectParamCount", GetEffectParamCount(t, e, c)}};
    if (IsEventEffect(t, e, c)) addEffectLists(c, t, e, event);
    return event;
}

inline json trackView(AafParseContext* c, uint32_t t) {
    json events = json::array();
    for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) events.push_back(eventView(c, t, e));
    return {{"GetTrackType", GetTrackType(t, c)},
            {"GetTrackEditRate", GetTrackEditRate(t, c)},
            {"GetNumEvents", GetNumEvents(t, c)},
            {"events", events}};
}

// Everything a host reads after parsing an open file.
inline void readParsed(AafParseContext* c, json& view) {
    view["IsProToolsFile"] = IsProToolsFile(c);
    view["GetNumClips"] = GetNumClips(c);
    json& clips = view["clips"] = json::array();
    for (uint32_t i = 0; i < GetNumClips(c); ++i) clips.push_back(clipView(c, i));
    uint32_t start = 0, fps = 0, drop = 0;
    GetTimeCode(&start, &fps, &drop, c);
    view["GetTimeCode"] = {{"start", start}, {"fps", fps}, {"drop", drop}};
    view["GetNumMarkers"] = GetNumMarkers(c);
    json& markers = view["markers"] = json::array();
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m)
        markers.push_back(
            {{"GetMarkerPosition", GetMarkerPosition(m, c)},
             {"GetMarkerText", hostText([&](wchar_t* b, int32_t n) { return GetMarkerText(m, b, n, c); })}});
    view["GetNumTracks"] = GetNumTracks(c);
    json& tracks = view["tracks"] = json::array();
    for (uint32_t t = 0; t < GetNumTracks(c); ++t) tracks.push_back(trackView(c, t));
}

// Opens, parses and reads back everything; closes the session.
inline json hostView(const std::string& path) {
    testing::internal::CaptureStderr();
    AafParseContext* c = nullptr;
    json view = {{"OpenAafFile", OpenAafFile(widen(path).c_str(), &c)}};
    if (view["OpenAafFile"] == 0) {
        ParseClips(c);
        ParseComposition(c);
        readParsed(c, view);
        CloseFile(c);
    }
    std::string errors = testing::internal::GetCapturedStderr();
    view["errorLines"] = std::count(errors.begin(), errors.end(), '\n');
    view["stderr"] = errors;
    return view;
}

}  // namespace readertest

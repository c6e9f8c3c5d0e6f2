#include "description/DescriptionBuilder.h"

#include "description/ResultText.h"

#include <cstdio>
#include <vector>

#include "description/DescriptionError.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/BaselineModel.h"

namespace {

bool isVideoKind(const Json& object, const std::string& where) {
    const std::string kind = text(object, "kind", where);
    if (kind != "video" && kind != "audio")
        throw DescriptionError(member(where, "kind") + ": \"" + kind + "\" is not video or audio");
    return kind == "video";
}

std::wstring wideText(const Json& object, const char* key, const std::string& where) {
    return aafkit::utf8ToWide(text(object, key, where));
}

// 64 hexadecimal digits: the 32 bytes as the caller passes them.
bool mobId(const Json& clip, const char* key, const std::string& where, aafMobID_t& out) {
    if (!present(clip, key, where)) return false;
    const std::string hex = text(clip, key, where);
    if (hex.size() != 64 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        throw DescriptionError(member(where, key) + ": expected 64 hexadecimal digits");
    auto* bytes = reinterpret_cast<uint8_t*>(&out);
    for (size_t i = 0; i < 32; ++i) bytes[i] = uint8_t(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return true;
}

}  // namespace

void accept(AAFRESULT code, const char* call, const std::string& where) {
    if (code != 0) throw DescriptionError(where + ": " + call + " refused with " + codeText(code));
}

void DescriptionBuilder::clips(const Json& description) {
    const Json& clips = list(description, "clips", "");
    for (size_t i = 0; i < clips.size(); ++i) addClip(clips[i], item("", "clips", i));
    const Json& subClips = list(description, "subClips", "");
    for (size_t i = 0; i < subClips.size(); ++i) addSubClip(subClips[i], item("", "subClips", i));
}

void DescriptionBuilder::composition(const Json& description) {
    const Json& composition = required(description, "composition", "");
    const std::string where = "composition";
    const Rate r = rate(composition, "rate", where);
    accept(InitComposition(r.numerator, r.denominator, integer(composition, "timecodeLength", kLength, where, 0),
                           flag(composition, "dropFrame", where, false),
                           uint32_t(integer(composition, "timecodeStart", kUnsigned32, where, 0)),
                           wideText(composition, "name", where).c_str(), context_),
           "InitComposition", where);
    const double frameRate = double(r.numerator) / r.denominator;
    const Json& tracks = list(description, "tracks", "");
    for (size_t t = 0; t < tracks.size(); ++t) addTrack(tracks[t], item("", "tracks", t), frameRate);
    const Json& markers = list(description, "markers", "");
    for (size_t m = 0; m < markers.size(); ++m) addMarker(markers[m], item("", "markers", m));
}

void DescriptionBuilder::addMarker(const Json& marker, const std::string& where) {
    accept(AddMarker(integer(marker, "position", kEditUnit, where), wideText(marker, "text", where).c_str(),
                     context_),
           "AddMarker", where);
}

void DescriptionBuilder::addClip(const Json& clip, const std::string& where) {
    const std::string name = text(clip, "name", where);
    const Rate r = rate(clip, "rate", where);
    aafMobID_t tape, file;
    const bool hasTape = mobId(clip, "tapeMobId", where, tape), hasFile = mobId(clip, "fileMobId", where, file);
    const int32_t index =
        AddClip(aafkit::utf8ToWide(name).c_str(), wideText(clip, "path", where).c_str(),
                integer(clip, "length", kLength, where), integer(clip, "startTimecode", kEditUnit, where, 0),
                flag(clip, "dropFrame", where, false), hasTape ? &tape : nullptr, hasFile ? &file : nullptr,
                int32_t(r.numerator), int32_t(r.denominator), context_);
    if (index < 0) throw DescriptionError(where + ": AddClip refused the clip");
    clipNumbers_[name] = uint32_t(index);
    const Json& tracks = list(clip, "tracks", where);
    for (size_t t = 0; t < tracks.size(); ++t) addClipTrack(index, uint32_t(t + 1), tracks[t], item(where, "tracks", t));
}

void DescriptionBuilder::addClipTrack(int32_t clip, uint32_t number, const Json& track, const std::string& where) {
    const bool video = isVideoKind(track, where);
    const Rate r = rate(track, "editRate", where);
    accept(AddClipTrack(clip, video, r.numerator, r.denominator, integer(track, "length", kLength, where), context_),
           "AddClipTrack", where);
    if (video) {
        accept(SetVideoTrackInfo(uint32_t(clip), number, uint32_t(integer(track, "width", kUnsigned32, where, 0)),
                                 uint32_t(integer(track, "height", kUnsigned32, where, 0)), context_),
               "SetVideoTrackInfo", where);
        return;
    }
    accept(SetAudioTrackInfo(uint32_t(clip), number, uint32_t(integer(track, "channels", kChannelCount, where, 1)),
                             uint32_t(integer(track, "bitsPerSample", kSampleSize, where, 16)),
                             uint32_t(integer(track, "sampleRate", kSampleRate, where, 48000)),
                             integer(track, "sampleLength", kLength, where, 0), context_),
           "SetAudioTrackInfo", where);
}

void DescriptionBuilder::addSubClip(const Json& subClip, const std::string& where) {
    const std::string name = text(subClip, "name", where);
    const int32_t index = AddSubClip(aafkit::utf8ToWide(name).c_str(), wideText(subClip, "parentPath", where).c_str(),
                                     integer(subClip, "length", kLength, where),
                                     integer(subClip, "start", kEditUnit, where, 0), context_);
    if (index < 0) throw DescriptionError(where + ": AddSubClip refused the sub-clip");
    clipNumbers_[name] = uint32_t(index);
    subClips_.insert(uint32_t(index));
}

// A clip named in an event: by its name, or by its 1-based registration number.
uint32_t DescriptionBuilder::clipNumber(const Json& event, const std::string& where) {
    const Json& clip = required(event, "clip", where);
    const std::string path = member(where, "clip");
    static const IntegerRange kClipNumber = {1, UINT32_MAX, "a clip number"};
    if (clip.is_number()) return uint32_t(integer(clip, kClipNumber, path));
    if (!clip.is_string()) throw DescriptionError(path + ": expected a clip's name or number");
    auto found = clipNumbers_.find(clip.get<std::string>());
    if (found == clipNumbers_.end()) throw DescriptionError(path + ": no clip named " + clip.dump());
    return found->second;
}

void DescriptionBuilder::addTrack(const Json& track, const std::string& where, double frameRate) {
    const bool video = isVideoKind(track, where);
    const double editRate =
        present(track, "editRate", where) ? number(track["editRate"], member(where, "editRate"), true) : frameRate;
    const uint32_t index = AddTrackToComposition(video, editRate, context_);
    const Json& events = list(track, "events", where);
    for (size_t e = 0; e < events.size(); ++e) addEvent(index, events[e], item(where, "events", e));
}

void DescriptionBuilder::addEvent(uint32_t track, const Json& event, const std::string& where) {
    const std::string type = text(event, "type", where);
    const int64_t length = integer(event, "length", kLength, where);
    if (type == "clip") {
        const uint32_t clip = clipNumber(event, where);
        accept(AppendClipToTrack(track, integer(event, "inPoint", kEditUnit, where, 0), length,
                                 flag(event, "subClip", where, subClips_.count(clip) > 0), clip,
                                 uint32_t(integer(event, "track", kTrackNumber, where, 1)), context_),
               "AppendClipToTrack", where);
    } else if (type == "filler") {
        accept(AppendFiller(track, length, context_), "AppendFiller", where);
    } else if (type == "transition") {
        accept(AppendTransition(track, integer(event, "cutPoint", kEditUnit, where, length / 2), length, context_),
               "AppendTransition", where);
    } else {
        addEffect(track, type, length, event, where);
    }
}

void DescriptionBuilder::addEffect(uint32_t track, const std::string& type, int64_t length, const Json& event,
                                   const std::string& where) {
    required(event, "values", where);
    const auto values = numbers(event, "values", where);
    const auto keyFrames = numbers(event, "keyFrames", where);
    const auto valueCount = uint32_t(values.size());
    const auto keyFrameCount = int32_t(keyFrames.size());
    using EffectCall =
        AAFRESULT (*)(uint32_t, int64_t, const double*, uint32_t, const double*, int32_t, AafWriterContext*);
    static const std::map<std::string, std::pair<EffectCall, const char*>> kEffects = {
        {"volume", {AppendVolumeEffect, "AppendVolumeEffect"}},
        {"pan", {AppendPanEffect, "AppendPanEffect"}},
        {"composite", {AppendVideoCompositeEffect, "AppendVideoCompositeEffect"}},
    };
    if (type == "speed") {
        accept(AppendSpeedEffect(track, flag(event, "flag", where, true), length, values.data(), valueCount,
                                 keyFrames.data(), keyFrameCount, context_),
               "AppendSpeedEffect", where);
        return;
    }
    auto effect = kEffects.find(type);
    if (effect == kEffects.end()) throw DescriptionError(member(where, "type") + ": unknown event type \"" + type + "\"");
    accept(effect->second.first(track, length, values.data(), valueCount, keyFrames.data(), keyFrameCount, context_),
           effect->second.second, where);
}

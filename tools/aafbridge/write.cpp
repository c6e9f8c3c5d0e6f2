// aafbridge write INPUT.json OUTPUT.aaf: a file built from a JSON description by the
// exported writer calls, in the order a host makes them. aafbridge demo OUTPUT.aaf:
// the same for a built-in description.
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "OpenFile.h"
#include "ResultText.h"
#include "aafbridge/aaf_writer.h"
#include "aafkit/Values.h"

using Json = nlohmann::json;

namespace {

// A description the writer cannot take, or a call it refused; the text names the item.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

const Json& required(const Json& object, const char* key, const std::string& where) {
    if (!object.is_object()) throw Failure(where + ": expected an object");
    auto found = object.find(key);
    if (found == object.end()) throw Failure(where + ": missing \"" + key + "\"");
    return *found;
}

template <class T>
T as(const Json& value, const std::string& where) {
    try {
        return value.get<T>();
    } catch (const Json::exception&) {
        throw Failure(where + ": " + value.dump() + " is not a valid value here");
    }
}

template <class T>
T get(const Json& object, const char* key, const std::string& where) {
    return as<T>(required(object, key, where), where + "." + key);
}

template <class T>
T get(const Json& object, const char* key, const std::string& where, T fallback) {
    return object.contains(key) ? get<T>(object, key, where) : fallback;
}

const Json& list(const Json& object, const char* key, const std::string& where) {
    static const Json kEmpty = Json::array();
    if (!object.contains(key)) return kEmpty;
    const Json& value = object[key];
    if (!value.is_array()) throw Failure(where + "." + key + ": expected an array");
    return value;
}

std::string item(const char* key, size_t index) { return std::string(key) + "[" + std::to_string(index) + "]"; }

void accept(AAFRESULT code, const char* call, const std::string& where) {
    if (code != 0) throw Failure(where + ": " + call + " refused with " + codeText(code));
}

bool isVideoKind(const Json& object, const std::string& where) {
    const std::string kind = get<std::string>(object, "kind", where);
    if (kind != "video" && kind != "audio") throw Failure(where + ".kind: \"" + kind + "\" is not video or audio");
    return kind == "video";
}

// 64 hexadecimal digits: the 32 bytes as the caller passes them.
bool mobId(const Json& clip, const char* key, const std::string& where, aafMobID_t& out) {
    if (!clip.contains(key) || clip[key].is_null()) return false;
    const std::string hex = get<std::string>(clip, key, where);
    if (hex.size() != 64 || hex.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos)
        throw Failure(where + "." + key + ": expected 64 hexadecimal digits");
    auto* bytes = reinterpret_cast<uint8_t*>(&out);
    for (size_t i = 0; i < 32; ++i) bytes[i] = uint8_t(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return true;
}

struct Rate {
    uint32_t numerator, denominator;
};

Rate rate(const Json& object, const char* key, const std::string& where) {
    auto parts = get<std::vector<uint32_t>>(object, key, where);
    if (parts.size() != 2 || parts[1] == 0) throw Failure(where + "." + key + ": expected [numerator, denominator]");
    return {parts[0], parts[1]};
}

class Builder {
public:
    explicit Builder(AafWriterContext* context) : context_(context) {}

    void clips(const Json& description) {
        const Json& clips = list(description, "clips", "description");
        for (size_t i = 0; i < clips.size(); ++i) addClip(clips[i], item("clips", i));
        const Json& subClips = list(description, "subClips", "description");
        for (size_t i = 0; i < subClips.size(); ++i) addSubClip(subClips[i], item("subClips", i));
    }

    void composition(const Json& description) {
        const Json& composition = required(description, "composition", "description");
        const Rate r = rate(composition, "rate", "composition");
        accept(InitComposition(r.numerator, r.denominator, get<int64_t>(composition, "timecodeLength", "composition", 0),
                               get<bool>(composition, "dropFrame", "composition", false),
                               get<uint32_t>(composition, "timecodeStart", "composition", 0),
                               aafkit::utf8ToWide(get<std::string>(composition, "name", "composition")).c_str(), context_),
               "InitComposition", "composition");
        const double frameRate = double(r.numerator) / r.denominator;
        const Json& tracks = list(description, "tracks", "description");
        for (size_t t = 0; t < tracks.size(); ++t) addTrack(tracks[t], item("tracks", t), frameRate);
        const Json& markers = list(description, "markers", "description");
        for (size_t m = 0; m < markers.size(); ++m) {
            const std::string where = item("markers", m);
            accept(AddMarker(get<int64_t>(markers[m], "position", where),
                             aafkit::utf8ToWide(get<std::string>(markers[m], "text", where)).c_str(), context_),
                   "AddMarker", where);
        }
    }

private:
    void addClip(const Json& clip, const std::string& where) {
        const std::string name = get<std::string>(clip, "name", where);
        const Rate r = rate(clip, "rate", where);
        aafMobID_t tape, file;
        const bool hasTape = mobId(clip, "tapeMobId", where, tape), hasFile = mobId(clip, "fileMobId", where, file);
        const int32_t index =
            AddClip(aafkit::utf8ToWide(name).c_str(), aafkit::utf8ToWide(get<std::string>(clip, "path", where)).c_str(),
                    get<int64_t>(clip, "length", where), get<int64_t>(clip, "startTimecode", where, 0),
                    get<bool>(clip, "dropFrame", where, false), hasTape ? &tape : nullptr, hasFile ? &file : nullptr,
                    int32_t(r.numerator), int32_t(r.denominator), context_);
        if (index < 0) throw Failure(where + ": AddClip refused the clip");
        clipNumbers_[name] = uint32_t(index);
        const Json& tracks = list(clip, "tracks", where);
        for (size_t t = 0; t < tracks.size(); ++t) addClipTrack(index, uint32_t(t + 1), tracks[t], where + "." + item("tracks", t));
    }

    void addClipTrack(int32_t clip, uint32_t number, const Json& track, const std::string& where) {
        const bool video = isVideoKind(track, where);
        const Rate r = rate(track, "editRate", where);
        accept(AddClipTrack(clip, video, r.numerator, r.denominator, get<int64_t>(track, "length", where), context_),
               "AddClipTrack", where);
        if (video) {
            accept(SetVideoTrackInfo(uint32_t(clip), number, get<uint32_t>(track, "width", where, 0),
                                     get<uint32_t>(track, "height", where, 0), context_),
                   "SetVideoTrackInfo", where);
            return;
        }
        accept(SetAudioTrackInfo(uint32_t(clip), number, get<uint32_t>(track, "channels", where, 1),
                                 get<uint32_t>(track, "bitsPerSample", where, 16),
                                 get<uint32_t>(track, "sampleRate", where, 48000),
                                 get<int64_t>(track, "sampleLength", where, 0), context_),
               "SetAudioTrackInfo", where);
    }

    void addSubClip(const Json& subClip, const std::string& where) {
        const std::string name = get<std::string>(subClip, "name", where);
        const int32_t index = AddSubClip(aafkit::utf8ToWide(name).c_str(),
                                         aafkit::utf8ToWide(get<std::string>(subClip, "parentPath", where)).c_str(),
                                         get<int64_t>(subClip, "length", where), get<int64_t>(subClip, "start", where, 0),
                                         context_);
        if (index < 0) throw Failure(where + ": AddSubClip refused the sub-clip");
        clipNumbers_[name] = uint32_t(index);
        subClips_.insert(uint32_t(index));
    }

    // A clip named in an event: by its name, or by its 1-based registration number.
    uint32_t clipNumber(const Json& event, const std::string& where) {
        const Json& clip = required(event, "clip", where);
        if (clip.is_number_unsigned()) return clip.get<uint32_t>();
        auto found = clipNumbers_.find(as<std::string>(clip, where + ".clip"));
        if (found == clipNumbers_.end()) throw Failure(where + ".clip: no clip named " + clip.dump());
        return found->second;
    }

    void addTrack(const Json& track, const std::string& where, double frameRate) {
        const uint32_t index =
            AddTrackToComposition(isVideoKind(track, where), get<double>(track, "editRate", where, frameRate), context_);
        const Json& events = list(track, "events", where);
        for (size_t e = 0; e < events.size(); ++e) addEvent(index, events[e], where + "." + item("events", e));
    }

    void addEvent(uint32_t track, const Json& event, const std::string& where) {
        const std::string type = get<std::string>(event, "type", where);
        const int64_t length = get<int64_t>(event, "length", where);
        if (type == "clip") {
            const uint32_t clip = clipNumber(event, where);
            accept(AppendClipToTrack(track, get<int64_t>(event, "inPoint", where, 0), length,
                                     get<bool>(event, "subClip", where, subClips_.count(clip) > 0), clip,
                                     get<uint32_t>(event, "track", where, 1), context_),
                   "AppendClipToTrack", where);
        } else if (type == "filler") {
            accept(AppendFiller(track, length, context_), "AppendFiller", where);
        } else if (type == "transition") {
            accept(AppendTransition(track, get<int64_t>(event, "cutPoint", where, length / 2), length, context_),
                   "AppendTransition", where);
        } else {
            addEffect(track, type, length, event, where);
        }
    }

    void addEffect(uint32_t track, const std::string& type, int64_t length, const Json& event,
                   const std::string& where) {
        const auto values = get<std::vector<double>>(event, "values", where);
        const auto keyFrames = get<std::vector<double>>(event, "keyFrames", where, {});
        const auto valueCount = uint32_t(values.size());
        const auto keyFrameCount = int32_t(keyFrames.size());
        using EffectCall = AAFRESULT (*)(uint32_t, int64_t, const double*, uint32_t, const double*, int32_t,
                                         AafWriterContext*);
        static const std::map<std::string, std::pair<EffectCall, const char*>> kEffects = {
            {"volume", {AppendVolumeEffect, "AppendVolumeEffect"}},
            {"pan", {AppendPanEffect, "AppendPanEffect"}},
            {"composite", {AppendVideoCompositeEffect, "AppendVideoCompositeEffect"}},
        };
        if (type == "speed") {
            accept(AppendSpeedEffect(track, get<bool>(event, "flag", where, true), length, values.data(), valueCount,
                                     keyFrames.data(), keyFrameCount, context_),
                   "AppendSpeedEffect", where);
            return;
        }
        auto effect = kEffects.find(type);
        if (effect == kEffects.end()) throw Failure(where + ".type: unknown event type \"" + type + "\"");
        accept(effect->second.first(track, length, values.data(), valueCount, keyFrames.data(), keyFrameCount,
                                    context_),
               effect->second.second, where);
    }

    AafWriterContext* context_;
    std::map<std::string, uint32_t> clipNumbers_;
    std::set<uint32_t> subClips_;
};

// Builds and writes; answers the tool's exit code. The library never replaces a
// file, so the tool writes beside OUTPUT and then moves the result over it. Nothing
// is written unless every call was accepted; a write that fails inside still saves
// what it wrote, as the library does.
int writeDescription(const Invocation& invocation, const Json& description, const std::string& output) {
    const std::string fresh = output + ".writing";
    std::remove(fresh.c_str());
    if (!creatableOrReport(invocation, output)) return kExitFailure;
    AafWriterContext* context = nullptr;
    CreateAafWriterContext(&context);
    int status = kExitSuccess;
    try {
        Builder builder(context);
        builder.clips(description);
        builder.composition(description);
        const AAFRESULT written = WriteAafFile(aafkit::utf8ToWide(fresh).c_str(), context);
        if (written != 0)
            status = fail(invocation, "writing " + output + " failed with " + codeText(written) +
                                          (fileExists(fresh) ? "; the file holds what was written before the failure" : ""));
    } catch (const Failure& failure) {
        status = fail(invocation, failure.what());
    }
    FreeAafWriterContext(context);
    if (fileExists(fresh) && std::rename(fresh.c_str(), output.c_str()) != 0) {
        status = fail(invocation, "cannot replace " + output + ": " + systemReason());
        std::remove(fresh.c_str());
    }
    return status;
}

const char* const kDemo = R"({
  "clips": [
    {"name": "Interview", "path": "/Volumes/Media/interview.mov", "length": 3000, "startTimecode": 90000,
     "rate": [25, 1],
     "tracks": [{"kind": "video", "editRate": [25, 1], "length": 3000, "width": 1920, "height": 1080}]},
    {"name": "Interview audio", "path": "/Volumes/Media/interview.wav", "length": 3000, "startTimecode": 90000,
     "rate": [25, 1],
     "tracks": [{"kind": "audio", "editRate": [25, 1], "length": 3000, "channels": 1, "bitsPerSample": 24,
                 "sampleRate": 48000, "sampleLength": 5760000}]},
    {"name": "City b-roll", "path": "/Volumes/Media/city.mov", "length": 1500, "startTimecode": 0, "rate": [25, 1],
     "tracks": [{"kind": "video", "editRate": [25, 1], "length": 1500, "width": 1920, "height": 1080}]}
  ],
  "composition": {"name": "Demo", "rate": [25, 1], "timecodeStart": 90000, "timecodeLength": 1000},
  "tracks": [
    {"kind": "video", "events": [
      {"type": "clip", "clip": "Interview", "inPoint": 100, "length": 250},
      {"type": "transition", "cutPoint": 12, "length": 25},
      {"type": "clip", "clip": "City b-roll", "inPoint": 200, "length": 300},
      {"type": "clip", "clip": "City b-roll", "inPoint": 600, "length": 200},
      {"type": "speed", "length": 200, "values": [2.0, 0]},
      {"type": "filler", "length": 50}]},
    {"kind": "audio", "events": [
      {"type": "clip", "clip": "Interview audio", "inPoint": 100, "length": 500},
      {"type": "volume", "length": 500, "values": [0.0, 1.0, 1.0, 0.0], "keyFrames": [0.0, 0.1, 0.9, 1.0]},
      {"type": "filler", "length": 250}]}
  ],
  "markers": [{"position": 50, "text": "Name title here"}, {"position": 400, "text": "Check the speed change"}]
})";

}  // namespace

int runWrite(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
    std::ifstream in(input);
    if (!in) return fail(invocation, "cannot open " + input + ": " + systemReason());
    Json description;
    try {
        description = Json::parse(in);
    } catch (const Json::parse_error& error) {
        return fail(invocation, input + " is not valid JSON: " + error.what());
    }
    return writeDescription(invocation, description, invocation.operand(1));
}

int runDemo(const Invocation& invocation) {
    return writeDescription(invocation, Json::parse(kDemo), invocation.operand(0));
}

#include "ReferenceScript.h"

#include <fstream>
#include <vector>

#include "aafbridge/aaf_writer.h"
#include "aafkit/om/Values.h"

namespace {

using nlohmann::json;

std::wstring wide(const json& text) { return aafkit::utf8ToWide(text.get<std::string>()); }


bool mobIdOf(const json& text, aafMobID_t& out) {
    if (text.is_null()) return false;
    std::string hex = text.get<std::string>();
    auto* bytes = reinterpret_cast<uint8_t*>(&out);
    for (size_t i = 0; i < 32; ++i) bytes[i] = uint8_t(std::stoul(hex.substr(2 * i, 2), nullptr, 16));
    return true;
}

std::vector<double> doubles(const json& array) { return array.get<std::vector<double>>(); }

int64_t recorded(const json& value) {
    if (value.is_string()) return int64_t(std::stoul(value.get<std::string>(), nullptr, 16));
    return value.get<int64_t>();
}

// One call; answers what the function answered, as the script records it.
int64_t call(const json& c, AafWriterContext*& context, const std::string& outputPath) {
    const std::string fn = c["fn"];
    const json& a = c.contains("args") ? c["args"] : json::object();
    if (fn == "CreateAafWriterContext") return uint32_t(CreateAafWriterContext(&context));
    if (fn == "FreeAafWriterContext") {
        FreeAafWriterContext(context);
        context = nullptr;
        return 0;
    }
    if (fn == "AddClip") {
        aafMobID_t tape, file;
        bool hasTape = mobIdOf(a["tapeMobId"], tape), hasFile = mobIdOf(a["fileMobId"], file);
        return AddClip(wide(a["name"]).c_str(), wide(a["path"]).c_str(), a["length"], a["startTimecode"],
                       a["dropFrame"].get<int>() != 0, hasTape ? &tape : nullptr, hasFile ? &file : nullptr,
                       a["rateNumerator"], a["rateDenominator"], context);
    }
    if (fn == "AddSubClip")
        return AddSubClip(wide(a["name"]).c_str(), wide(a["parentPath"]).c_str(), a["length"], a["start"], context);
    if (fn == "AddClipTrack")
        return uint32_t(AddClipTrack(a["clipIndex"], a["isVideo"].get<int>() != 0, a["editRateNumerator"],
                                     a["editRateDenominator"], a["length"], context));
    if (fn == "SetVideoTrackInfo")
        return uint32_t(SetVideoTrackInfo(a["clipIndex"], a["trackIndex"], a["width"], a["height"], context));
    if (fn == "SetAudioTrackInfo")
        return uint32_t(SetAudioTrackInfo(a["clipIndex"], a["trackIndex"], a["channels"], a["bitsPerSample"],
                                          a["sampleRate"], a["sampleLength"], context));
    if (fn == "InitComposition")
        return uint32_t(InitComposition(a["rateNumerator"], a["rateDenominator"], a["timecodeLength"],
                                        a["dropFrame"].get<int>() != 0, a["timecodeStart"],
                                        wide(a["name"]).c_str(), context));
    if (fn == "AddTrackToComposition")
        return AddTrackToComposition(a["isVideo"].get<int>() != 0, a["editRate"], context);
    if (fn == "AppendClipToTrack")
        return uint32_t(AppendClipToTrack(a["track"], a["inPoint"], a["length"], a["isSubClip"].get<int>() != 0,
                                          a["clipIndex"], a["trackNumber"], context));
    if (fn == "AppendFiller") return uint32_t(AppendFiller(a["track"], a["length"], context));
    if (fn == "AppendTransition") return uint32_t(AppendTransition(a["track"], a["cutPoint"], a["length"], context));
    if (fn == "AddMarker") return uint32_t(AddMarker(a["position"], wide(a["text"]).c_str(), context));
    if (fn == "WriteAafFile") return uint32_t(WriteAafFile(wide(json(outputPath)).c_str(), context));
    std::vector<double> values = doubles(a["values"]), keyFrames = doubles(a["keyFrames"]);
    auto valueCount = uint32_t(values.size());
    auto keyFrameCount = int32_t(keyFrames.size());
    if (fn == "AppendSpeedEffect")
        return uint32_t(AppendSpeedEffect(a["track"], a["flag"].get<int>() != 0, a["length"], values.data(),
                                          valueCount, keyFrames.data(), keyFrameCount, context));
    using EffectCall = AAFRESULT (*)(uint32_t, int64_t, const double*, uint32_t, const double*, int32_t,
                                     AafWriterContext*);
    EffectCall effect = fn == "AppendVolumeEffect"           ? AppendVolumeEffect
                        : fn == "AppendPanEffect"            ? AppendPanEffect
                        : fn == "AppendVideoCompositeEffect" ? AppendVideoCompositeEffect
                                                             : nullptr;
    if (!effect) throw std::runtime_error("unknown call " + fn);
    return uint32_t(effect(a["track"], a["length"], values.data(), valueCount, keyFrames.data(), keyFrameCount,
                           context));
}

}  // namespace

std::string replayScript(const json& script, const std::string& outputPath) {
    AafWriterContext* context = nullptr;
    std::string mismatch;
    for (const json& c : script["calls"]) {
        int64_t answer = call(c, context, outputPath);
        if (mismatch.empty() && c.contains("returns") && answer != recorded(c["returns"]))
            mismatch = std::string(c["fn"]) + " answered " + std::to_string(answer) + ", the script says " +
                       c["returns"].dump();
    }
    FreeAafWriterContext(context);
    return mismatch;
}

json loadScript(const std::string& name) {
    std::ifstream in(std::string(AAFBRIDGE_SHARED_DIR) + "/writer-reference/" + name + ".json");
    return json::parse(in);
}

std::string referencePath(const std::string& name) {
    return std::string(AAFBRIDGE_SHARED_DIR) + "/writer-reference/" + name + ".aaf";
}

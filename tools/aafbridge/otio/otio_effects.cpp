#include "otio/otio_effects.h"

#include <optional>

#include "aafkit/meta/EditorIds.h"
#include "aafkit/meta/Ids.h"
#include "otio/otio_items.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

// Avid's speed map: the play speed at each key frame.
constexpr aafUID_t kAvidSpeedMap = {0x8d56827c, 0x847e, 0x11d5, {0x93, 0x5a, 0x50, 0xf8, 0x57, 0xc1, 0x00, 0x00}};

// The constant speed a time warp plays its input at: Avid's speed map where there is one, else
// the ratio of output to input length that the model defines, else the speed factor editors
// write with it. None when the speed changes over the effect (a ramp is no linear warp).
std::optional<double> constantSpeed(const Operation& operation) {
    if (const Parameter* map = operation.find(kAvidSpeedMap)) {
        for (const KeyFrame& frame : map->keyFrames)
            if (frame.value != map->value) return std::nullopt;
        return map->value;
    }
    if (const Parameter* ratio = operation.find(kAAFParameterDef_SpeedRatio))
        return ratio->value != 0 ? 1.0 / ratio->value : 0.0;
    if (const Parameter* factor = operation.find(kAAFParameterDef_Ratio)) return factor->value;
    return 1.0;
}

}  // namespace

Json otioParameters(const Operation& operation) {
    Json parameters = Json::array();
    for (const Parameter& parameter : operation.parameters) {
        Json keyFrames = Json::array();
        for (const KeyFrame& frame : parameter.keyFrames) keyFrames.push_back({frame.time, frame.value});
        parameters.push_back({{"name", parameter.name},
                              {"id", aafkit::auidToText(parameter.id)},
                              {"value", parameter.value},
                              {"interpolation", parameter.interpolation},
                              {"keyFrames", std::move(keyFrames)}});
    }
    return parameters;
}

Json otioEffect(const Operation& operation, int64_t length) {
    Json data = {{"operationId", aafkit::auidToText(operation.id)}, {"length", length},
                 {"parameters", otioParameters(operation)}};
    const std::optional<double> speed = operation.timeWarp ? constantSpeed(operation) : std::nullopt;
    if (speed) {
        Json warp = otioObject(*speed == 0 ? "FreezeFrame.1" : "LinearTimeWarp.1", operation.name, std::move(data));
        warp["effect_name"] = *speed == 0 ? "FreezeFrame" : "LinearTimeWarp";
        warp["time_scalar"] = *speed;
        return warp;
    }
    Json effect = otioObject("Effect.1", operation.name, std::move(data));
    if (operation.id == kAAFOperationDef_MonoAudioGain || operation.id == kAAFOperationDef_StereoAudioGain)
        effect["effect_name"] = "Volume";
    else if (operation.id == kAAFOperationDef_MonoAudioPan)
        effect["effect_name"] = "Pan";
    else
        effect["effect_name"] = operation.name;
    return effect;
}

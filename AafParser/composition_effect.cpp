#include <memory>

#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/EditorIds.h"
#include "aafkit/meta/Ids.h"
#include "composition.h"
#include "model/TrackClip.h"

namespace {
constexpr char kErrorSource[] = "AafParser/composition";

uint32_t effectTypeOf(const aafUID_t& operation) {
    if (operation == kAAFOperationDef_MonoAudioPan) return kEffectPan;
    if (operation == kAAFOperationDef_MonoAudioGain) return kEffectGain;
    if (operation == kAAFOperationDef_Superimpose) return kEffectSuperimpose;
    return kEffectOther;
}

// The speed ratio (1/1 when absent) and the phase (0 when absent) of a speed change.
struct SpeedChange {
    aafRational_t ratio = {1, 1};
    int32_t phase = 0;

    double scale() const { return ratio.denominator == 0 ? 1.0 : double(ratio.numerator) / ratio.denominator; }
};

SpeedChange readSpeedChange(const Object& group) {
    SpeedChange change;
    int32_t ratio[2] = {1, 1};
    GetParamValue(group, kAAFParameterDef_SpeedRatio, ratio);
    change.ratio = {ratio[0], ratio[1]};
    int32_t phase[2] = {0, 0};
    GetParamValue(group, kAAFParameterDef_AvidPhase, phase);
    change.phase = phase[0];
    return change;
}

// A clip alone under a speed change is reported at its own speed: its in-point moves
// into the changed units and it takes the effect's length.
void fixUpSpeed(Track& track, size_t eventsBefore, uint32_t inputCount, const SpeedChange& change,
                const Effect& effect) {
    if (change.scale() == 1.0 || inputCount != 1 || track.events.size() != eventsBefore + 1) return;
    TrackEvent* added = track.events.back();
    if (added->getType() != kEventClip) return;
    auto* clip = static_cast<TrackClip*>(added);
    clip->inPoint = speedAdjustedInPoint(clip->inPoint, change.ratio, change.phase, clip->isSubClip != 0);
    clip->length = effect.length;
    clip->speed = 1.0;
}

AAFRESULT readDefinition(const Object& definition, Effect& effect) {
    int32_t numberInputs = 0;
    AAFRESULT result = requiredProperty(aafkit::getInt32(definition, PID_OperationDefinition_NumberInputs, numberInputs),
                                        definition, PID_OperationDefinition_NumberInputs);
    if (AAF_FAILED(result)) return result;
    effect.numInputs = uint32_t(numberInputs);
    aafUID_t operation = {};
    result = requiredProperty(aafkit::getAuid(definition, PID_DefinitionObject_Identification, operation), definition,
                              PID_DefinitionObject_Identification);
    if (AAF_FAILED(result)) return result;
    effect.effectType = effectTypeOf(operation);
    return AAFRESULT_SUCCESS;
}

// Each input's events go on the track; the track's last event then counts as the input.
void processInputs(const std::vector<Object*>& inputs, Track& track, Sequence& sequence, AafParseContext& context,
                   Effect& effect, const SpeedChange& change, size_t eventsBefore) {
    for (Object* input : inputs) {
        ProcessSegment(*input, track, sequence, context, change.scale());
        fixUpSpeed(track, eventsBefore, uint32_t(inputs.size()), change, effect);
        if (!track.events.empty()) effect.inputs.push_back(track.events.back());
    }
}

// A group without input segments has none to count.
AAFRESULT getInputSegments(const Object& group, const std::vector<Object*>*& out) {
    static const std::vector<Object*> kNone;
    AAFRESULT result = aafkit::getObjects(group, PID_OperationGroup_InputSegments, out);
    if (result != AAFRESULT_PROP_NOT_PRESENT) return result;
    out = &kNone;
    return AAFRESULT_SUCCESS;
}

}  // namespace

AAFRESULT ProcessOperationGroup(const Object& group, Track& track, Sequence& sequence, AafParseContext& context) {
    const size_t eventsBefore = track.events.size();
    const std::vector<Object*>* inputs = nullptr;
    Object* definition = nullptr;
    if (AAF_FAILED(getInputSegments(group, inputs)) ||
        AAF_FAILED(aafkit::getReferenced(group, PID_OperationGroup_Operation, definition)))
        return AAFRESULT_SUCCESS;
    auto effect = sequence.events.make<Effect>();
    aafkit::getInt64(group, PID_Component_Length, effect->length);
    // An unreadable definition drops the effect before any input reaches the track.
    if (readDefinition(*definition, *effect) != AAFRESULT_SUCCESS) return AAFRESULT_SUCCESS;
    ProcessParameters(group, *effect);
    const SpeedChange change = readSpeedChange(group);
    processInputs(*inputs, track, sequence, context, *effect, change, eventsBefore);
    track.events.push_back(effect.release());
    return AAFRESULT_SUCCESS;
}

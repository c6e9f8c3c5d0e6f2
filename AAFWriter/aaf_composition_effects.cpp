// Writing an effect: an operation group over the event it covers, with its operation,
// parameter and interpolation definitions registered in the file on first use.
#include <string>
#include <vector>

#include "aaf_composition.h"
#include "aafkit/Builders.h"
#include "aafkit/Checked.h"
#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/EditorIds.h"
#include "aafkit/meta/Ids.h"
#include "context.h"
#include "model/Effect.h"
#include "model/TrackClip.h"

using aafkit::Object;

// Volume and pan curves as Avid-family editors name them.
aafUID_t avidVarVolumeParam = {0x47c00f7d, 0xfb55, 0x11d3, {0x9f, 0xf7, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};
aafUID_t avidVarPanParam = {0xe4962322, 0x2267, 0x11d3, {0x8a, 0x4c, 0x00, 0x50, 0x04, 0x0e, 0xf7, 0xd2}};

namespace {

constexpr char kErrorSource[] = "AAFWriter/aaf_composition";

const aafUID_t kAAFParameterDefAmplitude = kAAFParameterDef_Amplitude;
const aafUID_t LinearInterpolator = kAAFInterpolationDef_Linear;
const aafUID_t kAAFOperationDef_SpeedAlternate = {0xf1db0f27, 0x8d64, 0x11d3,
                                                  {0x80, 0xdf, 0x00, 0x60, 0x08, 0x14, 0x3e, 0x6f}};

// Private properties of opacity curves.
const aafUID_t kVValExtrapolationPropertyID = {0x8f2b8bae, 0xb685, 0x4939,
                                               {0xb3, 0xa5, 0x63, 0x73, 0x63, 0x3b, 0x3e, 0x6c}};
const aafUID_t kVValExtrapolationValue = {0x0e24dd54, 0x66cd, 0x4f1a,
                                          {0xb0, 0xa0, 0x67, 0x0a, 0xc3, 0xa7, 0xa0, 0xb3}};
const aafUID_t kVValFieldCountPropertyID = {0x2902558b, 0xacfa, 0x439e,
                                            {0xa1, 0xcd, 0x9f, 0xa1, 0xe8, 0xf8, 0x91, 0xef}};
const int16_t kVValFieldCountPropValue = 2;

aafkit::File& fileOf(AafWriterContext* context) { return aafkit::fileOf(*context->header); }

bool isSpeedEffect(uint32_t effectType) { return effectType == kEffectSpeed || effectType == kEffectSpeedAlternate; }

const aafUID_t& operationFor(uint32_t effectType) {
    switch (effectType) {
    case kEffectGain: return kAAFOperationDef_MonoAudioGain;
    case kEffectPan: return kAAFOperationDef_MonoAudioPan;
    case kEffectSuperimpose: return kAAFOperationDef_Superimpose;
    case kEffectSpeed: return kAAFOperationDef_VideoSpeedControl;
    case kEffectSpeedAlternate: return kAAFOperationDef_SpeedAlternate;
    default: return kAAFOperationDef_Unknown;
    }
}

const aafUID_t& parameterFor(const Effect& effect) {
    switch (effect.effectType) {
    case kEffectGain: return effect.params.size() > 1 ? avidVarVolumeParam : kAAFParameterDefAmplitude;
    case kEffectPan: return avidVarPanParam;
    case kEffectSuperimpose: return kAAFParameterDef_Opacity;
    default: return kAAFParameterDefAmplitude;  // speed effects write their own two
    }
}

std::vector<uint8_t> rationalBytes(const aafRational_t& value) {
    std::vector<uint8_t> bytes(8);
    for (int i = 0; i < 4; ++i) {
        bytes[i] = uint8_t(uint32_t(value.numerator) >> (8 * i));
        bytes[4 + i] = uint8_t(uint32_t(value.denominator) >> (8 * i));
    }
    return bytes;
}

std::vector<uint8_t> int32Bytes(int32_t value) {
    std::vector<uint8_t> bytes(4);
    for (int i = 0; i < 4; ++i) bytes[i] = uint8_t(uint32_t(value) >> (8 * i));
    return bytes;
}

bool definitionId(const Object& definition, aafUID_t& out) {
    return aafkit::getAuid(definition, PID_DefinitionObject_Identification, out) == AAFRESULT_SUCCESS;
}

// The value type a parameter definition names.
bool parameterType(const Object& definition, aafUID_t& out) {
    return aafkit::getReferencedId(definition, PID_ParameterDefinition_Type, out) == AAFRESULT_SUCCESS;
}

bool declaresParameter(const Object& operationDef, const aafUID_t& parameterId) {
    const aafkit::Property* defined = operationDef.find(PID_OperationDefinition_ParametersDefined);
    if (!defined) return false;
    uint8_t key[16];
    aafkit::encodeAuid(parameterId, key);
    for (const aafkit::WeakReference& reference : defined->weak())
        if (reference.key == std::vector<uint8_t>(key, key + 16)) return true;
    return false;
}

AAFRESULT getParamDefinition(Object& operationDef, const aafUID_t& typeId, const aafUID_t& parameterId,
                             const wchar_t* name, Object*& result, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    if (declaresParameter(operationDef, parameterId))
        return aafkit::lookupDefinition(file, PID_Dictionary_ParameterDefinitions, parameterId, result);
    if (!file.model().findType(typeId)) {
        REPORT_ERROR(AAFRESULT_TYPE_NOT_FOUND);
        return AAFRESULT_TYPE_NOT_FOUND;
    }
    Object* definition = nullptr;
    if (aafkit::lookupDefinition(file, PID_Dictionary_ParameterDefinitions, parameterId, definition) !=
        AAFRESULT_SUCCESS) {
        Object& created = aafkit::newDefinition(file, AUID_AAFParameterDefinition, parameterId, name ? name : L"", L"");
        aafkit::setTypeReference(created, PID_ParameterDefinition_Type, typeId);
        aafkit::setString(created, PID_ParameterDefinition_DisplayUnits, L"");
        definition = &aafkit::registerDefinition(file, PID_Dictionary_ParameterDefinitions, created);
    }
    AAFRESULT declared = aafkit::addWeakReference(operationDef, PID_OperationDefinition_ParametersDefined,
                                                  aafkit::StoredForm::WeakRefSet, *definition);
    if (declared != AAFRESULT_SUCCESS) {
        REPORT_ERROR(declared);
        return declared;
    }
    result = definition;
    return AAFRESULT_SUCCESS;
}

// A new parameter object of the definition's identifier, and the value type it names.
AAFRESULT createParameter(aafkit::File& file, const aafUID_t& classId, const Object& definition, Object*& result,
                          aafUID_t& valueType) {
    if (!parameterType(definition, valueType)) {
        REPORT_ERROR(AAFRESULT_TYPE_NOT_FOUND);
        return AAFRESULT_TYPE_NOT_FOUND;
    }
    aafUID_t id;
    result = file.create(classId);
    if (!result || !definitionId(definition, id)) {
        REPORT_ERROR(AAFRESULT_INVALID_PARAM);
        return AAFRESULT_INVALID_PARAM;
    }
    aafkit::setAuid(*result, PID_Parameter_Definition, id);
    return AAFRESULT_SUCCESS;
}

AAFRESULT createConstParam(aafkit::File& file, const Object& definition, Object*& result,
                           const std::vector<uint8_t>& value) {
    aafUID_t type;
    AAFRESULT created = createParameter(file, AUID_AAFConstantValue, definition, result, type);
    if (created != AAFRESULT_SUCCESS) return created;
    aafkit::setIndirect(*result, PID_ConstantValue_Value, type, value.data(), value.size());
    return AAFRESULT_SUCCESS;
}

void addParameter(Object& group, Object& parameter) {
    AAFRESULT added = aafkit::addToSet(group, PID_OperationGroup_Parameters, parameter);
    if (added != AAFRESULT_SUCCESS) REPORT_ERROR(added);
}

void addConstParam(Object& group, Object& operationDef, const aafUID_t& typeId, const aafUID_t& parameterId,
                   const wchar_t* name, const std::vector<uint8_t>& value, AafWriterContext* context) {
    Object* definition = nullptr;
    Object* parameter = nullptr;
    if (getParamDefinition(operationDef, typeId, parameterId, name, definition, context) != AAFRESULT_SUCCESS ||
        createConstParam(fileOf(context), *definition, parameter, value) != AAFRESULT_SUCCESS)
        return;
    addParameter(group, *parameter);
}

Object& linearInterpolation(aafkit::File& file) {
    Object* interpolation = nullptr;
    if (aafkit::lookupDefinition(file, PID_Dictionary_InterpolationDefinitions, LinearInterpolator, interpolation) ==
        AAFRESULT_SUCCESS)
        return *interpolation;
    Object& created = aafkit::newDefinition(file, AUID_AAFInterpolationDefinition, LinearInterpolator,
                                           L"LinearInterp", L"Linear keyframe interpolation");
    return aafkit::registerDefinition(file, PID_Dictionary_InterpolationDefinitions, created);
}

void addOpacityProperties(Object& varyingValue) {
    aafkit::File& file = aafkit::fileOf(varyingValue);
    const auto* extrapolation = aafkit::registerOptionalProperty(
        file, AUID_AAFVaryingValue, kVValExtrapolationPropertyID, "VVal_Extrapolation", kAAFTypeID_AUID);
    if (!extrapolation) {
        REPORT_ERROR(AAFRESULT_TYPE_NOT_FOUND);
        return;
    }
    aafkit::setAuid(varyingValue, extrapolation->pid, kVValExtrapolationValue);
    const auto* fieldCount = aafkit::registerOptionalProperty(file, AUID_AAFVaryingValue, kVValFieldCountPropertyID,
                                                              "VVal_FieldCount", kAAFTypeID_Int16);
    if (!fieldCount) {
        REPORT_ERROR(AAFRESULT_TYPE_NOT_FOUND);
        return;
    }
    aafkit::setInt16(varyingValue, fieldCount->pid, kVValFieldCountPropValue);
}

// A curve: one control point per key frame, at the key frame's fraction of the effect.
AAFRESULT createVaryingParam(const Effect& effect, const Object& definition, Object*& result,
                             AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    aafUID_t type;
    AAFRESULT created = createParameter(file, AUID_AAFVaryingValue, definition, result, type);
    if (created != AAFRESULT_SUCCESS) return created;
    aafkit::check(aafkit::setReference(*result, PID_VaryingValue_Interpolation, linearInterpolation(file)));
    result->ensure(PID_VaryingValue_PointList, aafkit::StoredForm::StrongRefVector);
    for (size_t i = 0; i < effect.keyFrames.size(); ++i) {
        Object& point = aafkit::createObject(file, AUID_AAFControlPoint);
        std::vector<uint8_t> value = rationalBytes(doubleToRatio(effect.params[i]));
        aafkit::setIndirect(point, PID_ControlPoint_Value, type, value.data(), value.size());
        aafkit::setRational(point, PID_ControlPoint_Time, doubleToRatio(effect.keyFrames[i]));
        aafkit::check(aafkit::appendObject(*result, PID_VaryingValue_PointList, point));
    }
    if (effect.effectType == kEffectSuperimpose) addOpacityProperties(*result);
    return AAFRESULT_SUCCESS;
}

void addSpeedParams(Object& group, Object& operationDef, const Effect& effect, AafWriterContext* context) {
    const aafRational_t ratio = {truncateToInt32(effect.params[0] * 1001.0), 1001};
    addConstParam(group, operationDef, kAAFTypeID_Rational, kAAFParameterDef_SpeedRatio, L"SpeedRatio",
                  rationalBytes(ratio), context);
    const int32_t phase = effect.params.size() > 1 ? truncateToInt32(effect.params[1]) : 0;
    addConstParam(group, operationDef, kAAFTypeID_Int32, kAAFParameterDef_AvidPhase, L"AvidPhase",
                  int32Bytes(phase), context);
}

// Speed effects write a ratio and a phase; the others one value, constant below two
// key frames, else a curve. The parameter was chosen by value count, the form is
// chosen by key-frame count.
void addEffectParam(Object& group, Object& operationDef, const Effect& effect, const aafUID_t& parameterId,
                    AafWriterContext* context) {
    if (isSpeedEffect(effect.effectType)) {
        addSpeedParams(group, operationDef, effect, context);
        return;
    }
    Object* definition = nullptr;
    if (getParamDefinition(operationDef, kAAFTypeID_Rational, parameterId, L"", definition, context) !=
        AAFRESULT_SUCCESS)
        return;
    Object* parameter = nullptr;
    AAFRESULT made = effect.keyFrames.size() < 2
                         ? createConstParam(fileOf(context), *definition, parameter,
                                            rationalBytes(doubleToRatio(effect.params[0])))
                         : createVaryingParam(effect, *definition, parameter, context);
    if (made == AAFRESULT_SUCCESS) addParameter(group, *parameter);
}

void appendInputSegment(Object& group, Object& segment) {
    aafkit::check(aafkit::appendObject(group, PID_OperationGroup_InputSegments, segment));
}

// The clip an effect covers, scaled by the effect's speed factor.
void appendCoveredClip(const Effect& effect, const TrackClip& clip, double factor, const aafUID_t& dataDef,
                       Object& group, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    const aafSourceRef_t reference = {context->clips.at(clip.clipIndex - 1).masterMobId, clip.slotId,
                                      truncateToInt64(double(clip.inPoint) / factor)};
    Object& sourceClip =
        aafkit::createSourceClip(file, dataDef, truncateToInt64(double(effect.length) / factor), reference);
    if (!isSpeedEffect(effect.effectType)) {
        appendInputSegment(group, sourceClip);
        return;
    }
    Object& wrapping = aafkit::createSequence(file, dataDef);
    aafkit::appendComponent(wrapping, sourceClip);
    if (effect.speed != -1.0) addSpeedAttributes(wrapping, group, effect.speed, context);
    appendInputSegment(group, wrapping);
}

// Speed effects scale what they cover; -1 means no scaling.
double speedFactor(const Effect& effect) { return effect.speed == -1.0 ? 1.0 : effect.speed; }

void appendScopeInput(const Effect& effect, double factor, const aafUID_t& dataDef, Object& group,
                      AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    Object& scope = aafkit::createScopeReference(file, dataDef, 1, 1);
    aafkit::setInt64(scope, PID_Component_Length, truncateToInt64(double(effect.length) / factor));
    Object& sequence = aafkit::createSequence(file, dataDef);
    aafkit::appendComponent(sequence, scope);
    appendInputSegment(group, sequence);
}

}  // namespace

Object& loadEffectDefinition(const aafUID_t& operationId, int numInputs, bool isVideo, AafWriterContext* context) {
    aafkit::File& file = fileOf(context);
    Object* known = nullptr;
    if (aafkit::lookupDefinition(file, PID_Dictionary_OperationDefinitions, operationId, known) == AAFRESULT_SUCCESS)
        return *known;
    const wchar_t* name = isVideo ? L"Video Effect" : L"Audio Effect";
    Object& definition = aafkit::registerDefinition(
        file, PID_Dictionary_OperationDefinitions,
        aafkit::newDefinition(file, AUID_AAFOperationDefinition, operationId, name, name));
    aafkit::setUInt8(definition, PID_OperationDefinition_IsTimeWarp, 0);
    aafkit::setUInt32(definition, PID_OperationDefinition_Bypass, 1);
    aafkit::setInt32(definition, PID_OperationDefinition_NumberInputs, numInputs);
    Object* dataDef = nullptr;
    aafkit::check(aafkit::lookupDefinition(file, PID_Dictionary_DataDefinitions,
                                           isVideo ? kAAFDataDef_Picture : kAAFDataDef_Sound, dataDef));
    aafkit::check(aafkit::setReference(definition, PID_OperationDefinition_DataDefinition, *dataDef));
    return definition;
}

namespace {

// One effect of a chain of effects over effects, between opening and closing it.
struct OpenEffect {
    Effect* effect;
    Object* group;
    Object* operationDef;
    Object* into;    // the sequence the group is appended to
    Object* nested;  // the sequence holding the effect it covers, if it covers one
};

// The operation group of the effect at `eventIndex`, and its scope input for a composite.
OpenEffect openEffect(const Track& track, int eventIndex, Effect* effect, Object& into, AafWriterContext* context) {
    const aafUID_t& dataDef = track.isVideo ? kAAFDataDef_Picture : kAAFDataDef_Sound;
    Object& operationDef = loadEffectDefinition(operationFor(effect->effectType), int(effect->numInputs),
                                                track.isVideo, context);
    Object& group = aafkit::createOperationGroup(fileOf(context), dataDef, effect->length, operationDef);
    if (eventIndex < 1) throw int(AAFRESULT_INVALID_PARAM);  // nothing before it to cover
    if (effect->effectType == kEffectSuperimpose)
        appendScopeInput(*effect, speedFactor(*effect), dataDef, group, context);
    return {effect, &group, &operationDef, &into, nullptr};
}

}  // namespace

// Effects over effects nest one operation group inside the next. The chain is walked
// in a loop, not by recursion: a host's track may hold any number of them.
void appendPTEffect(int trackIndex, int eventIndex, Effect* effect, Object& sequence, AafWriterContext* context) {
    const Track& track = context->sequence.tracks[trackIndex];
    const aafUID_t& dataDef = track.isVideo ? kAAFDataDef_Picture : kAAFDataDef_Sound;
    std::vector<OpenEffect> chain;
    Object* into = &sequence;
    for (;;) {
        chain.push_back(openEffect(track, eventIndex, effect, *into, context));
        TrackEvent* covered = track.events[eventIndex - 1];
        if (covered->getType() == kEventClip) {
            appendCoveredClip(*effect, *static_cast<TrackClip*>(covered), speedFactor(*effect), dataDef,
                              *chain.back().group, context);
            break;
        }
        if (covered->getType() != kEventEffect) throw int(AAFRESULT_INVALID_EFFECTARG);  // a filler or a transition
        into = chain.back().nested = &aafkit::createSequence(fileOf(context), dataDef);
        effect = static_cast<Effect*>(covered);
        --eventIndex;
    }
    // Closed innermost first: each group holds the one it covers before its own parameters.
    for (auto level = chain.rbegin(); level != chain.rend(); ++level) {
        if (level->nested) appendInputSegment(*level->group, *level->nested);
        addEffectParam(*level->group, *level->operationDef, *level->effect, parameterFor(*level->effect), context);
        aafkit::appendComponent(*level->into, *level->group);
    }
}

#include "OperationReader.h"

#include "ObjectText.h"
#include "aafkit/Dictionary.h"
#include "aafkit/File.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

const aafUID_t kAudioChannelCombiner = {
    0x6b46dd7a, 0x132d, 0x4856, {0xab, 0x21, 0x8b, 0x75, 0x1d, 0x84, 0x62, 0xec}};

namespace {

int32_t int32At(const uint8_t* bytes) {
    return int32_t(uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 | uint32_t(bytes[3]) << 24);
}

// Parameter values are 32-bit integers or rationals in every file editors write.
bool numberOf(const Object& holder, uint16_t pid, double& out) {
    std::vector<uint8_t> bytes;
    if (aafkit::getIndirectValue(holder, pid, bytes) != AAFRESULT_SUCCESS) return false;
    if (bytes.size() == 4) {
        out = int32At(bytes.data());
        return true;
    }
    if (bytes.size() == 8 && int32At(bytes.data() + 4) != 0) {
        out = double(int32At(bytes.data())) / int32At(bytes.data() + 4);
        return true;
    }
    return false;
}

// A definition's identification and name, through the dictionary set `setPid`. Operation
// groups refer to theirs by weak reference, parameters by the definition's AUID.
void definitionOf(const Object& holder, uint16_t pid, uint16_t setPid, aafUID_t& id, std::string& name) {
    Object* definition = nullptr;
    if (aafkit::getReferencedId(holder, pid, id) != AAFRESULT_SUCCESS &&
        aafkit::getAuid(holder, pid, id) != AAFRESULT_SUCCESS)
        return;
    if (aafkit::lookupDefinition(aafkit::fileOf(holder), setPid, id, definition) == AAFRESULT_SUCCESS && definition)
        name = textOf(*definition, PID_DefinitionObject_Name);
}

void readKeyFrames(const Object& varying, Parameter& parameter) {
    Object* interpolation = nullptr;
    if (aafkit::getReferenced(varying, PID_VaryingValue_Interpolation, interpolation) == AAFRESULT_SUCCESS &&
        interpolation)
        parameter.interpolation = textOf(*interpolation, PID_DefinitionObject_Name);
    for (const Object* point : objectsOf(varying, PID_VaryingValue_PointList)) {
        const aafRational_t time = rationalOf(*point, PID_ControlPoint_Time);
        KeyFrame frame;
        frame.time = time.denominator ? double(time.numerator) / time.denominator : 0.0;
        if (numberOf(*point, PID_ControlPoint_Value, frame.value)) parameter.keyFrames.push_back(frame);
    }
    if (!parameter.keyFrames.empty()) parameter.value = parameter.keyFrames.front().value;
}

Parameter readParameter(const Object& object) {
    Parameter parameter;
    definitionOf(object, PID_Parameter_Definition, PID_Dictionary_ParameterDefinitions, parameter.id, parameter.name);
    parameter.varying = object.isA(AUID_AAFVaryingValue);
    if (parameter.varying)
        readKeyFrames(object, parameter);
    else
        numberOf(object, PID_ConstantValue_Value, parameter.value);
    return parameter;
}

}  // namespace

Operation readOperation(const Object& group) {
    Operation operation;
    definitionOf(group, PID_OperationGroup_Operation, PID_Dictionary_OperationDefinitions, operation.id,
                 operation.name);
    Object* definition = nullptr;
    uint8_t timeWarp = 0;
    if (aafkit::lookupDefinition(aafkit::fileOf(group), PID_Dictionary_OperationDefinitions, operation.id,
                                 definition) == AAFRESULT_SUCCESS &&
        definition && aafkit::getUInt8(*definition, PID_OperationDefinition_IsTimeWarp, timeWarp) == AAFRESULT_SUCCESS)
        operation.timeWarp = timeWarp != 0;
    for (const Object* parameter : objectsOf(group, PID_OperationGroup_Parameters))
        operation.parameters.push_back(readParameter(*parameter));
    return operation;
}

const Parameter* Operation::find(const aafUID_t& parameterId) const {
    for (const Parameter& parameter : parameters)
        if (parameter.id == parameterId) return &parameter;
    return nullptr;
}

}  // namespace composition

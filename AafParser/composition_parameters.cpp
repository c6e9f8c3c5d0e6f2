#include <cstring>
#include <cwchar>

#include "aafbridge/aaf_writer.h"
#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/EditorIds.h"
#include "aafkit/meta/Ids.h"
#include "composition.h"

namespace {
constexpr char kErrorSource[] = "AafParser/composition";

int32_t int32At(const uint8_t* bytes) {
    return int32_t(uint32_t(bytes[0]) | uint32_t(bytes[1]) << 8 | uint32_t(bytes[2]) << 16 |
                   uint32_t(bytes[3]) << 24);
}

bool isTakenParameter(const aafUID_t& id) {
    const aafUID_t taken[] = {kAAFParameterDef_Amplitude, kAAFParameterDef_Pan, kAAFParameterDef_Opacity,
                              kAAFParameterDef_Ratio,     avidVarVolumeParam,   avidVarPanParam};
    for (const aafUID_t& candidate : taken)
        if (candidate == id) return true;
    return false;
}

// The parameter's definition as the dictionary holds it, then that definition's identifier.
AAFRESULT parameterDefinitionId(const Object& parameter, aafUID_t& id) {
    aafUID_t definitionId = {};
    AAFRESULT result = requiredProperty(aafkit::getAuid(parameter, PID_Parameter_Definition, definitionId),
                                        parameter, PID_Parameter_Definition);
    Object* definition = nullptr;
    if (AAF_FAILED(result) ||
        AAF_FAILED(result = aafkit::lookupDefinition(aafkit::fileOf(parameter), PID_Dictionary_ParameterDefinitions,
                                                     definitionId, definition)) ||
        AAF_FAILED(result = aafkit::getAuid(*definition, PID_DefinitionObject_Identification, id)))
        return result;
    return AAFRESULT_SUCCESS;
}

// GetValueBufLen: the value's size in memory; strings widen to wchar_t, other values keep
// their stored size.
AAFRESULT valueBufLen(const Object& holder, uint16_t pid, size_t& size) {
    aafUID_t typeId = {};
    std::vector<uint8_t> value;
    AAFRESULT result = aafkit::getIndirectType(holder, pid, typeId);
    if (result == AAFRESULT_SUCCESS) result = aafkit::getIndirectValue(holder, pid, value);
    if (result != AAFRESULT_SUCCESS) return result;
    const aafkit::meta::TypeDef* type = holder.store().model().findType(typeId);
    if (!type) return AAFRESULT_TYPE_NOT_FOUND;
    const bool isString = type->kind == aafkit::meta::TypeKind::String;
    size = isString ? value.size() / 2 * sizeof(wchar_t) : value.size();
    return AAFRESULT_SUCCESS;
}

// GetValue into a buffer of exactly `size` bytes (4 or 8); the read counts only when the
// stored value fills it.
AAFRESULT readValue(const Object& holder, uint16_t pid, size_t size, std::vector<uint8_t>& out) {
    AAFRESULT result = aafkit::getIndirectValue(holder, pid, out);
    if (result != AAFRESULT_SUCCESS) return result;
    if (out.size() > size) return AAFRESULT_SMALLBUF;
    if (out.size() < size) return AAFRESULT_ILLEGAL_VALUE;
    return AAFRESULT_SUCCESS;
}

// GetValueBufLen, then GetValue for a value of 4 or 8 bytes. `bytes` stays empty when
// the size cannot be read or is any other; a failed read answers its code.
AAFRESULT readNumericValue(const Object& holder, uint16_t pid, std::vector<uint8_t>& bytes) {
    size_t size = 0;
    if (valueBufLen(holder, pid, size) != AAFRESULT_SUCCESS || (size != 4 && size != 8)) return AAFRESULT_SUCCESS;
    return readValue(holder, pid, size, bytes);
}

// Calls visit(parameter, definition id) for each parameter of the group until it answers
// false or a definition cannot be read. A group without parameters has none to visit.
template <class Visit>
void forEachParameter(const Object& group, Visit visit) {
    const std::vector<Object*>* parameters = nullptr;
    if (aafkit::getObjects(group, PID_OperationGroup_Parameters, parameters) != AAFRESULT_SUCCESS) return;
    for (Object* parameter : *parameters) {
        aafUID_t id = {};
        if (parameterDefinitionId(*parameter, id) != AAFRESULT_SUCCESS || !visit(*parameter, id)) return;
    }
}

// Appends the value when it is an integer or a rational.
void appendValue(const std::vector<uint8_t>& bytes, Effect& effect) {
    double value = 0.0;
    if (valueAsDouble(bytes, value)) effect.params.push_back(value);
}

}  // namespace

bool valueAsDouble(const std::vector<uint8_t>& bytes, double& out) {
    if (bytes.size() == 4) {
        out = double(int32At(bytes.data()));
        return true;
    }
    if (bytes.size() == 8) {
        out = rationalToDouble({int32At(bytes.data()), int32At(bytes.data() + 4)});
        return true;
    }
    return false;
}

AAFRESULT ProcessParameters(const Object& group, Effect& effect) {
    forEachParameter(group, [&](const Object& parameter, const aafUID_t& id) {
        if (!isTakenParameter(id)) return true;
        if (parameter.isA(AUID_AAFConstantValue)) return !AAF_FAILED(ProcessConstParam(parameter, effect));
        if (parameter.isA(AUID_AAFVaryingValue)) ProcessVarParam(parameter, effect);
        return true;
    });
    return AAFRESULT_SUCCESS;
}

AAFRESULT ProcessConstParam(const Object& constant, Effect& effect) {
    std::vector<uint8_t> bytes;
    if (AAF_FAILED(readNumericValue(constant, PID_ConstantValue_Value, bytes))) return kInvalidArgument;
    appendValue(bytes, effect);
    return AAFRESULT_SUCCESS;
}

AAFRESULT ProcessVarParam(const Object& varying, Effect& effect) {
    const std::vector<Object*>* points = nullptr;
    if (AAF_FAILED(requiredProperty(aafkit::getObjects(varying, PID_VaryingValue_PointList, points), varying,
                                    PID_VaryingValue_PointList)) ||
        !points)
        return AAFRESULT_SUCCESS;
    for (Object* point : *points) {
        aafRational_t time = {0, 0};
        if (AAF_FAILED(requiredProperty(aafkit::getRational(*point, PID_ControlPoint_Time, time), *point,
                                        PID_ControlPoint_Time)))
            return AAFRESULT_SUCCESS;
        // The time is kept as stored; a zero denominator gives an infinite or NaN time.
        effect.keyFrames.push_back(double(time.numerator) / double(time.denominator));
        std::vector<uint8_t> bytes;
        if (AAF_FAILED(readNumericValue(*point, PID_ControlPoint_Value, bytes))) return AAFRESULT_SUCCESS;
        appendValue(bytes, effect);
    }
    return AAFRESULT_SUCCESS;
}

AAFRESULT GetParamValue(const Object& group, const aafUID_t& parameterId, int32_t out[2]) {
    forEachParameter(group, [&](const Object& parameter, const aafUID_t& id) {
        if (id != parameterId || !parameter.isA(AUID_AAFConstantValue)) return true;
        std::vector<uint8_t> bytes;
        if (AAF_FAILED(readNumericValue(parameter, PID_ConstantValue_Value, bytes))) return false;
        if (!bytes.empty()) out[0] = int32At(bytes.data());
        if (bytes.size() == 8) out[1] = int32At(bytes.data() + 4);
        return true;
    });
    return AAFRESULT_SUCCESS;
}

// Component attributes: named integers that Avid-family editors keep on components.
// Speed effects over a clip carry the play rate and how the motion is rendered.
#include <string>

#include "aaf_composition.h"
#include "aafkit/Builders.h"
#include "aafkit/Dictionary.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/meta/MetaModel.h"
#include "context.h"

using aafkit::Object;

namespace {

constexpr char kErrorSource[] = "AAFWriter/aaf_composition";

const aafUID_t kTaggedValueStrongReferenceTypeID = {0x05021a00, 0x0000, 0x0000,
                                                    {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x04, 0x01, 0x01}};
const aafUID_t kTaggedValueVariableArrayTypeID = {0x05060800, 0x0000, 0x0000,
                                                  {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x04, 0x01, 0x01}};
const aafUID_t kComponentAttributesPropertyID = {0x60958184, 0x47b1, 0x11d4,
                                                 {0xa0, 0x1c, 0x00, 0x04, 0xac, 0x96, 0x9f, 0x50}};

const wchar_t* const kTaggedValueTag[2] = {L"_MIXMATCH_RATE_NUM", L"_MIXMATCH_RATE_DENOM"};
const wchar_t* const kOpTaggedValueTag[2] = {L"_SFX_RENDER", L"_MIXMATCH_MOTIONADAPTER"};
const int32_t kOpTaggedValueValue[2] = {4, 2};

// A reference type names its target class, an array type its element type.
void declareType(aafkit::meta::MetaModel& model, const aafUID_t& id, const char* name, aafkit::meta::TypeKind kind,
                 const aafUID_t& targetOrElement) {
    aafkit::meta::TypeDef type;
    type.id = id;
    type.name = name;
    type.kind = kind;
    (kind == aafkit::meta::TypeKind::StrongRef ? type.target : type.element) = targetOrElement;
    model.declareType(type);
}

// The two types and the Component property the attribute lists need. Registering a
// type that the file already knows keeps the first definition.
const aafkit::meta::PropertyDef* registerAttributeList(aafkit::File& file) {
    declareType(file.model(), kTaggedValueStrongReferenceTypeID, "TaggedValueStrongReference",
                aafkit::meta::TypeKind::StrongRef, AUID_AAFTaggedValue);
    declareType(file.model(), kTaggedValueVariableArrayTypeID, "TaggedValueStrongReferenceVector",
                aafkit::meta::TypeKind::VariableArray, kTaggedValueStrongReferenceTypeID);
    return aafkit::registerOptionalProperty(file, AUID_AAFComponent, kComponentAttributesPropertyID,
                                            "ComponentAttributeList", kTaggedValueVariableArrayTypeID);
}

// Always two attributes, replacing any list the object had.
AAFRESULT createTaggedValueVA(const aafkit::meta::PropertyDef& property, const wchar_t* const* names,
                              const int32_t* values, Object& object) {
    aafkit::File& file = aafkit::fileOf(object);
    std::vector<Object*> attributes;
    for (int i = 0; i < 2; ++i) {
        Object* attribute = file.create(AUID_AAFTaggedValue);
        if (!attribute) {
            REPORT_ERROR(AAFRESULT_INVALID_PARAM);
            return AAFRESULT_INVALID_PARAM;
        }
        aafkit::setString(*attribute, PID_TaggedValue_Name, names[i]);
        const uint8_t value[4] = {uint8_t(values[i]), uint8_t(values[i] >> 8), uint8_t(values[i] >> 16),
                                  uint8_t(uint32_t(values[i]) >> 24)};
        aafkit::setIndirect(*attribute, PID_TaggedValue_Value, kAAFTypeID_Int32, value, sizeof value);
        attributes.push_back(attribute);
    }
    object.remove(property.pid);
    for (Object* attribute : attributes) {
        AAFRESULT appended = aafkit::appendObject(object, property.pid, *attribute);
        if (appended != AAFRESULT_SUCCESS) {
            REPORT_ERROR(appended);
            return appended;
        }
    }
    return AAFRESULT_SUCCESS;
}

}  // namespace

void addSpeedAttributes(Object& wrappingSequence, Object& operationGroup, double speed, AafWriterContext* context) {
    const aafkit::meta::PropertyDef* property = registerAttributeList(aafkit::fileOf(operationGroup));
    if (!property) {
        REPORT_ERROR(AAFRESULT_TYPE_NOT_FOUND);
        return;
    }
    // The play rate of the material at this speed, whole or NTSC-style as edit rates are.
    aafRational_t rate = getEditRate(context->sequence.frameRate / speed);
    const int32_t rateValues[2] = {rate.numerator, rate.denominator};
    if (createTaggedValueVA(*property, kTaggedValueTag, rateValues, wrappingSequence) != AAFRESULT_SUCCESS) return;
    createTaggedValueVA(*property, kOpTaggedValueTag, kOpTaggedValueValue, operationGroup);
}

#include "ObjectText.h"


#include "aafkit/File.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/meta/MetaModel.h"
#include "aafkit/om/Values.h"

namespace composition {

using aafkit::Object;

std::string textOf(const Object& o, uint16_t pid) {
    std::wstring text;
    if (aafkit::getString(o, pid, text) != AAFRESULT_SUCCESS) return {};
    return aafkit::wideToUtf8(text);
}

int64_t int64Of(const Object& o, uint16_t pid, int64_t fallback) {
    int64_t value = 0;
    return aafkit::getInt64(o, pid, value) == AAFRESULT_SUCCESS ? value : fallback;
}

uint32_t uint32Of(const Object& o, uint16_t pid, uint32_t fallback) {
    uint32_t value = 0;
    return aafkit::getUInt32(o, pid, value) == AAFRESULT_SUCCESS ? value : fallback;
}

aafRational_t rationalOf(const Object& o, uint16_t pid) {
    aafRational_t value = {0, 1};
    return aafkit::getRational(o, pid, value) == AAFRESULT_SUCCESS ? value : aafRational_t{0, 1};
}

aafRational_t slotEditRate(const Object& slot) {
    return rationalOf(slot, slot.isA(AUID_AAFEventMobSlot) ? PID_EventMobSlot_EditRate : PID_TimelineMobSlot_EditRate);
}

const std::vector<Object*>& objectsOf(const Object& o, uint16_t pid) {
    static const std::vector<Object*> kNone;
    const std::vector<Object*>* objects = nullptr;
    return aafkit::getObjects(o, pid, objects) == AAFRESULT_SUCCESS && objects ? *objects : kNone;
}

uint16_t extensionPid(const Object& o, const aafUID_t& propertyId) {
    const aafkit::meta::PropertyDef* property = o.store().model().findPropertyById(propertyId);
    return property ? property->pid : 0;
}

namespace {

int64_t signedLittleEndian(const std::vector<uint8_t>& bytes) {
    uint64_t value = 0;
    for (size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
    const unsigned unused = unsigned(64 - 8 * bytes.size());
    return unused ? int64_t(value << unused) >> unused : int64_t(value);
}

}  // namespace

std::string indirectText(const Object& o, uint16_t pid) {
    aafUID_t typeId = {};
    std::vector<uint8_t> value;
    if (aafkit::getIndirectType(o, pid, typeId) != AAFRESULT_SUCCESS ||
        aafkit::getIndirectValue(o, pid, value) != AAFRESULT_SUCCESS)
        return {};
    const aafkit::meta::TypeDef* type = o.store().model().findType(typeId);
    using aafkit::meta::TypeKind;
    if (type && type->kind == TypeKind::String) {
        std::wstring text = aafkit::utf16ToWide(value.data(), value.size());
        while (!text.empty() && text.back() == L'\0') text.pop_back();
        return aafkit::wideToUtf8(text);
    }
    if (type && type->kind == TypeKind::Integer && !value.empty() && value.size() <= 8)
        return type->isSigned ? std::to_string(signedLittleEndian(value))
                              : std::to_string(uint64_t(signedLittleEndian(value)) &
                                               (value.size() == 8 ? ~0ull : (1ull << (8 * value.size())) - 1));
    return aafkit::hexText(value.data(), value.size());
}

std::string classNameOf(const Object& o) {
    const aafkit::meta::ClassDef* definition = o.store().model().findClass(o.classId());
    return definition ? definition->name : aafkit::auidToText(o.classId());
}

}  // namespace composition

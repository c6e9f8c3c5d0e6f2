#include "view/ValueText.h"

#include <cstdio>

#include "aafkit/om/Values.h"
#include "aafkit/meta/MetaModel.h"

using aafkit::meta::TypeDef;
using aafkit::meta::TypeKind;

namespace {

int64_t integerAt(const uint8_t* p, size_t size, bool isSigned) {
    uint64_t v = 0;
    for (size_t i = 0; i < size; ++i) v |= uint64_t(p[i]) << (8 * i);
    if (isSigned && size < 8 && (v >> (8 * size - 1)) & 1) v |= ~uint64_t(0) << (8 * size);
    return int64_t(v);
}

const TypeDef* resolved(const aafkit::File& file, const TypeDef* type) {
    for (int i = 0; type && type->kind == TypeKind::Rename && i < 8; ++i) type = file.model().findType(type->element);
    return type;
}

std::string auidText(const uint8_t* p) { return "{" + aafkit::auidToText(aafkit::decodeAuid(p)) + "}"; }

// Bytes a value of a fixed-size type takes, or 0 when its size varies.
size_t fixedSize(const aafkit::File& file, const TypeDef* type) {
    type = resolved(file, type);
    if (!type) return 0;
    if (type->kind == TypeKind::Integer) return type->size;
    if (type->kind == TypeKind::Enum) return fixedSize(file, file.model().findType(type->element));
    if (type->kind != TypeKind::Record) return 0;
    size_t total = 0;
    for (const auto& member : type->members) {
        const size_t size = fixedSize(file, file.model().findType(member.type));
        if (size == 0) return 0;
        total += size;
    }
    return total;
}

std::string dataText(const aafkit::File& file, const TypeDef* type, const std::vector<uint8_t>& data);

// Members by name, nested records in braces; AUIDs and MobIDs in their usual forms.
std::string recordText(const aafkit::File& file, const TypeDef& type, const std::vector<uint8_t>& data) {
    if (data.size() == 16 && type.name == "AUID") return auidText(data.data());
    if (data.size() == 32 && type.name == "MobIDType")
        return aafkit::mobIdToText(aafkit::decodeMobId(data.data()));
    if (fixedSize(file, &type) != data.size()) return aafkit::hexText(data.data(), data.size());
    std::string out;
    size_t offset = 0;
    for (const auto& member : type.members) {
        const TypeDef* memberType = file.model().findType(member.type);
        const size_t size = fixedSize(file, memberType);
        std::vector<uint8_t> part(data.begin() + long(offset), data.begin() + long(offset + size));
        const bool nested = resolved(file, memberType)->kind == TypeKind::Record;
        out += (out.empty() ? "" : " ") + member.name + "=" + (nested ? "{" : "") + dataText(file, memberType, part) +
               (nested ? "}" : "");
        offset += size;
    }
    return out;
}

std::string dataText(const aafkit::File& file, const TypeDef* type, const std::vector<uint8_t>& data) {
    type = resolved(file, type);
    if (!type) return aafkit::hexText(data.data(), data.size());
    switch (type->kind) {
    case TypeKind::Integer:
        if (data.size() == type->size) return std::to_string(integerAt(data.data(), type->size, type->isSigned));
        break;
    case TypeKind::Enum: {
        const TypeDef* element = resolved(file, file.model().findType(type->element));
        if (!element || data.size() != element->size) break;
        int64_t v = integerAt(data.data(), element->size, element->isSigned);
        for (const auto& m : type->members)
            if (m.value == v) return m.name;
        return std::to_string(v);
    }
    case TypeKind::ExtEnum:
        if (data.size() != 16) break;
        for (const auto& m : type->members) {
            uint8_t id[16];
            aafkit::encodeAuid(m.extValue, id);
            if (std::equal(id, id + 16, data.begin())) return m.name;
        }
        return auidText(data.data());
    case TypeKind::Record:
        return recordText(file, *type, data);
    case TypeKind::String:
        return "\"" + aafkit::wideToUtf8(aafkit::utf16ToWide(data.data(), data.size())) + "\"";
    case TypeKind::Indirect:
        if (data.size() >= 17) {
            const TypeDef* actual = file.model().findType(aafkit::decodeAuid(data.data() + 1));
            std::vector<uint8_t> value(data.begin() + 17, data.end());
            return (actual ? actual->name : auidText(data.data() + 1)) + " " + dataText(file, actual, value);
        }
        break;
    default:
        break;
    }
    return aafkit::hexText(data.data(), data.size());
}

}  // namespace

std::string className(const aafkit::Object& object) {
    return object.classDef() ? object.classDef()->name : "{" + aafkit::auidToText(object.classId()) + "}";
}

std::string propertyName(const aafkit::File& file, uint16_t pid) {
    const aafkit::meta::PropertyDef* p = file.model().findProperty(pid);
    char hex[8];
    std::snprintf(hex, sizeof hex, "%04x", unsigned(pid));
    return p ? p->name : std::string("Property-") + hex;
}

std::string valueText(const aafkit::File& file, const aafkit::Property& property) {
    const aafkit::meta::PropertyDef* def = file.model().findProperty(property.pid);
    const TypeDef* type = def ? file.model().findType(def->type) : nullptr;
    if (property.isWeak()) {
        std::string out;
        for (const aafkit::WeakReference& r : property.weakReferences()) {
            const aafkit::Object* target = file.resolve(r);
            out += (out.empty() ? "" : ", ") + std::string("-> ") +
                   (target ? className(*target) : std::string("unresolved")) + " " +
                   (r.key.size() == 16 ? auidText(r.key.data()) : aafkit::hexText(r.key.data(), r.key.size()));
        }
        return out;
    }
    if (property.storedForm() == aafkit::StoredForm::DataStream)
        return "stream of " + std::to_string(property.stream() ? property.stream()->size() : 0) + " bytes";
    return dataText(file, type, property.data);
}

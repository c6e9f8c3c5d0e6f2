#include "Values.h"

#include <algorithm>

#include "../ResultCodes.h"
#include "ObjectStore.h"
#include "SetKey.h"

namespace aafkit {

namespace {

constexpr size_t kIndirectHeader = 17;  // byte order, then the value's type AUID

AAFRESULT dataOf(const Object& o, uint16_t pid, const Bytes*& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    if (p->storedForm() != StoredForm::Data) return AAFRESULT_BAD_PROP;
    out = &p->data;
    return AAFRESULT_SUCCESS;
}

template <typename T>
AAFRESULT getInteger(const Object& o, uint16_t pid, T& out) {
    const Bytes* data = nullptr;
    if (AAFRESULT r = dataOf(o, pid, data)) return r;
    if (data->size() != sizeof(T)) return AAFRESULT_BAD_SIZE;
    uint64_t v = 0;
    for (size_t i = 0; i < sizeof(T); ++i) v |= uint64_t((*data)[i]) << (8 * i);
    out = T(v);
    return AAFRESULT_SUCCESS;
}

template <typename T>
void setInteger(Object& o, uint16_t pid, T v) {
    std::vector<uint8_t> bytes(sizeof(T));
    for (size_t i = 0; i < sizeof(T); ++i) bytes[i] = uint8_t(uint64_t(v) >> (8 * i));
    setBytes(o, pid, std::move(bytes));
}

AAFRESULT fixedBytes(const Object& o, uint16_t pid, size_t size, const uint8_t*& out) {
    const Bytes* data = nullptr;
    if (AAFRESULT r = dataOf(o, pid, data)) return r;
    if (data->size() != size) return AAFRESULT_BAD_SIZE;
    out = data->data();
    return AAFRESULT_SUCCESS;
}

bool isHighSurrogate(uint32_t u) { return u >= 0xd800 && u <= 0xdbff; }
bool isLowSurrogate(uint32_t u) { return u >= 0xdc00 && u <= 0xdfff; }

int32_t int32At(const uint8_t* p) {
    return int32_t(uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24);
}

}  // namespace

AAFRESULT getUInt8(const Object& o, uint16_t pid, uint8_t& out) { return getInteger(o, pid, out); }
AAFRESULT getUInt16(const Object& o, uint16_t pid, uint16_t& out) { return getInteger(o, pid, out); }
AAFRESULT getUInt32(const Object& o, uint16_t pid, uint32_t& out) { return getInteger(o, pid, out); }
AAFRESULT getInt32(const Object& o, uint16_t pid, int32_t& out) { return getInteger(o, pid, out); }
AAFRESULT getInt64(const Object& o, uint16_t pid, int64_t& out) { return getInteger(o, pid, out); }

AAFRESULT getAuid(const Object& o, uint16_t pid, aafUID_t& out) {
    const uint8_t* p = nullptr;
    if (AAFRESULT r = fixedBytes(o, pid, 16, p)) return r;
    out = decodeAuid(p);
    return AAFRESULT_SUCCESS;
}

AAFRESULT getMobId(const Object& o, uint16_t pid, aafMobID_t& out) {
    const uint8_t* p = nullptr;
    if (AAFRESULT r = fixedBytes(o, pid, 32, p)) return r;
    out = decodeMobId(p);
    return AAFRESULT_SUCCESS;
}

AAFRESULT getRational(const Object& o, uint16_t pid, aafRational_t& out) {
    const uint8_t* p = nullptr;
    if (AAFRESULT r = fixedBytes(o, pid, 8, p)) return r;
    out.numerator = int32At(p);
    out.denominator = int32At(p + 4);
    return AAFRESULT_SUCCESS;
}

AAFRESULT getString(const Object& o, uint16_t pid, std::wstring& out) {
    const Bytes* data = nullptr;
    if (AAFRESULT r = dataOf(o, pid, data)) return r;
    out = utf16ToWide(data->data(), data->size());
    return AAFRESULT_SUCCESS;
}

AAFRESULT getBytes(const Object& o, uint16_t pid, std::vector<uint8_t>& out) {
    const Bytes* data = nullptr;
    if (AAFRESULT r = dataOf(o, pid, data)) return r;
    out = *data;
    return AAFRESULT_SUCCESS;
}

AAFRESULT getObject(const Object& o, uint16_t pid, Object*& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    if (p->storedForm() != StoredForm::StrongRef || p->objects().size() != 1) return AAFRESULT_BAD_PROP;
    out = p->objects()[0];
    return AAFRESULT_SUCCESS;
}

AAFRESULT getObjects(const Object& o, uint16_t pid, const std::vector<Object*>*& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    if (p->storedForm() != StoredForm::StrongRefVector && p->storedForm() != StoredForm::StrongRefSet)
        return AAFRESULT_BAD_PROP;
    out = &p->objects();
    return AAFRESULT_SUCCESS;
}

Object* strongChild(const Object* parent, uint16_t pid) {
    Object* child = nullptr;
    return parent && getObject(*parent, pid, child) == AAFRESULT_SUCCESS ? child : nullptr;
}

AAFRESULT getStream(const Object& o, uint16_t pid, const StreamContent*& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    if (p->storedForm() != StoredForm::DataStream || !p->stream()) return AAFRESULT_BAD_PROP;
    out = p->stream();
    return AAFRESULT_SUCCESS;
}

AAFRESULT getReferenced(const Object& o, uint16_t pid, Object*& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    WeakReference reference;
    if (!p->weakReference(reference)) return AAFRESULT_BAD_PROP;
    Object* target = o.store().resolve(reference);
    if (!target) return AAFRESULT_OBJECT_NOT_FOUND;
    out = target;
    return AAFRESULT_SUCCESS;
}

AAFRESULT getReferencedId(const Object& o, uint16_t pid, aafUID_t& out) {
    const Property* p = o.find(pid);
    if (!p) return AAFRESULT_PROP_NOT_PRESENT;
    WeakReference reference;
    if (!p->weakReference(reference) || reference.key.size() != 16) return AAFRESULT_BAD_PROP;
    out = decodeAuid(reference.key.data());
    return AAFRESULT_SUCCESS;
}

AAFRESULT getIndirectType(const Object& o, uint16_t pid, aafUID_t& type) {
    const Bytes* data = nullptr;
    if (AAFRESULT r = dataOf(o, pid, data)) return r;
    if (data->size() < kIndirectHeader) return AAFRESULT_BAD_SIZE;
    const uint8_t order = (*data)[0];
    if (order != 'L' && order != 'B') return AAFRESULT_ILLEGAL_VALUE;
    uint8_t id[16];
    std::copy(data->begin() + 1, data->begin() + 17, id);
    if (order == 'B') {  // Data1..3 were stored big-endian
        std::reverse(id, id + 4);
        std::reverse(id + 4, id + 6);
        std::reverse(id + 6, id + 8);
    }
    type = decodeAuid(id);
    return AAFRESULT_SUCCESS;
}

AAFRESULT getIndirectValue(const Object& o, uint16_t pid, std::vector<uint8_t>& value) {
    aafUID_t type;
    if (AAFRESULT r = getIndirectType(o, pid, type)) return r;
    const Bytes& data = o.find(pid)->data;
    value.assign(data.begin() + kIndirectHeader, data.end());
    return AAFRESULT_SUCCESS;
}

void setUInt8(Object& o, uint16_t pid, uint8_t v) { setInteger(o, pid, v); }
void setUInt16(Object& o, uint16_t pid, uint16_t v) { setInteger(o, pid, v); }
void setUInt32(Object& o, uint16_t pid, uint32_t v) { setInteger(o, pid, v); }
void setInt16(Object& o, uint16_t pid, int16_t v) { setInteger(o, pid, v); }
void setInt32(Object& o, uint16_t pid, int32_t v) { setInteger(o, pid, v); }
void setInt64(Object& o, uint16_t pid, int64_t v) { setInteger(o, pid, v); }

void setAuid(Object& o, uint16_t pid, const aafUID_t& v) {
    std::vector<uint8_t> bytes(16);
    encodeAuid(v, bytes.data());
    setBytes(o, pid, std::move(bytes));
}

void setMobId(Object& o, uint16_t pid, const aafMobID_t& v) {
    std::vector<uint8_t> bytes(32);
    encodeMobId(v, bytes.data());
    setBytes(o, pid, std::move(bytes));
}

void setRational(Object& o, uint16_t pid, const aafRational_t& v) {
    std::vector<uint8_t> bytes(8);
    for (int i = 0; i < 4; ++i) {
        bytes[i] = uint8_t(uint32_t(v.numerator) >> (8 * i));
        bytes[4 + i] = uint8_t(uint32_t(v.denominator) >> (8 * i));
    }
    setBytes(o, pid, std::move(bytes));
}

void setString(Object& o, uint16_t pid, const std::wstring& v) { setBytes(o, pid, wideToUtf16(v)); }

void setBytes(Object& o, uint16_t pid, std::vector<uint8_t> v) {
    Property& p = o.ensure(pid, StoredForm::Data);
    p.form = uint16_t(StoredForm::Data);
    p.data = std::move(v);
}

void setTimeStamp(Object& o, uint16_t pid, const aafTimeStamp_t& v) {
    setBytes(o, pid, {uint8_t(v.year), uint8_t(uint16_t(v.year) >> 8), v.month, v.day, v.hour, v.minute,
                      v.second, v.fraction});
}

void setIndirect(Object& o, uint16_t pid, const aafUID_t& type, const void* value, size_t size) {
    std::vector<uint8_t> bytes(kIndirectHeader + size);
    bytes[0] = 'L';
    encodeAuid(type, bytes.data() + 1);
    if (size) std::copy_n(static_cast<const uint8_t*>(value), size, bytes.data() + kIndirectHeader);
    setBytes(o, pid, std::move(bytes));
}

void setStream(Object& o, uint16_t pid, std::unique_ptr<StreamContent> content) {
    Property& p = o.ensure(pid, StoredForm::DataStream);
    p.setStream(std::move(content));
}

AAFRESULT setObject(Object& o, uint16_t pid, Object& child) {
    if (child.container()) return AAFRESULT_OBJECT_ALREADY_ATTACHED;
    Property& p = o.ensure(pid, StoredForm::StrongRef);
    for (Object* old : p.objects()) old->attach(nullptr, 0);
    p.objects().assign(1, &child);
    child.attach(&o, pid);
    return AAFRESULT_SUCCESS;
}

AAFRESULT appendObject(Object& o, uint16_t pid, Object& child) {
    if (child.container()) return AAFRESULT_OBJECT_ALREADY_ATTACHED;
    o.ensure(pid, StoredForm::StrongRefVector).objects().push_back(&child);
    child.attach(&o, pid);
    return AAFRESULT_SUCCESS;
}

AAFRESULT addToSet(Object& o, uint16_t pid, Object& child) {
    if (child.container()) return AAFRESULT_OBJECT_ALREADY_ATTACHED;
    SetKey key;
    if (!setKeyOf(child, key)) return AAFRESULT_INVALID_PARAM;
    Property& p = o.ensure(pid, StoredForm::StrongRefSet);
    auto position = std::lower_bound(p.objects().begin(), p.objects().end(), key.bytes,
                                     [](const Object* element, const Bytes& k) {
                                         SetKey ek;
                                         setKeyOf(*element, ek);
                                         return ek.bytes < k;
                                     });
    if (position != p.objects().end()) {
        SetKey existing;
        if (setKeyOf(**position, existing) && existing.bytes == key.bytes) return AAFRESULT_INVALID_PARAM;
    }
    p.keyPid = key.keyPid;
    p.keySize = uint8_t(key.bytes.size());
    p.objects().insert(position, &child);
    child.attach(&o, pid);
    o.store().setsChanged();
    return AAFRESULT_SUCCESS;
}

AAFRESULT setReference(Object& o, uint16_t pid, const Object& target) {
    WeakReference reference;
    if (!o.store().referenceTo(target, reference)) return AAFRESULT_INVALID_PARAM;
    o.ensure(pid, StoredForm::WeakRef).setWeakReference(reference);
    return AAFRESULT_SUCCESS;
}

void setMetaReference(Object& o, uint16_t pid, uint16_t metaSetPid, const aafUID_t& id) {
    o.ensure(pid, StoredForm::WeakRef).setWeakReference(o.store().metaReference(metaSetPid, id));
}

std::wstring utf16ToWide(const uint8_t* bytes, size_t size) {
    std::wstring out;
    out.reserve(size / 2);
    size_t units = size / 2;
    while (units && bytes[2 * units - 2] == 0 && bytes[2 * units - 1] == 0) --units;  // terminator(s)
    for (size_t i = 0; i < units; ++i) {
        uint32_t u = uint32_t(bytes[2 * i]) | uint32_t(bytes[2 * i + 1]) << 8;
        if (sizeof(wchar_t) == 4 && isHighSurrogate(u) && i + 1 < units) {
            uint32_t low = uint32_t(bytes[2 * i + 2]) | uint32_t(bytes[2 * i + 3]) << 8;
            if (isLowSurrogate(low)) {
                out.push_back(wchar_t(0x10000 + ((u - 0xd800) << 10) + (low - 0xdc00)));
                ++i;
                continue;
            }
        }
        out.push_back(wchar_t(u));
    }
    return out;
}

std::vector<uint8_t> wideToUtf16(const std::wstring& text) {
    std::vector<uint8_t> out;
    out.reserve(2 * text.size() + 2);
    auto unit = [&out](uint32_t u) {
        out.push_back(uint8_t(u));
        out.push_back(uint8_t(u >> 8));
    };
    for (wchar_t c : text) {
        uint32_t cp = uint32_t(c);
        if (cp > 0xffff && cp <= 0x10ffff) {
            cp -= 0x10000;
            unit(0xd800 + (cp >> 10));
            unit(0xdc00 + (cp & 0x3ff));
        } else {
            unit(cp & 0xffff);
        }
    }
    unit(0);
    return out;
}

std::string wideToUtf8(const std::wstring& text) {
    std::string out;
    for (wchar_t c : text) {
        uint32_t cp = uint32_t(c);
        if (cp < 0x80) {
            out.push_back(char(cp));
        } else if (cp < 0x800) {
            out.push_back(char(0xc0 | (cp >> 6)));
            out.push_back(char(0x80 | (cp & 0x3f)));
        } else if (cp < 0x10000) {
            out.push_back(char(0xe0 | (cp >> 12)));
            out.push_back(char(0x80 | ((cp >> 6) & 0x3f)));
            out.push_back(char(0x80 | (cp & 0x3f)));
        } else {
            out.push_back(char(0xf0 | (cp >> 18)));
            out.push_back(char(0x80 | ((cp >> 12) & 0x3f)));
            out.push_back(char(0x80 | ((cp >> 6) & 0x3f)));
            out.push_back(char(0x80 | (cp & 0x3f)));
        }
    }
    return out;
}

std::wstring utf8ToWide(const std::string& text) {
    std::wstring out;
    for (size_t i = 0; i < text.size();) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        const int extra = lead < 0xc0 ? 0 : lead < 0xe0 ? 1 : lead < 0xf0 ? 2 : 3;
        uint32_t code = extra == 0 ? lead : lead & (0x3f >> extra);
        for (int k = 1; k <= extra && i + k < text.size(); ++k) code = code << 6 | (text[i + k] & 0x3f);
        out.push_back(wchar_t(code));
        i += 1 + extra;
    }
    return out;
}

}  // namespace aafkit

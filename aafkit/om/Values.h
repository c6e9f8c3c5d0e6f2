#pragma once
// Typed reads and writes of properties, answering the SDK's result codes:
// AAFRESULT_PROP_NOT_PRESENT for an absent property, AAFRESULT_BAD_SIZE (or
// similar) for a stored value of the wrong size. Reads never fail silently.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "../AafTypes.h"
#include "Object.h"

namespace aafkit {

// Little-endian integers of 1, 2, 4 or 8 bytes; the stored size must match.
AAFRESULT getUInt8(const Object& o, uint16_t pid, uint8_t& out);
AAFRESULT getUInt16(const Object& o, uint16_t pid, uint16_t& out);
AAFRESULT getUInt32(const Object& o, uint16_t pid, uint32_t& out);
AAFRESULT getInt32(const Object& o, uint16_t pid, int32_t& out);
AAFRESULT getInt64(const Object& o, uint16_t pid, int64_t& out);
AAFRESULT getAuid(const Object& o, uint16_t pid, aafUID_t& out);
AAFRESULT getMobId(const Object& o, uint16_t pid, aafMobID_t& out);
AAFRESULT getRational(const Object& o, uint16_t pid, aafRational_t& out);
// UTF-16 text; a valid surrogate pair becomes one wchar_t where wchar_t is 32-bit.
AAFRESULT getString(const Object& o, uint16_t pid, std::wstring& out);
AAFRESULT getBytes(const Object& o, uint16_t pid, std::vector<uint8_t>& out);

// Data streams: the content of a loaded or set stream, read on request.
AAFRESULT getStream(const Object& o, uint16_t pid, const StreamContent*& out);

// Strong references: the one object, or the elements (vectors in order, sets in key order).
AAFRESULT getObject(const Object& o, uint16_t pid, Object*& out);
AAFRESULT getObjects(const Object& o, uint16_t pid, const std::vector<Object*>*& out);
// The one object of a strong reference; null when `parent` is null or holds none there.
Object* strongChild(const Object* parent, uint16_t pid);
// A weak reference resolved to its target (AAFRESULT_OBJECT_NOT_FOUND when it does not resolve).
AAFRESULT getReferenced(const Object& o, uint16_t pid, Object*& out);
// The AUID that a weak reference to a definition is keyed by, without resolving it.
AAFRESULT getReferencedId(const Object& o, uint16_t pid, aafUID_t& out);

// Indirect values: stored as byte order, type AUID, then the value.
AAFRESULT getIndirectType(const Object& o, uint16_t pid, aafUID_t& type);
// The value's bytes as stored (little-endian file): what GetValue copies.
AAFRESULT getIndirectValue(const Object& o, uint16_t pid, std::vector<uint8_t>& value);

void setUInt8(Object& o, uint16_t pid, uint8_t v);
void setUInt16(Object& o, uint16_t pid, uint16_t v);
void setUInt32(Object& o, uint16_t pid, uint32_t v);
void setInt16(Object& o, uint16_t pid, int16_t v);
void setInt32(Object& o, uint16_t pid, int32_t v);
void setInt64(Object& o, uint16_t pid, int64_t v);
void setAuid(Object& o, uint16_t pid, const aafUID_t& v);
void setMobId(Object& o, uint16_t pid, const aafMobID_t& v);
void setRational(Object& o, uint16_t pid, const aafRational_t& v);
void setString(Object& o, uint16_t pid, const std::wstring& v);
void setBytes(Object& o, uint16_t pid, std::vector<uint8_t> v);
void setTimeStamp(Object& o, uint16_t pid, const aafTimeStamp_t& v);
void setIndirect(Object& o, uint16_t pid, const aafUID_t& type, const void* value, size_t size);
// The file owns the content from here on; it is read when the file is saved.
void setStream(Object& o, uint16_t pid, std::unique_ptr<StreamContent> content);

// Strong references; the child must not be attached elsewhere (AAFRESULT_OBJECT_ALREADY_ATTACHED).
AAFRESULT setObject(Object& o, uint16_t pid, Object& child);
AAFRESULT appendObject(Object& o, uint16_t pid, Object& child);  // strong-reference vector
AAFRESULT addToSet(Object& o, uint16_t pid, Object& child);      // strong-reference set, keyed
// A weak reference to `target`, which must be an element of a set (e.g. a definition).
AAFRESULT setReference(Object& o, uint16_t pid, const Object& target);
// A weak reference to a class or type definition of the MetaDictionary (set 0x0003 or 0x0004),
// named by its AUID whether or not that definition exists yet.
void setMetaReference(Object& o, uint16_t pid, uint16_t metaSetPid, const aafUID_t& id);

// Text helpers shared by the typed access and the tool.
std::wstring utf16ToWide(const uint8_t* bytes, size_t size);
std::vector<uint8_t> wideToUtf16(const std::wstring& text);  // with terminator
std::string wideToUtf8(const std::wstring& text);
// Lenient: a malformed sequence still yields one character per lead byte.
std::wstring utf8ToWide(const std::string& text);

}  // namespace aafkit

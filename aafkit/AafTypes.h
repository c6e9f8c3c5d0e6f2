#pragma once
// The AAF value types as the SDK declares them. On little-endian hosts their
// memory layout is the on-disk layout; aafkit still converts field by field.
#include <cstdint>
#include <cstring>
#include <string>

#include "aafbridge/aaf_types.h"

struct aafSourceRef_t {
    aafMobID_t sourceID;
    uint32_t sourceSlotID;
    int64_t startTime;
};

struct aafTimecode_t {
    int64_t startFrame;
    int16_t drop;
    uint16_t fps;
};

struct aafProductVersion_t {
    uint16_t major;
    uint16_t minor;
    uint16_t tertiary;
    uint16_t patchLevel;
    uint8_t type;
};

struct aafTimeStamp_t {
    int16_t year;
    uint8_t month, day, hour, minute, second, fraction;
};

inline bool operator==(const aafUID_t& a, const aafUID_t& b) {
    return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
           std::memcmp(a.Data4, b.Data4, 8) == 0;
}
inline bool operator!=(const aafUID_t& a, const aafUID_t& b) { return !(a == b); }
inline bool operator==(const aafMobID_t& a, const aafMobID_t& b) {
    return std::memcmp(a.SMPTELabel, b.SMPTELabel, 12) == 0 && a.length == b.length &&
           a.instanceHigh == b.instanceHigh && a.instanceMid == b.instanceMid &&
           a.instanceLow == b.instanceLow && a.material == b.material;
}
inline bool operator!=(const aafMobID_t& a, const aafMobID_t& b) { return !(a == b); }

namespace aafkit {

// For maps keyed by MobID: the material number and the instance tell mobs apart.
struct MobIdHash {
    size_t operator()(const aafMobID_t& id) const {
        uint64_t low = 0;
        std::memcpy(&low, id.material.Data4, sizeof low);
        const uint64_t high = uint64_t(id.material.Data1) << 32 ^ uint64_t(id.material.Data2) << 16 ^
                              id.material.Data3 ^ uint64_t(id.instanceLow) << 40;
        return size_t((high * 0x9e3779b97f4a7c15ull) ^ low);
    }
};

// 16 bytes as an AUID is stored in a little-endian file (GUID layout).
void encodeAuid(const aafUID_t& id, uint8_t out[16]);
aafUID_t decodeAuid(const uint8_t in[16]);
// 32 bytes as a MobID is stored in a little-endian file.
void encodeMobId(const aafMobID_t& id, uint8_t out[32]);
aafMobID_t decodeMobId(const uint8_t in[32]);

// Bytes as lower-case hex digits, two a byte.
std::string hexText(const uint8_t* bytes, size_t size);
// "0d010101-0101-0100-060e-2b3402060101"
std::string auidToText(const aafUID_t& id);
// A MobID as "<label, length and instance in hex>-<material AUID>".
std::string mobIdToText(const aafMobID_t& id);
constexpr aafUID_t kNullAuid = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

}  // namespace aafkit

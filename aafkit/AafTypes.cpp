#include "AafTypes.h"

#include <cstdio>

namespace aafkit {

void encodeAuid(const aafUID_t& id, uint8_t out[16]) {
    for (int i = 0; i < 4; ++i) out[i] = uint8_t(id.Data1 >> (8 * i));
    out[4] = uint8_t(id.Data2);
    out[5] = uint8_t(id.Data2 >> 8);
    out[6] = uint8_t(id.Data3);
    out[7] = uint8_t(id.Data3 >> 8);
    std::memcpy(out + 8, id.Data4, 8);
}

aafUID_t decodeAuid(const uint8_t in[16]) {
    aafUID_t id;
    id.Data1 = uint32_t(in[0]) | uint32_t(in[1]) << 8 | uint32_t(in[2]) << 16 | uint32_t(in[3]) << 24;
    id.Data2 = uint16_t(in[4] | in[5] << 8);
    id.Data3 = uint16_t(in[6] | in[7] << 8);
    std::memcpy(id.Data4, in + 8, 8);
    return id;
}

void encodeMobId(const aafMobID_t& id, uint8_t out[32]) {
    std::memcpy(out, id.SMPTELabel, 12);
    out[12] = id.length;
    out[13] = id.instanceHigh;
    out[14] = id.instanceMid;
    out[15] = id.instanceLow;
    encodeAuid(id.material, out + 16);
}

aafMobID_t decodeMobId(const uint8_t in[32]) {
    aafMobID_t id;
    std::memcpy(id.SMPTELabel, in, 12);
    id.length = in[12];
    id.instanceHigh = in[13];
    id.instanceMid = in[14];
    id.instanceLow = in[15];
    id.material = decodeAuid(in + 16);
    return id;
}

std::string hexText(const uint8_t* bytes, size_t size) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(2 * size);
    for (size_t i = 0; i < size; ++i) text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15]};
    return text;
}

std::string auidToText(const aafUID_t& id) {
    char text[40];
    std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                  unsigned(id.Data1), unsigned(id.Data2), unsigned(id.Data3), id.Data4[0],
                  id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6],
                  id.Data4[7]);
    return text;
}

std::string mobIdToText(const aafMobID_t& id) {
    uint8_t bytes[32];
    encodeMobId(id, bytes);
    return hexText(bytes, 16) + "-" + auidToText(decodeAuid(bytes + 16));
}

}  // namespace aafkit

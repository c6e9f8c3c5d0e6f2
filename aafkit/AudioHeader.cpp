#include "AudioHeader.h"

#include <cmath>
#include <cstring>
#include <string>

#include "io/ByteReader.h"

namespace aafkit {

namespace {

constexpr uint16_t kWaveFormatPcm = 1;
constexpr uint16_t kWaveFormatExtensible = 0xfffe;

uint32_t bigEndian32(const uint8_t* p) {
    return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3];
}
uint16_t bigEndian16(const uint8_t* p) { return uint16_t(p[0] << 8 | p[1]); }

bool isTag(const uint8_t* p, const char* tag) { return std::memcmp(p, tag, 4) == 0; }

std::string tagText(const uint8_t* p) {
    std::string text;
    for (int i = 0; i < 4; ++i) text += (p[i] >= 0x20 && p[i] < 0x7f) ? char(p[i]) : '?';
    return text;
}

// An 80-bit IEEE extended number, as AIFF stores its sample rate.
double extendedToDouble(const uint8_t* p) {
    const int exponent = ((p[0] & 0x7f) << 8 | p[1]) - 16383 - 63;
    uint64_t mantissa = 0;
    for (int i = 2; i < 10; ++i) mantissa = mantissa << 8 | p[i];
    const double value = std::ldexp(double(mantissa), exponent);
    return (p[0] & 0x80) ? -value : value;
}

struct Chunk {
    const uint8_t* tag = nullptr;
    uint64_t size = 0;
    size_t bodyOffset = 0;
};

// The next chunk header; chunks are padded to even sizes in both formats.
bool nextChunk(ByteReader& reader, bool bigEndianSizes, Chunk& chunk) {
    const uint8_t* header = nullptr;
    if (!reader.bytes(8, header)) return false;
    chunk.tag = header;
    chunk.size = bigEndianSizes ? bigEndian32(header + 4)
                                : uint32_t(header[4] | header[5] << 8 | header[6] << 16 | uint32_t(header[7]) << 24);
    chunk.bodyOffset = reader.offset();
    return true;
}

bool skipBody(ByteReader& reader, const Chunk& chunk) {
    const uint64_t padded = chunk.size + (chunk.size & 1);
    return padded <= reader.remaining() && reader.skip(size_t(padded));
}

Status checkSampleSize(const AudioHeader& h, const char* kind) {
    if (h.channels == 0 || h.bits == 0 || h.bits > 32 || !(h.sampleRate > 0))
        return Status::error(std::string(kind) + " header declares " + std::to_string(h.channels) + " channels, " +
                             std::to_string(h.bits) + " bits at " + std::to_string(h.sampleRate) + " Hz");
    return Status();
}

Status parseWaveFormat(ByteReader& reader, const Chunk& chunk, AudioHeader& out) {
    const uint8_t* body = nullptr;
    if (chunk.size < 16 || !reader.bytes(16, body)) return Status::error("WAV fmt chunk is too short");
    const uint16_t format = uint16_t(body[0] | body[1] << 8);
    if (format != kWaveFormatPcm && format != kWaveFormatExtensible)
        return Status::error("WAV format tag " + std::to_string(format) + " is not integer PCM");
    out.channels = uint16_t(body[2] | body[3] << 8);
    out.sampleRate = double(uint32_t(body[4] | body[5] << 8 | body[6] << 16 | uint32_t(body[7]) << 24));
    out.bits = uint16_t(body[14] | body[15] << 8);
    reader.seek(chunk.bodyOffset);
    return skipBody(reader, chunk) || reader.remaining() == 0 ? Status() : Status::error("WAV fmt chunk is cut short");
}

Status parseWave(ByteReader& reader, AudioHeader& out) {
    bool haveFormat = false;
    Chunk chunk;
    while (nextChunk(reader, false, chunk)) {
        if (isTag(chunk.tag, "fmt ")) {
            if (Status s = parseWaveFormat(reader, chunk, out); !s) return s;
            haveFormat = true;
        } else if (isTag(chunk.tag, "data")) {
            if (!haveFormat) return Status::error("WAV data chunk comes before its fmt chunk");
            out.hasData = true;
            out.dataOffset = chunk.bodyOffset;
            out.dataSize = chunk.size;
            return checkSampleSize(out, "WAV");
        } else if (!skipBody(reader, chunk)) {
            break;
        }
    }
    if (!haveFormat) return Status::error("WAV header has no fmt chunk");
    return checkSampleSize(out, "WAV");
}

Status parseAiffCommon(ByteReader& reader, const Chunk& chunk, AudioHeader& out) {
    const uint8_t* body = nullptr;
    if (chunk.size < 18 || !reader.bytes(18, body)) return Status::error("AIFF COMM chunk is too short");
    out.channels = bigEndian16(body);
    out.bits = bigEndian16(body + 6);
    out.sampleRate = extendedToDouble(body + 8);
    if (out.container == AudioContainer::Aifc) {
        const uint8_t* compression = nullptr;
        if (chunk.size < 22 || !reader.bytes(4, compression))
            return Status::error("AIFF-C COMM chunk has no compression type");
        if (isTag(compression, "sowt"))
            out.bigEndian = false;
        else if (!isTag(compression, "NONE") && !isTag(compression, "twos"))
            return Status::error("AIFF-C compression \"" + tagText(compression) + "\" is not uncompressed PCM");
    }
    reader.seek(chunk.bodyOffset);
    return skipBody(reader, chunk) || reader.remaining() == 0 ? Status()
                                                              : Status::error("AIFF COMM chunk is cut short");
}

Status parseAiff(ByteReader& reader, AudioHeader& out) {
    bool haveCommon = false;
    Chunk chunk;
    while (nextChunk(reader, true, chunk)) {
        if (isTag(chunk.tag, "COMM")) {
            if (Status s = parseAiffCommon(reader, chunk, out); !s) return s;
            haveCommon = true;
        } else if (isTag(chunk.tag, "SSND")) {
            const uint8_t* offsets = nullptr;
            if (!haveCommon) return Status::error("AIFF SSND chunk comes before its COMM chunk");
            if (chunk.size < 8 || !reader.bytes(8, offsets)) return Status::error("AIFF SSND chunk is too short");
            const uint32_t skip = bigEndian32(offsets);
            if (skip > chunk.size - 8) return Status::error("AIFF SSND offset lies past the chunk");
            out.hasData = true;
            out.dataOffset = chunk.bodyOffset + 8 + skip;
            out.dataSize = chunk.size - 8 - skip;
            return checkSampleSize(out, "AIFF");
        } else if (!skipBody(reader, chunk)) {
            break;
        }
    }
    if (!haveCommon) return Status::error("AIFF header has no COMM chunk");
    return checkSampleSize(out, "AIFF");
}

}  // namespace

bool hasAudioSignature(const uint8_t* bytes, size_t size) {
    return size >= 12 && ((isTag(bytes, "RIFF") && isTag(bytes + 8, "WAVE")) ||
                          (isTag(bytes, "FORM") && (isTag(bytes + 8, "AIFF") || isTag(bytes + 8, "AIFC"))));
}

Status parseAudioHeader(const uint8_t* bytes, size_t size, AudioHeader& out) {
    ByteReader reader(bytes, size);
    const uint8_t* riff = nullptr;
    if (!reader.bytes(12, riff)) return Status::error("audio header is shorter than 12 bytes");
    out = AudioHeader();
    if (isTag(riff, "RIFF") && isTag(riff + 8, "WAVE")) return parseWave(reader, out);
    if (isTag(riff, "FORM") && (isTag(riff + 8, "AIFF") || isTag(riff + 8, "AIFC"))) {
        out.container = isTag(riff + 8, "AIFC") ? AudioContainer::Aifc : AudioContainer::Aiff;
        out.bigEndian = true;
        return parseAiff(reader, out);
    }
    return Status::error("not a WAV or AIFF header (starts \"" + tagText(riff) + "\")");
}

}  // namespace aafkit

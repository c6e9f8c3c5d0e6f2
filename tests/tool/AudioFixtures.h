#pragma once
// Audio for the media tests: known samples, WAV and AIFF-C files written byte by byte
// here (not by the code under test), raw PCM decoded by hand, and audio files read back
// through libsndfile as an audio application would.
#include <sndfile.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace testsupport {

struct Pcm {
    int channels = 0;
    int bits = 0;
    int rate = 0;
    std::vector<int32_t> samples;  // interleaved, as signed integers of `bits` bits

    size_t frames() const { return channels ? samples.size() / size_t(channels) : 0; }
};

// Samples that use the whole range, both signs and differ per channel.
inline Pcm knownPcm(int channels, int bits, int rate, size_t frames) {
    Pcm pcm{channels, bits, rate, {}};
    const int64_t span = int64_t(1) << (bits - 1);
    for (size_t f = 0; f < frames; ++f)
        for (int c = 0; c < channels; ++c)
            pcm.samples.push_back(int32_t(int64_t((f * 7919 + size_t(c) * 104729) % uint64_t(2 * span)) - span));
    return pcm;
}

inline void putLittle(std::vector<uint8_t>& out, uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(uint8_t(value >> (8 * i)));
}
inline void putBig(std::vector<uint8_t>& out, uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) out.push_back(uint8_t(value >> (8 * i)));
}

inline std::vector<uint8_t> rawPcm(const Pcm& pcm, bool bigEndian) {
    std::vector<uint8_t> out;
    for (int32_t s : pcm.samples)
        bigEndian ? putBig(out, uint32_t(s), pcm.bits / 8) : putLittle(out, uint32_t(s), pcm.bits / 8);
    return out;
}

inline Pcm decodePcm(const std::vector<uint8_t>& bytes, size_t offset, size_t frames, int channels, int bits,
                     bool bigEndian) {
    Pcm pcm{channels, bits, 0, {}};
    const size_t width = size_t(bits / 8);
    for (size_t at = offset; at + width <= bytes.size() && pcm.samples.size() < frames * size_t(channels);
         at += width) {
        uint32_t value = 0;
        for (size_t i = 0; i < width; ++i) value |= uint32_t(bytes[at + (bigEndian ? width - 1 - i : i)]) << (8 * i);
        const int shift = 32 - bits;
        pcm.samples.push_back(int32_t(value << shift) >> shift);
    }
    return pcm;
}

inline std::vector<uint8_t> wavBytes(const Pcm& pcm) {
    const std::vector<uint8_t> data = rawPcm(pcm, false);
    const int blockAlign = pcm.channels * pcm.bits / 8;
    std::vector<uint8_t> out = {'R', 'I', 'F', 'F'};
    putLittle(out, 36 + data.size(), 4);
    for (char c : std::string("WAVEfmt ")) out.push_back(uint8_t(c));
    putLittle(out, 16, 4);
    putLittle(out, 1, 2);
    putLittle(out, uint64_t(pcm.channels), 2);
    putLittle(out, uint64_t(pcm.rate), 4);
    putLittle(out, uint64_t(pcm.rate * blockAlign), 4);
    putLittle(out, uint64_t(blockAlign), 2);
    putLittle(out, uint64_t(pcm.bits), 2);
    for (char c : std::string("data")) out.push_back(uint8_t(c));
    putLittle(out, data.size(), 4);
    out.insert(out.end(), data.begin(), data.end());
    return out;
}

// FORM AIFC with FVER, COMM (uncompressed "NONE") and SSND, big-endian samples.
inline std::vector<uint8_t> aifcBytes(const Pcm& pcm) {
    const std::vector<uint8_t> data = rawPcm(pcm, true);
    std::vector<uint8_t> body;
    for (char c : std::string("AIFCFVER")) body.push_back(uint8_t(c));
    putBig(body, 4, 4);
    putBig(body, 0xA2805140, 4);
    for (char c : std::string("COMM")) body.push_back(uint8_t(c));
    putBig(body, 24, 4);
    putBig(body, uint64_t(pcm.channels), 2);
    putBig(body, pcm.frames(), 4);
    putBig(body, uint64_t(pcm.bits), 2);
    // The rate as an 80-bit extended number: exponent, then the mantissa with its top bit set.
    int exponent = 0;
    while ((uint64_t(pcm.rate) >> (exponent + 1)) != 0) ++exponent;
    putBig(body, uint64_t(16383 + exponent), 2);
    putBig(body, uint64_t(pcm.rate) << (63 - exponent), 8);
    for (char c : std::string("NONE")) body.push_back(uint8_t(c));
    putBig(body, 0, 2);  // empty name, padded
    for (char c : std::string("SSND")) body.push_back(uint8_t(c));
    putBig(body, 8 + data.size(), 4);
    putBig(body, 0, 8);
    body.insert(body.end(), data.begin(), data.end());
    std::vector<uint8_t> out = {'F', 'O', 'R', 'M'};
    putBig(out, body.size(), 4);
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

inline void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

// The file as libsndfile reads it; channels 0 when it cannot.
inline Pcm readAudioFile(const std::string& path, SF_INFO* infoOut = nullptr) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    Pcm pcm;
    if (!file) return pcm;
    int bits = 0;
    switch (info.format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_16:
            bits = 16;
            break;
        case SF_FORMAT_PCM_24:
            bits = 24;
            break;
        case SF_FORMAT_PCM_32:
            bits = 32;
            break;
        default:
            bits = 8;
    }
    std::vector<int> samples(size_t(info.frames) * size_t(info.channels));
    const sf_count_t read = sf_readf_int(file, samples.data(), info.frames);
    sf_close(file);
    pcm = Pcm{info.channels, bits, info.samplerate, {}};
    for (size_t i = 0; i < size_t(read) * size_t(info.channels); ++i) pcm.samples.push_back(samples[i] >> (32 - bits));
    if (infoOut) *infoOut = info;
    return pcm;
}

}  // namespace testsupport

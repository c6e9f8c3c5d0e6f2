// Stored WAV and AIFF/AIFF-C headers: the format and where the samples are, from whole
// files and from Summaries that stop early; malformed headers answer an error, never a
// read past the bytes given.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "aafkit/AudioHeader.h"

namespace {

using Bytes = std::vector<uint8_t>;

void append(Bytes& out, const std::string& text) { out.insert(out.end(), text.begin(), text.end()); }
void little(Bytes& out, uint32_t v, int n) {
    for (int i = 0; i < n; ++i) out.push_back(uint8_t(v >> (8 * i)));
}
void big(Bytes& out, uint32_t v, int n) {
    for (int i = n - 1; i >= 0; --i) out.push_back(uint8_t(v >> (8 * i)));
}

// RIFF WAVE with an odd-sized chunk before fmt (padding must be skipped).
Bytes wave(uint16_t formatTag, uint16_t channels, uint32_t rate, uint16_t bits, uint32_t dataSize) {
    Bytes b;
    append(b, "RIFF");
    little(b, 0, 4);
    append(b, "WAVEJUNK");
    little(b, 3, 4);
    b.insert(b.end(), {1, 2, 3, 0});
    append(b, "fmt ");
    little(b, 16, 4);
    little(b, formatTag, 2);
    little(b, channels, 2);
    little(b, rate, 4);
    little(b, rate * channels * bits / 8, 4);
    little(b, channels * bits / 8, 2);
    little(b, bits, 2);
    append(b, "data");
    little(b, dataSize, 4);
    return b;
}

// FORM AIFC at 44100 Hz (80-bit extended 400E AC44...).
Bytes aifc(const std::string& compression, uint32_t ssndOffset = 0) {
    Bytes b;
    append(b, "FORM");
    big(b, 0, 4);
    append(b, "AIFCCOMM");
    big(b, 24, 4);
    big(b, 2, 2);
    big(b, 100, 4);
    big(b, 24, 2);
    b.insert(b.end(), {0x40, 0x0e, 0xac, 0x44, 0, 0, 0, 0, 0, 0});
    append(b, compression);
    big(b, 0, 2);
    append(b, "SSND");
    big(b, 8 + 600 + ssndOffset, 4);
    big(b, ssndOffset, 4);
    big(b, 0, 4);
    return b;
}

TEST(AudioHeader, ReadsWaveAndAifcLayouts) {
    aafkit::AudioHeader h;
    const Bytes w = wave(1, 2, 48000, 24, 6000);
    ASSERT_TRUE(aafkit::parseAudioHeader(w.data(), w.size(), h).ok());
    EXPECT_EQ(h.container, aafkit::AudioContainer::Wave);
    EXPECT_EQ(h.channels, 2);
    EXPECT_EQ(h.bits, 24);
    EXPECT_EQ(h.sampleRate, 48000.0);
    EXPECT_FALSE(h.bigEndian);
    EXPECT_TRUE(h.hasData);
    EXPECT_EQ(h.dataOffset, w.size());
    EXPECT_EQ(h.frames(), 1000u);

    const Bytes a = aifc("NONE", 4);
    ASSERT_TRUE(aafkit::parseAudioHeader(a.data(), a.size(), h).ok());
    EXPECT_EQ(h.container, aafkit::AudioContainer::Aifc);
    EXPECT_EQ(h.sampleRate, 44100.0);
    EXPECT_TRUE(h.bigEndian);
    EXPECT_EQ(h.dataOffset, a.size() + 4);  // the SSND offset skips bytes before the samples
    EXPECT_EQ(h.dataSize, 600u);

    const Bytes swapped = aifc("sowt");
    ASSERT_TRUE(aafkit::parseAudioHeader(swapped.data(), swapped.size(), h).ok());
    EXPECT_FALSE(h.bigEndian);
}

TEST(AudioHeader, SummaryWithoutTheDataChunkStillGivesTheFormat) {
    Bytes a = aifc("NONE");
    a.resize(a.size() - 16);  // as Premiere stores it: FORM and COMM only
    aafkit::AudioHeader h;
    ASSERT_TRUE(aafkit::parseAudioHeader(a.data(), a.size(), h).ok());
    EXPECT_FALSE(h.hasData);
    EXPECT_EQ(h.channels, 2);
}

TEST(AudioHeader, MalformedHeadersAreErrorsThatSayWhat) {
    struct Case {
        const char* what;
        Bytes bytes;
        const char* message;
    };
    Bytes hugeChunk = wave(1, 1, 48000, 16, 0);
    hugeChunk[16] = hugeChunk[17] = hugeChunk[18] = hugeChunk[19] = 0xff;  // the JUNK chunk's size
    Bytes noFormat;
    append(noFormat, "RIFF0000WAVEdata");
    little(noFormat, 4, 4);
    Bytes badOffset = aifc("NONE", 0);
    badOffset[badOffset.size() - 8] = 0x7f;
    const Case cases[] = {
        {"float WAV", wave(3, 1, 48000, 32, 0), "WAV format tag 3 is not integer PCM"},
        {"zero channels", wave(1, 0, 48000, 16, 0), "declares 0 channels"},
        {"64-bit samples", wave(1, 1, 48000, 64, 0), "64 bits"},
        {"chunk past the end", hugeChunk, "no fmt chunk"},
        {"data before fmt", noFormat, "data chunk comes before its fmt chunk"},
        {"compressed AIFF-C", aifc("ima4"), "compression \"ima4\" is not uncompressed PCM"},
        {"SSND offset past its chunk", badOffset, "SSND offset lies past the chunk"},
        {"MP3", Bytes{'I', 'D', '3', 4, 0, 0, 0, 0, 0, 0, 0, 0}, "not a WAV or AIFF header"},
        {"too short", Bytes{'R', 'I', 'F', 'F'}, "shorter than 12 bytes"},
    };
    for (const Case& c : cases) {
        aafkit::AudioHeader h;
        const aafkit::Status s = aafkit::parseAudioHeader(c.bytes.data(), c.bytes.size(), h);
        EXPECT_FALSE(s.ok()) << c.what;
        EXPECT_NE(s.message().find(c.message), std::string::npos) << c.what << ": " << s.message();
    }
    // Every prefix of a valid header parses or fails cleanly.
    const Bytes w = wave(1, 2, 48000, 16, 40);
    for (size_t n = 0; n <= w.size(); ++n) {
        aafkit::AudioHeader h;
        aafkit::parseAudioHeader(w.data(), n, h);
    }
}

}  // namespace

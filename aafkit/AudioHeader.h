#pragma once
// The header of a stored WAV or AIFF/AIFF-C file: AAF keeps such files whole in an
// EssenceData stream, and their header alone (up to the sample data) in a
// WAVEDescriptor's or AIFCDescriptor's Summary.
#include <cstddef>
#include <cstdint>

#include "Status.h"

namespace aafkit {

enum class AudioContainer { Wave, Aiff, Aifc };

struct AudioHeader {
    AudioContainer container = AudioContainer::Wave;
    uint16_t channels = 0;
    uint16_t bits = 0;
    double sampleRate = 0;
    bool bigEndian = false;
    // Whether the bytes reached the sample data's chunk (a Summary may stop before it).
    bool hasData = false;
    uint64_t dataOffset = 0;  // where the first sample byte is
    uint64_t dataSize = 0;    // sample bytes the header declares

    uint32_t blockAlign() const { return uint32_t(channels) * ((bits + 7u) / 8u); }
    uint64_t frames() const { return blockAlign() ? dataSize / blockAlign() : 0; }
};

// Whether the bytes begin as a WAV ("RIFF" ... "WAVE") or AIFF/AIFF-C ("FORM" ... "AIFF"/"AIFC") file.
bool hasAudioSignature(const uint8_t* bytes, size_t size);

// Parses the header at the start of `bytes`, which may end after the sample data's chunk
// header or, in a Summary, before it (then hasData is false). Only uncompressed integer PCM is accepted; anything
// else is an error that says what was found.
Status parseAudioHeader(const uint8_t* bytes, size_t size, AudioHeader& out);

}  // namespace aafkit

// Stored WAV and AIFF headers, as essence streams and descriptor Summaries carry them.
#include <cstddef>
#include <cstdint>

#include "aafkit/AudioHeader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    aafkit::AudioHeader header;
    if (aafkit::parseAudioHeader(data, size, header).ok() && header.hasData) {
        // What the callers rely on: the samples start within the bytes given.
        if (header.dataOffset > size) __builtin_trap();
    }
    return 0;
}

#pragma once
// Audio files on disk through libsndfile, loaded on first use: what a WAV or AIFF file holds, and WAV files
// (broadcast wave when a time reference is known) written from raw PCM a chunk at a time.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "aafkit/Status.h"

struct AudioFileInfo {
    bool aiff = false;  // AIFF or AIFF-C; otherwise WAV
    int channels = 0;
    int sampleRate = 0;
    int bits = 0;
    int64_t frames = 0;
};

// Opens the file as audio; integer PCM WAV and AIFF/AIFF-C only. The error says what
// libsndfile found wrong, or which format it is instead.
aafkit::Status probeAudioFile(const std::string& path, AudioFileInfo& out);

struct sf_private_tag;
struct SndfileLibrary;

// A WAV file being written from interleaved PCM bytes (big-endian ones are swapped).
// Bytes may come in any pieces; they are written a whole frame at a time.
class WaveWriter {
public:
    WaveWriter() = default;
    ~WaveWriter();
    WaveWriter(const WaveWriter&) = delete;
    WaveWriter& operator=(const WaveWriter&) = delete;

    // timeReference: the first sample's position since midnight, for the bext chunk.
    aafkit::Status open(const std::string& path, int channels, int sampleRate, int bits, bool bigEndian,
                        std::optional<uint64_t> timeReference);
    aafkit::Status write(const uint8_t* bytes, size_t size);
    // Answers how many trailing bytes did not make a whole frame (dropped).
    aafkit::Status close(size_t& droppedBytes);

private:
    aafkit::Status writeFrames(const uint8_t* bytes, size_t size);

    const SndfileLibrary* sndfile_ = nullptr;  // set by open
    sf_private_tag* file_ = nullptr;
    std::string path_;
    size_t blockAlign_ = 0;
    size_t sampleBytes_ = 0;
    bool swap_ = false;
    std::vector<uint8_t> swapped_;
    uint8_t partial_[128] = {};
    size_t partialSize_ = 0;
};

#include "media/AudioFile.h"

#include <algorithm>
#include <cstring>

#include "media/SndfileLibrary.h"

namespace {

int bitsOfSubtype(int subtype) {
    switch (subtype) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
            return 8;
        case SF_FORMAT_PCM_16:
            return 16;
        case SF_FORMAT_PCM_24:
            return 24;
        case SF_FORMAT_PCM_32:
            return 32;
        default:
            return 0;
    }
}

int subtypeOfBits(int bits) {
    switch (bits) {
        case 8:
            return SF_FORMAT_PCM_U8;
        case 16:
            return SF_FORMAT_PCM_16;
        case 24:
            return SF_FORMAT_PCM_24;
        case 32:
            return SF_FORMAT_PCM_32;
        default:
            return 0;
    }
}

std::string formatName(const SndfileLibrary& sndfile, int format) {
    SF_FORMAT_INFO info = {};
    info.format = format;
    return sndfile.command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) == 0 && info.name ? info.name : "unknown";
}

}  // namespace

aafkit::Status probeAudioFile(const std::string& path, AudioFileInfo& out) {
    const SndfileLibrary* sndfile = nullptr;
    if (aafkit::Status s = loadSndfile(sndfile); !s) return s;
    SF_INFO info = {};
    SNDFILE* file = sndfile->open(path.c_str(), SFM_READ, &info);
    if (!file) return aafkit::Status::error(path + ": " + sndfile->strerror(nullptr));
    sndfile->close(file);
    const int major = info.format & SF_FORMAT_TYPEMASK;
    const int subtype = info.format & SF_FORMAT_SUBMASK;
    if (major != SF_FORMAT_WAV && major != SF_FORMAT_WAVEX && major != SF_FORMAT_AIFF)
        return aafkit::Status::error(path + ": " + formatName(*sndfile, major) + " files are not embedded (WAV or AIFF only)");
    out.bits = bitsOfSubtype(subtype);
    if (!out.bits) return aafkit::Status::error(path + ": " + formatName(*sndfile, subtype) + " samples are not integer PCM");
    out.aiff = major == SF_FORMAT_AIFF;
    out.channels = info.channels;
    out.sampleRate = info.samplerate;
    out.frames = info.frames;
    return aafkit::Status();
}

WaveWriter::~WaveWriter() {
    if (file_) sndfile_->close(file_);
}

aafkit::Status WaveWriter::open(const std::string& path, int channels, int sampleRate, int bits, bool bigEndian,
                                std::optional<uint64_t> timeReference) {
    if (aafkit::Status s = loadSndfile(sndfile_); !s) return s;
    SF_INFO info = {};
    info.channels = channels;
    info.samplerate = sampleRate;
    info.format = SF_FORMAT_WAV | subtypeOfBits(bits);
    sampleBytes_ = size_t((bits + 7) / 8);
    blockAlign_ = size_t(channels) * sampleBytes_;
    swap_ = bigEndian && sampleBytes_ > 1;
    if (!subtypeOfBits(bits) || blockAlign_ > sizeof partial_ || !sndfile_->formatCheck(&info))
        return aafkit::Status::error(std::to_string(channels) + " channels of " + std::to_string(bits) +
                                     "-bit PCM at " + std::to_string(sampleRate) + " Hz cannot be written as WAV");
    path_ = path;
    file_ = sndfile_->open(path.c_str(), SFM_WRITE, &info);
    if (!file_) return aafkit::Status::error("cannot write " + path + ": " + sndfile_->strerror(nullptr));
    if (timeReference) {
        SF_BROADCAST_INFO bext = {};
        bext.time_reference_low = uint32_t(*timeReference);
        bext.time_reference_high = uint32_t(*timeReference >> 32);
        bext.version = 1;
        sndfile_->command(file_, SFC_SET_BROADCAST_INFO, &bext, sizeof bext);
    }
    return aafkit::Status();
}

aafkit::Status WaveWriter::writeFrames(const uint8_t* bytes, size_t size) {
    if (swap_) {
        swapped_.assign(bytes, bytes + size);
        for (size_t at = 0; at + sampleBytes_ <= size; at += sampleBytes_)
            std::reverse(swapped_.begin() + long(at), swapped_.begin() + long(at + sampleBytes_));
        bytes = swapped_.data();
    }
    if (size && sndfile_->writeRaw(file_, bytes, sf_count_t(size)) != sf_count_t(size))
        return aafkit::Status::error("cannot write " + path_ + ": " + sndfile_->strerror(file_));
    return aafkit::Status();
}

aafkit::Status WaveWriter::write(const uint8_t* bytes, size_t size) {
    // Complete the frame a previous piece began, then write the whole frames in place.
    if (partialSize_) {
        const size_t take = std::min(size, blockAlign_ - partialSize_);
        std::memcpy(partial_ + partialSize_, bytes, take);
        partialSize_ += take;
        bytes += take;
        size -= take;
        if (partialSize_ < blockAlign_) return aafkit::Status();
        partialSize_ = 0;
        if (aafkit::Status s = writeFrames(partial_, blockAlign_); !s) return s;
    }
    const size_t whole = size - size % blockAlign_;
    if (aafkit::Status s = writeFrames(bytes, whole); !s) return s;
    partialSize_ = size - whole;
    std::memcpy(partial_, bytes + whole, partialSize_);
    return aafkit::Status();
}

aafkit::Status WaveWriter::close(size_t& droppedBytes) {
    droppedBytes = partialSize_;
    partialSize_ = 0;
    const int result = sndfile_->close(file_);
    file_ = nullptr;
    if (result != 0) return aafkit::Status::error("cannot write " + path_ + ": " + sndfile_->errorNumber(result));
    return aafkit::Status();
}

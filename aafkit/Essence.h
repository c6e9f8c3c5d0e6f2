#pragma once
// A file source mob's essence: the EssenceData that carries it inside the file (same
// MobID), and the audio its descriptor states (PCMDescriptor, or the Summary of a
// WAVEDescriptor or AIFCDescriptor).
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "AafTypes.h"
#include "AudioHeader.h"
#include "File.h"
#include "Status.h"

namespace aafkit {

// How embedded audio is laid out in its stream.
enum class EssenceLayout {
    RawPcm,      // interleaved little-endian samples, nothing else
    StoredFile,  // a whole WAV or AIFF/AIFF-C file
};

struct AudioDescription {
    EssenceLayout layout = EssenceLayout::RawPcm;
    AudioContainer container = AudioContainer::Wave;  // StoredFile only
    uint16_t channels = 0;
    uint16_t bits = 0;
    double sampleRate = 0;
    int64_t length = -1;     // sample frames the descriptor claims; -1 when it does not say
    bool bigEndian = false;  // byte order of the samples (AIFF's unless "sowt")

    uint32_t blockAlign() const { return uint32_t(channels) * ((bits + 7u) / 8u); }
};

// "PCM", "WAV", "AIFF" or "AIFF-C": the form of the essence a description names.
const char* formatName(const AudioDescription& audio);

// The audio a descriptor states, or an error saying why it is not audio read here
// (picture, compressed sound, a Summary that does not parse).
Status describeAudio(const Object& descriptor, AudioDescription& out);

// The content storage's EssenceData objects by the MobID whose essence they carry.
class EssenceIndex {
public:
    explicit EssenceIndex(const File& file);
    // Null when the mob's essence is not in the file.
    Object* find(const aafMobID_t& mobId) const;

private:
    std::unordered_map<std::string, Object*> byMobId_;
};

// The essence bytes of an EssenceData object, read on request.
AAFRESULT getEssenceStream(const Object& essenceData, const StreamContent*& out);

// A new EssenceData for `mobId` in the content storage, its Data the given content
// (read when the file is saved). AAFRESULT_INVALID_PARAM when the mob already has one.
AAFRESULT addEssenceData(File& file, const aafMobID_t& mobId, std::unique_ptr<StreamContent> content);

// Whether the content is a whole stored file (it starts with a WAV or AIFF header) rather
// than the samples alone, which some writers put under a WAVE or AIFC descriptor whose
// Summary then is the only header.
bool holdsStoredFile(const StreamContent& content);

// The header of the WAV or AIFF/AIFF-C file that `content` holds (it must lie within the
// first MiB), checked against the content's size; `summary` receives the bytes before the
// samples. Errors say what is wrong: a header that does not parse, no sample data, samples
// declared past the end (a truncated stream or file).
Status readStoredAudioHeader(const StreamContent& content, AudioHeader& out, std::vector<uint8_t>* summary = nullptr);

// Puts a whole WAV or AIFF/AIFF-C file into the file as Media Composer and Premiere store
// one: the file mob's descriptor becomes a WAVEDescriptor or AIFCDescriptor whose Summary
// is `summary` (the stored file's bytes up to its sample data), with SampleRate, Length in
// sample frames and ContainerFormat AAF (the essence is inside), and an EssenceData with
// the mob's MobID carries `content`. Writing side: failures throw ResultException.
void embedStoredAudio(File& file, Object& fileMob, const AudioHeader& header, std::vector<uint8_t> summary,
                      std::unique_ptr<StreamContent> content);

}  // namespace aafkit

#include "Essence.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "Checked.h"
#include "Dictionary.h"
#include "ResultCodes.h"
#include "om/Values.h"
#include "meta/BaselineModel.h"
#include "meta/Ids.h"

namespace aafkit {

namespace {

Status describePcm(const Object& descriptor, AudioDescription& out) {
    uint32_t channels = 0, bits = 0;
    aafRational_t rate = {0, 0};
    if (getUInt32(descriptor, PID_SoundDescriptor_Channels, channels) != AAFRESULT_SUCCESS ||
        getUInt32(descriptor, PID_SoundDescriptor_QuantizationBits, bits) != AAFRESULT_SUCCESS ||
        getRational(descriptor, PID_SoundDescriptor_AudioSamplingRate, rate) != AAFRESULT_SUCCESS)
        return Status::error("PCM descriptor lacks its channels, bits or sampling rate");
    if (channels == 0 || channels > 0xffff || bits == 0 || bits > 32 || rate.numerator <= 0 || rate.denominator <= 0)
        return Status::error("PCM descriptor declares " + std::to_string(channels) + " channels of " +
                             std::to_string(bits) + " bits at " + std::to_string(rate.numerator) + "/" +
                             std::to_string(rate.denominator));
    out.layout = EssenceLayout::RawPcm;
    out.channels = uint16_t(channels);
    out.bits = uint16_t(bits);
    out.sampleRate = double(rate.numerator) / rate.denominator;
    return Status();
}

Status describeSummary(const Object& descriptor, uint16_t summaryPid, AudioDescription& out) {
    std::vector<uint8_t> summary;
    if (getBytes(descriptor, summaryPid, summary) != AAFRESULT_SUCCESS)
        return Status::error("descriptor has no Summary");
    AudioHeader header;
    if (Status s = parseAudioHeader(summary.data(), summary.size(), header); !s)
        return Status::error("descriptor Summary: " + s.message());
    out.layout = EssenceLayout::StoredFile;
    out.container = header.container;
    out.channels = header.channels;
    out.bits = header.bits;
    out.sampleRate = header.sampleRate;
    out.bigEndian = header.bigEndian;
    return Status();
}

// What a descriptor that is not read as audio holds, for the message.
std::string notAudio(const Object& descriptor) {
    const std::string name = descriptor.classDef() ? descriptor.classDef()->name : auidToText(descriptor.classId());
    if (descriptor.isA(AUID_AAFDigitalImageDescriptor)) return "video essence (" + name + ")";
    if (descriptor.isA(AUID_AAFSoundDescriptor)) return "compressed or unknown sound essence (" + name + ")";
    return "not audio essence (" + name + ")";
}

}  // namespace

const char* formatName(const AudioDescription& audio) {
    if (audio.layout == EssenceLayout::RawPcm) return "PCM";
    switch (audio.container) {
        case AudioContainer::Wave:
            return "WAV";
        case AudioContainer::Aiff:
            return "AIFF";
        case AudioContainer::Aifc:
            return "AIFF-C";
    }
    return "PCM";
}

Status describeAudio(const Object& descriptor, AudioDescription& out) {
    out = AudioDescription();
    Status described =
        descriptor.isA(AUID_AAFPCMDescriptor)    ? describePcm(descriptor, out)
        : descriptor.isA(AUID_AAFWAVEDescriptor) ? describeSummary(descriptor, PID_WAVEDescriptor_Summary, out)
        : descriptor.isA(AUID_AAFAIFCDescriptor) ? describeSummary(descriptor, PID_AIFCDescriptor_Summary, out)
                                                 : Status::error(notAudio(descriptor));
    if (!described) return described;
    // The file descriptor's own rate and length count over what a copied header says.
    aafRational_t rate = {0, 0};
    if (getRational(descriptor, PID_FileDescriptor_SampleRate, rate) == AAFRESULT_SUCCESS && rate.numerator > 0 &&
        rate.denominator > 0 && out.layout == EssenceLayout::StoredFile)
        out.sampleRate = double(rate.numerator) / rate.denominator;
    int64_t length = 0;
    if (getInt64(descriptor, PID_FileDescriptor_Length, length) == AAFRESULT_SUCCESS && length >= 0)
        out.length = length;
    return Status();
}

namespace {

// The AAF container definition ("the essence is in this file"), registered when the file lacks it.
Object& aafContainer(File& file) {
    Object* container = nullptr;
    if (lookupDefinition(file, PID_Dictionary_ContainerDefinitions, kAAFContainerDef_AAF, container) ==
        AAFRESULT_SUCCESS)
        return *container;
    std::wstring name = L"AAF";
    for (const meta::BaselineDefinition& row : meta::baselineDefinitions())
        if (row.id == kAAFContainerDef_AAF) name = utf8ToWide(row.name.c_str());
    return registerDefinition(file, PID_Dictionary_ContainerDefinitions,
                              newDefinition(file, AUID_AAFContainerDefinition, kAAFContainerDef_AAF, name, L""));
}

aafRational_t rationalRate(double sampleRate) {
    const double rounded = std::round(sampleRate);
    if (rounded == sampleRate && rounded > 0 && rounded < 2147483647.0) return {int32_t(rounded), 1};
    return {int32_t(std::lround(sampleRate * 1000)), 1000};
}

// A stored file's header lies within its first MiB (Pro Tools pads it to 4 KiB).
constexpr uint64_t kHeaderWindow = 1 << 20;

std::string mobIdKey(const aafMobID_t& id) {
    uint8_t bytes[32];
    encodeMobId(id, bytes);
    return std::string(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

}  // namespace

EssenceIndex::EssenceIndex(const File& file) {
    Object* storage = file.contentStorage();
    const std::vector<Object*>* essence = nullptr;
    if (!storage || getObjects(*storage, PID_ContentStorage_EssenceData, essence) != AAFRESULT_SUCCESS || !essence)
        return;
    for (Object* data : *essence) {
        aafMobID_t id;
        if (getMobId(*data, PID_EssenceData_MobID, id) == AAFRESULT_SUCCESS) byMobId_.emplace(mobIdKey(id), data);
    }
}

Object* EssenceIndex::find(const aafMobID_t& mobId) const {
    auto found = byMobId_.find(mobIdKey(mobId));
    return found == byMobId_.end() ? nullptr : found->second;
}

AAFRESULT getEssenceStream(const Object& essenceData, const StreamContent*& out) {
    return getStream(essenceData, PID_EssenceData_Data, out);
}

AAFRESULT addEssenceData(File& file, const aafMobID_t& mobId, std::unique_ptr<StreamContent> content) {
    Object* storage = file.contentStorage();
    if (!storage) return AAFRESULT_OBJECT_NOT_FOUND;
    Object* essence = file.create(AUID_AAFEssenceData);
    if (!essence) return AAFRESULT_OBJECT_NOT_FOUND;
    setMobId(*essence, PID_EssenceData_MobID, mobId);
    setStream(*essence, PID_EssenceData_Data, std::move(content));
    // The set is keyed by MobID: a second EssenceData for the mob is refused there.
    return addToSet(*storage, PID_ContentStorage_EssenceData, *essence);
}

bool holdsStoredFile(const StreamContent& content) {
    uint8_t start[12];
    return content.size() >= sizeof start && content.read(0, start, sizeof start).ok() &&
           hasAudioSignature(start, sizeof start);
}

Status readStoredAudioHeader(const StreamContent& content, AudioHeader& out, std::vector<uint8_t>* summary) {
    std::vector<uint8_t> head(size_t(std::min<uint64_t>(content.size(), kHeaderWindow)));
    if (Status s = content.read(0, head.data(), head.size()); !s) return s;
    if (Status s = parseAudioHeader(head.data(), head.size(), out); !s)
        return Status::error("the header does not parse: " + s.message());
    if (!out.hasData) return Status::error("no sample data chunk within the first MiB");
    if (out.dataOffset + out.dataSize > content.size())
        return Status::error("the header declares " + std::to_string(out.dataSize) + " sample bytes from offset " +
                             std::to_string(out.dataOffset) + "; there are only " + std::to_string(content.size()) +
                             " bytes");
    if (summary) summary->assign(head.begin(), head.begin() + long(out.dataOffset));
    return Status();
}

void embedStoredAudio(File& file, Object& fileMob, const AudioHeader& header, std::vector<uint8_t> summary,
                      std::unique_ptr<StreamContent> content) {
    const bool wave = header.container == AudioContainer::Wave;
    Object* descriptor = file.create(wave ? AUID_AAFWAVEDescriptor : AUID_AAFAIFCDescriptor);
    if (!descriptor) throw ResultException(AAFRESULT_OBJECT_NOT_FOUND);
    setRational(*descriptor, PID_FileDescriptor_SampleRate, rationalRate(header.sampleRate));
    setInt64(*descriptor, PID_FileDescriptor_Length, int64_t(header.frames()));
    check(setReference(*descriptor, PID_FileDescriptor_ContainerFormat, aafContainer(file)));
    setBytes(*descriptor, wave ? PID_WAVEDescriptor_Summary : PID_AIFCDescriptor_Summary, std::move(summary));
    aafMobID_t mobId;
    check(getMobId(fileMob, PID_Mob_MobID, mobId));
    check(addEssenceData(file, mobId, std::move(content)));
    check(setObject(fileMob, PID_SourceMob_EssenceDescription, *descriptor));
}

}  // namespace aafkit

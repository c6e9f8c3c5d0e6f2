// aafbridge extract FILE.aaf DIR: every embedded audio essence written into DIR as an
// audio file named after its clip, with DIR/manifest.json listing what was written.
// Raw PCM becomes WAV (broadcast wave with the source's timecode as time reference);
// stored WAV and AIFF-C files come out as stored. Exit status 0 when every embedded
// audio essence was written, 1 when one failed (the others are still written) or
// nothing could be, 2 for usage.
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "media/AudioFile.h"
#include "commands/Commands.h"
#include "media/MediaCatalogue.h"
#include "cli/OpenFile.h"
#include "cli/PendingFile.h"
#include "media/SafeFileName.h"
#include "media/SourceTimecode.h"
#include "aafkit/ResultCodes.h"

using Json = nlohmann::json;
namespace fs = std::filesystem;

namespace {

const char* extensionOf(aafkit::AudioContainer container) {
    switch (container) {
        case aafkit::AudioContainer::Wave:
            return ".wav";
        case aafkit::AudioContainer::Aiff:
            return ".aif";
        case aafkit::AudioContainer::Aifc:
            return ".aifc";
    }
    return ".wav";
}

std::string describe(const char* format, unsigned channels, double rate, unsigned bits, uint64_t frames) {
    char text[128];
    std::snprintf(text, sizeof text, "%s %uch %gHz %ubit, %llu frames", format, channels, rate, bits,
                  static_cast<unsigned long long>(frames));
    return text;
}

// The content into a new file at `path`, a chunk at a time.
aafkit::Status copyToFile(const aafkit::StreamContent& stream, const std::string& path) {
    std::unique_ptr<FILE, int (*)(FILE*)> out(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!out) return aafkit::Status::error("cannot write " + path + ": " + std::strerror(errno));
    if (aafkit::Status s = aafkit::copyChunks(stream,
                                              [&](const uint8_t* bytes, size_t size) {
                                                  return std::fwrite(bytes, 1, size, out.get()) == size
                                                             ? aafkit::Status()
                                                             : aafkit::Status::error("cannot write " + path + ": " +
                                                                                     std::strerror(errno));
                                              });
        !s)
        return s;
    if (std::fclose(out.release()) != 0)
        return aafkit::Status::error("cannot write " + path + ": " + std::strerror(errno));
    return aafkit::Status();
}

class Extraction {
public:
    Extraction(const aafkit::File& file, fs::path folder) : file_(file), folder_(std::move(folder)) {}

    void run(const std::vector<MediaEntry>& entries) {
        for (const MediaEntry& entry : entries)
            if (entry.essenceData) extract(entry);
    }
    bool failed() const { return !errors_.empty(); }
    Json manifest(const std::string& source) const {
        return {{"source", source}, {"files", files_}, {"skipped", skipped_}, {"errors", errors_}};
    }

private:
    void extract(const MediaEntry& entry) {
        if (!entry.audioStatus) {
            std::printf("skipped \"%s\": %s\n", entry.label().c_str(), entry.audioStatus.message().c_str());
            skipped_.push_back(
                {{"clip", entry.clipName}, {"mobId", entry.mobIdText}, {"reason", entry.audioStatus.message()}});
            return;
        }
        const aafkit::StreamContent* stream = nullptr;
        Json row = {{"clip", entry.clipName}, {"mobId", entry.mobIdText}};
        const aafkit::Status done =
            aafkit::getEssenceStream(*entry.essenceData, stream) != AAFRESULT_SUCCESS || !stream
                ? aafkit::Status::error("the EssenceData has no Data stream")
            : entry.audio.layout == aafkit::EssenceLayout::StoredFile && aafkit::holdsStoredFile(*stream)
                ? extractStored(entry, *stream, row)
                : extractPcm(entry, *stream, row);
        if (!done) {
            std::fprintf(stderr, "aafbridge extract: \"%s\": %s\n", entry.label().c_str(), done.message().c_str());
            errors_.push_back({{"clip", entry.clipName}, {"mobId", entry.mobIdText}, {"error", done.message()}});
            return;
        }
        std::printf("\"%s\" -> %s (%s)\n", entry.label().c_str(), (folder_ / row["file"].get<std::string>()).c_str(),
                    row["summary"].get<std::string>().c_str());
        if (row.contains("note")) std::printf("    note: %s\n", row["note"].get<std::string>().c_str());
        row.erase("summary");
        files_.push_back(row);
    }

    std::string stemOf(const MediaEntry& entry) {
        const std::string safe = safeFileName(withoutAudioExtension(entry.clipName));
        return safe.empty() ? safeFileName(entry.mobIdText) : safe;
    }

    aafkit::Status extractPcm(const MediaEntry& entry, const aafkit::StreamContent& stream, Json& row) {
        const aafkit::AudioDescription& audio = entry.audio;
        if (audio.length >= 0 && uint64_t(audio.length) > stream.size() / audio.blockAlign())
            return aafkit::Status::error("the essence stream holds " + std::to_string(stream.size()) +
                                         " bytes; its descriptor claims " + std::to_string(audio.length) +
                                         " frames of " + std::to_string(audio.blockAlign()) + " bytes");
        const int rate = int(std::lround(audio.sampleRate));
        const std::optional<uint64_t> reference = timeReference(file_, *entry.fileMob, audio.sampleRate);
        const std::string name = names_.take(stemOf(entry), ".wav");
        PendingFile output((folder_ / name).string());
        WaveWriter writer;
        if (aafkit::Status s =
                writer.open(output.temporaryPath(), audio.channels, rate, audio.bits, audio.bigEndian, reference);
            !s)
            return s;
        if (aafkit::Status s = aafkit::copyChunks(
                stream, [&](const uint8_t* bytes, size_t size) { return writer.write(bytes, size); });
            !s)
            return s;
        size_t dropped = 0;
        if (aafkit::Status s = writer.close(dropped); !s) return s;
        if (aafkit::Status s = output.commit(); !s) return s;
        const uint64_t frames = stream.size() / audio.blockAlign();
        row.update({{"file", name},
                    {"format", "PCM"},
                    {"written", "WAV"},
                    {"channels", audio.channels},
                    {"sampleRate", rate},
                    {"bits", audio.bits},
                    {"frames", frames}});
        if (reference) row["timeReference"] = *reference;
        if (dropped) row["note"] = std::to_string(dropped) + " trailing bytes did not make a whole frame";
        row["summary"] = describe("WAV", audio.channels, rate, audio.bits, frames);
        return aafkit::Status();
    }

    aafkit::Status extractStored(const MediaEntry& entry, const aafkit::StreamContent& stream, Json& row) {
        aafkit::AudioHeader header;
        if (aafkit::Status s = aafkit::readStoredAudioHeader(stream, header); !s)
            return aafkit::Status::error("the stored file: " + s.message());
        const std::string name = names_.take(stemOf(entry), extensionOf(header.container));
        PendingFile output((folder_ / name).string());
        if (aafkit::Status s = copyToFile(stream, output.temporaryPath()); !s) return s;
        if (aafkit::Status s = output.commit(); !s) return s;
        aafkit::AudioDescription stored = entry.audio;
        stored.container = header.container;
        row.update({{"file", name},
                    {"format", aafkit::formatName(stored)},
                    {"written", "as stored"},
                    {"channels", header.channels},
                    {"sampleRate", header.sampleRate},
                    {"bits", header.bits},
                    {"frames", header.frames()}});
        if (entry.audio.length > int64_t(header.frames()))
            row["note"] = "the descriptor claims " + std::to_string(entry.audio.length) + " frames; the stream holds " +
                          std::to_string(header.frames());
        row["summary"] =
            describe(aafkit::formatName(stored), header.channels, header.sampleRate, header.bits, header.frames());
        return aafkit::Status();
    }

    const aafkit::File& file_;
    fs::path folder_;
    UniqueFileNames names_;
    Json files_ = Json::array(), skipped_ = Json::array(), errors_ = Json::array();
};

bool hasEmbeddedEssence(const std::vector<MediaEntry>& entries) {
    for (const MediaEntry& entry : entries)
        if (entry.essenceData) return true;
    return false;
}

aafkit::Status writeManifest(const Json& manifest, const fs::path& path) {
    const std::string text = manifest.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    PendingFile output(path.string());
    if (aafkit::Status s = copyToFile(aafkit::MemoryStream({text.begin(), text.end()}), output.temporaryPath()); !s)
        return s;
    return output.commit();
}

// The folder, created if need be, and proved writable before anything is extracted.
aafkit::Status prepareFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) return aafkit::Status::error("cannot create " + folder.string() + ": " + error.message());
    PendingFile probe((folder / "manifest.json").string());
    FILE* out = std::fopen(probe.temporaryPath().c_str(), "wb");
    if (!out) return aafkit::Status::error("cannot write in " + folder.string() + ": " + std::strerror(errno));
    std::fclose(out);
    return aafkit::Status();
}

}  // namespace

int runExtract(const Invocation& invocation) {
    const std::string& path = invocation.operand(0);
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, path);
    if (!file) return kExitFailure;
    const std::vector<MediaEntry> entries = catalogueMedia(*file);
    if (!hasEmbeddedEssence(entries)) return fail(invocation, path + " holds no embedded essence; nothing written");
    const fs::path folder(invocation.operand(1));
    if (aafkit::Status s = prepareFolder(folder); !s) return fail(invocation, s.message());
    Extraction extraction(*file, folder);
    extraction.run(entries);
    if (aafkit::Status s = writeManifest(extraction.manifest(path), folder / "manifest.json"); !s)
        return fail(invocation, s.message());
    return extraction.failed() ? kExitFailure : kExitSuccess;
}

// aafbridge embed IN.aaf OUT.aaf: a copy of IN in which every clip whose locator names a
// WAV or AIFF/AIFF-C file on this machine carries that file inside, as Media Composer
// and Premiere store embedded audio. Media that cannot be embedded is listed with the
// reason and stays linked. Exit status 0 when OUT was written with every linked sound
// clip embedded, 1 when some media stays linked or nothing could be written, 2 for usage.
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "media/AudioFile.h"
#include "commands/Commands.h"
#include "cli/FileStream.h"
#include "media/MediaCatalogue.h"
#include "media/MediaLocation.h"
#include "cli/OpenFile.h"
#include "cli/PendingFile.h"
#include "aafkit/Checked.h"

namespace {

struct Prepared {
    std::unique_ptr<FileStream> content;
    aafkit::AudioHeader header;
    std::vector<uint8_t> summary;
};

// The descriptor's claims that the file contradicts, if any.
aafkit::Status agreesWithDescriptor(const MediaEntry& entry, const AudioFileInfo& info) {
    if (!entry.audioStatus) return aafkit::Status();  // nothing stated to contradict
    if (entry.audio.channels && entry.audio.channels != info.channels)
        return aafkit::Status::error("the file has " + std::to_string(info.channels) +
                                     " channels; the clip's descriptor says " + std::to_string(entry.audio.channels));
    if (entry.audio.sampleRate > 0 && std::fabs(entry.audio.sampleRate - info.sampleRate) > 0.5)
        return aafkit::Status::error("the file's rate is " + std::to_string(info.sampleRate) +
                                     " Hz; the clip's descriptor says " +
                                     std::to_string(std::lround(entry.audio.sampleRate)));
    return aafkit::Status();
}

aafkit::Status prepare(const MediaEntry& entry, const std::string& path, Prepared& out) {
    AudioFileInfo info;
    if (aafkit::Status s = probeAudioFile(path, info); !s) return s;
    if (aafkit::Status s = agreesWithDescriptor(entry, info); !s) return s;
    if (aafkit::Status s = FileStream::open(path, out.content); !s) return s;
    if (aafkit::Status s = aafkit::readStoredAudioHeader(*out.content, out.header, &out.summary); !s)
        return aafkit::Status::error(path + ": " + s.message());
    return aafkit::Status();
}

// Embeds one clip's media, or says why it stays linked.
aafkit::Status embedOne(aafkit::File& file, const MediaEntry& entry, const std::string& aafPath, std::string& from) {
    if (entry.kind != "sound") return aafkit::Status::error(entry.kind + " media is not embedded");
    if (entry.locator.empty()) return aafkit::Status::error("no locator names its file");
    const MediaLocation location = locateMedia(entry.locator, aafPath);
    if (location.path.empty()) return aafkit::Status::error("file not found: " + pathFromLocator(entry.locator));
    Prepared prepared;
    if (aafkit::Status s = prepare(entry, location.path, prepared); !s) return s;
    try {
        aafkit::embedStoredAudio(file, *entry.fileMob, prepared.header, std::move(prepared.summary),
                                 std::move(prepared.content));
    } catch (const aafkit::ResultException& failure) {
        return aafkit::Status::error("cannot add its essence: " + std::string(failure.what()));
    }
    from = location.path;
    return aafkit::Status();
}

}  // namespace

int runEmbed(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
    const std::string& outputPath = invocation.operand(1);
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, input);
    if (!file) return kExitFailure;
    size_t embedded = 0, linked = 0;
    for (const MediaEntry& entry : catalogueMedia(*file)) {
        if (entry.essenceData) continue;
        std::string from;
        if (aafkit::Status s = embedOne(*file, entry, input, from); !s) {
            std::printf("stays linked \"%s\": %s\n", entry.label().c_str(), s.message().c_str());
            ++linked;
        } else {
            std::printf("embedded \"%s\" from %s\n", entry.label().c_str(), from.c_str());
            ++embedded;
        }
    }
    PendingFile output(outputPath);
    aafkit::Status saved = file->save(output.temporaryPath());
    if (saved) saved = output.commit();
    if (!saved) return fail(invocation, "cannot write " + outputPath + ": " + saved.message());
    std::printf("%zu embedded, %zu linked\n", embedded, linked);
    return linked ? kExitFailure : kExitSuccess;
}

// Writes an AAF file of any size whose audio sits inside it, as an "embedded
// media" export does: two clips cut into a composition through the writer, then
// an EssenceData stream of generated 24-bit PCM for each file source mob.
// The essence is produced while the file is written, so memory stays small.
//   generate_embedded_aaf OUT.aaf GIBIBYTES
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "aafbridge/aaf_writer.h"
#include "aafkit/Builders.h"
#include "aafkit/File.h"
#include "aafkit/Values.h"
#include "aafkit/meta/Ids.h"

namespace {

constexpr uint32_t kSampleRate = 48000;
constexpr uint32_t kBytesPerFrame = 3 * 2;  // 24-bit stereo

// Bytes computed from their offset: any range reads the same every time.
class GeneratedPcm : public aafkit::StreamContent {
public:
    explicit GeneratedPcm(uint64_t size) : size_(size) {}
    uint64_t size() const override { return size_; }
    aafkit::Status read(uint64_t offset, uint8_t* out, size_t n) const override {
        if (offset > size_ || n > size_ - offset) return aafkit::Status::error("read past the generated essence");
        for (size_t i = 0; i < n; ++i) out[i] = uint8_t(((offset + i) * 2654435761u) >> 13);
        return aafkit::Status();
    }

private:
    uint64_t size_;
};

bool writeComposition(const std::string& path, int64_t frames) {
    AafWriterContext* c = nullptr;
    CreateAafWriterContext(&c);
    for (int i = 0; i < 2; ++i) {
        const std::wstring name = L"Embedded " + std::to_wstring(i + 1);
        const std::wstring media = L"/Volumes/Media/embedded" + std::to_wstring(i + 1) + L".wav";
        const int32_t clip = AddClip(name.c_str(), media.c_str(), frames, 0, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(clip, false, 25, 1, frames, c);
        SetAudioTrackInfo(uint32_t(clip), 1, 2, 24, kSampleRate, uint64_t(frames) * kSampleRate / 25, c);
    }
    InitComposition(25, 1, frames * 2, false, 90000, L"Embedded media", c);
    const uint32_t track = AddTrackToComposition(false, 25.0, c);
    AppendClipToTrack(track, 0, frames, false, 1, 1, c);
    AppendClipToTrack(track, 0, frames, false, 2, 1, c);
    const std::wstring widePath(path.begin(), path.end());
    const AAFRESULT result = WriteAafFile(widePath.c_str(), c);
    FreeAafWriterContext(c);
    return result == 0;
}

bool isFileSourceMob(const aafkit::Object& mob) {
    aafkit::Object* descriptor = nullptr;
    return mob.isA(AUID_AAFSourceMob) &&
           aafkit::getObject(mob, PID_SourceMob_EssenceDescription, descriptor) == 0 &&
           descriptor->isA(AUID_AAFFileDescriptor);
}

void embed(aafkit::File& file, uint64_t bytesPerClip) {
    const std::vector<aafkit::Object*>* mobs = nullptr;
    aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_Mobs, mobs);
    const std::vector<aafkit::Object*> sources(mobs->begin(), mobs->end());
    for (aafkit::Object* mob : sources) {
        if (!isFileSourceMob(*mob)) continue;
        aafMobID_t id{};
        aafkit::getMobId(*mob, PID_Mob_MobID, id);
        aafkit::Object& essence = aafkit::createObject(file, AUID_AAFEssenceData);
        aafkit::setMobId(essence, PID_EssenceData_MobID, id);
        aafkit::setStream(essence, PID_EssenceData_Data, std::make_unique<GeneratedPcm>(bytesPerClip));
        aafkit::addToSet(*file.contentStorage(), PID_ContentStorage_EssenceData, essence);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 || std::atof(argv[2]) <= 0) {
        std::fprintf(stderr, "usage: generate_embedded_aaf OUT.aaf GIBIBYTES\n");
        return 2;
    }
    const std::string out = argv[1];
    const uint64_t total = uint64_t(std::atof(argv[2]) * 1024 * 1024 * 1024);
    const uint64_t bytesPerClip = total / 2 / kBytesPerFrame * kBytesPerFrame;
    const int64_t frames = int64_t(bytesPerClip / kBytesPerFrame * 25 / kSampleRate);
    const std::string composition = out + ".composition.aaf";
    std::remove(composition.c_str());
    if (!writeComposition(composition, frames)) {
        std::fprintf(stderr, "generate_embedded_aaf: cannot write %s\n", composition.c_str());
        return 1;
    }
    std::unique_ptr<aafkit::File> file;
    aafkit::Status why;
    const AAFRESULT opened = aafkit::File::openExistingRead(composition, file, &why);
    std::remove(composition.c_str());
    if (opened != 0) {
        std::fprintf(stderr, "generate_embedded_aaf: %s\n", why.message().c_str());
        return 1;
    }
    embed(*file, bytesPerClip);
    if (aafkit::Status s = file->save(out); !s) {
        std::fprintf(stderr, "generate_embedded_aaf: %s\n", s.message().c_str());
        return 1;
    }
    return 0;
}

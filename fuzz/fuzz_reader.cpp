// Any bytes: open as a file through the reader's exported functions, catalogue the
// clips, walk the composition and ask every query of every track, event and marker.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "aafbridge/aaf_reader.h"

namespace {

std::wstring temporaryFile(const uint8_t* data, size_t size) {
    char name[] = "/tmp/fuzz-reader-XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0) return std::wstring();
    const bool written = write(fd, data, size) == ssize_t(size);
    close(fd);
    const std::string path(name);
    if (!written) unlink(name);
    return written ? std::wstring(path.begin(), path.end()) : std::wstring();
}

void queryEverything(AafParseContext* c) {
    wchar_t text[64];
    for (uint32_t clip = 0; clip < GetNumClips(c); ++clip) {
        LoadClipName(clip, text, 63, c);
        GetClipIsVideo(clip, 0, c);
    }
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m) GetMarkerText(m, text, 63, c);
    for (uint32_t t = 0; t < GetNumTracks(c); ++t)
        for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) {
            GetEventLen(t, e, c);
            GetEventInPoint(t, e, c);
            GetEventName(t, e, text, 63, c);
            for (uint32_t i = 0; i < 4; ++i) GetEffectElementId(t, e, i, text, 63, c);
            const uint32_t keys = GetEffectKeyFrameCount(t, e, c);
            for (uint32_t k = 0; k < keys && k < 64; ++k) GetEffectKeyFrame(t, e, k, c);
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::wstring path = temporaryFile(data, size);
    if (path.empty()) return 0;
    AafParseContext* context = nullptr;
    if (OpenAafFile(path.c_str(), &context) == 0) {
        ParseClips(context);
        ParseComposition(context);
        queryEverything(context);
        CloseFile(context);
    }
    unlink(std::string(path.begin(), path.end()).c_str());
    return 0;
}

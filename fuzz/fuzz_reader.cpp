// Any bytes: open as a file through the reader's exported functions, catalogue the
// clips, walk the composition and ask every query of every track, event and marker.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ReaderQueries.h"

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::wstring path = temporaryFile(data, size);
    if (path.empty()) return 0;
    readEverything(path.c_str());
    unlink(std::string(path.begin(), path.end()).c_str());
    return 0;
}

#include "OpenFile.h"

#include <cstdio>

std::unique_ptr<aafkit::File> openOrReport(const char* path) {
    std::unique_ptr<aafkit::File> file;
    aafkit::Status why;
    if (aafkit::File::openExistingRead(path, file, &why) != 0)
        std::fprintf(stderr, "aafbridge: %s\n", why.message().c_str());
    return file;
}

#include "cli/OpenFile.h"

#include <cstdio>

bool fileExists(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file) std::fclose(file);
    return file != nullptr;
}

bool readableOrReport(const Invocation& invocation, const std::string& path) {
    std::FILE* in = std::fopen(path.c_str(), "rb");
    if (!in) {
        fail(invocation, "cannot open " + path + ": " + systemReason());
        return false;
    }
    std::fclose(in);
    return true;
}

std::unique_ptr<aafkit::File> openOrReport(const Invocation& invocation, const std::string& path) {
    std::unique_ptr<aafkit::File> file;
    if (!readableOrReport(invocation, path)) return file;
    aafkit::Status why;
    if (aafkit::File::openExistingRead(path, file, &why) != 0) fail(invocation, why.message());
    return file;
}

bool creatableOrReport(const Invocation& invocation, const std::string& path) {
    const bool existed = fileExists(path);
    // Appending creates a missing file and leaves an existing one untouched.
    std::FILE* out = std::fopen(path.c_str(), "ab");
    if (!out) {
        fail(invocation, "cannot write " + path + ": " + systemReason());
        return false;
    }
    std::fclose(out);
    if (!existed) std::remove(path.c_str());
    return true;
}

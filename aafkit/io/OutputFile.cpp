#include "OutputFile.h"

#include <cerrno>
#include <cstring>

namespace aafkit::io {

namespace {

constexpr size_t kBufferSize = 1 << 20;

Status systemError(const std::string& what, const std::string& path) {
    return Status::error(what + " " + path + ": " + std::strerror(errno));
}

}  // namespace

OutputFile::OutputFile(std::string path, std::FILE* file)
    : path_(std::move(path)), temporary_(path_ + ".tmp"), file_(file) {}

OutputFile::~OutputFile() { discard(); }

Status OutputFile::create(const std::string& path, std::unique_ptr<OutputFile>& out) {
    std::FILE* file = std::fopen((path + ".tmp").c_str(), "wb");
    if (!file) return systemError("cannot create", path + ".tmp");
    std::setvbuf(file, nullptr, _IOFBF, kBufferSize);
    out.reset(new OutputFile(path, file));
    return Status();
}

Status OutputFile::write(const uint8_t* bytes, size_t n) {
    if (!file_) return Status::error("write to " + temporary_ + " after it was closed");
    if (std::fwrite(bytes, 1, n, file_) != n) return systemError("cannot write", temporary_);
    return Status();
}

Status OutputFile::commit() {
    if (!file_) return Status::error("write to " + temporary_ + " after it was closed");
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) {
        const Status failed = systemError("cannot write", temporary_);
        std::remove(temporary_.c_str());
        return failed;
    }
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        const Status failed = systemError("cannot replace", path_);
        std::remove(temporary_.c_str());
        return failed;
    }
    return Status();
}

void OutputFile::discard() {
    if (!file_) return;
    std::fclose(file_);
    file_ = nullptr;
    std::remove(temporary_.c_str());
}

}  // namespace aafkit::io

#include "InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace aafkit::io {

namespace {

Status systemError(const std::string& what, const std::string& path) {
    return Status::error(what + " " + path + ": " + std::strerror(errno));
}

std::string rangeText(uint64_t offset, size_t n) {
    return std::to_string(n) + " bytes at offset " + std::to_string(offset);
}

}  // namespace

InputFile::~InputFile() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

Status InputFile::open(const std::string& path, std::unique_ptr<InputFile>& out) {
    std::unique_ptr<InputFile> file(new InputFile());
    file->descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file->descriptor_ < 0) return systemError("cannot open", path);
    struct stat info {};
    if (::fstat(file->descriptor_, &info) != 0) return systemError("cannot read", path);
    if (!S_ISREG(info.st_mode)) return Status::error("cannot open " + path + ": not a regular file");
    file->size_ = uint64_t(info.st_size);
    out = std::move(file);
    return Status();
}

std::unique_ptr<InputFile> InputFile::fromBytes(std::vector<uint8_t> bytes) {
    std::unique_ptr<InputFile> file(new InputFile());
    file->size_ = bytes.size();
    file->bytes_ = std::move(bytes);
    return file;
}

Status InputFile::read(uint64_t offset, void* out, size_t n) const {
    if (offset > size_ || n > size_ - offset)
        return Status::error("read of " + rangeText(offset, n) + " past the end of the file (" +
                             std::to_string(size_) + " bytes)");
    if (n == 0) return Status();
    if (descriptor_ < 0) {
        std::memcpy(out, bytes_.data() + offset, n);
        return Status();
    }
    return readFromDescriptor(offset, static_cast<uint8_t*>(out), n);
}

Status InputFile::readFromDescriptor(uint64_t offset, uint8_t* out, size_t n) const {
    while (n > 0) {
        const ssize_t got = ::pread(descriptor_, out, n, off_t(offset));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Status::error("cannot read " + rangeText(offset, n) + ": " + std::strerror(errno));
        if (got == 0)  // the file shrank after it was opened
            return Status::error("the file ends before " + rangeText(offset, n) + ": it was truncated");
        offset += uint64_t(got);
        out += got;
        n -= size_t(got);
    }
    return Status();
}

}  // namespace aafkit::io

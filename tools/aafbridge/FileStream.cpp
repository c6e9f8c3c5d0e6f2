#include "FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

aafkit::Status FileStream::open(const std::string& path, std::unique_ptr<FileStream>& out) {
    const int descriptor = ::open(path.c_str(), O_RDONLY);
    struct stat info;
    if (descriptor < 0 || fstat(descriptor, &info) != 0) {
        const std::string reason = std::strerror(errno);
        if (descriptor >= 0) ::close(descriptor);
        return aafkit::Status::error("cannot read " + path + ": " + reason);
    }
    out.reset(new FileStream(descriptor, uint64_t(info.st_size), path));
    return aafkit::Status();
}

FileStream::~FileStream() { ::close(descriptor_); }

aafkit::Status FileStream::read(uint64_t offset, uint8_t* out, size_t n) const {
    if (offset > size_ || n > size_ - offset)
        return aafkit::Status::error(path_ + ": read of " + std::to_string(n) + " bytes at " + std::to_string(offset) +
                                     " past its end");
    for (size_t done = 0; done < n;) {
        const ssize_t got = pread(descriptor_, out + done, n - done, off_t(offset + done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0)
            return aafkit::Status::error(path_ + ": " +
                                         (got < 0 ? std::strerror(errno) : "file shrank while being read"));
        done += size_t(got);
    }
    return aafkit::Status();
}

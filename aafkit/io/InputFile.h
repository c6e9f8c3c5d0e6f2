#pragma once
// Read-only access to a file's bytes by range. Files are read with pread rather
// than mapped: a mapped file that another program truncates raises SIGBUS in
// the host, where a read past the new end here is just an error.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "../Status.h"

namespace aafkit::io {

class InputFile {
public:
    // Opens a regular file; folders and unreadable paths are refused with the reason.
    static Status open(const std::string& path, std::unique_ptr<InputFile>& out);
    // Bytes already in memory (tests, fuzzing, data handed over by a host).
    static std::unique_ptr<InputFile> fromBytes(std::vector<uint8_t> bytes);

    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    // The size when opened; reads are checked against it and against the file as it is now.
    uint64_t size() const { return size_; }
    // Exactly `n` bytes from `offset`, or an error that says where: never a short read.
    Status read(uint64_t offset, void* out, size_t n) const;

private:
    InputFile() = default;
    Status readFromDescriptor(uint64_t offset, uint8_t* out, size_t n) const;

    int descriptor_ = -1;
    uint64_t size_ = 0;
    std::vector<uint8_t> bytes_;  // used when there is no descriptor
};

}  // namespace aafkit::io

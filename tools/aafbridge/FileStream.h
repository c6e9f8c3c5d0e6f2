#pragma once
// A file on disk as stream content, read on request: embedding hands one to the saver,
// which reads it a chunk at a time while it writes, so no audio file is held whole.
#include <memory>
#include <string>

#include "aafkit/om/StreamContent.h"

class FileStream : public aafkit::StreamContent {
public:
    static aafkit::Status open(const std::string& path, std::unique_ptr<FileStream>& out);
    ~FileStream() override;
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    uint64_t size() const override { return size_; }
    aafkit::Status read(uint64_t offset, uint8_t* out, size_t n) const override;

private:
    FileStream(int descriptor, uint64_t size, std::string path)
        : descriptor_(descriptor), size_(size), path_(std::move(path)) {}
    int descriptor_;
    uint64_t size_;
    std::string path_;
};

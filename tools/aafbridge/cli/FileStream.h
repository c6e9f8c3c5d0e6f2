#pragma once
// A file on disk as stream content, read on request: embedding hands one to the saver,
// which reads it a chunk at a time while it writes, so no audio file is held whole.
#include <memory>
#include <string>

#include "aafkit/io/InputFile.h"
#include "aafkit/io/StreamContent.h"

class FileStream : public aafkit::StreamContent {
public:
    static aafkit::Status open(const std::string& path, std::unique_ptr<FileStream>& out);

    uint64_t size() const override { return file_->size(); }
    aafkit::Status read(uint64_t offset, uint8_t* out, size_t n) const override { return file_->read(offset, out, n); }

private:
    explicit FileStream(std::unique_ptr<aafkit::io::InputFile> file) : file_(std::move(file)) {}
    std::unique_ptr<aafkit::io::InputFile> file_;
};

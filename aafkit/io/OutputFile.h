#pragma once
// Where a compound file being written goes, front to back: a file on disk or
// bytes in memory.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "../Status.h"

namespace aafkit::io {

class OutputSink {
public:
    virtual ~OutputSink() = default;
    virtual Status write(const uint8_t* bytes, size_t n) = 0;
};

class MemoryOutput : public OutputSink {
public:
    explicit MemoryOutput(std::vector<uint8_t>& out) : out_(out) {}
    Status write(const uint8_t* bytes, size_t n) override {
        out_.insert(out_.end(), bytes, bytes + n);
        return Status();
    }

private:
    std::vector<uint8_t>& out_;
};

// Written under a temporary name beside `path` and put in place by commit(), so
// that a failed write never leaves a partial file where the caller looks for one.
class OutputFile : public OutputSink {
public:
    static Status create(const std::string& path, std::unique_ptr<OutputFile>& out);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile() override;

    Status write(const uint8_t* bytes, size_t n) override;
    Status commit();

private:
    OutputFile(std::string path, std::FILE* file);
    void discard();

    std::string path_;
    std::string temporary_;
    std::FILE* file_;
};

}  // namespace aafkit::io

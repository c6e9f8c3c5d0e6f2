#pragma once
// Stream content computed from its offset, of any size and without memory: the
// same range always reads the same bytes, so a copy or a read can be checked
// anywhere without keeping the original.
#include <cstdint>

#include "aafkit/io/StreamContent.h"

namespace testsupport {

inline uint8_t patternByte(uint64_t offset) { return uint8_t((offset * 2654435761u) >> 13); }

class PatternStream : public aafkit::StreamContent {
public:
    explicit PatternStream(uint64_t size) : size_(size) {}
    uint64_t size() const override { return size_; }
    aafkit::Status read(uint64_t offset, uint8_t* out, size_t n) const override {
        if (offset > size_ || n > size_ - offset) return aafkit::Status::error("read past the pattern's end");
        for (size_t i = 0; i < n; ++i) out[i] = patternByte(offset + i);
        return aafkit::Status();
    }

private:
    uint64_t size_;
};

}  // namespace testsupport

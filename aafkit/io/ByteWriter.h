#pragma once
// Little-endian appends to a growing byte buffer (the writing twin of ByteReader).
#include <cstddef>
#include <cstdint>
#include <vector>

namespace aafkit {

class ByteWriter {
public:
    explicit ByteWriter(std::vector<uint8_t>& out) : out_(out) {}

    void u8(uint8_t v) { out_.push_back(v); }
    void u16(uint16_t v) { littleEndian(v); }
    void u32(uint32_t v) { littleEndian(v); }
    void u64(uint64_t v) { littleEndian(v); }
    void bytes(const void* p, size_t n) {
        auto* b = static_cast<const uint8_t*>(p);
        out_.insert(out_.end(), b, b + n);
    }
    void zeros(size_t n) { out_.insert(out_.end(), n, 0); }
    size_t size() const { return out_.size(); }

private:
    template <typename T>
    void littleEndian(T v) {
        for (size_t i = 0; i < sizeof(T); ++i) out_.push_back(uint8_t(v >> (8 * i)));
    }
    std::vector<uint8_t>& out_;
};

}  // namespace aafkit

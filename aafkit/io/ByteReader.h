#pragma once
// The one bounds-checked reader over untrusted bytes. Every read checks the
// remaining length first; a failed read leaves the position unchanged.
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace aafkit {

class ByteReader {
public:
    ByteReader(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    size_t offset() const { return pos_; }
    size_t size() const { return size_; }
    size_t remaining() const { return size_ - pos_; }

    bool seek(size_t offset) {
        if (offset > size_) return false;
        pos_ = offset;
        return true;
    }
    bool skip(size_t n) {
        if (n > remaining()) return false;
        pos_ += n;
        return true;
    }
    bool bytes(size_t n, const uint8_t*& out) {
        if (n > remaining()) return false;
        out = data_ + pos_;
        pos_ += n;
        return true;
    }
    bool copy(void* out, size_t n) {
        const uint8_t* p = nullptr;
        if (!bytes(n, p)) return false;
        std::memcpy(out, p, n);
        return true;
    }
    bool u8(uint8_t& v) { return copy(&v, 1); }
    bool u16(uint16_t& v) { return littleEndian(v); }
    bool u32(uint32_t& v) { return littleEndian(v); }
    bool u64(uint64_t& v) { return littleEndian(v); }

private:
    template <typename T>
    bool littleEndian(T& v) {
        const uint8_t* p = nullptr;
        if (!bytes(sizeof(T), p)) return false;
        T r = 0;
        for (size_t i = 0; i < sizeof(T); ++i) r |= T(p[i]) << (8 * i);
        v = r;
        return true;
    }

    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

}  // namespace aafkit

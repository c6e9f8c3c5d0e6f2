#pragma once
// A byte string that keeps up to 32 bytes in place: almost every stored value
// (integers, rationals, AUIDs, MobIDs, short names) and every weak-reference key
// fits, so loading a file does not allocate per property.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace aafkit {

class Bytes {
public:
    Bytes() = default;
    Bytes(const uint8_t* bytes, size_t size) { assign(bytes, bytes + size); }
    Bytes(const std::vector<uint8_t>& bytes) : Bytes(bytes.data(), bytes.size()) {}  // NOLINT: implicit by design
    Bytes(const Bytes& other) : Bytes(other.data(), other.size()) {}
    Bytes(Bytes&& other) noexcept { take(other); }
    Bytes& operator=(const Bytes& other) {
        if (this != &other) assign(other.begin(), other.end());
        return *this;
    }
    Bytes& operator=(Bytes&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    ~Bytes() { release(); }

    void assign(const uint8_t* first, const uint8_t* last);
    // Zero-filled bytes of that size (contents are not kept).
    void resize(size_t size);

    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const uint8_t* data() const { return onHeap() ? heap_ : inline_; }
    uint8_t* data() { return onHeap() ? heap_ : inline_; }
    const uint8_t* begin() const { return data(); }
    const uint8_t* end() const { return data() + size_; }
    uint8_t operator[](size_t i) const { return data()[i]; }
    operator std::vector<uint8_t>() const { return std::vector<uint8_t>(begin(), end()); }  // NOLINT

    bool operator==(const Bytes& o) const { return size_ == o.size_ && std::memcmp(data(), o.data(), size_) == 0; }
    bool operator!=(const Bytes& o) const { return !(*this == o); }
    bool operator<(const Bytes& o) const;

private:
    static constexpr size_t kInline = 32;
    bool onHeap() const { return size_ > kInline; }
    void release();
    void take(Bytes& other) noexcept;

    size_t size_ = 0;
    union {
        uint8_t inline_[kInline];
        uint8_t* heap_;
    };
};

}  // namespace aafkit

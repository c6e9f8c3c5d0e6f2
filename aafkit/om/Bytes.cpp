#include "Bytes.h"

#include <algorithm>

namespace aafkit {

void Bytes::assign(const uint8_t* first, const uint8_t* last) {
    resize(size_t(last - first));
    if (size_) std::memmove(data(), first, size_);
}

void Bytes::resize(size_t size) {
    if (size != size_ || onHeap()) {
        release();
        size_ = size;
        if (onHeap()) heap_ = new uint8_t[size];
    }
    std::memset(data(), 0, size_);
}

bool Bytes::operator<(const Bytes& o) const {
    return std::lexicographical_compare(begin(), end(), o.begin(), o.end());
}

void Bytes::release() {
    if (onHeap()) delete[] heap_;
    size_ = 0;
}

void Bytes::take(Bytes& other) noexcept {
    size_ = other.size_;
    if (other.onHeap())
        heap_ = other.heap_;
    else
        std::memcpy(inline_, other.inline_, size_);
    other.size_ = 0;
}

}  // namespace aafkit

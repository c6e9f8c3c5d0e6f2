#pragma once
// 64-bit sums that stop at the limits instead of overflowing: lengths and positions
// reach here unchecked from callers, and any value they pass must stay defined.
#include <cstdint>
#include <limits>

namespace aafkit {

inline int64_t saturatingAdd(int64_t a, int64_t b) {
    if (b > 0 && a > std::numeric_limits<int64_t>::max() - b) return std::numeric_limits<int64_t>::max();
    if (b < 0 && a < std::numeric_limits<int64_t>::min() - b) return std::numeric_limits<int64_t>::min();
    return a + b;
}

inline int64_t saturatingSubtract(int64_t a, int64_t b) {
    if (b < 0 && a > std::numeric_limits<int64_t>::max() + b) return std::numeric_limits<int64_t>::max();
    if (b > 0 && a < std::numeric_limits<int64_t>::min() + b) return std::numeric_limits<int64_t>::min();
    return a - b;
}

}  // namespace aafkit

#pragma once
// Positions carried from one edit rate to another, as a clip's start is carried down its
// source chain (30000/1001 picture into 48000 Hz sound, say).
#include <cmath>
#include <cstdint>

#include "aafkit/AafTypes.h"

namespace composition {

inline bool sameRate(const aafRational_t& a, const aafRational_t& b) {
    return int64_t(a.numerator) * b.denominator == int64_t(b.numerator) * a.denominator;
}

// `value` edit units at `from` in edit units at `to`, to the nearest; unchanged when either
// rate is not a rate.
inline int64_t convertEditUnits(int64_t value, const aafRational_t& from, const aafRational_t& to) {
    if (from.numerator <= 0 || from.denominator <= 0 || to.numerator <= 0 || to.denominator <= 0 ||
        sameRate(from, to))
        return value;
    const long double scaled = (long double)value * to.numerator * from.denominator /
                               ((long double)to.denominator * from.numerator);
    if (scaled >= 9.2e18L || scaled <= -9.2e18L) return value;
    return int64_t(std::llround(scaled));
}

inline double rateValue(const aafRational_t& rate) {
    return rate.denominator ? double(rate.numerator) / double(rate.denominator) : 0.0;
}

}  // namespace composition

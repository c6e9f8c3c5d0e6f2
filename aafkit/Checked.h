#pragma once
// The writing side's checked layer: a failed result code becomes an exception
// that carries it, so building code reads as straight-line calls.
#include <stdexcept>

#include "AafTypes.h"

namespace aafkit {

class ResultException : public std::runtime_error {
public:
    explicit ResultException(AAFRESULT code);
    AAFRESULT result() const { return code_; }

private:
    AAFRESULT code_;
};

inline void check(AAFRESULT code) {
    if (code < 0) throw ResultException(code);
}

}  // namespace aafkit

#include "Checked.h"

#include <cstdio>

namespace aafkit {

static std::string describe(AAFRESULT code) {
    char text[48];
    std::snprintf(text, sizeof text, "AAF call failed with 0x%08x", unsigned(code));
    return text;
}

ResultException::ResultException(AAFRESULT code) : std::runtime_error(describe(code)), code_(code) {}

}  // namespace aafkit

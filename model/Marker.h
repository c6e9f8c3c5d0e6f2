#pragma once
// A comment at a position of the composition.
#include <cstdint>
#include <cwchar>

#include "Text.h"

struct Marker {
    wchar_t text[kTextLength] = {};
    int64_t position = 0;
};

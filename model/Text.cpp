#include "Text.h"

#include <algorithm>

void copyText(wchar_t* dest, size_t capacity, const wchar_t* source) {
    if (capacity == 0) return;
    size_t n = 0;
    if (source)
        for (; n + 1 < capacity && source[n]; ++n) dest[n] = source[n];
    dest[n] = 0;
}

void EventText::assign(const wchar_t* source) {
    const size_t length = source ? std::wcslen(source) : 0;
    text_.assign(source ? source : L"", std::min(length, kTextLength - 1));
}

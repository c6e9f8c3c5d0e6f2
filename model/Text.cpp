#include "Text.h"

#include <algorithm>

void copyText(wchar_t* dest, size_t capacity, const wchar_t* source) {
    if (capacity == 0) return;
    size_t n = 0;
    if (source)
        for (; n + 1 < capacity && source[n]; ++n) dest[n] = source[n];
    dest[n] = 0;
}

EventText TextPool::text(const wchar_t* source) {
    const std::wstring_view wanted =
        source ? std::wstring_view(source, std::min(std::wcslen(source), kTextLength - 1)) : std::wstring_view();
    auto found = texts_.find(wanted);
    if (found == texts_.end()) {
        auto shared = std::make_shared<const std::wstring>(wanted);
        found = texts_.emplace(std::wstring_view(*shared), std::move(shared)).first;
    }
    return EventText(found->second);
}

#include "Text.h"

#include <algorithm>

void copyText(wchar_t* dest, size_t capacity, const wchar_t* source) {
    if (capacity == 0) return;
    size_t n = 0;
    if (source)
        for (; n + 1 < capacity && source[n]; ++n) dest[n] = source[n];
    dest[n] = 0;
}

namespace {

std::wstring_view eventTextOf(const wchar_t* source) {
    if (!source) return {};
    return std::wstring_view(source, std::min(std::wcslen(source), kTextLength - 1));
}

}  // namespace

void EventText::assign(const wchar_t* source) {
    text_ = std::make_shared<const std::wstring>(eventTextOf(source));
}

EventText TextPool::text(const wchar_t* source) {
    const std::wstring_view wanted = eventTextOf(source);
    auto found = texts_.find(wanted);
    if (found == texts_.end()) {
        auto shared = std::make_shared<const std::wstring>(wanted);
        found = texts_.emplace(std::wstring_view(*shared), std::move(shared)).first;
    }
    return EventText(found->second);
}

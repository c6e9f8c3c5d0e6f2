#pragma once
// Fixed-size wide texts of the timeline records.
#include <cstddef>
#include <cwchar>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

constexpr size_t kTextLength = 512;

// Copies at most capacity - 1 characters and always terminates.
void copyText(wchar_t* dest, size_t capacity, const wchar_t* source);

// A text of an event record: at most kTextLength - 1 characters, as in a fixed
// buffer, but only as large as its content and shared between the events that
// carry the same text: timelines hold events by the hundred thousand over a few
// hundred clips.
class EventText {
public:
    EventText() = default;
    const wchar_t* c_str() const { return text_ ? text_->c_str() : L""; }

private:
    friend class TextPool;
    explicit EventText(std::shared_ptr<const std::wstring> text) : text_(std::move(text)) {}
    std::shared_ptr<const std::wstring> text_;
};

// Gives every distinct text one shared copy, for the events of one timeline.
class TextPool {
public:
    // `source` cut to kTextLength - 1 characters, as a fixed buffer would cut it.
    EventText text(const wchar_t* source);

private:
    // Keys view the texts they map to, which never change.
    std::unordered_map<std::wstring_view, std::shared_ptr<const std::wstring>> texts_;
};

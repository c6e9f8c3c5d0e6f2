#pragma once
// Fixed-size wide texts of the timeline records.
#include <cstddef>
#include <cwchar>
#include <string>

constexpr size_t kTextLength = 512;

// Copies at most capacity - 1 characters and always terminates.
void copyText(wchar_t* dest, size_t capacity, const wchar_t* source);

// A text of an event record: at most kTextLength - 1 characters, as in a fixed
// buffer, but only as large as its content: timelines hold events by the
// hundred thousand.
class EventText {
public:
    void assign(const wchar_t* source);
    const wchar_t* c_str() const { return text_.c_str(); }

private:
    std::wstring text_;
};

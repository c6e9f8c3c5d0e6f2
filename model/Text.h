#pragma once
// Fixed-size wide texts of the timeline records.
#include <cstddef>
#include <cwchar>

constexpr size_t kTextLength = 512;

// Copies at most capacity - 1 characters and always terminates.
void copyText(wchar_t* dest, size_t capacity, const wchar_t* source);

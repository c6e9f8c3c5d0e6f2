#pragma once
// File names made from clip names that every file system takes, unique within one folder.
#include <set>
#include <string>

// Characters that Windows, macOS or Linux refuse become '_', trailing dots and spaces go,
// device names (CON, NUL, COM1, ...) get a '_' and the result is kept to 120 bytes of
// whole UTF-8 characters. Empty when nothing usable is left.
std::string safeFileName(const std::string& name);

// The name without a trailing ".wav", ".aif", ".aiff" or ".aifc" (any case): clips are
// often named after their source file, and "a.wav" should not become "a.wav.wav".
std::string withoutAudioExtension(const std::string& name);

class UniqueFileNames {
public:
    // "name.ext", or "name-2.ext", "name-3.ext", ... when taken; names differing only in
    // case count as taken (case-insensitive file systems).
    std::string take(const std::string& stem, const std::string& extension);

private:
    std::set<std::string> taken_;
};

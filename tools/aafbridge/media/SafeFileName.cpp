#include "media/SafeFileName.h"

#include <cctype>
#include <cstring>

namespace {

constexpr size_t kMaxStemBytes = 120;

bool refused(unsigned char c) { return c < 0x20 || c == 0x7f || std::strchr("/\\:*?\"<>|", c) != nullptr; }

std::string lowerAscii(std::string text) {
    for (char& c : text) c = char(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool isDeviceName(const std::string& stem) {
    const std::string base = lowerAscii(stem.substr(0, stem.find('.')));
    if (base == "con" || base == "prn" || base == "aux" || base == "nul") return true;
    return base.size() == 4 && (base.compare(0, 3, "com") == 0 || base.compare(0, 3, "lpt") == 0) && base[3] >= '1' &&
           base[3] <= '9';
}

// Cut to at most `limit` bytes without splitting a UTF-8 sequence.
std::string cutUtf8(const std::string& text, size_t limit) {
    if (text.size() <= limit) return text;
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
    return text.substr(0, end);
}

}  // namespace

std::string safeFileName(const std::string& name) {
    std::string safe;
    for (char c : name) safe += refused(static_cast<unsigned char>(c)) ? '_' : c;
    safe = cutUtf8(safe, kMaxStemBytes);
    while (!safe.empty() && (safe.back() == '.' || safe.back() == ' ')) safe.pop_back();
    while (!safe.empty() && safe.front() == ' ') safe.erase(0, 1);
    if (safe.find_first_not_of('_') == std::string::npos) return "";
    if (isDeviceName(safe)) safe += '_';
    return safe;
}

std::string withoutAudioExtension(const std::string& name) {
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return name;
    const std::string extension = lowerAscii(name.substr(dot));
    const bool audio = extension == ".wav" || extension == ".aif" || extension == ".aiff" || extension == ".aifc";
    return audio ? name.substr(0, dot) : name;
}

std::string UniqueFileNames::take(const std::string& stem, const std::string& extension) {
    std::string name = stem + extension;
    for (int n = 2; taken_.count(lowerAscii(name)); ++n) name = stem + "-" + std::to_string(n) + extension;
    taken_.insert(lowerAscii(name));
    return name;
}

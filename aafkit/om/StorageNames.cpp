#include "StorageNames.h"

#include <cctype>

#include "Values.h"
#include "Property.h"

namespace aafkit {

std::string storedName(const Property& p) { return wideToUtf8(utf16ToWide(p.data.data(), p.data.size())); }

std::string streamName(const Property& p) {
    return p.data.empty() ? std::string() : wideToUtf8(utf16ToWide(p.data.data() + 1, p.data.size() - 1));
}

std::string hexText(uint32_t value) {
    char text[8];
    char* end = text + sizeof text;
    char* at = end;
    do {
        *--at = "0123456789abcdef"[value & 0xf];
        value >>= 4;
    } while (value);
    return std::string(at, end);
}

std::string elementName(const std::string& base, uint32_t localKey) {
    std::string name;
    name.reserve(base.size() + 10);  // one allocation: a large file names a hundred thousand elements
    name.append(base).append(1, '{').append(hexText(localKey)).append(1, '}');
    return name;
}

std::string mangledName(const std::string& propertyName, uint16_t pid, size_t maxLength) {
    const std::string hex = hexText(pid);
    std::string name;
    for (char c : propertyName)
        if (std::isalnum(static_cast<unsigned char>(c))) name.push_back(c);
    const size_t room = maxLength - hex.size() - 2;
    if (name.size() > room) {
        const size_t head = room / 2;
        name = name.substr(0, head) + "-" + name.substr(name.size() - (room - head - 1));
    }
    return name + "-" + hex;
}

}  // namespace aafkit

#include "StorageNames.h"

#include <cctype>
#include <cstdio>

namespace aafkit {

std::string mangledName(const std::string& propertyName, uint16_t pid, size_t maxLength) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "%x", unsigned(pid));
    std::string name;
    for (char c : propertyName)
        if (std::isalnum(static_cast<unsigned char>(c))) name.push_back(c);
    const size_t room = maxLength - std::string(hex).size() - 2;
    if (name.size() > room) {
        const size_t head = room / 2;
        name = name.substr(0, head) + "-" + name.substr(name.size() - (room - head - 1));
    }
    return name + "-" + hex;
}

}  // namespace aafkit

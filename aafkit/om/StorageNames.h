#pragma once
// Names of the storages and streams that hold properties: "<name>-<pid hex>",
// the name squeezed to fit (first half, '-', the end) as AAF writers do.
#include <cstdint>
#include <string>

namespace aafkit {

// Lower-case hexadecimal without leading zeros, as storage names spell numbers.
std::string hexText(uint32_t value);

std::string mangledName(const std::string& propertyName, uint16_t pid, size_t maxLength);

constexpr size_t kStrongRefNameLength = 32;
constexpr size_t kCollectionNameLength = 22;

}  // namespace aafkit

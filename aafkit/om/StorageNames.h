#pragma once
// Names of the storages and streams that hold properties: "<name>-<pid hex>",
// the name squeezed to fit (first half, '-', the end) as AAF writers do.
#include <cstdint>
#include <string>

namespace aafkit {

// Lower-case hexadecimal without leading zeros, as storage names spell numbers.
std::string hexText(uint32_t value);

std::string mangledName(const std::string& propertyName, uint16_t pid, size_t maxLength);

// The storage of a collection's element: "<base>{<local key in hex>}".
std::string elementName(const std::string& base, uint32_t localKey);

struct Property;

// The storage or stream name a loaded property stores as its value: the base name
// of a reference or collection, and the stream name of a data stream (after its
// byte-order byte).
std::string storedName(const Property& p);
std::string streamName(const Property& p);

constexpr size_t kStrongRefNameLength = 32;
constexpr size_t kCollectionNameLength = 22;

}  // namespace aafkit

#pragma once
// Helpers for the compound-file tests: stream listings from our reader and from
// olefile, and a raw view of the bytes on disk that bypasses the reader under test.
#include <cstdint>
#include <string>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/CompoundFileReader.h"

namespace cfbtest {


// "<label>\t<path>\t<size>\t<adler32 hex>", one stream's line in a listing.
std::string listingLine(const std::string& label, const std::string& path, const std::vector<uint8_t>& data);
// Appends the listing line of every stream, reading each.
aafkit::Status listStreams(const aafkit::cfb::CompoundFileReader& reader, const std::string& label,
                           std::vector<std::string>& lines);
// Opens `bytes` and reads every stream; answers the first error, "" when all read.
std::string errorReadingAll(std::vector<uint8_t> bytes);

// The same listing made by Debian's olefile, labelled by path, sorted.
bool olefileAvailable();
std::vector<std::string> olefileListing(const std::vector<std::string>& paths);

uint32_t le32(const std::vector<uint8_t>& bytes, size_t offset);
void putLe32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value);

// Layout read straight from the bytes, trusting them: only for good files
// whose FAT is listed in the header alone.
struct RawLayout {
    uint32_t sectorSize = 0;
    std::vector<uint32_t> fatSectors;
    std::vector<uint32_t> directorySectors;
    std::vector<uint32_t> miniFatSectors;
    size_t sectorOffset(uint32_t sector) const { return (size_t(sector) + 1) * sectorSize; }
    size_t entryOffset(uint32_t id) const;
};
RawLayout rawLayout(const std::vector<uint8_t>& bytes);

}  // namespace cfbtest

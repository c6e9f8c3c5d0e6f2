#pragma once
// Helpers shared by the compound-file tests: sample discovery, stream listings
// from our reader and from olefile, and a raw view of the bytes on disk that
// does not go through the reader under test.
#include <cstdint>
#include <string>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/CompoundFileReader.h"

namespace cfbtest {

std::vector<std::string> sampleFiles();  // every .aaf below the samples folder, sorted
std::vector<uint8_t> readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes);
std::string temporaryPath(const std::string& name);

// "<label>\t<path>\t<size>\t<crc32 hex>", one stream's line in a listing.
std::string listingLine(const std::string& label, const std::string& path, const std::vector<uint8_t>& data);
// Appends the listing line of every stream, reading each.
aafkit::Status listStreams(const aafkit::cfb::CompoundFileReader& reader, const std::string& label,
                           std::vector<std::string>& lines);
// Opens `bytes` and reads every stream; false if anything reported an error.
bool opensAndReadsAll(std::vector<uint8_t> bytes, std::string* error = nullptr);

// The same listing made by Debian's olefile, labelled by path, sorted. Empty if it is missing.
bool olefileAvailable();
std::vector<std::string> olefileListing(const std::vector<std::string>& paths);

uint32_t le32(const std::vector<uint8_t>& bytes, size_t offset);
void putLe32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value);

// Raw layout read straight from the bytes, trusting them: tests feed it good
// files whose FAT is listed in the header alone.
struct RawLayout {
    uint32_t sectorSize = 0;
    std::vector<uint32_t> fat;
    std::vector<uint32_t> fatSectors;
    std::vector<uint32_t> directorySectors;
    std::vector<uint32_t> miniFatSectors;
    size_t sectorOffset(uint32_t sector) const { return (size_t(sector) + 1) * sectorSize; }
    size_t entryOffset(uint32_t id) const;
};
RawLayout rawLayout(const std::vector<uint8_t>& bytes);

}  // namespace cfbtest

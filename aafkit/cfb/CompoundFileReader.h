#pragma once
// Reads a whole compound file held in memory. Header, allocation tables and
// directory are validated when the file is opened, so the accessors cannot
// fail; stream reads still check the chain of the stream they read.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/AllocationTable.h"
#include "aafkit/cfb/DirectoryEntry.h"

namespace aafkit::cfb {

struct EntryRecord;
struct FileHeader;

class CompoundFileReader {
public:
    static Status open(std::vector<uint8_t> bytes, CompoundFileReader& out);
    static Status openFile(const std::string& path, CompoundFileReader& out);

    const DirectoryEntry& root() const { return entries_[0]; }
    const DirectoryEntry& entry(uint32_t id) const { return entries_[id]; }
    size_t entryCount() const { return entries_.size(); }
    // Direct child of a storage by exact name, or nullptr.
    const DirectoryEntry* child(const DirectoryEntry& storage, std::string_view name) const;
    // Whole stream contents, from the mini stream when shorter than the cutoff.
    Status readStream(const DirectoryEntry& stream, std::vector<uint8_t>& out) const;


private:
    Status load();
    Status readHeader(FileHeader& header);
    Status fatSectorIds(const FileHeader& header, std::vector<uint32_t>& ids) const;
    Status readTable(const std::vector<uint32_t>& sectors, size_t sectorCount, const char* name,
                     AllocationTable& table) const;
    Status readDirectory(uint32_t firstSector);
    Status linkTree(const std::vector<EntryRecord>& records);
    Status readMiniStream(const FileHeader& header);
    const uint8_t* sector(uint32_t id) const;
    const uint8_t* miniSector(uint32_t id) const;

    std::vector<uint8_t> bytes_;
    uint16_t majorVersion_ = 0;
    uint32_t sectorSize_ = 0;
    size_t sectorCount_ = 0;
    AllocationTable fat_;
    AllocationTable miniFat_;
    std::vector<uint32_t> miniStreamSectors_;
    std::vector<DirectoryEntry> entries_;  // children sorted by name for child()
};

}  // namespace aafkit::cfb

#pragma once
// One entry of the compound file's directory, as the reader presents it.
#include <cstdint>
#include <string>
#include <vector>

namespace aafkit::cfb {

enum class EntryType : uint8_t { Empty = 0, Storage = 1, Stream = 2, Root = 5 };

struct DirectoryEntry {
    std::string name;  // UTF-8
    EntryType type = EntryType::Empty;
    uint8_t clsid[16] = {};
    uint32_t startSector = 0;
    uint64_t size = 0;                // version 3 files keep only the low 32 bits
    std::vector<uint32_t> children;  // direct children of a storage, sorted by name
};

}  // namespace aafkit::cfb

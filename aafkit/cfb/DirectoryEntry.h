#pragma once
// One entry of the compound file's directory as the reader keeps it: 32 bytes, so
// that a directory of a million entries costs tens of MiB. Its name, class id and
// children live in the reader's shared tables (CompoundFileReader::name, clsid,
// children).
#include <cstddef>
#include <cstdint>

namespace aafkit::cfb {

enum class EntryType : uint8_t { Empty = 0, Storage = 1, Stream = 2, Root = 5 };

struct DirectoryEntry {
    uint64_t size = 0;  // version 3 files keep only the low 32 bits
    uint32_t startSector = 0;
    uint32_t nameOffset = 0;  // UTF-8 bytes in the reader's name pool
    uint32_t firstChild = 0;  // the children's place in the reader's child list
    uint32_t childCount = 0;
    uint32_t clsidIndex = 0;  // in the reader's table of distinct class ids
    uint8_t nameLength = 0;
    EntryType type = EntryType::Empty;
};

// The ids of a storage's direct children, in sibling order.
struct EntryIds {
    const uint32_t* first = nullptr;
    const uint32_t* last = nullptr;
    const uint32_t* begin() const { return first; }
    const uint32_t* end() const { return last; }
    size_t size() const { return size_t(last - first); }
};

}  // namespace aafkit::cfb

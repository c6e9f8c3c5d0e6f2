#pragma once
// Reads a compound file through io::InputFile. Opening reads and validates the
// header, allocation tables and directory; stream content is read only when
// asked for, a range at a time, and a broken chain fails only the stream it is in.
#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/AllocationTable.h"
#include "aafkit/cfb/ClassIdTable.h"
#include "aafkit/cfb/CompoundFileFormat.h"
#include "aafkit/cfb/DirectoryEntry.h"
#include "aafkit/io/InputFile.h"
#include "aafkit/mem/HugePageResource.h"
#include "aafkit/mem/TableResource.h"

namespace aafkit::cfb {

struct EntryLinks;
struct EntryRecord;
struct FileHeader;

// Where a sequential reader of one stream stands in its chain, so that reading a
// stream front to back walks its chain once.
struct ChainCursor {
    uint64_t unitIndex = 0;  // index of `sector` within the chain
    uint32_t sector = kNoStream;
};

class CompoundFileReader {
public:
    static Status open(std::unique_ptr<io::InputFile> input, CompoundFileReader& out);
    static Status open(std::vector<uint8_t> bytes, CompoundFileReader& out);
    static Status openFile(const std::string& path, CompoundFileReader& out);

    const DirectoryEntry& root() const { return entries_[0]; }
    const DirectoryEntry& entry(uint32_t id) const { return entries_[id]; }
    size_t entryCount() const { return entries_.size(); }
    std::string_view name(const DirectoryEntry& entry) const {
        return std::string_view(names_).substr(entry.nameOffset, entry.nameLength);
    }
    // The entry's 16-byte class id.
    const uint8_t* clsid(const DirectoryEntry& entry) const { return clsids_[entry.clsidIndex].data(); }
    // A storage's children in sibling order: by name length, then by upper-cased name.
    EntryIds children(const DirectoryEntry& storage) const;
    // Direct child of a storage (an entry of this reader) by exact name, or nullptr.
    const DirectoryEntry* child(const DirectoryEntry& storage, std::string_view name) const;
    // Whole stream contents, for the small streams that hold properties and indexes.
    Status readStream(const DirectoryEntry& stream, std::vector<uint8_t>& out) const;
    // `n` bytes of a stream from `offset`; `cursor` carries the chain position between
    // calls. Needs only the entry itself, so it works after releaseDirectory.
    Status readStreamRange(const DirectoryEntry& stream, uint64_t offset, uint8_t* out, size_t n,
                           ChainCursor& cursor) const;
    uint32_t sectorSize() const { return sectorSize_; }
    uint64_t fileSize() const { return input_->size(); }
    // Frees the directory when only streams already found will be read; entries,
    // names and children may not be asked for after this.
    void releaseDirectory();

private:
    Status load();
    Status readHeader(FileHeader& header);
    Status fatSectorIds(const FileHeader& header, std::vector<uint32_t>& ids) const;
    Status readTable(const std::vector<uint32_t>& sectors, size_t sectorCount, const char* name,
                     AllocationTable& table) const;
    Status readDirectory(uint32_t firstSector);
    Status convertEntry(uint32_t id, const EntryRecord& record, ClassIdTable& classIds);
    Status linkTree(const mem::Vector<EntryLinks>& links);
    static bool precedes(std::string_view a, std::string_view b);
    void sortChildren(const DirectoryEntry& storage);
    Status readMiniStream(const FileHeader& header);
    Status readSector(uint32_t id, uint8_t* out) const;
    Status readUnits(bool mini, uint32_t id, uint32_t within, uint8_t* out, size_t n) const;
    Status readMiniUnit(uint32_t id, uint32_t within, uint8_t* out, size_t n) const;
    Status seekChain(const DirectoryEntry& stream, uint64_t unitIndex, ChainCursor& cursor) const;

    std::unique_ptr<io::InputFile> input_;
    uint16_t majorVersion_ = 0;
    uint32_t sectorSize_ = 0;
    size_t sectorCount_ = 0;
    AllocationTable fat_;
    AllocationTable miniFat_;
    std::vector<uint32_t> miniStreamSectors_;
    mem::Vector<DirectoryEntry> entries_{mem::tableResource()};
    mem::String names_{mem::hugePageResource()};  // every entry's name, one after another
    std::vector<ClassId> clsids_;                       // distinct class ids; the first is all zeros
    mem::Vector<uint32_t> children_{mem::tableResource()};  // each storage's children together, by name

    // Metadata is read in pieces of 64 to 4096 bytes, mostly in file order: small
    // reads go through a cache of aligned blocks, large ones straight to the file.
    static constexpr size_t kBlockSize = 64 * 1024;
    static constexpr size_t kCachedBlocks = 32;
    Status readCached(uint64_t offset, uint8_t* out, size_t n) const;
    Status readRange(uint64_t offset, uint8_t* out, size_t n) const;
    // One huge page where the system has them, not a fault per 4 KiB read into it.
    struct CacheRelease {
        void operator()(uint8_t* cache) const { mem::hugePageResource()->deallocate(cache, kCachedBlocks * kBlockSize); }
    };
    mutable std::unique_ptr<uint8_t[], CacheRelease> cache_;  // not zeroed: every block is read before use
    mutable std::array<uint64_t, kCachedBlocks> cachedBlocks_{};
};

}  // namespace aafkit::cfb

#pragma once
// Where a file being written puts everything. Regions follow the header in this
// order, each in consecutive sectors: FAT, DIFAT, mini FAT, directory, mini
// stream, then the large streams in entry order.
#include <cstdint>
#include <vector>

#include "aafkit/io/ByteWriter.h"
#include "aafkit/Status.h"
#include "aafkit/cfb/CompoundFileFormat.h"
#include "aafkit/cfb/DirectoryEntry.h"
#include "aafkit/cfb/FileHeader.h"

namespace aafkit::cfb {

// What the layout needs of an entry, and what it decides for it.
struct EntryPlacement {
    uint64_t size = 0;
    uint32_t startSector = 0;
    EntryType type = EntryType::Empty;
};

constexpr uint16_t kWriterSectorShift = 12;
constexpr uint32_t kWriterSectorSize = 1u << kWriterSectorShift;

// Empty streams take no sector at all.
inline bool inMiniStream(uint64_t size) { return size > 0 && size < kMiniStreamCutoff; }

class SectorLayout {
public:
    // Sets the start sector of every stream entry and the root's mini stream
    // (start and size); types and sizes of the entries must be final.
    Status plan(std::vector<EntryPlacement>& entries);
    uint64_t totalSectors() const;
    void fillHeader(FileHeader& header) const;
    // The FAT, DIFAT and mini FAT sectors, in file order.
    void writeTables(ByteWriter& out) const;

private:
    void countSectors(const std::vector<EntryPlacement>& entries);
    void assignSectors(std::vector<EntryPlacement>& entries);

    uint64_t miniSectors_ = 0;
    uint64_t fatSectors_ = 0;
    uint64_t difatSectors_ = 0;
    uint64_t miniFatSectors_ = 0;
    uint64_t directorySectors_ = 0;
    uint64_t miniStreamSectors_ = 0;
    uint64_t streamSectors_ = 0;
    uint32_t firstDirectorySector_ = kEndOfChain;
    uint32_t firstMiniFatSector_ = kEndOfChain;
    std::vector<uint32_t> fat_;
    std::vector<uint32_t> miniFat_;
};

}  // namespace aafkit::cfb

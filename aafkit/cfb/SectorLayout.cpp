#include "aafkit/cfb/SectorLayout.h"

#include <algorithm>

namespace aafkit::cfb {
namespace {

constexpr uint32_t kLinksPerSector = kWriterSectorSize / 4;
constexpr uint32_t kIdsPerDifatSector = kLinksPerSector - 1;  // the last word links the next one

// Hands out consecutive sectors and records their chains in an allocation table.
class ChainBuilder {
public:
    ChainBuilder(std::vector<uint32_t>& links, uint64_t tableSectors) : links_(links) {
        links_.assign(tableSectors * kLinksPerSector, kFreeSector);
    }
    // A chain of `count` sectors; answers its first sector.
    uint32_t chain(uint64_t count) {
        if (count == 0) return kEndOfChain;
        const uint32_t first = next_;
        for (; next_ < first + count - 1; ++next_) links_[next_] = next_ + 1;
        links_[next_++] = kEndOfChain;
        return first;
    }
    // Sectors that hold the tables themselves, marked rather than chained.
    void mark(uint64_t count, uint32_t marker) {
        std::fill_n(links_.begin() + next_, count, marker);
        next_ += uint32_t(count);
    }

private:
    std::vector<uint32_t>& links_;
    uint32_t next_ = 0;
};

}  // namespace

Status SectorLayout::plan(std::vector<EntryPlacement>& entries) {
    countSectors(entries);
    if (totalSectors() >= kMaxRegularSector) return Status::error("file too large at sector count " +
                                                                 std::to_string(totalSectors()));
    assignSectors(entries);
    return Status();
}

uint64_t SectorLayout::totalSectors() const {
    return fatSectors_ + difatSectors_ + miniFatSectors_ + directorySectors_ + miniStreamSectors_ +
           streamSectors_;
}

void SectorLayout::countSectors(const std::vector<EntryPlacement>& entries) {
    for (const EntryPlacement& entry : entries) {
        if (entry.type != EntryType::Stream) continue;
        if (inMiniStream(entry.size))
            miniSectors_ += unitsFor(entry.size, kMiniSectorSize);
        else
            streamSectors_ += unitsFor(entry.size, kWriterSectorSize);
    }
    miniStreamSectors_ = unitsFor(miniSectors_ * kMiniSectorSize, kWriterSectorSize);
    miniFatSectors_ = unitsFor(miniSectors_, kLinksPerSector);
    directorySectors_ = unitsFor(entries.size() * kEntrySize, kWriterSectorSize);
    // The FAT covers itself and the DIFAT that lists it: grow both until they fit.
    uint64_t tableSectors = 0;
    do {
        tableSectors = fatSectors_ + difatSectors_;
        fatSectors_ = unitsFor(totalSectors(), kLinksPerSector);
        difatSectors_ = fatSectors_ > kHeaderDifatCount
                            ? unitsFor(fatSectors_ - kHeaderDifatCount, kIdsPerDifatSector)
                            : 0;
    } while (fatSectors_ + difatSectors_ != tableSectors);
}

void SectorLayout::assignSectors(std::vector<EntryPlacement>& entries) {
    ChainBuilder fat(fat_, fatSectors_);
    ChainBuilder miniFat(miniFat_, miniFatSectors_);
    fat.mark(fatSectors_, kFatSector);
    fat.mark(difatSectors_, kDifatSector);
    firstMiniFatSector_ = fat.chain(miniFatSectors_);
    firstDirectorySector_ = fat.chain(directorySectors_);
    entries[0].startSector = fat.chain(miniStreamSectors_);
    entries[0].size = miniSectors_ * kMiniSectorSize;
    for (EntryPlacement& entry : entries) {
        if (entry.type != EntryType::Stream) continue;
        entry.startSector = inMiniStream(entry.size)
                                 ? miniFat.chain(unitsFor(entry.size, kMiniSectorSize))
                                 : fat.chain(unitsFor(entry.size, kWriterSectorSize));
    }
}

void SectorLayout::fillHeader(FileHeader& header) const {
    header.sectorShift = kWriterSectorShift;
    header.miniSectorShift = kMiniSectorShift;
    header.miniStreamCutoff = kMiniStreamCutoff;
    header.directorySectorCount = uint32_t(directorySectors_);
    header.fatSectorCount = uint32_t(fatSectors_);
    header.firstDirectorySector = firstDirectorySector_;
    header.firstMiniFatSector = firstMiniFatSector_;
    header.miniFatSectorCount = uint32_t(miniFatSectors_);
    header.firstDifatSector = difatSectors_ == 0 ? kEndOfChain : uint32_t(fatSectors_);
    header.difatSectorCount = uint32_t(difatSectors_);
    for (uint32_t i = 0; i < kHeaderDifatCount; ++i) header.difat[i] = i < fatSectors_ ? i : kFreeSector;
}

void SectorLayout::writeTables(ByteWriter& out) const {
    for (uint32_t link : fat_) out.u32(link);
    // FAT sectors are numbered from 0, so the DIFAT lists plain counting numbers.
    uint64_t fatSector = kHeaderDifatCount;
    for (uint64_t d = 0; d < difatSectors_; ++d) {
        for (uint32_t i = 0; i < kIdsPerDifatSector; ++i, ++fatSector)
            out.u32(fatSector < fatSectors_ ? uint32_t(fatSector) : kFreeSector);
        out.u32(d + 1 < difatSectors_ ? uint32_t(fatSectors_ + d + 1) : kEndOfChain);
    }
    for (uint32_t link : miniFat_) out.u32(link);
}

}  // namespace aafkit::cfb

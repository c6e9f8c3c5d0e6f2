#pragma once
// A FAT or mini FAT as read from a file: the next-sector link of every sector,
// proven free of loops once so that walking a chain always ends.
#include <cstdint>
#include <string>
#include <vector>

#include "aafkit/Status.h"

namespace aafkit::cfb {

class AllocationTable {
public:
    // `links` may cover more sectors than exist; links past `sectorCount` are dropped.
    // Fails if any chain loops. `name` says which table in error messages.
    Status assign(std::vector<uint32_t> links, size_t sectorCount, std::string name);

    // The first `count` sectors of the chain starting at `start`.
    Status chain(uint32_t start, uint64_t count, std::vector<uint32_t>& out) const;
    // The chain starting at `start` up to its end-of-chain mark.
    Status wholeChain(uint32_t start, std::vector<uint32_t>& out) const;
    // How many sectors the table covers.
    size_t size() const { return links_.size(); }
    // The sector after `sector` in its chain; an error if either is not a sector of the file.
    Status next(uint32_t sector, uint32_t from, uint32_t& out) const;
    bool covers(uint32_t sector) const { return sector < links_.size(); }

private:
    Status findLoop() const;
    Status brokenLink(uint32_t sector, uint32_t from) const;

    std::vector<uint32_t> links_;
    std::string name_;
};

}  // namespace aafkit::cfb

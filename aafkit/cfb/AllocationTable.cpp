#include "aafkit/cfb/AllocationTable.h"

#include "aafkit/cfb/CompoundFileFormat.h"

namespace aafkit::cfb {

Status AllocationTable::assign(std::vector<uint32_t> links, size_t sectorCount, std::string name) {
    if (links.size() > sectorCount) links.resize(sectorCount);
    links_ = std::move(links);
    name_ = std::move(name);
    return findLoop();
}

// Every sector has one successor, so the links form a functional graph: one
// pass with three colours finds any cycle in linear time.
Status AllocationTable::findLoop() const {
    enum : uint8_t { kUnseen, kOnPath, kDone };
    std::vector<uint8_t> state(links_.size(), kUnseen);
    for (size_t first = 0; first < links_.size(); ++first) {
        size_t s = first;
        while (s < links_.size() && state[s] == kUnseen) {
            state[s] = kOnPath;
            s = links_[s];
        }
        if (s < links_.size() && state[s] == kOnPath)
            return Status::error(name_ + " chain loops at sector " + std::to_string(s));
        for (s = first; s < links_.size() && state[s] == kOnPath; s = links_[s]) state[s] = kDone;
    }
    return Status();
}

Status AllocationTable::brokenLink(uint32_t sector, uint32_t from) const {
    const char* what = sector == kEndOfChain ? " chain ends early" : " chain leaves the file";
    return Status::error(name_ + what + " at sector " + std::to_string(sector) + " (chain start " +
                         std::to_string(from) + ")");
}

Status AllocationTable::chain(uint32_t start, uint64_t count, std::vector<uint32_t>& out) const {
    out.clear();
    if (count > links_.size())
        return Status::error(name_ + " chain longer than the file at sector " + std::to_string(start));
    out.reserve(size_t(count));
    for (uint32_t s = start; out.size() < count; s = links_[s]) {
        if (s >= links_.size()) return brokenLink(s, start);
        out.push_back(s);
    }
    return Status();
}

Status AllocationTable::wholeChain(uint32_t start, std::vector<uint32_t>& out) const {
    out.clear();
    for (uint32_t s = start; s != kEndOfChain; s = links_[s]) {
        if (s >= links_.size()) return brokenLink(s, start);
        out.push_back(s);
    }
    return Status();
}

Status AllocationTable::next(uint32_t sector, uint32_t from, uint32_t& out) const {
    if (sector >= links_.size()) return brokenLink(sector, from);
    out = links_[sector];
    if (out >= links_.size()) return brokenLink(out, from);
    return Status();
}

}  // namespace aafkit::cfb

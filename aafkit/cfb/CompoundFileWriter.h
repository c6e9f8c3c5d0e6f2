#pragma once
// Builds a compound file: version 4, 4096-byte sectors, streams shorter than
// the cutoff in the mini stream, balanced sibling trees, written in file order.
// Calls that name a missing parent are remembered and reported by write().
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/DirectoryEntry.h"
#include "aafkit/cfb/DirectoryTree.h"

#include "aafkit/io/OutputFile.h"
#include "aafkit/io/StreamContent.h"

namespace aafkit::cfb {

struct EntryRecord;
struct EntryPlacement;
class SectorLayout;
class StagedOutput;

class CompoundFileWriter {
public:
    static constexpr uint32_t kRoot = 0;

    CompoundFileWriter();
    void setClsid(uint32_t storage, const uint8_t clsid[16]);
    uint32_t addStorage(uint32_t parent, std::string name, const uint8_t clsid[16]);
    void addStream(uint32_t parent, std::string name, std::vector<uint8_t> data);
    // Content read a chunk at a time while the file is written; it must outlive write().
    void addStream(uint32_t parent, std::string name, const StreamContent& content);

    // Writes the file front to back; memory does not grow with the streams' content.
    Status write(io::OutputSink& out) const;
    Status write(std::vector<uint8_t>& out) const;  // the whole file image
    Status writeFile(const std::string& path) const;  // via a temporary file beside `path`

private:
    struct Node {
        std::string name;
        EntryType type;
        uint8_t clsid[16];
        std::vector<uint32_t> children;
        std::vector<uint8_t> data;
        const StreamContent* content = nullptr;  // instead of data when set
        uint64_t size() const { return content ? content->size() : data.size(); }
    };

    // Where each entry sits in the directory's sibling trees.
    struct TreeLinks {
        std::vector<SiblingLinks> siblings;  // by entry id
        std::vector<uint32_t> child;         // the root of each storage's tree, by entry id
    };

    bool isStorage(uint32_t id) const;
    uint32_t addNode(uint32_t parent, std::string name, EntryType type, const uint8_t clsid[16]);
    Status linkChildren(TreeLinks& links) const;
    EntryRecord record(uint32_t id, const TreeLinks& links, const EntryPlacement& placement) const;
    void writeHeader(const SectorLayout& layout, StagedOutput& out) const;
    Status writeDirectory(const TreeLinks& links, const std::vector<EntryPlacement>& placements,
                          StagedOutput& out) const;
    Status writeStreamData(bool mini, StagedOutput& out) const;

    std::deque<Node> nodes_;  // grows by blocks: no doubling copy of a million nodes
    std::string misuse_;  // the first bad call, reported by write()
};

}  // namespace aafkit::cfb

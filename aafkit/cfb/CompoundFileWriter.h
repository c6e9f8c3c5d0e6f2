#pragma once
// Builds a compound file: version 4, 4096-byte sectors, streams shorter than
// the cutoff in the mini stream, balanced sibling trees, written in file order.
// Calls that name a missing parent are remembered and reported by write().
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "aafkit/Status.h"
#include "aafkit/cfb/ClassIdTable.h"
#include "aafkit/cfb/DirectoryEntry.h"
#include "aafkit/cfb/DirectoryTree.h"
#include "aafkit/cfb/StreamBytes.h"

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
    // Its class-id table refers to its own pool.
    CompoundFileWriter(const CompoundFileWriter&) = delete;
    CompoundFileWriter& operator=(const CompoundFileWriter&) = delete;
    void setClsid(uint32_t storage, const uint8_t clsid[16]);
    uint32_t addStorage(uint32_t parent, const std::string& name, const uint8_t clsid[16]);
    void addStream(uint32_t parent, const std::string& name, const std::vector<uint8_t>& data);
    // Content read a chunk at a time while the file is written; it must outlive write().
    void addStream(uint32_t parent, const std::string& name, const StreamContent& content);

    // Writes the file front to back; memory does not grow with the streams' content.
    Status write(io::OutputSink& out) const;
    Status write(std::vector<uint8_t>& out) const;  // the whole file image
    Status writeFile(const std::string& path) const;  // via a temporary file beside `path`

private:
    // 32 bytes an entry, its name, class id and bytes in the writer's pools: a
    // file of a million entries is planned in tens of MiB.
    struct Node {
        uint64_t size = 0;
        StreamBytes::Place bytes;  // a stream given whole
        uint32_t parent = 0;
        uint32_t nameOffset = 0;  // in names_
        uint32_t clsidIndex = 0;  // in clsids_
        uint16_t nameLength = 0;
        EntryType type = EntryType::Empty;
        bool hasContent = false;  // read from its StreamContent, in contents_
    };

    // Where each entry sits in the directory's sibling trees.
    struct TreeLinks {
        std::vector<SiblingLinks> siblings;  // by entry id
        std::vector<uint32_t> child;         // the root of each storage's tree, by entry id
    };

    bool isStorage(uint32_t id) const;
    uint32_t addNode(uint32_t parent, const std::string& name, EntryType type, const uint8_t clsid[16]);
    std::string name(const Node& node) const { return names_.substr(node.nameOffset, node.nameLength); }
    const StreamContent& contentOf(uint32_t id) const;
    uint64_t streamSize(uint32_t id) const;
    void childLists(std::vector<uint32_t>& first, std::vector<uint32_t>& ids) const;
    Status linkChildren(TreeLinks& links) const;
    EntryRecord record(uint32_t id, const TreeLinks& links, const EntryPlacement& placement) const;
    void writeHeader(const SectorLayout& layout, StagedOutput& out) const;
    Status writeDirectory(const TreeLinks& links, const std::vector<EntryPlacement>& placements,
                          StagedOutput& out) const;
    Status writeStreamData(bool mini, StagedOutput& out) const;

    std::deque<Node> nodes_;  // grows by blocks: no doubling copy of a million nodes
    std::string names_;
    std::vector<ClassId> clsids_;
    ClassIdTable classIds_{clsids_};
    StreamBytes bytes_;
    std::vector<std::pair<uint32_t, const StreamContent*>> contents_;  // by entry id, ascending
    std::string misuse_;  // the first bad call, reported by write()
};

}  // namespace aafkit::cfb

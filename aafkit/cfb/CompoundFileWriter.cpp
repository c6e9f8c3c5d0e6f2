#include "aafkit/cfb/CompoundFileWriter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "aafkit/io/ByteWriter.h"
#include "aafkit/cfb/CompoundFileFormat.h"
#include "aafkit/cfb/DirectoryTree.h"
#include "aafkit/cfb/EntryName.h"
#include "aafkit/cfb/EntryRecord.h"
#include "aafkit/cfb/FileHeader.h"
#include "aafkit/cfb/SectorLayout.h"

namespace aafkit::cfb {
namespace {

constexpr uint8_t kNoClsid[16] = {};

Status nameError(const char* what, uint32_t id, const std::string& name) {
    return Status::error(std::string(what) + " at entry " + std::to_string(id) + " '" + name + "'");
}

Status checkName(uint32_t id, const std::string& name, std::u16string& utf16) {
    if (!utf8ToUtf16(name, utf16)) return nameError("name not UTF-8", id, name);
    if (utf16.empty()) return nameError("empty name", id, name);
    if (utf16.size() > kMaxNameUnits) return nameError("name longer than 31 UTF-16 units", id, name);
    if (utf16.find_first_of(u"/\\:!") != std::u16string::npos)
        return nameError("name with one of / \\ : !", id, name);
    return Status();
}

}  // namespace

// Small writes gather in a buffer that goes to the sink once it is large; stream
// content passes straight through. Positions count everything written so far.
class StagedOutput {
public:
    explicit StagedOutput(io::OutputSink& sink) : sink_(sink), writer_(buffer_) {}
    ByteWriter& writer() { return writer_; }
    uint64_t position() const { return flushed_ + buffer_.size(); }
    void padTo(uint32_t unit) { writer_.zeros(size_t((unit - position() % unit) % unit)); }
    Status flushIfFull() { return buffer_.size() >= kFlushSize ? flush() : Status(); }
    Status flush() {
        Status s = sink_.write(buffer_.data(), buffer_.size());
        flushed_ += buffer_.size();
        buffer_.clear();
        return s;
    }
    Status copy(const StreamContent& content) {
        if (Status s = flush(); !s) return s;
        Status s = copyChunks(content, [this](const uint8_t* bytes, size_t n) { return sink_.write(bytes, n); });
        flushed_ += content.size();
        return s;
    }

private:
    static constexpr size_t kFlushSize = 1 << 20;
    io::OutputSink& sink_;
    std::vector<uint8_t> buffer_;
    ByteWriter writer_;
    uint64_t flushed_ = 0;
};

CompoundFileWriter::CompoundFileWriter() { addNode(kRoot, "Root Entry", EntryType::Root, kNoClsid); }

bool CompoundFileWriter::isStorage(uint32_t id) const {
    return id < nodes_.size() && nodes_[id].type != EntryType::Stream;
}

void CompoundFileWriter::setClsid(uint32_t storage, const uint8_t clsid[16]) {
    if (isStorage(storage))
        nodes_[storage].clsidIndex = classIds_.intern(clsid);
    else if (misuse_.empty())
        misuse_ = "setClsid on no storage at entry " + std::to_string(storage);
}

uint32_t CompoundFileWriter::addNode(uint32_t parent, const std::string& name, EntryType type,
                                     const uint8_t clsid[16]) {
    if (type != EntryType::Root && !isStorage(parent)) {
        if (misuse_.empty()) misuse_ = "parent is no storage at entry " + std::to_string(parent);
        return kNoStream;
    }
    const auto id = uint32_t(nodes_.size());
    if (name.size() > UINT16_MAX && misuse_.empty())
        misuse_ = nameError("name longer than 31 UTF-16 units", id, name.substr(0, 64)).message();
    Node node;
    node.parent = parent;
    node.nameOffset = uint32_t(names_.size());
    node.nameLength = uint16_t(std::min<size_t>(name.size(), UINT16_MAX));
    node.clsidIndex = classIds_.intern(clsid);
    node.type = type;
    names_.append(name, 0, node.nameLength);
    nodes_.push_back(node);
    return id;
}

uint32_t CompoundFileWriter::addStorage(uint32_t parent, const std::string& name, const uint8_t clsid[16]) {
    return addNode(parent, name, EntryType::Storage, clsid);
}

void CompoundFileWriter::addStream(uint32_t parent, const std::string& name, const std::vector<uint8_t>& data) {
    const uint32_t id = addNode(parent, name, EntryType::Stream, kNoClsid);
    if (id == kNoStream) return;
    nodes_[id].bytes = bytes_.add(data);
    nodes_[id].size = data.size();
}

void CompoundFileWriter::addStream(uint32_t parent, const std::string& name, const StreamContent& content) {
    const uint32_t id = addNode(parent, name, EntryType::Stream, kNoClsid);
    if (id == kNoStream) return;
    nodes_[id].hasContent = true;
    contents_.emplace_back(id, &content);
}

const StreamContent& CompoundFileWriter::contentOf(uint32_t id) const {
    const auto found = std::lower_bound(contents_.begin(), contents_.end(), id,
                                        [](const auto& entry, uint32_t wanted) { return entry.first < wanted; });
    return *found->second;
}

uint64_t CompoundFileWriter::streamSize(uint32_t id) const {
    return nodes_[id].hasContent ? contentOf(id).size() : nodes_[id].size;
}

// Each storage's children side by side in `ids`, from first[storage] to first[storage + 1].
void CompoundFileWriter::childLists(std::vector<uint32_t>& first, std::vector<uint32_t>& ids) const {
    first.assign(nodes_.size() + 1, 0);
    for (uint32_t id = 1; id < nodes_.size(); ++id) ++first[nodes_[id].parent + 1];
    for (size_t i = 1; i < first.size(); ++i) first[i] += first[i - 1];
    std::vector<uint32_t> next(first.begin(), first.end() - 1);
    ids.resize(nodes_.size() - 1);
    for (uint32_t id = 1; id < nodes_.size(); ++id) ids[next[nodes_[id].parent]++] = id;
}

// Names are checked and each storage's children sorted by sibling key, one
// storage at a time: a file of a million entries never holds all their keys.
Status CompoundFileWriter::linkChildren(TreeLinks& links) const {
    links.siblings.assign(nodes_.size(), SiblingLinks());
    links.child.assign(nodes_.size(), kNoStream);
    std::u16string utf16;
    if (Status s = checkName(kRoot, name(nodes_[kRoot]), utf16); !s) return s;
    std::vector<uint32_t> first, children;
    childLists(first, children);
    std::vector<std::pair<std::string, uint32_t>> keyed;
    std::vector<uint32_t> sorted;
    for (uint32_t id = 0; id < nodes_.size(); ++id) {
        keyed.clear();
        for (uint32_t at = first[id]; at < first[id + 1]; ++at) {
            const uint32_t childId = children[at];
            if (Status s = checkName(childId, name(nodes_[childId]), utf16); !s) return s;
            keyed.emplace_back(siblingKey(utf16), childId);
        }
        std::sort(keyed.begin(), keyed.end());
        sorted.clear();
        for (size_t i = 0; i < keyed.size(); ++i) {
            if (i > 0 && keyed[i - 1].first == keyed[i].first)
                return nameError("duplicate name in one storage", keyed[i].second, name(nodes_[keyed[i].second]));
            sorted.push_back(keyed[i].second);
        }
        links.child[id] = linkSiblings(sorted, links.siblings);
    }
    return Status();
}

// The directory entry of a node, made when it is written: names were checked by linkChildren.
EntryRecord CompoundFileWriter::record(uint32_t id, const TreeLinks& links, const EntryPlacement& placement) const {
    const Node& node = nodes_[id];
    EntryRecord record;
    std::u16string utf16;
    utf8ToUtf16(name(node), utf16);
    std::copy(utf16.begin(), utf16.end(), record.name);
    record.nameLength = uint16_t((utf16.size() + 1) * 2);
    record.type = uint8_t(node.type);
    record.color = id == kRoot ? kBlack : links.siblings[id].color;
    record.left = id == kRoot ? kNoStream : links.siblings[id].left;
    record.right = id == kRoot ? kNoStream : links.siblings[id].right;
    record.child = links.child[id];
    std::memcpy(record.clsid, clsids_[node.clsidIndex].data(), sizeof record.clsid);
    record.startSector = placement.startSector;
    record.size = placement.size;
    return record;
}

void CompoundFileWriter::writeHeader(const SectorLayout& layout, StagedOutput& out) const {
    FileHeader header;
    std::memcpy(header.signature, kSignature, sizeof kSignature);
    std::memcpy(header.clsid, kAafSignature4096, sizeof header.clsid);  // new AAF files have 4096-byte sectors
    header.minorVersion = kMinorVersion;
    header.majorVersion = 4;
    header.byteOrder = kByteOrderMark;
    layout.fillHeader(header);
    header.write(out.writer());
    out.padTo(kWriterSectorSize);
}

// Unused entries fill the last directory sector.
Status CompoundFileWriter::writeDirectory(const TreeLinks& links, const std::vector<EntryPlacement>& placements,
                                          StagedOutput& out) const {
    for (uint32_t id = 0; id < nodes_.size(); ++id) {
        record(id, links, placements[id]).write(out.writer());
        if (Status s = out.flushIfFull(); !s) return s;
    }
    while (out.position() % kWriterSectorSize != 0) EntryRecord().write(out.writer());
    return Status();
}

// Small streams go to the mini stream in 64-byte steps, the others to whole
// sectors, both in entry order as SectorLayout placed them.
Status CompoundFileWriter::writeStreamData(bool mini, StagedOutput& out) const {
    const uint32_t unit = mini ? kMiniSectorSize : kWriterSectorSize;
    for (uint32_t id = 0; id < nodes_.size(); ++id) {
        const Node& node = nodes_[id];
        const uint64_t size = streamSize(id);
        if (node.type != EntryType::Stream || inMiniStream(size) != mini) continue;
        const uint64_t start = out.position();
        Status s = node.hasContent ? out.copy(contentOf(id)) : Status();
        if (!node.hasContent && size > 0) out.writer().bytes(bytes_.at(node.bytes), size_t(size));
        if (s && out.position() - start != size) s = Status::error("stream '" + name(node) + "' changed size");
        if (!s) return s;
        out.padTo(unit);
        if (Status f = out.flushIfFull(); !f) return f;
    }
    out.padTo(kWriterSectorSize);
    return Status();
}

Status CompoundFileWriter::write(io::OutputSink& sink) const {
    if (!misuse_.empty()) return Status::error(misuse_);
    TreeLinks links;
    if (Status s = linkChildren(links); !s) return s;
    std::vector<EntryPlacement> placements(nodes_.size());
    for (uint32_t id = 0; id < nodes_.size(); ++id) placements[id] = {streamSize(id), 0, nodes_[id].type};
    SectorLayout layout;
    if (Status s = layout.plan(placements); !s) return s;
    StagedOutput out(sink);
    writeHeader(layout, out);
    layout.writeTables(out.writer());
    Status s = writeDirectory(links, placements, out);
    if (s) s = writeStreamData(true, out);
    if (s) s = writeStreamData(false, out);
    if (s) s = out.flush();
    return s;
}

Status CompoundFileWriter::write(std::vector<uint8_t>& out) const {
    out.clear();
    io::MemoryOutput memory(out);
    return write(memory);
}

Status CompoundFileWriter::writeFile(const std::string& path) const {
    std::unique_ptr<io::OutputFile> file;
    if (Status s = io::OutputFile::create(path, file); !s) return s;
    if (Status s = write(*file); !s) return s;
    return file->commit();
}

}  // namespace aafkit::cfb

#include "aafkit/cfb/CompoundFileWriter.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "aafkit/ByteWriter.h"
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

CompoundFileWriter::CompoundFileWriter() { nodes_.push_back(Node{"Root Entry", EntryType::Root, {}, {}, {}}); }

bool CompoundFileWriter::isStorage(uint32_t id) const {
    return id < nodes_.size() && nodes_[id].type != EntryType::Stream;
}

void CompoundFileWriter::setClsid(uint32_t storage, const uint8_t clsid[16]) {
    if (isStorage(storage))
        std::memcpy(nodes_[storage].clsid, clsid, sizeof nodes_[storage].clsid);
    else if (misuse_.empty())
        misuse_ = "setClsid on no storage at entry " + std::to_string(storage);
}

uint32_t CompoundFileWriter::addNode(uint32_t parent, std::string name, EntryType type,
                                     const uint8_t clsid[16]) {
    if (!isStorage(parent)) {
        if (misuse_.empty()) misuse_ = "parent is no storage at entry " + std::to_string(parent);
        return kNoStream;
    }
    const auto id = uint32_t(nodes_.size());
    nodes_.push_back(Node{std::move(name), type, {}, {}, {}});
    std::memcpy(nodes_.back().clsid, clsid, sizeof nodes_.back().clsid);
    nodes_[parent].children.push_back(id);
    return id;
}

uint32_t CompoundFileWriter::addStorage(uint32_t parent, std::string name, const uint8_t clsid[16]) {
    return addNode(parent, std::move(name), EntryType::Storage, clsid);
}

void CompoundFileWriter::addStream(uint32_t parent, std::string name, std::vector<uint8_t> data) {
    const uint32_t id = addNode(parent, std::move(name), EntryType::Stream, kNoClsid);
    if (id != kNoStream) nodes_[id].data = std::move(data);
}

void CompoundFileWriter::addStream(uint32_t parent, std::string name, const StreamContent& content) {
    const uint32_t id = addNode(parent, std::move(name), EntryType::Stream, kNoClsid);
    if (id != kNoStream) nodes_[id].content = &content;
}

// Names are checked and each storage's children sorted by sibling key, one
// storage at a time: a file of a million entries never holds all their keys.
Status CompoundFileWriter::linkChildren(TreeLinks& links) const {
    links.siblings.assign(nodes_.size(), SiblingLinks());
    links.child.assign(nodes_.size(), kNoStream);
    std::u16string name;
    if (Status s = checkName(kRoot, nodes_[kRoot].name, name); !s) return s;
    std::vector<std::pair<std::string, uint32_t>> keyed;
    std::vector<uint32_t> sorted;
    for (uint32_t id = 0; id < nodes_.size(); ++id) {
        keyed.clear();
        for (uint32_t childId : nodes_[id].children) {
            if (Status s = checkName(childId, nodes_[childId].name, name); !s) return s;
            keyed.emplace_back(siblingKey(name), childId);
        }
        std::sort(keyed.begin(), keyed.end());
        sorted.clear();
        for (size_t i = 0; i < keyed.size(); ++i) {
            if (i > 0 && keyed[i - 1].first == keyed[i].first)
                return nameError("duplicate name in one storage", keyed[i].second, nodes_[keyed[i].second].name);
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
    std::u16string name;
    utf8ToUtf16(node.name, name);
    std::copy(name.begin(), name.end(), record.name);
    record.nameLength = uint16_t((name.size() + 1) * 2);
    record.type = uint8_t(node.type);
    record.color = id == kRoot ? kBlack : links.siblings[id].color;
    record.left = id == kRoot ? kNoStream : links.siblings[id].left;
    record.right = id == kRoot ? kNoStream : links.siblings[id].right;
    record.child = links.child[id];
    std::memcpy(record.clsid, node.clsid, sizeof record.clsid);
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
    for (const Node& node : nodes_) {
        if (node.type != EntryType::Stream || inMiniStream(node.size()) != mini) continue;
        const uint64_t start = out.position();
        Status s = node.content ? out.copy(*node.content) : Status();
        if (!node.content) out.writer().bytes(node.data.data(), node.data.size());
        if (s && out.position() - start != node.size()) s = Status::error("stream '" + node.name + "' changed size");
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
    for (uint32_t id = 0; id < nodes_.size(); ++id) placements[id] = {nodes_[id].size(), 0, nodes_[id].type};
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

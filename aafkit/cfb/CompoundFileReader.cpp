#include "aafkit/cfb/CompoundFileReader.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "aafkit/ByteReader.h"
#include "aafkit/cfb/CompoundFileFormat.h"
#include "aafkit/cfb/EntryName.h"
#include "aafkit/cfb/EntryRecord.h"
#include "aafkit/cfb/FileHeader.h"

namespace aafkit::cfb {
namespace {

Status fail(const std::string& what, const char* where, uint64_t number) {
    return Status::error(what + " at " + where + " " + std::to_string(number));
}

// The little-endian words of a block that is known to be inside the file.
void appendWords(const uint8_t* block, size_t wordCount, std::vector<uint32_t>& out) {
    ByteReader in(block, wordCount * 4);
    for (uint32_t word = 0; in.u32(word);) out.push_back(word);
}

bool isKnownType(uint8_t type) {
    return type == uint8_t(EntryType::Empty) || type == uint8_t(EntryType::Storage) ||
           type == uint8_t(EntryType::Stream) || type == uint8_t(EntryType::Root);
}

Status convertEntry(uint32_t id, const EntryRecord& record, bool version3, DirectoryEntry& entry) {
    if (!isKnownType(record.type)) return fail("unknown entry type", "entry", id);
    entry.type = EntryType(record.type);
    if (entry.type == EntryType::Empty) return Status();
    if ((entry.type == EntryType::Root) != (id == 0))
        return fail("root entry misplaced", "entry", id);
    if (record.nameLength > sizeof record.name || record.nameLength % 2 != 0)
        return fail("bad name length", "entry", id);
    const size_t units = record.nameLength == 0 ? 0 : record.nameLength / 2 - 1;
    size_t length = 0;
    bool ascii = true;
    for (; length < units && record.name[length] != u'\0'; ++length) ascii = ascii && record.name[length] < 0x80;
    if (ascii)  // the usual case: no conversion buffer
        entry.name.assign(record.name, record.name + length);
    else
        entry.name = utf16ToUtf8(std::u16string(record.name, length));
    std::memcpy(entry.clsid, record.clsid, sizeof entry.clsid);
    entry.startSector = record.startSector;
    entry.size = version3 ? record.size & 0xFFFFFFFFu : record.size;
    return Status();
}

}  // namespace

Status CompoundFileReader::open(std::vector<uint8_t> bytes, CompoundFileReader& out) {
    CompoundFileReader reader;
    reader.bytes_ = std::move(bytes);
    Status status = reader.load();
    if (status) out = std::move(reader);
    return status;
}

Status CompoundFileReader::openFile(const std::string& path, CompoundFileReader& out) {
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);  // fails on directories too
    std::ifstream file(path, std::ios::binary);
    if (error || !file) return Status::error("cannot open file at " + path);
    std::vector<uint8_t> bytes(static_cast<size_t>(size));
    if (!file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(size)))
        return Status::error("cannot read file at " + path);
    return open(std::move(bytes), out);
}

Status CompoundFileReader::load() {
    FileHeader header;
    std::vector<uint32_t> fatSectors;
    Status status = readHeader(header);
    if (status) status = fatSectorIds(header, fatSectors);
    if (status) status = readTable(fatSectors, sectorCount_, "FAT", fat_);
    if (status) status = readDirectory(header.firstDirectorySector);
    if (status) status = readMiniStream(header);
    return status;
}

Status CompoundFileReader::readHeader(FileHeader& header) {
    ByteReader in(bytes_.data(), bytes_.size());
    if (!header.read(in)) return fail("file shorter than a header", "size", bytes_.size());
    if (std::memcmp(header.signature, kSignature, sizeof kSignature) != 0)
        return fail("not a compound file: bad signature", "offset", 0);
    if (header.byteOrder != kByteOrderMark) return fail("bad byte order mark", "offset", 28);
    const bool version3 = header.majorVersion == 3 && header.sectorShift == 9;
    const bool version4 = header.majorVersion == 4 && header.sectorShift == 12;
    if (!version3 && !version4) return fail("unsupported version or sector size", "offset", 26);
    if (header.miniSectorShift != kMiniSectorShift) return fail("bad mini sector size", "offset", 32);
    if (header.miniStreamCutoff != kMiniStreamCutoff)
        return fail("bad mini stream cutoff", "offset", 56);
    majorVersion_ = header.majorVersion;
    sectorSize_ = 1u << header.sectorShift;
    if (bytes_.size() < sectorSize_) return fail("file shorter than its header sector", "size", bytes_.size());
    sectorCount_ = bytes_.size() / sectorSize_ - 1;
    return Status();
}

// The FAT's own sectors: the first ones listed in the header, the rest in the DIFAT chain.
Status CompoundFileReader::fatSectorIds(const FileHeader& header, std::vector<uint32_t>& ids) const {
    const size_t count = header.fatSectorCount;
    if (count > sectorCount_) return fail("FAT sector count beyond the file", "offset", 44);
    ids.assign(header.difat, header.difat + std::min(count, kHeaderDifatCount));
    const size_t idsPerDifatSector = sectorSize_ / 4 - 1;  // the last word links the next one
    std::vector<bool> visited(sectorCount_);
    std::vector<uint32_t> words;
    for (uint32_t next = header.firstDifatSector; ids.size() < count; next = words.back()) {
        if (next >= sectorCount_) return fail("DIFAT sector out of range", "DIFAT sector", next);
        if (visited[next]) return fail("DIFAT chain loops", "sector", next);
        visited[next] = true;
        words.clear();
        appendWords(sector(next), idsPerDifatSector + 1, words);
        const size_t take = std::min(count - ids.size(), idsPerDifatSector);
        ids.insert(ids.end(), words.begin(), words.begin() + take);
    }
    for (size_t i = 0; i < ids.size(); ++i)
        if (ids[i] >= sectorCount_) return fail("FAT sector out of range", "DIFAT index", i);
    return Status();
}

Status CompoundFileReader::readTable(const std::vector<uint32_t>& sectors, size_t sectorCount,
                                     const char* name, AllocationTable& table) const {
    std::vector<uint32_t> links;
    links.reserve(sectors.size() * sectorSize_ / 4);
    for (uint32_t s : sectors) appendWords(sector(s), sectorSize_ / 4, links);
    return table.assign(std::move(links), sectorCount, name);
}

Status CompoundFileReader::readDirectory(uint32_t firstSector) {
    std::vector<uint32_t> chain;
    if (Status s = fat_.wholeChain(firstSector, chain); !s) return Status::error("directory: " + s.message());
    if (chain.empty()) return fail("empty directory", "sector", firstSector);
    const size_t perSector = sectorSize_ / kEntrySize;
    std::vector<EntryRecord> records(chain.size() * perSector);
    entries_.assign(records.size(), DirectoryEntry());
    for (size_t id = 0; id < records.size(); ++id) {
        ByteReader in(sector(chain[id / perSector]) + id % perSector * kEntrySize, kEntrySize);
        if (!records[id].read(in)) return fail("truncated entry", "entry", id);
        Status s = convertEntry(uint32_t(id), records[id], majorVersion_ == 3, entries_[id]);
        if (!s) return s;
    }
    if (entries_[0].type != EntryType::Root) return fail("no root entry", "entry", 0);
    return linkTree(records);
}

// Walks the sibling trees without recursion, visiting each entry at most once.
Status CompoundFileReader::linkTree(const std::vector<EntryRecord>& records) {
    struct Pending {
        uint32_t id;
        uint32_t parent;
    };
    std::vector<bool> visited(entries_.size());
    visited[0] = true;
    std::vector<Pending> pending{{records[0].child, 0}};
    while (!pending.empty()) {
        const Pending link = pending.back();
        pending.pop_back();
        if (link.id == kNoStream) continue;
        if (link.id >= entries_.size() || entries_[link.id].type == EntryType::Empty)
            return fail("directory link to no entry", "entry", link.parent);
        if (visited[link.id]) return fail("directory loop", "entry", link.id);
        visited[link.id] = true;
        DirectoryEntry& entry = entries_[link.id];
        const EntryRecord& record = records[link.id];
        entries_[link.parent].children.push_back(link.id);
        pending.push_back({record.left, link.parent});
        pending.push_back({record.right, link.parent});
        if (entry.type == EntryType::Storage)
            pending.push_back({record.child, link.id});
        else if (record.child != kNoStream)
            return fail("stream with children", "entry", link.id);
    }
    for (DirectoryEntry& storage : entries_)
        std::sort(storage.children.begin(), storage.children.end(),
                  [this](uint32_t a, uint32_t b) { return entries_[a].name < entries_[b].name; });
    return Status();
}

// The mini stream is the root entry's data; the mini FAT covers its 64-byte sectors.
Status CompoundFileReader::readMiniStream(const FileHeader& header) {
    const DirectoryEntry& rootEntry = root();
    Status s = fat_.chain(rootEntry.startSector, unitsFor(rootEntry.size, sectorSize_), miniStreamSectors_);
    if (!s) return Status::error("mini stream: " + s.message());
    std::vector<uint32_t> miniFatSectors;
    if (header.miniFatSectorCount != 0) s = fat_.wholeChain(header.firstMiniFatSector, miniFatSectors);
    if (!s) return Status::error("mini FAT: " + s.message());
    return readTable(miniFatSectors, unitsFor(rootEntry.size, kMiniSectorSize), "mini FAT", miniFat_);
}

const DirectoryEntry* CompoundFileReader::child(const DirectoryEntry& storage, std::string_view name) const {
    const auto& ids = storage.children;
    auto it = std::lower_bound(ids.begin(), ids.end(), name,
                               [this](uint32_t id, std::string_view n) { return entries_[id].name < n; });
    return it != ids.end() && entries_[*it].name == name ? &entries_[*it] : nullptr;
}

Status CompoundFileReader::readStream(const DirectoryEntry& stream, std::vector<uint8_t>& out) const {
    out.clear();
    if (stream.type != EntryType::Stream) return Status::error("not a stream at entry '" + stream.name + "'");
    const bool mini = stream.size < kMiniStreamCutoff;
    const uint32_t unit = mini ? kMiniSectorSize : sectorSize_;
    thread_local std::vector<uint32_t> sectors;  // reused: streams are read by the thousand
    Status s = (mini ? miniFat_ : fat_).chain(stream.startSector, unitsFor(stream.size, unit), sectors);
    if (!s) return Status::error(s.message() + " in stream '" + stream.name + "'");
    out.reserve(size_t(stream.size));
    for (uint32_t id : sectors) {
        const uint8_t* data = mini ? miniSector(id) : sector(id);
        out.insert(out.end(), data, data + std::min<uint64_t>(unit, stream.size - out.size()));
    }
    return Status();
}

const uint8_t* CompoundFileReader::sector(uint32_t id) const {
    return bytes_.data() + (size_t(id) + 1) * sectorSize_;
}

const uint8_t* CompoundFileReader::miniSector(uint32_t id) const {
    const size_t offset = size_t(id) * kMiniSectorSize;
    return sector(miniStreamSectors_[offset / sectorSize_]) + offset % sectorSize_;
}

}  // namespace aafkit::cfb

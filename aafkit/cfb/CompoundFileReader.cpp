#include "aafkit/cfb/CompoundFileReader.h"

#include <algorithm>
#include <cstring>

#include "aafkit/io/ByteReader.h"
#include "aafkit/cfb/ClassIdTable.h"
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

}  // namespace

// The sibling and child links of an entry: all that linking the tree needs of its record.
struct EntryLinks {
    uint32_t left = kNoStream;
    uint32_t right = kNoStream;
    uint32_t child = kNoStream;
};

Status CompoundFileReader::open(std::unique_ptr<io::InputFile> input, CompoundFileReader& out) {
    CompoundFileReader reader;
    reader.input_ = std::move(input);
    Status status = reader.load();
    if (status) out = std::move(reader);
    return status;
}

Status CompoundFileReader::open(std::vector<uint8_t> bytes, CompoundFileReader& out) {
    return open(io::InputFile::fromBytes(std::move(bytes)), out);
}

Status CompoundFileReader::openFile(const std::string& path, CompoundFileReader& out) {
    std::unique_ptr<io::InputFile> input;
    if (Status s = io::InputFile::open(path, input); !s) return s;
    return open(std::move(input), out);
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
    const uint64_t size = input_->size();
    uint8_t bytes[kHeaderSize];
    if (size < kHeaderSize) return fail("file shorter than a header", "size", size);
    if (Status s = input_->read(0, bytes, sizeof bytes); !s) return s;
    ByteReader in(bytes, sizeof bytes);
    header.read(in);
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
    if (size < sectorSize_) return fail("file shorter than its header sector", "size", size);
    // Sector ids are 32-bit: a larger file's tail cannot be addressed and is ignored.
    sectorCount_ = size_t(std::min<uint64_t>(size / sectorSize_ - 1, kMaxRegularSector));
    return Status();
}

// The FAT's own sectors: the first ones listed in the header, the rest in the DIFAT chain.
Status CompoundFileReader::fatSectorIds(const FileHeader& header, std::vector<uint32_t>& ids) const {
    const size_t count = header.fatSectorCount;
    if (count > sectorCount_) return fail("FAT sector count beyond the file", "offset", 44);
    ids.assign(header.difat, header.difat + std::min(count, kHeaderDifatCount));
    const size_t idsPerDifatSector = sectorSize_ / 4 - 1;  // the last word links the next one
    std::vector<bool> visited(sectorCount_);
    std::vector<uint8_t> block(sectorSize_);
    std::vector<uint32_t> words;
    for (uint32_t next = header.firstDifatSector; ids.size() < count; next = words.back()) {
        if (next >= sectorCount_) return fail("DIFAT sector out of range", "DIFAT sector", next);
        if (visited[next]) return fail("DIFAT chain loops", "sector", next);
        visited[next] = true;
        if (Status s = readSector(next, block.data()); !s) return s;
        words.clear();
        appendWords(block.data(), idsPerDifatSector + 1, words);
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
    std::vector<uint8_t> block(sectorSize_);
    for (uint32_t s : sectors) {
        if (Status st = readSector(s, block.data()); !st) return Status::error(std::string(name) + ": " + st.message());
        appendWords(block.data(), sectorSize_ / 4, links);
    }
    return table.assign(std::move(links), sectorCount, name);
}

Status CompoundFileReader::readDirectory(uint32_t firstSector) {
    std::vector<uint32_t> chain;
    if (Status s = fat_.wholeChain(firstSector, chain); !s) return Status::error("directory: " + s.message());
    if (chain.empty()) return fail("empty directory", "sector", firstSector);
    const size_t perSector = sectorSize_ / kEntrySize;
    entries_.assign(chain.size() * perSector, DirectoryEntry());
    mem::Vector<EntryLinks> links(entries_.size(), mem::tableResource());
    std::vector<uint8_t> block(sectorSize_);
    ClassIdTable classIds(clsids_);
    // Room for every name in ASCII, the usual case, so the pool is never copied to
    // grow; what a large directory leaves unused is never touched, so never resident.
    names_.reserve(entries_.size() * kMaxNameUnits);
    EntryRecord record;
    for (size_t id = 0; id < entries_.size(); ++id) {
        if (id % perSector == 0)
            if (Status s = readSector(chain[id / perSector], block.data()); !s) return Status::error("directory: " + s.message());
        ByteReader in(block.data() + id % perSector * kEntrySize, kEntrySize);
        record = EntryRecord();
        record.read(in);
        if (Status s = convertEntry(uint32_t(id), record, classIds); !s) return s;
        links[id] = {record.left, record.right, record.child};
    }
    if (entries_[0].type != EntryType::Root) return fail("no root entry", "entry", 0);
    return linkTree(links);
}

Status CompoundFileReader::convertEntry(uint32_t id, const EntryRecord& record, ClassIdTable& classIds) {
    if (!isKnownType(record.type)) return fail("unknown entry type", "entry", id);
    DirectoryEntry& entry = entries_[id];
    entry.type = EntryType(record.type);
    if (entry.type == EntryType::Empty) return Status();
    if ((entry.type == EntryType::Root) != (id == 0)) return fail("root entry misplaced", "entry", id);
    if (record.nameLength > sizeof record.name || record.nameLength % 2 != 0)
        return fail("bad name length", "entry", id);
    const size_t units = record.nameLength == 0 ? 0 : record.nameLength / 2 - 1;
    size_t length = 0;
    bool ascii = true;
    for (; length < units && record.name[length] != u'\0'; ++length) ascii = ascii && record.name[length] < 0x80;
    // 31 UTF-16 units make at most 93 bytes of UTF-8: the length fits its byte.
    const size_t offset = names_.size();
    if (offset > UINT32_MAX - 3 * kMaxNameUnits) return fail("directory names too large", "entry", id);
    if (ascii) {  // the usual case: no conversion buffer
        char narrow[kMaxNameUnits + 1];
        std::copy(record.name, record.name + length, narrow);
        names_.append(narrow, length);
    } else
        names_.append(utf16ToUtf8(std::u16string(record.name, length)));
    entry.nameOffset = uint32_t(offset);
    entry.nameLength = uint8_t(names_.size() - offset);
    entry.clsidIndex = classIds.intern(record.clsid);
    entry.startSector = record.startSector;
    entry.size = majorVersion_ == 3 ? record.size & 0xFFFFFFFFu : record.size;
    return Status();
}

// Visits each storage's sibling tree in order, without recursion and each entry at
// most once, and lays its children side by side in that order: the file's own name
// order, so that a child is found by binary search. A tree the file left out of order
// is sorted.
Status CompoundFileReader::linkTree(const mem::Vector<EntryLinks>& links) {
    mem::Vector<bool> visited(entries_.size(), false, mem::tableResource());
    visited[0] = true;
    children_.reserve(entries_.size());
    std::vector<uint32_t> storages{0}, path;
    while (!storages.empty()) {
        const uint32_t storage = storages.back();
        storages.pop_back();
        DirectoryEntry& parent = entries_[storage];
        parent.firstChild = uint32_t(children_.size());
        for (uint32_t node = links[storage].child; node != kNoStream || !path.empty();) {
            for (; node != kNoStream; node = links[node].left) {
                if (node >= entries_.size() || entries_[node].type == EntryType::Empty)
                    return fail("directory link to no entry", "entry", storage);
                if (visited[node]) return fail("directory loop", "entry", node);
                visited[node] = true;
                path.push_back(node);
            }
            node = path.back();
            path.pop_back();
            children_.push_back(node);
            if (entries_[node].type == EntryType::Storage)
                storages.push_back(node);
            else if (links[node].child != kNoStream)
                return fail("stream with children", "entry", node);
            node = links[node].right;
        }
        parent.childCount = uint32_t(children_.size() - parent.firstChild);
        sortChildren(parent);
    }
    return Status();
}

// Sibling order as this reader compares names: by length, then by upper-cased bytes.
// For ASCII names, all AAF writes, it is the file's order.
bool CompoundFileReader::precedes(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return a.size() < b.size();
    const auto upper = [](char c) { return uint8_t(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c); };
    size_t i = 0;
    // Siblings share long prefixes ("Components-1001{"): skip equal bytes a word at a time.
    for (uint64_t x = 0, y = 0; i + 8 <= a.size(); i += 8) {
        std::memcpy(&x, a.data() + i, 8);
        std::memcpy(&y, b.data() + i, 8);
        if (x != y) break;
    }
    for (; i < a.size(); ++i)
        if (upper(a[i]) != upper(b[i])) return upper(a[i]) < upper(b[i]);
    return false;
}

void CompoundFileReader::sortChildren(const DirectoryEntry& storage) {
    uint32_t* first = children_.data() + storage.firstChild;
    uint32_t* last = first + storage.childCount;
    const auto byName = [this](uint32_t a, uint32_t b) { return precedes(name(entries_[a]), name(entries_[b])); };
    if (!std::is_sorted(first, last, byName)) std::sort(first, last, byName);
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

EntryIds CompoundFileReader::children(const DirectoryEntry& storage) const {
    const uint32_t* first = children_.data() + storage.firstChild;
    return {first, first + storage.childCount};
}

const DirectoryEntry* CompoundFileReader::child(const DirectoryEntry& storage, std::string_view wanted) const {
    const EntryIds ids = children(storage);
    const auto byName = [this](uint32_t id, std::string_view n) { return precedes(name(entries_[id]), n); };
    // Names equal but for case sort together: the exact one is among them.
    for (auto at = std::lower_bound(ids.begin(), ids.end(), wanted, byName);
         at != ids.end() && !precedes(wanted, name(entries_[*at])); ++at)
        if (name(entries_[*at]) == wanted) return &entries_[*at];
    return nullptr;
}

void CompoundFileReader::releaseDirectory() {
    decltype(entries_)(entries_.get_allocator()).swap(entries_);
    decltype(names_)(names_.get_allocator()).swap(names_);
    std::vector<ClassId>().swap(clsids_);
    decltype(children_)(children_.get_allocator()).swap(children_);
}

Status CompoundFileReader::readStream(const DirectoryEntry& stream, std::vector<uint8_t>& out) const {
    out.clear();
    const auto where = [&] { return " in stream '" + std::string(name(stream)) + "'"; };
    if (stream.type != EntryType::Stream) return Status::error("not a stream" + where());
    const bool mini = stream.size < kMiniStreamCutoff;
    // A size the chain cannot hold fails before anything is allocated for it.
    if (unitsFor(stream.size, mini ? kMiniSectorSize : sectorSize_) > (mini ? miniFat_ : fat_).size())
        return Status::error(std::string(mini ? "mini FAT" : "FAT") + " chain longer than the file at sector " +
                             std::to_string(stream.startSector) + where());
    out.resize(size_t(stream.size));
    ChainCursor cursor;
    Status s = readStreamRange(stream, 0, out.data(), out.size(), cursor);
    if (s) return s;
    out.clear();
    return Status::error(s.message() + where());
}

Status CompoundFileReader::readStreamRange(const DirectoryEntry& stream, uint64_t offset, uint8_t* out, size_t n,
                                           ChainCursor& cursor) const {
    if (stream.type != EntryType::Stream) return Status::error("not a stream");
    if (offset > stream.size || n > stream.size - offset) return Status::error("read past the end of the stream");
    const bool mini = stream.size < kMiniStreamCutoff;
    const uint32_t unit = mini ? kMiniSectorSize : sectorSize_;
    while (n > 0) {
        if (Status s = seekChain(stream, offset / unit, cursor); !s) return s;
        const auto within = uint32_t(offset % unit);
        // Consecutive sectors are read in one go; mini sectors while they share a sector of the mini stream.
        size_t run = std::min<uint64_t>(n, unit - within);
        ChainCursor end = cursor;
        const AllocationTable& table = mini ? miniFat_ : fat_;
        const uint64_t miniPerSector = sectorSize_ / kMiniSectorSize;
        while (run < n) {
            uint32_t next = 0;
            if (!table.next(end.sector, stream.startSector, next) || next != end.sector + 1) break;
            if (mini && next / miniPerSector != cursor.sector / miniPerSector) break;
            end = {end.unitIndex + 1, next};
            run = std::min<uint64_t>(n, run + unit);
        }
        if (Status s = readUnits(mini, cursor.sector, within, out, run); !s) return s;
        cursor = end;
        offset += run;
        out += run;
        n -= run;
    }
    return Status();
}

// Moves the cursor to the chain's unitIndex-th sector, from where it stands when that is not past it.
Status CompoundFileReader::seekChain(const DirectoryEntry& stream, uint64_t unitIndex, ChainCursor& cursor) const {
    const AllocationTable& table = stream.size < kMiniStreamCutoff ? miniFat_ : fat_;
    if (cursor.sector == kNoStream || cursor.unitIndex > unitIndex) {
        if (!table.covers(stream.startSector)) return Status::error("chain starts outside the file");
        cursor = {0, stream.startSector};
    }
    while (cursor.unitIndex < unitIndex) {
        uint32_t next = 0;
        if (Status s = table.next(cursor.sector, stream.startSector, next); !s) return s;
        cursor = {cursor.unitIndex + 1, next};
    }
    return Status();
}

Status CompoundFileReader::readSector(uint32_t id, uint8_t* out) const {
    return readUnits(false, id, 0, out, sectorSize_);
}

Status CompoundFileReader::readUnits(bool mini, uint32_t id, uint32_t within, uint8_t* out, size_t n) const {
    if (mini) return readMiniUnit(id, within, out, n);
    return readRange((uint64_t(id) + 1) * sectorSize_ + within, out, n);
}

Status CompoundFileReader::readMiniUnit(uint32_t id, uint32_t within, uint8_t* out, size_t n) const {
    const uint64_t offset = uint64_t(id) * kMiniSectorSize + within;
    const uint64_t index = offset / sectorSize_;
    if (index >= miniStreamSectors_.size()) return fail("mini sector outside the mini stream", "mini sector", id);
    return readUnits(false, miniStreamSectors_[size_t(index)], uint32_t(offset % sectorSize_), out, n);
}

Status CompoundFileReader::readRange(uint64_t offset, uint8_t* out, size_t n) const {
    return n >= kBlockSize ? input_->read(offset, out, n) : readCached(offset, out, n);
}

Status CompoundFileReader::readCached(uint64_t offset, uint8_t* out, size_t n) const {
    if (!cache_) {
        cache_.reset(static_cast<uint8_t*>(mem::hugePageResource()->allocate(kCachedBlocks * kBlockSize)));
        cachedBlocks_.fill(UINT64_MAX);
    }
    while (n > 0) {
        const uint64_t block = offset / kBlockSize;
        const size_t slot = size_t(block % kCachedBlocks);
        uint8_t* cached = cache_.get() + slot * kBlockSize;
        const uint64_t start = block * kBlockSize;
        const size_t available = size_t(std::min<uint64_t>(kBlockSize, input_->size() - std::min(start, input_->size())));
        if (cachedBlocks_[slot] != block) {
            cachedBlocks_[slot] = UINT64_MAX;
            if (Status s = input_->read(start, cached, available); !s) return s;
            cachedBlocks_[slot] = block;
        }
        const size_t within = size_t(offset - start);
        if (within >= available) return input_->read(offset, out, n);  // past the end: the file says where
        const size_t take = std::min(n, available - within);
        std::memcpy(out, cached + within, take);
        offset += take;
        out += take;
        n -= take;
    }
    return Status();
}

}  // namespace aafkit::cfb

#include "CfbTestSupport.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

using aafkit::Status;
using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::DirectoryEntry;
using aafkit::cfb::EntryType;

namespace cfbtest {

namespace {

// zlib's adler32, which olefile's side computes with Python's zlib.
uint32_t adler32(const std::vector<uint8_t>& data) {
    uint32_t a = 1, b = 0;
    for (uint8_t byte : data) a = (a + byte) % 65521, b = (b + a) % 65521;
    return b << 16 | a;
}

Status listStorage(const CompoundFileReader& reader, const DirectoryEntry& storage, const std::string& prefix,
                   const std::string& label, std::vector<std::string>& lines) {
    std::vector<uint8_t> data;
    for (uint32_t id : reader.children(storage)) {
        const DirectoryEntry& entry = reader.entry(id);
        const std::string path = prefix + std::string(reader.name(entry));
        Status s = entry.type == EntryType::Stream ? reader.readStream(entry, data)
                                                   : listStorage(reader, entry, path + "/", label, lines);
        if (!s) return s;
        if (entry.type == EntryType::Stream) lines.push_back(listingLine(label, path, data));
    }
    return Status();
}

std::vector<uint32_t> rawChain(const std::vector<uint32_t>& fat, uint32_t start) {
    std::vector<uint32_t> chain;
    for (uint32_t s = start; s < fat.size() && chain.size() <= fat.size(); s = fat[s]) chain.push_back(s);
    return chain;
}

}  // namespace

std::string listingLine(const std::string& label, const std::string& path, const std::vector<uint8_t>& data) {
    char sum[16];
    std::snprintf(sum, sizeof sum, "%08x", adler32(data));
    return label + "\t" + path + "\t" + std::to_string(data.size()) + "\t" + sum;
}

Status listStreams(const CompoundFileReader& reader, const std::string& label, std::vector<std::string>& lines) {
    return listStorage(reader, reader.root(), "", label, lines);
}

std::string errorReadingAll(std::vector<uint8_t> bytes) {
    CompoundFileReader reader;
    Status s = CompoundFileReader::open(std::move(bytes), reader);
    std::vector<uint8_t> data;
    for (uint32_t id = 0; s && id < reader.entryCount(); ++id)
        if (reader.entry(id).type == EntryType::Stream) s = reader.readStream(reader.entry(id), data);
    return s.message();
}

bool olefileAvailable() { return std::system("/usr/bin/python3 -c 'import olefile' >/dev/null 2>&1") == 0; }

std::vector<std::string> olefileListing(const std::vector<std::string>& paths) {
    std::string command =
        "/usr/bin/python3 -c '\n"
        "import olefile, sys, zlib\n"
        "for path in sys.argv[1:]:\n"
        "    ole = olefile.OleFileIO(path)\n"
        "    for entry in ole.listdir(streams=True, storages=False):\n"
        "        data = ole.openstream(entry).read()\n"
        "        line = \"%s\\t%s\\t%d\\t%08x\\n\" % (path, \"/\".join(entry), len(data), zlib.adler32(data))\n"
        "        sys.stdout.buffer.write(line.encode(\"utf-8\"))\n"
        "'";
    for (const std::string& path : paths) command += " '" + path + "'";
    std::vector<std::string> lines;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return lines;
    for (char line[4096]; std::fgets(line, sizeof line, pipe);) lines.emplace_back(line, std::strcspn(line, "\n"));
    pclose(pipe);
    std::sort(lines.begin(), lines.end());
    return lines;
}

uint32_t le32(const std::vector<uint8_t>& bytes, size_t offset) {
    return uint32_t(bytes[offset]) | uint32_t(bytes[offset + 1]) << 8 | uint32_t(bytes[offset + 2]) << 16 |
           uint32_t(bytes[offset + 3]) << 24;
}

void putLe32(std::vector<uint8_t>& bytes, size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[offset + i] = uint8_t(value >> (8 * i));
}

size_t RawLayout::entryOffset(uint32_t id) const {
    const uint32_t perSector = sectorSize / 128;
    return sectorOffset(directorySectors[id / perSector]) + id % perSector * 128;
}

RawLayout rawLayout(const std::vector<uint8_t>& bytes) {
    RawLayout raw;
    raw.sectorSize = 1u << (bytes[30] | bytes[31] << 8);
    for (uint32_t i = 0; i < std::min<uint32_t>(le32(bytes, 44), 109); ++i)
        raw.fatSectors.push_back(le32(bytes, 76 + 4 * i));
    std::vector<uint32_t> fat;
    for (uint32_t s : raw.fatSectors)
        for (uint32_t i = 0; i < raw.sectorSize / 4; ++i) fat.push_back(le32(bytes, raw.sectorOffset(s) + 4 * i));
    raw.directorySectors = rawChain(fat, le32(bytes, 48));
    raw.miniFatSectors = rawChain(fat, le32(bytes, 60));
    return raw;
}

}  // namespace cfbtest

#include "CfbTestSupport.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace fs = std::filesystem;
using aafkit::Status;
using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::DirectoryEntry;
using aafkit::cfb::EntryType;

namespace cfbtest {

std::vector<std::string> sampleFiles() {
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(AAFBRIDGE_SAMPLES_DIR, ec), end; !ec && it != end; ++it)
        if (it->path().extension() == ".aaf") files.push_back(it->path().string());
    std::sort(files.begin(), files.end());
    return files;
}

std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::string temporaryPath(const std::string& name) {
    return (fs::temp_directory_path() / ("cfbtest-" + std::to_string(::getpid()) + "-" + name)).string();
}

namespace {

uint32_t crc32(const std::vector<uint8_t>& data) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            uint32_t c = i;
            for (int k = 0; k < 8; ++k) c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[i] = c;
        }
        return t;
    }();
    uint32_t crc = 0xFFFFFFFFu;
    for (uint8_t b : data) crc = table[(crc ^ b) & 0xFF] ^ (crc >> 8);
    return crc ^ 0xFFFFFFFFu;
}

}  // namespace

std::string listingLine(const std::string& label, const std::string& path, const std::vector<uint8_t>& data) {
    char crc[16];
    std::snprintf(crc, sizeof crc, "%08x", crc32(data));
    return label + "\t" + path + "\t" + std::to_string(data.size()) + "\t" + crc;
}

namespace {

Status listStorage(const CompoundFileReader& reader, const DirectoryEntry& storage,
                   const std::string& prefix, const std::string& label, std::vector<std::string>& lines) {
    std::vector<uint8_t> data;
    for (uint32_t id : storage.children) {
        const DirectoryEntry& entry = reader.entry(id);
        const std::string path = prefix + entry.name;
        Status s = entry.type == EntryType::Stream ? reader.readStream(entry, data)
                                                   : listStorage(reader, entry, path + "/", label, lines);
        if (!s) return s;
        if (entry.type == EntryType::Stream) lines.push_back(listingLine(label, path, data));
    }
    return Status();
}

}  // namespace

Status listStreams(const CompoundFileReader& reader, const std::string& label, std::vector<std::string>& lines) {
    return listStorage(reader, reader.root(), "", label, lines);
}

bool opensAndReadsAll(std::vector<uint8_t> bytes, std::string* error) {
    CompoundFileReader reader;
    Status s = CompoundFileReader::open(std::move(bytes), reader);
    std::vector<uint8_t> data;
    for (uint32_t id = 0; s && id < reader.entryCount(); ++id)
        if (reader.entry(id).type == EntryType::Stream) s = reader.readStream(reader.entry(id), data);
    if (error) *error = s.message();
    return s.ok();
}

bool olefileAvailable() {
    return std::system("/usr/bin/python3 -c 'import olefile' >/dev/null 2>&1") == 0;
}

std::vector<std::string> olefileListing(const std::vector<std::string>& paths) {
    std::string command =
        "/usr/bin/python3 -c '\n"
        "import olefile, sys, zlib\n"
        "for path in sys.argv[1:]:\n"
        "    ole = olefile.OleFileIO(path)\n"
        "    for entry in ole.listdir(streams=True, storages=False):\n"
        "        data = ole.openstream(entry).read()\n"
        "        line = \"%s\\t%s\\t%d\\t%08x\\n\" % (path, \"/\".join(entry), len(data), zlib.crc32(data))\n"
        "        sys.stdout.buffer.write(line.encode(\"utf-8\"))\n"
        "'";
    for (const std::string& path : paths) command += " '" + path + "'";
    std::vector<std::string> lines;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return lines;
    for (char line[4096]; std::fgets(line, sizeof line, pipe);)
        lines.emplace_back(line, std::strcspn(line, "\n"));
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

namespace {

std::vector<uint32_t> rawChain(const std::vector<uint32_t>& fat, uint32_t start) {
    std::vector<uint32_t> chain;
    for (uint32_t s = start; s < fat.size() && chain.size() <= fat.size(); s = fat[s]) chain.push_back(s);
    return chain;
}

}  // namespace

RawLayout rawLayout(const std::vector<uint8_t>& bytes) {
    RawLayout raw;
    raw.sectorSize = 1u << (bytes[30] | bytes[31] << 8);
    const uint32_t fatCount = le32(bytes, 44);
    for (uint32_t i = 0; i < std::min<uint32_t>(fatCount, 109); ++i) raw.fatSectors.push_back(le32(bytes, 76 + 4 * i));
    for (uint32_t s : raw.fatSectors)
        for (uint32_t i = 0; i < raw.sectorSize / 4; ++i) raw.fat.push_back(le32(bytes, raw.sectorOffset(s) + 4 * i));
    raw.directorySectors = rawChain(raw.fat, le32(bytes, 48));
    raw.miniFatSectors = rawChain(raw.fat, le32(bytes, 60));
    return raw;
}

}  // namespace cfbtest

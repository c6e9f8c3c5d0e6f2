// Hostile input: every case must end in an error or a clean read, never a
// crash, hang or out-of-bounds read (the suite runs under ASan and UBSan).
#include <gtest/gtest.h>

#include <random>

#include "CfbTestSupport.h"
#include "aafkit/cfb/CompoundFileWriter.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::CompoundFileWriter;

namespace {

const uint8_t kClass[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

// A small file in which every sector is in use: a storage, mini streams and a
// three-sector stream.
std::vector<uint8_t> smallFile() {
    CompoundFileWriter writer;
    const uint32_t storage = writer.addStorage(CompoundFileWriter::kRoot, "Header-2", kClass);
    writer.addStream(storage, "properties", std::vector<uint8_t>(700, 0x42));
    writer.addStream(CompoundFileWriter::kRoot, "big", std::vector<uint8_t>(3 * 4096, 0x17));
    for (int i = 0; i < 40; ++i)
        writer.addStream(storage, "s" + std::to_string(i), std::vector<uint8_t>(i * 50, uint8_t(i)));
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(writer.write(bytes).ok());
    return bytes;
}

std::string errorOf(std::vector<uint8_t> bytes) {
    std::string error;
    cfbtest::opensAndReadsAll(std::move(bytes), &error);
    return error;
}

// Offsets inside the small file, found through the raw layout.
struct SmallFile {
    std::vector<uint8_t> bytes = smallFile();
    cfbtest::RawLayout raw = cfbtest::rawLayout(bytes);
    uint32_t entryWithName(const std::string& name) const {
        for (uint32_t id = 0;; ++id) {
            const size_t at = raw.entryOffset(id);
            std::string stored;
            for (size_t i = 0; i + 2 < bytes[at + 64]; i += 2) stored += char(bytes[at + i]);
            if (stored == name) return id;
        }
    }
};

TEST(MalformedInput, HeaderDefectsAreNamed) {
    const SmallFile f;
    ASSERT_EQ(errorOf(f.bytes), "");
    const struct {
        size_t offset;
        uint8_t value;
        const char* error;
    } cases[] = {
        {0, 0x00, "bad signature"},         {28, 0xFF, "byte order"},
        {26, 0x03, "unsupported version"},  {30, 0x09, "unsupported version"},
        {32, 0x07, "mini sector"},          {57, 0x20, "cutoff"},
        {44, 0x50, "FAT sector count"},     {76, 0x60, "FAT sector out of range"},
        {48, 0x70, "directory"},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> bytes = f.bytes;
        bytes[c.offset] = c.value;
        EXPECT_NE(errorOf(bytes).find(c.error), std::string::npos) << c.offset << ": " << errorOf(bytes);
    }
    EXPECT_NE(errorOf({}).find("shorter than a header"), std::string::npos);
    EXPECT_NE(errorOf(std::vector<uint8_t>(f.bytes.begin(), f.bytes.begin() + 1000)).find("header sector"),
              std::string::npos);
}

TEST(MalformedInput, MissingFilesAndFoldersAreReported) {
    CompoundFileReader reader;
    for (const char* path : {"/nonexistent/file.aaf", AAFBRIDGE_SAMPLES_DIR "/.."})
        EXPECT_NE(CompoundFileReader::openFile(path, reader).message().find("cannot open"), std::string::npos);
}

TEST(MalformedInput, LoopsAndBadLinksInFatAndDirectory) {
    const SmallFile f;
    const auto patched = [&](size_t offset, uint32_t value) {
        std::vector<uint8_t> bytes = f.bytes;
        cfbtest::putLe32(bytes, offset, value);
        return errorOf(bytes);
    };
    const size_t fat = f.raw.sectorOffset(f.raw.fatSectors[0]);
    const size_t big = f.raw.entryOffset(f.entryWithName("big"));
    const uint32_t bigStart = cfbtest::le32(f.bytes, big + 116);
    EXPECT_NE(patched(fat + 4 * (bigStart + 2), bigStart).find("loops"), std::string::npos);
    EXPECT_NE(patched(fat + 4 * (bigStart + 1), 5000).find("leaves the file"), std::string::npos);
    EXPECT_NE(patched(big + 120, 4 * 4096).find("in stream 'big'"), std::string::npos);
    EXPECT_NE(patched(big + 120, 0xFFFFFFF0).find("longer than the file"), std::string::npos);

    const uint32_t header = f.entryWithName("Header-2");
    const size_t headerAt = f.raw.entryOffset(header);
    EXPECT_NE(patched(headerAt + 76, header).find("directory loop"), std::string::npos);
    EXPECT_NE(patched(headerAt + 68, 0).find("directory loop"), std::string::npos);
    EXPECT_NE(patched(headerAt + 72, 0x00FFFF00).find("link to no entry"), std::string::npos);
    EXPECT_NE(patched(big + 76, header).find("stream with children"), std::string::npos);
    EXPECT_NE(patched(f.raw.entryOffset(0) + 120, 1 << 30).find("mini stream"), std::string::npos);

    const size_t miniFat = f.raw.sectorOffset(f.raw.miniFatSectors[0]);
    EXPECT_NE(patched(miniFat + 4 * 3, 1).find("mini FAT chain loops"), std::string::npos);
    std::vector<uint8_t> bytes = f.bytes;
    bytes[headerAt + 66] = 3;
    EXPECT_NE(errorOf(bytes).find("unknown entry type"), std::string::npos);
    bytes = f.bytes;
    bytes[headerAt + 64] = 66;
    EXPECT_NE(errorOf(bytes).find("bad name length"), std::string::npos);
}

TEST(MalformedInput, DifatLoopAndRange) {
    // Enough sectors for a DIFAT chain: 1,200 FAT sectors need 2 DIFAT sectors.
    CompoundFileWriter writer;
    writer.addStream(CompoundFileWriter::kRoot, "big", std::vector<uint8_t>(1300 * 4096));
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());
    cfbtest::putLe32(bytes, 44, 1200);
    const uint32_t difat = 1250;  // inside the stream's data
    cfbtest::putLe32(bytes, 68, difat);
    const size_t at = (size_t(difat) + 1) * 4096;
    for (int i = 0; i < 1023; ++i) cfbtest::putLe32(bytes, at + 4 * i, 0);
    cfbtest::putLe32(bytes, at + 4 * 1023, difat);
    EXPECT_NE(errorOf(bytes).find("DIFAT chain loops"), std::string::npos) << errorOf(bytes);
    cfbtest::putLe32(bytes, at + 4 * 1023, 99999);
    EXPECT_NE(errorOf(bytes).find("DIFAT sector out of range"), std::string::npos) << errorOf(bytes);
}

TEST(MalformedInput, EveryTruncationOfAFullFileFails) {
    const std::vector<uint8_t> bytes = smallFile();
    for (size_t length = 0; length + 4096 <= bytes.size(); length += 331)
        EXPECT_NE(errorOf(std::vector<uint8_t>(bytes.begin(), bytes.begin() + length)), "") << length;
}

// Cuts at seeded lengths and seeded corruption, two thirds of it in the header,
// FAT, mini FAT and directory. Answers how many cases failed to read.
size_t damageAndRead(const std::vector<uint8_t>& file, int truncations, int flips, std::mt19937& random) {
    const cfbtest::RawLayout raw = cfbtest::rawLayout(file);
    std::vector<size_t> structural;
    for (size_t i = 0; i < 512; ++i) structural.push_back(i);
    for (const auto* sectors : {&raw.fatSectors, &raw.directorySectors, &raw.miniFatSectors})
        for (uint32_t s : *sectors)
            for (size_t i = 0; i < raw.sectorSize; ++i) structural.push_back(raw.sectorOffset(s) + i);
    size_t failures = 0;
    for (int i = 0; i < truncations; ++i) {
        const size_t length = random() % file.size();
        failures += !cfbtest::opensAndReadsAll(std::vector<uint8_t>(file.begin(), file.begin() + length));
    }
    for (int i = 0; i < flips; ++i) {
        std::vector<uint8_t> bytes = file;
        for (int count = 1 + random() % 4; count > 0; --count) {
            const size_t at = random() % 3 ? structural[random() % structural.size()] : random() % bytes.size();
            bytes[at] = random() % 2 ? uint8_t(random()) : uint8_t(bytes[at] ^ (1u << random() % 8));
        }
        failures += !cfbtest::opensAndReadsAll(std::move(bytes));
    }
    return failures;
}

TEST(MalformedInput, TruncatedAndFlippedFilesNeverCrash) {
    std::mt19937 random(2024);
    // Most damage to the structure must be noticed, not silently read.
    EXPECT_GT(damageAndRead(smallFile(), 200, 1300, random), 450u);
    // Real files of both sector sizes; fewer cases, as each costs more.
    for (const char* name : {"/resolve/DR_Empty.aaf", "/pro-tools/PT_WAV_External_same_directory.aaf"}) {
        const std::vector<uint8_t> sample = cfbtest::readBytes(std::string(AAFBRIDGE_SAMPLES_DIR) + name);
        if (sample.empty()) continue;
        EXPECT_GT(damageAndRead(sample, 50, 200, random), 90u) << name;
    }
}

}  // namespace

// Hostile input: every case must end in an error or a clean read, never a
// crash, hang or out-of-bounds read (the suite runs under ASan and UBSan).
#include <gtest/gtest.h>

#include <random>

#include "CfbTestSupport.h"
#include "aafkit/cfb/CompoundFileWriter.h"
#include "support/SampleFiles.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::CompoundFileWriter;
using cfbtest::errorReadingAll;

namespace {

// A small file in which every sector is in use: a storage, mini streams and a
// three-sector stream.
std::vector<uint8_t> smallFile() {
    CompoundFileWriter writer;
    const uint8_t clsid[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const uint32_t storage = writer.addStorage(CompoundFileWriter::kRoot, "Header-2", clsid);
    writer.addStream(storage, "properties", std::vector<uint8_t>(700, 0x42));
    writer.addStream(CompoundFileWriter::kRoot, "big", std::vector<uint8_t>(3 * 4096, 0x17));
    for (int i = 0; i < 40; ++i) writer.addStream(storage, "s" + std::to_string(i), std::vector<uint8_t>(i * 50, uint8_t(i)));
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(writer.write(bytes).ok());
    return bytes;
}

uint32_t entryWithName(const std::vector<uint8_t>& bytes, const cfbtest::RawLayout& raw, const std::string& name) {
    for (uint32_t id = 0;; ++id) {
        const size_t at = raw.entryOffset(id);
        std::string stored;
        for (size_t i = 0; i + 2 < bytes[at + 64]; i += 2) stored += char(bytes[at + i]);
        if (stored == name) return id;
    }
}

TEST(MalformedInput, EachDefectIsNamed) {
    const std::vector<uint8_t> good = smallFile();
    ASSERT_EQ(errorReadingAll(good), "");
    const cfbtest::RawLayout raw = cfbtest::rawLayout(good);
    const size_t fat = raw.sectorOffset(raw.fatSectors[0]);
    const size_t miniFat = raw.sectorOffset(raw.miniFatSectors[0]);
    const size_t big = raw.entryOffset(entryWithName(good, raw, "big"));
    const uint32_t bigStart = cfbtest::le32(good, big + 116);
    const uint32_t header = entryWithName(good, raw, "Header-2");
    const size_t headerAt = raw.entryOffset(header);
    const struct {
        size_t offset;
        bool word;  // a 32-bit value, else one byte
        uint32_t value;
        const char* error;
    } cases[] = {
        {0, false, 0x00, "bad signature"},          {28, false, 0xFF, "byte order"},
        {26, false, 0x03, "unsupported version"},    {30, false, 0x09, "unsupported version"},
        {32, false, 0x07, "mini sector"},            {57, false, 0x20, "cutoff"},
        {44, false, 0x50, "FAT sector count"},       {76, false, 0x60, "FAT sector out of range"},
        {48, false, 0x70, "directory"},              {headerAt + 66, false, 3, "unknown entry type"},
        {headerAt + 64, false, 66, "bad name length"},
        {fat + 4 * (bigStart + 2), true, bigStart, "loops"},
        {fat + 4 * (bigStart + 1), true, 5000, "leaves the file"},
        {big + 120, true, 4 * 4096, "in stream 'big'"},
        {big + 120, true, 0xFFFFFFF0, "longer than the file"},
        {headerAt + 76, true, header, "directory loop"},
        {headerAt + 68, true, 0, "directory loop"},
        {headerAt + 72, true, 0x00FFFF00, "link to no entry"},
        {big + 76, true, header, "stream with children"},
        {raw.entryOffset(0) + 120, true, 1 << 30, "mini stream"},
        {miniFat + 4 * 3, true, 1, "mini FAT chain loops"},
    };
    for (const auto& c : cases) {
        std::vector<uint8_t> bytes = good;
        if (c.word)
            cfbtest::putLe32(bytes, c.offset, c.value);
        else
            bytes[c.offset] = uint8_t(c.value);
        const std::string error = errorReadingAll(bytes);
        EXPECT_NE(error.find(c.error), std::string::npos) << c.error << " at " << c.offset << ": " << error;
    }
    EXPECT_NE(errorReadingAll({}).find("shorter than a header"), std::string::npos);
    EXPECT_NE(errorReadingAll({good.begin(), good.begin() + 1000}).find("header sector"), std::string::npos);
    CompoundFileReader reader;
    for (const char* path : {"/nonexistent/file.aaf", AAFBRIDGE_SAMPLES_DIR "/.."})
        EXPECT_NE(CompoundFileReader::openFile(path, reader).message().find("cannot open"), std::string::npos);
}

// Seeded corruption, two thirds of it in the header, FAT, mini FAT and
// directory. Answers how many damaged copies failed to read.
size_t flipAndRead(const std::vector<uint8_t>& file, int copies, std::mt19937& random) {
    const cfbtest::RawLayout raw = cfbtest::rawLayout(file);
    std::vector<size_t> structural;
    for (size_t i = 0; i < 512; ++i) structural.push_back(i);
    for (const auto* sectors : {&raw.fatSectors, &raw.directorySectors, &raw.miniFatSectors})
        for (uint32_t s : *sectors)
            for (size_t i = 0; i < raw.sectorSize; ++i) structural.push_back(raw.sectorOffset(s) + i);
    size_t failures = 0;
    for (int i = 0; i < copies; ++i) {
        std::vector<uint8_t> bytes = file;
        for (int count = 1 + random() % 4; count > 0; --count) {
            const size_t at = random() % 3 ? structural[random() % structural.size()] : random() % bytes.size();
            bytes[at] = random() % 2 ? uint8_t(random()) : uint8_t(bytes[at] ^ (1u << random() % 8));
        }
        failures += !errorReadingAll(std::move(bytes)).empty();
    }
    return failures;
}

TEST(MalformedInput, TruncatedAndFlippedFilesFailCleanly) {
    const std::vector<uint8_t> small = smallFile();
    for (size_t length = 0; length < small.size(); length += 331) {
        const std::string error = errorReadingAll({small.begin(), small.begin() + length});
        // A cut inside the last sector may spare every stream; any earlier one may not.
        if (length + 4096 <= small.size()) {
            EXPECT_NE(error, "") << "cut at " << length;
        }
    }
    std::mt19937 random(2024);
    // Most damage to the structure must be noticed, not silently read.
    EXPECT_GT(flipAndRead(small, 1300, random), 350u);
    // Real files of both sector sizes; fewer cases, as each costs more.
    for (const char* name : {"resolve/DR_Empty.aaf", "pro-tools/PT_WAV_External_same_directory.aaf"}) {
        const std::vector<uint8_t> sample = testsupport::readBytes(testsupport::sample(name));
        if (sample.empty()) continue;
        EXPECT_GT(flipAndRead(sample, 200, random), 40u) << name;
    }
}

}  // namespace

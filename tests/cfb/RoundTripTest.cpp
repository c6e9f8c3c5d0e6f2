// What the writer puts on disk: read back by our reader and by olefile, with
// the header, padding and directory trees checked byte by byte.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <functional>
#include <random>

#include "CfbTestSupport.h"
#include "aafkit/cfb/CompoundFileWriter.h"

using aafkit::Status;
using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::CompoundFileWriter;
using aafkit::cfb::DirectoryEntry;
using aafkit::cfb::EntryType;

namespace {

constexpr uint32_t kNoStream = 0xFFFFFFFF;
const uint8_t kClassA[16] = {0xa5, 0x98, 0xb3, 0xb3, 0x90, 0x1c, 0xd4, 0x11, 0x80, 0x53, 0x08, 0x00, 0x36, 0x21, 0x08, 0x04};
const uint8_t kClassB[16] = {1, 1, 1, 0x0d, 1, 1, 0, 0x2f, 6, 0x0e, 0x2b, 0x34, 2, 6, 1, 1};

std::vector<uint8_t> pattern(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> data(size);
    for (uint8_t& b : data) b = uint8_t(random());
    return data;
}

// Streams on both sides of every size boundary, nested storages, a non-ASCII
// name; `expected` is the listing that cfbtest::listStreams should give.
struct Nested {
    CompoundFileWriter writer;
    std::vector<std::string> expected;

    Nested() {
        writer.setClsid(CompoundFileWriter::kRoot, kClassA);
        const uint32_t header = writer.addStorage(CompoundFileWriter::kRoot, "Header-2", kClassB);
        const uint32_t content = writer.addStorage(header, "Content-3b03", kClassA);
        const uint32_t mob = writer.addStorage(content, "Mobs-1901{1a}-é名", kClassB);
        uint32_t seed = 1;
        for (size_t size : {0, 1, 63, 64, 65, 4095, 4096, 4097, 8192, 100000}) {
            stream(CompoundFileWriter::kRoot, "", "s" + std::to_string(size), pattern(size, seed++));
            stream(mob, "Header-2/Content-3b03/Mobs-1901{1a}-é名/", "s" + std::to_string(size), pattern(size, seed++));
        }
        stream(header, "Header-2/", "properties", pattern(300, seed));
        std::sort(expected.begin(), expected.end());
    }
    void stream(uint32_t parent, const std::string& path, const std::string& name, std::vector<uint8_t> data) {
        expected.push_back(cfbtest::listingLine("@", path + name, data));
        writer.addStream(parent, name, std::move(data));
    }
    std::vector<uint8_t> bytes() const {
        std::vector<uint8_t> out;
        EXPECT_TRUE(writer.write(out).ok());
        return out;
    }
};

const DirectoryEntry* findPath(const CompoundFileReader& reader, const std::string& path) {
    const DirectoryEntry* entry = &reader.root();
    for (size_t begin = 0; entry && begin <= path.size();) {
        const size_t end = std::min(path.find('/', begin), path.size());
        entry = reader.child(*entry, std::string_view(path).substr(begin, end - begin));
        begin = end + 1;
    }
    return entry;
}

TEST(WriterRoundTrip, ReaderSeesNamesClsidsNestingAndBytes) {
    const Nested f;
    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(f.bytes(), reader).ok());
    EXPECT_EQ(reader.majorVersion(), 4);
    EXPECT_EQ(reader.sectorSize(), 4096u);
    EXPECT_EQ(0, std::memcmp(reader.root().clsid, kClassA, 16));
    std::vector<std::string> lines;
    ASSERT_TRUE(cfbtest::listStreams(reader, "@", lines).ok());
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, f.expected);

    const DirectoryEntry* mob = findPath(reader, "Header-2/Content-3b03/Mobs-1901{1a}-é名");
    ASSERT_NE(mob, nullptr);
    EXPECT_EQ(mob->type, EntryType::Storage);
    EXPECT_EQ(0, std::memcmp(mob->clsid, kClassB, 16));
    EXPECT_EQ(mob->children.size(), 10u);
    ASSERT_NE(findPath(reader, "Header-2/Content-3b03/Mobs-1901{1a}-é名/s4097"), nullptr);
    EXPECT_EQ(findPath(reader, "Header-2/Content-3b03/Mobs-1901{1a}-é名/s4097")->size, 4097u);
    EXPECT_EQ(findPath(reader, "Header-2/content-3b03"), nullptr);
}

TEST(WriterRoundTrip, OlefileReadsEveryStream) {
    if (!cfbtest::olefileAvailable()) GTEST_SKIP() << "/usr/bin/python3 has no olefile module";
    const Nested f;
    const std::string path = cfbtest::temporaryPath("nested.aaf");
    ASSERT_TRUE(f.writer.writeFile(path).ok());
    std::vector<std::string> theirs = cfbtest::olefileListing({path});
    std::remove(path.c_str());
    for (std::string& line : theirs) line.replace(0, path.size(), "@");
    EXPECT_EQ(theirs, f.expected);
}

TEST(WriterRoundTrip, HeaderPaddingAndDirectoryBytes) {
    const std::vector<uint8_t> bytes = Nested().bytes();
    ASSERT_EQ(bytes.size() % 4096, 0u);
    const uint8_t start[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1,  // signature
                             0x01, 0x02, 0x01, 0x0d, 0x00, 0x02, 0x00, 0x00,  // AAF 4096 signature
                             0x06, 0x0e, 0x2b, 0x34, 0x03, 0x02, 0x01, 0x01,
                             0x3e, 0x00, 0x04, 0x00, 0xfe, 0xff, 0x0c, 0x00, 0x06, 0x00};
    EXPECT_EQ(0, std::memcmp(bytes.data(), start, sizeof start));
    EXPECT_EQ(cfbtest::le32(bytes, 56), 4096u);  // mini stream cutoff
    EXPECT_EQ(cfbtest::le32(bytes, 68), 0xFFFFFFFEu);  // no DIFAT sectors
    EXPECT_EQ(cfbtest::le32(bytes, 72), 0u);

    const cfbtest::RawLayout raw = cfbtest::rawLayout(bytes);
    EXPECT_EQ(cfbtest::le32(bytes, 40), raw.directorySectors.size());
    const size_t slots = raw.directorySectors.size() * 32;
    for (uint32_t id = 0; id < slots; ++id) {
        const size_t at = raw.entryOffset(id);
        for (size_t time = 100; time < 116; ++time) ASSERT_EQ(bytes[at + time], 0) << "entry " << id;
        if (bytes[at + 66] != 0) continue;
        // Unused entries: nothing but the three empty links.
        for (size_t i = 0; i < 128; ++i) {
            const bool link = i >= 68 && i < 80;
            ASSERT_EQ(bytes[at + i], link ? 0xFF : 0) << "entry " << id << " byte " << i;
        }
    }
    EXPECT_EQ(bytes[raw.entryOffset(0) + 66], 5);  // root
    EXPECT_EQ(bytes[raw.entryOffset(0) + 64], 22);  // "Root Entry" with its zero, in bytes
}

TEST(WriterRoundTrip, LargeStreamNeedsDifatSectors) {
    // 110 FAT sectors describe more than 109 * 1024 sectors: about 460 MB.
    const size_t sectors = 1024 * 110;
    std::vector<uint8_t> bytes;
    {
        CompoundFileWriter writer;
        std::vector<uint8_t> data(sectors * 4096);
        for (size_t s = 0; s < sectors; ++s) data[s * 4096 + s % 4096] = uint8_t(s % 251 + 1);
        writer.addStream(CompoundFileWriter::kRoot, "big", std::move(data));
        ASSERT_TRUE(writer.write(bytes).ok());
    }
    EXPECT_EQ(cfbtest::le32(bytes, 44), 111u);  // FAT sectors
    EXPECT_EQ(cfbtest::le32(bytes, 72), 1u);  // DIFAT sectors
    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    std::vector<uint8_t> read;
    ASSERT_TRUE(reader.readStream(*reader.child(reader.root(), "big"), read).ok());
    ASSERT_EQ(read.size(), sectors * 4096);
    // Every sector carries its own number at its own place: none is lost or moved.
    for (size_t s = 0; s < sectors; ++s) ASSERT_EQ(read[s * 4096 + s % 4096], uint8_t(s % 251 + 1)) << s;
}

// Checks the sibling tree under `top` straight from the bytes: sorted in order,
// red-black, and no deeper than a red-black tree may be. Answers the node count.
size_t checkSiblingTree(const std::vector<uint8_t>& bytes, const cfbtest::RawLayout& raw, uint32_t top) {
    std::vector<std::string> keys;  // name length, then the upper-cased ASCII name
    size_t deepest = 0;
    // Answers the black height of the subtree at `id`.
    std::function<size_t(uint32_t, size_t, bool)> walk = [&](uint32_t id, size_t depth, bool parentRed) {
        if (id == kNoStream) return size_t(1);
        const size_t at = raw.entryOffset(id);
        const bool red = bytes[at + 67] == 0;
        EXPECT_FALSE(red && parentRed) << "red entry " << id << " under a red parent";
        deepest = std::max(deepest, depth);
        const size_t left = walk(cfbtest::le32(bytes, at + 68), depth + 1, red);
        keys.emplace_back(1, char(bytes[at + 64]));
        for (size_t i = 0; i + 2 < bytes[at + 64]; i += 2) keys.back() += char(std::toupper(bytes[at + i]));
        EXPECT_EQ(left, walk(cfbtest::le32(bytes, at + 72), depth + 1, red)) << "black heights below " << id;
        return left + (red ? 0 : 1);
    };
    const uint32_t root = cfbtest::le32(bytes, raw.entryOffset(top) + 76);
    EXPECT_EQ(bytes[raw.entryOffset(root) + 67], 1) << "tree root must be black";
    walk(root, 1, false);
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    EXPECT_EQ(std::adjacent_find(keys.begin(), keys.end()), keys.end());
    EXPECT_LE(double(deepest), 2 * std::log2(keys.size() + 1));
    return keys.size();
}

TEST(WriterRoundTrip, FiveThousandSiblingsFormABalancedRedBlackTree) {
    CompoundFileWriter writer;
    const uint32_t mobs = writer.addStorage(CompoundFileWriter::kRoot, "Mobs", kClassA);
    std::mt19937 random(7);
    std::vector<std::string> names;
    for (int i = 0; i < 5000; ++i) {
        names.push_back((i % 3 ? "Mobs-1901{" : "mobs-1901{") + std::to_string(random() % 100000) +
                        "-" + std::to_string(i) + "}");
        if (i % 2)
            writer.addStorage(mobs, names.back(), kClassB);
        else
            writer.addStream(mobs, names.back(), {uint8_t(i)});
    }
    for (int small = 0; small < 3; ++small) writer.addStream(CompoundFileWriter::kRoot, std::string(small + 1, 'x'), {});
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());
    const cfbtest::RawLayout raw = cfbtest::rawLayout(bytes);
    EXPECT_EQ(checkSiblingTree(bytes, raw, 1), 5000u);
    EXPECT_EQ(checkSiblingTree(bytes, raw, 0), 4u);

    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    const DirectoryEntry* storage = reader.child(reader.root(), "Mobs");
    ASSERT_NE(storage, nullptr);
    EXPECT_EQ(storage->children.size(), 5000u);
    for (int i = 0; i < 5000; i += 7) {
        const DirectoryEntry* entry = reader.child(*storage, names[i]);
        ASSERT_NE(entry, nullptr) << names[i];
        EXPECT_EQ(entry->type, i % 2 ? EntryType::Storage : EntryType::Stream);
    }
}

TEST(WriterErrors, BadNamesAndMisuseFailTheWrite) {
    const std::string n15(15, 'n');
    const struct {
        std::function<void(CompoundFileWriter&)> build;
        const char* error;  // "" for a good file
    } cases[] = {
        {[&](auto& w) { w.addStream(0, n15 + n15 + "n", {}); }, ""},
        {[&](auto& w) { w.addStream(0, n15 + "名" + n15, {}); }, ""},
        {[&](auto& w) { w.addStream(0, n15 + n15 + "nn", {}); }, "longer than 31"},
        {[](auto& w) { w.addStream(0, "", {}); }, "empty name"},
        {[](auto& w) { w.addStream(0, "a/b", {}); }, "name with"},
        {[](auto& w) { w.addStream(0, "bad\xff", {}); }, "not UTF-8"},
        {[](auto& w) { w.addStream(0, "Props", {}), w.addStorage(0, "pROPS", kClassA); }, "duplicate"},
        {[](auto& w) { w.addStream(0, "s", {}), w.addStream(1, "child", {}); }, "no storage"},
        {[](auto& w) { w.setClsid(9, kClassA); }, "no storage"},
    };
    for (const auto& c : cases) {
        CompoundFileWriter writer;
        c.build(writer);
        std::vector<uint8_t> bytes;
        const std::string error = writer.write(bytes).message();
        EXPECT_TRUE(*c.error ? error.find(c.error) != std::string::npos : error.empty()) << c.error << ": " << error;
    }
}

TEST(WriterRoundTrip, WriteFileReplacesTheTargetAndLeavesNoTemporary) {
    const Nested f;
    const std::string path = cfbtest::temporaryPath("replace.aaf");
    cfbtest::writeBytes(path, {1, 2, 3});
    ASSERT_TRUE(f.writer.writeFile(path).ok());
    EXPECT_EQ(cfbtest::readBytes(path), f.bytes());
    EXPECT_TRUE(cfbtest::readBytes(path + ".tmp").empty());
    std::remove(path.c_str());
    EXPECT_FALSE(f.writer.writeFile("/nonexistent-dir/x.aaf").ok());
}

}  // namespace

// What the writer puts on disk: read back by our reader and by olefile, with
// the header, padding and directory trees checked byte by byte.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
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

// Writes what it is given and remembers the olefile-style listing to expect.
struct Fixture {
    CompoundFileWriter writer;
    std::vector<std::string> expected;
    std::map<std::string, std::vector<uint8_t>> contents;

    void stream(uint32_t parent, const std::string& path, const std::string& name, std::vector<uint8_t> data) {
        char crc[16];
        std::snprintf(crc, sizeof crc, "%08x", cfbtest::crc32(data));
        expected.push_back("@\t" + path + name + "\t" + std::to_string(data.size()) + "\t" + crc);
        contents[path + name] = data;
        writer.addStream(parent, name, std::move(data));
    }
    std::vector<uint8_t> bytes() const {
        std::vector<uint8_t> out;
        EXPECT_TRUE(writer.write(out).ok());
        return out;
    }
};

// Streams on both sides of every size boundary, nested storages, non-ASCII names.
Fixture nestedFixture() {
    Fixture f;
    f.writer.setClsid(CompoundFileWriter::kRoot, kClassA);
    const uint32_t header = f.writer.addStorage(CompoundFileWriter::kRoot, "Header-2", kClassB);
    const uint32_t deep = f.writer.addStorage(header, "Content-3b03", kClassA);
    const uint32_t unicode = f.writer.addStorage(deep, "Mobs-1901{1a}-é名", kClassB);
    const size_t sizes[] = {0, 1, 63, 64, 65, 4095, 4096, 4097, 8192, 100000};
    uint32_t seed = 1;
    for (size_t size : sizes) {
        const std::string name = "s" + std::to_string(size);
        f.stream(CompoundFileWriter::kRoot, "", name, pattern(size, seed++));
        f.stream(unicode, "Header-2/Content-3b03/Mobs-1901{1a}-é名/", name, pattern(size, seed++));
    }
    f.stream(header, "Header-2/", "properties", pattern(300, seed++));
    std::sort(f.expected.begin(), f.expected.end());
    return f;
}

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
    const Fixture f = nestedFixture();
    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(f.bytes(), reader).ok());
    EXPECT_EQ(reader.majorVersion(), 4);
    EXPECT_EQ(reader.sectorSize(), 4096u);
    EXPECT_EQ(0, std::memcmp(reader.root().clsid, kClassA, 16));

    std::vector<std::string> lines;
    ASSERT_TRUE(cfbtest::listStreams(reader, "@", lines).ok());
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, f.expected);
    for (const auto& [path, data] : f.contents) {
        const DirectoryEntry* entry = findPath(reader, path);
        ASSERT_NE(entry, nullptr) << path;
        std::vector<uint8_t> read;
        ASSERT_TRUE(reader.readStream(*entry, read).ok());
        EXPECT_EQ(read, data) << path;
    }
    const DirectoryEntry* unicode = findPath(reader, "Header-2/Content-3b03/Mobs-1901{1a}-é名");
    ASSERT_NE(unicode, nullptr);
    EXPECT_EQ(unicode->type, EntryType::Storage);
    EXPECT_EQ(0, std::memcmp(unicode->clsid, kClassB, 16));
    EXPECT_EQ(unicode->children.size(), 10u);
    EXPECT_EQ(findPath(reader, "Header-2/content-3b03"), nullptr);
}

TEST(WriterRoundTrip, OlefileReadsEveryStream) {
    if (!cfbtest::olefileAvailable()) GTEST_SKIP() << "/usr/bin/python3 has no olefile module";
    const Fixture f = nestedFixture();
    const std::string path = cfbtest::temporaryPath("nested.aaf");
    ASSERT_TRUE(f.writer.writeFile(path).ok());
    std::vector<std::string> theirs = cfbtest::olefileListing({path});
    std::remove(path.c_str());
    for (std::string& line : theirs) line.replace(0, path.size(), "@");
    EXPECT_EQ(theirs, f.expected);
}

TEST(WriterRoundTrip, HeaderPaddingAndDirectoryBytes) {
    const std::vector<uint8_t> bytes = nestedFixture().bytes();
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
    const size_t size = size_t(4096) * 1024 * 110;
    CompoundFileWriter writer;
    std::vector<uint8_t> data(size);
    data[0] = 1;
    data[size / 2] = 2;
    data[size - 1] = 3;
    writer.addStream(CompoundFileWriter::kRoot, "big", std::move(data));
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());
    EXPECT_EQ(cfbtest::le32(bytes, 44), 111u);  // FAT sectors
    EXPECT_EQ(cfbtest::le32(bytes, 72), 1u);  // DIFAT sectors

    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    std::vector<uint8_t> read;
    ASSERT_TRUE(reader.readStream(*reader.child(reader.root(), "big"), read).ok());
    std::vector<uint8_t> expected(size);
    expected[0] = 1;
    expected[size / 2] = 2;
    expected[size - 1] = 3;
    EXPECT_TRUE(read == expected);
}

// Checks the sibling tree under `top` straight from the bytes: sorted in order,
// red-black, and no deeper than a balanced tree needs. Answers the node count.
size_t checkSiblingTree(const std::vector<uint8_t>& bytes, const cfbtest::RawLayout& raw, uint32_t top) {
    struct Visit {
        std::string key;  // length, then the upper-cased name, as a sortable string
        size_t depth;
    };
    std::vector<Visit> inOrder;
    size_t blackHeight = 0;
    std::function<size_t(uint32_t, size_t, bool)> walk = [&](uint32_t id, size_t depth, bool parentRed) {
        if (id == kNoStream) return size_t(1);
        const size_t at = raw.entryOffset(id);
        const bool red = bytes[at + 67] == 0;
        EXPECT_FALSE(red && parentRed) << "red entry " << id << " under a red parent";
        const size_t left = walk(cfbtest::le32(bytes, at + 68), depth + 1, red);
        std::string key(1, char(bytes[at + 64]));
        for (size_t i = 0; i + 2 < bytes[at + 64]; i += 2) key += char(std::toupper(bytes[at + i]));
        inOrder.push_back({key, depth});
        const size_t right = walk(cfbtest::le32(bytes, at + 72), depth + 1, red);
        EXPECT_EQ(left, right) << "black heights differ below entry " << id;
        blackHeight = std::max(blackHeight, left);
        return left + (red ? 0 : 1);
    };
    const uint32_t root = cfbtest::le32(bytes, raw.entryOffset(top) + 76);
    EXPECT_EQ(bytes[raw.entryOffset(root) + 67], 1) << "tree root must be black";
    walk(root, 1, false);
    for (size_t i = 1; i < inOrder.size(); ++i) EXPECT_LT(inOrder[i - 1].key, inOrder[i].key);
    size_t depth = 0;
    for (const Visit& v : inOrder) depth = std::max(depth, v.depth);
    EXPECT_LE(double(depth), 2 * std::log2(inOrder.size() + 1));
    return inOrder.size();
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

TEST(WriterRoundTrip, ManyStreamsWriteInLinearTime) {
    CompoundFileWriter writer;
    for (int i = 0; i < 30000; ++i)
        writer.addStream(CompoundFileWriter::kRoot, "properties" + std::to_string(i), std::vector<uint8_t>(i % 200, 1));
    const auto start = std::chrono::steady_clock::now();
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_LT(seconds, 5.0);  // quadratic layout takes minutes; sanitizers slow the linear one
    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    EXPECT_EQ(reader.root().children.size(), 30000u);
}

TEST(WriterErrors, BadNamesAndMisuseFailTheWrite) {
    const auto writeError = [](const std::function<void(CompoundFileWriter&)>& build) {
        CompoundFileWriter writer;
        build(writer);
        std::vector<uint8_t> bytes;
        return writer.write(bytes).message();
    };
    const std::string name31(31, 'n');
    EXPECT_EQ(writeError([&](auto& w) { w.addStream(0, name31, {}); }), "");
    EXPECT_NE(writeError([&](auto& w) { w.addStream(0, name31 + "n", {}); }).find("longer than 31"), std::string::npos);
    EXPECT_EQ(writeError([&](auto& w) { w.addStream(0, std::string(15, 'n') + "名" + std::string(15, 'n'), {}); }), "");
    EXPECT_NE(writeError([](auto& w) { w.addStream(0, "", {}); }).find("empty name"), std::string::npos);
    EXPECT_NE(writeError([](auto& w) { w.addStream(0, "a/b", {}); }).find("name with"), std::string::npos);
    EXPECT_NE(writeError([](auto& w) { w.addStream(0, "bad\xff", {}); }).find("UTF-8"), std::string::npos);
    EXPECT_NE(writeError([](auto& w) {
                  w.addStream(0, "Properties", {});
                  w.addStorage(0, "pROPERTIES", kClassA);
              }).find("duplicate"),
              std::string::npos);
    EXPECT_NE(writeError([](auto& w) {
                  w.addStream(0, "s", {});
                  w.addStream(1, "child", {});
              }).find("no storage"),
              std::string::npos);
    EXPECT_NE(writeError([](auto& w) { w.setClsid(9, kClassA); }).find("no storage"), std::string::npos);
}

TEST(WriterRoundTrip, WriteFileReplacesTheTargetAndLeavesNoTemporary) {
    const Fixture f = nestedFixture();
    const std::string path = cfbtest::temporaryPath("replace.aaf");
    cfbtest::writeBytes(path, {1, 2, 3});
    ASSERT_TRUE(f.writer.writeFile(path).ok());
    EXPECT_EQ(cfbtest::readBytes(path), f.bytes());
    EXPECT_TRUE(cfbtest::readBytes(path + ".tmp").empty());
    std::remove(path.c_str());
    EXPECT_FALSE(f.writer.writeFile("/nonexistent-dir/x.aaf").ok());
}

}  // namespace

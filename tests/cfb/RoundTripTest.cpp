// What the writer puts on disk: read back by our reader and by olefile, with
// the header, directory entries and sibling trees checked byte by byte.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>

#include "CfbTestSupport.h"
#include "aafkit/cfb/CompoundFileWriter.h"
#include "support/SampleFiles.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::CompoundFileWriter;
using aafkit::cfb::DirectoryEntry;

namespace {

const uint8_t kClassA[16] = {0xa5, 0x98, 0xb3, 0xb3, 0x90, 0x1c, 0xd4, 0x11, 0x80, 0x53, 0x08, 0x00, 0x36, 0x21, 0x08, 0x04};
const uint8_t kClassB[16] = {1, 1, 1, 0x0d, 1, 1, 0, 0x2f, 6, 0x0e, 0x2b, 0x34, 2, 6, 1, 1};
const std::string kMobPath = "Header-2/Content-3b03/Mobs-1901{1a}-é名";

// Streams on both sides of every size boundary, nested storages, a non-ASCII
// name; `expected` is the sorted listing that cfbtest::listStreams should give.
struct Nested {
    CompoundFileWriter writer;
    std::vector<std::string> expected;

    Nested() {
        writer.setClsid(CompoundFileWriter::kRoot, kClassA);
        const uint32_t header = writer.addStorage(CompoundFileWriter::kRoot, "Header-2", kClassB);
        const uint32_t content = writer.addStorage(header, "Content-3b03", kClassA);
        const uint32_t mob = writer.addStorage(content, "Mobs-1901{1a}-é名", kClassB);
        std::mt19937 random(1);
        for (size_t size : {0, 1, 63, 64, 65, 4095, 4096, 4097, 8192, 100000}) {
            for (const auto& [parent, path] : {std::pair(CompoundFileWriter::kRoot, std::string()),
                                               std::pair(mob, kMobPath + "/")}) {
                std::vector<uint8_t> data(size);
                for (uint8_t& b : data) b = uint8_t(random());
                stream(parent, path + "s" + std::to_string(size), std::move(data));
            }
        }
        stream(header, "Header-2/properties", std::vector<uint8_t>(300, 7));
        std::sort(expected.begin(), expected.end());
    }
    void stream(uint32_t parent, const std::string& path, std::vector<uint8_t> data) {
        expected.push_back(cfbtest::listingLine("@", path, data));
        writer.addStream(parent, path.substr(path.rfind('/') + 1), std::move(data));
    }
    std::vector<uint8_t> bytes() const {
        std::vector<uint8_t> out;
        EXPECT_TRUE(writer.write(out).ok());
        return out;
    }
};

// An empty stream; a bare {} would fit the stream-content overload as well as the bytes.
const std::vector<uint8_t> kNoBytes;

TEST(WriterRoundTrip, OurReaderAndOlefileReadBackEveryStreamAndClsid) {
    const Nested f;
    const std::string path = testsupport::temporaryPath("cfb-nested.aaf");
    std::ofstream(path) << "an older file";  // writeFile must replace it whole
    ASSERT_TRUE(f.writer.writeFile(path).ok());
    std::vector<uint8_t> bytes = testsupport::readBytes(path);
    EXPECT_EQ(bytes, f.bytes());
    EXPECT_TRUE(testsupport::readBytes(path + ".tmp").empty()) << "temporary left behind";
    EXPECT_FALSE(f.writer.writeFile("/nonexistent-dir/x.aaf").ok());

    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    std::vector<std::string> ours;
    ASSERT_TRUE(cfbtest::listStreams(reader, "@", ours).ok());
    std::sort(ours.begin(), ours.end());
    EXPECT_EQ(ours, f.expected);
    EXPECT_EQ(0, std::memcmp(reader.clsid(reader.root()), kClassA, 16));
    const DirectoryEntry* mob = &reader.root();
    for (const char* name : {"Header-2", "Content-3b03", "Mobs-1901{1a}-é名"}) mob = mob ? reader.child(*mob, name) : nullptr;
    ASSERT_NE(mob, nullptr);
    EXPECT_EQ(0, std::memcmp(reader.clsid(*mob), kClassB, 16));
    EXPECT_EQ(reader.child(reader.root(), "header-2"), nullptr) << "lookups are by exact name";

    if (cfbtest::olefileAvailable()) {
        std::vector<std::string> theirs = cfbtest::olefileListing({path});
        for (std::string& line : theirs) line.replace(0, path.size(), "@");
        EXPECT_EQ(theirs, f.expected);
    }
    std::remove(path.c_str());
}

TEST(WriterRoundTrip, HeaderAndDirectoryBytes) {
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
    for (uint32_t id = 0; id < raw.directorySectors.size() * 32; ++id) {
        const size_t at = raw.entryOffset(id);
        for (size_t time = 100; time < 116; ++time) ASSERT_EQ(bytes[at + time], 0) << "entry " << id;
        if (bytes[at + 66] != 0) continue;
        // Unused entries: nothing but the three empty links.
        for (size_t i = 0; i < 128; ++i)
            ASSERT_EQ(bytes[at + i], i >= 68 && i < 80 ? 0xFF : 0) << "entry " << id << " byte " << i;
    }
    EXPECT_EQ(bytes[raw.entryOffset(0) + 66], 5);  // root
    EXPECT_EQ(bytes[raw.entryOffset(0) + 64], 22);  // "Root Entry" with its zero, in bytes
}

TEST(WriterRoundTrip, LargeStreamGetsDifatSectorsThatTheReaderChecks) {
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
    // One FAT sector more than the DIFAT lists sends the reader past its end; a
    // DIFAT sector that links to itself must not send it round for ever.
    std::vector<uint8_t> damaged = bytes;
    cfbtest::putLe32(damaged, 44, 111 + 1023);
    EXPECT_NE(cfbtest::errorReadingAll(damaged).find("DIFAT sector out of range"), std::string::npos);
    const uint32_t difat = cfbtest::le32(bytes, 68);
    cfbtest::putLe32(damaged, (size_t(difat) + 1) * 4096 + 4092, difat);
    EXPECT_NE(cfbtest::errorReadingAll(std::move(damaged)).find("DIFAT chain loops"), std::string::npos);

    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    std::vector<uint8_t> read;
    ASSERT_TRUE(reader.readStream(*reader.child(reader.root(), "big"), read).ok());
    ASSERT_EQ(read.size(), sectors * 4096);
    // Every sector carries its own number at its own place: none is lost or moved.
    for (size_t s = 0; s < sectors; ++s) ASSERT_EQ(read[s * 4096 + s % 4096], uint8_t(s % 251 + 1)) << s;
}

// Checks the sibling tree under entry `top` straight from the bytes: in name
// order, red-black, no deeper than a red-black tree may be. Answers its size.
size_t checkSiblingTree(const std::vector<uint8_t>& bytes, uint32_t top) {
    const cfbtest::RawLayout raw = cfbtest::rawLayout(bytes);
    std::vector<std::string> keys;  // name length, then the upper-cased ASCII name
    size_t deepest = 0;
    // Answers the black height of the subtree at `id`.
    std::function<size_t(uint32_t, size_t, bool)> walk = [&](uint32_t id, size_t depth, bool parentRed) {
        if (id == 0xFFFFFFFF) return size_t(1);
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
    for (int i = 0; i < 5000; ++i) {
        // Mixed case and lengths, in random order: the tree must still sort them.
        const std::string name = (i % 3 ? "Mobs-1901{" : "mobs-1901{") + std::to_string(random() % 100000) + "-" +
                                 std::to_string(i) + "}";
        if (i % 2)
            writer.addStorage(mobs, name, kClassB);
        else
            writer.addStream(mobs, name, {uint8_t(i)});
    }
    for (int small = 0; small < 3; ++small) writer.addStream(CompoundFileWriter::kRoot, std::string(small + 1, 'x'), kNoBytes);
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());
    EXPECT_EQ(checkSiblingTree(bytes, 1), 5000u);
    EXPECT_EQ(checkSiblingTree(bytes, 0), 4u);
}

TEST(WriterErrors, BadNamesAndMisuseFailTheWrite) {
    const std::string n15(15, 'n');
    const struct {
        std::function<void(CompoundFileWriter&)> build;
        const char* error;  // "" for a good file
    } cases[] = {
        {[&](auto& w) { w.addStream(0, n15 + n15 + "n", kNoBytes); }, ""},
        {[&](auto& w) { w.addStream(0, n15 + "名" + n15, kNoBytes); }, ""},
        {[&](auto& w) { w.addStream(0, n15 + n15 + "nn", kNoBytes); }, "longer than 31"},
        {[](auto& w) { w.addStream(0, "", kNoBytes); }, "empty name"},
        {[](auto& w) { w.addStream(0, "a/b", kNoBytes); }, "name with"},
        {[](auto& w) { w.addStream(0, "bad\xff", kNoBytes); }, "not UTF-8"},
        {[](auto& w) { w.addStream(0, "Props", kNoBytes), w.addStorage(0, "pROPS", kClassA); }, "duplicate"},
        {[](auto& w) { w.addStream(0, "s", kNoBytes), w.addStream(1, "child", kNoBytes); }, "no storage"},
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

}  // namespace

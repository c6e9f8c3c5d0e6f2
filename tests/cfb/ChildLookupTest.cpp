// Children are found by exact name under their own storage only, however many
// storages share names, however many children one storage has, and whatever order
// the file's sibling trees are in.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "aafkit/cfb/CompoundFileReader.h"
#include "aafkit/cfb/CompoundFileWriter.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::CompoundFileWriter;
using aafkit::cfb::DirectoryEntry;

namespace {

const uint8_t kClass[16] = {1, 2, 3};

TEST(ChildLookup, ByExactNameUnderItsOwnStorage) {
    CompoundFileWriter writer;
    const uint32_t a = writer.addStorage(CompoundFileWriter::kRoot, "A", kClass);
    const uint32_t b = writer.addStorage(CompoundFileWriter::kRoot, "B", kClass);
    writer.addStream(a, "properties", std::vector<uint8_t>(10));
    writer.addStream(b, "properties", std::vector<uint8_t>(20));
    writer.addStream(b, "only in B", std::vector<uint8_t>(1));
    // Enough siblings that their slots run into one another.
    const uint32_t many = writer.addStorage(CompoundFileWriter::kRoot, "Many", kClass);
    for (int i = 0; i < 3000; ++i) writer.addStream(many, "Components{" + std::to_string(i) + "}", std::vector<uint8_t>(i % 7));
    std::vector<uint8_t> bytes;
    ASSERT_TRUE(writer.write(bytes).ok());

    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    const DirectoryEntry* storageA = reader.child(reader.root(), "A");
    const DirectoryEntry* storageB = reader.child(reader.root(), "B");
    ASSERT_TRUE(storageA && storageB);
    ASSERT_NE(reader.child(*storageA, "properties"), nullptr);
    EXPECT_EQ(reader.child(*storageA, "properties")->size, 10u);
    EXPECT_EQ(reader.child(*storageB, "properties")->size, 20u);
    EXPECT_EQ(reader.child(*storageA, "only in B"), nullptr);
    EXPECT_EQ(reader.child(reader.root(), "properties"), nullptr);
    EXPECT_EQ(reader.child(*storageA, "Properties"), nullptr);
    EXPECT_EQ(reader.child(*storageA, "propertie"), nullptr);

    const DirectoryEntry* storageMany = reader.child(reader.root(), "Many");
    ASSERT_NE(storageMany, nullptr);
    EXPECT_EQ(reader.children(*storageMany).size(), 3000u);
    for (int i = 0; i < 3000; ++i) {
        const DirectoryEntry* found = reader.child(*storageMany, "Components{" + std::to_string(i) + "}");
        ASSERT_NE(found, nullptr) << i;
        EXPECT_EQ(found->size, uint64_t(i % 7)) << i;
    }
    EXPECT_EQ(reader.child(*storageMany, "Components{3000}"), nullptr);
}

std::vector<uint8_t> utf16Name(const std::u16string& name) {
    std::vector<uint8_t> bytes;
    for (char16_t unit : name) bytes.insert(bytes.end(), {uint8_t(unit & 0xff), uint8_t(unit >> 8)});
    return bytes;
}

// Swaps two names of equal length in the written directory, leaving the sibling
// tree that was built for the original order.
void swapNames(std::vector<uint8_t>& file, const std::u16string& a, const std::u16string& b) {
    const std::vector<uint8_t> x = utf16Name(a), y = utf16Name(b);
    auto at = [&file](const std::vector<uint8_t>& name) { return std::search(file.begin(), file.end(), name.begin(), name.end()); };
    const auto first = at(x), second = at(y);
    ASSERT_TRUE(first != file.end() && second != file.end());
    std::swap_ranges(first, first + long(x.size()), second);
}

std::vector<uint8_t> storageWith(const std::vector<std::string>& names) {
    CompoundFileWriter writer;
    const uint32_t storage = writer.addStorage(CompoundFileWriter::kRoot, "S", kClass);
    for (size_t i = 0; i < names.size(); ++i) writer.addStream(storage, names[i], std::vector<uint8_t>(i + 1));
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(writer.write(bytes).ok());
    return bytes;
}

// Each name is found with the stream that was written under it (its size is its place + 1).
void expectFound(std::vector<uint8_t> bytes, const std::vector<std::string>& names) {
    CompoundFileReader reader;
    ASSERT_TRUE(CompoundFileReader::open(std::move(bytes), reader).ok());
    const DirectoryEntry* storage = reader.child(reader.root(), "S");
    ASSERT_NE(storage, nullptr);
    EXPECT_EQ(reader.children(*storage).size(), names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        const DirectoryEntry* found = reader.child(*storage, names[i]);
        ASSERT_NE(found, nullptr) << names[i];
        EXPECT_EQ(found->size, i + 1) << names[i];
    }
}

TEST(ChildLookup, FindsChildrenOfATreeTheFileLeftOutOfOrder) {
    const std::vector<std::string> names = {"A1", "A2", "A3", "A4", "B1", "B2", "C1", "C2"};
    std::vector<uint8_t> bytes = storageWith(names);
    swapNames(bytes, u"A1", u"C2");
    expectFound(std::move(bytes), {"C2", "A2", "A3", "A4", "B1", "B2", "C1", "A1"});
}

TEST(ChildLookup, FindsNamesThatAreNotAscii) {
    // Sibling order counts UTF-16 units and upper-cases beyond ASCII; names here are UTF-8.
    const std::vector<std::string> names = {"ab", u8"\u00e91", "abc", u8"\u00e9", "Ab1", u8"\u20ac\u20ac"};
    expectFound(storageWith(names), names);
}

}  // namespace

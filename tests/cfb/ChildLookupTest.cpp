// Children are found by exact name under their own storage only, however many
// storages share names and however many children one storage has.
#include <gtest/gtest.h>

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

}  // namespace

// Every real AAF file opens and every stream reads, matching olefile's view.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <future>

#include "CfbTestSupport.h"

using aafkit::cfb::CompoundFileReader;
using aafkit::cfb::DirectoryEntry;
using aafkit::cfb::EntryType;

namespace {

constexpr uint8_t kSignature512[16] = {0x41, 0x41, 0x46, 0x42, 0x0d, 0x00, 0x4f, 0x4d,
                                       0x06, 0x0e, 0x2b, 0x34, 0x01, 0x01, 0x01, 0xff};
constexpr uint8_t kSignature4096[16] = {0x01, 0x02, 0x01, 0x0d, 0x00, 0x02, 0x00, 0x00,
                                        0x06, 0x0e, 0x2b, 0x34, 0x03, 0x02, 0x01, 0x01};

class SampleFiles : public ::testing::Test {
protected:
    void SetUp() override {
        files_ = cfbtest::sampleFiles();
        if (files_.empty()) GTEST_SKIP() << "no AAF samples at " << AAFBRIDGE_SAMPLES_DIR;
    }
    std::vector<std::string> files_;
};

TEST_F(SampleFiles, OpenAndReadEveryStreamAsOlefileDoes) {
    EXPECT_EQ(files_.size(), 58u);
    const bool olefile = cfbtest::olefileAvailable();
    // olefile takes seconds: let it run beside our own reads.
    auto theirs = std::async(std::launch::async, [&] {
        return olefile ? cfbtest::olefileListing(files_) : std::vector<std::string>();
    });
    std::vector<std::string> ours;
    for (const std::string& path : files_) {
        SCOPED_TRACE(path);
        CompoundFileReader reader;
        ASSERT_TRUE(CompoundFileReader::openFile(path, reader).ok());
        const bool small = reader.majorVersion() == 3;
        EXPECT_EQ(reader.sectorSize(), small ? 512u : 4096u);
        EXPECT_EQ(0, std::memcmp(reader.headerClsid(), small ? kSignature512 : kSignature4096, 16));
        EXPECT_EQ(reader.root().type, EntryType::Root);
        EXPECT_EQ(reader.root().name, "Root Entry");
        EXPECT_GT(reader.entryCount(), 800u);
        const DirectoryEntry* header = reader.child(reader.root(), "Header-2");
        ASSERT_NE(header, nullptr);
        EXPECT_EQ(header->type, EntryType::Storage);
        EXPECT_NE(reader.child(*header, "properties"), nullptr);
        EXPECT_EQ(reader.child(*header, "Properties"), nullptr);

        const size_t before = ours.size();
        ASSERT_TRUE(cfbtest::listStreams(reader, path, ours).ok());
        EXPECT_GT(ours.size() - before, 300u);
    }
    if (!olefile) GTEST_SKIP() << "/usr/bin/python3 has no olefile module";
    std::sort(ours.begin(), ours.end());
    const std::vector<std::string> olefileLines = theirs.get();
    ASSERT_EQ(ours.size(), olefileLines.size());
    for (size_t i = 0; i < ours.size(); ++i) ASSERT_EQ(ours[i], olefileLines[i]);
}

}  // namespace

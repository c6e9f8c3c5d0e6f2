// Data streams are read from the file on request: loading never reads them, a
// damaged chain fails that stream alone, a file cut short while open answers
// errors, and saving copies them through unchanged.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "aafkit/File.h"
#include "aafkit/io/InputFile.h"
#include "support/EssenceFile.h"

using testsupport::essenceOf;
using testsupport::fileWithEssence;
using testsupport::readsAsPattern;

namespace {

constexpr uint64_t kEssenceSize = 300000;  // regular sectors, past the mini stream

std::vector<uint8_t> savedBytes(aafkit::File& file) {
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(file.saveToBytes(bytes).ok());
    return bytes;
}

TEST(StreamAccess, SavedAndCopiedEssenceReadsBackByteForByte) {
    const std::string first = testsupport::temporaryPath("stream-first.aaf");
    const std::string copy = testsupport::temporaryPath("stream-copy.aaf");
    ASSERT_TRUE(fileWithEssence(kEssenceSize)->save(first).ok());
    std::unique_ptr<aafkit::File> loaded;
    ASSERT_EQ(aafkit::File::openExistingRead(first, loaded), 0);
    ASSERT_TRUE(loaded->save(copy).ok());
    std::unique_ptr<aafkit::File> copied;
    ASSERT_EQ(aafkit::File::openExistingRead(copy, copied), 0);
    for (const aafkit::File* file : {loaded.get(), copied.get()}) {
        const aafkit::StreamContent* essence = essenceOf(*file);
        ASSERT_NE(essence, nullptr);
        EXPECT_EQ(essence->size(), kEssenceSize);
        EXPECT_TRUE(readsAsPattern(*essence, 0, kEssenceSize));
        EXPECT_TRUE(readsAsPattern(*essence, kEssenceSize - 5000, 5000));  // backwards: the chain is walked again
    }
    std::remove(first.c_str());
    std::remove(copy.c_str());
}

TEST(StreamAccess, AChainRunningPastTheEndFailsOnlyWhenItsStreamIsRead) {
    std::vector<uint8_t> bytes = savedBytes(*fileWithEssence(kEssenceSize));
    bytes.resize(bytes.size() - 100000);  // the essence is the last thing in the file
    std::unique_ptr<aafkit::File> file;
    const aafkit::Status loaded = aafkit::File::load(std::move(bytes), file);
    ASSERT_TRUE(loaded.ok()) << loaded.message();
    const aafkit::StreamContent* essence = essenceOf(*file);
    ASSERT_NE(essence, nullptr);
    EXPECT_TRUE(readsAsPattern(*essence, 0, 4096));
    std::vector<uint8_t> tail(4096);
    const aafkit::Status read = essence->read(kEssenceSize - tail.size(), tail.data(), tail.size());
    EXPECT_NE(read.message().find("chain leaves the file"), std::string::npos) << read.message();
    std::vector<uint8_t> resaved;
    EXPECT_FALSE(file->saveToBytes(resaved).ok());  // a copy cannot pretend the essence was there
}

TEST(StreamAccess, AFileCutShortWhileOpenAnswersErrors) {
    const std::string path = testsupport::temporaryPath("stream-truncated.aaf");
    ASSERT_TRUE(fileWithEssence(kEssenceSize)->save(path).ok());
    std::unique_ptr<aafkit::File> file;
    ASSERT_EQ(aafkit::File::openExistingRead(path, file), 0);
    ASSERT_EQ(::truncate(path.c_str(), 8192), 0);
    const aafkit::StreamContent* essence = essenceOf(*file);
    ASSERT_NE(essence, nullptr);
    std::vector<uint8_t> bytes(kEssenceSize);
    const aafkit::Status read = essence->read(0, bytes.data(), bytes.size());
    EXPECT_NE(read.message().find("truncated"), std::string::npos) << read.message();
    std::remove(path.c_str());
}

TEST(StreamAccess, OpeningSaysWhyAFileCannotBeRead) {
    std::unique_ptr<aafkit::io::InputFile> input;
    EXPECT_EQ(aafkit::io::InputFile::open("/no/such/file.aaf", input).message(),
              "cannot open /no/such/file.aaf: No such file or directory");
    EXPECT_EQ(aafkit::io::InputFile::open("/tmp", input).message(), "cannot open /tmp: not a regular file");
    const auto memory = aafkit::io::InputFile::fromBytes({1, 2, 3});
    uint8_t out[4];
    EXPECT_TRUE(memory->read(1, out, 2).ok());
    EXPECT_FALSE(memory->read(2, out, 2).ok());
    EXPECT_FALSE(memory->read(UINT64_MAX, out, 1).ok());  // no wrap-around
}

}  // namespace

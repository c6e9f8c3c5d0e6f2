// A file larger than 4 GiB with one stream larger than 4 GiB: 64-bit stream
// sizes and sector offsets past 32 bits. Slow (it writes 4.2 GiB), so it carries
// the "large" label and stays out of the default run.
#include <gtest/gtest.h>

#include <filesystem>

#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "support/EssenceFile.h"
#include "support/TreeCheck.h"

using testsupport::readsAsPattern;

TEST(FileAbove4GiB, DirectoryMetadataAndEssenceReadCorrectly) {
    const uint64_t size = (uint64_t(4) << 30) + (uint64_t(200) << 20) + 12345;
    const std::string path = testsupport::temporaryPath("above-4gib.aaf");
    ASSERT_TRUE(testsupport::fileWithEssence(size)->save(path).ok());
    EXPECT_GT(std::filesystem::file_size(path), size);
    std::unique_ptr<aafkit::File> file;
    ASSERT_EQ(aafkit::File::openExistingRead(path, file), 0);
    EXPECT_TRUE(testsupport::unresolved(*file).empty());
    const aafkit::StreamContent* essence = testsupport::essenceOf(*file);
    ASSERT_NE(essence, nullptr);
    EXPECT_EQ(essence->size(), size);
    EXPECT_TRUE(readsAsPattern(*essence, 0, 1 << 20));
    EXPECT_TRUE(readsAsPattern(*essence, (uint64_t(4) << 30) - 3000, 6000));  // across the 32-bit boundary
    EXPECT_TRUE(readsAsPattern(*essence, size - 70000, 70000));
    std::remove(path.c_str());
}

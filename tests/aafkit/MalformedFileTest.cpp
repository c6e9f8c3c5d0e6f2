// Damaged real files: every truncation and byte flip must load or fail with a
// message, never crash or read out of bounds (the suite also runs under ASan).
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <random>

#include "aafkit/File.h"
#include "aafkit/om/Values.h"
#include "support/SampleFiles.h"

namespace {

// Touches what a reader would: every property and every weak reference.
size_t walk(const aafkit::File& file, const aafkit::Object& object) {
    size_t visited = 1;
    for (const aafkit::Property& p : object.properties()) {
        for (const aafkit::WeakReference& r : p.weakReferences()) visited += file.resolve(r) ? 1 : 0;
        for (const aafkit::Object* child : p.objects()) visited += walk(file, *child);
    }
    return visited;
}

// Loads the bytes; a failure must say why.
void loadOrExplain(std::vector<uint8_t> bytes, const std::string& label) {
    std::unique_ptr<aafkit::File> file;
    aafkit::Status status = aafkit::File::load(std::move(bytes), file);
    if (status.ok()) {
        ASSERT_TRUE(file) << label;
        EXPECT_GT(walk(*file, *file->root()), 0u) << label;
    } else {
        EXPECT_FALSE(status.message().empty()) << label;
    }
}

TEST(MalformedFile, TruncatedSamplesFailCleanly) {
    SKIP_WITHOUT_SAMPLES();
    for (const std::string& path : testsupport::sampleFiles()) {
        const std::vector<uint8_t> whole = testsupport::readBytes(path);
        for (size_t part = 1; part < 8; ++part) {
            std::vector<uint8_t> cut(whole.begin(), whole.begin() + long(whole.size() * part / 8));
            std::unique_ptr<aafkit::File> file;
            EXPECT_FALSE(aafkit::File::load(std::move(cut), file).ok()) << path << " cut at " << part << "/8";
        }
    }
}

TEST(MalformedFile, FlippedBytesNeverCrash) {
    SKIP_WITHOUT_SAMPLES();
    std::mt19937 random(20261122);
    for (const std::string& path : testsupport::sampleFiles()) {
        const std::vector<uint8_t> whole = testsupport::readBytes(path);
        for (int round = 0; round < 12; ++round) {
            std::vector<uint8_t> damaged = whole;
            // A few bytes at once, anywhere past the header.
            for (int i = 0; i < 4; ++i) damaged[512 + random() % (damaged.size() - 512)] ^= uint8_t(1 + random() % 255);
            loadOrExplain(std::move(damaged), path + " round " + std::to_string(round));
        }
    }
}

TEST(MalformedFile, NotAnAafFileIsRefused) {
    const std::string path = testsupport::temporaryPath("not-aaf.aaf");
    std::ofstream(path, std::ios::binary) << std::string(4096, 'x');
    std::unique_ptr<aafkit::File> file;
    aafkit::Status why;
    EXPECT_EQ(aafkit::File::openExistingRead(path, file, &why), AAFRESULT(0x8012001D));
    EXPECT_NE(why.message().find("not an AAF file"), std::string::npos);
    EXPECT_EQ(aafkit::File::openExistingRead(path + ".missing", file), AAFRESULT(0x80120021));
    std::remove(path.c_str());
}

}  // namespace

// Every real AAF file opens and every stream reads, with the names, sizes and
// bytes that olefile finds.
#include <gtest/gtest.h>

#include <algorithm>
#include <future>

#include "CfbTestSupport.h"
#include "support/SampleFiles.h"

namespace {

TEST(SampleFiles, EveryStreamReadsAsOlefileReadsIt) {
    SKIP_WITHOUT_SAMPLES();
    const std::vector<std::string> files = testsupport::sampleFiles();
    const bool olefile = cfbtest::olefileAvailable();
    // olefile takes seconds: let it run beside our own reads.
    auto theirs = std::async(std::launch::async, [&] {
        return olefile ? cfbtest::olefileListing(files) : std::vector<std::string>();
    });
    std::vector<std::string> ours;
    for (const std::string& path : files) {
        aafkit::cfb::CompoundFileReader reader;
        ASSERT_TRUE(aafkit::cfb::CompoundFileReader::openFile(path, reader).ok()) << path;
        const aafkit::Status listed = cfbtest::listStreams(reader, path, ours);
        ASSERT_TRUE(listed.ok()) << path << ": " << listed.message();
    }
    if (!olefile) GTEST_SKIP() << "/usr/bin/python3 has no olefile module";
    std::sort(ours.begin(), ours.end());
    const std::vector<std::string> olefileLines = theirs.get();
    ASSERT_EQ(ours.size(), olefileLines.size());
    for (size_t i = 0; i < ours.size(); ++i) ASSERT_EQ(ours[i], olefileLines[i]);
}

}  // namespace

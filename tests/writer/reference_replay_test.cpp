#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "ObjectTree.h"
#include "ReferenceScript.h"
#include "WrittenFile.h"
#include "aafkit/File.h"
#include "support/SampleFiles.h"

namespace {

class ReferenceReplay : public ::testing::TestWithParam<const char*> {};

TEST_P(ReferenceReplay, AnswersAsTheReferenceBuild) {
    SKIP_WITHOUT_SHARED("writer-reference");
    const std::string name = GetParam();
    const std::string output = testsupport::temporaryPath("replay_" + name + ".aaf");
    std::remove(output.c_str());
    ASSERT_EQ(replayScript(loadScript(name), output), "");

    std::unique_ptr<aafkit::File> written, reference;
    aafkit::Status why;
    ASSERT_EQ(aafkit::File::openExistingRead(output, written, &why), 0) << why.message();
    ASSERT_EQ(aafkit::File::openExistingRead(referencePath(name), reference, &why), 0) << why.message();
    EXPECT_EQ(firstDifference(canonicalTree(*written), canonicalTree(*reference)), "");
    if (olefileAvailable()) {
        EXPECT_TRUE(opensWithOlefile(output));
    }
    std::remove(output.c_str());
}

INSTANTIATE_TEST_SUITE_P(Scripts, ReferenceReplay,
                         ::testing::Values("basic_cut", "effects", "mxf_subclips", "ntsc_drop_frame",
                                           "effect_after_filler"));

}  // namespace

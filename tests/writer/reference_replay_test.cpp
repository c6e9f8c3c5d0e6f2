#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "ReferenceScript.h"

namespace {

class ReferenceReplay : public ::testing::TestWithParam<const char*> {};

TEST_P(ReferenceReplay, AnswersAsTheReferenceBuild) {
    const std::string name = GetParam();
    const std::string output = ::testing::TempDir() + "replay_" + name + ".aaf";
    std::remove(output.c_str());
    EXPECT_EQ(replayScript(loadScript(name), output), "");
}

INSTANTIATE_TEST_SUITE_P(Scripts, ReferenceReplay,
                         ::testing::Values("basic_cut", "effects", "mxf_subclips", "ntsc_drop_frame",
                                           "effect_after_filler"));

}  // namespace

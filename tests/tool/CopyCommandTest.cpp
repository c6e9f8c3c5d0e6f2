// aafbridge copy: every sample copied by the tool loads again with the same
// object tree, and Debian's olefile reads every stream of every copy.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>

#include "ToolRunner.h"
#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "support/OleFileCheck.h"
#include "support/SampleFiles.h"
#include "support/TreeCheck.h"
#include "support/TreeCompare.h"

namespace {

TEST(CopyCommand, EverySampleCopiesToTheSameTree) {
    SKIP_WITHOUT_SAMPLES();
    std::vector<std::string> written;
    for (const std::string& path : testsupport::sampleFiles()) {
        const std::string out = testsupport::temporaryPath("copy-" + std::to_string(written.size()) + ".aaf");
        std::remove(out.c_str());
        const testsupport::ToolRun run = testsupport::runTool("copy " + testsupport::quoted(path) + " " + out);
        ASSERT_EQ(run.exitCode, 0) << path << ": " << run.output;
        written.push_back(out);
        std::unique_ptr<aafkit::File> original, copy;
        ASSERT_EQ(aafkit::File::openExistingRead(path, original), AAFRESULT_SUCCESS) << path;
        ASSERT_EQ(aafkit::File::openExistingRead(out, copy), AAFRESULT_SUCCESS) << path;
        EXPECT_EQ(testsupport::firstDifference(*original, *copy), "") << path;
        EXPECT_TRUE(testsupport::unresolved(*copy).empty()) << path;
    }
    const bool olefile = testsupport::olefileAvailable();
    if (olefile) {
        EXPECT_EQ(testsupport::olefileProblems(written), "");
    }
    for (const std::string& p : written) std::remove(p.c_str());
    if (!olefile) GTEST_SKIP() << "/usr/bin/python3 has no olefile module: the copies were not read by olefile";
}

TEST(CopyCommand, RefusesWhatItCannotRead) {
    const testsupport::ToolRun run = testsupport::runTool("copy /nonexistent/in.aaf /tmp/never-written.aaf");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.output.find("cannot open /nonexistent/in.aaf: No such file or directory"), std::string::npos) << run.output;
    EXPECT_EQ(testsupport::runTool("copy only-one-argument").exitCode, 2);
}

}  // namespace

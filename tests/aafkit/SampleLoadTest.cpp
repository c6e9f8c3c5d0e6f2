// Every real file loads completely: each object has a known class and every
// weak reference resolves.
#include <gtest/gtest.h>

#include <memory>

#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "support/SampleFiles.h"
#include "support/TreeCheck.h"

namespace {

TEST(SampleLoad, EverySampleLoadsCompletely) {
    SKIP_WITHOUT_SAMPLES();
    std::vector<std::string> failures;
    for (const std::string& path : testsupport::sampleFiles()) {
        std::unique_ptr<aafkit::File> file;
        aafkit::Status why;
        if (aafkit::File::openExistingRead(path, file, &why) != AAFRESULT_SUCCESS) {
            failures.push_back(path + ": " + why.message());
            continue;
        }
        for (const std::string& problem : testsupport::unresolved(*file)) failures.push_back(path + ": " + problem);
    }
    EXPECT_TRUE(failures.empty()) << failures.size() << " problems, first: " << failures.front();
}

}  // namespace

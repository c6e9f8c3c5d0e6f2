#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

#include "WriterTestSupport.h"
#include "WrittenFile.h"
#include "aafkit/ResultCodes.h"
#include "support/SampleFiles.h"

namespace {

// The reference comparison leaves the platform out, as it names where the reference was made.
TEST(FileOutput, EveryFileNamesWindowsAsItsPlatform) {
    ContextPtr context = newContext();
    WrittenFile written = writeAndLoad(context.get(), "identification");
    ASSERT_EQ(written.result, AAFRESULT_SUCCESS);
    aafkit::Object* identification = nullptr;
    ASSERT_EQ(aafkit::getLastIdentification(*written.file->header(), identification), 0);
    EXPECT_EQ(text(*identification, PID_Identification_Platform), L"Windows");
}

TEST(FileOutput, RefusalsLeaveTheDiskAlone) {
    const std::string path = testsupport::temporaryPath("writer_existing.aaf");
    std::ofstream(path) << "not an AAF file";
    ContextPtr context = newContext();
    testing::internal::CaptureStderr();
    EXPECT_EQ(WriteAafFile(std::wstring(path.begin(), path.end()).c_str(), context.get()), AAFRESULT_FILE_EXISTS);
    const std::string existsLine = testing::internal::GetCapturedStderr();
    std::string content;
    std::getline(std::ifstream(path), content);
    EXPECT_EQ(content, "not an AAF file");
    std::remove(path.c_str());
    EXPECT_EQ(WriteAafFile(nullptr, context.get()), AAFRESULT_NULL_PARAM);
    EXPECT_EQ(WriteAafFile(L"/tmp/x.aaf", nullptr), AAFRESULT_NULL_PARAM);
    testing::internal::CaptureStderr();
    EXPECT_EQ(WriteAafFile(L"/nonexistent-directory/x.aaf", context.get()), AAFRESULT_CONTAINERWRITE);
    const std::string writeLine = testing::internal::GetCapturedStderr();
    // One line each, naming the source by its path in the project, whatever the build directory.
    const std::string source = " in AAFWriter/file_output\n";
    EXPECT_EQ(existsLine.rfind("Error '80120028' returned at line ", 0), 0u) << existsLine;
    EXPECT_EQ(writeLine.rfind("Error '80120020' returned at line ", 0), 0u) << writeLine;
    for (const std::string& line : {existsLine, writeLine}) {
        ASSERT_GT(line.size(), source.size());
        EXPECT_EQ(line.substr(line.size() - source.size()), source) << line;
    }
}

}  // namespace

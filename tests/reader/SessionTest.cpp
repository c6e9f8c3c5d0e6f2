// The error line, refusing what cannot be opened, and the Pro Tools test.
#include <fstream>

#include "HostView.h"
#include "InMemoryFile.h"
#include "support/SampleFiles.h"

namespace {

TEST(ErrorLine, ExactTextOnlyOnFailure) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reportIfFailed(0, 10, "AafParser/clips"));
    EXPECT_FALSE(reportIfFailed(AAFRESULT(0x801200CFu), 42, "AafParser/composition"));
    EXPECT_FALSE(reportIfFailed(AAFRESULT(0x80000003u), 7, "AafParser/aaf_basic"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error '801200cf' returned at line 42 in AafParser/composition\n"
              "Error '80000003' returned at line 7 in AafParser/aaf_basic\n");
}

TEST(OpenAafFile, MissingOrNonAafFileIsFileNotFoundWithOneErrorLine) {
    const std::string junk = testsupport::temporaryPath("not-aaf.bin");
    std::ofstream(junk) << std::string(4096, 'x');
    for (const std::string& path : {std::string("/no/such/file.aaf"), junk}) {
        readertest::json view = readertest::hostView(path);
        EXPECT_EQ(view["OpenAafFile"], AAFRESULT(0x80120021u)) << path;
        EXPECT_EQ(view["errorLines"], 1) << path;
        EXPECT_NE(view["stderr"].get<std::string>().find("in AafParser/aaf_basic"), std::string::npos) << path;
    }
    std::remove(junk.c_str());
}

TEST(ProTools, OnlyTheLastIdentificationCountsAndMustBeginWithPro) {
    readertest::InMemorySession s;
    EXPECT_EQ(IsProToolsFile(nullptr), 0u);
    EXPECT_EQ(IsProToolsFile(s.context()), 0u);
    const std::pair<const wchar_t*, uint32_t> cases[] = {
        {L"Pro Tools", 1}, {L"Pro", 1}, {L"pro tools", 0}, {L"Pr", 0}, {L"Media Composer", 0}, {L"Prometheus", 1}};
    for (const auto& [name, expected] : cases) {
        aafkit::Object& identification = aafkit::createObject(s.file(), AUID_AAFIdentification);
        aafkit::setString(identification, PID_Identification_ProductName, name);
        ASSERT_EQ(aafkit::appendObject(*s.file().header(), PID_Header_IdentificationList, identification), 0);
        EXPECT_EQ(IsProToolsFile(s.context()), expected) << aafkit::wideToUtf8(name);
    }
}

}  // namespace

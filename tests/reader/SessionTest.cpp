// Opening and closing a session, the Pro Tools test, the error line and the mob id text.
#include <fstream>

#include "HostView.h"
#include "InMemoryFile.h"
#include "support/SampleFiles.h"

namespace {

using readertest::InMemorySession;
using readertest::lines;
using readertest::Object;

TEST(ErrorLine, ExactTextOnlyOnFailure) {
    testing::internal::CaptureStderr();
    EXPECT_TRUE(reportIfFailed(0, 10, "AafParser/clips"));
    EXPECT_FALSE(reportIfFailed(AAFRESULT(0x801200CFu), 42, "AafParser/composition"));
    EXPECT_FALSE(reportIfFailed(AAFRESULT(0x80000003u), 7, "AafParser/aaf_basic"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error '801200cf' returned at line 42 in AafParser/composition\n"
              "Error '80000003' returned at line 7 in AafParser/aaf_basic\n");
}

TEST(MobIdText, MaterialOnlyInLowerCaseHexInBraces) {
    aafMobID_t id{};
    std::fill(std::begin(id.SMPTELabel), std::end(id.SMPTELabel), 0xAA);  // not part of the text
    id.material = {0x0A0B0C0D, 0xBEEF, 0x0001, {0x06, 0x0e, 0x2b, 0x34, 0x7f, 0x7f, 0x2a, 0x80}};
    wchar_t text[64];
    EXPECT_EQ(mobId2String(text, id, 64), 34);
    EXPECT_STREQ(text, L"{0a0b0c0dbeef0001060e2b347f7f2a80}");
}

TEST(OpenAafFile, FailuresAnswerFileNotFoundAndPrintTheCause) {
    const std::string junk = testsupport::temporaryPath("not-aaf.bin");
    std::ofstream(junk) << std::string(4096, 'x');
    for (const std::string& path : {std::string("/no/such/file.aaf"), junk}) {
        AafParseContext* context = nullptr;
        testing::internal::CaptureStderr();
        EXPECT_EQ(OpenAafFile(readertest::widen(path).c_str(), &context), AAFRESULT(0x80120021u)) << path;
        std::vector<std::string> errors = lines(testing::internal::GetCapturedStderr());
        ASSERT_EQ(errors.size(), 1u) << path;
        EXPECT_NE(errors[0].find("in AafParser/aaf_basic"), std::string::npos) << errors[0];
        EXPECT_NE(context, nullptr) << "the handle was stored before the open";
    }
    std::remove(junk.c_str());
}

TEST(OpenAafFile, SampleOpensAndCloses) {
    SKIP_WITHOUT_SAMPLES();
    AafParseContext* context = nullptr;
    ASSERT_EQ(OpenAafFile(readertest::widen(testsupport::sample("pro-tools/PT_Fades.aaf")).c_str(), &context), 0);
    EXPECT_EQ(IsProToolsFile(context), 1u);
    EXPECT_EQ(GetNumClips(context), 0u) << "nothing is parsed on open";
    CloseFile(context);
}

class ProTools : public testing::Test {
protected:
    void identify(const std::wstring& product) {
        Object& identification = aafkit::createObject(s.file(), AUID_AAFIdentification);
        aafkit::setString(identification, PID_Identification_ProductName, product);
        ASSERT_EQ(aafkit::appendObject(*s.file().header(), PID_Header_IdentificationList, identification), 0);
    }
    InMemorySession s;
};

TEST_F(ProTools, OnlyTheLastIdentificationCountsAndMustBeginWithPro) {
    EXPECT_EQ(IsProToolsFile(nullptr), 0u);
    EXPECT_EQ(IsProToolsFile(s.context()), 0u);
    const std::pair<const wchar_t*, uint32_t> cases[] = {
        {L"Pro Tools", 1}, {L"Pro", 1}, {L"pro tools", 0}, {L"Pr", 0}, {L"Media Composer", 0}, {L"Prometheus", 1}};
    for (const auto& [name, expected] : cases) {
        identify(name);
        EXPECT_EQ(IsProToolsFile(s.context()), expected) << aafkit::wideToUtf8(name);
    }
}

}  // namespace

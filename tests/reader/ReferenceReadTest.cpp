// Every sample read through the exported functions, compared answer by answer with the
// reference reads in shared/reader-reference.
#include <cmath>
#include <fstream>

#include "HostView.h"
#include "support/SampleFiles.h"

namespace {

using readertest::json;

std::string referencePath(const std::string& sample) {
    std::string relative = sample.substr(testsupport::samplesDir().size());
    return std::string(AAFBRIDGE_SHARED_DIR) + "/reader-reference" +
           relative.substr(0, relative.size() - 4) + ".json";
}

// Doubles agree to a relative 1e-12, other answers exactly.
bool same(const json& expected, const json& actual) {
    if (!expected.is_number_float() || !actual.is_number()) return expected == actual;
    double e = expected.get<double>(), a = actual.get<double>();
    return std::fabs(e - a) <= 1e-12 * std::fabs(e);
}

// Walks the reference; null answers and keys the host cannot see are not compared.
void compare(const json& expected, const json& actual, const std::string& where, std::vector<std::string>& out) {
    if (expected.is_null()) return;
    if (expected.is_object()) {
        for (auto it = expected.begin(); it != expected.end(); ++it)
            if (actual.is_object() && actual.contains(it.key()))
                compare(it.value(), actual[it.key()], where + "." + it.key(), out);
        return;
    }
    if (expected.is_array()) {
        if (!actual.is_array() || actual.size() != expected.size()) {
            out.push_back(where + ": " + std::to_string(expected.size()) + " entries expected, got " + actual.dump());
            return;
        }
        for (size_t i = 0; i < expected.size(); ++i)
            compare(expected[i], actual[i], where + "[" + std::to_string(i) + "]", out);
        return;
    }
    if (!same(expected, actual)) out.push_back(where + ": expected " + expected.dump() + ", got " + actual.dump());
}

class ReferenceRead : public testing::TestWithParam<std::string> {};

TEST_P(ReferenceRead, EveryAnswerMatchesTheReference) {
    if (GetParam().empty()) GTEST_SKIP() << "no sample files at " << testsupport::samplesDir();
    std::ifstream in(referencePath(GetParam()));
    ASSERT_TRUE(in) << "no reference for " << GetParam();
    json expected = json::parse(in);
    json actual = readertest::hostView(GetParam());
    std::vector<std::string> mismatches;
    compare(expected, actual, "", mismatches);
    std::string report;
    for (size_t i = 0; i < mismatches.size() && i < 20; ++i) report += mismatches[i] + "\n";
    EXPECT_TRUE(mismatches.empty()) << mismatches.size() << " mismatches:\n"
                                    << report << "stderr:\n"
                                    << actual["stderr"].get<std::string>();
}

std::vector<std::string> samplesOrPlaceholder() {
    std::vector<std::string> files = testsupport::sampleFiles();
    return files.empty() ? std::vector<std::string>{""} : files;
}

std::string caseName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param.empty() ? "none" : info.param.substr(testsupport::samplesDir().size() + 1);
    for (char& ch : name)
        if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Samples, ReferenceRead, testing::ValuesIn(samplesOrPlaceholder()), caseName);

}  // namespace

#pragma once
// The real AAF files under ../shared/samples, for tests that read them. On a
// machine without the folder these tests skip.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace testsupport {

inline std::string samplesDir() { return AAFBRIDGE_SAMPLES_DIR; }

// Every .aaf file below the samples folder, sorted; empty when the folder is absent.
inline std::vector<std::string> sampleFiles() {
    std::vector<std::string> files;
    std::error_code error;
    if (!std::filesystem::is_directory(samplesDir(), error)) return files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(samplesDir(), error))
        if (entry.path().extension() == ".aaf") files.push_back(entry.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

// A path relative to the samples folder, e.g. "media-composer/one_clip.aaf".
inline std::string sample(const std::string& relative) { return samplesDir() + "/" + relative; }

// The whole file, or nothing when it cannot be read.
inline std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Carries the process id so that suites run at once on one machine do not share files.
inline std::string temporaryPath(const std::string& name) {
    const std::string unique = "aafbridge-test-" + std::to_string(::getpid()) + "-" + name;
    return (std::filesystem::temp_directory_path() / unique).string();
}

// The running test's own temporary path: ctest runs the tests in parallel.
inline std::string testFile(const std::string& suffix) {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "-" + test->name();
    for (char& c : name)
        if (c == '/') c = '_';  // parameterised tests; the suffix may name a folder
    return temporaryPath(name + suffix);
}

}  // namespace testsupport

// Skips the test when ../shared lacks `folder` (e.g. "writer-reference").
#define SKIP_WITHOUT_SHARED(folder)                                                                 \
    do {                                                                                            \
        std::error_code absent;                                                                     \
        if (!std::filesystem::is_directory(std::string(AAFBRIDGE_SHARED_DIR) + "/" + folder, absent)) \
            GTEST_SKIP() << "no " << folder << " in " << AAFBRIDGE_SHARED_DIR << " (../shared absent)"; \
    } while (0)

#define SKIP_WITHOUT_SAMPLES()                                                                      \
    do {                                                                                            \
        if (testsupport::sampleFiles().empty())                                                     \
            GTEST_SKIP() << "no sample files at " << testsupport::samplesDir() << " (../shared absent)"; \
    } while (0)

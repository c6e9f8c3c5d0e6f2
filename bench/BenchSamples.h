#pragma once
// The sample files the benchmarks read: every .aaf below the samples folder, sorted.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

inline std::vector<std::string> benchSamples() {
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& e : std::filesystem::recursive_directory_iterator(AAFBRIDGE_SAMPLES_DIR, error))
        if (e.path().extension() == ".aaf") files.push_back(e.path().string());
    std::sort(files.begin(), files.end());
    return files;
}

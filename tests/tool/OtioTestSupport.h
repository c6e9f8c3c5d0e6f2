#pragma once
// Files and views for the OpenTimelineIO command tests: each test its own files (ctest runs
// them in parallel), the tool run as a user runs it, its JSON read back.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "ToolRunner.h"
#include "support/SampleFiles.h"

namespace otiotest {

using Json = nlohmann::json;

using testsupport::testFile;

inline void saveText(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

// The tool's JSON on standard output; null when it printed none.
inline Json toolJson(const std::string& arguments) {
    const testsupport::ToolRun run = testsupport::runTool(arguments, false);
    return run.exitCode == 0 ? Json::parse(run.output, nullptr, false) : Json();
}

inline Json hostView(const std::string& aaf) { return toolJson("timeline " + testsupport::quoted(aaf) + " --json"); }

inline Json otioOf(const std::string& aaf) { return toolJson("otio --host-view " + testsupport::quoted(aaf)); }

}  // namespace otiotest

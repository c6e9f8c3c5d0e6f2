#pragma once
// Replays a reference call script (writer-reference/*.json) through the exported
// writer functions and checks every answer against the one recorded in the script.
#include <string>

#include <nlohmann/json.hpp>

// Runs every call of the script; the file goes to outputPath. Answers a description
// of the first answer that differs from the script's, or "" when all match.
std::string replayScript(const nlohmann::json& script, const std::string& outputPath);

nlohmann::json loadScript(const std::string& name);  // from AAFBRIDGE_SHARED_DIR/writer-reference
std::string referencePath(const std::string& name);  // the reference .aaf beside it

#pragma once
// The composition exactly as a host reads it through the exported reader functions, as the
// JSON that `aafbridge timeline --json` prints.
#include <nlohmann/json.hpp>
#include <string>

#include "Command.h"
#include "aafbridge/aaf_types.h"

// OpenAafFile's answer: 0 with the view filled, else the code it failed with.
AAFRESULT readHostView(const std::string& path, nlohmann::ordered_json& view);
// The same for a command: false after reporting why the file cannot be read.
bool readHostViewOrReport(const Invocation& invocation, const std::string& path, nlohmann::ordered_json& view);

#pragma once
// The composition exactly as a host reads it through the exported reader functions, as the
// JSON that `aafbridge timeline --json` prints.
#include <nlohmann/json.hpp>
#include <string>

// False, said on standard error, when the file cannot be opened as an AAF file.
bool readHostView(const std::string& path, nlohmann::ordered_json& view);

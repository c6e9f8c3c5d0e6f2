#pragma once
// What `aafbridge write` does with its input: the JSON description read, checked and
// turned into writer calls, the file written to OUTPUT. Errors go to standard error;
// the answer is the tool's exit code (0 written, 1 failed).
#include <istream>
#include <nlohmann/json.hpp>
#include <string>

#include "otio/otio.h"

// `command` names the running command in error lines ("aafbridge <command>: ...").
int writeDescription(const std::string& command, const nlohmann::json& description, const std::string& output);
// `inputName` names the input in messages. An OpenTimelineIO input is converted with
// `options`; each change it needed is a line on standard error, then a summary.
int writeJsonDescription(const std::string& command, std::istream& in, const std::string& inputName,
                         const std::string& output, const OtioImportOptions& options = {});

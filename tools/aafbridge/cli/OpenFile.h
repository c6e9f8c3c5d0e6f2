#pragma once
// Files a command reads or writes, checked up front so that a failure names the
// file and the operating system's reason instead of a result code.
#include <memory>
#include <string>

#include "cli/Command.h"
#include "aafkit/File.h"

bool fileExists(const std::string& path);
// The loaded file, or null after reporting why it cannot be had.
std::unique_ptr<aafkit::File> openOrReport(const Invocation& invocation, const std::string& path);
// Whether `path` can be opened for reading; reports why not.
bool readableOrReport(const Invocation& invocation, const std::string& path);
// Whether a file can be created at `path` (an existing file is left as it is); reports why not.
bool creatableOrReport(const Invocation& invocation, const std::string& path);

#pragma once
// Opens an AAF file for a command, or says on standard error why it cannot.
#include <memory>

#include "aafkit/File.h"

std::unique_ptr<aafkit::File> openOrReport(const char* path);

#pragma once
// A result code as users see it: "0x8012016C (AAFRESULT_INVALID_PARAM)".
#include <string>

#include "aafbridge/aaf_types.h"

std::string codeText(AAFRESULT code);

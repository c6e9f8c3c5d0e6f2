#include "description/ResultText.h"

#include <cstdio>

#include "aafkit/meta/BaselineModel.h"

std::string codeText(AAFRESULT code) {
    char hex[16];
    std::snprintf(hex, sizeof hex, "0x%08X", unsigned(code));
    for (const auto& row : aafkit::meta::resultCodes())
        if (row.code == uint32_t(code)) return std::string(hex) + " (" + row.name.c_str() + ")";
    return hex;
}

// libaafbridge exports exactly the C interface that its public headers declare.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <cctype>
#include <set>
#include <string>

namespace {

std::set<std::string> exportedSymbols() {
    std::set<std::string> names;
    const std::string command = std::string("nm -D --defined-only '") + AAFBRIDGE_LIBRARY + "'";
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char line[4096];
        while (fgets(line, sizeof line, pipe)) {
            std::string text(line);
            text.erase(text.find_last_not_of("\r\n") + 1);
            names.insert(text.substr(text.find_last_of(' ') + 1));
        }
        pclose(pipe);
    }
    return names;
}

// The names the headers mark for export: functions and the two identifiers, each the
// word just before the first '(' or ';' after the export mark.
std::set<std::string> declaredNames() {
    std::set<std::string> names;
    for (const char* header : {"/aaf_reader.h", "/aaf_writer.h"}) {
        std::ifstream in(std::string(AAFBRIDGE_HEADERS) + header);
        const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        for (size_t at = text.find("AAFBRIDGE_API "); at != std::string::npos; at = text.find("AAFBRIDGE_API ", at + 1)) {
            size_t end = text.find_first_of("(;", at);
            while (end > at && text[end - 1] == ' ') --end;
            size_t begin = end;
            while (begin > at && (std::isalnum(static_cast<unsigned char>(text[begin - 1])) || text[begin - 1] == '_'))
                --begin;
            names.insert(text.substr(begin, end - begin));
        }
    }
    return names;
}

TEST(Exports, OnlyTheCInterfaceLeavesTheLibrary) {
    const std::set<std::string> exported = exportedSymbols();
    const std::set<std::string> declared = declaredNames();
    ASSERT_FALSE(declared.empty());
    EXPECT_EQ(exported, declared);
    EXPECT_EQ(declared.size(), 56u);  // 54 functions and the two parameter identifiers
    EXPECT_TRUE(declared.count("avidVarVolumeParam") && declared.count("avidVarPanParam"));
}

}  // namespace

#pragma once
// Runs the aafbridge tool as a user would and captures what it prints.
#include <cstdio>
#include <string>

namespace testsupport {

struct ToolRun {
    int exitCode = -1;
    std::string output;  // standard output, and standard error unless it was left out
};

inline ToolRun runTool(const std::string& arguments, bool withErrors = true) {
    ToolRun run;
    const std::string command = std::string(AAFBRIDGE_TOOL) + " " + arguments + (withErrors ? " 2>&1" : " 2>/dev/null");
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) run.output.append(buffer, n);
        const int status = pclose(pipe);
        run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    return run;
}

inline std::string quoted(const std::string& path) { return "'" + path + "'"; }

}  // namespace testsupport

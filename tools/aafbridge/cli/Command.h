#pragma once
// What a command is to the tool: its name, operands and options for parsing and
// help, and the function that runs it with the parsed invocation.
#include <map>
#include <string>
#include <vector>

enum ExitCode { kExitSuccess = 0, kExitFailure = 1, kExitUsage = 2 };

struct Option {
    const char* name;       // "--json"
    const char* valueName;  // null for a flag, else shown in help: "--rate RATE"
    const char* help;
};

struct Invocation;

struct Command {
    const char* name;
    // Operand names as help shows them; "[NAME]" is optional, "NAME..." takes any number.
    std::vector<const char*> operands;
    std::vector<Option> options;
    const char* summary;
    int (*run)(const Invocation& invocation);
};

// One run of a command, options taken out wherever they stood among the operands.
struct Invocation {
    const Command* command = nullptr;
    std::vector<std::string> operands;
    std::map<std::string, std::string> options;  // flags map to ""

    bool has(const char* option) const { return options.count(option) != 0; }
    const std::string& operand(size_t i) const { return operands.at(i); }
};

// The one form of every error line: "aafbridge <command>: <what>" on standard error.
void report(const Command& command, const std::string& what);
// Reports and answers kExitFailure.
int fail(const Invocation& invocation, const std::string& what);
// The operating system's reason for the last failed call, e.g. "No such file or directory".
std::string systemReason();

#include "cli/CommandLine.h"

#include <cstring>

#include "commands/Commands.h"

namespace {

bool isOptional(const char* operand) { return operand[0] == '['; }

bool isRepeated(const char* operand) {
    const size_t n = std::strlen(operand);
    return n >= 3 && std::strcmp(operand + n - 3, "...") == 0;
}

const Option* findOption(const Command& command, const std::string& name) {
    for (const Option& option : command.options)
        if (name == option.name) return &option;
    return nullptr;
}

// One option at argv[i]; advances i past its value when the value is the next argument.
std::string takeOption(const Command& command, int argc, char** argv, int& i, Invocation& out) {
    const std::string argument = argv[i];
    const size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const Option* option = findOption(command, name);
    if (!option) return "unknown option " + name;
    if (!option->valueName) {
        if (equals != std::string::npos) return "option " + name + " takes no value";
        out.options[name] = "";
        return "";
    }
    if (equals != std::string::npos) {
        out.options[name] = argument.substr(equals + 1);
        return "";
    }
    if (i + 1 >= argc) return "option " + name + " needs a value " + option->valueName;
    out.options[name] = argv[++i];
    return "";
}

std::string checkOperandCount(const Command& command, const Invocation& invocation) {
    size_t required = 0;
    bool unlimited = false;
    for (const char* operand : command.operands) {
        if (!isOptional(operand)) ++required;
        unlimited = unlimited || isRepeated(operand);
    }
    const size_t given = invocation.operands.size();
    if (given < required) return std::string("missing operand ") + command.operands[given];
    if (!unlimited && given > command.operands.size())
        return "unexpected operand \"" + invocation.operands[command.operands.size()] + "\"";
    return "";
}

std::string synopsis(const Command& command) {
    std::string text = command.name;
    for (const char* operand : command.operands) text += std::string(" ") + operand;
    for (const Option& option : command.options) {
        text += std::string(" [") + option.name;
        if (option.valueName) text += std::string(" ") + option.valueName;
        text += "]";
    }
    return text;
}

}  // namespace

std::string parseArguments(const Command& command, int argc, char** argv, Invocation& out) {
    out.command = &command;
    bool optionsEnded = false;
    for (int i = 0; i < argc; ++i) {
        const char* argument = argv[i];
        if (!optionsEnded && std::strcmp(argument, "--") == 0) {
            optionsEnded = true;
        } else if (!optionsEnded && argument[0] == '-' && argument[1] != '\0') {
            if (std::string problem = takeOption(command, argc, argv, i, out); !problem.empty()) return problem;
        } else {
            out.operands.push_back(argument);
        }
    }
    return checkOperandCount(command, out);
}

bool isHelpOption(const char* argument) {
    return std::strcmp(argument, "-h") == 0 || std::strcmp(argument, "--help") == 0;
}

void printCommandUsage(std::FILE* to, const Command& command) {
    std::fprintf(to, "usage: aafbridge %s\n", synopsis(command).c_str());
}

void printCommandHelp(std::FILE* to, const Command& command) {
    printCommandUsage(to, command);
    std::fprintf(to, "%s\n\noptions:\n", command.summary);
    for (const Option& option : command.options) {
        std::string flag = option.name;
        if (option.valueName) flag += std::string(" ") + option.valueName;
        std::fprintf(to, "  %-22s %s\n", flag.c_str(), option.help);
    }
    std::fprintf(to, "  %-22s %s\n", "-h, --help", "show this help and exit");
}

void printToolHelp(std::FILE* to) {
    std::fprintf(to,
                 "usage: aafbridge <command> [options] operands\n"
                 "       aafbridge <command> --help\n"
                 "       aafbridge --help | --version\n"
                 "Looks inside AAF files and produces new ones.\n\ncommands:\n");
    for (const Command& command : commands()) std::fprintf(to, "  %-40s %s\n", synopsis(command).c_str(), command.summary);
    std::fprintf(to,
                 "\nOptions may come before or after the operands; \"--\" ends them.\n"
                 "\nexit status:\n"
                 "  0  success\n"
                 "  1  the command failed: unreadable or invalid input, a failed write\n"
                 "  2  usage error: unknown command or option, wrong operands\n");
}

// aafbridge: look inside AAF files and produce new ones.
#include <cstdio>
#include <cstring>

#include "cli/CommandLine.h"
#include "commands/Commands.h"

namespace {

const Command* findCommand(const char* name) {
    for (const Command& command : commands())
        if (std::strcmp(name, command.name) == 0) return &command;
    return nullptr;
}

// Help wins over everything else given, as long as it comes before "--".
bool asksForHelp(int argc, char** argv) {
    for (int i = 0; i < argc && std::strcmp(argv[i], "--") != 0; ++i)
        if (isHelpOption(argv[i])) return true;
    return false;
}

int runCommand(const Command& command, int argc, char** argv) {
    if (asksForHelp(argc, argv)) {
        printCommandHelp(stdout, command);
        return kExitSuccess;
    }
    Invocation invocation;
    if (std::string problem = parseArguments(command, argc, argv, invocation); !problem.empty()) {
        report(command, problem);
        printCommandUsage(stderr, command);
        return kExitUsage;
    }
    return command.run(invocation);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        printToolHelp(stderr);
        return kExitUsage;
    }
    if (isHelpOption(argv[1])) {
        printToolHelp(stdout);
        return kExitSuccess;
    }
    if (std::strcmp(argv[1], "--version") == 0) {
        std::printf("aafbridge %s\n", AAFBRIDGE_VERSION);
        return kExitSuccess;
    }
    if (const Command* command = findCommand(argv[1])) return runCommand(*command, argc - 2, argv + 2);
    std::fprintf(stderr, "aafbridge: unknown command \"%s\"; \"aafbridge --help\" lists them\n", argv[1]);
    return kExitUsage;
}

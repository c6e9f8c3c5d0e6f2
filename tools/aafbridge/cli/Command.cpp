#include "cli/Command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

void report(const Command& command, const std::string& what) {
    std::fprintf(stderr, "aafbridge %s: %s\n", command.name, what.c_str());
}

int fail(const Invocation& invocation, const std::string& what) {
    report(*invocation.command, what);
    return kExitFailure;
}

std::string systemReason() { return std::strerror(errno); }

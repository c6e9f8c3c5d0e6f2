#pragma once
// Reading the command line against a command's table entry, and the help texts.
#include <cstdio>
#include <string>

#include "cli/Command.h"

// Fills `out` from the arguments after the command's name. Options may stand before,
// between or after the operands; "--" ends them. Answers "" or what was wrong.
std::string parseArguments(const Command& command, int argc, char** argv, Invocation& out);

bool isHelpOption(const char* argument);
void printCommandHelp(std::FILE* to, const Command& command);
void printToolHelp(std::FILE* to);
void printCommandUsage(std::FILE* to, const Command& command);

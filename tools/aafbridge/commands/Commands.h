#pragma once
// The tool's commands. A new command is its own file with its run function, plus
// one entry in the table of Commands.cpp.
#include <vector>

#include "cli/Command.h"

int runObjects(const Invocation& invocation);
int runCopy(const Invocation& invocation);
int runTimeline(const Invocation& invocation);
int runWrite(const Invocation& invocation);
int runDemo(const Invocation& invocation);
int runInfo(const Invocation& invocation);
int runOtio(const Invocation& invocation);
int runMedia(const Invocation& invocation);
int runExtract(const Invocation& invocation);
int runEmbed(const Invocation& invocation);
int runDiff(const Invocation& invocation);

const std::vector<Command>& commands();

#pragma once
// The tool's commands; each takes the arguments after its name and answers an exit code.

int runObjects(int argc, char** argv);
int runCopy(int argc, char** argv);
int runTimeline(int argc, char** argv);
int runWrite(int argc, char** argv);
int runDemo(int argc, char** argv);
int runOtio(int argc, char** argv);

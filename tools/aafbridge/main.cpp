// aafbridge: look inside AAF files and produce new ones.
#include <cstdio>
#include <cstring>

#include "Commands.h"

namespace {

struct Command {
    const char* name;
    const char* usage;
    int (*run)(int argc, char** argv);
};

const Command kCommands[] = {
    {"objects", "objects FILE [--json]      the whole object tree from the header down", runObjects},
    {"copy", "copy IN OUT                 load IN and save every object into OUT", runCopy},
    {"timeline", "timeline FILE [--json]     the composition as a host reads it", runTimeline},
    {"write", "write INPUT.json OUT.aaf    build a file from a JSON description", runWrite},
    {"otio", "otio FILE.aaf [-o OUT.otio]  the composition as an OpenTimelineIO timeline", runOtio},
    {"demo", "demo OUT.aaf                write a built-in demo composition", runDemo},
};

int usage() {
    std::fprintf(stderr, "usage: aafbridge <command> ...\n");
    for (const Command& c : kCommands) std::fprintf(stderr, "  aafbridge %s\n", c.usage);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage();
    for (const Command& c : kCommands)
        if (std::strcmp(argv[1], c.name) == 0) return c.run(argc - 2, argv + 2);
    std::fprintf(stderr, "aafbridge: unknown command \"%s\"\n", argv[1]);
    return usage();
}

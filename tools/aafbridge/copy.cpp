// aafbridge copy IN OUT: a load and save that changes nothing, for checking the
// round trip and for re-saving files that other tools refuse.
#include <cstdio>
#include <memory>

#include "Commands.h"
#include "OpenFile.h"
#include "aafkit/File.h"

int runCopy(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: aafbridge copy IN OUT\n");
        return 2;
    }
    std::unique_ptr<aafkit::File> file = openOrReport(argv[0]);
    if (!file) return 1;
    if (aafkit::Status s = file->save(argv[1]); !s) {
        std::fprintf(stderr, "aafbridge: cannot write %s: %s\n", argv[1], s.message().c_str());
        return 1;
    }
    return 0;
}

// aafbridge copy IN OUT: a load and save that changes nothing, for checking the
// round trip and for re-saving files that other tools refuse.
#include <memory>

#include "commands/Commands.h"
#include "cli/OpenFile.h"
#include "aafkit/File.h"

int runCopy(const Invocation& invocation) {
    const std::string& output = invocation.operand(1);
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, invocation.operand(0));
    if (!file || !creatableOrReport(invocation, output)) return kExitFailure;
    if (aafkit::Status s = file->save(output); !s) return fail(invocation, "cannot write " + output + ": " + s.message());
    return kExitSuccess;
}

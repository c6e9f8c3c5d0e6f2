// Any bytes as the JSON description of `aafbridge write`, through the code the tool
// runs on its input: parsed, checked, turned into writer calls and written.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>

#include "description/WriteDescription.h"

namespace {

std::string newPath() {
    char name[] = "/tmp/fuzz-write-json-XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0) return std::string();
    close(fd);
    return name;  // replaced by the written file, as OUTPUT is
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string output = newPath();
    if (output.empty()) return 0;
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    writeJsonDescription("write", in, "input", output);
    std::remove(output.c_str());
    std::remove((output + ".writing").c_str());
    return 0;
}

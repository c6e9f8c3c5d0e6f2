#pragma once
// Writes every object reachable from the root into a compound file, with the
// property streams, index streams and the weak-reference path table.
#include <cstdint>
#include <string>
#include <vector>

#include "../Status.h"

namespace aafkit {

class File;

class Saver {
public:
    static Status save(File& file, const std::string& path);
    static Status saveToBytes(File& file, std::vector<uint8_t>& out);
};

}  // namespace aafkit

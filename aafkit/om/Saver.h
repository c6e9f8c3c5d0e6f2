#pragma once
// Writes every object reachable from the root into a compound file, with the
// property streams, index streams and the weak-reference path table.
#include <cstdint>
#include <string>
#include <vector>

#include "../Status.h"

namespace aafkit {

class ObjectStore;

class Saver {
public:
    static Status save(const ObjectStore& store, const std::string& path);
    static Status saveToBytes(const ObjectStore& store, std::vector<uint8_t>& out);
};

}  // namespace aafkit

#pragma once
// What the composition's readers share while they walk one file: the file, its embedded
// essence, and the compositions being read on the way down (nests are bounded in depth and
// a composition that includes itself is refused, never followed forever).
#include <memory>
#include <unordered_map>
#include <vector>

#include "SourceChain.h"

#include "aafkit/Essence.h"
#include "aafkit/File.h"

namespace composition {

// Deeper than any editor nests; deep enough that a hostile file cannot exhaust the stack.
constexpr int kMaxDepth = 64;
// Master, file, tape and a few sub-clip or import steps in between.
constexpr size_t kMaxChainLength = 16;
// A nest is read again wherever it is used, so nests that use each other twice over would
// double with every level: past this many segments read inside nests, no further nest opens.
constexpr size_t kMaxNestedSegments = 1000000;

struct ReadContext {
    explicit ReadContext(const aafkit::File& f) : file(f), essence(f) {}

    const aafkit::File& file;
    aafkit::EssenceIndex essence;
    std::vector<const aafkit::Object*> compositionsOpen;
    std::unordered_map<const aafkit::Object*, std::shared_ptr<const SourceMob>> sourceMobs;
    int depth = 0;
    size_t nestedSegments = 0;
};

}  // namespace composition

#pragma once
// Source chains on demand, for whoever knows a clip by its source reference rather than by its
// place in the composition (the reader's events, say).
#include <memory>

#include "SourceChain.h"

namespace aafkit {
class File;
}

namespace composition {

struct ReadContext;

class SourceResolver {
public:
    explicit SourceResolver(const aafkit::File& file);
    ~SourceResolver();
    SourceResolver(const SourceResolver&) = delete;
    SourceResolver& operator=(const SourceResolver&) = delete;

    // The chain from the mob and slot a source clip names, `start` edit units in at `rate`.
    SourceChain resolve(const aafMobID_t& mobId, uint32_t slotId, int64_t start, const aafRational_t& rate);

private:
    std::unique_ptr<ReadContext> context_;
};

}  // namespace composition

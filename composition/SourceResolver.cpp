#include "SourceResolver.h"

#include "ReadContext.h"
#include "SourceChainReader.h"

namespace composition {

SourceResolver::SourceResolver(const aafkit::File& file) : context_(std::make_unique<ReadContext>(file)) {}

SourceResolver::~SourceResolver() = default;

SourceChain SourceResolver::resolve(const aafMobID_t& mobId, uint32_t slotId, int64_t start,
                                    const aafRational_t& rate) {
    return resolveChain(mobId, slotId, start, rate, *context_);
}

}  // namespace composition

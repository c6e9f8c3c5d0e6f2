#include "diff/SourceTable.h"

#include <cstring>

#include "composition/ClipSourceTime.h"

using namespace composition;

namespace cutdiff {
namespace {

const SourceLink* identifyingLink(const SourceChain& chain) {
    const SourceLink* origin = chain.origin();
    return origin ? origin : chain.find(MobKind::Master);
}

CutSource sourceOf(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    const SourceLink* link = identifyingLink(chain);
    const SourceLink* origin = chain.origin();
    CutSource source;
    source.key = link ? aafkit::mobIdToText(link->mob->mobId) + "/" + std::to_string(link->slotId)
                      : aafkit::mobIdToText(clip.source.mobId) + "/" + std::to_string(clip.source.slotId);
    source.media = mediaUrl(chain);
    if (source.media.empty()) source.media = origin ? origin->mob->name : clipName(clip);
    source.media += "/" + std::to_string(origin ? origin->slotId : clip.source.slotId);
    source.name = clipName(clip);
    return source;
}

}  // namespace

bool SourceTable::ChainKeyLess::operator()(const ChainKey& a, const ChainKey& b) const {
    if (std::get<0>(a) != std::get<0>(b)) return std::get<0>(a) < std::get<0>(b);
    if (std::get<1>(a) != std::get<1>(b)) return std::get<1>(a) < std::get<1>(b);
    if (std::get<3>(a) != std::get<3>(b)) return std::get<3>(a) < std::get<3>(b);
    return std::memcmp(&std::get<2>(a), &std::get<2>(b), sizeof(aafMobID_t)) < 0;
}

uint32_t SourceTable::of(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    const SourceLink* link = identifyingLink(chain);
    const SourceLink* master = chain.find(MobKind::Master);
    const SourceLink* origin = chain.origin();
    // Without a chain, the clip's own reference names it.
    const aafMobID_t reference = link ? aafMobID_t{} : clip.source.mobId;
    const ChainKey key{origin ? origin->mob.get() : nullptr, master ? master->mob.get() : nullptr, reference,
                       link ? link->slotId : clip.source.slotId};
    const auto [found, added] = byChain_.emplace(key, uint32_t(sources_.size()));
    if (added) sources_.push_back(sourceOf(clip));
    return found->second;
}

}  // namespace cutdiff

#include "ClipSourceTime.h"

#include "EditTime.h"

namespace composition {

std::optional<int64_t> sourceStart(const SourceChain& chain, const aafRational_t& rate) {
    if (const SourceLink* timecoded = chain.timecoded())
        return convertEditUnits(timecoded->start, timecoded->editRate, rate) +
               convertEditUnits(timecoded->mob->timecode->start, timecoded->mob->timecode->editRate, rate);
    if (const SourceLink* deepest = chain.deepestPlaced())
        return convertEditUnits(deepest->start, deepest->editRate, rate);
    return std::nullopt;
}

int64_t sourceStart(const Segment& clip, const aafRational_t& rate) {
    return sourceStart(clip.source.chain, rate).value_or(clip.source.startTime);
}

std::string clipName(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    if (const SourceLink* master = chain.find(MobKind::Master)) return master->mob->name;
    return chain.links.empty() ? std::string() : chain.links.front().mob->name;
}

std::string fileUrl(const std::string& location) {
    if (location.empty() || location.find("://") != std::string::npos) return location;
    std::string path = location;
    for (char& c : path)
        if (c == '\\') c = '/';
    return path.front() == '/' ? "file://" + path : "file:///" + path;
}

std::string mediaUrl(const SourceChain& chain) {
    for (const SourceLink& link : chain.links)
        if (!link.mob->importPath.empty()) return fileUrl(link.mob->importPath);
    if (const SourceLink* file = chain.find(MobKind::File))
        if (!file->mob->locators.empty()) return fileUrl(file->mob->locators.front());
    for (const SourceLink& link : chain.links)
        if (!link.mob->locators.empty()) return fileUrl(link.mob->locators.front());
    return {};
}

}  // namespace composition

#include "diff/SourceIdentity.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace cutdiff {
namespace {

std::string identified(const CutSource& source) { return source.key + "\n" + source.media; }

std::unordered_set<std::string> identifiedSources(const Cut& cut) {
    std::unordered_set<std::string> sources;
    for (const CutSource& source : cut.sources) sources.insert(identified(source));
    return sources;
}

std::vector<uint32_t> identities(const Cut& cut, const std::unordered_set<std::string>& other,
                                 std::unordered_map<std::string, uint32_t>& numbers) {
    std::vector<uint32_t> numbered;
    for (const CutSource& source : cut.sources) {
        const std::string name = other.count(identified(source)) ? "id:" + source.key : "media:" + source.media;
        numbered.push_back(numbers.emplace(name, uint32_t(numbers.size())).first->second);
    }
    return numbered;
}

}  // namespace

SourceIdentities identifySources(const Cut& before, const Cut& after) {
    std::unordered_map<std::string, uint32_t> numbers;
    SourceIdentities found;
    found.before = identities(before, identifiedSources(after), numbers);
    found.after = identities(after, identifiedSources(before), numbers);
    return found;
}

}  // namespace cutdiff

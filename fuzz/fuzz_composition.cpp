// Any bytes: load as an AAF file and read its top-level composition as the file holds it,
// every segment, source chain and marker, and where each clip starts in its source; then the
// cut that `diff` makes of it, compared with itself.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "aafkit/File.h"
#include "composition/ClipSourceTime.h"
#include "composition/Composition.h"
#include "diff/CutDiff.h"

namespace {

size_t visit(const composition::Segment& segment) {
    size_t seen = 1;
    if (segment.kind == composition::SegmentKind::SourceClip)
        seen += size_t(composition::sourceStart(segment, {25, 1}) & 1) + composition::clipName(segment).size();
    for (const composition::Segment& child : segment.children) seen += visit(child);
    return seen;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::unique_ptr<aafkit::File> file;
    if (!aafkit::File::load(std::vector<uint8_t>(data, data + size), file).ok()) return 0;
    composition::Composition read;
    std::string why;
    if (!composition::readComposition(*file, read, why)) return 0;
    size_t seen = read.markers.size();
    for (const composition::Track& track : read.tracks) seen += visit(track.segment);
    const cutdiff::Cut cut = cutdiff::cutFromComposition(read);
    cutdiff::CutDiff diff;
    if (cutdiff::diffCuts(cut, cut, {}, diff, why)) seen += diff.changes.size() + diff.conform.size();
    volatile size_t kept = seen;  // what was read is used, so none of the reading is optimised away
    (void)kept;
    return 0;
}

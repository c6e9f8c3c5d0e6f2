#pragma once
// Compares two loaded object trees: classes, property values and forms, strong
// references recursively and weak references by path and key. Storage names
// and local keys are not part of the tree.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "aafkit/File.h"

namespace testsupport {

inline std::string hexPid(uint16_t pid) {
    char text[8];
    std::snprintf(text, sizeof text, "%04x", unsigned(pid));
    return text;
}

// Data streams compare by content, a chunk at a time.
inline bool sameStream(const aafkit::Property& a, const aafkit::Property& b) {
    if (!a.stream() || !b.stream()) return !a.stream() == !b.stream();
    if (a.stream()->size() != b.stream()->size()) return false;
    std::vector<uint8_t> chunkA(aafkit::kCopyChunk), chunkB(aafkit::kCopyChunk);
    for (uint64_t at = 0; at < a.stream()->size(); at += aafkit::kCopyChunk) {
        const size_t n = size_t(std::min<uint64_t>(aafkit::kCopyChunk, a.stream()->size() - at));
        if (!a.stream()->read(at, chunkA.data(), n) || !b.stream()->read(at, chunkB.data(), n)) return false;
        if (std::memcmp(chunkA.data(), chunkB.data(), n) != 0) return false;
    }
    return true;
}

// Empty when equal, else where the first difference is.
inline std::string firstDifference(const aafkit::File& fa, const aafkit::Object& a, const aafkit::File& fb,
                                   const aafkit::Object& b, const std::string& where) {
    if (!(a.classId() == b.classId())) return where + ": class differs";
    if (a.properties().size() != b.properties().size()) return where + ": property count differs";
    for (size_t i = 0; i < a.properties().size(); ++i) {
        const aafkit::Property& pa = a.properties()[i];
        const aafkit::Property* pb = b.find(pa.pid);
        const std::string at = where + "/" + hexPid(pa.pid);
        if (!pb) return at + ": missing";
        if (pa.form != pb->form) return at + ": form differs";
        if (!pa.isStrong() && !pa.isWeak() && pa.data != pb->data) return at + ": value differs";
        if (!sameStream(pa, *pb)) return at + ": stream differs";
        const std::vector<aafkit::WeakReference> wa = pa.weakReferences(), wb = pb->weakReferences();
        if (wa.size() != wb.size()) return at + ": reference count differs";
        for (size_t w = 0; w < wa.size(); ++w)
            if (fa.paths()[wa[w].pathId] != fb.paths()[wb[w].pathId] || wa[w].key != wb[w].key ||
                wa[w].keyPid != wb[w].keyPid)
                return at + ": weak reference differs";
        if (pa.objects().size() != pb->objects().size()) return at + ": element count differs";
        for (size_t o = 0; o < pa.objects().size(); ++o) {
            std::string d = firstDifference(fa, *pa.objects()[o], fb, *pb->objects()[o], at + "[" + std::to_string(o) + "]");
            if (!d.empty()) return d;
        }
    }
    return "";
}

inline std::string firstDifference(const aafkit::File& a, const aafkit::File& b) {
    return firstDifference(a, *a.root(), b, *b.root(), "root");
}

}  // namespace testsupport

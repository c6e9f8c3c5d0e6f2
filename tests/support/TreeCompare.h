#pragma once
// Compares two loaded object trees: classes, property values and forms, strong
// references recursively and weak references by path and key. Storage names
// and local keys are not part of the tree.
#include <string>

#include "aafkit/File.h"

namespace testsupport {

inline std::string hexPid(uint16_t pid) {
    char text[8];
    std::snprintf(text, sizeof text, "%04x", unsigned(pid));
    return text;
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
        if (pa.stream != pb->stream) return at + ": stream differs";
        if (pa.weak.size() != pb->weak.size()) return at + ": reference count differs";
        for (size_t w = 0; w < pa.weak.size(); ++w)
            if (fa.paths()[pa.weak[w].pathId] != fb.paths()[pb->weak[w].pathId] ||
                pa.weak[w].key != pb->weak[w].key || pa.weak[w].keyPid != pb->weak[w].keyPid)
                return at + ": weak reference differs";
        if (pa.objects.size() != pb->objects.size()) return at + ": element count differs";
        for (size_t o = 0; o < pa.objects.size(); ++o) {
            std::string d = firstDifference(fa, *pa.objects[o], fb, *pb->objects[o], at + "[" + std::to_string(o) + "]");
            if (!d.empty()) return d;
        }
    }
    return "";
}

inline std::string firstDifference(const aafkit::File& a, const aafkit::File& b) {
    return firstDifference(a, *a.root(), b, *b.root(), "root");
}

}  // namespace testsupport

#pragma once
// Walks a loaded file and names what does not resolve: objects of unknown
// classes and weak references without a target.
#include <string>
#include <vector>

#include "aafkit/File.h"

namespace testsupport {

inline void collectUnresolved(const aafkit::File& file, const aafkit::Object& object, const std::string& where,
                              std::vector<std::string>& out) {
    if (!object.classDef()) out.push_back(where + ": unknown class " + aafkit::auidToText(object.classId()));
    for (const aafkit::Property& p : object.properties()) {
        for (const aafkit::WeakReference& r : p.weakReferences())
            if (!file.resolve(r)) out.push_back(where + ": unresolved weak reference in pid " + std::to_string(p.pid));
        for (size_t i = 0; i < p.objects().size(); ++i)
            collectUnresolved(file, *p.objects()[i], where + "/" + std::to_string(p.pid) + "[" + std::to_string(i) + "]",
                              out);
    }
}

inline std::vector<std::string> unresolved(const aafkit::File& file) {
    std::vector<std::string> out;
    collectUnresolved(file, *file.root(), "root", out);
    return out;
}

}  // namespace testsupport

// Any bytes: load as an AAF file, then touch every object and resolve every weak reference.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "aafkit/File.h"

namespace {

void walk(const aafkit::File& file, const aafkit::Object& object) {
    for (const aafkit::Property& p : object.properties()) {
        for (const aafkit::WeakReference& r : p.weakReferences()) file.resolve(r);
        for (const aafkit::Object* child : p.objects()) walk(file, *child);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::unique_ptr<aafkit::File> file;
    if (aafkit::File::load(std::vector<uint8_t>(data, data + size), file).ok()) {
        walk(*file, *file->root());
        std::vector<uint8_t> saved;
        file->saveToBytes(saved);
    }
    return 0;
}

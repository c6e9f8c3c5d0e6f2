#include "aafkit/mem/TableResource.h"

#include "aafkit/mem/HugePageResource.h"
#include "aafkit/mem/Populate.h"

namespace aafkit::mem {
namespace {

// A table of a few pages costs a few faults; the call would cost a host reading many
// small files, whose tables reuse pages already there, about as much.
constexpr size_t kWorthPopulating = 16 * 1024;

class TableResource final : public Resource {
    void* doAllocate(size_t bytes, size_t alignment) override {
        void* table = hugePageResource()->allocate(bytes, alignment);
        if (bytes >= kWorthPopulating) populate(table, bytes);
        return table;
    }
    void doDeallocate(void* p, size_t bytes, size_t alignment) override {
        hugePageResource()->deallocate(p, bytes, alignment);
    }
};

}  // namespace

Resource* tableResource() {
    static TableResource resource;
    return &resource;
}

}  // namespace aafkit::mem

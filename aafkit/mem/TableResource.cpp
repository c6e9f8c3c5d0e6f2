#include "aafkit/mem/TableResource.h"

#include "aafkit/mem/HugePageResource.h"
#include "aafkit/mem/Populate.h"

namespace aafkit::mem {
namespace {

// A table of a few pages costs a few faults; the call would cost a host reading many
// small files, whose tables reuse pages already there, about as much.
constexpr size_t kWorthPopulating = 16 * 1024;

class TableResource final : public std::pmr::memory_resource {
    void* do_allocate(size_t bytes, size_t alignment) override {
        void* table = hugePageResource()->allocate(bytes, alignment);
        if (bytes >= kWorthPopulating) populate(table, bytes);
        return table;
    }
    void do_deallocate(void* p, size_t bytes, size_t alignment) override {
        hugePageResource()->deallocate(p, bytes, alignment);
    }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override { return this == &other; }
};

}  // namespace

std::pmr::memory_resource* tableResource() {
    static TableResource resource;
    return &resource;
}

}  // namespace aafkit::mem

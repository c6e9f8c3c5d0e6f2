#include "aafkit/mem/Resource.h"

#include <new>

namespace aafkit::mem {
namespace {

bool overAligned(size_t alignment) { return alignment > __STDCPP_DEFAULT_NEW_ALIGNMENT__; }

class HeapResource final : public Resource {
    void* doAllocate(size_t bytes, size_t alignment) override {
        return overAligned(alignment) ? ::operator new(bytes, std::align_val_t(alignment)) : ::operator new(bytes);
    }
    void doDeallocate(void* p, size_t, size_t alignment) override {
        if (overAligned(alignment))
            ::operator delete(p, std::align_val_t(alignment));
        else
            ::operator delete(p);
    }
};

}  // namespace

Resource* heapResource() {
    static HeapResource resource;
    return &resource;
}

}  // namespace aafkit::mem

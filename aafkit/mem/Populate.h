#pragma once
// Backs a range of writable memory with pages now, in one call, where the system
// offers it. On virtual machines a page fault can cost several times what the same
// page costs populated in bulk, and a freshly loaded file touches every page of its
// tables at once. Advice only: where it is not offered, pages come on first touch.
#include <cstddef>

namespace aafkit::mem {

void populate(void* start, size_t size);

}  // namespace aafkit::mem

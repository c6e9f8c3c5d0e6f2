#pragma once
// Memory for tables that are filled as soon as they are made (a file's directory
// and its indexes): hugePageResource's memory, with its pages populated at once
// rather than faulted in one by one as the table fills.
#include <memory_resource>

namespace aafkit::mem {

std::pmr::memory_resource* tableResource();

}  // namespace aafkit::mem

#pragma once
// Memory for tables that are filled as soon as they are made (a file's directory
// and its indexes): hugePageResource's memory, with its pages populated at once
// rather than faulted in one by one as the table fills.

#include "aafkit/mem/Resource.h"

namespace aafkit::mem {

Resource* tableResource();

}  // namespace aafkit::mem

#pragma once
// Memory for a file's large tables. Allocations of 2 MiB and more are mapped on
// their own and, where the system offers it, backed by huge pages: a file of a
// hundred thousand objects otherwise costs tens of thousands of page faults, which
// take longer than reading it. Smaller allocations come from the global heap, so
// small files cost no more than before. Stateless, so one instance serves every
// thread and file.

#include "aafkit/mem/Resource.h"

namespace aafkit::mem {

Resource* hugePageResource();

}  // namespace aafkit::mem

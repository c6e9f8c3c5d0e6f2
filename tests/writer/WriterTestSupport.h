#pragma once
// A writer context that frees itself, for tests.
#include <memory>

#include "AAFWriter/context.h"

struct ContextDeleter {
    void operator()(AafWriterContext* context) const { FreeAafWriterContext(context); }
};
using ContextPtr = std::unique_ptr<AafWriterContext, ContextDeleter>;

inline ContextPtr newContext() {
    AafWriterContext* context = nullptr;
    CreateAafWriterContext(&context);
    return ContextPtr(context);
}

#pragma once
// The writer's state between calls: the registered clips and the timeline to write.
#include <vector>

#include "aaf_clip.h"
#include "aafbridge/aaf_writer.h"
#include "model/Sequence.h"
#include "model/Text.h"

namespace aafkit {
class Object;
struct ProductIdentification;
}  // namespace aafkit

struct AafWriterContext {
    std::vector<Clip> clips;
    Sequence sequence;
    TextPool texts;  // the events' clip names
    // The file being written; valid only while WriteAafFile runs.
    aafkit::Object* header = nullptr;
    aafkit::Object* dictionary = nullptr;
};

// The identification every written file carries, built once at load.
extern const aafkit::ProductIdentification g_ident;

// Prints the one error line of a failed toolkit call. `source` is the reporting file's
// path in the project ("AAFWriter/file_output"), never where it was built: each file
// that reports defines its kErrorSource.
void reportError(AAFRESULT code, int line, const char* source);
#define REPORT_ERROR(code) reportError((code), __LINE__, kErrorSource)

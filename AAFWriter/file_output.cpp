// WriteAafFile: the one call that touches the disk.
#include <sys/stat.h>

#include <memory>
#include <string>

#include "aaf_composition.h"
#include "aafkit/Checked.h"
#include "aafkit/File.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "context.h"

namespace {

constexpr char kErrorSource[] = "AAFWriter/file_output";

// The content of the file; every failure inside becomes a result code.
AAFRESULT writeContent(AafWriterContext* context) {
    try {
        return EndComposition(context);
    } catch (const aafkit::ResultException& failure) {
        return failure.result();
    } catch (int code) {
        return code;
    } catch (...) {
        return AAFRESULT_INTERNAL_ERROR;
    }
}

bool pathExists(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0;
}

}  // namespace

AAFRESULT WriteAafFile(const wchar_t* path, AafWriterContext* context) {
    if (!path || !context) return AAFRESULT_NULL_PARAM;
    const std::string target = aafkit::wideToUtf8(path);
    // A new file never replaces an existing one.
    if (pathExists(target)) {
        REPORT_ERROR(AAFRESULT_FILE_EXISTS);
        return AAFRESULT_FILE_EXISTS;
    }
    std::unique_ptr<aafkit::File> file = aafkit::File::createNew(g_ident);
    context->header = file->header();
    context->dictionary = file->dictionary();
    AAFRESULT result = writeContent(context);
    context->header = nullptr;
    context->dictionary = nullptr;
    // Saved whatever the outcome: a failed write keeps what was written before the failure.
    aafkit::Status saved = file->save(target);
    if (!saved) {
        REPORT_ERROR(AAFRESULT_CONTAINERWRITE);
        return AAFRESULT_CONTAINERWRITE;
    }
    return result;
}

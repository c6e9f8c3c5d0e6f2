#include "aaf_basic.h"

#include <cstdio>
#include <cwchar>
#include <string>

#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/Mobs.h"
#include "aafkit/meta/Ids.h"

namespace {
constexpr char kErrorSource[] = "AafParser/aaf_basic";
constexpr size_t kProductNameLength = 1024;

void releaseSession(AafParseContext& context) {
    context.dictionary = nullptr;
    context.header = nullptr;
    context.file.reset();
}

AAFRESULT presentOrMissing(aafkit::Object* object) {
    return object ? AAFRESULT_SUCCESS : AAFRESULT_OBJECT_NOT_FOUND;
}

AAFRESULT openFile(const wchar_t* path, std::unique_ptr<aafkit::File>& file) {
    if (!path) return AAFRESULT_NULL_PARAM;
    return aafkit::File::openExistingRead(aafkit::wideToUtf8(path), file);
}

// Opens the file and takes its header and dictionary; each failure is reported once.
AAFRESULT openSession(AafParseContext& session, const wchar_t* path) {
    AAFRESULT result = openFile(path, session.file);
    if (AAF_FAILED(result)) return result;
    session.header = session.file->header();
    if (AAF_FAILED(result = presentOrMissing(session.header))) return result;
    session.dictionary = session.file->dictionary();
    if (AAF_FAILED(result = presentOrMissing(session.dictionary))) return result;
    return AAFRESULT_SUCCESS;
}
}  // namespace

bool reportIfFailed(AAFRESULT result, int line, const char* source) {
    if (result >= 0) return true;
    std::fprintf(stderr, "Error '%0x' returned at line %d in %s\n", unsigned(result), line, source);
    return false;
}

// Formatted by hand: swprintf took longer than the rest of reading a clip.
int mobId2String(wchar_t* buffer, const aafMobID_t& mobId, size_t size) {
    constexpr size_t kLength = 34;  // two braces around 32 hex digits
    if (size <= kLength) return -1;  // as swprintf: the text and its terminator do not fit
    const aafUID_t& m = mobId.material;
    wchar_t* out = buffer;
    const auto hex = [&out](uint32_t value, int digits) {
        for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) *out++ = L"0123456789abcdef"[(value >> shift) & 0xF];
    };
    *out++ = L'{';
    hex(m.Data1, 8);
    hex(m.Data2, 4);
    hex(m.Data3, 4);
    for (uint8_t byte : m.Data4) hex(byte, 2);
    *out++ = L'}';
    *out = L'\0';
    return int(kLength);
}

AAFRESULT requiredProperty(AAFRESULT result, const aafkit::Object& object, uint16_t pid) {
    if (result != AAFRESULT_PROP_NOT_PRESENT) return result;
    const aafkit::meta::PropertyDef* property = object.store().model().findProperty(pid);
    return property && !property->optional ? AAFRESULT_SUCCESS : result;
}

AAFRESULT readText(const aafkit::Object& object, uint16_t pid, std::wstring& text, size_t capacity) {
    std::wstring read;
    AAFRESULT result = aafkit::getString(object, pid, read);
    if (result != AAFRESULT_SUCCESS) return result;
    if (read.size() + 1 > capacity) return AAFRESULT_SMALLBUF;
    text = std::move(read);
    return AAFRESULT_SUCCESS;
}

AAFRESULT readText(const aafkit::Object& object, uint16_t pid, wchar_t* buffer, size_t capacity) {
    std::wstring text;
    AAFRESULT result = readText(object, pid, text, capacity);
    if (result == AAFRESULT_SUCCESS) std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return result;
}

AAFRESULT copyTextToHost(const wchar_t* text, wchar_t* buffer, int32_t n) {
    if (!buffer || n < 0) return kInvalidArgument;
    *wcpncpy(buffer, text, size_t(n)) = 0;
    return AAFRESULT_SUCCESS;
}

AAFRESULT OpenAafFile(const wchar_t* path, AafParseContext** context) {
    if (!context) return AAFRESULT_FILE_NOT_FOUND;
    auto* session = new AafParseContext;
    *context = session;
    if (openSession(*session, path) == AAFRESULT_SUCCESS) return AAFRESULT_SUCCESS;
    CloseFile(session);
    return AAFRESULT_FILE_NOT_FOUND;
}

void CloseFile(AafParseContext* context) {
    for (Track& track : context->sequence.tracks) context->sequence.events.destroy(track);
    context->sequence.tracks.clear();
    releaseSession(*context);
    delete context;
}

uint32_t IsProToolsFile(AafParseContext* context) {
    if (!context) return 0;
    aafkit::Object* identification = nullptr;
    if (AAF_FAILED(aafkit::getLastIdentification(*context->header, identification))) return 0;
    wchar_t name[kProductNameLength] = {};
    AAFRESULT result = requiredProperty(
        readText(*identification, PID_Identification_ProductName, name, kProductNameLength), *identification,
        PID_Identification_ProductName);
    if (AAF_FAILED(result)) return 0;
    return std::wcsncmp(name, L"Pro", 3) == 0 ? 1 : 0;
}

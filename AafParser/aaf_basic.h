#pragma once
// The reader session and the helpers every part of the reader shares: the error line,
// the mob identifier as text, bounded text reads and copies to the host.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "aafbridge/aaf_reader.h"
#include "aafkit/File.h"
#include "clips.h"
#include "model/Sequence.h"
#include "model/Text.h"

struct AafParseContext {
    std::unique_ptr<aafkit::File> file;
    aafkit::Object* header = nullptr;
    aafkit::Object* dictionary = nullptr;
    std::vector<SourceClip> clips;
    // Positions in `clips` of each master mob ID, in catalogue order: the composition
    // walk looks a clip up for every source clip.
    std::unordered_map<aafMobID_t, std::vector<uint32_t>, aafkit::MobIdHash> clipsByMobId;
    Sequence sequence;
    TextPool texts;  // the events' clip names and mob ids
};

// The answer of a failed interface query: the object is not of the asked kind.
constexpr AAFRESULT kNoInterface = AAFRESULT(0x80004002u);
constexpr AAFRESULT kInvalidArgument = AAFBRIDGE_E_INVALIDARG;

// Prints "Error '<code>' returned at line <line> in <source>" when result is a failure;
// answers true on success. AAF_FAILED(call) reports with the caller's line.
bool reportIfFailed(AAFRESULT result, int line, const char* source);
// Each reader source defines kErrorSource as its own path.
#define AAF_FAILED(call) (!reportIfFailed((call), __LINE__, kErrorSource))
#define AAF_REPORT(call) ((void)reportIfFailed((call), __LINE__, kErrorSource))

// "{%08x%04x%04x%02x...}" of the mob's material identifier; answers the characters written.
int mobId2String(wchar_t* buffer, const aafMobID_t& mobId, size_t size);

// A getter's answer as the toolkit gives it: an absent required property reads as its
// default (the caller's initial value) rather than as a failure.
AAFRESULT requiredProperty(AAFRESULT result, const aafkit::Object& object, uint16_t pid);

// A string property into a fixed buffer: AAFRESULT_SMALLBUF, nothing copied, when the
// text and its terminator do not fit.
AAFRESULT readText(const aafkit::Object& object, uint16_t pid, wchar_t* buffer, size_t capacity);
AAFRESULT readText(const aafkit::Object& object, uint16_t pid, std::wstring& text, size_t capacity);

// The host's text copy: at most n characters, zero-padded, then a zero one past the last
// character copied (slot n for a long text). kInvalidArgument for a null buffer or n < 0.
AAFRESULT copyTextToHost(const wchar_t* text, wchar_t* buffer, int32_t n);

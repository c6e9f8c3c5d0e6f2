#pragma once
// libsndfile, loaded the first time a command needs it: the commands that never
// touch audio start without it and the codec libraries it brings (a third of
// the tool's start-up time).
#include <sndfile.h>

#include "aafkit/Status.h"

struct SndfileLibrary {
    decltype(&sf_open) open = nullptr;
    decltype(&sf_close) close = nullptr;
    decltype(&sf_command) command = nullptr;
    decltype(&sf_format_check) formatCheck = nullptr;
    decltype(&sf_write_raw) writeRaw = nullptr;
    decltype(&sf_strerror) strerror = nullptr;
    decltype(&sf_error_number) errorNumber = nullptr;
};

// The library's functions, loaded once per process; an error says what could not be loaded.
aafkit::Status loadSndfile(const SndfileLibrary*& out);

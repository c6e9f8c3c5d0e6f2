#include "media/SndfileLibrary.h"

#include <dlfcn.h>

#include <string>

namespace {

#ifdef __APPLE__
constexpr const char* kLibraryName = "libsndfile.1.dylib";
#else
constexpr const char* kLibraryName = "libsndfile.so.1";
#endif

template <typename Function>
bool resolve(void* handle, const char* name, Function& out) {
    out = reinterpret_cast<Function>(dlsym(handle, name));
    return out != nullptr;
}

struct Loaded {
    SndfileLibrary library;
    aafkit::Status status;
};

Loaded load() {
    Loaded loaded;
    void* handle = dlopen(kLibraryName, RTLD_NOW | RTLD_LOCAL);  // kept for the process's life
    if (!handle) {
        const char* why = dlerror();
        loaded.status = aafkit::Status::error(std::string("cannot load ") + kLibraryName + ": " + (why ? why : "unknown"));
        return loaded;
    }
    SndfileLibrary& l = loaded.library;
    const bool complete = resolve(handle, "sf_open", l.open) && resolve(handle, "sf_close", l.close) &&
                          resolve(handle, "sf_command", l.command) &&
                          resolve(handle, "sf_format_check", l.formatCheck) &&
                          resolve(handle, "sf_write_raw", l.writeRaw) && resolve(handle, "sf_strerror", l.strerror) &&
                          resolve(handle, "sf_error_number", l.errorNumber);
    if (!complete) loaded.status = aafkit::Status::error(std::string(kLibraryName) + " lacks a function the tool needs");
    return loaded;
}

}  // namespace

aafkit::Status loadSndfile(const SndfileLibrary*& out) {
    static const Loaded loaded = load();  // thread-safe, once
    out = loaded.status ? &loaded.library : nullptr;
    return loaded.status;
}

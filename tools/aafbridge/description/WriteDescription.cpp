#include "WriteDescription.h"

#include <cstdio>
#include <fstream>

#include "DescriptionBuilder.h"
#include "DescriptionError.h"
#include "JsonText.h"
#include "aafkit/Values.h"

namespace {

bool exists(const std::string& path) { return std::ifstream(path).good(); }

}  // namespace

// The library never replaces a file, so the tool writes beside OUTPUT and then moves
// the result over it. Nothing is written unless every call was accepted; a write that
// fails inside still saves what it wrote, as the library does.
int writeDescription(const nlohmann::json& description, const std::string& output) {
    const std::string fresh = output + ".writing";
    std::remove(fresh.c_str());
    AafWriterContext* context = nullptr;
    CreateAafWriterContext(&context);
    int status = 0;
    try {
        DescriptionBuilder builder(context);
        builder.clips(description);
        builder.composition(description);
        const AAFRESULT written = WriteAafFile(aafkit::utf8ToWide(fresh).c_str(), context);
        if (written != 0) {
            std::fprintf(stderr, "aafbridge write: writing %s failed with %s%s\n", output.c_str(),
                         codeText(written).c_str(),
                         exists(fresh) ? "; the file holds what was written before the failure" : "");
            status = 1;
        }
    } catch (const DescriptionError& failure) {
        std::fprintf(stderr, "aafbridge write: %s\n", failure.what());
        status = 1;
    }
    FreeAafWriterContext(context);
    if (exists(fresh) && std::rename(fresh.c_str(), output.c_str()) != 0) {
        std::fprintf(stderr, "aafbridge write: cannot replace %s\n", output.c_str());
        std::remove(fresh.c_str());
        status = 1;
    }
    return status;
}

int writeJsonDescription(std::istream& in, const std::string& inputName, const std::string& output) {
    nlohmann::json description;
    try {
        description = parseJsonText(in);
    } catch (const DescriptionError& error) {
        std::fprintf(stderr, "aafbridge write: %s is not valid JSON: %s\n", inputName.c_str(), error.what());
        return 1;
    }
    return writeDescription(description, output);
}

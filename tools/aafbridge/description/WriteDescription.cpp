#include "description/WriteDescription.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "description/DescriptionBuilder.h"
#include "description/DescriptionError.h"
#include "description/JsonText.h"
#include "description/ResultText.h"
#include "otio/otio.h"
#include "otio/otio_time.h"
#include "aafkit/om/Values.h"

namespace {

bool exists(const std::string& path) { return std::ifstream(path).good(); }

int failed(const std::string& command, const std::string& what) {
    std::fprintf(stderr, "aafbridge %s: %s\n", command.c_str(), what.c_str());
    return 1;
}

// The input as the tool's description. An OTIO document is read into a flat document, which
// costs a fraction of nlohmann's tree; one found by its content alone is read again that way.
nlohmann::json inputDescription(const std::string& text, const std::string& inputName, const OtioImportOptions& options,
                                OtioNotes& notes) {
    if (hasOtioExtension(inputName)) return descriptionFromOtio(FlatJson::parse(text), options, notes);
    nlohmann::json description = parseJsonText(text);
    if (!isOtioDocument(description)) return description;
    description = nullptr;
    return descriptionFromOtio(FlatJson::parse(text), options, notes);
}

void reportNotes(const std::string& command, const OtioNotes& notes) {
    if (notes.lines().empty()) return;
    for (const std::string& line : notes.lines()) std::fprintf(stderr, "aafbridge %s: %s\n", command.c_str(), line.c_str());
    std::fprintf(stderr, "aafbridge %s: %s\n", command.c_str(), notes.summary().c_str());
}

}  // namespace

// The library never replaces a file, so the tool writes beside OUTPUT and then moves
// the result over it. Nothing is written unless every call was accepted; a write that
// fails inside still saves what it wrote, as the library does.
int writeDescription(const std::string& command, const nlohmann::json& description, const std::string& output) {
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
        if (written != 0)
            status = failed(command, "writing " + output + " failed with " + codeText(written) +
                                         (exists(fresh) ? "; the file holds what was written before the failure" : ""));
    } catch (const DescriptionError& failure) {
        status = failed(command, failure.what());
    }
    FreeAafWriterContext(context);
    if (exists(fresh) && std::rename(fresh.c_str(), output.c_str()) != 0) {
        status = failed(command, "cannot replace " + output + ": " + std::strerror(errno));
        std::remove(fresh.c_str());
    }
    return status;
}

int writeJsonDescription(const std::string& command, std::istream& in, const std::string& inputName,
                         const std::string& output, const OtioImportOptions& options) {
    nlohmann::json description;
    OtioNotes notes(options.strict);
    try {
        description = inputDescription(readText(in), inputName, options, notes);
    } catch (const DescriptionError& error) {
        return failed(command, inputName + " is not valid JSON: " + error.what());
    } catch (const OtioRefusal& refusal) {
        return failed(command, refusal.what());
    }
    reportNotes(command, notes);
    return writeDescription(command, description, output);
}

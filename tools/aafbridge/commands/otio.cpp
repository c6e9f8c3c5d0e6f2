// aafbridge otio FILE.aaf [-o OUT.otio] [--flatten | --host-view]: the composition as an
// OpenTimelineIO Timeline, as the file holds it or (--host-view) as the reader answers it.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "cli/BufferedStdout.h"
#include "cli/OpenFile.h"
#include "cli/PendingFile.h"
#include "commands/Commands.h"
#include "composition/Composition.h"
#include "otio/otio.h"
#include "otio/otio_composition.h"
#include "view/HostView.h"
#include "view/IndentedJson.h"

using Json = nlohmann::ordered_json;

namespace {

bool saveText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    return bool(out.flush());
}

// The host's view: what `write` reads back without loss, printed as it always was.
int hostViewTimeline(const Invocation& invocation, const std::string& input) {
    Json view;
    if (!readHostViewOrReport(invocation, input, view)) return kExitFailure;
    const Json timeline = otioFromHostView(view, std::filesystem::path(input).stem().string());
    const std::string text = timeline.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (!invocation.has("-o")) {
        std::cout << text;
        return kExitSuccess;
    }
    const std::string& output = invocation.options.at("-o");
    if (!saveText(output, text)) return fail(invocation, "cannot write " + output + ": " + systemReason());
    return kExitSuccess;
}

// Prints while it converts; false when text in the file is not valid Unicode.
bool printTimeline(const composition::Composition& read, const std::string& name, const OtioExportOptions& options,
                   std::ostream& out) {
    IndentedJson sink(out);
    try {
        sendOtioFromComposition(read, name, options, sink);
    } catch (const Json::type_error&) {
        return false;
    }
    out << "\n";
    return true;
}

int compositionTimeline(const Invocation& invocation, const std::string& input) {
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, input);
    if (!file) return kExitFailure;
    composition::Composition read;
    std::string why;
    if (!composition::readComposition(*file, read, why)) return fail(invocation, input + ": " + why);
    OtioExportOptions options;
    options.flatten = invocation.has("--flatten");
    const std::string name = std::filesystem::path(input).stem().string();
    const std::string unicode = "cannot convert all of " + input + ": it holds text that is not valid Unicode";
    if (!invocation.has("-o")) {
        BufferedStdout buffer;
        std::ostream out(&buffer);
        if (!printTimeline(read, name, options, out)) return fail(invocation, unicode);
        if (!out.flush()) return fail(invocation, "cannot write to standard output: " + systemReason());
        return kExitSuccess;
    }
    PendingFile output(invocation.options.at("-o"));
    std::ofstream out(output.temporaryPath(), std::ios::binary);
    if (!printTimeline(read, name, options, out)) return fail(invocation, unicode);
    if (!out.flush()) return fail(invocation, "cannot write " + output.path() + ": " + systemReason());
    out.close();
    if (aafkit::Status done = output.commit(); !done.ok()) return fail(invocation, done.message());
    return kExitSuccess;
}

}  // namespace

int runOtio(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
    if (invocation.has("--host-view") && invocation.has("--flatten"))
        return fail(invocation, "--flatten applies to the composition as the file holds it, not to --host-view");
    return invocation.has("--host-view") ? hostViewTimeline(invocation, input) : compositionTimeline(invocation, input);
}

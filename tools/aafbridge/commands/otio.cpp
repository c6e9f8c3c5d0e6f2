// aafbridge otio FILE.aaf [-o OUT.otio] [--flatten | --host-view]: the composition as an
// OpenTimelineIO Timeline, as the file holds it or (--host-view) as the reader answers it.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "cli/OpenFile.h"
#include "commands/Commands.h"
#include "composition/Composition.h"
#include "otio/otio.h"
#include "otio/otio_composition.h"
#include "view/HostView.h"

using Json = nlohmann::ordered_json;

namespace {

bool saveText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    return bool(out.flush());
}

// The host's view: what `write` reads back without loss.
bool hostViewTimeline(const Invocation& invocation, const std::string& input, Json& timeline) {
    Json view;
    if (!readHostViewOrReport(invocation, input, view)) return false;
    timeline = otioFromHostView(view, std::filesystem::path(input).stem().string());
    return true;
}

bool compositionTimeline(const Invocation& invocation, const std::string& input, Json& timeline) {
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, input);
    if (!file) return false;
    composition::Composition read;
    std::string why;
    if (!composition::readComposition(*file, read, why)) {
        fail(invocation, input + ": " + why);
        return false;
    }
    OtioExportOptions options;
    options.flatten = invocation.has("--flatten");
    timeline = otioFromComposition(read, std::filesystem::path(input).stem().string(), options);
    return true;
}

}  // namespace

int runOtio(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
    if (invocation.has("--host-view") && invocation.has("--flatten"))
        return fail(invocation, "--flatten applies to the composition as the file holds it, not to --host-view");
    Json timeline;
    const bool read = invocation.has("--host-view") ? hostViewTimeline(invocation, input, timeline)
                                                    : compositionTimeline(invocation, input, timeline);
    if (!read) return kExitFailure;
    const std::string text = timeline.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (!invocation.has("-o")) {
        std::cout << text;
        return kExitSuccess;
    }
    const std::string& output = invocation.options.at("-o");
    if (!saveText(output, text)) return fail(invocation, "cannot write " + output + ": " + systemReason());
    return kExitSuccess;
}

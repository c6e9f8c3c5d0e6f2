// aafbridge otio FILE.aaf [-o OUT.otio]: the composition as an OpenTimelineIO Timeline.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "commands/Commands.h"
#include "otio/otio.h"
#include "view/HostView.h"

using Json = nlohmann::ordered_json;

namespace {

bool saveText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    return bool(out.flush());
}

}  // namespace

int runOtio(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
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

// aafbridge diff OLD NEW [--json] [--tracks V1,A1-A8] [--tolerance FRAMES]: what changed
// between two versions of a cut, each an AAF file or an OpenTimelineIO timeline. Exit status
// as diff(1): 0 the same, 1 different, 2 trouble.
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iostream>

#include "cli/BufferedStdout.h"
#include "cli/OpenFile.h"
#include "commands/Commands.h"
#include "composition/Composition.h"
#include "description/WriteDescription.h"
#include "diff/CutDiff.h"
#include "diff/DiffReport.h"

namespace {

constexpr int kExitTrouble = 2;

int trouble(const Invocation& invocation, const std::string& what) {
    report(*invocation.command, what);
    return kExitTrouble;
}

// A file made for the run and removed after it.
class TemporaryFile {
public:
    TemporaryFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "aafbridge-diff-XXXXXX").string();
        const int descriptor = mkstemp(pattern.data());
        if (descriptor >= 0) {
            close(descriptor);
            path_ = pattern;
        }
    }
    ~TemporaryFile() {
        if (!path_.empty()) std::filesystem::remove(path_);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

// An OpenTimelineIO document (or the tool's own JSON) rather than an AAF file: text opening with '{'.
bool isJsonText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    char c = 0;
    while (in.get(c) && std::isspace(static_cast<unsigned char>(c))) {
    }
    return c == '{';
}

// The cut in `path`: an AAF file read as it is, a timeline written to AAF first, so that both
// are read the same way. False after reporting why.
bool readCut(const Invocation& invocation, const std::string& path, cutdiff::Cut& cut) {
    if (!readableOrReport(invocation, path)) return false;
    TemporaryFile converted;
    std::string aaf = path;
    if (isJsonText(path)) {
        if (converted.path().empty()) {
            report(*invocation.command, "cannot make a temporary file: " + systemReason());
            return false;
        }
        std::ifstream in(path);
        if (writeJsonDescription(invocation.command->name, in, path, converted.path()) != kExitSuccess) return false;
        aaf = converted.path();
    }
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, aaf);
    if (!file) return false;
    composition::Composition read;
    std::string why;
    if (!composition::readComposition(*file, read, why)) {
        report(*invocation.command, path + ": " + why);
        return false;
    }
    cut = cutdiff::cutFromComposition(read);
    return true;
}

// Two AAF files are read at once: the reads share nothing, and a cut of 100,000 events takes
// most of a second to read. A timeline's conversion names what it changed on standard error,
// so timelines are read one after the other, their notes in order.
bool readBoth(const Invocation& invocation, cutdiff::Cut& before, cutdiff::Cut& after) {
    const std::string &old = invocation.operand(0), &now = invocation.operand(1);
    if (isJsonText(old) || isJsonText(now)) return readCut(invocation, old, before) && readCut(invocation, now, after);
    std::future<bool> second = std::async(std::launch::async, [&] { return readCut(invocation, now, after); });
    const bool first = readCut(invocation, old, before);
    return second.get() && first;
}

// One item of a track list: "A3", or a range "A1-A8" (also "A1-8").
bool addTrackItem(const std::string& item, std::vector<std::string>& labels) {
    const size_t dash = item.find('-');
    char letter = 0, lastLetter = 0;
    int first = 0, last = 0;
    if (!cutdiff::parseTrackLabel(item.substr(0, dash), letter, first)) return false;
    last = first;
    if (dash != std::string::npos) {
        const std::string end = item.substr(dash + 1);
        if (!cutdiff::parseTrackLabel(end, lastLetter, last) &&
            !cutdiff::parseTrackLabel(std::string(1, letter) + end, lastLetter, last))
            return false;
        if (lastLetter != letter || last < first) return false;
    }
    for (int n = first; n <= last; ++n) labels.push_back(letter + std::to_string(n));
    return true;
}

// "V1,A1-A8" as labels; false when it is not such a list.
bool trackLabels(const std::string& text, std::vector<std::string>& labels) {
    size_t start = 0;
    while (start <= text.size()) {
        const size_t comma = std::min(text.find(',', start), text.size());
        if (!addTrackItem(text.substr(start, comma - start), labels)) return false;
        start = comma + 1;
    }
    return true;
}

bool readOptions(const Invocation& invocation, cutdiff::DiffOptions& options, std::string& why) {
    if (invocation.has("--tracks") && !trackLabels(invocation.options.at("--tracks"), options.tracks)) {
        why = "--tracks takes track labels and ranges such as V1,A1-A8";
        return false;
    }
    if (invocation.has("--tolerance")) {
        const std::string& text = invocation.options.at("--tolerance");
        if (text.empty() || text.size() > 6 || text.find_first_not_of("0123456789") != std::string::npos) {
            why = "--tolerance takes a number of frames from 0";
            return false;
        }
        options.tolerance = std::stoll(text);
    }
    return true;
}

// A track asked for that neither cut has is said, not refused: the rest are compared.
void noteMissingTracks(const Invocation& invocation, const cutdiff::DiffOptions& options, const cutdiff::Cut& before,
                       const cutdiff::Cut& after) {
    for (const std::string& label : options.tracks)
        if (!before.find(label) && !after.find(label)) report(*invocation.command, "neither cut has a track " + label);
}

}  // namespace

int runDiff(const Invocation& invocation) {
    cutdiff::DiffOptions options;
    std::string why;
    if (!readOptions(invocation, options, why)) return trouble(invocation, why);
    cutdiff::Cut before, after;
    if (!readBoth(invocation, before, after)) return kExitTrouble;
    noteMissingTracks(invocation, options, before, after);
    cutdiff::CutDiff diff;
    if (!cutdiff::diffCuts(before, after, options, diff, why)) return trouble(invocation, why);
    const cutdiff::DiffInputs inputs{invocation.operand(0), invocation.operand(1), before, after};
    BufferedStdout buffer;
    std::ostream out(&buffer);
    if (invocation.has("--json"))
        out << cutdiff::diffJson(inputs, diff).dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    else
        cutdiff::printDiff(inputs, diff, out);
    if (!out.flush()) return trouble(invocation, "cannot write to standard output: " + systemReason());
    return diff.changes.empty() ? kExitSuccess : kExitFailure;
}

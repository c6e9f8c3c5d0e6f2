// aafbridge timeline FILE [--json] [--sources]: the composition exactly as a host reads it
// through the exported reader functions, as readable text or as JSON, printed while it is
// read so that memory follows the reader's, not the size of what is printed. --sources adds
// each clip's source: tape or file, source timecode, media file, embedded or linked, channel.
#include <ostream>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/BufferedStdout.h"
#include "cli/OpenFile.h"
#include "commands/Commands.h"
#include "view/EventSources.h"
#include "view/HostView.h"
#include "view/IndentedJson.h"

using Json = nlohmann::ordered_json;

namespace {

std::string list(const Json& values) {
    std::string out;
    for (const Json& v : values) out += (out.empty() ? "" : ", ") + (v.is_string() ? v.get<std::string>() : v.dump());
    return "[" + out + "]";
}

void printClip(std::ostream& out, uint32_t index, const Json& clip) {
    out << "  [" << index << "] " << clip["id"].get<std::string>() << " " << clip["name"] << " "
        << clip["type"].get<std::string>() << " path " << clip["path"] << " tracks";
    for (const Json& tr : clip["tracks"]) out << " " << tr["slot"] << (tr["video"].get<bool>() ? ":video" : ":audio");
    out << "\n";
}

void printEvent(std::ostream& out, uint32_t index, const Json& e) {
    out << "    [" << index << "] " << e["kind"].get<std::string>() << " length " << e["length"];
    const std::string kind = e["kind"];
    if (kind == "clip")
        out << " in " << e["inPoint"] << " " << e["name"] << " " << e["id"].get<std::string>() << " slot "
            << e["slot"] << " physical " << e["physicalNumber"];
    else if (kind == "transition")
        out << " cut " << e["cutPoint"];
    else if (kind == "effect")
        out << " " << e["effect"].get<std::string>() << " (" << e["effectType"] << ") inputs " << e["numInputs"]
            << " " << list(e["inputs"]) << " params " << list(e["params"]) << " key frames "
            << list(e["keyFrames"]);
    out << "\n";
}

void printSource(std::ostream& out, const Json& source) {
    out << "        source " << source["kind"].get<std::string>() << " " << source["name"];
    if (!source["timecode"].is_null())
        out << " " << source["timecode"]["in"].get<std::string>() << "-" << source["timecode"]["out"].get<std::string>();
    out << (source["embedded"].get<bool>() ? " embedded" : " linked") << " " << source["url"] << " channel "
        << source["channel"];
    if (source.contains("broken")) out << " (" << source["broken"].get<std::string>() << ")";
    out << "\n";
}

void printTrack(std::ostream& out, AafParseContext* c, uint32_t t, EventSources* sources) {
    const Json track = trackJson(c, t);
    out << "  track " << t << ": " << track["type"].get<std::string>() << ", edit rate " << track["editRate"]
        << ", " << GetNumEvents(t, c) << " events\n";
    for (uint32_t e = 0; e < GetNumEvents(t, c); ++e) {
        const Json event = eventJson(c, t, e);
        printEvent(out, e, event);
        if (!sources) continue;
        if (const Json source = sources->sourceOf(event, track["editRate"]); !source.is_null()) printSource(out, source);
    }
}

void printText(std::ostream& out, AafParseContext* c, EventSources* sources) {
    const Json tc = timecodeJson(c);
    out << "pro tools: " << (IsProToolsFile(c) ? "yes" : "no") << "\n"
        << "timecode: start " << tc["start"] << ", " << tc["fps"] << " fps, "
        << (tc["drop"].get<bool>() ? "drop" : "non-drop") << "\n"
        << "clips: " << GetNumClips(c) << "\n";
    for (uint32_t i = 0; i < GetNumClips(c); ++i) printClip(out, i, clipJson(c, i));
    out << "markers: " << GetNumMarkers(c) << "\n";
    for (uint32_t m = 0; m < GetNumMarkers(c); ++m) {
        const Json marker = markerJson(c, m);
        out << "  [" << m << "] at " << marker["position"] << " " << marker["text"] << "\n";
    }
    out << "tracks: " << GetNumTracks(c) << "\n";
    for (uint32_t t = 0; t < GetNumTracks(c); ++t) printTrack(out, c, t, sources);
}

void printJson(std::ostream& out, AafParseContext* c, EventSources* sources) {
    IndentedJson json(out);
    EventExtra addSource;
    if (sources)
        addSource = [&](uint32_t t, Json& event) {
            if (Json source = sources->sourceOf(event, GetTrackEditRate(t, c)); !source.is_null())
                event["source"] = std::move(source);
        };
    sendHostView(c, json, addSource);
    out << "\n";
}

}  // namespace

int runTimeline(const Invocation& invocation) {
    const std::string& path = invocation.operand(0);
    const ParsedFile file = parseFileOrReport(invocation, path);
    if (!file) return kExitFailure;
    // Sources are read from the file's objects, beside what the reader answers.
    std::unique_ptr<aafkit::File> objects;
    std::unique_ptr<EventSources> sources;
    if (invocation.has("--sources")) {
        if (!(objects = openOrReport(invocation, path))) return kExitFailure;
        sources = std::make_unique<EventSources>(*objects);
    }
    BufferedStdout buffer;
    std::ostream out(&buffer);
    try {
        if (invocation.has("--json"))
            printJson(out, file.get(), sources.get());
        else
            printText(out, file.get(), sources.get());
    } catch (const Json::type_error&) {
        // nlohmann refuses to print text that is not UTF-8: an unpaired surrogate in the file.
        out.flush();
        return fail(invocation, "cannot show all of " + path + ": it holds text that is not valid Unicode");
    }
    if (!out.flush()) return fail(invocation, "cannot write to standard output: " + systemReason());
    return kExitSuccess;
}

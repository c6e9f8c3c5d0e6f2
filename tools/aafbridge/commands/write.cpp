// aafbridge write INPUT.json OUTPUT.aaf: a file built from a JSON description by the
// exported writer calls, in the order a host makes them. aafbridge demo OUTPUT.aaf:
// the same for a built-in description.
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "commands/Commands.h"
#include "cli/OpenFile.h"
#include "description/WriteDescription.h"

namespace {

const char* const kDemo = R"({
  "clips": [
    {"name": "Interview", "path": "/Volumes/Media/interview.mov", "length": 3000, "startTimecode": 90000,
     "rate": [25, 1],
     "tracks": [{"kind": "video", "editRate": [25, 1], "length": 3000, "width": 1920, "height": 1080}]},
    {"name": "Interview audio", "path": "/Volumes/Media/interview.wav", "length": 3000, "startTimecode": 90000,
     "rate": [25, 1],
     "tracks": [{"kind": "audio", "editRate": [25, 1], "length": 3000, "channels": 1, "bitsPerSample": 24,
                 "sampleRate": 48000, "sampleLength": 5760000}]},
    {"name": "City b-roll", "path": "/Volumes/Media/city.mov", "length": 1500, "startTimecode": 0, "rate": [25, 1],
     "tracks": [{"kind": "video", "editRate": [25, 1], "length": 1500, "width": 1920, "height": 1080}]}
  ],
  "composition": {"name": "Demo", "rate": [25, 1], "timecodeStart": 90000, "timecodeLength": 1000},
  "tracks": [
    {"kind": "video", "events": [
      {"type": "clip", "clip": "Interview", "inPoint": 100, "length": 250},
      {"type": "transition", "cutPoint": 12, "length": 25},
      {"type": "clip", "clip": "City b-roll", "inPoint": 200, "length": 300},
      {"type": "clip", "clip": "City b-roll", "inPoint": 600, "length": 200},
      {"type": "speed", "length": 200, "values": [2.0, 0]},
      {"type": "filler", "length": 50}]},
    {"kind": "audio", "events": [
      {"type": "clip", "clip": "Interview audio", "inPoint": 100, "length": 500},
      {"type": "volume", "length": 500, "values": [0.0, 1.0, 1.0, 0.0], "keyFrames": [0.0, 0.1, 0.9, 1.0]},
      {"type": "filler", "length": 250}]}
  ],
  "markers": [{"position": 50, "text": "Name title here"}, {"position": 400, "text": "Check the speed change"}]
})";

// --timeline N: a count from 1, or 0 when the text is none.
size_t timelineNumber(const std::string& text) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return 0;
    return size_t(std::stoul(text));
}

}  // namespace

int runWrite(const Invocation& invocation) {
    const std::string& input = invocation.operand(0);
    const std::string& output = invocation.operand(1);
    OtioImportOptions options;
    options.strict = invocation.has("--strict");
    if (invocation.has("--timeline")) {
        options.timeline = timelineNumber(invocation.options.at("--timeline"));
        if (options.timeline == 0) return fail(invocation, "--timeline takes a number from 1");
    }
    std::ifstream in(input);
    if (!in) return fail(invocation, "cannot open " + input + ": " + systemReason());
    if (!creatableOrReport(invocation, output)) return kExitFailure;
    return writeJsonDescription(invocation.command->name, in, input, output, options);
}

int runDemo(const Invocation& invocation) {
    const std::string& output = invocation.operand(0);
    if (!creatableOrReport(invocation, output)) return kExitFailure;
    return writeDescription(invocation.command->name, nlohmann::json::parse(kDemo), output);
}

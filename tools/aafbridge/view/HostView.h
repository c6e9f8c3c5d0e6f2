#pragma once
// The composition exactly as a host reads it through the exported reader functions, as the
// JSON that `aafbridge timeline --json` prints: whole, or handed over piece by piece while
// the reader context is queried.
#include <cstdint>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "cli/Command.h"
#include "view/JsonSink.h"
#include "aafbridge/aaf_reader.h"

struct CloseReader {
    void operator()(AafParseContext* context) const { CloseFile(context); }
};
// A reader context with the file's clips and composition parsed; closed when dropped.
using ParsedFile = std::unique_ptr<AafParseContext, CloseReader>;

// OpenAafFile's answer: 0 with `file` parsed, else the code it failed with.
AAFRESULT parseFile(const std::string& path, ParsedFile& file);
// The same for a command: null after reporting why the file cannot be read.
ParsedFile parseFileOrReport(const Invocation& invocation, const std::string& path);

// The pieces of the view, each exactly as the whole view holds it.
nlohmann::ordered_json timecodeJson(AafParseContext* c);
nlohmann::ordered_json clipJson(AafParseContext* c, uint32_t clip);
nlohmann::ordered_json markerJson(AafParseContext* c, uint32_t marker);
// A track's members before its events.
nlohmann::ordered_json trackJson(AafParseContext* c, uint32_t track);
nlohmann::ordered_json eventJson(AafParseContext* c, uint32_t track, uint32_t event);

// Anything a command adds to an event before it is handed over.
using EventExtra = std::function<void(uint32_t track, nlohmann::ordered_json& event)>;

// The whole view, piece by piece.
void sendHostView(AafParseContext* c, JsonSink& sink, const EventExtra& extra = {});

// OpenAafFile's answer: 0 with the view filled, else the code it failed with.
AAFRESULT readHostView(const std::string& path, nlohmann::ordered_json& view);
// The same for a command: false after reporting why the file cannot be read.
bool readHostViewOrReport(const Invocation& invocation, const std::string& path, nlohmann::ordered_json& view);

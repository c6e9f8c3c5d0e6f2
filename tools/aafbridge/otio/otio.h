#pragma once
// OpenTimelineIO documents both ways: the host's view of a composition as a Timeline, and a
// Timeline as the description that `aafbridge write` builds a file from.
#include <nlohmann/json.hpp>
#include <string>

#include "description/FlatJson.h"
#include "otio/otio_notes.h"

// The host's view (see HostView.h) as an OTIO Timeline named `name`.
nlohmann::ordered_json otioFromHostView(const nlohmann::ordered_json& view, const std::string& name);

// Whether `write` was given an OTIO document: by the file's extension, or by its content
// for a file read as the tool's own JSON.
bool hasOtioExtension(const std::string& path);
bool isOtioDocument(const nlohmann::json& document);

struct OtioImportOptions {
    bool strict = false;  // refuse what would need a change instead of making it
    size_t timeline = 0;  // of a SerializableCollection, counted from 1; 0 for the first
};

// The Timeline as the tool's own JSON description, each change it needed in `notes`. Throws
// OtioRefusal, whose text starts with the path of the item in the document, for a broken
// document and, with `strict`, for the first change needed.
nlohmann::json descriptionFromOtio(const FlatJson& document, const OtioImportOptions& options, OtioNotes& notes);

// aafbridge media FILE.aaf [--json]: every clip's media, embedded or linked, and for
// linked media whether the file is on this machine. Exit status 0 when all media is
// embedded or found, 1 when some is missing or the file cannot be read, 2 for usage.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

#include "commands/Commands.h"
#include "media/MediaCatalogue.h"
#include "media/MediaLocation.h"
#include "cli/OpenFile.h"

using Json = nlohmann::json;

namespace {

struct MediaRow {
    const MediaEntry* entry;
    MediaLocation location;  // linked media only
    bool embedded() const { return entry->essenceData != nullptr; }
    bool missing() const { return !embedded() && location.path.empty(); }
};

Json rowJson(const MediaRow& row) {
    const MediaEntry& e = *row.entry;
    Json item = {{"clip", e.clipName}, {"mobId", e.mobIdText}, {"kind", e.kind}, {"embedded", row.embedded()}};
    if (e.audioStatus) {
        item["format"] = aafkit::formatName(e.audio);
        item["channels"] = e.audio.channels;
        item["sampleRate"] = e.audio.sampleRate;
        item["bits"] = e.audio.bits;
        if (e.audio.length >= 0) item["length"] = e.audio.length;
    } else {
        item["format"] = nullptr;
        item["formatNote"] = e.audioStatus.message();
    }
    item["locator"] = e.locator.empty() ? Json(nullptr) : Json(e.locator);
    if (!row.embedded()) {
        item["found"] = !row.missing();
        item["foundAt"] = row.location.path.empty() ? Json(nullptr) : Json(row.location.path);
        item["how"] = row.location.where;
    }
    return item;
}

std::string formatText(const MediaEntry& e) {
    if (!e.audioStatus) return e.audioStatus.message();
    char text[96];
    std::snprintf(text, sizeof text, "%s %uch %gHz %ubit", aafkit::formatName(e.audio), unsigned(e.audio.channels),
                  e.audio.sampleRate, unsigned(e.audio.bits));
    return std::string(text) + (e.audio.length >= 0 ? ", " + std::to_string(e.audio.length) + " frames" : "");
}

void printRow(const MediaRow& row) {
    const MediaEntry& e = *row.entry;
    std::printf("\"%s\"  %s  %s  %s\n", e.label().c_str(), e.kind.c_str(), row.embedded() ? "embedded" : "linked",
                formatText(e).c_str());
    if (!e.locator.empty()) std::printf("    locator %s\n", e.locator.c_str());
    if (row.embedded()) return;
    if (row.missing())
        std::printf("    MISSING%s\n", e.locator.empty() ? ": no locator names the file" : "");
    else
        std::printf("    found %s: %s\n", row.location.where.c_str(), row.location.path.c_str());
}

}  // namespace

int runMedia(const Invocation& invocation) {
    const std::string& path = invocation.operand(0);
    const bool json = invocation.has("--json");
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, path);
    if (!file) return kExitFailure;
    const std::vector<MediaEntry> entries = catalogueMedia(*file);
    std::vector<MediaRow> rows;
    size_t embedded = 0, missing = 0;
    for (const MediaEntry& entry : entries) {
        MediaRow row{&entry, {}};
        if (!row.embedded())
            row.location = entry.locator.empty() ? MediaLocation{"", "missing"} : locateMedia(entry.locator, path);
        embedded += row.embedded();
        missing += row.missing();
        rows.push_back(row);
    }
    if (json) {
        Json list = Json::array();
        for (const MediaRow& row : rows) list.push_back(rowJson(row));
        std::printf("%s\n", Json({{"file", path},
                                  {"media", list},
                                  {"embedded", embedded},
                                  {"linked", rows.size() - embedded},
                                  {"missing", missing}})
                                .dump(2, ' ', false, Json::error_handler_t::replace)
                                .c_str());
    } else {
        for (const MediaRow& row : rows) printRow(row);
        std::printf("%zu media: %zu embedded, %zu linked and found, %zu missing\n", rows.size(), embedded,
                    rows.size() - embedded - missing, missing);
    }
    return missing ? 1 : 0;
}

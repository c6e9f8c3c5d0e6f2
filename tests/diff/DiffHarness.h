#pragma once
// Cuts built as the writer's JSON descriptions, written and read back as a diff reads them,
// so that the tests make known edits and check what the diff says of them.
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "aafkit/File.h"
#include "composition/Composition.h"
#include "description/WriteDescription.h"
#include "diff/Cut.h"
#include "diff/CutDiff.h"
#include "support/SampleFiles.h"

namespace diffharness {

using Json = nlohmann::json;

struct Event {
    std::string clip;  // "" for filler
    int64_t in = 0, length = 0;
    double speed = 0;   // a speed effect on the clip when not 0
    double gain = -1;   // a volume effect on the clip when not negative
};

struct HarnessTrack {
    std::string kind;  // "video" or "audio"
    std::vector<Event> events;
};

struct HarnessCut {
    std::vector<HarnessTrack> tracks;
    std::vector<std::pair<int64_t, std::string>> markers;
    int64_t timecodeStart = 90000;
};

// Five shots on V1 and their sound on A1; V2 empty above them.
inline HarnessCut baseCut() {
    const std::vector<Event> shots = {{"A", 100, 50}, {"B", 200, 60}, {"C", 300, 40}, {"D", 400, 70}, {"E", 500, 30}};
    return {{{"video", shots}, {"audio", shots}, {"video", {{"", 0, 250}}}}, {{20, "Title"}, {160, "Music in"}}};
}

inline Json clipJson(const std::string& name, const std::string& kind) {
    Json track = kind == "video" ? Json{{"kind", "video"}, {"editRate", {25, 1}}, {"length", 10000}, {"width", 1920}, {"height", 1080}}
                                 : Json{{"kind", "audio"}, {"editRate", {25, 1}}, {"length", 10000}, {"channels", 1},
                                        {"bitsPerSample", 24}, {"sampleRate", 48000}, {"sampleLength", 10000 * 1920}};
    return {{"name", name}, {"path", "/media/" + name + (kind == "video" ? ".mov" : ".wav")}, {"length", 10000},
            {"startTimecode", 0}, {"rate", {25, 1}}, {"tracks", Json::array({track})}};
}

inline Json description(const HarnessCut& cut) {
    Json clips = Json::array();
    for (const char* name : {"A", "B", "C", "D", "E", "F"}) {
        clips.push_back(clipJson(name, "video"));
        clips.push_back(clipJson(std::string(name) + " sound", "audio"));
    }
    Json tracks = Json::array();
    for (const HarnessTrack& track : cut.tracks) {
        Json events = Json::array();
        for (const Event& event : track.events) {
            if (event.clip.empty()) {
                events.push_back({{"type", "filler"}, {"length", event.length}});
                continue;
            }
            const std::string clip = track.kind == "video" ? event.clip : event.clip + " sound";
            events.push_back({{"type", "clip"}, {"clip", clip}, {"inPoint", event.in}, {"length", event.length}});
            if (event.speed != 0) events.push_back({{"type", "speed"}, {"length", event.length}, {"values", {event.speed, 0}}});
            if (event.gain >= 0)
                events.push_back({{"type", "volume"}, {"length", event.length}, {"values", {event.gain, event.gain}},
                                  {"keyFrames", {0.0, 1.0}}});
        }
        tracks.push_back({{"kind", track.kind}, {"events", events}});
    }
    Json markers = Json::array();
    for (const auto& [position, text] : cut.markers) markers.push_back({{"position", position}, {"text", text}});
    return {{"clips", clips},
            {"composition", {{"name", "Cut"}, {"rate", {25, 1}}, {"timecodeStart", cut.timecodeStart}, {"timecodeLength", 1000}}},
            {"tracks", tracks},
            {"markers", markers}};
}

inline cutdiff::Cut readCut(const std::string& path) {
    std::unique_ptr<aafkit::File> file;
    composition::Composition read;
    std::string why;
    EXPECT_EQ(aafkit::File::openExistingRead(path, file), 0) << path;
    if (file) {
        EXPECT_TRUE(composition::readComposition(*file, read, why)) << why;
    }
    return cutdiff::cutFromComposition(read);
}

// The cut as the writer writes it and the diff reads it back.
inline cutdiff::Cut written(const HarnessCut& cut, const std::string& suffix) {
    const std::string path = testsupport::testFile(suffix);
    EXPECT_EQ(writeDescription("test", description(cut), path), 0);
    cutdiff::Cut read = readCut(path);
    std::filesystem::remove(path);
    return read;
}

inline cutdiff::CutDiff diffOf(const cutdiff::Cut& before, const cutdiff::Cut& after, const cutdiff::DiffOptions& options = {}) {
    cutdiff::CutDiff diff;
    std::string why;
    EXPECT_TRUE(cutdiff::diffCuts(before, after, options, diff, why)) << why;
    return diff;
}

// "V1 tail trimmed @150 5 +0": track, class, where (new record, else old), amount, shift.
inline std::vector<std::string> changeLines(const cutdiff::CutDiff& diff) {
    std::vector<std::string> lines;
    for (const cutdiff::Change& change : diff.changes) {
        std::string line = (change.track.empty() ? "cut" : change.track) + " " + cutdiff::changeKindName(change.kind) +
                           " @" + std::to_string(change.position) + " " + std::to_string(change.amount) + " " +
                           (change.shift >= 0 ? "+" : "") + std::to_string(change.shift);
        if (!change.fromTrack.empty()) line += " from " + change.fromTrack;
        if (change.audioOnly) line += " audio only";
        lines.push_back(line);
    }
    return lines;
}

}  // namespace diffharness

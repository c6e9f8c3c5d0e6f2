// OpenTimelineIO both ways, beside the tool's own JSON: the export of all samples against
// the host view that `timeline --json` prints, and the write of a 10,000-event timeline from
// OTIO against the same timeline from the tool's own description, and from OTIO as editors
// make it: every run of items between transitions nested one level, sound timed at 48000 Hz. Peak memory is reported
// beside the time; it is the process's peak so far, so run one benchmark at a time
// (--benchmark_filter) for a figure of its own.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "BenchSamples.h"
#include "ChildProcess.h"
#include "QuietStderr.h"
#include "description/WriteDescription.h"
#include "view/HostView.h"
#include "otio/otio.h"

namespace {

using Json = nlohmann::json;

constexpr int kClips = 100;  // first half picture, second half sound
constexpr int kBlocks = 625;  // eight events per block on each of two tracks: 10,000 events

std::string temporary(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }

// What `timeline --json` and `otio` do between reading the file and printing.
template <class Convert>
void convertAllSamples(benchmark::State& state, Convert convert) {
    const std::vector<std::string> files = benchSamples();
    size_t bytes = 0;
    for (auto _ : state) {
        bytes = 0;
        for (const std::string& file : files) {
            nlohmann::ordered_json view;
            if (readHostView(file, view) != 0) continue;
            bytes += convert(view, file).size();
        }
    }
    state.counters["files"] = double(files.size());
    state.counters["MB"] = double(bytes) / 1e6;
    state.counters["peak_MiB"] = selfPeakMiB();
}

void HostViewJsonAllSamples(benchmark::State& state) {
    convertAllSamples(state, [](const nlohmann::ordered_json& view, const std::string&) { return view.dump(2); });
}
BENCHMARK(HostViewJsonAllSamples)->Unit(benchmark::kMillisecond)->Iterations(5);

void OtioAllSamples(benchmark::State& state) {
    convertAllSamples(state, [](const nlohmann::ordered_json& view, const std::string& file) {
        return otioFromHostView(view, std::filesystem::path(file).stem().string()).dump(2);
    });
}
BENCHMARK(OtioAllSamples)->Unit(benchmark::kMillisecond)->Iterations(5);

Json mediaClip(int i) {
    const bool video = i < kClips / 2;
    const std::string kind = video ? "video" : "audio";
    return {{"name", "Clip " + std::to_string(i)},
            {"path", "/Volumes/Media/clip" + std::to_string(i) + (video ? ".mov" : ".wav")},
            {"length", 100000},
            {"rate", {25, 1}},
            {"tracks", {{{"kind", kind}, {"editRate", {25, 1}}, {"length", 100000}}}}};
}

// Clips, a dissolve, fillers and an effect over a clip, eight events at a time.
Json trackEvents(bool video) {
    Json events = Json::array();
    for (int block = 0; block < kBlocks; ++block) {
        auto clip = [&](int k) {
            const int i = (block * 7 + k) % (kClips / 2) + (video ? 0 : kClips / 2);
            return Json{{"type", "clip"}, {"clip", i + 1}, {"inPoint", 100 * k + 20}, {"length", 50}};
        };
        events.push_back(clip(0));
        events.push_back({{"type", "transition"}, {"cutPoint", 5}, {"length", 10}});
        events.push_back(clip(1));
        events.push_back({{"type", "filler"}, {"length", 20}});
        events.push_back(clip(2));
        if (video)
            events.push_back({{"type", "composite"}, {"length", 50}, {"values", {0.5}}});
        else
            events.push_back({{"type", "volume"}, {"length", 50}, {"values", {0.0, 1.0}}, {"keyFrames", {0.0, 1.0}}});
        events.push_back(clip(3));
        events.push_back({{"type", "filler"}, {"length", 20}});
    }
    return events;
}

Json largeDescription() {
    Json clips = Json::array();
    for (int i = 0; i < kClips; ++i) clips.push_back(mediaClip(i));
    return {{"clips", clips},
            {"composition", {{"name", "Large timeline"}, {"rate", {25, 1}}, {"timecodeStart", 90000}}},
            {"tracks", {{{"kind", "video"}, {"events", trackEvents(true)}}, {{"kind", "audio"}, {"events", trackEvents(false)}}}}};
}

// What `aafbridge write INPUT OUTPUT` runs.
int write(const std::string& input, const std::string& output) {
    std::ifstream in(input);
    return writeJsonDescription("write", in, input, output);
}

// Every time in `value` given at 48000 Hz instead of `rate`.
void atSampleRate(nlohmann::ordered_json& value, double rate) {
    if (value.is_object() && value.value("OTIO_SCHEMA", "") == "RationalTime.1") {
        value["value"] = value["value"].get<double>() * 48000 / rate;
        value["rate"] = 48000.0;
        return;
    }
    if (value.is_structured())
        for (auto& child : value) atSampleRate(child, rate);
}

// The export nested as editors nest: each run of items between transitions in a Track of its
// own inside the track, the sound tracks' times at 48000 Hz.
nlohmann::ordered_json nestedAsEditorsDo(nlohmann::ordered_json otio, double rate) {
    for (auto& track : otio["tracks"]["children"]) {
        nlohmann::ordered_json children = nlohmann::ordered_json::array(), run = nlohmann::ordered_json::array();
        const auto nestRun = [&] {
            if (run.empty()) return;
            children.push_back({{"OTIO_SCHEMA", "Track.1"}, {"name", "nest"}, {"kind", track["kind"]}, {"children", run}});
            run = nlohmann::ordered_json::array();
        };
        for (auto& item : track["children"]) {
            if (item["OTIO_SCHEMA"] != "Transition.1") {
                run.push_back(std::move(item));
                continue;
            }
            nestRun();
            children.push_back(std::move(item));
        }
        nestRun();
        track["children"] = std::move(children);
        if (track["kind"] == "Audio") atSampleRate(track, rate);
    }
    return otio;
}

// The same timeline three ways: the description, the OTIO export of the file it makes, and
// that export nested.
struct LargeInputs {
    std::string json = temporary("bench_otio_large.json"), otio = temporary("bench_otio_large.otio"),
                nested = temporary("bench_otio_nested.otio");
    LargeInputs() {
        std::ofstream(json) << largeDescription().dump();
        const std::string aaf = temporary("bench_otio_large.aaf");
        nlohmann::ordered_json view;
        if (write(json, aaf) == 0 && readHostView(aaf, view) == 0) {
            const nlohmann::ordered_json otioDocument = otioFromHostView(view, "large");
            std::ofstream(otio) << otioDocument.dump();
            std::ofstream(nested) << nestedAsEditorsDo(otioDocument, 25).dump();
        }
        std::remove(aaf.c_str());
    }
    ~LargeInputs() {
        std::remove(json.c_str());
        std::remove(otio.c_str());
        std::remove(nested.c_str());
    }
};

void writeLarge(benchmark::State& state, const std::string& input) {
    const std::string output = temporary("bench_otio_written.aaf");
    for (auto _ : state) {
        QuietStderr quiet;  // the nested input's notes
        if (write(input, output) != 0) state.SkipWithError("the write failed");
    }
    state.counters["inputMB"] = double(std::filesystem::file_size(input)) / 1e6;
    state.counters["peak_MiB"] = selfPeakMiB();
    std::remove(output.c_str());
}

const LargeInputs& largeInputs() {
    static const LargeInputs inputs;
    return inputs;
}

void WriteLargeFromJson(benchmark::State& state) { writeLarge(state, largeInputs().json); }
BENCHMARK(WriteLargeFromJson)->Unit(benchmark::kMillisecond)->Iterations(3);

void WriteLargeFromOtio(benchmark::State& state) { writeLarge(state, largeInputs().otio); }
BENCHMARK(WriteLargeFromOtio)->Unit(benchmark::kMillisecond)->Iterations(3);

void WriteLargeFromNestedOtio(benchmark::State& state) { writeLarge(state, largeInputs().nested); }
BENCHMARK(WriteLargeFromNestedOtio)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();

// `aafbridge diff` on two 100,000-event cuts (ten tracks of 10,000) that differ by 1,000 edits
// (trims, deletions, insertions, slips), as a whole command: time and peak memory beside the
// same command reading both files and comparing no track, which is what reading both costs.
// Then the same at a tenth of the size, to show the time grows with the events, not faster.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "ChildProcess.h"
#include "QuietStderr.h"

namespace {

using Json = nlohmann::json;

constexpr int kTracks = 10;  // five picture, five sound
constexpr int kClipsPerKind = 100;

std::string temporary(const std::string& name) { return (std::filesystem::temp_directory_path() / name).string(); }

Json mediaClip(int i) {
    const bool video = i < kClipsPerKind;
    return {{"name", "Clip " + std::to_string(i)},
            {"path", "/Volumes/Media/clip" + std::to_string(i) + (video ? ".mov" : ".wav")},
            {"length", 100000},
            {"rate", {25, 1}},
            {"tracks", {{{"kind", video ? "video" : "audio"}, {"editRate", {25, 1}}, {"length", 100000}}}}};
}

struct Shot {
    int clip, in, length;
};

// Each event its own piece of a clip, so that every event is one of a kind.
std::vector<Shot> trackShots(int track, int events) {
    std::vector<Shot> shots;
    const int clipBase = track < kTracks / 2 ? 0 : kClipsPerKind;
    for (int e = 0; e < events; ++e) shots.push_back({clipBase + e % kClipsPerKind, 60 * (e / kClipsPerKind) + track, 50});
    return shots;
}

// `edits` edits spread over the tracks, each track's from its end so that indices hold.
void edit(std::vector<std::vector<Shot>>& tracks, int edits) {
    for (int k = edits - 1; k >= 0; --k) {
        std::vector<Shot>& shots = tracks[size_t(k % kTracks)];
        const size_t at = size_t(5 + (k / kTracks) * int(shots.size() - 10) / std::max(1, edits / kTracks));
        switch (k % 4) {
        case 0: shots[at].length -= 3; break;
        case 1: shots.erase(shots.begin() + long(at)); break;
        case 2: shots.insert(shots.begin() + long(at), {shots[at].clip, 59000 - k, 40}); break;
        default: shots[at].in += 7;
        }
    }
}

// The description streamed out an event at a time: the benchmark's own memory stays small (a
// child's peak counts what its parent held when it started, until it executes the tool).
void writeDescription(const std::vector<std::vector<Shot>>& tracks, std::ostream& out) {
    out << R"({"clips": [)";
    for (int i = 0; i < 2 * kClipsPerKind; ++i) out << (i ? "," : "") << mediaClip(i).dump();
    out << R"(], "composition": {"name": "Reel 1", "rate": [25, 1], "timecodeStart": 90000}, "tracks": [)";
    for (size_t t = 0; t < tracks.size(); ++t) {
        out << (t ? "," : "") << R"({"kind": ")" << (int(t) < kTracks / 2 ? "video" : "audio") << R"(", "events": [)";
        for (size_t e = 0; e < tracks[t].size(); ++e) {
            const Shot& shot = tracks[t][e];
            out << (e ? "," : "") << R"({"type": "clip", "clip": )" << shot.clip + 1 << R"(, "inPoint": )" << shot.in
                << R"(, "length": )" << shot.length << "}";
        }
        out << "]}";
    }
    out << "]}";
}

// The two versions of a cut of `events` events, written by the tool.
struct CutPair {
    std::string before, after;
    bool ok = false;
    explicit CutPair(int events) {
        const std::string tag = std::to_string(events);
        before = temporary("bench_diff_" + tag + "_old.aaf");
        after = temporary("bench_diff_" + tag + "_new.aaf");
        std::vector<std::vector<Shot>> tracks;
        for (int t = 0; t < kTracks; ++t) tracks.push_back(trackShots(t, events / kTracks));
        ok = writeCut(tracks, before);
        edit(tracks, events / 100);
        ok = ok && writeCut(tracks, after);
    }
    ~CutPair() {
        std::remove(before.c_str());
        std::remove(after.c_str());
    }
    static bool writeCut(const std::vector<std::vector<Shot>>& tracks, const std::string& aaf) {
        const std::string json = aaf + ".json";
        {
            std::ofstream out(json);
            writeDescription(tracks, out);
        }
        const bool written = runChild({AAFBRIDGE_TOOL, "write", json, aaf}).ok;
        std::remove(json.c_str());
        return written;
    }
};

const CutPair& cutPair(int events) {
    static const CutPair large(100000), small(10000);
    return events == 100000 ? large : small;
}

void runDiff(benchmark::State& state, std::vector<std::string> extra, int expectedExit) {
    const CutPair& pair = cutPair(int(state.range(0)));
    if (!pair.ok) return state.SkipWithError("the cuts could not be written");
    std::vector<std::string> args = {AAFBRIDGE_TOOL, "diff", pair.before, pair.after, "--json"};
    args.insert(args.end(), extra.begin(), extra.end());
    ChildRun run;
    for (auto _ : state) {
        QuietStderr quiet;  // the note that no cut has the track asked for
        run = runChild(args);
        if (run.exitCode != expectedExit) return state.SkipWithError("diff did not answer as expected");
        state.SetIterationTime(run.seconds);
    }
    state.counters["cpu_s"] = run.cpuSeconds;
    state.counters["peak_MiB"] = run.peakMiB;
}

void DiffTwoCuts(benchmark::State& state) { runDiff(state, {}, 1); }
BENCHMARK(DiffTwoCuts)->Arg(10000)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

// Both files read into cuts, no track compared: the reading the diff builds on.
void ReadBothCuts(benchmark::State& state) { runDiff(state, {"--tracks", "V99"}, 0); }
BENCHMARK(ReadBothCuts)->Arg(10000)->Arg(100000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();

// An "embedded media" AAF of several gigabytes (made once by generate_embedded_aaf,
// kept at $AAFBRIDGE_BIG_AAF or in the temporary folder): opening and reading
// it through the exported functions, `aafbridge timeline` and `aafbridge copy`
// against `cp`. Each figure comes with the peak memory of the process that did
// the work; run one benchmark per process (--benchmark_filter) for the in-process one.
#include <benchmark/benchmark.h>
#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "ChildProcess.h"
#include "aafbridge/aaf_reader.h"

namespace {

constexpr const char* kSizeGiB = "4.5";

std::string bigFile() {
    const char* path = std::getenv("AAFBRIDGE_BIG_AAF");
    return path ? path : (std::filesystem::temp_directory_path() / "aafbridge-embedded.aaf").string();
}

// Made on first use; a file of the right kind already there is reused.
bool ensureBigFile(benchmark::State& state) {
    const std::string path = bigFile();
    std::error_code error;
    // file_size answers its largest value, not 0, when the file is not there.
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && size > (uint64_t(4) << 30)) return true;
    if (!runChild({AAFBRIDGE_BENCH_DIR "/generate_embedded_aaf", path, kSizeGiB}).ok) {
        state.SkipWithError(("cannot generate " + path).c_str());
        return false;
    }
    return true;
}

void OpenParseClose(benchmark::State& state) {
    if (!ensureBigFile(state)) return;
    const std::string path = bigFile();
    const std::wstring wide(path.begin(), path.end());
    uint32_t events = 0;
    for (auto _ : state) {
        AafParseContext* context = nullptr;
        if (OpenAafFile(wide.c_str(), &context) != 0) {
            state.SkipWithError("OpenAafFile failed");
            return;
        }
        ParseClips(context);
        ParseComposition(context);
        events = GetNumEvents(0, context);
        CloseFile(context);
    }
    state.counters["events"] = events;
    state.counters["peak_MiB"] = selfPeakMiB();
}
BENCHMARK(OpenParseClose)->Unit(benchmark::kMillisecond);

// One child per iteration; the figures are the last run's.
void reportChild(benchmark::State& state, const std::vector<std::string>& command) {
    ChildRun run;
    for (auto _ : state) {
        run = runChild(command);
        if (!run.ok) {
            state.SkipWithError((command[0] + " failed").c_str());
            return;
        }
        state.SetIterationTime(run.seconds);
    }
    state.counters["peak_MiB"] = run.peakMiB;
    state.counters["GiB"] = double(std::filesystem::file_size(bigFile())) / (1 << 30);
}

void ToolTimeline(benchmark::State& state) {
    if (ensureBigFile(state)) reportChild(state, {AAFBRIDGE_TOOL, "timeline", bigFile()});
}
BENCHMARK(ToolTimeline)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

void ToolOtio(benchmark::State& state) {
    if (ensureBigFile(state)) reportChild(state, {AAFBRIDGE_TOOL, "otio", bigFile()});
}
BENCHMARK(ToolOtio)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

void ToolCopy(benchmark::State& state) {
    const std::string copy = bigFile() + ".copy.aaf";
    if (ensureBigFile(state)) reportChild(state, {AAFBRIDGE_TOOL, "copy", bigFile(), copy});
    std::remove(copy.c_str());
}
BENCHMARK(ToolCopy)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

void PlainCp(benchmark::State& state) {
    const std::string copy = bigFile() + ".cp";
    if (ensureBigFile(state)) reportChild(state, {"cp", bigFile(), copy});
    std::remove(copy.c_str());
}
BENCHMARK(PlainCp)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();

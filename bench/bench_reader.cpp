// The reader's speed over every sample: open, catalogue the clips, walk the composition
// and close, through the exported functions; beside it, the time it takes just to read
// the same files' bytes, the floor any reader stands on (the files are in the page cache
// after the first pass of either).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <vector>

#include "BenchSamples.h"
#include "ChildProcess.h"
#include "QuietStderr.h"
#include "aafbridge/aaf_reader.h"

namespace {

std::vector<std::wstring> samples() {
    std::vector<std::wstring> wide;
    for (const std::string& f : benchSamples()) wide.emplace_back(f.begin(), f.end());
    return wide;
}

void ReadAllSamples(benchmark::State& state) {
    const std::vector<std::wstring> files = samples();
    if (files.empty()) {
        state.SkipWithError("no samples at " AAFBRIDGE_SAMPLES_DIR);
        return;
    }
    QuietStderr quiet;
    size_t events = 0;
    for (auto _ : state) {
        events = 0;
        for (const std::wstring& path : files) {
            AafParseContext* context = nullptr;
            if (OpenAafFile(path.c_str(), &context) != 0) continue;
            ParseClips(context);
            ParseComposition(context);
            for (uint32_t t = 0; t < GetNumTracks(context); ++t) events += GetNumEvents(t, context);
            CloseFile(context);
        }
    }
    state.counters["files"] = double(files.size());
    state.counters["events"] = double(events);
    state.counters["peak_MiB"] = selfPeakMiB();
}
BENCHMARK(ReadAllSamples)->Unit(benchmark::kMillisecond);

// Every byte of every sample through read(2), 64 KiB at a time.
void ReadAllSampleBytes(benchmark::State& state) {
    const std::vector<std::string> files = benchSamples();
    if (files.empty()) {
        state.SkipWithError("no samples at " AAFBRIDGE_SAMPLES_DIR);
        return;
    }
    std::vector<char> buffer(64 * 1024);
    size_t total = 0;
    for (auto _ : state) {
        total = 0;
        for (const std::string& path : files) {
            const int fd = open(path.c_str(), O_RDONLY);
            if (fd < 0) continue;
            for (ssize_t n; (n = read(fd, buffer.data(), buffer.size())) > 0;) total += size_t(n);
            close(fd);
        }
        benchmark::DoNotOptimize(total);
    }
    state.counters["files"] = double(files.size());
    state.counters["MiB"] = double(total) / (1 << 20);
}
BENCHMARK(ReadAllSampleBytes)->Unit(benchmark::kMillisecond);

// The same comparison as an editor meets it, a process per file: `aafbridge timeline`
// on each sample against `cat` of each. The time is the processes' CPU time (user and
// system), steadier than wall time on a shared machine; compare the two rows.
void runOnEachSample(benchmark::State& state, const std::vector<std::string>& command) {
    const std::vector<std::string> files = benchSamples();
    if (files.empty()) {
        state.SkipWithError("no samples at " AAFBRIDGE_SAMPLES_DIR);
        return;
    }
    QuietStderr quiet;
    for (auto _ : state) {
        double cpu = 0;
        for (const std::string& path : files) {
            std::vector<std::string> args = command;
            args.push_back(path);
            const ChildRun run = runChild(args);
            cpu += run.cpuSeconds;
        }
        state.SetIterationTime(cpu);
    }
    state.counters["files"] = double(files.size());
}

void TimelineProcessPerSample(benchmark::State& state) { runOnEachSample(state, {AAFBRIDGE_TOOL, "timeline"}); }
BENCHMARK(TimelineProcessPerSample)->Unit(benchmark::kMillisecond)->UseManualTime();

// The composition as the file holds it as OTIO, against the reader's view as OTIO.
void OtioProcessPerSample(benchmark::State& state) { runOnEachSample(state, {AAFBRIDGE_TOOL, "otio"}); }
BENCHMARK(OtioProcessPerSample)->Unit(benchmark::kMillisecond)->UseManualTime();

void OtioHostViewProcessPerSample(benchmark::State& state) {
    runOnEachSample(state, {AAFBRIDGE_TOOL, "otio", "--host-view"});
}
BENCHMARK(OtioHostViewProcessPerSample)->Unit(benchmark::kMillisecond)->UseManualTime();

void CatProcessPerSample(benchmark::State& state) { runOnEachSample(state, {"cat"}); }
BENCHMARK(CatProcessPerSample)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();

// The reader's speed over every sample: open, catalogue the clips, walk the composition
// and close, through the exported functions.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <vector>

#include "BenchSamples.h"
#include "aafbridge/aaf_reader.h"

namespace {

std::vector<std::wstring> samples() {
    std::vector<std::wstring> wide;
    for (const std::string& f : benchSamples()) wide.emplace_back(f.begin(), f.end());
    return wide;
}

// A few samples make the reader print its error line; keep that out of the report.
class QuietStderr {
public:
    QuietStderr() : saved_(dup(STDERR_FILENO)) {
        std::fflush(stderr);
        int null = open("/dev/null", O_WRONLY);
        dup2(null, STDERR_FILENO);
        close(null);
    }
    ~QuietStderr() {
        std::fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
    }

private:
    int saved_;
};

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
}
BENCHMARK(ReadAllSamples)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

// The writer's speed and memory on a large timeline: 10 tracks of 10,000 events over
// 1,000 registered clips, written through the exported calls, then read back through
// the reader's. Run each benchmark alone (--benchmark_filter) for its own peak memory.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "ChildProcess.h"
#include "aafbridge/aaf_reader.h"
#include "aafbridge/aaf_writer.h"
#include "aafkit/File.h"
#include "composition/Composition.h"

namespace {

const char* g_self = "bench_writer";

constexpr int kClips = 1000;  // first half picture, second half sound
constexpr int kTracks = 10;   // first half video, second half audio
constexpr int kEventsPerTrack = 10000;

std::string outputPath(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

void registerClips(AafWriterContext* c) {
    for (int i = 0; i < kClips; ++i) {
        const bool video = i < kClips / 2;
        const std::wstring name = L"Clip " + std::to_wstring(i);
        const std::wstring path = L"/Volumes/Media/clip" + std::to_wstring(i) + (video ? L".mov" : L".wav");
        const int32_t index = AddClip(name.c_str(), path.c_str(), 100000, 90000, false, nullptr, nullptr, 25, 1, c);
        AddClipTrack(index, video, 25, 1, 100000, c);
        if (video)
            SetVideoTrackInfo(uint32_t(index), 1, 1920, 1080, c);
        else
            SetAudioTrackInfo(uint32_t(index), 1, 1, 24, 48000, 192000000, c);
    }
}

// Ten events at a time: clips, a transition, a filler and an effect over a clip.
void appendEvents(uint32_t track, bool video, AafWriterContext* c) {
    const double constant[] = {0.5};
    const double curve[] = {0.0, 1.0};
    const double times[] = {0.0, 1.0};
    for (int block = 0; block < kEventsPerTrack / 10; ++block) {
        auto clip = [&](int k) {
            const int i = (block * 7 + k) % (kClips / 2) + (video ? 0 : kClips / 2);
            AppendClipToTrack(track, 100 * k, 50, false, uint32_t(i + 1), 1, c);
        };
        clip(0);
        clip(1);
        AppendTransition(track, 5, 10, c);
        clip(2);
        AppendFiller(track, 20, c);
        clip(3);
        clip(4);
        if (video)
            AppendVideoCompositeEffect(track, 50, constant, 1, nullptr, 0, c);
        else
            AppendVolumeEffect(track, 50, curve, 2, times, 2, c);
        clip(5);
        AppendFiller(track, 20, c);
    }
}

AafWriterContext* buildTimeline() {
    AafWriterContext* c = nullptr;
    CreateAafWriterContext(&c);
    registerClips(c);
    InitComposition(25, 1, 600000, false, 90000, L"Large timeline", c);
    for (int t = 0; t < kTracks; ++t) {
        const bool video = t < kTracks / 2;
        appendEvents(AddTrackToComposition(video, 25.0, c), video, c);
    }
    return c;
}

AAFRESULT writeTimeline(const std::string& path) {
    std::remove(path.c_str());
    AafWriterContext* c = buildTimeline();
    const std::wstring widePath(path.begin(), path.end());
    const AAFRESULT result = WriteAafFile(widePath.c_str(), c);
    FreeAafWriterContext(c);
    return result;
}

// The building calls alone: what the host spends before asking for the file.
void BuildLargeTimeline(benchmark::State& state) {
    for (auto _ : state) FreeAafWriterContext(buildTimeline());
    state.counters["events"] = kTracks * kEventsPerTrack;
}
BENCHMARK(BuildLargeTimeline)->Unit(benchmark::kMillisecond)->Iterations(3);

// Run alone (--benchmark_filter=WriteLargeTimeline) for the write's own peak memory.
void WriteLargeTimeline(benchmark::State& state) {
    const std::string path = outputPath("bench_writer_large.aaf");
    for (auto _ : state) {
        if (writeTimeline(path) != 0) state.SkipWithError("the write failed");
    }
    state.counters["events"] = kTracks * kEventsPerTrack;
    state.counters["file_MiB"] = double(std::filesystem::file_size(path)) / (1 << 20);
    state.counters["peak_MiB"] = selfPeakMiB();
    std::remove(path.c_str());
}
BENCHMARK(WriteLargeTimeline)->Unit(benchmark::kMillisecond)->Iterations(3);

// Every answer a host can ask for about one event.
void queryEvent(uint32_t t, uint32_t e, AafParseContext* c) {
    wchar_t text[256];
    benchmark::DoNotOptimize(GetEventLen(t, e, c) + GetEventInPoint(t, e, c) + GetTransitionCutPoint(t, e, c));
    GetEventName(t, e, text, 256, c);
    GetEventId(t, e, text, 256, c);
    benchmark::DoNotOptimize(GetEventSlot(t, e, c) + GetEventPhysicalNumber(t, e, c) + IsEventFiller(t, e, c) +
                             IsEventTransition(t, e, c) + GetEffectType(t, e, c));
    if (!IsEventEffect(t, e, c)) return;  // the effect counts of other events are 0xFFFFFFFF
    for (uint32_t i = 0; i < GetEffectNumInputs(t, e, c); ++i) GetEffectElementId(t, e, i, text, 256, c);
    for (uint32_t i = 0; i < GetEffectKeyFrameCount(t, e, c); ++i) benchmark::DoNotOptimize(GetEffectKeyFrame(t, e, i, c));
    for (uint32_t i = 0; i < GetEffectParamCount(t, e, c); ++i) benchmark::DoNotOptimize(GetEffectParam(t, e, i, c));
}

// The written file read back as a host does: open, both parses, every query, close.
// Answers the number of events, or -1 if the file does not open.
long readBack(const std::string& path) {
    const std::wstring wide(path.begin(), path.end());
    AafParseContext* c = nullptr;
    if (OpenAafFile(wide.c_str(), &c) != 0) return -1;
    ParseClips(c);
    ParseComposition(c);
    long events = 0;
    for (uint32_t t = 0; t < GetNumTracks(c); ++t)
        for (uint32_t e = 0; e < GetNumEvents(t, c); ++e, ++events) queryEvent(t, e, c);
    CloseFile(c);
    return events;
}

// The file is written by a child process. The time is the mean over reads in this
// process, the first of which meets a fresh heap; the peak is that of one read in a
// process of its own (fresh_process_s is that process's whole run), since repeated
// reads leave the heap holding memory the next read does not reuse.
void ReadLargeTimelineBack(benchmark::State& state) {
    const std::string path = outputPath("bench_writer_read.aaf");
    if (!runChild({g_self, "--write-only", path}).ok) {
        state.SkipWithError("the write failed");
        return;
    }
    // Once, before this process has read: a child started from a large parent is
    // charged the parent's peak, so repetitions reuse the first figures.
    static const ChildRun alone = runChild({g_self, "--read-only", path});
    if (!alone.ok) state.SkipWithError("the read in a process of its own failed");
    long events = 0;
    for (auto _ : state) {
        if ((events = readBack(path)) < 0) {
            state.SkipWithError("the written file does not open");
            break;
        }
    }
    state.counters["events"] = double(events);
    state.counters["file_MiB"] = double(std::filesystem::file_size(path)) / (1 << 20);
    state.counters["peak_MiB"] = alone.peakMiB;
    state.counters["fresh_process_s"] = alone.seconds;
    std::remove(path.c_str());
}
BENCHMARK(ReadLargeTimelineBack)->Unit(benchmark::kMillisecond)->Iterations(3);

// A tool command on a freshly written file, each run a process of its own; the figures are
// the last run's. Run such benchmarks alone (--benchmark_filter=NAME): a child is charged the
// peak of the process that starts it, which the benchmarks before it raise to the write's.
void toolOnLargeFile(benchmark::State& state, const char* command, const char* option) {
    const std::string path = outputPath((std::string("bench_writer_") + command + ".aaf").c_str());
    if (!runChild({g_self, "--write-only", path}).ok) {
        state.SkipWithError("the write failed");
        return;
    }
    std::vector<std::string> arguments = {AAFBRIDGE_TOOL, command, path};
    if (state.range(0) != 0) arguments.push_back(option);
    ChildRun run;
    for (auto _ : state) {
        if (!(run = runChild(arguments)).ok) {
            state.SkipWithError((std::string(command) + " failed").c_str());
            break;
        }
        state.SetIterationTime(run.seconds);
    }
    state.counters["peak_MiB"] = run.peakMiB;
    state.counters["cpu_s"] = run.cpuSeconds;
    std::remove(path.c_str());
}

// `aafbridge timeline` on the same file, as text (json:0) and as JSON (json:1): it prints
// while it reads, so its peak is the read's, not the output's.
void TimelineOfLargeFile(benchmark::State& state) { toolOnLargeFile(state, "timeline", "--json"); }
BENCHMARK(TimelineOfLargeFile)->ArgName("json")->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

// The same file read as the file holds it (composition/): the model that `otio` converts and
// that a comparison of two cuts reads twice. In process, the mean of three reads.
void ReadLargeComposition(benchmark::State& state) {
    const std::string path = outputPath("bench_writer_composition.aaf");
    if (!runChild({g_self, "--write-only", path}).ok) {
        state.SkipWithError("the write failed");
        return;
    }
    size_t tracks = 0;
    for (auto _ : state) {
        std::unique_ptr<aafkit::File> file;
        composition::Composition read;
        std::string why;
        if (aafkit::File::openExistingRead(path, file) != 0 || !composition::readComposition(*file, read, why)) {
            state.SkipWithError("the composition does not read");
            break;
        }
        tracks = read.tracks.size();
    }
    state.counters["tracks"] = double(tracks);
    state.counters["peak_MiB"] = selfPeakMiB();
    std::remove(path.c_str());
}
BENCHMARK(ReadLargeComposition)->Unit(benchmark::kMillisecond)->Iterations(3);

// `aafbridge otio` on the same file: the composition as the file holds it (host_view:0)
// against the reader's view (host_view:1).
void OtioOfLargeFile(benchmark::State& state) { toolOnLargeFile(state, "otio", "--host-view"); }
BENCHMARK(OtioOfLargeFile)->ArgName("host_view")->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

// `bench_writer --write-only OUT.aaf` writes the timeline and stops, and
// `--read-only IN.aaf` reads it back once: the read-back benchmark's processes.
int main(int argc, char** argv) {
    g_self = argv[0];
    if (argc == 3 && std::string(argv[1]) == "--write-only") return writeTimeline(argv[2]) == 0 ? 0 : 1;
    if (argc == 3 && std::string(argv[1]) == "--read-only") return readBack(argv[2]) < 0 ? 1 : 0;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

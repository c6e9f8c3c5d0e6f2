// Moving embedded media: `aafbridge extract` over a large file with embedded PCM, and
// `aafbridge embed` of generated WAV files, each beside `cp` of the same bytes. The
// commands run as child processes; their peak memory is the child's getrusage maximum
// resident size.
//
//   bench_media [benchmark flags] --extract-from=BIG.aaf [--embed-gib=4] [--scratch=DIR]
//
// Without --extract-from the extract case is skipped; the embed case writes its WAV
// files (24-bit stereo, 48 kHz) and outputs below the scratch folder and removes them.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ChildProcess.h"

namespace fs = std::filesystem;

namespace {

std::string g_extractFrom;
double g_embedGib = 4.0;
std::string g_scratch = fs::temp_directory_path().string();

void report(benchmark::State& state, const ChildRun& command, const ChildRun& copy, uint64_t bytes) {
    state.SetIterationTime(command.seconds);
    state.counters["peak_MiB"] = command.peakMiB;
    state.counters["cp_s"] = copy.seconds;
    state.counters["ratio_to_cp"] = copy.seconds > 0 ? command.seconds / copy.seconds : 0;
    state.counters["GiB"] = double(bytes) / double(1ull << 30);
}

void ExtractEmbeddedPcm(benchmark::State& state) {
    std::error_code error;
    if (g_extractFrom.empty() || !fs::is_regular_file(g_extractFrom, error)) {
        state.SkipWithError("give --extract-from=FILE.aaf (a file with embedded PCM)");
        return;
    }
    const fs::path out = fs::path(g_scratch) / "bench-extract";
    for (auto _ : state) {
        fs::remove_all(out);
        fs::create_directories(out);
        const ChildRun copy = runChild({"/bin/cp", g_extractFrom, (out / "copy.aaf").string()});
        fs::remove(out / "copy.aaf");
        const ChildRun extract = runChild({AAFBRIDGE_TOOL, "extract", g_extractFrom, (out / "audio").string()});
        if (!copy.ok || !extract.ok) state.SkipWithError("cp or extract failed");
        report(state, extract, copy, fs::file_size(g_extractFrom));
    }
    fs::remove_all(out);
}
BENCHMARK(ExtractEmbeddedPcm)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);

// A 24-bit stereo 48 kHz WAV of `bytes` sample bytes, written a MiB at a time.
void writeWav(const fs::path& path, uint64_t bytes) {
    std::ofstream out(path, std::ios::binary);
    auto little = [&](uint64_t v, int n) {
        for (int i = 0; i < n; ++i) out.put(char(v >> (8 * i)));
    };
    out.write("RIFF", 4);
    little(36 + bytes, 4);
    out.write("WAVEfmt ", 8);
    little(16, 4), little(1, 2), little(2, 2), little(48000, 4), little(48000 * 6, 4), little(6, 2), little(24, 2);
    out.write("data", 4);
    little(bytes, 4);
    std::vector<char> chunk(1 << 20);
    for (size_t i = 0; i < chunk.size(); ++i) chunk[i] = char(i * 31 + (i >> 9));
    for (uint64_t left = bytes; left > 0;) {
        const size_t n = size_t(std::min<uint64_t>(left, chunk.size()));
        out.write(chunk.data(), std::streamsize(n));
        left -= n;
    }
}

// Files of at most 1 GiB (whole frames) until `total` bytes; an AAF that links them.
std::vector<fs::path> prepareEmbed(const fs::path& folder, uint64_t total) {
    const uint64_t perFile = (uint64_t(1) << 30) / 6 * 6;
    std::vector<fs::path> wavs;
    std::string clips;
    std::string events;
    for (uint64_t done = 0; done < total; done += perFile) {
        const uint64_t bytes = std::min(perFile, (total - done) / 6 * 6);
        const std::string name = "take" + std::to_string(wavs.size());
        wavs.push_back(folder / (name + ".wav"));
        writeWav(wavs.back(), bytes);
        const std::string frames = std::to_string(bytes / 6);
        clips +=
            std::string(clips.empty() ? "" : ",") + "{\"name\":\"" + name + "\",\"path\":\"" + wavs.back().string() +
            "\",\"length\":25,\"startTimecode\":0,\"rate\":[25,1],\"tracks\":[{\"kind\":\"audio\",\"editRate\":[25,1]"
            "," +
            "\"length\":25,\"channels\":2,\"bitsPerSample\":24,\"sampleRate\":48000,\"sampleLength\":" + frames + "}]}";
        events += std::string(events.empty() ? "" : ",") + "{\"type\":\"clip\",\"clip\":\"" + name +
                  "\",\"inPoint\":0,\"length\":25}";
    }
    std::ofstream(folder / "in.json") << "{\"clips\":[" << clips
                                      << "],\"composition\":{\"name\":\"bench\",\"rate\":[25,1],\"timecodeStart\":0,"
                                         "\"timecodeLength\":100},\"tracks\":[{\"kind\":\"audio\",\"events\":["
                                      << events << "]}]}";
    return wavs;
}

void EmbedWav(benchmark::State& state) {
    const fs::path folder = fs::path(g_scratch) / "bench-embed";
    fs::remove_all(folder);
    fs::create_directories(folder / "copy");
    const uint64_t total = uint64_t(g_embedGib * double(1ull << 30));
    const std::vector<fs::path> wavs = prepareEmbed(folder, total);
    if (!runChild({AAFBRIDGE_TOOL, "write", (folder / "in.json").string(), (folder / "in.aaf").string()}).ok) {
        state.SkipWithError("could not write the linking AAF");
        fs::remove_all(folder);
        return;
    }
    for (auto _ : state) {
        std::vector<std::string> cp = {"/bin/cp"};
        for (const fs::path& wav : wavs) cp.push_back(wav.string());
        cp.push_back((folder / "copy").string());
        const ChildRun copy = runChild(cp);
        fs::remove_all(folder / "copy");
        const ChildRun embed =
            runChild({AAFBRIDGE_TOOL, "embed", (folder / "in.aaf").string(), (folder / "out.aaf").string()});
        if (!copy.ok || !embed.ok) state.SkipWithError("cp or embed failed");
        report(state, embed, copy, total);
    }
    fs::remove_all(folder);
}
BENCHMARK(EmbedWav)->UseManualTime()->Unit(benchmark::kSecond)->Iterations(1);

// Takes this program's own flags out of argv, leaving the benchmark library's.
void takeOwnFlags(int& argc, char** argv) {
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&](const char* flag) {
            return arg.compare(0, std::strlen(flag), flag) == 0 ? arg.substr(std::strlen(flag)) : std::string();
        };
        if (!value("--extract-from=").empty())
            g_extractFrom = value("--extract-from=");
        else if (!value("--embed-gib=").empty())
            g_embedGib = std::stod(value("--embed-gib="));
        else if (!value("--scratch=").empty())
            g_scratch = value("--scratch=");
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
}

}  // namespace

int main(int argc, char** argv) {
    takeOwnFlags(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

// aafkit's own speed: loading every object of the real files, and writing and
// reloading a generated 100,000-object file.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>

#include "BenchSamples.h"
#include "aafkit/File.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

namespace {


size_t walk(const aafkit::Object& object) {
    size_t count = 1;
    for (const aafkit::Property& p : object.properties())
        for (const aafkit::Object* child : p.objects()) count += walk(*child);
    return count;
}

void LoadAllSamples(benchmark::State& state) {
    const std::vector<std::string> files = benchSamples();
    if (files.empty()) {
        state.SkipWithError("no samples at " AAFBRIDGE_SAMPLES_DIR);
        return;
    }
    size_t objects = 0;
    for (auto _ : state) {
        objects = 0;
        for (const std::string& path : files) {
            std::unique_ptr<aafkit::File> file;
            aafkit::File::openExistingRead(path, file);
            if (file) objects += walk(*file->root());
        }
    }
    state.counters["files"] = double(files.size());
    state.counters["objects"] = double(objects);
}
BENCHMARK(LoadAllSamples)->Unit(benchmark::kMillisecond);

std::unique_ptr<aafkit::File> generated(size_t clips) {
    auto file = aafkit::File::createNew({L"aafbridge", L"bench", L"1", L"Linux", aafkit::kNullAuid, {0, 0, 0, 0, 0}});
    aafkit::Object& mob = *file->create(AUID_AAFCompositionMob);
    aafMobID_t id{};
    id.material.Data1 = 1;
    aafkit::setMobId(mob, PID_Mob_MobID, id);
    aafkit::addToSet(*file->contentStorage(), PID_ContentStorage_Mobs, mob);
    aafkit::Object& slot = *file->create(AUID_AAFTimelineMobSlot);
    aafkit::setUInt32(slot, PID_MobSlot_SlotID, 1);
    aafkit::setRational(slot, PID_TimelineMobSlot_EditRate, {25, 1});
    aafkit::appendObject(mob, PID_Mob_Slots, slot);
    aafkit::Object& sequence = *file->create(AUID_AAFSequence);
    aafkit::setObject(slot, PID_MobSlot_Segment, sequence);
    for (size_t i = 0; i < clips; ++i) {
        aafkit::Object& clip = *file->create(AUID_AAFSourceClip);
        aafkit::setInt64(clip, PID_Component_Length, int64_t(i));
        aafkit::setMobId(clip, PID_SourceReference_SourceID, id);
        aafkit::setUInt32(clip, PID_SourceReference_SourceMobSlotID, 1);
        aafkit::setInt64(clip, PID_SourceClip_StartTime, 0);
        aafkit::appendObject(sequence, PID_Sequence_Components, clip);
    }
    return file;
}

void Write100kObjects(benchmark::State& state) {
    std::unique_ptr<aafkit::File> file = generated(100000);
    const std::string path = (std::filesystem::temp_directory_path() / "aafbridge-bench.aaf").string();
    for (auto _ : state) benchmark::DoNotOptimize(file->save(path).ok());
    std::filesystem::remove(path);
    state.counters["objects"] = double(file->objectCount());
}
BENCHMARK(Write100kObjects)->Unit(benchmark::kMillisecond);

void Load100kObjects(benchmark::State& state) {
    const std::string path = (std::filesystem::temp_directory_path() / "aafbridge-bench-load.aaf").string();
    generated(100000)->save(path);
    size_t objects = 0;
    for (auto _ : state) {
        std::unique_ptr<aafkit::File> file;
        aafkit::File::openExistingRead(path, file);
        objects = file ? walk(*file->root()) : 0;
    }
    std::filesystem::remove(path);
    state.counters["objects"] = double(objects);
}
BENCHMARK(Load100kObjects)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

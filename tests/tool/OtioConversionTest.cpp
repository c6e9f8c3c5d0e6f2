// aafbridge write IN.otio converts what the writer cannot take as it stands (nests, times off
// the edit rate, effects it has none of, trims, disabled items) and names each change; with
// --strict the same item is refused instead. The OpenTimelineIO that the other reader made of
// every shared sample is written, and read back with the same cuts.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <tuple>

#include "OtioDocuments.h"

namespace {

using namespace otiodoc;

// The lines `write` printed about changes, without the summary.
std::vector<std::string> noteLines(const std::string& output) {
    std::vector<std::string> lines;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);)
        if (line.find(" items written; ") == std::string::npos) lines.push_back(line);
    return lines;
}

Json nest(const char* schema, Items children, Json effects = Json::array()) {
    return {{"OTIO_SCHEMA", std::string(schema) + ".1"}, {"name", "nest"}, {"kind", "Video"}, {"children", children},
            {"effects", effects}, {"markers", Json::array()}};
}

Json warp(double speed) { return {{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", speed}}; }

Json withEffect(Json item, Json added) {
    item["effects"].push_back(std::move(added));
    return item;
}

Json disabled(Json item) {
    item["enabled"] = false;
    return item;
}

struct Change {
    const char* what;
    Json document;
    std::string refused;  // the refusal with --strict
    std::string noted;    // the note without it
};

std::vector<Change> changes() {
    Json trimmed = track("Video", {clip("A", 0, 50, 25)});
    trimmed["source_range"] = range(10, 20, 25);
    Json picture = clip("A", 0, 10, 25);
    picture["media_references"]["DEFAULT_MEDIA"] = {{"OTIO_SCHEMA", "ImageSequenceReference.1"}};
    Json wipe = transition(5, 5, 25);
    wipe["transition_type"] = "SMPTE_Wipe";
    Json wider = effect("Volume", {1.0});
    wider["metadata"]["aafbridge"]["length"] = 20;
    const std::string item = "tracks.children[0].children[1]";
    const std::string first = "tracks.children[0].children[0]";
    const Json a = clip("A", 0, 10, 25);
    return {
        {"a nested Stack", timeline({track("Video", {a, nest("Stack", {track("Video", {clip("B", 0, 5, 25)})})})}),
         item + ": Stack inside a Track is not supported", item + ": Stack inside a Track is not supported: flattened"},
        {"a nested Track", timeline({track("Video", {a, nest("Track", {clip("B", 0, 5, 25)})})}),
         item + ": Track inside a Track is not supported", item + ": Track inside a Track is not supported: flattened"},
        {"a time off the edit rate", timeline({track("Video", {a, clip("B", 0, 1001, 48000)})}),
         item + ".source_range.duration: 1001.0 at 48000.0 is not a whole number",
         item + ": times off the composition's edit units: rounded to the nearest, the largest cut by +0.4786 edit units (+19.146 ms)"},
        {"an effect without a name", timeline({track("Video", {withEffect(a, effect("", {1.0}))})}),
         first + ".effects[0].effect_name: \"\" is not supported", first + ".effects[0].effect_name: \"\" is not supported"},
        {"an effect the writer has not", timeline({track("Video", {withEffect(a, effect("Blur", {1.0}))})}),
         first + ".effects[0].effect_name: \"Blur\" is not supported", "\"Blur\" is not supported: the writer takes"},
        {"an effect over more than its clip", timeline({track("Audio", {withEffect(a, wider)})}),
         first + ".effects[0]: covers 20", first + ".effects[0]: covers 20"},
        {"more key frames than values", timeline({track("Audio", {withEffect(a, effect("Volume", {1.0}, {0.0, 1.0}))})}),
         "effects[0].metadata.aafbridge.keyFrames: more key frames", "more key frames than values: left out"},
        {"a reverse speed", timeline({track("Video", {withEffect(a, warp(-1))})}),
         first + ".effects[0].time_scalar: the writer takes forward speeds", "forward speeds up to 1000 only: left out"},
        {"a freeze frame", timeline({track("Video", {withEffect(a, {{"OTIO_SCHEMA", "FreezeFrame.1"}, {"time_scalar", 0}})})}),
         first + ".effects[0]: a FreezeFrame", first + ".effects[0]: a FreezeFrame: the writer holds no frame: left out"},
        {"an effect on a gap", timeline({track("Video", {withEffect(gap(5, 25), effect("Volume", {1.0})), a})}),
         first + ".effects[0]: effects on a Gap", first + ".effects[0]: effects on a Gap are not supported: left out"},
        {"an effect on a track", timeline({withEffect(track("Video", {a}), effect("Volume", {1.0}))}),
         "tracks.children[0].effects[0]: effects on a Track", "tracks.children[0].effects[0]: effects on a Track"},
        {"a trimmed track", timeline({trimmed}), "tracks.children[0].source_range: a trimmed Track is not supported",
         "a trimmed Track is not supported: the trim applied: 20 edit units from 10"},
        {"a disabled clip", timeline({track("Video", {a, disabled(clip("B", 0, 5, 25))})}),
         item + ".enabled: a disabled Clip", item + ".enabled: a disabled Clip: written as a gap of its length"},
        {"a track of subtitles", timeline({track("Video", {a}), track("Subtitles", {})}),
         "tracks.children[1].kind: \"Subtitles\" is not Video or Audio", "\"Subtitles\" is not Video or Audio: the track left out"},
        {"a transition from its cut after a clip",
         timeline({track("Video", {a, transition(0, 5, 25), clip("B", 0, 10, 25)})}), item + ".in_offset: is 0",
         item + ".in_offset: is 0: the writer puts a filler before such a Transition, so it must face a Gap or the track's "
                "end: the writer's filler goes before it"},
        {"a transition with nothing before it", timeline({track("Video", {transition(5, 5, 25), a})}),
         first + ".in_offset: needs a clip or gap before the Transition", "the Transition left out"},
        {"a wipe", timeline({track("Video", {a, wipe, clip("B", 10, 10, 25)})}),
         item + ".transition_type: \"SMPTE_Wipe\" is not supported", "written as a dissolve"},
        {"an image sequence", timeline({track("Video", {gap(5, 25), picture})}),
         item + ".media_references.DEFAULT_MEDIA: ImageSequenceReference is not supported", "the clip is written without media"},
    };
}

TEST_F(OtioWrite, EveryChangeIsNamedOnceOrRefusedWithStrict) {
    for (const Change& change : changes()) {
        SCOPED_TRACE(change.what);
        std::filesystem::remove(output);
        expectRefused(change.document, change.refused, " --strict");
        const testsupport::ToolRun run = write(change.document.dump());
        ASSERT_EQ(run.exitCode, 0) << run.output;
        EXPECT_TRUE(std::filesystem::exists(output));
        const std::vector<std::string> notes = noteLines(run.output);
        ASSERT_EQ(notes.size(), 1u) << run.output;
        EXPECT_NE(notes[0].find(change.noted), std::string::npos) << notes[0];
        EXPECT_NE(run.output.find(" items written; "), std::string::npos) << run.output;
    }
}

// Events of a host view's track as (name or kind, length, in-point).
std::vector<std::tuple<std::string, int64_t, int64_t>> cuts(const Json& track) {
    std::vector<std::tuple<std::string, int64_t, int64_t>> out;
    for (const Json& event : track["events"]) {
        const bool clip = event["kind"] == "clip";
        out.emplace_back(clip ? event["name"].get<std::string>() : event["kind"].get<std::string>(),
                         event["length"].get<int64_t>(), clip ? event["inPoint"].get<int64_t>() : 0);
    }
    return out;
}

TEST_F(OtioWrite, NestsShowTheirTopMostEnabledItemThroughTheirTrimsAndTimeWarps) {
    // Two layers: C (with a marker) over B, a disabled D beside C letting B through; the
    // Stack trimmed to 10..50 of its own time.
    Json c = clip("C", 5, 10, 25);
    c["markers"].push_back(marker("on C", 7, 25));
    Json layers = nest("Stack", {track("Video", {clip("B", 100, 60, 25)}),
                                 track("Video", {gap(20, 25), c, disabled(clip("D", 0, 5, 25)), gap(25, 25)})});
    layers["source_range"] = range(10, 40, 25);
    // Played at twice its speed: 40 frames of E in 20.
    const Json fast = nest("Track", {clip("E", 0, 40, 25)}, Items{warp(2)});
    const testsupport::ToolRun run =
        write(timeline({track("Video", {clip("A", 0, 50, 25), layers}), track("Video", {fast, gap(5, 25)})}).dump());
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(noteLines(run.output).size(), 3u) << run.output;  // two nests flattened, D disabled
    const Json view = otiotest::hostView(output);
    using Cut = std::tuple<std::string, int64_t, int64_t>;
    EXPECT_EQ(cuts(view["tracks"][0]),
              (std::vector<Cut>{{"A", 50, 0}, {"B", 10, 110}, {"C", 10, 5}, {"B", 20, 130}}));
    const std::vector<Cut> second = cuts(view["tracks"][1]);
    ASSERT_EQ(second.size(), 3u);
    EXPECT_EQ(second[0], Cut("E", 20, 0));
    EXPECT_EQ(std::get<0>(second[1]), "effect");
    EXPECT_EQ(second[2], Cut("filler", 5, 0));
    // The effect is the nest's speed, carried to its clip.
    const Json speed = otiotest::toolJson("otio " + output)["tracks"]["children"][1]["children"][0]["effects"][0];
    bool twice = false;
    for (const Json& parameter : speed["metadata"]["aafbridge"]["parameters"])
        twice = twice || (parameter["name"] == "SpeedRatio" && parameter["value"] == 2.0);
    EXPECT_TRUE(twice) << speed.dump();
    // C's marker at its own 7 is 2 into C, which starts at 60.
    ASSERT_EQ(view["markers"].size(), 1u);
    EXPECT_EQ(view["markers"][0]["position"], 62);
}

TEST_F(OtioWrite, TrimmedTracksAndDisabledItemsKeepEverythingElseInPlace) {
    Json trimmed = track("Audio", {clip("A", 0, 50, 25), disabled(clip("B", 0, 30, 25)), clip("C", 0, 50, 25)});
    trimmed["source_range"] = range(20, 80, 25);
    const Json view = written(timeline({track("Video", {clip("V", 0, 100, 25)}), trimmed}));
    using Cut = std::tuple<std::string, int64_t, int64_t>;
    EXPECT_EQ(cuts(view["tracks"][1]), (std::vector<Cut>{{"A", 30, 20}, {"filler", 30, 0}, {"C", 20, 0}}));
}

TEST_F(OtioWrite, NestsTooDeepOrTooSlowAndMarkersOutsideATrimAreNamed) {
    Json deep = clip("A", 0, 10, 25);
    for (int level = 0; level < 70; ++level) deep = nest("Track", {deep});
    expectRefused(timeline({track("Video", {deep})}), "nested more than 64 deep");
    const testsupport::ToolRun slow =
        write(timeline({track("Video", {nest("Track", {clip("A", 0, 10, 25)}, Items{warp(1e-300)})})}).dump());
    ASSERT_EQ(slow.exitCode, 0) << slow.output;
    EXPECT_NE(slow.output.find("effects[0].time_scalar: a nest plays at forward speeds from 0.001 to 1000 only: left out"),
              std::string::npos)
        << slow.output;
    Json trimmed = track("Video", {clip("A", 0, 50, 25)});
    trimmed["source_range"] = range(10, 20, 25);
    trimmed["markers"] = Items{marker("inside", 15, 25), marker("outside", 40, 25)};
    const testsupport::ToolRun markers = write(timeline({trimmed}).dump());
    ASSERT_EQ(markers.exitCode, 0) << markers.output;
    EXPECT_NE(markers.output.find("tracks.children[0].source_range: 1 markers outside the trim: left out"), std::string::npos)
        << markers.output;
    const Json view = otiotest::hostView(output);
    ASSERT_EQ(view["markers"].size(), 1u);
    EXPECT_EQ(view["markers"][0]["position"], 5);
}

// Three hours at 23.976 with sound cut every 100,000 samples at 48000 Hz, 49.95 frames: rounding
// each length would drift by a frame every 20 cuts, rounding the cuts never by half a frame.
TEST_F(OtioWrite, TimesOffTheEditRateAreRoundedAtTheirCutsWithoutDrift) {
    const double ntsc = 24000.0 / 1001;
    const int items = 5180;
    Items sound;
    for (int i = 0; i < items; ++i) sound.push_back(clip("S" + std::to_string(i % 7), 0, 100000, 48000));
    const testsupport::ToolRun run =
        write(timeline({track("Video", {clip("V", 0, 258800, ntsc)}), track("Audio", sound)}).dump());
    ASSERT_EQ(run.exitCode, 0) << run.output.substr(0, 2000);
    EXPECT_NE(run.output.find(" items rounded (largest error "), std::string::npos);
    const Json view = otiotest::hostView(output);
    const Json& events = view["tracks"][1]["events"];
    ASSERT_EQ(events.size(), size_t(items));
    int64_t position = 0;
    double worst = 0;
    for (int i = 0; i < items; ++i) {
        position += events[i]["length"].get<int64_t>();
        worst = std::max(worst, std::fabs(double(position) - (i + 1) * 100000.0 / 48000 * ntsc));
    }
    EXPECT_LE(worst, 0.5 + 1e-6);
}

TEST_F(OtioWrite, ACollectionGivesItsFirstTimelineOrTheOneAskedFor) {
    const Json collection = {{"OTIO_SCHEMA", "SerializableCollection.1"},
                             {"name", "Bin"},
                             {"children", Items{clip("not a timeline", 0, 1, 25),
                                                timeline({track("Video", {clip("First", 0, 10, 25)})}),
                                                timeline({track("Video", {clip("Second", 0, 20, 25)})})}}};
    const testsupport::ToolRun first = write(collection.dump());
    ASSERT_EQ(first.exitCode, 0) << first.output;
    EXPECT_NE(first.output.find("document: a SerializableCollection of 2 Timelines: the first written"), std::string::npos);
    EXPECT_EQ(otiotest::hostView(output)["tracks"][0]["events"][0]["name"], "First");
    const testsupport::ToolRun second = write(collection.dump(), " --timeline 2");
    ASSERT_EQ(second.exitCode, 0) << second.output;
    EXPECT_TRUE(noteLines(second.output).empty()) << second.output;
    EXPECT_EQ(otiotest::hostView(output)["tracks"][0]["events"][0]["name"], "Second");
    std::filesystem::remove(output);
    expectRefused(collection, "document: --timeline 3: the collection holds 2 Timelines", " --timeline 3");
    expectRefused(collection, "document: a SerializableCollection of 2 Timelines", " --strict");
}

// The other reader's documents: every one written, its notes counted in its summary, and
// every track that has no nest read back with the reference's cuts: clip names, and each
// clip's visible part (between its transitions' cut points) within half an edit unit. A
// track with nests shows what the reference shows at every edit unit, and keeps its length.
struct VisibleClip {
    std::string name;
    double start, end;  // seconds
};

std::vector<VisibleClip> referenceClips(const Json& track, bool& nested) {
    std::vector<VisibleClip> clips;
    double position = 0;
    for (const Json& item : track["children"]) {
        const std::string schema = item["OTIO_SCHEMA"].get<std::string>();
        nested = nested || schema.rfind("Stack", 0) == 0 || schema.rfind("Track", 0) == 0;
        if (schema.rfind("Transition", 0) == 0 || nested) continue;
        const Json& duration = item["source_range"]["duration"];
        const double length = duration["value"].get<double>() / duration["rate"].get<double>();
        if (schema.rfind("Clip", 0) == 0 && item.value("enabled", true))
            clips.push_back({item["name"].get<std::string>(), position, position + length});
        position += length;
    }
    return clips;
}

// A member that may be absent or null, as an array without copying it.
const Json& listOf(const Json& item, const char* key) {
    static const Json kNone = Json::array();
    return item.contains(key) && !item[key].is_null() ? item[key] : kNone;
}

// An item's length in seconds, a nest's from its children where it gives none.
double itemSeconds(const Json& item) {
    if (item.contains("source_range") && !item["source_range"].is_null()) {
        const Json& duration = item["source_range"]["duration"];
        return duration["value"].get<double>() / duration["rate"].get<double>();
    }
    const bool stack = item["OTIO_SCHEMA"].get<std::string>().rfind("Stack", 0) == 0;
    double length = 0;
    for (const Json& child : listOf(item, "children"))
        if (child["OTIO_SCHEMA"].get<std::string>().rfind("Transition", 0) != 0)
            length = stack ? std::max(length, itemSeconds(child)) : length + itemSeconds(child);
    return length;
}

bool isSchema(const Json& item, const char* schema) { return item["OTIO_SCHEMA"].get<std::string>().rfind(schema, 0) == 0; }

double seconds(const Json& time) { return time["value"].get<double>() / time["rate"].get<double>(); }

// What the reference shows at `t` seconds into `item`, found by descending through it rather
// than by flattening it: the clip's name, "" for nothing. A Stack shows its top-most layer
// that shows something; trims shift, time warps scale the time inside.
std::string shownAt(const Json& item, double t) {
    if (item.contains("enabled") && item["enabled"] == false) return "";
    if (isSchema(item, "Clip")) return item["name"].get<std::string>();
    if (!isSchema(item, "Stack") && !isSchema(item, "Track")) return "";
    for (const Json& effect : listOf(item, "effects"))
        if (isSchema(effect, "LinearTimeWarp")) t *= effect["time_scalar"].get<double>();
    if (item.contains("source_range") && !item["source_range"].is_null()) t += seconds(item["source_range"]["start_time"]);
    const Json& children = listOf(item, "children");
    if (isSchema(item, "Stack")) {
        for (size_t i = children.size(); i-- > 0;)
            if (t < itemSeconds(children[i]))
                if (std::string name = shownAt(children[i], t); !name.empty()) return name;
        return "";
    }
    double start = 0;
    for (const Json& child : children) {
        if (isSchema(child, "Transition")) continue;
        const double length = itemSeconds(child);
        if (t < start + length) return shownAt(child, t - start);
        start += length;
    }
    return "";
}

// A flattened track, sampled at the middle of its edit units (of at most 5,000 of them, spread
// over the track): the written clip there is the one the reference shows, except within half
// an edit unit of a cut, where rounding may move it.
void expectFlattenedLike(const Json& reference, const Json& written, const std::vector<VisibleClip>& clips) {
    const double unit = 1 / written["editRate"].get<double>();
    const double length = itemSeconds(reference);
    const double step = unit * std::max(1.0, std::floor(length / unit / 5000));
    size_t next = 0, compared = 0;
    for (double t = unit / 2; t < length; t += step) {
        while (next < clips.size() && clips[next].end <= t) ++next;
        const std::string got = next < clips.size() && clips[next].start <= t ? clips[next].name : "";
        const std::string expected = shownAt(reference, t);
        if (shownAt(reference, t - unit / 2) != expected || shownAt(reference, t + unit / 2 - 1e-9) != expected) continue;
        EXPECT_EQ(got, expected) << "at " << t << " s";
        if (got != expected) return;
        ++compared;
    }
    EXPECT_GT(compared, 0u);
    double end = 0;
    for (const Json& event : written["events"]) {
        if (event["kind"] == "transition") end -= event["length"].get<double>();
        if (event["kind"] != "effect" && event["kind"] != "transition") end += event["length"].get<double>();
    }
    EXPECT_NEAR(end * unit, length, unit / 2 + 1e-6);
}

std::vector<VisibleClip> writtenClips(const Json& track) {
    std::vector<VisibleClip> clips;
    const Json& events = track["events"];
    const double rate = track["editRate"].get<double>();
    int64_t position = 0;
    for (size_t i = 0; i < events.size(); ++i) {
        const Json& event = events[i];
        const int64_t length = event["length"].get<int64_t>();
        if (event["kind"] == "transition") position -= length;
        if (event["kind"] == "effect" || event["kind"] == "transition") continue;
        if (event["kind"] == "clip") {
            size_t next = i + 1;
            while (next < events.size() && events[next]["kind"] == "effect") ++next;
            const bool before = i > 0 && events[i - 1]["kind"] == "transition";
            const bool after = next < events.size() && events[next]["kind"] == "transition";
            const int64_t head = before ? events[i - 1]["cutPoint"].get<int64_t>() : 0;
            const int64_t tail = after ? events[next]["length"].get<int64_t>() - events[next]["cutPoint"].get<int64_t>() : 0;
            clips.push_back({event["name"].get<std::string>(), (position + head) / rate, (position + length - tail) / rate});
        }
        position += length;
    }
    return clips;
}

TEST_F(OtioWrite, EveryReferenceDocumentIsWrittenWithItsCuts) {
    const std::filesystem::path references = testsupport::samplesDir() + "/../otio-adapter-reference";
    if (!std::filesystem::is_directory(references)) GTEST_SKIP() << "no " << references;
    int documents = 0, tracksCompared = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(references)) {
        if (entry.path().extension() != ".otio") continue;
        SCOPED_TRACE(entry.path().filename().string());
        ++documents;
        const testsupport::ToolRun run = testsupport::runTool("write " + testsupport::quoted(entry.path().string()) + " " + output);
        ASSERT_EQ(run.exitCode, 0) << run.output;
        const std::vector<std::string> notes = noteLines(run.output);
        if (!notes.empty()) {
            int counted = 0;
            std::istringstream summary(run.output.substr(run.output.find(" items written; ") + 16));
            for (std::string word; summary >> word;)
                if (std::isdigit(static_cast<unsigned char>(word[0])) && word.find('.') == std::string::npos &&
                    word.find("ms") == std::string::npos)
                    counted += std::stoi(word);
            EXPECT_EQ(counted, int(notes.size())) << run.output;
        }
        std::ifstream in(entry.path());
        const Json reference = Json::parse(in);
        const Json view = otiotest::hostView(output);
        size_t written = 0;
        for (const Json& track : reference["tracks"]["children"]) {
            const std::string kind = track["kind"].get<std::string>();
            if (kind != "Video" && kind != "Audio") continue;
            const Json& read = view["tracks"][written++];
            bool nested = false;
            const std::vector<VisibleClip> expected = referenceClips(track, nested);
            const std::vector<VisibleClip> got = writtenClips(read);
            if (nested) expectFlattenedLike(track, read, got);
            if (nested || (track.contains("source_range") && !track["source_range"].is_null())) continue;
            const double tolerance = 0.5 / read["editRate"].get<double>() + 1e-6;
            ASSERT_EQ(got.size(), expected.size()) << "track " << written;
            for (size_t c = 0; c < got.size(); ++c) {
                EXPECT_EQ(got[c].name, expected[c].name);
                EXPECT_NEAR(got[c].start, expected[c].start, tolerance) << got[c].name;
                EXPECT_NEAR(got[c].end, expected[c].end, tolerance) << got[c].name;
            }
            ++tracksCompared;
        }
    }
    EXPECT_EQ(documents, 57);
    EXPECT_GE(tracksCompared, 80);
}

}  // namespace

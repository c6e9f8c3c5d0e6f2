// Every sample through OpenTimelineIO and back: AAF -> aafbridge otio -> aafbridge write ->
// the reader gives the tracks, events, transitions, markers and timecode of the original,
// except what the writer cannot express, listed here with the reason.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "OtioTestSupport.h"

namespace {

using otiotest::Json;

// Samples the writer cannot take as they stand. The round trip is written with --strict, so
// that nothing comes back changed unnoticed; these it must refuse, naming the item.
struct Refused {
    const char* sample;
    const char* message;
    const char* reason;
};
const Refused kRefused[] = {
    {"resolve/DR_Mono_Clip_Positioning.aaf", "is not a whole number of edit units",
     "sound tracks at 48000 beside a picture track at 24: the writer writes every track at one rate, and these "
     "positions fall between its frames"},
    {"resolve/DR_Multichannel_5.1_single_source.aaf", "is not a whole number of edit units", "as above"},
    {"resolve/DR_Multichannel_stereo_single_source.aaf", "is not a whole number of edit units", "as above"},
    {"resolve/DR_Stereo_Clip_Positioning.aaf", "is not a whole number of edit units", "as above"},
    {"media-composer/transitions.aaf", "out_offset: is 0",
     "dissolves that end at their cut point into a clip: the writer puts a filler after every such transition"},
};

const Refused* refusedFor(const std::string& path) {
    for (const Refused& r : kRefused)
        if (path.size() >= std::string(r.sample).size() && path.compare(path.size() - std::string(r.sample).size(), std::string::npos, r.sample) == 0)
            return &r;
    return nullptr;
}

// Effects the writer has no way to write are taken out of the document before it is
// written, and out of both views before the comparison:
// - operations other than gain, pan and superimpose: the writer has no call for them. Speed
//   changes are among them: the reader folds the speed into the clip and reports the group
//   as another effect;
// - effects over a filler or a transition, over several events, or with nothing before
//   them: the writer's effects cover the one clip before them;
// - effects without values: the writer's effect calls take at least one.
bool writable(uint32_t type, int64_t length, size_t values, const std::string& covered, int64_t coveredLength) {
    return type < 3 && covered == "clip" && length == coveredLength && values > 0;
}

// The document's items follow the view's events that are not effects, one for one.
void removeUnwritableEffects(Json& otio, const Json& view) {
    for (size_t t = 0; t < view["tracks"].size(); ++t) {
        Json& track = otio["tracks"]["children"][t];
        track["effects"] = Json::array();
        size_t item = 0;
        for (const Json& event : view["tracks"][t]["events"]) {
            if (event["kind"] == "effect") continue;
            Json& effects = track["children"][item++]["effects"];
            Json kept = Json::array();
            for (const Json& effect : effects) {
                const Json& data = effect["metadata"]["aafbridge"];
                if (writable(data["effectType"], data["length"], data["params"].size(), event["kind"], event["length"]))
                    kept.push_back(effect);
            }
            if (event["kind"] != "transition") effects = kept;
        }
    }
}

// The view as compared. The writer puts a transition's own filler beside it, so adjacent
// fillers are merged, and empty ones (empty gaps are not written) dropped.
struct Event {
    std::string kind, name, path;
    int64_t length = 0, inPoint = 0, cutPoint = 0;
    uint32_t effectType = 0;
    std::vector<double> params = {}, keyFrames = {};
    bool video = false;
};

// The writer writes one parameter: a value per key frame, or the first value alone when
// there are fewer than two key frames.
Event writtenEffect(const Json& e) {
    Event effect{"effect", "", "", e["length"], 0, 0, e["effectType"], e["params"], e["keyFrames"], {}};
    if (effect.keyFrames.size() < 2) effect.keyFrames.clear();
    effect.params.resize(std::max<size_t>(1, effect.keyFrames.size()));
    return effect;
}

std::vector<Event> comparedEvents(const Json& view, const Json& track) {
    std::vector<Event> events;
    std::string lastItem;
    int64_t lastLength = 0;
    for (const Json& e : track["events"]) {
        const std::string kind = e["kind"];
        if (kind == "effect") {
            if (writable(e["effectType"], e["length"], e["params"].size(), lastItem, lastLength))
                events.push_back(writtenEffect(e));
            continue;
        }
        lastItem = kind;
        lastLength = e["length"];
        if (kind == "filler") {
            if (e["length"] == 0) continue;
            if (!events.empty() && events.back().kind == "filler")
                events.back().length += e["length"].get<int64_t>();
            else
                events.push_back({kind, "", "", e["length"]});
        } else if (kind == "transition") {
            events.push_back({kind, "", "", e["length"], 0, e["cutPoint"]});
        } else {
            std::string path;
            for (const Json& clip : view["clips"])
                if (clip["id"] == e["id"]) path = clip["path"];
            events.push_back({kind, e["name"], path, e["length"], e["inPoint"]});
            events.back().video = track["type"] == "video";
        }
    }
    return events;
}

bool isMxfSound(const Event& clip) {
    std::string path = clip.path;
    for (char& c : path) c = char(std::tolower(static_cast<unsigned char>(c)));
    return !clip.video && path.size() >= 4 && path.compare(path.size() - 4, 4, ".mxf") == 0;
}

void expectSameEvents(const std::vector<Event>& original, const std::vector<Event>& back, const std::string& where) {
    ASSERT_EQ(original.size(), back.size()) << where;
    for (size_t i = 0; i < original.size(); ++i) {
        const Event &a = original[i], &b = back[i];
        const std::string at = where + " event " + std::to_string(i);
        EXPECT_EQ(a.kind, b.kind) << at;
        EXPECT_EQ(a.length, b.length) << at;
        EXPECT_EQ(a.inPoint, b.inPoint) << at;
        EXPECT_EQ(a.name, b.name) << at;
        // The writer gives the sound tracks of an MXF clip no descriptor, so the reader finds
        // no path for such a clip.
        if (!isMxfSound(a)) {
            EXPECT_EQ(a.path, b.path) << at;
        }
        EXPECT_EQ(a.cutPoint, b.cutPoint) << at;
        EXPECT_EQ(a.effectType, b.effectType) << at;
        // The writer stores values as decimal fractions of at most 7 places; key frames come
        // back through fractions of the effect's length, truncated to edit units.
        ASSERT_EQ(a.params.size(), b.params.size()) << at;
        for (size_t p = 0; p < a.params.size(); ++p) EXPECT_NEAR(a.params[p], b.params[p], 1e-6) << at;
        ASSERT_EQ(a.keyFrames.size(), b.keyFrames.size()) << at;
        for (size_t k = 0; k < a.keyFrames.size(); ++k) EXPECT_NEAR(a.keyFrames[k], b.keyFrames[k], 1.0) << at;
    }
}

Json sortedMarkers(const Json& view) {
    std::vector<Json> markers(view["markers"].begin(), view["markers"].end());
    std::stable_sort(markers.begin(), markers.end(), [](const Json& a, const Json& b) {
        return a["position"] < b["position"];
    });
    return markers;
}

// The writer's timecode runs at the composition's whole rate. For compositions at a frame
// rate that is the original timecode's; Pro Tools compositions at the audio sample rate come
// back with a timecode of that many frames per second, at the same time.
Json expectedTimecode(const Json& original) {
    Json timecode = original["timecode"];
    if (original["tracks"].empty() || timecode["fps"] == 0) return timecode;
    const auto fps = uint32_t(std::ceil(original["tracks"][0]["editRate"].get<double>()));
    timecode["start"] = timecode["start"].get<uint64_t>() * fps / timecode["fps"].get<uint32_t>();
    timecode["fps"] = fps;
    return timecode;
}

void expectSameView(const Json& original, const Json& back, const std::string& sample) {
    EXPECT_EQ(expectedTimecode(original), back["timecode"]) << sample;
    EXPECT_EQ(sortedMarkers(original), sortedMarkers(back)) << sample;
    ASSERT_EQ(original["tracks"].size(), back["tracks"].size()) << sample;
    for (size_t t = 0; t < original["tracks"].size(); ++t) {
        const Json &a = original["tracks"][t], &b = back["tracks"][t];
        const std::string where = sample + " track " + std::to_string(t);
        EXPECT_EQ(a["type"], b["type"]) << where;
        EXPECT_EQ(a["editRate"], b["editRate"]) << where;
        expectSameEvents(comparedEvents(original, a), comparedEvents(back, b), where);
    }
}

TEST(OtioRoundTrip, EverySampleComesBackAsTheReaderSawIt) {
    SKIP_WITHOUT_SAMPLES();
    const std::string otioFile = otiotest::testFile(".otio"), aafFile = otiotest::testFile(".aaf");
    size_t compared = 0;
    for (const std::string& sample : testsupport::sampleFiles()) {
        const Json original = otiotest::hostView(sample);
        Json otio = otiotest::otioOf(sample);
        ASSERT_TRUE(otio.is_object()) << sample;
        removeUnwritableEffects(otio, original);
        otiotest::saveText(otioFile, otio.dump());
        std::filesystem::remove(aafFile);
        const testsupport::ToolRun write =
            testsupport::runTool("write --strict " + testsupport::quoted(otioFile) + " " + testsupport::quoted(aafFile));
        if (const Refused* refused = refusedFor(sample)) {
            EXPECT_EQ(write.exitCode, 1) << sample;
            EXPECT_NE(write.output.find("tracks.children["), std::string::npos) << write.output;
            EXPECT_NE(write.output.find(refused->message), std::string::npos) << write.output;
            continue;
        }
        ASSERT_EQ(write.exitCode, 0) << sample << "\n" << write.output;
        expectSameView(original, otiotest::hostView(aafFile), sample);
        ++compared;
    }
    EXPECT_EQ(compared + std::size(kRefused), testsupport::sampleFiles().size());
    std::filesystem::remove(otioFile);
    std::filesystem::remove(aafFile);
}

}  // namespace

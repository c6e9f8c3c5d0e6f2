// aafbridge otio: every sample gives a complete OTIO document whose tracks last as long as
// the host's; the demo composition maps item by item as the interchange rules say.
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "OtioTestSupport.h"

namespace {

using otiotest::Json;

// The fields each schema is written with.
const std::map<std::string, std::vector<const char*>> kSchemas = {
    {"RationalTime.1", {"value", "rate"}},
    {"TimeRange.1", {"start_time", "duration"}},
    {"Timeline.1", {"name", "metadata", "global_start_time", "tracks"}},
    {"Stack.1", {"name", "metadata", "source_range", "effects", "markers", "enabled", "children"}},
    {"Track.1", {"name", "metadata", "source_range", "effects", "markers", "enabled", "kind", "children"}},
    {"Clip.2", {"name", "metadata", "source_range", "effects", "markers", "enabled", "media_references",
                "active_media_reference_key"}},
    {"Gap.1", {"name", "metadata", "source_range", "effects", "markers", "enabled"}},
    {"Transition.1", {"name", "metadata", "transition_type", "in_offset", "out_offset"}},
    {"ExternalReference.1", {"name", "metadata", "target_url", "available_range", "available_image_bounds"}},
    {"MissingReference.1", {"name", "metadata", "available_range", "available_image_bounds"}},
    {"Effect.1", {"name", "metadata", "effect_name"}},
    {"Marker.2", {"name", "metadata", "marked_range", "color", "comment"}},
};

// Every object outside metadata carries a known schema with all its fields; every number in
// the document is finite (a non-finite double would have been written as null).
void expectValidObject(const Json& object, const std::string& where) {
    ASSERT_TRUE(object.is_object()) << where;
    ASSERT_TRUE(object.contains("OTIO_SCHEMA")) << where;
    auto schema = kSchemas.find(object["OTIO_SCHEMA"]);
    ASSERT_NE(schema, kSchemas.end()) << where << ": " << object["OTIO_SCHEMA"];
    for (const char* field : schema->second) EXPECT_TRUE(object.contains(field)) << where << " lacks " << field;
    if (schema->first == "RationalTime.1") {
        ASSERT_TRUE(object["value"].is_number() && object["rate"].is_number()) << where;
        EXPECT_TRUE(std::isfinite(object["value"].get<double>()) && object["rate"].get<double>() > 0) << where;
    }
    for (const auto& [key, value] : object.items()) {
        if (key == "metadata") continue;
        if (value.is_object() && key != "media_references") expectValidObject(value, where + "." + key);
        if (key == "media_references")
            for (const auto& [name, reference] : value.items()) expectValidObject(reference, where + "." + name);
        if (value.is_array())
            for (size_t i = 0; i < value.size(); ++i) expectValidObject(value[i], where + "." + key + "[" + std::to_string(i) + "]");
    }
}

void expectFiniteNumbers(const Json& value) {
    if (value.is_number()) {
        EXPECT_TRUE(std::isfinite(value.get<double>()));
    }
    if (value.is_structured())
        for (const Json& child : value) expectFiniteNumbers(child);
}

// Where a track ends for the host: its clips and fillers one after another, each transition
// overlapping its neighbours by its length; effects take no time.
int64_t hostTrackLength(const Json& track) {
    int64_t length = 0;
    for (const Json& event : track["events"]) {
        if (event["kind"] == "clip" || event["kind"] == "filler") length += event["length"].get<int64_t>();
        if (event["kind"] == "transition") length -= event["length"].get<int64_t>();
    }
    return length;
}

int64_t otioTrackLength(const Json& track) {
    double length = 0;
    for (const Json& item : track["children"])
        if (item["OTIO_SCHEMA"] != "Transition.1") length += item["source_range"]["duration"]["value"].get<double>();
    return int64_t(length);
}

TEST(OtioExport, EverySampleGivesAValidTimelineAsLongAsTheHostsTracks) {
    SKIP_WITHOUT_SAMPLES();
    for (const std::string& sample : testsupport::sampleFiles()) {
        const Json view = otiotest::hostView(sample);
        const Json otio = otiotest::otioOf(sample);
        ASSERT_TRUE(otio.is_object()) << sample;
        expectValidObject(otio, sample);
        expectFiniteNumbers(otio);
        EXPECT_EQ(otio["OTIO_SCHEMA"], "Timeline.1");
        const Json& tracks = otio["tracks"]["children"];
        ASSERT_EQ(tracks.size(), view["tracks"].size()) << sample;
        EXPECT_EQ(otio["tracks"]["markers"].size(), view["markers"].size()) << sample;
        for (size_t t = 0; t < tracks.size(); ++t) {
            EXPECT_EQ(tracks[t]["kind"], view["tracks"][t]["type"] == "video" ? "Video" : "Audio") << sample;
            EXPECT_EQ(otioTrackLength(tracks[t]), hostTrackLength(view["tracks"][t])) << sample << " track " << t;
        }
    }
}

struct DemoExport : testing::Test {
    std::string aaf = otiotest::testFile(".aaf"), otioFile = otiotest::testFile(".otio");
    Json otio;
    void SetUp() override {
        std::filesystem::remove(aaf);
        ASSERT_EQ(testsupport::runTool("demo " + aaf).exitCode, 0);
        otio = otiotest::otioOf(aaf);
        ASSERT_TRUE(otio.is_object());
    }
    void TearDown() override {
        std::filesystem::remove(aaf);
        std::filesystem::remove(otioFile);
    }
    static Json range(const Json& item) {
        return {item["source_range"]["start_time"]["value"], item["source_range"]["duration"]["value"]};
    }
};

TEST_F(DemoExport, ClipsGapsAndTransitionsTakeTheOverlapOutOfTheirNeighbours) {
    EXPECT_EQ(otio["name"], std::filesystem::path(aaf).stem().string());
    EXPECT_EQ(otio["global_start_time"]["value"], 90000.0);
    EXPECT_EQ(otio["global_start_time"]["rate"], 25.0);
    const Json& video = otio["tracks"]["children"][0];
    EXPECT_EQ(video["name"], "V1");
    const Json& items = video["children"];
    ASSERT_EQ(items.size(), 5u);
    // Interview 100+250 and City 200+300 around a 25-frame dissolve cut at 12.
    EXPECT_EQ(items[0]["name"], "Interview");
    EXPECT_EQ(range(items[0]), Json({100.0, 237.0}));
    EXPECT_EQ(items[1]["OTIO_SCHEMA"], "Transition.1");
    EXPECT_EQ(items[1]["in_offset"]["value"], 12.0);
    EXPECT_EQ(items[1]["out_offset"]["value"], 13.0);
    EXPECT_EQ(range(items[2]), Json({212.0, 288.0}));
    EXPECT_EQ(items[4]["OTIO_SCHEMA"], "Gap.1");
    EXPECT_EQ(range(items[4]), Json({0.0, 50.0}));
    const Json& media = items[0]["media_references"]["DEFAULT_MEDIA"];
    EXPECT_EQ(media["OTIO_SCHEMA"], "ExternalReference.1");
    EXPECT_EQ(media["target_url"], "/Volumes/Media/interview.mov");
    EXPECT_EQ(items[0]["metadata"]["aafbridge"]["slot"], 1);
}

TEST_F(DemoExport, EffectsSitOnTheirClipWithValuesAndKeyFrames) {
    // The speed change comes back from the reader as another effect over the clip.
    const Json& speedClip = otio["tracks"]["children"][0]["children"][3];
    ASSERT_EQ(speedClip["effects"].size(), 1u);
    EXPECT_EQ(speedClip["effects"][0]["effect_name"], "Other");
    const Json& audio = otio["tracks"]["children"][1];
    EXPECT_EQ(audio["name"], "A1");
    const Json& volume = audio["children"][0]["effects"];
    ASSERT_EQ(volume.size(), 1u);
    EXPECT_EQ(volume[0]["effect_name"], "Volume");
    const Json& values = volume[0]["metadata"]["aafbridge"];
    EXPECT_EQ(values["params"], Json({0.0, 1.0, 1.0, 0.0}));
    EXPECT_EQ(values["keyFrames"], Json({0.0, 0.1, 0.9, 1.0}));
    EXPECT_EQ(values["keyFrameOffsets"], Json({0, 50, 450, 500}));
}

TEST_F(DemoExport, MarkersSitOnTheTopStack) {
    const Json& markers = otio["tracks"]["markers"];
    ASSERT_EQ(markers.size(), 2u);
    EXPECT_EQ(markers[1]["name"], "Check the speed change");
    EXPECT_EQ(markers[1]["marked_range"]["start_time"]["value"], 400.0);
    EXPECT_EQ(markers[1]["marked_range"]["duration"]["value"], 0.0);
    EXPECT_EQ(markers[1]["color"], "RED");
}

TEST_F(DemoExport, OutputFileHoldsWhatStandardOutputShows) {
    ASSERT_EQ(testsupport::runTool("otio --host-view " + aaf + " -o " + otioFile).exitCode, 0);
    std::ifstream in(otioFile);
    EXPECT_EQ(Json::parse(in), otio);
}

TEST(OtioExport, BadArgumentsAndFilesAreReported) {
    const std::string notAaf = otiotest::testFile(".aaf");
    otiotest::saveText(notAaf, "not an AAF file");
    const testsupport::ToolRun bad = testsupport::runTool("otio " + notAaf);
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.output.find("is not an AAF file"), std::string::npos) << bad.output;
    const testsupport::ToolRun badHostView = testsupport::runTool("otio --host-view " + notAaf);
    EXPECT_EQ(badHostView.exitCode, 1);
    EXPECT_NE(badHostView.output.find("cannot open"), std::string::npos) << badHostView.output;
    EXPECT_EQ(testsupport::runTool("otio --flatten --host-view " + notAaf).exitCode, 1);
    EXPECT_EQ(testsupport::runTool("otio").exitCode, 2);
    EXPECT_EQ(testsupport::runTool("otio " + notAaf + " -x out.otio").exitCode, 2);
    std::filesystem::remove(notAaf);
}

}  // namespace

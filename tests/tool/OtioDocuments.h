#pragma once
// OpenTimelineIO documents made by hand for the tests of `aafbridge write`, and the fixture
// that writes them.
#include <string>
#include <vector>

#include "OtioTestSupport.h"

namespace otiodoc {

using otiotest::Json;

inline Json time(double value, double rate) { return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", value}, {"rate", rate}}; }

inline Json range(double start, double duration, double rate) {
    return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", time(start, rate)}, {"duration", time(duration, rate)}};
}

inline Json reference(const std::string& url) {
    return {{"OTIO_SCHEMA", "ExternalReference.1"}, {"name", ""}, {"metadata", Json::object()}, {"target_url", url},
            {"available_range", nullptr}};
}

inline Json clip(const std::string& name, double start, double duration, double rate, const std::string& url = "/media/a.mov") {
    return {{"OTIO_SCHEMA", "Clip.2"},
            {"name", name},
            {"source_range", range(start, duration, rate)},
            {"effects", Json::array()},
            {"markers", Json::array()},
            {"media_references", {{"DEFAULT_MEDIA", reference(url)}}},
            {"active_media_reference_key", "DEFAULT_MEDIA"}};
}

inline Json gap(double duration, double rate) {
    return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", range(0, duration, rate)}};
}

inline Json transition(double in, double out, double rate) {
    return {{"OTIO_SCHEMA", "Transition.1"}, {"transition_type", "SMPTE_Dissolve"},
            {"in_offset", time(in, rate)}, {"out_offset", time(out, rate)}};
}

inline Json marker(const std::string& name, double at, double rate) {
    return {{"OTIO_SCHEMA", "Marker.2"}, {"name", name}, {"marked_range", range(at, 0, rate)}, {"color", "RED"}};
}

inline Json effect(const std::string& name, Json params, Json keyFrames = Json::array()) {
    return {{"OTIO_SCHEMA", "Effect.1"}, {"effect_name", name},
            {"metadata", {{"aafbridge", {{"params", params}, {"keyFrames", keyFrames}}}}}};
}

// Lists of items are vectors: a braced list of one Json object would copy that object under
// some compilers (clang) and wrap it in an array under others (GCC).
using Items = std::vector<Json>;

inline Json track(const std::string& kind, Items children) {
    return {{"OTIO_SCHEMA", "Track.1"}, {"name", ""}, {"kind", kind}, {"children", children}};
}

inline Json timeline(Items tracks, Items markers = {}, Json start = nullptr) {
    return {{"OTIO_SCHEMA", "Timeline.1"},
            {"name", "Cut"},
            {"global_start_time", start},
            {"tracks", {{"OTIO_SCHEMA", "Stack.1"}, {"markers", markers}, {"children", tracks}}}};
}

struct OtioWrite : testing::Test {
    std::string input = otiotest::testFile(".otio"), output = otiotest::testFile(".aaf");
    void SetUp() override { std::filesystem::remove(output); }
    void TearDown() override {
        std::filesystem::remove(input);
        std::filesystem::remove(output);
    }
    testsupport::ToolRun write(const std::string& text, const std::string& flags = "") {
        otiotest::saveText(input, text);
        return testsupport::runTool("write " + input + " " + output + flags);
    }
    // The reader's view of the written file; fails the test when the write fails.
    Json written(const Json& document) {
        const testsupport::ToolRun run = write(document.dump());
        EXPECT_EQ(run.exitCode, 0) << run.output;
        return otiotest::hostView(output);
    }
    void expectRefused(const Json& document, const std::string& message, const std::string& flags = "") {
        const testsupport::ToolRun run = write(document.dump(), flags);
        EXPECT_EQ(run.exitCode, 1) << message;
        EXPECT_NE(run.output.find(message), std::string::npos) << run.output;
        EXPECT_FALSE(std::filesystem::exists(output)) << message;
    }
};

}  // namespace otiodoc

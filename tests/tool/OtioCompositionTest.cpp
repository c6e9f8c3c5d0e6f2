// `aafbridge otio` reads the composition as the file holds it: every sample against what the
// most complete other AAF reader makes of it (../shared/otio-adapter-reference), and the
// markers of MC_Markers as their own comments describe them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "OtioTestSupport.h"
#include "reader/InMemoryFile.h"
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

struct MarkerSeen {
    std::string colour;
    double seconds;  // from the timeline's start
    std::string name, comment;
};

struct Reading {
    std::vector<ClipSeen> clips;
    std::vector<MarkerSeen> markers;
    int nestedItems = 0;
    std::multiset<double> timeWarps;
};

double seconds(const Json& time) { return time["value"].get<double>() / time["rate"].get<double>(); }

// The part of an item's own time that plays, in seconds: a Stack's or a nested Track's range
// picks from its children, and both readers trim in different places (the Stack, or the
// layers inside it), so clips are compared by the frames that play.
struct Window {
    double from = -1e300, to = 1e300;
    double origin = 0;  // the timeline's time at the item's own time 0
};

void collect(const Json& item, int depth, const Window& window, Reading& out);

void collectChildren(const Json& track, int depth, const Window& window, Reading& out) {
    double position = 0;
    for (const Json& child : track["children"]) {
        if (child["OTIO_SCHEMA"].get<std::string>().rfind("Transition", 0) == 0) continue;
        const Json& range = child["source_range"];
        const double duration = range.is_null() ? 0 : seconds(range["duration"]);
        const double start = range.is_null() ? 0 : seconds(range["start_time"]);
        const double from = std::max(position, window.from), to = std::min(position + duration, window.to);
        collect(child, depth + 1,
                {start + from - position, start + std::max(from, to) - position, window.origin + position - start}, out);
        position += duration;
    }
}

void collect(const Json& item, int depth, const Window& window, Reading& out) {
    const std::string schema = item["OTIO_SCHEMA"];
    if (schema.rfind("Clip", 0) == 0 && window.to > window.from) {
        ClipSeen clip{item["name"], window.from, window.to - window.from, "", {}};
        for (const auto& [key, reference] : item["media_references"].items())
            if (reference.contains("target_url")) {
                clip.urls.insert(normalisedUrl(reference["target_url"]));
                if (key == item["active_media_reference_key"]) clip.url = normalisedUrl(reference["target_url"]);
            }
        out.clips.push_back(clip);
    }
    if (item.contains("markers"))
        for (const Json& marker : item["markers"])
            out.markers.push_back({marker["color"], window.origin + seconds(marker["marked_range"]["start_time"]),
                                   marker["name"], marker["comment"]});
    if (depth >= 2 && (schema.rfind("Stack", 0) == 0 || schema.rfind("Track", 0) == 0)) ++out.nestedItems;
    if (item.contains("effects"))
        for (const Json& effect : item["effects"])
            if (effect.contains("time_scalar")) out.timeWarps.insert(std::round(effect["time_scalar"].get<double>() * 1e6));
    if (schema.rfind("Track", 0) == 0) return collectChildren(item, depth, window, out);
    if (item.contains("children"))
        for (const Json& child : item["children"]) collect(child, depth + 1, window, out);
}

Reading readingOf(const Json& timeline) {
    Reading reading;
    collect(timeline["tracks"], 0, Window(), reading);
    return reading;
}

// A tenth of a frame at any rate the samples use.
bool sameTime(double a, double b) { return std::fabs(a - b) < 0.002; }

// The reference's items (clips, markers) that the document does not hold alike, each of ours
// standing for one of theirs; each missing one as `describe` names it.
template <class Item, class Same, class Describe>
std::vector<std::string> unmatched(const std::vector<Item>& theirs, const std::vector<Item>& ours, Same same,
                                   Describe describe) {
    std::vector<bool> used(ours.size(), false);
    std::vector<std::string> missing;
    for (const Item& item : theirs) {
        size_t i = 0;
        while (i < ours.size() && (used[i] || !same(ours[i], item))) ++i;
        if (i < ours.size())
            used[i] = true;
        else
            missing.push_back(describe(item));
    }
    return missing;
}

// Clips with the same name, the same frames playing and, where the reference names a media
// file, that file among ours.
std::vector<std::string> missingClips(const Reading& reference, const Reading& ours) {
    return unmatched(
        reference.clips, ours.clips,
        [](const ClipSeen& clip, const ClipSeen& theirs) {
            return clip.name == theirs.name && sameTime(clip.startSeconds, theirs.startSeconds) &&
                   sameTime(clip.durationSeconds, theirs.durationSeconds) &&
                   (theirs.url.empty() || clip.urls.count(theirs.url));
        },
        [](const ClipSeen& clip) { return clip.name + " at " + std::to_string(clip.startSeconds) + " s"; });
}

// Where the two readers part on purpose, and the check that the difference concerns.
enum class Check { Clips, Nesting, Markers };
struct Difference {
    Check check;
    const char* why;
};
const std::map<std::string, Difference> kDifferences = {
    {"media-composer/MC_Audio_Levels",
     {Check::Nesting, "the reference nests a sub-clip and master clips whose slot holds their own gain; we follow "
                      "the source chain through them (metadata.aafbridge.sourceChain)"}},
    {"media-composer/MC_Metadata",
     {Check::Nesting, "the reference nests the sub-clip; we resolve it into the clip's source chain"}},
    {"media-composer/subclip_sourceclip_references_compositionmob_with_mastermob",
     {Check::Nesting, "the reference nests the sub-clip; we resolve it into the clip's source chain"}},
    {"media-composer/multiple_markers",
     {Check::Markers, "the reference puts the TC1 marker at -3525 s, measured against a clip's source start; its "
                      "comment's seq.f2604 places it at 1795 frames, as V1's seq.f1104 is its 295"}},
    {"media-composer/MC_Audio_Warp",
     {Check::Clips, "the audio clips' file mobs name a slot 0 their import mob does not have; the reference "
                    "starts them at 7817.8 (the time warp's offset added), we at the file mob's 7817"}},
};

// Markers in the same colour at the same time with the same text (the reference names markers
// by their comment).
std::vector<std::string> missingMarkers(const Reading& reference, const Reading& ours) {
    return unmatched(
        reference.markers, ours.markers,
        [](const MarkerSeen& marker, const MarkerSeen& theirs) {
            return marker.colour == theirs.colour && sameTime(marker.seconds, theirs.seconds) &&
                   (marker.name == theirs.name || marker.comment == theirs.name);
        },
        [](const MarkerSeen& marker) { return marker.colour + " at " + std::to_string(marker.seconds) + " s"; });
}

bool differs(const std::string& sample, Check check) {
    auto found = kDifferences.find(sample);
    return found != kDifferences.end() && found->second.check == check;
}

}  // namespace

TEST(CompositionExport, CarriesWhatTheReferenceReaderCarries) {
    if (!std::filesystem::is_directory(referenceDir())) GTEST_SKIP() << "no " << referenceDir();
    int compared = 0;
    for (const std::string& aaf : testsupport::sampleFiles()) {
        const std::string relative =
            std::filesystem::relative(aaf, testsupport::samplesDir()).replace_extension("").string();
        const std::string referenceFile = referenceDir() + "/" + relative + ".otio";
        if (!std::filesystem::exists(referenceFile)) continue;
        SCOPED_TRACE(relative);
        std::ifstream in(referenceFile);
        const Reading reference = readingOf(Json::parse(in));
        const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
        ASSERT_TRUE(document.is_object());
        const Reading ours = readingOf(document);
        if (!differs(relative, Check::Clips)) {
            EXPECT_EQ(missingClips(reference, ours), std::vector<std::string>());
        }
        if (!differs(relative, Check::Nesting)) {
            EXPECT_GE(ours.nestedItems, reference.nestedItems);
        }
        if (!differs(relative, Check::Markers)) {
            EXPECT_EQ(missingMarkers(reference, ours), std::vector<std::string>());
        }
        EXPECT_TRUE(std::includes(ours.timeWarps.begin(), ours.timeWarps.end(), reference.timeWarps.begin(),
                                  reference.timeWarps.end()));
        ++compared;
    }
    EXPECT_EQ(compared, 57);
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

namespace {

// What a track's items last, transitions taking nothing, in the track's edit units.
double trackDuration(const Json& track) {
    double total = 0;
    for (const Json& item : track["children"])
        if (item.contains("source_range") && !item["source_range"].is_null())
            total += item["source_range"]["duration"]["value"].get<double>();
    return total;
}

void expectTracksLastAsLongAsTheirSlots(const Json& document) {
    for (const Json& track : document["tracks"]["children"])
        EXPECT_EQ(trackDuration(track), track["metadata"]["aafbridge"]["length"].get<double>()) << track["name"];
}

}  // namespace

TEST(CompositionExport, EveryTrackLastsAsLongAsItsSlot) {
    for (const std::string& aaf : testsupport::sampleFiles()) {
        SCOPED_TRACE(aaf);
        const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
        ASSERT_TRUE(document.is_object());
        expectTracksLastAsLongAsTheirSlots(document);
    }
    // A transition, then an effect over the last clip: the effect takes the transition's cut.
    readertest::InMemorySession s;
    s.slot(s.mob(AUID_AAFMasterMob, 10, L"master"), 1, s.clip(0, 0, 1000, 0), 1);
    aafkit::Object& sequence = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    aafkit::appendComponent(sequence, s.clip(10, 1, 50, 0));
    aafkit::appendComponent(sequence, aafkit::createTransition(s.file(), kAAFDataDef_Sound, 10, 4,
                                                               s.group(kAAFOperationDef_MonoAudioDissolve, 10)));
    aafkit::Object& gain = s.group(kAAFOperationDef_MonoAudioGain, 40);
    s.input(gain, s.clip(10, 1, 40, 100));
    aafkit::appendComponent(sequence, gain);
    s.slot(s.mob(AUID_AAFCompositionMob, 1, L"top", &kAAFUsage_TopLevel), 1, sequence, 1);
    const std::string aaf = otiotest::testFile(".aaf");
    ASSERT_TRUE(s.file().save(aaf).ok());
    const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
    ASSERT_EQ(document["tracks"]["children"].size(), 1u);
    EXPECT_EQ(document["tracks"]["children"][0]["metadata"]["aafbridge"]["length"], 80);
    expectTracksLastAsLongAsTheirSlots(document);
    std::filesystem::remove(aaf);
}

namespace {

bool holdsNestedTracks(const Json& track) {
    for (const Json& item : track["children"])
        if (item["OTIO_SCHEMA"] == "Track.1") return true;
    return false;
}

std::vector<std::string> clipsPlayed(const Json& document) {
    std::vector<std::string> clips;
    for (const ClipSeen& clip : readingOf(document).clips)
        clips.push_back(clip.name + " " + std::to_string(clip.startSeconds) + "+" + std::to_string(clip.durationSeconds));
    std::sort(clips.begin(), clips.end());
    return clips;
}

}  // namespace

// --flatten splices nests into their tracks: the same frames play, from one level.
TEST(CompositionExport, FlatteningKeepsWhatPlays) {
    for (const std::string& aaf : testsupport::sampleFiles()) {
        SCOPED_TRACE(aaf);
        const Json nested = otiotest::toolJson("otio " + testsupport::quoted(aaf));
        const Json flat = otiotest::toolJson("otio --flatten " + testsupport::quoted(aaf));
        ASSERT_TRUE(flat.is_object());
        for (const Json& track : flat["tracks"]["children"]) EXPECT_FALSE(holdsNestedTracks(track)) << track["name"];
        expectTracksLastAsLongAsTheirSlots(flat);
        EXPECT_EQ(clipsPlayed(flat), clipsPlayed(nested));
    }
    // A clip showing frames 10 to 40 of another composition's three clips.
    readertest::InMemorySession s;
    s.slot(s.mob(AUID_AAFMasterMob, 10, L"master"), 1, s.clip(0, 0, 1000, 0), 1);
    aafkit::Object& inner = aafkit::createSequence(s.file(), kAAFDataDef_Sound);
    for (int64_t start : {100, 200, 300}) aafkit::appendComponent(inner, s.clip(10, 1, 20, start));
    s.slot(s.mob(AUID_AAFCompositionMob, 2, L"nest", &kAAFUsage_LowerLevel), 1, inner);
    s.slot(s.mob(AUID_AAFCompositionMob, 1, L"top", &kAAFUsage_TopLevel), 1, s.clip(2, 1, 30, 10), 1);
    const std::string aaf = otiotest::testFile(".aaf");
    ASSERT_TRUE(s.file().save(aaf).ok());
    const Json nested = otiotest::toolJson("otio " + testsupport::quoted(aaf));
    const Json& stack = nested["tracks"]["children"][0]["children"][0];
    EXPECT_EQ(stack["OTIO_SCHEMA"], "Stack.1");
    EXPECT_EQ(stack["name"], "nest");
    EXPECT_EQ(stack["source_range"]["start_time"]["value"], 10.0);
    const Json flat = otiotest::toolJson("otio --flatten " + testsupport::quoted(aaf));
    const Json& items = flat["tracks"]["children"][0]["children"];
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0]["source_range"]["start_time"]["value"], 110.0);
    EXPECT_EQ(items[0]["source_range"]["duration"]["value"], 10.0);
    EXPECT_EQ(items[1]["source_range"]["start_time"]["value"], 200.0);
    EXPECT_EQ(items[1]["source_range"]["duration"]["value"], 20.0);
    EXPECT_EQ(clipsPlayed(flat), clipsPlayed(nested));
    std::filesystem::remove(aaf);
}

// Resolve's markers say where they are in their comments: "Marker is at position 01:01:30:00,
// last 10 frames and its color is purple".
TEST(CompositionExport, ResolveMarkersAreWhereTheirCommentsSay) {
    const std::string aaf = testsupport::sample("resolve/DR_Markers.aaf");
    if (!std::filesystem::exists(aaf)) GTEST_SKIP() << "no " << aaf;
    const Json document = otiotest::toolJson("otio " + testsupport::quoted(aaf));
    const Json& markers = document["tracks"]["markers"];
    ASSERT_EQ(markers.size(), 2u);
    const double start = document["global_start_time"]["value"].get<double>();
    for (const Json& marker : markers) {
        const std::string comment = marker["comment"];
        int hours = 0, minutes = 0, seconds = 0, frames = 0, length = 0;
        char colour[16] = {};
        const size_t at = comment.find("position ");
        ASSERT_NE(at, std::string::npos) << comment;
        ASSERT_EQ(std::sscanf(comment.c_str() + at, "position %d:%d:%d:%d, last %d frame", &hours, &minutes, &seconds,
                              &frames, &length),
                  5)
            << comment;
        const size_t named = comment.find("color is ");
        ASSERT_NE(named, std::string::npos) << comment;
        ASSERT_EQ(std::sscanf(comment.c_str() + named, "color is %15[a-z]", colour), 1) << comment;
        const double position = ((hours * 60 + minutes) * 60 + seconds) * 24.0 + frames - start;
        EXPECT_EQ(marker["marked_range"]["start_time"]["value"], position) << comment;
        EXPECT_EQ(marker["marked_range"]["duration"]["value"], double(length)) << comment;
        std::string expected = colour;
        for (char& c : expected) c = char(std::toupper(static_cast<unsigned char>(c)));
        EXPECT_EQ(marker["color"], expected) << comment;
    }
}

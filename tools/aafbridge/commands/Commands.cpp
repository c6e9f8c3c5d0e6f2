#include "commands/Commands.h"

namespace {

const Option kJson = {"--json", nullptr, "print JSON instead of text"};

}  // namespace

const std::vector<Command>& commands() {
    static const std::vector<Command> table = {
        {"info", {"FILE"}, {kJson}, "the file at a glance: kind, writers, mobs, compositions, embedded essence", runInfo},
        {"objects", {"FILE"}, {kJson}, "every object from the header down, properties decoded by type", runObjects},
        {"timeline",
         {"FILE"},
         {kJson, {"--sources", nullptr, "each clip's source: tape or file, source timecode, media, channel"}},
         "the composition exactly as a host sees it through the reader", runTimeline},
        {"copy", {"IN", "OUT"}, {}, "load IN and save every object unchanged into OUT", runCopy},
        {"write",
         {"INPUT", "OUTPUT.aaf"},
         {{"--strict", nullptr, "refuse an OpenTimelineIO timeline that needs changes instead of making them"},
          {"--timeline", "N", "of a SerializableCollection, the Nth Timeline (from 1) instead of the first"}},
         "build a file from a JSON description or an OpenTimelineIO timeline; each change a timeline needed is named on "
         "standard error, and the file written all the same (exit 0)",
         runWrite},
        {"otio",
         {"FILE.aaf"},
         {{"-o", "OUT.otio", "write to OUT.otio instead of standard output"},
          {"--flatten", nullptr, "splice nested compositions into their tracks: one level per track"},
          {"--host-view", nullptr, "the composition as the reader functions answer it (what write reads back)"}},
         "the composition as an OpenTimelineIO timeline: sources, nests, speed, markers", runOtio},
        {"demo", {"OUTPUT.aaf"}, {}, "write the built-in demo composition", runDemo},
        {"media", {"FILE"}, {kJson}, "every clip's media: embedded, found or missing (exit 1 when some is missing)",
         runMedia},
        {"extract", {"FILE", "DIR"}, {}, "write the embedded audio into DIR as audio files, with a manifest",
         runExtract},
        {"embed", {"IN", "OUT"}, {}, "copy IN with the WAV and AIFF media its clips link to inside", runEmbed},
        {"diff",
         {"OLD", "NEW"},
         {kJson,
          {"--tracks", "V1,A1-A8", "compare only these tracks"},
          {"--tolerance", "FRAMES", "take differences of up to FRAMES edit units as none"}},
         "what changed between two versions of a cut (AAF or OpenTimelineIO), track by track, with the conform map; "
         "exit 0 the same, 1 different, 2 trouble",
         runDiff},
    };
    return table;
}

#include "view/EventSources.h"

#include <cmath>
#include <cstdlib>
#include <string>

#include "aafkit/Mobs.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/om/Values.h"
#include "composition/ClipSourceTime.h"
#include "composition/EditTime.h"
#include "composition/TimecodeText.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

// The reader's "{8-4-4-16 hex digits}" of a material identifier; false for anything else.
bool parseMaterial(const std::string& text, aafUID_t& out) {
    if (text.size() != 34 || text.front() != '{' || text.back() != '}') return false;
    uint8_t bytes[16];
    for (size_t i = 0; i < 16; ++i) {
        const std::string pair = text.substr(1 + 2 * i, 2);
        char* end = nullptr;
        bytes[i] = uint8_t(std::strtoul(pair.c_str(), &end, 16));
        if (end != pair.c_str() + 2) return false;
    }
    out.Data1 = uint32_t(bytes[0]) << 24 | uint32_t(bytes[1]) << 16 | uint32_t(bytes[2]) << 8 | bytes[3];
    out.Data2 = uint16_t(bytes[4] << 8 | bytes[5]);
    out.Data3 = uint16_t(bytes[6] << 8 | bytes[7]);
    for (size_t i = 0; i < 8; ++i) out.Data4[i] = bytes[8 + i];
    return true;
}

// A source without a timecode track counts from zero at the track's rate.
Timecode countingFromZero(const aafRational_t& rate) {
    Timecode timecode;
    timecode.fps = uint16_t(std::ceil(rateValue(rate)));
    timecode.editRate = rate;
    return timecode;
}

// The source timecode of a clip `length` edit units long at `rate`, from its chain.
Json timecodeRange(const SourceChain& chain, int64_t length, const aafRational_t& rate) {
    const SourceLink* timecoded = chain.timecoded();
    const Timecode timecode = timecoded ? *timecoded->mob->timecode : countingFromZero(rate);
    const aafRational_t counted = timecode.editRate.numerator > 0 ? timecode.editRate : rate;
    const std::optional<int64_t> in = sourceStart(chain, counted);
    if (!in) return Json();
    const int64_t out = *in + convertEditUnits(length, rate, counted);
    return {{"in", timecodeText(*in, timecode.fps, timecode.drop)},
            {"out", timecodeText(out, timecode.fps, timecode.drop)},
            {"fps", timecode.fps},
            {"drop", timecode.drop}};
}

// The channel on the source: the track number of the deepest mob that numbers its tracks.
uint32_t channelOf(const SourceChain& chain) {
    for (auto link = chain.links.rbegin(); link != chain.links.rend(); ++link)
        if (link->physicalTrack) return link->physicalTrack;
    return 0;
}

bool embedded(const SourceChain& chain) {
    for (const SourceLink& link : chain.links)
        if (link.mob->embedded) return true;
    return false;
}

}  // namespace

EventSources::EventSources(const aafkit::File& file) : resolver_(file) {
    std::vector<aafkit::Object*> mobs;
    aafkit::getMobs(file, aafkit::kAAFAllMob, mobs);
    for (const aafkit::Object* mob : mobs) {
        aafMobID_t id = {};
        if (aafkit::getMobId(*mob, PID_Mob_MobID, id) == AAFRESULT_SUCCESS)
            mobsByMaterial_.emplace(aafkit::meta::AuidKey(id.material), id);
    }
}

Json EventSources::sourceOf(const Json& event, double editRate) {
    aafUID_t material = {};
    if (event["kind"] != "clip" || !parseMaterial(event["id"].get<std::string>(), material)) return Json();
    const auto found = mobsByMaterial_.find(aafkit::meta::AuidKey(material));
    OtioRate rate;
    if (found == mobsByMaterial_.end() || !otioRate(editRate, rate)) return Json();
    const aafRational_t trackRate = {int32_t(rate.numerator), int32_t(rate.denominator)};
    const SourceChain chain =
        resolver_.resolve(found->second, event["slot"].get<uint32_t>(), event["inPoint"].get<int64_t>(), trackRate);
    const SourceLink* origin = chain.origin();
    Json source = {{"name", origin ? origin->mob->name : std::string()},
                   {"kind", origin ? mobKindName(origin->mob->kind) : ""},
                   {"timecode", timecodeRange(chain, event["length"].get<int64_t>(), trackRate)},
                   {"url", mediaUrl(chain)},
                   {"embedded", embedded(chain)},
                   {"channel", channelOf(chain)}};
    if (!chain.broken.empty()) source["broken"] = chain.broken;
    return source;
}

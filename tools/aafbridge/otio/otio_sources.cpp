#include "otio/otio_sources.h"

#include "composition/ClipSourceTime.h"
#include "composition/EditTime.h"
#include "otio/otio_items.h"
#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;
using namespace composition;

namespace {

Json taggedJson(const std::vector<TaggedValue>& values) {
    Json out = Json::object();
    for (const TaggedValue& value : values)
        out[value.name] = value.children.empty() ? Json(value.value) : taggedJson(value.children);
    return out;
}

// A mob of a clip's chain, with only what it states: a chain is written for every clip.
Json linkJson(const SourceLink& link) {
    const SourceMob& mob = *link.mob;
    Json data = {{"kind", mobKindName(mob.kind)}, {"mobId", aafkit::mobIdToText(mob.mobId)}, {"slotId", link.slotId}};
    if (!mob.name.empty()) data["name"] = mob.name;
    if (link.physicalTrack) data["physicalTrack"] = link.physicalTrack;
    if (link.placed()) {
        data["editRate"] = rationalJson(link.editRate);
        data["start"] = link.start;
    }
    if (mob.timecode) data["timecode"] = timecodeJson(*mob.timecode);
    if (!mob.descriptor.empty()) data["descriptor"] = mob.descriptor;
    if (mob.channels) data["channels"] = mob.channels;
    if (mob.sampleRate.numerator > 0) {
        data["sampleRate"] = rationalJson(mob.sampleRate);
        data["length"] = mob.essenceLength;
    }
    if (!mob.locators.empty()) data["locators"] = mob.locators;
    if (mob.embedded) data["embedded"] = true;
    return data;
}

Json availableRange(const SourceLink& link) {
    return otioRange(0, double(link.mob->essenceLength), rateValue(link.mob->sampleRate));
}

}  // namespace

Json rationalJson(const aafRational_t& rate) { return Json::array({rate.numerator, rate.denominator}); }

void addMetadata(const Metadata& metadata, Json& data) {
    if (!metadata.comments.empty()) data["comments"] = taggedJson(metadata.comments);
    if (!metadata.attributes.empty()) data["attributes"] = taggedJson(metadata.attributes);
}

Json timecodeJson(const Timecode& timecode) {
    return {{"start", timecode.start}, {"fps", timecode.fps}, {"drop", timecode.drop}};
}

Json clipMetadata(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    Json links = Json::array();
    for (const SourceLink& link : chain.links) links.push_back(linkJson(link));
    Json data = {{"mobId", aafkit::mobIdToText(clip.source.mobId)}, {"slotId", clip.source.slotId},
                 {"startTime", clip.source.startTime}, {"sourceChain", std::move(links)}};
    if (const SourceLink* origin = chain.origin(); origin && !origin->mob->name.empty()) data["tapeName"] = origin->mob->name;
    if (!chain.broken.empty()) data["broken"] = chain.broken;
    addMetadata(clip.metadata, data);
    return data;
}

Json mediaReferences(const Segment& clip) {
    const SourceChain& chain = clip.source.chain;
    Json references = Json::object();
    const std::string url = mediaUrl(chain);
    if (url.empty()) {
        Json missing = otioObject("MissingReference.1", clipName(clip), {});
        missing["available_range"] = nullptr;
        missing["available_image_bounds"] = nullptr;
        references["DEFAULT_MEDIA"] = std::move(missing);
    }
    for (const SourceLink& link : chain.links) {
        if (link.mob->locators.empty() && link.mob->importPath.empty()) continue;
        const std::string linkUrl = fileUrl(link.mob->importPath.empty() ? link.mob->locators.front() : link.mob->importPath);
        std::string key = linkUrl == url ? "DEFAULT_MEDIA" : link.mob->name.empty() ? mobKindName(link.mob->kind) : link.mob->name;
        if (references.contains(key) && key == "DEFAULT_MEDIA") continue;
        while (references.contains(key)) key += "+";
        Json external = otioObject("ExternalReference.1", link.mob->name, {});
        external["target_url"] = linkUrl;
        external["available_range"] = link.mob->essenceLength > 0 && link.mob->sampleRate.numerator > 0 ? availableRange(link) : Json();
        external["available_image_bounds"] = nullptr;
        references[key] = std::move(external);
    }
    return references;
}

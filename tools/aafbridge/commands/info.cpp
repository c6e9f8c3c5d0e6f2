// aafbridge info FILE [--json]: what a file is at a glance. The compound-file facts,
// who wrote it, its mobs by kind, each composition's tracks and how much essence it
// embeds. Essence is counted from the streams' sizes, never read.
#include <cstdio>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "commands/Commands.h"
#include "cli/OpenFile.h"
#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"
#include "aafkit/io/StreamContent.h"

using Json = nlohmann::ordered_json;

namespace {

std::string text(const aafkit::Object& object, uint16_t pid) {
    std::wstring value;
    aafkit::getString(object, pid, value);
    return aafkit::wideToUtf8(value);
}

// The compound file's facts, as aafkit read them when it opened the file.
Json compoundFileJson(const aafkit::File& file) {
    return {{"kind", file.sectorSize() == 4096 ? "AAF 4K binary" : "AAF 512 binary"},
            {"sectorSize", file.sectorSize()},
            {"size", file.fileSize()}};
}

std::string dateText(const aafkit::Object& identification) {
    std::vector<uint8_t> stamp;
    if (aafkit::getBytes(identification, PID_Identification_Date, stamp) != AAFRESULT_SUCCESS || stamp.size() < 7)
        return "";
    char date[32];
    std::snprintf(date, sizeof date, "%04d-%02u-%02u %02u:%02u:%02u", int(int16_t(stamp[0] | stamp[1] << 8)),
                  stamp[2], stamp[3], stamp[4], stamp[5], stamp[6]);
    return date;
}

Json identificationsJson(const aafkit::Object& header) {
    Json list = Json::array();
    const std::vector<aafkit::Object*>* identifications = nullptr;
    if (aafkit::getObjects(header, PID_Header_IdentificationList, identifications) != AAFRESULT_SUCCESS)
        return list;
    for (const aafkit::Object* id : *identifications)
        list.push_back({{"company", text(*id, PID_Identification_CompanyName)},
                        {"product", text(*id, PID_Identification_ProductName)},
                        {"version", text(*id, PID_Identification_ProductVersionString)},
                        {"platform", text(*id, PID_Identification_Platform)},
                        {"date", dateText(*id)}});
    return list;
}

const char* kindName(aafkit::aafMobKind_t kind) {
    switch (kind) {
        case aafkit::kAAFCompMob: return "composition";
        case aafkit::kAAFMasterMob: return "master";
        case aafkit::kAAFFileMob: return "file source";
        case aafkit::kAAFTapeMob: return "tape source";
        case aafkit::kAAFFilmMob: return "film source";
        case aafkit::kAAFPhysicalMob: return "physical source";
        default: return "other";
    }
}

Json mobCountsJson(const std::vector<aafkit::Object*>& mobs) {
    std::map<std::string, int> counts;
    for (const aafkit::Object* mob : mobs) ++counts[kindName(aafkit::mobKind(*mob))];
    Json json = Json::object();
    for (const auto& [kind, count] : counts) json[kind] = count;
    return json;
}

Json rateJson(const aafkit::Object& slot) {
    aafRational_t rate{0, 1};
    if (aafkit::getRational(slot, PID_TimelineMobSlot_EditRate, rate) != AAFRESULT_SUCCESS)
        aafkit::getRational(slot, PID_EventMobSlot_EditRate, rate);
    return Json::array({rate.numerator, rate.denominator});
}

Json trackJson(const aafkit::Object& slot) {
    uint32_t id = 0;
    aafkit::getUInt32(slot, PID_MobSlot_SlotID, id);
    Json track = {{"id", id}, {"name", text(slot, PID_MobSlot_SlotName)}, {"kind", ""}, {"editRate", rateJson(slot)},
                  {"length", 0}};
    aafkit::Object* segment = nullptr;
    if (aafkit::getObject(slot, PID_MobSlot_Segment, segment) != AAFRESULT_SUCCESS) return track;
    aafkit::Object* dataDefinition = nullptr;
    if (aafkit::getReferenced(*segment, PID_Component_DataDefinition, dataDefinition) == AAFRESULT_SUCCESS)
        track["kind"] = text(*dataDefinition, PID_DefinitionObject_Name);
    int64_t length = 0;
    aafkit::getInt64(*segment, PID_Component_Length, length);
    track["length"] = length;
    return track;
}

// The composition is as long as its longest track, in that track's edit units.
Json compositionJson(const aafkit::Object& mob) {
    Json tracks = Json::array();
    Json longest = {{"length", 0}, {"editRate", {0, 1}}};
    for (const aafkit::Object* slot : aafkit::getSlots(mob)) {
        Json track = trackJson(*slot);
        if (track["length"].get<int64_t>() > longest["length"].get<int64_t>())
            longest = {{"length", track["length"]}, {"editRate", track["editRate"]}};
        tracks.push_back(std::move(track));
    }
    return {{"name", text(mob, PID_Mob_Name)}, {"length", longest["length"]}, {"editRate", longest["editRate"]},
            {"tracks", std::move(tracks)}};
}

Json essenceJson(const aafkit::File& file) {
    uint64_t streams = 0, bytes = 0;
    const std::vector<aafkit::Object*>* essence = nullptr;
    if (file.contentStorage() &&
        aafkit::getObjects(*file.contentStorage(), PID_ContentStorage_EssenceData, essence) == AAFRESULT_SUCCESS)
        for (const aafkit::Object* data : *essence) {
            const aafkit::StreamContent* stream = nullptr;
            if (aafkit::getStream(*data, PID_EssenceData_Data, stream) != AAFRESULT_SUCCESS || !stream) continue;
            ++streams;
            bytes += stream->size();
        }
    return {{"streams", streams}, {"bytes", bytes}};
}

Json infoJson(const aafkit::File& file) {
    std::vector<aafkit::Object*> mobs;
    aafkit::getMobs(file, aafkit::kAAFAllMob, mobs);
    Json compositions = Json::array();
    for (const aafkit::Object* mob : mobs)
        if (aafkit::mobKind(*mob) == aafkit::kAAFCompMob) compositions.push_back(compositionJson(*mob));
    return {{"file", compoundFileJson(file)},
            {"identifications", identificationsJson(*file.header())},
            {"mobs", mobCountsJson(mobs)},
            {"compositions", std::move(compositions)},
            {"essence", essenceJson(file)}};
}

std::string rateText(const Json& rate) { return rate[0].dump() + "/" + rate[1].dump(); }

void printText(const Json& info) {
    const Json& file = info["file"];
    std::cout << "file: " << file["kind"].get<std::string>() << ", " << file["sectorSize"] << "-byte sectors, "
              << file["size"] << " bytes\n";
    std::cout << "identifications: " << info["identifications"].size() << "\n";
    for (const Json& id : info["identifications"])
        std::cout << "  " << id["company"].get<std::string>() << " " << id["product"].get<std::string>() << " "
                  << id["version"].get<std::string>() << ", " << id["platform"].get<std::string>() << ", "
                  << id["date"].get<std::string>() << "\n";
    std::cout << "mobs:";
    const char* separator = " ";
    for (const auto& [kind, count] : info["mobs"].items()) {
        std::cout << separator << count << " " << kind;
        separator = ", ";
    }
    std::cout << "\n";
    for (const Json& composition : info["compositions"]) {
        std::cout << "composition " << composition["name"] << ": length " << composition["length"] << " at "
                  << rateText(composition["editRate"]) << ", " << composition["tracks"].size() << " tracks\n";
        for (const Json& track : composition["tracks"])
            std::cout << "  track " << track["id"] << " " << track["name"] << ": " << track["kind"].get<std::string>()
                      << ", length " << track["length"] << " at " << rateText(track["editRate"]) << "\n";
    }
    std::cout << "embedded essence: " << info["essence"]["streams"] << " streams, " << info["essence"]["bytes"]
              << " bytes\n";
}

}  // namespace

int runInfo(const Invocation& invocation) {
    const std::string& path = invocation.operand(0);
    std::unique_ptr<aafkit::File> file = openOrReport(invocation, path);
    if (!file) return kExitFailure;
    const Json info = infoJson(*file);
    if (invocation.has("--json"))
        std::cout << info.dump(2) << "\n";
    else
        printText(info);
    return kExitSuccess;
}

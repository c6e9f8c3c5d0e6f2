#include "otio/otio_items.h"

#include <algorithm>

#include "otio/otio_time.h"

using Json = nlohmann::ordered_json;

Json otioObject(const char* schema, const std::string& name, Json aafbridge) {
    Json metadata = Json::object();
    if (!aafbridge.empty()) metadata["aafbridge"] = std::move(aafbridge);
    return {{"OTIO_SCHEMA", schema}, {"name", name}, {"metadata", std::move(metadata)}};
}

Json otioTrackItem(const char* schema, const std::string& name, Json aafbridge) {
    Json object = otioObject(schema, name, std::move(aafbridge));
    object["source_range"] = nullptr;
    object["effects"] = Json::array();
    object["markers"] = Json::array();
    object["enabled"] = true;
    return object;
}

Json otioTransition(int64_t length, int64_t cutPoint, double rate, Json aafbridge) {
    Json transition = otioObject("Transition.1", "", std::move(aafbridge));
    transition["transition_type"] = "SMPTE_Dissolve";
    transition["in_offset"] = otioTime(double(cutPoint), rate);
    transition["out_offset"] = otioTime(double(length - cutPoint), rate);
    return transition;
}

void trimAroundTransitions(std::vector<OtioPiece>& pieces) {
    for (size_t i = 0; i < pieces.size(); ++i) {
        if (!pieces[i].transition) continue;
        const int64_t cut = pieces[i].cutPoint, length = pieces[i].length;
        if (i > 0 && !pieces[i - 1].transition)
            pieces[i - 1].duration = std::max<int64_t>(0, pieces[i - 1].duration - (length - cut));
        if (i + 1 < pieces.size() && !pieces[i + 1].transition) {
            OtioPiece& next = pieces[i + 1];
            const int64_t trim = std::min(cut, next.duration);
            next.start += trim;
            next.duration -= trim;
        }
    }
}

Json otioChildren(std::vector<OtioPiece>& pieces, double rate) {
    Json children = Json::array();
    for (OtioPiece& piece : pieces) {
        if (!piece.transition) piece.item["source_range"] = otioRange(double(piece.start), double(piece.duration), rate);
        children.push_back(std::move(piece.item));
    }
    return children;
}

#pragma once
// Drives the exported writer calls from a JSON description, in the order a host makes
// them: clips, sub-clips, then the composition with its tracks and markers.
#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "description/CheckedJson.h"
#include "aafbridge/aaf_writer.h"

class DescriptionBuilder {
public:
    explicit DescriptionBuilder(AafWriterContext* context) : context_(context) {}

    void clips(const Json& description);
    void composition(const Json& description);

private:
    void addClip(const Json& clip, const std::string& where);
    void addClipTrack(int32_t clip, uint32_t number, const Json& track, const std::string& where);
    void addSubClip(const Json& subClip, const std::string& where);
    uint32_t clipNumber(const Json& event, const std::string& where);
    void addTrack(const Json& track, const std::string& where, double frameRate);
    void addEvent(uint32_t track, const Json& event, const std::string& where);
    void addEffect(uint32_t track, const std::string& type, int64_t length, const Json& event,
                   const std::string& where);
    void addMarker(const Json& marker, const std::string& where);

    AafWriterContext* context_;
    std::map<std::string, uint32_t> clipNumbers_;
    std::set<uint32_t> subClips_;
};

// A refused call as an error naming the item and the code.
void accept(AAFRESULT code, const char* call, const std::string& where);

#pragma once
// What OpenTimelineIO has no field for, kept in `metadata.aafbridge`: a clip's source chain,
// user comments and attribute lists, timecode; and a clip's media references from its chain.
#include <nlohmann/json.hpp>

#include "composition/Segment.h"

nlohmann::ordered_json rationalJson(const aafRational_t& rate);
nlohmann::ordered_json timecodeJson(const composition::Timecode& timecode);
// User comments and attribute lists, where the object has any.
void addMetadata(const composition::Metadata& metadata, nlohmann::ordered_json& data);

// The clip's source reference and every mob of its chain, with only what each states.
nlohmann::ordered_json clipMetadata(const composition::Segment& clip);
// DEFAULT_MEDIA is the media file (mediaUrl); every other file a mob of the chain locates is
// listed too, under that mob's name; a MissingReference where the chain names none.
nlohmann::ordered_json mediaReferences(const composition::Segment& clip);

#pragma once
// What a clip shows of its source, in the terms editors use: the source's name, where the
// clip starts in the source's own timecode, and the media file.
#include <cstdint>
#include <optional>
#include <string>

#include "Segment.h"

namespace composition {

// Where the material a chain leads to starts in its source's timecode, in edit units at
// `rate`: the deepest mob of the chain that carries a timecode, else the position in the
// deepest slot reached; none when the chain reached no slot.
std::optional<int64_t> sourceStart(const SourceChain& chain, const aafRational_t& rate);
// The same for a clip, whose own start stands in where its chain reached no slot.
int64_t sourceStart(const Segment& clip, const aafRational_t& rate);

// The master clip's name, else the first mob's of the chain.
std::string clipName(const Segment& clip);

// The media file as a URL: where the editor imported it from, else the first locator down
// the chain (file mob first); "" when the chain names none.
std::string mediaUrl(const SourceChain& chain);
// A path or URL as a file URL ("/a b" -> "file:///a b", "C:\x" -> "file:///C:/x").
std::string fileUrl(const std::string& location);

}  // namespace composition

#pragma once
// Where a file source mob's first sample lies in its source's timecode: the time
// reference of a broadcast-wave file.
#include <cstdint>
#include <optional>

#include "aafkit/File.h"

// Samples since midnight at `sampleRate`: the timecode start of the mob the file mob was
// taken from (or of the file mob itself) plus the file mob's offset into it. None when
// neither carries a timecode.
std::optional<uint64_t> timeReference(const aafkit::File& file, const aafkit::Object& fileMob, double sampleRate);

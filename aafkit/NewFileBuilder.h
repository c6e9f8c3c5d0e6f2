#pragma once
// What a new AAF file holds before the caller adds anything: the Header with
// one Identification, an empty ContentStorage and a Dictionary with the
// built-in data and container definitions.
#include "File.h"

namespace aafkit {

class NewFileBuilder {
public:
    static void build(File& file, const ProductIdentification& identification);
};

// Current UTC time, hundredths 0, as the SDK stamps files and mobs.
aafTimeStamp_t nowTimeStamp();
// A fresh AUID: unique within the process and across runs.
aafUID_t newAuid();

}  // namespace aafkit

#pragma once
// A diff as editors read it (record and source timecode, a list per track, then one for the
// whole cut with the same edit on several tracks said once) and as JSON for programs.
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "diff/CutDiff.h"

namespace cutdiff {

struct DiffInputs {
    std::string beforeName, afterName;  // as the user named them
    const Cut& before;
    const Cut& after;
};

void printDiff(const DiffInputs& inputs, const CutDiff& diff, std::ostream& out);

// Versioned ("aafbridgeDiff": 1); times in each cut's own edit units and timecode.
nlohmann::ordered_json diffJson(const DiffInputs& inputs, const CutDiff& diff);

}  // namespace cutdiff

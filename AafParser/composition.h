#pragma once
// The composition walk: the top-level composition mob into the session's Sequence, its
// operation groups into Effects with their parameter values.
#include <cstdint>
#include <vector>

#include "aaf_basic.h"
#include "aafkit/AafTypes.h"
#include "aafkit/om/Object.h"
#include "model/Effect.h"
#include "model/Sequence.h"
#include "model/Track.h"

using aafkit::Object;

// Every failure below is reported on stderr from "AafParser/composition"; the walk goes on.
AAFRESULT ProcessSlot(Sequence& sequence, const Object& slot, AafParseContext& context);
AAFRESULT ProcessSegment(const Object& segment, Track& track, Sequence& sequence, AafParseContext& context,
                         double scale);
AAFRESULT ProcessOperationGroup(const Object& group, Track& track, Sequence& sequence, AafParseContext& context);
// A source clip placed on the track, or dropped when any of its reads fails.
void ProcessSourceClip(const Object& sourceClip, Track& track, AafParseContext& context, double scale);

AAFRESULT GetMobSlotWithID(const Object& mob, uint32_t slotId, Object*& slot);
// The source clip that is the segment of the mob's slot (a sequence there does not count).
AAFRESULT FindSourceClip(const Object& mob, uint32_t slotId, Object*& sourceClip);
bool IsMobSubClip(const Object& mob);
// The picture flag of the catalogued source track the reference names; untouched if none.
void getRefType(const aafSourceRef_t& reference, uint8_t& isVideo, const AafParseContext& context);

// The in-point of the one clip under a speed change, in the clip's own units: integer
// arithmetic, division first (plus phase) for a master clip, multiplication first for a
// sub-clip. The two differ on purpose.
int64_t speedAdjustedInPoint(int64_t inPoint, const aafRational_t& ratio, int32_t phase, bool isSubClip);

// Values of the parameters the host understands, in the order met, into params/keyFrames.
AAFRESULT ProcessParameters(const Object& group, Effect& effect);
AAFRESULT ProcessConstParam(const Object& constant, Effect& effect);
AAFRESULT ProcessVarParam(const Object& varying, Effect& effect);
// One named constant: 4 bytes into out[0], 8 bytes into out[0] and out[1]; the last match
// wins and anything else leaves out as the caller set it.
AAFRESULT GetParamValue(const Object& group, const aafUID_t& parameterId, int32_t out[2]);
// A parameter or control-point value by its size: 4 bytes an Int32, 8 a Rational.
bool valueAsDouble(const std::vector<uint8_t>& bytes, double& out);

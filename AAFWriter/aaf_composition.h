#pragma once
// The composition: the building calls record the timeline; EndComposition writes it.
#include <cstdint>
#include <vector>

#include "aafkit/AafTypes.h"

struct AafWriterContext;
class Effect;
class Filler;
namespace aafkit {
class Object;
}

// Building (records model objects only).
AAFRESULT AppendEffect(uint32_t track, uint32_t effectType, int64_t length, const double* values,
                       uint32_t valueCount, const double* keyFrames, int32_t keyFrameCount,
                       AafWriterContext* context);
// A frame rate as an edit rate: whole rates n/1, every other rate as an NTSC-style rate.
aafRational_t getEditRate(double rate);
// Truncation toward zero, saturated at the 32-bit range (NaN gives 0) so odd input stays defined.
int32_t truncateToInt32(double value);
int64_t truncateToInt64(double value);
// A value as a rational with a power-of-ten denominator, not reduced: 0.25 -> 25/100.
aafRational_t doubleToRatio(double value);

// Writing (inside WriteAafFile).
AAFRESULT EndComposition(void* context);
void appendFiller(int trackIndex, const Filler& filler, aafkit::Object& sequence, AafWriterContext* context);
aafkit::Object& loadEffectDefinition(const aafUID_t& operationId, int numInputs, bool isVideo,
                                     AafWriterContext* context);
void appendPTEffect(int trackIndex, int eventIndex, Effect* effect, aafkit::Object& sequence,
                    AafWriterContext* context);
// Component attributes of a speed effect over a clip: the play rate on the wrapping
// sequence, the render settings on the operation group.
void addSpeedAttributes(aafkit::Object& wrappingSequence, aafkit::Object& operationGroup, double speed,
                        AafWriterContext* context);

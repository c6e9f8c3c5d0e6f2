#include "media/SourceTimecode.h"

#include <cmath>
#include <vector>

#include "aafkit/Mobs.h"
#include "aafkit/ResultCodes.h"
#include "aafkit/om/Values.h"
#include "aafkit/meta/Ids.h"

using aafkit::Object;

namespace {

// A slot's segment, or the first component of a sequence segment.
const Object* leadingSegment(const Object& slot) {
    Object* segment = nullptr;
    if (aafkit::getObject(slot, PID_MobSlot_Segment, segment) != AAFRESULT_SUCCESS || !segment) return nullptr;
    const std::vector<Object*>* components = nullptr;
    if (segment->isA(AUID_AAFSequence))
        return aafkit::getObjects(*segment, PID_Sequence_Components, components) == AAFRESULT_SUCCESS && components &&
                       !components->empty()
                   ? components->front()
                   : nullptr;
    return segment;
}

std::optional<double> seconds(int64_t position, const Object& slot) {
    aafRational_t rate = {0, 0};
    if (aafkit::getRational(slot, PID_TimelineMobSlot_EditRate, rate) != AAFRESULT_SUCCESS || rate.numerator <= 0 ||
        rate.denominator <= 0)
        return std::nullopt;
    return double(position) * rate.denominator / rate.numerator;
}

// The start of the mob's timecode slot, in seconds.
std::optional<double> timecodeStart(const Object& mob) {
    for (const Object* slot : aafkit::getSlots(mob)) {
        const Object* segment = leadingSegment(*slot);
        int64_t start = 0;
        if (segment && segment->isA(AUID_AAFTimecode) &&
            aafkit::getInt64(*segment, PID_Timecode_Start, start) == AAFRESULT_SUCCESS)
            return seconds(start, *slot);
    }
    return std::nullopt;
}

// Seconds from the start of the referenced mob's slot to the file mob's first sample.
std::optional<double> offsetIntoSource(const Object& clip, const Object& source) {
    uint32_t slotId = 0;
    int64_t startTime = 0;
    Object* slot = nullptr;
    if (aafkit::getUInt32(clip, PID_SourceReference_SourceMobSlotID, slotId) != AAFRESULT_SUCCESS ||
        aafkit::getInt64(clip, PID_SourceClip_StartTime, startTime) != AAFRESULT_SUCCESS ||
        aafkit::lookupSlot(source, slotId, slot) != AAFRESULT_SUCCESS)
        return std::nullopt;
    return seconds(startTime, *slot);
}

std::optional<double> sourceStart(const aafkit::File& file, const Object& fileMob) {
    if (std::optional<double> own = timecodeStart(fileMob)) return own;
    for (const Object* slot : aafkit::getSlots(fileMob)) {
        const Object* clip = leadingSegment(*slot);
        aafMobID_t sourceId;
        if (!clip || !clip->isA(AUID_AAFSourceClip) ||
            aafkit::getMobId(*clip, PID_SourceReference_SourceID, sourceId) != AAFRESULT_SUCCESS)
            continue;
        const Object* source = file.lookupMob(sourceId);
        if (!source) continue;
        std::optional<double> start = timecodeStart(*source);
        std::optional<double> offset = offsetIntoSource(*clip, *source);
        if (start) return *start + offset.value_or(0.0);
    }
    return std::nullopt;
}

}  // namespace

std::optional<uint64_t> timeReference(const aafkit::File& file, const aafkit::Object& fileMob, double sampleRate) {
    const std::optional<double> start = sourceStart(file, fileMob);
    if (!start || !(*start >= 0) || !(*start * sampleRate < 1e18)) return std::nullopt;
    return uint64_t(std::llround(*start * sampleRate));
}

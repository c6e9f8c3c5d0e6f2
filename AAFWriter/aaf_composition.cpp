// Recording the host's timeline: composition, tracks, events and markers.
#include "aaf_composition.h"

#include <cmath>
#include <cstdint>

#include "aafkit/ResultCodes.h"
#include "aafkit/Saturating.h"
#include "context.h"
#include "model/Effect.h"
#include "model/Filler.h"
#include "model/Text.h"
#include "model/TrackClip.h"
#include "model/Transition.h"

namespace {

AAFRESULT checkStarted(const AafWriterContext* context) {
    if (!context) return AAFRESULT_NULL_PARAM;
    if (!context->sequence.compositionStarted) return AAFRESULT_NOT_INITIALIZED;
    return AAFRESULT_SUCCESS;
}

// The common checks of the append calls; on success `out` is the track.
AAFRESULT checkTrack(AafWriterContext* context, uint32_t track, Track*& out) {
    AAFRESULT result = checkStarted(context);
    if (result != AAFRESULT_SUCCESS) return result;
    if (track >= context->sequence.tracks.size()) return AAFRESULT_INVALID_PARAM;
    out = &context->sequence.tracks[track];
    return AAFRESULT_SUCCESS;
}

AAFRESULT append(Track& track, TrackEvent* event, int64_t length) {
    event->length = length;
    event->index = int32_t(track.events.size());
    track.events.push_back(event);
    return AAFRESULT_SUCCESS;
}

// The number of tracks the clip offers: its own, or its parent's for a sub-clip.
AAFRESULT clipTrackCount(const AafWriterContext* context, const Clip& clip, size_t& count) {
    if (!clip.isSubClip) {
        count = clip.tracks.size();
        return AAFRESULT_SUCCESS;
    }
    Clip parent;
    if (!FindClip(clip.path, context->clips, parent)) return AAFRESULT_NULL_PARAM;
    count = parent.tracks.size();
    return AAFRESULT_SUCCESS;
}

// The events an effect of this length covers: the last ones before it, last first.
std::vector<TrackEvent*> coveredEvents(const Track& track, int64_t length) {
    std::vector<TrackEvent*> inputs;
    for (size_t i = track.events.size(); i > 0 && length > 0; --i) {
        TrackEvent* event = track.events[i - 1];
        inputs.push_back(event);
        length = aafkit::saturatingSubtract(length, event->length);
    }
    return inputs;
}

}  // namespace

AAFRESULT InitComposition(uint32_t rateNumerator, uint32_t rateDenominator, int64_t timecodeLength, bool dropFrame,
                          uint32_t timecodeStart, const wchar_t* name, AafWriterContext* context) {
    if (!context) return AAFRESULT_NULL_PARAM;
    Sequence& sequence = context->sequence;
    if (sequence.compositionStarted) return AAFRESULT_ALREADY_INITIALIZED;
    if (!name || rateNumerator == 0 || rateDenominator == 0) return AAFRESULT_INVALID_PARAM;
    sequence.timecodeStart = timecodeStart;
    sequence.dropFrame = dropFrame;
    sequence.timecodeFps = rateNumerator / rateDenominator + (rateNumerator % rateDenominator ? 1 : 0);
    sequence.frameRate = double(rateNumerator) / double(rateDenominator);
    sequence.timecodeLength = timecodeLength;
    copyText(sequence.name, kTextLength, name);
    sequence.compositionStarted = 1;
    return AAFRESULT_SUCCESS;
}

uint32_t AddTrackToComposition(bool isVideo, double editRate, AafWriterContext* context) {
    if (!context) return 0xFFFFFFFF;
    Track track;
    track.index = uint32_t(context->sequence.tracks.size());
    track.editRate = editRate;
    track.isVideo = isVideo;
    context->sequence.tracks.push_back(track);
    return track.index;
}

AAFRESULT AppendClipToTrack(uint32_t track, int64_t inPoint, int64_t length, bool isSubClip, uint32_t clipIndex,
                            uint32_t trackNumber, AafWriterContext* context) {
    Track* target = nullptr;
    AAFRESULT result = checkTrack(context, track, target);
    if (result != AAFRESULT_SUCCESS) return result;
    if (clipIndex == 0 || clipIndex > context->clips.size() || trackNumber == 0) return AAFRESULT_INVALID_PARAM;
    const Clip& clip = context->clips[clipIndex - 1];
    size_t trackCount = 0;
    result = clipTrackCount(context, clip, trackCount);
    if (result != AAFRESULT_SUCCESS) return result;
    if (trackNumber > trackCount) return AAFRESULT_INVALID_PARAM;

    TrackClip* event = context->sequence.events.make<TrackClip>().release();
    event->clipName = context->texts.text(clip.name);
    event->mobId = clip.masterMobId;  // final only once written; read again then
    event->slotId = trackNumber;
    event->clipIndex = clipIndex;
    event->inPoint = inPoint;
    event->isSubClip = isSubClip;
    return append(*target, event, length);
}

AAFRESULT AppendFiller(uint32_t track, int64_t length, AafWriterContext* context) {
    Track* target = nullptr;
    AAFRESULT result = checkTrack(context, track, target);
    if (result != AAFRESULT_SUCCESS) return result;
    return append(*target, context->sequence.events.make<Filler>().release(), length);
}

AAFRESULT AppendTransition(uint32_t track, int64_t cutPoint, int64_t length, AafWriterContext* context) {
    Track* target = nullptr;
    AAFRESULT result = checkTrack(context, track, target);
    if (result != AAFRESULT_SUCCESS) return result;
    Transition* event = context->sequence.events.make<Transition>().release();
    event->cutPoint = cutPoint;
    return append(*target, event, length);
}

AAFRESULT AppendEffect(uint32_t track, uint32_t effectType, int64_t length, const double* values,
                       uint32_t valueCount, const double* keyFrames, int32_t keyFrameCount,
                       AafWriterContext* context) {
    Track* target = nullptr;
    AAFRESULT result = checkTrack(context, track, target);
    if (result != AAFRESULT_SUCCESS) return result;
    // Every effect is written with its first value, and one value per key frame.
    if (valueCount == 0 || !values) return AAFRESULT_INVALID_PARAM;
    if (keyFrameCount > 0 && (!keyFrames || uint32_t(keyFrameCount) > valueCount)) return AAFRESULT_INVALID_PARAM;
    bool isSpeed = effectType == kEffectSpeed || effectType == kEffectSpeedAlternate;

    Effect* effect = context->sequence.events.make<Effect>().release();
    effect->numInputs = 1;
    effect->effectType = effectType;
    effect->speed = isSpeed ? values[0] : 1.0;
    effect->params.assign(values, values + valueCount);
    if (keyFrameCount > 0) effect->keyFrames.assign(keyFrames, keyFrames + keyFrameCount);
    effect->inputs = coveredEvents(*target, length);
    return append(*target, effect, length);
}

AAFRESULT AppendVolumeEffect(uint32_t track, int64_t length, const double* values, uint32_t valueCount,
                             const double* keyFrames, int32_t keyFrameCount, AafWriterContext* context) {
    return AppendEffect(track, kEffectGain, length, values, valueCount, keyFrames, keyFrameCount, context);
}

AAFRESULT AppendPanEffect(uint32_t track, int64_t length, const double* values, uint32_t valueCount,
                          const double* keyFrames, int32_t keyFrameCount, AafWriterContext* context) {
    return AppendEffect(track, kEffectPan, length, values, valueCount, keyFrames, keyFrameCount, context);
}

AAFRESULT AppendVideoCompositeEffect(uint32_t track, int64_t length, const double* values, uint32_t valueCount,
                                     const double* keyFrames, int32_t keyFrameCount, AafWriterContext* context) {
    return AppendEffect(track, kEffectSuperimpose, length, values, valueCount, keyFrames, keyFrameCount, context);
}

AAFRESULT AppendSpeedEffect(uint32_t track, bool flag, int64_t length, const double* values, uint32_t valueCount,
                            const double* keyFrames, int32_t keyFrameCount, AafWriterContext* context) {
    uint32_t type = flag ? kEffectSpeed : kEffectSpeedAlternate;
    return AppendEffect(track, type, length, values, valueCount, keyFrames, keyFrameCount, context);
}

AAFRESULT AddMarker(int64_t position, const wchar_t* text, AafWriterContext* context) {
    AAFRESULT result = checkStarted(context);
    if (result != AAFRESULT_SUCCESS) return result;
    Marker marker;
    copyText(marker.text, kTextLength, text);
    marker.position = position;
    context->sequence.markers.push_back(marker);
    return AAFRESULT_SUCCESS;
}

int32_t truncateToInt32(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483647.0) return INT32_MAX;
    if (value <= -2147483648.0) return INT32_MIN;
    return int32_t(value);
}

int64_t truncateToInt64(double value) {
    if (std::isnan(value)) return 0;
    if (value >= 9223372036854775807.0) return INT64_MAX;
    if (value <= -9223372036854775808.0) return INT64_MIN;
    return int64_t(value);
}

aafRational_t getEditRate(double rate) {
    int32_t whole = truncateToInt32(rate);
    if (double(whole) == rate) return {whole, 1};
    return {truncateToInt32(std::ceil(rate) * 1000), 1001};
}

aafRational_t doubleToRatio(double value) {
    int32_t denominator = 1;
    while (denominator <= 9999999 && std::fabs(value - std::trunc(value)) > 0.00001) {
        value *= 10;
        denominator *= 10;
    }
    return {truncateToInt32(value), denominator};
}

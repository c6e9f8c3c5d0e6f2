// The host's questions about the parsed composition: checked indices, unit conversions
// and a neutral answer for anything out of range or of the wrong kind.
#include <cmath>
#include <cstdint>

#include "aafkit/ResultCodes.h"
#include "composition.h"
#include "model/TrackClip.h"
#include "model/Transition.h"

namespace {

constexpr uint32_t kNoValue = 0xFFFFFFFFu;

const Track* trackAt(const AafParseContext* context, uint32_t track) {
    if (!context || track >= context->sequence.tracks.size()) return nullptr;
    return &context->sequence.tracks[track];
}

TrackEvent* eventAt(const AafParseContext* context, uint32_t track, uint32_t event) {
    const Track* t = trackAt(context, track);
    if (!t || event >= t->events.size()) return nullptr;
    return t->events[event];
}

template <class Kind>
Kind* asKind(TrackEvent* event, uint32_t type) {
    return event && event->getType() == type ? static_cast<Kind*>(event) : nullptr;
}

Effect* effectAt(const AafParseContext* context, uint32_t track, uint32_t event) {
    return asKind<Effect>(eventAt(context, track, event), kEventEffect);
}

uint32_t isEventOfType(const AafParseContext* context, uint32_t track, uint32_t event, uint32_t type) {
    return asKind<TrackEvent>(eventAt(context, track, event), type) ? 1 : 0;
}

// A whole number of edit units; NaN and values beyond the 64-bit range give the smallest
// value, as the processor's own conversion does.
int64_t toEditUnits(double value) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63
    if (!(value > -kLimit && value < kLimit)) return INT64_MIN;
    return int64_t(value);
}

using ClipText = EventText TrackClip::*;

// Only clips carry texts; any other event gives an empty one.
AAFRESULT copyClipText(TrackEvent* event, ClipText text, wchar_t* buffer, int32_t length) {
    if (!event || !buffer || length < 1) return kInvalidArgument;
    TrackClip* clip = asKind<TrackClip>(event, kEventClip);
    return copyTextToHost(clip ? (clip->*text).c_str() : L"", buffer, length);
}

}  // namespace

void GetTimeCode(uint32_t* start, uint32_t* fps, uint32_t* dropFrame, AafParseContext* context) {
    if (!context) return;
    const Sequence& sequence = context->sequence;
    if (start) *start = sequence.timecodeStart;
    if (fps) *fps = sequence.timecodeFps;
    if (dropFrame) *dropFrame = sequence.dropFrame ? 1 : 0;
}

uint32_t GetNumMarkers(AafParseContext* context) {
    return context ? uint32_t(context->sequence.markers.size()) : 0;
}

int64_t GetMarkerPosition(uint32_t marker, AafParseContext* context) {
    if (!context || marker >= context->sequence.markers.size()) return -1;
    return context->sequence.markers[marker].position;
}

AAFRESULT GetMarkerText(uint32_t marker, wchar_t* buffer, int32_t length, AafParseContext* context) {
    if (!context || marker >= context->sequence.markers.size()) return kInvalidArgument;
    return copyTextToHost(context->sequence.markers[marker].text, buffer, length);
}

uint32_t GetNumTracks(AafParseContext* context) { return context ? uint32_t(context->sequence.tracks.size()) : 0; }

uint32_t GetTrackType(uint32_t track, AafParseContext* context) {
    const Track* t = trackAt(context, track);
    return t ? t->isVideo : 0;
}

double GetTrackEditRate(uint32_t track, AafParseContext* context) {
    const Track* t = trackAt(context, track);
    return t ? t->editRate : 0.0;
}

uint32_t GetNumEvents(uint32_t track, AafParseContext* context) {
    const Track* t = trackAt(context, track);
    return t ? uint32_t(t->events.size()) : 0;
}

int64_t GetEventLen(uint32_t track, uint32_t event, AafParseContext* context) {
    TrackEvent* e = eventAt(context, track, event);
    return e ? toEditUnits(std::floor(double(e->length) * e->speed)) : 0;
}

int64_t GetEventInPoint(uint32_t track, uint32_t event, AafParseContext* context) {
    TrackClip* clip = asKind<TrackClip>(eventAt(context, track, event), kEventClip);
    return clip ? toEditUnits(std::ceil(double(clip->inPoint) * clip->speed)) : 0;
}

AAFRESULT GetEventName(uint32_t track, uint32_t event, wchar_t* buffer, int32_t length, AafParseContext* context) {
    return copyClipText(eventAt(context, track, event), &TrackClip::clipName, buffer, length);
}

AAFRESULT GetEventId(uint32_t track, uint32_t event, wchar_t* buffer, int32_t length, AafParseContext* context) {
    return copyClipText(eventAt(context, track, event), &TrackClip::mobIdText, buffer, length);
}

uint32_t GetEventSlot(uint32_t track, uint32_t event, AafParseContext* context) {
    TrackEvent* e = eventAt(context, track, event);
    if (!e) return 0;
    TrackClip* clip = asKind<TrackClip>(e, kEventClip);
    return clip ? clip->slotId : kNoValue;
}

uint32_t GetEventPhysicalNumber(uint32_t track, uint32_t event, AafParseContext* context) {
    TrackEvent* e = eventAt(context, track, event);
    if (!e) return 0;
    TrackClip* clip = asKind<TrackClip>(e, kEventClip);
    return clip ? clip->physicalNumber : kNoValue;
}

uint32_t IsEventFiller(uint32_t track, uint32_t event, AafParseContext* context) {
    return isEventOfType(context, track, event, kEventFiller);
}

uint32_t IsEventTransition(uint32_t track, uint32_t event, AafParseContext* context) {
    return isEventOfType(context, track, event, kEventTransition);
}

uint32_t IsEventEffect(uint32_t track, uint32_t event, AafParseContext* context) {
    return isEventOfType(context, track, event, kEventEffect);
}

int64_t GetTransitionCutPoint(uint32_t track, uint32_t event, AafParseContext* context) {
    Transition* transition = asKind<Transition>(eventAt(context, track, event), kEventTransition);
    return transition ? transition->cutPoint : -1;
}

uint32_t GetEffectType(uint32_t track, uint32_t event, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    return effect ? effect->effectType : kNoValue;
}

uint32_t GetEffectNumInputs(uint32_t track, uint32_t event, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    return effect ? effect->numInputs : kNoValue;
}

AAFRESULT GetEffectElementId(uint32_t track, uint32_t event, uint32_t element, wchar_t* buffer, int32_t length,
                             AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    if (!effect || element >= effect->inputs.size()) return kInvalidArgument;
    return copyClipText(effect->inputs[element], &TrackClip::mobIdText, buffer, length);
}

uint32_t GetEffectKeyFrameCount(uint32_t track, uint32_t event, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    return effect ? uint32_t(effect->keyFrames.size()) : kNoValue;
}

uint32_t GetEffectParamCount(uint32_t track, uint32_t event, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    return effect ? uint32_t(effect->params.size()) : kNoValue;
}

int64_t GetEffectKeyFrame(uint32_t track, uint32_t event, uint32_t index, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    if (!effect || index >= effect->keyFrames.size()) return 0;
    return toEditUnits(double(effect->length) * effect->keyFrames[index]);
}

double GetEffectParam(uint32_t track, uint32_t event, uint32_t index, AafParseContext* context) {
    Effect* effect = effectAt(context, track, event);
    return effect && index < effect->params.size() ? effect->params[index] : 0.0;
}

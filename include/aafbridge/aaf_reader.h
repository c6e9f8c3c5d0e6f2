/* The reader's C interface: open an AAF file, catalogue its clips, walk its top-level
 * composition and read the result back one value at a time.
 *
 * Order: OpenAafFile, ParseClips, ParseComposition, any queries, CloseFile once.
 * Every call that works on a session takes it as its last argument. Queries never fail:
 * a null handle, an index at or past its count, or an event of the wrong kind answers the
 * neutral value named in each comment. Indices are 0-based. Lengths, positions, in-points
 * and cut points are counts of edit units of the track (or, for markers, of the slot that
 * held them).
 *
 * Text is copied into the caller's buffer of wide characters: at most n characters, then
 * a terminating zero one past the last character copied. A text of n or more characters
 * puts the zero in slot n, so the buffer must hold n + 1 wide characters.
 *
 * A failed read inside the file prints one line on standard error,
 * "Error '<code>' returned at line <n> in <source>", and the walk goes on without the part
 * it could not read. One session is used by one thread at a time; different sessions may
 * be used on different threads at once. */
#ifndef AAFBRIDGE_AAF_READER_H
#define AAFBRIDGE_AAF_READER_H

#include <stdint.h>
#include <wchar.h>

#include "aaf_types.h"

typedef struct AafParseContext AafParseContext;

/* ---- Session ---- */

/* Opens the AAF file at `path` (zero-terminated) for reading and stores a new session in
 * *context. Answers AAFRESULT_SUCCESS, or AAFRESULT_FILE_NOT_FOUND for any failure (no
 * file, not an AAF file, unreadable); after a failure *context is not a valid session:
 * do not query or close it. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT OpenAafFile(const wchar_t* path, AafParseContext** context);

/* Frees the session and everything read through it; the handle is invalid afterwards.
 * Call it once per successful OpenAafFile, never with NULL. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void CloseFile(AafParseContext* context);

/* 1 if the file's last identification names a product beginning with "Pro" (Pro Tools
 * and its kin), else 0; 0 for a null handle or an unreadable identification. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsProToolsFile(AafParseContext* context);

/* ---- Clip catalogue: one clip per master mob ---- */

/* Catalogues the file's master clips; call it before ParseComposition, which needs it to
 * tell track kinds. Always answers AAFRESULT_SUCCESS. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT ParseClips(AafParseContext* context);

/* The number of catalogued clips; 0 for a null handle. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumClips(AafParseContext* context);

/* Copies clip `clip`'s master mob identifier as text ("{...}", hexadecimal) into `buffer`
 * under the text rule above (`length` = n). AAFRESULT_SUCCESS, or AAFBRIDGE_E_INVALIDARG
 * for a null handle, a clip index out of range, a null buffer or a negative length. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipID(uint32_t clip, wchar_t* buffer, int32_t length,
                                                      AafParseContext* context);

/* Copies clip `clip`'s name; answers as LoadClipID. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipName(uint32_t clip, wchar_t* buffer, int32_t length,
                                                        AafParseContext* context);

/* Copies the path of clip `clip`'s media file, found through the source mobs' locators
 * (empty when there is none); answers as LoadClipID. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipPath(uint32_t clip, wchar_t* buffer, int32_t length,
                                                        AafParseContext* context);

/* What clip `clip` holds: AAF_CLIP_NO_MEDIA, AAF_CLIP_VIDEO, AAF_CLIP_AUDIO or
 * AAF_CLIP_VIDEO_AND_AUDIO; 0 for a null handle or a clip index out of range. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t LoadClipType(uint32_t clip, AafParseContext* context);

/* Track `track` (0-based, in the clip's slot order) of clip `clip`: its picture flag in
 * bit 0 and its slot ID above it (AAF_CLIP_TRACK_IS_VIDEO, AAF_CLIP_TRACK_SLOT_ID);
 * AAF_NONE for a null handle or either index out of range. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetClipIsVideo(uint32_t clip, uint32_t track, AafParseContext* context);

/* ---- Composition ---- */

/* Reads the file's top-level composition into tracks, events and markers for the queries
 * below. Run it once per session, after ParseClips: a second run appends the tracks and
 * markers again. Always answers AAFRESULT_SUCCESS; a file without a usable composition
 * simply has no tracks. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT ParseComposition(AafParseContext* context);

/* ---- Timecode and markers ---- */

/* The composition's timecode: start frame, frames per second and drop-frame flag (0 or
 * 1), each written only where its pointer is not NULL; a null handle writes nothing. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void GetTimeCode(uint32_t* start, uint32_t* fps, uint32_t* dropFrame,
                                                  AafParseContext* context);

/* The number of markers; 0 for a null handle. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumMarkers(AafParseContext* context);

/* Marker `marker`'s position in edit units of the slot that held it; -1 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetMarkerPosition(uint32_t marker, AafParseContext* context);

/* Copies marker `marker`'s comment under the text rule; AAFRESULT_SUCCESS, or
 * AAFBRIDGE_E_INVALIDARG for a null handle or a marker index out of range. The buffer must
 * be valid and `length` at least 1: this call does not check them. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetMarkerText(uint32_t marker, wchar_t* buffer, int32_t length,
                                                         AafParseContext* context);

/* ---- Tracks ---- */

/* The number of tracks (one per timeline slot of the composition); 0 for a null handle. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumTracks(AafParseContext* context);

/* AAF_TRACK_VIDEO or AAF_TRACK_AUDIO; 0 when bad, the same as an audio track. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetTrackType(uint32_t track, AafParseContext* context);

/* The track's edit rate in edit units per second (25.0, 29.97...); 0.0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API double GetTrackEditRate(uint32_t track, AafParseContext* context);

/* The number of events on the track, effect inputs included; 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumEvents(uint32_t track, AafParseContext* context);

/* ---- Events: `event` counts into the track's events, in timeline order ---- */

/* The event's length in edit units, scaled by the speed of an enclosing speed change and
 * rounded down; 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEventLen(uint32_t track, uint32_t event, AafParseContext* context);

/* A clip's start offset into its source in edit units, scaled like GetEventLen and
 * rounded up; 0 when bad and for any event that is not a clip. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEventInPoint(uint32_t track, uint32_t event, AafParseContext* context);

/* Copies a clip's name (the referenced mob's) under the text rule; other kinds give an
 * empty text. AAFRESULT_SUCCESS, or AAFBRIDGE_E_INVALIDARG when bad, for a null buffer
 * or a length below 1. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEventName(uint32_t track, uint32_t event, wchar_t* buffer,
                                                        int32_t length, AafParseContext* context);

/* Copies a clip's referenced mob identifier as text, as LoadClipID writes it; answers as
 * GetEventName. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEventId(uint32_t track, uint32_t event, wchar_t* buffer,
                                                      int32_t length, AafParseContext* context);

/* A clip's slot ID in the referenced mob; 0 for a null handle or bad index, AAF_NONE for
 * an event that is not a clip. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEventSlot(uint32_t track, uint32_t event, AafParseContext* context);

/* A clip's physical track number in the referenced mob; neutral values as GetEventSlot. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEventPhysicalNumber(uint32_t track, uint32_t event,
                                                                 AafParseContext* context);

/* 1 if the event is a filler (AAF_EVENT_FILLER), else 0; 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventFiller(uint32_t track, uint32_t event, AafParseContext* context);

/* 1 if the event is a transition (AAF_EVENT_TRANSITION), else 0; 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventTransition(uint32_t track, uint32_t event,
                                                            AafParseContext* context);

/* 1 if the event is an effect (AAF_EVENT_EFFECT), else 0; 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventEffect(uint32_t track, uint32_t event, AafParseContext* context);

/* A transition's cut point in edit units from its start, unscaled; -1 when bad or for an
 * event that is not a transition. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetTransitionCutPoint(uint32_t track, uint32_t event,
                                                               AafParseContext* context);

/* ---- Effects: the event must be an effect; it applies to the events before it ---- */

/* The effect's type, one of AAF_EFFECT_...; AAF_NONE when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectType(uint32_t track, uint32_t event, AafParseContext* context);

/* The number of inputs the effect's operation declares; AAF_NONE when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectNumInputs(uint32_t track, uint32_t event,
                                                             AafParseContext* context);

/* Copies the mob identifier text of the effect's input `element` (0-based, among the
 * events it covers) under the text rule; AAFRESULT_SUCCESS, or AAFBRIDGE_E_INVALIDARG
 * when bad, for an element out of range, a null buffer or a length below 1. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEffectElementId(uint32_t track, uint32_t event, uint32_t element,
                                                              wchar_t* buffer, int32_t length,
                                                              AafParseContext* context);

/* The number of key frames; AAF_NONE when bad. A constant effect has none. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectKeyFrameCount(uint32_t track, uint32_t event,
                                                                 AafParseContext* context);

/* The number of parameter values; AAF_NONE when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectParamCount(uint32_t track, uint32_t event,
                                                              AafParseContext* context);

/* Key frame `index`'s offset from the start of the effect in edit units (the effect's
 * unscaled length times the key frame's fraction, truncated); 0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEffectKeyFrame(uint32_t track, uint32_t event, uint32_t index,
                                                           AafParseContext* context);

/* Parameter value `index` (gain, pan, opacity or speed ratio), in the order read from
 * the file: one per key frame for a curve, one for a constant; 0.0 when bad. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API double GetEffectParam(uint32_t track, uint32_t event, uint32_t index,
                                                       AafParseContext* context);

#endif

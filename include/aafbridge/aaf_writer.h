/* The writer's C interface: register media, describe a timeline, write it as an AAF file.
 *
 * Order: CreateAafWriterContext; AddClip with its AddClipTrack and Set...TrackInfo calls
 * for each master clip, AddSubClip after its parent; InitComposition once, then tracks,
 * events and markers in any interleaving; WriteAafFile; FreeAafWriterContext.
 * Every call that works on a context takes it as its last argument. Clips are numbered
 * from 1 in registration order (master clips and sub-clips share the numbering); the
 * tracks of a clip from 1; composition tracks from 0. Lengths, positions, in-points and
 * cut points are counts of edit units of the clip track or composition track concerned.
 * Text arguments are zero-terminated wide strings.
 *
 * A refused call answers its code and leaves the context as it was. The building calls
 * only record; WriteAafFile is the only call that touches the disk. One context is used
 * by one thread at a time; different contexts may write on different threads at once. */
#ifndef AAFBRIDGE_AAF_WRITER_H
#define AAFBRIDGE_AAF_WRITER_H

#include <stdbool.h>
#include <stdint.h>
#include <wchar.h>

#include "aaf_types.h"

typedef struct AafWriterContext AafWriterContext;

#ifdef __cplusplus
#define AAFBRIDGE_EXTERN_DATA extern "C"
#else
#define AAFBRIDGE_EXTERN_DATA extern
#endif

/* The parameter identifier that Avid-family editors read for volume curves
 * (47c00f7d-fb55-11d3-9ff7-0004ac969f50); written with every volume effect. */
AAFBRIDGE_EXTERN_DATA AAFBRIDGE_API aafUID_t avidVarVolumeParam;
/* The parameter identifier that Avid-family editors read for pan
 * (e4962322-2267-11d3-8a4c-0050040ef7d2); written with every pan effect. */
AAFBRIDGE_EXTERN_DATA AAFBRIDGE_API aafUID_t avidVarPanParam;

/* ---- Context ---- */

/* Stores a new, empty context in *context. AAFRESULT_SUCCESS, or AAFRESULT_NULL_PARAM
 * when `context` is NULL. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT CreateAafWriterContext(AafWriterContext** context);

/* Frees the context and everything recorded in it, written or not; NULL is ignored. The
 * pointer is invalid afterwards. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void FreeAafWriterContext(AafWriterContext* context);

/* ---- Clip registry ---- */

/* Registers a master clip: its name, the path of its media file (a path ending in ".mxf",
 * any case, is written as MXF media), its length and start timecode in frames at
 * rateNumerator/rateDenominator frames per second, whether that timecode is drop-frame,
 * and optionally the mob IDs to give its tape and file source mobs (NULL: new ones).
 * Answers the clip's number (1-based), or -1 when the context, name or path is NULL. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int32_t AddClip(const wchar_t* name, const wchar_t* path, int64_t length,
                                                 int64_t startTimecode, bool dropFrame,
                                                 const aafMobID_t* tapeMobId, const aafMobID_t* fileMobId,
                                                 int32_t rateNumerator, int32_t rateDenominator,
                                                 AafWriterContext* context);

/* Registers a sub-clip of the master clip whose path equals `parentPath` exactly: `length`
 * edit units from `start` within it. The parent is looked up when the sub-clip is used
 * and written. Answers the sub-clip's number (1-based, shared with master clips), or -1
 * when the context, name or parent path is NULL. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int32_t AddSubClip(const wchar_t* name, const wchar_t* parentPath, int64_t length,
                                                    int64_t start, AafWriterContext* context);

/* Adds a track to clip `clipIndex` (1-based), which must be the clip registered last:
 * picture if isVideo, else sound, with its edit rate and its length in those edit units.
 * The clip's tracks are numbered from 1 in call order. AAFRESULT_SUCCESS, or
 * AAFRESULT_INVALID_PARAM for a null context or any other clip number. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AddClipTrack(int32_t clipIndex, bool isVideo, uint32_t editRateNumerator,
                                                        uint32_t editRateDenominator, int64_t length,
                                                        AafWriterContext* context);

/* The frame size in pixels of picture track `trackIndex` (1-based) of clip `clipIndex`
 * (1-based). AAFRESULT_SUCCESS, or AAFRESULT_INVALID_PARAM for a null context, a clip or
 * track number out of range, or a sound track. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT SetVideoTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t width,
                                                             uint32_t height, AafWriterContext* context);

/* The sound format of sound track `trackIndex` (1-based) of clip `clipIndex` (1-based):
 * channel count, bits per sample, sample rate in Hz and length in samples. Answers as
 * SetVideoTrackInfo, refusing a picture track. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT SetAudioTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t channels,
                                                             uint32_t bitsPerSample, uint32_t sampleRate,
                                                             int64_t sampleLength, AafWriterContext* context);

/* ---- Composition ---- */

/* Starts the composition: its frame rate rateNumerator/rateDenominator, the length of its
 * timecode track in frames, drop-frame timecode or not, the start timecode in frames and
 * its name. AAFRESULT_SUCCESS; AAFRESULT_NULL_PARAM for a null context;
 * AAFRESULT_ALREADY_INITIALIZED on a second call; AAFRESULT_INVALID_PARAM for a NULL
 * name or a zero numerator or denominator. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT InitComposition(uint32_t rateNumerator, uint32_t rateDenominator,
                                                           int64_t timecodeLength, bool dropFrame,
                                                           uint32_t timecodeStart, const wchar_t* name,
                                                           AafWriterContext* context);

/* Adds a composition track, picture if isVideo else sound, at `editRate` edit units per
 * second (29.97 is written as 30000/1001). Answers the track's index (0-based), or AAF_NONE
 * for a null context. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t AddTrackToComposition(bool isVideo, double editRate,
                                                                AafWriterContext* context);

/* The append calls below add an event at the end of composition track `track` (0-based)
 * and answer AAFRESULT_SUCCESS, AAFRESULT_NULL_PARAM for a null context,
 * AAFRESULT_NOT_INITIALIZED before InitComposition, or AAFRESULT_INVALID_PARAM for a track
 * out of range or a bad argument. */

/* Places `length` edit units of clip `clipIndex` (1-based), starting `inPoint` edit units
 * into its track `trackNumber` (1-based). isSubClip marks a reference to a sub-clip.
 * AAFRESULT_INVALID_PARAM also for a clip or track number out of range;
 * AAFRESULT_NULL_PARAM for a sub-clip whose parent is not registered. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendClipToTrack(uint32_t track, int64_t inPoint, int64_t length,
                                                             bool isSubClip, uint32_t clipIndex, uint32_t trackNumber,
                                                             AafWriterContext* context);

/* A gap of `length` edit units. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendFiller(uint32_t track, int64_t length, AafWriterContext* context);

/* A dissolve of `length` edit units overlapping the events on either side, cutting at
 * `cutPoint` edit units from its start. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendTransition(uint32_t track, int64_t cutPoint, int64_t length,
                                                            AafWriterContext* context);

/* The effect calls apply an effect of `length` edit units to the events just before it on
 * the track, as many as its length covers. It must follow a clip or another effect:
 * WriteAafFile answers AAFRESULT_INVALID_PARAM for an effect first on its track and
 * AAFRESULT_INVALID_EFFECTARG for one right after a filler or transition. `values` holds `valueCount`
 * parameter values, at least one; `keyFrames` holds `keyFrameCount` times as fractions of
 * the effect's length (0.0 start, 1.0 end), one value per key frame, so no more key frames
 * than values (AAFRESULT_INVALID_PARAM otherwise). Fewer than two key frames write the
 * first value as a constant. */

/* Volume: gain factors (1.0 unchanged). */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendVolumeEffect(uint32_t track, int64_t length, const double* values,
                                                              uint32_t valueCount, const double* keyFrames,
                                                              int32_t keyFrameCount, AafWriterContext* context);

/* Pan: positions from left to right. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendPanEffect(uint32_t track, int64_t length, const double* values,
                                                           uint32_t valueCount, const double* keyFrames,
                                                           int32_t keyFrameCount, AafWriterContext* context);

/* Speed change: values[0] is the speed factor (2.0 plays twice as fast), values[1] the
 * optional phase. `flag` picks the operation: AAF_EFFECT_SPEED when true,
 * AAF_EFFECT_SPEED_NO_FLAG when false. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendSpeedEffect(uint32_t track, bool flag, int64_t length,
                                                             const double* values, uint32_t valueCount,
                                                             const double* keyFrames, int32_t keyFrameCount,
                                                             AafWriterContext* context);

/* Video composite (superimpose): opacity values. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendVideoCompositeEffect(uint32_t track, int64_t length,
                                                                      const double* values, uint32_t valueCount,
                                                                      const double* keyFrames, int32_t keyFrameCount,
                                                                      AafWriterContext* context);

/* A marker at `position` edit units of the composition with comment `text`.
 * AAFRESULT_SUCCESS, AAFRESULT_NULL_PARAM for a null context or AAFRESULT_NOT_INITIALIZED
 * before InitComposition. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AddMarker(int64_t position, const wchar_t* text,
                                                     AafWriterContext* context);

/* ---- File output ---- */

/* Writes everything recorded as a new AAF file at `path`; the tracks' events are consumed.
 * An existing file is never replaced: AAFRESULT_FILE_EXISTS. AAFRESULT_CONTAINERWRITE when
 * the file cannot be saved (missing folder, no permission); AAFRESULT_NULL_PARAM for a
 * NULL path or context. A failure while building the content (AAFRESULT_NOT_INITIALIZED
 * with clips but no InitComposition, the effect placement codes above,
 * AAFRESULT_ILLEGAL_VALUE, AAFRESULT_INTERNAL_ERROR) is answered after saving the file
 * with what was written before it. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT WriteAafFile(const wchar_t* path, AafWriterContext* context);

#endif

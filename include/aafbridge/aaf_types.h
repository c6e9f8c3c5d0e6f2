/* The AAF value types that cross the C interface, laid out as the AAF SDK declares them,
 * and the named values that the reader and the writer answer and take. Everything here is
 * a type or a macro: including it adds no symbol to a host. */
#ifndef AAFBRIDGE_AAF_TYPES_H
#define AAFBRIDGE_AAF_TYPES_H

#include <stdint.h>

#if defined(__GNUC__) || defined(__clang__)
#define AAFBRIDGE_API __attribute__((visibility("default")))
#else
#define AAFBRIDGE_API
#endif

#ifdef __cplusplus
#define AAFBRIDGE_EXTERN_C extern "C"
#else
#define AAFBRIDGE_EXTERN_C
#endif

/* A result code: 0 for success, a negative value (high bit set) for a failure. */
typedef int32_t AAFRESULT;

/* The result codes the library answers. Each is guarded so that a host that also
 * includes the AAF SDK's own headers sees one definition of the same value. */
#ifndef AAFRESULT_SUCCESS
#define AAFRESULT_SUCCESS ((AAFRESULT)0x00000000)
#endif
/* Reader: a text copy that yielded no end position (never with a valid buffer). */
#define AAFBRIDGE_E_OUTOFMEMORY ((AAFRESULT)0x80000002)
/* Reader: null handle, index out of range, null buffer or a size below 1. */
#define AAFBRIDGE_E_INVALIDARG ((AAFRESULT)0x80000003)
/* WriteAafFile: the file could not be saved (missing folder, no permission, full disk). */
#ifndef AAFRESULT_CONTAINERWRITE
#define AAFRESULT_CONTAINERWRITE ((AAFRESULT)0x80120020)
#endif
/* OpenAafFile: the file could not be opened as an AAF file, whatever the reason. */
#ifndef AAFRESULT_FILE_NOT_FOUND
#define AAFRESULT_FILE_NOT_FOUND ((AAFRESULT)0x80120021)
#endif
/* WriteAafFile: a file already exists at the path; it is left untouched. */
#ifndef AAFRESULT_FILE_EXISTS
#define AAFRESULT_FILE_EXISTS ((AAFRESULT)0x80120028)
#endif
/* WriteAafFile: an effect directly after a filler or a transition. */
#ifndef AAFRESULT_INVALID_EFFECTARG
#define AAFRESULT_INVALID_EFFECTARG ((AAFRESULT)0x8012010D)
#endif
/* Writer: null context or null required argument; a sub-clip whose parent is not registered. */
#ifndef AAFRESULT_NULL_PARAM
#define AAFRESULT_NULL_PARAM ((AAFRESULT)0x80120164)
#endif
/* InitComposition called a second time on one context. */
#ifndef AAFRESULT_ALREADY_INITIALIZED
#define AAFRESULT_ALREADY_INITIALIZED ((AAFRESULT)0x80120166)
#endif
/* Composition building or WriteAafFile before InitComposition. */
#ifndef AAFRESULT_NOT_INITIALIZED
#define AAFRESULT_NOT_INITIALIZED ((AAFRESULT)0x80120167)
#endif
/* WriteAafFile: an unexpected failure inside the writing. */
#ifndef AAFRESULT_INTERNAL_ERROR
#define AAFRESULT_INTERNAL_ERROR ((AAFRESULT)0x80120168)
#endif
/* WriteAafFile: a clip track of a kind that is neither picture nor sound. */
#ifndef AAFRESULT_ILLEGAL_VALUE
#define AAFRESULT_ILLEGAL_VALUE ((AAFRESULT)0x8012016A)
#endif
/* Writer: a bad index, count or argument; an effect first on its track. */
#ifndef AAFRESULT_INVALID_PARAM
#define AAFRESULT_INVALID_PARAM ((AAFRESULT)0x8012016C)
#endif

/* Event kinds on a track. The reader tells them apart with IsEventFiller,
 * IsEventTransition and IsEventEffect: a clip is an event for which all three answer 0. */
#define AAF_EVENT_CLIP 0u
#define AAF_EVENT_FILLER 1u
#define AAF_EVENT_TRANSITION 2u
#define AAF_EVENT_EFFECT 3u

/* Effect types, as GetEffectType answers them and the writer's effect calls record them. */
#define AAF_EFFECT_VOLUME 0u         /* mono audio gain: AppendVolumeEffect */
#define AAF_EFFECT_PAN 1u            /* mono audio pan: AppendPanEffect */
#define AAF_EFFECT_COMPOSITE 2u      /* video superimpose: AppendVideoCompositeEffect */
#define AAF_EFFECT_SPEED 3u          /* AppendSpeedEffect with its flag true */
#define AAF_EFFECT_SPEED_NO_FLAG 4u  /* AppendSpeedEffect with its flag false */
#define AAF_EFFECT_OTHER 5u          /* reader: any other operation */

/* Track kinds: GetTrackType's answer, and the isVideo flags of the writer. */
#define AAF_TRACK_AUDIO 0u
#define AAF_TRACK_VIDEO 1u

/* Clip kinds: LoadClipType's answer, a picture bit and a sound bit. */
#define AAF_CLIP_NO_MEDIA 0u
#define AAF_CLIP_VIDEO 1u
#define AAF_CLIP_AUDIO 2u
#define AAF_CLIP_VIDEO_AND_AUDIO 3u

/* GetClipIsVideo packs a clip track's picture flag (bit 0) and its slot ID (the rest). */
#define AAF_CLIP_TRACK_IS_VIDEO(value) ((value) & 1u)
#define AAF_CLIP_TRACK_SLOT_ID(value) ((value) >> 1)

/* The neutral answer of the unsigned queries that have no 0 to spare (effect counts and
 * types, slot numbers of non-clips, GetClipIsVideo) and of AddTrackToComposition. */
#define AAF_NONE 0xFFFFFFFFu

typedef struct aafUID_t {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} aafUID_t;

typedef struct aafMobID_t {
    uint8_t SMPTELabel[12];
    uint8_t length;
    uint8_t instanceHigh;
    uint8_t instanceMid;
    uint8_t instanceLow;
    aafUID_t material;
} aafMobID_t;

typedef struct aafRational_t {
    int32_t numerator;
    int32_t denominator;
} aafRational_t;

#endif

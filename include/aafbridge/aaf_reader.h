/* The reader's C interface: open an AAF file, catalogue its clips, walk its top-level
 * composition and read the result back one value at a time. Every call that works on a
 * session takes it as its last argument; a bad handle, index or event kind answers a
 * neutral value. Text copies write up to n characters and a zero after them, so the
 * buffer must hold n + 1 wide characters. */
#ifndef AAFBRIDGE_AAF_READER_H
#define AAFBRIDGE_AAF_READER_H

#include <stdint.h>
#include <wchar.h>

#include "aaf_types.h"

typedef struct AafParseContext AafParseContext;

/* Session */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT OpenAafFile(const wchar_t* path, AafParseContext** context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void CloseFile(AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsProToolsFile(AafParseContext* context);

/* Clip catalogue */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT ParseClips(AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumClips(AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipID(uint32_t clip, wchar_t* buffer, int32_t length,
                                                      AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipName(uint32_t clip, wchar_t* buffer, int32_t length,
                                                        AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT LoadClipPath(uint32_t clip, wchar_t* buffer, int32_t length,
                                                        AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t LoadClipType(uint32_t clip, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetClipIsVideo(uint32_t clip, uint32_t track, AafParseContext* context);

/* Composition */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT ParseComposition(AafParseContext* context);

/* Timecode and markers */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void GetTimeCode(uint32_t* start, uint32_t* fps, uint32_t* dropFrame,
                                                  AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumMarkers(AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetMarkerPosition(uint32_t marker, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetMarkerText(uint32_t marker, wchar_t* buffer, int32_t length,
                                                         AafParseContext* context);

/* Tracks */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumTracks(AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetTrackType(uint32_t track, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API double GetTrackEditRate(uint32_t track, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetNumEvents(uint32_t track, AafParseContext* context);

/* Events */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEventLen(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEventInPoint(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEventName(uint32_t track, uint32_t event, wchar_t* buffer,
                                                        int32_t length, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEventId(uint32_t track, uint32_t event, wchar_t* buffer,
                                                      int32_t length, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEventSlot(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEventPhysicalNumber(uint32_t track, uint32_t event,
                                                                 AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventFiller(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventTransition(uint32_t track, uint32_t event,
                                                            AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t IsEventEffect(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetTransitionCutPoint(uint32_t track, uint32_t event,
                                                               AafParseContext* context);

/* Effects */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectType(uint32_t track, uint32_t event, AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectNumInputs(uint32_t track, uint32_t event,
                                                             AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT GetEffectElementId(uint32_t track, uint32_t event, uint32_t element,
                                                              wchar_t* buffer, int32_t length,
                                                              AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectKeyFrameCount(uint32_t track, uint32_t event,
                                                                 AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t GetEffectParamCount(uint32_t track, uint32_t event,
                                                              AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int64_t GetEffectKeyFrame(uint32_t track, uint32_t event, uint32_t index,
                                                           AafParseContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API double GetEffectParam(uint32_t track, uint32_t event, uint32_t index,
                                                       AafParseContext* context);

#endif

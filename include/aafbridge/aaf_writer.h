/* The writer's C interface: register media, describe a timeline, write it as an AAF file.
 * Every call that works on a context takes it as its last argument. */
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

/* Parameter identifiers that Avid-family editors read for volume curves and pan. */
AAFBRIDGE_EXTERN_DATA AAFBRIDGE_API aafUID_t avidVarVolumeParam;
AAFBRIDGE_EXTERN_DATA AAFBRIDGE_API aafUID_t avidVarPanParam;

/* Context */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT CreateAafWriterContext(AafWriterContext** context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API void FreeAafWriterContext(AafWriterContext* context);

/* Clip registry: clips are numbered from 1, master clips and sub-clips alike. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int32_t AddClip(const wchar_t* name, const wchar_t* path, int64_t length,
                                                 int64_t startTimecode, bool dropFrame,
                                                 const aafMobID_t* tapeMobId, const aafMobID_t* fileMobId,
                                                 int32_t rateNumerator, int32_t rateDenominator,
                                                 AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API int32_t AddSubClip(const wchar_t* name, const wchar_t* parentPath, int64_t length,
                                                    int64_t start, AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AddClipTrack(int32_t clipIndex, bool isVideo, uint32_t editRateNumerator,
                                                        uint32_t editRateDenominator, int64_t length,
                                                        AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT SetVideoTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t width,
                                                             uint32_t height, AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT SetAudioTrackInfo(uint32_t clipIndex, uint32_t trackIndex, uint32_t channels,
                                                             uint32_t bitsPerSample, uint32_t sampleRate,
                                                             int64_t sampleLength, AafWriterContext* context);

/* Composition: tracks are numbered from 0; events land on a track in call order. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT InitComposition(uint32_t rateNumerator, uint32_t rateDenominator,
                                                           int64_t timecodeLength, bool dropFrame,
                                                           uint32_t timecodeStart, const wchar_t* name,
                                                           AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API uint32_t AddTrackToComposition(bool isVideo, double editRate,
                                                                AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendClipToTrack(uint32_t track, int64_t inPoint, int64_t length,
                                                             bool isSubClip, uint32_t clipIndex, uint32_t trackNumber,
                                                             AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendFiller(uint32_t track, int64_t length, AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendTransition(uint32_t track, int64_t cutPoint, int64_t length,
                                                            AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendVolumeEffect(uint32_t track, int64_t length, const double* values,
                                                              uint32_t valueCount, const double* keyFrames,
                                                              int32_t keyFrameCount, AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendPanEffect(uint32_t track, int64_t length, const double* values,
                                                           uint32_t valueCount, const double* keyFrames,
                                                           int32_t keyFrameCount, AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendSpeedEffect(uint32_t track, bool flag, int64_t length,
                                                             const double* values, uint32_t valueCount,
                                                             const double* keyFrames, int32_t keyFrameCount,
                                                             AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AppendVideoCompositeEffect(uint32_t track, int64_t length,
                                                                      const double* values, uint32_t valueCount,
                                                                      const double* keyFrames, int32_t keyFrameCount,
                                                                      AafWriterContext* context);
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT AddMarker(int64_t position, const wchar_t* text,
                                                     AafWriterContext* context);

/* File output: the only call that touches the disk. */
AAFBRIDGE_EXTERN_C AAFBRIDGE_API AAFRESULT WriteAafFile(const wchar_t* path, AafWriterContext* context);

#endif

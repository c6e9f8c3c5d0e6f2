/* The AAF value types that cross the C interface, laid out as the AAF SDK declares them. */
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

typedef int32_t AAFRESULT;

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

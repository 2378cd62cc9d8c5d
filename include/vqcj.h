/*
 * vqcj: image-compression primitives with a flat C interface.
 *
 * Every function takes caller-owned buffers and returns a VqcStatus: zero on
 * success, negative when it refused or failed (nothing was written then),
 * positive for a warning after complete work. Results are defined to the bit.
 *
 * Conventions shared by all families:
 *  - a row step is a signed count of bytes between row starts, whatever the
 *    element type;
 *  - VqciSize is passed by value, width first;
 *  - arguments are checked in a fixed order per family and the first failing
 *    check decides the status, so a call with two faults reports the first.
 *
 * Usable from C99 and C++.
 */
#ifndef VQCJ_H
#define VQCJ_H

#include <stdint.h>

#if defined(VQCJ_BUILDING) && defined(__GNUC__)
#define VQCJ_API __attribute__((visibility("default")))
#else
#define VQCJ_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Element and shared types ----------------------------------------- */

typedef uint8_t Vqc8u;
typedef uint16_t Vqc16u;
typedef int16_t Vqc16s;
typedef int32_t Vqc32s;
typedef float Vqc32f;

typedef int32_t VqcStatus;

typedef struct {
    int32_t width;
    int32_t height;
} VqciSize;

typedef struct {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} VqciRect;

/* Wavelet phase: 0 is low-pass first; any other value is high-pass first. */
typedef int32_t VqciWTPhase;
enum { vqcWTPhaseLowFirst = 0, vqcWTPhaseHighFirst = 1 };

/* ---- Status numbers --------------------------------------------------- */

enum {
    vqcStatusOk = 0,
    vqcStatusOddSize = 35,         /* warning: last odd column or row not processed */
    vqcStatusDivByZero = 6,        /* warning: zero divisor, entry holds 65535 */
    vqcStatusBadScanIndex = -2,
    vqcStatusBadArg = -5,
    vqcStatusBadSize = -6,
    vqcStatusBadRange = -7,
    vqcStatusNullPtr = -8,
    vqcStatusNoMemory = -9,
    vqcStatusBadStep = -14,
    vqcStatusBadContext = -17,
    vqcStatusOutOfBuffer = -62,
    vqcStatusBadHuffmanCode = -63,
    vqcStatusBadHuffmanTable = -64,
    vqcStatusJPEG2KStreamError = -112,
    vqcStatusJPEG2KBadPassNumber = -113,
    vqcStatusRowOverrun = -124,
    vqcStatusJPEG2KNotAttached = -180,
    vqcStatusBadMode = -9999
};

/* ---- Library version -------------------------------------------------- */

typedef struct {
    int32_t major;
    int32_t minor;
    int32_t majorBuild;
    int32_t build;
    char targetCpu[4];     /* "px" and two zero bytes */
    const char* name;
    const char* version;   /* its build text differs from `build` on purpose */
    const char* buildDate;
} VqcLibraryVersion;

/* Static record; the same pointer on every call. Cannot fail. */
VQCJ_API const VqcLibraryVersion* vqcjGetLibVersion(void);

/* ---- Level shift ------------------------------------------------------ */
/*
 * Sub128: dst = src - 128 (8u -> 16s). Add128: dst = saturate8u(src + 128).
 * Arguments: pSrc, srcStep, pDst, dstStep, roiSize (elements).
 * Checks: pSrc -8, srcStep -14, pDst -8, dstStep -14, width -6, height -6.
 * Rows run on several threads above 8192 elements; not in place.
 */
VQCJ_API VqcStatus vqciSub128_JPEG_8u16s_C1R(const Vqc8u* pSrc, int32_t srcStep,
                                              Vqc16s* pDst, int32_t dstStep,
                                              VqciSize roiSize);
VQCJ_API VqcStatus vqciAdd128_JPEG_16s8u_C1R(const Vqc16s* pSrc, int32_t srcStep,
                                              Vqc8u* pDst, int32_t dstStep,
                                              VqciSize roiSize);

#ifdef __cplusplus
}
#endif

#endif /* VQCJ_H */

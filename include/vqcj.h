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

/* ---- JPEG forward colour conversion ------------------------------------ */
/*
 * RGB/BGR to YCbCr or Y, 8-bit planes, no level shift. roiSize is in pixels
 * of the full-rate image; pDst holds the planes Y, Cb, Cr.
 * Three arithmetics stand side by side on purpose, and are not bit-equal:
 *  - table forms (C3P3R, P3R, packed 555/565, the Y-only forms): Y rounds at
 *    one half, chroma just under one half;
 *  - four-channel forms (C4P3R): multiplications with their own rounding;
 *  - fused 422/411 forms: chroma from the sum of 2 or 4 pixels.
 * Check orders (pointers -8, steps -14, sizes -6):
 *  C3P3R, packed:  pSrc, pDst, pDst[0..2], srcStep, dstStep, width, height
 *  P3R:            pSrc, pDst, pSrc[0..2], pDst[0..2], srcStep, dstStep, width, height
 *  Y C3C1R:        pSrc, pDst, srcStep, dstStep, width, height
 *  Y P3C1R:        pSrc, pSrc[0..2], pDst, srcStep, dstStep, width, height
 *  C4P3R:          pSrc, pDst, pDst[0..2], width, height (steps taken on trust)
 *  422:            pSrc, pDst, pDst[0..2], width < 2, height < 1 (steps on trust)
 *  411:            pSrc, pDst, pDst[0..2], width < 2, height < 2 (steps on trust)
 * The fused forms return 35 when an odd last column or row was left unwritten.
 * C3P3R, P3R and the Y forms run rows on several threads above 8192 pixels.
 */
VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciBGR555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciBGR565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGB555ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGB565ToYCbCr_JPEG_16u8u_C3P3R(const Vqc16u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToY_JPEG_8u_C3C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst, int32_t dstStep,
                                             VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToY_JPEG_8u_P3C1R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                             int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr422_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciRGBToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);
VQCJ_API VqcStatus vqciBGRToYCbCr411_JPEG_8u_C4P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[3],
                                                    const int32_t dstStep[3], VqciSize roiSize);

/* ---- JPEG inverse colour conversion ------------------------------------ */
/*
 * YCbCr planes (Y, Cb, Cr) to RGB/BGR pixels, saturated to 0..255.
 * Table arithmetic: full-rate C3/planar/packed forms and the interleaved 422
 * form. Multiplication arithmetic, with slightly different weights: the
 * four-channel forms and the planar 422/411 forms.
 * Check orders (pointers -8, steps -14, sizes -6):
 *  P3C3R, packed:  pSrc, pDst, pSrc[0..2], srcStep, dstStep, width, height
 *  P3R:            pSrc, pDst, pSrc[0..2], pDst[0..2], srcStep, dstStep, width, height
 *  P3C4R:          pDst, pSrc, pSrc[0..2], width, height (steps on trust)
 *  422 planar:     pDst, pSrc, pSrc[0..2], width < 2, height < 1 (steps on trust)
 *  411 planar:     pDst, pSrc, pSrc[0..2], width < 2, height < 2 (steps on trust)
 *  422 C2C3R:      pSrc, pDst, width, height (steps on trust)
 * The planar 422/411 forms return 35 for an odd width or height. Three 411
 * members and the C2C3R form process an odd last pair whole, reading and
 * writing one pixel beyond the width: size the buffers for it.
 * aval fills the fourth byte of the C4 forms.
 */
VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCrToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCrToRGB_JPEG_8u_P3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc8u* const pDst[3],
                                               int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToBGR555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToBGR565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToRGB555_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCrToRGB565_JPEG_8u16u_P3C3R(const Vqc8u* const pSrc[3], int32_t srcStep, Vqc16u* pDst,
                                                       int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCr422ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C3R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCbCr411ToRGB_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCr411ToBGR_JPEG_8u_P3C4R(const Vqc8u* const pSrc[3], const int32_t srcStep[3],
                                                    Vqc8u* pDst, int32_t dstStep, VqciSize roiSize, Vqc8u aval);
VQCJ_API VqcStatus vqciYCbCr422ToRGB_JPEG_8u_C2C3R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* pDst,
                                                    int32_t dstStep, VqciSize roiSize);

/* ---- CMYK and YCCK ----------------------------------------------------- */
/*
 * The inks as inverted R, G, B through the table arithmetic; K unchanged.
 * Planes C, M, Y, K and Y, Cb, Cr, K; one step per side.
 * Checks: pSrc, pDst, then the plane pointers (source planes before
 * destination planes), srcStep, dstStep, width, height. Row-parallel.
 */
VQCJ_API VqcStatus vqciCMYKToYCCK_JPEG_8u_C4P4R(const Vqc8u* pSrc, int32_t srcStep, Vqc8u* const pDst[4],
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciCMYKToYCCK_JPEG_8u_P4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* const pDst[4],
                                               int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCCKToCMYK_JPEG_8u_P4C4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* pDst,
                                                 int32_t dstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciYCCKToCMYK_JPEG_8u_P4R(const Vqc8u* const pSrc[4], int32_t srcStep, Vqc8u* const pDst[4],
                                               int32_t dstStep, VqciSize roiSize);

/* ---- Chroma down- and up-sampling -------------------------------------- */
/*
 * Image forms: pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize. Loops
 * run over the destination size; the sizes are not compared. The up-sampling
 * forms read one sample (and one row) beyond each border of the source: the
 * caller provides those bytes. Checks in buffer order: pSrc -8, srcStep -14,
 * source width -6, source height -6, then the same for the destination.
 * DownH2V1, DownH2V2 and UpH2V2 are row-parallel on the destination size;
 * UpH2V1 is serial.
 * Row forms: each their own rounding (box filters alternate their bias) and
 * their own border handling. Checks: the pointers -8, then srcWidth -6. The
 * box rows write (srcWidth + 1) / 2 samples, and an odd srcWidth reads one
 * byte past the row; the triangle rows write 2 * srcWidth samples and need
 * srcWidth of at least 2. In the H2V2 triangle pSrc1 is the near row.
 */
VQCJ_API VqcStatus vqciSampleDownH2V1_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                   Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize);
VQCJ_API VqcStatus vqciSampleDownH2V2_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                   Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize);
VQCJ_API VqcStatus vqciSampleUpH2V1_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                 Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize);
VQCJ_API VqcStatus vqciSampleUpH2V2_JPEG_8u_C1R(const Vqc8u* pSrc, int32_t srcStep, VqciSize srcRoiSize,
                                                 Vqc8u* pDst, int32_t dstStep, VqciSize dstRoiSize);
VQCJ_API VqcStatus vqciSampleDownRowH2V1_Box_JPEG_8u_C1(const Vqc8u* pSrc, int32_t srcWidth, Vqc8u* pDst);
VQCJ_API VqcStatus vqciSampleDownRowH2V2_Box_JPEG_8u_C1(const Vqc8u* pSrc1, const Vqc8u* pSrc2, int32_t srcWidth,
                                                         Vqc8u* pDst);
VQCJ_API VqcStatus vqciSampleUpRowH2V1_Triangle_JPEG_8u_C1(const Vqc8u* pSrc, int32_t srcWidth, Vqc8u* pDst);
VQCJ_API VqcStatus vqciSampleUpRowH2V2_Triangle_JPEG_8u_C1(const Vqc8u* pSrc1, const Vqc8u* pSrc2,
                                                            int32_t srcWidth, Vqc8u* pDst);

/* ---- Quantisation tables and quantisers -------------------------------- */
/*
 * Raw tables: 64 bytes in zig-zag order. Forward tables: 64 reciprocals of
 * the divisors scaled by 32768, natural order (a zero divisor gives 65535 and
 * the warning 6). Inverse tables: 64 divisors, natural order; the inverse
 * quantisers read them as signed 16-bit values.
 * RawTableInit: quality scaling in place; table -8, qualityFactor < 1: -5.
 * TableInit: either pointer null -8. Quant8x8: either pointer null -8.
 * Forward quantisation rounds half to even; both quantisers saturate.
 */
VQCJ_API VqcStatus vqciQuantFwdRawTableInit_JPEG_8u(Vqc8u* pQuantRawTable, int32_t qualityFactor);
VQCJ_API VqcStatus vqciQuantFwdTableInit_JPEG_8u16u(const Vqc8u* pQuantRawTable, Vqc16u* pQuantFwdTable);
VQCJ_API VqcStatus vqciQuantInvTableInit_JPEG_8u16u(const Vqc8u* pQuantRawTable, Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciQuantFwd8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantFwdTable);
VQCJ_API VqcStatus vqciQuantInv8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantInvTable);

/* ---- 8x8 DCT with quantisation ----------------------------------------- */
/*
 * Blocks are 64 Vqc16s, row-major, contiguous; coefficients in natural order.
 * Integer forms: fixed-point kernel, 16-bit wrap between passes, saturation
 * only in the quantiser. The 16u forms (12-bit samples) run in single
 * precision with a caller-built float table of multipliers; level shift 2048,
 * outputs rounded half to even; the inverse limits its samples to 0..4095.
 * LS forms with a row step check: pSrc, pDst -8, step -14, table -8.
 * Block forms check their pointers in argument order: -8.
 */
VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                        const Vqc16u* pQuantFwdTable);
VQCJ_API VqcStatus vqciDCTQuantFwd8x8LS_JPEG_16u16s_C1R(const Vqc16u* pSrc, int32_t srcStep, Vqc16s* pDst,
                                                         const Vqc32f* pQuantFwdTable);
VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantFwdTable);
VQCJ_API VqcStatus vqciDCTQuantFwd8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantFwdTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                        const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_JPEG_16s16u_C1R(const Vqc16s* pSrc, Vqc16u* pDst, int32_t dstStep,
                                                         const Vqc32f* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8_JPEG_16s_C1I(Vqc16s* pSrcDst, const Vqc16u* pQuantInvTable);

/* ---- TIFF rows ---------------------------------------------------------- */
/*
 * PackBits, one row at a time. The encoder appends at *pDstCount and stops
 * with -124 (the earlier packets stay valid, *pDstCount at their end) when a
 * packet would pass dstLenMax. A row of n bytes packs to at most
 * n + ceil(n / 5) bytes. The decoder fills dstLen bytes starting at
 * *pSrcPos and leaves *pSrcPos after the last packet read, ready for the next
 * row; -124 when a packet would pass srcLen or the row (nothing of that
 * packet is written). Headers of -128 are passed over. A replicate header on
 * the last byte before srcLen takes its value from the byte at srcLen.
 * Checks: pointers -8, then lengths -6.
 * Join/split 16-bit little-endian samples to and from two byte planes
 * (plane 0 the high bytes). Checks: outer pointers -8, len < 1: -14.
 */
VQCJ_API VqcStatus vqciPackBitsRow_TIFF_8u_C1(const Vqc8u* pSrc, int32_t srcLen, Vqc8u* pDst, int32_t* pDstCount,
                                               int32_t dstLenMax);
VQCJ_API VqcStatus vqciUnpackBitsRow_TIFF_8u_C1(const Vqc8u* pSrc, int32_t* pSrcPos, int32_t srcLen, Vqc8u* pDst,
                                                 int32_t dstLen);
VQCJ_API VqcStatus vqciJoinRow_TIFF_8u16u_C1(const Vqc8u* const ppSrc[2], Vqc8u* pDst, int32_t len);
VQCJ_API VqcStatus vqciSplitRow_TIFF_16u8u_C1(const Vqc8u* pSrc, Vqc8u* const ppDst[2], int32_t len);

/* ---- JPEG Huffman tables and baseline coders ------------------------- */
/*
 * Tables. BITS lists are 16 counts (codes of length 1..16), HUFFVAL lists
 * their symbols in code order, at most 256. Encoder tables hold one word per
 * symbol: length << 16 | code, zero for a symbol without a code. Both table
 * forms are plain data and may be placed in the caller's memory (GetBufSize
 * gives 1024 and 1644 bytes). Decoder tables accept lists that encoder tables
 * refuse (all-ones codes). InitAlloc stores the block even when the build
 * fails with -64; release it with the matching Free. A failed allocation
 * reports -8. Free of null: -8.
 * RawTableInit builds length-limited optimal lists from 257 counts (the word
 * behind the 256 symbol counts is read and replaced by the reserved all-ones
 * code); -64 when the lengths cannot be limited to 16 bits.
 */
typedef struct {
    uint32_t codeWord[256];   /* length << 16 | code, indexed by symbol */
} VqciEncodeHuffmanSpec;

typedef struct {
    uint16_t huffVal[256];
    uint32_t fastLookup[256]; /* next 8 bits: length << 16 | symbol; 0 for longer codes */
    uint16_t minCode[18];
    uint16_t maxCode[18];     /* 0xFFFF: no code of that length */
    uint16_t valPtr[18];
} VqciDecodeHuffmanSpec;

/*
 * Encoder state: up to 7 pending bits between calls, the first at bit 23 of
 * bitBuffer. One state serves one entropy-coded segment; a call with a
 * non-zero flushState pads the last byte with ones and resets the state.
 */
typedef struct {
    uint64_t bitBuffer;
    int32_t bitCount;
    int32_t eobRun;
    int32_t correctionCount;
    uint8_t correctionBits[1024];
} VqciEncodeHuffmanState;

/*
 * Decoder state: fetched bits, the newest at bit 0, and their count. The
 * reader stops at a marker and stores its second byte in *pMarker; it reads
 * no further bytes until the caller clears that word.
 */
typedef struct {
    uint64_t bitBuffer;
    int32_t bitCount;
    int32_t eobRun;
    int32_t coefCount;        /* zig-zag positions used by the last 8x8 block */
} VqciDecodeHuffmanState;

VQCJ_API VqcStatus vqciEncodeHuffmanSpecGetBufSize_JPEG_8u(int32_t* size);
VQCJ_API VqcStatus vqciEncodeHuffmanSpecInit_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                      VqciEncodeHuffmanSpec* spec);
VQCJ_API VqcStatus vqciEncodeHuffmanSpecInitAlloc_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                           VqciEncodeHuffmanSpec** spec);
VQCJ_API VqcStatus vqciEncodeHuffmanSpecFree_JPEG_8u(VqciEncodeHuffmanSpec* spec);
VQCJ_API VqcStatus vqciDecodeHuffmanSpecGetBufSize_JPEG_8u(int32_t* size);
VQCJ_API VqcStatus vqciDecodeHuffmanSpecInit_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                      VqciDecodeHuffmanSpec* spec);
VQCJ_API VqcStatus vqciDecodeHuffmanSpecInitAlloc_JPEG_8u(const Vqc8u* listBits, const Vqc8u* listVals,
                                                           VqciDecodeHuffmanSpec** spec);
VQCJ_API VqcStatus vqciDecodeHuffmanSpecFree_JPEG_8u(VqciDecodeHuffmanSpec* spec);
VQCJ_API VqcStatus vqciEncodeHuffmanRawTableInit_JPEG_8u(const Vqc32s statistics[257], Vqc8u* listBits,
                                                          Vqc8u* listVals);

/*
 * Encoders. The stateful forms check pDst -8, dstLenBytes < 1 -6, pDstCurrPos
 * and pState -8, then flush if asked (nothing else is read), then the block's
 * pointers -8. -62 when the destination ends; -64 for a symbol without a
 * code. Nothing is rolled back: a failed block is lost, the DC predictor has
 * moved and the position tells how far it got. A position outside the buffer
 * counts as its end.
 * The Direct form writes at a bit position with no bound (the caller keeps a
 * spare byte beyond the data), skips symbols without a code and flushes
 * nothing. Statistics add to caller-cleared histograms of 257 words: -63 for
 * a DC category above 15 or an AC category above 14.
 */
VQCJ_API VqcStatus vqciEncodeHuffmanStateGetBufSize_JPEG_8u(int32_t* size);
VQCJ_API VqcStatus vqciEncodeHuffmanStateInit_JPEG_8u(VqciEncodeHuffmanState* pState);
VQCJ_API VqcStatus vqciEncodeHuffmanStateInitAlloc_JPEG_8u(VqciEncodeHuffmanState** pState);
VQCJ_API VqcStatus vqciEncodeHuffmanStateFree_JPEG_8u(VqciEncodeHuffmanState* pState);
VQCJ_API VqcStatus vqciEncodeHuffman8x8_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                       int32_t* pDstCurrPos, Vqc16s* lastDC,
                                                       const VqciEncodeHuffmanSpec* dcTable,
                                                       const VqciEncodeHuffmanSpec* acTable,
                                                       VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t* pDstBitsLen,
                                                              Vqc16s* lastDC, const VqciEncodeHuffmanSpec* dcTable,
                                                              const VqciEncodeHuffmanSpec* acTable);
VQCJ_API VqcStatus vqciEncodeHuffmanOne_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                       int32_t* pDstCurrPos, const VqciEncodeHuffmanSpec* table,
                                                       VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* dcStatistics,
                                                            Vqc32s* acStatistics, Vqc16s* lastDC);
VQCJ_API VqcStatus vqciGetHuffmanStatisticsOne_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* statistics);

/*
 * Decoders. 8x8 checks pSrc -8, srcLenBytes < 0 -5, then the other pointers
 * -8; One checks pSrc -8, srcLenBytes < 1 -6, then the others -8. -62 when
 * the source ends short (also straight after a 0xFF), -63 for a code of more
 * than 16 bits or too few bits after a marker. No byte at or beyond
 * srcLenBytes is read; a position outside the buffer counts as its end.
 * The Direct form reads until a marker (the data must end in one), keeps its
 * bits in the caller's prefetchedBits/prefetchedCount and moves a bit
 * position that always stands on a byte boundary.
 */
VQCJ_API VqcStatus vqciDecodeHuffmanStateGetBufSize_JPEG_8u(int32_t* size);
VQCJ_API VqcStatus vqciDecodeHuffmanStateInit_JPEG_8u(VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffmanStateInitAlloc_JPEG_8u(VqciDecodeHuffmanState** pState);
VQCJ_API VqcStatus vqciDecodeHuffmanStateFree_JPEG_8u(VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                       Vqc16s* pDst, Vqc16s* lastDC, int32_t* pMarker,
                                                       const VqciDecodeHuffmanSpec* dcTable,
                                                       const VqciDecodeHuffmanSpec* acTable,
                                                       VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t* pSrcBitsLen, Vqc16s* pDst,
                                                              Vqc16s* lastDC, int32_t* pMarker,
                                                              uint32_t* prefetchedBits, int32_t* prefetchedCount,
                                                              const VqciDecodeHuffmanSpec* dcTable,
                                                              const VqciDecodeHuffmanSpec* acTable);
VQCJ_API VqcStatus vqciDecodeHuffmanOne_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                       Vqc16s* pDst, int32_t* pMarker,
                                                       const VqciDecodeHuffmanSpec* table,
                                                       VqciDecodeHuffmanState* pState);

/* ---- JPEG progressive Huffman coders --------------------------------- */
/*
 * Progressive block coders: DC first and refinement, AC first and
 * refinement, on the states and tables of the baseline coders. Ss..Se are
 * zig-zag positions with 1 <= Ss <= Se <= 63 for AC, 0 <= Al <= 13 for all
 * (-5 otherwise, one test). Encoders keep the pending EOB run (written at
 * 32767 at the latest) and the refinement correction bits (written when 938
 * wait) in the state; a flush writes them, pads the byte and resets the
 * state. A state whose correctionCount no encoder could have left is
 * refused with -5. Decoders accumulate into the caller's block and never
 * clear it; eobRun carries over between calls. Statistics passes make the
 * encoders' decisions on a state of their own, which needs its own flush
 * so that the last run is counted; the AC first statistics refuse bit
 * lengths above 10 (its encoder: above 11).
 */
VQCJ_API VqcStatus vqciEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                               int32_t* pDstCurrPos, Vqc16s* lastDC, int32_t Al,
                                                               const VqciEncodeHuffmanSpec* dcTable,
                                                               VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                                int32_t* pDstCurrPos, int32_t Al,
                                                                VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                               int32_t* pDstCurrPos, int32_t Ss, int32_t Se,
                                                               int32_t Al, const VqciEncodeHuffmanSpec* acTable,
                                                               VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstLenBytes,
                                                                int32_t* pDstCurrPos, int32_t Ss, int32_t Se,
                                                                int32_t Al, const VqciEncodeHuffmanSpec* acTable,
                                                                VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                               int32_t* pSrcCurrPos, Vqc16s* pDst, Vqc16s* lastDC,
                                                               int32_t* pMarker, int32_t Al,
                                                               const VqciDecodeHuffmanSpec* dcTable,
                                                               VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                                int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                                int32_t Al, VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                               int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                               int32_t Ss, int32_t Se, int32_t Al,
                                                               const VqciDecodeHuffmanSpec* acTable,
                                                               VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const Vqc8u* pSrc, int32_t srcLenBytes,
                                                                int32_t* pSrcCurrPos, Vqc16s* pDst, int32_t* pMarker,
                                                                int32_t Ss, int32_t Se, int32_t Al,
                                                                const VqciDecodeHuffmanSpec* acTable,
                                                                VqciDecodeHuffmanState* pState);
VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* dcStatistics,
                                                                    Vqc16s* lastDC, int32_t Al);
VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* acStatistics,
                                                                    int32_t Ss, int32_t Se, int32_t Al,
                                                                    VqciEncodeHuffmanState* pState,
                                                                    int32_t flushState);
VQCJ_API VqcStatus vqciGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const Vqc16s* pSrc, Vqc32s* acStatistics,
                                                                     int32_t Ss, int32_t Se, int32_t Al,
                                                                     VqciEncodeHuffmanState* pState,
                                                                     int32_t flushState);

/* ---- JPEG lossless prediction and row coding ------------------------- */
/*
 * Lossless JPEG, one row at a time, modulo 2^16. First row: the first sample
 * against 1 << (P - Pt - 1) (shift count modulo 32, cut to 16 bits), the
 * rest against the left neighbour; checks pointers -8, width -6, P outside
 * 2..16 or Pt < 0 -5. Other rows: the first sample against the one above,
 * the rest through predictor 1..7 (-5 otherwise); halving works on
 * sign-extended operands. Row coding interleaves up to four components by
 * column (nComps above 4 counts as 4); -32768 is category 16 with no value
 * bits.
 */
VQCJ_API VqcStatus vqciDiffPredFirstRow_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, int32_t width, int32_t P,
                                                    int32_t Pt);
VQCJ_API VqcStatus vqciReconstructPredFirstRow_JPEG_16s_C1(const Vqc16s* pSrc, Vqc16s* pDst, int32_t width, int32_t P,
                                                           int32_t Pt);
VQCJ_API VqcStatus vqciDiffPredRow_JPEG_16s_C1(const Vqc16s* pSrc, const Vqc16s* pPrevRow, Vqc16s* pDst, int32_t width,
                                               int32_t predictor);
VQCJ_API VqcStatus vqciReconstructPredRow_JPEG_16s_C1(const Vqc16s* pSrc, const Vqc16s* pPrevRow, Vqc16s* pDst,
                                                      int32_t width, int32_t predictor);
VQCJ_API VqcStatus vqciEncodeHuffmanRow_JPEG_16s1u_P4C1(const Vqc16s* const pSrc[4], int32_t nCols, int32_t nComps,
                                                        Vqc8u* pDst, int32_t dstLenBytes, int32_t* pDstCurrPos,
                                                        const VqciEncodeHuffmanSpec* const tables[4],
                                                        VqciEncodeHuffmanState* pState, int32_t flushState);
VQCJ_API VqcStatus vqciDecodeHuffmanRow_JPEG_1u16s_C1P4(const Vqc8u* pSrc, int32_t srcLenBytes, int32_t* pSrcCurrPos,
                                                        Vqc16s* const pDst[4], int32_t nCols, int32_t nComps,
                                                        int32_t* pMarker,
                                                        const VqciDecodeHuffmanSpec* const tables[4],
                                                        VqciDecodeHuffmanState* pState);

/* ---- JPEG MCU conversions and reduced-size inverse DCT --------------- */
/*
 * One minimum coded unit (MCU) between image rows and its level-shifted 8x8
 * blocks, colour conversion and chroma resampling fused into one call.
 * An MCU is 8x8 pixels (444), 16x8 (422) or 16x16 (411). Its planar side is
 * consecutive blocks of 64 Vqc16s in natural order: the luma blocks first, in
 * raster order (1, 2 or 4), then one Cb and one Cr block; YCCK adds as many K
 * blocks as there are luma blocks. Entry c of the block pointer array points
 * to the first block of component c (Y, Cb, Cr, K). Steps are in bytes.
 *
 * Forward (pixels to blocks), per pixel and per chroma sample covering n = 1,
 * 2 or 4 pixels (k = log2 n), arithmetic shifts:
 *   Y  = ((19595 R + 38470 G + 7471 B + 32768) >> 16) - 128
 *   Cb = (sum(32768 B - 21709 G - 11059 R) + 2^(15+k)) >> (16+k)
 *   Cr = (sum(32768 R - 27439 G -  5329 B) + 2^(15+k)) >> (16+k)
 * Chroma carries no bias, so pure blue or red can give +128. 555/565 words
 * are expanded by shifting each field up without replication; CMYK is taken
 * as R = 255 - C, G = 255 - M, B = 255 - Y, with K - 128 in the K blocks.
 * SampleDown reads interleaved Y, Cb, Cr bytes: Y - 128, and each chroma
 * sample ((sum + n/2) >> k) - 128. Split422 reads Y0 Cb Y1 Cr pairs of a
 * 16x8 MCU: every byte - 128, nothing averaged.
 *
 * Inverse (blocks to pixels): every block value is clamped to -128..127 and
 * 128 added; each chroma sample serves its 1, 2 or 4 pixels; colour by the
 * multiplication arithmetic of the planar 422/411 inverse forms, saturated:
 *   R = (91880 Cr + 65536 Y - 11727880) >> 16
 *   G = (65536 Y - 22553 Cb - 46801 Cr + 8910128) >> 16
 *   B = (116128 Cb + 65536 Y - 14831618) >> 16
 * 555/565 words keep the top bits of each saturated byte (red in the high
 * field); YCCK gives C = 255 - R, M = 255 - G, Y = 255 - B and the K byte.
 * SampleUp writes Y, Cb, Cr bytes; Join422 writes Y0 Cb Y1 Cr pairs.
 *
 * Rows of 16-bit pixels must start on even addresses.
 * Checks: the pixel pointer, the block pointer array, each of its entries in
 * order (-8), then the step below 1 (-14). Nothing else can fail.
 */
VQCJ_API VqcStatus vqciRGBToYCbCr444LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciRGBToYCbCr422LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciRGBToYCbCr411LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGRToYCbCr444LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGRToYCbCr422LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGRToYCbCr411LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const Vqc16u* pSrc, int32_t srcStep,
                                                          Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciCMYKToYCCK444LS_MCU_8u16s_C4P4R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[4]);
VQCJ_API VqcStatus vqciCMYKToYCCK422LS_MCU_8u16s_C4P4R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[4]);
VQCJ_API VqcStatus vqciCMYKToYCCK411LS_MCU_8u16s_C4P4R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[4]);
VQCJ_API VqcStatus vqciSampleDown444LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciSampleDown422LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciSampleDown411LS_MCU_8u16s_C3P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);
VQCJ_API VqcStatus vqciSplit422LS_MCU_8u16s_C2P3R(const Vqc8u* pSrc, int32_t srcStep, Vqc16s* const pDstMCU[3]);

VQCJ_API VqcStatus vqciYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc16u* pDst,
                                                          int32_t dstStep);
VQCJ_API VqcStatus vqciYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const Vqc16s* const pSrcMCU[4], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const Vqc16s* const pSrcMCU[4], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const Vqc16s* const pSrcMCU[4], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciSampleUp444LS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciSampleUp422LS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciSampleUp411LS_MCU_16s8u_P3C3R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);
VQCJ_API VqcStatus vqciJoin422LS_MCU_16s8u_P3C2R(const Vqc16s* const pSrcMCU[3], Vqc8u* pDst, int32_t dstStep);

/*
 * Reduced inverse DCTs, with the arguments and checks of
 * vqciDCTQuantInv8x8LS_JPEG_16s8u_C1R (pSrc, pDst -8, dstStep -14, table -8).
 * LS_1x1, LS_2x2, LS_4x4: 8x8 samples identical to that function's on the
 * same block with every coefficient outside the top-left 1x1, 2x2 or 4x4
 * corner taken as zero; the caller uses them when the block's last non-zero
 * coefficient lies in that corner.
 * To4x4, To2x2: 4x4 or 2x2 samples, the block scaled down, by the arithmetic
 * of libjpeg's reduced transforms (jpeg_idct_4x4, jpeg_idct_2x2): the product
 * of coefficient and table entry, both read as signed, exact in 32 bits, 13
 * fraction bits in the constants, 32-bit wrapping sums, and the final value
 * plus 128 saturated to 0..255. Equal to libjpeg's output whenever no sum
 * leaves 32 bits (dequantised coefficients below 1500 in magnitude suffice)
 * and the final value lies in -512..511, where libjpeg's range table
 * saturates too: every block an 8-bit encoder writes.
 */
VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_1x1_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_2x2_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8LS_4x4_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                            const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8To4x4LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                             const Vqc16u* pQuantInvTable);
VQCJ_API VqcStatus vqciDCTQuantInv8x8To2x2LS_JPEG_16s8u_C1R(const Vqc16s* pSrc, Vqc8u* pDst, int32_t dstStep,
                                                             const Vqc16u* pQuantInvTable);

/* ---- JPEG 2000 reversible 5/3 wavelet -------------------------------- */

/* ---- JPEG 2000 irreversible 9/7 wavelet ------------------------------ */

/* ---- JPEG 2000 component transforms ---------------------------------- */

/* ---- JPEG 2000 code-block encoder ------------------------------------ */
/*
 * Tier-1 coding of one code-block in two phases. Load runs every coding pass
 * and records each decision with its context, and the distortion reduction
 * per pass; StoreBits feeds the records through the MQ coder (or the raw
 * packer in bypass passes) into as many caller buffers as it takes.
 * Samples are sign-magnitude: bit 31 the sign, bits 30..0 the magnitude.
 * codeStyleFlags: 1 vertically causal, 2 bypass, 4 terminate each pass,
 * 8 reset contexts after each pass, 16 segmentation symbols, 32 lossless
 * distortion tables at the last plane (values of this library, not the
 * codestream's style byte). mqTermType 1: standard flush, 2: predictable
 * short flush, others: flush with all low bits set.
 * The state starts with the tag "DSML"; Free does not test it.
 */
typedef struct VqciEncodeState_JPEG2K VqciEncodeState_JPEG2K;

/* Checks: ppState -8; width, height -6; allocation -9 (*ppState null). */
VQCJ_API VqcStatus vqciEncodeInitAlloc_JPEG2K(VqciEncodeState_JPEG2K** ppState, VqciSize codeBlockMaxSize);
/* Checks: pState -8 (the tag is not tested). */
VQCJ_API VqcStatus vqciEncodeFree_JPEG2K(VqciEncodeState_JPEG2K* pState);
/*
 * Checks: pState -8, tag -17, pSfBits, pNOfPasses, pNOfTermPasses -8,
 * height, width -6, pSrc -8, srcStep -14. Planes from the top set bit down to
 * 31 - magnBits are coded. mqRateAppr is accepted and not read.
 */
VQCJ_API VqcStatus vqciEncodeLoadCodeBlock_JPEG2K_32s_C1R(const Vqc32s* pSrc, int32_t srcStep,
                                                           VqciSize codeBlockSize,
                                                           VqciEncodeState_JPEG2K* pState,
                                                           int32_t subband, int32_t magnBits,
                                                           int32_t mqTermType, int32_t mqRateAppr,
                                                           int32_t codeStyleFlags, int32_t* pSfBits,
                                                           int32_t* pNOfPasses, int32_t* pNOfTermPasses);
/*
 * *pDstLen: capacity in, bytes written out; *pIsNotFinish non-zero while
 * bytes remain. Checks: pState -8, tag -17, pDst, pDstLen, pIsNotFinish -8,
 * *pDstLen below 1 -6.
 */
VQCJ_API VqcStatus vqciEncodeStoreBits_JPEG2K_1u(Vqc8u* pDst, int32_t* pDstLen,
                                                  VqciEncodeState_JPEG2K* pState, int32_t* pIsNotFinish);
/* Cumulative bytes a decoder needs through the pass. Checks: pState -8, tag -17, pRate -8, pass -113. */
VQCJ_API VqcStatus vqciEncodeGetRate_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t passNumber, int32_t* pRate);
/* Distortion reduction through the pass. Checks as GetRate. */
VQCJ_API VqcStatus vqciEncodeGetDist_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t passNumber, double* pDist);
/* Bytes of one terminated segment. Checks as GetRate, against the segment count. */
VQCJ_API VqcStatus vqciEncodeGetTermPassLen_JPEG2K(VqciEncodeState_JPEG2K* pState, int32_t termPassNumber,
                                                   int32_t* pLength);


/* ---- JPEG 2000 code-block decoder ------------------------------------ */
/*
 * Tier-1 decoding, step by step (one Step per terminated segment) or in one
 * call. The state starts with the tag "PAMC"; its size for a code-block of
 * at most width x height comes from GetStateSize (equal to GetBufSize).
 * flags: the encoder's codeStyleFlags bits 1, 2, 4, 8, 16, plus
 * 0x10000 on a stream error keep the bits above the failing plane and set
 * that plane's bit in non-zero magnitudes; 0x20000 do not clear pDst;
 * 0x40000 no closing pass (the one-call form otherwise sets the middle bit
 * of the undecoded range in non-zero magnitudes); 0x80000 do not clear the
 * flag buffer. Output is sign-magnitude, as the encoder reads it.
 * A stream that cannot be followed gives -112 and keeps the passes before.
 */
typedef struct VqciDecodeCBProgrState_JPEG2K VqciDecodeCBProgrState_JPEG2K;

/* Checks: width, height -6; pSize -8. */
VQCJ_API VqcStatus vqciDecodeCBProgrGetStateSize_JPEG2K(int32_t width, int32_t height, int32_t* pSize);
VQCJ_API VqcStatus vqciDecodeGetBufSize_JPEG2K(int32_t width, int32_t height, int32_t* pSize);
/* Checks: ppState -8; width, height -6; allocation -9 (*ppState null). */
VQCJ_API VqcStatus vqciDecodeCBProgrInitAlloc_JPEG2K(VqciDecodeCBProgrState_JPEG2K** ppState, int32_t width,
                                                     int32_t height);
/* On caller memory of GetStateSize bytes. Checks: pState -8. */
VQCJ_API VqcStatus vqciDecodeCBProgrInit_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState);
/* Checks: pState -8, tag -17. */
VQCJ_API VqcStatus vqciDecodeCBProgrFree_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState);
/* Checks: pState -8, tag -17, pDst -8, dstStep -14, height, width -6. */
VQCJ_API VqcStatus vqciDecodeCBProgrAttach_JPEG2K_32s_C1R(Vqc32s* pDst, int32_t dstStep, int32_t width,
                                                          int32_t height, VqciDecodeCBProgrState_JPEG2K* pState,
                                                          int32_t subband, int32_t sfBits, int32_t flags);
/* Checks: pState -8, tag -17, pResult -8. */
VQCJ_API VqcStatus vqciDecodeCBProgrGetCurBitPlaneNum_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState,
                                                             int32_t* pResult);
/* Checks: pState, pResult -8, then tag -17. */
VQCJ_API VqcStatus vqciDecodeCBProgrGetPassCounter_JPEG2K(VqciDecodeCBProgrState_JPEG2K* pState,
                                                          int32_t* pResult);
/* Passes still to decode. Checks: pState -8, tag -17. */
VQCJ_API VqcStatus vqciDecodeCBProgrSetPassCounter_JPEG2K(int32_t passCounter,
                                                          VqciDecodeCBProgrState_JPEG2K* pState);
/* One segment. Checks: pSrc, pState -8, tag -17, not attached -180. */
VQCJ_API VqcStatus vqciDecodeCBProgrStep_JPEG2K(const Vqc8u* pSrc, int32_t srcLen,
                                                VqciDecodeCBProgrState_JPEG2K* pState);
/*
 * pSrc holds the nOfTermPasses segments back to back, their lengths in
 * pTermPassLen. pState: GetBufSize bytes of caller memory. Checks: pSrc,
 * pState -8; height, width -6; pTermPassLen, pDst -8; dstStep -14.
 */
VQCJ_API VqcStatus vqciDecodeCodeBlock_JPEG2K_1u32s_C1R(const Vqc8u* pSrc, Vqc32s* pDst, int32_t dstStep,
                                                        int32_t width, int32_t height, int32_t subband,
                                                        int32_t sfBits, int32_t nOfPasses,
                                                        const int32_t* pTermPassLen, int32_t nOfTermPasses,
                                                        int32_t flags, int32_t* pErrorPlane,
                                                        VqciDecodeCBProgrState_JPEG2K* pState);


/* ---- JPEG XR photo core transform ------------------------------------ */
/*
 * The reversible 4x4 block transform, in place, on every 4x4 block of the
 * area (16x16, 8x16 and 8x8 fixed, or a region whose sides are multiples of
 * 4). 16s narrows each stored step by cutting to 16 bits; 32s wraps; 32f
 * drops the rounding offsets and is not exactly reversible. HDP and JPEGXR
 * 32s compute the same function. Checks of the fixed forms: pointer -8, step
 * below the area's row bytes (unsigned) -14. Region forms: pointer -8, side
 * below 1 -6, step below width times element bytes (unsigned) -14, side not
 * a multiple of 4 -6.
 */
VQCJ_API VqcStatus vqciPCTFwd16x16_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd16x16_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd16x16_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd16x16_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x16_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x16_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x16_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x16_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x8_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x8_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x8_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd8x8_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTFwd_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTFwd_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTFwd_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTFwd_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTInv16x16_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv16x16_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv16x16_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv16x16_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x16_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x16_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x16_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x16_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x8_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x8_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x8_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv8x8_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep);
VQCJ_API VqcStatus vqciPCTInv_HDP_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTInv_JPEGXR_16s_C1IR(Vqc16s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTInv_JPEGXR_32f_C1IR(Vqc32f* pSrcDst, int32_t srcDstStep, VqciSize roiSize);
VQCJ_API VqcStatus vqciPCTInv_JPEGXR_32s_C1IR(Vqc32s* pSrcDst, int32_t srcDstStep, VqciSize roiSize);


/* ---- JPEG XR coefficient coding -------------------------------------- */
/*
 * Adaptive run-level coding of 4x4 blocks and of the DC layer, with the
 * fixed-length layer of low bits. Bit streams go 16 bits at a time through
 * memory, first byte high: *ppBitStream moves on, *pBitBuf holds the pending
 * bits left-aligned and *pNumBits counts them (at most 32). Encoders leave at
 * most 16 bits pending; decoders keep up to 32 bits for the next call.
 *
 * Table references in the state are 32-bit handles into the library's
 * constant tables (0 is unset) and currentScan is the byte offset of the
 * scan in force within the record, so the record has the same 1780 bytes on
 * every target. The caller owns the record: Init, then ScanReset of each of
 * the three scans, ScanSet, and Adapt or ScanReset whenever the codec says.
 */
typedef struct {
    int32_t symbolCount;
    int32_t tableIndex;
    int32_t initialised;
    int32_t upperBound;
    int32_t lowerBound;
} VqciVLCContext;

typedef struct {
    uint32_t count;
    uint32_t index;
    uint32_t column;
    uint32_t row;
} VqciVLCScanEntry;

typedef struct {
    uint32_t currentScan;
    uint32_t encodeTable[21];
    uint32_t delta1[21];
    uint32_t delta2[21];
    uint32_t decodeTable[21];
    uint32_t decodeTableAlt[21];
    VqciVLCContext contexts[21];
    int32_t discriminant1[21];
    int32_t discriminant2[21];
    VqciVLCScanEntry scanTables[3][16];
} VqciVLCState;

VQCJ_API VqcStatus vqciVLCGetStateSize_JPEGXR(int32_t* size);
VQCJ_API VqcStatus vqciVLCInit_JPEGXR(VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCAdapt_JPEGXR(VqciVLCState* pState, int32_t band);
VQCJ_API VqcStatus vqciVLCScanReset_JPEGXR(VqciVLCState* pState, int32_t scan);
VQCJ_API VqcStatus vqciVLCScanSet_JPEGXR(VqciVLCState* pState, uint32_t scan);
VQCJ_API VqcStatus vqciVLCScan4x4DC_JPEGXR_32s(const Vqc32s* pSrc, uint32_t modelBits, Vqc32s* pResidual,
                                               Vqc32s* pRunLevel, int32_t* pNumPairs, VqciVLCState* pState);

VQCJ_API VqcStatus vqciVLCEncode4x4_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, int32_t chroma,
                                                     uint32_t modelBits, Vqc8u** ppBitStream, uint32_t* pBitBuf,
                                                     uint32_t* pNumBits, int32_t* pNumPairs, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCEncode4x4_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, int32_t chroma,
                                                     uint32_t modelBits, Vqc8u** ppBitStream, uint32_t* pBitBuf,
                                                     uint32_t* pNumBits, int32_t* pNumPairs, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCEncode4x4Flex_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, int32_t chroma,
                                                         uint32_t modelBits, uint32_t trimBits, Vqc32s* pResidual,
                                                         Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                         int32_t* pNumPairs, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCEncode4x4Flex_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, int32_t chroma,
                                                         uint32_t modelBits, uint32_t trimBits, Vqc32s* pResidual,
                                                         Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                         int32_t* pNumPairs, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCDecode4x4_JPEGXR_1u16s_C1R(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     Vqc16s quant, Vqc16s* pDst, int32_t dstStep, int32_t chroma,
                                                     int32_t* pNumCoded, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCDecode4x4_JPEGXR_1u32s_C1R(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     Vqc32s quant, Vqc32s* pDst, int32_t dstStep, int32_t chroma,
                                                     int32_t* pNumCoded, VqciVLCState* pState);

VQCJ_API VqcStatus vqciVLCEncodeDC444_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, int32_t chroma,
                                                   Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCEncodeDC422_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, Vqc8u** ppBitStream,
                                                   uint32_t* pBitBuf, uint32_t* pNumBits, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCEncodeDC420_JPEGXR_32s1u(const Vqc32s* pRunLevel, int32_t numPairs, Vqc8u** ppBitStream,
                                                   uint32_t* pBitBuf, uint32_t* pNumBits, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCDecodeDC444_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t chroma, int32_t* pNumPairs,
                                                   VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCDecodeDC422_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t* pNumPairs, VqciVLCState* pState);
VQCJ_API VqcStatus vqciVLCDecodeDC420_JPEGXR_1u32s(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                   Vqc32s* pDst, int32_t* pNumPairs, VqciVLCState* pState);

VQCJ_API VqcStatus vqciFLCEncode4x4_JPEGXR_16s1u_C1R(const Vqc16s* pSrc, int32_t srcStep, const Vqc32s* pResidual,
                                                     Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     uint32_t numBits, uint32_t trimBits, int32_t useResidual);
VQCJ_API VqcStatus vqciFLCEncode4x4_JPEGXR_32s1u_C1R(const Vqc32s* pSrc, int32_t srcStep, const Vqc32s* pResidual,
                                                     Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                     uint32_t numBits, uint32_t trimBits, int32_t useResidual);
VQCJ_API VqcStatus vqciFLCDecode4x4_JPEGXR_1u16s_C1IR(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                      Vqc16s* pSrcDst, int32_t srcDstStep, uint32_t numBits,
                                                      Vqc16s quant, int32_t refine);
VQCJ_API VqcStatus vqciFLCDecode4x4_JPEGXR_1u32s_C1IR(Vqc8u** ppBitStream, uint32_t* pBitBuf, uint32_t* pNumBits,
                                                      Vqc32s* pSrcDst, int32_t srcDstStep, uint32_t numBits,
                                                      Vqc32s quant, int32_t refine);


/* ---- Texture block codecs -------------------------------------------- */

#ifdef __cplusplus
}
#endif

#endif /* VQCJ_H */

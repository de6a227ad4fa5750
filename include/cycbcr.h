/*
 * libcycbcr: uncompressed video frame conversion between YCbCr and RGB formats.
 *
 * Every converter takes the destination first:
 *
 *     unsigned int cycbcr_<src>_to_<dst>(uint8_t* dst, const uint8_t* src,
 *                                        unsigned int width, unsigned int height,
 *                                        unsigned int dstPitch, unsigned int srcPitch);
 *
 * width and height are in pixels and rows, pitches in bytes. Converters check
 * nothing: pointers, sizes and pitches are the caller's responsibility, and each
 * family below says how many bytes it reads and writes. Each returns a byte count
 * whose definition is given with its family (it is not always the bytes written).
 *
 * All entry points are safe to call from any number of threads at once; the only
 * process-wide state is the processor level (gdwProcType).
 */
#ifndef CYCBCR_H
#define CYCBCR_H

#include <stdint.h>

#if defined(__GNUC__)
#define CYCBCR_API __attribute__((visibility("default")))
#else
#define CYCBCR_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------ */
/* Format codes                                                              */
/* ------------------------------------------------------------------------ */

/* A FourCC holds its first character in the lowest byte. Codes are compared as
 * whole 32-bit values, so case matters ("yuv2" and "yuV2" are distinct codes). */
#define CYCBCR_FOURCC(a, b, c, d)                                                              \
    ((uint32_t)(uint8_t)(a) | ((uint32_t)(uint8_t)(b) << 8) | ((uint32_t)(uint8_t)(c) << 16) | \
     ((uint32_t)(uint8_t)(d) << 24))

/* Packed 4:2:2, pair order Cb Y0 Cr Y1, top row first. */
#define CYCBCR_FOURCC_UYVY 0x59565955u      /* "UYVY" */
#define CYCBCR_FOURCC_UYNV 0x564E5955u      /* "UYNV", same as UYVY */
#define CYCBCR_FOURCC_AJYU 0x55594A41u      /* "AJYU", same as UYVY */
#define CYCBCR_FOURCC_yuv2 0x32767579u      /* "yuv2", same as UYVY */
#define CYCBCR_FOURCC_yuV2 0x32567579u      /* "yuV2", same as UYVY */
#define CYCBCR_FOURCC_2vuy 0x79757632u      /* "2vuy", same as UYVY */
#define CYCBCR_FOURCC_2Vuy 0x79755632u      /* "2Vuy", same as UYVY */
#define CYCBCR_FOURCC_UYVY_ALT1 0x8800001Eu /* numeric code, same as UYVY */
#define CYCBCR_FOURCC_UYVY_ALT2 0x8810001Eu /* numeric code, same as UYVY */
/* Packed 4:2:2, pair order Y0 Cb Y1 Cr. */
#define CYCBCR_FOURCC_YUY2 0x32595559u /* "YUY2" */
#define CYCBCR_FOURCC_YUNV 0x564E5559u /* "YUNV", same as YUY2 */
/* Packed 4:2:2, pair order Y0 Cr Y1 Cb. */
#define CYCBCR_FOURCC_YVYU 0x55595659u /* "YVYU" */
/* UYVY stored bottom-up: the first row in memory is the last picture line. */
#define CYCBCR_FOURCC_cyuv 0x76757963u /* "cyuv" */
/* Planar 4:2:0: Y plane, then Cb, then Cr (YV12: Cr before Cb). */
#define CYCBCR_FOURCC_I420 0x30323449u /* "I420" */
#define CYCBCR_FOURCC_IYUV 0x56555949u /* "IYUV", same as I420 */
#define CYCBCR_FOURCC_YV12 0x32315659u /* "YV12" */
/* Planar 4:2:2: Y plane, then Cb, then Cr, every plane full height. */
#define CYCBCR_FOURCC_P422 0x32323450u /* "P422" */
#define CYCBCR_FOURCC_422P 0x50323234u /* "422P", same as P422, source only */
/* 10-bit packed 4:2:2: six pixels in four little-endian 32-bit words. */
#define CYCBCR_FOURCC_v210 0x30313276u /* "v210" */
#define CYCBCR_FOURCC_012v 0x76323130u /* "012v", same as v210 */
/* 32-bit RGB. */
#define CYCBCR_FOURCC_RGB32 0x00000000u

/* ------------------------------------------------------------------------ */
/* Colour matrix and RGB layout selectors                                    */
/* ------------------------------------------------------------------------ */

/* Colour matrix: an unsigned 32-bit selector. 0 and any unknown value select
 * BT.601 between studio-range YCbCr and full-range RGB; odd values keep RGB in
 * the studio range. Values 8 to 10 exist only in the RGB to YCbCr direction. */
typedef uint32_t QBYCBCRMatrix;
enum QBYCBCRMatrixValue {
    QBYCBCR_MATRIX_601 = 0,
    QBYCBCR_MATRIX_601_STUDIO = 1,
    QBYCBCR_MATRIX_709 = 2,
    QBYCBCR_MATRIX_709_STUDIO = 3,
    QBYCBCR_MATRIX_709_PRECISE = 4,
    QBYCBCR_MATRIX_709_PRECISE_STUDIO = 5,
    QBYCBCR_MATRIX_2020 = 6,
    QBYCBCR_MATRIX_2020_STUDIO = 7,
    QBYCBCR_MATRIX_EXTRA_8 = 8,
    QBYCBCR_MATRIX_EXTRA_9 = 9,
    QBYCBCR_MATRIX_EXTRA_10 = 10
};

/* RGB layout: a layout number with bit 15 as the bottom-up flag. The layout is
 * the whole value with bit 15 cleared; any value other than 0, 1 and 3 means
 * R, G, B (, A). */
typedef uint32_t QBYCBCRRgbType;
enum QBYCBCRRgbTypeValue {
    QBYCBCR_RGB_BGRA = 0, /* B, G, R, A in address order */
    QBYCBCR_RGB_ABGR = 1, /* A, B, G, R */
    QBYCBCR_RGB_RGBA = 2, /* R, G, B, A */
    QBYCBCR_RGB_ARGB = 3, /* A, R, G, B */
    QBYCBCR_RGB_BOTTOM_UP = 0x8000
};

/* ------------------------------------------------------------------------ */
/* Processor level                                                           */
/* ------------------------------------------------------------------------ */

/* The process-wide processor level: 0xFFFFFFFE (-2) until a level is chosen,
 * then 0 to 6. Levels 0 to 3 run the plain paths; 4 and 6 also enable the
 * library's built-in image-library paths; 5 enables the AVX2 forms (when the
 * processor reports AVX2 at the time of each call) and the image-library paths.
 *
 * Processor feature bits behind the levels (as reported by the library's
 * feature detection):
 *     bit 5  (0x20)     SSE2          -> level 2
 *     bit 7  (0x80)     SSSE3         -> level 6
 *     bit 13 (0x2000)   SSE4.1        -> level 3
 *     bit 14 (0x4000)   SSE4.2        -> level 4
 *     bit 23 (0x800000) AVX2 usable (AVX2 present and the OS saves YMM state)
 *                                     -> level 5
 * The environment variable CYCBCR_CPU_FLAGS (hexadecimal, e.g. "0x80"), read
 * once per process, replaces the detected bits; bit 23 is kept from it only when
 * the processor really supports AVX2. An unparsable value is ignored. */
extern CYCBCR_API uint32_t gdwProcType;

/* The processor feature bits the library goes by (after any CYCBCR_CPU_FLAGS
 * override), for diagnostics. */
CYCBCR_API uint32_t cycbcr_cpu_flags(void);

/* Sets the level, falling back to one the processor supports, and returns the
 * value stored. Levels above 6 store the best supported level. */
CYCBCR_API unsigned int cycbcr_set_cpu(unsigned int level);
/* current != 0: the level in force (choosing one first if none is chosen).
 * current == 0: the best level the processor supports; the setting is unchanged. */
CYCBCR_API unsigned int cycbcr_get_cpu(int current);

/* ------------------------------------------------------------------------ */
/* Dispatcher                                                                */
/* ------------------------------------------------------------------------ */

/* Converts between two formats named by FourCC code. Chooses a processor level
 * if none is chosen, normalises both pitches with the pitch rule (_fixPitch),
 * and calls the converter of the pair, returning its result unchanged. Returns 0
 * without writing for an unknown code, for "422P" as a destination, for RGB to
 * RGB, and for pairs whose converter this build does not have yet. matrix and
 * rgbType reach only the converters to and from RGB (code 0). */
CYCBCR_API unsigned int cycbcr_transcode(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int dstFourCC,
                                         unsigned int srcFourCC);

/* 1 when both codes are accepted format codes (every code above except "422P";
 * 0 for RGB counts), else 0. Symmetric. Note that it answers 1 for RGB to RGB,
 * which cycbcr_transcode refuses, and 0 for "422P", which cycbcr_transcode
 * accepts as a source. */
CYCBCR_API unsigned int cycbcr_can_transcode(unsigned int fourccA, unsigned int fourccB);

/* ------------------------------------------------------------------------ */
/* Packed 4:2:2 byte orders: YUY2, UYVY, YVYU and bottom-up cyuv              */
/* ------------------------------------------------------------------------ */

/* All members return height * dstPitch (32-bit), whether or not anything was
 * written, and never touch bytes outside the rows they handle.
 *
 * Row lengths:
 *   - "pitch" members handle min(dstPitch, srcPitch) bytes per row, padding
 *     included; with equal pitches the copy and the plain word swap treat the
 *     frame as one block of dstPitch * height bytes.
 *   - "pair" members (yuy2<->yvyu, yvyu<->uyvy on the plain path) handle
 *     width / 2 whole pixel pairs per row and leave an odd last pixel and the
 *     row padding untouched.
 * Word swaps stop at the last whole 16-bit word: an odd final byte of a row is
 * not written.
 *
 * The YVYU <-> UYVY converters swap the bytes of each 16-bit word exactly as the
 * YUY2 <-> UYVY ones do, so Cb and Cr trade places in the result. Existing
 * callers rely on this; it is not a bug to be fixed.
 *
 * The _avx2 forms need a processor with AVX2; the plain names choose them by
 * themselves at level 5. Call them directly only after checking the processor. */

/* Plain copy, min(dstPitch, srcPitch) bytes per row. Does not choose a level. */
CYCBCR_API unsigned int cycbcr_interleaved_copy(uint8_t* dst, const uint8_t* src,
                                                unsigned int width, unsigned int height,
                                                unsigned int dstPitch, unsigned int srcPitch);
/* Copies within one byte order (one function under four names). */
CYCBCR_API unsigned int cycbcr_yuy2_to_yuy2(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_yvyu(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_cyuv(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);

/* Word swap, pitch rows. yuy2_to_uyvy always runs the plain swap; uyvy_to_yuy2
 * takes the AVX2 form at level 5 (which swaps per row even with equal pitches). */
CYCBCR_API unsigned int cycbcr_yuy2_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_yuy2(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
/* Per row min(dstPitch, srcPitch) bytes, 32 per step; also exported as
 * cycbcr_yvyu_to_uyvy_avx2 and cycbcr_uyvy_to_yvyu_avx2. */
CYCBCR_API unsigned int cycbcr_yuy2_to_uyvy_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_uyvy_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_yvyu_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* Chroma exchange (bytes 1 and 3 of each pair), pair rows; one function under
 * both names. */
CYCBCR_API unsigned int cycbcr_yuy2_to_yvyu(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_yuy2(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuy2_to_yvyu_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_yuy2_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* Word swap, pair rows on the plain path, pitch rows at level 5 (through
 * cycbcr_yvyu_to_uyvy_avx2). One function under both names; exchanges chroma. */
CYCBCR_API unsigned int cycbcr_yvyu_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_yvyu(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);

/* Row reversal, pitch rows, bytes copied unchanged; one function under both
 * names. dst and src must not overlap. */
CYCBCR_API unsigned int cycbcr_uyvy_to_cyuv(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
/* Row reversal in 32-byte blocks; exported for callers, chosen by no converter. */
CYCBCR_API unsigned int cycbcr_cyuv_to_uyvy_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* To and from cyuv: the UYVY result (yuy2_to_uyvy, or yvyu_to_uyvy with its
 * chroma exchange) flipped in place with cycbcr_invert(dst, dstPitch, height),
 * padding bytes of the destination rows included. One function under both
 * direction names each. */
CYCBCR_API unsigned int cycbcr_yuy2_to_cyuv(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_yuy2(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuy2_to_cyuv_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_yuy2_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_cyuv(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_yvyu(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yvyu_to_cyuv_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_cyuv_to_yvyu_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* Flips a frame of height rows, pitch bytes each, in place (row i exchanged with
 * row height - 1 - i, whole pitch). Rows up to 5461 bytes use a stack buffer. */
CYCBCR_API void cycbcr_invert(uint8_t* buf, unsigned int pitch, unsigned int height);

/* ------------------------------------------------------------------------ */
/* v210: 10-bit packed 4:2:2                                                 */
/* ------------------------------------------------------------------------ */

/* Six pixels in four little-endian 32-bit words of three 10-bit samples
 * (bits 30-31 written as 0, ignored on reading):
 *     word 0: Cb0 Y0 Cr0   word 1: Y1 Cb1 Y2   word 2: Cr1 Y3 Cb2   word 3: Y4 Cr2 Y5
 * 8 to 10 bits is v << 2; 10 to 16 bits is v << 6. Going down to 8 bits, each
 * converter keeps its own rule:
 *     cycbcr_012v_to_uyvy_opt   rounded and saturated: (v + 2) >> 2, 255 above 1020
 *     cycbcr_012v_to_uyvy_avx2  rounded and wrapped:   ((v + 2) >> 2) & 255
 *                               (1022 and 1023 become 0 on this path only)
 *     Fromv210                  truncated:             v >> 2
 *
 * Buffer sizes: rows are converted in whole groups. A v210 row of
 * v210_row_bytes(width) always has room. 8-bit rows written by the UYVY to v210
 * packers read ceil(width / 6) * 12 source bytes per row; Fromv210 and
 * Fromv210_16 write width rounded up to 12 pixels in every row and plane. */

/* The natural size of one v210 row: ceil(width / 48) * 128 bytes. */
CYCBCR_API unsigned int v210_row_bytes(unsigned int width);

/* UYVY to v210. The destination pitch used is dstPitch when it is at least
 * width * 16 / 6, else that figure rounded up to 64; the source pitch used is the
 * larger of 2 * width and srcPitch. Writes ceil(width / 6) whole 16-byte groups
 * per row. Returns dstPitch * height with dstPitch as passed (0 for 0).
 * The plain name takes the AVX2 form at level 5 (same bytes, same result). */
CYCBCR_API unsigned int cycbcr_uyvy_to_012v(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_012v_opt(uint8_t* dst, const uint8_t* src,
                                                unsigned int width, unsigned int height,
                                                unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_012v_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* v210 to UYVY. Returns height * dstPitch.
 * _opt: source pitch the larger of v210_row_bytes(width) and srcPitch; writes
 *   exactly ceil(width / 2) pixel pairs per row. With srcPitch 0 the v210 words
 *   are read as one stream of pixel pairs running on from row to row.
 * _avx2: pitches exactly as passed; writes ceil(width / 6) * 12 bytes per row
 *   (up to 8 bytes past 2 * width).
 * The plain name takes the AVX2 form at level 5 and does not choose a level
 * itself: before a level is chosen it runs _opt, which chooses one. */
CYCBCR_API unsigned int cycbcr_012v_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_uyvy_opt(uint8_t* dst, const uint8_t* src,
                                                unsigned int width, unsigned int height,
                                                unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_uyvy_avx2(uint8_t* dst, const uint8_t* src,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);

/* v210 copy: cycbcr_interleaved_copy with the same arguments. */
CYCBCR_API unsigned int cycbcr_012v_to_012v(uint8_t* dst, const uint8_t* src, unsigned int width,
                                            unsigned int height, unsigned int dstPitch,
                                            unsigned int srcPitch);

/* 8-bit to v210. y, cb, cr point at the first Y, Cb and Cr sample: with
 * planar == 0 into one packed 4:2:2 row (Y every 2 bytes, Cb and Cr every 4;
 * YUY2: src, src + 1, src + 3), with planar != 0 at three tightly packed planes
 * (luma rows width bytes apart, chroma rows width / 2; srcPitch unused) that are
 * 4:2:2 when fullHeightChroma != 0 and 4:2:0 otherwise. Packed rows start at
 * row * srcPitch, except that with srcPitch == 2 * width each row continues
 * where the previous row's last whole group ended. Destination pitch: the larger
 * of v210_row_bytes(width) and dstPitch. Returns height * v210_row_bytes(width). */
CYCBCR_API unsigned int Tov210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                               unsigned int width, unsigned int height, unsigned int dstPitch,
                               unsigned int srcPitch, unsigned int fullHeightChroma,
                               unsigned int planar);

/* v210 to 8-bit, the same pointer convention on the output side (packed: Y every
 * 2 bytes, Cb and Cr every 4; planar: luma rows dstPitch apart, chroma rows
 * dstPitch / 2 apart, 4:2:0 chroma row r / 2 for luma row r, the odd row's
 * chroma remaining). Source pitch: the larger of v210_row_bytes(width) and
 * srcPitch. Samples truncated. Writes width rounded up to 12 pixels per row.
 * Returns width * height * 2 for packed output, and width * height * 3 / 2 for
 * planar output of either subsampling. */
CYCBCR_API unsigned int Fromv210(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                 unsigned int width, unsigned int height, unsigned int dstPitch,
                                 unsigned int srcPitch, unsigned int fullHeightChroma,
                                 unsigned int planar);

/* As Fromv210 with 16-bit samples (v << 6); y, cb and cr point at 16-bit samples,
 * pitches stay in bytes (16-bit 4:2:0 chroma rows start on an even byte).
 * Returns width * height * 2 for packed output, width * height * 4 for planar
 * 4:2:2 and width * height * 3 for planar 4:2:0. */
CYCBCR_API unsigned int Fromv210_16(void* y, void* cb, void* cr, const uint8_t* src,
                                    unsigned int width, unsigned int height, unsigned int dstPitch,
                                    unsigned int srcPitch, unsigned int fullHeightChroma,
                                    unsigned int planar);

#ifdef __cplusplus
} /* extern "C" */

/* The pitch rule of the dispatcher, applied to one buffer in place:
 *   packed 8-bit 4:2:2 codes: a pitch below 2 * width becomes 2 * width;
 *   "I420", "IYUV", "YV12", "P422": a pitch above the width rounded up to a
 *       multiple of 128 becomes the width; any other pitch (0 included) is kept;
 *   "v210", "012v": 0 stays 0; a pitch that is not a multiple of 16, or is
 *       below (width / 6) * 16, becomes (width / 6) * 16 (truncating);
 *   every other code ("422P" and RGB among them): unchanged. */
CYCBCR_API void _fixPitch(unsigned int fourcc,
                          unsigned int width,  // NOLINT(bugprone-reserved-identifier)
                          unsigned int& pitch);
#endif

#endif /* CYCBCR_H */

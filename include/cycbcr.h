/*
 * libcycbcr: uncompressed video frame conversion between YCbCr and RGB formats,
 * one frame per call, from any number of threads, on Linux x86-64.
 *
 * What this version converts (cycbcr_pair_converter and `cycbcr formats` list the
 * pairs of FourCC codes the installed build converts):
 *   - every pair among the eight YCbCr formats with FourCC codes: the packed
 *     8-bit 4:2:2 byte orders UYVY, YUY2, YVYU and cyuv (bottom-up UYVY), the
 *     planar 8-bit I420, YV12 and P422, and the 10-bit packed 4:2:2 v210;
 *   - 8-bit YCbCr and v210 to packed RGB of 15, 16, 24 and 32 bits per pixel
 *     (NV12 to 32), and to 16-bit channels, floating point and RGB planes;
 *   - high-bit-depth planar YCbCr (10, 12 and 16-bit samples in 16-bit words,
 *     4:2:0, 4:2:2, 4:4:4) to and from v210 and UYVY (not every depth both
 *     ways; each section lists its converters), and to RGB; the
 *     semi-planar NV12 and NV10 to v210 and UYVY, and 4:2:0 planes to NV12p16;
 *   - RGB to 8-bit YCbCr (24 and 32 bits to every format, 16-bit channels to
 *     UYVY and P422, floats to UYVY), to v210 (also from packed 10-bit) and to
 *     high-bit-depth planar YCbCr;
 *   - reduced-size 8-bit planar frames from UYVY and v210.
 * Each section below describes one family. Besides the converters: a dispatcher
 * by FourCC code (cycbcr_transcode), a buffer-size query (cycbcr_buffer_sizes
 * and the cycbcr_converter_*_sizes calls), the processor level, and the version
 * (CYCBCR_VERSION_*, cycbcr_version()).
 *
 * Every converter between two formats takes the destination first:
 *
 *     unsigned int cycbcr_<src>_to_<dst>(uint8_t* dst, const uint8_t* src,
 *                                        unsigned int width, unsigned int height,
 *                                        unsigned int dstPitch, unsigned int srcPitch);
 *
 * width and height are in pixels and rows, pitches in bytes. Converters check
 * nothing: pointers, sizes and pitches are the caller's responsibility. Each
 * family below says how its rows are read and written, and
 * cycbcr_buffer_sizes() answers exactly how many bytes of each buffer the
 * converter of a pair touches. Each returns a byte count whose definition is
 * given with its family (it is not always the bytes written).
 *
 * v210 is spelled two ways in names, and a name's spelling follows its family:
 *   - "012v" in the converters named cycbcr_<src>_to_<dst> and the reductions:
 *     cycbcr_uyvy_to_012v, cycbcr_012v_to_i420, cycbcr_012v_to_rgb32,
 *     cycbcr_RGB24_to_012v, cycbcr_yuv422p10_to_012v, cycbcr_012v_to_yuv422p10,
 *     cycbcr_012v_scale_planar;
 *   - "v210" in the engines and row kernels (Tov210, Fromv210, Fromv210_16,
 *     v210FromRGB, cycbcr_v210ToRGBInt, cycbcr_v210to_planar_avx2,
 *     qb_v210_planar_unpack_*), in v210_row_bytes, and in the one converter
 *     family that spells it so, the semi-planar sources
 *     (cycbcr_NV12_to_v210_pitched, cycbcr_NV10_to_v210_pitched, their _avx2).
 * The two FourCC codes CYCBCR_FOURCC_v210 and CYCBCR_FOURCC_012v name the one
 * format, and the cycbcr command takes either. To find a v210 converter, search
 * this header for both spellings, or ask cycbcr_pair_converter() by code.
 *
 * All entry points are safe to call from any number of threads at once; the only
 * process-wide state is the processor level (gdwProcType). One converter changes
 * it: cycbcr_yuv420p16_to_012v_avx2 sets the level to 0 for the length of its
 * call, so conversions that other threads start meanwhile take their plain paths
 * (and the bytes of those paths, where a converter's forms differ).
 */
#ifndef CYCBCR_H
#define CYCBCR_H

#include <stdint.h>

#if defined(__GNUC__)
#define CYCBCR_API __attribute__((visibility("default")))
#else
#define CYCBCR_API
#endif

/* The argument list every converter called by the dispatcher shares. */
#define CYCBCR_CONVERTER(name)                                                         \
    CYCBCR_API unsigned int name(uint8_t* dst, const uint8_t* src, unsigned int width, \
                                 unsigned int height, unsigned int dstPitch,           \
                                 unsigned int srcPitch)

/* ------------------------------------------------------------------------ */
/* Version                                                                   */
/* ------------------------------------------------------------------------ */

/* The version of this header, major.minor.patch. These three lines are the one
 * place the version is set: the build reads them for the library's file name,
 * the pkg-config file, the CMake package and `cycbcr --version`. */
#define CYCBCR_VERSION_MAJOR 1
#define CYCBCR_VERSION_MINOR 0
#define CYCBCR_VERSION_PATCH 0

/* A version as one number, (major << 16) | (minor << 8) | patch, ordered as the
 * versions are: CYCBCR_VERSION >= CYCBCR_MAKE_VERSION(1, 2, 0) tests for 1.2.0
 * or later at compile time. Minor and patch are below 256. */
#define CYCBCR_MAKE_VERSION(major, minor, patch) \
    (((unsigned int)(major) << 16) | ((unsigned int)(minor) << 8) | (unsigned int)(patch))
#define CYCBCR_VERSION \
    CYCBCR_MAKE_VERSION(CYCBCR_VERSION_MAJOR, CYCBCR_VERSION_MINOR, CYCBCR_VERSION_PATCH)

/* The version as a string literal, "1.0.0". */
#define CYCBCR_VERSION_TEXT_(x) #x
#define CYCBCR_VERSION_TEXT(x) CYCBCR_VERSION_TEXT_(x)
#define CYCBCR_VERSION_STRING                 \
    CYCBCR_VERSION_TEXT(CYCBCR_VERSION_MAJOR) \
    "." CYCBCR_VERSION_TEXT(CYCBCR_VERSION_MINOR) "." CYCBCR_VERSION_TEXT(CYCBCR_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

/* The version of the library loaded at run time, which may be newer than the
 * header a program was built with: cycbcr_version() gives "major.minor.patch"
 * (a static string, "1.0.0" for this version), cycbcr_version_number() the
 * same as CYCBCR_MAKE_VERSION gives it. The shared library's file name carries
 * the major version (libcycbcr.so.1). */
CYCBCR_API const char* cycbcr_version(void);
CYCBCR_API unsigned int cycbcr_version_number(void);

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
 * Wherever a path is taken, its bytes do not depend on the processor: exact
 * vector row kernels run inside the plain engines at level 5 on an AVX2
 * processor, and inside the image-library paths at every level but 0 on one
 * (level 0 keeps everything plain).
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

/* The converter cycbcr_transcode calls for a pair of codes, for callers that
 * choose their own pitches: it gets no pitch normalisation and no level choice
 * of the dispatcher's (it makes its own, as every converter does). NULL for an
 * unknown code, for "422P" as a destination, and for a pair this build does not
 * convert, RGB pairs included. */
typedef unsigned int (*cycbcr_converter)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch);
CYCBCR_API cycbcr_converter cycbcr_pair_converter(unsigned int dstFourCC, unsigned int srcFourCC);
/* The argument list of the converters between YCbCr and RGB. */
typedef unsigned int (*cycbcr_rgb_converter)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                             unsigned int height, unsigned int dstPitch,
                                             unsigned int srcPitch, QBYCBCRMatrix matrix,
                                             QBYCBCRRgbType rgbType);

/* Buffer sizes: the bytes the converter of a pair (the one cycbcr_pair_converter
 * gives) reads from the start of src and writes from the start of dst when
 * called with exactly this width, height and these pitches, on whichever path
 * it takes at any processor level: rows of whole pixel groups past the width,
 * rows that run on, planes placed by the pitch or the width, and a cyuv result
 * turned over whole pitches at a time, all included. A buffer of at least these
 * sizes is never read or written past its end. The _avx2 and _opt forms of the
 * pair touch no more. For a call through cycbcr_transcode, give the pitches it
 * passes on: cycbcr_fix_pitch(code, width, pitch) of each. Either pointer may be
 * NULL. Returns 1, or 0 (both sizes 0) for a pair this build does not convert.
 * The sizes say how far a converter reaches, not whether its result is the
 * picture a viewer expects: see the README on widths that are not a whole
 * number of the converter's pixel groups. */
CYCBCR_API unsigned int cycbcr_buffer_sizes(unsigned int dstFourCC, unsigned int srcFourCC,
                                            unsigned int width, unsigned int height,
                                            unsigned int dstPitch, unsigned int srcPitch,
                                            uint64_t* dstBytes, uint64_t* srcBytes);

/* The same for any converter by its exported name (every converter with the
 * converter arguments, with or without matrix and rgbType, _avx2 forms
 * included; also cycbcr_RGB64_to_uyvy, answered for the wider of 48 and 64
 * bits, cycbcr_RGB32F_to_uyvy, cycbcr_RGB32_to_uyvy_Alpha, the other RGB to
 * v210 converters, and the converters to RGB with an alpha plane, answered for
 * their frames (the plane's size is in their sections)), for exactly
 * this call: matrix and rgbType matter only to the converters to and from RGB,
 * and cycbcr_buffer_sizes() answers for the widest of them. A source the
 * converter writes (cycbcr_RGB32_to_uyvy swapping R and B in place) counts in
 * srcBytes. Returns 1, or 0 (both sizes 0) for a name it does not know. */
CYCBCR_API unsigned int cycbcr_converter_buffer_sizes(const char* name, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                      QBYCBCRRgbType rgbType, uint64_t* dstBytes,
                                                      uint64_t* srcBytes);

/* The same for converters with separate plane pointers (the high-bit-depth
 * planar and NV12p16 converters, cycbcr_012v_to_planar422 and the like), by
 * exported name: bytes[i] is how far the converter reaches from its i-th pointer
 * argument (in argument order, read or written; 0 for a pointer it does not
 * touch, and for bytes[i] past its pointer count), for exactly this call.
 * pitches holds the converter's unsigned arguments after its height, in argument
 * order (pitchCount of them, at most 8): its pitches, then for the converters
 * that have them the matrix, RGB type, flags and depth. Returns 1, or 0 (every
 * size 0) for a name it does not know. */
CYCBCR_API unsigned int cycbcr_converter_pointer_sizes(const char* name, unsigned int width,
                                                       unsigned int height,
                                                       const unsigned int* pitches,
                                                       unsigned int pitchCount, uint64_t* bytes);
/* The same for every pointer argument, up to six (the converters to three RGB
 * planes take R, G, B, Y, Cb, Cr): bytes receives bytesCount entries at most. */
CYCBCR_API unsigned int cycbcr_converter_all_pointer_sizes(const char* name, unsigned int width,
                                                           unsigned int height,
                                                           const unsigned int* pitches,
                                                           unsigned int pitchCount, uint64_t* bytes,
                                                           unsigned int bytesCount);

/* The converter cycbcr_transcode calls for a YCbCr source and RGB (code 0) as
 * the destination (the 32-bit converters, which take matrix and rgbType), or
 * NULL. RGB sources: cycbcr_from_rgb_pair_converter(). */
CYCBCR_API cycbcr_rgb_converter cycbcr_rgb_pair_converter(unsigned int dstFourCC,
                                                          unsigned int srcFourCC);

/* The pitch rule of the dispatcher (_fixPitch below), as a C function: the pitch
 * cycbcr_transcode passes on for a buffer of this code and width. */
CYCBCR_API unsigned int cycbcr_fix_pitch(unsigned int fourcc, unsigned int width,
                                         unsigned int pitch);

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
/* Packed 4:2:2 to and from planar I420, YV12, P422                          */
/* ------------------------------------------------------------------------ */

/* Planar frames lie in one buffer, planes back to back. As a destination the
 * chroma planes start dstPitch * height bytes in (I420: Cb, then Cr a quarter of
 * that later; YV12: Cr first; P422: Cb, then Cr half of it later), chroma rows
 * dstPitch / 2 apart. As a source of these converters the planes are placed by
 * width * height instead, whatever srcPitch is. All products are 32-bit.
 *
 * 4:2:0 is treated as two interlaced fields and never averaged:
 *   packed to planar: chroma row k comes from source row 2k for even k and
 *       2k + 1 for odd k (rows 0, 3, 4, 7, 8, 11, ...);
 *   planar to packed: rows 0 and 2 take chroma row 0, rows 1 and 3 row 1,
 *       rows 4 and 6 row 2, ... (except UYVY output off the AVX2 path, which
 *       goes through the imaging-library path: row y takes chroma row y / 2,
 *       odd last rows and columns untouched).
 *
 * Packed to planar reads width / 2 whole pairs per row (an odd last pixel is
 * dropped); when srcPitch == 2 * width the rows run on from the previous row's
 * last pair. Results: dstPitch * height + (dstPitch * height / 2 with its lowest
 * bit cleared) from the engine, (height * dstPitch * 3) / 2 from the AVX2 forms,
 * dstPitch * height when the P422 wrappers take the imaging-library path.
 *
 * Planar to packed writes ceil(width / 2) pairs per row (an odd width reads one
 * Y byte past the row); when width == srcPitch the Y rows run on, and P422
 * chroma is read as one run of ceil(width / 2) samples per row, except for UYVY
 * and cyuv output below level 5, whose imaging-library path reads P422 chroma
 * rows srcPitch / 2 apart: with a source pitch above the width it reads up to
 * (height - 1) * (srcPitch / 2 - width / 2) bytes further into the source.
 * Results: dstPitch * height. cycbcr_buffer_sizes gives the exact extent of
 * every path.
 *
 * cyuv: converted as UYVY, then the planes (or the packed frame) are flipped
 * with cycbcr_invert, padding rows included. */
CYCBCR_CONVERTER(cycbcr_yuy2_to_i420);
CYCBCR_CONVERTER(cycbcr_yuy2_to_yv12);
CYCBCR_CONVERTER(cycbcr_yuy2_to_p422);
CYCBCR_CONVERTER(cycbcr_yvyu_to_i420);
CYCBCR_CONVERTER(cycbcr_yvyu_to_yv12);
CYCBCR_CONVERTER(cycbcr_yvyu_to_p422);
CYCBCR_CONVERTER(cycbcr_uyvy_to_i420);
CYCBCR_CONVERTER(cycbcr_uyvy_to_yv12);
CYCBCR_CONVERTER(cycbcr_uyvy_to_p422);
CYCBCR_CONVERTER(cycbcr_cyuv_to_i420);
CYCBCR_CONVERTER(cycbcr_cyuv_to_yv12);
CYCBCR_CONVERTER(cycbcr_cyuv_to_p422);
CYCBCR_CONVERTER(cycbcr_i420_to_yuy2);
CYCBCR_CONVERTER(cycbcr_i420_to_yvyu);
CYCBCR_CONVERTER(cycbcr_i420_to_uyvy);
CYCBCR_CONVERTER(cycbcr_i420_to_cyuv);
CYCBCR_CONVERTER(cycbcr_yv12_to_yuy2);
CYCBCR_CONVERTER(cycbcr_yv12_to_yvyu);
CYCBCR_CONVERTER(cycbcr_yv12_to_uyvy);
CYCBCR_CONVERTER(cycbcr_yv12_to_cyuv);
CYCBCR_CONVERTER(cycbcr_p422_to_yuy2);
CYCBCR_CONVERTER(cycbcr_p422_to_yvyu);
CYCBCR_CONVERTER(cycbcr_p422_to_uyvy);
CYCBCR_CONVERTER(cycbcr_p422_to_cyuv);
/* The AVX2 forms, chosen by the names above at level 5. */
CYCBCR_CONVERTER(cycbcr_yuy2_to_i420_avx2);
CYCBCR_CONVERTER(cycbcr_yuy2_to_yv12_avx2);
CYCBCR_CONVERTER(cycbcr_yuy2_to_p422_avx2);
CYCBCR_CONVERTER(cycbcr_yvyu_to_i420_avx2);
CYCBCR_CONVERTER(cycbcr_yvyu_to_yv12_avx2);
CYCBCR_CONVERTER(cycbcr_yvyu_to_p422_avx2);
CYCBCR_CONVERTER(cycbcr_uyvy_to_i420_avx2);
CYCBCR_CONVERTER(cycbcr_uyvy_to_yv12_avx2);
CYCBCR_CONVERTER(cycbcr_uyvy_to_p422_avx2);
CYCBCR_CONVERTER(cycbcr_cyuv_to_i420_avx2);
CYCBCR_CONVERTER(cycbcr_cyuv_to_yv12_avx2);
CYCBCR_CONVERTER(cycbcr_cyuv_to_p422_avx2);
CYCBCR_CONVERTER(cycbcr_i420_to_yuy2_avx2);
CYCBCR_CONVERTER(cycbcr_i420_to_yvyu_avx2);
CYCBCR_CONVERTER(cycbcr_i420_to_uyvy_avx2);
CYCBCR_CONVERTER(cycbcr_i420_to_cyuv_avx2);
CYCBCR_CONVERTER(cycbcr_yv12_to_yuy2_avx2);
CYCBCR_CONVERTER(cycbcr_yv12_to_yvyu_avx2);
CYCBCR_CONVERTER(cycbcr_yv12_to_uyvy_avx2);
CYCBCR_CONVERTER(cycbcr_yv12_to_cyuv_avx2);
CYCBCR_CONVERTER(cycbcr_p422_to_yuy2_avx2);
CYCBCR_CONVERTER(cycbcr_p422_to_yvyu_avx2);
CYCBCR_CONVERTER(cycbcr_p422_to_uyvy_avx2);
CYCBCR_CONVERTER(cycbcr_p422_to_cyuv_avx2);

/* The engines. srcY, srcCb, srcCr point at the first Y, Cb and Cr byte of the
 * packed row (YUY2: p, p + 1, p + 3; YVYU: p, p + 3, p + 1; UYVY: p + 1, p, p + 2);
 * dstY, dstCb, dstCr at the three planes. mode 0: 4:2:0 planes, 1: 4:2:2.
 * cycbcr_toplanar hands UYVY-shaped frames with planes in their usual places to
 * the AVX2 forms at level 5; cycbcr_toplanar_sse2 never does. */
CYCBCR_API unsigned int cycbcr_toplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                        const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                        uint8_t* dstCr, unsigned int width, unsigned int height,
                                        unsigned int dstPitch, unsigned int srcPitch,
                                        unsigned int mode);
CYCBCR_API unsigned int cycbcr_toplanar_sse2(const uint8_t* srcY, const uint8_t* srcCb,
                                             const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                             uint8_t* dstCr, unsigned int width,
                                             unsigned int height, unsigned int dstPitch,
                                             unsigned int srcPitch, unsigned int mode);
/* The reverse: srcY, srcCb, srcCr are the planes, dstY, dstCb, dstCr the first
 * Y, Cb and Cr byte of the packed row. */
CYCBCR_API unsigned int cycbcr_fromplanar(const uint8_t* srcY, const uint8_t* srcCb,
                                          const uint8_t* srcCr, uint8_t* dstY, uint8_t* dstCb,
                                          uint8_t* dstCr, unsigned int width, unsigned int height,
                                          unsigned int dstPitch, unsigned int srcPitch,
                                          unsigned int mode);

/* Field-exchanging variants, for callers whose fields arrive in the other order:
 * source row 2k is written to row 2k + 1 and 2k + 1 to 2k, so for an odd height
 * the last source row lands one row past the frame (the destination needs one
 * row more). Neither takes an AVX2 or imaging-library path.
 * cycbcr_fromplanar_fieldinvert: uses the low four bits of mode; chroma pointers
 *   run on from row to row. Mode 1: one Cb and Cr per pair; mode 2: every other
 *   chroma byte (a plane of one sample per pixel); mode 0: chroma row (i - 1) / 2
 *   on odd source rows, one sample per two pairs (four pixels). Returns
 *   height * dstPitch.
 * cycbcr_toplanar_fieldinvert: Y rows exchanged as above; each pair's chroma goes
 *   to chroma row i / 2 (4:2:0: even source rows only). Returns the engine's
 *   count. */
CYCBCR_API unsigned int cycbcr_fromplanar_fieldinvert(const uint8_t* srcY, const uint8_t* srcCb,
                                                      const uint8_t* srcCr, uint8_t* dstY,
                                                      uint8_t* dstCb, uint8_t* dstCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch,
                                                      unsigned int mode);
CYCBCR_API unsigned int cycbcr_toplanar_fieldinvert(const uint8_t* srcY, const uint8_t* srcCb,
                                                    const uint8_t* srcCr, uint8_t* dstY,
                                                    uint8_t* dstCb, uint8_t* dstCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch,
                                                    unsigned int mode);

/* ------------------------------------------------------------------------ */
/* Planar to planar: I420, YV12, P422                                         */
/* ------------------------------------------------------------------------ */

/* No sample is computed: planes and rows are copied, and 4:2:0 <-> 4:2:2 repeats
 * (each 4:2:0 chroma row serves two rows) or drops (odd 4:2:2 chroma rows) whole
 * chroma rows, with no regard to fields. Both sides place their planes by their
 * own pitch: chroma at pitch * height, the second a quarter (4:2:0) or half
 * (4:2:2) of that later, chroma rows pitch / 2 apart.
 *
 * Among I420 and YV12, Cb stays Cb. Between 4:2:0 and P422 the first chroma
 * plane of one side pairs with the first of the other, so Cb and Cr trade places
 * in the result; existing callers rely on it.
 *
 * I420/YV12 copies: with equal pitches whole planes (pitch * height and a quarter
 * of it); otherwise min(dstPitch, srcPitch) bytes per Y row and half that per
 * chroma row. Return dstPitch * height * 3 / 2 (as dstPitch * height +
 * dstPitch * height / 2). P422 to P422 copies whole planes sized by dstPitch
 * whatever srcPitch is; the other P422 pairs copy width (Y) and width / 2
 * (chroma) bytes per row. All P422 pairs return 2 * dstPitch * height. */
CYCBCR_CONVERTER(cycbcr_i420_to_i420);
CYCBCR_CONVERTER(cycbcr_i420_to_yv12);
CYCBCR_CONVERTER(cycbcr_yv12_to_i420);
CYCBCR_CONVERTER(cycbcr_yv12_to_yv12);
CYCBCR_CONVERTER(cycbcr_i420_to_p422);
CYCBCR_CONVERTER(cycbcr_yv12_to_p422);
CYCBCR_CONVERTER(cycbcr_p422_to_i420);
CYCBCR_CONVERTER(cycbcr_p422_to_yv12);
CYCBCR_CONVERTER(cycbcr_p422_to_p422);

/* The engines: destination Y and chroma planes, then the source's; the first
 * chroma plane is always filled from the first. The flags say which side is
 * 4:2:2. cycbcr_planar_422_420 takes its AVX2 form at level 5. */
CYCBCR_API unsigned int cycbcr_planar_copy(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                           const uint8_t* sA, const uint8_t* sB, unsigned int width,
                                           unsigned int height, unsigned int dstPitch,
                                           unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_planar_422_420(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                              const uint8_t* sY, const uint8_t* sA,
                                              const uint8_t* sB, unsigned int width,
                                              unsigned int height, unsigned int dstPitch,
                                              unsigned int srcPitch, unsigned int dst422,
                                              unsigned int src422);
CYCBCR_API unsigned int cycbcr_planar_422_420_avx2(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                                   const uint8_t* sY, const uint8_t* sA,
                                                   const uint8_t* sB, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, unsigned int dst422,
                                                   unsigned int src422);

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
 * v210_row_bytes(width) always has room. The packers into v210 read
 * ceil(width / 6) * 12 bytes of each packed 8-bit row; Fromv210 and Fromv210_16
 * write the width rounded up to 12 pixels in every row and plane, so an 8-bit
 * planar destination at a pitch below that writes the last luma row's tail over
 * the first chroma bytes and the last chroma row's past the frame (give such
 * frames a pitch of at least the width rounded up to 12, through the converter
 * itself: the dispatcher's pitch rule may lower it). cycbcr_buffer_sizes gives
 * the exact extents. */

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

/* v210 to and from YUY2, YVYU, cyuv, I420, YV12, P422 and separate 4:2:2 planes.
 * Each name takes its _avx2 twin at level 5 (without choosing a level itself),
 * else the scalar engine with a fixed pointer convention:
 *   from v210: Fromv210 (truncated samples; width rounded up to 12 pixels written
 *       per row and plane); 8-bit planes at dstPitch (chroma at dstPitch * height,
 *       chroma rows dstPitch / 2 apart); 4:2:0 keeps the odd row's chroma.
 *       cyuv: UYVY order, then flipped with cycbcr_invert(dst, dstPitch, height).
 *       Returns width * height * 2 (packed), width * height * 3 / 2 (planar, 4:2:2
 *       included), width * height * 4 (16-bit planes).
 *   to v210: Tov210 (v << 2; whole 16-byte groups; destination pitch the larger of
 *       v210_row_bytes(width) and dstPitch). Planar sources are found by srcPitch
 *       (planes at srcPitch * height) and read as tightly packed rows of width
 *       (chroma width / 2), 4:2:0 chroma rows serving two luma rows; packed rows
 *       run on by whole groups when srcPitch == 2 * width. cyuv: flipped after
 *       with cycbcr_invert(dst, dstPitch, height), the pitch as passed.
 *       Returns height * v210_row_bytes(width).
 * The twins give the same bytes, with one exception kept from the engine they
 * stand in for: cycbcr_i420_to_012v_avx2 reads luma rows srcPitch apart and
 * chroma rows srcPitch / 2 apart instead of tightly packed rows. */
CYCBCR_CONVERTER(cycbcr_012v_to_yuy2);
CYCBCR_CONVERTER(cycbcr_012v_to_yvyu);
CYCBCR_CONVERTER(cycbcr_012v_to_cyuv);
CYCBCR_CONVERTER(cycbcr_012v_to_i420);
CYCBCR_CONVERTER(cycbcr_012v_to_yv12);
CYCBCR_CONVERTER(cycbcr_012v_to_p422);
CYCBCR_CONVERTER(cycbcr_yuy2_to_012v);
CYCBCR_CONVERTER(cycbcr_yvyu_to_012v);
CYCBCR_CONVERTER(cycbcr_cyuv_to_012v);
CYCBCR_CONVERTER(cycbcr_i420_to_012v);
CYCBCR_CONVERTER(cycbcr_yv12_to_012v);
CYCBCR_CONVERTER(cycbcr_p422_to_012v);
CYCBCR_CONVERTER(cycbcr_012v_to_yuy2_avx2);
CYCBCR_CONVERTER(cycbcr_012v_to_yvyu_avx2);
CYCBCR_CONVERTER(cycbcr_012v_to_cyuv_avx2);
CYCBCR_CONVERTER(cycbcr_012v_to_i420_avx2);
CYCBCR_CONVERTER(cycbcr_012v_to_yv12_avx2);
CYCBCR_CONVERTER(cycbcr_012v_to_p422_avx2);
CYCBCR_CONVERTER(cycbcr_yuy2_to_012v_avx2);
CYCBCR_CONVERTER(cycbcr_yvyu_to_012v_avx2);
CYCBCR_CONVERTER(cycbcr_cyuv_to_012v_avx2);
CYCBCR_CONVERTER(cycbcr_i420_to_012v_avx2);
CYCBCR_CONVERTER(cycbcr_yv12_to_012v_avx2);
CYCBCR_CONVERTER(cycbcr_p422_to_012v_avx2);

/* v210 into three separate 4:2:2 planes (luma rows dstPitch apart, chroma rows
 * dstPitch / 2 apart), 8-bit truncated or 16-bit (v << 6; the pointers are to
 * 16-bit samples, pitches in bytes). The _avx2 forms and the cycbcr_v210to_*
 * kernels they run give the same bytes. */
CYCBCR_API unsigned int cycbcr_012v_to_planar422(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_planar422_16(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_planar422_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_planar422_16_avx2(void* y, void* cb, void* cr,
                                                         const uint8_t* src, unsigned int width,
                                                         unsigned int height, unsigned int dstPitch,
                                                         unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_v210to_planar_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                  const uint8_t* src, unsigned int width,
                                                  unsigned int height, unsigned int dstPitch,
                                                  unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_v210to_planar16_avx2(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch);

/* Row kernels (SSSE3; call them only on a processor that has it): one v210 row
 * into Y, Cb and Cr samples, whole groups: ceil(pixels / 6) * 16 bytes read,
 * ceil(pixels / 6) * 6 Y and half as many Cb and Cr samples written. 8-bit
 * samples are truncated (v >> 2), 16-bit ones v << 6. The _aligned forms need a
 * 16-byte aligned source; the results are the same. */
CYCBCR_API void qb_v210_planar_unpack_aligned_ssse3(const uint8_t* src, uint8_t* y, uint8_t* cb,
                                                    uint8_t* cr, unsigned int pixels);
CYCBCR_API void qb_v210_planar_unpack_unaligned_ssse3(const uint8_t* src, uint8_t* y, uint8_t* cb,
                                                      uint8_t* cr, unsigned int pixels);
CYCBCR_API void qb_v210_planar16_unpack_aligned_ssse3(const uint8_t* src, uint16_t* y, uint16_t* cb,
                                                      uint16_t* cr, unsigned int pixels);
CYCBCR_API void qb_v210_planar16_unpack_unaligned_ssse3(const uint8_t* src, uint16_t* y,
                                                        uint16_t* cb, uint16_t* cr,
                                                        unsigned int pixels);

/* ------------------------------------------------------------------------ */
/* High-bit-depth planar to v210                                             */
/* ------------------------------------------------------------------------ */

/* Three planes of little-endian 16-bit sample words into v210:
 *
 *     unsigned int cycbcr_<src>_to_012v(uint8_t* dst, const uint8_t* srcY,
 *         const uint8_t* srcCb, const uint8_t* srcCr, unsigned int width,
 *         unsigned int height, unsigned int dstPitch, unsigned int srcPitch);
 *
 * Samples, truncated (no rounding): p10 v & 0x3FF, p12 (v >> 2) & 0x3FF, p16
 * v >> 6; 10- and 12-bit values lie in the low bits and higher bits are ignored.
 * Y row r is at srcY + r * srcPitch; 4:2:2 and 4:2:0 chroma rows are srcPitch / 2
 * apart, 4:4:4 chroma rows srcPitch apart; 4:2:0 row r takes chroma row r / 2.
 * 4:2:2 and 4:2:0 pairs take one Cb and one Cr sample each, 4:4:4 pairs those
 * of their even (left) pixel. v210 rows are max(v210_row_bytes(width), dstPitch)
 * apart; each converter returns height times that pitch, except a banded call
 * (see "Row bands"), which returns height * dstPitch as passed.
 *
 * Buffer sizes (cycbcr_converter_pointer_sizes answers each name exactly):
 *   - Rows are packed in whole groups of six pixels, ceil(width / 6) groups
 *     (16 bytes each) a row, built from the samples that follow the row's last
 *     pixel: each Y row is read for 6 * groups samples, each 4:2:2/4:2:0 chroma
 *     row for 3 * groups, each 4:4:4 chroma row up to sample 6 * groups - 2.
 *     cycbcr_yuv420p16_to_012v goes twelve pixels a step: ceil(width / 12) * 2
 *     groups a row.
 *   - cycbcr_yuv422p10_to_012v and cycbcr_yuv422p12_to_012v, on every path
 *     (_internal, the bands and the _avx2 forms alike), write two more words
 *     (8 bytes) right after a row's last group when width % 6 != 0: words 0 and
 *     1 of the following group (Cb0 Y0 Cr0, Y1 Cb1 Y2), so those rows read 3 more
 *     Y, 2 more Cb and 1 more Cr sample. Kept for existing callers. When the
 *     groups fill the pitch the two words land at the start of the next row,
 *     which that row's conversion overwrites, and after the last row they lie
 *     past the frame. A banded call gives the same frame: a band's last row
 *     may reach into the next band's first row after that band converted it,
 *     so once the bands are done the entry converts each band's first row
 *     again on the calling thread (the rows below keep their bytes).
 *   - The AVX2 forms read and write nothing beyond what the plain forms do:
 *     they finish each row's last one or two groups with the plain code.
 *
 * At level 5 on an AVX2 processor each entry continues in its _avx2 form, which
 * gives the same bytes and returns the same count (the _avx2 forms convert on
 * the calling thread only). cycbcr_yuv420p16_to_012v_avx2 has no AVX2 code: it
 * sets the processor level to 0, runs cycbcr_yuv420p16_to_012v and restores the
 * level, so for the duration of the call every other thread sees level 0.
 *
 * cycbcr_yuv422p10_to_012v, cycbcr_yuv422p12_to_012v and
 * cycbcr_yuv444p12_to_012v split wide frames into eight row bands below level
 * 5 (see "Row bands"); their _internal forms are the plain converters on the
 * calling thread and their _worker forms take a band_job. Band k starts
 * k * (height / 8) rows in by the pitches as passed (32-bit products), each band
 * converting at the v210 pitch used: with a dstPitch below v210_row_bytes(width)
 * (0 included) the bands' rows overlap; the query answers such calls too. */
CYCBCR_API unsigned int cycbcr_yuv422p10_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p12_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p16_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv444p10_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv444p12_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p10_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p16_to_012v(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p12_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p16_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv444p10_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv444p12_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p10_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p16_to_012v_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_012v_internal(
    uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
    unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p12_to_012v_internal(
    uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
    unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv444p12_to_012v_internal(
    uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
    unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch);
/* A band's thread body: job points at a band_job. */
CYCBCR_API unsigned int cycbcr_yuv422p10_to_012v_worker(void* job);
CYCBCR_API unsigned int cycbcr_yuv422p12_to_012v_worker(void* job);
CYCBCR_API unsigned int cycbcr_yuv444p12_to_012v_worker(void* job);

/* ------------------------------------------------------------------------ */
/* Row bands: wide high-bit-depth frames on eight threads                    */
/* ------------------------------------------------------------------------ */

/* cycbcr_yuv422p10_to_012v, cycbcr_yuv422p12_to_012v, cycbcr_yuv444p12_to_012v
 * and cycbcr_yuv422p10_to_uyvy convert frames wider than 2048 pixels (1920 for
 * cycbcr_yuv422p12_to_012v) on eight threads, one horizontal band each, started
 * and ended within the call (no pool, nothing left running). Each is built from
 * three exported functions: the entry; <entry>_internal, the same converter on
 * the calling thread with the same arguments (height being the rows to convert),
 * returning its own count; and <entry>_worker, a band's thread body, which takes
 * a band_job, converts its rows through _internal, decrements *pending and, when
 * it then reads 0, sets the event done (which may be NULL when a worker is run
 * by hand). A banded call returns height * dstPitch as passed (even with a
 * dstPitch of 0); the calling thread waits for its bands by polling the counter
 * every millisecond after a first wait of 30 ms on the event.
 * Bands: b = height / 8 rows each; band 7 takes the rest, except through
 * cycbcr_yuv422p12_to_012v, whose eight bands of b rows leave the last
 * height % 8 rows of the frame unconverted (kept for its existing callers). */
typedef struct band_job {
    unsigned char* dst;  /* first destination row of the band */
    unsigned char* srcY; /* first row of the band in each source plane */
    unsigned char* srcCb;
    unsigned char* srcCr;
    uint32_t width;            /* frame width in pixels */
    uint32_t rows;             /* rows in this band */
    uint32_t dstPitch;         /* as the caller passed them */
    uint32_t srcPitch;         /* of the Y plane */
    volatile int32_t* pending; /* unfinished bands of the call */
    void* done;                /* the call's completion event */
} band_job;

/* ------------------------------------------------------------------------ */
/* v210 to high-bit-depth planar; 16-bit planar and UYVY                     */
/* ------------------------------------------------------------------------ */

/* Planes of 16-bit little-endian sample words: p10 holds the 10-bit value in
 * bits 0-9, p16 all 16 bits. Plane pointers and pitches may be odd. Planes must
 * not overlap one another or the source. Every converter chooses a processor
 * level when none is chosen and, at level 5 on an AVX2 processor, hands the
 * call to its _avx2 form (cycbcr_yuv422p10_to_uyvy only up to width 2048).
 *
 * v210 to planar: (dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch).
 * v210 rows at the larger of the natural row (ceil(width / 48) * 128 bytes) and
 * srcPitch. Rows are written in whole v210 groups: ceil(width / 6) * 6 Y samples
 * a row, so up to 5 samples past the width. Samples are the 10-bit values (p10)
 * or v << 6 (p16); nothing rounds.
 *   - 4:2:2 p10 and p16: Y rows dstPitch apart, Cb and Cr rows dstPitch / 2
 *     apart, ceil(width / 6) * 3 samples each. Return width * height * 4.
 *   - 4:4:4 p10: all three planes' rows dstPitch apart. Each pixel pair's Cb and
 *     Cr go to its even pixel; the plain path leaves the odd positions of the
 *     chroma planes as they were, the _avx2 form writes the pair's chroma to both
 *     of its pixels (ceil(width / 6) * 6 samples a chroma row). The even
 *     positions and the Y plane agree on both paths. Returns width * height * 6.
 *   - 4:2:0 p10 takes (dstY, dstCb, dstCr, src, width, height, yPitch,
 *     chromaPitch, srcPitch). Chroma row k is (a + b) >> 1 of v210 rows 2k and
 *     2k + 1; for an odd height the last row is averaged with the v210 row that
 *     follows it in memory, which the source must therefore hold (height rounded
 *     up to even rows are read). The plain path ignores yPitch and chromaPitch
 *     and writes the planes packed: Y rows of ceil(width / 6) * 6 samples and
 *     chroma rows of ceil(width / 6) * 3 samples back to back; it reads the v210
 *     rows exactly srcPitch apart (0 reads row 0 again and again). The _avx2
 *     form writes rows yPitch and chromaPitch apart and reads v210 rows at the
 *     larger of srcPitch and the natural row. Both return width * height * 3, at
 *     once for a width or height of 0.
 *
 * Planar to UYVY: (dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch);
 * chroma rows srcPitch / 2 apart.
 *   - cycbcr_yuv422p10_to_uyvy: each byte (v >> 2) & 0xFF (truncated; bits above
 *     9 ignored). Rows of exactly 2 * width bytes (an odd width ends with the last
 *     pixel's Cb and Y bytes) at the larger of 2 * width and dstPitch; returns
 *     that pitch * height. Frames wider than 2048 go in eight row bands (see
 *     "Row bands"), at every level, and return height * dstPitch as passed. Its
 *     _internal converts on the calling thread (with the AVX2 row kernel at level
 *     5 on an AVX2 processor, the same bytes) and _worker is a band's body.
 *   - cycbcr_yuv420p10_to_uyvy, cycbcr_yuv420p16_to_uyvy: row r takes chroma row
 *     r / 2; each byte v >> 2 (p10) or v >> 8 (p16). width / 2 whole pixel pairs
 *     a row (an odd width's last pixel is not written), rows dstPitch apart as
 *     passed; return dstPitch * height. Within each row the pixels below the
 *     width rounded down to 16 (when width >= 16) saturate to 255 and the rest
 *     keep the low eight bits: the same for samples of the stated depth.
 *
 * cycbcr_uyvy_to_yuv444p10 (dstY, dstCb, dstCr, src, width, height, dstPitch,
 * srcPitch): each 8-bit sample v << 2; each pixel pair's Cb and Cr on both of
 * its pixels. UYVY rows at the larger of 2 * width and srcPitch (an odd width
 * reads the Cb, Y and Cr bytes of its last pixel's pair: 2 * width + 1 bytes);
 * all three planes' rows dstPitch apart, width samples each. Returns
 * width * height * 6.
 *
 * cycbcr_converter_pointer_sizes answers every name of this section. */
CYCBCR_API unsigned int cycbcr_012v_to_yuv422p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv422p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv422p16(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv422p16_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv444p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv444p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv420p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int yPitch,
                                                 unsigned int chromaPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_012v_to_yuv420p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int yPitch,
                                                      unsigned int chromaPitch,
                                                      unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_internal(
    uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
    unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_worker(void* job);
CYCBCR_API unsigned int cycbcr_yuv420p10_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p10_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p16_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p16_to_uyvy_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_yuv444p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_uyvy_to_yuv444p10_avx2(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch);

/* ------------------------------------------------------------------------ */
/* 8-bit YCbCr to RGB                                                        */
/* ------------------------------------------------------------------------ */

/* The converters to RGB take the converter arguments, then the colour matrix and
 * the RGB layout:
 *
 *     unsigned int cycbcr_<src>_to_<rgb>(uint8_t* dst, const uint8_t* src,
 *         unsigned int width, unsigned int height, unsigned int dstPitch,
 *         unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType);
 *
 * <src> is uyvy, yuy2, yvyu, cyuv, i420, yv12 or p422, <rgb> is rgb555 (15-bit
 * words), rgb565 (16-bit words), rgb24 or rgb32; nv12 has rgb32 only. Each
 * chooses a processor level when none is chosen (5 on an AVX2 processor) and
 * hands the frame to cycbcr_ToRGB (nv12: cycbcrBi_ToRGBInt) with its sample
 * pointers, the 4:2:2 and planar flags, the depth and a chroma pitch of
 * srcPitch / 2. Planar sources place their chroma planes at P = srcPitch *
 * height (32-bit): Cb at P and Cr at P + P/4 (i420; yv12 the other way round),
 * P + P/2 (p422); nv12's Cb, Cr pairs at P.
 *
 * The engine (cycbcr_ToRGBInt and every vector form of it):
 *   - coefficients x 10000 per matrix; each channel's 64-bit sum divided by
 *     10000 truncating toward zero (no rounding), clamped to 0..255. Alpha 255.
 *   - whole pixel pairs: an odd width writes one pixel past the width and reads
 *     a whole pair of samples.
 *   - reads ignore the pitches: a packed frame is read as one run of
 *     ceil(width / 2) * 4 bytes per row, each row where the previous ended; a
 *     planar luma plane as rows of exactly width samples; chroma row n at
 *     (n * width) / 2 (4:2:2) or ((n / 2) * width) / 2 (4:2:0) samples into its
 *     plane; nv12 chroma at twice that many bytes (the same count of Cb, Cr
 *     pairs). The source pitch only places the planes.
 *   - writes rows dstPitch apart, ceil(width / 2) * 2 pixels each; with the
 *     bottom-up flag of rgbType the first row goes to the last destination row.
 *   - returns width * height * (2 for 15/16-bit, 3 for 24-bit, 4 otherwise),
 *     even for height 0; a depth other than 15, 16, 24, 32 writes nothing.
 * Routes that differ from the engine (kept; callers depend on each):
 *   - i420/yv12 to rgb32 with rgbType exactly 0 always go to the library's
 *     image-library path (16-bit fixed-point, rounded: not the engine's bytes):
 *     matrices 3, 5 studio BT.709, 2 and 4 BT.709 written as 3-byte pixels and
 *     widened in place to 4-byte rows width * 4 apart whatever dstPitch says,
 *     every other matrix BT.601; alpha 255; even width and height only (odd
 *     ones leave the last column/row unwritten); returns height * dstPitch.
 *   - uyvy_to_rgb24 below level 5 (or without AVX2) always takes the
 *     image-library path: matrices with bit 2 set (4 to 7) studio BT.709 then
 *     R, G, B order; every other matrix BT.601 reading the UYVY bytes as if they
 *     were Y0 Cr Y1 Cb. rgbType is ignored; width / 2 pairs per row, rows
 *     srcPitch and dstPitch apart; returns height * dstPitch.
 *   - uyvy_to_rgb32 at levels 1 to 4 and 6 with an odd matrix (and at level 1
 *     only for rgbType 0 or 0x8000) takes the image-library path: alpha 0, the
 *     bottom-up flag ignored, R, G, B, A for rgbType 2, B, G, R, A otherwise;
 *     returns height * dstPitch.
 *   - cyuv: the UYVY conversion, then the whole RGB frame turned over in place
 *     with cycbcr_invert(dst, dstPitch, height).
 * The _avx2 forms give the engine's bytes (rgbType honoured, no image-library
 * routes) and need a processor with AVX2. Buffer sizes by converter name:
 * cycbcr_converter_buffer_sizes(). */
#define CYCBCR_RGB_CONVERTER(name)                                                     \
    CYCBCR_API unsigned int name(uint8_t* dst, const uint8_t* src, unsigned int width, \
                                 unsigned int height, unsigned int dstPitch,           \
                                 unsigned int srcPitch, QBYCBCRMatrix matrix,          \
                                 QBYCBCRRgbType rgbType)
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb24_avx2);
CYCBCR_RGB_CONVERTER(cycbcr_uyvy_to_rgb32_avx2);
CYCBCR_RGB_CONVERTER(cycbcr_yuy2_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_yuy2_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_yuy2_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_yuy2_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_yvyu_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_yvyu_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_yvyu_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_yvyu_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_cyuv_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_cyuv_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_cyuv_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_cyuv_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_i420_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_i420_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_i420_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_i420_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_yv12_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_yv12_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_yv12_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_yv12_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_p422_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_p422_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_p422_to_rgb24);
/* At level 5 on an AVX2 processor: cycbcr_ToRGBInt_avx2 directly. */
CYCBCR_RGB_CONVERTER(cycbcr_p422_to_rgb32);
/* Semi-planar 4:2:0: the two-plane engine. */
CYCBCR_RGB_CONVERTER(cycbcr_nv12_to_rgb32);

/* UYVY with an alpha plane to 32-bit RGB: the engine's rule for UYVY, each
 * pixel's alpha byte taken from `alpha`, a plane of one byte per pixel in rows
 * width bytes apart (as cycbcr_RGB32_to_uyvy_Alpha writes it, tightly packed);
 * with an odd width a row's extra pixel reads the byte after the row, so the
 * plane needs width * height + 1 bytes then. Chooses a level when none is
 * chosen; at level 5 on an AVX2 processor it goes to its _avx2 form (same
 * bytes). Returns width * height * 4. */
CYCBCR_API unsigned int cycbcr_uyvy_to_rgb32_Alpha(uint8_t* dst, const uint8_t* src,
                                                   const uint8_t* alpha, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                   QBYCBCRRgbType rgbType);
CYCBCR_API unsigned int cycbcr_uyvy_to_rgb32_alpha_avx2(uint8_t* dst, const uint8_t* src,
                                                        const uint8_t* alpha, unsigned int width,
                                                        unsigned int height, unsigned int dstPitch,
                                                        unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                        QBYCBCRRgbType rgbType);

/* The engines, handed sample pointers: is422 and planar are the layout flags
 * (packed frames: Y, Cb, Cr pointers 4 bytes a pair apart; planar: three
 * planes), depth the output bits per pixel, chromaPitch srcPitch / 2 by the
 * entry points (neither pitch moves the engine's rows: see above).
 *
 * cycbcr_ToRGB: planar 4:2:0 with depth 32 and rgbType 0 goes to the
 *   image-library path above; everything else to cycbcr_ToRGBInt.
 * cycbcr_ToRGBInt: the engine. At level 5 on an AVX2 processor, 32-bit output
 *   from planar 4:2:2 goes to cycbcr_ToRGBInt_avx2; other layouts run the
 *   engine with exact vector row kernels there (same bytes).
 * cycbcr_ToRGBInt_avx2: the engine with AVX2 row kernels, any layout and depth;
 *   needs AVX2.
 * cycbcrBi_ToRGBInt: the engine for a Y plane and one plane of interleaved
 *   Cb, Cr pairs (cb and cr point at the first Cb and Cr byte); chroma rows as
 *   above in pairs. Returns as the engine.
 * cycbcr_ToRGBFloat: the engine's layouts and depths, computed in double
 *   precision from the unscaled coefficients, truncated toward zero and clamped
 *   to 0..255. Returns as the engine.
 * cycbcr_ToRGBInt16: 16 bits a channel, little-endian words: depth 24 or 48
 *   writes R, G, B words in the layout's order (6 bytes), 32 or 64 four words
 *   with alpha 65535 (8 bytes); other depths write nothing. Coefficients x 2 563
 *   900 (matrix 4: x 2 560 000), divided by 10000 truncating; R and B carry
 *   10000 of rounding bias, G none; the studio matrices (odd) take Y - 16 and
 *   add 4096 after the division. Clamped to 0..65535. Returns width * height *
 *   (6 or 8). */
#define CYCBCR_TO_RGB_ENGINE(name)                                                                \
    CYCBCR_API unsigned int name(                                                                 \
        uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr, unsigned int width, \
        unsigned int height, unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix,  \
        QBYCBCRRgbType rgbType, int32_t is422, unsigned int planar, unsigned int depth,           \
        unsigned int chromaPitch)
CYCBCR_TO_RGB_ENGINE(cycbcr_ToRGB);
CYCBCR_TO_RGB_ENGINE(cycbcr_ToRGBInt);
CYCBCR_TO_RGB_ENGINE(cycbcr_ToRGBInt_avx2);
CYCBCR_TO_RGB_ENGINE(cycbcrBi_ToRGBInt);
CYCBCR_TO_RGB_ENGINE(cycbcr_ToRGBFloat);
CYCBCR_TO_RGB_ENGINE(cycbcr_ToRGBInt16);

/* ------------------------------------------------------------------------ */
/* YCbCr to planar RGB                                                       */
/* ------------------------------------------------------------------------ */

/* 8-, 10- and 12-bit YCbCr into three RGB planes. The engines take the three
 * destination planes first (R, G, B, in that order whatever rgbType says), then
 * the Y, Cb and Cr sample pointers, then the numbers of the 8-bit engine
 * cycbcr_ToRGBInt without its depth:
 *
 *     unsigned int name(uint8_t* dstR, uint8_t* dstG, uint8_t* dstB,
 *         const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
 *         unsigned int width, unsigned int height, unsigned int dstPitch,
 *         unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
 *         int32_t is422, unsigned int planar, unsigned int chromaPitch);
 *
 * 10- and 12-bit samples are little-endian 16-bit words (the value in the low
 * bits, read as the whole word), 16-bit planes little-endian words, float
 * planes 4-byte floats; every pointer may start at any byte.
 *
 * Common to every engine (the 8-bit engine's walk):
 *   - sources: planar != 0: three planes; luma rows of exactly width samples
 *     one after another; chroma row n at (n * width) / 2 samples into its plane
 *     for is422 != 0 (4:2:2), ((n / 2) * width) / 2 for 4:2:0. planar == 0:
 *     packed 4:2:2 samples, each pointer 4 samples a pair apart (Y pairs at 0
 *     and 2), each row where the previous one's ceil(width / 2) pairs ended.
 *     srcPitch and chromaPitch move no row (they only place planes for
 *     callers).
 *   - whole pixel pairs, one Cb, Cr pair for both pixels, no interpolation: an
 *     odd width writes one value past the width in each plane row and reads a
 *     whole pair of samples.
 *   - destination rows dstPitch bytes apart in each of the three planes,
 *     ceil(width / 2) * 2 values each. rgbType: only the bottom-up flag (bit 15)
 *     counts, putting the first row last in every plane; the layout number is
 *     ignored (the planes are named by argument) and no alpha is written.
 *   - returns width * height * 3 * (bytes a value: 1, 2 or 4), even for height
 *     0 (nothing written).
 *   - each but the _avx2 forms chooses a processor level when none is chosen
 *     (5 on an AVX2 processor); at level 5 on an AVX2 processor every member runs exact
 *     AVX2 rows (the bytes of level 0, whatever the sample words hold).
 *
 * The members (L = (Y - luma offset) * Y gain, Cb' = Cb - midpoint, Cr' = Cr -
 * midpoint; R = L + CrR Cr', G = L - CrG Cr' - CbG Cb', B = L + CbB Cb', each
 * 64-bit sum divided truncating toward zero and clamped to 0..max):
 *   - cycbcr_ToRGBPlanarInt: 8-bit samples, midpoint 128, the x 10000 set of
 *     cycbcr_ToRGBInt (offset 16 or 0), / 10000, 8-bit planes (max 255): the
 *     bytes of cycbcr_ToRGBInt's R, G, B. At level 5 on an AVX2 processor
 *     planar 4:2:2 goes to cycbcr_ToRGBPlanarInt_avx2, other layouts run exact
 *     AVX2 rows (same bytes).
 *   - cycbcr_ToRGBPlanarInt_avx2: the same bytes, AVX2 rows; needs AVX2.
 *   - cycbcr_ToRGBPlanarInt16 and _avx2: 8-bit samples into 16-bit planes with
 *     the rule of cycbcr_ToRGBInt16 (x 2 563 900, matrix 4 x 2 560 000; R and B
 *     carry 10000 of rounding bias; odd matrices take Y - 16 and add 4096;
 *     max 65535). The plain name goes to the _avx2 form at level 5 on an AVX2
 *     processor; same bytes.
 *   - cycbcr_ToRGBPlanarFloat: 8-bit samples, the unscaled coefficients in
 *     double precision on the 8-bit scale, clamped to 0..255 and stored as the
 *     nearest float, not cut to an integer (matrix 0, Y 235, neutral chroma:
 *     254.916).
 *   - cycbcr_10ToRGBPlanarInt: 10-bit samples, midpoint 512, the x 10000 set
 *     with its 8-bit luma offset (16 or 0) subtracted from the 10-bit luma as it
 *     stands, / 40000, 8-bit planes (as cycbcr_10ToRGBInt: 10-bit black 64 gives
 *     13 for matrix 0).
 *   - cycbcr_10ToRGBPlanarInt16: 10-bit samples, midpoint 512, the x 10240 set
 *     (offset 64 or 0), / 160, 16-bit planes (max 65535).
 *   - cycbcr_10ToRGBPlanarInt10: the same sums / 10240: 10-bit values (max
 *     1023) in 16-bit words.
 *   - cycbcr_12ToRGBPlanar and cycbcr_12ToRGBPlanarInt16 (one rule): 12-bit
 *     samples, midpoint 2048, the x 10240 gains with luma offset 256 where the
 *     10-bit rows have 64 (0 for matrices 1, 3, 5, 7), / 640, 16-bit planes
 *     (max 65535).
 *
 * cycbcr_ToRGBPlanar, the selector in front of cycbcr_ToRGBPlanarInt: packed
 * 4:2:2 (is422 != 0, planar == 0) with matrix 1 or 5 takes the library's
 * image-library route at every level: the UYVY frame read from cb (rows
 * srcPitch apart, width / 2 whole pairs) is converted with studio BT.709 in
 * 16-bit fixed point, rounded (Y passes through; R = Y + 1.540 Cr', G = Y -
 * 0.459 Cr' - 0.183 Cb', B = Y + 1.816 Cb', each coefficient round(c * 65536),
 * (sum + 32768) >> 16, clamped to 0..255; matrix 1 too) into a zero-filled
 * scratch frame of width * height * 3 bytes, whose B, G, R bytes are copied to
 * the third, second and first plane, width values a row at dstPitch; rgbType
 * is ignored. An odd width's last column (and a width of 1: every column) is
 * 0; srcPitch 0 writes zeros, dstPitch 0 writes nothing. Returns height *
 * dstPitch, or 0 (nothing touched) when width * height * 3 - 1 exceeds
 * 0x7FFFFFFE (so also for a width or height of 0) or the scratch frame cannot
 * be allocated. Every other call goes to cycbcr_ToRGBPlanarInt unchanged.
 *
 * Buffer sizes per pointer: cycbcr_converter_pointer_sizes(name, width,
 * height, {dstPitch, srcPitch, matrix, rgbType, is422, planar, chromaPitch},
 * 7, bytes) answers the first four pointers: bytes[0..2] the R, G, B planes,
 * (height - 1) * dstPitch + ceil(width / 2) * 2 * (bytes a value);
 * bytes[3] the Y pointer: planar (height - 1) * width + ceil(width / 2) * 2
 * samples, packed 4 * ceil(width / 2) * height - 1 samples (times 2 bytes for
 * 10- and 12-bit samples). cycbcr_converter_all_pointer_sizes() also answers
 * Cb and Cr (bytes[4] and bytes[5]), in samples: planar 4:2:2 ((height - 1) *
 * width) / 2 + ceil(width / 2), 4:2:0 (((height - 1) / 2) * width) / 2 +
 * ceil(width / 2); packed 4 * ceil(width / 2) * height - 3. On the selector's
 * image-library route bytes[3] and bytes[4] are instead the reach from cb,
 * (height - 1) * srcPitch + (width / 2) * 4 (0 for srcPitch 0 or a width below
 * 2), bytes[5] 0, the planes (height - 1) * dstPitch + width each, and every
 * answer is 0 when the route touches nothing. */
#define CYCBCR_TO_RGB_PLANAR_ENGINE(name)                                                   \
    CYCBCR_API unsigned int name(                                                           \
        uint8_t* dstR, uint8_t* dstG, uint8_t* dstB, const uint8_t* y, const uint8_t* cb,   \
        const uint8_t* cr, unsigned int width, unsigned int height, unsigned int dstPitch,  \
        unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, int32_t is422, \
        unsigned int planar, unsigned int chromaPitch)
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanar);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanarInt);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanarInt_avx2);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanarInt16);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanarInt16_avx2);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_ToRGBPlanarFloat);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_10ToRGBPlanarInt);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_10ToRGBPlanarInt10);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_10ToRGBPlanarInt16);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_12ToRGBPlanar);
CYCBCR_TO_RGB_PLANAR_ENGINE(cycbcr_12ToRGBPlanarInt16);

/* ------------------------------------------------------------------------ */
/* v210 to RGB                                                               */
/* ------------------------------------------------------------------------ */

/* v210 (10-bit 4:2:2, six pixels in four little-endian words: Cb0 Y0 Cr0 /
 * Y1 Cb2 Y2 / Cr2 Y3 Cb4 / Y4 Cr4 Y5, lowest bits first) into RGB. Source rows
 * are srcPitch bytes apart and destination rows dstPitch bytes apart, both as
 * passed (no row-size rule is applied); with the bottom-up flag (0x8000) of
 * rgbType source row 0 goes to the last destination row. Matrices 1 to 7 have
 * rows of their own, every other value BT.601 with full-range RGB.
 *
 * Chroma: pixels 0, 2 and 4 of a group take their co-sited pair; pixels 1 and 3
 * the average of the pairs on either side, ((a + b) >> 1 for Cb and Cr); pixel 5
 * the average of pair 4 and the first pair of the next group, read from the
 * word after the group. For the last whole group of a row that word is read
 * whatever it holds (the first word of a partial group, or the word after the
 * row's groups): callers leave 4 readable bytes there.
 *
 * Widths that are not a multiple of 6: the width % 6 pixels after the last
 * whole group are converted from the partial group as v210 stores it, reading
 * only the words that hold their own samples and the pairs they use (1 word for
 * 1 pixel, 2 for 2, 3 for 3 or 4, 4 for 5); an odd pixel whose right-hand pair
 * belongs to a pixel past the row's end takes its own pair. Nothing is written
 * past the row's last pixel.
 *
 * The 8-bit engine (family B): with Cb' = Cb - 512, Cr' = Cr - 512 and
 * L = (Y - offset) * gain (offset 64 with the full-range matrices 0, 2, 4, 6,
 * 0 with the studio ones; gains x 2500, e.g. matrix 0: 2910, 3990, 2032, 980,
 * 5042), R = (L + CrR * Cr') / 10000, G = (L - CrG * Cr' - CbG * Cb') / 10000,
 * B = (L + CbB * Cb') / 10000, truncated toward zero and clamped to 0..255.
 * Depth 15, 16, 24 or 32 bits a pixel (alpha 255; 15- and 16-bit words keep
 * the top bits of each channel). Grey Y 940 gives 254 with matrix 0, Y 64
 * gives 0.
 *
 * Entry points, with the converter arguments then matrix and rgbType; each
 * chooses processor level 5 when none is chosen, then:
 *   - cycbcr_012v_to_rgb24 at level 5 on an AVX2 processor: its _avx2 form;
 *   - cycbcr_012v_to_rgb32 at level 5 on an AVX2 processor:
 *     cycbcr_v210ToRGBInt_avx2 with depth 32;
 *   - otherwise cycbcr_v210ToRGB with depth 15, 16, 24 or 32.
 * They return width * height * (2, 2, 3 or 4). cycbcr_012v_to_rgb24_avx2 runs
 * the engine with AVX2 row kernels (same bytes) and needs AVX2. The dispatcher
 * reaches cycbcr_012v_to_rgb32 for v210 to RGB (code 0).
 *
 * Buffer sizes: each source row reads floor(width / 6) * 16 bytes and then 4
 * bytes (width a multiple of 6: the read-ahead word) or the 4, 8, 12, 12 or 16
 * bytes of a partial group of 1 to 5 pixels; the answer is (height - 1) *
 * srcPitch + that. Each destination row writes width whole pixels:
 * (height - 1) * dstPitch + width * bytes a pixel. cycbcr_buffer_sizes() and
 * cycbcr_converter_buffer_sizes() give these numbers. */
CYCBCR_RGB_CONVERTER(cycbcr_012v_to_rgb555);
CYCBCR_RGB_CONVERTER(cycbcr_012v_to_rgb565);
CYCBCR_RGB_CONVERTER(cycbcr_012v_to_rgb24);
CYCBCR_RGB_CONVERTER(cycbcr_012v_to_rgb32);
CYCBCR_RGB_CONVERTER(cycbcr_012v_to_rgb24_avx2);

/* v210 with a 10-bit alpha key to 32-bit RGB: the engine's family-B bytes in
 * the layout of rgbType (bottom-up flag honoured), each pixel's alpha byte the
 * key value >> 2. The key plane is as cycbcr_RGB32_to_012v_Alpha writes it:
 * three 10-bit values a little-endian 32-bit word (bits 0-9, 10-19, 20-29),
 * row r starting at byte (r * width * 4) / 3 of `alpha` whatever the pitches;
 * pixel x of a row is field x % 3 of the row's word x / 3, and a row reads
 * ceil(width / 3) words from its start. Plain arithmetic at every level; chooses
 * level 5 when none is chosen. Returns width * height * 4. */
CYCBCR_API unsigned int cycbcr_012v_to_rgb32_Alpha(uint8_t* dst, const uint8_t* src,
                                                   const uint8_t* alpha, unsigned int width,
                                                   unsigned int height, unsigned int dstPitch,
                                                   unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                   QBYCBCRRgbType rgbType);

/* The engines, with the converter arguments, matrix, rgbType and the output
 * depth in bits. All read and write as above (rows, bottom-up flag, chroma,
 * partial groups, buffer sizes with the bytes a pixel of each form).
 *
 * cycbcr_v210ToRGB: chooses level 5 when none is chosen, then
 *   cycbcr_v210ToRGBInt.
 * cycbcr_v210ToRGBInt: the engine. Depth 32 at level 5 on an AVX2 processor
 *   goes to cycbcr_v210ToRGBInt_avx2; depth 24 runs exact vector rows there.
 *   Returns width * height * (2 for depths 15 and 16, 3 for 24, 4 for every
 *   other depth); depths other than 15, 16, 24 and 32 write nothing.
 * cycbcr_v210ToRGBInt_avx2: the engine with AVX2 row kernels (24- and 32-bit
 *   pixels; other depths as the engine), the engine's bytes exactly; needs AVX2.
 *   Its gains are the engine's x 2500 table: those were rounded one by one
 *   from the unscaled set (0.698 x 2500 = 1745 is 1744 there), so no rule on
 *   the unscaled set would give the engine's bytes.
 * cycbcr_v210ToRGBInt16: 16 bits a channel (family C: gains x 10240, e.g.
 *   matrix 0: offset 64, 11919, 16343, 8325, 4014, 20654), sums divided by 160
 *   truncating toward zero and clamped to 0..65535. Depth 24 or 48: three
 *   little-endian words a pixel in the layout's order (6 bytes); 32 or 64: four
 *   words, the alpha word 255 (not 65535), 8 bytes. Other depths write nothing.
 *   Returns width * height * 6 for depths 24 and 48, * 8 otherwise. Exact AVX2
 *   rows at level 5 on an AVX2 processor (same bytes).
 * cycbcr_v210ToRGBInt16_avx2: the same with AVX2 rows; needs AVX2. Its
 *   vector gains are the unscaled set x 10240, truncated, which is the table
 *   above gain for gain.
 * cycbcr_v210ToRGBFloat: the engine's depths and layouts computed in double
 *   precision with the unscaled gains / 4 (e.g. matrix 0: 0.291, 0.399,
 *   0.20325, 0.098, 0.50425), chroma centred on 512, luma less the offset; each
 *   sum truncated toward zero (no rounding) and clamped to 0..255. Returns as
 *   the engine.
 * cycbcr_v210ToRGBPlanarC16: three planes of 16-bit samples, R, G, B in that
 *   order, each `height` rows of width little-endian words at dstPitch, plane k
 *   at dst + k * dstPitch * height (the bottom-up flag turns each plane over;
 *   the layout bits and depth are ignored). Family C as cycbcr_v210ToRGBInt16,
 *   so full scale is 65535 and studio white 940 gives 60160 for matrix 1.
 *   Exact AVX2 rows at level 5 on an AVX2 processor. Returns
 *   width * height * 6.
 * cycbcr_v210ToRGBPlanarSSE16: the same planes from the Q13 gains (units of
 *   1/8192: matrix 0: 9535, 13074, 6660, 3211, 16523; matrices above 7 take
 *   matrix 3's row, not BT.601's), luma offset 64 for matrices 0, 2, 4, 6 and 0
 *   for the others: with the same L and chroma terms each 16-bit sample is
 *   sum >> 7 (arithmetic shift: rounded toward minus infinity) clamped to
 *   0..65535. A vector form: its AVX2 rows on any AVX2 processor whatever the
 *   level, the same rule in plain code elsewhere. Returns width * height * 6. */
#define CYCBCR_V210_TO_RGB_ENGINE(name)                                                \
    CYCBCR_API unsigned int name(uint8_t* dst, const uint8_t* src, unsigned int width, \
                                 unsigned int height, unsigned int dstPitch,           \
                                 unsigned int srcPitch, QBYCBCRMatrix matrix,          \
                                 QBYCBCRRgbType rgbType, unsigned int depth)
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGB);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBInt);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBInt_avx2);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBInt16);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBInt16_avx2);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBFloat);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBPlanarC16);
CYCBCR_V210_TO_RGB_ENGINE(cycbcr_v210ToRGBPlanarSSE16);

/* ------------------------------------------------------------------------ */
/* High-bit-depth YCbCr to packed RGB                                        */
/* ------------------------------------------------------------------------ */

/* Planar or packed YCbCr with 10-, 12- or 16-bit samples, each in a
 * little-endian 16-bit word, into packed RGB. The engines take the 8-bit
 * engine's argument list (cycbcr_ToRGBInt above): dst, the Y, Cb and Cr
 * sample pointers (given as bytes), width, height, dstPitch, srcPitch, matrix,
 * rgbType, is422, planar, depth, chromaPitch.
 *
 * Rows. Destination rows are dstPitch bytes apart (with the bottom-up flag
 * 0x8000 of rgbType source row 0 goes to the last destination row). Source
 * rows are read one after another, as the 8-bit engine reads them; srcPitch and
 * chromaPitch move no row (they place planes for planar10ToRGBInt and size the
 * buffers). planar != 0: three planes, luma rows of exactly width samples,
 * pixel pair p taking Y samples 2p and 2p + 1 and Cb, Cr sample p of its chroma
 * row, which starts (n * width) / 2 samples into each chroma plane for 4:2:2
 * (is422 != 0) and ((n / 2) * width) / 2 for 4:2:0 (rows 2k and 2k + 1 share
 * one). planar == 0: packed 4:2:2 words, pair p takes Y at samples 4p and
 * 4p + 2 and Cb, Cr at 4p from their pointers (e.g. Y, Cb, Cr pointing at
 * words 1, 0, 2 of a Cb Y Cr Y frame), each row starting where the previous
 * row's last pair ended; is422 is not read.
 *
 * Pixels are converted in pairs sharing one Cb, Cr sample (no interpolation);
 * an odd width still writes and reads its last whole pair: one pixel past the
 * width in each destination row, one Y sample past it in each source row.
 *
 * Samples: 10-bit samples are taken from bits 0-9 of their words and 12-bit
 * ones from bits 0-11 (higher bits are ignored); 16-bit samples are shifted
 * right by 8. With Cb' = Cb - midpoint, Cr' = Cr - midpoint and
 * L = (Y - offset) * gain: R = (L + CrR * Cr') / div, G = (L - CrG * Cr' -
 * CbG * Cb') / div, B = (L + CbB * Cb') / div, 64-bit sums, each division
 * truncating toward zero, each result clamped to 0..255 (8 bits a channel) or
 * 0..65535 (16 bits a channel; negative sums give 0). Matrices 1 to 7 have rows
 * of their own, every other value the BT.601 full-range row.
 *
 *   member               midpoint  offset     gains (matrix 0)          div
 *   cycbcr_10ToRGBInt    512       16 or 0    x10000: 11640 15960 8129  40000
 *                                             3920 20170
 *   cycbcr_10ToRGBInt16  512       64 or 0    x10240: 11919 16343 8325  160
 *   cycbcr_10ToRGBInt10                                 4014 20654
 *   cycbcr_12ToRGB       2048      256 or 0   x10240 as above           640
 *   cycbcr_12ToRGBInt16  2048      256 or 0   x10240 as above           640
 *   cycbcr_16ToRGB8      128       16 or 0    x10000 as the first row   10000
 *   planar10ToRGBInt     512       64 or 0    x2500: 2910 3990 2032     10000
 *                                             980 5042
 *
 * cycbcr_10ToRGBInt takes the 8-bit luma offset from the raw 10-bit sample: 10-bit
 * black (64) gives (48 * 11640) / 40000 = 13 with matrix 0, not 0 (kept: the
 * pictures of existing callers depend on it). cycbcr_12ToRGBInt16 is
 * cycbcr_12ToRGB under a second name: / 640 is the step from 12-bit sums on the
 * x10240 scale to 16 bits a channel.
 *
 * Output and results (the height is not checked: height 0 writes nothing and
 * still returns the count):
 *   - 8 bits a channel (cycbcr_10ToRGBInt, cycbcr_16ToRGB8, planar10ToRGBInt):
 *     depth 15, 16, 24 or 32 bits a pixel in the layout of rgbType, alpha 255,
 *     15- and 16-bit words keeping the top bits of each channel; returns
 *     width * height * (2, 2, 3 or 4); any other depth writes nothing and
 *     returns width * height * 4.
 *   - 16 bits a channel (cycbcr_10ToRGBInt16, cycbcr_12ToRGB,
 *     cycbcr_12ToRGBInt16): depth 24 or 48 writes three words a pixel in the
 *     layout's order, 32 or 64 four with alpha 65535; returns width * height *
 *     (6 or 8); any other depth writes nothing and returns width * height * 8.
 *   - cycbcr_10ToRGBInt10: one little-endian 32-bit word a pixel whatever the
 *     depth and layout (the bottom-up flag still turns the rows), from the
 *     16-bit-scale results R, G, B: ((R & ~3) << 14) | (R & 3) |
 *     ((B << 28) & 0x30000000) | (B >> 2) | ((G * 4) & 12) | ((G >> 2) << 8),
 *     in 32-bit arithmetic; returns width * height * 4.
 *
 * planar10ToRGBInt(dst, src, width, height, dstPitch, srcPitch, matrix,
 * rgbType, depth) reads one 10-bit planar 4:2:2 frame: the Y plane at src;
 * the Cb plane P = srcPitch * height bytes on and the Cr plane P / 2 after it
 * (32-bit products); within each plane rows are read one after another as
 * above, every row its own chroma row.
 *
 * None of them chooses a processor level; at level 5 on an AVX2 processor the
 * planar layouts run exact vector rows (the same bytes as every other level).
 *
 * Buffer sizes, with pairs = ceil(width / 2) and nothing when width, height or
 * the depth gives nothing to write: dst (height - 1) * dstPitch + 2 * pairs *
 * bytes a pixel; planar: Y (height - 1) * 2 * width + 4 * pairs, Cb and Cr
 * 2 * (last + pairs) with last = ((height - 1) * width) / 2 (4:2:2) or
 * (((height - 1) / 2) * width) / 2 (4:2:0); packed: Y (height - 1) * 8 * pairs
 * + 8 * pairs - 2, Cb and Cr (height - 1) * 8 * pairs + 8 * pairs - 6;
 * planar10ToRGBInt's src the larger of its Y plane's end and P + P / 2 +
 * 2 * (((height - 1) * width) / 2 + pairs). cycbcr_converter_pointer_sizes() answers these by name
 * (its arguments: dstPitch, srcPitch, matrix, rgbType, is422, planar, depth, chromaPitch; for
 * planar10ToRGBInt dstPitch, srcPitch, matrix, rgbType, depth). */
CYCBCR_TO_RGB_ENGINE(cycbcr_10ToRGBInt);
CYCBCR_TO_RGB_ENGINE(cycbcr_10ToRGBInt16);
CYCBCR_TO_RGB_ENGINE(cycbcr_10ToRGBInt10);
CYCBCR_TO_RGB_ENGINE(cycbcr_12ToRGB);
CYCBCR_TO_RGB_ENGINE(cycbcr_12ToRGBInt16);
CYCBCR_TO_RGB_ENGINE(cycbcr_16ToRGB8);
CYCBCR_API unsigned int planar10ToRGBInt(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int depth);

/* ------------------------------------------------------------------------ */
/* RGB to 8-bit YCbCr                                                        */
/* ------------------------------------------------------------------------ */

/* The converters from RGB take the converter arguments, then the colour matrix
 * (0 to 10 have rows of their own here; every other value BT.601) and the RGB
 * layout, and return a 64-bit count:
 *
 *     uint64_t cycbcr_<rgb>_to_<dst>(uint8_t* dst, const uint8_t* src,
 *         unsigned int width, unsigned int height, unsigned int dstPitch,
 *         unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType);
 *
 * <rgb> is RGB24 or RGB32, <dst> uyvy, yuy2, yvyu, cyuv, i420, yv12 or p422;
 * RGB64 has uyvy (a ninth argument, bitsPerPixel 48 or 64) and p422 (bits per
 * pixel (srcPitch / width) * 8, so 48 or 64 by the pitch; width 0 converts
 * nothing). Each chooses a processor level when none is chosen and hands the
 * frame to FromRGB: packed outputs with Y at dst (+1 for uyvy), Cb and Cr bytes
 * every 4 bytes, chroma pitch dstPitch / 2; planar outputs with P = dstPitch *
 * height (64-bit product): Cb at dst + P and Cr at dst + P + P/4 (i420; yv12
 * the other way round) or dst + P + P/2 (p422), chroma rows dstPitch / 2 apart.
 * cyuv: the uyvy conversion, then the whole frame turned over in place with
 * cycbcr_invert(dst, dstPitch, height); returns the uyvy result.
 *
 * Source pixels, by the bits per pixel and the layout number of rgbType (bit
 * 15, the bottom-up flag, makes source row 0 the last row in memory):
 *   32: layout 0 B G R A, 1 A B G R, 2 R G B A, 3 A R G B, others as 0;
 *   24 (and any count other than 32, 48, 64): layouts 2, 3 R G B, others B G R;
 *   48/64: 16-bit little-endian words, layouts as 32-bit (others as 0), and
 *       only each word's high byte is read (16-bit input truncated to 8 bits).
 * Alpha is never read. Only whole pixel pairs are converted: an odd last pixel
 * is neither read nor written, and a width below 2 writes nothing.
 *
 * The scalar engine FromRGBInt: sums of the forward table in millionths (64-bit);
 *   Y = sum / 1e6, +1 when the remainder exceeds 500000, + the matrix's offset,
 *   at most 255; chroma from the even pixel of each pair (no averaging): Cb =
 *   sum / 1e6 truncated, +1 when the remainder > 450000 (sum >= 0) or -1 when
 *   it is < -250000 (sum < 0), + 128, clamped to 0..255; Cr the same with
 *   +-500000. Packed rows are written at the destination pitch; planar rows at
 *   the Y pitch and the chroma pitch, where the odd pixel's Y is truncated
 *   without the rounding step. 4:2:0 chroma row c comes from frame row 2c (c
 *   even) or 2c + 1 (c odd): rows 0, 3, 4, 7, 8, ...; rows 1 and 2 mod 4 write
 *   no chroma. Chroma is written only when the Cb pointer is not NULL.
 * The AVX2 engine FromRGBInt_avx2 (32-bit sources to 4:2:2 only; anything else
 *   goes to FromRGBInt unchanged): coefficients in 14-bit fixed point (matrix 1
 *   to 9 from the table, every other value, 10 included, a BT.601 set of its
 *   own), eight pixels at a time, each sum + 8192 shifted right by 14 and
 *   saturated, the pair's chroma the rounded-up average (a + b + 1) >> 1 of
 *   its two pixels; the pairs after the last whole group of eight by the
 *   packed rule above with the 14-bit set rescaled to millionths and no
 *   rounding step. Its bytes differ from FromRGBInt's by design.
 * FromRGB: FromRGB_avx2 (which is FromRGBInt_avx2) at level 5 on an AVX2
 *   processor, else FromRGBInt. FromRGBInt itself runs exact AVX2 row kernels
 *   at level 5 (same bytes as at level 0).
 * Every engine returns width * height * 2 for 4:2:2, otherwise width * height +
 * ((width * height / 2) with bit 0 cleared), also when nothing is written.
 *
 * cycbcr_RGB32_to_uyvy at level 5 on an AVX2 processor is
 * cycbcr_RGB32_to_uyvy_avx2 (FromRGB's route). At every other level, matrices
 * 0 and 5 with layout 0 or 2 take the image-library path: 16-bit fixed point
 * (BT.601, or for matrix 5 studio BT.709 with results clamped to 1..254), the
 * pair's chroma the rounded average of both pixels, width / 2 pairs per row at
 * the pitches; for layout 2 the R and B bytes of every source pixel are swapped
 * IN PLACE IN THE CALLER'S SOURCE BUFFER first and stay swapped; the
 * bottom-up flag turns the written frame over afterwards. That path returns
 * width * dstPitch. Buffer sizes by converter name:
 * cycbcr_converter_buffer_sizes(). */
typedef uint64_t (*cycbcr_from_rgb_converter)(uint8_t* dst, const uint8_t* src, unsigned int width,
                                              unsigned int height, unsigned int dstPitch,
                                              unsigned int srcPitch, QBYCBCRMatrix matrix,
                                              QBYCBCRRgbType rgbType);
#define CYCBCR_FROM_RGB_CONVERTER(name)                                                         \
    CYCBCR_API uint64_t name(uint8_t* dst, const uint8_t* src, unsigned int width,              \
                             unsigned int height, unsigned int dstPitch, unsigned int srcPitch, \
                             QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType)
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_uyvy);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_yuy2);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_yvyu);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_cyuv);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_i420);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_yv12);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_p422);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_uyvy);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_uyvy_avx2);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_yuy2);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_yvyu);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_cyuv);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_i420);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_yv12);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_p422);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB64_to_p422);
CYCBCR_API uint64_t cycbcr_RGB64_to_uyvy(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int bitsPerPixel);

/* The converter cycbcr_transcode calls for RGB (code 0) to dstFourCC, or NULL. */
CYCBCR_API cycbcr_from_rgb_converter cycbcr_from_rgb_pair_converter(unsigned int dstFourCC);

/* 32-bit RGB to three planes, FromRGB with the planar flag and 32 bits per
 * pixel; does not choose a processor level itself (an unset level is not 5,
 * so FromRGBInt runs). */
CYCBCR_API uint64_t cycbcr_RGB32_to_planar(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                           unsigned int width, unsigned int height,
                                           unsigned int yPitch, unsigned int chromaPitch, int is422,
                                           unsigned int srcPitch, QBYCBCRMatrix matrix,
                                           QBYCBCRRgbType rgbType);

/* Float RGB (four 32-bit floats a pixel, srcPitch in bytes) to UYVY. Channel
 * order by layout 0 to 3 as for 32-bit pixels; any other layout reads R, G, B
 * from floats 0, 1, 2. Each channel: 0 at or below 0 (and for a NaN), 255 at
 * or above 1.0, else truncate(v * 256). Per pixel Y, Cb, Cr =
 * truncate(weights . RGB + offset (Y) or 128 + 0.5) in single precision with
 * the forward table (1 to 10, else BT.601), clamped to 0..255; each pair
 * written as (Cb0 + Cb1 + 1) >> 1, Y0, (Cr0 + Cr1 + 1) >> 1, Y1, width / 2
 * pairs per row. Returns 0 (and writes nothing) for a NULL pointer, width
 * below 2 or height 0, else height * width * 2. */
CYCBCR_API uint64_t cycbcr_RGB32F_to_uyvy(uint8_t* dst, const void* src, unsigned int width,
                                          unsigned int height, unsigned int dstPitch,
                                          unsigned int srcPitch, QBYCBCRMatrix matrix,
                                          QBYCBCRRgbType rgbType);

/* The alpha plane that goes with a UYVY frame: byte 3 of each 4-byte source
 * pixel, or with bit 0 of `options` A * 219 / 255 + 16 (16..235). The plane is
 * tightly packed (rows width bytes apart whatever dstPitch says: width * height
 * bytes). The bottom-up flag of rgbType reads the source from the bottom.
 * Returns width * height. */
CYCBCR_API uint64_t cycbcr_RGB32_to_uyvy_Alpha(uint8_t* dst, const uint8_t* src, unsigned int width,
                                               unsigned int height, unsigned int dstPitch,
                                               unsigned int srcPitch, uint8_t options,
                                               QBYCBCRRgbType rgbType);

/* The engines: y, cb, cr the first Y, Cb and Cr byte (packed: of row 0, every
 * 2 (Y) or 4 bytes apart; planar: the planes), dstPitch the packed or Y pitch,
 * is422 and planar the layout flags, bitsPerPixel 24, 32, 48 or 64, chromaPitch
 * the chroma planes' pitch (planar only). See above for each. */
#define CYCBCR_FROM_RGB_ENGINE(name)                                                              \
    CYCBCR_API uint64_t name(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,            \
                             unsigned int width, unsigned int height, unsigned int dstPitch,      \
                             unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType, \
                             int is422, int planar, unsigned int bitsPerPixel,                    \
                             unsigned int chromaPitch)
CYCBCR_FROM_RGB_ENGINE(FromRGB);
CYCBCR_FROM_RGB_ENGINE(FromRGB_avx2);
CYCBCR_FROM_RGB_ENGINE(FromRGBInt);
CYCBCR_FROM_RGB_ENGINE(FromRGBInt_avx2);

/* ------------------------------------------------------------------------ */
/* RGB to v210                                                               */
/* ------------------------------------------------------------------------ */

/* RGB frames to 10-bit packed 4:2:2 v210 ("012v"): each group of six pixels is
 * four little-endian words of three 10-bit samples, Cb0 Y0 Cr0 / Y1 Cb2 Y2 /
 * Cr2 Y3 Cb4 / Y4 Cr4 Y5, bits 30-31 zero. Destination rows are dstPitch apart
 * (not widened to the natural v210 row); the sources and the bottom-up flag of
 * rgbType are those of the RGB to 8-bit YCbCr converters above.
 *
 * Weights by matrix (1 to 9 have rows of their own; 10 and every other value
 * the BT.601 default row): for 8-bit RGB the forward table x 40,000, truncated
 * (default Cr weight of B -2839), luma offset 64 where the forward table has
 * 16 (and in the default row), else 0; for 16-bit RGB x 10,000, truncated
 * (default -709); for 10-bit RGB the forward table in millionths.
 *
 * The filtered engine v210FromRGB, per row:
 *   per pixel Y = (weights . RGB) / 10000 truncated toward zero + offset, at
 *   most 1023; Cb, Cr = (weights . RGB) / 10000 truncated + 512, clamped to
 *   0..1023 (no rounding step anywhere);
 *   the chroma of pair k = (C(2k-1) + 2 C(2k) + 2 C(2k+1) + C(2k+2)) / 6 over
 *   the clamped per-pixel values, C(-1) = 512 at the left edge; the last whole
 *   group's last pair takes its own last pixel as right neighbour (C(2k+2)
 *   replaced by C(2k+1)) even when a partial group follows;
 *   width / 6 whole groups of 16 bytes; then, when width % 6 is 2 or more, one
 *   more pair only, in two words: (C(-1) + 2 C(0) + 2 C(1)) / 5 for Cb and Cr
 *   (C(-1) the previous group's last pixel, or 512), Y0 and Cr in the first
 *   word, Y1 alone in the low field of the second. Pixels 3 to 5 of a partial
 *   group, and a lone pixel, are neither read nor written: each row writes
 *   (width / 6) * 16 bytes, plus 8 when width % 6 >= 2.
 * v210FromRGBNoFilter: the 8-bit weights with luma offset 16 (not 64) where
 *   the filtered engine has 64; chroma of pixels 0, 2, 4 of each group, no
 *   filter; (width + 5) / 6 groups, the last one written to its second word
 *   when it ends at pixel 0 or 1, its third at pixel 2 or 3, whole beyond.
 *   Fields of pixels past the width are 0 and those pixels are never read.
 * v210FromRGB: at level 5 on an AVX2 processor v210FromRGB_avx2, else its own
 *   plain rows. v210FromRGB_avx2 converts 24- and 32-bit pixels with AVX2 (the
 *   same bytes as the plain rows) and every other count through v210FromRGB's
 *   plain rows (never back to v210FromRGB). bitsPerPixel: 32 reads 4-byte
 *   pixels, every other value 3-byte pixels.
 * All three return height * dstPitch (64-bit), also for height 0. */
#define CYCBCR_TO_V210_ENGINE(name)                                                             \
    CYCBCR_API uint64_t name(uint8_t* dst, const uint8_t* src, unsigned int width,              \
                             unsigned int height, unsigned int dstPitch, unsigned int srcPitch, \
                             QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,                      \
                             unsigned int bitsPerPixel)
CYCBCR_TO_V210_ENGINE(v210FromRGB);
CYCBCR_TO_V210_ENGINE(v210FromRGBNoFilter);
CYCBCR_TO_V210_ENGINE(v210FromRGB_avx2);

/* 24- and 32-bit RGB to v210: choose a processor level when none is chosen,
 * then v210FromRGB with 24 or 32 bits per pixel. cycbcr_transcode takes
 * cycbcr_RGB32_to_012v for RGB (code 0) to "v210"/"012v". Destination:
 * (height - 1) * dstPitch + (width / 6) * 16 (+ 8 when width % 6 >= 2) bytes. */
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB24_to_012v);
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB32_to_012v);

/* 16-bit RGB (little-endian words, the whole word in the sums) to v210 as
 * v210FromRGB, with bitsPerPixel 32 or 64 for 4-word pixels (R, G, B at words
 * 2, 1, 0 for layout 0 and unknown layouts, 3, 2, 1 for 1, 0, 1, 2 for 2, 1,
 * 2, 3 for 3), any other value 3-word pixels (0, 1, 2 for layouts 2 and 3,
 * else 2, 1, 0). Sums over 640,000: Y one up when the remainder exceeds
 * 320,000; Cb one up past 288,000 (sums >= 0) or one down below -160,000
 * (negative sums); Cr +-320,000. Source row offsets are rounded down to even.
 * Chooses a level when none is chosen; returns height * dstPitch. At level 5
 * on an AVX2 processor the filter and the packing run vector rows (the same
 * bytes), here and in cycbcr_RGB10_to_012v. */
CYCBCR_API uint64_t cycbcr_RGB64_to_012v(uint8_t* dst, const uint8_t* src, unsigned int width,
                                         unsigned int height, unsigned int dstPitch,
                                         unsigned int srcPitch, QBYCBCRMatrix matrix,
                                         QBYCBCRRgbType rgbType, unsigned int bitsPerPixel);

/* 10-bit RGB (one little-endian 32-bit word a pixel: G in bits 12-21; R in
 * bits 22-31 and B in bits 2-11 for layouts 2 and 3, the other way round for
 * every other layout; bits 0-1 unused) to v210 as v210FromRGB, in millionths:
 * Y one up when the remainder exceeds 500,000, Cb past 450,000 or below
 * -250,000, Cr +-500,000, then the offset or 512 and the 0..1023 limits.
 * Source row offsets are rounded down to a multiple of 4. Chooses a level when
 * none is chosen; returns height * dstPitch. */
CYCBCR_FROM_RGB_CONVERTER(cycbcr_RGB10_to_012v);

/* The 10-bit key that goes with a v210 frame: byte 3 of each 4-byte source
 * pixel, A * 4, or with bit 0 of `options` A * 876 / 255 + 64 (64..940); three
 * keys a 32-bit word (bits 0-9, 10-19, 20-29), the fields of a short last word
 * 0. Row r is written at byte (r * width * 4) / 3 of dst whatever dstPitch
 * says ((width + 2) / 3 words a row, so rows of a width that is not a multiple
 * of 3 overlap, later rows over earlier). Returns height * width * 4 / 3. */
CYCBCR_API uint64_t cycbcr_RGB32_to_012v_Alpha(uint8_t* dst, const uint8_t* src, unsigned int width,
                                               unsigned int height, unsigned int dstPitch,
                                               unsigned int srcPitch, uint8_t options,
                                               QBYCBCRRgbType rgbType);

/* ------------------------------------------------------------------------ */
/* RGB to high-bit-depth planar YCbCr                                        */
/* ------------------------------------------------------------------------ */

/* RGB frames into three planes of little-endian 16-bit samples (Y, Cb, Cr;
 * plane pointers typed void* so that byte and 16-bit buffers both pass; all
 * pitches in bytes). The sources are those of the RGB to 8-bit YCbCr and RGB to
 * v210 converters above:
 *   8-bit RGB (cycbcr_RGB32_to_yuv444p10): bitsPerPixel 32 reads 4-byte pixels
 *   (R, G, B at bytes 2, 1, 0 for layout 0 and unknown layouts, 3, 2, 1 for 1,
 *   0, 1, 2 for 2, 1, 2, 3 for 3), every other value 3-byte pixels (0, 1, 2 for
 *   layouts 2 and 3, else 2, 1, 0);
 *   16-bit RGB (little-endian words): bitsPerPixel 32 or 64 reads 4-word pixels,
 *   every other value 3-word pixels, R, G, B at words 2, 1, 0 for layout 0 and
 *   unknown layouts, 3, 2, 1 for 1, 0, 1, 2 for 2, 1, 2, 3 for 3 in both sizes
 *   (so a 3-word pixel of layout 1 or 3 takes one channel from the next
 *   pixel's first word, and the row's last pixel reads one word past itself);
 *   source row offsets rounded down to even;
 *   10-bit RGB: one 32-bit word a pixel as cycbcr_RGB10_to_012v reads it, row
 *   offsets rounded down to a multiple of 4.
 * The bottom-up flag (0x8000) of rgbType reads source row height - 1 - r for
 * destination row r; the planes are always written top-down.
 *
 * Weights (rows 1 to 9 of the forward table at each converter's scale; matrix
 * 10 and every other value the BT.601 default row), luma offset where the
 * forward table has 16 (and in the default row), else 0:
 *   cycbcr_RGB32_to_yuv444p10: the 8-bit v210 weights (x 40,000), sums over
 *     10,000; offset 64, centre 512, limit 1023;
 *   cycbcr_RGB64_to_yuv444p10: the same weights, each word >> 6 first, sums
 *     over 40,000; offset 64, centre 512, limit 1023;
 *   cycbcr_RGB64_to_yuv422p12: weights x 160,000 (matrix 1: Y 47841, 93920,
 *     18237; Cb -27612, -54213, 81826; Cr 81826, -68520, -13305; ... default:
 *     41120, 80640, 15680; -23680, -46560, 70240; 70240, -58880, -11359),
 *     each word >> 6 first (10 of the 16 bits kept), sums over 40,000; offset
 *     256, centre 2048, limit 4095;
 *   cycbcr_RGB64_to_YCbCrPlanar16: the 16-bit v210 weights (x 10,000) on whole
 *     words, sums over 10,000 rounded (Y one up when the remainder exceeds
 *     5,000; Cb one up past 4,500 for sums >= 0, one down below -2,500 for
 *     negative sums; Cr +-5,000); offset 64 (added to 16-bit luma as it
 *     stands), centre 32768, limit 65535;
 *   cycbcr_RGB10_to_YCbCrPlanar16: the forward table in millionths, sums over
 *     1,000,000 rounded (Y past 500,000; Cb past 450,000 or below -250,000; Cr
 *     +-500,000); offset 64, centre 512, limit 1023.
 * Integer quotients go toward zero; Y + offset is limited to at most the limit
 * (the luma sums are never negative); Cb, Cr + centre are clamped to 0..limit.
 *
 * Planes and chroma:
 *   yuv444p10 (both): every pixel its own Cb and Cr; Y rows yPitch apart,
 *     chroma rows chromaPitch apart; width samples a row in each plane.
 *   yuv422p12: sample k of a chroma row is (C(2k) + C(2k + 1)) >> 1 of the
 *     two clamped per-pixel values; an odd width's last pixel keeps its own
 *     value; (width + 1) / 2 chroma samples a row, chromaPitch apart.
 *   YCbCrPlanar16 and RGB10: chroma rows yPitch / 2 apart. Whole blocks of six
 *     pixels take the pair average above. A partial block of two or more
 *     pixels (width % 6 >= 2) is converted as the v210 engines convert theirs:
 *     its first pair alone, chroma (C(-1) + 2 C(0) + 2 C(1)) / 5 with C(-1)
 *     the previous block's last pixel, or the neutral value at the row start
 *     (32768 for 16-bit output; 512 for the RGB10 converter, whose chroma is
 *     10-bit); its other pixels, and a lone pixel (width % 6 == 1), are neither
 *     read nor written. The pair average is the only treatment of whole blocks
 *     (no right neighbour is taken). Each row writes (width / 6) * 6 samples of
 *     Y, plus 2 when width % 6 >= 2, and half as many of Cb and of Cr.
 *   RGB10 with outputDepth 10 stores every sample << 6 (the 10-bit value,
 *     averages and the / 5 rule taken first, in the top bits of its word); any
 *     other outputDepth stores the plain 10-bit values.
 *
 * Results (unsigned, the family's own formulas): yuv444p10 and yuv422p12
 * height * (chromaPitch + 2 * yPitch); YCbCrPlanar16 and RGB10 height *
 * yPitch; the float variant height * dstPitch. Also for height 0 or width 0,
 * when nothing is touched.
 *
 * cycbcr_RGB32_to_yuv444p10 chooses a processor level when none is chosen; the
 * others only read it. Each is one plain engine; at level 5 on an AVX2
 * processor the 4-word-pixel rows of cycbcr_RGB64_to_yuv444p10 and
 * cycbcr_RGB64_to_yuv422p12 run AVX2 row kernels that give the same bytes;
 * every other path is plain at every level.
 *
 * Buffer sizes per pointer (Y, Cb, Cr, source): cycbcr_converter_pointer_sizes
 * with the unsigned arguments after the height in order (pitches, matrix,
 * rgbType, bitsPerPixel or outputDepth). */
CYCBCR_API unsigned int cycbcr_RGB32_to_yuv444p10(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel);
CYCBCR_API unsigned int cycbcr_RGB64_to_yuv444p10(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel);
CYCBCR_API unsigned int cycbcr_RGB64_to_yuv422p12(void* y, void* cb, void* cr, const void* src,
                                                  unsigned int width, unsigned int height,
                                                  unsigned int yPitch, unsigned int chromaPitch,
                                                  unsigned int srcPitch, QBYCBCRMatrix matrix,
                                                  QBYCBCRRgbType rgbType,
                                                  unsigned int bitsPerPixel);
CYCBCR_API unsigned int cycbcr_RGB64_to_YCbCrPlanar16(void* y, void* cb, void* cr, const void* src,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int yPitch, unsigned int srcPitch,
                                                      QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
                                                      unsigned int bitsPerPixel);
CYCBCR_API unsigned int cycbcr_RGB10_to_YCbCrPlanar16(void* y, void* cb, void* cr, const void* src,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int yPitch, unsigned int srcPitch,
                                                      QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
                                                      unsigned int outputDepth);

/* 16-bit RGB to 10-bit 4:4:4 in double precision from the forward table as
 * single floats (rows 1 to 9, else 0.257, 0.504, 0.098, offset 64; -0.148,
 * -0.291, 0.439; 0.439, -0.368, -0.071), each word / 65535.0. Luma: L = the
 * weighted sum; 0 below 0, 1023 above 1.0, else (L * 1023 + 0.5) truncated;
 * then the offset 0 or 64 (so up to 1087). Chroma: K = the weighted sum; 0
 * below -0.5, 1024 above 0.5, else (K * 1023 + 0.5) truncated + 512 for K > 0
 * and (K * 1023 - 0.5) truncated + 512 for K <= 0: the studio-range weights
 * scaled by 1023 about 512, as callers of this variant have always had it (its
 * luma alone is right). All three planes share dstPitch. Returns height *
 * dstPitch. */
CYCBCR_API unsigned int cycbcr_RGB64_to_yuv444p10_float_BAD_ONLY_LUMA_WORKS(
    void* y, void* cb, void* cr, const void* src, unsigned int width, unsigned int height,
    unsigned int dstPitch, unsigned int srcPitch, QBYCBCRMatrix matrix, QBYCBCRRgbType rgbType,
    unsigned int bitsPerPixel);

/* ------------------------------------------------------------------------ */
/* Semi-planar 4:2:0: NV12, NV10 and NV12p16                                 */
/* ------------------------------------------------------------------------ */

/* Two planes: Y, then one plane of interleaved Cb, Cr pairs with one chroma row
 * for every two Y rows. NV12 has 8-bit samples; NV10 10-bit values in bits 0-9
 * of 16-bit little-endian words (bits 10-15 ignored on reading); NV12p16 full
 * 16-bit samples. These formats have no FourCC at the dispatcher: call the
 * converters by name. The plain names take the AVX2 forms at level 5 on an AVX2
 * processor (choosing a level first when none is chosen); the AVX2 forms give
 * the same bytes, touch the same bytes, and need a processor with AVX2.
 *
 * NV12 and NV10 sources: pitch P = max(width, srcPitch) (NV10: max(2 * width,
 * srcPitch)) for both planes, the chroma plane at P * height. Output row r
 * takes Y row r and chroma row r / 2, unfiltered, so a source of height h
 * holds (h + 1) / 2 chroma rows.
 *
 * Into v210: 8-bit samples widened by << 2, NV10 samples masked to 10 bits;
 * rows at max(v210_row_bytes(width), dstPitch) of ceil(width / 6) whole groups,
 * the last group built from the source samples that follow the row's last
 * pixel (so each source row is read for ceil(width / 6) * 6 pixels). Returns
 * height * v210_row_bytes(width); a width of 0 writes nothing and returns 0. */
CYCBCR_CONVERTER(cycbcr_NV12_to_v210_pitched);
CYCBCR_CONVERTER(cycbcr_NV10_to_v210_pitched);
/* Same bytes at level 5; the NV12 form is the 8-bit planar packer with a chroma
 * step of 2. */
CYCBCR_CONVERTER(cycbcr_NV12_to_v210_avx2);
CYCBCR_CONVERTER(cycbcr_NV10_to_v210_avx2);

/* Into UYVY: bytes copied as Cb Y0 Cr Y1, width / 2 pixel pairs a row at
 * max(2 * width, dstPitch). An odd width's last pixel has no pair and is left
 * unwritten, so no row reaches past 2 * width bytes. Returns that pitch times
 * the height. */
CYCBCR_CONVERTER(cycbcr_NV12_to_uyvy_pitched);
CYCBCR_CONVERTER(cycbcr_NV12_to_uyvy_avx2);

/* Three planes of 16-bit little-endian words (10- or 12-bit values in the low
 * bits, or 16-bit) into NV12p16: each sample shifted left by 6, 4 or 0 and kept
 * to 16 bits (so 1023 becomes 0xFFC0 and 4095 0xFFF0; bits above a sample's
 * depth fall out of the word). Source Y rows srcPitch bytes apart, Cb and Cr
 * rows srcPitch / 2 apart. Destination pitch D = max(2 * width, dstPitch): Y
 * rows of width samples, then at D * height the chroma plane of height / 2 rows
 * of width / 2 Cb, Cr pairs, source chroma rows one to one. An odd height's last
 * Y row has no chroma row (source chroma row height / 2 is not read) and an odd
 * width's last pixel no chroma pair, so nothing is written past
 * D * (height + height / 2), the count returned. Buffer sizes per pointer:
 * cycbcr_converter_pointer_sizes(). */
CYCBCR_API unsigned int cycbcr_yuv420p10_to_NV12p16(uint8_t* dst, const uint8_t* srcY,
                                                    const uint8_t* srcCb, const uint8_t* srcCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p12_to_NV12p16(uint8_t* dst, const uint8_t* srcY,
                                                    const uint8_t* srcCb, const uint8_t* srcCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_yuv420p16_to_NV12p16(uint8_t* dst, const uint8_t* srcY,
                                                    const uint8_t* srcCb, const uint8_t* srcCr,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_420p10_to_NV12p16_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_420p12_to_NV12p16_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);
CYCBCR_API unsigned int cycbcr_420p16_to_NV12p16_avx2(uint8_t* dst, const uint8_t* srcY,
                                                      const uint8_t* srcCb, const uint8_t* srcCr,
                                                      unsigned int width, unsigned int height,
                                                      unsigned int dstPitch, unsigned int srcPitch);

/* ------------------------------------------------------------------------ */
/* Reduced-size planar frames                                                 */
/* ------------------------------------------------------------------------ */

/* 8-bit Y, Cb and Cr planes reduced from a UYVY or v210 frame in one pass. All
 * four take (Y plane, Cb plane, Cr plane, source, width, height, dstPitch,
 * srcPitch, scale, is422); the scale is a percentage compared in its low 16
 * bits, and is422 != 0 asks for a chroma row on every output row (4:2:2), 0 for
 * one on even output rows only (4:2:0), chroma rows carrying one Cb and one Cr
 * per two output pixels. Every path that converts chooses the processor level
 * if none is chosen; at level 5 with AVX2 the reductions by 1.5, 2 and 4 run
 * AVX2 row kernels giving the same bytes.
 *
 * cycbcr_uyvy_scale_planar: scale 100 is cycbcr_toplanar(src + 1, src, src + 2,
 *   Y, Cb, Cr, width, height, dstPitch, srcPitch, is422) and returns its count;
 *   150 is cycbcr_uyvy_scale_planar_1_5; any other scale returns 0 and writes
 *   nothing.
 * cycbcr_012v_scale_planar: scale 100 is Fromv210(Y, Cb, Cr, src, width, height,
 *   dstPitch, srcPitch, is422, 1) and returns its count; 150 is
 *   cycbcr_012v_scale_planar_1_5; every other scale the reduction by a step.
 *
 * Reduction by 1.5 (the _1_5 names; scale and dstPitch not used): output
 * W = 2 * width / 3 by H = 2 * height / 3. Returns W * H + (W * H) / 2 whatever
 * is422 says; with 2 * height < 3 it returns at once. Output row j is read from
 * source row (3j / 2) with its low bit cleared (0, 0, 2, 4, 6, 6, 8, ...). Each
 * six source pixels give four luma: Y0 with Y1, Y2, Y3 with Y4, Y5, and two of
 * each chroma: those of pixels 0 and 4. UYVY averages (a + b) >> 1; v210
 * averages two 10-bit samples as (a + b) >> 3 and keeps single samples' top 8
 * bits. Rows are written in whole groups, ceil(W / 4) a row (up to three pixels
 * past W) and packed with no padding: Y rows 4 * ceil(W / 4) bytes, chroma rows
 * 2 * ceil(W / 4) bytes, H (4:2:2) or ceil(H / 2) (4:2:0) chroma rows. Source
 * rows: UYVY max(2 * width, srcPitch) apart, v210 max(v210_row_bytes(width),
 * srcPitch) apart; each row reads ceil(W / 4) whole groups of six pixels (12
 * UYVY bytes or 16 v210 bytes), up to 6 * ceil(W / 4) pixels.
 *
 * Reduction by a step (cycbcr_012v_scale_planar, scales other than 100 and
 * 150; dstPitch not used): step k = 2 for scale 200, 3 for 300, 4 for 400 and 1
 * for every other scale. Output W = ceil(width / k) by H = ceil(height / k);
 * output row j is source row k * j, output pixel i sits on source pixel k * i.
 * On rows that carry chroma, luma i is the average (a + b) >> 3 of the two
 * 10-bit luma of the chroma pair holding source pixel k * i (pixels 2m and
 * 2m + 1, m = k * i / 2), and Cb, Cr of output pair c are the top 8 bits of the
 * chroma of source pixel 2 * k * c (the chroma under the pair's first pixel); on
 * luma-only rows luma i is the top 8 bits of source pixel k * i. So scale 400
 * writes six luma and three of each chroma per 24 source pixels on chroma rows
 * and three luma per 12 on luma-only rows; scale 200 three luma per six source
 * pixels. Rows are packed as above: each row writes 4 * ceil(W / 4) luma and
 * 2 * ceil(W / 4) of each chroma. Height 0 returns 0 and writes nothing;
 * otherwise the result is n * 2 (4:2:2) or n + n / 2 (4:2:0), with
 * n = 4 * ceil(W / 4) * H the luma bytes written. Source rows
 * max(v210_row_bytes(width), srcPitch) apart; every read lies in the row's
 * natural v210_row_bytes(width).
 *
 * Buffer sizes per pointer (Y, Cb, Cr, source; the unsigned arguments after the
 * height are dstPitch, srcPitch, scale, is422): cycbcr_converter_pointer_sizes()
 * answers all four names for every scale and level. */
CYCBCR_API unsigned int cycbcr_uyvy_scale_planar(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch, unsigned int scale,
                                                 unsigned int is422);
CYCBCR_API unsigned int cycbcr_012v_scale_planar(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch, unsigned int scale,
                                                 unsigned int is422);
CYCBCR_API unsigned int cycbcr_uyvy_scale_planar_1_5(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                     const uint8_t* src, unsigned int width,
                                                     unsigned int height, unsigned int dstPitch,
                                                     unsigned int srcPitch, unsigned int scale,
                                                     unsigned int is422);
CYCBCR_API unsigned int cycbcr_012v_scale_planar_1_5(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                     const uint8_t* src, unsigned int width,
                                                     unsigned int height, unsigned int dstPitch,
                                                     unsigned int srcPitch, unsigned int scale,
                                                     unsigned int is422);

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

// Every coefficient set of the colour conversions, one table per scale and
// arithmetic. The values were rounded or truncated one by one when the library
// was first tuned and existing output depends on each digit, so they are data,
// never recomputed from luma weights (several differ by one unit from a straight
// product of the master set: kept).
#pragma once

#include <cstdint>

#include "cycbcr.h"
#include "frame/inline.h"

namespace cycbcr::colour {

// A YCbCr -> RGB row: L = (Y - yOffset) * yGain; R = L + crToR * Cr';
// G = L - crToG * Cr' - cbToG * Cb'; B = L + cbToB * Cb' (chroma gains are
// magnitudes, the signs are those of the rule).
template <class T>
struct ToRgbRow {
    T yOffset, yGain, crToR, crToG, cbToG, cbToB;
};

// A table known for matrices 1 to 7, with its default row for 0 and every other
// value.
template <class T>
struct ToRgbTable {
    ToRgbRow<T> byMatrix[7];  // matrices 1 .. 7
    ToRgbRow<T> fallback;     // 0 and any value outside 1 .. 7

    constexpr const ToRgbRow<T>& operator[](QBYCBCRMatrix m) const {
        return m >= 1 && m <= 7 ? byMatrix[m - 1] : fallback;
    }
};

// clang-format off

// The master set, from which every scaled family below was derived; the float
// converters and get_coeffs use it as it stands.
inline constexpr ToRgbTable<double> kMaster = {{
    {0,  1.0,   1.371,    0.698,    0.336,    1.732},
    {16, 1.164, 1.793,    0.534,    0.213,    2.115},
    {0,  1.0,   1.54,     0.459,    0.183,    1.816},
    {16, 1.164, 1.793,    0.534,    0.213,    2.115},
    {0,  1.0,   1.54,     0.459,    0.183,    1.816},
    {16, 1.164, 1.678675, 0.650425, 0.187324, 2.141773},
    {0,  1.0,   1.4747,   0.5714,   0.1646,   1.8814},
}, {16, 1.164, 1.596, 0.813, 0.392, 2.017}};

// Family A, x 10000: 8-bit samples to 8-bit RGB. 64-bit sums, each channel
// divided by 10000 truncating toward zero, no rounding constant. The default
// Cr-to-G 8129 and matrix 7's Cr-to-R 14746 are the library's own values.
inline constexpr ToRgbTable<int32_t> kFamilyA = {{
    {0,  10000, 13710, 6979, 3360, 17320},
    {16, 11640, 17930, 5340, 2130, 21150},
    {0,  10000, 15400, 4590, 1830, 18160},
    {16, 11640, 17930, 5340, 2130, 21150},
    {0,  10000, 15400, 4590, 1830, 18160},
    {16, 11640, 16786, 6504, 1873, 21417},
    {0,  10000, 14746, 5714, 1646, 18814},
}, {16, 11640, 15960, 8129, 3920, 20170}};

// Family B, x 2500: 10-bit samples to 8-bit RGB (the master set / 4, so a 10-bit
// sample lands on the 8-bit scale); divided by 10000 truncating, chroma midpoint
// 512.
inline constexpr ToRgbTable<int32_t> kFamilyB = {{
    {0,  2500, 3427, 1744, 840, 4330},
    {64, 2910, 4482, 1335, 532, 5287},
    {0,  2500, 3850, 1147, 457, 4540},
    {64, 2910, 4482, 1335, 532, 5287},
    {0,  2500, 3850, 1147, 457, 4540},
    {64, 2910, 4196, 1626, 468, 5354},
    {0,  2500, 3686, 1428, 411, 4703},
}, {64, 2910, 3990, 2032, 980, 5042}};

// Family C, x 10240: 10- and 12-bit samples to 16-bit output (10-bit: / 160).
// The offsets are those of 10-bit input; 12-bit input uses 256 where these say
// 64 (kFamilyC12YOffset).
inline constexpr ToRgbTable<int32_t> kFamilyC = {{
    {0,  10240, 14039, 7147, 3440, 17735},
    {64, 11919, 18360, 5468, 2181, 21657},
    {0,  10240, 15769, 4700, 1873, 18595},
    {64, 11919, 18360, 5468, 2181, 21657},
    {0,  10240, 15769, 4700, 1873, 18595},
    {64, 11919, 17189, 6660, 1918, 21931},
    {0,  10240, 15100, 5851, 1685, 19265},
}, {64, 11919, 16343, 8325, 4014, 20654}};
inline constexpr int32_t kFamilyC12YOffset = 256;

// Family D, the master set x 2 563 900 (matrix 4 alone x 2 560 000): 8-bit
// samples to 16 bits a channel, 64-bit sums divided by 10000 with the uneven
// rounding of the 16-bit engines.
inline constexpr ToRgbTable<int64_t> kFamilyD = {{
    {0,  2563900, 3515106, 1789602, 861470,  4440674},
    {16, 2984379, 4597072, 1369122, 546110,  5422648},
    {0,  2563900, 3948406, 1176830, 469193,  4656042},
    {16, 2979840, 4590080, 1367040, 545280,  5414400},
    {0,  2563900, 3948406, 1176830, 469193,  4656042},
    {16, 2984379, 4303954, 1667624, 480280,  5491291},
    {0,  2563900, 3780983, 1465012, 422017,  4823721},
}, {16, 2984379, 4091984, 2084450, 1005048, 5171386}};

// Family E, the master set / 4 in double precision: v210 to 8-bit RGB in floating
// point, chroma midpoint 512.
inline constexpr ToRgbTable<double> kFamilyE = {{
    {0,  0.25,  0.34275,    0.1745,     0.084,    0.433},
    {64, 0.291, 0.44825,    0.1335,     0.05325,  0.52875},
    {0,  0.25,  0.385,      0.11475,    0.04575,  0.454},
    {64, 0.291, 0.44825,    0.1335,     0.05325,  0.52875},
    {0,  0.25,  0.385,      0.11475,    0.04575,  0.454},
    {64, 0.291, 0.41966875, 0.16260625, 0.046831, 0.53544325},
    {0,  0.25,  0.368675,   0.14285,    0.04115,  0.47035},
}, {64, 0.291, 0.399, 0.20325, 0.098, 0.50425}};

// Family F, Q13 (1/8192): indexed by the matrix value itself, row 0 BT.601 full
// range. A value above 7 takes matrix 3's row, not BT.601's: callers of the
// planar 16-bit vector path have always had it so. The Y offset term is 2048 for
// the even matrices and 0 for the odd ones.
struct Q13Row {
    int32_t yGain, crToR, crToG, cbToG, cbToB;
};
inline constexpr Q13Row kFamilyF[8] = {
    {9535, 13074, 6660, 3211, 16523},
    {8192, 11231, 5718, 2752, 14188},
    {9535, 14688, 4374, 1744, 17326},
    {8192, 12615, 3760, 1499, 14876},
    {9535, 14688, 4374, 1744, 17326},
    {8192, 12615, 3760, 1499, 14876},
    {9535, 13751, 5328, 1534, 17545},
    {8192, 12080, 4680, 1348, 15412},
};
CYCBCR_INLINE constexpr const Q13Row& family_f(QBYCBCRMatrix m) {
    return kFamilyF[m <= 7 ? m : 3];
}
CYCBCR_INLINE constexpr int32_t family_f_y_offset(QBYCBCRMatrix m) {
    return m <= 7 && m % 2 == 0 ? 2048 : 0;
}

// The Q14 record of the 8-bit AVX2 planar paths (fill_p2rgb8).
struct RGB8Mtx {
    int32_t yMul, crToR, crToG, cbToG, cbToB, yOffset, cOffset, reserved;
};
inline constexpr ToRgbTable<int32_t> kQ14 = {{
    {0,  16384, 22462, 11436, 5505, 28377},
    {16, 19071, 29377, 8749,  3490, 34652},
    {0,  16384, 25231, 7520,  2998, 29753},
    {16, 19071, 29377, 8749,  3490, 34652},
    {0,  16384, 25231, 7520,  2998, 29753},
    {16, 19071, 27503, 10657, 3069, 35091},
    {0,  16384, 24161, 9362,  2697, 30825},
}, {16, 19071, 26149, 13320, 6423, 33047}};

// RGB -> YCbCr, in millionths: the signed weight of R, G and B in Y, Cb and Cr,
// and the offset added to Y. Known for matrices 1 to 10. Rows 8 and 9 do not sum
// to unit luma gain and row 10 has chroma weights of its own: kept as callers
// know them.
struct FromRgbRow {
    int32_t yOffset;
    int32_t rToY, gToY, bToY;
    int32_t rToCb, gToCb, bToCb;
    int32_t rToCr, gToCr, bToCr;
};
struct FromRgbTable {
    FromRgbRow byMatrix[10];  // matrices 1 .. 10
    FromRgbRow fallback;      // 0 and any value outside 1 .. 10

    constexpr const FromRgbRow& operator[](QBYCBCRMatrix m) const {
        return m >= 1 && m <= 10 ? byMatrix[m - 1] : fallback;
    }
};
inline constexpr FromRgbTable FromRGBCoeffs = {{
    {0,  299011, 587006, 113983, -172577, -338837, 511414,  511414, -428253, -83160},
    {16, 183000, 614000, 62000,  -101000, -338000, 439000,  439000, -399000, -40000},
    {0,  213000, 715000, 72000,  -117000, -394000, 511000,  511000, -464000, -47000},
    {16, 182068, 612427, 61829,  -100342, -337585, 437927,  437927, -397766, -40161},
    {0,  212600, 715200, 72200,  -114572, -385428, 500000,  500000, -454153, -45847},
    {16, 225610, 582280, 50930,  -122660, -316560, 439210,  439210, -403890, -35320},
    {0,  262700, 678000, 59300,  -139630, -360370, 500000,  500000, -459790, -40210},
    {16, 222000, 631000, 496000, -270000, -768000, 1030000, 469000, -436000, -34000},
    {0,  259000, 738000, 580000, -308000, -878000, 1186000, 537000, -498000, -39000},
    {0,  299011, 587006, 113983, -200000, -200000, 400000,  560000, -460000, -100000},
}, {16, 257000, 504000, 98000, -148000, -291000, 439000, 439000, -368000, -71000}};

// clang-format on

// The master set of a matrix, for the vector paths that build their constants
// from doubles; 0 and values from 8 up give the default row.
void get_coeffs(QBYCBCRMatrix matrix, double* yGain, double* crToR, double* crToG, double* cbToG,
                double* cbToB, double* yOffset);
// The Q14 record of a matrix; cOffset is always 128.
void fill_p2rgb8(RGB8Mtx* out, QBYCBCRMatrix matrix);

}  // namespace cycbcr::colour

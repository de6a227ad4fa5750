// The colour coefficient rows the tests hold the library to, written out here
// on their own (not read from the library's tables): the master set in
// millionths, the 8-bit engines' set (x 10000) and the 16-bit engines' set.
// Unknown matrix values take the default row, BT.601.
#pragma once

#include <cstdint>

#include "cycbcr.h"

namespace cycbcr_test {

// Y offset, then Y gain, Cr to R, Cr to G, Cb to G, Cb to B.
struct Gains {
    int64_t off, gain, crR, crG, cbG, cbB;
};

inline Gains master_micro(QBYCBCRMatrix m) {
    switch (m) {
        case 1:
            return {0, 1000000, 1371000, 698000, 336000, 1732000};
        case 2:
        case 4:
            return {16, 1164000, 1793000, 534000, 213000, 2115000};
        case 3:
        case 5:
            return {0, 1000000, 1540000, 459000, 183000, 1816000};
        case 6:
            return {16, 1164000, 1678675, 650425, 187324, 2141773};
        case 7:
            return {0, 1000000, 1474700, 571400, 164600, 1881400};
        default:
            return {16, 1164000, 1596000, 813000, 392000, 2017000};
    }
}

// The default Cr to G (8129) and matrix 7's Cr to R (14746) are one below the
// straight product, as the library has always had them.
inline Gains family_a(QBYCBCRMatrix m) {
    switch (m) {
        case 1:
            return {0, 10000, 13710, 6979, 3360, 17320};
        case 2:
        case 4:
            return {16, 11640, 17930, 5340, 2130, 21150};
        case 3:
        case 5:
            return {0, 10000, 15400, 4590, 1830, 18160};
        case 6:
            return {16, 11640, 16786, 6504, 1873, 21417};
        case 7:
            return {0, 10000, 14746, 5714, 1646, 18814};
        default:
            return {16, 11640, 15960, 8129, 3920, 20170};
    }
}

// The master set x 2 563 900, matrix 4 alone x 2 560 000.
inline Gains family_d(QBYCBCRMatrix m) {
    switch (m) {
        case 1:
            return {0, 2563900, 3515106, 1789602, 861470, 4440674};
        case 2:
            return {16, 2984379, 4597072, 1369122, 546110, 5422648};
        case 3:
        case 5:
            return {0, 2563900, 3948406, 1176830, 469193, 4656042};
        case 4:
            return {16, 2979840, 4590080, 1367040, 545280, 5414400};
        case 6:
            return {16, 2984379, 4303954, 1667624, 480280, 5491291};
        case 7:
            return {0, 2563900, 3780983, 1465012, 422017, 4823721};
        default:
            return {16, 2984379, 4091984, 2084450, 1005048, 5171386};
    }
}

}  // namespace cycbcr_test

// YCbCr to three RGB planes: the pixel-pair walk of the 8-bit engine with
// 8-, 10- and 12-bit samples, each member's arithmetic, and the row kernels
// shared by the plain engines and their AVX2 rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/buffer_sizes.h"
#include "frame/inline.h"
#include "torgb/colour_tables.h"
#include "torgb/to_rgb.h"

namespace cycbcr::colour::planes {

// One row of pixel pairs into three planes (R, G, B). Samples are bytes or
// 16-bit words as the member reads them; `y`, `cb`, `cr` point at the row's
// first samples.
struct RowArgs {
    void* out[3];
    const void* y;
    const void* cb;
    const void* cr;
    uint32_t pairs;
};

// Family A from 8-bit samples into 8-bit planes: the plain row and the AVX2 row
// (which converts what it can and hands the rest of the row, pointers
// advanced, to `tail`). `stream` rows write with streaming stores and need all
// three planes' rows 32-byte aligned.
using PlainRowA = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k);
using VectorRowA = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRowA tail);
VectorRowA avx2_row_a(Source s, bool stream);

// Family D from 8-bit samples into 16-bit planes; `studio` selects the studio
// matrices' luma and lift.
using PlainRowD = void (*)(const RowArgs& a, const ToRgbRow<int64_t>& k, bool studio);
using VectorRowD = void (*)(const RowArgs& a, const ToRgbRow<int64_t>& k, bool studio,
                            PlainRowD tail);
VectorRowD avx2_row_d(Source s);

// Float planes from 8-bit samples: the unscaled set in double precision, each
// value clamped to 0..255 and rounded to float.
using PlainRowF = void (*)(const RowArgs& a, const ToRgbRow<double>& k);
using VectorRowF = void (*)(const RowArgs& a, const ToRgbRow<double>& k, PlainRowF tail);
VectorRowF avx2_row_float(Source s);

// The members from 10- and 12-bit samples (16-bit words): chroma midpoint,
// divisor (truncating toward zero) and largest value of each, and whether its
// planes hold bytes.
enum class Wide : uint8_t { TenTo8, TenTo10, TenTo16, TwelveTo16 };
struct WideRule {
    int32_t mid;
    int32_t div;
    uint32_t max;
};
CYCBCR_INLINE constexpr WideRule wide_rule(Wide w) {
    switch (w) {
        case Wide::TenTo8:
            return {512, 40000, 255};
        case Wide::TenTo10:
            return {512, 10240, 1023};
        case Wide::TenTo16:
            return {512, 160, 65535};
        case Wide::TwelveTo16:
            break;
    }
    return {2048, 640, 65535};
}
// Their plain rows and AVX2 rows; `k` holds the member's luma offset.
using PlainRowW = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k);
using VectorRowW = void (*)(const RowArgs& a, const ToRgbRow<int32_t>& k, PlainRowW tail);
VectorRowW avx2_row_wide(Source s, Wide w);

// Bytes reached from each of the six pointers (R, G, B planes, Y, Cb, Cr) by
// the members of this family (frame/buffer_sizes.h).
bool to_rgb_planar_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out);

}  // namespace cycbcr::colour::planes

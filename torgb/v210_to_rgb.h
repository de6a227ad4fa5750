// v210 to RGB: one group decoder with the engine's chroma interpolation, the
// per-pixel arithmetic of each coefficient family, and the row kernels shared by
// the plain engines, their AVX2 row kernels and the entry points.
#pragma once

#include <cstdint>
#include <cstring>

#include "frame/buffer_sizes.h"
#include "frame/formats.h"
#include "frame/inline.h"
#include "torgb/colour_tables.h"
#include "torgb/rgb_pixels.h"

namespace cycbcr::colour::v210rgb {

// One pixel's samples: luma and the chroma pair it is converted with.
struct Sample {
    int32_t y, cb, cr;
};

CYCBCR_INLINE uint32_t word_at(const uint8_t* p, uint32_t i) {
    uint32_t w;
    std::memcpy(&w, p + 4 * size_t{i}, 4);
    return w;
}
CYCBCR_INLINE int32_t field(uint32_t w, int k) {
    return static_cast<int32_t>((w >> (10 * k)) & 0x3FFu);
}

// The words a group of n pixels reads (n = 6: the whole group and the first
// word of the next one). A partial group reads only the words holding its own
// pixels' samples and the chroma pairs they use.
CYCBCR_INLINE constexpr uint32_t group_words(uint32_t n) {
    constexpr uint32_t kWords[7] = {0, 1, 2, 3, 3, 4, 5};
    return kWords[n];
}

// Calls fn(i, sample) for pixels 0 .. n - 1 of the group at g. Pixels 0, 2, 4
// take their co-sited pair; 1 and 3 the truncated average of the pairs on either
// side; 5 the average of pair 4 and the first pair of the next group, read from
// the word after the group. In a partial group (n < 6) an odd pixel whose right
// pair lies past the row's last pixel takes its own pair.
template <class Fn>
CYCBCR_INLINE void group_samples(const uint8_t* g, uint32_t n, Fn&& fn) {
    const uint32_t w0 = word_at(g, 0);
    const uint32_t w1 = n >= 2 ? word_at(g, 1) : 0;
    const uint32_t w2 = n >= 3 ? word_at(g, 2) : 0;
    const uint32_t w3 = n >= 5 ? word_at(g, 3) : 0;
    const int32_t cb0 = field(w0, 0), cr0 = field(w0, 2);
    const int32_t cb2 = field(w1, 1), cr2 = field(w2, 0);
    const int32_t cb4 = field(w2, 2), cr4 = field(w3, 1);
    fn(0, Sample{field(w0, 1), cb0, cr0});
    if (n < 2) return;
    if (n < 3) {
        fn(1, Sample{field(w1, 0), cb0, cr0});
        return;
    }
    fn(1, Sample{field(w1, 0), (cb0 + cb2) >> 1, (cr0 + cr2) >> 1});
    fn(2, Sample{field(w1, 2), cb2, cr2});
    if (n < 4) return;
    if (n < 5) {
        fn(3, Sample{field(w2, 1), cb2, cr2});
        return;
    }
    fn(3, Sample{field(w2, 1), (cb2 + cb4) >> 1, (cr2 + cr4) >> 1});
    fn(4, Sample{field(w3, 0), cb4, cr4});
    if (n < 6) return;
    const uint32_t next = word_at(g, 4);
    fn(5, Sample{field(w3, 2), (cb4 + field(next, 0)) >> 1, (cr4 + field(next, 2)) >> 1});
}

// Calls fn(x, sample) for pixels 0 .. width - 1 of the row at src.
template <class Fn>
CYCBCR_INLINE void row_samples(const uint8_t* src, uint32_t width, Fn&& fn) {
    uint32_t x = 0;
    for (; x + 6 <= width; x += 6, src += 16)
        group_samples(src, 6, [&](uint32_t i, Sample s) { fn(x + i, s); });
    if (x < width) group_samples(src, width - x, [&](uint32_t i, Sample s) { fn(x + i, s); });
}

// Family B: 8 bits a channel, sums divided by 10000 truncating toward zero.
CYCBCR_INLINE uint32_t b_channel(int32_t sum) {
    const int32_t q = sum / 10000;
    return q < 0 ? 0u : q > 255 ? 255u : static_cast<uint32_t>(q);
}
CYCBCR_INLINE Rgb pixel_b(const ToRgbRow<int32_t>& k, Sample s) {
    const int32_t l = (s.y - k.yOffset) * k.yGain, u = s.cb - 512, v = s.cr - 512;
    return {b_channel(l + k.crToR * v), b_channel(l - k.crToG * v - k.cbToG * u),
            b_channel(l + k.cbToB * u)};
}
// Family C: 16 bits a channel, sums divided by 160 truncating toward zero.
CYCBCR_INLINE uint32_t c_channel(int32_t sum) {
    const int32_t q = sum / 160;
    return q < 0 ? 0u : q > 65535 ? 65535u : static_cast<uint32_t>(q);
}
CYCBCR_INLINE Rgb pixel_c(const ToRgbRow<int32_t>& k, Sample s) {
    const int32_t l = (s.y - k.yOffset) * k.yGain, u = s.cb - 512, v = s.cr - 512;
    return {c_channel(l + k.crToR * v), c_channel(l - k.crToG * v - k.cbToG * u),
            c_channel(l + k.cbToB * u)};
}
// Family F, Q13: the sum in 1/8192 of a 10-bit step, shifted right by 7 (a
// 10-bit step is 64 16-bit steps), so rounded toward minus infinity; clamped.
CYCBCR_INLINE uint32_t f_channel(int32_t sum) {
    const int32_t q = sum >> 7;
    return q < 0 ? 0u : q > 65535 ? 65535u : static_cast<uint32_t>(q);
}
struct FamilyF {
    Q13Row k;
    int32_t yOffset;  // in 10-bit steps: the table's 2048 is 64 at 1/32 of a step
};
CYCBCR_INLINE FamilyF family_f_of(QBYCBCRMatrix m) {
    return {family_f(m), family_f_y_offset(m) / 32};
}
CYCBCR_INLINE Rgb pixel_f(const FamilyF& f, Sample s) {
    const int32_t l = (s.y - f.yOffset) * f.k.yGain, u = s.cb - 512, v = s.cr - 512;
    return {f_channel(l + f.k.crToR * v), f_channel(l - f.k.crToG * v - f.k.cbToG * u),
            f_channel(l + f.k.cbToB * u)};
}

// What a row kernel writes. Packed rows: `dst` in the depth and order of the
// call. Planar rows: three 16-bit rows, R, G, B.
struct RowOut {
    uint8_t* dst;
    uint16_t* plane[3];
    const uint8_t* key;  // 10-bit alpha key row, or null
};
struct Coeffs {
    ToRgbRow<int32_t> k;  // family B or C
    FamilyF f;
    QBYCBCRMatrix matrix;
};
// A row kernel converts `width` pixels from the group at src; a vector kernel
// converts what it can and hands the rest, pointers advanced to a group
// boundary, to `tail`.
using PlainRow = void (*)(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c);
using VectorRow = void (*)(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c,
                           PlainRow tail);

// The arithmetic of a kernel.
enum class Arith : uint8_t { B, C, F };

// The AVX2 kernels (null where there is none): family B 24- and 32-bit pixels,
// family C 48- and 64-bit pixels and planes, family F planes. Exact: the bytes
// of the plain kernels.
// `stream`: family B 32-bit pixels go out with streaming stores (rows 32-byte
// aligned; the caller fences).
VectorRow avx2_row(Arith a, RgbDepth d, RgbOrder o, bool planar, bool stream = false);

// Pixel index to key: three 10-bit values a little-endian word.
CYCBCR_INLINE uint32_t key_alpha(const uint8_t* row, uint32_t x) {
    return static_cast<uint32_t>(field(word_at(row, x / 3), static_cast<int>(x % 3))) >> 2;
}

}  // namespace cycbcr::colour::v210rgb

namespace cycbcr::colour {
// Bytes touched by the v210 to RGB converters (frame/buffer_sizes.h): reads
// include the read-ahead word of the last whole group, writes whole pixels.
Extent v210_to_rgb_extent(Format to, const Call& c);
}  // namespace cycbcr::colour

// RGB to 8-bit YCbCr as the tests expect it, written out on its own: the
// forward rows in millionths, the source pixel layouts, the scalar engine with
// its rounding thresholds, the AVX2 engine's 14-bit rule, the float converter,
// the alpha extractor and the image-library path of 32-bit RGB to UYVY. Every
// model writes through raw pointers into the caller's copy of the destination.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "cycbcr.h"

namespace cycbcr_test {

// A forward row: the Y offset, then the R, G, B weights of Y, Cb and Cr.
struct Forward {
    int64_t off;
    std::array<int64_t, 3> y, cb, cr;
};

// Millionths; 1 to 10 have rows of their own, every other value BT.601.
inline Forward forward_row(QBYCBCRMatrix m) {
    // clang-format off
    static const Forward rows[11] = {
        {16, {257000, 504000, 98000}, {-148000, -291000, 439000}, {439000, -368000, -71000}},
        {0, {299011, 587006, 113983}, {-172577, -338837, 511414}, {511414, -428253, -83160}},
        {16, {183000, 614000, 62000}, {-101000, -338000, 439000}, {439000, -399000, -40000}},
        {0, {213000, 715000, 72000}, {-117000, -394000, 511000}, {511000, -464000, -47000}},
        {16, {182068, 612427, 61829}, {-100342, -337585, 437927}, {437927, -397766, -40161}},
        {0, {212600, 715200, 72200}, {-114572, -385428, 500000}, {500000, -454153, -45847}},
        {16, {225610, 582280, 50930}, {-122660, -316560, 439210}, {439210, -403890, -35320}},
        {0, {262700, 678000, 59300}, {-139630, -360370, 500000}, {500000, -459790, -40210}},
        {16, {222000, 631000, 496000}, {-270000, -768000, 1030000}, {469000, -436000, -34000}},
        {0, {259000, 738000, 580000}, {-308000, -878000, 1186000}, {537000, -498000, -39000}},
        {0, {299011, 587006, 113983}, {-200000, -200000, 400000}, {560000, -460000, -100000}}};
    // clang-format on
    return rows[m <= 10 ? m : 0];
}

inline uint32_t layout_number(QBYCBCRRgbType t) {
    return t & ~0x8000u;
}
inline bool rows_bottom_up(QBYCBCRRgbType t) {
    return (t & 0x8000u) != 0;
}

// Bytes a source pixel: 32, 48 and 64 bits as said, every other count 24-bit.
inline uint32_t rgb_pixel_bytes(uint32_t bpp) {
    return bpp == 32 ? 4 : bpp == 48 ? 6 : bpp == 64 ? 8 : 3;
}

// Byte offsets of R, G and B within a pixel. 16-bit channels are read by
// their high byte, the second of each little-endian word.
inline std::array<uint32_t, 3> rgb_offsets(uint32_t bpp, QBYCBCRRgbType t) {
    const uint32_t n = layout_number(t);
    if (rgb_pixel_bytes(bpp) == 3)
        return n == 2 || n == 3 ? std::array<uint32_t, 3>{0, 1, 2}
                                : std::array<uint32_t, 3>{2, 1, 0};
    std::array<uint32_t, 3> at = n == 1   ? std::array<uint32_t, 3>{3, 2, 1}
                                 : n == 2 ? std::array<uint32_t, 3>{0, 1, 2}
                                 : n == 3 ? std::array<uint32_t, 3>{1, 2, 3}
                                          : std::array<uint32_t, 3>{2, 1, 0};
    if (bpp != 32)
        for (auto& o : at) o = 2 * o + 1;
    return at;
}

// One past the last byte of a source row the engines read for a width.
inline size_t rgb_row_reach(uint32_t w, uint32_t bpp, QBYCBCRRgbType t) {
    if (w < 2) return 0;
    const auto at = rgb_offsets(bpp, t);
    return size_t{(w / 2) * 2 - 1} * rgb_pixel_bytes(bpp) +
           *std::max_element(at.begin(), at.end()) + 1;
}

struct Rgb8 {
    int64_t r, g, b;
};
inline Rgb8 read_rgb(const uint8_t* row, uint32_t i, uint32_t bpp, QBYCBCRRgbType t) {
    const uint8_t* p = row + size_t{i} * rgb_pixel_bytes(bpp);
    const auto at = rgb_offsets(bpp, t);
    return {p[at[0]], p[at[1]], p[at[2]]};
}
inline int64_t dot(const std::array<int64_t, 3>& k, Rgb8 p) {
    return k[0] * p.r + k[1] * p.g + k[2] * p.b;
}
inline uint8_t clamp8(int64_t v, int64_t lo = 0, int64_t hi = 255) {
    return static_cast<uint8_t>(std::clamp(v, lo, hi));
}

// The scalar engine's luma: truncating division, +1 above half (unless told
// not to round), the offset, at most 255.
inline uint8_t micro_luma(int64_t s, int64_t off, bool round) {
    return clamp8(s / 1000000 + (round && s % 1000000 > 500000 ? 1 : 0) + off);
}
// Its chroma: +1 when a non-negative sum's remainder exceeds up, -1 when a
// negative sum's remainder is below -down; then 128 and the byte range.
inline uint8_t micro_chroma(int64_t s, int64_t up, int64_t down) {
    int64_t q = s / 1000000;
    const int64_t m = s % 1000000;
    if (s >= 0 && m > up) ++q;
    if (s < 0 && m < -down) --q;
    return clamp8(q + 128);
}
inline uint8_t micro_cb(int64_t s) {
    return micro_chroma(s, 450000, 250000);
}
inline uint8_t micro_cr(int64_t s) {
    return micro_chroma(s, 500000, 500000);
}

// The engines' arguments.
struct EngineCall {
    uint8_t *y, *cb, *cr;
    const uint8_t* src;
    uint32_t w, h, dp, sp;
    QBYCBCRMatrix m;
    QBYCBCRRgbType t;
    int is422, planar;
    uint32_t bpp, cp;
};

inline uint64_t engine_result(uint32_t w, uint32_t h, int is422) {
    const uint64_t n = uint64_t{w} * h;
    return is422 ? n * 2 : n + ((n / 2) & ~uint64_t{1});
}

// Where frame row r goes: packed rows at the pitch; planar Y at the pitch and
// chroma at the chroma pitch, 4:2:0 chroma from rows 0, 3, 4, 7, 8, ... only.
struct RowOut {
    uint8_t *y, *cb, *cr;
    bool chroma;
};
inline RowOut row_out(const EngineCall& c, uint32_t r) {
    const bool chroma = c.cb != nullptr && (!c.planar || c.is422 || r % 4 == 0 || r % 4 == 3);
    const size_t yAt = size_t{r} * c.dp;
    const size_t cAt = !c.planar ? yAt : size_t{c.is422 ? r : r / 2} * c.cp;
    return {c.y + yAt, chroma ? c.cb + cAt : nullptr, chroma ? c.cr + cAt : nullptr, chroma};
}
inline const uint8_t* row_in(const EngineCall& c, uint32_t r) {
    return c.src + size_t{rows_bottom_up(c.t) ? c.h - 1 - r : r} * c.sp;
}
inline void put_pair(const EngineCall& c, const RowOut& o, uint32_t k, uint8_t y0, uint8_t y1,
                     uint8_t cb, uint8_t cr) {
    if (c.planar) {
        o.y[2 * k] = y0;
        o.y[2 * k + 1] = y1;
        if (o.chroma) o.cb[k] = cb, o.cr[k] = cr;
    } else {
        o.y[4 * k] = y0;
        o.y[4 * k + 2] = y1;
        if (o.chroma) o.cb[4 * k] = cb, o.cr[4 * k] = cr;
    }
}

// FromRGBInt: pairs of pixels, chroma from the even one; in the planar layout
// the odd pixel's luma is truncated.
inline uint64_t model_scalar(const EngineCall& c) {
    const Forward f = forward_row(c.m);
    for (uint32_t r = 0; r < c.h && c.w >= 2; ++r) {
        const uint8_t* in = row_in(c, r);
        const RowOut o = row_out(c, r);
        for (uint32_t k = 0; 2 * k + 1 < c.w; ++k) {
            const Rgb8 p0 = read_rgb(in, 2 * k, c.bpp, c.t),
                       p1 = read_rgb(in, 2 * k + 1, c.bpp, c.t);
            put_pair(c, o, k, micro_luma(dot(f.y, p0), f.off, true),
                     micro_luma(dot(f.y, p1), f.off, !c.planar), micro_cb(dot(f.cb, p0)),
                     micro_cr(dot(f.cr, p0)));
        }
    }
    return engine_result(c.w, c.h, c.is422);
}

// The AVX2 engine's 14-bit set: rows 1 to 9 from the decimal table, every
// other matrix (10 included) a fixed BT.601 set.
struct Q14 {
    int64_t off;
    std::array<int64_t, 3> y, cb, cr;
};
inline int64_t to_q14(int64_t micro) {
    return static_cast<int64_t>(std::trunc(static_cast<double>(micro) / 1e6 * 16384 + 0.5));
}
inline Q14 q14_set(QBYCBCRMatrix m) {
    if (m < 1 || m > 9) return {16, {4211, 8258, 1606}, {-2424, -4767, 7193}, {7193, -6028, -1162}};
    const Forward f = forward_row(m);
    Q14 q{f.off, {}, {}, {}};
    for (int i = 0; i < 3; ++i) {
        q.y[i] = to_q14(f.y[i]);
        q.cb[i] = to_q14(f.cb[i]);
        q.cr[i] = to_q14(f.cr[i]);
    }
    return q;
}
// The set rescaled to millionths for the pairs after the last group of eight.
inline std::array<int64_t, 3> q14_micro(const std::array<int64_t, 3>& q) {
    std::array<int64_t, 3> out{};
    for (int i = 0; i < 3; ++i)
        out[i] =
            static_cast<int64_t>(std::trunc(static_cast<double>(q[i]) * 1000000.0 * (1.0 / 16384)));
    return out;
}

// FromRGBInt_avx2: only 32-bit sources to 4:2:2; anything else is FromRGBInt's.
inline uint64_t model_avx2(const EngineCall& c) {
    if (!c.is422 || c.bpp != 32) return model_scalar(c);
    const Q14 q = q14_set(c.m);
    const auto my = q14_micro(q.y), mcb = q14_micro(q.cb), mcr = q14_micro(q.cr);
    const uint32_t grouped = c.w / 8 * 8;
    for (uint32_t r = 0; r < c.h && c.w >= 2; ++r) {
        const uint8_t* in = row_in(c, r);
        const RowOut o = row_out(c, r);
        for (uint32_t k = 0; 2 * k + 1 < c.w; ++k) {
            const Rgb8 p0 = read_rgb(in, 2 * k, c.bpp, c.t),
                       p1 = read_rgb(in, 2 * k + 1, c.bpp, c.t);
            if (2 * k < grouped) {
                auto px = [&](const std::array<int64_t, 3>& k3, Rgb8 p, int64_t add) {
                    return static_cast<int64_t>(clamp8(((dot(k3, p) + 8192) >> 14) + add));
                };
                put_pair(c, o, k, clamp8(px(q.y, p0, q.off)), clamp8(px(q.y, p1, q.off)),
                         clamp8((px(q.cb, p0, 128) + px(q.cb, p1, 128) + 1) >> 1),
                         clamp8((px(q.cr, p0, 128) + px(q.cr, p1, 128) + 1) >> 1));
            } else {
                put_pair(c, o, k, clamp8(dot(my, p0) / 1000000 + q.off),
                         clamp8(dot(my, p1) / 1000000 + q.off),
                         clamp8(dot(mcb, p0) / 1000000 + 128),
                         clamp8(dot(mcr, p0) / 1000000 + 128));
            }
        }
    }
    return engine_result(c.w, c.h, c.is422);
}

// Rows i and h - 1 - i exchanged, whole pitches.
inline void flip_rows(uint8_t* buf, uint32_t pitch, uint32_t h) {
    for (uint32_t i = 0; i < h / 2; ++i)
        std::swap_ranges(buf + size_t{i} * pitch, buf + size_t{i + 1} * pitch,
                         buf + size_t{h - 1 - i} * pitch);
}

// The float converter. Single-precision sums may land a hair either side of
// a whole number, so each byte gets a range: lo and hi differ only where the
// exact value lies within 1/1000 of a step.
inline uint64_t model_float(uint8_t* lo, uint8_t* hi, const uint8_t* src, uint32_t w, uint32_t h,
                            uint32_t dp, uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    if (w < 2 || h == 0) return 0;
    const Forward f = forward_row(m);
    const uint32_t n = layout_number(t);
    const std::array<uint32_t, 3> at = n == 0   ? std::array<uint32_t, 3>{2, 1, 0}
                                       : n == 1 ? std::array<uint32_t, 3>{3, 2, 1}
                                       : n == 3 ? std::array<uint32_t, 3>{1, 2, 3}
                                                : std::array<uint32_t, 3>{0, 1, 2};
    auto channel = [](float v) -> double {
        return v <= 0.0f   ? 0.0
               : v >= 1.0f ? 255.0
                           : static_cast<double>(static_cast<int>(v * 256.0f));
    };
    struct Span {
        int64_t lo, hi;
    };
    auto value = [](const std::array<int64_t, 3>& k, const double* c, double add) -> Span {
        double s = add + 0.5;
        for (int i = 0; i < 3; ++i)
            s += static_cast<double>(static_cast<float>(static_cast<double>(k[i]) / 1e6)) * c[i];
        return {clamp8(static_cast<int64_t>(std::trunc(s - 1e-3))),
                clamp8(static_cast<int64_t>(std::trunc(s + 1e-3)))};
    };
    for (uint32_t r = 0; r < h; ++r) {
        const size_t rowFloats = size_t{rows_bottom_up(t) ? h - 1 - r : r} * (sp / 4);
        for (uint32_t k = 0; k < w / 2; ++k) {
            Span y[2], cb[2], cr[2];
            for (uint32_t j = 0; j < 2; ++j) {
                double c[3];
                for (int i = 0; i < 3; ++i) {
                    float v;
                    std::memcpy(&v, src + 4 * (rowFloats + size_t{2 * k + j} * 4 + at[i]), 4);
                    c[i] = channel(v);
                }
                y[j] = value(f.y, c, static_cast<double>(f.off));
                cb[j] = value(f.cb, c, 128);
                cr[j] = value(f.cr, c, 128);
            }
            const size_t o = size_t{r} * dp + 4 * size_t{k};
            const uint8_t l[4] = {clamp8((cb[0].lo + cb[1].lo + 1) >> 1), clamp8(y[0].lo),
                                  clamp8((cr[0].lo + cr[1].lo + 1) >> 1), clamp8(y[1].lo)};
            const uint8_t u[4] = {clamp8((cb[0].hi + cb[1].hi + 1) >> 1), clamp8(y[0].hi),
                                  clamp8((cr[0].hi + cr[1].hi + 1) >> 1), clamp8(y[1].hi)};
            std::memcpy(lo + o, l, 4);
            std::memcpy(hi + o, u, 4);
        }
    }
    return uint64_t{h} * w * 2;
}

// The alpha extractor: byte 3 of each pixel, rows width bytes apart.
inline uint64_t model_alpha(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t sp,
                            uint8_t options, QBYCBCRRgbType t) {
    for (uint32_t r = 0; r < h; ++r) {
        const uint8_t* in = src + size_t{rows_bottom_up(t) ? h - 1 - r : r} * sp;
        for (uint32_t i = 0; i < w; ++i) {
            const uint32_t a = in[4 * size_t{i} + 3];
            dst[size_t{r} * w + i] = static_cast<uint8_t>(options & 1 ? a * 219 / 255 + 16 : a);
        }
    }
    return uint64_t{h} * w;
}

// The image-library path of 32-bit RGB to UYVY (matrix 0 or 5, layout 0 or 2):
// layout 2 has bytes 0 and 2 of each pixel swapped in the source first; 16-bit
// fixed point, coefficients rounded half away from zero; the pair's chroma from
// both pixels' sums; width / 2 pairs a row; matrix 5 clamps to 1..254; the
// bottom-up flag turns the written frame over.
inline int64_t to_q16(int64_t thousandths) {
    const int64_t a = (std::abs(thousandths) * 65536 + 500) / 1000;
    return thousandths < 0 ? -a : a;
}
inline uint64_t model_imaging_uyvy(uint8_t* dst, uint8_t* src, uint32_t w, uint32_t h, uint32_t dp,
                                   uint32_t sp, QBYCBCRMatrix m, QBYCBCRRgbType t) {
    if (layout_number(t) == 2)
        for (uint32_t r = 0; r < h; ++r)
            for (uint32_t i = 0; i < w; ++i)
                std::swap(src[size_t{r} * sp + 4 * i], src[size_t{r} * sp + 4 * i + 2]);
    const bool hdtv = m == 5;
    const std::array<int64_t, 3> ky =
        hdtv ? std::array<int64_t, 3>{213, 715, 72} : std::array<int64_t, 3>{257, 504, 98};
    const std::array<int64_t, 3> kcb =
        hdtv ? std::array<int64_t, 3>{-117, -394, 511} : std::array<int64_t, 3>{-148, -291, 439};
    const std::array<int64_t, 3> kcr =
        hdtv ? std::array<int64_t, 3>{511, -464, -47} : std::array<int64_t, 3>{439, -368, -71};
    const int64_t yOff = hdtv ? 0 : 16, lo = hdtv ? 1 : 0, hi = hdtv ? 254 : 255;
    auto sum = [](const std::array<int64_t, 3>& k, Rgb8 p, int64_t off) {
        return to_q16(k[0]) * p.r + to_q16(k[1]) * p.g + to_q16(k[2]) * p.b + (off << 16);
    };
    if (w >= 2 && h >= 1) {
        for (uint32_t r = 0; r < h; ++r) {
            const uint8_t* in = src + size_t{r} * sp;
            uint8_t* out = dst + size_t{r} * dp;
            for (uint32_t k = 0; k < w / 2; ++k) {
                const Rgb8 p0 = read_rgb(in, 2 * k, 32, 0), p1 = read_rgb(in, 2 * k + 1, 32, 0);
                out[4 * k] = clamp8((sum(kcb, p0, 128) + sum(kcb, p1, 128) + 65536) >> 17, lo, hi);
                out[4 * k + 1] = clamp8((sum(ky, p0, yOff) + 32768) >> 16, lo, hi);
                out[4 * k + 2] =
                    clamp8((sum(kcr, p0, 128) + sum(kcr, p1, 128) + 65536) >> 17, lo, hi);
                out[4 * k + 3] = clamp8((sum(ky, p1, yOff) + 32768) >> 16, lo, hi);
            }
        }
    }
    if (rows_bottom_up(t)) flip_rows(dst, dp, h);
    return uint64_t{w} * dp;
}

}  // namespace cycbcr_test

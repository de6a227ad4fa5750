// RGB to v210 as the tests expect it, written out on its own: the weights of
// each input depth, the per-pixel rules, the 1-2-2-1 filter with its edges and
// the partial group, the unfiltered engine and the alpha key. Models write
// into the caller's copy of the destination.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "cycbcr.h"
#include "support/from_rgb_model.h"

namespace cycbcr_test {

struct V210Weights {
    int64_t off;
    std::array<int64_t, 3> y, cb, cr;  // R, G, B
};

// 8-bit RGB (x 40,000). Index 0 is the default row (matrix 10 and unknown
// values), 1 to 9 the matrices.
inline V210Weights v210_rgb8_weights(QBYCBCRMatrix m, bool noFilter = false) {
    // clang-format off
    static const V210Weights rows[10] = {
        {64, {10280, 20160, 3920}, {-5920, -11640, 17560}, {17560, -14720, -2839}},
        {0, {11960, 23480, 4559}, {-6903, -13553, 20456}, {20456, -17130, -3326}},
        {64, {7320, 24560, 2480}, {-4040, -13520, 17560}, {17560, -15960, -1600}},
        {0, {8520, 28600, 2880}, {-4680, -15760, 20440}, {20440, -18560, -1880}},
        {64, {7282, 24497, 2473}, {-4013, -13503, 17517}, {17517, -15910, -1606}},
        {0, {8504, 28607, 2888}, {-4582, -15417, 20000}, {20000, -18166, -1833}},
        {64, {9024, 23291, 2037}, {-4906, -12662, 17568}, {17568, -16155, -1412}},
        {0, {10508, 27120, 2372}, {-5585, -14414, 20000}, {20000, -18391, -1608}},
        {64, {8880, 25240, 19840}, {-10800, -30720, 41200}, {18760, -17440, -1360}},
        {0, {10360, 29520, 23200}, {-12320, -35120, 47440}, {21480, -19920, -1560}}};
    // clang-format on
    V210Weights w = rows[m >= 1 && m <= 9 ? m : 0];
    if (noFilter && w.off == 64) w.off = 16;
    return w;
}

// 16-bit RGB (x 10,000).
inline V210Weights v210_rgb16_weights(QBYCBCRMatrix m) {
    // clang-format off
    static const V210Weights rows[10] = {
        {64, {2570, 5040, 980}, {-1480, -2910, 4390}, {4390, -3680, -709}},
        {0, {2990, 5870, 1139}, {-1725, -3388, 5114}, {5114, -4282, -831}},
        {64, {1830, 6140, 620}, {-1010, -3380, 4390}, {4390, -3990, -400}},
        {0, {2130, 7150, 720}, {-1170, -3940, 5110}, {5110, -4640, -470}},
        {64, {1820, 6124, 618}, {-1003, -3375, 4379}, {4379, -3977, -401}},
        {0, {2126, 7151, 722}, {-1145, -3854, 5000}, {5000, -4541, -458}},
        {64, {2256, 5822, 509}, {-1226, -3165, 4392}, {4392, -4038, -353}},
        {0, {2627, 6780, 593}, {-1396, -3603, 5000}, {5000, -4597, -402}},
        {64, {2220, 6310, 4960}, {-2700, -7680, 10300}, {4690, -4360, -340}},
        {0, {2590, 7380, 5800}, {-3080, -8780, 11860}, {5370, -4980, -390}}};
    // clang-format on
    return rows[m >= 1 && m <= 9 ? m : 0];
}

// 10-bit RGB: the forward millionths, offset 64 where the forward row has 16.
inline V210Weights v210_rgb10_weights(QBYCBCRMatrix m) {
    const Forward f = forward_row(m >= 1 && m <= 9 ? m : 0);
    return {f.off == 16 ? 64 : 0, f.y, f.cb, f.cr};
}

enum class V210Input { Rgb8, Rgb16, Rgb10 };

struct Sample3 {
    int64_t y, cb, cr;
};

inline int64_t sum3(const std::array<int64_t, 3>& k, int64_t r, int64_t g, int64_t b) {
    return k[0] * r + k[1] * g + k[2] * b;
}
// Quotient toward zero, one away from zero past the thresholds.
inline int64_t round_div(int64_t s, int64_t d, int64_t up, int64_t down) {
    int64_t q = s / d;
    if (s >= 0 && s % d > up) ++q;
    if (s < 0 && s % d < -down) --q;
    return q;
}

struct V210Source {
    V210Input input;
    uint32_t bpp;  // 8-bit: 32 or 24; 16-bit: 48 or 64
    QBYCBCRRgbType type;
};

inline size_t v210_pixel_bytes(const V210Source& s) {
    switch (s.input) {
        case V210Input::Rgb8:
            return s.bpp == 32 ? 4 : 3;
        case V210Input::Rgb16:
            return s.bpp == 32 || s.bpp == 64 ? 8 : 6;
        default:
            return 4;
    }
}

// The start of source row r, bottom-up flag and row alignment applied.
inline const uint8_t* v210_source_row(const uint8_t* src, const V210Source& s, uint32_t r,
                                      uint32_t h, uint32_t sp) {
    const size_t row = (s.type & 0x8000u) ? h - 1 - r : r;
    size_t off = row * sp;
    if (s.input == V210Input::Rgb16) off -= off % 2;
    if (s.input == V210Input::Rgb10) off -= off % 4;
    return src + off;
}

// Per-pixel samples of pixel x: the 8-bit rule truncates by 10,000; 16-bit
// rounds by 640,000; 10-bit by 1,000,000 with the YCbCr engine's thresholds.
inline Sample3 v210_pixel(const uint8_t* row, uint32_t x, const V210Source& s, QBYCBCRMatrix m,
                          bool noFilter = false) {
    const uint8_t* p = row + x * v210_pixel_bytes(s);
    const uint32_t order = s.type & ~0x8000u;
    int64_t r, g, b, y, cb, cr;
    V210Weights k;
    if (s.input == V210Input::Rgb8) {
        const auto at = rgb_offsets(s.bpp == 32 ? 32 : 24, s.type);
        r = p[at[0]], g = p[at[1]], b = p[at[2]];
        k = v210_rgb8_weights(m, noFilter);
        y = sum3(k.y, r, g, b) / 10000;
        cb = sum3(k.cb, r, g, b) / 10000;
        cr = sum3(k.cr, r, g, b) / 10000;
    } else if (s.input == V210Input::Rgb16) {
        auto word = [&](int i) { return int64_t{p[2 * i]} | int64_t{p[2 * i + 1]} << 8; };
        int wr = 2, wg = 1, wb = 0;
        if (v210_pixel_bytes(s) == 8) {
            if (order == 1) wr = 3, wg = 2, wb = 1;
            if (order == 2) wr = 0, wg = 1, wb = 2;
            if (order == 3) wr = 1, wg = 2, wb = 3;
        } else if (order == 2 || order == 3) {
            wr = 0, wg = 1, wb = 2;
        }
        r = word(wr), g = word(wg), b = word(wb);
        k = v210_rgb16_weights(m);
        y = round_div(sum3(k.y, r, g, b), 640000, 320000, 640000);
        cb = round_div(sum3(k.cb, r, g, b), 640000, 288000, 160000);
        cr = round_div(sum3(k.cr, r, g, b), 640000, 320000, 320000);
    } else {
        const uint32_t w = p[0] | p[1] << 8 | p[2] << 16 | uint32_t{p[3]} << 24;
        const int64_t a = (w >> 2) & 1023, mid = (w >> 12) & 1023, c = (w >> 22) & 1023;
        const bool rHigh = order == 2 || order == 3;
        r = rHigh ? c : a, g = mid, b = rHigh ? a : c;
        k = v210_rgb10_weights(m);
        y = round_div(sum3(k.y, r, g, b), 1000000, 500000, 1000000);
        cb = round_div(sum3(k.cb, r, g, b), 1000000, 450000, 250000);
        cr = round_div(sum3(k.cr, r, g, b), 1000000, 500000, 500000);
    }
    return {std::min<int64_t>(y + k.off, 1023), std::clamp<int64_t>(cb + 512, 0, 1023),
            std::clamp<int64_t>(cr + 512, 0, 1023)};
}

inline void put_word(uint8_t* d, int64_t a, int64_t b, int64_t c) {
    const uint32_t w = static_cast<uint32_t>(a | b << 10 | c << 20);
    std::memcpy(d, &w, 4);
}

// One filtered row as samples: Y of every converted pixel, Cb and Cr of every
// converted pair (the partial group's pair by the 1-2-2 rule over 5).
struct V210RowSamples {
    std::vector<int64_t> y, cb, cr;
};
inline V210RowSamples v210_filtered_row(const uint8_t* row, uint32_t w, const V210Source& s,
                                        QBYCBCRMatrix m) {
    const uint32_t groups = w / 6;
    const bool partial = w % 6 >= 2;
    const uint32_t n = groups * 6 + (partial ? 2 : 0);
    std::vector<Sample3> px;
    for (uint32_t x = 0; x < n; ++x) px.push_back(v210_pixel(row, x, s, m));
    V210RowSamples out;
    for (uint32_t x = 0; x < n; ++x) out.y.push_back(px[x].y);
    auto left = [&](uint32_t x, int64_t Sample3::*c) { return x == 0 ? 512 : px[x - 1].*c; };
    for (uint32_t k = 0; k < 3 * groups; ++k)
        for (int64_t Sample3::*c : {&Sample3::cb, &Sample3::cr}) {
            const uint32_t x = 2 * k;
            // The last pair of the last whole group repeats its own last pixel.
            const int64_t right = k == 3 * groups - 1 ? px[x + 1].*c : px[x + 2].*c;
            const int64_t v = (left(x, c) + 2 * px[x].*c + 2 * px[x + 1].*c + right) / 6;
            (c == &Sample3::cb ? out.cb : out.cr).push_back(v);
        }
    if (partial) {
        const uint32_t x = 6 * groups;
        out.cb.push_back((left(x, &Sample3::cb) + 2 * px[x].cb + 2 * px[x + 1].cb) / 5);
        out.cr.push_back((left(x, &Sample3::cr) + 2 * px[x].cr + 2 * px[x + 1].cr) / 5);
    }
    return out;
}

// A filtered frame into dst (rows dp apart).
inline void model_v210_filtered(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h,
                                uint32_t dp, uint32_t sp, QBYCBCRMatrix m, const V210Source& s) {
    for (uint32_t r = 0; r < h; ++r) {
        const V210RowSamples v = v210_filtered_row(v210_source_row(src, s, r, h, sp), w, s, m);
        uint8_t* d = dst + size_t{r} * dp;
        for (uint32_t g = 0; g < w / 6; ++g, d += 16) {
            const int64_t *y = &v.y[6 * g], *cb = &v.cb[3 * g], *cr = &v.cr[3 * g];
            put_word(d, cb[0], y[0], cr[0]);
            put_word(d + 4, y[1], cb[1], y[2]);
            put_word(d + 8, cr[1], y[3], cb[2]);
            put_word(d + 12, y[4], cr[2], y[5]);
        }
        if (w % 6 >= 2) {
            put_word(d, v.cb.back(), v.y[v.y.size() - 2], v.cr.back());
            put_word(d + 4, v.y.back(), 0, 0);
        }
    }
}

// The unfiltered engine: chroma of pixels 0, 2, 4 of each group; a short
// last group written to the words its pixels reach, missing fields 0.
inline void model_v210_unfiltered(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h,
                                  uint32_t dp, uint32_t sp, QBYCBCRMatrix m, const V210Source& s) {
    for (uint32_t r = 0; r < h; ++r) {
        const uint8_t* row = v210_source_row(src, s, r, h, sp);
        uint8_t* d = dst + size_t{r} * dp;
        for (uint32_t at = 0; at < w; at += 6, d += 16) {
            Sample3 p[6] = {};
            for (uint32_t i = 0; i < 6; ++i)
                if (at + i < w) p[i] = v210_pixel(row, at + i, s, m, true);
            put_word(d, p[0].cb, p[0].y, p[0].cr);
            put_word(d + 4, p[1].y, p[2].cb, p[2].y);
            if (at + 2 >= w) continue;
            put_word(d + 8, p[2].cr, p[3].y, p[4].cb);
            if (at + 4 >= w) continue;
            put_word(d + 12, p[4].y, p[4].cr, p[5].y);
        }
    }
}

// The alpha key: rows at (r * w * 4) / 3, three keys a word.
inline void model_v210_alpha(uint8_t* dst, const uint8_t* src, uint32_t w, uint32_t h, uint32_t sp,
                             bool studio, QBYCBCRRgbType t) {
    for (uint32_t r = 0; r < h; ++r) {
        const uint8_t* row = src + size_t{(t & 0x8000u) ? h - 1 - r : r} * sp;
        uint8_t* d = dst + uint64_t{r} * w * 4 / 3;
        for (uint32_t x = 0; x < w; x += 3, d += 4) {
            int64_t f[3] = {0, 0, 0};
            for (uint32_t i = 0; i < 3 && x + i < w; ++i) {
                const int64_t a = row[4 * (x + i) + 3];
                f[i] = studio ? a * 876 / 255 + 64 : a * 4;
            }
            put_word(d, f[0], f[1], f[2]);
        }
    }
}

}  // namespace cycbcr_test

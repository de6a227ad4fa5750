// An independent per-pixel model of the v210 to RGB converters, written from
// the library's documented rules (not from its code): the word layout, the
// chroma each pixel is converted with, each coefficient family's arithmetic
// and the RGB pixel layouts. The tables are written out here on their own.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "cycbcr.h"

namespace cycbcr_test::v210rgb {

// Y offset, Y gain, Cr to R, Cr to G, Cb to G, Cb to B.
struct Row {
    double off, gain, crR, crG, cbG, cbB;
};
inline Row family_b(QBYCBCRMatrix m) {  // x 2500, / 10000 -> 8 bits
    switch (m) {
        case 1:
            return {0, 2500, 3427, 1744, 840, 4330};
        case 2:
        case 4:
            return {64, 2910, 4482, 1335, 532, 5287};
        case 3:
        case 5:
            return {0, 2500, 3850, 1147, 457, 4540};
        case 6:
            return {64, 2910, 4196, 1626, 468, 5354};
        case 7:
            return {0, 2500, 3686, 1428, 411, 4703};
        default:
            return {64, 2910, 3990, 2032, 980, 5042};
    }
}
inline Row family_c(QBYCBCRMatrix m) {  // x 10240, / 160 -> 16 bits
    switch (m) {
        case 1:
            return {0, 10240, 14039, 7147, 3440, 17735};
        case 2:
        case 4:
            return {64, 11919, 18360, 5468, 2181, 21657};
        case 3:
        case 5:
            return {0, 10240, 15769, 4700, 1873, 18595};
        case 6:
            return {64, 11919, 17189, 6660, 1918, 21931};
        case 7:
            return {0, 10240, 15100, 5851, 1685, 19265};
        default:
            return {64, 11919, 16343, 8325, 4014, 20654};
    }
}
inline Row family_e(QBYCBCRMatrix m) {  // doubles -> 8 bits
    switch (m) {
        case 1:
            return {0, 0.25, 0.34275, 0.1745, 0.084, 0.433};
        case 2:
        case 4:
            return {64, 0.291, 0.44825, 0.1335, 0.05325, 0.52875};
        case 3:
        case 5:
            return {0, 0.25, 0.385, 0.11475, 0.04575, 0.454};
        case 6:
            return {64, 0.291, 0.41966875, 0.16260625, 0.046831, 0.53544325};
        case 7:
            return {0, 0.25, 0.368675, 0.14285, 0.04115, 0.47035};
        default:
            return {64, 0.291, 0.399, 0.20325, 0.098, 0.50425};
    }
}
// Q13, indexed by the matrix itself; above 7 matrix 3's row. Offset 2048 / 32.
inline Row family_f(QBYCBCRMatrix m) {
    static const int64_t t[8][5] = {
        {9535, 13074, 6660, 3211, 16523}, {8192, 11231, 5718, 2752, 14188},
        {9535, 14688, 4374, 1744, 17326}, {8192, 12615, 3760, 1499, 14876},
        {9535, 14688, 4374, 1744, 17326}, {8192, 12615, 3760, 1499, 14876},
        {9535, 13751, 5328, 1534, 17545}, {8192, 12080, 4680, 1348, 15412}};
    const uint32_t i = m <= 7 ? m : 3;
    return {i % 2 == 0 && m <= 7 ? 64.0 : 0.0,
            double(t[i][0]),
            double(t[i][1]),
            double(t[i][2]),
            double(t[i][3]),
            double(t[i][4])};
}

inline uint32_t word(const uint8_t* row, size_t i) {
    uint32_t w;
    std::memcpy(&w, row + 4 * i, 4);
    return w;
}
inline int sample10(uint32_t w, int field) {
    return int(w >> (10 * field)) & 1023;
}

struct Px {
    int y, cb, cr;
};
// Pixel x's samples. Chroma pair k (of pixels 2k, 2k + 1) sits in group k / 3:
// Cb in words 0, 1, 2 (fields 0, 1, 2), Cr in words 0, 2, 3 (fields 2, 0, 1).
// Odd pixels average their pair with the next one when that exists: always
// for pixel 5 of a whole group (the next group's first word, read whatever it
// holds), within a partial group only when the next pixel is in the row.
inline Px sample_at(const uint8_t* row, uint32_t width, uint32_t x) {
    static const int yWord[6] = {0, 1, 1, 2, 3, 3}, yField[6] = {1, 0, 2, 1, 0, 2};
    static const int cbWord[3] = {0, 1, 2}, cbField[3] = {0, 1, 2};
    static const int crWord[3] = {0, 2, 3}, crField[3] = {2, 0, 1};
    auto cb = [&](uint32_t k) {
        return sample10(word(row, 4 * (k / 3) + cbWord[k % 3]), cbField[k % 3]);
    };
    auto cr = [&](uint32_t k) {
        return sample10(word(row, 4 * (k / 3) + crWord[k % 3]), crField[k % 3]);
    };
    const uint32_t g = x / 6, i = x % 6, k = x / 2;
    Px p{sample10(word(row, 4 * g + yWord[i]), yField[i]), cb(k), cr(k)};
    const bool wholeGroup = (g + 1) * 6 <= width;
    if (x % 2 == 1 && (wholeGroup || x + 1 < width)) {
        p.cb = (p.cb + cb(k + 1)) >> 1;
        p.cr = (p.cr + cr(k + 1)) >> 1;
    }
    return p;
}

enum class Arith { B, C, E, F };
struct Rgb {
    int64_t r, g, b;
};
inline int64_t clampi(int64_t v, int64_t hi) {
    return v < 0 ? 0 : v > hi ? hi : v;
}
inline Rgb convert(Arith a, QBYCBCRMatrix m, Px p) {
    const Row k = a == Arith::B   ? family_b(m)
                  : a == Arith::C ? family_c(m)
                  : a == Arith::E ? family_e(m)
                                  : family_f(m);
    const double u = p.cb - 512, v = p.cr - 512, l = (p.y - k.off) * k.gain;
    const double s[3] = {l + k.crR * v, l - k.crG * v - k.cbG * u, l + k.cbB * u};
    int64_t o[3];
    for (int c = 0; c < 3; ++c) {
        switch (a) {  // all integer sums here are exact in double
            case Arith::B:
                o[c] = clampi(int64_t(std::trunc(s[c] / 10000)), 255);
                break;
            case Arith::C:
                o[c] = clampi(int64_t(std::trunc(s[c] / 160)), 65535);
                break;
            case Arith::E:
                o[c] = s[c] <= 0 ? 0 : s[c] >= 255 ? 255 : int64_t(s[c]);
                break;
            case Arith::F:
                o[c] = clampi(int64_t(std::floor(s[c] / 128)), 65535);
                break;
        }
    }
    return {o[0], o[1], o[2]};
}

// Writes one pixel in the layout of rgbType: bits a pixel 15, 16, 24, 32 (bytes)
// or 48, 64 (16-bit words), alpha value given.
inline void put(uint8_t* d, uint32_t bits, uint32_t type, Rgb c, int64_t alpha) {
    const uint32_t n = type & ~0x8000u;
    const bool bgr = n == 0 || n == 1, alphaFirst = n == 1 || n == 3;
    const int64_t f = bgr ? c.b : c.r, l = bgr ? c.r : c.b;
    if (bits == 15 || bits == 16) {
        const uint16_t w = bits == 15 ? uint16_t((f >> 3) << 10 | (c.g >> 3) << 5 | (l >> 3))
                                      : uint16_t((f >> 3) << 11 | (c.g >> 2) << 5 | (l >> 3));
        d[0] = uint8_t(w);
        d[1] = uint8_t(w >> 8);
        return;
    }
    std::vector<int64_t> ch;
    const bool hasAlpha = bits == 32 || bits == 64;
    if (hasAlpha && alphaFirst) ch.push_back(alpha);
    ch.insert(ch.end(), {f, c.g, l});
    if (hasAlpha && !alphaFirst) ch.push_back(alpha);
    const bool wide = bits == 48 || bits == 64;
    for (size_t i = 0; i < ch.size(); ++i) {
        if (wide) {
            d[2 * i] = uint8_t(ch[i]);
            d[2 * i + 1] = uint8_t(ch[i] >> 8);
        } else {
            d[i] = uint8_t(ch[i]);
        }
    }
}

struct Call {
    uint32_t width, height, dstPitch, srcPitch;
    QBYCBCRMatrix matrix;
    QBYCBCRRgbType type;
};
// The packed forms: `bits` as the pixel written (15, 16, 24, 32, 48, 64); B
// and E give 8-bit channels, C 16-bit ones with alpha 255. key: the 10-bit
// alpha key plane of the alpha converter, or null.
inline void model_packed(std::vector<uint8_t>& dst, const uint8_t* src, const Call& c, Arith a,
                         uint32_t bits, const uint8_t* key = nullptr) {
    const size_t bytes = bits == 15 ? 2 : (bits + 7) / 8;
    for (uint32_t r = 0; r < c.height; ++r) {
        const uint32_t out = (c.type & 0x8000u) ? c.height - 1 - r : r;
        const uint8_t* row = src + size_t{r} * c.srcPitch;
        for (uint32_t x = 0; x < c.width; ++x) {
            int64_t alpha = 255;
            if (key) {
                const uint8_t* kr = key + size_t{r} * c.width * 4 / 3;
                alpha = sample10(word(kr, x / 3), int(x % 3)) >> 2;
            }
            put(&dst[size_t{out} * c.dstPitch + x * bytes], bits, c.type,
                convert(a, c.matrix, sample_at(row, c.width, x)), alpha);
        }
    }
}
// The planar forms: planes R, G, B of 16-bit words, plane k at k * dstPitch *
// height, rows turned over with the bottom-up flag.
inline void model_planar(std::vector<uint8_t>& dst, const uint8_t* src, const Call& c, Arith a) {
    const size_t plane = size_t{c.dstPitch} * c.height;
    for (uint32_t r = 0; r < c.height; ++r) {
        const uint32_t out = (c.type & 0x8000u) ? c.height - 1 - r : r;
        for (uint32_t x = 0; x < c.width; ++x) {
            const Rgb p = convert(a, c.matrix, sample_at(src + size_t{r} * c.srcPitch, c.width, x));
            const int64_t v[3] = {p.r, p.g, p.b};
            for (int k = 0; k < 3; ++k) {
                uint8_t* d = &dst[k * plane + size_t{out} * c.dstPitch + 2 * x];
                d[0] = uint8_t(v[k]);
                d[1] = uint8_t(v[k] >> 8);
            }
        }
    }
}

}  // namespace cycbcr_test::v210rgb

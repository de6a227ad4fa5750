// The v210 reference models: groups read and written sample by sample, and the
// scalar engines (Tov210, Fromv210, Fromv210_16) as byte models that the entries
// and their AVX2 forms are measured against.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "support/byte_model.h"

namespace cycbcr_test {

inline uint32_t ceil_div(uint32_t a, uint32_t b) {
    return (a + b - 1) / b;
}
inline uint32_t round_up(uint32_t a, uint32_t m) {
    return ceil_div(a, m) * m;
}
// The natural v210 row: 48 pixels in 128 bytes.
inline uint32_t row_bytes(uint32_t w) {
    return ceil_div(w, 48) * 128;
}

// Sample k of a group in address order (Cb0 Y0 Cr0 Y1 Cb1 Y2 Cr1 Y3 Cb2 Y4 Cr2 Y5):
// Y of pixel i is 2i + 1, Cb and Cr of pair j are 4j and 4j + 2.
constexpr unsigned kY[6] = {1, 3, 5, 7, 9, 11};
constexpr unsigned kCb[3] = {0, 4, 8};
constexpr unsigned kCr[3] = {2, 6, 10};

// The twelve samples of the v210 group at byte `at` of the model's source, in
// address order; bits 30 and 31 dropped.
inline std::array<uint32_t, 12> read_group(ByteModel& m, size_t at) {
    std::array<uint32_t, 12> out{};
    for (unsigned w = 0; w < 4; ++w) {
        uint32_t word = 0;
        for (unsigned b = 0; b < 4; ++b) word |= uint32_t{m.s(at + 4 * w + b)} << (8 * b);
        for (unsigned k = 0; k < 3; ++k) out[3 * w + k] = (word >> (10 * k)) & 0x3FF;
    }
    return out;
}

// Twelve 10-bit samples in address order packed into one 16-byte group.
inline void put_group(uint8_t* out, const uint32_t s[12]) {
    for (unsigned w = 0; w < 4; ++w) {
        const uint32_t word = s[3 * w] | s[3 * w + 1] << 10 | s[3 * w + 2] << 20;
        std::memcpy(out + 4 * w, &word, 4);
    }
}

// An engine model. Which of two writes of one row to the same byte lands last
// is the engine's own affair: such bytes are marked unsettled, to be left out of
// the comparison with the model (the paths must still agree on them).
struct V210Model : ByteModel {
    std::vector<uint32_t> writer;  // 1 + the row that last wrote each byte
    std::vector<bool> unsettled;
    uint32_t row = 0;
    bool orderDependent = false;
    V210Model(std::vector<uint8_t> start, const std::vector<uint8_t>& source)
        : ByteModel(std::move(start), source), writer(dst.size()), unsettled(dst.size()) {}
    void put(size_t i, uint8_t v) {
        unsettled.at(i) = writer.at(i) == row + 1;
        orderDependent |= unsettled[i];
        writer[i] = row + 1;
        d(i) = v;
    }
};

// Fromv210 (bps 1: v >> 2) or Fromv210_16 (bps 2: v << 6, little-endian) with
// the sample positions of L: rows of round_up(width, 12) pixels, packed output
// at row * dstPitch, planar chroma rows dstPitch / 2 apart (16-bit 4:2:0 chroma
// offsets rounded down to even), the odd row's 4:2:0 chroma remaining.
inline void fromv210_model(V210Model& e, unsigned bps, const Geometry& g, const Layout& L) {
    const uint32_t w = g.width, dp = g.dstPitch;
    const size_t sp = std::max(row_bytes(w), g.srcPitch);
    const unsigned ys = (L.planar ? 1 : 2) * bps, cs = (L.planar ? 1 : 4) * bps;
    auto out = [&](size_t at, uint32_t v) {
        if (bps == 1) return e.put(at, static_cast<uint8_t>(v >> 2));
        e.put(at, static_cast<uint8_t>(v << 6));
        e.put(at + 1, static_cast<uint8_t>(v >> 2));
    };
    for (e.row = 0; e.row < g.height; ++e.row) {
        const uint32_t r = e.row;
        size_t c = L.planar ? size_t{L.full ? r : r / 2} * (dp / 2) : size_t{r} * dp;
        if (L.planar && !L.full && bps == 2) c &= ~size_t{1};
        size_t y = L.y + size_t{r} * dp, cb = L.cb + c, cr = L.cr + c;
        for (uint32_t k = 0; k < round_up(w, 12) / 6; ++k) {
            const auto s = read_group(e, r * sp + 16 * k);
            for (unsigned i = 0; i < 6; ++i, y += ys) out(y, s[kY[i]]);
            for (unsigned i = 0; i < 3; ++i, cb += cs, cr += cs)
                out(cb, s[kCb[i]]), out(cr, s[kCr[i]]);
        }
    }
    const uint32_t px = w * g.height;
    e.result = !L.planar ? px * 2 : bps == 1 ? px + px / 2 : L.full ? px * 4 : px * 3;
}

// One v210 row at `out`, whole groups, from 8-bit samples: Y every ys bytes,
// Cb and Cr every cs bytes, each widened by << 2. The positions run on.
inline void pack_row_model(V210Model& e, size_t out, uint32_t w, size_t& y, size_t& cb, size_t& cr,
                           unsigned ys, unsigned cs) {
    for (uint32_t k = 0; k < ceil_div(w, 6); ++k) {
        uint32_t s[12];
        for (unsigned i = 0; i < 6; ++i, y += ys) s[kY[i]] = uint32_t{e.s(y)} << 2;
        for (unsigned i = 0; i < 3; ++i, cb += cs, cr += cs)
            s[kCb[i]] = uint32_t{e.s(cb)} << 2, s[kCr[i]] = uint32_t{e.s(cr)} << 2;
        uint8_t group[16];
        put_group(group, s);
        for (unsigned b = 0; b < 16; ++b) e.put(out + 16 * k + b, group[b]);
    }
}

// Tov210 with the sample positions of L: planar rows tightly packed (luma
// width, chroma width / 2 apart, 4:2:0 chroma row r / 2); packed rows at
// row * srcPitch, or running on when srcPitch == 2 * width.
inline void tov210_model(V210Model& e, const Geometry& g, const Layout& L) {
    const uint32_t w = g.width, dp = std::max(row_bytes(w), g.dstPitch);
    const bool runOn = !L.planar && g.srcPitch == 2 * w;
    size_t y = L.y, cb = L.cb, cr = L.cr;
    for (e.row = 0; e.row < g.height; ++e.row) {
        const uint32_t r = e.row;
        if (L.planar) {
            const size_t c = size_t{L.full ? r : r / 2} * (w / 2);
            y = L.y + size_t{r} * w, cb = L.cb + c, cr = L.cr + c;
        } else if (!runOn) {
            const size_t at = size_t{r} * g.srcPitch;
            y = L.y + at, cb = L.cb + at, cr = L.cr + at;
        }
        pack_row_model(e, size_t{r} * dp, w, y, cb, cr, L.planar ? 1 : 2, L.planar ? 1 : 4);
    }
    e.result = g.height * row_bytes(w);
}

}  // namespace cycbcr_test

// The v210 packing: row size, the scalar packers and unpackers, the UYVY pair.
#include <emmintrin.h>

#include <algorithm>

#include "frame/export.h"
#include "frame/proc_level.h"
#include "ycbcr10/v210.h"

namespace cycbcr::detail {

void uyvy_groups_to_v210(uint8_t* dst, const uint8_t* src, uint32_t groups) {
    for (uint32_t g = 0; g < groups; ++g, src += 12, dst += 16) {
        uint8_t s[12];
        std::memcpy(s, src, 12);  // the whole group is read before any of it is written
        pack_group_u8(dst, s);
    }
}

unsigned int uyvy_to_v210_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, UyvyToV210Rows rows) {
    // This pitch rule differs from the other v210 writers on purpose: a short
    // pitch becomes width * 16 / 6 rounded up to 64 bytes, not the 128-byte
    // row of v210_row_bytes.
    const uint32_t minimum = (width * 16) / 6;
    const uint32_t dp = dstPitch >= minimum ? dstPitch : (minimum + 63) & ~63u;
    const uint32_t sp = std::max(2 * width, srcPitch);
    const uint32_t groups = (width + 5) / 6;
    if (height == 0 || groups == 0) return dstPitch * height;
    const auto overlaps = [groups](const uint8_t* d, size_t dLen, const uint8_t* s, size_t sLen) {
        const auto d0 = reinterpret_cast<uintptr_t>(d);
        const auto s0 = reinterpret_cast<uintptr_t>(s);
        return d0 < s0 + sLen + size_t{12} * groups && s0 < d0 + dLen + size_t{16} * groups;
    };
    const size_t dSpan = static_cast<size_t>(height - 1) * dp;
    const size_t sSpan = static_cast<size_t>(height - 1) * sp;
    if (width > 12 && dp >= size_t{16} * groups && !overlaps(dst, dSpan, src, sSpan)) {
        // With the frames apart and no row reaching into the next, the order of
        // work cannot change a byte: run top to bottom, which the hardware
        // prefetchers follow far better than the reverse.
        for (uint32_t r = 0; r < height; ++r)
            rows(dst + static_cast<size_t>(r) * dp, src + static_cast<size_t>(r) * sp, groups);
        return dstPitch * height;
    }
    // Overlapping frames are worked bottom to top, rows that overlap group by group.
    for (uint32_t r = height; r-- > 0;) {
        uint8_t* d = dst + static_cast<size_t>(r) * dp;
        const uint8_t* s = src + static_cast<size_t>(r) * sp;
        if (width <= 12 || overlaps(d, 0, s, 0))
            uyvy_groups_to_v210(d, s, groups);
        else
            rows(d, s, groups);
    }
    // Kept: the count uses the pitch as passed, 0 included.
    return dstPitch * height;
}

}  // namespace cycbcr::detail

namespace {

using namespace cycbcr::detail;

uint32_t round_up(uint32_t v, uint32_t m) {
    return (v + m - 1) / m * m;
}

// Where the v210 to 8/16-bit unpackers put their samples.
template <class Sample>
struct Placement {
    Sample* y;
    Sample* cb;
    Sample* cr;
    uint32_t dstPitch;
    bool fullHeightChroma;
    bool planar;

    Sample* at(Sample* base, size_t byteOffset) const {
        return reinterpret_cast<Sample*>(reinterpret_cast<uint8_t*>(base) + byteOffset);
    }
    // Row r's luma and chroma starts. 16-bit 4:2:0 chroma rows start on an even
    // byte; the other layouts use the offsets as they fall.
    void row(uint32_t r, Sample*& ry, Sample*& rcb, Sample*& rcr) const {
        const size_t luma = static_cast<size_t>(r) * dstPitch;
        if (!planar) {
            ry = at(y, luma);
            rcb = at(cb, luma);
            rcr = at(cr, luma);
            return;
        }
        size_t chroma = static_cast<size_t>(fullHeightChroma ? r : r / 2) * (dstPitch / 2);
        if (sizeof(Sample) == 2 && !fullHeightChroma) chroma &= ~size_t{1};
        ry = at(y, luma);
        rcb = at(cb, chroma);
        rcr = at(cr, chroma);
    }
};

template <class Sample>
void store_sample(Sample* p, uint32_t v10) {
    if constexpr (sizeof(Sample) == 1) {
        *p = truncate_10to8(v10);
    } else {
        const uint16_t v = static_cast<uint16_t>(v10 << 6);
        std::memcpy(p, &v, 2);  // chroma rows may start on an odd byte
    }
}

// Fromv210 and Fromv210_16: twelve pixels (two groups) per step, so up to 11
// pixels past the width are written in every row and plane. Rows run top to
// bottom, which makes the odd row's chroma the one that stays in 4:2:0 output.
template <class Sample>
void unpack_v210_frame(const Placement<Sample>& out, const uint8_t* src, uint32_t width,
                       uint32_t height, uint32_t srcPitch) {
    const uint32_t sp = std::max(v210_row_bytes(width), srcPitch);
    const uint32_t groups = round_up(width, 12) / kV210GroupPixels;
    const unsigned ystep = out.planar ? 1 : 2;
    const unsigned cstep = out.planar ? 1 : 4;
    for (uint32_t r = 0; r < height; ++r) {
        Sample *y, *cb, *cr;
        out.row(r, y, cb, cr);
        const uint8_t* g = src + static_cast<size_t>(r) * sp;
        for (uint32_t k = 0; k < groups; ++k, g += kV210GroupBytes) {
            uint32_t s[12];
            for (unsigned w = 0; w < 4; ++w) {
                const uint32_t word = load_le32(g + 4 * w);
                s[3 * w] = word & 0x3FF;
                s[3 * w + 1] = (word >> 10) & 0x3FF;
                s[3 * w + 2] = (word >> 20) & 0x3FF;
            }
            for (unsigned i = 0; i < 6; ++i, y += ystep) store_sample(y, s[kGroupY[i]]);
            for (unsigned i = 0; i < 3; ++i, cb += cstep, cr += cstep) {
                store_sample(cb, s[kGroupCb[i]]);
                store_sample(cr, s[kGroupCr[i]]);
            }
        }
    }
}

// Whole groups to rounded, saturated bytes, 12 a group, with SSE2: each word's
// three samples become 16-bit lanes, (v + 2) >> 2 there, and the unsigned
// saturating pack to bytes is the clamp at 255. The four 3-byte results of a
// group are stored as overlapping 32-bit writes, each spare byte rewritten by the
// next; the last group is stored exactly.
void v210_groups_to_bytes_saturated(uint8_t* dst, const uint8_t* src, size_t groups) {
    const __m128i field = _mm_set1_epi32(0x3FF);
    const __m128i two = _mm_set1_epi16(2);
    for (size_t g = 0; g < groups; ++g, src += kV210GroupBytes, dst += 12) {
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
        const __m128i f01 =
            _mm_or_si128(_mm_and_si128(w, field),
                         _mm_slli_epi32(_mm_and_si128(_mm_srli_epi32(w, 10), field), 16));
        const __m128i f2 = _mm_and_si128(_mm_srli_epi32(w, 20), field);
        const __m128i bytes = _mm_packus_epi16(_mm_srli_epi16(_mm_add_epi16(f01, two), 2),
                                               _mm_srli_epi16(_mm_add_epi16(f2, two), 2));
        // Words (v0 v1) and (v2 0) of each word side by side: [v0 v1 v2 0] per word.
        alignas(16) uint8_t d[16];
        _mm_store_si128(reinterpret_cast<__m128i*>(d),
                        _mm_unpacklo_epi16(bytes, _mm_srli_si128(bytes, 8)));
        if (g + 1 < groups) {
            for (unsigned k = 0; k < 4; ++k) std::memcpy(dst + 3 * k, d + 4 * k, 4);
        } else {
            for (unsigned k = 0; k < 4; ++k) std::memcpy(dst + 3 * k, d + 4 * k, 3);
        }
    }
}

// UYVY bytes from v210 samples in address order, starting `first` samples into
// the groups at `src`: output byte j is sample first + j.
template <uint8_t (*Rule)(uint32_t)>
void v210_samples_to_bytes(uint8_t* dst, const uint8_t* src, size_t first, size_t count) {
    const uint8_t* g = src + (first / 12) * kV210GroupBytes;
    unsigned k = static_cast<unsigned>(first % 12);
    while (count != 0) {
        if (k == 0 && count >= 12 && Rule == round_saturate_10to8) {
            const size_t whole = count / 12;
            v210_groups_to_bytes_saturated(dst, g, whole);
            g += whole * kV210GroupBytes;
            dst += whole * 12;
            count -= whole * 12;
            continue;
        }
        for (; k < 12 && count != 0; ++k, --count) *dst++ = Rule(v210_sample(g, k));
        g += kV210GroupBytes;
        k = 0;
    }
}

}  // namespace

extern "C" {

CYCBCR_API unsigned int v210_row_bytes(unsigned int width) {
    return width % 48 == 0 ? width * 8 / 3 : (width / 48 + 1) * 128;
}

CYCBCR_API unsigned int Tov210(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                               unsigned int width, unsigned int height, unsigned int dstPitch,
                               unsigned int srcPitch, unsigned int fullHeightChroma,
                               unsigned int planar) {
    cycbcr::ensure_level();
    const uint32_t rowBytes = v210_row_bytes(width);
    const uint32_t dp = std::max(rowBytes, dstPitch);
    const uint32_t groups = (width + 5) / 6;
    // Packed rows continue where the previous row's last whole group stopped
    // when the pitch is exactly 2 * width; callers rely on this.
    const bool chained = !planar && srcPitch == 2 * width;
    const uint8_t *py = y, *pcb = cb, *pcr = cr;
    for (uint32_t r = 0; r < height; ++r) {
        if (planar) {
            // Planar input is read as tightly packed planes; srcPitch is unused.
            const size_t crow = static_cast<size_t>(fullHeightChroma ? r : r / 2) * (width / 2);
            py = y + static_cast<size_t>(r) * width;
            pcb = cb + crow;
            pcr = cr + crow;
        } else if (!chained) {
            const size_t off = static_cast<size_t>(r) * srcPitch;
            py = y + off;
            pcb = cb + off;
            pcr = cr + off;
        }
        uint8_t* d = dst + static_cast<size_t>(r) * dp;
        const unsigned ys = planar ? 1 : 2;
        const unsigned cs = planar ? 1 : 4;
        for (uint32_t g = 0; g < groups; ++g, d += kV210GroupBytes) {
            uint8_t s[12];
            for (unsigned i = 0; i < 6; ++i, py += ys) s[kGroupY[i]] = *py;
            for (unsigned i = 0; i < 3; ++i, pcb += cs, pcr += cs) {
                s[kGroupCb[i]] = *pcb;
                s[kGroupCr[i]] = *pcr;
            }
            pack_group_u8(d, s);
        }
    }
    return height * rowBytes;
}

CYCBCR_API unsigned int Fromv210(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                                 unsigned int width, unsigned int height, unsigned int dstPitch,
                                 unsigned int srcPitch, unsigned int fullHeightChroma,
                                 unsigned int planar) {
    cycbcr::ensure_level();
    unpack_v210_frame(Placement<uint8_t>{y, cb, cr, dstPitch, fullHeightChroma != 0, planar != 0},
                      src, width, height, srcPitch);
    const uint32_t pixels = width * height;
    return planar ? pixels + pixels / 2 : pixels * 2;
}

CYCBCR_API unsigned int Fromv210_16(void* y, void* cb, void* cr, const uint8_t* src,
                                    unsigned int width, unsigned int height, unsigned int dstPitch,
                                    unsigned int srcPitch, unsigned int fullHeightChroma,
                                    unsigned int planar) {
    cycbcr::ensure_level();
    unpack_v210_frame(Placement<uint16_t>{static_cast<uint16_t*>(y), static_cast<uint16_t*>(cb),
                                          static_cast<uint16_t*>(cr), dstPitch,
                                          fullHeightChroma != 0, planar != 0},
                      src, width, height, srcPitch);
    const uint32_t pixels = width * height;
    if (!planar) return pixels * 2;  // kept: the 8-bit packed figure
    return fullHeightChroma ? pixels * 4 : pixels * 3;
}

CYCBCR_API unsigned int cycbcr_uyvy_to_012v_opt(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    return cycbcr::detail::uyvy_to_v210_frame(dst, src, width, height, dstPitch, srcPitch,
                                              cycbcr::detail::uyvy_groups_to_v210);
}

CYCBCR_API unsigned int cycbcr_uyvy_to_012v(CYCBCR_CONVERTER_ARGS) {
    if (cycbcr::avx2_path())
        return cycbcr_uyvy_to_012v_avx2(dst, src, width, height, dstPitch, srcPitch);
    return cycbcr_uyvy_to_012v_opt(dst, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_012v_to_uyvy_opt(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    const size_t rowOut = size_t{4} * ((width + 1) / 2);  // whole pixel pairs, nothing past
    if (srcPitch == 0) {
        // No pitch: the v210 words are one stream of pixel pairs over all rows,
        // so a row that ends inside a group continues in that group.
        for (uint32_t r = 0; r < height; ++r)
            v210_samples_to_bytes<round_saturate_10to8>(dst + static_cast<size_t>(r) * dstPitch,
                                                        src, r * rowOut, rowOut);
    } else {
        const uint32_t sp = std::max(v210_row_bytes(width), srcPitch);
        for (uint32_t r = 0; r < height; ++r)
            v210_samples_to_bytes<round_saturate_10to8>(dst + static_cast<size_t>(r) * dstPitch,
                                                        src + static_cast<size_t>(r) * sp, 0,
                                                        rowOut);
    }
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_012v_to_uyvy(CYCBCR_CONVERTER_ARGS) {
    if (cycbcr::avx2_path())
        return cycbcr_012v_to_uyvy_avx2(dst, src, width, height, dstPitch, srcPitch);
    return cycbcr_012v_to_uyvy_opt(dst, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_012v_to_012v(CYCBCR_CONVERTER_ARGS) {
    cycbcr_interleaved_copy(dst, src, width, height, dstPitch, srcPitch);
    return height * dstPitch;
}

}  // extern "C"

// The UYVY <-> v210 pair: the plain forms (_opt) and the frame walk they share
// with their AVX2 forms.
#include <emmintrin.h>

#include <algorithm>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_list.h"

namespace cycbcr {

void plain::uyvy_groups_to_v210(uint8_t* dst, const uint8_t* src, uint32_t groups) {
    for (uint32_t g = 0; g < groups; ++g, src += 12, dst += 16) {
        uint8_t s[12];
        std::memcpy(s, src, 12);  // the whole group is read before any of it is written
        pack_group_u8(dst, s);
    }
}

unsigned int uyvy_to_v210_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, GroupRow rows) {
    // This pitch rule differs from the other v210 writers on purpose: a short
    // pitch becomes width * 16 / 6 rounded up to 64 bytes, not the 128-byte
    // row of v210_row_bytes.
    const uint32_t minimum = (width * 16) / 6;
    const uint32_t dp = dstPitch >= minimum ? dstPitch : (minimum + 63) & ~63u;
    const uint32_t sp = std::max(2 * width, srcPitch);
    const uint32_t groups = pack_groups(width);
    if (height == 0 || groups == 0) return dstPitch * height;
    const Rows d = rows_down(dst, dp), s = rows_down(src, sp);
    // Whether a row's (or, with spans, the frame's) source and destination meet,
    // each row counted as its whole groups.
    const auto meet = [groups](const uint8_t* a, size_t aSpan, const uint8_t* b, size_t bSpan) {
        return ranges_overlap(a, aSpan + size_t{16} * groups, b, bSpan + size_t{12} * groups);
    };
    const size_t dSpan = static_cast<size_t>(height - 1) * dp;
    const size_t sSpan = static_cast<size_t>(height - 1) * sp;
    if (width > 12 && dp >= size_t{16} * groups && !meet(dst, dSpan, src, sSpan)) {
        // With the frames apart and no row reaching into the next, the order of
        // work cannot change a byte: run top to bottom, which the hardware
        // prefetchers follow far better than the reverse.
        walk(all_rows(height), [&](uint32_t r) { rows(d.at(r), s.at(r), groups); });
        return dstPitch * height;
    }
    // Overlapping frames are worked bottom to top, rows that overlap group by group.
    walk_upwards(all_rows(height), [&](uint32_t r) {
        if (width <= 12 || meet(d.at(r), 0, s.at(r), 0))
            plain::uyvy_groups_to_v210(d.at(r), s.at(r), groups);
        else
            rows(d.at(r), s.at(r), groups);
    });
    // Kept: the count uses the pitch as passed, 0 included.
    return dstPitch * height;
}

namespace {

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

// UYVY bytes from v210 samples in address order, rounded and saturated,
// starting `first` samples into the groups at `src`: output byte j is sample
// first + j.
void v210_samples_to_bytes(uint8_t* dst, const uint8_t* src, size_t first, size_t count) {
    const uint8_t* g = src + (first / 12) * kV210GroupBytes;
    unsigned k = static_cast<unsigned>(first % 12);
    while (count != 0) {
        if (k == 0 && count >= 12) {
            const size_t whole = count / 12;
            v210_groups_to_bytes_saturated(dst, g, whole);
            g += whole * kV210GroupBytes;
            dst += whole * 12;
            count -= whole * 12;
            continue;
        }
        for (; k < 12 && count != 0; ++k, --count) *dst++ = round_saturate_10to8(v210_sample(g, k));
        g += kV210GroupBytes;
        k = 0;
    }
}

unsigned int v210_to_uyvy_frame(CYCBCR_CONVERTER_ARGS) {
    const size_t rowOut = size_t{4} * ((width + 1) / 2);  // whole pixel pairs, nothing past
    const Rows d = rows_down(dst, dstPitch);
    if (srcPitch == 0) {
        // No pitch: the v210 words are one stream of pixel pairs over all rows,
        // so a row that ends inside a group continues in that group.
        walk(all_rows(height),
             [&](uint32_t r) { v210_samples_to_bytes(d.at(r), src, r * rowOut, rowOut); });
    } else {
        const Rows s = rows_down(src, std::max(v210_row_size(width), srcPitch));
        walk(all_rows(height),
             [&](uint32_t r) { v210_samples_to_bytes(d.at(r), s.at(r), 0, rowOut); });
    }
    return height * dstPitch;
}

// The plain forms by their pair of formats.
template <Format From, Format To, auto>
unsigned int uyvy_pair(CYCBCR_CONVERTER_ARGS) {
    entry(OnEntry::ChooseLevel);
    if constexpr (To == Format::V210)
        return uyvy_to_v210_frame(CYCBCR_CONVERTER_CALL, plain::uyvy_groups_to_v210);
    else
        return v210_to_uyvy_frame(CYCBCR_CONVERTER_CALL);
}

}  // namespace
}  // namespace cycbcr

extern "C" {

#define CYCBCR_ENTRY cycbcr::uyvy_pair
CYCBCR_V210_PLAIN_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

// The v210 group kernels of the AVX2 paths, and the AVX2 forms of the UYVY pair.
#include <immintrin.h>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/formats.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_list.h"

namespace cycbcr::avx2 {
namespace {

inline __m256i load_lanes(const uint8_t* lo, const uint8_t* hi) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lo))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(hi)), 1);
}

inline __m256i load256(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

uint16_t to16(uint32_t v10) {
    return static_cast<uint16_t>(v10 << 6);
}

// Two groups of UYVY (low lane: bytes 0..11 of its load; high lane: bytes 4..15)
// to eight v210 words. Word j takes the three consecutive bytes a, b, c as
// a << 2 | b << 12 | c << 22: a and b through one multiply-add of 16-bit
// halves, c placed at bit 16 and shifted by 6.
inline __m256i pack_two_groups(__m256i v) {
    const __m256i ab = _mm256_setr_epi8(0, -1, 1, -1, 3, -1, 4, -1, 6, -1, 7, -1, 9, -1, 10, -1,  //
                                        4, -1, 5, -1, 7, -1, 8, -1, 10, -1, 11, -1, 13, -1, 14, -1);
    const __m256i c =
        _mm256_setr_epi8(-1, -1, 2, -1, -1, -1, 5, -1, -1, -1, 8, -1, -1, -1, 11, -1, -1, -1, 6, -1,
                         -1, -1, 9, -1, -1, -1, 12, -1, -1, -1, 15, -1);
    const __m256i weights = _mm256_set1_epi32(4 | (4096 << 16));
    return _mm256_or_si256(_mm256_madd_epi16(_mm256_shuffle_epi8(v, ab), weights),
                           _mm256_slli_epi32(_mm256_shuffle_epi8(v, c), 6));
}

// Eight v210 words to their 24 samples as bytes, each lane left holding its
// twelve bytes in bytes 0..11. Rounded and wrapped: bits 2..9 of (v + 2) modulo
// 1024; truncated: bits 2..9 of v.
//
// The 16-bit halves of a word hold v0 in bits 0..9 of the low half and v2 in bits
// 4..13 of the high half; one multiply-high shifts them right by 2 and 6 at once.
// v1 comes from the low half of the word shifted right by 4 (bits 6..15). The
// rounding 2 is added within each half, where the bits below a sample cannot
// carry into it and a carry out of it only reaches bits that are masked off.
template <bool Round>
inline __m256i unpack_two_groups(__m256i w) {
    __m256i outer = w;
    __m256i middle = _mm256_srli_epi32(w, 4);
    if constexpr (Round) {
        outer = _mm256_add_epi16(outer, _mm256_set1_epi32(0x00200002));
        middle = _mm256_add_epi16(middle, _mm256_set1_epi32(0x00000080));
    }
    const __m256i b02 = _mm256_and_si256(_mm256_mulhi_epu16(outer, _mm256_set1_epi32(0x04004000)),
                                         _mm256_set1_epi32(0x00FF00FF));
    const __m256i b1 = _mm256_and_si256(middle, _mm256_set1_epi32(0x0000FF00));
    const __m256i compact =
        _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5, 6,
                         8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    return _mm256_shuffle_epi8(_mm256_or_si256(b02, b1), compact);
}

template <bool Round>
void v210_groups_to_bytes(uint8_t* dst, const uint8_t* src, uint32_t groups) {
    // Four groups a turn: 64 bytes in, 48 out in one 32-byte and one 16-byte store.
    // The source line 8 KiB ahead is requested each turn: frames that come from
    // DRAM run far below memory speed on the hardware prefetcher alone.
    for (; groups >= 4; groups -= 4, src += 64, dst += 48) {
        prefetch(src, 8192);
        const __m256i a = _mm256_permutevar8x32_epi32(unpack_two_groups<Round>(load256(src)),
                                                      _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 0, 0));
        const __m256i b = _mm256_permutevar8x32_epi32(unpack_two_groups<Round>(load256(src + 32)),
                                                      _mm256_setr_epi32(2, 4, 5, 6, 0, 0, 0, 1));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), _mm256_blend_epi32(a, b, 0xC0));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 32), _mm256_castsi256_si128(b));
    }
    for (; groups >= 2; groups -= 2, src += 32, dst += 24) {
        const __m256i r = _mm256_permutevar8x32_epi32(unpack_two_groups<Round>(load256(src)),
                                                      _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm256_castsi256_si128(r));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + 16), _mm256_extracti128_si256(r, 1));
    }
    if (groups != 0)
        for (unsigned k = 0; k < 12; ++k)
            dst[k] =
                Round ? round_wrap_10to8(v210_sample(src, k)) : truncate_10to8(v210_sample(src, k));
}

}  // namespace

GroupRow v210_groups_to_u8(bool round) {
    return round ? v210_groups_to_bytes<true> : v210_groups_to_bytes<false>;
}

void v210_groups_to_u16(uint16_t* dst, const uint8_t* src, uint32_t groups) {
    // Per word: v0 << 6 from the low bits, v1 << 6 and v2 << 6 from shifts down,
    // each kept in its 16-bit slot; then the empty fourth slot is squeezed out.
    const __m256i keep = _mm256_set1_epi32(0xFFC0);
    const __m256i squeeze =
        _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1, 0, 1, 2, 3, 4, 5,
                         8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
    for (; groups >= 2; groups -= 2, src += 32, dst += 24) {
        const __m256i w = load256(src);
        const __m256i s0 = _mm256_and_si256(_mm256_slli_epi32(w, 6), keep);
        const __m256i s1 = _mm256_slli_epi32(_mm256_and_si256(_mm256_srli_epi32(w, 4), keep), 16);
        const __m256i s2 = _mm256_and_si256(_mm256_srli_epi32(w, 14), keep);
        const __m256i ab = _mm256_or_si256(s0, s1);
        // Words 0,1 of each lane, then words 2,3: v0 v1 v2 0 | v0 v1 v2 0.
        const __m256i lo = _mm256_shuffle_epi8(_mm256_unpacklo_epi32(ab, s2), squeeze);
        const __m256i hi = _mm256_shuffle_epi8(_mm256_unpackhi_epi32(ab, s2), squeeze);
        // Lane 0 holds group 0, lane 1 group 1: twelve bytes from lo, then twelve
        // from hi, each stored whole and overlapped by the next.
        auto* d = reinterpret_cast<uint8_t*>(dst);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(lo));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), _mm256_castsi256_si128(hi));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24), _mm256_extracti128_si256(lo, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 36), _mm256_extracti128_si256(hi, 1));
    }
    if (groups != 0)
        for (unsigned k = 0; k < 12; ++k) dst[k] = to16(v210_sample(src, k));
}

void uyvy_groups_to_v210(uint8_t* dst, const uint8_t* src, uint32_t groups) {
    for (; groups >= 4; groups -= 4, src += 48, dst += 64) {
        const __m256i a = pack_two_groups(load_lanes(src, src + 8));
        const __m256i b = pack_two_groups(load_lanes(src + 24, src + 32));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), a);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 32), b);
    }
    plain::uyvy_groups_to_v210(dst, src, groups);
}

namespace {

template <Format From, Format To, auto>
unsigned int uyvy_pair(CYCBCR_CONVERTER_ARGS) {
    if constexpr (To == Format::V210) {
        // The same frame walk, pitch rule and result as the plain form; only the
        // rows that can go four groups at a time use the vector kernel.
        entry(OnEntry::ChooseLevel);
        return uyvy_to_v210_frame(CYCBCR_CONVERTER_CALL, uyvy_groups_to_v210);
    } else {
        // Pitches as passed and the whole last group written: up to 8 bytes past
        // 2 * width in each row.
        const GroupRow row = v210_groups_to_u8(true);
        const uint32_t groups = pack_groups(width);
        const Rows d = rows_down(dst, dstPitch), s = rows_down(src, srcPitch);
        walk(all_rows(height), [&](uint32_t r) { row(d.at(r), s.at(r), groups); });
        return height * dstPitch;
    }
}

}  // namespace
}  // namespace cycbcr::avx2

extern "C" {

#define CYCBCR_ENTRY cycbcr::avx2::uyvy_pair
CYCBCR_V210_UYVY_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

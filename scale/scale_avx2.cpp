// AVX2 row kernels of the reductions: by 1.5, eight groups of six source pixels
// a step into 32 luma, 16 Cb and 16 Cr bytes; by 2, 3 and 4, eight or sixteen
// groups a step. The row's last groups go through the plain kernels, so every
// byte equals theirs.
#include <immintrin.h>

#include <cstring>

#include "platform/memory.h"
#include "scale/scale.h"

namespace cycbcr::scale::avx2 {
namespace {

constexpr size_t kGroupBytes = 16;
// The output lines a few turns ahead are asked for with PREFETCHW (this file is
// built with it; processors without it run it as a no-op), so that a store
// finds its line already owned rather than waiting for the read that fetches it.
constexpr size_t kLumaAhead = 256, kChromaAhead = 128;
inline void prefetch_for_write(const void* p, size_t ahead) {
    __builtin_prefetch(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(p) + ahead), 1, 3);
}
// Luma byte i of a row and, when cb is given, chroma byte i / 2.
inline void own_outputs(uint8_t* y, uint8_t* cb, uint8_t* cr, uint32_t i) {
    prefetch_for_write(y + i, kLumaAhead);
    if (cb != nullptr) {
        prefetch_for_write(cb + i / 2, kChromaAhead);
        prefetch_for_write(cr + i / 2, kChromaAhead);
    }
}
template <bool Chroma>
inline void own_outputs(const StepRow& r, uint32_t i) {
    own_outputs(r.y, Chroma ? r.cb : nullptr, Chroma ? r.cr : nullptr, i);
}

// Truncating byte average: the rounding average less the bit it rounded up.
inline __m256i average_down(__m256i a, __m256i b) {
    const __m256i up = _mm256_and_si256(_mm256_xor_si256(a, b), _mm256_set1_epi8(1));
    return _mm256_sub_epi8(_mm256_avg_epu8(a, b), up);
}

// Eight groups whose results are dwords g0..g7 of luma (four bytes each) and of
// chroma (Cb'0 Cb'1 Cr'0 Cr'1 each): stores 32 luma bytes and, when cb is
// given, 16 Cb and 16 Cr bytes.
inline void store_groups(uint8_t* y, uint8_t* cb, uint8_t* cr, __m256i luma, __m256i chroma) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(y), luma);
    if (cb == nullptr) return;
    // Per lane: the Cb pairs of its four groups, then their Cr pairs.
    const __m256i split = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15, 0,
                                           1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15);
    const __m256i c = _mm256_permute4x64_epi64(_mm256_shuffle_epi8(chroma, split), 0xD8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cb), _mm256_castsi256_si128(c));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cr), _mm256_extracti128_si256(c, 1));
}

// Two UYVY groups, one a lane: the low eight bytes of each lane hold the group's
// four luma results and Cb'0 Cb'1 Cr'0 Cr'1.
inline __m256i uyvy_two_groups(const uint8_t* src) {
    const __m256i v = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 12)), 1);
    const __m256i first =
        _mm256_setr_epi8(1, 5, 7, 11, 0, 8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1, 1, 5, 7, 11, 0,
                         8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i second =
        _mm256_setr_epi8(3, 5, 9, 11, 0, 8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1, 3, 5, 9, 11, 0,
                         8, 2, 10, -1, -1, -1, -1, -1, -1, -1, -1);
    return average_down(_mm256_shuffle_epi8(v, first), _mm256_shuffle_epi8(v, second));
}

// One v210 group a lane: the four luma results as dwords (Y'k = (a + b) >> 3,
// a single sample being taken twice) and the chroma as dwords Cb0 Cb2 Cr0 Cr2,
// each >> 2.
inline __m256i v210_luma(__m256i v) {
    const __m256i mask = _mm256_set1_epi32(0x3FF);
    const __m256i a = _mm256_and_si256(
        _mm256_srlv_epi32(v, _mm256_setr_epi32(10, 20, 10, 20, 10, 20, 10, 20)), mask);
    const __m256i w = _mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 3, 1, 1));
    const __m256i b =
        _mm256_and_si256(_mm256_srlv_epi32(w, _mm256_setr_epi32(0, 20, 0, 20, 0, 20, 0, 20)), mask);
    return _mm256_srli_epi32(_mm256_add_epi32(a, b), 3);
}
inline __m256i v210_chroma(__m256i v) {
    const __m256i w = _mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 0, 2, 0));
    const __m256i c = _mm256_srlv_epi32(w, _mm256_setr_epi32(0, 20, 20, 10, 0, 20, 20, 10));
    return _mm256_srli_epi32(_mm256_and_si256(c, _mm256_set1_epi32(0x3FF)), 2);
}
// Dwords of groups (0 1 | 2 3 | 4 5 | 6 7, a lane each) into bytes, groups in order.
inline __m256i pack_groups(__m256i g01, __m256i g23, __m256i g45, __m256i g67) {
    const __m256i p =
        _mm256_packus_epi16(_mm256_packus_epi32(g01, g23), _mm256_packus_epi32(g45, g67));
    return _mm256_permutevar8x32_epi32(p, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

// Twelve bytes from the low ones of v.
inline void store12(uint8_t* d, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d), v);
    const int last = _mm_cvtsi128_si32(_mm_srli_si128(v, 8));
    std::memcpy(d + 8, &last, 4);
}
// The 24 luma bytes of a turn (bytes 0-23 of l), and its 12 Cb and 12 Cr bytes
// (the low bytes of c's two lanes). A turn with eight more outputs after it
// stores whole vectors: the next turn, or the plain tail, writes over the rest.
inline void store_luma24(uint8_t* y, __m256i l, bool wide) {
    if (wide) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y), l);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(l));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(y + 16), _mm256_extracti128_si256(l, 1));
    }
}
inline void store_chroma12(uint8_t* cb, uint8_t* cr, __m256i c, bool wide) {
    if (wide) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cb), _mm256_castsi256_si128(c));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cr), _mm256_extracti128_si256(c, 1));
    } else {
        store12(cb, _mm256_castsi256_si128(c));
        store12(cr, _mm256_extracti128_si256(c, 1));
    }
}

// Step 2: eight groups (48 pixels) give 24 output pixels, on source pixels 0,
// 2 and 4 of each group, and the chroma of pairs 0 and 2 of the even groups and
// pair 1 of the odd ones. The groups are loaded so that each lane holds four in
// a row (0-3 low, 4-7 high): vector k has groups k and k + 4.
struct Quad {
    __m256i g[4];
};
inline Quad load_quad(const uint8_t* src) {
    Quad q;
    for (int k = 0; k < 4; ++k) {
        const auto* lo = reinterpret_cast<const __m128i*>(src + kGroupBytes * k);
        q.g[k] = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(lo)),
                                         _mm_loadu_si128(lo + 4), 1);
    }
    return q;
}
// Per lane, from groups a b (x, y) words by index: [xi xj yi yj].
template <int i, int j>
inline __m256i words_of(__m256i x, __m256i y) {
    return _mm256_castps_si256(
        _mm256_shuffle_ps(_mm256_castsi256_ps(x), _mm256_castsi256_ps(y), _MM_SHUFFLE(j, i, j, i)));
}
// Word 3 of the lane's four groups.
inline __m256i last_words(const Quad& q) {
    return _mm256_unpackhi_epi64(_mm256_unpackhi_epi32(q.g[0], q.g[1]),
                                 _mm256_unpackhi_epi32(q.g[2], q.g[3]));
}
inline __m256i shifted(__m256i w, int a, int b, int c, int d) {
    return _mm256_srlv_epi32(w, _mm256_setr_epi32(a, b, c, d, a, b, c, d));
}
// Byte 0 of each dword of three vectors (three Y values of groups a..d, in the
// lane's order a01 a23 b01 b23 | c01 c23 d01 d23 | a45 b45 c45 d45) to the 24
// output bytes in pixel order.
inline void store_step2_luma(uint8_t* y, __m256i s1, __m256i s2, __m256i s3, bool wide) {
    const __m256i p1 = _mm256_shuffle_epi8(
        s1, _mm256_setr_epi8(0, 4, -1, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, -1,
                             8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
    const __m256i p2 = _mm256_shuffle_epi8(
        s2, _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, 0, 4, -1, 8, 12, -1, -1, -1, -1, -1, -1, -1,
                             -1, -1, -1, -1, 0, 4, -1, 8, 12, -1, -1, -1, -1, -1));
    const __m256i p3 = _mm256_shuffle_epi8(
        s3, _mm256_setr_epi8(-1, -1, 0, -1, -1, 4, -1, -1, 8, -1, -1, 12, -1, -1, -1, -1, -1, -1, 0,
                             -1, -1, 4, -1, -1, 8, -1, -1, 12, -1, -1, -1, -1));
    const __m256i l = _mm256_permutevar8x32_epi32(_mm256_or_si256(_mm256_or_si256(p1, p2), p3),
                                                  _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    store_luma24(y, l, wide);
}

template <bool Chroma>
inline void step2_chunk(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, bool wide) {
    const Quad q = load_quad(src);
    const __m256i w3 = last_words(q);
    const __m256i a1 = words_of<0, 1>(q.g[0], q.g[1]), a2 = words_of<0, 1>(q.g[2], q.g[3]);
    if (!Chroma) {
        // Y0, Y2 and Y4 of each group, truncated: fields at 10, 20 and 0, less two bits.
        store_step2_luma(y, shifted(a1, 12, 22, 12, 22), shifted(a2, 12, 22, 12, 22),
                         _mm256_srli_epi32(w3, 2), wide);
        return;
    }
    // Pairs Y0 Y1, Y2 Y3, Y4 Y5 summed from clean 10-bit fields, then >> 3.
    const __m256i m = _mm256_set1_epi32(0x3FF);
    const __m256i b1 = words_of<1, 2>(q.g[0], q.g[1]), b2 = words_of<1, 2>(q.g[2], q.g[3]);
    const auto sum = [&](__m256i a, __m256i b) {
        return _mm256_srli_epi32(_mm256_add_epi32(_mm256_and_si256(a, m), _mm256_and_si256(b, m)),
                                 3);
    };
    store_step2_luma(
        y, sum(shifted(a1, 10, 20, 10, 20), shifted(b1, 0, 10, 0, 10)),
        sum(shifted(a2, 10, 20, 10, 20), shifted(b2, 0, 10, 0, 10)),
        // Y4 and Y5 share word 3: kept as Y4 and Y5 << 4 in its halves,
        // one multiply-add gives 16 (Y4 + Y5).
        _mm256_srli_epi32(_mm256_madd_epi16(_mm256_and_si256(w3, _mm256_set1_epi32(0x3FF003FF)),
                                            _mm256_set1_epi32(0x00010010)),
                          7),
        wide);
    // Chroma, truncated: Cb0 Cb4 and Cr0 Cr4 of groups a and c, Cb2 Cr2 of b and d.
    const __m256i c1 = shifted(words_of<0, 2>(q.g[0], q.g[2]), 2, 22, 2, 22);
    const __m256i c2 = shifted(words_of<0, 3>(q.g[0], q.g[2]), 22, 12, 22, 12);
    const __m256i c3 = shifted(words_of<1, 2>(q.g[1], q.g[3]), 12, 2, 12, 2);
    // Per lane: Cb a0 a4 b2 c0 c4 d2 at bytes 0-5, Cr likewise at 8-13.
    const __m256i t = _mm256_or_si256(
        _mm256_or_si256(
            _mm256_shuffle_epi8(
                c1, _mm256_setr_epi8(0, 4, -1, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0,
                                     4, -1, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1)),
            _mm256_shuffle_epi8(
                c2, _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, 0, 4, -1, 8, 12, -1, -1, -1,
                                     -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, -1, 8, 12, -1, -1, -1))),
        _mm256_shuffle_epi8(
            c3, _mm256_setr_epi8(-1, -1, 0, -1, -1, 8, -1, -1, -1, -1, 4, -1, -1, 12, -1, -1, -1,
                                 -1, 0, -1, -1, 8, -1, -1, -1, -1, 4, -1, -1, 12, -1, -1)));
    // The Cb halves to the low lane, the Cr halves to the high one, closed up.
    const __m256i c = _mm256_shuffle_epi8(
        _mm256_permute4x64_epi64(t, 0xD8),
        _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1, 0, 1, 2, 3, 4, 5,
                         8, 9, 10, 11, 12, 13, -1, -1, -1, -1));
    store_chroma12(cb, cr, c, wide);
}

// Step 4 on quads: each lane holds four groups a b c d in a row (24 pixels),
// whose outputs sit on pixels 0 and 4 (a), 8 (b), 12 and 16 (c) and 20 (d),
// with the chroma of pixels 0 (a), 8 (b) and 16 (c). A quad's six luma bytes go
// to bytes At..At+5 of each lane, its Cb to bytes C..C+2 and Cr to 8+C..10+C.
template <int At>
inline __m256i six_bytes(__m256i s1, __m256i s2) {
    // s1: dwords a0 a4 c0 c4 (outputs 0 1 3 4); s2: dwords 0 and 2 (outputs 2 5).
    constexpr char z = -1;
    const __m256i m1 = _mm256_setr_epi8(
        At == 0 ? 0 : z, At == 0 ? 4 : z, z, At == 0 ? 8 : z, At == 0 ? 12 : z, z, z, z,
        At == 8 ? 0 : z, At == 8 ? 4 : z, z, At == 8 ? 8 : z, At == 8 ? 12 : z, z, z, z,
        At == 0 ? 0 : z, At == 0 ? 4 : z, z, At == 0 ? 8 : z, At == 0 ? 12 : z, z, z, z,
        At == 8 ? 0 : z, At == 8 ? 4 : z, z, At == 8 ? 8 : z, At == 8 ? 12 : z, z, z, z);
    const __m256i m2 =
        _mm256_setr_epi8(z, z, At == 0 ? 0 : z, z, z, At == 0 ? 8 : z, z, z, z, z, At == 8 ? 0 : z,
                         z, z, At == 8 ? 8 : z, z, z, z, z, At == 0 ? 0 : z, z, z, At == 0 ? 8 : z,
                         z, z, z, z, At == 8 ? 0 : z, z, z, At == 8 ? 8 : z, z, z);
    return _mm256_or_si256(_mm256_shuffle_epi8(s1, m1), _mm256_shuffle_epi8(s2, m2));
}
template <bool Chroma, int At>
inline __m256i step4_luma(const Quad& q) {
    const __m256i w03 = words_of<0, 3>(q.g[0], q.g[2]);
    if (!Chroma)
        // Y0 and Y4 of a and c, Y2 of b and d, truncated.
        return six_bytes<At>(shifted(w03, 12, 2, 12, 2),
                             _mm256_srli_epi32(words_of<1, 1>(q.g[1], q.g[3]), 22));
    // Pairs Y0 Y1 and Y4 Y5 of a and c, Y2 Y3 of b and d, summed then >> 3.
    const __m256i m = _mm256_set1_epi32(0x3FF);
    const __m256i s1 = _mm256_add_epi32(
        _mm256_and_si256(shifted(w03, 10, 0, 10, 0), m),
        _mm256_and_si256(shifted(words_of<1, 3>(q.g[0], q.g[2]), 0, 20, 0, 20), m));
    const __m256i v = _mm256_and_si256(shifted(words_of<1, 2>(q.g[1], q.g[3]), 20, 10, 20, 10), m);
    const __m256i s2 = _mm256_add_epi32(v, _mm256_srli_epi64(v, 32));
    return six_bytes<At>(_mm256_srli_epi32(s1, 3), _mm256_srli_epi32(s2, 3));
}
template <int C>
inline __m256i step4_chroma(const Quad& q) {
    // Cb0 of a and Cr4 of c; Cr0 of a; Cb2 and Cr2 of b and Cb4 of c; truncated.
    const __m256i w03 = words_of<0, 3>(q.g[0], q.g[2]);
    const __m256i c1 = shifted(w03, 2, 0, 0, 12);
    const __m256i c2 = _mm256_srli_epi32(w03, 22);
    const __m256i c3 = shifted(words_of<1, 2>(q.g[1], q.g[2]), 12, 2, 0, 22);
    constexpr char z = -1;
    // Per lane: Cb a b c at C..C+2, Cr a b c at 8+C..10+C.
    const __m256i m1 = C == 0 ? _mm256_setr_epi8(0, z, z, z, z, z, z, z, z, z, 12, z, z, z, z, z, 0,
                                                 z, z, z, z, z, z, z, z, z, 12, z, z, z, z, z)
                              : _mm256_setr_epi8(z, z, z, 0, z, z, z, z, z, z, z, z, z, 12, z, z, z,
                                                 z, z, 0, z, z, z, z, z, z, z, z, z, 12, z, z);
    const __m256i m2 = C == 0 ? _mm256_setr_epi8(z, z, z, z, z, z, z, z, 0, z, z, z, z, z, z, z, z,
                                                 z, z, z, z, z, z, z, 0, z, z, z, z, z, z, z)
                              : _mm256_setr_epi8(z, z, z, z, z, z, z, z, z, z, z, 0, z, z, z, z, z,
                                                 z, z, z, z, z, z, z, z, z, z, 0, z, z, z, z);
    const __m256i m3 = C == 0 ? _mm256_setr_epi8(z, 0, 12, z, z, z, z, z, z, 4, z, z, z, z, z, z, z,
                                                 0, 12, z, z, z, z, z, z, 4, z, z, z, z, z, z)
                              : _mm256_setr_epi8(z, z, z, z, 0, 12, z, z, z, z, z, z, 4, z, z, z, z,
                                                 z, z, z, 0, 12, z, z, z, z, z, z, 4, z, z, z);
    return _mm256_or_si256(
        _mm256_or_si256(_mm256_shuffle_epi8(c1, m1), _mm256_shuffle_epi8(c2, m2)),
        _mm256_shuffle_epi8(c3, m3));
}
// Sixteen groups (96 pixels) give 24 output pixels: the first quad's outputs are
// 0-5 (low lanes) and 6-11 (high), the second's 12-17 and 18-23.
template <bool Chroma>
inline void step4_quads(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, bool wide) {
    const Quad q0 = load_quad(src), q1 = load_quad(src + 8 * kGroupBytes);
    // Lanes (o0-5 . . o12-17 . .) and (o6-11 . . o18-23 . .): qwords to
    // o0-5 o6-11 | o12-17 o18-23, closed up, then the lanes' 12 bytes together.
    const __m256i close = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1,
                                           0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
    const __m256i l = _mm256_permutevar8x32_epi32(
        _mm256_shuffle_epi8(
            _mm256_permute4x64_epi64(
                _mm256_or_si256(step4_luma<Chroma, 0>(q0), step4_luma<Chroma, 8>(q1)), 0xD8),
            close),
        _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
    store_luma24(y, l, wide);
    if (!Chroma) return;
    // Lanes: Cb (0-2 6-8) Cr (0-2 6-8) and Cb (3-5 9-11) Cr (3-5 9-11): the Cb
    // qwords to the low lane, the Cr ones to the high, each closed up.
    const __m256i order = _mm256_setr_epi8(0, 1, 2, 8, 9, 10, 3, 4, 5, 11, 12, 13, -1, -1, -1, -1,
                                           0, 1, 2, 8, 9, 10, 3, 4, 5, 11, 12, 13, -1, -1, -1, -1);
    const __m256i c = _mm256_shuffle_epi8(
        _mm256_permute4x64_epi64(_mm256_or_si256(step4_chroma<0>(q0), step4_chroma<3>(q1)), 0xD8),
        order);
    store_chroma12(cb, cr, c, wide);
}

// Step 3: eight groups (48 pixels) give 16 output pixels, on source pixels 0
// and 3 of each group, and the chroma of each group's first pair. Loaded as for
// step 2: each lane holds four groups in a row.
template <bool Chroma>
inline void step3_chunk(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src) {
    const Quad q = load_quad(src);
    // Per lane: luma of groups a b at bytes 0-3, of c d at 4-7.
    const __m256i toLow =
        _mm256_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8, 12,
                         -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i toHigh =
        _mm256_setr_epi8(-1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                         -1, 0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1);
    __m256i l1, l2;
    if (Chroma) {
        // Y0 Y1 and Y2 Y3 summed from clean 10-bit fields, then >> 3.
        const __m256i m = _mm256_set1_epi32(0x3FF);
        const auto sum = [&](__m256i x, __m256i z) {
            const __m256i a = _mm256_and_si256(shifted(words_of<0, 1>(x, z), 10, 20, 10, 20), m);
            const __m256i b = _mm256_and_si256(shifted(words_of<1, 2>(x, z), 0, 10, 0, 10), m);
            return _mm256_srli_epi32(_mm256_add_epi32(a, b), 3);
        };
        l1 = sum(q.g[0], q.g[1]);
        l2 = sum(q.g[2], q.g[3]);
    } else {
        // Y0 and Y3 of each group, truncated: both fields at 10.
        l1 = _mm256_srli_epi32(words_of<0, 2>(q.g[0], q.g[1]), 12);
        l2 = _mm256_srli_epi32(words_of<0, 2>(q.g[2], q.g[3]), 12);
    }
    __m256i t = _mm256_or_si256(_mm256_shuffle_epi8(l1, toLow), _mm256_shuffle_epi8(l2, toHigh));
    if (!Chroma) {
        const __m256i l = _mm256_permute4x64_epi64(t, 0xD8);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(l));
        return;
    }
    // Word 0 of the lane's four groups: Cb0 at 0, Cr0 at 20, truncated.
    const __m256i w0 = _mm256_unpacklo_epi64(_mm256_unpacklo_epi32(q.g[0], q.g[1]),
                                             _mm256_unpacklo_epi32(q.g[2], q.g[3]));
    const __m256i cbBytes = _mm256_shuffle_epi8(
        _mm256_srli_epi32(w0, 2),
        _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1,
                         -1, -1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1, -1));
    const __m256i crBytes = _mm256_shuffle_epi8(
        _mm256_srli_epi32(w0, 22),
        _mm256_setr_epi8(-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8, 12, -1, -1, -1,
                         -1, -1, -1, -1, -1, -1, -1, -1, -1, 0, 4, 8, 12));
    t = _mm256_or_si256(t, _mm256_or_si256(cbBytes, crBytes));
    // Lane: luma 0-7, Cb 8-11, Cr 12-15; the lanes' luma, then Cb, then Cr.
    const __m256i o = _mm256_permutevar8x32_epi32(t, _mm256_setr_epi32(0, 1, 4, 5, 2, 6, 3, 7));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(o));
    const __m128i c = _mm256_extracti128_si256(o, 1);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cb), c);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cr), _mm_unpackhi_epi64(c, c));
}

}  // namespace

void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count, SampleGroups unpack, size_t ahead) {
    // The next row's lines under a turn's 128 or 256 source bytes.
    const auto ask = [ahead](const uint8_t* s, size_t bytes) {
        for (size_t k = 0; k < bytes; k += 64) prefetch(s + k, ahead);
    };
    uint32_t i = 0;
    // 24 output pixels a step, from 8 (step 2) or 16 (step 4) whole groups. A
    // turn with eight more outputs after it may store 32 luma and 16 of each
    // chroma bytes whole: the next turn, or the plain tail, writes over the rest.
    if (step == 2) {
        if (cb != nullptr) {
            for (; i + 24 <= count; i += 24) {
                ask(src + kGroupBytes * (i / 3), 128);
                step2_chunk<true>(y + i, cb + i / 2, cr + i / 2, src + kGroupBytes * (i / 3),
                                  i + 32 <= count);
            }
        } else {
            for (; i + 24 <= count; i += 24) {
                ask(src + kGroupBytes * (i / 3), 128);
                step2_chunk<false>(y + i, nullptr, nullptr, src + kGroupBytes * (i / 3),
                                   i + 32 <= count);
            }
        }
    } else if (step == 3) {
        // 16 output pixels a turn, from 8 groups.
        if (cb != nullptr) {
            for (; i + 16 <= count; i += 16) {
                ask(src + kGroupBytes * (i / 2), 128);
                step3_chunk<true>(y + i, cb + i / 2, cr + i / 2, src + kGroupBytes * (i / 2));
            }
        } else {
            for (; i + 16 <= count; i += 16) {
                ask(src + kGroupBytes * (i / 2), 128);
                step3_chunk<false>(y + i, nullptr, nullptr, src + kGroupBytes * (i / 2));
            }
        }
    } else if (step == 4) {
        // 24 output pixels a turn, from 16 groups.
        if (cb != nullptr) {
            for (; i + 24 <= count; i += 24) {
                ask(src + kGroupBytes * (2 * i / 3), 256);
                step4_quads<true>(y + i, cb + i / 2, cr + i / 2, src + kGroupBytes * (2 * i / 3),
                                  i + 32 <= count);
            }
        } else {
            for (; i + 24 <= count; i += 24) {
                ask(src + kGroupBytes * (2 * i / 3), 256);
                step4_quads<false>(y + i, nullptr, nullptr, src + kGroupBytes * (2 * i / 3),
                                   i + 32 <= count);
            }
        }
    }
    plain::v210_step_row(y + i, cb ? cb + i / 2 : nullptr, cr ? cr + i / 2 : nullptr,
                         src + kGroupBytes * size_t{step * i / 6}, step, count - i, unpack, 0);
}

namespace {
// Two rows of the reduction by 2 a turn at a time, so that two source rows
// stream in together.
template <bool C0, bool C1>
uint32_t step2_pair(const StepRow& a, const StepRow& b, uint32_t count, size_t ahead) {
    uint32_t i = 0;
    for (; i + 24 <= count; i += 24) {
        const size_t g = kGroupBytes * (i / 3);
        for (size_t k = 0; k < 128; k += 64) {
            prefetch(a.src + g + k, ahead);
            prefetch(b.src + g + k, ahead);
        }
        own_outputs<C0>(a, i);
        own_outputs<C1>(b, i);
        const bool wide = i + 32 <= count;
        step2_chunk<C0>(a.y + i, C0 ? a.cb + i / 2 : nullptr, C0 ? a.cr + i / 2 : nullptr,
                        a.src + g, wide);
        step2_chunk<C1>(b.y + i, C1 ? b.cb + i / 2 : nullptr, C1 ? b.cr + i / 2 : nullptr,
                        b.src + g, wide);
    }
    return i;
}
}  // namespace

void v210_step_rows(const StepRow& a, const StepRow& b, uint32_t step, uint32_t count,
                    SampleGroups unpack, size_t ahead) {
    if (step != 2) {
        // Each row asks for the one after it.
        v210_step_row(a.y, a.cb, a.cr, a.src, step, count, unpack, ahead / 2);
        v210_step_row(b.y, b.cb, b.cr, b.src, step, count, unpack, ahead / 2);
        return;
    }
    const bool c0 = a.cb != nullptr, c1 = b.cb != nullptr;
    const uint32_t i = c0 ? (c1 ? step2_pair<true, true>(a, b, count, ahead)
                                : step2_pair<true, false>(a, b, count, ahead))
                          : (c1 ? step2_pair<false, true>(a, b, count, ahead)
                                : step2_pair<false, false>(a, b, count, ahead));
    for (const StepRow* r : {&a, &b})
        plain::v210_step_row(r->y + i, r->cb ? r->cb + i / 2 : nullptr,
                             r->cr ? r->cr + i / 2 : nullptr, r->src + kGroupBytes * (i / 3), 2,
                             count - i, unpack, 0);
}

void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead) {
    uint32_t g = 0;
    // Each group is loaded as 16 bytes: keep one more group after the step.
    for (; g + 9 <= groups; g += 8) {
        const uint8_t* s = src + 12 * size_t{g};
        prefetch(s, ahead);  // 96 bytes, in at most two lines
        prefetch(s + 64, ahead);
        own_outputs(y, cb, cr, 4 * g);
        const __m256i r02 = _mm256_unpacklo_epi64(uyvy_two_groups(s), uyvy_two_groups(s + 24));
        const __m256i r46 = _mm256_unpacklo_epi64(uyvy_two_groups(s + 48), uyvy_two_groups(s + 72));
        // r02 dwords: g0Y g0C g2Y g2C | g1Y g1C g3Y g3C; r46 likewise for 4..7.
        const __m256i order = _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7);
        const __m256i a = _mm256_permutevar8x32_epi32(r02, order);
        const __m256i b = _mm256_permutevar8x32_epi32(r46, order);
        store_groups(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                     cr ? cr + 2 * size_t{g} : nullptr, _mm256_permute2x128_si256(a, b, 0x20),
                     _mm256_permute2x128_si256(a, b, 0x31));
    }
    plain::uyvy_row_1_5(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                        cr ? cr + 2 * size_t{g} : nullptr, src + 12 * size_t{g}, groups - g, 0);
}

void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t ahead) {
    uint32_t g = 0;
    for (; g + 8 <= groups; g += 8) {
        const auto* s = reinterpret_cast<const __m256i*>(src + 16 * size_t{g});
        prefetch(s, ahead);
        prefetch(s + 2, ahead);
        own_outputs(y, cb, cr, 4 * g);
        const __m256i v0 = _mm256_loadu_si256(s), v1 = _mm256_loadu_si256(s + 1);
        const __m256i v2 = _mm256_loadu_si256(s + 2), v3 = _mm256_loadu_si256(s + 3);
        const __m256i luma =
            pack_groups(v210_luma(v0), v210_luma(v1), v210_luma(v2), v210_luma(v3));
        const __m256i chroma = cb == nullptr ? luma
                                             : pack_groups(v210_chroma(v0), v210_chroma(v1),
                                                           v210_chroma(v2), v210_chroma(v3));
        store_groups(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                     cr ? cr + 2 * size_t{g} : nullptr, luma, chroma);
    }
    plain::v210_row_1_5(y + 4 * size_t{g}, cb ? cb + 2 * size_t{g} : nullptr,
                        cr ? cr + 2 * size_t{g} : nullptr, src + 16 * size_t{g}, groups - g, 0);
}

}  // namespace cycbcr::scale::avx2

// AVX2 row kernels of the v210 to RGB engines: four groups (24 pixels) a step,
// the same bytes as the plain kernels.
//
// Each step loads the four groups' words three times, eight words at a time,
// and places every pixel's luma and its two chroma pairs (the same pair twice
// for pixels 0, 2, 4) in 32-bit lanes with one permute and one variable shift
// per sample: pixel order from the start, so no lane shuffles are needed later.
// Luma and chroma go to 16-bit halves of each lane and meet their gains in
// madd: every sum is exact in 32 bits.
//
// Divisions: family B's truncating division by 10000 (|sum| < 2^24) is a float
// multiply by the float just above 1/10000 and a truncating conversion, as in
// the 8-bit kernels. Family C's division by 160 of a sum s >= 0 is
// floor(floor(s / 32) / 5): an arithmetic shift by 5 leaves less than 2^20, and
// a float multiply by the float just above 1/5 (0.2f itself) then truncates to
// the integer quotient (the product's error stays below 1/32, while a quotient
// that is not whole is at least 1/5 below the next integer). Negative sums give
// quotients <= 0, which clamp to 0 either way. Family F is a shift. The clamps
// are saturating packs.
#include <immintrin.h>

#include <array>
#include <bit>

#include "platform/memory.h"
#include "torgb/v210_to_rgb.h"

namespace cycbcr::colour::v210rgb {
namespace {

constexpr float kTenThousandth = std::bit_cast<float>(0x38D1B718u);
constexpr float kFifth = std::bit_cast<float>(0x3E4CCCCDu);

// Where each of a step's 24 pixels finds its samples: per 8-pixel block, a word
// index relative to the block's first loaded word and a shift, for luma, the
// left pair and the right pair (Cb and Cr).
struct Place {
    int32_t word[5][8];
    int32_t shift[5][8];
};
constexpr int32_t kBase[3] = {0, 5, 9};  // first loaded word of each block
constexpr std::array<Place, 3> make_places() {
    std::array<Place, 3> t{};
    constexpr int32_t yWord[6] = {0, 1, 1, 2, 3, 3}, yShift[6] = {10, 0, 20, 10, 0, 20};
    constexpr int32_t cbWord[3] = {0, 1, 2}, cbShift[3] = {0, 10, 20};
    constexpr int32_t crWord[3] = {0, 2, 3}, crShift[3] = {20, 0, 10};
    for (int b = 0; b < 3; ++b)
        for (int i = 0; i < 8; ++i) {
            const int p = 8 * b + i, g = p / 6, k = p % 6;
            const int left = p / 2, right = (p + 1) / 2;
            t[b].word[0][i] = 4 * g + yWord[k] - kBase[b];
            t[b].shift[0][i] = yShift[k];
            t[b].word[1][i] = 4 * (left / 3) + cbWord[left % 3] - kBase[b];
            t[b].shift[1][i] = cbShift[left % 3];
            t[b].word[2][i] = 4 * (right / 3) + cbWord[right % 3] - kBase[b];
            t[b].shift[2][i] = cbShift[right % 3];
            t[b].word[3][i] = 4 * (left / 3) + crWord[left % 3] - kBase[b];
            t[b].shift[3][i] = crShift[left % 3];
            t[b].word[4][i] = 4 * (right / 3) + crWord[right % 3] - kBase[b];
            t[b].shift[4][i] = crShift[right % 3];
        }
    return t;
}
constexpr std::array<Place, 3> kPlaces = make_places();
// Every index stays within the eight loaded words (the last block's reach ends
// at the word after the four groups).
constexpr bool places_fit() {
    for (const Place& p : kPlaces)
        for (const auto& row : p.word)
            for (int32_t w : row)
                if (w < 0 || w > 7) return false;
    return true;
}
static_assert(places_fit());

struct Consts {
    __m256i yOffset, chromaMid, low16, mask10;
    __m256i toR, toGa, toGc, toB;  // (luma, Cr') and (luma, Cb') lanes to sums
};
CYCBCR_INLINE __m256i pair16(int32_t lo, int32_t hi) {
    return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                  (static_cast<uint32_t>(lo) & 0xFFFFu)));
}
Consts consts_of(int32_t yOffset, int32_t yGain, int32_t crToR, int32_t crToG, int32_t cbToG,
                 int32_t cbToB) {
    return {_mm256_set1_epi32(yOffset), _mm256_set1_epi32(512), _mm256_set1_epi32(0xFFFF),
            _mm256_set1_epi32(0x3FF),   pair16(yGain, crToR),   pair16(yGain, -crToG),
            pair16(0, -cbToG),          pair16(yGain, cbToB)};
}

struct Sums {
    __m256i r, g, b;
};

CYCBCR_INLINE __m256i sample(__m256i words, const int32_t (&word)[8], const int32_t (&shift)[8],
                             __m256i mask) {
    const __m256i w = _mm256_permutevar8x32_epi32(
        words, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(word)));
    return _mm256_and_si256(
        _mm256_srlv_epi32(w, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(shift))), mask);
}

// The three channel sums of block b of the step at src, in pixel order.
CYCBCR_INLINE Sums block_sums(const uint8_t* src, int b, const Consts& k) {
    const Place& p = kPlaces[b];
    const __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 4 * kBase[b]));
    const __m256i y = _mm256_sub_epi32(sample(words, p.word[0], p.shift[0], k.mask10), k.yOffset);
    const __m256i cb =
        _mm256_srli_epi32(_mm256_add_epi32(sample(words, p.word[1], p.shift[1], k.mask10),
                                           sample(words, p.word[2], p.shift[2], k.mask10)),
                          1);
    const __m256i cr =
        _mm256_srli_epi32(_mm256_add_epi32(sample(words, p.word[3], p.shift[3], k.mask10),
                                           sample(words, p.word[4], p.shift[4], k.mask10)),
                          1);
    const __m256i yl = _mm256_and_si256(y, k.low16);
    const __m256i a = _mm256_or_si256(yl, _mm256_slli_epi32(_mm256_sub_epi32(cr, k.chromaMid), 16));
    const __m256i c = _mm256_or_si256(yl, _mm256_slli_epi32(_mm256_sub_epi32(cb, k.chromaMid), 16));
    return {_mm256_madd_epi16(a, k.toR),
            _mm256_add_epi32(_mm256_madd_epi16(a, k.toGa), _mm256_madd_epi16(c, k.toGc)),
            _mm256_madd_epi16(c, k.toB)};
}

// The quotient of each arithmetic, not yet clamped.
template <Arith A>
CYCBCR_INLINE __m256i divide(__m256i s) {
    if constexpr (A == Arith::B) {
        return _mm256_cvttps_epi32(
            _mm256_mul_ps(_mm256_cvtepi32_ps(s), _mm256_set1_ps(kTenThousandth)));
    } else if constexpr (A == Arith::C) {
        return _mm256_cvttps_epi32(
            _mm256_mul_ps(_mm256_cvtepi32_ps(_mm256_srai_epi32(s, 5)), _mm256_set1_ps(kFifth)));
    } else {
        return _mm256_srai_epi32(s, 7);
    }
}

template <Arith A>
CYCBCR_INLINE Sums quotients(const Sums& s) {
    return {divide<A>(s.r), divide<A>(s.g), divide<A>(s.b)};
}

// Stores of eight pixels of 8-bit channels (quotients in 32-bit lanes) c0..c3
// in address order: 32 bytes, or 24 bytes and 4 bytes of garbage after them
// that the next pixels overwrite.
template <bool Three>
CYCBCR_INLINE void store_bytes(uint8_t* d, __m256i c0, __m256i c1, __m256i c2, __m256i c3) {
    const __m256i bytes =
        _mm256_packus_epi16(_mm256_packs_epi32(c0, c1), _mm256_packs_epi32(c2, c3));
    if constexpr (!Three) {
        const __m256i m = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 0,
                                           4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_shuffle_epi8(bytes, m));
    } else {
        const __m256i m = _mm256_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1, 0,
                                           4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1);
        const __m256i v = _mm256_shuffle_epi8(bytes, m);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(v));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), _mm256_extracti128_si256(v, 1));
    }
}
// The same with 16-bit channels: 64 bytes, or 48 bytes and 4 of garbage.
template <bool Three>
CYCBCR_INLINE void store_words(uint8_t* d, __m256i c0, __m256i c1, __m256i c2, __m256i c3) {
    const __m256i pairs = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0,
                                           1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    const __m256i x = _mm256_shuffle_epi8(_mm256_packus_epi32(c0, c1), pairs);
    const __m256i z = _mm256_shuffle_epi8(_mm256_packus_epi32(c2, c3), pairs);
    const __m256i lo = _mm256_unpacklo_epi32(x, z), hi = _mm256_unpackhi_epi32(x, z);
    const __m256i p0 = _mm256_permute2x128_si256(lo, hi, 0x20);
    const __m256i p1 = _mm256_permute2x128_si256(lo, hi, 0x31);
    if constexpr (!Three) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), p0);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), p1);
    } else {
        const __m256i m = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1,
                                           0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
        const __m256i a = _mm256_shuffle_epi8(p0, m), b = _mm256_shuffle_epi8(p1, m);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(a));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), _mm256_extracti128_si256(a, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24), _mm256_castsi256_si128(b));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 36), _mm256_extracti128_si256(b, 1));
    }
}

// One block of eight packed pixels of depth D in order O.
template <RgbDepth D, RgbOrder O>
CYCBCR_INLINE void store_packed(uint8_t* d, const Sums& q) {
    const __m256i first = blue_first(O) ? q.b : q.r, last = blue_first(O) ? q.r : q.b;
    const __m256i alpha = _mm256_set1_epi32(255);
    constexpr bool three = D == RgbDepth::Rgb24 || D == RgbDepth::Rgb48;
    constexpr bool words = wide_channels(D);
    if constexpr (three) {
        if constexpr (words)
            store_words<true>(d, first, q.g, last, alpha);
        else
            store_bytes<true>(d, first, q.g, last, alpha);
    } else if constexpr (alpha_first(O)) {
        if constexpr (words)
            store_words<false>(d, alpha, first, q.g, last);
        else
            store_bytes<false>(d, alpha, first, q.g, last);
    } else {
        if constexpr (words)
            store_words<false>(d, first, q.g, last, alpha);
        else
            store_bytes<false>(d, first, q.g, last, alpha);
    }
}

// 24 samples of one plane from three blocks' quotients.
CYCBCR_INLINE void store_plane(uint16_t* d, __m256i b0, __m256i b1, __m256i b2) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d),
                        _mm256_permute4x64_epi64(_mm256_packus_epi32(b0, b1), 0xD8));
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(d + 16),
        _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi32(b2, b2), 0x08)));
}

Consts consts_for(Arith a, const Coeffs& c) {
    if (a == Arith::F)
        return consts_of(c.f.yOffset, c.f.k.yGain, c.f.k.crToR, c.f.k.crToG, c.f.k.cbToG,
                         c.f.k.cbToB);
    return consts_of(c.k.yOffset, c.k.yGain, c.k.crToR, c.k.crToG, c.k.cbToG, c.k.cbToB);
}

// Steps of four groups while a whole group follows them (their last pixel's
// right pair and the packed stores' spare bytes stay inside the row's whole
// groups); the rest of the row goes to the plain kernel.
template <Arith A, bool Planar, RgbDepth D, RgbOrder O>
void row_avx2(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c, PlainRow tail) {
    const Consts k = consts_for(A, c);
    const uint32_t groups = width / 6;
    uint32_t g = 0;
    for (; g + 5 <= groups; g += 4, src += 64) {
        prefetch(src, 4096);
        const uint32_t x = 6 * g;
        const Sums q0 = quotients<A>(block_sums(src, 0, k));
        const Sums q1 = quotients<A>(block_sums(src, 1, k));
        const Sums q2 = quotients<A>(block_sums(src, 2, k));
        if constexpr (Planar) {
            store_plane(o.plane[0] + x, q0.r, q1.r, q2.r);
            store_plane(o.plane[1] + x, q0.g, q1.g, q2.g);
            store_plane(o.plane[2] + x, q0.b, q1.b, q2.b);
        } else {
            constexpr size_t bytes = pixel_bytes(D);
            uint8_t* d = o.dst + x * bytes;
            store_packed<D, O>(d, q0);
            store_packed<D, O>(d + 8 * bytes, q1);
            store_packed<D, O>(d + 16 * bytes, q2);
        }
    }
    const uint32_t x = 6 * g;
    RowOut rest = o;
    if constexpr (Planar) {
        for (auto& p : rest.plane) p += x;
    } else {
        rest.dst += x * pixel_bytes(D);
    }
    tail(src, width - x, rest, c);
}

template <Arith A, RgbDepth D>
VectorRow by_order(RgbOrder o) {
    return with_order(o, [&]<RgbOrder O>() -> VectorRow { return row_avx2<A, false, D, O>; });
}

}  // namespace

VectorRow avx2_row(Arith a, RgbDepth d, RgbOrder o, bool planar) {
    if (planar)
        return a == Arith::C ? row_avx2<Arith::C, true, RgbDepth::Rgb48, RgbOrder::RGBA>
                             : row_avx2<Arith::F, true, RgbDepth::Rgb48, RgbOrder::RGBA>;
    if (a == Arith::B) {
        if (d == RgbDepth::Rgb24) return by_order<Arith::B, RgbDepth::Rgb24>(o);
        if (d == RgbDepth::Rgb32) return by_order<Arith::B, RgbDepth::Rgb32>(o);
        return nullptr;
    }
    if (a == Arith::C) {
        if (d == RgbDepth::Rgb48) return by_order<Arith::C, RgbDepth::Rgb48>(o);
        if (d == RgbDepth::Rgb64) return by_order<Arith::C, RgbDepth::Rgb64>(o);
    }
    return nullptr;
}

}  // namespace cycbcr::colour::v210rgb

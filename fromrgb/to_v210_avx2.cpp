// AVX2 row kernels of RGB to v210, with the bytes of the plain rows.
//
// Per-pixel samples, sixteen pixels a step: the pixel bytes become 16-bit
// (B, G) and (R, 0) pairs, one pmaddwd per pair of weights gives a pixel's sum
// in a 32-bit lane (weights beyond 16 bits go in two halves, h x 32768 + l).
// The quotient toward zero by 10,000 is exact through floats: every sum of the
// table is below 2^24 in magnitude, so |s| >> 4 is below 2^20 and
// floor((|s| >> 4) / 625) = floor(|s| / 10,000); the float product with the
// float just above 1/625, truncated, gives that quotient for every value below
// 2^20 (each checked), and the sign is put back after.
//
// Filter: the sums C(2k-1) + 2 C(2k) + 2 C(2k+1) + C(2k+2) of eight chroma
// pairs from two loads and two pmaddwd; the division by 6 of sums up to 6138
// is (x x 10923) >> 16, exact over that range.
//
// Packing: two groups a step, each lane a group: its samples 0-7 and 4-11 in
// two loads, each word's first two samples a + 1024 b by pmaddwd and the third
// shifted to bit 20.
#include <immintrin.h>

#include <bit>
#include <initializer_list>

#include "fromrgb/rgb_words_avx2.h"
#include "fromrgb/to_v210.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"

namespace cycbcr::fromrgb {
namespace {

using namespace avx2;

constexpr float kPer625 = std::bit_cast<float>(0x3AD1B718u);  // just above 1/625
static_assert(double{kPer625} > 1.0 / 625 && double{std::bit_cast<float>(0x3AD1B717u)} < 1.0 / 625);

// A table row's weights of R, G and B.
template <bool Wide>
Weights weights3(const int32_t (&w)[3]) {
    return weights<Wide>(w[0], w[1], w[2]);
}
// The quotient toward zero by 10,000 of |s| < 2^24.
CYCBCR_INLINE __m256i per10000(__m256i s) {
    const __m256 f = _mm256_cvtepi32_ps(_mm256_srli_epi32(_mm256_abs_epi32(s), 4));
    const __m256i q = _mm256_cvttps_epi32(_mm256_mul_ps(f, _mm256_set1_ps(kPer625)));
    return _mm256_sign_epi32(q, s);
}
// Sixteen 32-bit samples (pixels 0-7, 8-15) as 16-bit words in pixel order.
CYCBCR_INLINE void store16(uint16_t* d, __m256i a, __m256i b) {
    const __m256i v = _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), v);
}

template <uint32_t Bytes, bool Wide>
uint32_t pixels_avx2(const uint8_t* src, uint32_t n, const V210Row& k, PixelLayout l,
                     const SampleRows& s) {
    const Unpack m = unpack_masks(l);
    const Weights wy = weights3<Wide>(k.y), wb = weights3<Wide>(k.cb), wr = weights3<Wide>(k.cr);
    const __m256i offset = _mm256_set1_epi32(k.yOffset), top = _mm256_set1_epi32(1023);
    const __m256i mid = _mm256_set1_epi32(512), zero = _mm256_setzero_si256();
    // Three-byte loads reach four bytes past their last pixel: two pixels in
    // hand keep them inside the pixels converted.
    constexpr uint32_t spare = Bytes == 3 ? 2 : 0;
    uint32_t i = 0;
    for (; i + 16 + spare <= n; i += 16) {
        const uint8_t* p = src + size_t{i} * Bytes;
        prefetch(p, kAhead);
        const __m256i v0 = load8<Bytes>(p), v1 = load8<Bytes>(p + 8 * Bytes);
        const Words a{_mm256_shuffle_epi8(v0, m.bg), _mm256_shuffle_epi8(v0, m.r)};
        const Words b{_mm256_shuffle_epi8(v1, m.bg), _mm256_shuffle_epi8(v1, m.r)};
        auto luma = [&](const Words& w) {
            return _mm256_min_epi32(_mm256_add_epi32(per10000(weighted_sum<Wide>(w, wy)), offset),
                                    top);
        };
        auto chroma = [&](const Words& w, const Weights& c) {
            const __m256i v = _mm256_add_epi32(per10000(weighted_sum<Wide>(w, c)), mid);
            return _mm256_min_epi32(_mm256_max_epi32(v, zero), top);
        };
        store16(s.y + i, luma(a), luma(b));
        store16(s.cb + i, chroma(a, wb), chroma(b, wb));
        store16(s.cr + i, chroma(a, wr), chroma(b, wr));
    }
    return i;
}

// Every weight fits a signed 16-bit multiplier.
bool fits16(const V210Row& k) {
    for (const int32_t(*w)[3] : {&k.y, &k.cb, &k.cr})
        for (int32_t c : *w)
            if (c < -32768 || c > 32767) return false;
    return true;
}

template <uint32_t Bytes>
uint32_t pixels_by_row(const uint8_t* src, uint32_t n, const V210Row& k, PixelLayout l,
                       const SampleRows& s) {
    return fits16(k) ? pixels_avx2<Bytes, false>(src, n, k, l, s)
                     : pixels_avx2<Bytes, true>(src, n, k, l, s);
}

}  // namespace

V210Pixels avx2_v210_pixels(PixelLayout l) {
    if (l.bytes == 4) return pixels_by_row<4>;
    if (l.bytes == 3) return pixels_by_row<3>;
    return nullptr;
}

void avx2_v210_filter(const SampleRows& s, uint32_t groups) {
    const __m256i outer = pair16(1, 2), inner = pair16(2, 1);
    const __m256i sixth = _mm256_set1_epi16(10923);
    // Per lane: Cb of four pairs, then their Cr, to Cb Cr pairs.
    static constexpr int8_t kPairs[16] = {0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15};
    const __m256i pairs = lanes(kPairs);
    auto sums = [&](const uint16_t* c) {
        const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c - 1));
        const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c + 1));
        return _mm256_add_epi32(_mm256_madd_epi16(a, outer), _mm256_madd_epi16(b, inner));
    };
    for (uint32_t k = 0; k < 3 * groups; k += 8) {
        const size_t x = 2 * size_t{k};
        const __m256i q =
            _mm256_mulhi_epu16(_mm256_packus_epi32(sums(s.cb + x), sums(s.cr + x)), sixth);
        const __m256i c = _mm256_shuffle_epi8(q, pairs);
        const __m256i y = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s.y + x));
        const __m256i lo = _mm256_unpacklo_epi16(c, y), hi = _mm256_unpackhi_epi16(c, y);
        uint16_t* o = s.packed + 4 * size_t{k};
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), _mm256_permute2x128_si256(lo, hi, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(o + 16),
                            _mm256_permute2x128_si256(lo, hi, 0x31));
    }
}

void avx2_v210_pack(uint8_t* dst, const uint16_t* p, uint32_t groups) {
    // Lane-relative: `head` holds samples 0-7 of the lane's group, `tail` 4-11.
    static constexpr int8_t kAbHead[16] = {0, 1, 2, 3, 6, 7, 8, 9, 12, 13, 14, 15, -1, -1, -1, -1};
    static constexpr int8_t kAbTail[16] = {-1, -1, -1, -1, -1, -1, -1, -1,
                                           -1, -1, -1, -1, 10, 11, 12, 13};
    static constexpr int8_t kCHead[16] = {4,  5,  -1, -1, 10, 11, -1, -1,
                                          -1, -1, -1, -1, -1, -1, -1, -1};
    static constexpr int8_t kCTail[16] = {-1, -1, -1, -1, -1, -1, -1, -1,
                                          8,  9,  -1, -1, 14, 15, -1, -1};
    const __m256i abHead = lanes(kAbHead), abTail = lanes(kAbTail);
    const __m256i cHead = lanes(kCHead), cTail = lanes(kCTail);
    const __m256i weights = pair16(1, 1024);
    uint32_t g = 0;
    for (; g + 2 <= groups; g += 2, p += 24, dst += 32) {
        const __m256i head = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(p + 12),
                                                 reinterpret_cast<const __m128i*>(p));
        const __m256i tail = _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(p + 16),
                                                 reinterpret_cast<const __m128i*>(p + 4));
        const __m256i ab =
            _mm256_or_si256(_mm256_shuffle_epi8(head, abHead), _mm256_shuffle_epi8(tail, abTail));
        const __m256i c =
            _mm256_or_si256(_mm256_shuffle_epi8(head, cHead), _mm256_shuffle_epi8(tail, cTail));
        const __m256i words =
            _mm256_or_si256(_mm256_madd_epi16(ab, weights), _mm256_slli_epi32(c, 20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst), words);
    }
    if (g < groups)
        for (unsigned w = 0; w < 4; ++w)
            store_le32(dst + 4 * w, v210_word(p[3 * w], p[3 * w + 1], p[3 * w + 2]));
}

}  // namespace cycbcr::fromrgb

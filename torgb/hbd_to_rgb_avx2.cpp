// AVX2 rows of the high-bit-depth YCbCr to RGB engines: sixteen pixels a step
// from planar 16-bit samples, the same bytes as the plain rows.
//
// Every product and sum fits 16 x 16 -> 32-bit multiply-adds: masked samples
// less their offset or midpoint stay within 16 bits, the gains are below 2^15,
// and a channel sum stays within 2^27. The truncating division is a float
// multiply and a truncating conversion (hbd_vector_shift, hbd_reciprocal):
// exact for every sum from 0 up to the clamp, as the tests check sum by sum.
// Outside that range only the clamp matters, and every step is monotonic:
// negative sums give quotients of at most 0, larger ones at least max + 1, and
// the saturating packs clamp them as the plain rows do.
#include <immintrin.h>

#include <bit>

#include "platform/memory.h"
#include "torgb/hbd_to_rgb.h"
#include "torgb/rgb24_avx2.h"

namespace cycbcr::colour {
namespace {

template <HbdRule R>
struct Consts {
    __m256i yOffset, mid, mask;
    __m256i yGainEven, yGainOdd;
    __m256i toR, toG, toB;  // per pair (Cr', Cb') 16-bit lanes to 32-bit sums
    __m256 reciprocal;
};
template <HbdRule R>
Consts<R> consts_of(const ToRgbRow<int32_t>& k) {
    auto pair16 = [](int32_t lo, int32_t hi) {
        return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                      (static_cast<uint32_t>(lo) & 0xFFFFu)));
    };
    return {_mm256_set1_epi16(static_cast<int16_t>(k.yOffset)),
            _mm256_set1_epi16(static_cast<int16_t>(R.mid)),
            _mm256_set1_epi16(static_cast<int16_t>(R.mask)),
            pair16(k.yGain, 0),
            pair16(0, k.yGain),
            pair16(k.crToR, 0),
            pair16(-k.crToG, -k.cbToG),
            pair16(0, k.cbToB),
            _mm256_set1_ps(hbd_reciprocal(R.div >> hbd_vector_shift(R)))};
}

template <HbdRule R>
CYCBCR_INLINE __m256i samples(__m256i v, const Consts<R>& c) {
    if constexpr (R.shift != 0)
        return _mm256_srli_epi16(v, R.shift);
    else
        return _mm256_and_si256(v, c.mask);
}

// The quotient of a sum, not yet clamped: exact for 0 <= sum < div * (max + 1);
// a negative sum gives a quotient of at most 0 and a larger one at least max + 1
// (every step is monotonic), so the saturating packs that follow clamp as the
// plain rows do.
template <HbdRule R>
CYCBCR_INLINE __m256i quotient(__m256i sum, const Consts<R>& c) {
    constexpr uint32_t k = hbd_vector_shift(R);
    const __m256i t = k == 0 ? sum : _mm256_srai_epi32(sum, k);
    return _mm256_cvttps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(t), c.reciprocal));
}

// Eight pairs: each channel as quotients of the even pixels and of the odd
// ones, 32-bit lanes (pairs 0-3 in the low 128 bits, 4-7 in the high).
struct Quotients {
    __m256i re, ro, ge, go, be, bo;
};
template <HbdRule R>
CYCBCR_INLINE Quotients compute(const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                                const Consts<R>& c) {
    const __m256i ly = _mm256_sub_epi16(
        samples<R>(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(y)), c), c.yOffset);
    const __m128i vcb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cb));
    const __m128i vcr = _mm_loadu_si128(reinterpret_cast<const __m128i*>(cr));
    const __m256i crcb = _mm256_sub_epi16(
        samples<R>(_mm256_set_m128i(_mm_unpackhi_epi16(vcr, vcb), _mm_unpacklo_epi16(vcr, vcb)), c),
        c.mid);
    const __m256i le = _mm256_madd_epi16(ly, c.yGainEven);
    const __m256i lo = _mm256_madd_epi16(ly, c.yGainOdd);
    const __m256i tr = _mm256_madd_epi16(crcb, c.toR);
    const __m256i tg = _mm256_madd_epi16(crcb, c.toG);
    const __m256i tb = _mm256_madd_epi16(crcb, c.toB);
    return {quotient<R>(_mm256_add_epi32(le, tr), c), quotient<R>(_mm256_add_epi32(lo, tr), c),
            quotient<R>(_mm256_add_epi32(le, tg), c), quotient<R>(_mm256_add_epi32(lo, tg), c),
            quotient<R>(_mm256_add_epi32(le, tb), c), quotient<R>(_mm256_add_epi32(lo, tb), c)};
}

// Per 128-bit lane, from (evens, odds) of two byte channels X (low 8 bytes) and
// Z (high 8 bytes) to X, Z pairs in pixel order.
CYCBCR_INLINE __m256i pixel_order_pairs(__m256i v) {
    const __m256i m = _mm256_setr_epi8(0, 8, 4, 12, 1, 9, 5, 13, 2, 10, 6, 14, 3, 11, 7, 15, 0, 8,
                                       4, 12, 1, 9, 5, 13, 2, 10, 6, 14, 3, 11, 7, 15);
    return _mm256_shuffle_epi8(v, m);
}
// 16-bit lanes from (evens, odds) to pixel order, per 128-bit lane.
CYCBCR_INLINE __m256i pixel_order_words(__m256i v) {
    const __m256i m = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0, 1,
                                       8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    return _mm256_shuffle_epi8(v, m);
}
template <bool Stream = false>
CYCBCR_INLINE void put(uint8_t* d, __m256i v) {
    if constexpr (Stream)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(d), v);
    else
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), v);
}
CYCBCR_INLINE void put(uint8_t* d, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
}

// Sixteen 4-byte pixels, channels in address order c0..c3 (16-bit lanes in the
// packs' order, values 0..255).
template <bool Stream>
CYCBCR_INLINE void store32(uint8_t* d, __m256i c0, __m256i c1, __m256i c2, __m256i c3) {
    const __m256i p01 = pixel_order_pairs(_mm256_packus_epi16(c0, c1));
    const __m256i p23 = pixel_order_pairs(_mm256_packus_epi16(c2, c3));
    const __m256i lo = _mm256_unpacklo_epi16(p01, p23), hi = _mm256_unpackhi_epi16(p01, p23);
    put<Stream>(d, _mm256_permute2x128_si256(lo, hi, 0x20));
    put<Stream>(d + 32, _mm256_permute2x128_si256(lo, hi, 0x31));
}

// Sixteen pixels of four 16-bit words, channels w0..w3 in address order (16-bit
// lanes in pixel order). With Three, each pixel's fourth word is dropped:
// pixels of three words, stored 16 bytes at a time 12 bytes apart, so the last
// store reaches 4 bytes past the block.
template <bool Three, bool Stream>
CYCBCR_INLINE void store_words(uint8_t* d, __m256i w0, __m256i w1, __m256i w2, __m256i w3) {
    const __m256i a_lo = _mm256_unpacklo_epi16(w0, w1), a_hi = _mm256_unpackhi_epi16(w0, w1);
    const __m256i b_lo = _mm256_unpacklo_epi16(w2, w3), b_hi = _mm256_unpackhi_epi16(w2, w3);
    // Two pixels per 128-bit lane: 0-1 | 8-9, 2-3 | 10-11, 4-5 | 12-13, 6-7 | 14-15.
    const __m256i q[4] = {_mm256_unpacklo_epi32(a_lo, b_lo), _mm256_unpackhi_epi32(a_lo, b_lo),
                          _mm256_unpacklo_epi32(a_hi, b_hi), _mm256_unpackhi_epi32(a_hi, b_hi)};
    if constexpr (Three) {
        const __m256i drop =
            _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1, 0, 1, 2, 3, 4,
                             5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
        // In address order: each store's last 4 bytes are overwritten by the next.
        __m256i v[4];
        for (int i = 0; i < 4; ++i) v[i] = _mm256_shuffle_epi8(q[i], drop);
        for (int i = 0; i < 4; ++i) put(d + 12 * i, _mm256_castsi256_si128(v[i]));
        for (int i = 0; i < 4; ++i) put(d + 48 + 12 * i, _mm256_extracti128_si256(v[i], 1));
    } else {
        put<Stream>(d, _mm256_permute2x128_si256(q[0], q[1], 0x20));
        put<Stream>(d + 32, _mm256_permute2x128_si256(q[2], q[3], 0x20));
        put<Stream>(d + 64, _mm256_permute2x128_si256(q[0], q[1], 0x31));
        put<Stream>(d + 96, _mm256_permute2x128_si256(q[2], q[3], 0x31));
    }
}

// The packed 10-bit word of each pixel, from 32-bit quotients.
CYCBCR_INLINE __m256i word10(__m256i r, __m256i g, __m256i b) {
    const __m256i three = _mm256_set1_epi32(3);
    const __m256i w = _mm256_or_si256(_mm256_slli_epi32(_mm256_andnot_si256(three, r), 14),
                                      _mm256_and_si256(r, three));
    const __m256i wb =
        _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi32(b, 28), _mm256_set1_epi32(0x30000000)),
                        _mm256_srli_epi32(b, 2));
    const __m256i wg =
        _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi32(g, 2), _mm256_set1_epi32(12)),
                        _mm256_slli_epi32(_mm256_srli_epi32(g, 2), 8));
    return _mm256_or_si256(w, _mm256_or_si256(wb, wg));
}

template <HbdRule R, HbdOut Out, RgbOrder O, bool Stream>
CYCBCR_INLINE void store(uint8_t* d, const Quotients& q) {
    if constexpr (Out == HbdOut::Rgb32) {
        const __m256i r = _mm256_packs_epi32(q.re, q.ro), g = _mm256_packs_epi32(q.ge, q.go);
        const __m256i b = _mm256_packs_epi32(q.be, q.bo), a = _mm256_set1_epi16(255);
        const __m256i first = blue_first(O) ? b : r, last = blue_first(O) ? r : b;
        if constexpr (alpha_first(O))
            store32<Stream>(d, a, first, g, last);
        else
            store32<Stream>(d, first, g, last, a);
    } else if constexpr (Out == HbdOut::Rgb24) {
        const __m256i r = _mm256_packs_epi32(q.re, q.ro), g = _mm256_packs_epi32(q.ge, q.go);
        const __m256i b = _mm256_packs_epi32(q.be, q.bo);
        avx2_rgb24::store16(d, blue_first(O) ? b : r, g, blue_first(O) ? r : b);
    } else if constexpr (Out == HbdOut::Rgb555 || Out == HbdOut::Rgb565) {
        const __m256i zero = _mm256_setzero_si256(), top = _mm256_set1_epi16(255);
        auto ch = [&](__m256i e, __m256i o) {
            return _mm256_min_epi16(_mm256_max_epi16(_mm256_packs_epi32(e, o), zero), top);
        };
        const __m256i r = ch(q.re, q.ro), g = ch(q.ge, q.go), b = ch(q.be, q.bo);
        const __m256i f = blue_first(O) ? b : r, l = blue_first(O) ? r : b;
        __m256i w;
        if constexpr (Out == HbdOut::Rgb555) {
            w = _mm256_or_si256(
                _mm256_and_si256(_mm256_slli_epi16(f, 7), _mm256_set1_epi16(0x7C00)),
                _mm256_or_si256(
                    _mm256_and_si256(_mm256_slli_epi16(g, 2), _mm256_set1_epi16(0x03E0)),
                    _mm256_srli_epi16(l, 3)));
        } else {
            w = _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(f, 8),
                                                 _mm256_set1_epi16(static_cast<short>(0xF800))),
                                _mm256_or_si256(_mm256_and_si256(_mm256_slli_epi16(g, 3),
                                                                 _mm256_set1_epi16(0x07E0)),
                                                _mm256_srli_epi16(l, 3)));
        }
        const __m256i v = pixel_order_words(w);
        put(d, _mm256_permute2x128_si256(v, v, 0x20));
        put(d + 16, _mm256_extracti128_si256(v, 1));
    } else if constexpr (Out == HbdOut::Word10) {
        // No pack to clamp here: clamp the quotients themselves.
        const __m256i zero = _mm256_setzero_si256(), top = _mm256_set1_epi32(R.max);
        auto cl = [&](__m256i v) { return _mm256_min_epi32(_mm256_max_epi32(v, zero), top); };
        const __m256i we = word10(cl(q.re), cl(q.ge), cl(q.be));
        const __m256i wo = word10(cl(q.ro), cl(q.go), cl(q.bo));
        const __m256i lo = _mm256_unpacklo_epi32(we, wo), hi = _mm256_unpackhi_epi32(we, wo);
        put<Stream>(d, _mm256_permute2x128_si256(lo, hi, 0x20));
        put<Stream>(d + 32, _mm256_permute2x128_si256(lo, hi, 0x31));
    } else {
        const __m256i r = pixel_order_words(_mm256_packus_epi32(q.re, q.ro));
        const __m256i g = pixel_order_words(_mm256_packus_epi32(q.ge, q.go));
        const __m256i b = pixel_order_words(_mm256_packus_epi32(q.be, q.bo));
        const __m256i first = blue_first(O) ? b : r, last = blue_first(O) ? r : b;
        if constexpr (Out == HbdOut::Rgb48) {
            store_words<true, false>(d, first, g, last, last);
        } else {
            const __m256i a = _mm256_set1_epi16(-1);
            if constexpr (alpha_first(O))
                store_words<false, Stream>(d, a, first, g, last);
            else
                store_words<false, Stream>(d, first, g, last, a);
        }
    }
}

template <HbdRule R, HbdOut Out, RgbOrder O, bool Stream>
void row_avx2(const HbdRowArgs& a, const ToRgbRow<int32_t>& k, HbdPlainRow tail) {
    // Three-word pixels are stored 4 bytes past the block: keep one pair for the
    // plain tail so nothing past the row is written.
    constexpr uint32_t spare = Out == HbdOut::Rgb48 ? 1 : 0;
    const Consts<R> c = consts_of<R>(k);
    uint8_t* d = a.dst;
    const uint8_t *y = a.y, *cb = a.cb, *cr = a.cr;
    uint32_t p = 0;
    for (; p + 8 + spare <= a.pairs; p += 8) {
        prefetch(y, 4096);
        prefetch(cb, 2048);
        prefetch(cr, 2048);
        store<R, Out, O, Stream>(d, compute<R>(y, cb, cr, c));
        d += 16 * out_bytes(Out);
        y += 32;
        cb += 16;
        cr += 16;
    }
    if (p < a.pairs) tail({d, y, cb, cr, a.pairs - p}, k);
}

template <HbdRule R, HbdOut Out>
HbdVectorRow by_order(RgbOrder o, bool stream) {
    // Only 4- and 8-byte pixels make whole 32-byte blocks: the others store cached.
    if (Out != HbdOut::Rgb32 && Out != HbdOut::Rgb64 && Out != HbdOut::Word10) stream = false;
    return with_order(o, [&]<RgbOrder O>() -> HbdVectorRow {
        return stream ? row_avx2<R, Out, O, true> : row_avx2<R, Out, O, false>;
    });
}
template <HbdRule R>
HbdVectorRow by_out(HbdOut out, RgbOrder o, bool stream) {
    if constexpr (R.max == 255) {
        switch (out) {
            case HbdOut::Rgb555:
                return by_order<R, HbdOut::Rgb555>(o, false);
            case HbdOut::Rgb565:
                return by_order<R, HbdOut::Rgb565>(o, false);
            case HbdOut::Rgb24:
                return by_order<R, HbdOut::Rgb24>(o, false);
            case HbdOut::Rgb32:
                return by_order<R, HbdOut::Rgb32>(o, stream);
            default:
                break;
        }
    } else {
        switch (out) {
            case HbdOut::Rgb48:
                return by_order<R, HbdOut::Rgb48>(o, false);
            case HbdOut::Rgb64:
                return by_order<R, HbdOut::Rgb64>(o, stream);
            case HbdOut::Word10:
                // The word's fields are fixed: no channel order.
                return by_order<R, HbdOut::Word10>(RgbOrder::BGRA, stream);
            default:
                break;
        }
    }
    return nullptr;
}

constexpr bool same(const HbdRule& a, const HbdRule& b) {
    return a.family == b.family && a.mask == b.mask && a.shift == b.shift && a.mid == b.mid &&
           a.div == b.div && a.max == b.max;
}

}  // namespace

HbdVectorRow hbd_avx2_row(const HbdRule& r, HbdOut out, RgbOrder o, bool stream) {
    if (same(r, kRule10A)) return by_out<kRule10A>(out, o, stream);
    if (same(r, kRule10C)) return by_out<kRule10C>(out, o, stream);
    if (same(r, kRule12C)) return by_out<kRule12C>(out, o, stream);
    if (same(r, kRule16A)) return by_out<kRule16A>(out, o, stream);
    if (same(r, kRule10B)) return by_out<kRule10B>(out, o, stream);
    return nullptr;
}

}  // namespace cycbcr::colour

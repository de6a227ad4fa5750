// AVX2 row kernels of the v210 to RGB engines, the same bytes as the plain
// kernels. A run of groups is first split into 16-bit rows of centred luma and
// chroma pairs that stay in the cache (two groups a turn: a shuffle, a
// multiply, a shift and a subtraction); then sixteen pixels at a time take
// their luma, their pair, and for each odd pixel the truncated average with the
// next pair. Luma and chroma meet in the 16-bit halves of each pixel's lane and
// their gains in madd: every sum is exact in 32 bits.
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

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/memory.h"
#include "torgb/v210_to_rgb.h"

namespace cycbcr::colour::v210rgb {
namespace {

constexpr float kTenThousandth = std::bit_cast<float>(0x38D1B718u);
constexpr float kFifth = std::bit_cast<float>(0x3E4CCCCDu);

struct Consts {
    __m256i yOffset, chromaMid;
    __m256i toR, toGa, toGc, toB;  // (luma, Cr') and (luma, Cb') lanes to sums
};
CYCBCR_INLINE __m256i pair16(int32_t lo, int32_t hi) {
    return _mm256_set1_epi32(static_cast<int32_t>((static_cast<uint32_t>(hi) << 16) |
                                                  (static_cast<uint32_t>(lo) & 0xFFFFu)));
}
Consts consts_of(int32_t yOffset, int32_t yGain, int32_t crToR, int32_t crToG, int32_t cbToG,
                 int32_t cbToB) {
    return {_mm256_set1_epi16(static_cast<int16_t>(yOffset)),
            _mm256_set1_epi16(512),
            pair16(yGain, crToR),
            pair16(yGain, -crToG),
            pair16(0, -cbToG),
            pair16(yGain, cbToB)};
}

struct Sums {
    __m256i r, g, b;
};

// Splits `groups` groups (even) at src into 16-bit rows: luma less the row's
// offset y[0 .. 6 * groups), and chroma pairs less 512, c[2k] = Cb, c[2k + 1] =
// Cr of pair k, followed by the pair of the word after the groups (the
// read-ahead). Two groups a turn, one a lane: one shuffle brings each sample's
// two bytes into a 16-bit lane, and a multiply by 2^(6 - s) and a shift right by
// 6 keep its ten bits (s = 0, 2, 4: where the sample starts in those bytes;
// bits 30-31 of a word fall out). Each turn's stores reach 2 samples past its
// own, which the next turn (or the read-ahead pair) rewrites; the rows have
// room for them.
void split_groups(const uint8_t* src, uint32_t groups, int16_t* y, int16_t* c, const Consts& k) {
    const __m256i ySel = _mm256_setr_epi8(1, 2, 4, 5, 6, 7, 9, 10, 12, 13, 14, 15, -1, -1, -1, -1,
                                          1, 2, 4, 5, 6, 7, 9, 10, 12, 13, 14, 15, -1, -1, -1, -1);
    const __m256i cSel = _mm256_setr_epi8(0, 1, 2, 3, 5, 6, 8, 9, 10, 11, 13, 14, -1, -1, -1, -1, 0,
                                          1, 2, 3, 5, 6, 8, 9, 10, 11, 13, 14, -1, -1, -1, -1);
    const __m256i yMul = _mm256_setr_epi16(16, 64, 4, 16, 64, 4, 0, 0, 16, 64, 4, 16, 64, 4, 0, 0);
    const __m256i cMul = _mm256_setr_epi16(64, 4, 16, 64, 4, 16, 0, 0, 64, 4, 16, 64, 4, 16, 0, 0);
    for (uint32_t i = 0; i < groups; i += 2, src += 32, y += 12, c += 12) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src));
        const __m256i ys = _mm256_sub_epi16(
            _mm256_srli_epi16(_mm256_mullo_epi16(_mm256_shuffle_epi8(v, ySel), yMul), 6),
            k.yOffset);
        const __m256i cs = _mm256_sub_epi16(
            _mm256_srli_epi16(_mm256_mullo_epi16(_mm256_shuffle_epi8(v, cSel), cMul), 6),
            k.chromaMid);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y), _mm256_castsi256_si128(ys));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(y + 6), _mm256_extracti128_si256(ys, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(c), _mm256_castsi256_si128(cs));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(c + 6), _mm256_extracti128_si256(cs, 1));
    }
    const uint32_t next = word_at(src, 0);
    c[0] = static_cast<int16_t>(static_cast<int32_t>(next & 0x3FF) - 512);
    c[1] = static_cast<int16_t>(static_cast<int32_t>((next >> 20) & 0x3FF) - 512);
}

// The channel sums of sixteen pixels from the split rows (luma at y, pair k of
// pixels 2k and 2k + 1 at c + 2k): `a` holds pixels 0-3 and 8-11 (low and high
// lane), `b` pixels 4-7 and 12-15. Each odd pixel takes the truncated average of
// its pair and the next; luma and chroma meet in the 16-bit halves of each
// pixel's lane, their gains in madd.
struct Sums16 {
    Sums a, b;
};
CYCBCR_INLINE Sums16 block_sums(const int16_t* y, const int16_t* c, const Consts& k) {
    const __m256i luma = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(y));
    const __m256i own = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c));
    const __m256i next = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c + 2));
    const __m256i avg = _mm256_srai_epi16(_mm256_add_epi16(own, next), 1);
    auto sums = [&](__m256i l, __m256i uv) {
        const __m256i a = _mm256_blend_epi16(l, uv, 0xAA);                         // (luma, Cr')
        const __m256i b = _mm256_blend_epi16(l, _mm256_slli_epi32(uv, 16), 0xAA);  // (luma, Cb')
        return Sums{_mm256_madd_epi16(a, k.toR),
                    _mm256_add_epi32(_mm256_madd_epi16(a, k.toGa), _mm256_madd_epi16(b, k.toGc)),
                    _mm256_madd_epi16(b, k.toB)};
    };
    return {sums(_mm256_unpacklo_epi16(luma, luma), _mm256_unpacklo_epi32(own, avg)),
            sums(_mm256_unpackhi_epi16(luma, luma), _mm256_unpackhi_epi32(own, avg))};
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

// Sixteen pixels of 8-bit channels c0..c3 in address order (quotients, halves
// as block_sums leaves them): 64 bytes, or 48 bytes and 4 bytes after them that
// the next pixels overwrite (stores in address order).
template <bool Three, bool Stream>
CYCBCR_INLINE void store_bytes(uint8_t* d, const __m256i (&a)[4], const __m256i (&b)[4]) {
    auto bytes = [](const __m256i(&c)[4], __m256i m) {
        return _mm256_shuffle_epi8(
            _mm256_packus_epi16(_mm256_packs_epi32(c[0], c[1]), _mm256_packs_epi32(c[2], c[3])), m);
    };
    if constexpr (!Three) {
        const __m256i m = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 0,
                                           4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        const __m256i va = bytes(a, m), vb = bytes(b, m);
        const __m256i lo = _mm256_permute2x128_si256(va, vb, 0x20);
        const __m256i hi = _mm256_permute2x128_si256(va, vb, 0x31);
        if constexpr (Stream) {
            _mm256_stream_si256(reinterpret_cast<__m256i*>(d), lo);
            _mm256_stream_si256(reinterpret_cast<__m256i*>(d + 32), hi);
        } else {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), lo);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), hi);
        }
    } else {
        const __m256i m = _mm256_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1, 0,
                                           4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1);
        const __m256i va = bytes(a, m), vb = bytes(b, m);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(va));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 12), _mm256_castsi256_si128(vb));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24), _mm256_extracti128_si256(va, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 36), _mm256_extracti128_si256(vb, 1));
    }
}
// The same with 16-bit channels: 128 bytes, or 96 bytes and 4 after them.
template <bool Three>
CYCBCR_INLINE void store_words(uint8_t* d, const __m256i (&a)[4], const __m256i (&b)[4]) {
    const __m256i pairs = _mm256_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15, 0,
                                           1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
    // Four whole pixels of each lane: pixels 0-3 and 8-11 of `a`, 4-7 and 12-15
    // of `b`.
    auto quads = [&](const __m256i(&c)[4], __m256i* first, __m256i* second) {
        const __m256i x = _mm256_shuffle_epi8(_mm256_packus_epi32(c[0], c[1]), pairs);
        const __m256i z = _mm256_shuffle_epi8(_mm256_packus_epi32(c[2], c[3]), pairs);
        const __m256i lo = _mm256_unpacklo_epi32(x, z), hi = _mm256_unpackhi_epi32(x, z);
        *first = _mm256_permute2x128_si256(lo, hi, 0x20);
        *second = _mm256_permute2x128_si256(lo, hi, 0x31);
    };
    __m256i q[4];
    quads(a, &q[0], &q[2]);
    quads(b, &q[1], &q[3]);
    if constexpr (!Three) {
        for (int i = 0; i < 4; ++i)
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32 * i), q[i]);
    } else {
        const __m256i m = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1,
                                           0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, -1, -1, -1, -1);
        for (int i = 0; i < 4; ++i) {
            const __m256i v = _mm256_shuffle_epi8(q[i], m);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24 * i), _mm256_castsi256_si128(v));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 24 * i + 12),
                             _mm256_extracti128_si256(v, 1));
        }
    }
}

// Sixteen packed pixels of depth D in order O; with Stream (32-bit pixels only)
// streaming stores to a 32-byte aligned address.
template <RgbDepth D, RgbOrder O, bool Stream>
CYCBCR_INLINE void store_packed(uint8_t* d, const Sums& qa, const Sums& qb) {
    const __m256i alpha = _mm256_set1_epi32(255);
    auto order = [&](const Sums& q, __m256i(&c)[4]) {
        const __m256i first = blue_first(O) ? q.b : q.r, last = blue_first(O) ? q.r : q.b;
        if (D == RgbDepth::Rgb24 || D == RgbDepth::Rgb48 || !alpha_first(O)) {
            c[0] = first, c[1] = q.g, c[2] = last, c[3] = alpha;
        } else {
            c[0] = alpha, c[1] = first, c[2] = q.g, c[3] = last;
        }
    };
    __m256i a[4], b[4];
    order(qa, a);
    order(qb, b);
    constexpr bool three = D == RgbDepth::Rgb24 || D == RgbDepth::Rgb48;
    if constexpr (wide_channels(D))
        store_words<three>(d, a, b);
    else
        store_bytes<three, Stream>(d, a, b);
}

// The vector constants of each arithmetic. Family C is the master set x 10240
// truncated, gain by gain, and its offset the master offset x 4 (10-bit steps):
// built here from get_coeffs (every product is at least 0.04 from the next
// integer, or whole). Family B's gains were rounded one by one (0.698 x 2500 is
// 1745, the table says 1744; 0.813 x 2500 is 2032.5, the table 2032), so no rule
// on the master set gives them: its rows come from the table, as the plain
// kernels' do. Family F is the table's Q13 row.
Consts consts_of_arith(Arith a, const Coeffs& c) {
    if (a == Arith::F)
        return consts_of(c.f.yOffset, c.f.k.yGain, c.f.k.crToR, c.f.k.crToG, c.f.k.cbToG,
                         c.f.k.cbToB);
    if (a == Arith::C) {
        double yGain, crToR, crToG, cbToG, cbToB, yOffset;
        get_coeffs(c.matrix, &yGain, &crToR, &crToG, &cbToG, &cbToB, &yOffset);
        auto scaled = [](double v) { return static_cast<int32_t>(v * 10240.0 + 1e-6); };
        return consts_of(static_cast<int32_t>(yOffset) * 4, scaled(yGain), scaled(crToR),
                         scaled(crToG), scaled(cbToG), scaled(cbToB));
    }
    return consts_of(c.k.yOffset, c.k.yGain, c.k.crToR, c.k.crToG, c.k.cbToG, c.k.cbToB);
}

// 48 pixels from the split rows at ys, cs, stored from pixel x of `o`.
template <Arith A, bool Planar, RgbDepth D, RgbOrder O, bool Stream>
CYCBCR_INLINE void convert_step(const int16_t* ys, const int16_t* cs, const Consts& k,
                                const RowOut& o, uint32_t x) {
    for (uint32_t i = 0; i < 48; i += 16) {
        const Sums16 s = block_sums(ys + i, cs + i, k);
        const Sums qa = quotients<A>(s.a), qb = quotients<A>(s.b);
        if constexpr (Planar) {
            // One pack puts sixteen samples in pixel order.
            auto put = [&](uint16_t* p, __m256i va, __m256i vb) {
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + x + i),
                                    _mm256_packus_epi32(va, vb));
            };
            put(o.plane[0], qa.r, qb.r);
            put(o.plane[1], qa.g, qb.g);
            put(o.plane[2], qa.b, qb.b);
        } else {
            store_packed<D, O, Stream>(o.dst + (x + i) * pixel_bytes(D), qa, qb);
        }
    }
}

// Runs of up to kRunGroups groups (a multiple of 8), split into 16-bit rows in
// the cache and then converted 48 pixels a step, while a whole group follows
// the run (its first pair is the run's read-ahead, and the packed stores' spare
// bytes land on its pixels). The last one to eight whole groups go through a
// small copy: their words and the read-ahead word (which the row has, as every
// whole group's last pixel reads it), converted into a temporary row of which
// only their pixels are copied out. A partial group at the end of the row goes
// to the plain kernel.
constexpr uint32_t kRunGroups = 64;
template <Arith A, bool Planar, RgbDepth D, RgbOrder O, bool Stream = false>
void row_avx2(const uint8_t* src, uint32_t width, const RowOut& o, const Coeffs& c, PlainRow tail) {
    const Consts k = consts_of_arith(A, c);
    alignas(32) int16_t ys[6 * kRunGroups + 16];
    alignas(32) int16_t cs[6 * kRunGroups + 16];
    const uint32_t groups = width / 6;
    uint32_t g = 0;
    while (g + 9 <= groups) {
        const uint32_t run = std::min(kRunGroups, (groups - 1 - g) / 8 * 8);
        for (uint32_t ahead = 0; ahead < 16 * run; ahead += 64) prefetch(src + ahead, 4096);
        split_groups(src, run, ys, cs, k);
        for (uint32_t j = 0; j < 6 * run; j += 48)
            convert_step<A, Planar, D, O, Stream>(ys + j, cs + j, k, o, 6 * g + j);
        src += 16 * run;
        g += run;
    }
    constexpr size_t bytes = Planar ? 2 : pixel_bytes(D);
    if (const uint32_t r = groups - g; r > 0) {
        // The read-ahead word lands where the next group's first word would be,
        // so the split takes it as the pair after the last group.
        alignas(32) uint8_t in[8 * 16 + 16] = {};
        std::memcpy(in, src, 16 * size_t{r} + 4);
        split_groups(in, 8, ys, cs, k);
        alignas(32) uint8_t out[3][48 * 8 + 16];
        RowOut t{out[0],
                 {reinterpret_cast<uint16_t*>(out[0]), reinterpret_cast<uint16_t*>(out[1]),
                  reinterpret_cast<uint16_t*>(out[2])},
                 nullptr};
        convert_step<A, Planar, D, O, false>(ys, cs, k, t, 0);
        const size_t n = 6 * size_t{r} * bytes, x = 6 * size_t{g};
        if constexpr (Planar) {
            for (int p = 0; p < 3; ++p) std::memcpy(o.plane[p] + x, out[p], n);
        } else {
            std::memcpy(o.dst + x * bytes, out[0], n);
        }
        src += 16 * r;
        g += r;
    }
    const uint32_t x = 6 * g;
    if (x == width) return;
    RowOut rest = o;
    if constexpr (Planar) {
        for (auto& p : rest.plane) p += x;
    } else {
        rest.dst += x * bytes;
    }
    tail(src, width - x, rest, c);
}

template <Arith A, RgbDepth D, bool Stream = false>
VectorRow by_order(RgbOrder o) {
    return with_order(o,
                      [&]<RgbOrder O>() -> VectorRow { return row_avx2<A, false, D, O, Stream>; });
}

}  // namespace

VectorRow avx2_row(Arith a, RgbDepth d, RgbOrder o, bool planar, bool stream) {
    if (planar)
        return a == Arith::C ? row_avx2<Arith::C, true, RgbDepth::Rgb48, RgbOrder::RGBA>
                             : row_avx2<Arith::F, true, RgbDepth::Rgb48, RgbOrder::RGBA>;
    if (a == Arith::B) {
        if (d == RgbDepth::Rgb24) return by_order<Arith::B, RgbDepth::Rgb24>(o);
        if (d == RgbDepth::Rgb32)
            return stream ? by_order<Arith::B, RgbDepth::Rgb32, true>(o)
                          : by_order<Arith::B, RgbDepth::Rgb32>(o);
        return nullptr;
    }
    if (a == Arith::C) {
        if (d == RgbDepth::Rgb48) return by_order<Arith::C, RgbDepth::Rgb48>(o);
        if (d == RgbDepth::Rgb64) return by_order<Arith::C, RgbDepth::Rgb64>(o);
    }
    return nullptr;
}

}  // namespace cycbcr::colour::v210rgb

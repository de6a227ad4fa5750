// AVX2 forms of the packed 4:2:2 byte-order family: 32 bytes per step.
#include <immintrin.h>

#include "frame/export.h"
#include "platform/memory.h"
#include "ycbcr8/byte_order.h"

namespace cycbcr::detail {
namespace {

inline __m256i load32(const uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

template <bool Stream>
inline void store32(uint8_t* p, __m256i v) {
    if constexpr (Stream)
        _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v);
    else
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

// Masks are built inside functions: a namespace-scope vector constant would get
// a load-time initializer made of AVX instructions, run on every processor.
inline __m256i word_swap_mask() {
    return _mm256_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14, 1, 0, 3, 2, 5, 4,
                            7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
}
inline __m256i chroma_exchange_mask() {
    return _mm256_setr_epi8(0, 3, 2, 1, 4, 7, 6, 5, 8, 11, 10, 9, 12, 15, 14, 13, 0, 3, 2, 1, 4, 7,
                            6, 5, 8, 11, 10, 9, 12, 15, 14, 13);
}
inline __m256i identity_mask() {
    return _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5,
                            6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
}

// Applies a per-lane byte shuffle to n bytes, n a multiple of 32: single turns
// first, then four vectors per turn so loads run ahead of stores.
template <bool Stream>
inline void shuffle_blocks(uint8_t* dst, const uint8_t* src, size_t n, __m256i mask) {
    size_t blocks = n / 32;
    for (size_t r = blocks % 4; r != 0; --r, src += 32, dst += 32)
        store32<Stream>(dst, _mm256_shuffle_epi8(load32(src), mask));
    for (blocks /= 4; blocks != 0; --blocks, src += 128, dst += 128) {
        const __m256i a = load32(src);
        const __m256i b = load32(src + 32);
        const __m256i c = load32(src + 64);
        const __m256i d = load32(src + 96);
        store32<Stream>(dst, _mm256_shuffle_epi8(a, mask));
        store32<Stream>(dst + 32, _mm256_shuffle_epi8(b, mask));
        store32<Stream>(dst + 64, _mm256_shuffle_epi8(c, mask));
        store32<Stream>(dst + 96, _mm256_shuffle_epi8(d, mask));
    }
}

inline void shuffle_blocks(uint8_t* dst, const uint8_t* src, size_t n, __m256i mask, bool stream) {
    if (stream)
        shuffle_blocks<true>(dst, src, n, mask);
    else
        shuffle_blocks<false>(dst, src, n, mask);
}

// Shuffles n bytes (a multiple of 16 at most 15 short of 32 x k) and returns how
// many bytes remain for the scalar tail.
inline size_t shuffle_row(uint8_t*& dst, const uint8_t*& src, size_t n, __m256i mask, bool stream) {
    const size_t vec = n & ~size_t{31};
    shuffle_blocks(dst, src, vec, mask, stream);
    dst += vec;
    src += vec;
    n -= vec;
    if (n >= 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                         _mm_shuffle_epi8(v, _mm256_castsi256_si128(mask)));
        dst += 16;
        src += 16;
        n -= 16;
    }
    return n;
}

}  // namespace

bool stream_frame(const uint8_t* dst, uint32_t dstPitch, uint32_t height) {
    return static_cast<size_t>(dstPitch) * height >= kStreamBytes &&
           (reinterpret_cast<uintptr_t>(dst) & 31) == 0 && (dstPitch & 31) == 0;
}

void word_swap_row_avx2(uint8_t* dst, const uint8_t* src, size_t n, bool stream) {
    n = shuffle_row(dst, src, n, word_swap_mask(), stream);
    for (; n >= 2; n -= 2, src += 2, dst += 2) {
        const uint8_t lo = src[0];
        dst[0] = src[1];
        dst[1] = lo;
    }
}

void chroma_exchange_row_avx2(uint8_t* dst, const uint8_t* src, size_t pairs, bool stream) {
    const size_t rest = shuffle_row(dst, src, pairs * 4, chroma_exchange_mask(), stream);
    chroma_exchange_row(dst, src, rest / 4);
}

void rotate_pairs_row_avx2(uint8_t* dst, const uint8_t* src, size_t pairs, int by, bool stream) {
    // Byte j of each output pair is byte (j + by) % 4 of the input pair.
    int8_t m[16];
    for (int j = 0; j < 16; ++j) m[j] = static_cast<int8_t>((j & ~3) | ((j + by) & 3));
    const __m256i mask =
        _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m)));
    const size_t rest = shuffle_row(dst, src, pairs * 4, mask, stream);
    for (size_t k = 0; k < rest / 4; ++k) {
        uint8_t pair[4];
        for (int j = 0; j < 4; ++j) pair[j] = src[4 * k + ((j + by) & 3)];
        for (int j = 0; j < 4; ++j) dst[4 * k + j] = pair[j];
    }
}

void copy_row_avx2(uint8_t* dst, const uint8_t* src, size_t n, bool stream) {
    n = shuffle_row(dst, src, n, identity_mask(), stream);
    for (size_t k = 0; k < n; ++k) dst[k] = src[k];
}

}  // namespace cycbcr::detail

using cycbcr::detail::stream_frame;
using cycbcr::detail::walk_rows;

namespace {

// Local helpers rather than std::min and friends: a template instantiated in an
// AVX2-compiled file could be merged with the plain files' copy at link time.
uint32_t min_u32(uint32_t a, uint32_t b) {
    return a < b ? a : b;
}

void exchange_bytes(uint8_t* a, uint8_t* b, size_t n) {
    for (size_t k = 0; k < n; ++k) {
        const uint8_t t = a[k];
        a[k] = b[k];
        b[k] = t;
    }
}

bool overlaps(const uint8_t* a, size_t a_len, const uint8_t* b, size_t b_len) {
    const auto a0 = reinterpret_cast<uintptr_t>(a);
    const auto b0 = reinterpret_cast<uintptr_t>(b);
    return a0 < b0 + b_len && b0 < a0 + a_len;
}

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_yuy2_to_uyvy_avx2(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    const size_t n = min_u32(dstPitch, srcPitch);
    const bool stream = stream_frame(dst, dstPitch, height);
    walk_rows(dst, src, height, dstPitch, srcPitch, false, [=](uint8_t* d, const uint8_t* s) {
        cycbcr::detail::word_swap_row_avx2(d, s, n, stream);
    });
    if (stream) _mm_sfence();
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yuy2_to_yvyu_avx2(CYCBCR_CONVERTER_ARGS) {
    const size_t pairs = width / 2;
    const bool stream = stream_frame(dst, dstPitch, height);
    walk_rows(dst, src, height, dstPitch, srcPitch, false, [=](uint8_t* d, const uint8_t* s) {
        cycbcr::detail::chroma_exchange_row_avx2(d, s, pairs, stream);
    });
    if (stream) _mm_sfence();
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_cyuv_to_uyvy_avx2(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    const size_t n = min_u32(dstPitch, srcPitch);
    const bool stream = stream_frame(dst, dstPitch, height);
    walk_rows(dst, src, height, dstPitch, srcPitch, true, [=](uint8_t* d, const uint8_t* s) {
        cycbcr::detail::copy_row_avx2(d, s, n, stream);
    });
    if (stream) _mm_sfence();
    return height * dstPitch;
}

// The word swap followed by a flip of the destination. When source and
// destination are apart, each swapped row goes straight to its mirrored place and
// only the bytes the swap leaves alone (padding, an odd last byte) are exchanged
// between mirrored rows afterwards: the same bytes in one pass instead of three.
CYCBCR_API unsigned int cycbcr_yuy2_to_cyuv_avx2(CYCBCR_CONVERTER_ARGS) {
    const size_t dst_len = static_cast<size_t>(dstPitch) * height;
    const size_t src_len = static_cast<size_t>(srcPitch) * height;
    if (overlaps(dst, dst_len, src, src_len)) {
        cycbcr_yuy2_to_uyvy_avx2(dst, src, width, height, dstPitch, srcPitch);
        cycbcr_invert(dst, dstPitch, height);
        return height * dstPitch;
    }
    cycbcr_invert(dst, 0, 0);  // chooses the level, as the flip would
    const size_t swapped = min_u32(dstPitch, srcPitch) & ~1u;
    const bool stream = stream_frame(dst, dstPitch, height);
    walk_rows(dst, src, height, dstPitch, srcPitch, true, [=](uint8_t* d, const uint8_t* s) {
        cycbcr::detail::word_swap_row_avx2(d, s, swapped, stream);
    });
    if (stream) _mm_sfence();
    if (swapped < dstPitch && height > 1) {
        uint8_t* top = dst;
        uint8_t* bottom = dst + static_cast<size_t>(height - 1) * dstPitch;
        for (uint32_t i = 0; i < height / 2; ++i, top += dstPitch, bottom -= dstPitch)
            exchange_bytes(top + swapped, bottom + swapped, dstPitch - swapped);
    }
    return height * dstPitch;
}

}  // extern "C"

CYCBCR_CONVERTER_ALIAS(cycbcr_yvyu_to_uyvy_avx2, cycbcr_yuy2_to_uyvy_avx2);
CYCBCR_CONVERTER_ALIAS(cycbcr_uyvy_to_yvyu_avx2, cycbcr_yuy2_to_uyvy_avx2);
CYCBCR_CONVERTER_ALIAS(cycbcr_yvyu_to_yuy2_avx2, cycbcr_yuy2_to_yvyu_avx2);
// yvyu_to_uyvy_avx2 is the YUY2 word swap, so the YVYU flip is the same body.
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_yuy2_avx2, cycbcr_yuy2_to_cyuv_avx2);
CYCBCR_CONVERTER_ALIAS(cycbcr_yvyu_to_cyuv_avx2, cycbcr_yuy2_to_cyuv_avx2);
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_yvyu_avx2, cycbcr_yuy2_to_cyuv_avx2);

// AVX2 forms of the packed 4:2:2 byte-order family: 32 bytes per step.
#include <immintrin.h>

#include "frame/export.h"
#include "frame/formats.h"
#include "frame/row_walk.h"
#include "platform/store_avx2.h"
#include "ycbcr8/byte_order.h"
#include "ycbcr8/byte_order_list.h"

namespace cycbcr::avx2 {
namespace {

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
// Byte j of each output pair is byte (j + by) % 4 of the input pair.
template <int By>
inline __m256i rotate_mask() {
    int8_t m[16];
    for (int j = 0; j < 16; ++j) m[j] = static_cast<int8_t>((j & ~3) | ((j + By) & 3));
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(m)));
}

// Applies a per-lane byte shuffle to n bytes, n a multiple of 32: single turns
// first, then four vectors per turn so loads run ahead of stores.
template <Store S>
inline void shuffle_blocks(uint8_t* dst, const uint8_t* src, size_t n, __m256i mask) {
    size_t blocks = n / 32;
    for (size_t r = blocks % 4; r != 0; --r, src += 32, dst += 32)
        store32<S>(dst, _mm256_shuffle_epi8(load32(src), mask));
    for (blocks /= 4; blocks != 0; --blocks, src += 128, dst += 128) {
        const __m256i a = load32(src);
        const __m256i b = load32(src + 32);
        const __m256i c = load32(src + 64);
        const __m256i d = load32(src + 96);
        store32<S>(dst, _mm256_shuffle_epi8(a, mask));
        store32<S>(dst + 32, _mm256_shuffle_epi8(b, mask));
        store32<S>(dst + 64, _mm256_shuffle_epi8(c, mask));
        store32<S>(dst + 96, _mm256_shuffle_epi8(d, mask));
    }
}

// Shuffles the whole 32- and 16-byte blocks of n bytes and returns how many
// bytes remain for the scalar tail.
template <Store S>
inline size_t shuffle_row(uint8_t*& dst, const uint8_t*& src, size_t n, __m256i mask) {
    const size_t vec = n & ~size_t{31};
    shuffle_blocks<S>(dst, src, vec, mask);
    dst += vec;
    src += vec;
    n -= vec;
    if (n >= 16) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst),
                         _mm_shuffle_epi8(load16(src), _mm256_castsi256_si128(mask)));
        dst += 16;
        src += 16;
        n -= 16;
    }
    return n;
}

template <Store S>
void word_swap(uint8_t* dst, const uint8_t* src, size_t n) {
    n = shuffle_row<S>(dst, src, n, word_swap_mask());
    for (; n >= 2; n -= 2, src += 2, dst += 2) {
        const uint8_t lo = src[0];
        dst[0] = src[1];
        dst[1] = lo;
    }
}

template <Store S>
void chroma_exchange(uint8_t* dst, const uint8_t* src, size_t n) {
    const size_t rest = shuffle_row<S>(dst, src, n, chroma_exchange_mask());
    plain::chroma_exchange_row(dst, src, rest);
}

template <int By>
void rotate_pairs(uint8_t* dst, const uint8_t* src, size_t n) {
    const size_t rest = shuffle_row<Store::Cached>(dst, src, n, rotate_mask<By>());
    for (size_t k = 0; k < rest / 4; ++k) {
        uint8_t pair[4];
        for (int j = 0; j < 4; ++j) pair[j] = src[4 * k + ((j + By) & 3)];
        for (int j = 0; j < 4; ++j) dst[4 * k + j] = pair[j];
    }
}

void exchange_bytes(uint8_t* a, uint8_t* b, size_t n) {
    for (size_t k = 0; k < n; ++k) {
        const uint8_t t = a[k];
        a[k] = b[k];
        b[k] = t;
    }
}

uint32_t min_u32(uint32_t a, uint32_t b) {
    return a < b ? a : b;
}

// Row kernel over every row, the destination stored as the frame's size and
// alignment allow; `up` reads the source rows bottom to top.
void rows_of(uint8_t* dst, const uint8_t* src, uint32_t height, uint32_t dstPitch,
             uint32_t srcPitch, bool up, size_t n, ByteRow (*kernel_for)(Store)) {
    const Store store = store_for(dst, dstPitch, height);
    const ByteRow row = kernel_for(store);
    const Rows d = rows_down(dst, dstPitch);
    const Rows s = up ? rows_up(src, srcPitch, height) : rows_down(src, srcPitch);
    walk(all_rows(height), [&](uint32_t i) { row(d.at(i), s.at(i), n); });
    finish_stores(store);
}

// The word swap followed by a flip of the destination. When source and
// destination are apart, each swapped row goes straight to its mirrored place and
// only the bytes the swap leaves alone (padding, an odd last byte) are exchanged
// between mirrored rows afterwards: the same bytes in one pass instead of three.
unsigned int swap_and_flip(CYCBCR_CONVERTER_ARGS) {
    const size_t dst_len = static_cast<size_t>(dstPitch) * height;
    const size_t src_len = static_cast<size_t>(srcPitch) * height;
    if (ranges_overlap(dst, dst_len, src, src_len)) {
        cycbcr_yuy2_to_uyvy_avx2(CYCBCR_CONVERTER_CALL);
        cycbcr_invert(dst, dstPitch, height);
        return height * dstPitch;
    }
    cycbcr_invert(dst, 0, 0);  // chooses the level, as the flip would
    const size_t swapped = min_u32(dstPitch, srcPitch) & ~1u;
    rows_of(dst, src, height, dstPitch, srcPitch, true, swapped, word_swap_row);
    if (swapped < dstPitch && height > 1) {
        uint8_t* top = dst;
        uint8_t* bottom = dst + static_cast<size_t>(height - 1) * dstPitch;
        for (uint32_t i = 0; i < height / 2; ++i, top += dstPitch, bottom -= dstPitch)
            exchange_bytes(top + swapped, bottom + swapped, dstPitch - swapped);
    }
    return height * dstPitch;
}

// The AVX2 forms by their pair of formats.
template <Format From, Format To, auto>
unsigned int byte_order(CYCBCR_CONVERTER_ARGS) {
    if constexpr (To == Format::CYUV) {
        return swap_and_flip(CYCBCR_CONVERTER_CALL);
    } else if constexpr (From == Format::CYUV) {  // to UYVY: the rows in reverse order
        rows_of(dst, src, height, dstPitch, srcPitch, true, min_u32(dstPitch, srcPitch), copy_row);
    } else if constexpr (To == Format::YVYU) {
        rows_of(dst, src, height, dstPitch, srcPitch, false, size_t{4} * (width / 2),
                chroma_exchange_row);
    } else {
        rows_of(dst, src, height, dstPitch, srcPitch, false, min_u32(dstPitch, srcPitch),
                word_swap_row);
    }
    return height * dstPitch;
}

}  // namespace

ByteRow word_swap_row(Store store) {
    return with_store(store, []<Store S>() -> ByteRow { return word_swap<S>; });
}
ByteRow chroma_exchange_row(Store store) {
    return with_store(store, []<Store S>() -> ByteRow { return chroma_exchange<S>; });
}
ByteRow rotate_pairs_row(int by) {
    return by == 1 ? rotate_pairs<1> : rotate_pairs<3>;
}

}  // namespace cycbcr::avx2

extern "C" {

#define CYCBCR_ENTRY cycbcr::avx2::byte_order
CYCBCR_BYTE_ORDER_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

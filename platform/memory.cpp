#include "platform/memory.h"

#include <emmintrin.h>

#include <cstdlib>
#include <cstring>

namespace cycbcr {

void* QBAlloc(size_t size) {
    void* block = nullptr;
    if (posix_memalign(&block, 64, size == 0 ? 64 : size) != 0) return nullptr;
    return block;
}

void QBFree(void* block) {
    std::free(block);
}

void CopyMemoryFast(void* dst, const void* src, size_t count) {
    if (count != 0) std::memcpy(dst, src, count);
}

void plain::copy_row(uint8_t* dst, const uint8_t* src, size_t n) {
    size_t k = 0;
    for (; k + 32 <= n; k += 32) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + k));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + k + 16));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k), a);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k + 16), b);
    }
    if (k + 16 <= n) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + k),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + k)));
        k += 16;
    }
    for (; k < n; ++k) dst[k] = src[k];
}

void EndianConvertWord(void* dst, const void* src, size_t wordCount) {
    auto* d = static_cast<uint8_t*>(dst);
    const auto* s = static_cast<const uint8_t*>(src);
    size_t bytes = wordCount * 2;
    // SSE2 is part of baseline x86-64; 64 bytes a turn keeps the loads ahead.
    for (; bytes >= 64; bytes -= 64, s += 64, d += 64) {
        __m128i v[4];
        for (int k = 0; k < 4; ++k)
            v[k] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + 16 * k));
        for (int k = 0; k < 4; ++k) {
            v[k] = _mm_or_si128(_mm_slli_epi16(v[k], 8), _mm_srli_epi16(v[k], 8));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 16 * k), v[k]);
        }
    }
    for (; bytes >= 16; bytes -= 16, s += 16, d += 16) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        v = _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d), v);
    }
    for (; bytes >= 2; bytes -= 2, s += 2, d += 2) {
        const uint8_t lo = s[0];
        d[0] = s[1];
        d[1] = lo;
    }
}

Store store_for(const void* dst, size_t pitch, uint32_t rows) {
    if (pitch * rows < kStreamBytes) return Store::Cached;
    const uintptr_t align = reinterpret_cast<uintptr_t>(dst) | pitch;
    if ((align & 31) == 0) return Store::Stream32;
    return (align & 15) == 0 ? Store::Stream16 : Store::Cached;
}

void finish_stores(Store store) {
    if (store != Store::Cached) _mm_sfence();
}

}  // namespace cycbcr

// The row copy of the AVX2 paths. Rows stay in our own loop rather than the C
// library's copy, whose per-call choice of method costs on rows of a few
// kilobytes.
#include "platform/store_avx2.h"

namespace cycbcr::avx2 {
namespace {

// Keeps the compiler from reordering the stores around it.
inline void in_order() {
    __asm__ volatile("" ::: "memory");
}

template <Store S>
void copy_row_as(uint8_t* dst, const uint8_t* src, size_t n) {
    size_t k = 0;
    for (; k + 128 <= n; k += 128) {
        const __m256i a = load32(src + k);
        const __m256i b = load32(src + k + 32);
        const __m256i c = load32(src + k + 64);
        const __m256i d = load32(src + k + 96);
        // In address order: a line streamed out of order fills its
        // write-combining buffer more slowly.
        store32<S>(dst + k, a);
        in_order();
        store32<S>(dst + k + 32, b);
        in_order();
        store32<S>(dst + k + 64, c);
        in_order();
        store32<S>(dst + k + 96, d);
    }
    for (; k + 32 <= n; k += 32) store32<S>(dst + k, load32(src + k));
    for (; k < n; ++k) dst[k] = src[k];
}

}  // namespace

CopyRow copy_row(Store store) {
    return with_store(store, []<Store S>() -> CopyRow { return copy_row_as<S>; });
}

}  // namespace cycbcr::avx2

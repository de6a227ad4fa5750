// Packed 4:2:2 byte orders: copies, word swaps, chroma exchange, row reversal.
#include "ycbcr8/byte_order.h"

#include <emmintrin.h>

#include <algorithm>

#include "frame/export.h"
#include "frame/proc_level.h"
#include "platform/memory.h"

namespace cycbcr::detail {

void chroma_exchange_row(uint8_t* dst, const uint8_t* src, size_t pairs) {
    const __m128i keep = _mm_set1_epi32(0x00FF00FF);
    const __m128i hi = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    const __m128i lo = _mm_set1_epi32(0x0000FF00);
    size_t k = 0;
    for (; k + 4 <= pairs; k += 4) {
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 4 * k));
        const __m128i r = _mm_or_si128(_mm_or_si128(_mm_and_si128(_mm_slli_epi32(w, 16), hi),
                                                    _mm_and_si128(_mm_srli_epi32(w, 16), lo)),
                                       _mm_and_si128(w, keep));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * k), r);
    }
    for (; k < pairs; ++k) {
        const uint8_t* s = src + 4 * k;
        uint8_t* d = dst + 4 * k;
        const uint8_t b1 = s[1];
        d[0] = s[0];
        d[1] = s[3];
        d[2] = s[2];
        d[3] = b1;
    }
}

}  // namespace cycbcr::detail

using cycbcr::detail::walk_rows;

namespace {

uint32_t min_pitch(uint32_t a, uint32_t b) {
    return std::min(a, b);
}

// Plain word swap over pitch rows; with equal pitches the frame, padding
// included, is one run of words.
void word_swap_frame(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    if (height == 0) return;
    if (dstPitch == srcPitch) {
        cycbcr::EndianConvertWord(dst, src, (dstPitch * height) / 2);
        return;
    }
    const uint32_t words = min_pitch(dstPitch, srcPitch) / 2;
    walk_rows(dst, src, height, dstPitch, srcPitch, false,
              [words](uint8_t* d, const uint8_t* s) { cycbcr::EndianConvertWord(d, s, words); });
}

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_interleaved_copy(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    if (height != 0) {
        if (dstPitch == srcPitch) {
            cycbcr::CopyMemoryFast(dst, src, dstPitch * height);
        } else {
            const uint32_t n = min_pitch(dstPitch, srcPitch);
            walk_rows(dst, src, height, dstPitch, srcPitch, false,
                      [n](uint8_t* d, const uint8_t* s) { cycbcr::CopyMemoryFast(d, s, n); });
        }
    }
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yuy2_to_yuy2(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    return cycbcr_interleaved_copy(dst, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_yuy2_to_uyvy(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    word_swap_frame(dst, src, width, height, dstPitch, srcPitch);
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_uyvy_to_yuy2(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    if (cycbcr::avx2_path())
        return cycbcr_yuy2_to_uyvy_avx2(dst, src, width, height, dstPitch, srcPitch);
    word_swap_frame(dst, src, width, height, dstPitch, srcPitch);
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yuy2_to_yvyu(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    if (cycbcr::avx2_path())
        return cycbcr_yuy2_to_yvyu_avx2(dst, src, width, height, dstPitch, srcPitch);
    const size_t pairs = width / 2;
    walk_rows(dst, src, height, dstPitch, srcPitch, false, [pairs](uint8_t* d, const uint8_t* s) {
        cycbcr::detail::chroma_exchange_row(d, s, pairs);
    });
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yvyu_to_uyvy(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    // The fast form is the YUY2 word swap over pitch rows: it also swaps the
    // padding that the plain pair loop leaves alone. Both are kept as they are.
    if (cycbcr::avx2_path())
        return cycbcr_yvyu_to_uyvy_avx2(dst, src, width, height, dstPitch, srcPitch);
    const size_t words = (width / 2) * 2;
    walk_rows(dst, src, height, dstPitch, srcPitch, false,
              [words](uint8_t* d, const uint8_t* s) { cycbcr::EndianConvertWord(d, s, words); });
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_uyvy_to_cyuv(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    cycbcr::ensure_level();
    const uint32_t n = min_pitch(dstPitch, srcPitch);
    walk_rows(dst, src, height, dstPitch, srcPitch, true,
              [n](uint8_t* d, const uint8_t* s) { cycbcr::CopyMemoryFast(d, s, n); });
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yuy2_to_cyuv(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    if (cycbcr::avx2_path())
        return cycbcr_yuy2_to_cyuv_avx2(dst, src, width, height, dstPitch, srcPitch);
    cycbcr_yuy2_to_uyvy(dst, src, width, height, dstPitch, srcPitch);
    cycbcr_invert(dst, dstPitch, height);
    return height * dstPitch;
}

CYCBCR_API unsigned int cycbcr_yvyu_to_cyuv(CYCBCR_CONVERTER_ARGS) {
    cycbcr::ensure_level();
    if (cycbcr::avx2_path())
        return cycbcr_yvyu_to_cyuv_avx2(dst, src, width, height, dstPitch, srcPitch);
    cycbcr_yvyu_to_uyvy(dst, src, width, height, dstPitch, srcPitch);
    cycbcr_invert(dst, dstPitch, height);
    return height * dstPitch;
}

CYCBCR_API void cycbcr_invert(uint8_t* buf, unsigned int pitch, unsigned int height) {
    cycbcr::ensure_level();
    // Rows up to 5461 bytes (a 2730-pixel packed row) swap through the stack.
    cycbcr::TempRow<5461> temp(pitch);
    if (height < 2) return;
    uint8_t* top = buf;
    uint8_t* bottom = buf + static_cast<size_t>(height - 1) * pitch;
    for (uint32_t i = 0; i < height / 2; ++i, top += pitch, bottom -= pitch) {
        cycbcr::CopyMemoryFast(temp.data(), top, pitch);
        cycbcr::CopyMemoryFast(top, bottom, pitch);
        cycbcr::CopyMemoryFast(bottom, temp.data(), pitch);
    }
}

}  // extern "C"

CYCBCR_CONVERTER_ALIAS(cycbcr_yvyu_to_yvyu, cycbcr_yuy2_to_yuy2);
CYCBCR_CONVERTER_ALIAS(cycbcr_uyvy_to_uyvy, cycbcr_yuy2_to_yuy2);
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_cyuv, cycbcr_yuy2_to_yuy2);
CYCBCR_CONVERTER_ALIAS(cycbcr_yvyu_to_yuy2, cycbcr_yuy2_to_yvyu);
CYCBCR_CONVERTER_ALIAS(cycbcr_uyvy_to_yvyu, cycbcr_yvyu_to_uyvy);
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_uyvy, cycbcr_uyvy_to_cyuv);
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_yuy2, cycbcr_yuy2_to_cyuv);
CYCBCR_CONVERTER_ALIAS(cycbcr_cyuv_to_yvyu, cycbcr_yvyu_to_cyuv);

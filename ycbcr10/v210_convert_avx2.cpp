// AVX2 twins of the v210 <-> 8-bit entries. Each row goes through the same
// vector kernels: v210 groups to samples in UYVY order (or back), then a byte
// order change or a split into planes, in the row while it is in the cache.
#include <immintrin.h>

#include "frame/export.h"
#include "platform/memory.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_convert.h"
#include "ycbcr8/byte_order.h"
#include "ycbcr8/packed_planar.h"
#include "ycbcr8/packed_planar_wrappers.h"

namespace cycbcr::detail {
namespace {

uint32_t max_u32(uint32_t a, uint32_t b) {
    return a > b ? a : b;
}
// Groups the unpackers write per row: the width rounded up to 12 pixels.
uint32_t unpack_groups(uint32_t width) {
    return (width + 11) / 12 * 2;
}

// Temporary rows: a 4K row of samples fits the stack.
using SampleRow = TempRow<16384>;

// Splits 16-bit samples in UYVY order into Y, Cb and Cr: 16 pixels a turn.
void split16_row(const uint16_t* s, uint16_t* y, uint16_t* cb, uint16_t* cr, size_t pairs) {
    const __m256i gather = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 3, 6, 7, 10, 11, 14, 15, 0, 1, 8, 9, 4, 5, 12, 13));
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 6, 3, 7);
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const auto* p = reinterpret_cast<const __m256i*>(s + 4 * k);
        const __m256i a =
            _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(_mm256_loadu_si256(p), gather), order);
        const __m256i b = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(_mm256_loadu_si256(p + 1), gather), order);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(y + 2 * k),
                            _mm256_permute2x128_si256(a, b, 0x20));
        const __m128i ca = _mm256_extracti128_si256(a, 1);
        const __m128i cb2 = _mm256_extracti128_si256(b, 1);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + k), _mm_unpacklo_epi64(ca, cb2));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + k), _mm_unpackhi_epi64(ca, cb2));
    }
    // Plane rows may start on an odd byte: the tail stores through memcpy.
    for (; k < pairs; ++k) {
        std::memcpy(cb + k, s + 4 * k, 2);
        std::memcpy(y + 2 * k, s + 4 * k + 1, 2);
        std::memcpy(cr + k, s + 4 * k + 2, 2);
        std::memcpy(y + 2 * k + 1, s + 4 * k + 3, 2);
    }
}

// UYVY-ordered bytes from Y and interleaved CbCr (Cr one byte after Cb).
void merge_interleaved_row(uint8_t* d, const uint8_t* y, const uint8_t* c, size_t pairs) {
    size_t k = 0;
    for (; k + 8 <= pairs; k += 8) {
        const __m128i vy = _mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2 * k));
        const __m128i vc = _mm_loadu_si128(reinterpret_cast<const __m128i*>(c + 2 * k));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * k), _mm_unpacklo_epi8(vc, vy));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 4 * k + 16), _mm_unpackhi_epi8(vc, vy));
    }
    for (; k < pairs; ++k) {
        d[4 * k] = c[2 * k];
        d[4 * k + 1] = y[2 * k];
        d[4 * k + 2] = c[2 * k + 1];
        d[4 * k + 3] = y[2 * k + 1];
    }
}

// True when some row's luma and chroma writes (width rounded up to 12 samples of
// `sample` bytes, chroma half that) land on each other: the scalar kernel's
// group-by-group order then decides the bytes, so it does the frame.
bool rows_overlap(const void* y, const void* cb, const void* cr, uint32_t width, uint32_t height,
                  uint32_t dstPitch, bool full, size_t sample) {
    const size_t luma = size_t{(width + 11) / 12 * 12} * sample;
    const size_t chroma = luma / 2;
    auto meet = [](uintptr_t a, size_t an, uintptr_t b, size_t bn) {
        return a < b + bn && b < a + an;
    };
    const auto y0 = reinterpret_cast<uintptr_t>(y);
    const auto b0 = reinterpret_cast<uintptr_t>(cb);
    const auto r0 = reinterpret_cast<uintptr_t>(cr);
    for (uint32_t r = 0; r < height; ++r) {
        const uintptr_t ly = y0 + uintptr_t{r} * dstPitch;
        const uintptr_t c = uintptr_t{full ? r : r / 2} * (dstPitch / 2);
        if (meet(ly, luma, b0 + c, chroma) || meet(ly, luma, r0 + c, chroma) ||
            meet(b0 + c, chroma, r0 + c, chroma))
            return true;
    }
    return false;
}

// v210 to 8-bit packed rows: UYVY order straight into the destination row, or
// through a row in the cache and one shuffle into the destination.
unsigned int v210_to_packed(Packed to, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const uint32_t groups = unpack_groups(width);
    const size_t bytes = size_t{12} * groups;
    SampleRow row(bytes + 32);
    uint8_t* t = row.data();
    for (uint32_t r = 0; r < height; ++r) {
        uint8_t* d = dst + static_cast<size_t>(r) * dstPitch;
        const uint8_t* s = src + static_cast<size_t>(r) * sp;
        if (to == Packed::UYVY || to == Packed::CYUV) {
            v210_groups_to_u8_avx2(d, s, groups, false);
            continue;
        }
        v210_groups_to_u8_avx2(t, s, groups, false);
        if (to == Packed::YUY2)
            word_swap_row_avx2(d, t, bytes, false);
        else
            rotate_pairs_row_avx2(d, t, bytes / 4, 1, false);  // to YVYU
    }
    if (to == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
    return width * height * 2;
}

// v210 to 8-bit planes; chroma row r (4:2:2) or r / 2 (4:2:0) at dstPitch / 2.
void v210_to_planes8(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t width,
                     uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool full) {
    if (rows_overlap(y, cb, cr, width, height, dstPitch, full, 1)) {
        Fromv210(y, cb, cr, src, width, height, dstPitch, srcPitch, full ? 1 : 0, 1);
        return;
    }
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const uint32_t groups = unpack_groups(width);
    SampleRow row(size_t{12} * groups + 32);
    uint8_t* t = row.data();
    for (uint32_t r = 0; r < height; ++r) {
        v210_groups_to_u8_avx2(t, src + static_cast<size_t>(r) * sp, groups, false);
        const size_t c = static_cast<size_t>(full ? r : r / 2) * (dstPitch / 2);
        // 4:2:0: both rows of a pair write their chroma row, the odd one last.
        // (Skipping the even row's write measured slower: the lines it brings
        // into the cache are the ones the odd row then rewrites.)
        split_row_avx2(t + 1, t, t + 2, y + static_cast<size_t>(r) * dstPitch, cb + c, cr + c,
                       size_t{3} * groups, true);
    }
}

// 8-bit rows in UYVY order into v210: the row builder fills `t` with the
// ceil(width / 6) groups of row r.
template <class RowBuilder>
unsigned int pack_rows(uint8_t* dst, uint32_t width, uint32_t height, uint32_t dstPitch,
                       RowBuilder&& build) {
    const uint32_t rowBytes = v210_row_bytes(width);
    const uint32_t dp = max_u32(rowBytes, dstPitch);
    const uint32_t groups = (width + 5) / 6;
    SampleRow row(size_t{12} * groups + 32);
    for (uint32_t r = 0; r < height; ++r) {
        const uint8_t* t = build(r, row.data(), groups);
        uyvy_groups_to_v210_avx2(dst + static_cast<size_t>(r) * dp, t, groups);
    }
    return height * rowBytes;
}

// Packed 8-bit into v210 with the scalar packer's row rule: rows at r * srcPitch,
// or running on by whole groups when srcPitch == 2 * width.
unsigned int packed_to_v210(Packed from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const size_t step = srcPitch == 2 * width ? size_t{12} * ((width + 5) / 6) : srcPitch;
    const unsigned int n =
        pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
            const uint8_t* s = src + r * step;
            const size_t bytes = size_t{12} * groups;
            if (from == Packed::CYUV) return s;
            if (from == Packed::YVYU)
                rotate_pairs_row_avx2(t, s, bytes / 4, 3, false);
            else
                word_swap_row_avx2(t, s, bytes, false);
            return const_cast<const uint8_t*>(t);
        });
    if (from == Packed::CYUV) cycbcr_invert(dst, dstPitch, height);
    return n;
}

// Planar 8-bit into v210 with the scalar packer's rule: planes found by srcPitch,
// rows read as tightly packed (luma width, chroma width / 2 bytes apart).
unsigned int planar_to_v210(Planar from, uint8_t* dst, const uint8_t* src, uint32_t width,
                            uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    const Planes p = planes_of(from, const_cast<uint8_t*>(src), srcPitch, height);
    const bool full = from == Planar::P422;
    return pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
        const size_t c = static_cast<size_t>(full ? r : r / 2) * (width / 2);
        merge_row_avx2(t + 1, t, t + 2, p.y + static_cast<size_t>(r) * width, p.cb + c, p.cr + c,
                       size_t{3} * groups);
        return const_cast<const uint8_t*>(t);
    });
}

}  // namespace

unsigned int v210_to_planar420_8_avx2(uint8_t* dst, const uint8_t* src, uint32_t width,
                                      uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                      bool swapCbCr) {
    const Planes p = planes_of(swapCbCr ? Planar::YV12 : Planar::I420, dst, dstPitch, height);
    v210_to_planes8(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch, false);
    return width * height * 3 / 2;
}

unsigned int pack_v210_u8_rows_avx2(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                    const uint8_t* cr, uint32_t width, uint32_t height,
                                    uint32_t dstPitch, uint32_t lumaPitch, uint32_t chromaPitch,
                                    uint32_t chromaStep) {
    return pack_rows(dst, width, height, dstPitch, [&](uint32_t r, uint8_t* t, uint32_t groups) {
        const uint8_t* ly = y + static_cast<size_t>(r) * lumaPitch;
        const size_t c = static_cast<size_t>(r / 2) * chromaPitch;
        const size_t pairs = size_t{3} * groups;
        if (chromaStep == 2)
            merge_interleaved_row(t, ly, cb + c, pairs);
        else
            merge_row_avx2(t + 1, t, t + 2, ly, cb + c, cr + c, pairs);
        return const_cast<const uint8_t*>(t);
    });
}

}  // namespace cycbcr::detail

using namespace cycbcr::detail;

extern "C" {

CYCBCR_API unsigned int cycbcr_v210to_planar_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                  const uint8_t* src, unsigned int width,
                                                  unsigned int height, unsigned int dstPitch,
                                                  unsigned int srcPitch) {
    v210_to_planes8(y, cb, cr, src, width, height, dstPitch, srcPitch, true);
    const uint32_t pixels = width * height;
    return pixels + pixels / 2;  // the 4:2:0 figure, as the scalar kernel gives
}

CYCBCR_API unsigned int cycbcr_v210to_planar16_avx2(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch) {
    if (rows_overlap(y, cb, cr, width, height, dstPitch, true, 2))
        return Fromv210_16(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
    const uint32_t sp = max_u32(v210_row_bytes(width), srcPitch);
    const uint32_t groups = unpack_groups(width);
    SampleRow row(size_t{24} * groups + 32);
    auto* t = reinterpret_cast<uint16_t*>(row.data());
    auto at = [](void* base, size_t bytes) {
        return reinterpret_cast<uint16_t*>(static_cast<uint8_t*>(base) + bytes);
    };
    for (uint32_t r = 0; r < height; ++r) {
        v210_groups_to_u16_avx2(t, src + static_cast<size_t>(r) * sp, groups);
        const size_t c = static_cast<size_t>(r) * (dstPitch / 2);
        split16_row(t, at(y, static_cast<size_t>(r) * dstPitch), at(cb, c), at(cr, c),
                    size_t{3} * groups);
    }
    return width * height * 4;
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_avx2(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                      const uint8_t* src, unsigned int width,
                                                      unsigned int height, unsigned int dstPitch,
                                                      unsigned int srcPitch) {
    return cycbcr_v210to_planar_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_16_avx2(void* y, void* cb, void* cr,
                                                         const uint8_t* src, unsigned int width,
                                                         unsigned int height, unsigned int dstPitch,
                                                         unsigned int srcPitch) {
    return cycbcr_v210to_planar16_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_012v_to_yuy2_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::YUY2, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_yvyu_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::YVYU, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_cyuv_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_packed(Packed::CYUV, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_012v_to_i420_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_planar420_8_avx2(dst, src, width, height, dstPitch, srcPitch, false);
}
CYCBCR_API unsigned int cycbcr_012v_to_yv12_avx2(CYCBCR_CONVERTER_ARGS) {
    return v210_to_planar420_8_avx2(dst, src, width, height, dstPitch, srcPitch, true);
}
CYCBCR_API unsigned int cycbcr_012v_to_p422_avx2(CYCBCR_CONVERTER_ARGS) {
    const Planes p = planes_of(Planar::P422, dst, dstPitch, height);
    return cycbcr_v210to_planar_avx2(p.y, p.cb, p.cr, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_yuy2_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::YUY2, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_yvyu_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::YVYU, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_cyuv_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return packed_to_v210(Packed::CYUV, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_i420_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    // Rows by pitch here, unlike the scalar packer's tightly packed planes.
    const Planes p = planes_of(Planar::I420, const_cast<uint8_t*>(src), srcPitch, height);
    return pack_v210_u8_rows_avx2(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch,
                                  srcPitch / 2, 1);
}
CYCBCR_API unsigned int cycbcr_yv12_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return planar_to_v210(Planar::YV12, dst, src, width, height, dstPitch, srcPitch);
}
CYCBCR_API unsigned int cycbcr_p422_to_012v_avx2(CYCBCR_CONVERTER_ARGS) {
    return planar_to_v210(Planar::P422, dst, src, width, height, dstPitch, srcPitch);
}

}  // extern "C"

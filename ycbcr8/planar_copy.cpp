// Planar to planar 8-bit: I420, YV12 and P422 among themselves.
#include "ycbcr8/planar_copy.h"

#include <emmintrin.h>

#include <algorithm>
#include <utility>

#include "frame/export.h"
#include "frame/proc_level.h"
#include "platform/memory.h"

namespace cycbcr::detail {
namespace {

// 32 and 16 bytes at a time, then a byte loop for the rest of the row.
void copy_row(uint8_t* dst, const uint8_t* src, size_t n) {
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

}  // namespace

namespace {

// Exactly one side 4:2:2: width bytes of Y per row and width / 2 of chroma,
// repeating (4:2:0 to 4:2:2) or dropping (4:2:2 to 4:2:0) whole chroma rows.
unsigned int planar_422_420_rows(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                 const uint8_t* sA, const uint8_t* sB, uint32_t width,
                                 uint32_t height, uint32_t dstPitch, uint32_t srcPitch, bool dst422,
                                 CopyRow copy) {
    const size_t dc = dstPitch / 2;
    const size_t sc = srcPitch / 2;
    const size_t half = width / 2;
    // Rows of exactly the width on both sides make the luma one block.
    const bool lumaBlock = dstPitch == width && srcPitch == width;
    if (lumaBlock) CopyMemoryFast(dY, sY, static_cast<size_t>(width) * height);
    for (uint32_t r = 0; r < height; ++r) {
        if (!lumaBlock)
            copy(dY + static_cast<size_t>(r) * dstPitch, sY + static_cast<size_t>(r) * srcPitch,
                 width);
        if (dst422) {
            // Each 4:2:0 chroma row serves two output rows.
            const size_t from = (r / 2) * sc, to = r * dc;
            copy(dA + to, sA + from, half);
            copy(dB + to, sB + from, half);
        } else if (r % 2 == 0) {
            // Odd 4:2:2 chroma rows are dropped; no account is taken of fields.
            const size_t from = r * sc, to = (r / 2) * dc;
            copy(dA + to, sA + from, half);
            copy(dB + to, sB + from, half);
        }
    }
    return 2 * dstPitch * height;
}

}  // namespace

unsigned int planar_422_420_frame(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                  const uint8_t* sA, const uint8_t* sB, uint32_t width,
                                  uint32_t height, uint32_t dstPitch, uint32_t srcPitch,
                                  bool dst422, bool src422, CopyRow copy) {
    if (!dst422 && !src422)
        return cycbcr_planar_copy(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch);
    if (dst422 && src422) {
        // Whole planes sized by dstPitch, whatever srcPitch is.
        const uint32_t luma = dstPitch * height;
        CopyMemoryFast(dY, sY, luma);
        CopyMemoryFast(dA, sA, luma / 2);
        CopyMemoryFast(dB, sB, luma / 2);
        return 2 * luma;
    }
    return planar_422_420_rows(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch, dst422,
                               copy);
}

}  // namespace cycbcr::detail

using cycbcr::detail::planar_422_420_frame;

namespace {

// Plane positions of the wrappers, from the start of a frame: D is pitch * height.
enum class At { D, DQuarter, DHalf };  // D, D + D/4, D + D/2
uint8_t* at(uint8_t* base, uint32_t pitch, uint32_t height, At where) {
    const uint32_t d = pitch * height;
    switch (where) {
        case At::D:
            return base + d;
        case At::DQuarter:
            return base + d + (d >> 2);
        case At::DHalf:
            return base + d + (d >> 1);
    }
    return base + d;
}

struct PlanarPair {
    At dstA, dstB, srcA, srcB;
    int dst422, src422;  // -1: the 4:2:0 copy engine
};

unsigned int run(const PlanarPair& p, uint8_t* dst, const uint8_t* src, uint32_t width,
                 uint32_t height, uint32_t dstPitch, uint32_t srcPitch) {
    cycbcr::ensure_level();
    auto* s = const_cast<uint8_t*>(src);
    uint8_t* dA = at(dst, dstPitch, height, p.dstA);
    uint8_t* dB = at(dst, dstPitch, height, p.dstB);
    const uint8_t* sA = at(s, srcPitch, height, p.srcA);
    const uint8_t* sB = at(s, srcPitch, height, p.srcB);
    if (p.dst422 < 0)
        return cycbcr_planar_copy(dst, dA, dB, src, sA, sB, width, height, dstPitch, srcPitch);
    return cycbcr_planar_422_420(dst, dA, dB, src, sA, sB, width, height, dstPitch, srcPitch,
                                 p.dst422, p.src422);
}

// Read against the plane orders, the copies among I420 and YV12 keep Cb with Cb,
// while the pairs with P422 on one side pair Cb with Cr. Kept exactly: callers
// depend on the bytes as they are.
constexpr PlanarPair kI420ToI420{At::DQuarter, At::D, At::DQuarter, At::D, -1, -1};
constexpr PlanarPair kI420ToYv12{At::D, At::DQuarter, At::DQuarter, At::D, -1, -1};
constexpr PlanarPair kYv12ToI420{At::DQuarter, At::D, At::D, At::DQuarter, -1, -1};
constexpr PlanarPair kYv12ToYv12{At::D, At::DQuarter, At::D, At::DQuarter, -1, -1};
constexpr PlanarPair kI420ToP422{At::D, At::DHalf, At::DQuarter, At::D, 1, 0};
constexpr PlanarPair kYv12ToP422{At::D, At::DHalf, At::D, At::DQuarter, 1, 0};
constexpr PlanarPair kP422ToI420{At::DQuarter, At::D, At::D, At::DHalf, 0, 1};
constexpr PlanarPair kP422ToYv12{At::D, At::DQuarter, At::D, At::DHalf, 0, 1};
constexpr PlanarPair kP422ToP422{At::D, At::DHalf, At::D, At::DHalf, 1, 1};

}  // namespace

extern "C" {

CYCBCR_API unsigned int cycbcr_planar_copy(uint8_t* dY, uint8_t* dA, uint8_t* dB, const uint8_t* sY,
                                           const uint8_t* sA, const uint8_t* sB, unsigned int width,
                                           unsigned int height, unsigned int dstPitch,
                                           unsigned int srcPitch) {
    (void)width;  // the copies follow the pitches
    const uint32_t luma = dstPitch * height;
    if (dstPitch == srcPitch) {
        cycbcr::CopyMemoryFast(dY, sY, luma);
        cycbcr::CopyMemoryFast(dA, sA, luma / 4);
        cycbcr::CopyMemoryFast(dB, sB, luma / 4);
    } else {
        const uint32_t n = std::min(dstPitch, srcPitch);
        for (uint32_t r = 0; r < height; ++r)
            cycbcr::CopyMemoryFast(dY + static_cast<size_t>(r) * dstPitch,
                                   sY + static_cast<size_t>(r) * srcPitch, n);
        for (const auto& [d, s] : {std::pair{dA, sA}, std::pair{dB, sB}})
            for (uint32_t r = 0; r < height / 2; ++r)
                cycbcr::CopyMemoryFast(d + (static_cast<size_t>(r) * dstPitch) / 2,
                                       s + (static_cast<size_t>(r) * srcPitch) / 2, n / 2);
    }
    return luma + luma / 2;
}

CYCBCR_API unsigned int cycbcr_planar_422_420(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                              const uint8_t* sY, const uint8_t* sA,
                                              const uint8_t* sB, unsigned int width,
                                              unsigned int height, unsigned int dstPitch,
                                              unsigned int srcPitch, unsigned int dst422,
                                              unsigned int src422) {
    if (cycbcr::avx2_path())
        return cycbcr_planar_422_420_avx2(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch,
                                          dst422, src422);
    return planar_422_420_frame(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch,
                                dst422 != 0, src422 != 0, cycbcr::detail::copy_row);
}

#define CYCBCR_PLANAR(name, pair)                                      \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {              \
        return run(pair, dst, src, width, height, dstPitch, srcPitch); \
    }
CYCBCR_PLANAR(cycbcr_i420_to_i420, kI420ToI420)
CYCBCR_PLANAR(cycbcr_i420_to_yv12, kI420ToYv12)
CYCBCR_PLANAR(cycbcr_yv12_to_i420, kYv12ToI420)
CYCBCR_PLANAR(cycbcr_yv12_to_yv12, kYv12ToYv12)
CYCBCR_PLANAR(cycbcr_i420_to_p422, kI420ToP422)
CYCBCR_PLANAR(cycbcr_yv12_to_p422, kYv12ToP422)
CYCBCR_PLANAR(cycbcr_p422_to_i420, kP422ToI420)
CYCBCR_PLANAR(cycbcr_p422_to_yv12, kP422ToYv12)
CYCBCR_PLANAR(cycbcr_p422_to_p422, kP422ToP422)

}  // extern "C"

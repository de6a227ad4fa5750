// Planar to planar 8-bit: I420, YV12 and P422 among themselves.
#include "ycbcr8/planar_copy.h"

#include <algorithm>
#include <utility>

#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr8/planar_copy_list.h"

namespace cycbcr {

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
    // Exactly one side 4:2:2: width bytes of Y per row and width / 2 of chroma.
    // Each 4:2:0 chroma row serves two 4:2:2 rows; going the other way the odd
    // 4:2:2 chroma rows are dropped. No account is taken of fields.
    const size_t half = width / 2;
    // Rows of exactly the width on both sides make the luma one block.
    const bool lumaBlock = dstPitch == width && srcPitch == width;
    if (lumaBlock) CopyMemoryFast(dY, sY, static_cast<size_t>(width) * height);
    const Rows dy = rows_down(dY, dstPitch), sy = rows_down(sY, srcPitch);
    const Rows da = rows_down(dA, chroma_pitch(dstPitch)),
               db = rows_down(dB, chroma_pitch(dstPitch));
    const Rows sa = rows_down(sA, chroma_pitch(srcPitch)),
               sb = rows_down(sB, chroma_pitch(srcPitch));
    walk(all_rows(height), [&](uint32_t r) {
        if (!lumaBlock) copy(dy.at(r), sy.at(r), width);
        const ChromaRow from = chroma_row(dst422 ? ChromaRows::Shared : ChromaRows::Own, r);
        const ChromaRow to = chroma_row(dst422 ? ChromaRows::Own : ChromaRows::EvenOnly, r);
        if (!to.present) return;
        copy(da.at(to.row), sa.at(from.row), half);
        copy(db.at(to.row), sb.at(from.row), half);
    });
    return 2 * dstPitch * height;
}

namespace {

// The engines take the two chroma planes of each side in one fixed order:
// 4:2:0 frames hand theirs over Cr first, P422 Cb first. So the copies among
// I420 and YV12 keep Cb with Cb, while the pairs with P422 on one side pair Cb
// with Cr. Kept exactly: callers depend on the bytes as they are.
std::pair<uint8_t*, uint8_t*> engine_order(Format f, uint8_t* base, uint32_t pitch,
                                           uint32_t height) {
    const Planes p = planar_planes(f, base, pitch, height);
    return full_height_chroma(f) ? std::pair{p.cb, p.cr} : std::pair{p.cr, p.cb};
}

template <Format From, Format To, auto>
unsigned int planar_copy(CYCBCR_CONVERTER_ARGS) {
    entry(OnEntry::ChooseLevel);
    auto* s = const_cast<uint8_t*>(src);
    const auto [dA, dB] = engine_order(To, dst, dstPitch, height);
    const auto [sA, sB] = engine_order(From, s, srcPitch, height);
    if constexpr (!full_height_chroma(From) && !full_height_chroma(To))
        return cycbcr_planar_copy(dst, dA, dB, src, sA, sB, width, height, dstPitch, srcPitch);
    else
        return cycbcr_planar_422_420(dst, dA, dB, src, sA, sB, width, height, dstPitch, srcPitch,
                                     full_height_chroma(To), full_height_chroma(From));
}

}  // namespace

Extent planar_copy_extent(Format from, Format to, const Call& c) {
    const uint32_t w = c.width, h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    // Both chroma planes of a side see the same rows: the later plane ends last.
    const PlaneOffsets dpl = planar_offsets(to, dp, h), spl = planar_offsets(from, sp, h);
    const uint64_t dPlane = widest(dpl.cb, dpl.cr), sPlane = widest(spl.cb, spl.cr);
    auto block = [](uint64_t plane, uint64_t bytes) { return bytes == 0 ? 0 : plane + bytes; };
    const uint32_t luma = dp * h;
    const bool dst422 = full_height_chroma(to), src422 = full_height_chroma(from);
    if (dst422 && src422)  // whole planes sized by dstPitch
        return {widest(luma, block(sPlane, luma / 2)), widest(luma, block(dPlane, luma / 2))};
    if (!dst422 && !src422) {
        if (dp == sp)
            return {widest(luma, block(sPlane, luma / 4)), widest(luma, block(dPlane, luma / 4))};
        const uint64_t n = std::min(dp, sp);
        auto chroma = [&](uint64_t plane, uint64_t pitch) {
            return h / 2 == 0 || n / 2 == 0 ? 0 : plane + ((h / 2 - 1) * pitch) / 2 + n / 2;
        };
        return {widest(rows_end(0, h, sp, n), chroma(sPlane, sp)),
                widest(rows_end(0, h, dp, n), chroma(dPlane, dp))};
    }
    // Width bytes of luma a row, width / 2 of chroma, whole chroma rows repeated
    // or dropped.
    const uint64_t half = w / 2;
    auto chroma = [half, h](uint64_t plane, uint64_t row, uint64_t pitch) {
        return half == 0 || h == 0 ? 0 : plane + row * pitch + half;
    };
    const uint32_t lastEven = h == 0 ? 0 : (h - 1) & ~1u;
    const uint64_t sRow = dst422 ? (h - 1) / 2 : lastEven, dRow = dst422 ? h - 1 : lastEven / 2;
    return {widest(rows_end(0, h, sp, w), chroma(sPlane, sRow, chroma_pitch(sp))),
            widest(rows_end(0, h, dp, w), chroma(dPlane, dRow, chroma_pitch(dp)))};
}

}  // namespace cycbcr

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
        // Chroma row r at (r * pitch) / 2 on each side: half the luma row's
        // offset, not r half-pitches.
        const uint32_t n = std::min(dstPitch, srcPitch);
        const cycbcr::Rows dy = cycbcr::rows_down(dY, dstPitch),
                           sy = cycbcr::rows_down(sY, srcPitch);
        cycbcr::walk(cycbcr::all_rows(height),
                     [&](uint32_t r) { cycbcr::CopyMemoryFast(dy.at(r), sy.at(r), n); });
        for (const auto& plane : {std::pair{dA, sA}, std::pair{dB, sB}}) {
            uint8_t* const d = plane.first;
            const uint8_t* const s = plane.second;
            cycbcr::walk(cycbcr::all_rows(height / 2), [&](uint32_t r) {
                cycbcr::CopyMemoryFast(d + (static_cast<size_t>(r) * dstPitch) / 2,
                                       s + (static_cast<size_t>(r) * srcPitch) / 2, n / 2);
            });
        }
    }
    return luma + luma / 2;
}

CYCBCR_API unsigned int cycbcr_planar_422_420(uint8_t* dY, uint8_t* dA, uint8_t* dB,
                                              const uint8_t* sY, const uint8_t* sA,
                                              const uint8_t* sB, unsigned int width,
                                              unsigned int height, unsigned int dstPitch,
                                              unsigned int srcPitch, unsigned int dst422,
                                              unsigned int src422) {
    if (cycbcr::entry(cycbcr::OnEntry::ReadLevel).avx2)
        return cycbcr_planar_422_420_avx2(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch,
                                          dst422, src422);
    return cycbcr::planar_422_420_frame(dY, dA, dB, sY, sA, sB, width, height, dstPitch, srcPitch,
                                        dst422 != 0, src422 != 0, cycbcr::plain::copy_row);
}

#define CYCBCR_ENTRY cycbcr::planar_copy
CYCBCR_PLANAR_COPY_PAIRS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

// The converters between v210 and the 8-bit formats: each takes its AVX2 form at
// level 5 and otherwise one of the plain engines with a fixed pointer convention.
#include <type_traits>

#include <algorithm>
#include <string_view>

#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "ycbcr10/v210.h"
#include "ycbcr10/v210_list.h"

namespace cycbcr {
namespace {

template <Format From, Format To, auto Avx2>
unsigned int v210_entry(CYCBCR_CONVERTER_ARGS) {
    // These read the level without choosing one: while it is unset they take the
    // plain path, which chooses.
    if constexpr (!std::is_null_pointer_v<decltype(Avx2)>)
        if (entry(OnEntry::ReadLevel).avx2) return Avx2(CYCBCR_CONVERTER_CALL);
    if constexpr (From == Format::V210 && To == Format::V210) {
        cycbcr_interleaved_copy(CYCBCR_CONVERTER_CALL);
        return height * dstPitch;
    } else if constexpr (From == Format::UYVY) {
        return cycbcr_uyvy_to_012v_opt(CYCBCR_CONVERTER_CALL);
    } else if constexpr (To == Format::UYVY) {
        return cycbcr_012v_to_uyvy_opt(CYCBCR_CONVERTER_CALL);
    } else if constexpr (From == Format::V210) {
        const unsigned int full = full_height_chroma(To) ? 1 : 0;
        if constexpr (is_packed422(To)) {
            const Planes d = packed_samples(To, dst);
            const unsigned int n =
                Fromv210(d.y, d.cb, d.cr, src, width, height, dstPitch, srcPitch, full, 0);
            if constexpr (To == Format::CYUV) cycbcr_invert(dst, dstPitch, height);
            return n;
        } else {
            const Planes d = planar_planes(To, dst, dstPitch, height);
            return Fromv210(d.y, d.cb, d.cr, src, width, height, dstPitch, srcPitch, full, 1);
        }
    } else {
        const unsigned int full = full_height_chroma(From) ? 1 : 0;
        auto* s = const_cast<uint8_t*>(src);
        if constexpr (is_packed422(From)) {
            const Planes p = packed_samples(From, s);
            const unsigned int n =
                Tov210(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch, full, 0);
            if constexpr (From == Format::CYUV)
                cycbcr_invert(dst, dstPitch, height);  // the pitch as passed, 0 included
            return n;
        } else {
            // Planes are found by srcPitch, then read as tightly packed rows of width.
            const Planes p = planar_planes(From, s, srcPitch, height);
            return Tov210(dst, p.y, p.cb, p.cr, width, height, dstPitch, srcPitch, full, 1);
        }
    }
}

// The end of the v210 bytes read for samples 0 .. count - 1 in address order: a
// sample is read as its whole 32-bit word.
uint64_t samples_end(uint64_t count) {
    if (count == 0) return 0;
    const uint64_t last = count - 1;
    return last / 12 * kV210GroupBytes + 4 * (last % 12 / 3 + 1);
}

// UYVY <-> v210: the plain forms and the AVX2 forms.
Extent uyvy_pair_extent(Format to, const Call& c) {
    const uint32_t w = c.width, h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    const uint64_t groups = pack_groups(w);
    if (to == Format::V210) {
        // Its own pitch rule; the same walk on both paths.
        const uint32_t minimum = (w * 16) / 6;
        const uint32_t dpu = dp >= minimum ? dp : (minimum + 63) & ~63u;
        return {rows_end(0, h, std::max(2 * w, sp), 12 * groups), rows_end(0, h, dpu, 16 * groups)};
    }
    // The plain form writes whole pixel pairs from the samples they need, with a
    // source pitch of 0 read as one stream; the AVX2 form whole groups at the
    // pitches as passed.
    const uint64_t rowOut = uint64_t{4} * ((w + 1) / 2);
    const uint64_t plainSrc =
        sp == 0 ? samples_end(h * rowOut)
                : rows_end(0, h, std::max(v210_row_size(w), sp), samples_end(rowOut));
    return {widest(plainSrc, rows_end(0, h, sp, 16 * groups)),
            widest(rows_end(0, h, dp, rowOut), rows_end(0, h, dp, 12 * groups))};
}

}  // namespace

Extent v210_extent(Format from, Format to, const Call& c) {
    const uint32_t w = c.width, h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    if (from == Format::V210 && to == Format::V210) {  // the interleaved copy
        const uint64_t n = dp == sp ? dp : std::min(dp, sp);
        return {rows_end(0, h, sp, n), rows_end(0, h, dp, n)};
    }
    if (from == Format::UYVY || to == Format::UYVY) return uyvy_pair_extent(to, c);
    if (from == Format::V210) {
        // Fromv210 and the AVX2 forms: the width rounded up to 12 pixels in every
        // row and plane.
        const uint64_t groups = unpack_groups(w);
        Extent e{rows_end(0, h, std::max(v210_row_size(w), sp), 16 * groups), 0};
        if (is_packed422(to)) {
            e.dst = rows_end(0, h, dp, 12 * groups);
            if (to == Format::CYUV) e.dst = widest(e.dst, inverted_end(0, h, dp));
        } else {
            const PlaneOffsets p = planar_offsets(to, dp, h);
            const ChromaRow last = last_chroma_row(
                full_height_chroma(to) ? ChromaRows::Own : ChromaRows::LastWriteWins, h);
            const uint64_t chroma = widest(p.cb, p.cr) + last.row * uint64_t{chroma_pitch(dp)};
            e.dst = widest(rows_end(0, h, dp, 6 * groups),
                           last.present && groups != 0 ? chroma + 3 * groups : 0);
        }
        return e;
    }
    // Tov210 and the AVX2 forms: whole groups, the destination pitch at least the
    // natural row.
    const uint64_t groups = pack_groups(w);
    Extent e{0, rows_end(0, h, std::max(v210_row_size(w), dp), 16 * groups)};
    if (is_packed422(from)) {
        e.src = rows_end(0, h, run_on_step(sp, 2 * w, 12 * groups), 12 * groups);
        if (from == Format::CYUV) e.dst = widest(e.dst, inverted_end(0, h, dp));
        return e;
    }
    // Planes found by srcPitch and read as tightly packed rows; the AVX2 form of
    // I420 reads its rows a pitch apart.
    const PlaneOffsets p = planar_offsets(from, sp, h);
    const ChromaRow last =
        last_chroma_row(full_height_chroma(from) ? ChromaRows::Own : ChromaRows::Shared, h);
    auto planes = [&](uint64_t lumaPitch, uint64_t chromaPitch) {
        const uint64_t chroma = widest(p.cb, p.cr) + last.row * chromaPitch;
        return widest(rows_end(0, h, lumaPitch, 6 * groups),
                      last.present && groups != 0 ? chroma + 3 * groups : 0);
    };
    e.src = planes(w, w / 2);
    if (from == Format::I420) e.src = widest(e.src, planes(sp, chroma_pitch(sp)));
    return e;
}

bool v210_planes_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    const std::string_view n(name);
    const bool wide = n.find("16") != std::string_view::npos;
    if (n != "cycbcr_012v_to_planar422" && n != "cycbcr_012v_to_planar422_avx2" &&
        n != "cycbcr_v210to_planar_avx2" && n != "cycbcr_012v_to_planar422_16" &&
        n != "cycbcr_012v_to_planar422_16_avx2" && n != "cycbcr_v210to_planar16_avx2")
        return false;
    // Fromv210 and the AVX2 forms alike: the width rounded up to 12 pixels in
    // every row of every plane, chroma rows half the pitch apart.
    const uint32_t w = c.width, h = c.height, dp = c.pitch[0], sp = c.pitch[1];
    const uint64_t groups = unpack_groups(w), sample = wide ? 2 : 1;
    out[0] = rows_end(0, h, dp, 6 * groups * sample);
    out[1] = out[2] = rows_end(0, h, chroma_pitch(dp), 3 * groups * sample);
    out[3] = rows_end(0, h, std::max(v210_row_size(w), sp), 16 * groups);
    return true;
}

}  // namespace cycbcr

extern "C" {

CYCBCR_API unsigned int cycbcr_012v_to_planar422(uint8_t* y, uint8_t* cb, uint8_t* cr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (cycbcr::entry(cycbcr::OnEntry::ReadLevel).avx2)
        return cycbcr_012v_to_planar422_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
    return Fromv210(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
}

CYCBCR_API unsigned int cycbcr_012v_to_planar422_16(void* y, void* cb, void* cr, const uint8_t* src,
                                                    unsigned int width, unsigned int height,
                                                    unsigned int dstPitch, unsigned int srcPitch) {
    if (cycbcr::entry(cycbcr::OnEntry::ReadLevel).avx2)
        return cycbcr_012v_to_planar422_16_avx2(y, cb, cr, src, width, height, dstPitch, srcPitch);
    return Fromv210_16(y, cb, cr, src, width, height, dstPitch, srcPitch, 1, 1);
}

#define CYCBCR_ENTRY cycbcr::v210_entry
CYCBCR_V210_PAIRS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

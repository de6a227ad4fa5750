// The converters between v210 and the 8-bit formats: each takes its AVX2 form at
// level 5 and otherwise one of the plain engines with a fixed pointer convention.
#include <type_traits>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
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

}  // namespace
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

#define CYCBCR_BODY(name, form, from, to)                                          \
    CYCBCR_API unsigned int name(CYCBCR_CONVERTER_ARGS) {                          \
        return cycbcr::v210_entry<cycbcr::Format::from, cycbcr::Format::to, form>( \
            CYCBCR_CONVERTER_CALL);                                                \
    }
CYCBCR_V210_PAIRS(CYCBCR_DEFINE)
#undef CYCBCR_BODY

}  // extern "C"

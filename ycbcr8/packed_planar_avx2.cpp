// AVX2 forms of the packed <-> planar wrappers: the engines' frame walks with
// 16-pair row kernels.
#include "frame/export.h"
#include "ycbcr8/packed_planar.h"
#include "ycbcr8/packed_planar_list.h"

namespace cycbcr::avx2 {
namespace {

template <Format From, Format To, auto>
unsigned int packed_planar(CYCBCR_CONVERTER_ARGS) {
    if constexpr (is_packed422(From)) {
        const ToPlanarFrame f{packed_samples(From, const_cast<uint8_t*>(src)),
                              planar_planes(To, dst, dstPitch, height),
                              width,
                              dstPitch,
                              srcPitch,
                              full_height_chroma(To) ? ChromaRows::Own : ChromaRows::FieldKept};
        const RowRun rows = all_rows(height);
        const Format shape = packed_shape(f.src.y, f.src.cb, f.src.cr);  // cyuv pairs as UYVY
        toplanar_rows(f, rows, split_kernel(shape, toplanar_luma_meets_chroma(f, rows)));
        if constexpr (From == Format::CYUV) invert_planes(To, dst, dstPitch, height);
        // This path's own count, which differs from the engine's when
        // dstPitch * height is odd.
        return (height * dstPitch * 3) / 2;
    } else {
        // Planar sources of packed output are placed by the width, whatever the pitch.
        const FromPlanarFrame f{planar_planes(From, const_cast<uint8_t*>(src), width, height),
                                packed_samples(To, dst),
                                width,
                                dstPitch,
                                srcPitch,
                                full_height_chroma(From)};
        fromplanar_rows(f, all_rows(height),
                        merge_kernel(packed_shape(f.dst.y, f.dst.cb, f.dst.cr)));
        if constexpr (To == Format::CYUV) cycbcr_invert(dst, dstPitch, height);
        return dstPitch * height;
    }
}

}  // namespace
}  // namespace cycbcr::avx2

extern "C" {

#define CYCBCR_ENTRY cycbcr::avx2::packed_planar
CYCBCR_PACKED_PLANAR_AVX2_FORMS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

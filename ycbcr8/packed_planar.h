// The frame walks of the packed <-> planar engines, shared by their plain and
// AVX2 forms: each form brings its row kernel.
#pragma once

#include <cstdint>

#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr8/packed_rows.h"

namespace cycbcr {

// Packed to planar by the engine's rules: width / 2 pairs a row (an odd last
// pixel dropped); source rows restart at i * srcPitch unless srcPitch is exactly
// 2 * width, when they run on from the previous row's last pair; luma row i at
// i * dstPitch, chroma rows dstPitch / 2 apart by `rule` (Own for 4:2:2,
// FieldKept for 4:2:0).
struct ToPlanarFrame {
    Planes src;  // packed sample pointers
    Planes dst;  // planes
    uint32_t width, dstPitch, srcPitch;
    ChromaRows rule;
};
void toplanar_rows(const ToPlanarFrame& f, RowRun run, SplitRow row);
// Whether some row of the run writes luma over its own chroma bytes (then the
// bytes depend on the order of the writes within the row).
bool toplanar_luma_meets_chroma(const ToPlanarFrame& f, RowRun run);

// Planar to packed by the engine's rules: ceil(width / 2) pairs a row (an odd
// width reads one luma byte past the row); luma rows srcPitch apart, running on
// when width == srcPitch; 4:2:0 chroma rows srcPitch / 2 apart by FieldRepeated,
// 4:2:2 chroma read as one run of pairs-a-row samples; packed rows dstPitch apart.
struct FromPlanarFrame {
    Planes src;  // planes
    Planes dst;  // packed sample pointers
    uint32_t width, dstPitch, srcPitch;
    bool full;  // 4:2:2 chroma
};
void fromplanar_rows(const FromPlanarFrame& f, RowRun run, MergeRow row);

// cyuv results are turned over plane by plane (4:2:0 chroma: height / 2 rows).
void invert_planes(Format planar, uint8_t* dst, uint32_t dstPitch, uint32_t height);

}  // namespace cycbcr

// Reduced-size planar frames from v210 and UYVY: the reduction by 1.5 of both
// sources, the general v210 reduction by a whole row step, and the entries that
// choose between them and the plain unpacking.
#include "scale/scale.h"

#include <algorithm>
#include <string_view>

#include "frame/entry.h"
#include "frame/export.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr10/v210.h"

namespace cycbcr::scale {
namespace plain {

// Six pixels a group, in both sources the same twelve samples in address order
// (Cb0 Y0 Cr0 Y1 Cb2 Y2 Cr2 Y3 Cb4 Y4 Cr4 Y5): Y'0 = Y0 with Y1, Y'1 = Y2,
// Y'2 = Y3 with Y4, Y'3 = Y5, chroma of pixels 0 and 4 (pixel 2's dropped).
void uyvy_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t /*ahead*/) {
    for (uint32_t g = 0; g < groups; ++g, src += 12, y += 4) {
        y[0] = static_cast<uint8_t>((src[1] + src[3]) >> 1);
        y[1] = src[5];
        y[2] = static_cast<uint8_t>((src[7] + src[9]) >> 1);
        y[3] = src[11];
        if (cb != nullptr) {
            cb[2 * g] = src[0];
            cb[2 * g + 1] = src[8];
            cr[2 * g] = src[2];
            cr[2 * g + 1] = src[10];
        }
    }
}

void v210_row_1_5(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t groups,
                  size_t /*ahead*/) {
    for (uint32_t g = 0; g < groups; ++g, src += kV210GroupBytes, y += 4) {
        uint32_t v[12];
        for (unsigned k = 0; k < 12; ++k) v[k] = v210_sample(src, k);
        // Two 10-bit samples averaged straight into 8 bits: (a + b) >> 3.
        y[0] = static_cast<uint8_t>((v[1] + v[3]) >> 3);
        y[1] = truncate_10to8(v[5]);
        y[2] = static_cast<uint8_t>((v[7] + v[9]) >> 3);
        y[3] = truncate_10to8(v[11]);
        if (cb != nullptr) {
            cb[2 * g] = truncate_10to8(v[0]);
            cb[2 * g + 1] = truncate_10to8(v[8]);
            cr[2 * g] = truncate_10to8(v[2]);
            cr[2 * g + 1] = truncate_10to8(v[10]);
        }
    }
}

void v210_groups_to_samples(uint16_t* dst, const uint8_t* src, uint32_t groups) {
    for (uint32_t g = 0; g < groups; ++g, src += kV210GroupBytes, dst += 12)
        for (unsigned w = 0; w < 4; ++w) {
            const uint32_t word = load_le32(src + 4 * w);
            for (unsigned k = 0; k < 3; ++k)
                dst[3 * w + k] = static_cast<uint16_t>(((word >> (10 * k)) & 0x3FF) << 6);
        }
}

// Output luma i sits on source pixel step * i: on chroma rows it is the average
// of the two pixels of that pixel's chroma pair, elsewhere the pixel's own
// sample. Output chroma c is that of source pixel 2 * step * c, so each output
// pair takes the chroma under its first pixel. The row is taken 24 output
// pixels at a time, from the 4 * step groups under them unpacked to 16-bit
// samples in address order; reads end with the group of the last output pixel.
void v210_step_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t step,
                   uint32_t count, SampleGroups unpack, size_t /*ahead*/) {
    constexpr uint32_t kChunk = 24;
    if (count == 0) return;
    const uint32_t groups = step * (count - 1) / 6 + 1;
    uint16_t t[12 * 4 * 4 + 2];  // up to 16 groups, and the unpacker's slack
    for (uint32_t i0 = 0; i0 < count; i0 += kChunk) {
        const uint32_t g0 = step * i0 / 6;
        unpack(t, src + kV210GroupBytes * size_t{g0}, std::min(4 * step, groups - g0));
        const uint32_t end = std::min(i0 + kChunk, count);
        if (cb == nullptr) {
            for (uint32_t i = i0; i < end; ++i)
                y[i] = static_cast<uint8_t>(t[2 * step * (i - i0) + 1] >> 8);
            continue;
        }
        for (uint32_t i = i0; i < end; ++i) {
            const uint32_t first = step * (i - i0) & ~1u;
            y[i] = static_cast<uint8_t>(((t[2 * first + 1] >> 6) + (t[2 * first + 3] >> 6)) >> 3);
        }
        for (uint32_t c = i0 / 2; c < end / 2; ++c) {
            const uint32_t pair = step * (c - i0 / 2);
            cb[c] = static_cast<uint8_t>(t[4 * pair] >> 8);
            cr[c] = static_cast<uint8_t>(t[4 * pair + 2] >> 8);
        }
    }
}

}  // namespace plain

namespace {

// Output row j carries chroma (to chroma row j for 4:2:2, j / 2 for 4:2:0) on
// every row with the 4:2:2 flag, else on even rows only.
CYCBCR_INLINE ChromaRow output_chroma_row(bool full, uint32_t j) {
    return chroma_row(full ? ChromaRows::Own : ChromaRows::EvenOnly, j);
}
CYCBCR_INLINE uint32_t output_chroma_rows(bool full, uint32_t rows) {
    return full ? rows : (rows + 1) / 2;
}

// The bytes of an output row of w samples: whole runs of four.
CYCBCR_INLINE constexpr uint32_t luma_row_bytes(uint32_t w) {
    return (w + 3) / 4 * 4;
}

struct Reduction {
    uint32_t width, height;  // the output's
    uint32_t result;
};

// The reduction by 1.5: W = 2 * width / 3, H = 2 * height / 3; the result counts
// a 4:2:0 frame of W x H whatever the flag says.
CYCBCR_INLINE Reduction by_1_5(uint32_t width, uint32_t height) {
    const uint32_t w = 2 * width / 3, h = 2 * height / 3;
    return {w, h, w * h + w * h / 2};
}
// Source row of output row j: 3j / 2 with its low bit cleared (0, 0, 2, 4, 6,
// 6, ...), so only even rows are read and every third output row repeats one.
CYCBCR_INLINE constexpr uint32_t source_row_1_5(uint32_t j) {
    return (3 * j >> 1) & ~1u;
}

// The row kernel of a source, plain and AVX2.
struct RowForms {
    ReduceRow plain, avx2;
};
constexpr RowForms kUyvyRows{plain::uyvy_row_1_5, avx2::uyvy_row_1_5};
constexpr RowForms kV210Rows{plain::v210_row_1_5, avx2::v210_row_1_5};

unsigned int reduce_1_5(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr, const uint8_t* src,
                        uint32_t width, uint32_t height, uint32_t srcPitch, unsigned int is422,
                        const RowForms& forms) {
    const ReduceRow row = entry(OnEntry::ChooseLevel).avx2 ? forms.avx2 : forms.plain;
    const Reduction r = by_1_5(width, height);
    if (2 * height < 3) return r.result;
    const uint32_t groups = (r.width + 3) / 4;
    const bool full = is422 != 0;
    const Rows s = rows_down(src, srcPitch);
    const Rows y = rows_down(dstY, 4 * size_t{groups});
    const Rows cb = rows_down(dstCb, 2 * size_t{groups});
    const Rows cr = rows_down(dstCr, 2 * size_t{groups});
    walk(all_rows(r.height), [&](uint32_t j) {
        const ChromaRow c = output_chroma_row(full, j);
        // The next row read is two rows on, unless it is the last.
        const uint32_t from = source_row_1_5(j);
        const size_t ahead = from + 2 <= source_row_1_5(r.height - 1) ? 2 * size_t{srcPitch} : 0;
        row(y.at(j), c.present ? cb.at(c.row) : nullptr, c.present ? cr.at(c.row) : nullptr,
            s.at(from), groups, ahead);
    });
    return r.result;
}

// The general path: rows 0, step, 2 * step, ... and source pixels 0, step, ...
CYCBCR_INLINE uint32_t row_step(uint32_t scale) {
    switch (scale & 0xFFFF) {
        case 200:
            return 2;
        case 300:
            return 3;
        case 400:
            return 4;
        default:
            return 1;
    }
}
CYCBCR_INLINE Reduction by_step(uint32_t width, uint32_t height, uint32_t step, bool full) {
    const uint32_t w = (width + step - 1) / step, h = (height + step - 1) / step;
    const uint32_t n = luma_row_bytes(w) * h;  // every luma byte written
    return {w, h, full ? n * 2 : n + n / 2};
}

unsigned int reduce_by_step(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr, const uint8_t* src,
                            uint32_t width, uint32_t height, uint32_t srcPitch, uint32_t scale,
                            unsigned int is422) {
    const bool vector = entry(OnEntry::ChooseLevel).avx2;
    const SampleGroups unpack =
        vector ? cycbcr::avx2::v210_groups_to_u16 : plain::v210_groups_to_samples;
    const auto row = vector ? avx2::v210_step_row : plain::v210_step_row;
    if (height == 0) return 0;
    const uint32_t step = row_step(scale);
    const bool full = is422 != 0;
    const Reduction r = by_step(width, height, step, full);
    const uint32_t count = luma_row_bytes(r.width);
    const uint32_t pitch = std::max(v210_row_size(width), srcPitch);
    const Rows s = rows_down(src, pitch);
    const Rows y = rows_down(dstY, count);
    const Rows cb = rows_down(dstCb, count / 2);
    const Rows cr = rows_down(dstCr, count / 2);
    const auto output_row = [&](uint32_t j) {
        const ChromaRow c = output_chroma_row(full, j);
        return StepRow{y.at(j), c.present ? cb.at(c.row) : nullptr,
                       c.present ? cr.at(c.row) : nullptr, s.at(j * step)};
    };
    uint32_t j = 0;
    if (vector)
        // Rows two at a time, each turn asking for the next pair's lines.
        for (; j + 2 <= r.height; j += 2)
            avx2::v210_step_rows(output_row(j), output_row(j + 1), step, count, unpack,
                                 j + 3 < r.height ? 2 * size_t{step} * pitch : 0);
    for (; j < r.height; ++j) {
        const StepRow o = output_row(j);
        row(o.y, o.cb, o.cr, o.src, step, count, unpack, 0);
    }
    return r.result;
}

// UYVY rows at least a row of pixels apart, as the library's other UYVY readers.
CYCBCR_INLINE uint32_t uyvy_pitch(uint32_t width, uint32_t srcPitch) {
    return std::max(2 * width, srcPitch);
}
CYCBCR_INLINE uint32_t v210_pitch(uint32_t width, uint32_t srcPitch) {
    return std::max(v210_row_size(width), srcPitch);
}

// Extents ------------------------------------------------------------------

// The reduction by 1.5: whole groups of 12 (UYVY) or 16 (v210) source bytes.
void extent_1_5(const PlaneCall& c, bool v210, PointerExtents& out) {
    const Reduction r = by_1_5(c.width, c.height);
    const bool full = c.arg(3) != 0;
    const uint64_t groups = (r.width + 3) / 4;
    if (2 * c.height < 3 || r.height == 0 || groups == 0) return;
    out[0] = uint64_t{r.height} * 4 * groups;
    out[1] = out[2] = uint64_t{output_chroma_rows(full, r.height)} * 2 * groups;
    const uint64_t last = source_row_1_5(r.height - 1);
    out[3] = v210 ? last * v210_pitch(c.width, c.arg(1)) + 16 * groups
                  : last * uyvy_pitch(c.width, c.arg(1)) + 12 * groups;
}

void extent_by_step(const PlaneCall& c, PointerExtents& out) {
    if (c.height == 0) return;
    const uint32_t step = row_step(c.arg(2));
    const bool full = c.arg(3) != 0;
    const Reduction r = by_step(c.width, c.height, step, full);
    const uint64_t count = luma_row_bytes(r.width);
    if (count == 0) return;
    out[0] = uint64_t{r.height} * count;
    out[1] = out[2] = uint64_t{output_chroma_rows(full, r.height)} * (count / 2);
    // The last row's reads end within the group of its last output pixel (its
    // pair partner and the chroma read lie no further).
    const uint64_t lastGroup = step * (count - 1) / 6;
    out[3] = uint64_t{r.height - 1} * step * v210_pitch(c.width, c.arg(1)) +
             kV210GroupBytes * (lastGroup + 1);
}

// Scale 100 of UYVY: cycbcr_toplanar and its AVX2 forms (the same rows).
void extent_toplanar(const PlaneCall& c, PointerExtents& out) {
    const uint32_t w = c.width, h = c.height, dp = c.arg(0), sp = c.arg(1);
    const uint64_t pairs = w / 2;
    out[0] = rows_end(0, h, dp, 2 * pairs);
    const ChromaRow last =
        last_chroma_row(c.arg(3) != 0 ? ChromaRows::Own : ChromaRows::FieldKept, h);
    out[1] = out[2] =
        h != 0 && last.present && pairs != 0 ? uint64_t{last.row} * chroma_pitch(dp) + pairs : 0;
    out[3] = rows_end(0, h, run_on_step(sp, 2 * w, 4 * pairs), 4 * pairs);
}

// Scale 100 of v210: Fromv210, the width rounded up to 12 pixels.
void extent_fromv210(const PlaneCall& c, PointerExtents& out) {
    const uint32_t w = c.width, h = c.height, dp = c.arg(0), sp = c.arg(1);
    const uint64_t groups = unpack_groups(w);
    out[0] = rows_end(0, h, dp, 6 * groups);
    const ChromaRow last =
        last_chroma_row(c.arg(3) != 0 ? ChromaRows::Own : ChromaRows::LastWriteWins, h);
    out[1] = out[2] = h != 0 && last.present && groups != 0
                          ? uint64_t{last.row} * chroma_pitch(dp) + 3 * groups
                          : 0;
    out[3] = rows_end(0, h, v210_pitch(w, sp), 16 * groups);
}

}  // namespace

bool scale_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    const std::string_view n(name);
    const uint32_t scale = c.arg(2) & 0xFFFF;
    out = {};
    if (n == "cycbcr_uyvy_scale_planar_1_5" || n == "cycbcr_012v_scale_planar_1_5") {
        extent_1_5(c, n[7] == '0', out);
    } else if (n == "cycbcr_uyvy_scale_planar") {
        if (scale == 100) extent_toplanar(c, out);
        if (scale == 150) extent_1_5(c, false, out);
    } else if (n == "cycbcr_012v_scale_planar") {
        if (scale == 100)
            extent_fromv210(c, out);
        else if (scale == 150)
            extent_1_5(c, true, out);
        else
            extent_by_step(c, out);
    } else {
        return false;
    }
    return true;
}

}  // namespace cycbcr::scale

using namespace cycbcr;
using namespace cycbcr::scale;

extern "C" {

CYCBCR_API unsigned int cycbcr_uyvy_scale_planar_1_5(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                     const uint8_t* src, unsigned int width,
                                                     unsigned int height, unsigned int dstPitch,
                                                     unsigned int srcPitch, unsigned int scale,
                                                     unsigned int is422) {
    (void)dstPitch, (void)scale;  // rows are packed; the scale is the name's
    return reduce_1_5(dstY, dstCb, dstCr, src, width, height, uyvy_pitch(width, srcPitch), is422,
                      kUyvyRows);
}

CYCBCR_API unsigned int cycbcr_012v_scale_planar_1_5(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                     const uint8_t* src, unsigned int width,
                                                     unsigned int height, unsigned int dstPitch,
                                                     unsigned int srcPitch, unsigned int scale,
                                                     unsigned int is422) {
    (void)dstPitch, (void)scale;
    return reduce_1_5(dstY, dstCb, dstCr, src, width, height, v210_pitch(width, srcPitch), is422,
                      kV210Rows);
}

CYCBCR_API unsigned int cycbcr_uyvy_scale_planar(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch, unsigned int scale,
                                                 unsigned int is422) {
    switch (scale & 0xFFFF) {
        case 100:
            return cycbcr_toplanar(src + 1, src, src + 2, dstY, dstCb, dstCr, width, height,
                                   dstPitch, srcPitch, is422);
        case 150:
            return cycbcr_uyvy_scale_planar_1_5(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                                srcPitch, scale, is422);
        default:
            return 0;  // no other reduction of UYVY
    }
}

CYCBCR_API unsigned int cycbcr_012v_scale_planar(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch, unsigned int scale,
                                                 unsigned int is422) {
    switch (scale & 0xFFFF) {
        case 100:
            return Fromv210(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch, is422, 1);
        case 150:
            return cycbcr_012v_scale_planar_1_5(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                                srcPitch, scale, is422);
        default:
            return reduce_by_step(dstY, dstCb, dstCr, src, width, height, srcPitch, scale, is422);
    }
}

}  // extern "C"

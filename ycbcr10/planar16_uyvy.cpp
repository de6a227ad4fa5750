// 16-bit planar 4:2:2 and 4:2:0 into UYVY, and UYVY into 4:4:4 p10: the plain
// forms, the frame walks they share with the AVX2 forms, the eight-band path of
// the wide 4:2:2 frames, and the family's buffer sizes.
#include <algorithm>
#include <string_view>

#include "cycbcr.h"
#include "frame/entry.h"
#include "frame/geometry.h"
#include "frame/row_walk.h"
#include "ycbcr10/bands.h"
#include "ycbcr10/planar16.h"
#include "ycbcr10/v210.h"

namespace cycbcr {

namespace plain {

void p10_to_uyvy_row(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                     uint32_t first, uint32_t width) {
    auto byte = [](uint16_t v) { return static_cast<uint8_t>(v >> 2); };  // (v >> 2) & 0xFF
    uint32_t x = first;
    for (; x + 2 <= width; x += 2) {
        dst[2 * x] = byte(load_u16(cb, x / 2));
        dst[2 * x + 1] = byte(load_u16(y, x));
        dst[2 * x + 2] = byte(load_u16(cr, x / 2));
        dst[2 * x + 3] = byte(load_u16(y, x + 1));
    }
    if (x < width) {
        dst[2 * x] = byte(load_u16(cb, x / 2));
        dst[2 * x + 1] = byte(load_u16(y, x));
    }
}

void uyvy_to_444_row(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src, uint32_t first,
                     uint32_t width) {
    for (uint32_t x = first; x < width; ++x) {
        const uint8_t* pair = src + 4 * size_t{x / 2};
        store_u16(y, x, uint32_t{src[2 * size_t{x} + 1]} << 2);
        store_u16(cb, x, uint32_t{pair[0]} << 2);
        store_u16(cr, x, uint32_t{pair[2]} << 2);
    }
}

void store_uyvy_from_16bit_row(unsigned char* dst, const unsigned short* y,
                               const unsigned short* cb, const unsigned short* cr,
                               unsigned int width, unsigned int shift) {
    const auto* py = reinterpret_cast<const uint8_t*>(y);
    const auto* pb = reinterpret_cast<const uint8_t*>(cb);
    const auto* pr = reinterpret_cast<const uint8_t*>(cr);
    const unsigned int clamped = width >= 16 ? width / 16 * 16 : 0;
    auto byte = [&](uint16_t v, unsigned int x) -> uint8_t {
        if (shift >= 16) return 0;
        const uint32_t s = v >> shift;
        return x < clamped ? static_cast<uint8_t>(std::min<uint32_t>(s, 255))
                           : static_cast<uint8_t>(s);
    };
    for (unsigned int x = 0; x + 2 <= width; x += 2) {
        dst[2 * x] = byte(load_u16(pb, x / 2), x);
        dst[2 * x + 1] = byte(load_u16(py, x), x);
        dst[2 * x + 2] = byte(load_u16(pr, x / 2), x);
        dst[2 * x + 3] = byte(load_u16(py, x + 1), x);
    }
}

}  // namespace plain

unsigned int p10_to_uyvy_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb, const uint8_t* cr,
                               uint32_t width, uint32_t height, uint32_t dstPitch,
                               uint32_t srcPitch, Planar16UyvyRow row) {
    const uint32_t pitch = std::max(2 * width, dstPitch);
    const Rows d = rows_down(dst, pitch), ly = rows_down(y, srcPitch);
    const Rows lb = rows_down(cb, chroma_pitch(srcPitch)),
               lr = rows_down(cr, chroma_pitch(srcPitch));
    walk(all_rows(height),
         [&](uint32_t r) { row(d.at(r), ly.at(r), lb.at(r), lr.at(r), 0, width); });
    return pitch * height;
}

unsigned int uyvy_to_444_frame(uint8_t* y, uint8_t* cb, uint8_t* cr, const uint8_t* src,
                               uint32_t width, uint32_t height, uint32_t dstPitch,
                               uint32_t srcPitch, Uyvy444Row row) {
    const Rows s = rows_down(src, std::max(2 * width, srcPitch));
    const Rows ly = rows_down(y, dstPitch), lb = rows_down(cb, dstPitch),
               lr = rows_down(cr, dstPitch);
    walk(all_rows(height),
         [&](uint32_t r) { row(ly.at(r), lb.at(r), lr.at(r), s.at(r), 0, width); });
    return width * height * 6;
}

unsigned int p420_to_uyvy_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                const uint8_t* cr, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, unsigned shift,
                                UyvyStore store) {
    const Rows d = rows_down(dst, dstPitch), ly = rows_down(y, srcPitch);
    const Rows lb = rows_down(cb, chroma_pitch(srcPitch)),
               lr = rows_down(cr, chroma_pitch(srcPitch));
    auto one = [&](uint32_t r) {
        const uint32_t c = chroma_row(ChromaRows::Shared, r).row;
        store(d.at(r), ly.at<unsigned short>(r), lb.at<unsigned short>(c), lr.at<unsigned short>(c),
              width, shift);
    };
    // An odd height does row 0 on its own and then pairs; every row still takes
    // chroma row r / 2.
    uint32_t r = 0;
    if (height % 2 != 0) one(r++);
    for (; r < height; r += 2) {
        one(r);
        one(r + 1);
    }
    return dstPitch * height;
}

namespace {

constexpr uint32_t kBandWidth = 2048;

// Kept: the event and the threads carry the names of the v210 converter of the
// same source, as they always have.
constexpr BandUser kUyvyBands{BandRows::SevenPlusRest, false, "cycbcr_yuv422p10_to_012v",
                              "ycbcr422p10", cycbcr_yuv422p10_to_uyvy_worker};

// The bytes one single-threaded 4:2:2 p10 to UYVY call reaches, from band
// offsets dOff, yOff and cOff.
void p10_uyvy_reach(PointerExtents& out, uint32_t width, uint32_t rows, uint32_t dstPitch,
                    uint32_t srcPitch, uint64_t dOff, uint64_t yOff, uint64_t cOff) {
    const uint64_t pitch = std::max(2 * width, dstPitch);
    const uint64_t pairs = (uint64_t{width} + 1) / 2;
    out[0] = widest(out[0], rows_end(dOff, rows, pitch, 2 * uint64_t{width}));
    out[1] = widest(out[1], rows_end(yOff, rows, srcPitch, 2 * uint64_t{width}));
    const uint64_t c = rows_end(cOff, rows, chroma_pitch(srcPitch), 2 * pairs);
    out[2] = widest(out[2], c);
    out[3] = widest(out[3], c);
}

}  // namespace

bool planar16_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    const std::string_view n(name);
    auto is = [&](std::string_view base) {
        return n == base || (n.size() == base.size() + 5 && n.substr(0, base.size()) == base &&
                             n.substr(base.size()) == "_avx2");
    };
    const uint32_t w = c.width, h = c.height;
    const uint64_t groups = pack_groups(w);
    out = {};
    if (is("cycbcr_012v_to_yuv422p10") || is("cycbcr_012v_to_yuv422p16") ||
        is("cycbcr_012v_to_yuv444p10")) {
        const uint32_t dp = c.pitch[0], sp = c.pitch[1];
        const bool full = n.find("444") != std::string_view::npos;
        out[0] = rows_end(0, h, dp, 12 * groups);
        // 4:4:4: the plain path stops at the last group's even pixel, the AVX2
        // form at its end; the wider answers both.
        out[1] = out[2] =
            full ? rows_end(0, h, dp, 12 * groups) : rows_end(0, h, chroma_pitch(dp), 6 * groups);
        out[3] = rows_end(0, h, std::max(v210_row_size(w), sp), 16 * groups);
        return true;
    }
    if (is("cycbcr_012v_to_yuv420p10")) {
        if (w == 0 || h == 0) return true;
        const uint32_t yp = c.pitch[0], cp = c.pitch[1], sp = c.pitch[2];
        const uint64_t pairs = (uint64_t{h} + 1) / 2;
        // Rows 2k and 2k + 1 for every chroma row: an odd height reads one row past.
        const uint64_t rowsRead = 2 * pairs;
        const bool avx2Only = n.ends_with("_avx2");
        if (!avx2Only) {
            out[0] = 12 * groups * h;
            out[1] = out[2] = 6 * groups * pairs;
            out[3] = rows_end(0, rowsRead, sp, 16 * groups);
        }
        out[0] = widest(out[0], rows_end(0, h, yp, 12 * groups));
        out[1] = out[2] = widest(out[1], rows_end(0, pairs, cp, 6 * groups));
        out[3] = widest(out[3], rows_end(0, rowsRead, std::max(v210_row_size(w), sp), 16 * groups));
        return true;
    }
    if (is("cycbcr_yuv422p10_to_uyvy") || n == "cycbcr_yuv422p10_to_uyvy_internal") {
        const uint32_t dp = c.pitch[0], sp = c.pitch[1];
        if (n != "cycbcr_yuv422p10_to_uyvy" || w <= kBandWidth) {
            p10_uyvy_reach(out, w, h, dp, sp, 0, 0, 0);
            return true;
        }
        // Eight bands, each placed by the pitches as passed and converted at the
        // pitch its own call uses; offsets in 32-bit arithmetic, as the bands are.
        const uint32_t b = h >> 3;
        for (uint32_t k = 0; k < 8; ++k) {
            const uint32_t rows = k == 7 ? h - 7 * b : b;
            const uint32_t yOff = k * b * sp;
            p10_uyvy_reach(out, w, rows, dp, sp, static_cast<uint32_t>(k * b * dp), yOff,
                           yOff >> 1);
        }
        return true;
    }
    if (is("cycbcr_yuv420p10_to_uyvy") || is("cycbcr_yuv420p16_to_uyvy")) {
        const uint32_t dp = c.pitch[0], sp = c.pitch[1];
        const uint64_t pairs = w / 2;
        out[0] = rows_end(0, h, dp, 4 * pairs);
        out[1] = rows_end(0, h, sp, 4 * pairs);
        out[2] = out[3] =
            h == 0 ? 0 : rows_end(0, (uint64_t{h} - 1) / 2 + 1, chroma_pitch(sp), 2 * pairs);
        return true;
    }
    if (is("cycbcr_uyvy_to_yuv444p10")) {
        const uint32_t dp = c.pitch[0], sp = c.pitch[1];
        out[0] = out[1] = out[2] = rows_end(0, h, dp, 2 * uint64_t{w});
        out[3] = rows_end(0, h, std::max(2 * w, sp), 2 * uint64_t{w} + (w % 2));
        return true;
    }
    return false;
}

}  // namespace cycbcr

using namespace cycbcr;

extern "C" {

CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_internal(
    uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb, const uint8_t* srcCr,
    unsigned int width, unsigned int height, unsigned int dstPitch, unsigned int srcPitch) {
    // The same bytes through the AVX2 row kernel where the level allows it: the
    // banded path of wide frames runs here at every level.
    const Planar16UyvyRow row =
        entry(OnEntry::ReadLevel).avx2 ? avx2::p10_to_uyvy_row : plain::p10_to_uyvy_row;
    return p10_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, row);
}

CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy_worker(void* job) {
    return run_band(cycbcr_yuv422p10_to_uyvy_internal, job);
}

CYCBCR_API unsigned int cycbcr_yuv422p10_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch) {
    const Paths paths = entry(OnEntry::ChooseLevel);
    if (width <= kBandWidth) {
        if (paths.avx2)
            return cycbcr_yuv422p10_to_uyvy_avx2(dst, srcY, srcCb, srcCr, width, height, dstPitch,
                                                 srcPitch);
        return cycbcr_yuv422p10_to_uyvy_internal(dst, srcY, srcCb, srcCr, width, height, dstPitch,
                                                 srcPitch);
    }
    return run_bands(kUyvyBands, dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch);
}

CYCBCR_API unsigned int cycbcr_yuv420p10_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_yuv420p10_to_uyvy_avx2(dst, srcY, srcCb, srcCr, width, height, dstPitch,
                                             srcPitch);
    return p420_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, 2,
                              plain::store_uyvy_from_16bit_row);
}

CYCBCR_API unsigned int cycbcr_yuv420p16_to_uyvy(uint8_t* dst, const uint8_t* srcY,
                                                 const uint8_t* srcCb, const uint8_t* srcCr,
                                                 unsigned int width, unsigned int height,
                                                 unsigned int dstPitch, unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_yuv420p16_to_uyvy_avx2(dst, srcY, srcCb, srcCr, width, height, dstPitch,
                                             srcPitch);
    return p420_to_uyvy_frame(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, 8,
                              plain::store_uyvy_from_16bit_row);
}

CYCBCR_API unsigned int cycbcr_uyvy_to_yuv444p10(uint8_t* dstY, uint8_t* dstCb, uint8_t* dstCr,
                                                 const uint8_t* src, unsigned int width,
                                                 unsigned int height, unsigned int dstPitch,
                                                 unsigned int srcPitch) {
    if (entry(OnEntry::ChooseLevel).avx2)
        return cycbcr_uyvy_to_yuv444p10_avx2(dstY, dstCb, dstCr, src, width, height, dstPitch,
                                             srcPitch);
    return uyvy_to_444_frame(dstY, dstCb, dstCr, src, width, height, dstPitch, srcPitch,
                             plain::uyvy_to_444_row);
}

}  // extern "C"

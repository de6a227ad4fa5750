// The semi-planar converters: NV12 and NV10 into v210, NV12 into UYVY, and
// three-plane 4:2:0 of 10, 12 or 16 bits into NV12p16. Plain row kernels, the
// frame walks both forms share, the entries and the bytes they touch.
#include "ycbcr10/semi_planar.h"

#include <cstring>

#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/row_walk.h"
#include "ycbcr10/semi_planar_list.h"
#include "ycbcr10/v210.h"

namespace cycbcr::semi_planar {
namespace {

CYCBCR_INLINE uint32_t load_le16(const uint8_t* p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return v;
}
CYCBCR_INLINE void store_le16(uint8_t* p, uint32_t v) {
    const auto w = static_cast<uint16_t>(v);
    std::memcpy(p, &w, 2);
}

// Y and chroma sample i of a group's source rows, as 10-bit values.
struct Nv12Samples {
    static uint32_t at(const uint8_t* p, unsigned i) { return uint32_t{p[i]} << 2; }
};
struct Nv10Samples {
    static uint32_t at(const uint8_t* p, unsigned i) { return load_le16(p + 2 * i) & 0x3FF; }
};

template <class Samples, unsigned Bytes>
void groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups) {
    for (uint32_t g = 0; g < groups; ++g, y += 6 * Bytes, c += 6 * Bytes, dst += kV210GroupBytes) {
        uint32_t s[12];
        for (unsigned i = 0; i < 6; ++i) s[kGroupY[i]] = Samples::at(y, i);
        for (unsigned i = 0; i < 3; ++i) {
            s[kGroupCb[i]] = Samples::at(c, 2 * i);
            s[kGroupCr[i]] = Samples::at(c, 2 * i + 1);
        }
        for (unsigned w = 0; w < 4; ++w)
            store_le32(dst + 4 * w, v210_word(s[3 * w], s[3 * w + 1], s[3 * w + 2]));
    }
}

}  // namespace

namespace plain {

void nv12_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups) {
    groups_to_v210<Nv12Samples, 1>(dst, y, c, groups);
}

void nv10_groups_to_v210(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t groups) {
    groups_to_v210<Nv10Samples, 2>(dst, y, c, groups);
}

void nv12_pairs_to_uyvy(uint8_t* dst, const uint8_t* y, const uint8_t* c, uint32_t pairs) {
    for (uint32_t k = 0; k < pairs; ++k, dst += 4, y += 2, c += 2) {
        dst[0] = c[0];
        dst[1] = y[0];
        dst[2] = c[1];
        dst[3] = y[1];
    }
}

void widen_row(uint8_t* dst, const uint8_t* src, uint32_t n, unsigned shift) {
    for (uint32_t i = 0; i < n; ++i) store_le16(dst + 2 * i, load_le16(src + 2 * i) << shift);
}

void interleave_row(uint8_t* dst, const uint8_t* cb, const uint8_t* cr, uint32_t n,
                    unsigned shift) {
    for (uint32_t k = 0; k < n; ++k) {
        store_le16(dst + 4 * k, load_le16(cb + 2 * k) << shift);
        store_le16(dst + 4 * k + 2, load_le16(cr + 2 * k) << shift);
    }
}

}  // namespace plain

unsigned int nv_to_v210_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                              uint32_t dstPitch, uint32_t srcPitch, uint32_t sampleBytes,
                              TwoPlaneRow row) {
    const uint32_t p = source_pitch(width, srcPitch, sampleBytes);
    const Rows d = rows_down(dst, std::max(v210_row_size(width), dstPitch));
    const Rows y = rows_down(src, p), c = rows_down(src + size_t{p} * height, p);
    const uint32_t groups = pack_groups(width);
    walk(all_rows(height), [&](uint32_t r) {
        row(d.at(r), y.at(r), c.at(chroma_row(ChromaRows::Shared, r).row), groups);
    });
    return height * v210_row_size(width);
}

unsigned int nv12_to_uyvy_frame(uint8_t* dst, const uint8_t* src, uint32_t width, uint32_t height,
                                uint32_t dstPitch, uint32_t srcPitch, TwoPlaneRow row) {
    const uint32_t p = source_pitch(width, srcPitch, 1), dp = wide_pitch(width, dstPitch);
    const Rows d = rows_down(dst, dp), y = rows_down(src, p);
    const Rows c = rows_down(src + size_t{p} * height, p);
    walk(all_rows(height), [&](uint32_t r) {
        row(d.at(r), y.at(r), c.at(chroma_row(ChromaRows::Shared, r).row), width / 2);
    });
    return dp * height;
}

unsigned int planar_to_nv12p16_frame(uint8_t* dst, const uint8_t* y, const uint8_t* cb,
                                     const uint8_t* cr, uint32_t width, uint32_t height,
                                     uint32_t dstPitch, uint32_t srcPitch, unsigned shift,
                                     WidenRow luma, InterleaveRow chroma) {
    const uint32_t dp = wide_pitch(width, dstPitch);
    const Rows dy = rows_down(dst, dp), sy = rows_down(y, srcPitch);
    walk(all_rows(height), [&](uint32_t r) { luma(dy.at(r), sy.at(r), width, shift); });
    // The source chroma rows one to one: height / 2 of them.
    const Rows dc = rows_down(dst + size_t{dp} * height, dp);
    const Rows sb = rows_down(cb, chroma_pitch(srcPitch)),
               sr = rows_down(cr, chroma_pitch(srcPitch));
    walk(all_rows(height / 2),
         [&](uint32_t k) { chroma(dc.at(k), sb.at(k), sr.at(k), width / 2, shift); });
    return dp * (height + height / 2);
}

namespace {

// The entries choose a level when none is chosen yet, then take the AVX2 form at
// level 5 on an AVX2 processor.
template <Format From, Format To, auto Avx2>
unsigned int entry_of(CYCBCR_CONVERTER_ARGS) {
    if (entry(OnEntry::ChooseLevel).avx2) return Avx2(CYCBCR_CONVERTER_CALL);
    if constexpr (To == Format::UYVY)
        return nv12_to_uyvy_frame(CYCBCR_CONVERTER_CALL, plain::nv12_pairs_to_uyvy);
    else if constexpr (From == Format::NV10)
        return nv_to_v210_frame(CYCBCR_CONVERTER_CALL, 2, plain::nv10_groups_to_v210);
    else
        return nv_to_v210_frame(CYCBCR_CONVERTER_CALL, 1, plain::nv12_groups_to_v210);
}

}  // namespace
}  // namespace cycbcr::semi_planar

namespace cycbcr {

// Whole groups or pairs from each luma row and from chroma rows 0 ..
// (height - 1) / 2 after the luma plane; rows as the frame walks place them.
Extent semi_planar_extent(Format from, Format to, const Call& c) {
    using namespace semi_planar;
    const uint32_t w = c.width, h = c.height;
    const uint32_t bytes = info(from).sample_bytes;
    const uint64_t p = source_pitch(w, c.srcPitch, bytes);
    uint64_t rowIn, rowOut, dp;
    if (to == Format::V210) {
        rowIn = uint64_t{6} * bytes * pack_groups(w);
        rowOut = uint64_t{kV210GroupBytes} * pack_groups(w);
        dp = std::max(v210_row_size(w), c.dstPitch);
    } else {
        rowIn = uint64_t{2} * (w / 2);
        rowOut = uint64_t{4} * (w / 2);
        dp = wide_pitch(w, c.dstPitch);
    }
    const uint64_t chroma = h == 0 ? 0 : rows_end(p * h, (h - 1) / 2 + 1, p, rowIn);
    return {widest(rows_end(0, h, p, rowIn), chroma), rows_end(0, h, dp, rowOut)};
}

// The NV12p16 producers, pointer by pointer: dst, srcY, srcCb, srcCr.
bool semi_planar_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    bool known = false;
#define CYCBCR_NV12P16_NAME(plainName, form, from, shift) \
    known = known || std::strcmp(name, #plainName) == 0 || std::strcmp(name, #form) == 0;
    CYCBCR_NV12P16_PRODUCERS(CYCBCR_NV12P16_NAME)
#undef CYCBCR_NV12P16_NAME
    if (!known) return false;
    const uint32_t w = c.width, h = c.height, sp = c.pitch[1];
    const uint64_t dp = semi_planar::wide_pitch(w, c.pitch[0]);
    const uint64_t pairs = w / 2, rows = h / 2;
    out[0] = widest(rows_end(0, h, dp, 2 * uint64_t{w}), rows_end(dp * h, rows, dp, 4 * pairs));
    out[1] = rows_end(0, h, sp, 2 * uint64_t{w});
    out[2] = out[3] = rows_end(0, rows, chroma_pitch(sp), 2 * pairs);
    return true;
}

}  // namespace cycbcr

extern "C" {

#define CYCBCR_ENTRY cycbcr::semi_planar::entry_of
CYCBCR_SEMI_PLANAR_CONVERTERS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

#define CYCBCR_NV12P16_ENTRY(name, form, from, shift)                                           \
    CYCBCR_API unsigned int name(uint8_t* dst, const uint8_t* srcY, const uint8_t* srcCb,       \
                                 const uint8_t* srcCr, unsigned int width, unsigned int height, \
                                 unsigned int dstPitch, unsigned int srcPitch) {                \
        if (cycbcr::entry(cycbcr::OnEntry::ChooseLevel).avx2)                                   \
            return form(dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch);            \
        return cycbcr::semi_planar::planar_to_nv12p16_frame(                                    \
            dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch, shift,                  \
            cycbcr::semi_planar::plain::widen_row, cycbcr::semi_planar::plain::interleave_row); \
    }
CYCBCR_NV12P16_PRODUCERS(CYCBCR_NV12P16_ENTRY)
#undef CYCBCR_NV12P16_ENTRY

}  // extern "C"

// High-bit-depth planar into v210: the plain converters, the entries that choose
// between them and their AVX2 forms or row bands, and the bytes each reaches.
#include "ycbcr10/planar16_to_v210.h"

#include <string_view>

#include "cycbcr.h"
#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "ycbcr10/bands.h"

namespace cycbcr::planar16 {
namespace {

template <Layout L>
unsigned int convert_plain(CYCBCR_PLANAR16_ARGS) {
    return walk_frame<L>(
        dst, srcY, srcCb, srcCr, width, height, dstPitch, srcPitch,
        [](uint8_t* d, const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint32_t groups) {
            pack_groups_plain<L.depth, L.chroma>(d, y, cb, cr, 0, groups);
        });
}

// An entry without bands: its AVX2 form at level 5, else the plain converter.
template <Layout L, Converter Avx2>
unsigned int entry_plain(CYCBCR_PLANAR16_ARGS) {
    if (entry(OnEntry::ChooseLevel).avx2) return Avx2(CYCBCR_PLANAR16_CALL);
    return convert_plain<L>(CYCBCR_PLANAR16_CALL);
}

// An entry with bands: its AVX2 form at level 5; otherwise frames up to `Widest`
// pixels wide on the calling thread, wider ones in eight bands.
template <Converter Avx2, Converter Internal, const BandUser& User, uint32_t Widest>
unsigned int entry_banded(CYCBCR_PLANAR16_ARGS) {
    if (entry(OnEntry::ChooseLevel).avx2) return Avx2(CYCBCR_PLANAR16_CALL);
    if (width <= Widest) return Internal(CYCBCR_PLANAR16_CALL);
    return run_bands(User, CYCBCR_PLANAR16_CALL);
}

// The two words the 4:2:2 converters write after a row's last group (width %
// 6 != 0) reach into the row below when the groups fill the pitch.
uint32_t extra_words_below(uint32_t width, uint32_t dstPitch) {
    if (width % 6 == 0 || dstPitch < v210_row_size(width)) return 0;
    const uint64_t reach = uint64_t{(width + 5) / 6} * kV210GroupBytes + 8;
    return reach > dstPitch ? static_cast<uint32_t>(reach - dstPitch) : 0;
}

// The bands of the three wide-frame converters.
constexpr BandUser k422p10Bands{BandRows::SevenPlusRest,          false,
                                "cycbcr_yuv422p10_to_012v",       "ycbcr422p10",
                                cycbcr_yuv422p10_to_012v_worker,  extra_words_below,
                                cycbcr_yuv422p10_to_012v_internal};
constexpr BandUser k422p12Bands{BandRows::EightEqual,
                                false,
                                "cycbcr_yuv422p12_to_012v",
                                "ycbcr422p12",
                                cycbcr_yuv422p12_to_012v_worker,
                                extra_words_below,
                                cycbcr_yuv422p12_to_012v_internal};
constexpr BandUser k444p12Bands{BandRows::SevenPlusRest, true, "cycbcr_yuv444p12_to_012v",
                                "yuv444p12", cycbcr_yuv444p12_to_012v_worker};

// What a converter name stands for: its layout, its form, and for an entry with
// bands the band rule and the widest frame it keeps on the calling thread.
struct Named {
    Layout layout;
    const BandUser* bands = nullptr;
    uint32_t widest = 0;
};

bool find(std::string_view name, Named& out) {
    struct Row {
        std::string_view base;
        Layout layout;
        const BandUser* bands;
        uint32_t widest;
    };
    static constexpr Row kRows[] = {
        {"cycbcr_yuv422p10_to_012v", k422p10, &k422p10Bands, 2048},
        {"cycbcr_yuv422p12_to_012v", k422p12, &k422p12Bands, 1920},
        {"cycbcr_yuv444p12_to_012v", k444p12, &k444p12Bands, 2048},
        {"cycbcr_yuv422p16_to_012v", k422p16, nullptr, 0},
        {"cycbcr_yuv444p10_to_012v", k444p10, nullptr, 0},
        {"cycbcr_yuv420p10_to_012v", k420p10, nullptr, 0},
        {"cycbcr_yuv420p16_to_012v", k420p16, nullptr, 0},
    };
    for (const Row& row : kRows) {
        if (!name.starts_with(row.base)) continue;
        const std::string_view suffix = name.substr(row.base.size());
        if (suffix.empty()) {  // the entry: every path it may take
            out = {row.layout, row.bands, row.widest};
            return true;
        }
        if (suffix == "_avx2" || (row.bands != nullptr && suffix == "_internal")) {
            out = {row.layout};
            return true;
        }
    }
    return false;
}

// Bytes reached from each pointer by `rows` rows of a call starting `dstAt`
// bytes into the destination and `yAt` into the Y plane (a band's start, or the
// frame's).
void rows_reach(const Layout& l, const PlaneCall& c, uint32_t rows, uint64_t dstAt, uint64_t yAt,
                PointerExtents& out) {
    const uint32_t w = c.width, dp = c.pitch[0], sp = c.pitch[1];
    const uint64_t groups = row_groups(l, w);
    const bool extra = writes_extra(l, w);
    if (rows == 0 || groups == 0) return;
    // Each row packs whole groups (two further words after them with `extra`):
    // six Y a group, three chroma pairs from every other chroma sample (4:4:4,
    // the last pair at pixel 6 * groups - 2) or from consecutive ones; the extra
    // words take Y 0-2, Cb 0-1 and Cr 0 of the next group.
    const uint64_t yBytes = 2 * (6 * groups + (extra ? 3 : 0));
    const uint64_t cbBytes =
        l.chroma == Chroma::Full444 ? 2 * (6 * groups - 1) : 2 * (3 * groups + (extra ? 2 : 0));
    const uint64_t crBytes =
        l.chroma == Chroma::Full444 ? 2 * (6 * groups - 1) : 2 * (3 * groups + (extra ? 1 : 0));
    const uint64_t cp = chroma_plane_pitch(l, sp);
    const uint64_t cAt = l.chroma == Chroma::Full444 ? yAt : yAt >> 1;
    const uint32_t chromaRows = chroma_row_of(l, rows - 1) + 1;
    out[0] =
        widest(out[0], rows_end(dstAt, rows, v210_pitch(w, dp), 16 * groups + (extra ? 8 : 0)));
    out[1] = widest(out[1], rows_end(yAt, rows, sp, yBytes));
    out[2] = widest(out[2], rows_end(cAt, chromaRows, cp, cbBytes));
    out[3] = widest(out[3], rows_end(cAt, chromaRows, cp, crBytes));
}

}  // namespace
}  // namespace cycbcr::planar16

namespace cycbcr {

bool planar16_v210_pointer_extent(const char* name, const PlaneCall& c, PointerExtents& out) {
    using namespace planar16;
    Named n;
    if (!find(name, n)) return false;
    out = {};
    rows_reach(n.layout, c, c.height, 0, 0, out);
    if (n.bands != nullptr && c.width > n.widest) {
        // Band k starts k * (height / 8) rows in, by the pitches as passed, in
        // 32-bit arithmetic as the bands compute it.
        const uint32_t b = c.height >> 3;
        for (uint32_t k = 0; k < 8; ++k) {
            const uint32_t rows =
                n.bands->rows == BandRows::SevenPlusRest && k == 7 ? c.height - 7 * b : b;
            rows_reach(n.layout, c, rows, static_cast<uint32_t>(k * b * c.pitch[0]),
                       static_cast<uint32_t>(k * b * c.pitch[1]), out);
        }
    }
    return true;
}

}  // namespace cycbcr

extern "C" {

#define CYCBCR_DEFINE_ENTRY(name, layout)                              \
    CYCBCR_API unsigned int name(CYCBCR_PLANAR16_ARGS) {               \
        using namespace cycbcr::planar16;                              \
        return entry_plain<layout, name##_avx2>(CYCBCR_PLANAR16_CALL); \
    }
#define CYCBCR_DEFINE_BANDED(name, layout)                                                      \
    CYCBCR_API unsigned int name##_internal(CYCBCR_PLANAR16_ARGS) {                             \
        return cycbcr::planar16::convert_plain<cycbcr::planar16::layout>(CYCBCR_PLANAR16_CALL); \
    }                                                                                           \
    CYCBCR_API unsigned int name##_worker(void* job) {                                          \
        return cycbcr::run_band(name##_internal, job);                                          \
    }

CYCBCR_DEFINE_ENTRY(cycbcr_yuv422p16_to_012v, k422p16)
CYCBCR_DEFINE_ENTRY(cycbcr_yuv444p10_to_012v, k444p10)
CYCBCR_DEFINE_ENTRY(cycbcr_yuv420p10_to_012v, k420p10)

CYCBCR_DEFINE_BANDED(cycbcr_yuv422p10_to_012v, k422p10)
CYCBCR_DEFINE_BANDED(cycbcr_yuv422p12_to_012v, k422p12)
CYCBCR_DEFINE_BANDED(cycbcr_yuv444p12_to_012v, k444p12)

CYCBCR_API unsigned int cycbcr_yuv422p10_to_012v(CYCBCR_PLANAR16_ARGS) {
    using namespace cycbcr::planar16;
    return entry_banded<cycbcr_yuv422p10_to_012v_avx2, cycbcr_yuv422p10_to_012v_internal,
                        k422p10Bands, 2048>(CYCBCR_PLANAR16_CALL);
}
CYCBCR_API unsigned int cycbcr_yuv422p12_to_012v(CYCBCR_PLANAR16_ARGS) {
    using namespace cycbcr::planar16;
    return entry_banded<cycbcr_yuv422p12_to_012v_avx2, cycbcr_yuv422p12_to_012v_internal,
                        k422p12Bands, 1920>(CYCBCR_PLANAR16_CALL);
}
CYCBCR_API unsigned int cycbcr_yuv444p12_to_012v(CYCBCR_PLANAR16_ARGS) {
    using namespace cycbcr::planar16;
    return entry_banded<cycbcr_yuv444p12_to_012v_avx2, cycbcr_yuv444p12_to_012v_internal,
                        k444p12Bands, 2048>(CYCBCR_PLANAR16_CALL);
}

// 4:2:0 16-bit has no AVX2 code: its AVX2 form runs the plain converter at level
// 0, which every other thread sees for the duration of the call.
CYCBCR_API unsigned int cycbcr_yuv420p16_to_012v(CYCBCR_PLANAR16_ARGS) {
    using namespace cycbcr::planar16;
    return entry_plain<k420p16, cycbcr_yuv420p16_to_012v_avx2>(CYCBCR_PLANAR16_CALL);
}
CYCBCR_API unsigned int cycbcr_yuv420p16_to_012v_avx2(CYCBCR_PLANAR16_ARGS) {
    const uint32_t saved = cycbcr::load_level();
    cycbcr::store_level(0);
    const unsigned int n = cycbcr_yuv420p16_to_012v(CYCBCR_PLANAR16_CALL);
    cycbcr::store_level(saved);
    return n;
}

}  // extern "C"

// Packed 4:2:2 byte orders: the converter of every pair of packed 4:2:2 formats
// in the library's list, the v210 copy, the AVX2 forms no converter takes, and
// the interleaved copy and in-place inversion, at the plain level and at level 5,
// against memcpy of the same bytes and, where it does the same work, libyuv.
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/planar_functions.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "byte orders";

// Both frames packed 4:2:2, or both v210 (the v210 copy moves bytes as the
// packed copy does).
bool byte_order_pair(Format from, Format to) {
    if (cycbcr::is_packed422(from) && cycbcr::is_packed422(to)) return true;
    return from == Format::V210 && to == Format::V210;
}

// The work a peer has to match; several pairs of formats share one.
enum class Work { none, copy, word_swap, chroma_exchange, row_reversal, swap_and_flip };

// What converting between two packed 4:2:2 orders does to each pixel pair:
// whether the luma changes bytes (the 2-byte units of the pair swap their
// bytes), whether only the chroma does (Cb and Cr change places), and whether
// the rows are turned over (one side bottom-up).
Work work_of(Format from, Format to) {
    if (!cycbcr::is_packed422(from) || !cycbcr::is_packed422(to)) return Work::none;
    const cycbcr::FormatInfo &a = cycbcr::info(from), &b = cycbcr::info(to);
    const bool flip = a.bottom_up != b.bottom_up;
    const bool luma_moves = a.pair.y0 != b.pair.y0;
    const bool chroma_moves = a.pair.cb != b.pair.cb;
    if (luma_moves) return flip ? Work::swap_and_flip : Work::word_swap;
    if (chroma_moves) return flip ? Work::none : Work::chroma_exchange;
    return flip ? Work::row_reversal : Work::copy;
}

// Byte-order operations outside the list (no pair of formats of their own),
// timed as before on packed frames.
struct Extra {
    const char* name;
    Converter fn;
    Work work;
};

unsigned int invert_adapter(uint8_t* dst, const uint8_t*, unsigned int, unsigned int height,
                            unsigned int dstPitch, unsigned int) {
    cycbcr_invert(dst, dstPitch, height);  // in place, on the destination frame
    return height * dstPitch;
}

const Extra kCopy{"interleaved_copy", cycbcr_interleaved_copy, Work::copy};
const Extra kInvert{"invert", invert_adapter, Work::none};

struct PeerDef {
    Work work;
    const char* name;
    Converter fn;
    Format from, to;  // the pair whose converter gives the bytes the peer must give
};

#ifdef CYCBCR_BENCH_LIBYUV
// libyuv takes source first and widths in its own units; negative heights read
// the source bottom-up, which is the cyuv row reversal.
unsigned int yuv_copy(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                      unsigned int dstPitch, unsigned int srcPitch) {
    libyuv::CopyPlane(src, int(srcPitch), dst, int(dstPitch), int(2 * width), int(height));
    return height * dstPitch;
}
unsigned int yuv_flip(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                      unsigned int dstPitch, unsigned int srcPitch) {
    libyuv::CopyPlane(src, int(srcPitch), dst, int(dstPitch), int(2 * width), -int(height));
    return height * dstPitch;
}
// The word swap is SwapUVPlane with one 2-byte "UV" unit per pixel.
unsigned int yuv_swap(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                      unsigned int dstPitch, unsigned int srcPitch) {
    libyuv::SwapUVPlane(src, int(srcPitch), dst, int(dstPitch), int(width), int(height));
    return height * dstPitch;
}
unsigned int yuv_swap_flip(uint8_t* dst, const uint8_t* src, unsigned int width,
                           unsigned int height, unsigned int dstPitch, unsigned int srcPitch) {
    libyuv::SwapUVPlane(src, int(srcPitch), dst, int(dstPitch), int(width), -int(height));
    return height * dstPitch;
}
// The chroma exchange is a byte shuffle of each 4-byte pair, one "ARGB" pixel.
unsigned int yuv_shuffle(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                         unsigned int dstPitch, unsigned int srcPitch) {
    static const uint8_t kExchange[16] = {0, 3, 2, 1, 4, 7, 6, 5, 8, 11, 10, 9, 12, 15, 14, 13};
    libyuv::ARGBShuffle(src, int(srcPitch), dst, int(dstPitch), kExchange, int(width / 2),
                        int(height));
    return height * dstPitch;
}

const PeerDef kPeers[] = {
    {Work::copy, "libyuv:CopyPlane", yuv_copy, Format::YUY2, Format::YUY2},
    {Work::word_swap, "libyuv:SwapUVPlane", yuv_swap, Format::YUY2, Format::UYVY},
    {Work::chroma_exchange, "libyuv:ARGBShuffle", yuv_shuffle, Format::YUY2, Format::YVYU},
    {Work::row_reversal, "libyuv:CopyPlane(flip)", yuv_flip, Format::UYVY, Format::CYUV},
    {Work::swap_and_flip, "libyuv:SwapUVPlane(flip)", yuv_swap_flip, Format::YUY2, Format::CYUV},
};
#endif

const PeerDef* peer_for(Work work) {
#ifdef CYCBCR_BENCH_LIBYUV
    for (const PeerDef& p : kPeers)
        if (p.work == work) return &p;
#endif
    (void)work;
    return nullptr;
}

std::string bench_name(const std::string& what, const FrameSize& size, const char* variant) {
    std::string name = what + "/" + size.label();
    if (variant != nullptr) name += std::string("/") + variant;
    return name;
}

SummaryRow family_row(SummaryRow row, Work work, const FrameSize& size) {
    row.memcpy_target = 0.90;
    row.peer_target = 1.00;
    if (const PeerDef* p = peer_for(work)) {
        row.peer = bench_name(p->name, size, nullptr);
        row.peer_label = p->name;
    }
    return row;
}

// An operation outside the list: no AVX2 form, level 5 times the plain code.
SummaryRow extra_row(const Extra& e, const FrameSize& size) {
    const Shape shape = natural_shape(Format::UYVY, Format::UYVY, size);
    SummaryRow row;
    row.family = kFamily;
    row.size = size.label();
    row.converter = e.name;
    row.memcpy = memcpy_benchmark(size, shape.moved / 2);
    row.plain = bench_name(e.name, size, "plain");
    row.level5 = bench_name(e.name, size, "level5");
    register_converter(row.plain, e.fn, size, shape, 0, false);
    register_converter(row.level5, e.fn, size, shape, 5, true);
    return family_row(std::move(row), e.work, size);
}

}  // namespace

void register_byte_order_benchmarks() {
    set_family_heading(kFamily,
                       "Packed 4:2:2 byte orders (and the v210 copy): the source frame plus the "
                       "destination frame per call; level 5 target (AVX2 forms) >= 90% of memcpy "
                       "and >= libyuv");
    const std::vector<Listed> listed = listed_for_family(byte_order_pair);
    for (const FrameSize& size : kFrameSizes) {
#ifdef CYCBCR_BENCH_LIBYUV
        for (const PeerDef& p : kPeers)
            register_peer(bench_name(p.name, size, nullptr), p.fn, size,
                          natural_shape(p.from, p.to, size), pair_converter(p.from, p.to));
#endif
        add_summary_row(extra_row(kCopy, size));
        for (const Listed& c : listed)
            add_summary_row(
                family_row(register_listed(kFamily, c, size), work_of(c.from, c.to), size));
        add_summary_row(extra_row(kInvert, size));
    }
}

}  // namespace cycbcr_bench

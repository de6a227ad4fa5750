// Packed 4:2:2 byte orders: every converter at the plain level and at level 5,
// against memcpy of the same bytes and, where it does the same work, libyuv.
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/planar_functions.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "byte orders";

// What level 5 runs for a converter.
enum class Level5 {
    same_code,  // no AVX2 form: level 5 times the plain code again
    avx2_form,  // the plain name hands over to its AVX2 form
    avx2_only,  // an exported _avx2 entry point, timed only at level 5
};

// The work a peer has to match; several of our converters share one.
enum class Work { none, copy, word_swap, chroma_exchange, row_reversal, swap_and_flip };

struct ConverterDef {
    const char* name;
    Converter fn;
    Level5 level5;
    Work work;
};

unsigned int invert_adapter(uint8_t* dst, const uint8_t*, unsigned int, unsigned int height,
                            unsigned int dstPitch, unsigned int) {
    cycbcr_invert(dst, dstPitch, height);  // in place, on the destination frame
    return height * dstPitch;
}

const ConverterDef kConverters[] = {
    {"interleaved_copy", cycbcr_interleaved_copy, Level5::same_code, Work::copy},
    {"yuy2_to_yuy2", cycbcr_yuy2_to_yuy2, Level5::same_code, Work::copy},
    {"yuy2_to_uyvy", cycbcr_yuy2_to_uyvy, Level5::same_code, Work::word_swap},
    {"uyvy_to_yuy2", cycbcr_uyvy_to_yuy2, Level5::avx2_form, Work::word_swap},
    {"yuy2_to_yvyu", cycbcr_yuy2_to_yvyu, Level5::avx2_form, Work::chroma_exchange},
    {"yvyu_to_uyvy", cycbcr_yvyu_to_uyvy, Level5::avx2_form, Work::word_swap},
    {"uyvy_to_cyuv", cycbcr_uyvy_to_cyuv, Level5::same_code, Work::row_reversal},
    {"cyuv_to_uyvy_avx2", cycbcr_cyuv_to_uyvy_avx2, Level5::avx2_only, Work::row_reversal},
    {"yuy2_to_cyuv", cycbcr_yuy2_to_cyuv, Level5::avx2_form, Work::swap_and_flip},
    {"yvyu_to_cyuv", cycbcr_yvyu_to_cyuv, Level5::avx2_form, Work::swap_and_flip},
    {"invert", invert_adapter, Level5::same_code, Work::none},
};

struct PeerDef {
    Work work;
    const char* name;
    Converter fn;
    Converter reference;  // ours, giving the bytes the peer must give
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
    {Work::copy, "libyuv:CopyPlane", yuv_copy, cycbcr_interleaved_copy},
    {Work::word_swap, "libyuv:SwapUVPlane", yuv_swap, cycbcr_yuy2_to_uyvy},
    {Work::chroma_exchange, "libyuv:ARGBShuffle", yuv_shuffle, cycbcr_yuy2_to_yvyu},
    {Work::row_reversal, "libyuv:CopyPlane(flip)", yuv_flip, cycbcr_uyvy_to_cyuv},
    {Work::swap_and_flip, "libyuv:SwapUVPlane(flip)", yuv_swap_flip, cycbcr_yuy2_to_cyuv},
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

}  // namespace

void register_byte_order_benchmarks() {
    set_family_heading(kFamily,
                       "Packed 4:2:2 byte orders: two packed frames moved per call; level 5 "
                       "target (AVX2 forms) >= 90% of memcpy and >= libyuv");
    for (const FrameSize& size : kFrameSizes) {
        const Shape shape = packed_shape(size);
#ifdef CYCBCR_BENCH_LIBYUV
        for (const PeerDef& p : kPeers)
            register_peer(bench_name(p.name, size, nullptr), p.fn, size, shape, p.reference);
#endif
        const std::string memcpy = memcpy_benchmark(size, packed_frame_bytes(size));
        for (const ConverterDef& c : kConverters) {
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = c.name;
            row.level5_form = c.level5 != Level5::same_code;
            row.memcpy = memcpy;
            row.memcpy_target = 0.90;
            row.peer_target = 1.00;
            if (c.level5 != Level5::avx2_only) {
                row.plain = bench_name(c.name, size, "plain");
                register_converter(row.plain, c.fn, size, shape, 0, false);
            }
            row.level5 = bench_name(c.name, size, "level5");
            register_converter(row.level5, c.fn, size, shape, 5, true);
            if (const PeerDef* p = peer_for(c.work)) {
                row.peer = bench_name(p->name, size, nullptr);
                row.peer_label = p->name;
            }
            add_summary_row(std::move(row));
        }
    }
}

}  // namespace cycbcr_bench

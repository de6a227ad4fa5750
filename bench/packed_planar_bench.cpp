// Packed 4:2:2 to and from planar I420 and P422: every converter at the plain
// level and at level 5, against memcpy of the same bytes and libyuv's matching
// function.
//
// libyuv makes 4:2:0 chroma by averaging row pairs (packed to planar) or by
// repeating each chroma row for two rows (planar to packed), while ours keeps
// the two fields apart. The 4:2:0 peers therefore do the same amount of work
// but give other chroma bytes: only their luma is checked against ours. The
// 4:2:2 peers must give exactly our bytes.
#include <cycbcr.h>

#include "bench_support.h"

#ifdef CYCBCR_BENCH_LIBYUV
#include <libyuv/convert.h>
#include <libyuv/convert_from.h>
#include <libyuv/cpu_id.h>
#include <libyuv/planar_functions.h>
#endif

namespace cycbcr_bench {
namespace {

constexpr const char* kFamily = "packed <-> planar";

enum class Direction { to_planar, from_planar };
enum class Order { uyvy, yuy2 };  // where the packed side keeps its luma: odd or even bytes

struct ConverterDef {
    const char* name;
    Converter fn;
    Direction direction;
    bool is420;  // else P422
    Order order;
    const char* peer_name;
    Converter peer;
};

#ifdef CYCBCR_BENCH_LIBYUV
using ToPlanar = int (*)(const uint8_t*, int, uint8_t*, int, uint8_t*, int, uint8_t*, int, int,
                         int);
using FromPlanar = int (*)(const uint8_t*, int, const uint8_t*, int, const uint8_t*, int, uint8_t*,
                           int, int, int);

// The planes where ours puts them: as a destination chroma at dstPitch * height,
// the second plane a quarter (4:2:0) or half (4:2:2) of that later, rows
// dstPitch / 2 apart; as a source the same by width * height.
template <ToPlanar F, unsigned int ChromaDivisor>
unsigned int to_planar(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                       unsigned int dstPitch, unsigned int srcPitch) {
    uint8_t* cb = dst + dstPitch * height;
    uint8_t* cr = cb + dstPitch * height / ChromaDivisor;
    F(src, int(srcPitch), dst, int(dstPitch), cb, int(dstPitch / 2), cr, int(dstPitch / 2),
      int(width), int(height));
    return dstPitch * height;
}

template <FromPlanar F, unsigned int ChromaDivisor>
unsigned int from_planar(uint8_t* dst, const uint8_t* src, unsigned int width, unsigned int height,
                         unsigned int dstPitch, unsigned int srcPitch) {
    const uint8_t* cb = src + width * height;
    const uint8_t* cr = cb + width * height / ChromaDivisor;
    F(src, int(srcPitch), cb, int(srcPitch / 2), cr, int(srcPitch / 2), dst, int(dstPitch),
      int(width), int(height));
    return dstPitch * height;
}

#define PEER(label, fn) label, fn
#else
#define PEER(label, fn) nullptr, nullptr
#endif

const ConverterDef kConverters[] = {
    {"uyvy_to_i420", cycbcr_uyvy_to_i420, Direction::to_planar, true, Order::uyvy,
     PEER("libyuv:UYVYToI420", (to_planar<libyuv::UYVYToI420, 4>))},
    {"yuy2_to_i420", cycbcr_yuy2_to_i420, Direction::to_planar, true, Order::yuy2,
     PEER("libyuv:YUY2ToI420", (to_planar<libyuv::YUY2ToI420, 4>))},
    {"i420_to_uyvy", cycbcr_i420_to_uyvy, Direction::from_planar, true, Order::uyvy,
     PEER("libyuv:I420ToUYVY", (from_planar<libyuv::I420ToUYVY, 4>))},
    {"i420_to_yuy2", cycbcr_i420_to_yuy2, Direction::from_planar, true, Order::yuy2,
     PEER("libyuv:I420ToYUY2", (from_planar<libyuv::I420ToYUY2, 4>))},
    {"uyvy_to_p422", cycbcr_uyvy_to_p422, Direction::to_planar, false, Order::uyvy,
     PEER("libyuv:UYVYToI422", (to_planar<libyuv::UYVYToI422, 2>))},
    {"yuy2_to_p422", cycbcr_yuy2_to_p422, Direction::to_planar, false, Order::yuy2,
     PEER("libyuv:YUY2ToI422", (to_planar<libyuv::YUY2ToI422, 2>))},
    {"p422_to_uyvy", cycbcr_p422_to_uyvy, Direction::from_planar, false, Order::uyvy,
     PEER("libyuv:I422ToUYVY", (from_planar<libyuv::I422ToUYVY, 2>))},
    {"p422_to_yuy2", cycbcr_p422_to_yuy2, Direction::from_planar, false, Order::yuy2,
     PEER("libyuv:I422ToYUY2", (from_planar<libyuv::I422ToYUY2, 2>))},
};
#undef PEER

// Tight pitches on both sides: width for the planes, 2 * width for the packed
// frame.
Shape shape_of(const ConverterDef& c, const FrameSize& size) {
    const size_t packed = packed_frame_bytes(size);
    const size_t planar = c.is420 ? i420_frame_bytes(size) : p422_frame_bytes(size);
    if (c.direction == Direction::to_planar)
        return {size.width, 2 * size.width, planar, packed + planar};
    return {2 * size.width, size.width, packed, packed + planar};
}

// 4:2:2: every byte. 4:2:0: the luma only (the Y plane, or the Y bytes of the
// packed frame).
Check check_of(const ConverterDef& c, const FrameSize& size) {
    Check check;
    if (!c.is420) return check;
    check.count = size.pixels();
    check.what = "luma";
    if (c.direction == Direction::from_planar) {
        check.first = c.order == Order::uyvy ? 1 : 0;
        check.step = 2;
    }
    return check;
}

}  // namespace

void register_packed_planar_benchmarks() {
    set_family_heading(kFamily,
                       "Packed 4:2:2 <-> planar I420 / P422: the packed frame plus the planar "
                       "frame per call; level 5 target >= libyuv\n(4:2:0 peers: same work, "
                       "other chroma rows, luma checked; 4:2:2 peers: every byte checked)");
    for (const FrameSize& size : kFrameSizes) {
        for (const ConverterDef& c : kConverters) {
            const Shape shape = shape_of(c, size);
            SummaryRow row;
            row.family = kFamily;
            row.size = size.label();
            row.converter = c.name;
            row.level5_form = true;
            row.memcpy = memcpy_benchmark(size, shape.moved / 2);
            row.peer_target = 1.00;
            row.plain = std::string(c.name) + "/" + size.label() + "/plain";
            row.level5 = std::string(c.name) + "/" + size.label() + "/level5";
            register_converter(row.plain, c.fn, size, shape, 0, false);
            register_converter(row.level5, c.fn, size, shape, 5, true);
            if (c.peer != nullptr) {
                row.peer = std::string(c.peer_name) + "/" + size.label();
                row.peer_label = c.peer_name;
                register_peer(row.peer, c.peer, size, shape, c.fn, check_of(c, size));
            }
            add_summary_row(std::move(row));
        }
    }
#ifdef CYCBCR_BENCH_LIBYUV
    add_summary_note([](std::FILE* out, const Medians&) {
        std::fprintf(out, "\nlibyuv runs its AVX2 rows: %s (libyuv::TestCpuFlag(kCpuHasAVX2)).\n",
                     libyuv::TestCpuFlag(libyuv::kCpuHasAVX2) ? "yes" : "NO");
    });
#endif
}

}  // namespace cycbcr_bench

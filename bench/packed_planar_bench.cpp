// Packed 4:2:2 to and from planar I420, YV12 and P422: the converter of every
// such pair of formats in the library's list at the plain level and at level 5,
// against memcpy of the same bytes and, for the pairs it converts, libyuv's
// matching function.
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

bool packed_planar_pair(Format from, Format to) {
    return (cycbcr::is_packed422(from) && cycbcr::is_planar8(to)) ||
           (cycbcr::is_planar8(from) && cycbcr::is_packed422(to));
}

// libyuv's function for a pair of formats.
struct PeerDef {
    Format from, to;
    const char* name;
    Converter fn;
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

const PeerDef kPeers[] = {
    {Format::UYVY, Format::I420, "libyuv:UYVYToI420", to_planar<libyuv::UYVYToI420, 4>},
    {Format::YUY2, Format::I420, "libyuv:YUY2ToI420", to_planar<libyuv::YUY2ToI420, 4>},
    {Format::I420, Format::UYVY, "libyuv:I420ToUYVY", from_planar<libyuv::I420ToUYVY, 4>},
    {Format::I420, Format::YUY2, "libyuv:I420ToYUY2", from_planar<libyuv::I420ToYUY2, 4>},
    {Format::UYVY, Format::P422, "libyuv:UYVYToI422", to_planar<libyuv::UYVYToI422, 2>},
    {Format::YUY2, Format::P422, "libyuv:YUY2ToI422", to_planar<libyuv::YUY2ToI422, 2>},
    {Format::P422, Format::UYVY, "libyuv:I422ToUYVY", from_planar<libyuv::I422ToUYVY, 2>},
    {Format::P422, Format::YUY2, "libyuv:I422ToYUY2", from_planar<libyuv::I422ToYUY2, 2>},
};
#endif

const PeerDef* peer_for(Format from, Format to) {
#ifdef CYCBCR_BENCH_LIBYUV
    for (const PeerDef& p : kPeers)
        if (p.from == from && p.to == to) return &p;
#endif
    (void)from;
    (void)to;
    return nullptr;
}

// 4:2:2: every byte. 4:2:0: the luma only (the Y plane, or the Y bytes of the
// packed frame).
Check check_of(Format from, Format to, const FrameSize& size) {
    Check check;
    const bool to_planar = cycbcr::is_planar8(to);
    if (cycbcr::full_height_chroma(to_planar ? to : from)) return check;
    check.count = size.pixels();
    check.what = "luma";
    if (!to_planar) {
        check.first = cycbcr::info(to).pair.y0;
        check.step = 2;
    }
    return check;
}

}  // namespace

void register_packed_planar_benchmarks() {
    set_family_heading(
        kFamily,
        "Packed 4:2:2 <-> planar I420 / YV12 / P422: the packed frame plus the planar "
        "frame per call; level 5 target >= libyuv\n(4:2:0 peers: same work, "
        "other chroma rows, luma checked; 4:2:2 peers: every byte checked)");
    const std::vector<Listed> listed = listed_for_family(packed_planar_pair);
    for (const FrameSize& size : kFrameSizes) {
        for (const Listed& c : listed) {
            SummaryRow row = register_listed(kFamily, c, size);
            row.peer_target = 1.00;
            if (const PeerDef* p = peer_for(c.from, c.to)) {
                row.peer = std::string(p->name) + "/" + size.label();
                row.peer_label = p->name;
                register_peer(row.peer, p->fn, size, natural_shape(c.from, c.to, size), c.fn,
                              check_of(c.from, c.to, size));
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

// Packed 4:2:2 byte orders: every exported name against a byte-level reference
// model between guard pages at its exact bounds, at the plain and the AVX2 level
// (so the two forms agree wherever their rules do) and in place where allowed;
// which form each level takes; worked byte sequences; the in-place flip.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
#include "support/byte_model.h"
#include "support/converters.h"
#include "support/frames.h"
#include "support/guarded_buffer.h"

using namespace cycbcr_test;

namespace {

// What a member does to each row.
enum class Op {
    Copy,       // min(dstPitch, srcPitch) bytes
    BlockSwap,  // word swap of min-pitch rows; equal pitches: one run over the frame
    RowSwap,    // word swap of min(dstPitch, srcPitch) bytes in every row
    PairSwap,   // word swap of width / 2 pixel pairs
    Chroma,     // bytes 1 and 3 of width / 2 pixel pairs exchanged
    Reverse,    // min-pitch rows copied bottom row first
};

struct Member {
    std::string name;
    Converter fn;
    Op plain;        // below level 5, or without AVX2
    Op fast;         // at level 5 with AVX2
    bool flip;       // the destination is then flipped in place, whole pitch
    bool avx2_only;  // an _avx2 name: callable on AVX2 processors only
    bool in_place;   // dst == src is allowed
};

// What each converter between two byte orders does, in either direction: the
// word swap (YUY2 and UYVY, YVYU and UYVY), the chroma exchange (YUY2 and YVYU)
// or the row reversal (UYVY and cyuv); between cyuv and YUY2 or YVYU, the swap
// to UYVY and then a flip. The AVX2 forms swap whole rows of the narrower pitch.
// Only YUY2 to UYVY, the copies and the UYVY <-> cyuv reversal take no AVX2 form.
Member member(const Listed& l) {
    using F = Fmt;
    auto is = [&](F a, F b) { return (l.from == a && l.to == b) || (l.from == b && l.to == a); };
    const bool flip = (l.from == F::CYUV) != (l.to == F::CYUV) && !is(F::UYVY, F::CYUV);
    const F a = l.from == F::CYUV && flip ? F::UYVY : l.from;
    const F b = l.to == F::CYUV && flip ? F::UYVY : l.to;
    auto pair = [&](F x, F y) { return (a == x && b == y) || (a == y && b == x); };
    Op plain = Op::Copy, fast = Op::Copy;
    bool inPlace = true;
    if (a == b) {
        inPlace = false;
    } else if (pair(F::UYVY, F::CYUV)) {
        plain = fast = Op::Reverse;
        inPlace = false;
    } else if (pair(F::YUY2, F::YVYU)) {
        plain = fast = Op::Chroma;
    } else {
        plain = pair(F::YVYU, F::UYVY) ? Op::PairSwap : Op::BlockSwap;
        fast = l.from == F::YUY2 && l.to == F::UYVY && !l.avx2_form() ? Op::BlockSwap : Op::RowSwap;
    }
    if (l.avx2_form()) plain = fast;
    return {l.name, l.fn, plain, fast, flip, l.avx2_form(), inPlace};
}

std::vector<Member> members() {
    std::vector<Member> out = {{"cycbcr_interleaved_copy", cycbcr_interleaved_copy, Op::Copy,
                                Op::Copy, false, false, false}};
    for (const Listed& l : listed_where([](const Listed& l) {
             return (cycbcr::is_packed422(l.from) && cycbcr::is_packed422(l.to)) ||
                    (l.from == Fmt::V210 && l.to == Fmt::V210);
         }))
        out.push_back(member(l));
    return out;
}

void swap_words(ByteModel& r, size_t dOff, size_t sOff, size_t words) {
    for (size_t k = 0; k < 2 * words; k += 2) {
        r.d(dOff + k) = r.s(sOff + k + 1);
        r.d(dOff + k + 1) = r.s(sOff + k);
    }
}

ByteModel reference(Op op, bool flip, const Geometry& g, const std::vector<uint8_t>& src,
                    std::vector<uint8_t> dst) {
    ByteModel r(std::move(dst), src);
    r.result = g.height * g.dstPitch;
    const uint32_t h = g.height, dp = g.dstPitch, sp = g.srcPitch;
    const size_t rowBytes = std::min(dp, sp), pairs = g.width / 2;
    if (op == Op::BlockSwap && dp == sp) {
        swap_words(r, 0, 0, size_t{dp} * h / 2);  // runs on across row ends
    } else {
        for (uint32_t i = 0; i < h; ++i) {
            const size_t dRow = size_t{i} * dp,
                         sRow = size_t{op == Op::Reverse ? h - 1 - i : i} * sp;
            if (op == Op::Copy || op == Op::Reverse) {
                for (size_t k = 0; k < rowBytes; ++k) r.d(dRow + k) = r.s(sRow + k);
            } else if (op == Op::Chroma) {
                for (size_t k = 0; k < 4 * pairs; k += 4) {
                    r.d(dRow + k) = r.s(sRow + k);
                    r.d(dRow + k + 1) = r.s(sRow + k + 3);
                    r.d(dRow + k + 2) = r.s(sRow + k + 2);
                    r.d(dRow + k + 3) = r.s(sRow + k + 1);
                }
            } else {
                swap_words(r, dRow, sRow, op == Op::PairSwap ? 2 * pairs : rowBytes / 2);
            }
        }
    }
    if (flip) r.flip(0, dp, h);
    return r;
}

// Widths at every residue of the 16-pixel (32-byte) step, odd ones, around the
// four-block loop of the AVX2 forms, and a common frame width; pitches equal,
// equal and odd, padded, and unequal either way. 720-pixel rows at equal pitches
// of 1448 swap their padding too; at 1440 against 1448, 1440 bytes a row.
const std::vector<Geometry>& geometries() {
    static const std::vector<Geometry> all = [] {
        std::vector<uint32_t> widths;
        for (uint32_t w = 0; w <= 33; ++w) widths.push_back(w);
        for (uint32_t w : {47u, 48u, 49u, 63u, 64u, 65u, 111u, 112u, 113u, 720u})
            widths.push_back(w);
        std::vector<Geometry> out = {{720, 2, 1448, 1448}, {720, 2, 1440, 1448}};
        for (uint32_t w : widths) {
            const uint32_t b = 2 * w;
            const uint32_t pitches[][2] = {{b, b},     {b + 1, b + 1}, {b + 6, b + 6},
                                           {b + 3, b}, {b, b + 5},     {b + 32, b + 7}};
            for (uint32_t h : {0u, 1u, 2u, 3u})
                for (const auto& p : pitches) out.push_back({w, h, p[0], p[1]});
        }
        return out;
    }();
    return all;
}

Op form_at_current_level(const Member& m) {
    return gdwProcType == 5 && have_avx2() ? m.fast : m.plain;
}

void PrintTo(const Member& m, std::ostream* os) {
    *os << m.name;
}

class ByteOrderMember : public ::testing::TestWithParam<Member> {};

// At the plain and the AVX2 level; members that allow it also in place.
TEST_P(ByteOrderMember, MatchesModelWithinExactBounds) {
    const Member& m = GetParam();
    if (m.avx2_only) CYCBCR_REQUIRE_AVX2();
    uint32_t seed = 1;
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        const Op op = form_at_current_level(m);
        for (const Geometry& g : geometries()) {
            const auto src = random_bytes(size_t{g.height} * g.srcPitch, seed++);
            const auto init = random_bytes(size_t{g.height} * g.dstPitch, seed++);
            ASSERT_TRUE(matches(reference(op, m.flip, g, src, init), m.fn, g))
                << "level " << gdwProcType << ", " << g;
            if (!m.in_place || g.dstPitch != g.srcPitch) continue;
            const ByteModel want = reference(op, m.flip, g, src, src);
            ASSERT_TRUE(same_bytes(run_in_place(m.fn, g, src).dst, want.dst))
                << "in place, level " << gdwProcType << ", " << g;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, ByteOrderMember, ::testing::ValuesIn(members()),
                         [](const auto& info) { return short_name(info.param.name); });

// Frames too large to stay in the cache (streaming stores), with a 32-byte
// aligned destination.
TEST(ByteOrderAvx2, LargeFramesMatchModel) {
    CYCBCR_REQUIRE_AVX2();
    cycbcr_set_cpu(5);
    const Geometry g{2045, 2048, 4096, 4090};
    const auto src = random_bytes(size_t{g.height} * g.srcPitch, 11);
    const auto init = random_bytes(size_t{g.height} * g.dstPitch, 12);
    for (const Member& m : members())
        for (const char* name : {"cycbcr_uyvy_to_yuy2", "cycbcr_yuy2_to_yvyu",
                                 "cycbcr_cyuv_to_uyvy_avx2", "cycbcr_yuy2_to_cyuv_avx2"})
            if (m.name == name) {
                EXPECT_TRUE(matches(reference(m.fast, m.flip, g, src, init), m.fn, g)) << name;
            }
}

// Byte sequences written out by hand. A single pixel is no pair: nothing is
// written, the count is still returned. UYVY to cyuv and back restores the frame.
TEST(ByteOrderExamples, PairBytesAndRoundTrip) {
    using Bytes = std::vector<uint8_t>;
    const Bytes pair = {0x10, 0x20, 0x30, 0x40}, words = {0x20, 0x10, 0x40, 0x30},
                chroma = {0x10, 0x40, 0x30, 0x20};
    const std::pair<Converter, const Bytes*> cases[] = {
        {cycbcr_yvyu_to_uyvy, &words},  {cycbcr_uyvy_to_yvyu, &words},
        {cycbcr_yuy2_to_uyvy, &words},  {cycbcr_uyvy_to_yuy2, &words},
        {cycbcr_yuy2_to_yvyu, &chroma}, {cycbcr_yvyu_to_yuy2, &chroma}};
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        for (const auto& [fn, want] : cases) {
            Bytes out(4), zeros(12), untouched(12, 0xEE), one = untouched;
            EXPECT_EQ(fn(out.data(), pair.data(), 2, 1, 4, 4), 4u);
            EXPECT_EQ(out, *want) << "level " << level;
            if (*want != chroma) continue;
            EXPECT_EQ(fn(one.data(), zeros.data(), 1, 3, 4, 4), 12u);
            EXPECT_EQ(one, untouched) << "width 1 wrote bytes";
        }
        const auto frame = random_bytes(400, 3);
        Bytes cyuv(400), again(400);
        cycbcr_uyvy_to_cyuv(cyuv.data(), frame.data(), 37, 5, 80, 80);
        cycbcr_cyuv_to_uyvy(again.data(), cyuv.data(), 37, 5, 80, 80);
        EXPECT_TRUE(!same_bytes(cyuv, frame) && same_bytes(again, frame));
    }
}

TEST(Invert, SwapsWholeRowsAroundTheMiddle) {
    // 5461 is the largest row kept on the stack; 5462 and up take a heap row.
    for (uint32_t pitch : {0u, 1u, 5u, 1448u, 5461u, 5462u, 9000u})
        for (uint32_t h : {0u, 1u, 2u, 3u, 4u, 7u}) {
            const auto frame = random_bytes(size_t{pitch} * h, pitch + h);
            GuardedBuffer buf(frame.size());
            std::copy(frame.begin(), frame.end(), buf.data());
            cycbcr_invert(buf.data(), pitch, h);
            EXPECT_TRUE(buf.slack_intact());
            for (uint32_t i = 0; i < h; ++i)
                ASSERT_TRUE(std::equal(buf.data() + size_t{i} * pitch,
                                       buf.data() + size_t{i + 1} * pitch,
                                       frame.begin() + size_t{h - 1 - i} * pitch))
                    << "pitch " << pitch << " height " << h << " row " << i;
        }
}

// Which form each member runs at every level and from the marker. At width 3
// with equal odd pitches the pair loop, the plain word swap (running on across
// row ends) and the AVX2 row swap (padding included) give three different frames.
TEST(ByteOrderLevels, Avx2FormTakenExactlyAtLevel5) {
    const Geometry g{3, 2, 9, 9};
    const auto src = random_bytes(18, 5), init = random_bytes(18, 6);
    for (uint32_t level : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, kLevelMarker})
        for (const Member& m : members()) {
            // From the marker, a member either chooses before it reads the level or
            // runs its plain form; the flipping members choose in the flip at the latest.
            if (m.avx2_only || (level == kLevelMarker && m.flip)) continue;
            gdwProcType = level;
            auto out = init;
            m.fn(out.data(), src.data(), g.width, g.height, g.dstPitch, g.srcPitch);
            const ByteModel want = reference(form_at_current_level(m), m.flip, g, src, init);
            EXPECT_TRUE(same_bytes(out, want.dst)) << m.name << " level " << level;
        }
}

TEST(ByteOrderLevels, WhichMembersChooseALevel) {
    uint8_t buf[8] = {};
    const uint32_t chosen = cycbcr_set_cpu(5);  // what a first automatic choice stores
    gdwProcType = kLevelMarker;
    cycbcr_interleaved_copy(buf, buf + 4, 2, 1, 4, 4);
    EXPECT_EQ(gdwProcType, kLevelMarker) << "the bare copy makes no choice";
    std::vector<Converter> choosing = {cycbcr_yuy2_to_yuy2, cycbcr_yvyu_to_yvyu,
                                       cycbcr_uyvy_to_uyvy, cycbcr_cyuv_to_cyuv,
                                       cycbcr_yuy2_to_cyuv, cycbcr_yvyu_to_cyuv};
    if (have_avx2())
        choosing.insert(choosing.end(), {cycbcr_yuy2_to_cyuv_avx2, cycbcr_yvyu_to_cyuv_avx2});
    for (Converter fn : choosing) {
        gdwProcType = kLevelMarker;
        fn(buf, buf + 4, 2, 1, 4, 4);
        EXPECT_EQ(gdwProcType, chosen);
    }
    if (have_avx2())  // in place, the _avx2 flips take their two-pass route
        for (Converter fn : {cycbcr_yuy2_to_cyuv_avx2, cycbcr_yvyu_to_cyuv_avx2}) {
            gdwProcType = kLevelMarker;
            fn(buf, buf, 2, 1, 4, 4);
            EXPECT_EQ(gdwProcType, chosen);
        }
    gdwProcType = kLevelMarker;
    cycbcr_invert(buf, 4, 0);
    EXPECT_EQ(gdwProcType, chosen) << "the flip chooses even with nothing to do";
}

}  // namespace

// Packed 4:2:2 byte orders: every exported name against a byte-level reference
// model, the plain and AVX2 forms against each other, and exact buffer bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "cycbcr.h"
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
    const char* name;
    Converter fn;
    Op plain;        // below level 5, or without AVX2
    Op fast;         // at level 5 with AVX2
    bool flip;       // the destination is then flipped in place, whole pitch
    bool avx2_only;  // an _avx2 name: callable on AVX2 processors only
    bool in_place;   // dst == src is allowed
};

// clang-format off
#define M(fn, plain, fast, flip, in_place) \
    Member{#fn, cycbcr_##fn, Op::plain, Op::fast, flip, false, in_place}
#define A(fn, op, flip, in_place) Member{#fn, cycbcr_##fn, Op::op, Op::op, flip, true, in_place}
const Member kMembers[] = {
    M(interleaved_copy, Copy, Copy, false, false),
    M(yuy2_to_yuy2, Copy, Copy, false, false),
    M(yvyu_to_yvyu, Copy, Copy, false, false),
    M(uyvy_to_uyvy, Copy, Copy, false, false),
    M(cyuv_to_cyuv, Copy, Copy, false, false),
    M(yuy2_to_uyvy, BlockSwap, BlockSwap, false, true),
    M(uyvy_to_yuy2, BlockSwap, RowSwap, false, true),
    A(yuy2_to_uyvy_avx2, RowSwap, false, true),
    A(yvyu_to_uyvy_avx2, RowSwap, false, true),
    A(uyvy_to_yvyu_avx2, RowSwap, false, true),
    M(yuy2_to_yvyu, Chroma, Chroma, false, true),
    M(yvyu_to_yuy2, Chroma, Chroma, false, true),
    A(yuy2_to_yvyu_avx2, Chroma, false, true),
    A(yvyu_to_yuy2_avx2, Chroma, false, true),
    M(yvyu_to_uyvy, PairSwap, RowSwap, false, true),
    M(uyvy_to_yvyu, PairSwap, RowSwap, false, true),
    M(uyvy_to_cyuv, Reverse, Reverse, false, false),
    M(cyuv_to_uyvy, Reverse, Reverse, false, false),
    A(cyuv_to_uyvy_avx2, Reverse, false, false),
    M(yuy2_to_cyuv, BlockSwap, RowSwap, true, true),
    M(cyuv_to_yuy2, BlockSwap, RowSwap, true, true),
    A(yuy2_to_cyuv_avx2, RowSwap, true, true),
    A(cyuv_to_yuy2_avx2, RowSwap, true, true),
    M(yvyu_to_cyuv, PairSwap, RowSwap, true, true),
    M(cyuv_to_yvyu, PairSwap, RowSwap, true, true),
    A(yvyu_to_cyuv_avx2, RowSwap, true, true),
    A(cyuv_to_yvyu_avx2, RowSwap, true, true),
};
#undef M
#undef A
// clang-format on

// The reference result, built byte by byte. Every access goes through d() and
// s(), which record how far into each buffer the member may reach: the guard
// pages of the real run sit right after those bytes.
struct Reference {
    std::vector<uint8_t> dst;
    const std::vector<uint8_t>& src;
    size_t dstEnd = 0, srcEnd = 0;

    uint8_t& d(size_t i) {
        dstEnd = std::max(dstEnd, i + 1);
        return dst.at(i);
    }
    uint8_t s(size_t i) {
        srcEnd = std::max(srcEnd, i + 1);
        return src.at(i);
    }
    void swap_words(size_t dOff, size_t sOff, size_t words) {
        for (size_t k = 0; k < 2 * words; k += 2) {
            d(dOff + k) = s(sOff + k + 1);
            d(dOff + k + 1) = s(sOff + k);
        }
    }
};

Reference reference(Op op, bool flip, const Geometry& g, const std::vector<uint8_t>& src,
                    std::vector<uint8_t> dst) {
    Reference r{std::move(dst), src};
    const uint32_t h = g.height, dp = g.dstPitch, sp = g.srcPitch;
    const size_t rowBytes = std::min(dp, sp), pairs = g.width / 2;
    if (op == Op::BlockSwap && dp == sp) {
        r.swap_words(0, 0, size_t{dp} * h / 2);  // runs on across row ends
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
                r.swap_words(dRow, sRow, op == Op::PairSwap ? 2 * pairs : rowBytes / 2);
            }
        }
    }
    if (flip)
        for (uint32_t i = 0; i < h / 2; ++i)
            for (size_t k = 0; k < dp; ++k)
                std::swap(r.d(size_t{i} * dp + k), r.d(size_t{h - 1 - i} * dp + k));
    return r;
}

// Widths at every residue of the 16-pixel (32-byte) step, odd ones, around the
// four-block loop of the AVX2 forms, and a common frame width; pitches equal,
// equal and odd, padded, and unequal either way.
const std::vector<Geometry>& geometries() {
    static const std::vector<Geometry> all = [] {
        std::vector<uint32_t> widths;
        for (uint32_t w = 0; w <= 33; ++w) widths.push_back(w);
        for (uint32_t w : {47u, 48u, 49u, 63u, 64u, 65u, 111u, 112u, 113u, 720u})
            widths.push_back(w);
        std::vector<Geometry> out;
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
            const Reference want = reference(op, m.flip, g, src, init);
            const Outcome got = run_guarded(m.fn, g, src, want.srcEnd, init, want.dstEnd);
            ASSERT_EQ(got.result, g.height * g.dstPitch) << g;
            ASSERT_TRUE(same_bytes(got.dst, want.dst)) << "level " << gdwProcType << ", " << g;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, ByteOrderMember, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ByteOrder, InPlaceWhereAllowed) {
    for (const Member& m : kMembers) {
        if (!m.in_place || (m.avx2_only && !have_avx2())) continue;
        for (unsigned level : {0u, 5u}) {
            cycbcr_set_cpu(level);
            for (const Geometry g :
                 {Geometry{37, 5, 80, 80}, {720, 3, 1448, 1448}, {16, 4, 33, 33}}) {
                const auto frame = random_bytes(size_t{g.height} * g.dstPitch, g.width);
                const auto want = reference(form_at_current_level(m), m.flip, g, frame, frame);
                EXPECT_TRUE(same_bytes(run_in_place(m.fn, g, frame).dst, want.dst))
                    << m.name << " level " << gdwProcType << ", " << g;
            }
        }
    }
}

// Wherever the two forms are meant to give the same bytes. With equal odd
// pitches the plain word swap runs on across row ends and the AVX2 one does not.
TEST(ByteOrderAvx2, AgreesWithPlainOnRandomFrames) {
    CYCBCR_REQUIRE_AVX2();
    uint32_t seed = 7;
    for (Converter fn :
         {cycbcr_uyvy_to_yuy2, cycbcr_yuy2_to_uyvy, cycbcr_yuy2_to_yvyu, cycbcr_yvyu_to_yuy2,
          cycbcr_yuy2_to_cyuv, cycbcr_cyuv_to_yuy2, cycbcr_uyvy_to_cyuv, cycbcr_yuy2_to_yuy2})
        for (const Geometry& g : geometries())
            if (g.dstPitch != g.srcPitch || g.dstPitch % 2 == 0 || g.height < 2)
                expect_levels_agree(fn, g, seed++);
}

// Frames too large to stay in the cache, with a 32-byte aligned destination.
TEST(ByteOrderAvx2, LargeFramesMatchModel) {
    CYCBCR_REQUIRE_AVX2();
    cycbcr_set_cpu(5);
    const Geometry g{2045, 2048, 4096, 4090};
    const auto src = random_bytes(size_t{g.height} * g.srcPitch, 11);
    const auto init = random_bytes(size_t{g.height} * g.dstPitch, 12);
    for (const Member& m : kMembers)
        for (const char* name :
             {"uyvy_to_yuy2", "yuy2_to_yvyu", "cyuv_to_uyvy_avx2", "yuy2_to_cyuv_avx2"})
            if (std::strcmp(m.name, name) == 0) {
                const Reference want = reference(m.fast, m.flip, g, src, init);
                const Outcome got = run_guarded(m.fn, g, src, src.size(), init, init.size());
                EXPECT_TRUE(same_bytes(got.dst, want.dst)) << name;
            }
}

// Byte sequences written out by hand.
TEST(ByteOrderExamples, PairBytes) {
    const uint8_t pair[4] = {0x10, 0x20, 0x30, 0x40};
    using Bytes = std::array<uint8_t, 4>;
    for (unsigned level : {0u, 5u}) {
        cycbcr_set_cpu(level);
        const struct {
            Converter fn;
            Bytes want;
        } cases[] = {{cycbcr_yvyu_to_uyvy, {0x20, 0x10, 0x40, 0x30}},
                     {cycbcr_uyvy_to_yvyu, {0x20, 0x10, 0x40, 0x30}},
                     {cycbcr_yuy2_to_uyvy, {0x20, 0x10, 0x40, 0x30}},
                     {cycbcr_uyvy_to_yuy2, {0x20, 0x10, 0x40, 0x30}},
                     {cycbcr_yuy2_to_yvyu, {0x10, 0x40, 0x30, 0x20}},
                     {cycbcr_yvyu_to_yuy2, {0x10, 0x40, 0x30, 0x20}}};
        for (const auto& c : cases) {
            Bytes out{};
            EXPECT_EQ(c.fn(out.data(), pair, 2, 1, 4, 4), 4u);
            EXPECT_EQ(out, c.want) << "level " << level;
        }
    }
    // A single pixel is no pair: nothing is written, the count is still returned.
    std::array<uint8_t, 12> src{}, dst, untouched;
    untouched.fill(0xEE);
    dst = untouched;
    EXPECT_EQ(cycbcr_yuy2_to_yvyu(dst.data(), src.data(), 1, 3, 4, 4), 12u);
    EXPECT_EQ(dst, untouched) << "width 1 wrote bytes";
}

// 720-pixel rows: equal pitches of 1448 swap the padding too; 1440 against 1448
// swaps 1440 bytes a row. Both word swap directions give the same bytes at level 5.
TEST(ByteOrderExamples, WordSwapOf720PixelRows) {
    const uint32_t cases[][3] = {{1448, 1448, 1448}, {1440, 1448, 1440}, {1448, 1440, 1440}};
    for (const auto [dp, sp, swapped] : cases) {
        const Geometry g{720, 2, dp, sp};
        const auto src = random_bytes(size_t{2} * sp, dp);
        const auto init = random_bytes(size_t{2} * dp, sp);
        std::vector<std::vector<uint8_t>> results;
        for (unsigned level : {0u, 5u})
            for (Converter fn : {cycbcr_yuy2_to_uyvy, cycbcr_uyvy_to_yuy2}) {
                cycbcr_set_cpu(level);
                results.push_back(run_guarded(fn, g, src, src.size(), init, init.size()).dst);
            }
        const auto& out = results[0];
        for (size_t row = 0; row < 2; ++row)
            for (size_t k = 0; k < dp; ++k)
                ASSERT_EQ(out[row * dp + k],
                          k < swapped ? src[row * sp + (k ^ 1)] : init[row * dp + k])
                    << "row " << row << " byte " << k << ", pitches " << dp << "/" << sp;
        for (const auto& r : results) EXPECT_TRUE(same_bytes(r, out));
    }
}

TEST(ByteOrderExamples, UyvyToCyuvAndBackRestoresFrame) {
    const Geometry g{37, 5, 80, 80};
    const auto frame = random_bytes(size_t{g.height} * g.dstPitch, 3);
    for (Converter back : {cycbcr_cyuv_to_uyvy, cycbcr_cyuv_to_uyvy_avx2}) {
        if (back == cycbcr_cyuv_to_uyvy_avx2 && !have_avx2()) continue;
        std::vector<uint8_t> cyuv(frame.size()), again(frame.size());
        cycbcr_uyvy_to_cyuv(cyuv.data(), frame.data(), g.width, g.height, g.dstPitch, g.srcPitch);
        EXPECT_FALSE(same_bytes(cyuv, frame));
        back(again.data(), cyuv.data(), g.width, g.height, g.dstPitch, g.srcPitch);
        EXPECT_TRUE(same_bytes(again, frame));
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

// The row padding and an odd last pixel are swapped by the AVX2 word swap but
// left alone by the plain pair loop, and equal odd pitches let the plain swap
// run across row ends: both show which form ran.
TEST(ByteOrderLevels, Avx2FormTakenExactlyAtLevel5) {
    const uint8_t src[10] = {0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x19};
    using Bytes = std::array<uint8_t, 10>;
    const Bytes pairPlain = {0x11, 0x10, 0x13, 0x12, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    const Bytes pairFast = {0x11, 0x10, 0x13, 0x12, 0x15, 0x14, 0x17, 0x16, 0xEE, 0xEE};
    const Bytes blockPlain = {0x11, 0x10, 0x13, 0x12, 0x15, 0x14, 0x17, 0x16, 0x19, 0x18};
    const Bytes blockFast = {0x11, 0x10, 0x13, 0x12, 0xEE, 0x16, 0x15, 0x18, 0x17, 0xEE};
    const Bytes blockPlainFlipped = {0x14, 0x17, 0x16, 0x19, 0x18, 0x11, 0x10, 0x13, 0x12, 0x15};
    const Bytes blockFastFlipped = {0x16, 0x15, 0x18, 0x17, 0xEE, 0x11, 0x10, 0x13, 0x12, 0xEE};
    const struct {
        Converter fn;
        Geometry g;
        const Bytes &plain, &fast;
        bool flips;
    } cases[] = {
        {cycbcr_yvyu_to_uyvy, {3, 1, 8, 8}, pairPlain, pairFast, false},
        {cycbcr_uyvy_to_yvyu, {3, 1, 8, 8}, pairPlain, pairFast, false},
        {cycbcr_yvyu_to_cyuv, {3, 1, 8, 8}, pairPlain, pairFast, true},
        {cycbcr_cyuv_to_yvyu, {3, 1, 8, 8}, pairPlain, pairFast, true},
        {cycbcr_uyvy_to_yuy2, {2, 2, 5, 5}, blockPlain, blockFast, false},
        {cycbcr_yuy2_to_uyvy, {2, 2, 5, 5}, blockPlain, blockPlain, false},  // never takes it
        {cycbcr_yuy2_to_cyuv, {2, 2, 5, 5}, blockPlainFlipped, blockFastFlipped, true},
        {cycbcr_cyuv_to_yuy2, {2, 2, 5, 5}, blockPlainFlipped, blockFastFlipped, true},
    };
    for (uint32_t level : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, kLevelMarker})
        for (const auto& c : cases) {
            // From the marker, a member either chooses before it reads the level or
            // runs its plain form; the flipping members choose in the flip at the latest.
            if (level == kLevelMarker && c.flips) continue;
            gdwProcType = level;
            Bytes out;
            out.fill(0xEE);
            c.fn(out.data(), src, c.g.width, c.g.height, c.g.dstPitch, c.g.srcPitch);
            const uint32_t seen = gdwProcType;
            EXPECT_EQ(out, seen == 5 && have_avx2() ? c.fast : c.plain) << "level " << level;
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

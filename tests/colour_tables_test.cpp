// The colour tables against their values written out independently here: the
// master set and the 8-bit (x 10000) and 16-bit (family D) tables digit for
// digit, for every matrix value a caller can pass (unknown values take the
// default row); the other scaled tables against the master set at their scale
// (each entry within one unit of the straight product, as tuned), with the rows
// and rules their comments single out checked exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "support/colour_rows.h"
#include "torgb/colour_tables.h"

namespace {

using namespace cycbcr::colour;

// Matrix values to ask every table for: the known ones, the values 8 to 10 that
// only the RGB to YCbCr direction knows, and values far outside.
const std::vector<QBYCBCRMatrix> kMatrices = {0, 1, 2, 3,  4,  5,    6,
                                              7, 8, 9, 10, 11, 1000, 0xFFFFFFFFu};

// Y offset, Y gain, Cr to R, Cr to G, Cb to G, Cb to B.
struct Row6 {
    double off, gain, crR, crG, cbG, cbB;
};

Row6 row6(const cycbcr_test::Gains& g, double unit) {
    return {g.off / 1.0, g.gain / unit, g.crR / unit, g.crG / unit, g.cbG / unit, g.cbB / unit};
}
// The master set as doubles: a whole number of millionths divided by a million
// is the double nearest the decimal value, as the literal would be.
Row6 master(QBYCBCRMatrix m) {
    return row6(cycbcr_test::master_micro(m), 1e6);
}
Row6 family_a(QBYCBCRMatrix m) {
    return row6(cycbcr_test::family_a(m), 1);
}
Row6 family_d(QBYCBCRMatrix m) {
    return row6(cycbcr_test::family_d(m), 1);
}

template <class T>
Row6 as_row6(const ToRgbRow<T>& r) {
    return {static_cast<double>(r.yOffset), static_cast<double>(r.yGain),
            static_cast<double>(r.crToR),   static_cast<double>(r.crToG),
            static_cast<double>(r.cbToG),   static_cast<double>(r.cbToB)};
}

::testing::AssertionResult same_row(const Row6& got, const Row6& want) {
    const double g[6] = {got.off, got.gain, got.crR, got.crG, got.cbG, got.cbB};
    const double w[6] = {want.off, want.gain, want.crR, want.crG, want.cbG, want.cbB};
    for (int i = 0; i < 6; ++i)
        if (g[i] != w[i])
            return ::testing::AssertionFailure()
                   << "column " << i << " is " << g[i] << ", expected " << w[i];
    return ::testing::AssertionSuccess();
}

// Every gain within `units` of the master gain times `scale`, and the Y offset
// the master offset times `offsetScale`.
::testing::AssertionResult scaled_from_master(const Row6& got, QBYCBCRMatrix m, double scale,
                                              double offsetScale, double units) {
    const Row6 want = master(m);
    if (got.off != want.off * offsetScale)
        return ::testing::AssertionFailure() << "Y offset " << got.off;
    const double g[5] = {got.gain, got.crR, got.crG, got.cbG, got.cbB};
    const double w[5] = {want.gain, want.crR, want.crG, want.cbG, want.cbB};
    for (int i = 0; i < 5; ++i)
        if (std::fabs(g[i] - w[i] * scale) > units)
            return ::testing::AssertionFailure()
                   << "gain " << i << " is " << g[i] << ", master x scale " << w[i] * scale;
    return ::testing::AssertionSuccess();
}

TEST(ColourTables, MasterSet) {
    for (QBYCBCRMatrix m : kMatrices)
        EXPECT_TRUE(same_row(as_row6(kMaster[m]), master(m))) << "matrix " << m;
}

TEST(ColourTables, EightBitTableDigitForDigit) {
    for (QBYCBCRMatrix m : kMatrices)
        EXPECT_TRUE(same_row(as_row6(kFamilyA[m]), family_a(m))) << "matrix " << m;
    // The two values that are not the rounded master products.
    EXPECT_EQ(kFamilyA[0].crToG, 8129);
    EXPECT_EQ(kFamilyA[7].crToR, 14746);
}

TEST(ColourTables, SixteenBitTableDigitForDigit) {
    for (QBYCBCRMatrix m : kMatrices)
        EXPECT_TRUE(same_row(as_row6(kFamilyD[m]), family_d(m))) << "matrix " << m;
}

// The scaled tables whose entries were tuned one by one: each within a unit of
// the master set at its scale, offsets at the sample scale.
TEST(ColourTables, ScaledTablesFollowTheMasterSet) {
    for (QBYCBCRMatrix m : kMatrices) {
        EXPECT_TRUE(scaled_from_master(as_row6(kFamilyB[m]), m, 2500, 4, 1)) << "B, matrix " << m;
        EXPECT_TRUE(scaled_from_master(as_row6(kFamilyC[m]), m, 10240, 4, 1)) << "C, matrix " << m;
        EXPECT_TRUE(scaled_from_master(as_row6(kFamilyA[m]), m, 10000, 1, 1)) << "A, matrix " << m;
        EXPECT_TRUE(scaled_from_master(as_row6(kQ14[m]), m, 16384, 1, 1)) << "Q14, matrix " << m;
        // Family D: x 2 563 900, matrix 4 alone x 2 560 000.
        EXPECT_TRUE(scaled_from_master(as_row6(kFamilyD[m]), m, m == 4 ? 2560000 : 2563900, 1, 1))
            << "D, matrix " << m;
        // Family E is the master set / 4 in double precision, offsets x 4.
        EXPECT_TRUE(scaled_from_master(as_row6(kFamilyE[m]), m, 0.25, 4, 1e-12))
            << "E, matrix " << m;
    }
    // Their default rows exactly.
    EXPECT_TRUE(same_row(as_row6(kFamilyB[0]), {64, 2910, 3990, 2032, 980, 5042}));
    EXPECT_TRUE(same_row(as_row6(kFamilyC[0]), {64, 11919, 16343, 8325, 4014, 20654}));
    EXPECT_TRUE(same_row(as_row6(kFamilyE[0]), {64, 0.291, 0.399, 0.20325, 0.098, 0.50425}));
    EXPECT_EQ(kFamilyC12YOffset, 256);
}

// Family F is indexed by the matrix value itself: row 0 is the default BT.601
// row, and a value above 7 takes matrix 3's row with no Y offset term.
TEST(ColourTables, Q13RowsAndTheirOffsets) {
    for (QBYCBCRMatrix m : kMatrices) {
        const Q13Row& r = family_f(m);
        const QBYCBCRMatrix as = m <= 7 ? m : 3;
        EXPECT_TRUE(scaled_from_master({master(as).off, double(r.yGain), double(r.crToR),
                                        double(r.crToG), double(r.cbToG), double(r.cbToB)},
                                       as, 8192, 1, 1))
            << "matrix " << m;
        EXPECT_EQ(family_f_y_offset(m), m <= 7 && m % 2 == 0 ? 2048 : 0) << "matrix " << m;
    }
    for (QBYCBCRMatrix m : {8u, 9u, 10u, 1000u, 0xFFFFFFFFu}) {
        const Q13Row& r = family_f(m);
        EXPECT_EQ(r.yGain, 8192);
        EXPECT_EQ(r.crToR, 12615);
        EXPECT_EQ(r.crToG, 3760);
        EXPECT_EQ(r.cbToG, 1499);
        EXPECT_EQ(r.cbToB, 14876);
        EXPECT_EQ(family_f_y_offset(m), 0);
    }
}

TEST(ColourTables, Q14RecordOfEveryMatrix) {
    for (QBYCBCRMatrix m : kMatrices) {
        RGB8Mtx rec{};
        rec.reserved = 77;
        fill_p2rgb8(&rec, m);
        const ToRgbRow<int32_t>& r = kQ14[m];
        EXPECT_EQ(rec.yMul, r.yGain) << m;
        EXPECT_EQ(rec.crToR, r.crToR) << m;
        EXPECT_EQ(rec.crToG, r.crToG) << m;
        EXPECT_EQ(rec.cbToG, r.cbToG) << m;
        EXPECT_EQ(rec.cbToB, r.cbToB) << m;
        EXPECT_EQ(rec.yOffset, master(m).off) << m;
        EXPECT_EQ(rec.cOffset, 128) << m;
        if (m == 0 || m >= 8) {
            EXPECT_EQ(rec.yMul, 19071) << m;
            EXPECT_EQ(rec.crToR, 26149) << m;
            EXPECT_EQ(rec.crToG, 13320) << m;
            EXPECT_EQ(rec.cbToG, 6423) << m;
            EXPECT_EQ(rec.cbToB, 33047) << m;
            EXPECT_EQ(rec.yOffset, 16) << m;
        }
    }
}

TEST(ColourTables, GetCoeffsGivesTheMasterSet) {
    for (QBYCBCRMatrix m : kMatrices) {
        Row6 got{};
        get_coeffs(m, &got.gain, &got.crR, &got.crG, &got.cbG, &got.cbB, &got.off);
        EXPECT_TRUE(same_row(got, master(m))) << "matrix " << m;
    }
}

// RGB to YCbCr weights: known for 1 to 10, the default for 0 and the rest.
TEST(ColourTables, FromRgbRows) {
    auto same = [](const FromRgbRow& r, const std::vector<int32_t>& want) {
        const std::vector<int32_t> got = {r.yOffset, r.rToY,  r.gToY,  r.bToY,  r.rToCb,
                                          r.gToCb,   r.bToCb, r.rToCr, r.gToCr, r.bToCr};
        return got == want;
    };
    const std::vector<int32_t> row8 = {16,      222000,  631000, 496000,  -270000,
                                       -768000, 1030000, 469000, -436000, -34000};
    const std::vector<int32_t> fallback = {16,      257000, 504000, 98000,   -148000,
                                           -291000, 439000, 439000, -368000, -71000};
    EXPECT_TRUE(same(FromRGBCoeffs[8], row8));
    for (QBYCBCRMatrix m : {0u, 11u, 1000u, 0xFFFFFFFFu})
        EXPECT_TRUE(same(FromRGBCoeffs[m], fallback)) << "matrix " << m;
    // The other rows: chroma weights sum to nothing (within the tuning of the
    // digits). Rows 0 to 7 also have unit luma gain without a Y offset and about
    // 219/255 with the offset of 16, and Cb's blue weight equal to Cr's red.
    for (QBYCBCRMatrix m : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 9u, 10u}) {
        const FromRgbRow& r = FromRGBCoeffs[m];
        const int64_t cbSum = int64_t{r.rToCb} + r.gToCb + r.bToCb;
        const int64_t crSum = int64_t{r.rToCr} + r.gToCr + r.bToCr;
        EXPECT_LE(std::llabs(cbSum), 20) << "matrix " << m;
        EXPECT_LE(std::llabs(crSum), 20) << "matrix " << m;
        if (m <= 7) {
            const int64_t ySum = int64_t{r.rToY} + r.gToY + r.bToY;
            const int64_t want = r.yOffset == 16 ? 859000 : 1000000;
            EXPECT_LE(std::llabs(ySum - want), 3000) << "matrix " << m;
            EXPECT_EQ(r.bToCb, r.rToCr) << "matrix " << m;
        }
    }
}

}  // namespace

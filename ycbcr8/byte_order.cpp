// Packed 4:2:2 byte orders: copies, word swaps, chroma exchange, row reversal.
#include "ycbcr8/byte_order.h"

#include <emmintrin.h>

#include <algorithm>
#include <type_traits>

#include "frame/buffer_sizes.h"
#include "frame/entry.h"
#include "frame/export.h"
#include "frame/formats.h"
#include "frame/row_walk.h"
#include "ycbcr8/byte_order_list.h"

namespace cycbcr {

void plain::chroma_exchange_row(uint8_t* dst, const uint8_t* src, size_t n) {
    const size_t pairs = n / 4;
    const __m128i keep = _mm_set1_epi32(0x00FF00FF);
    const __m128i hi = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    const __m128i lo = _mm_set1_epi32(0x0000FF00);
    size_t k = 0;
    for (; k + 4 <= pairs; k += 4) {
        const __m128i w = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 4 * k));
        const __m128i r = _mm_or_si128(_mm_or_si128(_mm_and_si128(_mm_slli_epi32(w, 16), hi),
                                                    _mm_and_si128(_mm_srli_epi32(w, 16), lo)),
                                       _mm_and_si128(w, keep));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * k), r);
    }
    for (; k < pairs; ++k) {
        const uint8_t* s = src + 4 * k;
        uint8_t* d = dst + 4 * k;
        const uint8_t b1 = s[1];
        d[0] = s[0];
        d[1] = s[3];
        d[2] = s[2];
        d[3] = b1;
    }
}

namespace {

// What a byte-order converter does, by its pair of formats in either direction
// (each operation is its own inverse). cyuv is UYVY stored bottom-up: between it
// and YUY2 or YVYU the converters make UYVY and then turn the destination over.
enum class Op { Copy, WordSwap, ChromaExchange, PairWordSwap, Reverse };
constexpr bool flips(Format from, Format to) {
    return (from == Format::CYUV) != (to == Format::CYUV) && from != Format::UYVY &&
           to != Format::UYVY;
}
constexpr Op operation(Format from, Format to) {
    if (flips(from, to)) (from == Format::CYUV ? from : to) = Format::UYVY;
    auto is = [from, to](Format a, Format b) {
        return (from == a && to == b) || (from == b && to == a);
    };
    if (from == to) return Op::Copy;
    if (is(Format::UYVY, Format::CYUV)) return Op::Reverse;
    if (is(Format::YVYU, Format::UYVY)) return Op::PairWordSwap;
    if (is(Format::YUY2, Format::YVYU)) return Op::ChromaExchange;
    return Op::WordSwap;
}

// Plain word swap over pitch rows; with equal pitches the frame, padding
// included, is one run of words.
void word_swap_frame(uint8_t* dst, const uint8_t* src, uint32_t height, uint32_t dstPitch,
                     uint32_t srcPitch) {
    if (height == 0) return;
    if (dstPitch == srcPitch) {
        EndianConvertWord(dst, src, (dstPitch * height) / 2);
        return;
    }
    const uint32_t words = std::min(dstPitch, srcPitch) / 2;
    const Rows d = rows_down(dst, dstPitch), s = rows_down(src, srcPitch);
    walk(all_rows(height), [&](uint32_t i) { EndianConvertWord(d.at(i), s.at(i), words); });
}

template <Format From, Format To, auto Avx2>
unsigned int byte_order(CYCBCR_CONVERTER_ARGS) {
    constexpr Op op = operation(From, To);
    const Paths paths = entry(OnEntry::ChooseLevel);
    if constexpr (!std::is_null_pointer_v<decltype(Avx2)>)
        if (paths.avx2) return Avx2(CYCBCR_CONVERTER_CALL);
    const Rows d = rows_down(dst, dstPitch);
    if constexpr (op == Op::Copy) {
        return cycbcr_interleaved_copy(CYCBCR_CONVERTER_CALL);
    } else if constexpr (op == Op::WordSwap) {
        word_swap_frame(dst, src, height, dstPitch, srcPitch);
    } else if constexpr (op == Op::ChromaExchange) {
        const Rows s = rows_down(src, srcPitch);
        const size_t n = size_t{4} * (width / 2);
        walk(all_rows(height),
             [&](uint32_t i) { plain::chroma_exchange_row(d.at(i), s.at(i), n); });
    } else if constexpr (op == Op::PairWordSwap) {
        // Whole pairs only: the odd last pixel and the row padding stay as they are.
        const Rows s = rows_down(src, srcPitch);
        const size_t words = size_t{2} * (width / 2);
        walk(all_rows(height), [&](uint32_t i) { EndianConvertWord(d.at(i), s.at(i), words); });
    } else if constexpr (op == Op::Reverse) {
        const Rows s = rows_up(src, srcPitch, height);
        const uint32_t n = std::min(dstPitch, srcPitch);
        walk(all_rows(height), [&](uint32_t i) { CopyMemoryFast(d.at(i), s.at(i), n); });
    }
    if constexpr (flips(From, To)) cycbcr_invert(dst, dstPitch, height);
    return height * dstPitch;
}

}  // namespace

Extent byte_order_extent(Format from, Format to, const Call& c) {
    const uint32_t h = c.height, dp = c.dstPitch, sp = c.srcPitch;
    const uint64_t n = std::min(dp, sp);
    const uint64_t pairBytes = uint64_t{4} * (c.width / 2);
    auto rows = [h, dp, sp](uint64_t bytes) -> Extent {
        return {rows_end(0, h, sp, bytes), rows_end(0, h, dp, bytes)};
    };
    // The plain word swap: with equal pitches one run of (dstPitch * height) / 2
    // words; the AVX2 form: rows of the whole words of min(dstPitch, srcPitch).
    auto word_swap = [&]() -> Extent {
        if (h != 0 && dp == sp) {
            const uint64_t run = uint64_t{(dp * h) / 2} * 2;
            return {run, run};
        }
        return rows(n & ~uint64_t{1});
    };
    Extent e;
    switch (operation(from, to)) {
        case Op::Copy:
            e = rows(dp == sp ? dp : n);
            break;
        case Op::WordSwap:
            e = widest(word_swap(), rows(n & ~uint64_t{1}));
            break;
        case Op::ChromaExchange:
            e = rows(pairBytes);
            break;
        case Op::PairWordSwap:
            e = widest(rows(pairBytes), rows(n & ~uint64_t{1}));
            break;
        case Op::Reverse:
            e = rows(n);
            break;
    }
    if (flips(from, to)) e.dst = widest(e.dst, inverted_end(0, h, dp));
    return e;
}

}  // namespace cycbcr

extern "C" {

CYCBCR_API unsigned int cycbcr_interleaved_copy(CYCBCR_CONVERTER_ARGS) {
    (void)width;
    if (height != 0) {
        if (dstPitch == srcPitch) {
            cycbcr::CopyMemoryFast(dst, src, dstPitch * height);
        } else {
            const uint32_t n = std::min(dstPitch, srcPitch);
            const cycbcr::Rows d = cycbcr::rows_down(dst, dstPitch);
            const cycbcr::Rows s = cycbcr::rows_down(src, srcPitch);
            cycbcr::walk(cycbcr::all_rows(height),
                         [&](uint32_t i) { cycbcr::CopyMemoryFast(d.at(i), s.at(i), n); });
        }
    }
    return height * dstPitch;
}

CYCBCR_API void cycbcr_invert(uint8_t* buf, unsigned int pitch, unsigned int height) {
    cycbcr::entry(cycbcr::OnEntry::ChooseLevel);
    // Rows up to 5461 bytes (a 2730-pixel packed row) swap through the stack.
    cycbcr::TempRow<5461> temp(pitch);
    if (height < 2) return;
    uint8_t* top = buf;
    uint8_t* bottom = buf + static_cast<size_t>(height - 1) * pitch;
    for (uint32_t i = 0; i < height / 2; ++i, top += pitch, bottom -= pitch) {
        cycbcr::CopyMemoryFast(temp.data(), top, pitch);
        cycbcr::CopyMemoryFast(top, bottom, pitch);
        cycbcr::CopyMemoryFast(bottom, temp.data(), pitch);
    }
}

#define CYCBCR_ENTRY cycbcr::byte_order
CYCBCR_BYTE_ORDER_PAIRS(CYCBCR_DEFINE)
#undef CYCBCR_ENTRY

}  // extern "C"

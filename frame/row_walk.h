// The row walk every engine shares: which rows a call converts, where each
// plane's row i lies, and which chroma row goes with luma row i. Engines give it
// a row kernel and keep nothing of the frame's shape to themselves, so a run of
// rows can be handed to another thread as it is.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/inline.h"

namespace cycbcr {

// Rows first .. first + count - 1 of a frame: the whole frame, or a band of it.
struct RowRun {
    uint32_t first;
    uint32_t count;
};
CYCBCR_INLINE constexpr RowRun all_rows(uint32_t height) {
    return {0, height};
}

// The rows of one plane: row i begins at base + i * step. A bottom-up plane has
// its row 0 last in memory and a negative step.
struct Rows {
    const uint8_t* base;
    ptrdiff_t step;

    template <class T = uint8_t>
    [[gnu::always_inline]] T* at(uint32_t i) const {
        return reinterpret_cast<T*>(const_cast<uint8_t*>(base) + static_cast<ptrdiff_t>(i) * step);
    }
};
CYCBCR_INLINE constexpr Rows rows_down(const void* base, size_t pitch) {
    return {static_cast<const uint8_t*>(base), static_cast<ptrdiff_t>(pitch)};
}
CYCBCR_INLINE Rows rows_up(const void* base, size_t pitch, uint32_t height) {
    const auto* last =
        static_cast<const uint8_t*>(base) + (height == 0 ? 0 : size_t{height - 1} * pitch);
    return {last, -static_cast<ptrdiff_t>(pitch)};
}

// The run-on rule of the packed sources. A row whose pitch is exactly its
// natural size starts where the previous row's whole pairs or groups ended, not
// a pitch after the previous row's start: callers size such rows by what the
// converter consumes. So the step is `used` bytes when pitch == natural.
CYCBCR_INLINE constexpr size_t run_on_step(uint32_t pitch, uint32_t natural, size_t used) {
    return pitch == natural ? used : pitch;
}

// The chroma rows of 4:2:0 frames. The library keeps several rules, each where
// its converters have always used it; a row kernel asks for the chroma row of
// luma row i by the rule's name.
enum class ChromaRows : uint8_t {
    // 4:2:2: chroma row i for row i.
    Own,
    // 4:2:2 rows into 4:2:0 keeping the two fields apart: rows 0, 3, 4, 7, 8, ...
    // give chroma rows 0, 1, 2, 3, 4, ...; the others give none.
    FieldKept,
    // 4:2:0 into 4:2:2 repeating chroma within each field: row i takes chroma row
    // 2 * (i / 4) + i % 2 (rows 0 and 2 row 0, rows 1 and 3 row 1, ...).
    FieldRepeated,
    // Rows 2k and 2k + 1 share chroma row k (r / 2), read by both.
    Shared,
    // 4:2:2 rows into 4:2:0 dropping the odd rows: row 2k gives chroma row k.
    EvenOnly,
    // Every row writes chroma row r / 2, top to bottom, so the odd row's chroma
    // is the one that remains (for an odd height the last row's, alone).
    LastWriteWins,
};

struct ChromaRow {
    bool present;
    uint32_t row;
};

CYCBCR_INLINE constexpr ChromaRow chroma_row(ChromaRows rule, uint32_t i) {
    switch (rule) {
        case ChromaRows::Own:
            return {true, i};
        case ChromaRows::FieldKept:
            return {i % 4 == 0 || i % 4 == 3, i / 2};
        case ChromaRows::FieldRepeated:
            return {true, 2 * (i / 4) + i % 2};
        case ChromaRows::Shared:
        case ChromaRows::LastWriteWins:
            return {true, i / 2};
        case ChromaRows::EvenOnly:
            return {i % 2 == 0, i / 2};
    }
    return {false, 0};
}

// Under LastWriteWins, whether row i's chroma is the write that remains: a
// walk that skips the others writes the same bytes once.
CYCBCR_INLINE constexpr bool chroma_write_remains(uint32_t i, uint32_t height) {
    return i % 2 != 0 || i + 1 == height;
}

// The highest chroma row that rows 0 .. height - 1 read or write under `rule`
// (height > 0), and whether any does.
CYCBCR_INLINE constexpr ChromaRow last_chroma_row(ChromaRows rule, uint32_t height) {
    ChromaRow last{false, 0};
    // Every rule reaches its highest row within the last four luma rows.
    for (uint32_t i = height > 4 ? height - 4 : 0; i < height; ++i) {
        const ChromaRow c = chroma_row(rule, i);
        if (c.present && (!last.present || c.row > last.row)) last = c;
    }
    return last;
}

// Field-exchanging variants write source row 2k to row 2k + 1 and 2k + 1 to 2k.
CYCBCR_INLINE constexpr uint32_t field_exchanged(uint32_t i) {
    return i ^ 1u;
}

// Calls fn(i) for each row of the run, top to bottom.
template <class Fn>
CYCBCR_INLINE void walk(RowRun run, Fn&& fn) {
    for (uint32_t i = run.first, end = run.first + run.count; i < end; ++i) fn(i);
}
// Calls fn(i, 2) for rows i and i + 1 together where they share a chroma row
// (Shared: i even, both in the run) and fn(i, 1) for every other row, top to
// bottom. A run handed to another thread starts on an even row.
template <class Fn>
CYCBCR_INLINE void walk_sharing_chroma(RowRun run, ChromaRows rule, Fn&& fn) {
    const uint32_t end = run.first + run.count;
    for (uint32_t i = run.first; i < end;) {
        const uint32_t n = rule == ChromaRows::Shared && i % 2 == 0 && i + 1 < end ? 2 : 1;
        fn(i, n);
        i += n;
    }
}
// The same rows, the last first: the order of work only, not where rows go.
template <class Fn>
CYCBCR_INLINE void walk_upwards(RowRun run, Fn&& fn) {
    for (uint32_t i = run.first + run.count; i-- > run.first;) fn(i);
}

}  // namespace cycbcr

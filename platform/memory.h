// Temporary rows, bulk copies, and the memory policies every family shares: one
// overlap test, one rule for streaming stores, one prefetch, one row copy.
#pragma once

#include <xmmintrin.h>

#include <cstddef>
#include <cstdint>

#include "frame/inline.h"

namespace cycbcr {

// 64-byte aligned block for temporary rows; QBFree(nullptr) does nothing.
void* QBAlloc(size_t size);
void QBFree(void* block);

// Copies count bytes; the ranges must not overlap. The row copy of the plain
// paths.
void CopyMemoryFast(void* dst, const void* src, size_t count);

// Copies wordCount 16-bit words, exchanging the two bytes of each. dst may equal
// src (in place); other overlaps are not allowed.
void EndianConvertWord(void* dst, const void* src, size_t wordCount);

// A row buffer that lives on the stack up to StackBytes and comes from QBAlloc
// beyond that.
template <size_t StackBytes>
class TempRow {
  public:
    explicit TempRow(size_t bytes)
        : data_(bytes <= StackBytes ? stack_ : static_cast<uint8_t*>(QBAlloc(bytes))) {}
    ~TempRow() {
        if (data_ != stack_) QBFree(data_);
    }
    TempRow(const TempRow&) = delete;
    TempRow& operator=(const TempRow&) = delete;
    uint8_t* data() { return data_; }

  private:
    uint8_t stack_[StackBytes];
    uint8_t* data_;
};

// Whether [a, a + an) and [b, b + bn) share a byte.
CYCBCR_INLINE bool ranges_overlap(const void* a, size_t an, const void* b, size_t bn) {
    const auto a0 = reinterpret_cast<uintptr_t>(a);
    const auto b0 = reinterpret_cast<uintptr_t>(b);
    return a0 < b0 + bn && b0 < a0 + an;
}

// How a vector row kernel stores. A frame whose destination is at least
// kStreamBytes cannot stay in the cache anyway, and skipping the read for
// ownership of every destination line saves a third of the memory traffic: it
// goes out with streaming stores, 32 bytes at a time when its rows are 32-byte
// aligned, 16 when 16-byte aligned. The frame loop decides once and fences once.
enum class Store : uint8_t { Cached, Stream16, Stream32 };
inline constexpr size_t kStreamBytes = size_t{8} << 20;
Store store_for(const void* dst, size_t pitch, uint32_t rows);
// Orders a frame's streaming stores before the call returns (after Stream16 or
// Stream32 only).
void finish_stores(Store store);

// Asks for the cache line `ahead` bytes past p. The address is only a hint and
// may lie past the frame (prefetches do not fault), so it is formed as a number.
CYCBCR_INLINE void prefetch(const void* p, size_t ahead) {
    _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<uintptr_t>(p) + ahead),
                 _MM_HINT_T0);
}

// A row kernel that copies n bytes; the ranges must not overlap.
using CopyRow = void (*)(uint8_t* dst, const uint8_t* src, size_t n);

namespace plain {
// The row copy of the plain paths: 32 bytes a step, then 16 and single bytes.
// Whole frames and planes go through CopyMemoryFast.
void copy_row(uint8_t* dst, const uint8_t* src, size_t n);
}  // namespace plain

namespace avx2 {
// The row copy of the AVX2 paths, for a frame stored as `store` says: 128 bytes
// a turn, then 32 and single bytes.
CopyRow copy_row(Store store);
}  // namespace avx2

}  // namespace cycbcr

// Temporary buffers and the two bulk copies every family builds on.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr {

// 64-byte aligned block for temporary rows; QBFree(nullptr) does nothing.
void* QBAlloc(size_t size);
void QBFree(void* block);

// Copies count bytes; the ranges must not overlap.
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

}  // namespace cycbcr

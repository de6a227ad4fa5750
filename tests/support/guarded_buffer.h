// Test buffers whose bounds are enforced by the MMU: the byte right after the
// last one in use is the first byte of an inaccessible page, so an over-write
// crashes the test, and the slack before the start holds a canary pattern that
// is checked afterwards to catch under-writes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace cycbcr_test {

class GuardedBuffer {
  public:
    explicit GuardedBuffer(size_t size, size_t slack = 64);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    uint8_t* data() { return data_; }
    size_t size() const { return size_; }
    // True when every byte between the start of the mapping and data() still
    // holds the canary.
    bool slack_intact() const;

  private:
    uint8_t* base_;
    size_t mapped_;
    uint8_t* data_;
    size_t size_;
};

}  // namespace cycbcr_test

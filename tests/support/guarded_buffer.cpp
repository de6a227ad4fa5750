#include "support/guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>

namespace cycbcr_test {
namespace {
constexpr uint8_t kCanary = 0xA5;
}

GuardedBuffer::GuardedBuffer(size_t size, size_t slack) : size_(size) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t usable = (size + slack + page - 1) / page * page;
    mapped_ = usable + page;
    void* p = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw std::bad_alloc();
    base_ = static_cast<uint8_t*>(p);
    if (mprotect(base_ + usable, page, PROT_NONE) != 0) {
        munmap(base_, mapped_);
        throw std::bad_alloc();
    }
    data_ = base_ + usable - size;
    std::memset(base_, kCanary, static_cast<size_t>(data_ - base_));
}

GuardedBuffer::~GuardedBuffer() {
    munmap(base_, mapped_);
}

bool GuardedBuffer::slack_intact() const {
    for (const uint8_t* p = base_; p != data_; ++p)
        if (*p != kCanary) return false;
    return true;
}

}  // namespace cycbcr_test

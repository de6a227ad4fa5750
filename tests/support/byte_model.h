// A byte-level model of what a conversion does to its destination. Writes go
// through d() and reads through s(); both record how far into each buffer the
// conversion may reach, so that the real run can be placed between guard pages
// ending exactly there.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace cycbcr_test {

struct ByteModel {
    std::vector<uint8_t> dst;  // starts as the destination's initial bytes
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
    void copy(size_t to, size_t from, size_t n) {
        for (size_t k = 0; k < n; ++k) d(to + k) = s(from + k);
    }
    // Exchanges row i with row rows - 1 - i, pitch bytes each.
    void flip(size_t at, size_t pitch, size_t rows) {
        for (size_t i = 0; i < rows / 2; ++i)
            for (size_t k = 0; k < pitch; ++k)
                std::swap(d(at + i * pitch + k), d(at + (rows - 1 - i) * pitch + k));
    }
};

}  // namespace cycbcr_test

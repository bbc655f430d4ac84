#include "arrays/float_sort.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "arrays/quicksort.h"

namespace ardel {

namespace {

// A float's bits turned into an unsigned key that orders as the float does: negative values
// have all bits flipped, positive ones only the sign bit.
std::uint32_t Key(float f) {
    const std::uint32_t u = std::bit_cast<std::uint32_t>(f);
    return (u & 0x80000000u) ? ~u : (u | 0x80000000u);
}

float FromKey(std::uint32_t k) {
    return std::bit_cast<float>((k & 0x80000000u) ? (k & 0x7FFFFFFFu) : ~k);
}

}  // namespace

void SortFloatsAscending(std::vector<float>& v) {
    for (float f : v) {
        if (std::isnan(f)) {
            if (!v.empty()) QuickSortRange(v.data(), 0, std::int64_t(v.size()) - 1);
            return;
        }
    }
    if (v.size() < 2) return;
    // Below a few thousand values the quicksort is as quick and allocates nothing.
    if (v.size() < 4096) {
        QuickSortRange(v.data(), 0, std::int64_t(v.size()) - 1);
        return;
    }
    std::vector<std::uint32_t> keys(v.size()), scratch(v.size());
    for (std::size_t i = 0; i < v.size(); ++i) keys[i] = Key(v[i]);
    // Three passes of 11, 11 and 10 bits.
    constexpr int kShifts[3] = {0, 11, 22};
    for (int shift : kShifts) {
        std::array<std::size_t, 2048> count{};
        for (std::uint32_t k : keys) ++count[(k >> shift) & 2047u];
        std::size_t sum = 0;
        for (std::size_t& c : count) {
            const std::size_t n = c;
            c = sum;
            sum += n;
        }
        for (std::uint32_t k : keys) scratch[count[(k >> shift) & 2047u]++] = k;
        keys.swap(scratch);
    }
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = FromKey(keys[i]);
}

}  // namespace ardel

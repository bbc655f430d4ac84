// The program's own quicksort for a range of a vector of numbers, used wherever values are put
// in order before they are measured (inter-event intervals, descriptive statistics, the
// two-sample test). It is kept as it always was, so that every routine that sorts agrees.
#pragma once

#include <cstdint>
#include <utility>

namespace ardel {

// Sorts v[low..high] ascending. The middle element is the pivot; it is parked at the low end,
// a two-finger scan moves up over elements not above it and down over elements not below it,
// and the pivot goes to where the fingers cross. The smaller side is sorted by recursion and the
// larger one by the loop, so the depth stays logarithmic whatever the input.
template <typename T>
void QuickSortRange(T* v, std::int64_t low, std::int64_t high) {
    while (low < high) {
        std::swap(v[low], v[low + (high - low) / 2]);
        const T pivot = v[low];
        std::int64_t i = low + 1;
        std::int64_t j = high;
        while (i <= j) {
            while (i <= j && v[i] <= pivot) ++i;
            while (i <= j && v[j] >= pivot) --j;
            // Equal fingers happen only at a value that compares with nothing (NaN).
            if (i >= j) break;
            std::swap(v[i], v[j]);
            ++i;
            --j;
        }
        std::swap(v[low], v[j]);
        if (j - low <= high - j) {
            QuickSortRange(v, low, j - 1);
            low = j + 1;
        } else {
            QuickSortRange(v, j + 1, high);
            high = j - 1;
        }
    }
}

}  // namespace ardel

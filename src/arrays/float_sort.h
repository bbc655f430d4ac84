// Ascending sort of a vector of floats for the two-sample test, fast enough for arrays of
// millions of values. The order is the one the program's quicksort gives: values that compare
// equal are interchangeable, so any ascending order is the same sequence of values.
#pragma once

#include <vector>

namespace ardel {

// Sorts v ascending. Without NaN it is an LSD radix sort on the values' bits; a vector that
// holds a NaN goes through the program's quicksort, whose placement of a NaN is the rule.
void SortFloatsAscending(std::vector<float>& v);

}  // namespace ardel

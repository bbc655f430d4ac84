// The filter's run over the three screens, computed in the lanes of the vector unit.
//
// The cascade's recurrence is a chain from one point to the next, so one run keeps a single
// lane busy. Here the run is cut into as many chunks as the vector unit has lanes for doubles;
// the chunks go through the cascade side by side, each from rest, and each chunk's output is
// then corrected by the free response of the state it really starts from (the state the chunks
// before it leave behind, carried from chunk to chunk by the cascade's state-transition
// matrix). In exact arithmetic that is the one-pass run; in floating point the two differ in
// the last bits. So every value is checked to lie clear of a rounding boundary, and a run with
// any value too near one is refused: the caller then runs the one-pass filter. The margin is a
// thousand times the distance between the two that a trial run on a loud signal shows (the
// tests find real traces well inside a tenth of it), so the 16-bit results are those of the
// one-pass run.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "detect/digital_filter.h"

namespace ardel {

class LaneFilter {
public:
    // The widest vector unit the machine has (Best), or one named, for the tests.
    enum class Width { Best, Avx2, Avx512 };
    // Null when the machine lacks the vector unit, the filter is not four sections, the run is
    // too short to share out or too long for the tables, or the trial run finds the lanes too
    // far from the one-pass run (the one-pass run serves then).
    static std::unique_ptr<LaneFilter> Make(const IirFilter& filter, std::size_t runLength,
                                            Width width = Width::Best);

    std::size_t RunLength() const { return plan_.n; }
    int Lanes() const { return plan_.lanes; }
    // How near a rounding boundary a value may lie: a thousand times as far as the lanes and
    // the one-pass run were apart in a trial run on a loud signal (1e-11 to 1e-8 on the 16-bit
    // scale for the usual cut-offs), and at least 1e-6.
    double Margin() const { return plan_.margin; }

    // Filters in (RunLength() values) from rest into out, each value rounded half to even.
    // False where some value lies within Margin() of a rounding boundary or beyond 16 bits; out
    // is then not to be used.
    bool Run(std::span<const std::int16_t> in, std::span<std::int16_t> out);

    // The same run in double precision before rounding, for the tests' comparison with the
    // one-pass run.
    std::vector<double> RunValues(std::span<const std::int16_t> in);

    struct Plan {
        std::array<Biquad, 4> q;
        std::array<double, 20> coefficients{};  // b0 b1 b2 a1 a2 of each section, for the kernel
        int lanes = 0;
        std::size_t n = 0, chunk = 0;
        double margin = 0;
        std::vector<double> free;  // chunk x 8: the output j points after a unit state i
        std::array<double, 64> transition{};  // the state a chunk of free run leaves, row-major
    };

private:
    LaneFilter() = default;
    Plan plan_;
    std::vector<double> work_;
    std::vector<std::int16_t> workIn_;
};

}  // namespace ardel

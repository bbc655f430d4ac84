#include "detect/filter_lanes.h"

#include <algorithm>
#include <cmath>

#include "detect/filter_lanes_kernel.h"

namespace ardel {

namespace {

constexpr std::size_t kMinChunk = 64;
// The free-response table holds 8 doubles a point of a chunk: 4 MB at most.
constexpr std::size_t kMaxChunk = 65536;
// The margin against rounding boundaries: a thousand times what the trial run finds, within
// these bounds.
constexpr double kSafety = 1000;
constexpr double kMinMargin = 1e-6;
constexpr double kMaxMargin = 1e-4;
// A pole at this radius takes a thousand points to fall to 1/e.
constexpr double kMaxPoleRadius = 0.999;

#if ARDEL_FILTER_LANES
// The larger size of a section's two poles, the roots of z^2 + a1 z + a2.
double PoleRadius(const Biquad& q) {
    const double disc = q.a1 * q.a1 - 4 * q.a2;
    if (disc < 0) return std::sqrt(q.a2);
    const double root = std::sqrt(disc);
    return std::max(std::abs(-q.a1 + root), std::abs(-q.a1 - root)) / 2;
}

int MachineLanes(LaneFilter::Width width) {
    __builtin_cpu_init();
    const bool avx512 =
        __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq");
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    switch (width) {
        case LaneFilter::Width::Avx512: return avx512 ? 8 : 0;
        case LaneFilter::Width::Avx2: return avx2 ? 4 : 0;
        case LaneFilter::Width::Best: break;
    }
    return avx512 ? 8 : avx2 ? 4 : 0;
}
#else
int MachineLanes(LaneFilter::Width) { return 0; }
#endif

bool RunLanes(const LaneFilter::Plan& p, const std::int16_t* in, std::int16_t* out,
              double* values, double* work, std::int16_t* workIn) {
    const lanes::Args a{p.coefficients.data(), p.free.data(), p.transition.data(), p.n, p.chunk,
                        p.margin, in, out, values, work, workIn};
#if ARDEL_FILTER_LANES
    if (p.lanes == 8) return lanes::RunAvx512(a);
    if (p.lanes == 4) return lanes::RunAvx2(a);
#endif
    return false;
}

}  // namespace

std::unique_ptr<LaneFilter> LaneFilter::Make(const IirFilter& filter, std::size_t runLength,
                                             Width width) {
    if (filter.sections.size() != 4) return nullptr;
    // Poles very near the unit circle (a cut-off of a few Hz) carry large states from point to
    // point, and the lanes' sums part further from the one-pass run's.
    for (const Biquad& q : filter.sections)
        if (PoleRadius(q) > kMaxPoleRadius) return nullptr;
    const int lanes = MachineLanes(width);
    if (lanes == 0) return nullptr;
    const std::size_t k = std::size_t(lanes);
    const std::size_t chunk = (runLength + k - 1) / k;
    if (chunk < kMinChunk || chunk > kMaxChunk) return nullptr;

    std::unique_ptr<LaneFilter> f(new LaneFilter);
    Plan& p = f->plan_;
    std::copy(filter.sections.begin(), filter.sections.end(), p.q.begin());
    for (std::size_t s = 0; s < 4; ++s) {
        const Biquad& q = p.q[s];
        const double c[5] = {q.b0, q.b1, q.b2, q.a1, q.a2};
        std::copy(c, c + 5, p.coefficients.begin() + std::ptrdiff_t(5 * s));
    }
    p.lanes = lanes;
    p.n = runLength;
    p.chunk = chunk;
    p.free.assign(chunk * 8, 0.0);
    for (std::size_t i = 0; i < 8; ++i) {
        std::array<double, 8> st{};
        st[i] = 1;
        for (std::size_t j = 0; j < chunk; ++j) p.free[j * 8 + i] = CascadePoint(p.q, st, 0.0);
        for (std::size_t r = 0; r < 8; ++r) p.transition[r * 8 + i] = st[r];
    }
    f->work_.assign(chunk * k, 0.0);
    f->workIn_.assign(chunk * k, 0);

    // A trial on a loud signal measures how far the lanes and the one-pass run part: a level
    // that steps once across the run, a square wave and noise, together up to half the 16-bit
    // range. The margin is a thousand times what it finds, and at least 1e-6; a filter that
    // would need more than 1e-4 is left to the one-pass run, as are runs near a boundary.
    std::vector<std::int16_t> trial(runLength);
    std::uint32_t seed = 12345;
    for (std::size_t i = 0; i < runLength; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const int noise = int(seed >> 19) - 4096;
        const int level = i < runLength / 2 ? 8000 : -8000;
        const int square = (i / 97) % 2 ? 4000 : -4000;
        trial[i] = std::int16_t(level + square + noise);
    }
    p.margin = kMaxMargin;
    const std::vector<double> lanesValues = f->RunValues(trial);
    std::array<double, 8> st{};
    double apart = 0;
    for (std::size_t i = 0; i < runLength; ++i)
        apart = std::max(apart, std::abs(CascadePoint(p.q, st, double(trial[i])) - lanesValues[i]));
    if (!(apart * kSafety <= kMaxMargin)) return nullptr;
    p.margin = std::max(kMinMargin, apart * kSafety);
    return f;
}

bool LaneFilter::Run(std::span<const std::int16_t> in, std::span<std::int16_t> out) {
    if (in.size() != plan_.n || out.size() != plan_.n) return false;
    return RunLanes(plan_, in.data(), out.data(), nullptr, work_.data(), workIn_.data());
}

std::vector<double> LaneFilter::RunValues(std::span<const std::int16_t> in) {
    std::vector<double> values(plan_.n, 0.0);
    std::vector<std::int16_t> out(plan_.n);
    if (in.size() == plan_.n) RunLanes(plan_, in.data(), out.data(), values.data(), work_.data(), workIn_.data());
    return values;
}

}  // namespace ardel

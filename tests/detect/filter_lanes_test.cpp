// The filter run in the vector unit's lanes against the one-pass run: the same 16-bit values
// wherever the lanes take a run, for every filter of the list; the runs they hand back; the
// filters and lengths they leave alone.
#include "detect/filter_lanes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "core/number_text.h"

namespace ardel {
namespace {

constexpr double kFs = 20000;

// The one-pass run: every point through the four sections in turn (a pass of each section over
// the whole run gives the same values to the last bit).
std::vector<double> OnePass(const IirFilter& f, const std::vector<std::int16_t>& in) {
    std::vector<double> v(in.begin(), in.end());
    f.Apply(v);
    return v;
}

// A recording-like run: baseline noise of the given size, a drift, and steps and spikes far
// larger.
std::vector<std::int16_t> Trace(std::size_t n, unsigned seed, double noise) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> g(0, noise);
    std::vector<std::int16_t> v(n);
    for (std::size_t i = 0; i < n; ++i) {
        double x = g(rng) + 2000 * std::sin(double(i) / 700.0);
        if ((i / 500) % 3 == 1) x -= 6000;
        if (i % 997 < 3) x += 9000;
        v[i] = std::int16_t(std::clamp(x, -32768.0, 32767.0));
    }
    return v;
}

std::vector<LaneFilter::Width> MachineWidths() {
    std::vector<LaneFilter::Width> widths;
    const auto f = DesignDigitalFilter(4, kFs, 2000);
    for (auto w : {LaneFilter::Width::Avx2, LaneFilter::Width::Avx512})
        if (LaneFilter::Make(*f, 3072, w)) widths.push_back(w);
    return widths;
}

TEST(FilterLanes, EveryFilterOfTheListGivesTheOnePassRunsSixteenBitValues) {
    const auto widths = MachineWidths();
    if (widths.empty()) GTEST_SKIP() << "this machine has no vector unit for the lanes";
    int runs = 0, handedBack = 0;
    for (auto width : widths) {
        for (int type = 0; type < 8; ++type) {
            for (double fc : {400.0, 2000.0, 7000.0}) {
                const auto filter = DesignDigitalFilter(type, kFs, fc);
                ASSERT_TRUE(filter);
                // Three screens of 4 Blocks; a length no lane count divides; three screens of
                // 1 1/3 Blocks; three screens of 64 Blocks.
                for (std::size_t n : {3072u, 3001u, 1024u, 49152u}) {
                    auto lanes = LaneFilter::Make(*filter, n, width);
                    ASSERT_TRUE(lanes) << type << " " << fc << " " << n;
                    EXPECT_GE(lanes->Margin(), 1e-6);
                    for (unsigned seed : {1u, 2u}) {
                        const auto in = Trace(n, seed, seed == 1 ? 30 : 3000);
                        const auto exact = OnePass(*filter, in);
                        const auto values = lanes->RunValues(in);
                        double apart = 0;
                        for (std::size_t i = 0; i < n; ++i)
                            apart = std::max(apart, std::abs(values[i] - exact[i]));
                        // The margin is a thousand times the trial's distance: ten times
                        // this still lies within it.
                        EXPECT_LE(apart, lanes->Margin() / 100) << type << " " << fc << " " << n;

                        std::vector<std::int16_t> out(n);
                        ++runs;
                        if (!lanes->Run(in, out)) {
                            ++handedBack;
                            continue;
                        }
                        for (std::size_t i = 0; i < n; ++i) {
                            const auto v = ToInt16(exact[i]);
                            ASSERT_TRUE(v) << i;  // a value beyond 16 bits is handed back
                            ASSERT_EQ(out[i], *v) << type << " " << fc << " " << n << " @" << i;
                        }
                    }
                }
            }
        }
    }
    // A hand-back costs only speed; it comes of a value within the margin of .5, or beyond 16
    // bits (the spikes overshoot under the sharper filters).
    EXPECT_LT(handedBack, runs / 3) << handedBack << " of " << runs;
}

TEST(FilterLanes, HandsBackARunWithAValueAtAHalfOrBeyondSixteenBits) {
    if (MachineWidths().empty()) GTEST_SKIP() << "this machine has no vector unit for the lanes";
    // Halving, then three sections that pass everything: 3 comes out as 1.5 exactly.
    IirFilter half;
    half.sections = {{0.5, 0, 0, 0, 0}, {}, {}, {}};
    auto lanes = LaneFilter::Make(half, 2000);
    ASSERT_TRUE(lanes);
    std::vector<std::int16_t> in(2000, 4), out(2000);
    ASSERT_TRUE(lanes->Run(in, out));
    for (std::int16_t v : out) ASSERT_EQ(v, 2);
    in[1500] = 3;  // in the last lane's chunk
    EXPECT_FALSE(lanes->Run(in, out));
    in[1500] = 4;
    in[10] = -7;  // -3.5, in the first
    EXPECT_FALSE(lanes->Run(in, out));

    IirFilter twice;
    twice.sections = {{2, 0, 0, 0, 0}, {}, {}, {}};
    lanes = LaneFilter::Make(twice, 2000);
    ASSERT_TRUE(lanes);
    std::fill(in.begin(), in.end(), std::int16_t(16383));
    ASSERT_TRUE(lanes->Run(in, out));
    EXPECT_EQ(out[999], 32766);
    in[999] = 16384;  // 32768 does not fit
    EXPECT_FALSE(lanes->Run(in, out));
    // A run of the wrong length is refused too.
    std::vector<std::int16_t> shorter(1999), shortOut(1999);
    EXPECT_FALSE(lanes->Run(shorter, shortOut));
}

TEST(FilterLanes, LeavesToTheOnePassRunWhatItCannotServe) {
    if (MachineWidths().empty()) GTEST_SKIP() << "this machine has no vector unit for the lanes";
    const auto filter = DesignDigitalFilter(4, kFs, 2000);
    // Too short to share among the lanes (a fraction of a Block per screen), or too long for
    // the free-response table (over 1,000 Blocks per screen).
    EXPECT_FALSE(LaneFilter::Make(*filter, 200));
    EXPECT_FALSE(LaneFilter::Make(*filter, 600000 * 8));
    // Not four sections.
    IirFilter three = *filter;
    three.sections.pop_back();
    EXPECT_FALSE(LaneFilter::Make(three, 3072));
    // Poles very near the unit circle: a high-pass of 1 Hz, a low-pass of 5 Hz.
    EXPECT_FALSE(LaneFilter::Make(*DesignDigitalFilter(1, kFs, 1), 3072));
    EXPECT_FALSE(LaneFilter::Make(*DesignDigitalFilter(0, kFs, 5), 3072));
}

}  // namespace
}  // namespace ardel

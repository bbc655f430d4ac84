#include "group/multi_peak.h"

#include <cmath>

#include <gtest/gtest.h>

#include "analysis_fixture.h"
#include "support/scripted_dialogs.h"

namespace ardel::group {
namespace {

using ardel::testing::ScriptedDialogs;

constexpr int kPoints = 1024;

// Three Gaussian bumps (sigma 15 points) of 50, 80 and 60 mV at points 300, 400 and 500 on a
// rest of 0: peaks there, troughs near 350 and 450 between them.
std::vector<std::int16_t> ThreePeaks() {
    std::vector<std::int16_t> t(kPoints);
    for (int i = 0; i < kPoints; ++i) {
        double v = 0;
        for (auto [at, height] : {std::pair{300, 50.0}, {400, 80.0}, {500, 60.0}})
            v += height * std::exp(-0.5 * std::pow((i - at) / 15.0, 2));
        t[std::size_t(i)] = ToSamples(v);
    }
    return t;
}

class MultiPeakTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ScaleRecording(s, 100);
        s.params.PeakDirection = 1;
        w.form.Check1 = true;
        w.form.Line1X = {550.0, 250.0};  // reversed on purpose: the smaller x is the start
    }
    Session s;
    GroupWindow w;
    ScriptedDialogs ui;
};

TEST_F(MultiPeakTest, FindsTheKnownPeaksAndTroughsInOrder) {
    FillStore(w.store, {ThreePeaks()});
    MultiPeakAnalysis(s, ui, w);
    ASSERT_EQ(s.results.rows.size(), 1u);
    const ResultRow& row = s.results.rows[0];
    EXPECT_EQ(row.Identifier, "cell.abf G1 T0 MP");
    EXPECT_FLOAT_EQ(row.Values[0], 0.0f);
    // Peak, trough, peak, trough, peak: each within a point (0.1 ms) of the true turning
    // point, as the filters are centred and delay nothing.
    const double expected[] = {300, 350, 400, 450, 500};
    double troughs[2];
    for (int k = 0; k < 2; ++k) {
        // The troughs of two bells lie where their slopes cancel; find them on the samples.
        const auto t = ThreePeaks();
        const int from = 300 + 100 * k, to = from + 100;
        troughs[k] = double(std::min_element(t.begin() + from, t.begin() + to) - t.begin());
    }
    const double at[] = {expected[0], troughs[0], expected[2], troughs[1], expected[4]};
    for (int n = 1; n <= 5; ++n) {
        SCOPED_TRACE(n);
        EXPECT_NEAR(row.Values[std::size_t(2 * n)], at[n - 1] * 0.1, 0.1 + 1e-4);
        EXPECT_NEAR(row.Values[std::size_t(2 * n - 1)],
                    ThreePeaks()[std::size_t(std::lround(row.Values[std::size_t(2 * n)] * 10))] * 0.01,
                    1e-4);
    }
    EXPECT_EQ(row.Values[11], 0.0f);
    // Average type: every point marked.
    EXPECT_EQ(w.overlay.marks.size(), 5u);
    EXPECT_EQ(w.overlay.text[0].substr(0, 7), "1 Peak ");
    EXPECT_EQ(w.form.Command16, "Analyze");
}

TEST_F(MultiPeakTest, CursorsHiddenOrTogetherGiveTheBaselineOnly) {
    auto t = ThreePeaks();
    for (auto& v : t) v = std::int16_t(v + 200);  // rest at 2 mV
    FillStore(w.store, {t});
    w.form.Check1 = false;
    MultiPeakAnalysis(s, ui, w);
    w.form.Check1 = true;
    w.form.Line1X = {400.0, 400.0};
    MultiPeakAnalysis(s, ui, w);
    ASSERT_EQ(s.results.rows.size(), 2u);
    for (const ResultRow& row : s.results.rows) {
        EXPECT_FLOAT_EQ(row.Values[0], 2.0f);
        for (std::size_t k = 1; k < row.Values.size(); ++k) EXPECT_EQ(row.Values[k], 0.0f);
    }
    EXPECT_TRUE(w.overlay.marks.empty());
}

TEST(TurningPoints, DuplicateRuleAndPlateau) {
    // A fast oscillation of the differential: sign changes every 3 points.
    std::vector<double> e(60);
    for (std::size_t i = 0; i < e.size(); ++i) e[i] = (i / 3) % 2 ? -1.0 : 1.0;
    const auto all = TurningPoints(e, 0, 59, 1);
    EXPECT_EQ(all.front(), 3);   // a peak where the differential turns negative
    EXPECT_EQ(all[1], -6);       // a trough where it turns positive
    EXPECT_EQ(all.size(), 19u);
    // Nothing within 4 points of the last one kept: every second turning point drops out,
    // so peaks no longer alternate with troughs.
    const auto sparse = TurningPoints(e, 0, 59, 4);
    ASSERT_GE(sparse.size(), 2u);
    EXPECT_EQ(sparse[0], -6);
    for (std::size_t k = 1; k < sparse.size(); ++k)
        EXPECT_GT(std::abs(sparse[k]) - std::abs(sparse[k - 1]), 4);
    EXPECT_TRUE(std::all_of(sparse.begin(), sparse.end(), [](std::int32_t p) { return p < 0; }));
    // A plateau: e reaching 0 ends a rise (a peak) but leaving 0 upwards is no trough.
    const std::vector<double> plateau = {1, 1, 0, 0, 0, 1, 1, -1, -1};
    EXPECT_EQ(TurningPoints(plateau, 0, 8, 0), (std::vector<std::int32_t>{2, 7}));
    // The first point kept must lie beyond minDistance from point 0.
    EXPECT_TRUE(TurningPoints(plateau, 0, 8, 2).size() == 1u);
}

}  // namespace
}  // namespace ardel::group

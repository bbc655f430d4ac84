// Correlograms: the windowed count against every pair, the edges of the range and of the bins,
// negative differences, and the command's questions, Retry on too many bins and its graph.
#include "graph/correlograms.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;

constexpr const char* kAutoBins =
    "Please enter the maximum number of bins.  This value determines the upper range of the "
    "x-axis.  For example, 1000 bins of bin size 1 ms sets the x range as 0 < x < +1000 ms.";
constexpr const char* kTooMany = "Too many bins!  Please readjust the bin size and try again.";

// Every pair, as the counting was first written.
std::vector<std::int64_t> AllPairs(const std::vector<float>& v, float bin, int upper) {
    std::vector<std::int64_t> c(std::size_t(upper) + 1, 0);
    const double range = double(upper) * double(bin);
    for (std::size_t i = 0; i < v.size(); ++i)
        for (std::size_t j = i + 1; j < v.size(); ++j) {
            const float d = std::fabs(v[j] - v[i]);
            if (double(d) >= 0 && double(d) <= range) ++c[std::size_t(std::floor(double(d) / bin))];
        }
    return c;
}

std::vector<std::int64_t> CrossAllPairs(const std::vector<float>& a, const std::vector<float>& b,
                                        float bin, int upper) {
    std::vector<std::int64_t> c(std::size_t(2 * upper + 1), 0);
    const double range = double(upper) * double(bin);
    for (const float x : a)
        for (const float y : b) {
            const float d = y - x;
            if (double(d) >= -range && double(d) <= range)
                ++c[std::size_t(std::floor(double(d) / bin) + upper)];
        }
    return c;
}

TEST(Correlograms, WindowedCountsEqualTheCountOfEveryPair) {
    std::mt19937 gen(7);
    std::uniform_real_distribution<float> time(-500, 5000);
    std::vector<float> a(600), b(400);
    for (float& x : a) x = std::round(time(gen) * 10) / 10;  // ties and exact bin edges
    for (float& x : b) x = std::round(time(gen) * 10) / 10;
    for (const float bin : {0.1f, 1.0f, 7.3f})
        for (const int upper : {0, 5, 300}) {
            EXPECT_EQ(AutoCorrelogramCounts(a, bin, upper), AllPairs(a, bin, upper));
            EXPECT_EQ(CrossCorrelogramCounts(a, b, bin, upper), CrossAllPairs(a, b, bin, upper));
        }
}

TEST(Correlograms, EdgesOfTheRangeAndNegativeDifferences) {
    // Equal values in bin 0; a distance exactly at the upper range in the highest counter; one
    // beyond it nowhere; the order of the values does not matter.
    const std::vector<float> v{2, 0, 0, 4.5f};
    EXPECT_EQ(AutoCorrelogramCounts(v, 1, 2), (std::vector<std::int64_t>{1, 0, 2}));
    // NaN takes part in no pair.
    const std::vector<float> withNan{0, NAN, 1};
    EXPECT_EQ(AutoCorrelogramCounts(withNan, 1, 1), (std::vector<std::int64_t>{0, 1}));
    // d = 0 in bin 0, d = -0.5 in bin -1 (floor), d = 2 at the upper end, d = -3 outside.
    const std::vector<float> from{10}, to{10, 9.5f, 12, 7};
    EXPECT_EQ(CrossCorrelogramCounts(from, to, 1, 2), (std::vector<std::int64_t>{0, 1, 1, 0, 1}));
    // The other way round: 0 and 0.5 in bin 0, -2 at the lower end, 3 outside.
    EXPECT_EQ(CrossCorrelogramCounts(to, from, 1, 2), (std::vector<std::int64_t>{1, 0, 2, 0, 0}));
}

TEST(Correlograms, AutoCommandRetriesOnTooManyBinsAndNormalises) {
    Session s;
    s.Label11 = "cell.abf";
    s.dataArray1.values = {0, 0, 1, 1.5f, 10};
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", "Please enter the bin size for Interval in ms.", "0.5");
    ui.ExpectInput("Maximum Number of Bin", kAutoBins, "60000");
    ui.ExpectAsk("Normalize", "Do you want to normalize by the total number of events?", Answer::No);
    ui.ExpectAsk("Too many bins", kTooMany, Answer::Retry);
    ui.ExpectInput("Bin Size", std::nullopt, "0.5");
    ui.ExpectInput("Maximum Number of Bin", kAutoBins, "3.9");  // Int: 3 bins
    ui.ExpectAsk("Normalize", std::nullopt, Answer::Yes);
    menu_AutoCorrelogram(s, ui, 1);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.Caption, " Auto-correlogram of Array#1 cell.abf");
    EXPECT_EQ(g.GraphTitle, "Auto-correlogram of Array#1 bin size=0.5");
    EXPECT_EQ(g.LeftTitle, "Auto-correlation");
    EXPECT_EQ(g.BottomTitle, "Interval (ms)");
    EXPECT_EQ(g.GraphStyle, kStyleLines);
    // Distances 1, 1.5, 0.5 within 1.5 ms: bins 1, 2 and 3, divided by the four values.
    ASSERT_EQ(g.PointCount(), 4);
    const float x[] = {0, 0.5f, 1, 1.5f}, y[] = {0, 0.25f, 0.25f, 0.25f};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(g.Point(1, i + 1).x, x[i]);
        EXPECT_EQ(g.Point(1, i + 1).y, y[i]);
    }

    // Cancel at the limit, an empty bin size and an empty array end without a graph.
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    ui.ExpectInput("Maximum Number of Bin", std::nullopt, "60000");
    ui.ExpectAsk("Normalize", std::nullopt, Answer::No);
    ui.ExpectAsk("Too many bins", kTooMany, Answer::Cancel);
    menu_AutoCorrelogram(s, ui, 1);
    ui.ExpectInput("Bin Size", std::nullopt, std::nullopt);
    menu_AutoCorrelogram(s, ui, 1);
    menu_AutoCorrelogram(s, ui, 2);
    EXPECT_EQ(s.graphs.size(), 1u);
}

TEST(Correlograms, CrossCommandAsksNoNormalisationAndCountsFromMinusUpper) {
    Session s;
    s.Label11 = "cell.abf";
    s.dataArray1.values = {0, 10, 20};
    s.dataArray2.values = {0, 9.5f, 21};
    ScriptedDialogs ui;
    ui.ExpectInput("Bin Size", "Please enter the bin size for Cross-Interval in ms.", "1");
    ui.ExpectInput("Maximum Number of Bin",
                   "Please enter the maximum number of bins.  This value determines the upper and "
                   "lower range of the x-axis.  For example, 1000 bins of bin size 1 ms sets the "
                   "x range as -1000 ms < x < +1000 ms.",
                   "30000");  // 60001 counters
    ui.ExpectAsk("Too many bins", kTooMany, Answer::Retry);
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    ui.ExpectInput("Maximum Number of Bin", std::nullopt, "2");
    menu_CrossCorrelogram(s, ui, 2);
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.Caption, " Cross-correlogram of Array#2 against Array #1 cell.abf");
    EXPECT_EQ(g.GraphTitle, "Cross-correlogram of Array#2 against Array #1 bin size=1");
    EXPECT_EQ(g.LeftTitle, "Cross-correlation");
    EXPECT_EQ(g.BottomTitle, "Cross-Interval (ms)");
    // Array #1 minus Array #2: 0.5 (bin 0), -1 (bin -1); the rest beyond 2 ms.
    ASSERT_EQ(g.PointCount(), 5);
    EXPECT_EQ(g.Point(1, 1).x, -2.0f);
    EXPECT_EQ(g.Point(1, 2).y, 1.0f);
    EXPECT_EQ(g.Point(1, 3).y, 1.0f);
    EXPECT_EQ(g.Point(1, 5).x, 2.0f);
}

}  // namespace
}  // namespace ardel

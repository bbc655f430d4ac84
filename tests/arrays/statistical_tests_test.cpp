// The Data Analysis form's tests on small samples against textbook values (Student's t and
// Fisher's F distributions from Boost.Math, the Kolmogorov critical value), its messages, the
// rules for values that cannot be computed, and the grid as an editor of the arrays.
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "arrays/float_sort.h"
#include "arrays/quicksort.h"
#include "arrays/statistical_tests.h"
#include "core/number_text.h"
#include "support/scripted_dialogs.h"

namespace ardel::testing {
namespace {

void Fill(DataArray& a, const std::vector<float>& v) {
    a.values.assign(1, 0.0f);
    a.values.insert(a.values.end(), v.begin(), v.end());
}

// The cell of the row with this label, column col.
std::string Cell(const DataAnalysisForm& f, const std::string& label, int col = 1) {
    for (const auto& row : f.Grid1) {
        if (row[0] == label) return row[std::size_t(col)];
    }
    return "<no row " + label + ">";
}

double TwoTailedStudent(double df, double t) {
    return 2 * boost::math::cdf(boost::math::students_t(df), -std::fabs(t));
}

struct DataAnalysis : ::testing::Test {
    Session s;
    ScriptedDialogs ui;
    DataAnalysisForm f;
    void Run(std::string_view caption) {
        ChooseTest(f, caption);
        DataAnalysis_Command1(s, ui, f);
    }
};

TEST_F(DataAnalysis, PairedTTestIsTheTTestOfTheDifferences) {
    Fill(s.dataArray1, {1, 2, 3, 4, 5});
    Fill(s.dataArray2, {2, 2, 4, 5, 7});
    Run(kCaptionPaired);
    // Differences -1, 0, -1, -1, -2: mean -1, variance 0.5.
    const double t = -1 / std::sqrt(0.5 / 5);
    EXPECT_EQ(Cell(f, "t Stat"), Format(t, "#,##0.0000"));
    EXPECT_EQ(Cell(f, "Degree of Freedom"), "4");
    EXPECT_EQ(Cell(f, "P value: two-tail"), Format(TwoTailedStudent(4, t), "0.00000000"));
    EXPECT_EQ(Cell(f, "P value: one-tail"), Format(TwoTailedStudent(4, t) / 2, "0.00000000"));
    EXPECT_EQ(Cell(f, "Mean", 2), "4.000");
    EXPECT_EQ(Cell(f, "N", 2), "5");
    EXPECT_EQ(f.Grid1.size(), std::size_t(kTestGridRows));
    EXPECT_EQ(f.Grid1[0][1], "Data Array #1");

    // Identical samples: no spread of the differences, so t keeps 0 and p is 1.
    Fill(s.dataArray2, {1, 2, 3, 4, 5});
    Run(kCaptionPaired);
    EXPECT_EQ(Cell(f, "t Stat"), "0.0000");
    EXPECT_EQ(Cell(f, "P value: two-tail"), "1.00000000");
}

TEST_F(DataAnalysis, WelchAndPooledTTestsOnTypedSamples) {
    // Sample 1 from Array #1, sample 2 typed.
    Fill(s.dataArray1, {10, 12, 9, 11, 13, 8});  // mean 10.5, variance 3.5
    f.Text[1] = {"8", "2", "10"};
    DataAnalysis_TextChange(f, 1);
    ASSERT_EQ(f.Option[1], 1);
    Run(kCaptionUnequalVar);
    const double q1 = 3.5 / 6, q2 = 4.0 / 10;
    const double t = 2.5 / std::sqrt(q1 + q2);
    const double df = (q1 + q2) * (q1 + q2) / (q1 * q1 / 5 + q2 * q2 / 9);
    EXPECT_EQ(Cell(f, "t Stat"), Format(t, "#,##0.0000"));
    EXPECT_EQ(Cell(f, "Degree of Freedom"), Format(df, "#,##0.000"));
    // Student's t at a fractional df: the incomplete beta's 3E-7 shows at most in the 7th decimal.
    EXPECT_NEAR(Val(Cell(f, "P value: two-tail")), TwoTailedStudent(df, t), 2E-7);

    Run(kCaptionEqualVar);
    const double pooled = (5 * 3.5 + 9 * 4.0) / 14;
    const double tp = 2.5 / std::sqrt(pooled * (1.0 / 6 + 1.0 / 10));
    EXPECT_EQ(Cell(f, "Pooled Variance"), Format(pooled, "#,##0.000"));
    EXPECT_EQ(Cell(f, "Degree of Freedom"), "14");
    EXPECT_NEAR(Val(Cell(f, "P value: two-tail")), TwoTailedStudent(14, tp), 2E-7);

    // A typed SD or N that is no number reads as 0: nothing can be divided, the values that
    // cannot be computed stay 0 and the command still fills its grid.
    f.Text[0] = {"5", "abc", "x"};
    f.Option[0] = 1;
    Run(kCaptionUnequalVar);
    EXPECT_EQ(Cell(f, "N"), "0");
    EXPECT_EQ(Cell(f, "t Stat"), "0.0000");
}

TEST_F(DataAnalysis, FTestPutsTheLargerVarianceOnTopWithoutFoldBack) {
    f.Option = {1, 1};
    f.Text[0] = {"0", "2", "11"};  // variance 4, df 10
    f.Text[1] = {"0", "3", "21"};  // variance 9, df 20
    Run(kCaptionFtest);
    EXPECT_EQ(Cell(f, "F Stat"), "2.2500");
    EXPECT_EQ(Cell(f, "Degree of Freedom", 1), "20");
    EXPECT_EQ(Cell(f, "Degree of Freedom", 2), "10");
    const double upper = boost::math::cdf(boost::math::complement(boost::math::fisher_f(20, 10), 2.25));
    EXPECT_NEAR(Val(Cell(f, "P value: two-tail")), 2 * upper, 2E-7);
    // Equal variances: sample 2 on top, F = 1 and the two-tailed p is 1, not folded.
    f.Text[1] = {"0", "2", "21"};
    Run(kCaptionFtest);
    EXPECT_EQ(Cell(f, "F Stat"), "1.0000");
    EXPECT_EQ(Cell(f, "Degree of Freedom", 1), "20");
    // Nearly equal variances give a two-tailed value above 1, as the test always showed.
    f.Text[1] = {"0", "2.01", "21"};
    Run(kCaptionFtest);
    EXPECT_GT(Val(Cell(f, "P value: two-tail")), 1.0);
}

TEST_F(DataAnalysis, EmptyAndUnequalArraysAreRefused) {
    Fill(s.dataArray1, {1, 2, 3});
    ui.ExpectMessage("Empty Data Array",
                     "One of the Data Array is empty.  Please fill the array with data and try again.");
    Run(kCaptionKStest);
    Fill(s.dataArray2, {1, 2});
    ui.ExpectMessage("Inappropriate Values");
    Run(kCaptionPaired);
    ui.ExpectMessage("Inappropriate Values");
    Run(kCaptionRegression);
    // The two-sample tests read their samples one by one: sample 2 on an empty array.
    s.dataArray1.Redim(1);
    f.Combo = {1, 0};
    ui.ExpectMessage("Empty Data Array #2",
                     "The Data Array #2 is empty.  Please fill the array with data and try again.");
    Run(kCaptionEqualVar);
    EXPECT_EQ(Cell(f, "Mean"), "<no row Mean>");
    EXPECT_TRUE(ui.Done());
}

TEST_F(DataAnalysis, RegressionGridGraphAndQuestion) {
    Fill(s.dataArray1, {1, 2, 3, 4, 5});
    Fill(s.dataArray2, {3.1f, 4.9f, 7.0f, 9.1f, 10.9f});
    ui.ExpectAsk("Linear Regression", std::nullopt, Answer::No);
    EXPECT_FALSE(menu_LinearRegression(ui, f));
    ui.ExpectAsk("Linear Regression", std::nullopt, Answer::Yes);
    ASSERT_TRUE(menu_LinearRegression(ui, f));
    DataAnalysis_Command1(s, ui, f);
    EXPECT_EQ(Cell(f, "The Equation is"), "Y = 1.0600 + 1.9800 X");
    EXPECT_EQ(Cell(f, "df"), "3");
    const double r = 19.8 / std::sqrt(10 * 39.24);
    EXPECT_EQ(Cell(f, "Coeff Correl (r)"), Format(r, "#,##0.000000"));
    const double t = r / std::sqrt((1 - r * r) / 3);
    EXPECT_NEAR(Val(Cell(f, "p (2-tailed):")), TwoTailedStudent(3, t), 2E-6);
    EXPECT_EQ(f.Graph1->GraphTitle, "Array #1 vs. Array #2: n=5\nY = 1.0600 + 1.9800 X");
    EXPECT_EQ(f.Graph1->PointCount(), 5);
    EXPECT_NEAR(f.Graph1->Point(2, 5).y, 1.06 + 1.98 * 5, 1E-4);
    EXPECT_TRUE(ui.Done());
}

TEST_F(DataAnalysis, KolmogorovSmirnovWalkAndProbability) {
    // Apart: every value of sample 1 below sample 2, D = 1 on the positive side.
    Fill(s.dataArray1, {3, 1, 2});
    Fill(s.dataArray2, {6, 5, 4, 7});
    Run(kCaptionKStest);
    EXPECT_EQ(Cell(f, "Max. Abs(Difference)"), "1.0000");
    EXPECT_EQ(Cell(f, "Max. (+) Difference"), "1.0000");
    EXPECT_EQ(Cell(f, "N", 2), "4.0000");
    const double en = std::sqrt(12.0 / 7);
    EXPECT_EQ(Cell(f, "K-S Z"), Format(en + 0.12 + 0.11 / en, "#,##0.0000"));
    // The graph: sorted values against i / n, the point count of the longer set.
    EXPECT_EQ(f.Graph1->PointCount(), 4);
    EXPECT_EQ(f.Graph1->Point(1, 1).x, 1.0f);
    EXPECT_FLOAT_EQ(f.Graph1->Point(2, 4).y, 1.0f);
    EXPECT_EQ(f.Graph1->Point(1, 4).x, 0.0f);

    // Equal samples: D = 0, lambda = 0, the series never settles and p is 1.
    Fill(s.dataArray2, {2, 3, 1});
    Run(kCaptionKStest);
    EXPECT_EQ(Cell(f, "Max. Abs(Difference)"), "0.0000");
    EXPECT_EQ(Cell(f, "2-tailed P"), "1.0000");

    // The 5 % critical value of the Kolmogorov distribution, and the 1E-8 rounding down.
    EXPECT_NEAR(KolmogorovProbability(1.3581), 0.05, 1E-4);
    const double p = KolmogorovProbability(1.0);
    EXPECT_EQ(p, std::floor(p / 1E-8) * 1E-8);
    EXPECT_NEAR(p, 0.26999967, 1E-7);

    // A NaN stops the walk instead of holding it for ever.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const KsResult r = KolmogorovSmirnov({1, nan}, {nan, 2});
    EXPECT_TRUE(std::isfinite(r.lambda));
}

TEST_F(DataAnalysis, ManualEntryWritesBackIntoTheArrays) {
    Fill(s.dataArray1, {1, 2, 3});
    menu_ViewArray(s, f);
    EXPECT_EQ(f.Caption, "Data Analysis");
    ASSERT_EQ(f.Grid1.size(), 4u);
    EXPECT_EQ(f.Grid1[3][0], "3");
    EXPECT_EQ(f.Grid1[3][1], "3.000");
    EXPECT_EQ(f.Grid1[2][2], "");  // array 2 has upper bound 1
    // Outside manual entry the keys do nothing.
    f.GridRow = 3;
    f.GridCol = 2;
    DataAnalysis_Grid1_KeyPress(s, f, '5');
    EXPECT_EQ(f.Grid1[3][2], "");

    menu_EditArray(s, f);
    EXPECT_EQ(f.Caption, "20.  Manual Data Entry");
    f.GridRow = 3;
    f.GridCol = 2;
    for (char c : std::string("4.57")) DataAnalysis_Grid1_KeyPress(s, f, c);
    DataAnalysis_Grid1_KeyPress(s, f, 8);
    DataAnalysis_Grid1_KeyPress(s, f, 13);
    ASSERT_EQ(s.dataArray2.UpperBound(), 3);
    EXPECT_FLOAT_EQ(s.dataArray2(3), 4.5f);
    EXPECT_EQ(s.dataArray2(2), 0.0f);
    f.GridRow = 2;
    f.GridCol = 1;
    f.Grid1[2][1] = "-7x";
    DataAnalysis_Grid1_KeyPress(s, f, 13);
    EXPECT_EQ(s.dataArray1(2), -7.0f);
    EXPECT_EQ(s.dataArray1.UpperBound(), 3);

    // "Test" reads only the caption's first character: manual entry runs the Welch test.
    EXPECT_EQ(TestCode(f), 2);
    DataAnalysis_Command1(s, ui, f);
    EXPECT_EQ(f.Grid1.size(), std::size_t(kTestGridRows));
    EXPECT_EQ(Cell(f, "N"), "3");

    // The clipboard: cells joined by tabs, each row ended by a lone CR.
    const std::string clip = DataAnalysisGridClipboard(f);
    EXPECT_EQ(clip.substr(0, 33), "\tData Array #1\tData Array #2\rMean");
}

TEST_F(DataAnalysis, ConstantAndNaNHoldingArraysGiveDefinedResults) {
    const std::string_view captions[] = {kCaptionPaired, kCaptionUnequalVar, kCaptionEqualVar,
                                         kCaptionFtest,  kCaptionRegression, kCaptionKStest};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<std::vector<float>> inputs[] = {
        {{4, 4, 4}, {4, 4, 4}},  // constant and identical
        {{1, nan, 3}, {2, 5, nan}},
        {{1, 2}, {3, 5}},  // regression with no degree of freedom left
    };
    for (const auto& in : inputs) {
        Fill(s.dataArray1, in[0]);
        Fill(s.dataArray2, in[1]);
        for (std::string_view caption : captions) {
            Run(caption);
            EXPECT_NE(f.Grid1[1][0], "") << caption;
        }
    }
    // Constant samples in the F test: 0 / 0 leaves F at 0, so the two-tailed p is 2 I_1 = 2.
    Fill(s.dataArray1, {4, 4, 4});
    Fill(s.dataArray2, {4, 4, 4});
    Run(kCaptionFtest);
    EXPECT_EQ(Cell(f, "F Stat"), "0.0000");
    EXPECT_EQ(Cell(f, "P value: two-tail"), "2.00000000");
    // Identical constant samples in the K-S test: D = 0 and p = 1.
    Run(kCaptionKStest);
    EXPECT_EQ(Cell(f, "2-tailed P"), "1.0000");
}

TEST(FloatSort, SameSequenceAsTheProgramsQuicksort) {
    std::mt19937 rng(3);
    std::normal_distribution<float> normal(0.0f, 1E3f);
    std::vector<float> v(20000);
    for (float& x : v) x = std::round(normal(rng));  // many ties
    v[5] = std::numeric_limits<float>::infinity();
    v[6] = -std::numeric_limits<float>::infinity();
    v[7] = std::numeric_limits<float>::denorm_min();
    v[8] = -std::numeric_limits<float>::max();
    std::vector<float> quick = v;
    QuickSortRange(quick.data(), 0, std::int64_t(quick.size()) - 1);
    SortFloatsAscending(v);
    ASSERT_EQ(v.size(), quick.size());
    for (std::size_t i = 0; i < v.size(); ++i) ASSERT_EQ(v[i], quick[i]) << i;
    // A NaN leaves the order to the quicksort.
    std::vector<float> withNan = {3, std::nanf(""), 1, 2};
    std::vector<float> expected = withNan;
    QuickSortRange(expected.data(), 0, 3);
    SortFloatsAscending(withNan);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_TRUE(withNan[i] == expected[i] || (std::isnan(withNan[i]) && std::isnan(expected[i])));
    }
}

}  // namespace
}  // namespace ardel::testing

// Descriptive statistics against values worked by hand, the statistics window's grid, and the
// Mathematical Operation form: padding, constants, the zero rules and the table's sort.
#include <gtest/gtest.h>

#include <cmath>

#include "arrays/array_statistics.h"
#include "arrays/data_arrays.h"
#include "arrays/math_operation.h"
#include "arrays/numeric_library.h"
#include "support/scripted_dialogs.h"

namespace ardel::testing {
namespace {

TEST(DescriptiveStatistics, WorkedExampleAndSmallSamples) {
    // 2, 4, 4, 4, 5, 5, 7, 9 in disorder: mean 5, sum of squares 32.
    const Descriptive d = DescriptiveStatistics({9, 4, 2, 5, 4, 7, 4, 5});
    EXPECT_DOUBLE_EQ(d.mean, 5);
    EXPECT_DOUBLE_EQ(d.variance, 32.0 / 7);
    EXPECT_DOUBLE_EQ(d.sd, std::sqrt(32.0 / 7));
    EXPECT_DOUBLE_EQ(d.sem, d.sd / std::sqrt(8.0));
    EXPECT_DOUBLE_EQ(d.median, 4.5);
    EXPECT_EQ(d.min, 2);
    EXPECT_EQ(d.max, 9);
    EXPECT_DOUBLE_EQ(d.cv, 100 * d.sd / 5);
    EXPECT_DOUBLE_EQ(d.invCv2, 1 / (d.cv * d.cv));  // percent, not a ratio
    // Sums of cubes 42 and fourth powers 356 of the deviations.
    EXPECT_NEAR(d.skewness, 8 * 42 / (std::pow(d.sd, 3) * 7 * 6), 1e-12);
    EXPECT_NEAR(d.kurtosis,
                8.0 * 9 / (7 * 6 * 5) * 356 / std::pow(d.variance, 2) - 3.0 * 49 / (6 * 5), 1e-12);

    const Descriptive three = DescriptiveStatistics({3, 1, 8});
    EXPECT_EQ(three.median, 3);
    EXPECT_EQ(three.skewness, 0);
    EXPECT_EQ(three.kurtosis, 0);
    const Descriptive zeroMean = DescriptiveStatistics({-1, 1});
    EXPECT_EQ(zeroMean.cv, 0);
    EXPECT_EQ(zeroMean.invCv2, 0);
    EXPECT_EQ(DescriptiveStatistics({4}).mean, 0);  // one value: nothing computed

    const MeanVariance mv = AverageVariance(std::vector<double>{1, 2, 3, 4});
    EXPECT_DOUBLE_EQ(mv.mean, 2.5);
    EXPECT_DOUBLE_EQ(mv.variance, 5.0 / 3);
}

TEST(ArrayStatistics, GridOfBothArraysLeavesAnEmptyArrayBlankAndTheArraysUnsorted) {
    Session s;
    s.dataArray1.values = {0, 3, 1, 2};
    CStatForm form;
    menu_ArrayStat(s, form);
    EXPECT_EQ(form.Caption, "Data Array Statistics");
    EXPECT_EQ(CStatGridText(form),
              "\tArray #1\tArray #2\nAverage\t2.000\t\nStdev\t1.000\t\nStd Error\t0.577\t\n"
              "Coeff of Var\t50.000\t\n1/CV^2\t0.000\t\nVariance\t1.000\t\nSkewness\t0.000\t\n"
              "Kurtosis\t0.000\t\nMedian\t2.000\t\nMinimum\t1.000\t\nMaximum\t3.000\t\n"
              "n\t3.000\t\n");
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 3, 1, 2}));
}

Session WithTimes(const std::vector<float>& times) {
    Session s;
    for (float t : times) s.events.Add().Time = t;
    return s;
}

void Calculate(Session& s, MathOperationForm& f, int destination) {
    ScriptedDialogs ui;
    ui.ExpectMessage("Mathematical Operation Finished",
                     "Calculations are done and the results are put into array #" +
                         std::to_string(destination) + ".");
    MathOperation_Command2(s, ui, f);
}

TEST(MathOperation, PaddingConstantsAndTheZeroRules) {
    Session s;
    s.dataArray1.values = {0, 6, -4, 9};
    s.dataArray2.values = {0, 3, 0};
    MathOperationForm f;
    f.Combo1 = {kOperandArray1, kOperandArray2};
    f.Combo2 = 3;  // Divide: by 0 gives 0, the shorter operand is padded with 0
    f.Combo3 = 1;
    Calculate(s, f, 2);
    EXPECT_EQ(s.dataArray2.values, (std::vector<float>{0, 2, 0, 0}));

    f.Combo2 = 5;  // Square root of a negative gives 0
    f.Combo1 = {kOperandArray1, kOperandConstant};
    f.Combo3 = 0;
    Calculate(s, f, 1);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, std::sqrt(6.0f), 0, 3}));

    // A constant fills the whole length; Subtraction the other way round.
    f.Combo1 = {kOperandConstant, kOperandArray1};
    f.Text1 = {"10.5x", ""};
    f.Combo2 = 1;
    Calculate(s, f, 1);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 10.5f - std::sqrt(6.0f), 10.5f, 7.5f}));
}

TEST(MathOperation, IntervalsSortTheTableAndAnEmptyTableIsTheRuntimeError) {
    Session s = WithTimes({40, 10, 25});
    MathOperationForm f;
    f.Combo1 = {kOperandInterval, kOperandConstant};
    f.Text1 = {"", "2"};
    f.Combo2 = 2;  // Muliply
    Calculate(s, f, 1);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 30, 30}));
    EXPECT_EQ(s.events[1].Time, 10);
    EXPECT_EQ(s.events[3].Time, 40);

    // Squared uses one operand, but the other still counts for the length.
    f.Combo1 = {kOperandConstant, 1 /* Time, three events */};
    f.Text1 = {"3", ""};
    f.Combo2 = kOperationSquared;
    Calculate(s, f, 1);
    EXPECT_EQ(s.dataArray1.values, (std::vector<float>{0, 9, 9, 9}));

    Session empty;
    ScriptedDialogs ui;
    ui.ExpectMessage(std::string(kProgramName), "Subscript out of range");
    f.Combo1 = {0, kOperandArray1};
    MathOperation_Command2(empty, ui, f);
}

TEST(MathOperation, ChangeHandlersShowTheConstantAndOfferTheSecondOperand) {
    MathOperationForm f;
    f.Combo1[1] = kOperandConstant;
    MathOperation_Combo1_Click(f, 1);
    EXPECT_EQ(f.Text1Visible, (std::array<bool, 2>{false, true}));
    f.Combo2 = kOperationSquareRoot;
    MathOperation_Combo2_Click(f);
    EXPECT_EQ(f.Label5, "Square root");
    EXPECT_FALSE(f.Combo1Enabled1);
    f.Combo2 = 0;
    MathOperation_Combo2_Click(f);
    EXPECT_TRUE(f.Combo1Enabled1);
}

}  // namespace
}  // namespace ardel::testing

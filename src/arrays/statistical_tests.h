// The "Data Analysis" form: six statistical tests on the two Data Arrays or on typed means and
// standard deviations, the result grid and graph, and the grid as an editor of the arrays
// ("Manual Data Entry").
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"

namespace ardel {

// The captions the menu commands write; the number in front is the test's code.
inline constexpr std::string_view kCaptionPaired = "1.  T-test Paired 2 Samples";
inline constexpr std::string_view kCaptionUnequalVar =
    "2.  T-test 2 Samples Assuming Unequal Variances";
inline constexpr std::string_view kCaptionEqualVar = "3.  T-test 2 Samples Assuming Equal Variances";
inline constexpr std::string_view kCaptionFtest = "4.  F-test for Variances";
inline constexpr std::string_view kCaptionRegression = "5.  Linear Regression";
inline constexpr std::string_view kCaptionKStest = "6.  Kolmogorov-Smirnov Two Sample Test";
inline constexpr std::string_view kCaptionManualEntry = "20.  Manual Data Entry";

// The rows the Test command gives the grid.
inline constexpr int kTestGridRows = 15;
inline constexpr int kAnalysisGridColumns = 3;

extern const std::vector<std::string> kSampleArrays;  // "Data Array#1", "Data Array#2"

// What the form's controls show. Element 0 of Option1 / Option2 is "Data Array", element 1
// "Mean"; Text2 / Text3 hold mean, standard deviation and the number of values.
struct DataAnalysisForm {
    std::string Caption = "Data Analysis";
    std::array<int, 2> Option{0, 0};  // the chosen option of Sample 1 and Sample 2
    std::array<int, 2> Combo{0, 1};   // Combo1, Combo2: index into kSampleArrays
    std::array<std::array<std::string, 3>, 2> Text;  // Text2 (sample 1), Text3 (sample 2)
    std::string Text4 = "0.05";  // alpha: shown, used by no computation
    // Grid1: rows of three cells; row 0 holds the column titles.
    std::vector<std::array<std::string, kAnalysisGridColumns>> Grid1;
    std::int32_t GridRow = 1;  // the current cell, for manual entry
    int GridCol = 1;
    std::shared_ptr<GraphModel> Graph1 = std::make_shared<GraphModel>();

    DataAnalysisForm();
};

// Blanks every cell below the title row.
void ClearGrid(DataAnalysisForm& f);
// The test code: Val of the caption's first character (so "20." runs code 2).
int TestCode(const DataAnalysisForm& f);

// The menu commands that choose a test. menu_LinearRegression asks first and returns false
// (the form stays closed) unless the answer is Yes.
void ChooseTest(DataAnalysisForm& f, std::string_view caption);
bool menu_LinearRegression(UserDialogs& ui, DataAnalysisForm& f);

// "Test" (Command1): runs the test of the caption's code and fills the grid (and the graph for
// regression and the two-sample test).
void DataAnalysis_Command1(Session& s, UserDialogs& ui, DataAnalysisForm& f);

// Typing into a sample's text box selects that sample's "Mean" option.
void DataAnalysis_TextChange(DataAnalysisForm& f, int sample);

// The arrays into the grid: row numbers in column 0, array 1 and 2 in columns 1 and 2
// (menu_ViewArray). menu_EditArray and the main menu's manual entry do the same with the caption
// "20.  Manual Data Entry", which turns the grid into an editor.
void menu_ViewArray(const Session& s, DataAnalysisForm& f);
void menu_EditArray(const Session& s, DataAnalysisForm& f);
void menu_ManualDataEntry(const Session& s, DataAnalysisForm& f);

// A key pressed in the grid in manual entry: Backspace (8) removes the cell's last character,
// Enter (13) stores the cell's Val in the array of its column at its row (growing the array),
// other characters are typed into the cell. Ignored outside manual entry.
void DataAnalysis_Grid1_KeyPress(Session& s, DataAnalysisForm& f, int keyAscii);

// The grid as the clipboard gets it (cells joined by tabs, each row ended by CR) and as a
// script shows it (one line per row).
std::string DataAnalysisGridClipboard(const DataAnalysisForm& f);
std::string DataAnalysisGridText(const DataAnalysisForm& f);
void DataAnalysis_menu_Copy(UserDialogs& ui, const DataAnalysisForm& f);

// The two-sample Kolmogorov-Smirnov statistic and probability of two sorted samples.
struct KsResult {
    double d = 0, positive = 0, negative = 0, lambda = 0, p = 0;
};
KsResult KolmogorovSmirnov(const std::vector<float>& sorted1, const std::vector<float>& sorted2);
// The Kolmogorov asymptotic series for lambda, rounded down to a multiple of 1E-8.
double KolmogorovProbability(double lambda);

}  // namespace ardel

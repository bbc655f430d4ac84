#include "arrays/statistical_tests.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "arrays/data_arrays.h"
#include "arrays/float_sort.h"
#include "arrays/numeric_library.h"
#include "core/number_text.h"

namespace ardel {

const std::vector<std::string> kSampleArrays = {"Data Array#1", "Data Array#2"};

namespace {

constexpr std::string_view kFmt3 = "#,##0.000";
constexpr std::string_view kFmt4 = "#,##0.0000";
constexpr std::string_view kFmt6 = "#,##0.000000";
constexpr std::string_view kFmtP = "0.00000000";

// A value that cannot be computed (a division by zero, the root of a negative number, the log
// of 0) leaves the variable as it stood before: the Test command has always gone on past such a
// statement, so identical samples give t = 0 and p = 1 rather than an error.
void Keep(double& target, double value) {
    if (std::isfinite(value)) target = value;
}

std::string Integer(double value) { return Format(value, "0"); }

struct Sample {
    double mean = 0, variance = 0, n = 0;
};

std::vector<double> ArrayValues(const DataArray& a) {
    if (a.UpperBound() < 1) return {};
    return std::vector<double>(a.values.begin() + 1, a.values.end());
}

Sample SampleOfArray(const DataArray& a) {
    const std::vector<double> v = ArrayValues(a);
    const MeanVariance mv = AverageVariance(v);
    return {mv.mean, mv.variance, double(v.size())};
}

// Fills the grid from row 1 on, growing it where a test has more rows than it.
class GridWriter {
  public:
    explicit GridWriter(DataAnalysisForm& f) : f_(f) {}
    void Row(std::string label, std::string c1, std::string c2 = {}) {
        if (std::size_t(row_) >= f_.Grid1.size()) f_.Grid1.resize(std::size_t(row_) + 1);
        f_.Grid1[std::size_t(row_)] = {std::move(label), std::move(c1), std::move(c2)};
        ++row_;
    }

  private:
    DataAnalysisForm& f_;
    int row_ = 1;
};

// For the tests that use the arrays as the two samples: both must hold data, and for the
// paired test and the regression they must be of one length.
bool ArraysUsable(const Session& s, UserDialogs& ui, int code) {
    const std::int32_t ub1 = s.dataArray1.UpperBound(), ub2 = s.dataArray2.UpperBound();
    if (ub1 == 1 || ub2 == 1) {
        ui.Message("Empty Data Array",
                   "One of the Data Array is empty.  Please fill the array with data and try again.");
        return false;
    }
    if ((code == 1 || code == 5) && ub1 != ub2) {
        ui.Message("Inappropriate Values",
                   "The number of two samples should be equal.  Please check the values and try "
                   "again.");
        return false;
    }
    return true;
}

// Sample k (0 or 1) from its option: the chosen array, or the typed mean, SD and N.
std::optional<Sample> ReadSample(const Session& s, UserDialogs& ui, const DataAnalysisForm& f,
                                 int k) {
    const std::size_t i = std::size_t(k);
    if (f.Option[i] == 0) {
        const DataArray& a = ArrayOf(s, f.Combo[i] == 1 ? 2 : 1);
        if (a.UpperBound() == 1) {
            const std::string n = std::to_string(k + 1);
            ui.Message("Empty Data Array #" + n, "The Data Array #" + n +
                                                     " is empty.  Please fill the array with data "
                                                     "and try again.");
            return std::nullopt;
        }
        return SampleOfArray(a);
    }
    const double sd = Val(f.Text[i][1]);
    return Sample{Val(f.Text[i][0]), sd * sd, Val(f.Text[i][2])};
}

double TwoTailedT(double df, double t) { return IncompleteBeta(df / 2, 0.5, df / (df + t * t)); }

void TTests(const Session& s, UserDialogs& ui, DataAnalysisForm& f, int code) {
    Sample s1, s2;
    if (code == 1) {
        s1 = SampleOfArray(s.dataArray1);
        s2 = SampleOfArray(s.dataArray2);
    } else {
        const auto r1 = ReadSample(s, ui, f, 0);
        if (!r1) return;
        const auto r2 = ReadSample(s, ui, f, 1);
        if (!r2) return;
        s1 = *r1;
        s2 = *r2;
    }
    double t = 0, df = 0, p = 0, pooled = 0, fStat = 0, df1 = 0, df2 = 0;
    if (code == 1) {
        const std::vector<double> x = ArrayValues(s.dataArray1), y = ArrayValues(s.dataArray2);
        double cross = 0;
        for (std::size_t i = 0; i < x.size(); ++i) cross += (x[i] - s1.mean) * (y[i] - s2.mean);
        double cov = 0, sd = 0;
        Keep(cov, cross / (s1.n - 1));
        Keep(sd, std::sqrt((s1.variance + s2.variance - 2 * cov) / s1.n));
        Keep(t, (s1.mean - s2.mean) / sd);
        df = s1.n - 1;
    } else if (code == 2) {
        const double q1 = s1.variance / s1.n, q2 = s2.variance / s2.n;
        Keep(t, (s1.mean - s2.mean) / std::sqrt(q1 + q2));
        Keep(df, (q1 + q2) * (q1 + q2) / (q1 * q1 / (s1.n - 1) + q2 * q2 / (s2.n - 1)));
    } else if (code == 3) {
        df = s1.n + s2.n - 2;
        Keep(pooled, ((s1.n - 1) * s1.variance + (s2.n - 1) * s2.variance) / df);
        Keep(t, (s1.mean - s2.mean) / std::sqrt(pooled * (1 / s1.n + 1 / s2.n)));
    } else {
        // The larger variance goes on top; equal variances take sample 2 there.
        if (s1.variance > s2.variance) {
            Keep(fStat, s1.variance / s2.variance);
            df1 = s1.n - 1;
            df2 = s2.n - 1;
        } else {
            Keep(fStat, s2.variance / s1.variance);
            df1 = s2.n - 1;
            df2 = s1.n - 1;
        }
        // No fold-back: near-equal variances give a two-tailed value above 1.
        Keep(p, 2 * IncompleteBeta(df2 / 2, df1 / 2, df2 / (df2 + df1 * fStat)));
    }
    if (code != 4) Keep(p, TwoTailedT(df, t));

    GridWriter g(f);
    g.Row("Mean", Format(s1.mean, kFmt3), Format(s2.mean, kFmt3));
    g.Row("Variance", Format(s1.variance, kFmt3), Format(s2.variance, kFmt3));
    g.Row("N", Integer(s1.n), Integer(s2.n));
    if (code == 3) g.Row("Pooled Variance", Format(pooled, kFmt3));
    if (code == 4) {
        g.Row("F Stat", Format(fStat, kFmt4));
        g.Row("Degree of Freedom", Integer(df1), Integer(df2));
    } else {
        // The Welch degrees of freedom are fractional.
        g.Row("Degree of Freedom", code == 2 ? Format(df, kFmt3) : Integer(df));
        g.Row("t Stat", Format(t, kFmt4));
    }
    g.Row("P value: one-tail", Format(p / 2, kFmtP));
    g.Row("P value: two-tail", Format(p, kFmtP));
}

void Regression(const Session& s, DataAnalysisForm& f) {
    const std::vector<double> x = ArrayValues(s.dataArray1), y = ArrayValues(s.dataArray2);
    const LinearFitResult fit = LinearFit(x, y);
    double a = 0, b = 0, r = 0, t = 0, p = 0;
    Keep(a, fit.a);
    Keep(b, fit.b);
    Keep(r, fit.r);
    Keep(t, fit.t);
    Keep(p, fit.p);
    const double n = double(x.size());
    const std::string equation = "Y = " + Format(a, kFmt4) + " + " + Format(b, kFmt4) + " X";
    GridWriter g(f);
    g.Row("The Equation is", equation);
    g.Row("N", Integer(n));
    g.Row("Coeff Correl (r)", Format(r, kFmt6));
    g.Row("r-squared", Format(r * r, kFmt6));
    g.Row("df", Format(fit.df, "#,##0"));
    g.Row("t", Format(t, kFmt6));
    g.Row("p (2-tailed):", Format(p, kFmt6));

    GraphModel m;
    m.GraphTitle = GraphTitleText("Array #1 vs. Array #2: n=" + CStr(std::int64_t(n)) + "\n" + equation);
    m.LeftTitle = "Y Axis";
    m.BottomTitle = "X Axis";
    m.GraphStyle = kStyleScatter;
    // Set 1 the points; set 2 the fitted line through them, at the same x.
    m.SetSetCount(2);
    m.SetPointCount(int(x.size()));
    m.SetSymbol(1) = kSymbolCircle;
    m.SetSymbol(2) = kSymbolCross;
    for (std::size_t i = 0; i < x.size(); ++i) {
        m.Point(1, int(i) + 1) = {float(x[i]), float(y[i]), 0, 0};
        m.Point(2, int(i) + 1) = {float(x[i]), float(a + b * x[i]), 0, 0};
    }
    m.Redraw();
    *f.Graph1 = std::move(m);
}

std::vector<float> SortedCopy(const DataArray& a) {
    std::vector<float> v;
    if (a.UpperBound() >= 1) v.assign(a.values.begin() + 1, a.values.end());
    SortFloatsAscending(v);
    return v;
}

void TwoSampleKs(const Session& s, DataAnalysisForm& f) {
    const std::vector<float> v1 = SortedCopy(s.dataArray1), v2 = SortedCopy(s.dataArray2);
    const KsResult ks = KolmogorovSmirnov(v1, v2);
    GridWriter g(f);
    const double n1 = double(v1.size()), n2 = double(v2.size());
    g.Row("N", Format(n1, kFmt4), Format(n2, kFmt4));
    g.Row("Max. Abs(Difference)", Format(ks.d, kFmt4));
    g.Row("Max. (+) Difference", Format(ks.positive, kFmt4));
    g.Row("Max. (-) Difference", Format(ks.negative, kFmt4));
    g.Row("K-S Z", Format(ks.lambda, kFmt4));
    g.Row("2-tailed P", Format(ks.p, kFmt4));

    GraphModel m;
    m.GraphTitle = "Cumulative Histograms of Array#1 and Array#2";
    m.LeftTitle = "Cumulative Fraction";
    m.BottomTitle = "X Axis";
    m.GraphStyle = kStyleLines;
    m.SetSetCount(2);
    m.SetPointCount(int(std::max(v1.size(), v2.size())));
    for (std::size_t i = 0; i < v1.size(); ++i) {
        m.Point(1, int(i) + 1) = {v1[i], float(double(i + 1) / n1), 0, 0};
    }
    for (std::size_t i = 0; i < v2.size(); ++i) {
        m.Point(2, int(i) + 1) = {v2[i], float(double(i + 1) / n2), 0, 0};
    }
    m.Redraw();
    *f.Graph1 = std::move(m);
}

void FillFromArrays(const Session& s, DataAnalysisForm& f) {
    ClearGrid(f);
    const std::int32_t ub1 = s.dataArray1.UpperBound(), ub2 = s.dataArray2.UpperBound();
    const std::int32_t rows = std::max(ub1, ub2);
    f.Grid1.resize(std::size_t(std::max(rows, 0)) + 1);
    for (std::int32_t i = 1; i <= rows; ++i) {
        auto& row = f.Grid1[std::size_t(i)];
        row[0] = CStr(std::int64_t(i));
        if (i <= ub1) row[1] = Format(s.dataArray1(i), "#,##0.000");
        if (i <= ub2) row[2] = Format(s.dataArray2(i), "#,##0.000");
    }
    f.GridRow = 1;
    f.GridCol = 1;
}

}  // namespace

DataAnalysisForm::DataAnalysisForm() {
    Grid1.resize(2);
    Grid1[0] = {"", "Data Array #1", "Data Array #2"};
}

void ClearGrid(DataAnalysisForm& f) {
    for (std::size_t r = 1; r < f.Grid1.size(); ++r) f.Grid1[r] = {};
}

int TestCode(const DataAnalysisForm& f) {
    return int(Val(std::string_view(f.Caption).substr(0, 1)));
}

void ChooseTest(DataAnalysisForm& f, std::string_view caption) { f.Caption = caption; }

bool menu_LinearRegression(UserDialogs& ui, DataAnalysisForm& f) {
    const Answer a = ui.Ask("Linear Regression",
                            "This function takes Array #1 as independent variable (X) and Array #2 "
                            "as dependent variable (Y) and finds the slope and the intercept.  "
                            "Please make sure X and Y are correctly ordered.",
                            Buttons::YesNo);
    if (a != Answer::Yes) return false;
    ChooseTest(f, kCaptionRegression);
    return true;
}

void DataAnalysis_Command1(Session& s, UserDialogs& ui, DataAnalysisForm& f) {
    ClearGrid(f);
    if (f.Grid1.size() != std::size_t(kTestGridRows)) f.Grid1.resize(kTestGridRows);
    const int code = TestCode(f);
    if (code < 1 || code > 6) return;
    if ((code == 1 || code == 5 || code == 6) && !ArraysUsable(s, ui, code)) return;
    if (code <= 4) {
        TTests(s, ui, f, code);
    } else if (code == 5) {
        Regression(s, f);
    } else {
        TwoSampleKs(s, f);
    }
}

void DataAnalysis_TextChange(DataAnalysisForm& f, int sample) {
    if (sample == 0 || sample == 1) f.Option[std::size_t(sample)] = 1;
}

void menu_ViewArray(const Session& s, DataAnalysisForm& f) { FillFromArrays(s, f); }

void menu_EditArray(const Session& s, DataAnalysisForm& f) {
    f.Caption = kCaptionManualEntry;
    FillFromArrays(s, f);
}

void menu_ManualDataEntry(const Session& s, DataAnalysisForm& f) { menu_EditArray(s, f); }

void DataAnalysis_Grid1_KeyPress(Session& s, DataAnalysisForm& f, int keyAscii) {
    if (f.Caption != kCaptionManualEntry) return;
    // Row 0 and column 0 hold titles and row numbers, which are not edited.
    if (f.GridRow < 1 || std::size_t(f.GridRow) >= f.Grid1.size() || f.GridCol < 1 ||
        f.GridCol >= kAnalysisGridColumns) {
        return;
    }
    std::string& cell = f.Grid1[std::size_t(f.GridRow)][std::size_t(f.GridCol)];
    if (keyAscii == 8) {
        if (!cell.empty()) cell.pop_back();
    } else if (keyAscii == 13) {
        DataArray& a = ArrayOf(s, f.GridCol);
        if (f.GridRow > a.UpperBound()) GrowArray(a, f.GridRow);
        a(f.GridRow) = float(Val(cell));
    } else if (keyAscii >= 32 && keyAscii < 127) {
        cell += char(keyAscii);
    }
}

std::string DataAnalysisGridClipboard(const DataAnalysisForm& f) {
    std::string text;
    for (const auto& row : f.Grid1) text += row[0] + "\t" + row[1] + "\t" + row[2] + "\r";
    return text;
}

std::string DataAnalysisGridText(const DataAnalysisForm& f) {
    std::string text;
    for (const auto& row : f.Grid1) text += row[0] + "\t" + row[1] + "\t" + row[2] + "\n";
    return text;
}

void DataAnalysis_menu_Copy(UserDialogs& ui, const DataAnalysisForm& f) {
    ui.SetClipboardText(DataAnalysisGridClipboard(f));
}

double KolmogorovProbability(double lambda) {
    constexpr double eps = 1E-8;
    double fac = 2, sum = 0;
    const double a2 = -2 * lambda * lambda;
    int j = 1;
    double term = fac * std::exp(a2 * j * j);
    while (std::fabs(term) > eps * sum && j < 100) {
        sum += term;
        ++j;
        fac = -fac;
        term = fac * std::exp(a2 * double(j) * double(j));
    }
    if (j >= 100) return 1;
    return std::floor((sum + term) / eps) * eps;
}

KsResult KolmogorovSmirnov(const std::vector<float>& sorted1, const std::vector<float>& sorted2) {
    KsResult r;
    const std::size_t n1 = sorted1.size(), n2 = sorted2.size();
    std::size_t j1 = 1, j2 = 1;
    double f1 = 0, f2 = 0;
    while (j1 <= n1 && j2 <= n2) {
        const float a = sorted1[j1 - 1], b = sorted2[j2 - 1];
        bool moved = false;
        if (a <= b) {
            f1 = double(j1) / double(n1);
            ++j1;
            moved = true;
        }
        if (b <= a) {
            f2 = double(j2) / double(n2);
            ++j2;
            moved = true;
        }
        // A NaN compares with nothing: the walk would stand still for ever, so it ends there.
        if (!moved) break;
        const double dt = f1 - f2;
        if (dt > 0 && dt > r.positive) {
            r.positive = dt;
        } else if (dt < r.negative) {
            r.negative = dt;
        }
        r.d = std::max(std::fabs(r.positive), std::fabs(r.negative));
    }
    double en = 0;
    Keep(en, std::sqrt(double(n1) * double(n2) / double(n1 + n2)));
    Keep(r.lambda, (en + 0.12 + 0.11 / en) * r.d);
    r.p = KolmogorovProbability(r.lambda);
    return r;
}

}  // namespace ardel

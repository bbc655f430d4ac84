#include "arrays/array_statistics.h"

#include "arrays/data_arrays.h"
#include "arrays/numeric_library.h"
#include "core/number_text.h"

namespace ardel {

const std::vector<std::string> kDescriptiveRowLabels = {
    "Average",  "Stdev",    "Std Error", "Coeff of Var", "1/CV^2",  "Variance",
    "Skewness", "Kurtosis", "Median",    "Minimum",      "Maximum", "n"};

namespace {

std::vector<std::string> Column(const DataArray& a) {
    if (a.UpperBound() < 2) return std::vector<std::string>(kDescriptiveRowLabels.size());
    // A copy in double precision: the statistics sort what they are given.
    const Descriptive d = DescriptiveStatistics(std::vector<double>(a.values.begin() + 1, a.values.end()));
    const double values[] = {d.mean,     d.sd,       d.sem,    d.cv,  d.invCv2, d.variance,
                             d.skewness, d.kurtosis, d.median, d.min, d.max,    double(d.n)};
    std::vector<std::string> cells;
    for (double v : values) cells.push_back(Format(v, "##0.000"));
    return cells;
}

}  // namespace

void menu_ArrayStat(const Session& s, CStatForm& form) {
    form.Caption = "Data Array Statistics";
    form.ColumnTitles = {"Array #1", "Array #2"};
    const std::vector<std::string> c1 = Column(s.dataArray1);
    const std::vector<std::string> c2 = Column(s.dataArray2);
    form.Rows.clear();
    for (std::size_t r = 0; r < kDescriptiveRowLabels.size(); ++r) {
        form.Rows.push_back({kDescriptiveRowLabels[r], c1[r], c2[r]});
    }
}

std::string CStatGridText(const CStatForm& form) {
    std::string text;
    for (const std::string& title : form.ColumnTitles) text += "\t" + title;
    text += "\n";
    for (const auto& row : form.Rows) {
        for (std::size_t i = 0; i < row.size(); ++i) text += (i ? "\t" : "") + row[i];
        text += "\n";
    }
    return text;
}

}  // namespace ardel

// The statistics window (CStat) as data: its caption, column titles and labelled rows, and
// "Statistics" of the Data Arrays that fills it.
#pragma once

#include <string>
#include <vector>

#include "core/session.h"

namespace ardel {

struct CStatForm {
    std::string Caption;
    std::vector<std::string> ColumnTitles;
    // Each row: its label, then one cell per column.
    std::vector<std::vector<std::string>> Rows;
};

// The row labels, in the order the window shows them.
extern const std::vector<std::string> kDescriptiveRowLabels;

// menu_ArrayStat: the descriptive statistics of both arrays, an array with an upper bound
// below 2 leaving its column blank. The arrays themselves stay unsorted.
void menu_ArrayStat(const Session& s, CStatForm& form);

// The grid as a script shows it: the titles line, then one line per row, cells tab-separated.
std::string CStatGridText(const CStatForm& form);

}  // namespace ardel

// The results table of the group analyses: one row per analysed trace, kept for the whole
// program run so that it survives closing the group window.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace ardel {

struct ResultRow {
    // Left-justified and blank-padded to 60 characters in the results file.
    std::string Identifier;
    // Zero stands for a value not filled.
    std::array<float, 40> Values{};
};

// The name, unit and multiplier text of a results column, as the analysis tab that fills the
// table sets them; histograms, plots and column statistics take their labels from here.
struct ResultColumn {
    std::string name;
    std::string unit;
    std::string multiplier;
};

struct ResultTable {
    std::vector<ResultRow> rows;
    std::array<ResultColumn, 40> columns{};
};

}  // namespace ardel

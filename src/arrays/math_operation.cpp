#include "arrays/math_operation.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "arrays/data_arrays.h"
#include "core/number_text.h"
#include "events/event_list.h"

namespace ardel {

const std::vector<std::string> kMathOperands = {
    "Amplitude", "Time",       "Rise-time", "Decay-time", "Area",
    "Noise",     "Baseline",   "Group",     "Channel",    "Rise 10-90",
    "Half-width", "Rise 50",   "Direction", "Inter-event Interval",
    "Array #1",  "Array #2",   "Constant"};
const std::vector<std::string> kMathOperations = {"Addition", "Subtraction", "Muliply",
                                                  "Divide",   "Squared",     "Square root"};
const std::vector<std::string> kMathDestinations = {"Array #1", "Array #2"};

namespace {

// The event field behind each event operand, as the field menus number them.
constexpr int kOperandField[13] = {0, 5, 2, 3, 4, 1, 6, 7, 8, 9, 10, 11, 12};

// One operand as a vector; nullopt where the old runtime failed to dimension it (an event
// operand of an empty table: "Subscript out of range").
std::optional<std::vector<float>> LoadOperand(Session& s, int operand) {
    const std::int32_t events = s.events.EventCount();
    std::vector<float> v;
    if (operand >= 0 && operand < kOperandInterval) {
        if (events < 1) return std::nullopt;
        for (std::int32_t n = 1; n <= events; ++n) {
            v.push_back(ArrayFieldValue(s, n, kOperandField[operand]).value_or(0.0f));
        }
    } else if (operand == kOperandInterval) {
        if (events < 2) return std::nullopt;
        SortEvents(s.events, kSortByTime, 1, events);
        ++s.events.GridVersion;
        for (std::int32_t n = 2; n <= events; ++n) {
            v.push_back(s.events[n].Time - s.events[n - 1].Time);
        }
    } else if (operand == kOperandArray1 || operand == kOperandArray2) {
        const DataArray& a = ArrayOf(s, operand == kOperandArray1 ? 1 : 2);
        v.assign(a.values.begin() + 1, a.values.end());
    } else {
        v.assign(1, 0.0f);  // a constant is filled once the length is known
    }
    return v;
}

float Apply(int operation, float a, float b) {
    switch (operation) {
        case 0: return a + b;
        case 1: return a - b;
        case 2: return a * b;
        case 3: return b == 0 ? 0.0f : a / b;
        case 4: return a * a;
        case 5: return a < 0 ? 0.0f : std::sqrt(a);
        default: return 0.0f;
    }
}

}  // namespace

void MathOperation_Combo1_Click(MathOperationForm& f, int element) {
    const std::size_t k = element == 1 ? 1 : 0;
    f.Text1Visible[k] = f.Combo1[k] == kOperandConstant;
}

void MathOperation_Combo2_Click(MathOperationForm& f) {
    if (f.Combo2 >= 0 && f.Combo2 < int(kMathOperations.size())) {
        f.Label5 = kMathOperations[std::size_t(f.Combo2)];
    }
    f.Combo1Enabled1 = f.Combo2 != kOperationSquared && f.Combo2 != kOperationSquareRoot;
}

void MathOperation_Command2(Session& s, UserDialogs& ui, MathOperationForm& f) {
    std::array<std::vector<float>, 2> operands;
    for (std::size_t k = 0; k < 2; ++k) {
        auto v = LoadOperand(s, f.Combo1[k]);
        if (!v) {
            ui.RuntimeError("Subscript out of range");
            return;
        }
        operands[k] = std::move(*v);
    }
    // Both operands count for the length, even the one a one-operand operation leaves unused;
    // the shorter one is padded with zeros.
    const std::size_t length = std::max(operands[0].size(), operands[1].size());
    for (std::size_t k = 0; k < 2; ++k) {
        operands[k].resize(length, 0.0f);
        if (f.Combo1[k] == kOperandConstant) {
            std::fill(operands[k].begin(), operands[k].end(), float(Val(f.Text1[k])));
        }
    }
    const int destination = f.Combo3 == 1 ? 2 : 1;
    DataArray& target = ArrayOf(s, destination);
    target.Redim(std::int32_t(length));
    for (std::size_t i = 0; i < length; ++i) {
        target.values[i + 1] = Apply(f.Combo2, operands[0][i], operands[1][i]);
    }
    ui.Message("Mathematical Operation Finished",
               "Calculations are done and the results are put into array #" + CStr(destination) +
                   ".");
}

}  // namespace ardel

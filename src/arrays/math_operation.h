// The "Mathematical Operation" form: two operands (event fields, intervals, the arrays or a
// constant), one of six operations, and the array that receives the result.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Operand list of both Combo1 elements, and the operations of Combo2, in list order.
extern const std::vector<std::string> kMathOperands;
extern const std::vector<std::string> kMathOperations;
extern const std::vector<std::string> kMathDestinations;
inline constexpr int kOperandInterval = 13;
inline constexpr int kOperandArray1 = 14;
inline constexpr int kOperandArray2 = 15;
inline constexpr int kOperandConstant = 16;
inline constexpr int kOperationSquared = 4;
inline constexpr int kOperationSquareRoot = 5;

// What the form's controls show; a fresh form has every list on its first entry.
struct MathOperationForm {
    std::string Caption = "Mathematical Operation";
    std::array<int, 2> Combo1{0, 0};  // operand list indexes
    std::array<std::string, 2> Text1;  // the constants
    int Combo2 = 0;                    // operation
    int Combo3 = 0;                    // destination: 0 array #1, 1 array #2
    std::string Label5 = "Addition";   // repeats the chosen operation
    bool Combo1Enabled1 = true;        // the second operand; off for the one-operand operations
    std::array<bool, 2> Text1Visible{false, false};  // with its "Constant:" label
};

// The change handlers: an operand's constant box shows only for "Constant"; the operation's
// name goes to Label5 and the second operand is offered only where it is used.
void MathOperation_Combo1_Click(MathOperationForm& f, int element);
void MathOperation_Combo2_Click(MathOperationForm& f);

// "Caculate" (Command2): applies the operation element by element and puts the result into the
// destination array, replacing what it held. Operand "Inter-event Interval" sorts the event table
// by time first.
void MathOperation_Command2(Session& s, UserDialogs& ui, MathOperationForm& f);

}  // namespace ardel

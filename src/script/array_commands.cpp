// The Data Array menu's handlers and the controls of its two windows, by name.
#include "script/array_commands.h"

#include <string>

#include "arrays/array_statistics.h"
#include "arrays/array_text.h"
#include "arrays/data_arrays.h"
#include "arrays/math_operation.h"

namespace ardel {

namespace {


void RegisterFillCommands(CommandTable& t) {
    for (int array = 1; array <= 2; ++array) {
        const std::string n = std::to_string(array);
        for (int field = 0; field < kArrayFieldCount; ++field) {
            t.Add(IndexedName("menu_PutAllArray" + n, field), "Put All Events into Array #" + n,
                  kPlainCommand, [array, field](CommandContext& c) {
                      menu_PutAllArray(c.session, c.ui, array, field);
                  });
            t.Add(IndexedName("menu_PutHLArray" + n, field),
                  "Put Highlighted Events into Array #" + n, kPlainCommand,
                  [array, field](CommandContext& c) {
                      menu_PutHLArray(c.session, c.ui, array, field);
                  });
        }
        t.Add("menu_InterEventArray" + n, "Inter-event Intervals into Array #" + n,
              kPlainCommand,
              [array](CommandContext& c) { menu_InterEventArray(c.session, c.ui, array); });
        t.Add("menu_ClearArray" + n, "Clear Array #" + n, kPlainCommand,
              [array](CommandContext& c) { menu_ClearArray(c.session, array); });
        t.Add(IndexedName("menu_PasteArray", array), "Paste into Array #" + n, kPlainCommand,
              [array](CommandContext& c) { menu_PasteArray(c.session, c.ui, array); });
    }
    t.Add("menu_ArrayCopy", "Copy Arrays to Clipboard", kPlainCommand,
          [](CommandContext& c) { menu_ArrayCopy(c.session, c.ui); });
    t.Add("menu_ArrayAscii", "Save Array Data as ASCII", kPlainCommand,
          [](CommandContext& c) { menu_ArrayAscii(c.session, c.ui); });
    t.Add("menu_importAscii", "Open ASCII to import data into Arrays", kPlainCommand,
          [](CommandContext& c) { menu_importAscii(c.session, c.ui); });
}

void RegisterWindowCommands(CommandTable& t) {
    t.Add("menu_ArrayStat", "Statistics of Arrays", kPlainCommand, [](CommandContext& c) {
        menu_ArrayStat(c.session, c.forms.cstat);
        c.forms.cstatShown = true;
    });
    t.Add("menu_MathOperation", "Mathematical Operation", kPlainCommand,
          [](CommandContext& c) { c.forms.mathOperationShown = true; });
    t.Add("MathOperation.Command2", "Caculate", kPlainCommand, [](CommandContext& c) {
        MathOperation_Command2(c.session, c.ui, c.forms.mathOperation);
    });
    t.Add("MathOperation.Command1", "Cancel", kPlainCommand,
          [](CommandContext& c) { c.forms.mathOperationShown = false; });
    for (int k = 0; k < 2; ++k) {
        t.Add(IndexedName("MathOperation.Combo1", k), "Operand", kPlainCommand,
              [k](CommandContext& c) { MathOperation_Combo1_Click(c.forms.mathOperation, k); });
    }
    t.Add("MathOperation.Combo2", "Operation", kPlainCommand,
          [](CommandContext& c) { MathOperation_Combo2_Click(c.forms.mathOperation); });
}

}  // namespace

void RegisterArrayCommands(CommandTable& table) {
    RegisterFillCommands(table);
    RegisterWindowCommands(table);
}

void RegisterArrayControls(ControlRegistry& r, Forms& forms) {
    MathOperationForm& f = forms.mathOperation;
    for (int k = 0; k < 2; ++k) {
        r.AddComboIndex(IndexedName("MathOperation.Combo1", k), f.Combo1[std::size_t(k)],
                        kMathOperands);
        r.AddText(IndexedName("MathOperation.Text1", k), f.Text1[std::size_t(k)]);
    }
    r.AddComboIndex("MathOperation.Combo2", f.Combo2, kMathOperations);
    r.AddComboIndex("MathOperation.Combo3", f.Combo3, kMathDestinations);
    r.AddLabel("MathOperation.Label5", f.Label5);

    CStatForm& stat = forms.cstat;
    r.AddLabel("CStat.Caption", stat.Caption);
    r.Add("CStat.Grid1", {ControlKind::Grid, [&stat] { return CStatGridText(stat); }, {}});
}

}  // namespace ardel

#include "script/data_analysis_commands.h"

#include <string>
#include <utility>

#include "arrays/statistical_tests.h"
#include "core/number_text.h"
#include "graph/graph_menu.h"
#include "script/print_commands.h"

namespace ardel {

namespace {


void RegisterTestMenus(CommandTable& t) {
    const std::pair<const char*, std::string_view> menus[] = {
        {"menu_ttest_paired", kCaptionPaired},   {"menu_ttest_UnequalVar", kCaptionUnequalVar},
        {"menu_ttest_EqualVar", kCaptionEqualVar}, {"menu_Ftest", kCaptionFtest},
        {"menu_KStest", kCaptionKStest}};
    for (const auto& [name, caption] : menus) {
        t.Add(name, std::string(caption.substr(4)), kPlainCommand,
              [caption = caption](CommandContext& c) {
                  ChooseTest(c.forms.dataAnalysis, caption);
                  c.forms.dataAnalysisShown = true;
              });
    }
    t.Add("menu_LinearRegression", "Linear Regression", kPlainCommand, [](CommandContext& c) {
        if (menu_LinearRegression(c.ui, c.forms.dataAnalysis)) c.forms.dataAnalysisShown = true;
    });
    t.Add("menu_ManualDataEntry", "View or Enter Data into Array", kPlainCommand,
          [](CommandContext& c) {
              menu_ManualDataEntry(c.session, c.forms.dataAnalysis);
              c.forms.dataAnalysisShown = true;
          });
}

void RegisterFormHandlers(CommandTable& t) {
    t.Add("DataAnalysis.Command1", "Test", kPlainCommand, [](CommandContext& c) {
        DataAnalysis_Command1(c.session, c.ui, c.forms.dataAnalysis);
    });
    t.Add("DataAnalysis.Command2", "Cancel", kPlainCommand,
          [](CommandContext& c) { c.forms.dataAnalysisShown = false; });
    t.Add("DataAnalysis.menu_exit", "Exit", kPlainCommand,
          [](CommandContext& c) { c.forms.dataAnalysisShown = false; });
    for (int k = 0; k < 3; ++k) {
        t.Add(IndexedName("DataAnalysis.Text2", k), "Sample 1", kPlainCommand,
              [](CommandContext& c) { DataAnalysis_TextChange(c.forms.dataAnalysis, 0); });
        t.Add(IndexedName("DataAnalysis.Text3", k), "Sample 2", kPlainCommand,
              [](CommandContext& c) { DataAnalysis_TextChange(c.forms.dataAnalysis, 1); });
    }
    t.Add("DataAnalysis.menu_ViewArray", "View Data Array", kPlainCommand,
          [](CommandContext& c) { menu_ViewArray(c.session, c.forms.dataAnalysis); });
    t.Add("DataAnalysis.menu_EditArray", "Edit or Add Data", kPlainCommand,
          [](CommandContext& c) { menu_EditArray(c.session, c.forms.dataAnalysis); });
    // The keys a script presses in the grid: Backspace and Enter; typing goes through the
    // current cell's control.
    for (int key : {8, 13}) {
        t.Add(IndexedName("DataAnalysis.Grid1_KeyPress", key), "Data Entry", kPlainCommand,
              [key](CommandContext& c) {
                  DataAnalysis_Grid1_KeyPress(c.session, c.forms.dataAnalysis, key);
              });
    }
    t.Add("DataAnalysis.menu_Copy", "Copy", kPlainCommand,
          [](CommandContext& c) { DataAnalysis_menu_Copy(c.ui, c.forms.dataAnalysis); });
    t.Add("DataAnalysis.menu_print", "Print", kPlainCommand,
          [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); });
    t.Add("DataAnalysis.menu_CustomGraph", "Customize Graph", kPlainCommand,
          [](CommandContext& c) {
              menu_customize(c.session, c.ui, *c.forms.dataAnalysis.Graph1);
          });
}

}  // namespace

void RegisterDataAnalysisCommands(CommandTable& table) {
    RegisterTestMenus(table);
    RegisterFormHandlers(table);
}

void RegisterDataAnalysisControls(ControlRegistry& r, Forms& forms) {
    DataAnalysisForm& f = forms.dataAnalysis;
    r.AddLabel("DataAnalysis.Caption", f.Caption);
    const char* optionNames[] = {"DataAnalysis.Option1", "DataAnalysis.Option2"};
    const char* comboNames[] = {"DataAnalysis.Combo1", "DataAnalysis.Combo2"};
    const char* textNames[] = {"DataAnalysis.Text2", "DataAnalysis.Text3"};
    for (std::size_t k = 0; k < 2; ++k) {
        int& option = f.Option[k];
        for (int e = 0; e < 2; ++e) {
            r.Add(IndexedName(optionNames[k], e),
                  {ControlKind::OptionButton, [&option, e] { return option == e ? "True" : "False"; },
                   [&option, e](std::string_view v) {
                       if (CheckValue(v)) option = e;
                   }});
        }
        r.AddComboIndex(comboNames[k], f.Combo[k], kSampleArrays);
        for (std::size_t e = 0; e < 3; ++e) r.AddText(IndexedName(textNames[k], int(e)), f.Text[k][e]);
    }
    r.AddText("DataAnalysis.Text4", f.Text4);
    r.Add("DataAnalysis.Grid1",
          {ControlKind::Grid, [&f] { return DataAnalysisGridText(f); }, {}});
    // The grid's current cell and what it holds, for manual entry.
    r.Add("DataAnalysis.Grid1.Row",
          {ControlKind::TextBox, [&f] { return CStr(std::int64_t(f.GridRow)); },
           [&f](std::string_view v) { f.GridRow = ToInt32Clamped(Val(v)); }});
    r.Add("DataAnalysis.Grid1.Col", {ControlKind::TextBox, [&f] { return CStr(f.GridCol); },
                                     [&f](std::string_view v) { f.GridCol = ToInt32Clamped(Val(v)); }});
    r.Add("DataAnalysis.Grid1.Text",
          {ControlKind::TextBox,
           [&f]() -> std::string {
               if (f.GridRow < 0 || std::size_t(f.GridRow) >= f.Grid1.size() || f.GridCol < 0 ||
                   f.GridCol >= kAnalysisGridColumns) {
                   return {};
               }
               return f.Grid1[std::size_t(f.GridRow)][std::size_t(f.GridCol)];
           },
           [&f](std::string_view v) {
               if (f.GridRow < 1 || std::size_t(f.GridRow) >= f.Grid1.size() || f.GridCol < 1 ||
                   f.GridCol >= kAnalysisGridColumns) {
                   return;
               }
               f.Grid1[std::size_t(f.GridRow)][std::size_t(f.GridCol)] = std::string(v);
           }});
    r.Add("DataAnalysis.Graph1",
          {ControlKind::Grid, [&f] { return GraphValueText(*f.Graph1); }, {}});
}

}  // namespace ardel

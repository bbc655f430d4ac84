#include "script/results_commands.h"

#include "core/number_text.h"
#include "group/results_table.h"
#include "script/print_commands.h"

namespace ardel {

namespace {

group::ResultsGrid& Grid(CommandContext& c) { return c.forms.grpAnal.form.TDBGrid1; }

void RegisterDeletions(CommandTable& t) {
    using Deletion = void (*)(ResultTable&, group::ResultsGrid&);
    const std::tuple<const char*, const char*, Deletion> deletions[] = {
        {"GrpAnal.menu_LastResult", "Delete Last Result", group::menu_LastResult},
        {"GrpAnal.Command10", "Delete Last Result", group::menu_LastResult},
        {"GrpAnal.menu_DeleteSelected", "Delete Selected Result", group::menu_DeleteSelected},
        {"GrpAnal.menu_DeleteEven", "Delete Even Results", group::menu_DeleteEven},
        {"GrpAnal.menu_DeleteOdd", "Delete Odd Results", group::menu_DeleteOdd},
        {"GrpAnal.menu_ClearResults", "Clear Results", group::menu_ClearResults},
        {"GrpAnal.Command5", "Clear Results", group::menu_ClearResults},
    };
    for (const auto& [name, title, deletion] : deletions)
        t.Add(name, title, kPlainCommand,
              [deletion](CommandContext& c) { deletion(c.session.results, Grid(c)); });
}

void RegisterPlots(CommandTable& t) {
    const std::pair<const char*, group::ResultPlot> plots[] = {
        {"GrpAnal.menu_FreqHisto", group::ResultPlot::Frequency},
        {"GrpAnal.menu_CumulHisto", group::ResultPlot::Cumulative},
        {"GrpAnal.menu_TimeCoursePlot", group::ResultPlot::TimeCourse},
    };
    for (const auto& [name, kind] : plots)
        for (int column = 1; column <= group::kPlotArray2; ++column)
            t.Add(IndexedName(name, column), "Plot", kPlainCommand, [kind, column](CommandContext& c) {
                group::ResultsHistogram(c.session, c.ui, Grid(c), kind, column);
            });
    for (int array = 1; array <= 2; ++array)
        for (int column = 1; column < group::kGridColumns; ++column)
            t.Add(IndexedName(array == 1 ? "GrpAnal.menu_Put2Array1" : "GrpAnal.menu_Put2Array2", column),
                  "Put into Array", kPlainCommand, [array, column](CommandContext& c) {
                      group::menu_Put2Array(c.session, c.ui, array, column);
                  });
}

}  // namespace

void RegisterResultsCommands(CommandTable& t) {
    RegisterDeletions(t);
    RegisterPlots(t);
    t.Add("GrpAnal.menu_SaveResults", "Save Results", kPlainCommand,
          DialogCommand(group::menu_SaveResults));
    t.Add("GrpAnal.menu_LoadResults", "Load Results", kPlainCommand, [](CommandContext& c) {
        group::menu_LoadResults(c.session, c.ui, Grid(c));
    });
    t.Add("GrpAnal.menu_copyresults", "Copy Results", kPlainCommand, [](CommandContext& c) {
        group::menu_copyresults(c.session, c.ui, Grid(c));
    });
    t.Add("GrpAnal.menu_copyasciifile", "Save as ASCII File", kPlainCommand, [](CommandContext& c) {
        group::menu_copyasciifile(c.session, c.ui, Grid(c));
    });
    for (const char* name : {"GrpAnal.menu_PrintResults", "GrpAnal.menu_preview", "GrpAnal.menu_PageSetup"})
        t.Add(name, "Print Results", kPlainCommand,
              [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); });
    t.Add("GrpAnal.menu_ColumnStat", "Column Statistics", kPlainCommand, [](CommandContext& c) {
        group::menu_ColumnStat(c.session, Grid(c), c.forms.cstat);
        c.forms.cstatShown = true;
    });
    // Opening the menus builds their column entries from the captions; the entries exist by
    // name already, so there is nothing to do without a window.
    for (const char* name : {"GrpAnal.menu_results", "GrpAnal.menu_Plot"})
        t.Add(name, "Results", kPlainCommand, [](CommandContext&) {});
}

void RegisterResultsControls(ControlRegistry& r, Forms& forms, const Session& s) {
    group::ResultsGrid& grid = forms.grpAnal.form.TDBGrid1;
    r.Add("GrpAnal.TDBGrid1", Control{ControlKind::Grid,
                                      [&grid, &s] {
                                          std::string text = group::ResultsGridText(s.results, grid);
                                          std::erase(text, '\r');
                                          return text;
                                      },
                                      {}});
    r.Add("GrpAnal.TDBGrid1.Row",
          Control{ControlKind::TextBox, [&grid] { return CStr(grid.row + 1); },
                  [&grid](std::string_view v) { grid.row = ToInt32Clamped(Val(v)) - 1; }});
    const group::FitPicture& picture = forms.grpAnal.form.Picture;
    r.Add("GrpAnal.FitPicture", Control{ControlKind::Label,
                                        [&picture] {
                                            std::string text;
                                            for (const auto& line : picture.text) text += line + "\n";
                                            return text;
                                        },
                                        {}});
}

}  // namespace ardel

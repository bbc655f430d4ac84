// The results table's handlers by name (the Results menu, its buttons, the plot menu's column
// entries) and the grid as a control.
#pragma once

#include "script/command_table.h"
#include "script/control_registry.h"

namespace ardel {

// GrpAnal.menu_SaveResults, menu_LoadResults, menu_LastResult / Command10, menu_DeleteSelected,
// menu_DeleteEven, menu_DeleteOdd, menu_ClearResults / Command5, menu_copyresults,
// menu_copyasciifile, menu_PrintResults, menu_preview, menu_PageSetup, menu_Put2Array1(c),
// menu_Put2Array2(c), menu_FreqHisto(c), menu_CumulHisto(c), menu_TimeCoursePlot(c),
// menu_ColumnStat, menu_results, menu_Plot.
void RegisterResultsCommands(CommandTable& table);
// GrpAnal.TDBGrid1 (captions, then a row a line, cells tab-separated) and GrpAnal.TDBGrid1.Row,
// the current row as the row marker shows it (1-based, 0 for none); GrpAnal.FitPicture, the
// text the last fit printed over the trace.
void RegisterResultsControls(ControlRegistry& registry, Forms& forms, const Session& s);

}  // namespace ardel

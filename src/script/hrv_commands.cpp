#include "script/hrv_commands.h"

#include <string>

#include "hrv/tachogram.h"
#include "hrv/time_domain.h"
#include "script/print_commands.h"

namespace ardel {

namespace {

using Body = std::function<void(CommandContext&)>;

hrv::IntervalFilter HrvFilter(const CommandContext& c) { return c.forms.hrv.Bounds(); }

void RegisterMainMenu(CommandTable& t) {
    t.Add("menu_TachogramPlot", "Generate Plot", kPlainCommand,
          [](CommandContext& c) { hrv::menu_TachogramPlot(c.session); });
    t.Add("menu_TachogramASCII", "Save as ASCII", kPlainCommand,
          [](CommandContext& c) { hrv::menu_TachogramASCII(c.session, c.ui); });
    t.Add("menu_TachogramABF", "Save as ABF File", kPlainCommand,
          [](CommandContext& c) { hrv::menu_TachogramABF(c.session, c.ui, c.programDir); });
    t.Add("menu_RRHisto", "RR Interval Histogram", kPlainCommand,
          DialogCommand(&hrv::menu_RRHisto));
    t.Add("menu_DeltaRRHisto", "Delta RR Interval Histogram", kPlainCommand,
          DialogCommand(&hrv::menu_DeltaRRHisto));
    t.Add("menu_LorenzPlot", "Lorenz Plot", kPlainCommand, SessionCommand(&hrv::menu_LorenzPlot));
    t.Add("menu_ScanRejectRRIntervals", "Scan Spurious RR Intervals", kPlainCommand,
          [](CommandContext& c) { c.forms.hrvSpuriousShown = true; });
    t.Add("HRVSpurious.Command1", "Scan and Select", kPlainCommand,
          DialogCommand(&hrv::HRVSpurious_Command1));
    t.Add("HRVSpurious.menu_Exit", "Exit", kPlainCommand,
          [](CommandContext& c) { c.forms.hrvSpuriousShown = false; });
    t.Add("menu_ScanMissingBeats", "Scan Missing Beats", kPlainCommand,
          DialogCommand(&hrv::menu_ScanMissingBeats));
    t.Add("menu_TimeDomainHRV", "Time Domain", kPlainCommand, ShowTimeDomainWindow);
}

void RegisterTimeDomainWindow(CommandTable& t) {
    t.Add("HRV.Command1", "Start Analysis", kPlainCommand,
          [](CommandContext& c) { hrv::HRV_Command1(c.session, c.ui, c.forms.hrv); });
    t.Add("HRV.Command2", "Save Options", kPlainCommand,
          [](CommandContext& c) { hrv::HRV_Command2(c.ui, c.forms.hrv, c.IniPath()); });
    t.Add("HRV.Text1", "Number of sample points", kPlainCommand,
          [](CommandContext& c) { hrv::UpdateSegmentTime(c.forms.hrv, c.session); });
    t.Add("HRV.menu_TimeDomain", "Save Time-Domain Measures", kPlainCommand,
          [](CommandContext& c) {
              hrv::SaveGridText(c.session, c.ui, hrv::TimeDomainGridText(c.forms.hrv));
          });
    t.Add("HRV.menu_SegmentResults", "Save Segment Results", kPlainCommand,
          [](CommandContext& c) {
              hrv::SaveGridText(c.session, c.ui, hrv::SegmentGridText(c.forms.hrv));
          });
    t.Add("HRV.menu_TimeDomainCopy", "Copy Time-Domain Measures", kPlainCommand,
          [](CommandContext& c) { c.ui.SetClipboardText(hrv::TimeDomainGridText(c.forms.hrv)); });
    t.Add("HRV.menu_SegmentResultsCopy", "Copy Segment Results", kPlainCommand,
          [](CommandContext& c) { c.ui.SetClipboardText(hrv::SegmentGridText(c.forms.hrv)); });
    // Printing needs a printer and a screen: the desktop registers its own over these.
    for (const char* name : {"HRV.menu_Print", "HRV.menu_PrintSetup"}) {
        t.Add(name, "Print", kPlainCommand,
              [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); });
    }
    t.Add("HRV.menu_TachogramPlot", "Generate Plot", kPlainCommand,
          [](CommandContext& c) { hrv::menu_TachogramPlot(c.session, HrvFilter(c)); });
    t.Add("HRV.menu_TachogramASCII", "Save as ASCII", kPlainCommand,
          [](CommandContext& c) { hrv::menu_TachogramASCII(c.session, c.ui, HrvFilter(c)); });
    t.Add("HRV.menu_TachogramABF", "Save as ABF File", kPlainCommand, [](CommandContext& c) {
        hrv::menu_TachogramABF(c.session, c.ui, c.programDir, HrvFilter(c));
    });
    for (int column = 0; column < int(hrv::kTimeDomainColumns.size()); ++column) {
        t.Add(IndexedName("HRV.TDBGrid1_HeadClick", column), "Definition", kPlainCommand,
              [column](CommandContext& c) { hrv::HRV_TDBGrid1_HeadClick(c.ui, column); });
    }
    t.Add("HRV.menu_Exit", "Exit", kPlainCommand,
          [](CommandContext& c) { c.forms.hrvShown = false; });
}

void AddOptionGroup(ControlRegistry& r, const std::string& name, int& field, int count) {
    for (int e = 0; e < count; ++e) {
        r.Add(IndexedName(name, e),
              {ControlKind::OptionButton, [&field, e] { return field == e ? "True" : "False"; },
               [&field, e](std::string_view v) {
                   if (CheckValue(v)) field = e;
               }});
    }
}

}  // namespace

void ShowTimeDomainWindow(CommandContext& c) {
    // The form's load reads its settings; a form already loaded keeps what it shows.
    if (!c.forms.hrvLoaded) {
        hrv::LoadIniSettings(c.forms.hrv, c.IniPath());
        c.forms.hrvLoaded = true;
    }
    hrv::UpdateSegmentTime(c.forms.hrv, c.session);
    c.forms.hrvShown = true;
}

void RegisterHrvCommands(CommandTable& table) {
    RegisterMainMenu(table);
    RegisterTimeDomainWindow(table);
}

void RegisterHrvControls(ControlRegistry& r, Forms& forms, const Session&) {
    hrv::HrvForm& f = forms.hrv;
    r.AddLabel("HRV.Caption", f.Caption);
    r.AddCombo("HRV.Combo1", f.Combo1);
    r.AddCombo("HRV.Combo2", f.Combo2);
    r.AddCombo("HRV.Combo3", f.Combo3);
    r.AddText("HRV.Text1", f.Text1);
    r.AddCheck("HRV.Check1", f.Check1);
    r.AddCheck("HRV.Check2", f.Check2);
    r.AddLabel("HRV.Label4", f.Label4);
    const Control grid1{ControlKind::Grid, [&f] { return hrv::TimeDomainGridText(f); }, {}};
    const Control grid2{ControlKind::Grid, [&f] { return hrv::SegmentGridText(f); }, {}};
    r.Add("HRV.TDBGrid1", grid1);
    r.Add("HRV.TDBGrid2", grid2);
    // The grids under the names the other windows' grids have.
    r.Add("HRV.Grid1", grid1);
    r.Add("HRV.Grid2", grid2);
    AddOptionGroup(r, "HRVSpurious.Option1", forms.hrvSpurious.Option1, 3);
    AddOptionGroup(r, "HRVSpurious.Option2", forms.hrvSpurious.Option2, 3);
}

}  // namespace ardel

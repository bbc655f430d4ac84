#include "script/hrv_spectral_commands.h"

#include <memory>
#include <string>

#include "graph/graph_menu.h"
#include "graph/graph_sink.h"
#include "hrv/interval_displays.h"
#include "script/print_commands.h"

namespace ardel {

namespace {

using DisplayOf = std::shared_ptr<GraphModel> (*)(Forms&);

struct Display {
    const char* name;
    DisplayOf of;
};

constexpr Display kSpectralDisplays[] = {
    {"Graph1", [](Forms& f) { return f.hrvSpectral.Graph1; }},
    {"Graph2", [](Forms& f) { return f.hrvSpectral.Graph2; }},
    {"Picture2", [](Forms& f) { return f.hrvSpectral.Picture2; }},
    {"CWGraph1", [](Forms& f) { return f.hrvSpectral.CWGraph1; }},
};
constexpr Display kGeoDisplays[] = {
    {"Graph1", [](Forms& f) { return f.hrvGeo.Graph1; }},
    {"Graph2", [](Forms& f) { return f.hrvGeo.Graph2; }},
    {"Picture1", [](Forms& f) { return f.hrvGeo.Picture1; }},
    {"Picture2", [](Forms& f) { return f.hrvGeo.Picture2; }},
};

// Each display's values leave the window as a graph window's do: copied, saved as text, or
// opened in a graph window of its own (where zoom, customising and pictures are at hand).
template <std::size_t N>
void RegisterDisplayMenus(CommandTable& t, std::string_view form, const Display (&displays)[N]) {
    for (const Display& d : displays) {
        const std::string prefix = std::string(form) + "." + d.name + ".";
        const DisplayOf of = d.of;
        t.Add(prefix + "menu_copydata", "Copy Graph Values to Clipboard", kPlainCommand,
              [of](CommandContext& c) { menu_copydata(c.ui, *of(c.forms)); });
        t.Add(prefix + "menu_CopyDataASCII", "Save Graph Values as ASCII file", kPlainCommand,
              [of](CommandContext& c) { menu_CopyDataASCII(c.session, c.ui, *of(c.forms)); });
        t.Add(prefix + "menu_OpenGraph", "Open in a Graph Window", kPlainCommand,
              [of](CommandContext& c) {
                  const GraphModel& g = *of(c.forms);
                  if (g.PointCount() > 0) OpenGraph(c.session, g);
              });
    }
}

template <std::size_t N>
void RegisterDisplayControls(ControlRegistry& r, Forms& forms, std::string_view form,
                             const Display (&displays)[N]) {
    for (const Display& d : displays) {
        const DisplayOf of = d.of;
        r.Add(std::string(form) + "." + d.name,
              {ControlKind::Grid, [&forms, of] { return GraphValueText(*of(forms)); }, {}});
    }
}

void RegisterSpectral(CommandTable& t) {
    t.Add("menu_SpectralHRV", "Spectral Analysis", kPlainCommand, [](CommandContext& c) {
        hrv::LoadHrvSpectralForm(c.forms.hrvSpectral, c.IniPath());
        c.forms.hrvSpectralShown = true;
    });
    t.Add("HRVSpectral.Command1", "Generate Plots", kPlainCommand, [](CommandContext& c) {
        hrv::HRVSpectral_Command1(c.session, c.ui, c.forms.hrvSpectral);
    });
    t.Add("HRVSpectral.Command2", "Save Options", kPlainCommand, [](CommandContext& c) {
        SaveHrvSpectralSettings(c.forms.hrvSpectral.options, c.ui, c.IniPath());
    });
    // SpinButton1 halves or doubles the spectrum's frequency axis, SpinButton2 its power axis.
    for (const bool up : {true, false}) {
        const std::string dir = up ? "Up" : "Down";
        t.Add("HRVSpectral.SpinButton1" + dir, "SpinButton1", kPlainCommand,
              [up](CommandContext& c) {
                  hrv::SpinAxisMaximum(*c.forms.hrvSpectral.CWGraph1, true, up);
              });
        t.Add("HRVSpectral.SpinButton2" + dir, "SpinButton2", kPlainCommand,
              [up](CommandContext& c) {
                  hrv::SpinAxisMaximum(*c.forms.hrvSpectral.CWGraph1, false, up);
              });
    }
    t.Add("HRVSpectral.menu_PrintGraphs", "Print Graphs", kPlainCommand,
          [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); });
    RegisterDisplayMenus(t, "HRVSpectral", kSpectralDisplays);
}

void RegisterGeo(CommandTable& t) {
    t.Add("menu_GeoHRV", "Geometrical Methods", kPlainCommand, [](CommandContext& c) {
        hrv::LoadHrvGeoForm(c.forms.hrvGeo, c.IniPath());
        c.forms.hrvGeoShown = true;
    });
    t.Add("HRVGeo.Command1", "Generate Plots", kPlainCommand,
          [](CommandContext& c) { hrv::HRVGeo_Command1(c.session, c.ui, c.forms.hrvGeo); });
    t.Add("HRVGeo.Command2", "Save Options", kPlainCommand, [](CommandContext& c) {
        SaveHrvGeoSettings(c.forms.hrvGeo.options, c.ui, c.IniPath());
    });
    t.Add("HRVGeo.menu_PrintGraphs", "Print Graphs", kPlainCommand,
          [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); });
    RegisterDisplayMenus(t, "HRVGeo", kGeoDisplays);
}

}  // namespace

void RegisterHrvSpectralCommands(CommandTable& table) {
    RegisterSpectral(table);
    RegisterGeo(table);
}

void RegisterHrvSpectralControls(ControlRegistry& r, Forms& forms) {
    HrvSpectralSettings& s = forms.hrvSpectral.options;
    r.AddCombo("HRVSpectral.Combo1", s.RRBinSize);
    r.AddCombo("HRVSpectral.Combo2", s.RRUBound);
    r.AddCombo("HRVSpectral.Combo3", s.RRLBound);
    r.AddCombo("HRVSpectral.Combo4", s.DeltaRRBinSize);
    r.AddCombo("HRVSpectral.Combo5", s.Windowing);
    RegisterDisplayControls(r, forms, "HRVSpectral", kSpectralDisplays);
    HrvGeoSettings& g = forms.hrvGeo.options;
    r.AddCombo("HRVGeo.Combo1", g.RRBinSize);
    r.AddCombo("HRVGeo.Combo2", g.RRUBound);
    r.AddCombo("HRVGeo.Combo3", g.RRLBound);
    r.AddCombo("HRVGeo.Combo4", g.DeltaRRBinSize);
    RegisterDisplayControls(r, forms, "HRVGeo", kGeoDisplays);
}

}  // namespace ardel

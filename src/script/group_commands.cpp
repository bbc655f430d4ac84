#include "script/group_commands.h"

#include <cmath>
#include <string>

#include "core/number_text.h"
#include "group/group_display.h"
#include "group/group_settings.h"
#include "group/trace_edit.h"
#include "group/trace_export.h"

namespace ardel {

namespace {

using group::GroupWindow;

// A handler of the window: the window is loaded first, as referring to it always did.
void AddWindowCommand(CommandTable& t, const std::string& name, std::string title,
                      std::function<void(CommandContext&, GroupWindow&)> body) {
    t.Add("GrpAnal." + name, std::move(title), kPlainCommand,
          [body = std::move(body)](CommandContext& c) { body(c, UseGroupWindow(c)); });
}

void StartDisplayCommand(CommandContext& c, GroupWindow& w) {
    group::StartDisplay(c.session, c.ui, w);
}

void RegisterDisplayTab(CommandTable& t) {
    AddWindowCommand(t, "Command1", "Start Display", StartDisplayCommand);
    AddWindowCommand(t, "menu_DisplayTrace", "Display Trace", StartDisplayCommand);
    // A change of source, type, alignment, length, group or baseline cuts the traces afresh.
    for (const char* name : {"Combo1", "Combo2", "Combo3", "Combo4", "ckBaseline"})
        AddWindowCommand(t, name, "Start Display", StartDisplayCommand);
    for (int k = 0; k < 2; ++k) {
        AddWindowCommand(t, IndexedName("Option2", k), "Start Display",
                         [k](CommandContext& c, GroupWindow& w) {
                             w.form.Option2_0 = k == 0;
                             w.form.Option2_1 = k == 1;
                             StartDisplayCommand(c, w);
                         });
    }
    for (const char* name : {"Combo5", "Combo6"}) {
        AddWindowCommand(t, name, "Display", [](CommandContext& c, GroupWindow& w) {
            group::GroupDisplay(c.session, w);
        });
    }
    AddWindowCommand(t, "Slider1", "Display Offset", [](CommandContext& c, GroupWindow& w) {
        group::Slider1Change(c.session, w, w.form.Slider1);
    });
    AddWindowCommand(t, "Check10", "Display Full Sweep", [](CommandContext& c, GroupWindow& w) {
        group::Check10Click(c.session, w);
    });
    AddWindowCommand(t, "Check1", "Display cursors", [](CommandContext& c, GroupWindow& w) {
        w.SelectedCursor = 255;
        // Two cursors on one spot cannot be told apart: shown so, they part to a third and two
        // thirds of the trace.
        auto& x = w.form.Line1X;
        if (w.form.Check1 && x[0] == x[1] && w.store.TracePoints > 0) {
            x[0] = std::floor(w.store.TracePoints / 3.0);
            x[1] = std::floor(w.store.TracePoints * 2 / 3.0);
        }
        w.form.lbCursor = group::CursorReadout(c.session, w);
    });
    for (const char key : kGroupKeys) {
        AddWindowCommand(t, std::string("Key") + key, "Trace Keys",
                         [key](CommandContext& c, GroupWindow& w) {
                             group::GroupKey(c.session, c.ui, w, key);
                         });
    }
    // The navigation buttons are the keys A and F; the spin button steps like S and D.
    const std::pair<const char*, char> buttons[] = {{"SSCommand1(0)", 'A'},
                                                    {"SSCommand1(1)", 'F'},
                                                    {"SpinButton5_SpinDown", 'S'},
                                                    {"SpinButton5_SpinUp", 'D'}};
    for (const auto& [name, key] : buttons) {
        AddWindowCommand(t, name, "Jump", [key = key](CommandContext& c, GroupWindow& w) {
            group::GroupKey(c.session, c.ui, w, key);
        });
    }
}

void RegisterMenus(CommandTable& t) {
    AddWindowCommand(t, "menu_trace_remove", "Remove From Group",
                     [](CommandContext& c, GroupWindow& w) {
                         group::menu_trace_remove(c.session, c.ui, w);
                     });
    AddWindowCommand(t, "menu_trace_regroup", "Re-group", [](CommandContext& c, GroupWindow& w) {
        group::menu_trace_regroup(c.session, c.ui, w);
    });
    AddWindowCommand(t, "menu_trace_extract", "Copy Trace Data",
                     [](CommandContext& c, GroupWindow& w) {
                         group::menu_trace_extract(c.session, c.ui, w);
                     });
    for (int k = 0; k < 3; ++k) {
        AddWindowCommand(t, IndexedName("menu_copydata", k), "Copy Trace Data",
                         [k](CommandContext& c, GroupWindow& w) {
                             group::menu_copydata(c.session, c.ui, w, k, c.programDir);
                         });
        AddWindowCommand(t, IndexedName("menu_saveascii", k), "Save Trace Data",
                         [k](CommandContext& c, GroupWindow& w) {
                             group::menu_saveascii(c.session, c.ui, w, k);
                         });
    }
    AddWindowCommand(t, "menu_SaveSettings", "Save Settings", [](CommandContext& c, GroupWindow& w) {
        group::menu_SaveSettings(w, c.ui, c.IniPath());
    });
    AddWindowCommand(t, "menu_SaveAsCustomSetup", "Save Settings",
                     [](CommandContext& c, GroupWindow& w) {
                         group::menu_SaveAsCustomSetup(w, c.ui, c.IniPath());
                     });
    AddWindowCommand(t, "menu_LoadSettings", "Load Settings", [](CommandContext& c, GroupWindow& w) {
        group::menu_LoadSettings(w, c.ui, c.IniPath());
    });
    // The desktop draws pictures of the drawing area itself; a script is told so.
    for (const char* name : {"menu_copybmp", "menu_saveBMP", "menu_CopyMeta", "menu_print"}) {
        AddWindowCommand(t, name, "Picture", [](CommandContext& c, GroupWindow&) {
            c.ui.Message(kProgramName, kPictureNeedsDesktop);
        });
    }
    AddWindowCommand(t, "menu_exit", "Exit", [](CommandContext&, GroupWindow& w) {
        w.shown = false;
    });
}

void AddTextArray(ControlRegistry& r, const std::string& name, std::string* fields, int count) {
    for (int k = 0; k < count; ++k) r.AddText(IndexedName(name, k), fields[k]);
}

// Every control of the window into `r`, bound to the form.
void RegisterFormControls(ControlRegistry& r, GroupWindow& w) {
    group::GrpAnalForm& f = w.form;
    // Display tab.
    // The two sources are one option group: choosing one clears the other, as a click does.
    bool* sources[] = {&f.Option2_0, &f.Option2_1};
    for (int k = 0; k < 2; ++k) {
        bool& mine = *sources[k];
        bool& other = *sources[1 - k];
        r.Add(IndexedName("GrpAnal.Option2", k),
              {ControlKind::OptionButton, [&mine] { return mine ? "True" : "False"; },
               [&mine, &other](std::string_view v) {
                   mine = CheckValue(v);
                   if (mine) other = false;
               }});
    }
    for (const char* name : {"Combo1", "Combo2", "Combo3", "Combo4", "Combo5", "Combo6", "Combo7"}) {
        std::string* field = nullptr;
        switch (name[5]) {
            case '1': field = &f.Combo1; break;
            case '2': field = &f.Combo2; break;
            case '3': field = &f.Combo3; break;
            case '4': field = &f.Combo4; break;
            case '5': field = &f.Combo5; break;
            case '6': field = &f.Combo6; break;
            default: field = &f.Combo7; break;
        }
        r.AddCombo(std::string("GrpAnal.") + name, *field);
    }
    r.AddCheck("GrpAnal.ckBaseline", f.ckBaseline);
    r.AddCheck("GrpAnal.Check10", f.Check10);
    r.AddCheck("GrpAnal.Check1", f.Check1);
    r.AddCheck("GrpAnal.Check15", f.Check15);
    r.AddSlider("GrpAnal.Slider1", f.Slider1);
    r.AddLabel("GrpAnal.Label6", f.Label6);
    r.AddLabel("GrpAnal.lbCursor", f.lbCursor);
    for (int k = 0; k < 2; ++k) {
        double& x = f.Line1X[std::size_t(k)];
        r.Add(IndexedName("GrpAnal.Line1", k),
              {ControlKind::TextBox, [&x] { return CStr(x); },
               [&x](std::string_view v) { x = Val(v); }});
    }
    r.Add("GrpAnal.Picture1",
          {ControlKind::Grid, [&w] { return group::GroupPictureText(w); }, {}});
    // The trace the right button hit, which the trace menu works on.
    r.Add("GrpAnal.HighlightTrace",
          {ControlKind::TextBox, [&w] { return CStr(w.HighlightTrace); },
           [&w](std::string_view v) { w.HighlightTrace = ToInt32Clamped(Val(v)); }});
    // Curve fitting tab.
    r.AddCombo("GrpAnal.Combo9", f.Combo9);
    r.AddCombo("GrpAnal.Combo8", f.Combo8);
    r.AddCombo("GrpAnal.Combo11", f.Combo11);
    r.AddText("GrpAnal.Text5", f.Text5);
    r.AddComboIndex("GrpAnal.Combo29", f.Combo29, {"10-90%", "20-80%", "30-70%"});
    r.AddCheck("GrpAnal.Check3", f.Check3);
    r.AddCheck("GrpAnal.Check4", f.Check4);
    r.AddCheck("GrpAnal.UseGuess", f.UseGuess);
    AddTextArray(r, "GrpAnal.Tau", f.Tau.data(), 3);
    AddTextArray(r, "GrpAnal.Amp", f.Amp.data(), 3);
    r.AddCheck("GrpAnal.Check16", f.Check16);
    r.AddCheck("GrpAnal.Check13", f.Check13);
    r.AddCombo("GrpAnal.Combo10", f.Combo10);
    r.AddCombo("GrpAnal.Combo31", f.Combo31);
    r.AddCheck("GrpAnal.Check14", f.Check14);
    r.AddCombo("GrpAnal.Combo32", f.Combo32);
    r.AddLabel("GrpAnal.Command2", f.Command2);
    r.AddLabel("GrpAnal.Label10", f.Label10);
    r.AddLabel("GrpAnal.Label11", f.Label11);
    // AP wave tab.
    r.AddText("GrpAnal.Text6", f.Text6);
    r.AddCombo("GrpAnal.Combo14", f.Combo14);
    r.AddCombo("GrpAnal.Combo12", f.Combo12);
    r.AddCheck("GrpAnal.Check2", f.Check2);
    r.AddCombo("GrpAnal.Combo19", f.Combo19);
    r.AddCombo("GrpAnal.Combo20", f.Combo20);
    r.AddCombo("GrpAnal.Combo13", f.Combo13);
    r.AddCombo("GrpAnal.Combo15", f.Combo15);
    // Random walk.
    r.AddCombo("GrpAnal.Combo16", f.Combo16);
    r.AddCombo("GrpAnal.Combo17", f.Combo17);
    AddTextArray(r, "GrpAnal.Text1", f.Text1.data(), int(f.Text1.size()));
    r.AddText("GrpAnal.Text2", f.Text2);
    r.AddText("GrpAnal.Text3", f.Text3);
    // Non-stationary noise tab.
    r.AddText("GrpAnal.Text4", f.Text4);
    r.AddCombo("GrpAnal.Combo18", f.Combo18);
    r.AddCheck("GrpAnal.Check5", f.Check5);
    r.AddCheck("GrpAnal.Check6", f.Check6);
    // Multi peak tab.
    r.AddCombo("GrpAnal.Combo22", f.Combo22);
    r.AddComboIndex("GrpAnal.SSTab1", f.SSTab1,
                    {"Display", "Curve Fitting", "AP Wave Analysis", "Amperometric", "ECG",
                     "Random Walk", "Field EPSP", "Non-Stationary Noise", "Multi Peak"});
}

}  // namespace

group::GroupWindow& UseGroupWindow(CommandContext& c) {
    group::GroupWindow& w = c.forms.grpAnal;
    group::LoadGroupWindow(w, c.IniPath());
    return w;
}

void RegisterGroupCommands(CommandTable& table) {
    table.Add("menu_AnalyseGp", "Group Analysis", kPlainCommand, [](CommandContext& c) {
        group::GroupWindow& w = UseGroupWindow(c);
        w.shown = true;
        w.bringToFront = true;
    });
    RegisterDisplayTab(table);
    RegisterMenus(table);
    // A click on a tab: the results grid takes the tab's captions and column names.
    table.Add("GrpAnal.SSTab1", "Tab", kPlainCommand, [](CommandContext& c) {
        group::GroupWindow& w = UseGroupWindow(c);
        group::SetResultTab(w.form.TDBGrid1, c.session.results, w.form.SSTab1, c.session.recording);
    });
}

void RegisterGroupControls(ControlRegistry& r, Forms& forms) {
    GroupWindow& w = forms.grpAnal;
    ControlRegistry own;
    RegisterFormControls(own, w);
    for (const std::string& name : own.Names()) {
        Control control = *own.Find(name);
        if (control.set) {
            // A value set before the window's first use outlasts the settings that use reads.
            control.set = [&w, set = control.set](std::string_view v) {
                set(v);
                if (!w.loaded) w.pendingSets.push_back([set, text = std::string(v)] { set(text); });
            };
        }
        r.Add(name, std::move(control));
    }
}

}  // namespace ardel

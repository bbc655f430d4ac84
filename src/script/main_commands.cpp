// The main window's handlers in the command table, each under the name of its control or menu
// item. The bodies are those of the window's handlers: one engine command, plus the boxes the
// handler fills itself.
#include <algorithm>
#include <string>

#include "core/event_commands.h"
#include "core/event_files.h"
#include "core/open_file.h"
#include "core/settings.h"
#include "detect/batch_analysis.h"
#include "detect/complex_peaks.h"
#include "detect/digital_filter.h"
#include "detect/manual_edit.h"
#include "detect/suggested_parameters.h"
#include "detect/window_analysis.h"
#include "script/command_table.h"
#include "view/navigation.h"
#include "view/trace_axes.h"
#include "view/trace_scene.h"

namespace ardel {

namespace {

using Body = std::function<void(CommandContext&)>;


void RegisterButtons(CommandTable& t) {
    t.Add("Command1", "Analyse this window", kPlainCommand, DialogCommand(Command1));
    t.Add("Command2", "Analyse next window", kPlainCommand, DialogCommand(Command2));
    t.Add("Command3", "Nonstop Analysis", kLongRun, [](CommandContext& c) {
        Command3(c.session, c.ui);
        c.forms.main.StatusText = std::to_string(c.session.events.EventCount()) + " events.";
    });
    t.Add("Command4", "Interrupt", kDuringRun, [](CommandContext& c) { Command4(c.session); });
    t.Add("Command5", "Reset Events", kPlainCommand, DialogCommand(Command5));
    const Body save6 = [](CommandContext& c) { Command6(c.session, c.ui, c.IniPath()); };
    t.Add("Command6", "Save Settings", kPlainCommand, save6);
    t.Add("menu_SaveSettingsArdel", "Save Settings", kPlainCommand, save6);
    t.Add("Command7", "Save Settings", kPlainCommand,
          [](CommandContext& c) { Command7(c.session, c.ui, c.IniPath()); });
}

void RegisterFileMenu(CommandTable& t) {
    t.Add("menu_OpenEvent", "Open Event File", kPlainCommand, DialogCommand(menu_OpenEvent));
    t.Add("menu_SaveEvent", "Save Event File", kPlainCommand, [](CommandContext& c) {
        // The file just written shows in the list at once.
        if (menu_SaveEvent(c.session, c.ui))
            ShowFolder(c.session, c.forms.main, c.session.CurrentFolder);
    });
    t.Add("menu_SaveParameter", "Save Parameters", kPlainCommand,
          [](CommandContext& c) { menu_SaveParameter(c.session, c.ui, c.programDir); });
    t.Add("menu_LoadParameter", "Load Parameters", kPlainCommand,
          [](CommandContext& c) { menu_LoadParameter(c.session, c.ui, c.programDir); });
    t.Add("menu_FileComments", "File Comments", kPlainCommand, DialogCommand(menu_FileComments));
    t.Add("menu_SaveSettingsCustom", "Save Settings in Custom Settings File", kPlainCommand,
          [](CommandContext& c) { menu_SaveSettingsCustom(c.session, c.ui, c.IniPath()); });
    t.Add("menu_LoadSettings", "Load Settings", kPlainCommand, [](CommandContext& c) {
        if (const auto texts = menu_LoadSettings(c.session, c.ui, c.IniPath()))
            ApplySettingsTexts(c.session, c.forms.main, *texts);
    });
    const Body datInfo = [](CommandContext& c) {
        if (!c.session.recording.FileIsOpen) return;
        c.forms.datInfo.Caption = DatInfoTitle(c.session);
        c.forms.datInfo.Grid1 = DatInfoRows(c.session);
    };
    t.Add("menu_DatInfo", "DAT File Info", kDuringRun, datInfo);
    // A click on the file's name shows its header too.
    t.Add("Label11", "DAT File Info", kDuringRun, datInfo);
    const SynchTarget targets[3] = {SynchTarget::DataArray1, SynchTarget::DataArray2,
                                    SynchTarget::EventTable};
    for (int i = 0; i < 3; ++i) {
        const SynchTarget target = targets[i];
        t.Add("menu_ExtractSynchArray(" + std::to_string(i) + ")", "Extract Synch Array",
              kPlainCommand,
              [target](CommandContext& c) { menu_ExtractSynchArray(c.session, c.ui, target); });
    }
    t.Add("menu_batch", "Batch Analysis", kLongRun, [](CommandContext& c) {
        const BatchReport report = menu_batch(c.session, c.ui);
        if (report.files.empty()) return;
        ShowFolder(c.session, c.forms.main, c.session.CurrentFolder);
        const auto analysed = std::count_if(
            report.files.begin(), report.files.end(),
            [](const BatchFileOutcome& f) { return f.status == BatchFileStatus::Analysed; });
        c.forms.main.StatusText = "Batch analysis: " + std::to_string(analysed) + " of " +
                                  std::to_string(report.files.size()) + " files analysed" +
                                  (report.interrupted ? ", interrupted" : "") + ".";
    });
    t.Add("menu_Exit", "Exit", kPlainCommand, [](CommandContext& c) {
        c.exitRequested = QueryUnsavedEventsOnExit(c.session, c.ui);
    });
}

void RegisterAnalysisMenu(CommandTable& t) {
    for (int i = 1; i <= 3; ++i) {
        t.Add("menu_SuggParam(" + std::to_string(i) + ")", "Suggest Analysis Parameters",
              kPlainCommand, [i](CommandContext& c) {
                  MainForm& f = c.forms.main;
                  menu_SuggParam(c.session, c.ui, i, [&f](const DetectionFrameTexts& texts) {
                      f.Text4 = texts.Text4;
                      if (texts.Combo1 == kCombo1Items[0]) f.Combo1 = 0;
                      if (texts.Combo1 == kCombo1Items[1]) f.Combo1 = 1;
                  });
              });
    }
    t.Add("menu_RMSNoise", "Measure RMS Noise", kPlainCommand, [](CommandContext& c) {
        MainForm& f = c.forms.main;
        const auto result = menu_RMSNoise(c.session, c.ui, [&c, &f] {
            f.SSTab1 = 0;
            c.ShowForms();
        });
        // The engine's text of the unrounded value goes into both boxes.
        if (result && result->threshold) {
            c.afterCommand = [&f, text = result->thresholdText] {
                f.Text4[0] = text;
                f.Text4[6] = text;
            };
        }
    });
    const Body doublePeak = [](CommandContext& c) { menu_DoublePeak_Click(c.session, c.ui); };
    // The analysis menu's item and the event popup's item share the handler.
    t.Add("menu_DoublePeak_Click", "Analyse Double Peak", kPlainCommand, doublePeak);
    t.Add("menu_DoublePeak", "Analyse Double Peak", kPlainCommand, doublePeak);
    t.Add("menu_ScanDoublePeak", "Scan and Detect Double Peaks", kLongRun,
          DialogCommand(menu_ScanDoublePeak));
    t.Add("menu_ScanAdjustBaseline", "Scan and Adjust Baseline to Threshold", kLongRun,
          DialogCommand(menu_ScanAdjustBaseline));
    t.Add("menu_RejectThisEvent", "Reject This Event", kPlainCommand, DialogCommand(menu_RejectThisEvent));
    t.Add("menu_DeletEvent", "Delete This Event", kPlainCommand, [](CommandContext& c) {
        menu_DeletEvent(c.session, c.ui);
        // The deleted event's marks leave the picture; the new selection is marked.
        RedrawSelection(c.session);
    });
    t.Add("menu_RecalculatePeak", "Recalculate Peak", kPlainCommand, DialogCommand(menu_RecalculatePeak));
    t.Add("menu_BaselineThreshold", "Use Threshold as Baseline", kPlainCommand,
          DialogCommand(menu_BaselineThreshold));
}

void RegisterNavigationAndDisplay(CommandTable& t) {
    for (int i = 1; i <= kNavigationItemCount; ++i) {
        const auto item = NavigationItem(i);
        if (IsSeparator(item)) continue;
        t.Add("menu_Navigates(" + std::to_string(i) + ")", "Navigate", kDuringRun,
              [item](CommandContext& c) { Navigate(c.session, c.ui, item); });
    }
    // Without a window the timer's ticks follow one another at once, to the recording's end.
    t.Add("menu_DisplayContinously", std::string(kTimedDisplayCaption), kPlainCommand,
          [](CommandContext& c) {
              const auto interval = StartTimedDisplay(c.session, c.ui);
              if (!interval) return;
              if (c.startTimedDisplay) {
                  c.startTimedDisplay(std::int32_t(*interval));
                  return;
              }
              while (TimedDisplayTick(c.session)) c.ui.Yield();
          });
    t.Add("menu_AutoScale", "Auto Scale", kDuringRun, [](CommandContext& c) {
        AutoScale(c.session);
        c.forms.main.Text1 = DisplayGainText(c.session);
    });
    const auto help = ShortcutHelpText();
    for (std::size_t i = 0; i < help.size(); ++i) {
        t.Add("menu_ShortCuts(" + std::to_string(i) + ")", "Short Cuts", kDuringRun,
              [e = help[i]](CommandContext& c) { c.ui.Message(e.caption, e.detail); });
    }
    t.Add("menu_FilterHelp", "Digital Filter", kDuringRun,
          [](CommandContext& c) { c.ui.Message("Digital Filter", FilterHelpText()); });
}

// The boxes, lists and buttons of the window whose change or click does something.
void RegisterControlHandlers(CommandTable& t) {
    t.Add("Text1", "Text1", kDuringRun, [](CommandContext& c) {
        c.forms.main.Text1 = SetDisplayGainText(c.session, c.forms.main.Text1);
    });
    t.Add("Text3", "Text3", kPlainCommand, [](CommandContext& c) {
        c.forms.main.Text3 = SetBlocksPerScreenText(c.session, c.forms.main.Text3);
    });
    for (int dir : {+1, -1}) {
        const std::string suffix = dir > 0 ? "Up" : "Down";
        t.Add("Spin1" + suffix, "Spin1", kDuringRun, [dir](CommandContext& c) {
            StepDisplayGain(c.session, dir);
            c.forms.main.Text1 = DisplayGainText(c.session);
        });
        t.Add("Spin3" + suffix, "Spin3", kPlainCommand, [dir](CommandContext& c) {
            StepBlocksPerScreen(c.session, dir);
            c.forms.main.Text3 = BlocksPerScreenText(c.session);
        });
    }
    t.Add("Combo3", "Combo3", kPlainCommand, [](CommandContext& c) {
        const MainForm& f = c.forms.main;
        const auto it = std::find(f.Combo3Items.begin(), f.Combo3Items.end(), f.Combo3);
        if (it == f.Combo3Items.end()) return;
        SelectChannel(c.session, int(it - f.Combo3Items.begin()));
        c.forms.main.Text1 = DisplayGainText(c.session);
    });
    t.Add("Slider1", "Slider1", kDuringRun,
          [](CommandContext& c) { SetDisplayOffset(c.session, c.forms.main.Slider1); });
    t.Add("Slider2", "Slider2", kDuringRun,
          [](CommandContext& c) { SetScreenFromSlider(c.session, c.forms.main.Slider2); });
    // The filter works on every redraw, so a change shows at once.
    const Body redraw = [](CommandContext& c) { Display(c.session); };
    for (const char* name : {"Check1", "Combo4", "Combo5"}) t.Add(name, "Check1", kDuringRun, redraw);
    t.Add("ckCursors", "ckCursors", kDuringRun, [](CommandContext& c) {
        MainForm& f = c.forms.main;
        CursorState& cur = f.cursors;
        cur.ckCursors = f.ckCursors;
        if (cur.ckCursors) PlaceCursors(cur, c.session.recording.ScreenPoints());
        cur.DraggedCursor = kNoCursor;
        cur.lbCursor = cur.ckCursors ? CursorReadout(c.session, cur) : std::string();
        f.lbCursor = cur.lbCursor;
    });
}

}  // namespace

void RegisterMainWindowCommands(CommandTable& table) {
    RegisterButtons(table);
    RegisterFileMenu(table);
    RegisterAnalysisMenu(table);
    RegisterNavigationAndDisplay(table);
    RegisterControlHandlers(table);
}

}  // namespace ardel

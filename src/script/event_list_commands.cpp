// The event list's handlers (sort, duplicates, delete, reject, group, unmark, copy, save) and the
// Criteria form's handlers and controls, by name.
#include "script/event_list_commands.h"

#include <string>

#include "core/forwarding_dialogs.h"
#include "core/number_text.h"
#include "events/burst_analysis.h"
#include "events/criteria_search.h"
#include "events/event_list.h"

namespace ardel {

namespace {

// Nobody can press "Stop" in a script. When no row is left that the random selection could
// still take, it would draw for ever; this presses "Stop" for the script as the window's user
// would, so the run ends exactly as a press ends it (the inner report, then the outer one).
class ScriptStopPress final : public ForwardingDialogs {
  public:
    ScriptStopPress(UserDialogs& inner, Session& s, CriteriaForm& f)
        : ForwardingDialogs(inner), s_(s), f_(f) {}

    void Yield() override {
        inner_.Yield();
        // Looking at every row on every draw would make a long selection quadratic; a run that
        // can go on takes a new row long before this many draws.
        const std::int64_t patience = 10 * std::int64_t(s_.events.EventCount()) + 1000;
        if (++draws_ < patience || pressed_) return;
        draws_ = 0;
        if (f_.Command2Caption != kStopSelection || AnyRowLeft()) return;
        pressed_ = true;
        Criteria_Command2(s_, *this, f_);
    }

  private:
    bool AnyRowLeft() const {
        const double group = Val(f_.Combo5);
        for (std::int32_t i = 1; i <= s_.events.EventCount(); ++i) {
            const std::uint8_t g = s_.events[i].GroupNumber;
            if (double(g) != group && (!f_.Check4 || g == 0)) return true;
        }
        return false;
    }

    Session& s_;
    CriteriaForm& f_;
    std::int64_t draws_ = 0;
    bool pressed_ = false;
};

void RegisterListCommands(CommandTable& t) {
    for (int i = 1; i <= kSortColumnCount; ++i) {
        t.Add("menu_sort(" + std::to_string(i) + ")", "Sort Events by", kPlainCommand,
              [i](CommandContext& c) { menu_sort(c.session, i); });
    }
    t.Add("menu_RemoveDuplicates", "Remove Duplicates", kPlainCommand,
          DialogCommand(menu_RemoveDuplicates));
    t.Add("menu_deleteevents", "Delete Highlighted Events", kPlainCommand,
          DialogCommand(menu_deleteevents));
    t.Add("menu_RejectEvents", "Reject Highlighted Events", kPlainCommand,
          SessionCommand(menu_RejectEvents));
    t.Add("menu_DeleteRejected", "Delete All Rejected Events", kPlainCommand,
          SessionCommand(menu_DeleteRejected));
    t.Add("menu_Group", "Mark Events as Group", kPlainCommand, DialogCommand(menu_Group));
    t.Add("menu_markasgp", "Mark as Group", kPlainCommand, DialogCommand(menu_markasgp));
    t.Add("menu_MarkAllEvents", "Mark All Events as Group", kPlainCommand,
          DialogCommand(menu_MarkAllEvents));
    t.Add("menu_MarkAllWindow", "Mark All Events in this Window", kPlainCommand,
          DialogCommand(menu_MarkAllWindow));
    t.Add("menu_Unmark", "Unmark from Group", kPlainCommand, SessionCommand(menu_Unmark));
    t.Add("menu_unmarkgp", "Unmark Highlighted Events", kPlainCommand, SessionCommand(menu_unmarkgp));
    t.Add("menu_UnmarkGrouped", "Unmark Grouped Events", kPlainCommand,
          DialogCommand(menu_UnmarkGrouped));
    for (int index = 0; index <= 1; ++index) {
        const std::string n = "(" + std::to_string(index) + ")";
        t.Add("menu_copytoclipboard" + n, "Copy to Clipboard", kPlainCommand,
              [index](CommandContext& c) { menu_copytoclipboard(c.session, c.ui, index); });
        t.Add("menu_savetoAsciiFile" + n, "Save as ASCII File", kPlainCommand,
              [index](CommandContext& c) { menu_savetoAsciiFile(c.session, c.ui, index); });
    }
}

void RegisterCriteriaCommands(CommandTable& t) {
    // The menu items open the form on their tab.
    const std::pair<const char*, int> openers[] = {{"menu_CriteriaSearch", kSearchTab},
                                                   {"menu_groupbyrandom", kRandomTab},
                                                   {"menu_groupEpisodic", kEpisodicTab},
                                                   {"menu_groupBursts", kBurstTab}};
    for (const auto& [name, tab] : openers) {
        t.Add(name, "Criteria Search Events", kDuringRun, [tab = tab](CommandContext& c) {
            c.forms.criteria.SSTab1 = tab;
            c.forms.criteriaShown = true;
        });
    }
    t.Add("Criteria.Command1", "Start Search", kPlainCommand, [](CommandContext& c) {
        Criteria_Command1(c.session, c.ui, c.forms.criteria);
    });
    t.Add("Criteria.Command2", "Start Selection", kLongRun | kDuringRun, [](CommandContext& c) {
        if (c.headless) {
            ScriptStopPress ui(c.ui, c.session, c.forms.criteria);
            Criteria_Command2(c.session, ui, c.forms.criteria);
        } else {
            Criteria_Command2(c.session, c.ui, c.forms.criteria);
        }
    });
    t.Add("Criteria.Command3", "Start", kPlainCommand, [](CommandContext& c) {
        Criteria_Command3(c.session, c.ui, c.forms.criteria);
    });
    t.Add("Criteria.Command4", "Start", kPlainCommand, [](CommandContext& c) {
        Criteria_Command4(c.session, c.ui, c.forms.criteria);
    });
}

}  // namespace

void RegisterEventListCommands(CommandTable& table) {
    RegisterListCommands(table);
    RegisterCriteriaCommands(table);
}

void RegisterCriteriaControls(ControlRegistry& r, Forms& forms) {
    CriteriaForm& f = forms.criteria;
    for (int k = 0; k < kCriteriaCount; ++k) {
        const std::string n = "(" + std::to_string(k) + ")";
        r.AddCombo("Criteria.Combo1" + n, f.Combo1[std::size_t(k)]);
        r.AddCombo("Criteria.Combo2" + n, f.Combo2[std::size_t(k)]);
    }
    r.AddCheck("Criteria.Check5", f.Check5);
    r.AddCombo("Criteria.Combo3", f.Combo3);
    r.AddCheck("Criteria.Check1", f.Check1);
    r.AddCombo("Criteria.Combo4", f.Combo4);
    r.AddText("Criteria.Text1", f.Text1);
    r.AddCombo("Criteria.Combo5", f.Combo5);
    r.AddCheck("Criteria.Check3", f.Check3);
    r.AddCheck("Criteria.Check4", f.Check4);
    r.AddCheck("Criteria.Check2", f.Check2);
    r.AddCombo("Criteria.Combo6", f.Combo6);
    r.AddLabel("Criteria.Command2", f.Command2Caption);
    r.AddText("Criteria.Text2", f.Text2);
    r.AddText("Criteria.Text3", f.Text3);
    r.AddText("Criteria.Text4", f.Text4);
    r.AddCombo("Criteria.Combo7", f.Combo7);
    // The two check boxes exclude each other on the form.
    r.Add("Criteria.Check7", Control{ControlKind::CheckBox,
                                     [&f] { return std::string(f.Check7 ? "True" : "False"); },
                                     [&f](std::string_view v) {
                                         f.Check7 = CheckValue(v);
                                         if (f.Check7) f.Check8 = false;
                                     }});
    r.Add("Criteria.Check8", Control{ControlKind::CheckBox,
                                     [&f] { return std::string(f.Check8 ? "True" : "False"); },
                                     [&f](std::string_view v) {
                                         f.Check8 = CheckValue(v);
                                         if (f.Check8) f.Check7 = false;
                                     }});
    r.AddCheck("Criteria.Check6", f.Check6);
    r.AddCombo("Criteria.Combo8", f.Combo8);
    r.AddText("Criteria.Text7", f.Text7);
    r.AddText("Criteria.Text6", f.Text6);
    r.AddComboIndex("Criteria.SSTab1", f.SSTab1,
                    {"Criteria Search", "Random Selection", "Episodic Grouping", "Bursts"});
}

}  // namespace ardel

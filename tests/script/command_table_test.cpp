#include "script/command_table.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "script/script_dialogs.h"
#include "script/script_error.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;

struct Context {
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandContext c{session, ui, forms};
};

TEST(CommandTable, EveryKeyRunsARegisteredHandlerOrOneOfTheFormsStillToCome) {
    CommandTable table;
    RegisterAllCommands(table);
    // The event list's and the group window's handlers join the table with their forms.
    const std::vector<std::string> later = {"menu_Unmark", "menu_MarkAllWindow",
                                            "menu_MarkAllEvents", "menu_AnalyseGp"};
    int bound = 0;
    for (int k = int(Key::A); k <= int(Key::End); ++k) {
        for (bool ctrl : {false, true}) {
            const KeyBinding b = BindingForKey(Key(k), ctrl);
            if (b.command == KeyCommand::None) continue;
            ++bound;
            const std::string name = KeyHandlerName(b);
            if (name.empty()) {
                // Only the display steps have no menu item.
                EXPECT_TRUE(b.command == KeyCommand::IncreaseDisplayOffset ||
                            b.command == KeyCommand::DecreaseDisplayOffset ||
                            b.command == KeyCommand::IncreaseDisplayGain ||
                            b.command == KeyCommand::DecreaseDisplayGain)
                    << k;
                continue;
            }
            EXPECT_TRUE(table.Find(name) || std::count(later.begin(), later.end(), name))
                << name;
        }
    }
    EXPECT_GE(bound, 40);
    EXPECT_EQ(KeyHandlerName(BindingForKey(Key::D, false)), "menu_Navigates(3)");
    EXPECT_EQ(KeyHandlerName(BindingForKey(Key::T, true)), "menu_Navigates(23)");
    EXPECT_EQ(KeyHandlerName(BindingForKey(Key::F11, false)), "Command3");
}

TEST(CommandTable, NamesCarryTheWindowsIndexesAndSkipSeparators) {
    const auto names = ScriptNames();
    auto has = [&names](const std::string& n) {
        return std::binary_search(names.begin(), names.end(), n);
    };
    for (const char* n : {"Command1", "Command7", "menu_Navigates(1)", "menu_Navigates(24)",
                          "menu_SuggParam(1)", "menu_SuggParam(3)", "menu_ExtractSynchArray(0)",
                          "menu_ExtractSynchArray(2)", "menu_ShortCuts(0)", "menu_DoublePeak_Click",
                          "Text4(0)", "Text4(6)", "TDBGrid1", "DatInfo.Grid1", "Spin1Up"})
        EXPECT_TRUE(has(n)) << n;
    for (const char* n : {"menu_Navigates(5)", "menu_Navigates(11)", "menu_Navigates(16)",
                          "menu_Navigates(21)", "menu_SuggParam(0)", "Text4(7)"})
        EXPECT_FALSE(has(n)) << n;
    EXPECT_TRUE(std::adjacent_find(names.begin(), names.end()) == names.end());
}

TEST(CommandTable, AFailingCommandIsReportedUnderTheProgramsNameAndLeavesTheSessionUsable) {
    Context x;
    x.session.display.NonStopRunning = true;
    const CommandEntry broken{"Nonstop Analysis", kLongRun,
                              [](CommandContext&) { throw std::runtime_error("Overflow"); }};
    x.ui.ExpectMessage("Ardelvantine",
                       "The command \"Nonstop Analysis\" could not be completed.\n\nOverflow");
    EXPECT_FALSE(RunCommand(x.c, broken));
    EXPECT_FALSE(x.session.display.NonStopRunning);

    // A detection text its key cannot take breaks the command off before it starts.
    x.forms.main.Text4[1] = "99999999999";
    bool ran = false;
    const CommandEntry probe{"Analyse this window", kPlainCommand,
                             [&ran](CommandContext&) { ran = true; }};
    x.ui.ExpectMessage("Ardelvantine");
    EXPECT_FALSE(RunCommand(x.c, probe));
    EXPECT_FALSE(ran);
    x.forms.main.Text4[1] = "10000";
    EXPECT_TRUE(RunCommand(x.c, probe));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(x.ui.Done());
}

TEST(CommandTable, AScriptErrorIsNotTurnedIntoAMessage) {
    Context x;
    const CommandEntry stop{"Reset Events", kPlainCommand,
                            [](CommandContext&) { throw ScriptError("no answer"); }};
    EXPECT_THROW(RunCommand(x.c, stop), ScriptError);
}

TEST(CommandTable, TypedTextsStayUntilACommandChangesTheParameters) {
    Context x;
    MainForm& f = x.forms.main;
    f.Text4[0] = "5.0";
    f.Combo1 = 1;
    f.Combo4 = 2;
    const CommandEntry idle{"idle", kPlainCommand, [](CommandContext&) {}};
    ASSERT_TRUE(RunCommand(x.c, idle));
    EXPECT_EQ(x.session.params.PeakDirection, 1);
    EXPECT_EQ(x.session.options.FilterType, 2);
    // Nothing changed, so the box keeps the text as typed.
    EXPECT_EQ(f.Text4[0], "5.0");

    const CommandEntry raise{"raise", kPlainCommand, [](CommandContext& c) {
                                 c.session.params.ThresholdAmplitude = 7.5f;
                                 c.session.params.PeakDirection = -1;
                                 c.session.options.FilterType = 11;
                             }};
    ASSERT_TRUE(RunCommand(x.c, raise));
    EXPECT_EQ(f.Text4[0], "7.5");
    EXPECT_EQ(f.Combo1, 0);
    // A filter index the list does not have leaves the list's choice as it was.
    EXPECT_EQ(f.Combo4, 2);
}

TEST(CommandTable, AfterCommandRunsOnceAfterTheControlsFollowedTheSession) {
    Context x;
    const CommandEntry rms{"Measure RMS Noise", kPlainCommand, [](CommandContext& c) {
                               c.session.params.ThresholdAmplitude = 2.f;
                               c.afterCommand = [&c] { c.forms.main.Text4[0] = "1.987654"; };
                           }};
    ASSERT_TRUE(RunCommand(x.c, rms));
    EXPECT_EQ(x.forms.main.Text4[0], "1.987654");
    EXPECT_FALSE(x.c.afterCommand);
}

TEST(ScriptDialogs, PrintsOneLinePerDialogAndTakesAnswersInOrder) {
    std::ostringstream out;
    ScriptDialogs d(out);
    d.Message("", "two\r\nlines\n");
    d.Queue("cancel");
    d.Queue("OK");
    d.Queue("a.txt|b.txt||c.txt");
    d.Queue("no");
    EXPECT_EQ(d.Ask("T", "Sure?", Buttons::OKCancel, Answer::None), Answer::Cancel);
    EXPECT_EQ(d.Ask("T", "Sure?", Buttons::OKCancel, Answer::None), Answer::OK);
    FileDialogSpec spec;
    spec.title = "Open";
    spec.fileName = "*.abf";
    EXPECT_EQ(d.OpenFileNames(spec),
              (std::vector<std::filesystem::path>{"a.txt", "b.txt", "c.txt"}));
    EXPECT_EQ(d.Ask("Q", "Save?", Buttons::YesNoCancel, Answer::None), Answer::No);
    EXPECT_EQ(out.str(),
              "MESSAGE |two\\nlines\\n\n"
              "QUESTION T|Sure?|cancel\n"
              "QUESTION T|Sure?|OK\n"
              "QUESTION Open|*.abf|a.txt|b.txt||c.txt\n"
              "QUESTION Q|Save?|no\n");
    // Cancel is no answer to a Yes/No question.
    d.Queue("cancel");
    EXPECT_THROW(d.Ask("Q", "Save?", Buttons::YesNo, Answer::None), ScriptError);
    EXPECT_THROW(d.Input("Jump To", "time?", ""), ScriptError);
}

}  // namespace
}  // namespace ardel

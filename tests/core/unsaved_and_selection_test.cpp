// What the window asks about before it drops a table, how the grid's row and the selected event
// stay in agreement, and the once-per-command messages of the redraw hook.
#include <gtest/gtest.h>

#include "core/event_commands.h"
#include "core/forwarding_dialogs.h"
#include "support/scripted_dialogs.h"

namespace ardel {
namespace {

using testing::ScriptedDialogs;

EventTable TableOf(int n) {
    EventTable t;
    for (int i = 1; i <= n; ++i) t.Add().Time = float(i);
    return t;
}

TEST(UnsavedChanges, AnyChangeAfterSavingCountsWhicheverCommandMadeIt) {
    EventTable t = TableOf(3);
    EXPECT_TRUE(t.HasUnsavedChanges());
    t.MarkSaved();
    EXPECT_FALSE(t.HasUnsavedChanges());
    // A rejection in place leaves the old flag set; the table has changed all the same.
    t[2].GroupNumber = kGroupRejected;
    EXPECT_TRUE(t.EventsSaved);
    EXPECT_TRUE(t.HasUnsavedChanges());
    t[2].GroupNumber = 0;  // undone by hand: as saved again
    EXPECT_FALSE(t.HasUnsavedChanges());
    t.SetCount(2);  // a deletion of the last event
    EXPECT_TRUE(t.HasUnsavedChanges());
    t.SetCount(0);  // nothing left to save
    EXPECT_FALSE(t.HasUnsavedChanges());
}

TEST(UnsavedChanges, ClosingAndOpeningAskOnlyWhereTheOldFlagDoesNot) {
    Session s;
    s.Label11 = "cell1.abf";
    s.events = TableOf(2);
    s.events.MarkSaved();
    ScriptedDialogs ui;
    EXPECT_TRUE(QueryUnsavedEventsOnExit(s, ui));
    EXPECT_TRUE(QueryUnsavedEventsBeforeOpen(s, ui));

    s.events[1].GroupNumber = kGroupRejected;
    ui.ExpectAsk("Save Previous Event Data",
                 "There are 2 events analysed for cell1.abf.  Do you want to save the event "
                 "data?",
                 Answer::Cancel);
    EXPECT_FALSE(QueryUnsavedEventsOnExit(s, ui));
    ui.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No);
    EXPECT_TRUE(QueryUnsavedEventsBeforeOpen(s, ui));
    EXPECT_TRUE(ui.Done());

    // With the flag clear the open asks by itself: no question here.
    UpdateTDBGrid(s.events);
    EXPECT_TRUE(QueryUnsavedEventsBeforeOpen(s, ui));
}

TEST(GridAgreementTest, TheGridRowIsAlwaysTheSelectedEvent) {
    EventTable t = TableOf(120);
    GridAgreement last;
    // Y 100: both on 100.
    t.CurrentEvent = 100;
    t.GridCurrentRow = 100;
    EXPECT_EQ(AgreeGridRow(t, last), 100);
    // K: the selection moves to 99 and the grid's row goes with it.
    t.SetCount(119);
    t.CurrentEvent = 99;
    EXPECT_EQ(AgreeGridRow(t, last), 99);
    EXPECT_EQ(t.GridCurrentRow, 99);
    // A scan that ends with the grid on its new last event selects that event.
    t.Add();
    t.GridCurrentRow = 120;
    EXPECT_EQ(AgreeGridRow(t, last), 120);
    EXPECT_EQ(t.CurrentEvent, 120);
    // No selection, or one beyond the table: no row.
    t.CurrentEvent = 0;
    EXPECT_EQ(AgreeGridRow(t, last), 0);
    t.CurrentEvent = 500;
    EXPECT_EQ(AgreeGridRow(t, last), 0);
    EXPECT_EQ(t.CurrentEvent, 500);
}

TEST(OncePerCommandMessagesTest, EachMessageOnceUntilTheNextCommand) {
    ScriptedDialogs inner;
    OncePerCommandMessages once(inner);
    inner.ExpectMessage("Digital Filter", "cut-off").ExpectMessage("Other", "text");
    for (int screen = 0; screen < 50; ++screen) once.Message("Digital Filter", "cut-off");
    once.Message("Other", "text");
    EXPECT_TRUE(inner.Done());
    once.NewCommand();
    inner.ExpectMessage("Digital Filter", "cut-off");
    once.Message("Digital Filter", "cut-off");
    once.Message("Digital Filter", "cut-off");
    EXPECT_TRUE(inner.Done());
    // Questions are never held back.
    inner.ExpectAsk("Q", "q?", Answer::Yes).ExpectAsk("Q", "q?", Answer::No);
    EXPECT_EQ(once.Ask("Q", "q?", Buttons::YesNo, Answer::None), Answer::Yes);
    EXPECT_EQ(once.Ask("Q", "q?", Buttons::YesNo, Answer::None), Answer::No);
}

}  // namespace
}  // namespace ardel

#include "view/navigation.h"

#include <gtest/gtest.h>

#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

// 40 Blocks (1024 ms) at 4 Blocks a screen.
struct NavRig : ViewRig {
    NavRig() : ViewRig({Ramp(256 * 40)}) {}
    double ptr() const { return s.recording.header.lDataSectionPtr; }
    double& block() { return s.recording.ScreenBlock; }

    // Table order is not time order; event 4 has the time of event 2, event 5 lies past the
    // recording's end (1024 ms).
    void AddFiveEvents() {
        const double points[] = {3000, 1000, 2000, 1000, 20000};
        const std::uint8_t groups[] = {3, 0, 3, 5, 3};
        for (int k = 0; k < 5; ++k) AddEvent(points[k], groups[k]);
    }
};

const std::string kTimePrompt = "Please specify the time to jump to in milli second.";
const std::string kEventPrompt = "Please specify the event number to jump to.";

TEST(Navigation, ScreenMovesAndTheirEdges) {
    NavRig rig;
    const double ptr = rig.ptr();
    JumpToPrevScreen(rig.s);
    EXPECT_EQ(rig.block(), ptr);
    JumpToNextScreen(rig.s);
    EXPECT_EQ(rig.block(), ptr + 4);

    // The last-screen rule leaves out the data section's start.
    JumpToLastScreen(rig.s);
    EXPECT_EQ(rig.block(), 40);
    JumpToFirstScreen(rig.s);
    EXPECT_EQ(rig.block(), ptr);

    // Next may reach exactly the end; beyond it the position stays but the screen is redrawn.
    rig.block() = ptr + 36;
    JumpToNextScreen(rig.s);
    EXPECT_EQ(rig.block(), ptr + 40);
    const int before = rig.displays;
    JumpToNextScreen(rig.s);
    EXPECT_EQ(rig.block(), ptr + 40);
    EXPECT_EQ(rig.displays, before + 1);

    Session closed;
    JumpToNextScreen(closed);
    EXPECT_EQ(closed.recording.ScreenBlock, 0);
}

TEST(Navigation, TableOrderMovesSelectShowAndMarkTheEvent) {
    NavRig rig;
    JumpToNextEvent(rig.s);  // no events: nothing
    EXPECT_EQ(rig.displays, 0);
    rig.AddFiveEvents();

    JumpToNextEvent(rig.s);  // from nothing selected to event 1
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    EXPECT_EQ(rig.s.events.GridCurrentRow, 1);
    EXPECT_EQ(rig.s.display.SelectedEvent, 1);
    // 300 ms less the 6 ms baseline lead: Block 11.48, so the screen starts at Block 11.
    EXPECT_EQ(rig.block(), rig.ptr() + 11);
    EXPECT_EQ(rig.displays, 1);

    JumpToPrevEvent(rig.s);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    JumpToLastEvent(rig.s);
    JumpToNextEvent(rig.s);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);
    EXPECT_EQ(rig.s.events.GridCurrentRow, 5);
    JumpToFirstEvent(rig.s);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
}

TEST(Navigation, TimeOrderMovesWhateverTheTableOrder) {
    NavRig rig;
    rig.AddFiveEvents();
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToFirstEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 2);  // the first of the two earliest

    // Nothing earlier: the event stays selected and is shown again.
    const int before = rig.displays;
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToPrevEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 2);
    EXPECT_EQ(rig.displays, before + 1);

    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 3);  // event 4 has the same time as 2: not later
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    // Event 5 lies beyond the recording's duration, where the search starts.
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);

    Navigate(rig.s, rig.quiet, NavigationItem::JumpToLastEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToPrevEventInSequence);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
}

TEST(Navigation, GroupedMovesFollowTheNavigateBox) {
    NavRig rig;
    rig.AddFiveEvents();
    rig.s.options.GroupNavigate = "3";
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToFirstGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 3);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToPrevGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToPrevGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToLastGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);

    rig.s.options.GroupNavigate = "5 (paired)";  // the box's number is its numeric prefix
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToPrevGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 4);

    // A group that no event has: nothing at all happens.
    rig.s.options.GroupNavigate = "9";
    const double block = rig.block();
    const int before = rig.displays;
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextGroupedEvent);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToFirstGroupedEvent);
    EXPECT_EQ(rig.s.events.CurrentEvent, 4);
    EXPECT_EQ(rig.block(), block);
    EXPECT_EQ(rig.displays, before);
}

TEST(Navigation, NextEventInNextWindowSkipsToTheEarliestBeyondTheScreen) {
    NavRig rig;
    rig.AddFiveEvents();  // the first screen holds points 0..1023: event 2 and 4 are on it
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInNextWindow);
    EXPECT_EQ(rig.s.events.CurrentEvent, 3);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInNextWindow);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInNextWindow);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);
    const int before = rig.displays;
    Navigate(rig.s, rig.quiet, NavigationItem::JumpToNextEventInNextWindow);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);
    EXPECT_EQ(rig.displays, before);
}

TEST(Navigation, TimeJumpsAndTheirAnswers) {
    NavRig rig;
    const double ptr = rig.ptr();
    ScriptedDialogs ui;
    ui.ExpectInput("Jump To", kTimePrompt, "")
        .ExpectInput("Jump To", kTimePrompt, std::nullopt)
        .ExpectInput("Jump To", kTimePrompt, "12x")
        .ExpectInput("Jump To", kTimePrompt, " 250 ");
    for (int k = 0; k < 3; ++k) JumpToSpecificTime(rig.s, ui);
    EXPECT_EQ(rig.displays, 0);
    EXPECT_EQ(rig.block(), ptr);
    JumpToSpecificTime(rig.s, ui);  // 250 ms = 9.77 Blocks
    EXPECT_EQ(rig.block(), ptr + 9);
    EXPECT_EQ(rig.displays, 1);

    rig.s.options.JumpInterval = "100";  // 3.9 Blocks
    JumpToNextTimeInterval(rig.s);
    EXPECT_EQ(rig.block(), ptr + 12);
    // Not beyond TotalBlocks, which counts without the data section's start.
    rig.s.options.JumpInterval = "1000";
    JumpToNextTimeInterval(rig.s);
    EXPECT_EQ(rig.block(), 40);
}

TEST(Navigation, EventNumberIsAskedOnlyWithEventsAndClamped) {
    NavRig rig;
    ScriptedDialogs ui;
    JumpToEventNumber(rig.s, ui);  // no events: no question
    rig.AddFiveEvents();
    ui.ExpectInput("Jump To Event Number", kEventPrompt, "")
        .ExpectInput("Jump To Event Number", kEventPrompt, "two")
        .ExpectInput("Jump To Event Number", kEventPrompt, "2.5")
        .ExpectInput("Jump To Event Number", kEventPrompt, "99")
        .ExpectInput("Jump To Event Number", kEventPrompt, "-4");
    JumpToEventNumber(rig.s, ui);
    JumpToEventNumber(rig.s, ui);
    EXPECT_EQ(rig.s.events.CurrentEvent, 0);
    EXPECT_EQ(rig.displays, 0);
    JumpToEventNumber(rig.s, ui);
    EXPECT_EQ(rig.s.events.CurrentEvent, 2);  // halves to even
    EXPECT_EQ(rig.s.events.GridCurrentRow, 2);
    JumpToEventNumber(rig.s, ui);
    EXPECT_EQ(rig.s.events.CurrentEvent, 5);
    JumpToEventNumber(rig.s, ui);
    EXPECT_EQ(rig.s.events.CurrentEvent, 1);
}

TEST(Navigation, EveryMenuCaptionsKeyRunsItsItem) {
    int separators = 0;
    for (int i = 1; i <= kNavigationItemCount; ++i) {
        const auto item = NavigationItem(i);
        const std::string caption(NavigationCaption(item));
        if (IsSeparator(item)) {
            ++separators;
            EXPECT_EQ(caption, "-");
            continue;
        }
        SCOPED_TRACE(caption);
        ASSERT_EQ(caption.back(), ')');
        const auto open = caption.rfind('(');
        const std::string key = caption.substr(open + 1, caption.size() - open - 2);
        const KeyBinding b = key == "CTL-T" ? BindingForKey(Key::T, true)
                                            : BindingForKey(KeyFromChar(key[0]), false);
        EXPECT_EQ(b, (KeyBinding{KeyCommand::Navigate, item}));
    }
    EXPECT_EQ(separators, 4);
    EXPECT_EQ(NavigationCaption(NavigationItem::JumpToPrevScreen), "Jump to Prev. Screen    (S)");
    EXPECT_EQ(BindingForKey(Key::F8, false).item, NavigationItem::JumpToLastScreen);
    EXPECT_EQ(BindingForKey(KeyFromChar('a'), true).command, KeyCommand::None);
    EXPECT_EQ(BindingForKey(Key::F12, false).command, KeyCommand::Command4);
    EXPECT_EQ(BindingForKey(KeyFromChar('k'), false).command, KeyCommand::DeletEvent);
    EXPECT_EQ(BindingForKey(KeyFromChar('L'), false).command, KeyCommand::DoublePeak);
    EXPECT_EQ(KeyFromChar('G'), Key::None);
}

TEST(Navigation, DisplayKeysStepOffsetAndGainOfTheActiveChannel) {
    NavRig rig;
    EXPECT_TRUE(RunViewKey(rig.s, rig.quiet, BindingForKey(Key::PageUp, false)));
    EXPECT_EQ(rig.s.display.DisplayOffset[0], kDisplayOffsetStep);
    RunViewKey(rig.s, rig.quiet, BindingForKey(Key::PageDown, false));
    RunViewKey(rig.s, rig.quiet, BindingForKey(Key::PageDown, false));
    EXPECT_EQ(rig.s.display.DisplayOffset[0], -kDisplayOffsetStep);
    RunViewKey(rig.s, rig.quiet, BindingForKey(Key::Home, false));
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 2.0f);
    rig.s.display.DisplayGain[0] = 0.0015f;
    RunViewKey(rig.s, rig.quiet, BindingForKey(Key::End, false));
    EXPECT_FLOAT_EQ(rig.s.display.DisplayGain[0], 0.001f);
    EXPECT_EQ(rig.displays, 5);
    // Edits and analysis are the window's to run.
    EXPECT_FALSE(RunViewKey(rig.s, rig.quiet, BindingForKey(Key::J, false)));

    const auto help = ShortcutHelpText();
    ASSERT_EQ(help.size(), 15u);
    // The kept behaviours of F9 and F11 are told, as is the batch's fresh table per file.
    EXPECT_NE(help[12].detail.find("press F9, then F11"), std::string::npos);
    EXPECT_NE(help[12].detail.find("twice"), std::string::npos);
    EXPECT_NE(help[14].detail.find("empty table"), std::string::npos);
    EXPECT_EQ(NavigationKeyText(NavigationItem::JumpToFirstScreen), "A, F5");
    EXPECT_EQ(NavigationKeyText(NavigationItem::JumpToNextTimeInterval), "Ctrl+T");
    EXPECT_EQ(NavigationKeyText(NavigationItem::JumpToEventNumber), "Y");
    EXPECT_EQ(NavigationKeyText(NavigationItem::Separator5), "");
    EXPECT_EQ(help[7].caption, "Increase display offset   (Page Up)");
    EXPECT_EQ(help[10].caption, "Decrease display gain    (End)");
}

}  // namespace
}  // namespace ardel::testing

// Moving through the recording: screens, events in table order, in time order and by group,
// time jumps; the menu of these moves, the key table of the main window and the shortcut help.
// Every move ends in Display; an event move also makes the event the grid's current row and
// marks it (PlotSelected).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The items of menu_Navigates, numbered as the menu lists them; 5, 11, 16 and 21 are
// separators.
enum class NavigationItem : int {
    JumpToFirstScreen = 1,
    JumpToPrevScreen = 2,
    JumpToNextScreen = 3,
    JumpToLastScreen = 4,
    Separator5 = 5,
    JumpToFirstEvent = 6,
    JumpToPrevEvent = 7,
    JumpToNextEvent = 8,
    JumpToLastEvent = 9,
    JumpToNextEventInNextWindow = 10,
    Separator11 = 11,
    JumpToFirstEventInSequence = 12,
    JumpToPrevEventInSequence = 13,
    JumpToNextEventInSequence = 14,
    JumpToLastEventInSequence = 15,
    Separator16 = 16,
    JumpToFirstGroupedEvent = 17,
    JumpToPrevGroupedEvent = 18,
    JumpToNextGroupedEvent = 19,
    JumpToLastGroupedEvent = 20,
    Separator21 = 21,
    JumpToSpecificTime = 22,
    JumpToNextTimeInterval = 23,
    JumpToEventNumber = 24,
};
inline constexpr int kNavigationItemCount = 24;

bool IsSeparator(NavigationItem item);
// The menu caption, with the key in brackets; "-" for a separator.
std::string_view NavigationCaption(NavigationItem item);
// The keys of an item as the menu shows them beside its caption ("A, F5", "Ctrl+T"); empty
// for a separator.
std::string NavigationKeyText(NavigationItem item);

// Runs a menu item (or the key that stands for it). Separators do nothing.
void Navigate(Session& s, UserDialogs& ui, NavigationItem item);

// Screens. Nothing without an open file.
void JumpToFirstScreen(Session& s);
// ScreenBlock := TotalBlocks, without the data section's start: the last-screen rule as it
// has always been.
void JumpToLastScreen(Session& s);
void JumpToPrevScreen(Session& s);
// At the last screen the position stays, but the screen is redrawn all the same.
void JumpToNextScreen(Session& s);

// Events in table order, clamped to 1..EventCount. Nothing without events.
void JumpToFirstEvent(Session& s);
void JumpToPrevEvent(Session& s);
void JumpToNextEvent(Session& s);
void JumpToLastEvent(Session& s);
// The earliest event (by Time) that lies at or beyond the end of the current screen, so
// that empty stretches are skipped; nothing when there is none.
void JumpToNextEventInNextWindow(Session& s);

// Events in time order, whatever the table's order. When there is no earlier (later) event
// the selection stays and is shown again. The search for the next one starts from the
// recording's total duration, so an event past it is never reached this way.
void JumpToFirstEventInSequence(Session& s);
void JumpToPrevEventInSequence(Session& s);
void JumpToNextEventInSequence(Session& s);
void JumpToLastEventInSequence(Session& s);

// Events of the group in the "1234" navigate box (options.GroupNavigate). When none is found
// nothing happens.
void JumpToFirstGroupedEvent(Session& s);
void JumpToPrevGroupedEvent(Session& s);
void JumpToNextGroupedEvent(Session& s);
void JumpToLastGroupedEvent(Session& s);

// T: asks for a time; an empty answer or one that is no number does nothing.
void JumpToSpecificTime(Session& s, UserDialogs& ui);
// Ctrl+T: forward by options.JumpInterval milliseconds, not beyond TotalBlocks.
void JumpToNextTimeInterval(Session& s);
// Y: asks for an event number; an empty answer or one that is no number does nothing.
void JumpToEventNumber(Session& s, UserDialogs& ui);

// The end of every event move: event n becomes current and the grid's current row, the
// screen that shows it from its baseline window on is loaded, and it is marked.
void MoveToEvent(Session& s, std::int32_t n);

// Page Up / Page Down move the active channel's trace up or down by kDisplayOffsetStep
// picture units (a sixteenth of the height); Home / End double or halve its gain within
// 0.001 .. 1000. Nothing without an open file.
inline constexpr std::int32_t kDisplayOffsetStep = 4096;
void IncreaseDisplayOffset(Session& s);
void DecreaseDisplayOffset(Session& s);
void IncreaseDisplayGain(Session& s);
void DecreaseDisplayGain(Session& s);

// The keys of the main window that mean something. Letters and digits are given as
// characters (either case); the others by name.
// clang-format off
enum class Key {
    None,
    A, S, D, F, Z, X, C, V, B, Q, W, E, R, T, Y,  // moves
    J, K, I, U, M, N, L,                          // event edits
    Digit1, Digit2, Digit3, Digit4,
    F3, F5, F6, F7, F8, F9, F10, F11, F12,
    PageUp, PageDown, Home, End,
};
// clang-format on
// Key::None for a character that has no command.
Key KeyFromChar(char c);

enum class KeyCommand {
    None,
    Navigate,               // KeyBinding::item names the move
    RejectThisEvent,        // J: menu_RejectThisEvent
    DeletEvent,             // K: menu_DeletEvent
    RecalculatePeak,        // I: menu_RecalculatePeak
    Unmark,                 // U: menu_Unmark, then Display
    MarkAllWindow,          // M: menu_MarkAllWindow
    MarkAllEvents,          // N: menu_MarkAllEvents
    DoublePeak,             // L: menu_DoublePeak_Click
    AnalyseGp,              // F3: menu_AnalyseGp
    Command1,               // F9
    Command2,               // F10
    Command3,               // F11
    Command4,               // F12
    IncreaseDisplayOffset,  // Page Up
    DecreaseDisplayOffset,  // Page Down
    IncreaseDisplayGain,    // Home
    DecreaseDisplayGain,    // End
};

struct KeyBinding {
    KeyCommand command = KeyCommand::None;
    NavigationItem item = NavigationItem::Separator5;  // for KeyCommand::Navigate
    bool operator==(const KeyBinding&) const = default;
};

// The command of a key. With Ctrl held only T means something (the next time interval), so
// that the window's own Ctrl shortcuts keep working.
KeyBinding BindingForKey(Key key, bool ctrl);

// Runs the bindings that belong to the trace view (moves and the display offset and gain
// steps) and returns true; returns false for the others, which the window runs.
bool RunViewKey(Session& s, UserDialogs& ui, const KeyBinding& binding);

// menu_ShortCuts: the mouse actions on the trace and the display keys, each caption as the
// menu shows it, with what it does here.
struct ShortcutHelpEntry {
    std::string caption;
    std::string detail;
};
std::vector<ShortcutHelpEntry> ShortcutHelpText();

}  // namespace ardel

#include "view/navigation.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <optional>

#include "core/event_commands.h"
#include "core/number_text.h"
#include "view/trace_scene.h"

namespace ardel {

namespace {

bool HasEvents(const Session& s) {
    return s.recording.FileIsOpen && s.events.EventCount() > 0;
}

std::int32_t ClampEvent(const Session& s, std::int64_t n) {
    return std::int32_t(std::clamp<std::int64_t>(n, 1, s.events.EventCount()));
}

// Time of the selected event; slot 0 (nothing selected) reads as a zero record.
float CurrentTime(const Session& s) {
    std::int32_t n = std::clamp(s.events.CurrentEvent, 0, s.events.EventCount());
    return s.events[n].Time;
}

// A text that converts to a number as a whole: blanks around it, an optional sign, digits
// with at most one decimal point, an optional exponent. The input boxes of the jumps skip
// anything else.
std::optional<double> NumberOf(std::string_view text) {
    const std::string t = Trim(text);
    std::size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    std::size_t digits = 0;
    while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++digits;
    }
    if (digits == 0) return std::nullopt;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E' || t[i] == 'd' || t[i] == 'D')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        std::size_t exponent = 0;
        while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) ++i, ++exponent;
        if (exponent == 0) return std::nullopt;
    }
    if (i != t.size()) return std::nullopt;
    const double v = Val(t);
    if (!std::isfinite(v)) return std::nullopt;
    return v;
}

// The first event of the group in the navigate box among first, first+step, ... up to last.
void FindGrouped(Session& s, std::int64_t first, std::int64_t last, int step) {
    if (!HasEvents(s)) return;
    const std::int64_t count = s.events.EventCount();
    first = std::clamp<std::int64_t>(first, 0, count + 1);
    const double g = Val(s.options.GroupNavigate);
    for (std::int64_t n = first; step > 0 ? n <= last : n >= last; n += step) {
        if (n < 1 || n > count) continue;
        if (double(s.events[std::int32_t(n)].GroupNumber) == g) {
            MoveToEvent(s, std::int32_t(n));
            return;
        }
    }
}

// Ends a move in time order: the found event, or the selection as it stands.
void MoveToFoundOrStay(Session& s, std::int32_t found) {
    if (found > 0) {
        MoveToEvent(s, found);
        return;
    }
    const std::int32_t n = s.events.CurrentEvent;
    if (n >= 1 && n <= s.events.EventCount()) MoveToEvent(s, n);
}

constexpr std::array<std::string_view, kNavigationItemCount + 1> kCaptions{
    "",
    "Jump to First Screen     (A)",
    "Jump to Prev. Screen    (S)",
    "Jump to Next Screen     (D)",
    "Jump to Last Screen      (F)",
    "-",
    "Jump to First Event     (Z)",
    "Jump to Prev. Event    (X)",
    "Jump to Next Event     (C)",
    "Jump to Last Event      (V)",
    "Jump to Next Event in Next Window (B)",
    "-",
    "Jump to First Event in Sequence   (Q)",
    "Jump to Prev. Event in Sequence  (W)",
    "Jump to Next Event in Sequence   (E)",
    "Jump to Last Event in Sequence    (R)",
    "-",
    "Jump to First Grouped Event     (1)",
    "Jump to Prev. Grouped Event    (2)",
    "Jump to Next Grouped Event     (3)",
    "Jump to Last Grouped Event      (4)",
    "-",
    "Jump to Specific Time      (T)",
    "Jump to Next Time Interval (CTL-T)",
    "Jump to Event Number       (Y)",
};

}  // namespace

bool IsSeparator(NavigationItem item) {
    const int i = int(item);
    return i == 5 || i == 11 || i == 16 || i == 21;
}

std::string_view NavigationCaption(NavigationItem item) {
    const int i = int(item);
    if (i < 1 || i > kNavigationItemCount) return {};
    return kCaptions[std::size_t(i)];
}

std::string NavigationKeyText(NavigationItem item) {
    const std::string_view caption = NavigationCaption(item);
    const auto open = caption.rfind('(');
    const auto close = caption.rfind(')');
    if (IsSeparator(item) || open == std::string_view::npos || close < open) return {};
    std::string key(caption.substr(open + 1, close - open - 1));
    if (key == "CTL-T") return "Ctrl+T";
    // The screen moves have a function key too.
    const int i = int(item);
    if (i >= 1 && i <= 4) key += ", F" + std::to_string(4 + i);
    return key;
}

void MoveToEvent(Session& s, std::int32_t n) {
    if (!HasEvents(s) || n < 1 || n > s.events.EventCount()) return;
    s.events.CurrentEvent = n;
    s.events.GridCurrentRow = n;
    s.recording.ScreenBlock = ScreenBlockForEvent(s, n);
    Display(s);
    PlotSelected(s);
}

// ---- Screens -------------------------------------------------------------------------------

void JumpToFirstScreen(Session& s) {
    if (!s.recording.FileIsOpen) return;
    s.recording.ScreenBlock = s.recording.header.lDataSectionPtr;
    Display(s);
}

void JumpToLastScreen(Session& s) {
    if (!s.recording.FileIsOpen) return;
    s.recording.ScreenBlock = s.recording.TotalBlocks;
    Display(s);
}

void JumpToPrevScreen(Session& s) {
    Recording& r = s.recording;
    if (!r.FileIsOpen) return;
    r.ScreenBlock =
        std::max(r.ScreenBlock - double(r.BlocksPerScreen), double(r.header.lDataSectionPtr));
    Display(s);
}

void JumpToNextScreen(Session& s) {
    Recording& r = s.recording;
    if (!r.FileIsOpen) return;
    const double next = r.ScreenBlock + double(r.BlocksPerScreen);
    if (next <= double(r.header.lDataSectionPtr) + double(r.TotalBlocks)) r.ScreenBlock = next;
    Display(s);
}

// ---- Events in table order -----------------------------------------------------------------

void JumpToFirstEvent(Session& s) {
    if (HasEvents(s)) MoveToEvent(s, 1);
}

void JumpToPrevEvent(Session& s) {
    if (HasEvents(s)) MoveToEvent(s, ClampEvent(s, std::int64_t(s.events.CurrentEvent) - 1));
}

void JumpToNextEvent(Session& s) {
    if (HasEvents(s)) MoveToEvent(s, ClampEvent(s, std::int64_t(s.events.CurrentEvent) + 1));
}

void JumpToLastEvent(Session& s) {
    if (HasEvents(s)) MoveToEvent(s, s.events.EventCount());
}

void JumpToNextEventInNextWindow(Session& s) {
    if (!HasEvents(s)) return;
    const Recording& r = s.recording;
    const std::int32_t n = r.ScreenPoints();
    std::int32_t found = 0;
    float best = 0;
    for (std::int32_t k = 1; k <= s.events.EventCount(); ++k) {
        const float t = s.events[k].Time;
        const auto x = r.CalculateTimeBit(t);
        if (!x || *x < n) continue;
        if (found == 0 || t < best) {
            found = k;
            best = t;
        }
    }
    if (found > 0) MoveToEvent(s, found);
}

// ---- Events in time order ------------------------------------------------------------------

void JumpToFirstEventInSequence(Session& s) {
    if (!HasEvents(s)) return;
    std::int32_t found = 1;
    for (std::int32_t k = 2; k <= s.events.EventCount(); ++k)
        if (s.events[k].Time < s.events[found].Time) found = k;
    MoveToEvent(s, found);
}

void JumpToPrevEventInSequence(Session& s) {
    if (!HasEvents(s)) return;
    const float current = CurrentTime(s);
    std::int32_t found = 0;
    for (std::int32_t k = 1; k <= s.events.EventCount(); ++k) {
        const float t = s.events[k].Time;
        if (t < current && (found == 0 || t > s.events[found].Time)) found = k;
    }
    MoveToFoundOrStay(s, found);
}

void JumpToNextEventInSequence(Session& s) {
    if (!HasEvents(s)) return;
    const float current = CurrentTime(s);
    // The search starts from the recording's total duration: only an event before it can be
    // the next one.
    double best =
        double(s.recording.SampleInterval) * double(s.recording.header.lActualAcqLength) / 1000.0;
    std::int32_t found = 0;
    for (std::int32_t k = 1; k <= s.events.EventCount(); ++k) {
        const float t = s.events[k].Time;
        if (t > current && double(t) < best) {
            best = t;
            found = k;
        }
    }
    MoveToFoundOrStay(s, found);
}

void JumpToLastEventInSequence(Session& s) {
    if (!HasEvents(s)) return;
    std::int32_t found = 1;
    for (std::int32_t k = 2; k <= s.events.EventCount(); ++k)
        if (s.events[k].Time > s.events[found].Time) found = k;
    MoveToEvent(s, found);
}

// ---- Grouped events ------------------------------------------------------------------------

void JumpToFirstGroupedEvent(Session& s) {
    FindGrouped(s, 1, s.events.EventCount(), 1);
}

void JumpToPrevGroupedEvent(Session& s) {
    FindGrouped(s, std::int64_t(s.events.CurrentEvent) - 1, 1, -1);
}

void JumpToNextGroupedEvent(Session& s) {
    FindGrouped(s, std::int64_t(s.events.CurrentEvent) + 1, s.events.EventCount(), 1);
}

void JumpToLastGroupedEvent(Session& s) {
    FindGrouped(s, s.events.EventCount(), 1, -1);
}

// ---- Time jumps ----------------------------------------------------------------------------

void JumpToSpecificTime(Session& s, UserDialogs& ui) {
    Recording& r = s.recording;
    if (!r.FileIsOpen) return;
    const std::string answer =
        ui.InputText("Jump To", "Please specify the time to jump to in milli second.", "");
    if (answer.empty()) return;
    const auto ms = NumberOf(answer);
    if (!ms) return;
    const double blocks = Int(*ms * 1000.0 / double(r.SampleInterval) / 256.0);
    if (!std::isfinite(blocks)) return;
    r.ScreenBlock = double(r.header.lDataSectionPtr) + blocks;
    Display(s);
}

void JumpToNextTimeInterval(Session& s) {
    Recording& r = s.recording;
    if (!r.FileIsOpen) return;
    const double step =
        Int(Val(s.options.JumpInterval) * 1000.0 / double(r.SampleInterval) / 256.0);
    if (!std::isfinite(step)) return;
    r.ScreenBlock = std::min(r.ScreenBlock + step, double(r.TotalBlocks));
    Display(s);
}

void JumpToEventNumber(Session& s, UserDialogs& ui) {
    if (!HasEvents(s)) return;
    const std::string answer =
        ui.InputText("Jump To Event Number", "Please specify the event number to jump to.", "");
    if (answer.empty()) return;
    const auto number = NumberOf(answer);
    if (!number) return;
    MoveToEvent(s, ClampEvent(s, ToInt32Clamped(RoundHalfEven(*number))));
}

void Navigate(Session& s, UserDialogs& ui, NavigationItem item) {
    using I = NavigationItem;
    switch (item) {
        case I::JumpToFirstScreen:
            return JumpToFirstScreen(s);
        case I::JumpToPrevScreen:
            return JumpToPrevScreen(s);
        case I::JumpToNextScreen:
            return JumpToNextScreen(s);
        case I::JumpToLastScreen:
            return JumpToLastScreen(s);
        case I::JumpToFirstEvent:
            return JumpToFirstEvent(s);
        case I::JumpToPrevEvent:
            return JumpToPrevEvent(s);
        case I::JumpToNextEvent:
            return JumpToNextEvent(s);
        case I::JumpToLastEvent:
            return JumpToLastEvent(s);
        case I::JumpToNextEventInNextWindow:
            return JumpToNextEventInNextWindow(s);
        case I::JumpToFirstEventInSequence:
            return JumpToFirstEventInSequence(s);
        case I::JumpToPrevEventInSequence:
            return JumpToPrevEventInSequence(s);
        case I::JumpToNextEventInSequence:
            return JumpToNextEventInSequence(s);
        case I::JumpToLastEventInSequence:
            return JumpToLastEventInSequence(s);
        case I::JumpToFirstGroupedEvent:
            return JumpToFirstGroupedEvent(s);
        case I::JumpToPrevGroupedEvent:
            return JumpToPrevGroupedEvent(s);
        case I::JumpToNextGroupedEvent:
            return JumpToNextGroupedEvent(s);
        case I::JumpToLastGroupedEvent:
            return JumpToLastGroupedEvent(s);
        case I::JumpToSpecificTime:
            return JumpToSpecificTime(s, ui);
        case I::JumpToNextTimeInterval:
            return JumpToNextTimeInterval(s);
        case I::JumpToEventNumber:
            return JumpToEventNumber(s, ui);
        case I::Separator5:
        case I::Separator11:
        case I::Separator16:
        case I::Separator21:
            return;
    }
}

// ---- Display offset and gain ---------------------------------------------------------------

namespace {
void StepOffset(Session& s, std::int32_t by) {
    if (!s.recording.FileIsOpen) return;
    const int c = std::min<int>(s.recording.ChannelIndex, 15);
    SetDisplayOffset(s, ToInt32Clamped(double(s.display.DisplayOffset[std::size_t(c)]) + by));
}
}  // namespace

void IncreaseDisplayOffset(Session& s) {
    StepOffset(s, kDisplayOffsetStep);
}
void DecreaseDisplayOffset(Session& s) {
    StepOffset(s, -kDisplayOffsetStep);
}

void IncreaseDisplayGain(Session& s) {
    if (s.recording.FileIsOpen) StepDisplayGain(s, 1);
}
void DecreaseDisplayGain(Session& s) {
    if (s.recording.FileIsOpen) StepDisplayGain(s, -1);
}

// ---- Keys ----------------------------------------------------------------------------------

Key KeyFromChar(char c) {
    // The characters in the order of the Key enumeration, from Key::A on.
    constexpr std::string_view kChars = "ASDFZXCVBQWERTYJKIUMNL1234";
    const auto at = kChars.find(char(std::toupper(static_cast<unsigned char>(c))));
    return at == std::string_view::npos ? Key::None : Key(int(Key::A) + int(at));
}

KeyBinding BindingForKey(Key key, bool ctrl) {
    using I = NavigationItem;
    using C = KeyCommand;
    auto nav = [](I item) { return KeyBinding{C::Navigate, item}; };
    if (ctrl) return key == Key::T ? nav(I::JumpToNextTimeInterval) : KeyBinding{};
    switch (key) {
        case Key::A:
        case Key::F5:
            return nav(I::JumpToFirstScreen);
        case Key::S:
        case Key::F6:
            return nav(I::JumpToPrevScreen);
        case Key::D:
        case Key::F7:
            return nav(I::JumpToNextScreen);
        case Key::F:
        case Key::F8:
            return nav(I::JumpToLastScreen);
        case Key::Z:
            return nav(I::JumpToFirstEvent);
        case Key::X:
            return nav(I::JumpToPrevEvent);
        case Key::C:
            return nav(I::JumpToNextEvent);
        case Key::V:
            return nav(I::JumpToLastEvent);
        case Key::B:
            return nav(I::JumpToNextEventInNextWindow);
        case Key::Q:
            return nav(I::JumpToFirstEventInSequence);
        case Key::W:
            return nav(I::JumpToPrevEventInSequence);
        case Key::E:
            return nav(I::JumpToNextEventInSequence);
        case Key::R:
            return nav(I::JumpToLastEventInSequence);
        case Key::Digit1:
            return nav(I::JumpToFirstGroupedEvent);
        case Key::Digit2:
            return nav(I::JumpToPrevGroupedEvent);
        case Key::Digit3:
            return nav(I::JumpToNextGroupedEvent);
        case Key::Digit4:
            return nav(I::JumpToLastGroupedEvent);
        case Key::T:
            return nav(I::JumpToSpecificTime);
        case Key::Y:
            return nav(I::JumpToEventNumber);
        case Key::J:
            return {C::RejectThisEvent};
        case Key::K:
            return {C::DeletEvent};
        case Key::I:
            return {C::RecalculatePeak};
        case Key::U:
            return {C::Unmark};
        case Key::M:
            return {C::MarkAllWindow};
        case Key::N:
            return {C::MarkAllEvents};
        case Key::L:
            return {C::DoublePeak};
        case Key::F3:
            return {C::AnalyseGp};
        case Key::F9:
            return {C::Command1};
        case Key::F10:
            return {C::Command2};
        case Key::F11:
            return {C::Command3};
        case Key::F12:
            return {C::Command4};
        case Key::PageUp:
            return {C::IncreaseDisplayOffset};
        case Key::PageDown:
            return {C::DecreaseDisplayOffset};
        case Key::Home:
            return {C::IncreaseDisplayGain};
        case Key::End:
            return {C::DecreaseDisplayGain};
        case Key::None:
            return {};
    }
    return {};
}

bool RunViewKey(Session& s, UserDialogs& ui, const KeyBinding& binding) {
    switch (binding.command) {
        case KeyCommand::Navigate:
            Navigate(s, ui, binding.item);
            return true;
        case KeyCommand::IncreaseDisplayOffset:
            IncreaseDisplayOffset(s);
            return true;
        case KeyCommand::DecreaseDisplayOffset:
            DecreaseDisplayOffset(s);
            return true;
        case KeyCommand::IncreaseDisplayGain:
            IncreaseDisplayGain(s);
            return true;
        case KeyCommand::DecreaseDisplayGain:
            DecreaseDisplayGain(s);
            return true;
        default:
            return false;
    }
}

std::vector<ShortcutHelpEntry> ShortcutHelpText() {
    return {
        {"Detect an event      (Left mouse click)",
         "Looks for the peak near the click and adds it as an event when it passes the "
         "thresholds."},
        {"Recalculate event    (Shift+Left mouse click)",
         "Measures the event under the pointer anew from its time."},
        {"Delete event         (Ctrl+Left mouse click)", "Deletes the event under the pointer."},
        {"Reject an event      (Ctrl+Shift+Left mouse click)",
         "Puts the event under the pointer into group 255 (rejected)."},
        {"Detect a double peak   (Alt+Left mouse click)",
         "Looks for a second peak on the decay of the event under the pointer."},
        {"Detect an event at 1/10th of thresholds  (Ctrl+Alt+Left mouse click)",
         "As a left click, with a tenth of the amplitude and area thresholds."},
        {"Select an event      (Right mouse click)",
         "Selects the event under the pointer and opens the event menu."},
        {"Increase display offset   (Page Up)",
         "Moves the trace of the active channel up by 1/16 of the picture's height (4096 "
         "display units)."},
        {"Decrease display offset   (Page Down)",
         "Moves the trace of the active channel down by 1/16 of the picture's height (4096 "
         "display units)."},
        {"Increase display gain     (Home)",
         "Doubles the display gain of the active channel, up to 1000."},
        {"Decrease display gain    (End)",
         "Halves the display gain of the active channel, down to 0.001."},
        {"All keys of the main window",
         "A or F5 first screen, S or F6 previous, D or F7 next, F or F8 last screen.\n"
         "Z, X, C, V: first, previous, next, last event in table order; B: the first event "
         "beyond this screen.\n"
         "Q, W, E, R: first, previous, next, last event in time order.\n"
         "1, 2, 3, 4: first, previous, next, last event of the group set under Options.\n"
         "T: jump to a time; Ctrl+T: on by the interval set under Options; Y: jump to an "
         "event number.\n"
         "J reject, K delete, I recalculate, L double peak: the selected event.\n"
         "F9 analyse this window, F10 the next window, F11 non-stop to the end, F12 "
         "interrupt.\n"
         "Page Up / Page Down: display offset; Home / End: display gain; F4 auto scale.\n"
         "Ctrl+O open a recording, Ctrl+S save the event file, Ctrl+Q exit.\n"
         "Letters and digits act while the trace, the file list or the grid has the keyboard; "
         "in a text box they are typed."},
        {"Analyse this window and non-stop     (F9, F10, F11)",
         "F9 analyses the screen shown.  F10 moves to the next screen and analyses it.\n"
         "F11 alone starts with the screen after the one shown, so the first screen of a "
         "recording is analysed only when F9 was pressed on it first: press F9, then F11.\n"
         "F9 pressed twice on the same screen records every event of that screen twice; "
         "Remove Duplicates in the event list operations removes the copies."},
        {"Mouse wheel and auto scale     (Wheel, Ctrl+Wheel, F4)",
         "The wheel over the trace moves a screen per notch (up goes back, down goes on); "
         "with Ctrl it doubles or halves the display gain.\n"
         "F4, Display > Auto Scale, or a double click on the blue scale text fits the gain "
         "and offset of the active channel so that the trace shown fills the picture."},
        {"Batch analysis",
         "Every chosen file is analysed from its first screen to its last and saved as NAME.EVT "
         "beside it (NAME: the file's name up to its first \".\").\n"
         "Each file starts from an empty table: events in the table when the batch starts are "
         "offered for saving first, and Cancel ends the batch before it begins.  Files that "
         "would write the same event file are named before the start, and the batch can be "
         "cancelled."},
    };
}

}  // namespace ardel

#include "group/trace_edit.h"

#include <algorithm>

#include "core/number_text.h"
#include "group/group_display.h"

namespace ardel::group {

namespace {

constexpr std::string_view kAverageTrace = "Average Trace";
constexpr std::string_view kRegroupTitle = "Group Number";
constexpr std::string_view kRegroupPrompt = "Please enter the group number to regroup this trace.";

bool ValidTrace(const GroupWindow& w, std::int32_t n) {
    return n >= 0 && n <= w.store.TraceCount && w.store.TraceCount >= 1;
}

// Sets the group of the event trace n came from. Episode traces come from no event (0).
void SetGroup(Session& s, const GroupWindow& w, std::int32_t n, std::uint8_t group) {
    const std::int32_t e = w.store.TraceEvent[std::size_t(n)];
    if (e < 1 || e > s.events.EventCount()) return;
    s.events[e].GroupNumber = group;
    UpdateTDBGrid(s.events);
}

std::string DefaultGroup(const GroupWindow& w) {
    return CStr(Val(w.form.Combo1) + 1);
}

// The two removal paths share this: a message on trace 0, else the event leaves its group.
bool Remove(Session& s, UserDialogs& ui, GroupWindow& w, std::int32_t n) {
    if (!ValidTrace(w, n)) return false;
    if (n == 0) {
        ui.Message(kAverageTrace, "Cannot remove the averaged trace.");
        return false;
    }
    SetGroup(s, w, n, 0);
    StartDisplay(s, ui, w);
    return true;
}

}  // namespace

void ShowTrace(const Session& s, GroupWindow& w, std::int32_t n) {
    w.store.CurrentTrace = n;
    w.form.Label6 = Label6Text(n, w.store.TraceCount);
    GroupDisplay(s, w);
    w.form.lbCursor = CursorReadout(s, w);
}

void menu_trace_remove(Session& s, UserDialogs& ui, GroupWindow& w) {
    Remove(s, ui, w, w.HighlightTrace);
}

void menu_trace_regroup(Session& s, UserDialogs& ui, GroupWindow& w) {
    const std::int32_t n = w.HighlightTrace;
    if (!ValidTrace(w, n)) return;
    if (n == 0) {
        ui.Message(kAverageTrace, "Cannot regroup the averaged trace.");
        return;
    }
    const auto answer = ui.Input(kRegroupTitle, kRegroupPrompt, DefaultGroup(w));
    if (!answer) return;
    const double group = Val(*answer);
    if (group < 0 || group >= 256) return;
    const auto byte = ToUInt8(group);
    if (!byte) return;
    SetGroup(s, w, n, *byte);
    StartDisplay(s, ui, w);
}

void menu_trace_extract(const Session& s, UserDialogs& ui, const GroupWindow& w) {
    const std::int32_t n = w.HighlightTrace;
    if (!ValidTrace(w, n)) return;
    const Recording& r = s.recording;
    std::string text = std::string(kGrpAnalCaption) + "\r";
    const std::int16_t* row = w.store.Row(n);
    for (std::int32_t k = 0; k < w.store.TracePoints; ++k) {
        const float time = float(k * double(r.SampleInterval) / 1000);
        text += Str(time) + "\t" + Str(r.Bit2pA(row[k])) + "\r";
    }
    ui.SetClipboardText(text);
}

void GroupKey(Session& s, UserDialogs& ui, GroupWindow& w, char key) {
    if (!IsIndividualType(w.form.Combo2) || w.store.TraceCount < 1) return;
    TraceStore& store = w.store;
    const std::int32_t current = store.CurrentTrace;
    switch (key) {
        case 'A': ShowTrace(s, w, 0); break;
        case 'S':
            if (current <= 0) {
                ui.Beep();
                break;
            }
            ShowTrace(s, w, current - 1);
            break;
        case 'D': {
            const std::int32_t next = std::min(current + 1, store.TraceCount);
            if (next == store.TraceCount) ui.Beep();
            ShowTrace(s, w, next);
            break;
        }
        case 'F': ShowTrace(s, w, store.TraceCount); break;
        case 'K': {
            if (!Remove(s, ui, w, current)) break;
            const std::int32_t back = std::min(current, store.TraceCount);
            if (back == store.TraceCount) ui.Beep();
            ShowTrace(s, w, back);
            break;
        }
        case 'U': {
            if (current == 0) {
                ui.Message(kAverageTrace, "Cannot regroup the averaged trace.");
                break;
            }
            const auto answer = ui.Input(kRegroupTitle, kRegroupPrompt, DefaultGroup(w));
            if (!answer) break;
            // The key takes the answer as a byte without the menu's range test.
            const auto byte = ToUInt8(Val(*answer));
            if (!byte) {
                ui.RuntimeError("Overflow");
                break;
            }
            SetGroup(s, w, current, *byte);
            StartDisplay(s, ui, w);
            break;
        }
        case 'Y': {
            const std::string answer = ui.InputText(
                "Jump to Trace",
                "Please specify the trace number to jump to (Trace 0 is the average trace).  "
                "Range: 0 to " + CStr(store.TraceCount) + ".",
                CStr(current));
            if (answer.empty()) break;
            const double n = Val(answer);
            if (n < 0 || n > store.TraceCount) break;
            ShowTrace(s, w, std::int32_t(RoundHalfEven(n)));
            break;
        }
        default: break;
    }
}

}  // namespace ardel::group

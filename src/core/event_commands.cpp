#include "core/event_commands.h"

#include <algorithm>

#include "core/event_files.h"
#include "core/number_text.h"

namespace ardel {

void Command5(Session& s, UserDialogs& ui) {
    if (s.events.EventCount() == 0) {
        ClearGrid(s);
        return;
    }
    Answer a = ui.Ask("Confrim Reset",
                      CStr(s.events.EventCount()) +
                          " events analysed.  Are you sure you want to erase the event data?",
                      Buttons::OKCancel, Answer::Cancel);
    if (a == Answer::OK) ClearGrid(s);
}

double ScreenBlockForEvent(const Session& s, std::int32_t n) {
    const Recording& r = s.recording;
    const double t = s.events[n].Time;
    return Int((t * 1000.0 - double(s.params.PeriodStartBaseline)) / double(r.SampleInterval) /
               256.0) +
           r.header.lDataSectionPtr;
}

void SelectEventFromGrid(Session& s, double row) {
    if (!s.recording.FileIsOpen || s.events.EventCount() <= 0) return;
    std::int32_t n = ToInt32Clamped(RoundHalfEven(row));
    if (n < 1) n = 1;
    // A bookmark past the end cannot come from the grid; keep the table safe all the same.
    n = std::min(n, s.events.EventCount());
    s.events.CurrentEvent = n;
    s.recording.ScreenBlock = ScreenBlockForEvent(s, n);
    Display(s);
    PlotSelected(s);
}

bool QueryUnsavedEventsOnExit(Session& s, UserDialogs& ui) {
    if (!s.events.HasUnsavedChanges()) return true;
    const Answer a = ui.Ask("Save Previous Event Data",
                            "There are " + CStr(s.events.EventCount()) + " events analysed for " +
                                s.Label11 + ".  Do you want to save the event data?",
                            Buttons::YesNoCancel);
    if (a == Answer::No) return true;
    if (a == Answer::Yes) return menu_SaveEvent(s, ui);
    return false;
}

bool QueryUnsavedEventsBeforeOpen(Session& s, UserDialogs& ui) {
    if (!s.events.EventsSaved) return true;  // the open asks itself
    return QueryUnsavedEventsOnExit(s, ui);
}

std::int32_t AgreeGridRow(EventTable& t, GridAgreement& last) {
    const std::int32_t count = t.EventCount();
    if (t.CurrentEvent != last.currentEvent) {
        t.GridCurrentRow = t.CurrentEvent;
    } else if (t.GridCurrentRow != last.gridRow && t.GridCurrentRow >= 1 &&
               t.GridCurrentRow <= count) {
        t.CurrentEvent = t.GridCurrentRow;
    }
    const std::int32_t row = t.CurrentEvent >= 1 && t.CurrentEvent <= count ? t.CurrentEvent : 0;
    t.GridCurrentRow = row;
    last = {t.CurrentEvent, t.GridCurrentRow};
    return row;
}

void RedrawSelection(Session& s) {
    Display(s);
    PlotSelected(s);
}

bool ClampSelectedEvent(Session& s) {
    if (!s.recording.FileIsOpen || s.events.EventCount() == 0) return false;
    s.events.CurrentEvent = std::clamp(s.events.CurrentEvent, 1, s.events.EventCount());
    return true;
}

void ScanEachEvent(Session& s, UserDialogs& ui, void (*command)(Session&, UserDialogs&)) {
    if (!ClampSelectedEvent(s)) return;
    s.display.NonStopRunning = true;
    const std::int32_t count = s.events.EventCount();
    for (std::int32_t n = 1; n <= count && s.display.NonStopRunning; ++n) {
        s.events.CurrentEvent = n;
        s.recording.ScreenBlock = ScreenBlockForEvent(s, n);
        Display(s);
        command(s, ui);
        s.events.CurrentEvent = s.events.CurrentEvent + 1;
        ui.Yield();
    }
    UpdateTDBGrid(s.events);
    s.display.NonStopRunning = false;
}

void PlotSelected(Session& s) {
    const std::int32_t n = s.events.CurrentEvent;
    if (!s.recording.FileIsOpen || n < 1 || n > s.events.EventCount()) return;
    s.display.SelectedEvent = n;
}

}  // namespace ardel

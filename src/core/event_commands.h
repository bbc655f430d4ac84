// Commands of the main window on the event table as a whole: reset, selection from the grid.
#pragma once

#include <cstdint>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// "Reset Events": asks before erasing a non-empty table.
void Command5(Session& s, UserDialogs& ui);

// A click or row change in the grid: the event becomes current and its screen is shown.
void SelectEventFromGrid(Session& s, double row);

// The screen that shows event n from its baseline window on: a Block boundary at or before
// the baseline window's start.
double ScreenBlockForEvent(const Session& s, std::int32_t n);

// Before the program closes: events that are not saved are offered for saving, as opening
// another file does. Returns false when the program should stay open (Cancel, or a save that
// did not happen), so that no analysis is lost by closing the window.
bool QueryUnsavedEventsOnExit(Session& s, UserDialogs& ui);
// Before another recording is opened over the table. Opening asks by itself while EventsSaved
// is clear; a table changed after it was saved (a rejection in place leaves the flag set) is
// asked about here, with the same question. False when the open is not to go on.
bool QueryUnsavedEventsBeforeOpen(Session& s, UserDialogs& ui);

// The grid's current row and CurrentEvent name the same event after every command. `last`
// holds both as they were agreed the time before. A command that moved CurrentEvent takes
// the grid's row with it; one that moved only the grid's row (a scan that ends on the new
// last event) makes that row the selected event, as a row change in the grid does. Returns
// the agreed row, 0 when no event is selected.
struct GridAgreement {
    std::int32_t currentEvent = 0;
    std::int32_t gridRow = 0;
};
std::int32_t AgreeGridRow(EventTable& t, GridAgreement& last);

// After an event is deleted its marks must leave the picture, and the new selection is marked.
void RedrawSelection(Session& s);

// Commands on the selected event need an open recording and at least one event. Clamps
// CurrentEvent into the table and tells whether the command can go on.
bool ClampSelectedEvent(Session& s);

// The scans over the table: events 1 to the count at the start, each shown on its screen and
// then given to `command` as the selected event, until the end or until NonStopRunning is
// cleared (the interrupt). Events the command appends are not visited.
void ScanEachEvent(Session& s, UserDialogs& ui, void (*command)(Session&, UserDialogs&));

// Marks CurrentEvent on the trace (the blinking mark of the window).
void PlotSelected(Session& s);

}  // namespace ardel

// What the mouse does on the trace picture, and the commands that detect, measure anew,
// reject or delete one event at a time. The window passes picture coordinates: x in points of
// the screen (0 .. ScreenPoints()-1), y in picture units (0 at the top, 65536 at the bottom).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The shift mask of a mouse event: bits for Shift, Ctrl and Alt.
inline constexpr int kShiftMask = 1;
inline constexpr int kCtrlMask = 2;
inline constexpr int kAltMask = 4;

// No cursor line is held.
inline constexpr std::uint8_t kNoCursor = 255;

// One cursor line in picture units.
struct CursorLine {
    double X1 = 0, Y1 = 0, X2 = 0, Y2 = 0;
};

// The four cursor lines Line1(0)..Line1(3) (0 and 1 vertical, 2 and 3 horizontal), the box
// that shows them, the line the mouse holds and the readout label beside them.
struct CursorState {
    bool ckCursors = false;
    std::array<CursorLine, 4> Line1{};
    std::uint8_t DraggedCursor = kNoCursor;
    std::string lbCursor;
};

// Puts the vertical cursors at a third and two thirds of the screen's width and the horizontal
// ones at a third and two thirds of the height, each spanning the whole picture. Nothing held.
void PlaceCursors(CursorState& c, double screenPoints);

// The items of the popup menu menu_EventEdit, in order.
inline constexpr std::array<const char*, 7> kEventEditMenuCaptions = {
    "Re&ject This Event",        "&Delete This Event", "&Recalculate Peak",  "Analyse &Double Peak",
    "Use Threshold as Baseline", "&Mark as Group",     "&Unmark from Group",
};

// The first event in stored order whose time lies strictly within the times of x - w and
// x + w, w being the width of the text "X" on the picture in points; 0 when there is none.
std::int32_t EventAtPoint(const Session& s, double x, double xTextWidth);

// Left button down on the trace: the cursor lines first, then by the shift mask: detect (0, 5,
// 7), recalculate (1), delete (2), reject (3), double peak (4), detect at a tenth of both
// thresholds (6).
void PictureMouseDown(Session& s, UserDialogs& ui, CursorState& cursors, double x, double y,
                      int shiftMask, double xTextWidth);

// Mouse move over the trace, x limited to the screen (the window shows the pointer readout
// Label4 of the trace view beside this): a held cursor follows the pointer, with or without
// a button; moving a vertical one rebuilds cursors.lbCursor. Returns whether a cursor moved.
bool PictureMouseMove(Session& s, CursorState& cursors, double x, double y);

// The lbCursor text for the two vertical cursors as they stand.
std::string CursorReadout(const Session& s, const CursorState& cursors);

// Right button released on the trace. With an event at the point it becomes CurrentEvent and
// the grid's current row, and the window shows menu_EventEdit at the pointer with the mark
// blinking (Timer1); afterwards it calls EventEditMenuClosed. Without one the window stops
// the blinking and shows no menu.
enum class TracePopup { None, EventEdit };
TracePopup PictureMouseUpRight(Session& s, double x, double xTextWidth);
// After menu_EventEdit closes (Timer1 off, pen black): redraw.
void EventEditMenuClosed(Session& s);

// Detects the event whose peak is the extreme of one search period centred on x, measured as
// the scan measures it. Refused silently when the baseline window would lie before the data,
// when an event of exactly that time exists, or below the thresholds. Returns whether an event
// was added.
bool ManualDetection(Session& s, UserDialogs& ui, double x, bool tenthOfThresholds);

// "Reject This Event" (key J): the current event goes to group 255.
void menu_RejectThisEvent(Session& s, UserDialogs& ui);
// "Delete This Event" (key K): removes the current event; the one before it becomes current.
void menu_DeletEvent(Session& s, UserDialogs& ui);
// "Recalculate Peak" (key I): measures the current event anew from its time alone.
void menu_RecalculatePeak(Session& s, UserDialogs& ui);
// "Use Threshold as Baseline": moves the current event's baseline to the threshold of the
// spike, found from the first, second and third differentials, and measures it from there.
void menu_BaselineThreshold(Session& s, UserDialogs& ui);
// "Scan and Adjust Baseline to Threshold": the above on every event, screen by screen, until
// the end or until NonStopRunning is cleared during a Yield.
void menu_ScanAdjustBaseline(Session& s, UserDialogs& ui);

}  // namespace ardel

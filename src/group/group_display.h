// Start Display and GroupDisplay of the group window: the trace store cut from the recording,
// its average in row 0, and the picture drawn from it; the two measuring cursors and the right
// button's hit test, which work in the picture's pixels.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

// The display types of Combo2.
inline constexpr const char* kDisplayTypes[6] = {"Average",        "Individual",
                                                 "Superimpose",    "Scaled Average",
                                                 "Scaled Individual", "Scaled Superimpose"};
inline constexpr const char* kAlignments[3] = {"Peak", "Rise-time", "Rise 50"};

// What a display type asks for, recognised by Combo2's text.
bool IsScaledType(std::string_view type);
bool IsIndividualType(std::string_view type);
bool IsSuperimposeType(std::string_view type);

// A store above this many samples is refused: 256 MB of traces, far beyond any group a
// recording of a day holds, and well within what a desktop machine can give.
inline constexpr std::int64_t kMaxStoreSamples = std::int64_t(128) << 20;
// Blocks to analyse: from 1 to the longest screen the program shows.
inline constexpr double kMaxTraceBlocks = 32767;

inline constexpr std::string_view kGroupAnalysisTitle = "Group Analysis";

// Command1, "&Start Display": rebuilds the store from the recording and draws it. Does nothing
// while the window loads, without an open recording, or for an empty group (the former display
// stays). Refuses with a message a Combo4 outside 1 .. 32767 Blocks, a store larger than
// kMaxStoreSamples, and a group holding an event numbered above 32767, which the 16-bit
// TraceEvent cannot name. Returns true when a store was built and drawn.
bool StartDisplay(Session& s, UserDialogs& ui, GroupWindow& w);

// Redraws the store into w.scene without rebuilding it, and clears what the analyses printed
// over the last picture. Returns at once while loading, for an empty event table, or for an
// empty store. Limits the gain box to 0.001 .. 1000 and sets Slider1.
void GroupDisplay(const Session& s, GroupWindow& w);

// Pixel row of a sample value in the current drawing (gain Combo5, offset Combo6).
std::int32_t CalculateYPosition(const GroupWindow& w, double sample);
// Pixel column of a point of the store.
std::int32_t PixelX(const GroupWindow& w, double point);
// The polyline of store row `row` from point `from` to `to` (clamped to the row).
std::vector<PixelPoint> RowPolyline(const GroupWindow& w, std::int32_t row, std::int32_t from,
                                    std::int32_t to);

// What the drawing area shows, as text a script can compare: the rows drawn, the scale bar's
// labels, Slider1, and what the analyses printed over the picture (text, "X" marks at point
// and sample, the fitted curve's range).
std::string GroupPictureText(const GroupWindow& w);

// "Trace:  0 of N" after a Start Display, "Trace: n of N" while stepping.
std::string Label6Text(std::int32_t trace, std::int32_t count);

// ---- Cursors --------------------------------------------------------------------------
// A left click at x (in points of the store): picks up the first cursor within
// 1 + TracePoints / 100 points when none is held and the cursors are shown, else drops the
// one held.
void CursorClick(const Session& s, GroupWindow& w, double xPoints);
// A mouse move: the held cursor follows to the integer point under the pointer.
void CursorMove(const Session& s, GroupWindow& w, double xPoints);
// lbCursor's text for the cursors' present positions.
std::string CursorReadout(const Session& s, const GroupWindow& w);

// ---- Right button ---------------------------------------------------------------------
// The trace under the pointer at pixel (px, py) inside a box of boxWidth x boxHeight pixels
// (one letter "X" of the drawing area's font) around it: in the Superimpose types rows 1 to
// TraceCount in turn, else the current trace. -1 for none.
std::int32_t HitTestTrace(const GroupWindow& w, std::int32_t px, std::int32_t py,
                          std::int32_t boxWidth, std::int32_t boxHeight);

// Slider1 moved to newValue: the offset changes by the difference between the pixel row of
// point 0 of the current trace and the new value, and the picture is redrawn.
void Slider1Change(const Session& s, GroupWindow& w, std::int32_t newValue);

// A click on Check10 ("Display Full Sweep"): Combo4 takes the episode's samples / 256, all
// channels together; Start Display puts the per-channel value right.
void Check10Click(const Session& s, GroupWindow& w);

}  // namespace ardel::group

// Editing the group through its traces: taking a trace's event out of the group, moving it to
// another group, copying a trace's data; and the keys of the individual display types.
#pragma once

#include <cstdint>
#include <string>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

inline constexpr const char* kLabel21Text =
    "Keys:  A = first (average)   S = previous   D = next   F = last   K = remove   "
    "U = re-group   Y = jump to trace";

// menu_trace_remove: the event of HighlightTrace leaves its group (group 0), then Start
// Display. On trace 0 the message "Cannot remove the averaged trace.".
void menu_trace_remove(Session& s, UserDialogs& ui, GroupWindow& w);
// menu_trace_regroup: asks for the group number (default Val(Combo1) + 1); answers below 0 or
// of 256 and more are ignored. A cancelled box changes nothing.
void menu_trace_regroup(Session& s, UserDialogs& ui, GroupWindow& w);
// menu_trace_extract: HighlightTrace's data on the clipboard, time and amplitude a line.
void menu_trace_extract(const Session& s, UserDialogs& ui, const GroupWindow& w);

// The keys of the "Individual" and "Scaled Individual" types (upper-case codes): A, S, D, F,
// K, U, Y. Other keys and other types do nothing.
void GroupKey(Session& s, UserDialogs& ui, GroupWindow& w, char key);
// Shows trace n in the individual types: CurrentTrace, Label6 and the picture.
void ShowTrace(const Session& s, GroupWindow& w, std::int32_t n);

}  // namespace ardel::group

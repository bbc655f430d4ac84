// The traces' data as text: on the clipboard (menu_copydata) and as ATF 1.0 files
// (menu_saveascii), each for the average trace (0), one trace (1) or all traces (2).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

// What to write: which traces, and the divisor of the normalisation (index 0 only).
struct TraceSelection {
    int index = 0;            // 0 average, 1 one trace, 2 all traces
    std::int32_t trace = 0;   // the trace of index 0 and 1
    double divisor = 1;
};

// Asks what the entry needs (the normalisation factor, or the trace number). nullopt when the
// user gave up or the store is empty.
std::optional<TraceSelection> AskTraceSelection(UserDialogs& ui, const GroupWindow& w, int index);

// "Group Analysis: PATH Group # G Trace # T".
std::string TraceDataHeading(const Session& s, const GroupWindow& w, const TraceSelection& sel);
// The clipboard's text: heading, column captions, one line a point.
std::string TraceClipboardText(const Session& s, const GroupWindow& w, const TraceSelection& sel);
// The ATF 1.0 file's text.
std::string TraceAtfText(const Session& s, const GroupWindow& w, const TraceSelection& sel);

// menu_copydata(index): the text goes through "Temp.txt" in the program's folder onto the
// clipboard.
void menu_copydata(const Session& s, UserDialogs& ui, const GroupWindow& w, int index,
                   const std::filesystem::path& programDir);
// menu_saveascii(index): asks for a "txt" file (and before replacing one) and writes the ATF
// text. False when cancelled or declined.
bool menu_saveascii(const Session& s, UserDialogs& ui, const GroupWindow& w, int index);

}  // namespace ardel::group

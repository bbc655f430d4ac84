// The two Data Arrays and every way of filling them from the event table and the clipboard:
// the field menus (all events, highlighted events), inter-event intervals, clear, copy and
// paste. The arrays are Session::dataArray1 and dataArray2; commands name them 1 or 2.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The field menus' captions, index 0..16, all four lists show all of them.
inline constexpr int kArrayFieldCount = 17;
inline constexpr int kArrayFieldTime = 5;
std::string_view ArrayFieldCaption(int index);

// No array grows beyond this many elements, 64 MB of floats: far more than the events of any
// one recording, and small enough that a text announcing absurd lengths costs little. Such a text
// is refused; an append or paste past it ends with the runtime's "Out of memory".
inline constexpr std::int64_t kMaxArrayLength = std::int64_t(1) << 24;

DataArray& ArrayOf(Session& s, int arrayNumber);
const DataArray& ArrayOf(const Session& s, int arrayNumber);
// Re-dimensions to 1..upper keeping the contents; new elements are 0.
void GrowArray(DataArray& a, std::int64_t upper);

// The value of field index of event n as it goes into an array, converted to the recording's
// units. Time comes without a constant. nullopt for an index outside 0..16.
std::optional<float> ArrayFieldValue(const Session& s, std::int32_t n, int index);

// "Put all events" (menu_PutAllArray1 / menu_PutAllArray2) for one field.
void menu_PutAllArray(Session& s, UserDialogs& ui, int arrayNumber, int index);
// "Put highlighted events" (menu_PutHLArray1 / menu_PutHLArray2) for one field.
void menu_PutHLArray(Session& s, UserDialogs& ui, int arrayNumber, int index);
// Intervals between the times of all events or of one group (menu_InterEventArray1 / 2).
void menu_InterEventArray(Session& s, UserDialogs& ui, int arrayNumber);
// Back to the shape 1 to 1 holding 0 (menu_ClearArray1 / 2).
void menu_ClearArray(Session& s, int arrayNumber);

// The two columns as the clipboard gets them: a header line, then one line per index, each
// ended by a lone CR. Empty when both arrays are empty.
std::string ArrayClipboardText(const Session& s);
void menu_ArrayCopy(Session& s, UserDialogs& ui);

// The numbers of the first column of a text, as paste reads them: lines end at CR (text behind
// the last CR is dropped), a line is cut behind its first tab, and only lines that read as a
// number count.
std::vector<float> NumbersFromClipboard(std::string_view text);
// The runtime's numeric test: blanks, tabs, CR and LF around one decimal number.
bool IsNumeric(std::string_view text);
// menu_PasteArray(1) / (2).
void menu_PasteArray(Session& s, UserDialogs& ui, int arrayNumber);

}  // namespace ardel

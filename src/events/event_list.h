// The main window's operations on the event list as a whole: the sorts, duplicates, deleting,
// rejecting and grouping rows, and handing the list to the clipboard or a text file. The grid's
// highlighted rows are Session::HighlightedRows; the selected event is events.CurrentEvent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The columns the table can be sorted by, 1..kSortColumnCount ("Sort Events by").
inline constexpr int kSortColumnCount = 17;
inline constexpr int kSortByTime = 1;
inline constexpr int kSortByGroup = 8;
// The column names, 1..17; empty outside.
std::string_view SortCaption(int index);

// The table's own quicksort on rows low..high by the key of the index, ascending. Rows are
// moved whole and the sort is not stable: rows with equal keys come out in the order the
// partitions leave them, and users' tables depend on that order. An index outside 1..17 sorts
// nothing.
void SortEvents(EventTable& t, int index, std::int32_t low, std::int32_t high);

// "Sort Events by": the whole table, then the grid is rebuilt.
void menu_sort(Session& s, int index);
// "Remove Duplicates": sorts by Time and removes rows whose Time equals the row before's.
void menu_RemoveDuplicates(Session& s, UserDialogs& ui);
// "Delete Highlighted Events": rejects them, then deletes every rejected row.
void menu_deleteevents(Session& s, UserDialogs& ui);
// "Reject Highlighted Events": group 255, the rows stay.
void menu_RejectEvents(Session& s);
// "Delete All Rejected Events": sorts by Group and cuts the rows of group 255 off the end.
void menu_DeleteRejected(Session& s);
// "Mark Events as Group": the highlighted rows.
void menu_Group(Session& s, UserDialogs& ui);
// "Mark as Group": the selected event.
void menu_markasgp(Session& s, UserDialogs& ui);
// "Mark All Events as Group" (key N).
void menu_MarkAllEvents(Session& s, UserDialogs& ui);
// "Mark All Events in this Window" (key M): the rows whose Time lies on the current screen.
void menu_MarkAllWindow(Session& s, UserDialogs& ui);
// "Unmark from Group": the selected event.
void menu_Unmark(Session& s);
// "Unmark Highlighted Events".
void menu_unmarkgp(Session& s);
// "Unmark Grouped Events": the rows of one group, or all rows for 0.
void menu_UnmarkGrouped(Session& s, UserDialogs& ui);

// The group prompts' rule: an empty answer, or a value outside 0..255, is no group; a
// fractional value is rounded to the byte, halves to even.
std::optional<std::uint8_t> GroupFromAnswer(std::string_view answer);

// The grid's delimited export: one line per row (all rows for index 0, the highlighted rows
// in their order for index 1), the cells of columns 0..17 as the grid shows them separated by
// tabs, each line ended by CR LF. Highlighted numbers outside the table give no line.
std::string EventListExport(const Session& s, int index);
// The line of the grid's captions that heads the clipboard copy: each caption followed by a
// tab, then CR LF.
std::string EventListCaptionLine(const Session& s);
// "All Events" / "Highlighted Events" to the clipboard: the caption line, then the export.
void menu_copytoclipboard(Session& s, UserDialogs& ui, int index);
// ... to a new ".ASC" file; an existing file is refused and left as it was.
void menu_savetoAsciiFile(Session& s, UserDialogs& ui, int index);

}  // namespace ardel

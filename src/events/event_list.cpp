#include "events/event_list.h"

#include <array>
#include <filesystem>
#include <utility>

#include "core/event_commands.h"
#include "core/ini_file.h"
#include "core/number_text.h"
#include "detect/manual_edit.h"

namespace ardel {

namespace {

constexpr std::array<std::string_view, kSortColumnCount + 1> kSortCaptions = {
    "",         "Time",       "Amplitude",      "Time to Rise",  "Time to Decay", "Area",
    "Baseline", "Noise",      "Group",          "Channel",       "Rise10-90",     "Half-width",
    "Rise 50",  "Peak Direction", "Burst #",    "Burst Event#",  "Slope10-90",    "Relative Time"};

// One partition of rows low..high around the middle row's key, exactly as the table has always
// been partitioned: both scans stop on a key equal to the pivot's and such rows are swapped,
// which decides where equal rows end up. The key is a template parameter so that each of the
// 17 sorts has its comparison compiled in, as the rows are moved whole (no index sort).
template <typename Key>
std::int32_t Partition(EventRecord* rows, std::int32_t low, std::int32_t high, Key key) {
    const std::int32_t mid = low + (high - low) / 2;
    const EventRecord pivot = rows[mid];
    const auto pivotKey = key(pivot);
    rows[mid] = rows[low];
    std::int32_t i = low + 1;
    std::int32_t j = high;
    for (;;) {
        while (j > i && key(rows[i]) < pivotKey) ++i;
        while (j >= i && key(rows[j]) > pivotKey) --j;
        if (i >= j) {
            rows[low] = rows[j];
            rows[j] = pivot;
            return j;
        }
        std::swap(rows[i], rows[j]);
        ++i;
        --j;
    }
}

// The recursion goes into the smaller part and the loop goes on with the larger one, so the
// depth stays logarithmic even for sorted or all-equal tables.
template <typename Key>
void QuickSort(EventRecord* rows, std::int32_t low, std::int32_t high, Key key) {
    while (low < high) {
        const std::int32_t p = Partition(rows, low, high, key);
        if (p - low <= high - p) {
            QuickSort(rows, low, p - 1, key);
            low = p + 1;
        } else {
            QuickSort(rows, p + 1, high, key);
            high = p - 1;
        }
    }
}

template <auto Field>
void SortBy(EventRecord* rows, std::int32_t low, std::int32_t high) {
    QuickSort(rows, low, high, [](const EventRecord& e) { return e.*Field; });
}

// A cell of the grid changed without a rebuild: the view repaints, the saved state stays.
void CellUpdated(EventTable& t) { ++t.GridVersion; }

bool InTable(const EventTable& t, std::int32_t row) { return row >= 1 && row <= t.EventCount(); }

// The old runtime's input box for a group number: Cancel reads as an empty answer.
std::optional<std::uint8_t> AskGroup(UserDialogs& ui, std::string_view title,
                                     std::string_view prompt) {
    return GroupFromAnswer(ui.InputText(title, prompt, ""));
}

constexpr std::string_view kGroupTitle = "Group Number";
constexpr std::string_view kGroupPrompt =
    "Please enter the group number.  (Entering 0 will remove from current group.)";

}  // namespace

std::string_view SortCaption(int index) {
    if (index < 1 || index > kSortColumnCount) return {};
    return kSortCaptions[std::size_t(index)];
}

void SortEvents(EventTable& t, int index, std::int32_t low, std::int32_t high) {
    if (low >= high || low < 1 || high > t.EventCount()) return;
    EventRecord* rows = &t[0];
    switch (index) {
        case 1: SortBy<&EventRecord::Time>(rows, low, high); break;
        case 2: SortBy<&EventRecord::Amplitude>(rows, low, high); break;
        case 3: SortBy<&EventRecord::Rise>(rows, low, high); break;
        case 4: SortBy<&EventRecord::Decay>(rows, low, high); break;
        case 5: SortBy<&EventRecord::Area>(rows, low, high); break;
        case 6: SortBy<&EventRecord::Baseline>(rows, low, high); break;
        case 7: SortBy<&EventRecord::Noise>(rows, low, high); break;
        case 8: SortBy<&EventRecord::GroupNumber>(rows, low, high); break;
        case 9: SortBy<&EventRecord::Channel>(rows, low, high); break;
        case 10: SortBy<&EventRecord::Rise1090>(rows, low, high); break;
        case 11: SortBy<&EventRecord::HalfWidth>(rows, low, high); break;
        case 12: SortBy<&EventRecord::Rise50>(rows, low, high); break;
        case 13: SortBy<&EventRecord::PeakDirection>(rows, low, high); break;
        case 14: SortBy<&EventRecord::BurstNumber>(rows, low, high); break;
        case 15: SortBy<&EventRecord::BurstEventNumber>(rows, low, high); break;
        case 16: SortBy<&EventRecord::Slope1090>(rows, low, high); break;
        case 17: SortBy<&EventRecord::RelativeTime>(rows, low, high); break;
        default: break;
    }
}

void menu_sort(Session& s, int index) {
    if (index < 1 || index > kSortColumnCount) return;
    SortEvents(s.events, index, 1, s.events.EventCount());
    UpdateTDBGrid(s.events);
}

void menu_RemoveDuplicates(Session& s, UserDialogs& ui) {
    menu_sort(s, kSortByTime);
    EventTable& t = s.events;
    std::int64_t found = 0;
    // Row N is never compared with row N - 1: a duplicate pair at the very end stays. Users'
    // tables have always come out this way, so the bound is kept.
    for (std::int32_t i = t.EventCount() - 1; i >= 2; --i) {
        if (t[i].Time == t[i - 1].Time) {
            t.CurrentEvent = i;
            menu_DeletEvent(s, ui);
            ++found;
        }
    }
    ui.Message("", "Found " + Str(found) + " duplicate events and they are safely removed.");
}

void menu_RejectEvents(Session& s) {
    EventTable& t = s.events;
    if (t.EventCount() == 0 || s.HighlightedRows.empty()) return;
    for (const std::int32_t row : s.HighlightedRows)
        if (InTable(t, row)) t[row].GroupNumber = kGroupRejected;
    CellUpdated(t);
    Display(s);
}

void menu_DeleteRejected(Session& s) {
    EventTable& t = s.events;
    // A single rejected event cannot be deleted this way; it has always been so.
    if (!s.recording.FileIsOpen || t.EventCount() == 1) return;
    menu_sort(s, kSortByGroup);
    const std::int32_t n = t.EventCount();
    std::int32_t first = 0;
    for (std::int32_t i = 1; i <= n; ++i) {
        if (t[i].GroupNumber == kGroupRejected) {
            first = i;
            break;
        }
    }
    if (first == 0) return;
    // The array is cut to the rows that stay: a record added later starts from an empty slot.
    for (std::int32_t i = first; i <= n; ++i) t[i] = EventRecord{};
    t.SetCount(first - 1);
    UpdateTDBGrid(t);
    Display(s);
}

void menu_deleteevents(Session& s, UserDialogs&) {
    if (s.events.EventCount() == 0 || s.HighlightedRows.empty()) return;
    menu_RejectEvents(s);
    menu_DeleteRejected(s);
}

std::optional<std::uint8_t> GroupFromAnswer(std::string_view answer) {
    if (answer.empty()) return std::nullopt;
    const double v = Val(answer);
    if (v < 0 || v > 255) return std::nullopt;
    return ToUInt8(v);
}

void menu_Group(Session& s, UserDialogs& ui) {
    EventTable& t = s.events;
    if (t.EventCount() == 0 || s.HighlightedRows.empty()) return;
    const auto group = AskGroup(ui, kGroupTitle, kGroupPrompt);
    if (!group) return;
    for (const std::int32_t row : s.HighlightedRows)
        if (InTable(t, row)) t[row].GroupNumber = *group;
    CellUpdated(t);
    Display(s);
}

void menu_markasgp(Session& s, UserDialogs& ui) {
    EventTable& t = s.events;
    if (t.EventCount() == 0) return;
    const auto group = AskGroup(ui, kGroupTitle, kGroupPrompt);
    if (!group || !InTable(t, t.CurrentEvent)) return;
    t[t.CurrentEvent].GroupNumber = *group;
    CellUpdated(t);
    Display(s);
}

void menu_MarkAllEvents(Session& s, UserDialogs& ui) {
    EventTable& t = s.events;
    if (t.EventCount() == 0 || s.display.NonStopRunning) return;
    const auto group = AskGroup(
        ui, "Mark all events as a group",
        "Please enter the group number(range: 0-255) you would like to mark all events.");
    if (!group) return;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) t[i].GroupNumber = *group;
    UpdateTDBGrid(t);
    Display(s);
}

void menu_MarkAllWindow(Session& s, UserDialogs& ui) {
    EventTable& t = s.events;
    if (t.EventCount() == 0 || s.display.NonStopRunning) return;
    const auto group = AskGroup(ui, "Mark events in this widnow as a group",
                                "Please enter the group number(range: 0-255) you would like to "
                                "mark events in this window.");
    if (!group) return;
    const Recording& rec = s.recording;
    const double lastPoint = double(rec.BlocksPerScreen) * 256.0 - 1.0;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) {
        // A time that has no position (no file open, a position beyond 32 bits) is off screen.
        const auto x = rec.CalculateTimeBit(t[i].Time);
        if (x && *x >= 0 && double(*x) <= lastPoint) t[i].GroupNumber = *group;
    }
    UpdateTDBGrid(t);
    Display(s);
}

void menu_Unmark(Session& s) {
    if (!ClampSelectedEvent(s)) return;
    s.events[s.events.CurrentEvent].GroupNumber = 0;
    CellUpdated(s.events);
}

void menu_unmarkgp(Session& s) {
    EventTable& t = s.events;
    for (const std::int32_t row : s.HighlightedRows)
        if (InTable(t, row)) t[row].GroupNumber = 0;
    CellUpdated(t);
}

void menu_UnmarkGrouped(Session& s, UserDialogs& ui) {
    const std::string answer = ui.InputText(
        "Unmark Grouped Events",
        "Please enter the group number you would like to unmark.  (Entering 0 will unmark all "
        "the events.)",
        "");
    if (answer.empty()) return;
    EventTable& t = s.events;
    // Compared as the number typed: a group that no byte holds (300, 2.5) matches no row.
    const double group = Val(answer);
    for (std::int32_t i = 1; i <= t.EventCount(); ++i)
        if (group == 0 || double(t[i].GroupNumber) == group) t[i].GroupNumber = 0;
    UpdateTDBGrid(t);
    Display(s);
}

std::string EventListExport(const Session& s, int index) {
    const EventTable& t = s.events;
    std::string text;
    auto addRow = [&](std::int32_t row) {
        if (!InTable(t, row)) return;
        for (int c = 0; c < kGridColumns; ++c) {
            if (c > 0) text += '\t';
            text += GridCellText(t, s.recording, row, c).value_or(std::string());
        }
        text += "\r\n";
    };
    if (index == 1) {
        for (const std::int32_t row : s.HighlightedRows) addRow(row);
    } else {
        text.reserve(std::size_t(t.EventCount()) * 96);
        for (std::int32_t row = 1; row <= t.EventCount(); ++row) addRow(row);
    }
    return text;
}

std::string EventListCaptionLine(const Session& s) {
    std::string line;
    for (int c = 0; c < kGridColumns; ++c) line += GridCaption(s.events, c) + "\t";
    return line + "\r\n";
}

void menu_copytoclipboard(Session& s, UserDialogs& ui, int index) {
    // The grid's export went through a scratch file in the current folder; the text is the
    // same built in memory, and no stray file can be left behind or overwritten.
    ui.SetClipboardText(EventListCaptionLine(s) + EventListExport(s, index));
}

void menu_savetoAsciiFile(Session& s, UserDialogs& ui, int index) {
    if (s.events.EventCount() == 0) return;
    FileDialogSpec spec;
    spec.defaultExtension = "ASC";
    spec.filter = "ASCII File (*.ASC)";
    spec.fileName = s.Label11.substr(0, s.Label11.find('.'));
    spec.initialDirectory = s.CurrentFolder;
    auto chosen = ui.SaveFileName(spec);
    if (!chosen || chosen->empty()) return;
    std::filesystem::path path = *chosen;
    if (!path.has_extension()) path += ".ASC";
    std::error_code ec;
    // A link that leads nowhere is an existing name too: it is refused, not followed.
    if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
        ui.Message("File Exist", "File already exist.  Try again with different file name.");
        return;
    }
    try {
        WriteFileReplacing(path, EventListExport(s, index));
    } catch (const std::exception& e) {
        ui.RuntimeError(e.what());
    }
}

}  // namespace ardel

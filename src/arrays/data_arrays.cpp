// Filling the Data Arrays from the event table and the clipboard, and handing them back.
#include "arrays/data_arrays.h"

#include <algorithm>
#include <array>

#include "arrays/quicksort.h"
#include "core/number_text.h"

namespace ardel {

namespace {

constexpr std::array<std::string_view, kArrayFieldCount> kFieldCaptions = {
    "Amplitude", "Noise",         "Time to Rise", "Time to Decay", "Area",
    "Time",      "Baseline",      "Group",        "Channel",       "Rise10-90",
    "Half-width", "Rise 50",      "Peak Direction", "Burst #",     "Burst Event #",
    "Slope10-90", "Relative Time"};

constexpr std::string_view kAppendTitle = "Append data or clear Data before adding";

std::string ClearQuestion(int arrayNumber) {
    return "Would you like to clear the array #" + CStr(arrayNumber) +
           " before adding? (Answering 'No' will append the new data to the previous data)";
}

// The array 2 title has always lacked its blank.
std::string DoneTitle(int arrayNumber) {
    return arrayNumber == 1 ? "Done Filling Array #1" : "Done Filling Array#2";
}

std::string DoneText(std::int64_t count, std::string_view what, int arrayNumber) {
    return "All of " + Str(count) + " " + std::string(what) + " are safely put into Array #" +
           CStr(arrayNumber) + " for further statistical data analysis.";
}

// The last field index each command fills; a higher index resizes the array and fills nothing.
// The lists were cut short at different times and users' habits grew around them.
int LastFilledField(bool highlighted, int arrayNumber) {
    if (!highlighted) return arrayNumber == 1 ? 16 : 15;
    return arrayNumber == 1 ? 15 : 12;
}

// The events a group answer chooses: all for 0, those of that group otherwise. A text that is
// no number matches no group.
struct GroupChoice {
    bool all = false;
    double group = 0;
    bool numeric = false;
};

GroupChoice ReadGroupChoice(std::string_view answer) {
    GroupChoice c;
    c.numeric = IsNumeric(answer);
    c.group = c.numeric ? Val(answer) : 0;
    c.all = c.numeric && c.group == 0;
    return c;
}

bool Chosen(const GroupChoice& c, const EventRecord& e) {
    return c.numeric && (c.all || double(e.GroupNumber) == c.group);
}

// Re-dimensions keeping the contents, unless the new length is beyond what an array may hold:
// then the runtime's "Out of memory" ends the command.
bool ResizeOrRefuse(UserDialogs& ui, DataArray& a, std::int64_t upper) {
    if (upper > kMaxArrayLength) {
        ui.RuntimeError("Out of memory");
        return false;
    }
    GrowArray(a, upper);
    return true;
}

// The time field's constant. nullopt when the empty answer ends the command.
std::optional<double> AskTimeConstant(UserDialogs& ui, bool emptyMeansZero) {
    const std::string answer = ui.InputText(
        "Add a constant",
        "For the event time data, you have an option to add a constant time to the whole data "
        "set.  Please enter a value in msec to add to each event time data.",
        "");
    if (answer.empty()) {
        if (emptyMeansZero) return 0.0;
        return std::nullopt;
    }
    return Val(answer);
}

float FieldWithConstant(const Session& s, std::int32_t n, int index, double constant) {
    if (index == kArrayFieldTime) return float(double(s.events[n].Time) + constant);
    return ArrayFieldValue(s, n, index).value_or(0.0f);
}

}  // namespace

std::string_view ArrayFieldCaption(int index) {
    if (index < 0 || index >= kArrayFieldCount) return {};
    return kFieldCaptions[std::size_t(index)];
}

DataArray& ArrayOf(Session& s, int arrayNumber) {
    return arrayNumber == 2 ? s.dataArray2 : s.dataArray1;
}

const DataArray& ArrayOf(const Session& s, int arrayNumber) {
    return arrayNumber == 2 ? s.dataArray2 : s.dataArray1;
}

void GrowArray(DataArray& a, std::int64_t upper) {
    a.values.resize(std::size_t(std::max<std::int64_t>(upper, 1)) + 1, 0.0f);
}

std::optional<float> ArrayFieldValue(const Session& s, std::int32_t n, int index) {
    const EventRecord& e = s.events[n];
    const Recording& r = s.recording;
    switch (index) {
        case 0: return r.Bit2pA2(e.Amplitude);
        case 1: return r.Bit2pA2(e.Noise);
        case 2: return r.Bit2msec(e.Rise);
        case 3: return r.Bit2msec(e.Decay);
        case 4: return e.Area;
        case 5: return e.Time;
        case 6: return r.Bit2pA(e.Baseline);
        case 7: return float(e.GroupNumber);
        case 8: return float(e.Channel);
        case 9: return e.Rise1090;
        case 10: return e.HalfWidth;
        case 11: return r.Bit2msec(e.Rise50);
        case 12: return float(e.PeakDirection);
        case 13: return float(e.BurstNumber);
        case 14: return float(e.BurstEventNumber);
        case 15: return e.Slope1090;
        case 16: return r.Bit2msec(e.RelativeTime);
        default: return std::nullopt;
    }
}

void menu_PutAllArray(Session& s, UserDialogs& ui, int arrayNumber, int index) {
    const std::int32_t events = s.events.EventCount();
    if (events < 2) return;
    const bool clear =
        ui.Ask(kAppendTitle, ClearQuestion(arrayNumber), Buttons::YesNo) == Answer::Yes;
    const std::string answer = ui.InputText(
        "Add Grouped Events",
        "Please enter the group number you would like to add.  (Entering 0 will add all the "
        "events.)",
        "");
    if (answer.empty()) return;
    const GroupChoice choice = ReadGroupChoice(answer);
    std::int64_t count = 0;
    for (std::int32_t n = 1; n <= events; ++n) count += Chosen(choice, s.events[n]) ? 1 : 0;
    if (count <= 0) return;

    DataArray& a = ArrayOf(s, arrayNumber);
    std::int64_t position = 0;
    if (clear) {
        a.Redim(std::int32_t(count));
    } else {
        position = a.UpperBound();
        // A fresh array has upper bound 1, so its 0 stays in front of the new data.
        if (!ResizeOrRefuse(ui, a, position + count)) return;
    }
    if (index >= 0 && index <= LastFilledField(false, arrayNumber)) {
        double constant = 0;
        if (index == kArrayFieldTime) {
            // All events: an empty answer ends here, with the array already resized.
            const auto c = AskTimeConstant(ui, !choice.all);
            if (!c) return;
            constant = *c;
        }
        for (std::int32_t n = 1; n <= events; ++n) {
            if (!Chosen(choice, s.events[n])) continue;
            a(std::int32_t(++position)) = FieldWithConstant(s, n, index, constant);
        }
    }
    ui.Message(DoneTitle(arrayNumber), DoneText(count, "event data", arrayNumber));
}

void menu_PutHLArray(Session& s, UserDialogs& ui, int arrayNumber, int index) {
    const std::int32_t events = s.events.EventCount();
    if (events < 2) return;
    // The second array's command has always asked about array #1; its message names array #2.
    const bool clear = ui.Ask(kAppendTitle, ClearQuestion(arrayNumber == 2 ? 1 : arrayNumber),
                              Buttons::YesNo) == Answer::Yes;
    const std::vector<std::int32_t> rows = s.HighlightedRows;
    if (rows.empty()) return;
    const std::int64_t count = std::int64_t(rows.size());

    DataArray& a = ArrayOf(s, arrayNumber);
    std::int64_t start = 0;
    if (clear) {
        a.Redim(std::int32_t(count));
    } else {
        start = a.UpperBound();
        if (!ResizeOrRefuse(ui, a, start + count)) return;
    }
    if (index >= 0 && index <= LastFilledField(true, arrayNumber)) {
        double constant = 0;
        if (index == kArrayFieldTime) {
            const auto c = AskTimeConstant(ui, false);
            if (!c) return;
            constant = *c;
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            // A row that names no event leaves its place 0.
            const std::int32_t n = rows[i];
            if (n <= 0 || n > events) continue;
            a(std::int32_t(start + std::int64_t(i) + 1)) = FieldWithConstant(s, n, index, constant);
        }
    }
    ui.Message(DoneTitle(arrayNumber), DoneText(count, "event data", arrayNumber));
}

void menu_InterEventArray(Session& s, UserDialogs& ui, int arrayNumber) {
    const std::int32_t events = s.events.EventCount();
    if (events < 2) return;
    const bool clear =
        ui.Ask(kAppendTitle, ClearQuestion(arrayNumber), Buttons::YesNo) == Answer::Yes;
    const std::string answer = ui.InputText(
        "Calculate Grouped Events",
        "Please enter the group number you would like to calculate for.  (Entering 0 will "
        "calculate for all the events.)",
        "");
    if (answer.empty()) return;
    const GroupChoice choice = ReadGroupChoice(answer);
    std::vector<float> times;
    for (std::int32_t n = 1; n <= events; ++n) {
        if (Chosen(choice, s.events[n])) times.push_back(s.events[n].Time);
    }
    const std::int64_t count = std::int64_t(times.size());

    DataArray& a = ArrayOf(s, arrayNumber);
    std::int64_t start = 0;
    if (clear) {
        if (count < 2) {
            ui.Message("Error", "Not enough events to add.");
            return;
        }
        a.Redim(std::int32_t(count - 1));
    } else {
        // Unlike the Put commands, an array of upper bound 1 counts as empty here.
        start = a.UpperBound() == 1 ? 0 : a.UpperBound();
        const std::int64_t upper = start + count - 1;
        if (upper < 1) {
            // No event of the group into an empty array: the re-dimension to 1 to 0 fails.
            ui.RuntimeError("Subscript out of range");
            return;
        }
        // With no event of the group the array loses its last element, as it always has.
        if (!ResizeOrRefuse(ui, a, upper)) return;
    }
    // Sorted, so that intervals are never negative even when the table is not in time order.
    if (count > 1) QuickSortRange(times.data(), 0, count - 1);
    for (std::int64_t i = 1; i < count; ++i) {
        a(std::int32_t(start + i)) = times[std::size_t(i)] - times[std::size_t(i - 1)];
    }
    ui.Message(DoneTitle(arrayNumber), DoneText(count - 1, "inter-event intervals", arrayNumber));
}

void menu_ClearArray(Session& s, int arrayNumber) {
    ArrayOf(s, arrayNumber).Redim(1);
}

std::string ArrayClipboardText(const Session& s) {
    const DataArray& a1 = s.dataArray1;
    const DataArray& a2 = s.dataArray2;
    if (a1.IsEmpty() && a2.IsEmpty()) return {};
    const std::int32_t rows = std::max(a1.UpperBound(), a2.UpperBound());
    std::string text = "Array #1\tArray #2\r";
    text.reserve(std::size_t(rows) * 24);
    for (std::int32_t i = 1; i <= rows; ++i) {
        text += i <= a1.UpperBound() ? Str(a1(i)) : " ";
        text += '\t';
        text += i <= a2.UpperBound() ? Str(a2(i)) : " ";
        text += '\r';
    }
    return text;
}

void menu_ArrayCopy(Session& s, UserDialogs& ui) {
    std::string text = ArrayClipboardText(s);
    if (text.empty()) return;
    ui.SetClipboardText(text);
}

bool IsNumeric(std::string_view text) {
    constexpr std::string_view kSpace = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos) return false;
    text = text.substr(first, text.find_last_not_of(kSpace) - first + 1);
    std::size_t i = 0;
    auto digits = [&] {
        const std::size_t from = i;
        while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
        return i - from;
    };
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    std::size_t mantissa = digits();
    if (i < text.size() && text[i] == '.') {
        ++i;
        mantissa += digits();
    }
    if (mantissa == 0) return false;
    if (i < text.size() && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        if (digits() == 0) return false;
    }
    return i == text.size();
}

std::vector<float> NumbersFromClipboard(std::string_view text) {
    std::vector<float> numbers;
    std::size_t pos = 0;
    for (;;) {
        const std::size_t cr = text.find('\r', pos);
        if (cr == std::string_view::npos) break;  // a last line without its CR is dropped
        std::string_view line = text.substr(pos, cr - pos + 1);
        pos = cr + 1;
        const std::size_t tab = line.find('\t');
        if (tab != std::string_view::npos) line = line.substr(0, tab + 1);
        if (IsNumeric(line)) numbers.push_back(float(Val(line)));
    }
    return numbers;
}

void menu_PasteArray(Session& s, UserDialogs& ui, int arrayNumber) {
    const std::string text = ui.ClipboardText();
    if (text.empty()) return;
    const std::vector<float> numbers = NumbersFromClipboard(text);
    if (numbers.empty()) return;
    const std::int64_t count = std::int64_t(numbers.size());
    const Answer clear = ui.Ask("Clear Data Array?",
                                "There are " + CStr(count) +
                                    " numbers extracted from the clipboard.  Would you like to "
                                    "clear the Array#" +
                                    CStr(arrayNumber) + " before pasting?",
                                Buttons::YesNo);
    DataArray& a = ArrayOf(s, arrayNumber);
    std::int64_t start = 0;
    if (clear == Answer::Yes) {
        if (!ResizeOrRefuse(ui, a, count)) return;
        std::fill(a.values.begin(), a.values.end(), 0.0f);
    } else {
        start = a.UpperBound();
        if (!ResizeOrRefuse(ui, a, start + count)) return;
    }
    std::copy(numbers.begin(), numbers.end(), a.values.begin() + std::ptrdiff_t(start + 1));
}

}  // namespace ardel

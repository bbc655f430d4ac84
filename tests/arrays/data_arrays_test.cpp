// Filling the Data Arrays from the event table: the append and clear paths with the stray 0,
// the group filter, the time constant's two empty-answer rules, the cut-short field lists, the
// highlighted rows, inter-event intervals, and the clipboard both ways.
#include "arrays/data_arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "arrays/quicksort.h"
#include "support/scripted_dialogs.h"

namespace ardel::testing {
namespace {

const char* kAppend = "Append data or clear Data before adding";
const char* kGroups = "Add Grouped Events";
const char* kConstant = "Add a constant";

// Events with the given times; groups and areas as given (area tags the event).
Session WithEvents(const std::vector<float>& times, const std::vector<int>& groups = {}) {
    Session s;
    for (std::size_t k = 0; k < times.size(); ++k) {
        EventRecord& e = s.events.Add();
        e.Time = times[k];
        e.Area = float(k + 1) * 10;
        e.GroupNumber = std::uint8_t(k < groups.size() ? groups[k] : 0);
    }
    return s;
}

std::vector<float> Values(const DataArray& a) {
    return {a.values.begin() + 1, a.values.end()};
}

TEST(PutAllArray, AppendingToAFreshArrayKeepsItsZeroThenClearingStartsAtOne) {
    Session s = WithEvents({1, 2, 3});
    ScriptedDialogs ui;
    ui.ExpectAsk(kAppend,
                 "Would you like to clear the array #1 before adding? (Answering 'No' will append "
                 "the new data to the previous data)",
                 Answer::No)
        .ExpectInput(kGroups, std::nullopt, "0")
        .ExpectMessage("Done Filling Array #1",
                       "All of  3 event data are safely put into Array #1 for further statistical "
                       "data analysis.");
    menu_PutAllArray(s, ui, 1, 4);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{0, 10, 20, 30}));

    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kGroups, std::nullopt, "0")
        .ExpectMessage("Done Filling Array #1");
    menu_PutAllArray(s, ui, 1, 4);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{10, 20, 30}));
}

TEST(PutAllArray, GroupFilterAndItsSilentEnds) {
    Session s = WithEvents({1, 2, 3, 4}, {2, 0, 2, 1});
    ScriptedDialogs ui;
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kGroups, std::nullopt, "2")
        .ExpectMessage("Done Filling Array#2",
                       "All of  2 event data are safely put into Array #2 for further statistical "
                       "data analysis.");
    menu_PutAllArray(s, ui, 2, 4);
    EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{10, 30}));
    // Cancel, a group nobody is in, and a text that is no number change nothing.
    for (const auto& answer : std::vector<std::optional<std::string>>{std::nullopt, "7", "abc"}) {
        ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes).ExpectInput(kGroups, std::nullopt, answer);
        menu_PutAllArray(s, ui, 2, 4);
        EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{10, 30}));
    }
    // Fewer than two events: not a word.
    Session one = WithEvents({1});
    menu_PutAllArray(one, ui, 1, 0);
    EXPECT_TRUE(ui.Done());
}

TEST(PutAllArray, TimeConstantEmptyAnswerEndsAllEventsButMeansZeroForAGroup) {
    Session s = WithEvents({1.5f, 2.5f}, {3, 3});
    ScriptedDialogs ui;
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kGroups, std::nullopt, "0")
        .ExpectInput(kConstant, std::nullopt, "100")
        .ExpectMessage("Done Filling Array #1");
    menu_PutAllArray(s, ui, 1, kArrayFieldTime);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{101.5f, 102.5f}));

    // All events, empty constant: resized to the appended length, zeros, no message.
    ui.ExpectAsk(kAppend, std::nullopt, Answer::No)
        .ExpectInput(kGroups, std::nullopt, "0")
        .ExpectInput(kConstant, std::nullopt, std::nullopt);
    menu_PutAllArray(s, ui, 1, kArrayFieldTime);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{101.5f, 102.5f, 0, 0}));

    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kGroups, std::nullopt, "3")
        .ExpectInput(kConstant, std::nullopt, "")
        .ExpectMessage("Done Filling Array #1");
    menu_PutAllArray(s, ui, 1, kArrayFieldTime);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{1.5f, 2.5f}));
}

TEST(PutArrays, IndexesBeyondEachListResizeButFillNothing) {
    Session s = WithEvents({1, 2});
    ScriptedDialogs ui;
    // Array 1 of all events takes Relative Time (16); array 2 stops at 15.
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kGroups, std::nullopt, "0")
        .ExpectMessage("Done Filling Array#2");
    s.dataArray2.values = {0, 5, 5, 5, 5};
    menu_PutAllArray(s, ui, 2, 16);
    EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{0, 0}));
    // Highlighted into array 2 stops at 12 and asks the question of array #1.
    s.HighlightedRows = {2, 1};
    ui.ExpectAsk(kAppend,
                 "Would you like to clear the array #1 before adding? (Answering 'No' will append "
                 "the new data to the previous data)",
                 Answer::Yes)
        .ExpectMessage("Done Filling Array#2");
    menu_PutHLArray(s, ui, 2, 13);
    EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{0, 0}));
}

TEST(PutHLArray, SelectionOrderAndRowsThatNameNoEvent) {
    Session s = WithEvents({1, 2, 3});
    ScriptedDialogs ui;
    s.HighlightedRows = {3, 0, 1, 99};
    ui.ExpectAsk(kAppend, std::nullopt, Answer::No).ExpectMessage("Done Filling Array #1");
    menu_PutHLArray(s, ui, 1, 4);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{0, 30, 0, 10, 0}));
    // Nothing highlighted: ends after the question, the array as it was.
    s.HighlightedRows.clear();
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes);
    menu_PutHLArray(s, ui, 1, 4);
    EXPECT_EQ(s.dataArray1.UpperBound(), 5);
    // Time with an empty constant ends with the array already resized.
    s.HighlightedRows = {1, 2};
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput(kConstant, std::nullopt, std::nullopt);
    menu_PutHLArray(s, ui, 1, kArrayFieldTime);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{0, 0}));
}

TEST(InterEventArray, SortedIntervalsWithoutTheStrayZeroAndItsErrors) {
    // Out of time order on purpose: the intervals come out of the sorted times.
    Session s = WithEvents({30, 10, 15, 50}, {1, 1, 0, 1});
    ScriptedDialogs ui;
    ui.ExpectAsk(kAppend, std::nullopt, Answer::No)
        .ExpectInput("Calculate Grouped Events", std::nullopt, "0")
        .ExpectMessage("Done Filling Array #1",
                       "All of  3 inter-event intervals are safely put into Array #1 for further "
                       "statistical data analysis.");
    menu_InterEventArray(s, ui, 1);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{5, 15, 20}));
    // Appended behind a real array; group 1 only.
    ui.ExpectAsk(kAppend, std::nullopt, Answer::No)
        .ExpectInput("Calculate Grouped Events", std::nullopt, "1")
        .ExpectMessage("Done Filling Array #1");
    menu_InterEventArray(s, ui, 1);
    EXPECT_EQ(Values(s.dataArray1), (std::vector<float>{5, 15, 20, 20, 20}));
    // Clearing for a group of one event is refused.
    ui.ExpectAsk(kAppend, std::nullopt, Answer::Yes)
        .ExpectInput("Calculate Grouped Events", std::nullopt, "4")
        .ExpectMessage("Error", "Not enough events to add.");
    menu_InterEventArray(s, ui, 2);
    // Appending no event at all to an empty array: the runtime's error, the array as it was.
    ui.ExpectAsk(kAppend, std::nullopt, Answer::No)
        .ExpectInput("Calculate Grouped Events", std::nullopt, "9")
        .ExpectMessage(std::string(kProgramName), "Subscript out of range");
    menu_InterEventArray(s, ui, 2);
    EXPECT_EQ(s.dataArray2.UpperBound(), 1);
}

TEST(QuickSortRange, SortsLikeTheLibraryAndEndsOnNaN) {
    std::mt19937 rng(7);
    for (int size : {0, 1, 2, 3, 10, 257, 1000}) {
        for (int distinct : {2, 1000000}) {
            std::vector<float> v(static_cast<std::size_t>(size));
            for (float& x : v) x = float(int(rng() % unsigned(distinct)));
            std::vector<float> expected = v;
            std::sort(expected.begin(), expected.end());
            if (size > 0) QuickSortRange(v.data(), 0, size - 1);
            EXPECT_EQ(v, expected) << size << " " << distinct;
        }
    }
    // A sub-range only.
    std::vector<double> part{9, 3, 2, 1, 0};
    QuickSortRange(part.data(), 1, 3);
    EXPECT_EQ(part, (std::vector<double>{9, 1, 2, 3, 0}));
    std::vector<float> nan{3, std::numeric_limits<float>::quiet_NaN(), 1, 2};
    QuickSortRange(nan.data(), 0, 3);  // must return; the order around NaN is unspecified
}

TEST(ArrayClipboard, LoneCarriageReturnsAndABlankForARunOutColumn) {
    Session s;
    EXPECT_EQ(ArrayClipboardText(s), "");
    s.dataArray1.values = {0, 1.5f, -2, 3};
    s.dataArray2.values = {0, 4, 5};
    EXPECT_EQ(ArrayClipboardText(s), "Array #1\tArray #2\r 1.5\t 4\r-2\t 5\r 3\t \r");
}

TEST(ArrayPaste, LineRulesOfTheClipboard) {
    // Header skipped, CR LF pairs, first column of a table, a last line without CR dropped.
    EXPECT_EQ(NumbersFromClipboard("Values\r\n1.5\t7\r\n-2e1\t8\r\n3"),
              (std::vector<float>{1.5f, -20}));
    EXPECT_EQ(NumbersFromClipboard("1\r2\r3"), (std::vector<float>{1, 2}));
    EXPECT_EQ(NumbersFromClipboard("x1\r1x\r\r.5\r"), (std::vector<float>{0.5f}));
    EXPECT_TRUE(IsNumeric("\n 12.\t"));
    EXPECT_FALSE(IsNumeric("1e"));
    EXPECT_FALSE(IsNumeric(" . "));

    Session s;
    ScriptedDialogs ui;
    ui.clipboard = "1\r2\r";
    ui.ExpectAsk("Clear Data Array?",
                 "There are 2 numbers extracted from the clipboard.  Would you like to clear the "
                 "Array#2 before pasting?",
                 Answer::No);
    menu_PasteArray(s, ui, 2);
    EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{0, 1, 2}));
    ui.ExpectAsk("Clear Data Array?", std::nullopt, Answer::Yes);
    menu_PasteArray(s, ui, 2);
    EXPECT_EQ(Values(s.dataArray2), (std::vector<float>{1, 2}));
    ui.clipboard = "no numbers\r";
    menu_PasteArray(s, ui, 2);  // silent
}

}  // namespace
}  // namespace ardel::testing

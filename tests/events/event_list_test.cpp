// The event list's operations: the quicksort's order of equal rows worked by hand, every key
// type, duplicates and their loop bounds, delete/reject/group/unmark with their prompts and the
// 0-255 rule, and the list's text on the clipboard and in a file.
#include "events/event_list.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

// Rows tagged by PeakPoint, so that a test can tell which record went where.
void Fill(EventTable& t, const std::vector<float>& times) {
    for (std::size_t k = 0; k < times.size(); ++k) {
        EventRecord& e = t.Add();
        e.Time = times[k];
        e.PeakPoint = std::int32_t(k) + 1;
    }
}

std::vector<int> Tags(const EventTable& t) {
    std::vector<int> tags;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) tags.push_back(t[i].PeakPoint);
    return tags;
}

std::vector<int> Groups(const EventTable& t) {
    std::vector<int> g;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) g.push_back(t[i].GroupNumber);
    return g;
}

std::string ReadText(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

// The tie orders below were worked through the partition steps by hand.
TEST(SortEvents, EqualKeysComeOutInThePartitionsOrder) {
    struct Case {
        std::vector<float> keys;
        std::vector<int> order;  // tags after sorting
    };
    const Case cases[] = {
        {{0, 0, 0}, {3, 2, 1}},           // three equal rows are reversed
        {{0, 0, 0, 0}, {4, 3, 2, 1}},     // and so are four
        {{2, 1, 2, 1}, {4, 2, 1, 3}},     // the 1s change places, the 2s keep theirs
        {{3, 1, 3, 2, 1}, {5, 2, 4, 3, 1}},
    };
    for (const Case& c : cases) {
        EventTable t;
        Fill(t, c.keys);
        SortEvents(t, 1, 1, t.EventCount());
        EXPECT_EQ(Tags(t), c.order);
    }

    // A partial range leaves the rest alone; an unknown index sorts nothing.
    EventTable p;
    Fill(p, {5, 4, 3, 2, 1});
    SortEvents(p, 1, 2, 4);
    EXPECT_EQ(Tags(p), (std::vector<int>{1, 4, 3, 2, 5}));
    SortEvents(p, 18, 1, 5);
    SortEvents(p, 0, 1, 5);
    EXPECT_EQ(Tags(p), (std::vector<int>{1, 4, 3, 2, 5}));
}

TEST(SortEvents, EveryKeySortsAscendingInItsOwnTypeAndMovesRowsWhole) {
    // Per row: values that are out of order in every column and that only sort right in the
    // column's own type (negative 16-bit values, group 255 above 1, amplitudes beyond 16 bits,
    // negative floats).
    const int n = 40;
    EventTable t;
    for (int k = 0; k < n; ++k) {
        EventRecord& e = t.Add();
        const int v = (k * 17) % n - n / 2;  // -20..19, scrambled
        e.Time = float(v) * 1.5f;
        e.Amplitude = v * 100000;
        e.Rise = std::int16_t(v * 1000);
        e.Decay = std::int16_t(-v);
        e.Area = float(v) / 3;
        e.Baseline = std::int16_t(v * 1600);
        e.Noise = std::int16_t(v * 3);
        e.GroupNumber = std::uint8_t(v + 20 + (v > 0 ? 215 : 0));  // up to 255
        e.Channel = std::uint8_t(v + 100);
        e.Rise1090 = -float(v);
        e.HalfWidth = float(v) * 1e-3f;
        e.Rise50 = std::int16_t(v - 7);
        e.PeakDirection = std::int16_t(v);
        e.BurstNumber = std::int16_t(-v * 2);
        e.BurstEventNumber = std::int16_t(v + 1);
        e.Slope1090 = float(v) * -0.25f;
        e.RelativeTime = v * 70000;
        e.PeakPoint = k;
    }
    const EventTable original = t;
    auto key = [](const EventRecord& e, int index) -> double {
        switch (index) {
            case 1: return e.Time;
            case 2: return e.Amplitude;
            case 3: return e.Rise;
            case 4: return e.Decay;
            case 5: return e.Area;
            case 6: return e.Baseline;
            case 7: return e.Noise;
            case 8: return e.GroupNumber;
            case 9: return e.Channel;
            case 10: return e.Rise1090;
            case 11: return e.HalfWidth;
            case 12: return e.Rise50;
            case 13: return e.PeakDirection;
            case 14: return e.BurstNumber;
            case 15: return e.BurstEventNumber;
            case 16: return e.Slope1090;
            case 17: return e.RelativeTime;
        }
        return 0;
    };
    for (int index = 1; index <= kSortColumnCount; ++index) {
        EventTable sorted = original;
        SortEvents(sorted, index, 1, n);
        for (std::int32_t i = 1; i <= n; ++i) {
            EXPECT_EQ(sorted[i], original[sorted[i].PeakPoint + 1]) << "index " << index;
            if (i > 1) {
                EXPECT_LE(key(sorted[i - 1], index), key(sorted[i], index)) << SortCaption(index);
            }
        }
    }
    EXPECT_EQ(SortCaption(1), "Time");
    EXPECT_EQ(SortCaption(17), "Relative Time");
    EXPECT_EQ(SortCaption(18), "");
}

struct ListRig : ViewRig {
    ScriptedDialogs ui;
    ListRig() : ViewRig({Ramp(256 * 16)}) {}
    void Times(const std::vector<float>& times) { Fill(s.events, times); }
};

const std::string kGroupTitle = "Group Number";
const std::string kGroupPrompt =
    "Please enter the group number.  (Entering 0 will remove from current group.)";
TEST(EventList, RemoveDuplicatesSparesTheLastPairAndTakesTheHigherRow) {
    struct Case {
        std::vector<float> times;
        int found;
        std::vector<int> tagsLeft;
    };
    const Case cases[] = {
        {{5}, 0, {1}},                          // one row: nothing compared
        {{1, 1, 2, 3}, 1, {1, 3, 4}},           // rows 1 and 2 equal: the second goes
        {{3, 1, 2, 3}, 0, {2, 3, 4, 1}},        // only the last pair is equal: it stays
        {{2, 5, 2, 1, 2, 9}, 2, {4, 5, 2, 6}},  // three equal in the middle: two go
    };
    for (const Case& c : cases) {
        ListRig r;
        r.Times(c.times);
        // The count is written with the runtime's leading blank; the box has no title.
        r.ui.ExpectMessage("", "Found  " + std::to_string(c.found) +
                                   " duplicate events and they are safely removed.");
        menu_RemoveDuplicates(r.s, r.ui);
        EXPECT_EQ(Tags(r.s.events), c.tagsLeft);
    }
}

TEST(EventList, DeleteAndRejectWorkOnTheHighlightedRowsWithinTheTable) {
    ListRig r;
    r.Times({10, 20, 30, 40, 50, 60});
    EventTable& t = r.s.events;
    t[5].GroupNumber = kGroupRejected;  // rejected before: goes with the highlighted ones
    t[1].GroupNumber = 2;
    r.s.HighlightedRows = {3, 0, 99, 2};
    t.EventsSaved = true;
    menu_RejectEvents(r.s);
    EXPECT_EQ(Groups(t), (std::vector<int>{2, 255, 255, 0, 255, 0}));
    EXPECT_TRUE(t.EventsSaved);  // cells changed, no rebuild

    menu_deleteevents(r.s, r.ui);
    // Sorted by Group, not by Time (worked by hand: the zeros of rows 4 and 6 meet again in
    // their first order only after two partitions), then group 2.
    EXPECT_EQ(Tags(t), (std::vector<int>{4, 6, 1}));
    EXPECT_FALSE(t.EventsSaved);
    // The array was cut: a new row starts empty.
    EXPECT_EQ(t.Add(), EventRecord{});

    // One row: even a rejected one is not deleted this way.
    ListRig one;
    one.Times({1});
    one.s.events[1].GroupNumber = kGroupRejected;
    menu_DeleteRejected(one.s);
    EXPECT_EQ(one.s.events.EventCount(), 1);
    // No highlighted rows: nothing, not even the rejected rows go.
    ListRig two;
    two.Times({1, 2});
    two.s.events[2].GroupNumber = kGroupRejected;
    menu_deleteevents(two.s, two.ui);
    EXPECT_EQ(two.s.events.EventCount(), 2);
    // All rejected: the table empties.
    two.s.HighlightedRows = {1};
    menu_deleteevents(two.s, two.ui);
    EXPECT_EQ(two.s.events.EventCount(), 0);
}

TEST(EventList, GroupPromptsTakeZeroTo255RoundedToEven) {
    EXPECT_EQ(GroupFromAnswer(" 2.5"), 2);
    EXPECT_EQ(GroupFromAnswer("3.5"), 4);
    EXPECT_EQ(GroupFromAnswer("abc"), 0);  // no number reads as 0
    EXPECT_EQ(GroupFromAnswer(""), std::nullopt);
    EXPECT_EQ(GroupFromAnswer("300"), std::nullopt);
    EXPECT_EQ(GroupFromAnswer("255.2"), std::nullopt);
    EXPECT_EQ(GroupFromAnswer("-1"), std::nullopt);

    ListRig r;
    r.Times({1, 2, 3, 4});
    EventTable& t = r.s.events;
    r.s.HighlightedRows = {4, 2, 7};
    r.ui.ExpectInput(kGroupTitle, kGroupPrompt, "300")
        .ExpectInput(kGroupTitle, kGroupPrompt, std::nullopt)
        .ExpectInput(kGroupTitle, kGroupPrompt, "12");
    menu_Group(r.s, r.ui);
    menu_Group(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 0, 0, 0}));
    const auto version = t.GridVersion;
    menu_Group(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 12, 0, 12}));
    EXPECT_GT(t.GridVersion, version);

    t.CurrentEvent = 3;
    r.ui.ExpectInput(kGroupTitle, kGroupPrompt, "9");
    menu_markasgp(r.s, r.ui);
    EXPECT_EQ(t[3].GroupNumber, 9);

    const std::string allTitle = "Mark all events as a group";
    const std::string allPrompt =
        "Please enter the group number(range: 0-255) you would like to mark all events.";
    r.s.display.NonStopRunning = true;  // refused without a question
    menu_MarkAllEvents(r.s, r.ui);
    menu_MarkAllWindow(r.s, r.ui);
    r.s.display.NonStopRunning = false;
    r.ui.ExpectInput(allTitle, allPrompt, "255");
    menu_MarkAllEvents(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{255, 255, 255, 255}));

    // Without highlighted rows or without events nothing asks.
    r.s.HighlightedRows.clear();
    menu_Group(r.s, r.ui);
    Session empty;
    menu_markasgp(empty, r.ui);
    menu_MarkAllEvents(empty, r.ui);
}

TEST(EventList, MarkAllWindowTakesTheRowsOnTheCurrentScreen) {
    ListRig r;  // 4 Blocks a screen: 1024 points of 0.1 ms
    for (double point : {0.0, 1023.0, 1024.0, 1500.0, 2047.0, 2048.0}) r.AddEvent(point, 1);
    r.s.recording.ScreenBlock += 4;  // the second screen: points 1024..2047
    Display(r.s);
    r.ui.ExpectInput("Mark events in this widnow as a group",
                     "Please enter the group number(range: 0-255) you would like to mark "
                     "events in this window.",
                     "6");
    menu_MarkAllWindow(r.s, r.ui);
    EXPECT_EQ(Groups(r.s.events), (std::vector<int>{1, 1, 6, 6, 6, 1}));
}

TEST(EventList, UnmarkingSelectedHighlightedAndWholeGroups) {
    ListRig r;
    r.Times({1, 2, 3, 4, 5});
    EventTable& t = r.s.events;
    const std::uint8_t groups[] = {3, 255, 3, 7, 255};
    for (int i = 0; i < 5; ++i) t[i + 1].GroupNumber = groups[i];

    t.CurrentEvent = 0;  // clamped to the first row
    menu_Unmark(r.s);
    EXPECT_EQ(t.CurrentEvent, 1);
    EXPECT_EQ(t[1].GroupNumber, 0);

    r.s.HighlightedRows = {4, -1, 6};
    menu_unmarkgp(r.s);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 255, 3, 0, 255}));

    const std::string title = "Unmark Grouped Events";
    const std::string prompt =
        "Please enter the group number you would like to unmark.  (Entering 0 will unmark all "
        "the events.)";
    r.ui.ExpectInput(title, prompt, std::nullopt)  // cancel
        .ExpectInput(title, prompt, "300")         // no group matches
        .ExpectInput(title, prompt, "255");        // rejected rows come back
    menu_UnmarkGrouped(r.s, r.ui);
    menu_UnmarkGrouped(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 255, 3, 0, 255}));
    menu_UnmarkGrouped(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 0, 3, 0, 0}));
    t[2].GroupNumber = 255;
    r.ui.ExpectInput(title, prompt, "0");  // everything, rejected rows too
    menu_UnmarkGrouped(r.s, r.ui);
    EXPECT_EQ(Groups(t), (std::vector<int>{0, 0, 0, 0, 0}));
}

TEST(EventList, TheListAsTheGridShowsItOnTheClipboardAndInANewFile) {
    ListRig r;
    r.AddEvent(12345, 2);  // 1234.5 ms
    EventRecord& e = r.s.events[1];
    e.Amplitude = 40;
    e.Rise = 10;
    e.Baseline = -8;
    e.Noise = 3;
    e.PeakDirection = -1;
    e.Slope1090 = -1234.5f;
    r.AddEvent(20, 0);
    r.s.HighlightedRows = {2, 5, 1};

    const std::string head =
        "2\tTime (ms)\tAmplitude\tRise (ms)\tDecay (ms)\tArea\tBaseline\tNoise\tGroup\tChannel\t"
        "10-90Rise\tHalfWidth\tRise50\tPeak Dir\tBurst#\tBurstE#\t10-90Slope\tRel Time\t\r\n";
    const std::string row1 =
        "1\t1,234.50\t40\t1.00\t0.00\t0.00\t-8\t3\t2\t0\t0.00\t0.00\t0.00\t-1\t0\t0\t-1,234.50\t"
        "0.00\r\n";
    const std::string row2 =
        "2\t2.00\t0\t0.00\t0.00\t0.00\t0\t0\t0\t0\t0.00\t0.00\t0.00\t-1\t0\t0\t0.00\t0.00\r\n";
    menu_copytoclipboard(r.s, r.ui, 0);
    EXPECT_EQ(r.ui.clipboard, head + row1 + row2);
    menu_copytoclipboard(r.s, r.ui, 1);
    EXPECT_EQ(r.ui.clipboard, head + row2 + row1);

    // Saving: the name offered is the recording's up to its first dot; no caption line.
    r.s.Label11 = "cell.7.abf";
    const auto target = r.dir / "out";
    r.ui.ExpectSaveFile(target);
    menu_savetoAsciiFile(r.s, r.ui, 1);
    ASSERT_EQ(r.ui.fileDialogs.size(), 1u);
    EXPECT_EQ(r.ui.fileDialogs[0].fileName, "cell");
    EXPECT_EQ(r.ui.fileDialogs[0].filter, "ASCII File (*.ASC)");
    EXPECT_EQ(r.ui.fileDialogs[0].defaultExtension, "ASC");
    EXPECT_EQ(ReadText(r.dir / "out.ASC"), row2 + row1);

    // An existing file is refused and left as it was.
    r.ui.ExpectSaveFile(r.dir / "out.ASC")
        .ExpectMessage("File Exist", "File already exist.  Try again with different file name.");
    menu_savetoAsciiFile(r.s, r.ui, 0);
    EXPECT_EQ(ReadText(r.dir / "out.ASC"), row2 + row1);
    // Cancel ends it; an empty table asks nothing.
    r.ui.ExpectSaveFile(std::nullopt);
    menu_savetoAsciiFile(r.s, r.ui, 0);
    Session empty;
    menu_savetoAsciiFile(empty, r.ui, 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(r.dir.path()), {}), 2);
}

}  // namespace
}  // namespace ardel::testing

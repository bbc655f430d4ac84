// The Criteria window's three operations: ranges over the columns (units, inclusive bounds,
// the interval test), the random selection with the runtime's generator and its re-entry by
// the Stop button, and episodic grouping with its byte overflow.
#include "events/criteria_search.h"

#include <gtest/gtest.h>

#include "support/scripted_dialogs.h"
#include "view/view_rig.h"

namespace ardel::testing {
namespace {

struct CriteriaRig : ViewRig {
    ScriptedDialogs ui;
    CriteriaForm f;
    CriteriaRig() : ViewRig({Ramp(256 * 8)}) {}

    EventRecord& Add(float time, std::uint8_t group = 0) {
        EventRecord& e = s.events.Add();
        e.Time = time;
        e.GroupNumber = group;
        e.PeakDirection = -1;
        return e;
    }
    void AddRows(int n, std::uint8_t group = 0) {
        for (int i = 1; i <= n; ++i) Add(float(i), group);
    }
    // Episodic grouping with the three times, expecting its report of the count.
    void Episodic(const char* duration, const char* start, const char* end, int grouped) {
        f.Text2 = duration;
        f.Text3 = start;
        f.Text4 = end;
        ui.ExpectMessage("Finished", " " + std::to_string(grouped) + " events are grouped.");
        Criteria_Command3(s, ui, f);
    }
    std::vector<int> Groups() const {
        std::vector<int> g;
        for (std::int32_t i = 1; i <= s.events.EventCount(); ++i)
            g.push_back(s.events[i].GroupNumber);
        return g;
    }
};

std::string Selected(int k, const std::string& group) {
    return " " + std::to_string(k) + " events are randomly selected and grouped as number " +
           group;
}

TEST(CriteriaSearch, OpenBoundsTakeEveryRowAndBoundsAreInclusiveInTheShownUnits) {
    CriteriaRig r;
    EventRecord& a = r.Add(0.1f, 255);
    a.Amplitude = 40;
    a.Slope1090 = -5;  // downward: the slope's sign is taken out
    EventRecord& b = r.Add(0.2f, 3);
    b.Amplitude = 41;
    b.Slope1090 = 5;
    b.PeakDirection = 1;
    EventRecord& c = r.Add(0.3f, 3);
    c.Amplitude = 40;
    c.Slope1090 = -5;
    c.PeakDirection = 1;  // an upward event falling: -5 after the sign

    r.s.events.EventsSaved = true;
    r.f.Combo3 = "2.5";  // rounded to even
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{2, 2, 2}));  // also the rejected row
    EXPECT_FALSE(r.s.events.EventsSaved);

    // Bounds equal to the keys pass: Time as a single, amplitude in the shown unit, slope.
    r.f.Combo1[0] = "0.1";
    r.f.Combo2[0] = "0.2";
    r.f.Combo1[1] = "40";
    r.f.Combo2[1] = "41";
    r.f.Combo1[14] = "5";
    r.f.Combo2[14] = "5";
    r.f.Combo3 = "7";
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{7, 7, 2}));

    // The group criterion works on one group only; the rest keep theirs unless Check1.
    r.f = CriteriaForm{};
    r.s.events[3].GroupNumber = 9;
    r.f.Combo1[9] = "7";
    r.f.Combo2[9] = "7";
    r.f.Combo3 = "1";
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{1, 1, 9}));
    r.f.Combo1[9] = "abc";  // no number: 0
    r.f.Combo2[9] = "1";
    r.f.Combo3 = "4";
    r.f.Check1 = true;
    r.f.Combo4 = "0";
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{4, 4, 0}));

    // A group that no byte holds stops the search with the runtime's report at the first row
    // that takes it (the third); rows before it have had their turn.
    r.f.Combo3 = "300";
    r.f.Combo4 = "8";
    r.ui.ExpectMessage("Ardelvantine", "Overflow");
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{8, 8, 0}));
}

TEST(CriteriaSearch, IntervalTestSortsFirstAndNeedsBothNeighboursWithin) {
    CriteriaRig r;
    for (float t : {40.f, 0.f, 10.f, 20.f, 35.f, 50.f}) r.Add(t);
    r.f.Check5 = true;
    r.f.Combo2[5] = "10";
    r.f.Combo3 = "5";
    const std::string title = "Sorting Required";
    const std::string question =
        "A search by inter-event interval requires sorting of the events by time.  Do you want "
        "to proceed?";
    r.ui.ExpectAsk(title, question, Answer::No);
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.s.events[1].Time, 40.f);  // not sorted, nothing marked
    EXPECT_EQ(r.Groups(), (std::vector<int>(6, 0)));

    r.ui.ExpectAsk(title, question, Answer::Yes);
    Criteria_Command1(r.s, r.ui, r.f);
    // Sorted: 0 10 20 35 40 50. The first row's previous interval is 0, which is not above the
    // lower bound; 20 has 15 after it, 35 has 15 before it; the last row has no next interval.
    EXPECT_EQ(r.s.events[1].Time, 0.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{0, 5, 0, 0, 5, 0}));

    // The lower bound is exclusive.
    r.f.Combo1[5] = "5";
    r.f.Combo3 = "6";
    r.ui.ExpectAsk(title, question, Answer::Yes);
    Criteria_Command1(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{0, 6, 0, 0, 5, 0}));
}

TEST(RandomSelection, TheRuntimesGeneratorFromItsFixedStart) {
    Session s;
    EXPECT_FLOAT_EQ(Rnd(s), 0.7055475f);
    EXPECT_FLOAT_EQ(Rnd(s), 0.5334240f);
    EXPECT_FLOAT_EQ(Rnd(s), 0.5795186f);
    EXPECT_EQ(s.RndState, 9722709u);
    Session other;  // every session starts the same sequence
    EXPECT_FLOAT_EQ(Rnd(other), 0.7055475f);
}

TEST(RandomSelection, DrawsRowsWithReplacementAndReportsOnce) {
    CriteriaRig r;
    r.AddRows(10);
    r.s.events[10].GroupNumber = 255;
    r.f.Text1 = "3";
    r.f.Check2 = true;  // the rest, the rejected row too, take Combo6
    r.f.Combo6 = "9";
    // Draws 0.7055, 0.5334, 0.5795, 0.2896 give rows 8, 6, 6 (already marked: again), 3.
    r.ui.ExpectMessage("Selection Finished", Selected(3, "1"));
    Criteria_Command2(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{9, 9, 1, 9, 9, 1, 9, 1, 9, 9}));
    EXPECT_EQ(r.ui.yields, 4);
    EXPECT_EQ(r.f.Command2Caption, "Start Selection");

    // Exactly N rows: all are marked, by coupon-collecting.
    r.f.Text1 = "10";
    r.f.Combo5 = "2";
    r.ui.ExpectMessage("Selection Finished", Selected(10, "2"));
    Criteria_Command2(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>(10, 2)));

    // More than the table holds: the error, and the caption stays at "Stop".
    r.f.Text1 = "11";
    r.ui.ExpectMessage("Error",
                       "Total number of selection cannot be greater than the total number of "
                       "events.  Please check the number and try again.");
    Criteria_Command2(r.s, r.ui, r.f);
    EXPECT_EQ(r.f.Command2Caption, "Stop");
    // The next press toggles back; an empty count selects nothing and never yields.
    r.f.Text1 = "";
    const int yields = r.ui.yields;
    r.ui.ExpectMessage("Selection Finished", Selected(0, "2"));
    Criteria_Command2(r.s, r.ui, r.f);
    EXPECT_EQ(r.ui.yields, yields);
}

TEST(RandomSelection, StopReentersTheHandlerAndBothRunsReport) {
    for (const bool unmarkFirst : {false, true}) {
        CriteriaRig r;
        r.AddRows(10);
        r.f.Text1 = "3";
        r.f.Check3 = unmarkFirst;
        // The second yield is the user pressing Stop: the same handler runs again inside.
        r.ui.onYield = [&r] {
            if (r.ui.yields == 2) Criteria_Command2(r.s, r.ui, r.f);
        };
        r.ui.ExpectMessage("Selection Finished", Selected(0, "1"))   // the inner run
            .ExpectMessage("Selection Finished", Selected(1, "1"));  // then the outer one
        Criteria_Command2(r.s, r.ui, r.f);
        EXPECT_EQ(r.f.Command2Caption, "Start Selection");
        // Row 8 was drawn before Stop; the inner run's unmarking loses it.
        EXPECT_EQ(r.s.events[8].GroupNumber, unmarkFirst ? 0 : 1);
    }

    // Asking for more ungrouped rows than there are runs until Stop.
    CriteriaRig r;
    r.AddRows(8, 5);
    r.Add(9);
    r.Add(10);
    r.f.Text1 = "3";
    r.f.Check4 = true;
    r.ui.onYield = [&r] {
        if (r.ui.yields == 200) Criteria_Command2(r.s, r.ui, r.f);
    };
    r.ui.ExpectMessage("Selection Finished", Selected(0, "1"))
        .ExpectMessage("Selection Finished", Selected(2, "1"));
    Criteria_Command2(r.s, r.ui, r.f);
    EXPECT_EQ(r.Groups(), (std::vector<int>{5, 5, 5, 5, 5, 5, 5, 5, 1, 1}));
}

TEST(EpisodicGrouping, EpisodesOffsetsAndTheGroupTheyGive) {
    CriteriaRig r;
    r.Add(1000.4f);  // episode 2, offset 0.4
    r.Add(3.2f);     // episode 3
    r.Add(254.2f);   // 254: group 255, the rejected mark
    r.Add(255.2f, 4);  // 255: does not fit the byte, the group stays
    r.Add(300.2f, 4);  // held to 255, so the same
    r.Add(7.0f, 8);    // offset 0: not selected
    r.f.Check7 = true;
    r.Episodic("1", "0.1", "0.5", 5);
    // With a duration of 1 the first row is episode 1000: held to 255 too.
    EXPECT_EQ(r.Groups(), (std::vector<int>{0, 4, 255, 4, 4, 8}));

    r.Episodic("500", "0.3", "0.5", 1);
    EXPECT_EQ(r.s.events[1].GroupNumber, 3);

    // Neither check: Combo7; the rest take Combo8 with Check6. A Combo7 that no byte holds
    // is passed over and the row still counts.
    r.f.Check7 = false;
    r.f.Combo7 = "6";
    r.f.Check6 = true;
    r.f.Combo8 = "9";
    r.Episodic("500", "0", "10", 3);
    EXPECT_EQ(r.Groups(), (std::vector<int>{6, 6, 9, 9, 9, 6}));
    r.f.Combo7 = "300";
    r.f.Check6 = false;
    r.s.events[1].GroupNumber = 1;
    r.Episodic("500", "0", "10", 3);
    EXPECT_EQ(r.s.events[1].GroupNumber, 1);
}

TEST(EpisodicGrouping, BurstingEpisodesTheChecksAndAZeroDuration) {
    CriteriaRig r;
    for (float t : {10.f, 20.f, 150.f, 160.f, 30.f}) r.Add(t);
    r.f.Check8 = true;
    r.Episodic("100", "0", "100", 5);
    std::vector<std::pair<int, int>> bursts;
    for (std::int32_t i = 1; i <= 5; ++i) {
        EXPECT_EQ(r.s.events[i].GroupNumber, 254);
        bursts.emplace_back(r.s.events[i].BurstNumber, r.s.events[i].BurstEventNumber);
    }
    // The sequence restarts whenever the episode changes, in table order.
    EXPECT_EQ(bursts, (std::vector<std::pair<int, int>>{{1, 1}, {1, 2}, {2, 1}, {2, 2}, {1, 1}}));

    r.f = CriteriaForm{};
    r.ui.ExpectMessage("Error",
                       "End time should be greater than start time.  Please check the numbers "
                       "and try again.");
    r.f.Text3 = "5";
    r.f.Text4 = "4";
    Criteria_Command3(r.s, r.ui, r.f);
    r.Episodic("1000", "5", "5", 0);  // equal: accepted, but no offset lies strictly between

    // A zero duration: the division fails and the episode stays (0 here), so the offset is
    // the Time itself.
    r.f.Combo7 = "3";
    r.Episodic("0", "0", "25", 2);
    EXPECT_EQ(r.Groups(), (std::vector<int>{3, 3, 254, 254, 254}));
}

}  // namespace
}  // namespace ardel::testing

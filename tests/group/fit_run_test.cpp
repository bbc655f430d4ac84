// The fitting run over the traces of the store: rows and picture, the parallel path equal to
// the serial one, the interrupt between traces, auto-reject, Compare Fits and curve export.
#include "group/fit_run.h"

#include <gtest/gtest.h>

#include "fit_rig.h"
#include "support/scripted_dialogs.h"

namespace ardel::group {
namespace {

using ardel::testing::Decay;
using ardel::testing::DecayTrace;
using ardel::testing::ScriptedDialogs;

struct Rig {
    Session s;
    GroupWindow w;
    ScriptedDialogs ui;
    Rig(const std::vector<std::vector<std::int16_t>>& traces) {
        ardel::testing::SetUpRecording(s);
        ardel::testing::FillDecayStore(w.store, traces);
        for (std::size_t n = 1; n <= traces.size(); ++n) {
            EventRecord& e = s.events.Add();
            e.Time = float(100 * n);
            e.GroupNumber = 1;
        }
        w.form.Combo8 = "Peak to End";
        w.form.Text5 = "1e-7";
        w.form.Combo11 = "5000";
    }
};

std::vector<std::vector<std::int16_t>> Traces(int count, bool twoComponents = false) {
    std::vector<std::vector<std::int16_t>> v;
    for (int k = 0; k < count; ++k) {
        std::vector<Decay> d{{-800.0 - 20 * k, 3.0 + 0.2 * k}};
        if (twoComponents) d.push_back({-500, 30.0});
        v.push_back(DecayTrace(1024, d, 0, 10, unsigned(k + 1)));
    }
    return v;
}

TEST(FitRun, AverageRowAndPicture) {
    Rig rig(Traces(1));
    rig.w.form.Combo2 = "Average";
    menu_simplex_exp(rig.s, rig.ui, rig.w, 1, {});
    ASSERT_EQ(rig.s.results.rows.size(), 1u);
    const ResultRow& row = rig.s.results.rows[0];
    EXPECT_EQ(row.Identifier, "cell.abf G1 T0 Average Peak to End");
    EXPECT_EQ(rig.w.form.Combo9, "1");
    EXPECT_NEAR(row.Values[0], -80.0, 3.0);   // amplitude in pA
    EXPECT_EQ(row.Values[1], 0.0f);           // trace 0 has no event time
    EXPECT_NEAR(row.Values[6], 3.0, 0.1);     // Tau1
    EXPECT_EQ(row.Values[8], 0.0f);           // no second exponential
    EXPECT_GT(row.Values[11], 0.9f);          // R-squared
    EXPECT_EQ(rig.w.form.TDBGrid1.captions[12], "R-Sqr");
    EXPECT_EQ(rig.w.form.TDBGrid1.row, 0);

    const FitPicture& p = rig.w.form.Picture;
    ASSERT_EQ(p.text.size(), 6u);
    EXPECT_EQ(p.text[0], "Number of Traces Averaged : 1");
    EXPECT_EQ(p.text[3], "# of exponentials=1    Fit Range : Peak to End");
    // Two characters cut after the last term: its closing bracket goes too.
    EXPECT_EQ(p.text[4].find("y=(-"), 0u);
    EXPECT_NE(p.text[4].find(")*exp(-x/"), std::string::npos);
    EXPECT_NE(p.text[4].back(), ')');
    EXPECT_EQ(p.text[5].find("Stdev:"), 0u);
    EXPECT_EQ(p.curveFrom, ardel::testing::kPeak);
    EXPECT_EQ(p.curveTo, 1023);
    // The curve row holds the fit in sample units.
    EXPECT_NEAR(rig.w.store.At(2, 100), rig.w.store.At(1, 100), 40);
}

TEST(FitRun, ParallelFitsEqualSerialOnes) {
    Rig rig(Traces(12, true));
    rig.w.form.Combo2 = "Superimpose";
    const FitSettings settings = [&] {
        GrpAnalForm f = rig.w.form;
        f.Combo9 = "2";
        return ReadFitSettings(rig.s, f);
    }();
    const std::vector<std::int32_t> traces = TracesToFit(rig.w);
    ASSERT_EQ(traces.size(), 12u);
    const auto serial = FitTraces(rig.w.store, traces, settings, rig.s.recording, 1);
    const auto parallel = FitTraces(rig.w.store, traces, settings, rig.s.recording, 4);
    for (std::size_t k = 0; k < traces.size(); ++k) {
        EXPECT_EQ(serial[k].params, parallel[k].params);
        EXPECT_EQ(serial[k].NFunk, parallel[k].NFunk);
        EXPECT_EQ(serial[k].FitModel, parallel[k].FitModel);
    }
    // The run with threads gives the same rows as one without.
    Rig other(Traces(12, true));
    other.w.form.Combo2 = "Superimpose";
    FitHooks threads;
    threads.threads = 4;
    menu_simplex_exp(rig.s, rig.ui, rig.w, 2, threads);
    menu_simplex_exp(other.s, other.ui, other.w, 2, {});
    ASSERT_EQ(rig.s.results.rows.size(), 12u);
    for (std::size_t k = 0; k < 12; ++k) {
        EXPECT_EQ(rig.s.results.rows[k].Identifier, other.s.results.rows[k].Identifier);
        EXPECT_EQ(rig.s.results.rows[k].Values, other.s.results.rows[k].Values);
    }
    EXPECT_EQ(rig.s.results.rows[3].Values[1], 400.0f);  // the event's time
}

TEST(FitRun, InterruptFinishesTheTraceInProgress) {
    Rig rig(Traces(4));
    rig.w.form.Combo2 = "Superimpose";
    int yields = 0;
    // A click on "Interrupt Fitting" while the first trace's search yields.
    rig.ui.onYield = [&] {
        if (++yields == 3) GrpAnal_Command2(rig.s, rig.ui, rig.w, {});
    };
    GrpAnal_Command2(rig.s, rig.ui, rig.w, {});
    EXPECT_EQ(rig.s.results.rows.size(), 1u);
    EXPECT_EQ(rig.w.form.Command2, "Start Fitting");
    EXPECT_TRUE(rig.w.form.Label10.empty());
}

TEST(FitRun, AutoRejectAsksAndRemovesTheEvents) {
    Rig rig(Traces(3));
    rig.w.form.Combo2 = "Superimpose";
    rig.w.form.Check13 = true;
    rig.w.form.Combo10 = "1.1";  // no fit reaches it
    rig.ui.ExpectAsk("Auto-rejection",
                     "Found 3 events that qualify the automatic rejection criterion.  The "
                     "following is the list of events:1,2,3.  Would you like to remove these "
                     "events from this group?  After events are rejected, you need to display "
                     "the group again in Display tab to refresh the group display.",
                     Answer::Yes);
    menu_simplex_exp(rig.s, rig.ui, rig.w, 1, {});
    for (std::int32_t n = 1; n <= 3; ++n) EXPECT_EQ(rig.s.events[n].GroupNumber, 0);
}

TEST(FitRun, CompareFitsKeepsTheBetterRowAndRegroups) {
    // Trace 1 has one component, trace 2 two: only the second improves with two.
    std::vector<std::vector<std::int16_t>> traces{DecayTrace(2048, {{-1000, 3.0}}, 0, 5, 1),
                                                  DecayTrace(2048, {{-700, 1.5}, {-500, 30.0}}, 0, 5, 2)};
    Rig rig(traces);
    rig.w.form.Combo2 = "Superimpose";
    rig.w.form.Combo31 = "1";
    rig.w.form.Check14 = true;
    rig.w.form.Combo32 = "7";
    rig.ui.ExpectMessage("Compare Fits").ExpectMessage(
        "Regroup",
        "Found 1 event(s) that fits better with sum of two exponential function.  These events "
        "are regrouped as Group #7.  You will need to display the group again in Display tab to "
        "refresh the group display.");
    GrpAnal_Command19(rig.s, rig.ui, rig.w, {});
    ASSERT_EQ(rig.s.results.rows.size(), 2u);
    EXPECT_EQ(rig.s.results.rows[0].Values[8], 0.0f);  // one exponential kept
    EXPECT_NE(rig.s.results.rows[1].Values[8], 0.0f);  // two kept
    EXPECT_EQ(rig.s.events[1].GroupNumber, 1);
    EXPECT_EQ(rig.s.events[2].GroupNumber, 7);
}

TEST(FitRun, CurveExportUseLastFitAndTheStub) {
    Rig rig(Traces(1));
    rig.w.form.Combo2 = "Individual";
    rig.w.store.CurrentTrace = 1;
    menu_simplex_exp(rig.s, rig.ui, rig.w, 1, {});
    GrpAnal_Command11(rig.s, rig.w);
    EXPECT_NEAR(Val(rig.w.form.Tau[0]), 3.0, 0.1);
    EXPECT_EQ(rig.w.form.Tau[1], "0");

    rig.ui.ExpectInput("Normalize Trace", std::nullopt, "1");
    menu_extractcurvedata(rig.s, rig.ui, rig.w);
    const std::string& text = rig.ui.clipboard;
    EXPECT_EQ(text.substr(0, text.find("\r\n")), "Group Analysis: cell.abf Group # 1Curve Fit");
    // Before the fit range the curve is the baseline; each line is time, tab, value.
    EXPECT_NE(text.find("\r\n .1\t"), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2 + 1024);

    rig.ui.ExpectMessage("Not Available", "This function will be available in future");
    menu_simplex_User(rig.ui);
    // Without a store nothing is asked or written.
    GroupWindow empty;
    menu_extractcurvedata(rig.s, rig.ui, empty);
}

}  // namespace
}  // namespace ardel::group

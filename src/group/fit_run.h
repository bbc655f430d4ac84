// The fitting commands of the group window: the run over the traces that the display type
// names, with a ResultRow per trace, the picture over the trace, the interrupt between traces,
// auto-reject, Compare Fits, "Use Last Fit" and the export of the fitted curve.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "group/curve_fitting.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

struct FitHooks {
    // GroupDisplay: redraws the store before a run; unset where nothing is drawn.
    std::function<void()> groupDisplay;
    // Brings the fitting tab forward.
    std::function<void()> selectFittingTab;
    // The fits of a Superimpose run may be spread over this many threads; nothing is drawn per
    // trace there, the search yields nothing and the results equal a serial run's.
    int threads = 1;
};

// The settings of a run as the window's controls and the detection parameters hold them now.
FitSettings ReadFitSettings(const Session& s, const GrpAnalForm& form);

// The traces a run fits for the display type: 0, CurrentTrace, or 1..TraceCount.
std::vector<std::int32_t> TracesToFit(const GroupWindow& w);

// The fits of several traces, in parallel when threads > 1; the same outcome in the same order
// as one after the other.
std::vector<TraceFit> FitTraces(const TraceStore& store, std::span<const std::int32_t> traces,
                                const FitSettings& settings, const Recording& r, int threads);

// menu_simplex_exp(Index): Index exponentials into Combo9, and the run.
void menu_simplex_exp(Session& s, UserDialogs& ui, GroupWindow& w, int index, const FitHooks& hooks);
// Command2: "Start Fitting" runs Val(Combo9) exponentials; "Interrupt Fitting" asks the run to
// stop after the trace in progress.
void GrpAnal_Command2(Session& s, UserDialogs& ui, GroupWindow& w, const FitHooks& hooks);
// Command19: Compare Fits.
void GrpAnal_Command19(Session& s, UserDialogs& ui, GroupWindow& w, const FitHooks& hooks);
// Command11: "Use Last Fit".
void GrpAnal_Command11(const Session& s, GroupWindow& w);
void menu_simplex_User(UserDialogs& ui);

// The fitted curve's text; empty without a trace store. divisor divides the samples.
std::string CurveText(const Session& s, const GroupWindow& w, double divisor);
void menu_extractcurvedata(Session& s, UserDialogs& ui, const GroupWindow& w);
void menu_savecurvedata(Session& s, UserDialogs& ui, const GroupWindow& w);

}  // namespace ardel::group

#include "group/fit_run.h"

#include <algorithm>
#include <cmath>
#include <thread>

#include "core/number_text.h"
#include "core/safe_file.h"

namespace ardel::group {

namespace {

constexpr std::string_view kStart = "Start Fitting";
constexpr std::string_view kInterrupt = "Interrupt Fitting";

bool IsSuperimpose(const std::string& type) {
    return type == "Superimpose" || type == "Scaled Superimpose";
}
bool IsAverage(const std::string& type) { return type == "Average" || type == "Scaled Average"; }
bool IsIndividual(const std::string& type) {
    return type == "Individual" || type == "Scaled Individual";
}

std::string RiseCaption(int index) {
    static const char* const kCaptions[] = {"10-90%", "20-80%", "30-70%"};
    return kCaptions[std::clamp(index, 0, 2)];
}

// Values that a failed statement left as they were, carried from one trace to the next.
struct Carried {
    double rSquared = 0;
    double stdevRow = 0;
    double stdevPicture = 0;
    void Take(const TraceFit& f) {
        if (f.rSquared) rSquared = *f.rSquared;
        if (f.stdevRow) stdevRow = *f.stdevRow;
        if (f.stdevPicture) stdevPicture = *f.stdevPicture;
    }
};

float EventTime(const Session& s, const TraceStore& store, std::int32_t trace) {
    if (trace <= 0 || std::size_t(trace) >= store.TraceEvent.size()) return 0;
    const std::int32_t n = store.TraceEvent[std::size_t(trace)];
    if (n < 1 || n > s.events.EventCount()) return 0;
    return s.events[n].Time;
}

ResultRow MakeRow(const Session& s, const GroupWindow& w, std::int32_t trace, const TraceFit& f,
                  const FitSettings& settings, const Carried& carried) {
    const Recording& r = s.recording;
    const GrpAnalForm& form = w.form;
    ResultRow row;
    row.Identifier = r.DataFilePath.filename().string() + " G" + form.Combo1 + " T" + CStr(trace) +
                     " " + form.Combo2 + " " + form.Combo8;
    auto& v = row.Values;
    const int nExp = std::clamp(settings.numberExponential, 1, 3);
    v[0] = r.Bit2pA2(f.measure.PeakAmp);
    v[1] = EventTime(s, w.store, trace);
    v[2] = r.Bit2pA(f.measure.Base);
    v[3] = float(f.measure.Rise);
    v[4] = float(f.measure.Area);
    v[5] = float(f.measure.HalfWidth);
    v[6] = f.params[0];
    v[7] = f.params[1];
    if (nExp >= 2) {
        v[8] = f.params[2];
        v[9] = f.params[3];
    }
    v[10] = float(carried.stdevRow);
    v[11] = float(carried.rSquared);
    if (settings.includeOffset) v[12] = f.params[std::size_t(settings.NDim() - 1)];
    if (nExp == 3) {
        v[13] = f.params[4];
        v[14] = f.params[5];
    }
    if (settings.diffArea) v[15] = float(f.diffArea);
    return row;
}

FitPicture MakePicture(const Session& s, const GroupWindow& w, std::int32_t trace,
                       const TraceFit& f, const FitSettings& settings, const Carried& carried) {
    const Recording& r = s.recording;
    const GrpAnalForm& form = w.form;
    const TraceMeasure& m = f.measure;
    const std::string unit = r.ADCUnits;
    const std::int32_t n = w.store.TracePoints;
    FitPicture p;
    const std::int16_t* row = w.store.Row(trace);
    auto mark = [&](std::int32_t x, std::optional<std::int16_t> y = {}) {
        if (x < 0 || x >= n) return;
        p.marks.emplace_back(x, y.value_or(row[x]));
    };
    const double interval = settings.measure.interval;
    if (interval > 0) {
        const double preEvent = std::floor(double(s.params.PeriodStartBaseline) / interval);
        mark(ToInt32Clamped(m.IPeak - preEvent + double(s.params.PeriodBaselineAverage) / interval / 2),
             m.Base);
    }
    mark(m.IPeak);
    mark(ToInt32Clamped(m.upperX));
    mark(ToInt32Clamped(m.lowerX));
    for (std::int32_t d : {m.D90, m.D80, m.D50, m.D37, m.D20, m.D10}) mark(m.IPeak + d);
    p.curveFrom = f.FitStart;
    p.curveTo = settings.diffArea ? n - 1 : f.FitEnd;

    auto& t = p.text;
    t.push_back(trace == 0 ? "Number of Traces Averaged : " + CStr(w.store.TraceCount)
                           : "Number of Trace : " + CStr(trace) + " of " + CStr(w.store.TraceCount));
    t.push_back("Rise" + RiseCaption(form.Combo29) + " : " + Format(m.Rise, "#0.00") +
                "ms  Decay90-37% : " + Format(m.Decay9037, "#0.00") + "ms    Half-width : " +
                Format(m.HalfWidth, "#0.00") + "ms");
    t.push_back("Peak Amplitude : " + Format(double(r.Bit2pA2(m.PeakAmp)), "#,##0.00") + unit +
                "    Area Under Curve : " + Format(m.Area, "#,##0.00") + unit + "ms");
    if (settings.diffArea)
        t.push_back("Difference Area from Fitted Curve : " + Format(f.diffArea, "#,##0.00") + unit + "ms");
    const int nExp = std::clamp(settings.numberExponential, 1, 3);
    t.push_back("# of exponentials=" + CStr(nExp) + "    Fit Range : " + form.Combo8);
    std::string y = "y=";
    for (int k = 0; k < nExp; ++k)
        y += "(" + Format(double(f.params[std::size_t(2 * k + 1)]), "0.00") + ")*exp(-x/" +
             Format(double(f.params[std::size_t(2 * k)]), "0.00") + ")+";
    // The window cuts two characters here, the closing bracket with the plus.
    y.resize(y.size() - 2);
    if (settings.includeOffset)
        y += "+(" + Format(double(f.params[std::size_t(settings.NDim() - 1)]), "0.000") + ")";
    t.push_back(y);
    t.push_back("Stdev:" + Format(carried.stdevPicture, "0.0000") + "   Number of Iterations: " +
                CStr(f.NFunk) + "  R-Sqr:" + Format(carried.rSquared, "0.0000"));
    return p;
}

// The display draws the fit's picture over the trace from the window's overlay.
void ToOverlay(GroupWindow& w) {
    const FitPicture& p = w.form.Picture;
    w.overlay.text = p.text;
    w.overlay.marks = p.marks;
    w.overlay.curveFrom = p.curveFrom;
    w.overlay.curveTo = p.curveTo;
}

// The store's last row takes the curve; a curve the conversion could not make leaves it.
void StoreCurve(TraceStore& store, const TraceFit& f) {
    if (f.curve.size() != std::size_t(store.TracePoints) || store.Traces.empty()) return;
    std::copy(f.curve.begin(), f.curve.end(), store.Row(store.TraceCount + 1));
}

void SetGroup(Session& s, const TraceStore& store, std::int32_t trace, double group) {
    if (trace < 1 || std::size_t(trace) >= store.TraceEvent.size()) return;
    const std::int32_t n = store.TraceEvent[std::size_t(trace)];
    if (n < 1 || n > s.events.EventCount()) return;
    if (auto g = ToUInt8(group)) s.events[n].GroupNumber = *g;
}

// The run of menu_simplex_exp; `only` names the one trace of a Compare Fits pass (or -1).
void RunFit(Session& s, UserDialogs& ui, GroupWindow& w, int index, const FitHooks& hooks,
            bool compare, std::int32_t only) {
    GrpAnalForm& form = w.form;
    if (hooks.selectFittingTab) hooks.selectFittingTab();
    form.Combo9 = CStr(index);
    const bool superimpose = IsSuperimpose(form.Combo2);
    if (!(compare && superimpose) && hooks.groupDisplay) hooks.groupDisplay();
    if (w.store.Empty()) return;
    std::vector<std::int32_t> traces = TracesToFit(w);
    if (compare && superimpose) traces = {only};
    const FitSettings settings = ReadFitSettings(s, form);
    const bool drawn = IsAverage(form.Combo2) || IsIndividual(form.Combo2);
    const bool autoReject = form.Check13 && superimpose && !compare;
    const double minimum = Val(form.Combo10);

    // Several traces with nothing drawn in between may be fitted side by side first.
    std::vector<TraceFit> ready;
    if (hooks.threads > 1 && superimpose && traces.size() > 1)
        ready = FitTraces(w.store, traces, settings, s.recording, hooks.threads);

    Carried carried;
    std::int32_t rejected = 0;
    std::string list;
    for (std::size_t k = 0; k < traces.size(); ++k) {
        const std::int32_t trace = traces[k];
        form.Command2 = kInterrupt;
        TraceFit fit;
        if (!ready.empty()) {
            fit = std::move(ready[k]);
        } else {
            const FitProgress progress = [&](std::int32_t nFunk, double stdev, double rTol) {
                form.Label10 = "Trace#=" + CStr(trace) + "  # of Iteration=" + CStr(nFunk);
                if (std::isfinite(stdev) && std::isfinite(rTol))
                    form.Label11 = "stdev=" + Format(stdev, "0.00000") +
                                   " Tolerance=" + Format(rTol, "0.0000000");
                ui.Yield();
            };
            const std::int16_t* row = w.store.Row(trace);
            fit = FitTrace(std::span<const std::int16_t>(row, std::size_t(w.store.TracePoints)),
                           settings, s.recording, progress);
        }
        carried.Take(fit);
        StoreCurve(w.store, fit);
        if (drawn) {
            form.Picture = MakePicture(s, w, trace, fit, settings, carried);
            ToOverlay(w);
        }
        AppendResult(s.results, form.TDBGrid1, MakeRow(s, w, trace, fit, settings, carried));
        SetFittingRunCaptions(form.TDBGrid1);
        if (autoReject && carried.rSquared < minimum) {
            ++rejected;
            list += CStr(trace) + ",";
        }
        // An interrupt takes effect between traces: the fit in progress has finished.
        if (form.Command2 == kStart) break;
    }
    if (!list.empty()) {
        list.pop_back();
        const Answer a = ui.Ask(
            "Auto-rejection",
            "Found " + CStr(rejected) +
                " events that qualify the automatic rejection criterion.  The following is the "
                "list of events:" + list +
                ".  Would you like to remove these events from this group?  After events are "
                "rejected, you need to display the group again in Display tab to refresh the "
                "group display.",
            Buttons::YesNo);
        if (a == Answer::Yes) {
            std::size_t at = 0;
            while (at < list.size()) {
                const std::size_t comma = std::min(list.find(',', at), list.size());
                SetGroup(s, w.store, std::int32_t(Val(list.substr(at, comma - at))), 0);
                at = comma + 1;
            }
        }
    }
}

// The button back at "Start Fitting" and the progress labels hidden.
void EndRun(GrpAnalForm& form) {
    form.Command2 = kStart;
    form.Label10.clear();
    form.Label11.clear();
}

}  // namespace

FitSettings ReadFitSettings(const Session& s, const GrpAnalForm& form) {
    FitSettings f;
    f.numberExponential = std::clamp(ToInt32Clamped(Val(form.Combo9)), 1, 3);
    f.fitRange = form.Combo8;
    f.nMax = ToInt32Clamped(Val(form.Combo11));
    f.fTol = Val(form.Text5);
    f.includeOffset = form.Check3;
    f.fixAmplitude = form.Check4;
    f.useGuess = form.UseGuess;
    for (std::size_t k = 0; k < 3; ++k) {
        f.tauGuess[k] = float(Val(form.Tau[k]));
        f.ampGuess[k] = float(Val(form.Amp[k]));
    }
    f.diffArea = form.Check16;
    MeasureSettings& m = f.measure;
    m.pol = s.params.PeakDirection < 0 ? -1 : 1;
    m.interval = s.recording.SampleInterval;
    m.periodStartBaseline = s.params.PeriodStartBaseline;
    m.periodBaselineAverage = s.params.PeriodBaselineAverage;
    m.periodToSearchMax = s.params.PeriodToSearchMax;
    m.alignment = form.Combo3;
    m.cursorsShown = form.Check1;
    m.cursor0 = form.Line1X[0];
    m.cursor1 = form.Line1X[1];
    m.riseIndex = form.Combo29;
    return f;
}

std::vector<std::int32_t> TracesToFit(const GroupWindow& w) {
    const std::string& type = w.form.Combo2;
    if (IsAverage(type)) return {0};
    if (IsIndividual(type)) return {std::clamp(w.store.CurrentTrace, 0, w.store.TraceCount)};
    std::vector<std::int32_t> traces;
    if (IsSuperimpose(type))
        for (std::int32_t t = 1; t <= w.store.TraceCount; ++t) traces.push_back(t);
    return traces;
}

std::vector<TraceFit> FitTraces(const TraceStore& store, std::span<const std::int32_t> traces,
                                const FitSettings& settings, const Recording& r, int threads) {
    std::vector<TraceFit> fits(traces.size());
    auto fitOne = [&](std::size_t k) {
        const std::int16_t* row = store.Row(traces[k]);
        fits[k] = FitTrace(std::span<const std::int16_t>(row, std::size_t(store.TracePoints)), settings, r);
    };
    const std::size_t workers = std::min<std::size_t>(std::size_t(std::max(threads, 1)), traces.size());
    if (workers <= 1) {
        for (std::size_t k = 0; k < traces.size(); ++k) fitOne(k);
        return fits;
    }
    // Each worker takes every workers-th trace; each fit reads only the store and writes only
    // its own slot.
    std::vector<std::jthread> pool;
    for (std::size_t t = 0; t < workers; ++t)
        pool.emplace_back([&, t] {
            for (std::size_t k = t; k < traces.size(); k += workers) fitOne(k);
        });
    pool.clear();  // joins the workers
    return fits;
}

void menu_simplex_exp(Session& s, UserDialogs& ui, GroupWindow& w, int index, const FitHooks& hooks) {
    RunFit(s, ui, w, index, hooks, false, -1);
    // From the menu the run ends idle as from the button.
    EndRun(w.form);
}

void GrpAnal_Command2(Session& s, UserDialogs& ui, GroupWindow& w, const FitHooks& hooks) {
    GrpAnalForm& form = w.form;
    if (form.Command2 != kStart) {
        form.Command2 = kStart;
        return;
    }
    form.Command2 = kInterrupt;
    RunFit(s, ui, w, std::clamp(ToInt32Clamped(Val(form.Combo9)), 1, 3), hooks, false, -1);
    EndRun(form);
}

void GrpAnal_Command19(Session& s, UserDialogs& ui, GroupWindow& w, const FitHooks& hooks) {
    ui.Message("Compare Fits",
               "This function performs decay fitting with 1 exponential and 2 exponential "
               "functions to compare the R-sqr values.  If the R-sqr value of 2 exponential fit "
               "differs by selected percentage or more, then the program reports the decay taus "
               "from the 2 exponential fit.  If not, it reports the decay tau from the 1 "
               "exponential fit.");
    GrpAnalForm& form = w.form;
    const bool superimpose = IsSuperimpose(form.Combo2);
    std::vector<std::int32_t> passes;
    if (superimpose)
        for (std::int32_t t = 1; t <= w.store.TraceCount; ++t) passes.push_back(t);
    else
        passes.push_back(-1);
    auto& rows = s.results.rows;
    std::int32_t regrouped = 0;
    for (std::int32_t only : passes) {
        const std::size_t before = rows.size();
        RunFit(s, ui, w, 1, hooks, true, only);
        if (rows.size() != before + 1) break;  // nothing to fit
        const float r1 = rows.back().Values[11];
        RunFit(s, ui, w, 2, hooks, true, only);
        if (rows.size() != before + 2) break;
        const float r2 = rows.back().Values[11];
        const double x = Val(form.Combo31) / 100;
        const std::int32_t trace = superimpose ? only : TracesToFit(w).front();
        if (double(r1) + x < double(r2)) {
            rows[rows.size() - 2] = rows.back();
            if (form.Check14 && (superimpose || trace != 0)) {
                ++regrouped;
                SetGroup(s, w.store, trace, Val(form.Combo32));
            }
        }
        rows.pop_back();
        form.TDBGrid1.row = std::int32_t(rows.size()) - 1;
    }
    form.Command2 = kStart;
    if (regrouped > 0)
        ui.Message("Regroup", "Found " + CStr(regrouped) +
                                  " event(s) that fits better with sum of two exponential "
                                  "function.  These events are regrouped as Group #" +
                                  form.Combo32 +
                                  ".  You will need to display the group again in Display tab to "
                                  "refresh the group display.");
}

void GrpAnal_Command11(const Session& s, GroupWindow& w) {
    if (s.results.rows.empty()) return;
    const auto& v = s.results.rows.back().Values;
    const std::size_t tau[] = {6, 8, 13}, amp[] = {7, 9, 14};
    for (std::size_t k = 0; k < 3; ++k) {
        w.form.Tau[k] = CStr(v[tau[k]]);
        w.form.Amp[k] = CStr(v[amp[k]]);
    }
}

void menu_simplex_User(UserDialogs& ui) {
    ui.Message("Not Available", "This function will be available in future");
}

std::string CurveText(const Session& s, const GroupWindow& w, double divisor) {
    const TraceStore& store = w.store;
    if (store.Empty() || store.Traces.empty()) return {};
    const Recording& r = s.recording;
    std::string text = "Group Analysis: " + r.DataFilePath.string() + " Group # " + w.form.Combo1 +
                       "Curve Fit\r\nTime (ms) \tAmplitude (" + r.ADCUnits + ")\r\n";
    const std::int16_t* curve = store.Row(store.TraceCount + 1);
    for (std::int32_t i = 0; i < store.TracePoints; ++i)
        text += Str(float(double(i) * r.SampleInterval / 1000.0)) + "\t" +
                Str(r.Bit2pA(RoundHalfEven(curve[i] / divisor))) + "\r\n";
    return text;
}

namespace {
// The "Normalize Trace" box: an answer other than 0 and 1 divides the trace to 100.
double AskNormaliser(UserDialogs& ui) {
    const double answer = Val(ui.InputText(
        "Normalize Trace",
        "Please enter normalization factor to divide the trace by.  This will normalize the "
        "trace to 100.  (Entering 1 will bypass the normalization).",
        "1"));
    return answer == 0 || answer == 1 ? 1.0 : answer / 100;
}
}  // namespace

void menu_extractcurvedata(Session& s, UserDialogs& ui, const GroupWindow& w) {
    if (w.store.Empty()) return;
    ui.SetClipboardText(CurveText(s, w, AskNormaliser(ui)));
}

void menu_savecurvedata(Session& s, UserDialogs& ui, const GroupWindow& w) {
    if (w.store.Empty()) return;
    const double divisor = AskNormaliser(ui);
    FileDialogSpec spec;
    spec.title = "Save Curve Data";
    spec.fileName = "*.txt";
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)";
    spec.initialDirectory = s.CurrentFolder;
    const auto file = ui.SaveFileName(spec);
    if (!file) return;
    if (std::filesystem::exists(*file) &&
        ui.Ask("Replace File", "File already exist.  Do you want to replace this file?",
               Buttons::YesNo) != Answer::Yes)
        return;
    WriteFileSafely(*file, CurveText(s, w, divisor));
}

}  // namespace ardel::group

#include "group/group_settings.h"

#include <algorithm>

#include "core/number_text.h"

namespace ardel::group {

GroupAnalysisSettings SettingsFromForm(const GrpAnalForm& f) {
    GroupAnalysisSettings g;
    auto& ga = g.GroupAnalysis;
    ga.DisplayGroup = f.Option2_0;
    ga.DisplayGain = f.Combo5;
    ga.DisplayOffset = f.Combo6;
    ga.GroupNumber = f.Combo1;
    ga.AnalysisType = f.Combo2;
    ga.PeakAlignment = f.Combo3;
    ga.BlocktoAnalyze = f.Combo4;
    ga.DisplayEveryPoint = f.Combo7;
    ga.BaselineAdjust = f.ckBaseline;
    auto& fit = g.Fitting;
    fit.FitRange = f.Combo8;
    fit.MaxIteration = f.Combo11;
    fit.Tolerance = f.Text5;
    fit.NumberExponential = f.Combo9;
    fit.IncludeOffset = f.Check3;
    fit.FixAmplitude = f.Check4;
    fit.UseGuess = f.UseGuess;
    fit.tau1 = f.Tau[0];
    fit.tau2 = f.Tau[1];
    fit.tau3 = f.Tau[2];
    fit.A1 = f.Amp[0];
    fit.A2 = f.Amp[1];
    fit.A3 = f.Amp[2];
    // The rise-time box is a list; its position is what the key holds.
    fit.Rise = CStr(f.Combo29);
    fit.WidthAboveThreshold = f.Combo14;
    fit.Ym = f.Combo19;
    fit.Yt = f.Combo20;
    fit.UseThresholdBaseline = f.Check2;
    fit.AmperoRise = f.Combo13;
    fit.Electrons = f.Combo15;
    fit.DecayPercent = f.Combo12;
    auto& rw = g.RandomWalk;
    rw.Type = f.Combo16;
    rw.Edge = f.Combo17;
    rw.Vmax = f.Text1[0];
    rw.Km = f.Text1[1];
    rw.Release = f.Text1[2];
    rw.DeadRadius = f.Text1[3];
    rw.BinSize = f.Text1[4];
    rw.TotalRadius = f.Text1[5];
    rw.DiffusionCoeff = f.Text1[7];
    rw.MaxIter = f.Text2;
    rw.Tolerance = f.Text3;
    auto& ns = g.NonStationary;
    ns.AmplitudeBin = f.Text4;
    ns.AverageTrace = f.Combo18;
    ns.SubtractBaseVar = f.Check5;
    ns.IncludeOffset = f.Check6;
    return g;
}

void SettingsToForm(const GroupAnalysisSettings& g, GrpAnalForm& f) {
    const auto& ga = g.GroupAnalysis;
    f.Option2_0 = ga.DisplayGroup;
    f.Option2_1 = !ga.DisplayGroup;
    f.Combo5 = ga.DisplayGain;
    f.Combo6 = ga.DisplayOffset;
    f.Combo1 = ga.GroupNumber;
    f.Combo2 = ga.AnalysisType;
    f.Combo3 = ga.PeakAlignment;
    f.Combo4 = ga.BlocktoAnalyze;
    f.Combo7 = ga.DisplayEveryPoint;
    f.ckBaseline = ga.BaselineAdjust;
    const auto& fit = g.Fitting;
    f.Combo8 = fit.FitRange;
    f.Combo11 = fit.MaxIteration;
    f.Text5 = fit.Tolerance;
    f.Combo9 = fit.NumberExponential;
    f.Check3 = fit.IncludeOffset;
    f.Check4 = fit.FixAmplitude;
    f.UseGuess = fit.UseGuess;
    f.Tau = {fit.tau1, fit.tau2, fit.tau3};
    f.Amp = {fit.A1, fit.A2, fit.A3};
    // A position the list does not have leaves the box where it was.
    const double rise = Val(fit.Rise);
    if (rise >= 0 && rise <= 2) f.Combo29 = int(RoundHalfEven(rise));
    f.Combo14 = fit.WidthAboveThreshold;
    f.Combo19 = fit.Ym;
    f.Combo20 = fit.Yt;
    f.Check2 = fit.UseThresholdBaseline;
    f.Combo13 = fit.AmperoRise;
    f.Combo15 = fit.Electrons;
    f.Combo12 = fit.DecayPercent;
    const auto& rw = g.RandomWalk;
    f.Combo16 = rw.Type;
    f.Combo17 = rw.Edge;
    f.Text1[0] = rw.Vmax;
    f.Text1[1] = rw.Km;
    f.Text1[2] = rw.Release;
    f.Text1[3] = rw.DeadRadius;
    f.Text1[4] = rw.BinSize;
    f.Text1[5] = rw.TotalRadius;
    f.Text1[7] = rw.DiffusionCoeff;
    f.Text2 = rw.MaxIter;
    f.Text3 = rw.Tolerance;
    const auto& ns = g.NonStationary;
    f.Text4 = ns.AmplitudeBin;
    f.Combo18 = ns.AverageTrace;
    f.Check5 = ns.SubtractBaseVar;
    f.Check6 = ns.IncludeOffset;
}

void LoadIniSettings(GroupWindow& w, const std::filesystem::path& file) {
    SettingsToForm(LoadGroupAnalysisSettings(file), w.form);
}

void LoadGroupWindow(GroupWindow& w, const std::filesystem::path& iniFile) {
    if (w.loaded) return;
    w.loaded = true;
    w.loading = true;
    // A settings file the window cannot take leaves the defaults; the error still reaches the
    // user through the command that opened the window.
    struct Done {
        GroupWindow& w;
        ~Done() {
            w.store.Dimension(0, 1);
            w.form.Combo32 = CStr(Val(w.form.Combo1) + 1);
            // What a script or the desktop put into the controls before comes back on top.
            auto pending = std::move(w.pendingSets);
            w.pendingSets.clear();
            for (auto& set : pending) set();
            w.loading = false;
        }
    } done{w};
    LoadIniSettings(w, iniFile);
}

void menu_SaveSettings(const GroupWindow& w, UserDialogs& ui, const std::filesystem::path& iniFile) {
    SaveGroupAnalysisSettings(SettingsFromForm(w.form), ui, iniFile);
}

void menu_SaveAsCustomSetup(const GroupWindow& w, UserDialogs& ui,
                            const std::filesystem::path& iniFile) {
    SaveGroupAnalysisSettingsCustom(SettingsFromForm(w.form), ui, iniFile);
}

void menu_LoadSettings(GroupWindow& w, UserDialogs& ui, const std::filesystem::path& iniFile) {
    GroupAnalysisSettings g = SettingsFromForm(w.form);
    if (LoadGroupAnalysisSettingsCustom(g, ui, iniFile)) SettingsToForm(g, w.form);
}

}  // namespace ardel::group

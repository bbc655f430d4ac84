// The "Heart Rate Variability: Geometrical Methods" window: the shape of the beat-interval
// distribution in four frames, the RR and delta RR histograms, the Lorenz plot and the
// tachogram, with the options and the filter of the spectral window.
#pragma once

#include <filesystem>
#include <memory>
#include <span>

#include "core/session.h"
#include "core/settings.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"
#include "hrv/interval_displays.h"

namespace ardel::hrv {

inline constexpr std::string_view kGeoCaption = "Heart Rate Variability: Geometrical Methods";
inline constexpr std::string_view kLorenzTitle = "Lorenz Plot";

struct HrvGeoForm {
    // Combo2 RRUBound, Combo3 RRLBound, Combo1 RRBinSize, Combo4 DeltaRRBinSize.
    HrvGeoSettings options;
    std::shared_ptr<GraphModel> Graph1 = BlankDisplayPointer("RR Interval Histogram");
    std::shared_ptr<GraphModel> Graph2 = BlankDisplayPointer("Delta RR Interval Histogram");
    std::shared_ptr<GraphModel> Picture1 = BlankDisplayPointer(std::string(kLorenzTitle));
    std::shared_ptr<GraphModel> Picture2 = BlankDisplayPointer("Tachogram");
    bool loaded = false;
};

// The form's load: its keys from the settings file, once.
void LoadHrvGeoForm(HrvGeoForm& f, const std::filesystem::path& iniFile);

// Generate Plots (Command1).
void HRVGeo_Command1(const Session& s, UserDialogs& ui, HrvGeoForm& f);

// The return map of the accepted series: one point (RR(i), RR(i+1)) per successive pair.
GraphModel LorenzPicture(std::span<const float> rr);

}  // namespace ardel::hrv

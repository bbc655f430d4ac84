#include "hrv/geometric.h"

#include <string>

#include "hrv/interval_displays.h"

namespace ardel::hrv {

void LoadHrvGeoForm(HrvGeoForm& f, const std::filesystem::path& iniFile) {
    if (f.loaded) return;
    f.options = LoadHrvGeoSettings(iniFile);
    f.loaded = true;
}

GraphModel LorenzPicture(std::span<const float> rr) {
    GraphModel g = BlankDisplay(std::string(kLorenzTitle));
    g.BottomTitle = "R1R2(ms)";
    g.LeftTitle = "R2R3(ms)";
    g.GraphStyle = kStyleScatter;
    g.SetSymbol(1) = kSymbolCircle;
    if (rr.size() < 2) return g;
    g.SetPointCount(std::int32_t(rr.size() - 1));
    for (std::size_t i = 0; i + 1 < rr.size(); ++i) g.AddPoint(rr[i], rr[i + 1]);
    return g;
}

void HRVGeo_Command1(const Session& s, UserDialogs& ui, HrvGeoForm& f) {
    const HrvGeoSettings& o = f.options;
    const auto accepted = DrawIntervalDisplays(
        s, ui, {o.RRUBound, o.RRLBound, o.RRBinSize, o.DeltaRRBinSize},
        {*f.Graph1, *f.Graph2, *f.Picture2, *f.Picture1, kLorenzTitle});
    if (!accepted) return;
    ReplaceDisplay(*f.Picture1, LorenzPicture(accepted->rr));
}

}  // namespace ardel::hrv

// "Heart Rate Variability: Geometrical Methods": the filter and bin options, Generate Plots and
// Save Options, and the four frames (RR and delta RR histograms, Lorenz plot, tachogram),
// bound both ways to the engine's HrvGeoForm.
#pragma once

#include "ui/hrv/hrv_display.h"

namespace ardel {

struct Forms;
namespace hrv {
struct HrvGeoForm;
}

class HrvGeoWindow : public HrvFormWindow {
    Q_OBJECT
  public:
    HrvGeoWindow(Forms& forms, RunByName run, QWidget* parent = nullptr);

  private:
    void ToForm() override;
    void FromForm() override;

    hrv::HrvGeoForm& form_;
    HrvDisplay* graph1_ = nullptr;
    HrvDisplay* graph2_ = nullptr;
    HrvDisplay* picture1_ = nullptr;
    HrvDisplay* picture2_ = nullptr;
};

}  // namespace ardel

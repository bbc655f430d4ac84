// "Heart Rate Variability:Spectral Analysis": the filter and bin options, the window function,
// Generate Plots and Save Options, and the four displays with the spectrum's spin buttons,
// bound both ways to the engine's HrvSpectralForm. Every button and menu item runs its handler
// by name through the command table.
#pragma once

#include "ui/hrv/hrv_display.h"

class QComboBox;

namespace ardel {

struct Forms;
namespace hrv {
struct HrvSpectralForm;
}

class HrvSpectralWindow : public HrvFormWindow {
    Q_OBJECT
  public:
    HrvSpectralWindow(Forms& forms, RunByName run, QWidget* parent = nullptr);

  private:
    void ToForm() override;
    void FromForm() override;

    hrv::HrvSpectralForm& form_;
    QComboBox* combo5_ = nullptr;
    HrvDisplay* graph1_ = nullptr;
    HrvDisplay* graph2_ = nullptr;
    HrvDisplay* picture2_ = nullptr;
    HrvDisplay* cwGraph1_ = nullptr;
};

}  // namespace ardel

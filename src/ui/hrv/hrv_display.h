// What the spectral and the geometrical heart rate windows share: a display that draws a graph
// model (histogram, tachogram, Lorenz plot, spectrum) and offers its values as a graph window
// does, the option boxes of the interval filter, and the print of all displays on one page.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QMainWindow>

#include "ui/qt_text.h"

#include "graph/graph_model.h"

class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QTimer;
class QWidget;

namespace ardel {

using RunByName = std::function<void(const std::string&)>;

class HrvDisplay : public QLabel {
    Q_OBJECT
  public:
    // name is the control's name ("CWGraph1"); handlerPrefix names its menu's handlers
    // ("HRVSpectral.CWGraph1.").
    HrvDisplay(const char* name, std::string handlerPrefix, RunByName run, QWidget* parent = nullptr);
    // Draws the model again when it changed since the last time.
    void Follow(const std::shared_ptr<GraphModel>& model);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    void Draw();

    std::string prefix_;
    RunByName run_;
    std::shared_ptr<GraphModel> model_;
    std::uint64_t drawn_ = ~std::uint64_t(0);
    // A window being resized asks for many pictures; the last size is drawn once it settles.
    QTimer* resizeTimer_ = nullptr;
};

// The four boxes of the interval filter and the bins, with their captions.
struct IntervalOptionBoxes {
    QComboBox* Combo2 = nullptr;  // RRUBound
    QComboBox* Combo3 = nullptr;  // RRLBound
    QComboBox* Combo1 = nullptr;  // RRBinSize
    QComboBox* Combo4 = nullptr;  // DeltaRRBinSize
};
// Adds the boxes to the grid from its row on; returns the next free row.
int AddIntervalOptionBoxes(QGridLayout* grid, int row, IntervalOptionBoxes& boxes);

// The boxes' texts into the options of either window, and back.
template <class Options>
void BoxesToOptions(const IntervalOptionBoxes& b, Options& o) {
    o.RRUBound = S(b.Combo2->currentText());
    o.RRLBound = S(b.Combo3->currentText());
    o.RRBinSize = S(b.Combo1->currentText());
    o.DeltaRRBinSize = S(b.Combo4->currentText());
}
template <class Options>
void OptionsToBoxes(const Options& o, const IntervalOptionBoxes& b) {
    b.Combo2->setCurrentText(Q(o.RRUBound));
    b.Combo3->setCurrentText(Q(o.RRLBound));
    b.Combo1->setCurrentText(Q(o.RRBinSize));
    b.Combo4->setCurrentText(Q(o.DeltaRRBinSize));
}

// What both windows do around their form: a handler runs with the widgets' texts in the form
// and the widgets follow the form afterwards; the window shows and hides as its flag asks.
class HrvFormWindow : public QMainWindow {
    Q_OBJECT
  public:
    // Call after every command.
    void FollowForms();

  protected:
    HrvFormWindow(bool& shown, RunByName run, QWidget* parent);
    void closeEvent(QCloseEvent* event) override;
    void Run(const std::string& handler);
    // "Generate Plots" (form.Command1) and "Save Options" (form.Command2) under the options from
    // grid row `row`; the options' frame keeps its natural width in `layout`. Returns nothing:
    // the buttons are the options' last rows.
    void AddOptionButtons(QHBoxLayout* layout, QGroupBox* options, QGridLayout* grid, int row,
                          const std::string& form);
    // The widgets' contents into the form, and the widgets and displays from the form.
    virtual void ToForm() = 0;
    virtual void FromForm() = 0;

    bool& shown_;
    RunByName run_;
    IntervalOptionBoxes boxes_;
    bool following_ = false;  // widgets being set from the form: no handlers
};

// "Print Graphs": the displays on one page, two by two, under the window's caption.
void PrintDisplays(QWidget* parent, const QString& caption,
                   const std::vector<std::shared_ptr<GraphModel>>& displays);

}  // namespace ardel

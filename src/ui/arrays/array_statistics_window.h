// The statistics window (CStat): a grid of labelled rows under column titles, as the engine's
// CStatForm holds them. It only shows; "Statistics" of the arrays fills the form.
#pragma once

#include <QDialog>

#include "arrays/array_statistics.h"

class QTableWidget;

namespace ardel {

class ArrayStatisticsWindow : public QDialog {
    Q_OBJECT
  public:
    explicit ArrayStatisticsWindow(QWidget* parent = nullptr);
    // Shows the form's caption, titles and rows.
    void ShowForm(const CStatForm& form);

  private:
    QTableWidget* grid_;
};

}  // namespace ardel

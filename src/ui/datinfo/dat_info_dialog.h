// The header window (DatInfo): the open file's header fields, one row each.
#pragma once

#include <QDialog>

class QTableWidget;

namespace ardel {

struct DatInfoForm;

class DatInfoDialog : public QDialog {
    Q_OBJECT
  public:
    explicit DatInfoDialog(QWidget* parent = nullptr);
    // Shows the form: its caption as the title, its rows in the grid.
    void Fill(const DatInfoForm& form);
    QTableWidget* Grid() const { return grid_; }

  private:
    QTableWidget* grid_;
};

}  // namespace ardel

// The header window (DatInfo): the open file's header fields, one row each.
#pragma once

#include <QDialog>

class QTableWidget;

namespace ardel {

struct Session;

class DatInfoDialog : public QDialog {
    Q_OBJECT
  public:
    explicit DatInfoDialog(QWidget* parent = nullptr);
    // Fills the grid and the title from the session's recording.
    void Fill(const Session& s);
    QTableWidget* Grid() const { return grid_; }

  private:
    QTableWidget* grid_;
};

}  // namespace ardel

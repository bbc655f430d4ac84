#include "ui/datinfo/dat_info_dialog.h"

#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

#include "script/forms.h"

namespace ardel {

DatInfoDialog::DatInfoDialog(QWidget* parent) : QDialog(parent) {
    setObjectName("DatInfo");
    grid_ = new QTableWidget(0, 2, this);
    grid_->setObjectName("Grid1");
    grid_->setHorizontalHeaderLabels({"Parameter", "Value"});
    grid_->verticalHeader()->setVisible(false);
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->horizontalHeader()->setStretchLastSection(true);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    resize(520, 640);
}

void DatInfoDialog::Fill(const DatInfoForm& form) {
    setWindowTitle(QString::fromStdString(form.Caption));
    const auto& rows = form.Grid1;
    grid_->setRowCount(int(rows.size()));
    for (int i = 0; i < int(rows.size()); ++i) {
        grid_->setItem(i, 0,
                       new QTableWidgetItem(QString::fromStdString(rows[std::size_t(i)].first)));
        grid_->setItem(i, 1,
                       new QTableWidgetItem(QString::fromStdString(rows[std::size_t(i)].second)));
    }
    grid_->resizeColumnToContents(0);
}

}  // namespace ardel

#include "ui/arrays/array_statistics_window.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "ui/qt_text.h"

namespace ardel {


ArrayStatisticsWindow::ArrayStatisticsWindow(QWidget* parent) : QDialog(parent) {
    setObjectName("CStat");
    grid_ = new QTableWidget(this);
    grid_->setObjectName("Grid1");
    grid_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    grid_->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    // The grid's text for a spreadsheet: rows tab-separated, as the engine writes it.
    QPushButton* copy = buttons->addButton("Copy", QDialogButtonBox::ActionRole);
    copy->setObjectName("menu_Copy");
    connect(copy, &QPushButton::clicked, this, [this] {
        QString text;
        for (int c = 0; c < grid_->columnCount(); ++c)
            text += "\t" + grid_->horizontalHeaderItem(c)->text();
        text += "\n";
        for (int r = 0; r < grid_->rowCount(); ++r) {
            text += grid_->verticalHeaderItem(r)->text();
            for (int c = 0; c < grid_->columnCount(); ++c) {
                const QTableWidgetItem* item = grid_->item(r, c);
                text += "\t" + (item ? item->text() : QString());
            }
            text += "\n";
        }
        QApplication::clipboard()->setText(text);
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::hide);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(grid_);
    layout->addWidget(buttons);
    resize(360, 420);
}

void ArrayStatisticsWindow::ShowForm(const CStatForm& form) {
    setWindowTitle(Q(form.Caption));
    grid_->clear();
    grid_->setColumnCount(int(form.ColumnTitles.size()));
    grid_->setRowCount(int(form.Rows.size()));
    for (int c = 0; c < int(form.ColumnTitles.size()); ++c) {
        grid_->setHorizontalHeaderItem(c, new QTableWidgetItem(Q(form.ColumnTitles[std::size_t(c)])));
    }
    for (int r = 0; r < int(form.Rows.size()); ++r) {
        const auto& row = form.Rows[std::size_t(r)];
        grid_->setVerticalHeaderItem(r, new QTableWidgetItem(row.empty() ? QString() : Q(row[0])));
        for (std::size_t c = 1; c < row.size(); ++c) {
            auto* item = new QTableWidgetItem(Q(row[c]));
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid_->setItem(r, int(c) - 1, item);
        }
    }
}

}  // namespace ardel

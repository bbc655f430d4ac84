#include "ui/plot/graph_dialogs.h"

#include <limits>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QPixmap>
#include <QVBoxLayout>

#include "ui/plot/graph_render.h"

namespace ardel {

std::vector<std::shared_ptr<GraphModel>> ChooseGraphsToPrint(
    const std::vector<std::shared_ptr<GraphModel>>& graphs, QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName("SelectGraph");
    dialog.setWindowTitle("Select Graphs to Print");
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel("Graphs to print, one a page:"));
    auto* list = new QListWidget;
    for (const auto& g : graphs) {
        auto* item = new QListWidgetItem(QString::fromStdString(g->Caption.empty() ? g->GraphTitle : g->Caption));
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(Qt::Checked);
        list->addItem(item);
    }
    layout->addWidget(list);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    std::vector<std::shared_ptr<GraphModel>> chosen;
    if (dialog.exec() != QDialog::Accepted) return chosen;
    for (int i = 0; i < list->count(); ++i)
        if (list->item(i)->checkState() == Qt::Checked) chosen.push_back(graphs[std::size_t(i)]);
    return chosen;
}

namespace {

QComboBox* ColorBox(int code) {
    auto* box = new QComboBox;
    for (int c = 0; c < kColorCount; ++c) {
        QPixmap swatch(14, 14);
        swatch.fill(GraphColor(c));
        box->addItem(QIcon(swatch), QString::number(c));
    }
    box->setCurrentIndex(((code % kColorCount) + kColorCount) % kColorCount);
    return box;
}

QComboBox* SymbolBox(int symbol) {
    auto* box = new QComboBox;
    box->addItems({"None", "Cross", "Plus", "Dot", "Square", "Triangle", "Diamond"});
    box->setCurrentIndex(symbol >= 0 && symbol < kSymbolCount ? symbol : 0);
    return box;
}

// A range end the user may fix or leave to the data.
struct RangeEnd {
    QCheckBox* fixed;
    QDoubleSpinBox* value;
};

RangeEnd AddRangeEnd(QFormLayout* form, const QString& label, bool fixed, double value) {
    auto* row = new QWidget;
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    RangeEnd end{new QCheckBox("fixed at"), new QDoubleSpinBox};
    end.fixed->setChecked(fixed);
    end.value->setRange(-1e12, 1e12);
    end.value->setDecimals(4);
    end.value->setValue(value);
    end.value->setEnabled(fixed);
    QObject::connect(end.fixed, &QCheckBox::toggled, end.value, &QWidget::setEnabled);
    h->addWidget(end.fixed);
    h->addWidget(end.value, 1);
    form->addRow(label, row);
    return end;
}

// A maximum that is not fixed while the minimum is: the data decide.
constexpr double kFollowData = std::numeric_limits<double>::infinity();

}  // namespace

bool CustomizeGraph(GraphModel& g, QWidget* parent) {
    QDialog dialog(parent);
    dialog.setObjectName("CustomizeGraph");
    dialog.setWindowTitle("Customize Graph");
    auto* form = new QFormLayout(&dialog);
    auto* style = new QComboBox;
    style->addItems({"Line", "Symbols only", "Bars"});
    style->setCurrentIndex(g.GraphStyle == kStyleBars ? 2 : g.GraphStyle == kStyleScatter ? 1 : 0);
    form->addRow("Style", style);
    std::vector<std::pair<QComboBox*, QComboBox*>> sets;
    for (int set = 1; set <= g.SetCount(); ++set) {
        auto* row = new QWidget;
        auto* h = new QHBoxLayout(row);
        h->setContentsMargins(0, 0, 0, 0);
        sets.emplace_back(ColorBox(g.SetColor(set)), SymbolBox(g.SetSymbol(set)));
        h->addWidget(new QLabel("Colour"));
        h->addWidget(sets.back().first);
        h->addWidget(new QLabel("Symbol"));
        h->addWidget(sets.back().second);
        form->addRow(QString("Set %1").arg(set), row);
    }
    const bool userX = g.XAxisStyleFlag == kAxisUserDefined;
    const bool userY = g.YAxisStyleFlag == kAxisUserDefined;
    const RangeEnd xMin = AddRangeEnd(form, "X minimum", userX && g.XAxisUserMinimum, g.XAxisMinimum);
    const RangeEnd xMax = AddRangeEnd(form, "X maximum", userX, g.XAxisMaximum);
    const RangeEnd yMin = AddRangeEnd(form, "Y minimum", userY && g.YAxisUserMinimum, g.YAxisMinimum);
    const RangeEnd yMax = AddRangeEnd(form, "Y maximum", userY,
                                      userY ? g.YAxisMaximum : g.AutoYMaximum());
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    form->addRow(buttons);
    if (dialog.exec() != QDialog::Accepted) return false;

    const int styles[] = {kStyleLine, kStyleScatter, kStyleBars};
    const int chosen = styles[style->currentIndex()];
    // A graph drawn with lines keeps its own line code (6 for the cumulative histograms).
    if (!(chosen == kStyleLine && g.GraphStyle == kStyleLines)) g.GraphStyle = chosen;
    for (int set = 1; set <= g.SetCount(); ++set) {
        g.SetColor(set) = sets[std::size_t(set - 1)].first->currentIndex();
        g.SetSymbol(set) = sets[std::size_t(set - 1)].second->currentIndex();
    }
    // An axis with either end fixed is the user's; the other end then follows the data.
    g.XAxisUserMinimum = xMin.fixed->isChecked();
    g.XAxisMinimum = xMin.value->value();
    g.XAxisMaximum = xMax.fixed->isChecked() ? xMax.value->value() : kFollowData;
    g.XAxisStyleFlag = xMin.fixed->isChecked() || xMax.fixed->isChecked() ? kAxisUserDefined : 0;
    g.YAxisUserMinimum = yMin.fixed->isChecked();
    g.YAxisMinimum = yMin.value->value();
    g.YAxisMaximum = yMax.fixed->isChecked() ? yMax.value->value() : kFollowData;
    g.YAxisStyleFlag = yMin.fixed->isChecked() || yMax.fixed->isChecked() ? kAxisUserDefined : 0;
    return true;
}

}  // namespace ardel

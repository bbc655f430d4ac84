#include "ui/event_grid_model.h"

#include <QColor>

#include "core/event_table.h"
#include "core/session.h"

namespace ardel {

EventGridModel::EventGridModel(const Session& session, QObject* parent)
    : QAbstractTableModel(parent), session_(session) {
    rows_ = session_.events.EventCount();
    version_ = session_.events.GridVersion;
}

int EventGridModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : rows_;
}

int EventGridModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : kGridColumns;
}

QVariant EventGridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    if (role == Qt::TextAlignmentRole) return int(Qt::AlignRight | Qt::AlignVCenter);
    // The current row is tinted, apart from the highlighted rows of the selection.
    if (role == Qt::BackgroundRole) {
        if (index.row() + 1 == session_.events.GridCurrentRow) return QColor(255, 250, 205);
        return {};
    }
    if (role != Qt::DisplayRole) return {};
    // Row r of the view is event r + 1.
    const auto text =
        GridCellText(session_.events, session_.recording, index.row() + 1, index.column());
    if (!text) return {};
    return QString::fromStdString(*text);
}

QVariant EventGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role != Qt::DisplayRole) return QAbstractTableModel::headerData(section, orientation, role);
    if (orientation == Qt::Horizontal) {
        if (section < 0 || section >= kGridColumns) return {};
        return QString::fromStdString(GridCaption(session_.events, section));
    }
    return section + 1;
}

bool EventGridModel::Sync() {
    const int count = session_.events.EventCount();
    const bool rebound = session_.events.GridVersion != version_;
    version_ = session_.events.GridVersion;
    if (count > rows_) {
        beginInsertRows(QModelIndex(), rows_, count - 1);
        rows_ = count;
        endInsertRows();
    } else if (count < rows_) {
        beginRemoveRows(QModelIndex(), count, rows_ - 1);
        rows_ = count;
        endRemoveRows();
    }
    // Records change in place (a recalculation, a group mark, a channel switch that converts
    // them with another scale); the view asks again only for what it shows.
    if (rows_ > 0) emit dataChanged(index(0, 0), index(rows_ - 1, kGridColumns - 1));
    emit headerDataChanged(Qt::Horizontal, 0, kGridColumns - 1);
    return rebound;
}

}  // namespace ardel

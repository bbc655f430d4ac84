// The event grid (TDBGrid1) as a virtual table: it keeps no copy of the events and converts
// only the cells that the view asks for, so a table of any length costs nothing to show.
#pragma once

#include <cstdint>

#include <QAbstractTableModel>

namespace ardel {

struct Session;

class EventGridModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit EventGridModel(const Session& session, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // Catches up with the table after a command: rows added or removed, every shown cell and
    // the count caption refreshed. Rows that stay keep their highlight in the view.
    // Returns true when the table had been rebound since the last call.
    bool Sync();

  private:
    const Session& session_;
    int rows_ = 0;
    std::uint64_t version_ = 0;
};

}  // namespace ardel

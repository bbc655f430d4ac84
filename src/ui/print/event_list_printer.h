// The event list on paper: the rows the list's export gives (all, or the highlighted ones) as a
// table, the line of captions at the top of every page. Print, preview and page setup share one
// printer, so that the page setup holds for the next print.
#pragma once

#include <functional>
#include <memory>

#include <QString>
#include <QStringList>
#include <QVector>

class QPainter;
class QPrinter;
class QWidget;

namespace ardel {

struct Session;

// The pages' content: the captions and the cells of each row.
struct PrintedTable {
    QStringList captions;
    QVector<QStringList> rows;
};

// The table of the rows of index 0 (all) or 1 (highlighted), as the grid shows them.
PrintedTable EventListTable(const Session& s, int index);
// Lays the table out on the printer's pages; returns the number of pages.
int PaintTable(QPrinter& printer, const PrintedTable& table);

inline constexpr const char* kPrintPreviewTitle = "Events Data Print Preview";

class EventListPrinter {
  public:
    explicit EventListPrinter(const Session& s);
    // Another grid on the same pages (the group window's results): its table by index, and
    // the preview window's title and object name.
    EventListPrinter(std::function<PrintedTable(int)> table, QString previewTitle,
                     QString previewName);
    ~EventListPrinter();

    // Prints on the chosen printer at once, without a print dialog. False when there is no
    // printer to print on.
    bool Print(int index);
    // The preview window, modal; it can print from there.
    void Preview(int index, QWidget* parent);
    void PageSetup(QWidget* parent);

  private:
    QPrinter& Printer();

    std::function<PrintedTable(int)> table_;
    QString previewTitle_;
    QString previewName_;
    std::unique_ptr<QPrinter> printer_;
};

}  // namespace ardel

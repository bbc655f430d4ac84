#include "ui/print/event_list_printer.h"

#include <algorithm>

#include <QFontMetrics>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPrintPreviewDialog>
#include <QPrinter>

#include "core/session.h"
#include "events/event_list.h"

namespace ardel {

namespace {

// The export's lines end with CR LF and its cells are separated by tabs; the caption line
// ends each caption with a tab.
QVector<QStringList> SplitRows(const std::string& text) {
    QVector<QStringList> rows;
    for (const QString& line : QString::fromStdString(text).split("\r\n", Qt::SkipEmptyParts))
        rows.push_back(line.split('\t'));
    return rows;
}

}  // namespace

PrintedTable EventListTable(const Session& s, int index) {
    PrintedTable t;
    const auto captionRows = SplitRows(EventListCaptionLine(s));
    if (!captionRows.isEmpty()) {
        t.captions = captionRows.front();
        while (!t.captions.isEmpty() && t.captions.back().isEmpty()) t.captions.removeLast();
    }
    t.rows = SplitRows(EventListExport(s, index));
    return t;
}

int PaintTable(QPrinter& printer, const PrintedTable& table) {
    QPainter painter;
    if (!painter.begin(&printer)) return 0;
    const QRectF page = printer.pageLayout().paintRectPixels(printer.resolution());
    const QRectF area(0, 0, page.width(), page.height());

    QFont font("Sans Serif", 8);
    painter.setFont(font);
    const int columns = std::max<int>(int(table.captions.size()),
                                      table.rows.isEmpty() ? 0 : int(table.rows.front().size()));
    // Each column as wide as its widest cell; all of them shrunk alike when the page is narrow.
    QVector<qreal> widths(columns, 0);
    auto measure = [&](const QStringList& cells, const QFontMetricsF& fm) {
        for (int c = 0; c < std::min<int>(columns, int(cells.size())); ++c)
            widths[c] = std::max(widths[c], fm.horizontalAdvance(cells[c]));
    };
    {
        // The captions are drawn in bold and measured so.
        QFont bold = font;
        bold.setBold(true);
        measure(table.captions, QFontMetricsF(bold, &printer));
        const QFontMetricsF fm(font, &printer);
        for (const QStringList& row : table.rows) measure(row, fm);
    }
    const qreal gap = QFontMetricsF(font, &printer).horizontalAdvance("  ");
    qreal total = 0;
    for (qreal& w : widths) total += (w += gap);
    if (total > area.width() && total > 0) {
        const qreal scale = area.width() / total;
        font.setPointSizeF(std::max(4.0, font.pointSizeF() * scale));
        painter.setFont(font);
        for (qreal& w : widths) w *= scale;
    }
    const QFontMetricsF fm(font, &printer);
    const qreal line = fm.lineSpacing();
    const int rowsPerPage = std::max(1, int((area.height() - 3 * line) / line));
    const int pages = std::max(1, int((table.rows.size() + rowsPerPage - 1) / rowsPerPage));

    auto drawCells = [&](const QStringList& cells, qreal y) {
        qreal x = 0;
        for (int c = 0; c < std::min<int>(columns, int(cells.size())); ++c) {
            painter.drawText(QRectF(x, y, widths[c], line), Qt::AlignLeft | Qt::AlignVCenter,
                             cells[c]);
            x += widths[c];
        }
    };
    for (int p = 0; p < pages; ++p) {
        if (p > 0) printer.newPage();
        QFont bold = font;
        bold.setBold(true);
        painter.setFont(bold);
        drawCells(table.captions, 0);
        painter.setFont(font);
        painter.drawLine(QPointF(0, line * 1.1), QPointF(area.width(), line * 1.1));
        qreal y = line * 1.3;
        const int first = p * rowsPerPage;
        const int last = std::min<int>(int(table.rows.size()), first + rowsPerPage);
        for (int r = first; r < last; ++r, y += line) drawCells(table.rows[r], y);
        painter.drawText(QRectF(0, area.height() - line, area.width(), line), Qt::AlignRight,
                         QString("Page %1 of %2").arg(p + 1).arg(pages));
    }
    painter.end();
    return pages;
}

EventListPrinter::EventListPrinter(const Session& s)
    : EventListPrinter([&s](int index) { return EventListTable(s, index); }, kPrintPreviewTitle,
                       "EventsPrintPreview") {}

EventListPrinter::EventListPrinter(std::function<PrintedTable(int)> table, QString previewTitle,
                                   QString previewName)
    : table_(std::move(table)), previewTitle_(std::move(previewTitle)),
      previewName_(std::move(previewName)) {}

EventListPrinter::~EventListPrinter() = default;

QPrinter& EventListPrinter::Printer() {
    // Made on first use: looking up the printers takes a moment.
    if (!printer_) {
        printer_ = std::make_unique<QPrinter>(QPrinter::HighResolution);
        // Eighteen columns are readable across a page, not down it; page setup can change it.
        printer_->setPageOrientation(QPageLayout::Landscape);
    }
    return *printer_;
}

bool EventListPrinter::Print(int index) {
    QPrinter& printer = Printer();
    return printer.isValid() && PaintTable(printer, table_(index)) > 0;
}

void EventListPrinter::Preview(int index, QWidget* parent) {
    QPrintPreviewDialog dialog(&Printer(), parent);
    dialog.setObjectName(previewName_);
    dialog.setWindowTitle(previewTitle_);
    const PrintedTable table = table_(index);
    QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested,
                     [&table](QPrinter* printer) { PaintTable(*printer, table); });
    dialog.exec();
}

void EventListPrinter::PageSetup(QWidget* parent) {
    QPageSetupDialog dialog(&Printer(), parent);
    dialog.exec();
}

}  // namespace ardel

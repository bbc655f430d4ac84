// The desktop's event list: handlers run by name from actions, buttons and keys; the Criteria
// window bound to its form, with its Stop button re-entering the selection; the grid's
// highlighted rows in the order of highlighting; print preview.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPushButton>
#include <QSet>
#include <QTabWidget>
#include <QTimer>

#include "events/event_list.h"
#include "ui/criteria/criteria_window.h"
#include "ui/print/event_list_printer.h"
#include "window_rig.h"

namespace ardel::testing {
namespace {

class EventListDesktopTest : public MainWindowTest {
  protected:
    // All five events of the recording, detected screen by screen.
    void DetectAll() {
        window_->OpenFileAsClick(recording_);
        ASSERT_TRUE(window_->RunHandler("Command1"));
        for (int i = 0; i < 3; ++i) window_->RunHandler("Command2");
        ASSERT_EQ(S().events.EventCount(), 5);
    }
    QAction* Action(const char* name) { return Find<QAction>(name); }
    void CtrlClickRow(int row, Qt::KeyboardModifiers modifiers = Qt::ControlModifier) {
        auto* grid = Find<QTableView>("TDBGrid1");
        QWidget* vp = grid->viewport();
        const QPointF p = grid->visualRect(grid->model()->index(row, 1)).center();
        QMouseEvent press(QEvent::MouseButtonPress, p, vp->mapToGlobal(p), Qt::LeftButton,
                          Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(vp, &press);
        QMouseEvent release(QEvent::MouseButtonRelease, p, vp->mapToGlobal(p), Qt::LeftButton,
                            Qt::NoButton, modifiers);
        QCoreApplication::sendEvent(vp, &release);
    }
    std::vector<int> Groups() {
        std::vector<int> g;
        for (std::int32_t i = 1; i <= S().events.EventCount(); ++i)
            g.push_back(S().events[i].GroupNumber);
        return g;
    }
};

TEST_F(EventListDesktopTest, MenuItemsAndKeysRunTheirHandlersByName) {
    DetectAll();
    // "Sort Events by" -> Amplitude, from the main menu: the rows come out by amplitude.
    Action("menu_sort(2)")->trigger();
    for (std::int32_t i = 2; i <= 5; ++i)
        EXPECT_LE(S().events[i - 1].Amplitude, S().events[i].Amplitude) << i;
    Action("menu_sort(1)")->trigger();
    for (std::int32_t i = 2; i <= 5; ++i) EXPECT_LT(S().events[i - 1].Time, S().events[i].Time);

    // N marks every event, M those of the current screen, U unmarks the selected one.
    dialogs_.ExpectInput("Mark all events as a group", std::nullopt, "7");
    Press(Picture(), Qt::Key_N);
    EXPECT_EQ(Groups(), (std::vector<int>{7, 7, 7, 7, 7}));
    // The last screen is shown; it holds the last event only.
    dialogs_.ExpectInput("Mark events in this widnow as a group", std::nullopt, "9");
    Press(Picture(), Qt::Key_M);
    EXPECT_EQ(Groups(), (std::vector<int>{7, 7, 7, 7, 9}));
    S().events.CurrentEvent = 5;
    Press(Picture(), Qt::Key_U);
    EXPECT_EQ(S().events[5].GroupNumber, 0);
    // The grid shows the new group at once.
    auto* grid = Find<QTableView>("TDBGrid1");
    EXPECT_EQ(grid->model()->index(4, 8).data().toString().trimmed(), "0");

    // F3 belongs to the group window, which is not there yet: the key is taken, nothing runs.
    const auto before = Groups();
    Press(Picture(), Qt::Key_F3);
    EXPECT_EQ(Groups(), before);

    // An unknown name runs nothing.
    EXPECT_FALSE(window_->RunHandler("menu_NoSuchItem"));
}

TEST_F(EventListDesktopTest, TheGridsHighlightedRowsAreTheListInSelectionOrder) {
    DetectAll();
    CtrlClickRow(2, Qt::NoModifier);
    CtrlClickRow(0);
    CtrlClickRow(4);
    EXPECT_EQ(S().HighlightedRows, (std::vector<std::int32_t>{3, 1, 5}));
    // A row taken out of the selection leaves the list; the others keep their order.
    CtrlClickRow(0);
    EXPECT_EQ(S().HighlightedRows, (std::vector<std::int32_t>{3, 5}));

    // The grid's popup rejects them, in step with what the grid shows.
    auto* popup = Find<QMenu>("menu_events");
    QAction* reject = nullptr;
    for (QAction* a : popup->actions())
        if (a->objectName() == "menu_RejectEvents") reject = a;
    ASSERT_NE(reject, nullptr);
    reject->trigger();
    EXPECT_EQ(Groups(), (std::vector<int>{0, 0, 255, 0, 255}));

    // Copy of the highlighted rows: one line per highlighted row, after the captions.
    Action("menu_copytoclipboard(1)")->trigger();
    EXPECT_EQ(dialogs_.clipboard, EventListCaptionLine(S()) + EventListExport(S(), 1));
}

TEST_F(EventListDesktopTest, CriteriaWindowOpensOnItsTabAndBindsBothWays) {
    DetectAll();
    EXPECT_EQ(window_->criteriaWindow(), nullptr);
    Action("menu_groupEpisodic")->trigger();
    CriteriaWindow* w = window_->criteriaWindow();
    ASSERT_NE(w, nullptr);
    EXPECT_TRUE(w->isVisible());
    EXPECT_EQ(w->windowTitle(), "Criteria Search Events");
    auto* tabs = w->findChild<QTabWidget*>("SSTab1");
    EXPECT_EQ(tabs->currentIndex(), kEpisodicTab);
    Action("menu_CriteriaSearch")->trigger();
    EXPECT_EQ(tabs->currentIndex(), kSearchTab);

    // Widgets -> form: a typed bound is what the search reads.
    auto* lower = w->findChild<QComboBox*>("Combo1(1)");
    auto* group = w->findChild<QComboBox*>("Combo3");
    ASSERT_TRUE(lower && group);
    EXPECT_EQ(lower->currentText(), "Minimum");
    EXPECT_GT(lower->count(), 1);  // the suggestions
    // The third smallest amplitude as the lower bound: a bound equal to a key passes.
    std::vector<float> amplitudes;
    for (std::int32_t i = 1; i <= 5; ++i)
        amplitudes.push_back(S().recording.Bit2pA2(S().events[i].Amplitude));
    std::vector<float> sorted = amplitudes;
    std::sort(sorted.begin(), sorted.end());
    const float cut = sorted[2];
    lower->setCurrentText(QString::number(double(cut), 'g', 9));
    group->setCurrentText("4");
    w->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(window_->forms().criteria.Combo3, "4");
    EXPECT_EQ(window_->forms().criteria.Combo1[1], lower->currentText().toStdString());
    for (std::int32_t i = 1; i <= 5; ++i)
        EXPECT_EQ(S().events[i].GroupNumber == 4, amplitudes[std::size_t(i - 1)] >= cut) << i;

    // Check7 and Check8 exclude each other on the form.
    auto* check7 = w->findChild<QCheckBox*>("Check7");
    auto* check8 = w->findChild<QCheckBox*>("Check8");
    check7->setChecked(true);
    check8->setChecked(true);
    EXPECT_FALSE(check7->isChecked());
    dialogs_.ExpectMessage("Finished", " 5 events are grouped.");
    w->findChild<QPushButton*>("Command3")->click();
    EXPECT_FALSE(window_->forms().criteria.Check7);
    EXPECT_TRUE(window_->forms().criteria.Check8);
}

TEST_F(EventListDesktopTest, StopReentersTheRandomSelectionAndBothRunsReport) {
    DetectAll();
    Action("menu_groupbyrandom")->trigger();
    CriteriaWindow* w = window_->criteriaWindow();
    ASSERT_NE(w, nullptr);
    auto* button = w->findChild<QPushButton*>("Command2");
    // Only ungrouped rows, all of them wanted, after they were all grouped: the run can never
    // finish by itself.
    for (std::int32_t i = 1; i <= 5; ++i) S().events[i].GroupNumber = 2;
    w->findChild<QLineEdit*>("Text1")->setText("3");
    w->findChild<QCheckBox*>("Check4")->setChecked(true);
    int yields = 0;
    QString captionWhileRunning;
    dialogs_.onYield = [&] {
        if (++yields == 50) {
            captionWhileRunning = button->text();
            EXPECT_TRUE(window_->IsRunning());
            button->click();  // the same button, a second time
        }
    };
    dialogs_.ExpectMessage("Selection Finished",
                           " 0 events are randomly selected and grouped as number 1");
    dialogs_.ExpectMessage("Selection Finished",
                           " 0 events are randomly selected and grouped as number 1");
    button->click();
    EXPECT_EQ(captionWhileRunning, "Stop");
    EXPECT_EQ(button->text(), "Start Selection");
    EXPECT_FALSE(window_->IsRunning());
    EXPECT_EQ(Groups(), (std::vector<int>{2, 2, 2, 2, 2}));
}

TEST_F(EventListDesktopTest, CriteriaWindowScreenshotIsNotBlank) {
    DetectAll();
    Action("menu_CriteriaSearch")->trigger();
    CriteriaWindow* w = window_->criteriaWindow();
    ASSERT_NE(w, nullptr);
    QApplication::processEvents();
    const QImage shot = w->grab().toImage();
    ASSERT_FALSE(shot.isNull());
    QSet<QRgb> colours;
    for (int y = 0; y < shot.height(); y += 3)
        for (int x = 0; x < shot.width(); x += 3) colours.insert(shot.pixel(x, y));
    EXPECT_GT(colours.size(), 4);
    EXPECT_GT(shot.width(), 300);
    EXPECT_GT(shot.height(), 300);
}

TEST_F(EventListDesktopTest, PrintPreviewOpensWithItsTitleAndTheTableFillsPages) {
    DetectAll();
    QString title;
    // The preview is modal; it is looked at and closed from the event loop.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<QPrintPreviewDialog*>(QApplication::activeModalWidget())) {
            title = dialog->windowTitle();
            dialog->reject();
        }
    });
    poll.start(20);
    Action("menu_EventsPrintPreview(0)")->trigger();
    poll.stop();
    EXPECT_EQ(title, "Events Data Print Preview");

    // The table on paper: the captions of the grid, one row per event, more pages for more
    // rows.
    const PrintedTable table = EventListTable(S(), 0);
    EXPECT_EQ(table.captions.front(), "5");  // the first caption counts the events
    EXPECT_EQ(table.captions[8], "Group");
    EXPECT_EQ(table.rows.size(), 5);
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(QString::fromStdString((dir_ / "list.pdf").string()));
    EXPECT_EQ(PaintTable(printer, table), 1);
    PrintedTable many = table;
    for (int i = 0; i < 400; ++i) many.rows.push_back(table.rows.front());
    EXPECT_GT(PaintTable(printer, many), 2);
}

}  // namespace
}  // namespace ardel::testing

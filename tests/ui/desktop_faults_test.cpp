// The main window as a newcomer meets it: unsaved edits, the grid's selection, the filter's
// warning, stale texts, refused files, and the conveniences of a desktop program (opening,
// recent files, wheel, auto scale, axes, shortcuts). Every dialog fits a 1280 x 720 screen.
#include <gtest/gtest.h>

#include <fstream>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMimeData>
#include <QTimer>
#include <QUrl>
#include <QWheelEvent>

#include "core/number_text.h"
#include "ui/datinfo/dat_info_dialog.h"
#include "ui/main/recent_files.h"
#include "ui/trace_view.h"
#include "ui/window_rig.h"

namespace ardel::testing {
namespace {

class DesktopTest : public MainWindowTest {
  protected:
    void SetUp() override {
        MainWindowTest::SetUp();
        window_->OpenFileAsClick(recording_);
        ASSERT_TRUE(S().recording.FileIsOpen);
    }
    void TearDown() override {
        // Whatever is left is not saved: the close asks, and is told No.
        if (S().events.HasUnsavedChanges())
            dialogs_.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No);
        window_->close();
        MainWindowTest::TearDown();
    }
    QTableView* Grid() { return Find<QTableView>("TDBGrid1"); }
    QList<int> SelectedRows() {
        QList<int> rows;
        for (const QModelIndex& i : Grid()->selectionModel()->selectedRows()) rows << i.row();
        return rows;
    }
    void AnalyseAll() {
        Press(Picture(), Qt::Key_F9);
        Press(Picture(), Qt::Key_F11);
        ASSERT_EQ(S().events.EventCount(), 5);
    }
};

TEST_F(DesktopTest, AnEditAfterSavingIsOfferedOnCloseAndBeforeAnotherFile) {
    Press(Picture(), Qt::Key_F9);
    ASSERT_GT(S().events.EventCount(), 0);
    dialogs_.ExpectSaveFile(dir_ / "cell1.EVT");
    Find<QAction>("menu_SaveEvent")->trigger();
    ASSERT_FALSE(S().events.HasUnsavedChanges());
    // The saved file shows in the list at once.
    EXPECT_EQ(Find<QListWidget>("FListBoxFETCH")->findItems("cell1.EVT", Qt::MatchExactly).size(),
              1);

    // J rejects the selected event in place: a change all the same.
    Press(Picture(), Qt::Key_J);
    ASSERT_EQ(S().events[S().events.CurrentEvent].GroupNumber, kGroupRejected);
    dialogs_.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::Cancel);
    EXPECT_FALSE(window_->close());
    const fs::path other = MakeRecording(dir_ / "cell2.abf");
    dialogs_.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::Cancel);
    window_->OpenFileAsClick(other);
    EXPECT_EQ(S().Label11, "cell1.abf");
    EXPECT_EQ(S().events[S().events.CurrentEvent].GroupNumber, kGroupRejected);
    // Saving answers the question for good.
    dialogs_.ExpectSaveFile(dir_ / "cell1.EVT")
        .ExpectAsk("Replace File", std::nullopt, Answer::Yes);
    Find<QAction>("menu_SaveEvent")->trigger();
    EXPECT_FALSE(S().events.HasUnsavedChanges());
}

TEST_F(DesktopTest, TheHighlightedRowIsTheSelectedEventAfterEveryCommand) {
    AnalyseAll();
    ClickRow(Grid(), 0);
    dialogs_.ExpectInput("Jump To Event Number", std::nullopt, "4");
    Press(Picture(), Qt::Key_Y);
    EXPECT_EQ(S().events.CurrentEvent, 4);
    EXPECT_EQ(SelectedRows(), QList<int>{3});
    EXPECT_EQ(Grid()->currentIndex().row(), 3);

    // K deletes the fourth; the third becomes the selected event, on the grid too.
    const float deletedTime = S().events[4].Time;
    Press(Picture(), Qt::Key_K);
    ASSERT_EQ(S().events.EventCount(), 4);
    EXPECT_EQ(S().events.CurrentEvent, 3);
    EXPECT_EQ(Grid()->currentIndex().row(), 2);
    EXPECT_EQ(SelectedRows(), QList<int>{2});
    // No mark of the deleted event stays on the picture.
    EXPECT_TRUE(S().display.transientMarks.empty());
    const TraceScene scene = static_cast<TraceView*>(Picture())->CurrentScene();
    const auto x = S().recording.CalculateTimeBit(deletedTime);
    ASSERT_TRUE(x);
    for (const SceneMark& m : scene.marks) EXPECT_GT(std::abs(m.x - *x), 2) << m.x;

    // J rejects the event the grid shows.
    Press(Picture(), Qt::Key_J);
    EXPECT_EQ(S().events[3].GroupNumber, kGroupRejected);
    EXPECT_EQ(S().events[4].GroupNumber, 0);

    // F9 again leaves the grid on the new last event, and that is the selected event.
    Press(Picture(), Qt::Key_A);
    Press(Picture(), Qt::Key_F9);
    EXPECT_EQ(S().events.CurrentEvent, S().events.EventCount());
    EXPECT_EQ(SelectedRows(), QList<int>{S().events.EventCount() - 1});
}

TEST_F(DesktopTest, TheFilterWarningComesOncePerCommand) {
    Find<QComboBox>("Combo5")->setCurrentText("6000");  // above half of 10 kHz
    const std::string text =
        "The cutoff frequency has to be less than a half of sampling frequency.  The sampling "
        "frequency of this record is 10000.  Please adjust the cut-off frequency accordingly.";
    dialogs_.ExpectMessage("Digital Filter", text);
    Find<QCheckBox>("Check1")->click();
    dialogs_.ExpectMessage("Digital Filter", text);
    Press(Picture(), Qt::Key_F11);  // three screens, one warning
    EXPECT_TRUE(dialogs_.Done());
    dialogs_.ExpectMessage("Digital Filter", text);
    Press(Picture(), Qt::Key_A);
    dialogs_.ExpectMessage("Digital Filter", text);
    Press(Picture(), Qt::Key_D);
}

TEST_F(DesktopTest, RefusedFilesLeaveNoStaleNameAndABrokenAbf2SaysWhy) {
    AnalyseAll();
    EXPECT_EQ(Find<QLabel>("StatusText")->text(), "5 events.");
    Press(Picture(), Qt::Key_K);
    EXPECT_NE(Find<QLabel>("StatusText")->text(), "5 events.");

    std::vector<char> abf2(8192, 0);
    std::copy_n("ABF2", 4, abf2.begin());
    std::ofstream(dir_ / "new.abf", std::ios::binary).write(abf2.data(), std::streamsize(abf2.size()));
    dialogs_.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No)
        .ExpectMessage("Inconsistent ABF Header",
                       "The ABF 2 file new.abf cannot be opened (byte 76): the Protocol section is "
                       "missing or too short (0 bytes).");
    window_->OpenFileAsClick(dir_ / "new.abf");
    EXPECT_FALSE(S().recording.FileIsOpen);
    EXPECT_EQ(Find<QLabel>("Label11")->text(), "");
    EXPECT_EQ(window_->windowTitle(), "Ardelvantine");
}

TEST_F(DesktopTest, PresetsAndNoiseThresholdsKeepTheBoxesHonest) {
    Press(Picture(), Qt::Key_F9);
    auto* threshold = Find<QLineEdit>("Text4(0)");
    const QString before = threshold->text();
    dialogs_.ExpectAsk("Confrim Reset", std::nullopt, Answer::Cancel);
    Find<QAction>("menu_SuggParam(3)")->trigger();
    EXPECT_EQ(threshold->text(), before);
    EXPECT_EQ(Find<QComboBox>("Combo1")->currentText(), "Negative");
    EXPECT_GT(S().events.EventCount(), 0);

    dialogs_.ExpectInput("Measure RMS Noise", std::nullopt, "1")
        .ExpectAsk("RMS Noise", std::nullopt, Answer::Yes)
        .ExpectInput("Set Threshold", std::nullopt, "3");
    Find<QAction>("menu_RMSNoise")->trigger();
    EXPECT_EQ(threshold->text().toStdString(), CStr(S().params.ThresholdAmplitude));
    EXPECT_LE(threshold->text().size(), 10);
    EXPECT_EQ(Find<QLineEdit>("Text4(6)")->text(), threshold->text());
}

TEST_F(DesktopTest, ABatchNeverTakesTheTableIntoTheFirstFile) {
    Press(Picture(), Qt::Key_F9);
    const std::int32_t mine = S().events.EventCount();
    ASSERT_GT(mine, 0);
    const fs::path second = MakeRecording(dir_ / "cell2.abf");
    dialogs_.ExpectOpenFiles({second}).ExpectAsk("Save Previous Event Data", std::nullopt,
                                                 Answer::No);
    Find<QAction>("menu_batch")->trigger();
    Session ref;
    SilentDialogs quiet;
    ASSERT_TRUE(OpenDataFile(ref, quiet, second));
    Command1(ref, quiet);
    Command3(ref, quiet);
    ASSERT_TRUE(OpenDataFile(ref, quiet, dir_ / "cell2.EVT"));
    EXPECT_EQ(ref.events.EventCount(), 5);
    EXPECT_EQ(Find<QListWidget>("FListBoxFETCH")->findItems("cell2.EVT", Qt::MatchExactly).size(),
              1);
}

TEST_F(DesktopTest, WheelAutoScaleAndAxesFollowTheScreen) {
    const double first = S().recording.ScreenBlock;
    auto wheel = [&](int delta, Qt::KeyboardModifiers m) {
        const QPointF p(50, 50);
        QWheelEvent e(p, Picture()->mapToGlobal(p), QPoint(), QPoint(0, delta), Qt::NoButton, m,
                      Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(Picture(), &e);
    };
    wheel(-240, Qt::NoModifier);  // two notches down: two screens on
    EXPECT_EQ(S().recording.ScreenBlock, first + 8);
    wheel(120, Qt::NoModifier);
    EXPECT_EQ(S().recording.ScreenBlock, first + 4);
    wheel(120, Qt::ControlModifier);
    EXPECT_EQ(S().display.DisplayGain[0], 2.0f);
    EXPECT_EQ(Find<QLineEdit>("Text1")->text(), "2");

    Find<QAction>("menu_AutoScale")->trigger();
    EXPECT_GT(S().display.DisplayGain[0], 5.0f);
    EXPECT_EQ(Find<QLineEdit>("Text1")->text().toStdString(),
              CStr(S().display.DisplayGain[0]));
    EXPECT_EQ(Find<QAction>("menu_AutoScale")->shortcut(), QKeySequence(Qt::Key_F4));

    // The axes are drawn beside the picture.
    QApplication::processEvents();
    for (const char* name : {"TimeAxis", "AmplitudeAxis"}) {
        QWidget* axis = Find<QWidget>(name);
        ASSERT_TRUE(axis->isVisible()) << name;
        const QImage img = axis->grab().toImage();
        int dark = 0;
        for (int y = 0; y < img.height(); ++y)
            for (int x = 0; x < img.width(); ++x) dark += qGray(img.pixel(x, y)) < 100;
        EXPECT_GT(dark, 20) << name;
    }
}

TEST_F(DesktopTest, OpeningByMenuByDropAndFromTheRecentList) {
    EXPECT_EQ(Find<QAction>("menu_OpenRecording")->shortcut(), QKeySequence(QKeySequence::Open));
    EXPECT_EQ(Find<QAction>("menu_SaveEvent")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_S));
    EXPECT_EQ(Find<QAction>("menu_Exit")->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Q));
    EXPECT_EQ(RecentFiles::List().value(0), QString::fromStdString(recording_.string()));
    EXPECT_EQ(RecentFiles::LastFolder(), QString::fromStdString(dir_.path().string()));

    const fs::path sub = dir_ / "sub";
    fs::create_directory(sub);
    const fs::path second = MakeRecording(sub / "cell2.abf");
    dialogs_.ExpectOpenFile(second);
    Find<QAction>("menu_OpenRecording")->trigger();
    EXPECT_EQ(S().Label11, "cell2.abf");
    EXPECT_EQ(S().CurrentFolder, sub);

    // A drop opens the file; the recent list has both, the latest first.
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(QString::fromStdString(recording_.string()))});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window_.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(10, 10), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window_.get(), &drop);
    QApplication::processEvents();
    EXPECT_EQ(S().Label11, "cell1.abf");
    auto* recent = Find<QMenu>("menu_RecentFiles");
    ASSERT_GE(recent->actions().size(), 2);
    EXPECT_TRUE(recent->actions()[0]->text().endsWith("cell1.abf"));
    EXPECT_TRUE(recent->actions()[1]->text().endsWith("cell2.abf"));
    recent->actions()[1]->trigger();
    EXPECT_EQ(S().Label11, "cell2.abf");

    // A new window started without a file shows the folder used last.
    Ardelvantine fresh(dir_.path() / "sub", &dialogs_);
    fs::create_directory(dir_ / "elsewhere");
    window_->ShowFolder(dir_ / "elsewhere");
    fresh.ShowLastFolder();
    EXPECT_EQ(fresh.session().CurrentFolder, dir_ / "elsewhere");
}

TEST_F(DesktopTest, SeveralChannelsAreNamedInALegend) {
    const fs::path two = MakeRecording(dir_ / "two.abf", 2);
    dialogs_.ExpectInput("Enter Channel Number", std::nullopt, "0");
    window_->OpenFileAsClick(two);
    EXPECT_EQ(static_cast<TraceView*>(Picture())->CurrentScene().legend.size(), 2u);
}

// Every dialog the main window opens, with the Qt dialogs, fits a 1280 x 720 screen.
TEST(DesktopDialogs, EveryDialogOfTheMainWindowFitsASmallScreen) {
    TempDir dir;
    const fs::path file = MakeRecording(dir / "cell1.abf");
    Ardelvantine w(dir.path());
    w.resize(1200, 680);
    w.show();
    w.OpenFileAsClick(file);
    ASSERT_TRUE(w.session().recording.FileIsOpen);

    QStringList seen, tooBig;
    QTimer closer;
    closer.setInterval(5);
    QObject::connect(&closer, &QTimer::timeout, [&] {
        auto* d = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!d) return;
        const QSize size = d->frameGeometry().size();
        seen << d->windowTitle();
        if (size.width() > 1280 || size.height() > 720)
            tooBig << QString("%1 %2x%3").arg(d->windowTitle()).arg(size.width()).arg(size.height());
        d->done(QDialog::Rejected);
    });
    closer.start();
    for (QAction* a : w.findChildren<QAction*>()) {
        const QString name = a->objectName();
        if (name.isEmpty() || name == "menu_Exit" || name.startsWith("menu_RecentFiles") ||
            a->menu())
            continue;
        a->trigger();
        QApplication::processEvents();
    }
    closer.stop();
    EXPECT_GE(seen.size(), 20);  // messages, questions, input boxes and file dialogs
    EXPECT_TRUE(seen.contains("Measure RMS Noise"));
    EXPECT_TRUE(tooBig.isEmpty()) << tooBig.join(", ").toStdString();
    if (auto* info = w.findChild<DatInfoDialog*>()) {
        EXPECT_LE(info->frameGeometry().height(), 720);
        EXPECT_LE(info->frameGeometry().width(), 1280);
    }
}

}  // namespace
}  // namespace ardel::testing

#include "ui/main_window.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QImage>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>

#include "core/event_commands.h"
#include "core/open_file.h"
#include "core/settings.h"
#include "detect/digital_filter.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"
#include "ui/window_rig.h"
#include "support/synthetic.h"
#include "ui/datinfo/dat_info_dialog.h"
#include "ui/trace_view.h"
#include "view/navigation.h"

namespace ardel::testing {
namespace {

namespace fs = std::filesystem;

TEST_F(MainWindowTest, ControlsAndActionsCarryTheirNamesAndCaptions) {
    for (const char* name :
         {"Picture1",   "FListBoxFETCH", "Label11",    "Label4",         "Text1",
          "Text3",      "Slider1",       "Slider2",    "Combo3",         "Text4(0)",
          "Text4(6)",   "Combo1",        "Combo2",     "ckComplexPeak",  "ckSoundOn",
          "ckTooltips", "ckLockBase",    "cbFraction", "ckDisplayTrace", "cbGpNav",
          "cbInterval", "Check1",        "Combo4",     "Combo5",         "TDBGrid1"})
        Find<QWidget>(name);
    const std::pair<const char*, const char*> buttons[] = {
        {"Command1", "&Analyse this window (F9)"},
        {"Command2", "Analyse &next window (F10)"},
        {"Command3", "Non&stop Analys. (F11)"},
        {"Command4", "&Interrupt (F12)"},
        {"Command5", "Reset Events"},
        {"Command6", "&Save Settings"},
        {"Command7", "Save Settings"}};
    for (const auto& [name, caption] : buttons)
        EXPECT_EQ(Find<QPushButton>(name)->text(), caption) << name;
    EXPECT_EQ(Find<QPushButton>("Command3")->toolTip(),
              "Continuous analysis starting from next window");
    EXPECT_EQ(Find<QPushButton>("Command6")->toolTip(), "Save settings in Ardelvan.ini");

    auto* combo1 = Find<QComboBox>("Combo1");
    ASSERT_EQ(combo1->count(), 2);
    EXPECT_EQ(combo1->itemText(0), "Negative");
    EXPECT_EQ(combo1->itemData(0).toInt(), -1);
    EXPECT_EQ(combo1->itemData(1).toInt(), 1);

    for (const char* name :
         {"menu_DatInfo", "menu_ExtractSynchArray(2)", "menu_OpenEvent", "menu_SaveEvent",
          "menu_SaveParameter", "menu_LoadParameter", "menu_FileComments", "menu_SaveSettingsArdel",
          "menu_SaveSettingsCustom", "menu_LoadSettings", "menu_batch", "menu_DoublePeak_Click",
          "menu_ScanDoublePeak"})
        Find<QAction>(name);

    auto* nav = Find<QMenu>("menu_Navigates");
    const auto actions = nav->actions();
    ASSERT_EQ(actions.size(), kNavigationItemCount);
    for (int i = 1; i <= kNavigationItemCount; ++i) {
        const auto item = NavigationItem(i);
        EXPECT_EQ(actions[i - 1]->isSeparator(), IsSeparator(item)) << i;
        if (!IsSeparator(item)) {
            // The caption, and beside it the keys.
            const QStringList parts = actions[i - 1]->text().split('\t');
            ASSERT_EQ(parts.size(), 2) << i;
            EXPECT_EQ(parts[0].toStdString(), NavigationCaption(item)) << i;
            EXPECT_EQ(parts[1].toStdString(), NavigationKeyText(item)) << i;
            EXPECT_TRUE(actions[i - 1]->shortcut().isEmpty()) << i;
        }
    }
    EXPECT_FALSE(Find<QMenu>("menu_ShortCuts")->actions().isEmpty());
}

TEST_F(MainWindowTest, FileListShowsThePatternAndAClickOpensTheFile) {
    std::ofstream(dir_ / "notes.txt") << "x";
    std::ofstream(dir_ / "old.EVT") << "x";
    fs::create_directory(dir_ / "sub");
    window_->ShowFolder(dir_.path());
    auto* list = Find<QListWidget>("FListBoxFETCH");
    QStringList names;
    for (int i = 0; i < list->count(); ++i) names << list->item(i)->text();
    EXPECT_TRUE(names.contains("cell1.abf"));
    EXPECT_TRUE(names.contains("old.EVT"));
    EXPECT_TRUE(names.contains("sub"));
    EXPECT_FALSE(names.contains("notes.txt"));

    const auto hits = list->findItems("cell1.abf", Qt::MatchExactly);
    ASSERT_EQ(hits.size(), 1);
    emit list->itemClicked(hits.first());
    EXPECT_TRUE(S().recording.FileIsOpen);
    EXPECT_EQ(Find<QLabel>("Label11")->text(), "cell1.abf");
    EXPECT_EQ(Find<QSlider>("Slider2")->maximum(), S().recording.TotalBlocks);
    EXPECT_EQ(Find<QComboBox>("Combo3")->count(), 1);
}

TEST_F(MainWindowTest, F9AddsTheEventsTheEngineFindsAndTheGridShowsThem) {
    window_->OpenFileAsClick(recording_);
    Press(Picture(), Qt::Key_F9);
    const Session ref = Reference();
    ASSERT_GT(ref.events.EventCount(), 0);
    ASSERT_EQ(S().events.EventCount(), ref.events.EventCount());
    for (std::int32_t n = 1; n <= ref.events.EventCount(); ++n)
        EXPECT_EQ(S().events[n], ref.events[n]) << n;

    auto* grid = Find<QTableView>("TDBGrid1");
    auto* model = grid->model();
    EXPECT_EQ(model->rowCount(), ref.events.EventCount());
    EXPECT_EQ(model->columnCount(), kGridColumns);
    EXPECT_EQ(model->headerData(0, Qt::Horizontal).toString().toStdString(),
              GridCaption(ref.events, 0));
    EXPECT_EQ(model->headerData(1, Qt::Horizontal).toString(), "Time (ms)");
    for (int c = 0; c < kGridColumns; ++c)
        EXPECT_EQ(model->data(model->index(0, c)).toString().toStdString(),
                  *GridCellText(ref.events, ref.recording, 1, c))
            << c;
    EXPECT_FALSE(model->data(model->index(0, kGridColumns)).isValid());
    // The grid follows to the last row found.
    EXPECT_EQ(grid->currentIndex().row(), ref.events.EventCount() - 1);

    // F10 analyses the next screen, as the engine's Command2 does.
    Press(Picture(), Qt::Key_F10);
    const Session ref2 = Reference(2);
    EXPECT_EQ(S().events.EventCount(), ref2.events.EventCount());
    EXPECT_EQ(model->rowCount(), ref2.events.EventCount());
}

TEST_F(MainWindowTest, TheFilterBoxFiltersWhatF9AndF11AnalyseAsTheCommandLineDoes) {
    window_->OpenFileAsClick(recording_);
    Find<QComboBox>("Combo4")->setCurrentIndex(0);  // LoPass Butterworth
    Find<QComboBox>("Combo5")->setCurrentText("300");
    Find<QCheckBox>("Check1")->click();  // redraws the screen filtered
    Press(Picture(), Qt::Key_F9);
    Press(Picture(), Qt::Key_F11);

    // The command line's route for detect --filter: the same options, the filter installed
    // before the file is opened, then F9 and F11.
    Session ref;
    SilentDialogs quiet;
    ref.options.FilterOn = true;
    ref.options.FilterType = 0;
    ref.options.FilterFreq = "300";
    InstallDigitalFilter(ref, quiet);
    ASSERT_TRUE(OpenDataFile(ref, quiet, recording_));
    Command1(ref, quiet);
    Command3(ref, quiet);

    Session unfiltered;
    ASSERT_TRUE(OpenDataFile(unfiltered, quiet, recording_));
    Command1(unfiltered, quiet);
    Command3(unfiltered, quiet);

    ASSERT_GT(ref.events.EventCount(), 0);
    ASSERT_EQ(S().events.EventCount(), ref.events.EventCount());
    for (std::int32_t n = 1; n <= ref.events.EventCount(); ++n)
        EXPECT_EQ(S().events[n], ref.events[n]) << n;
    // A 300 Hz low-pass at 10 kHz flattens the peaks: the filter really was applied.
    EXPECT_NE(ref.events[1].Amplitude, unfiltered.events[1].Amplitude);
}

TEST_F(MainWindowTest, ParametersAreTakenFromTheControlsWithValSemantics) {
    window_->OpenFileAsClick(recording_);
    Find<QLineEdit>("Text4(0)")->setText("7.5abc");
    Find<QComboBox>("Combo2")->setCurrentText(" 3");
    Find<QComboBox>("Combo1")->setCurrentIndex(1);
    Find<QCheckBox>("ckComplexPeak")->setChecked(true);
    Press(Picture(), Qt::Key_F9);
    EXPECT_FLOAT_EQ(S().params.ThresholdAmplitude, 7.5f);
    EXPECT_EQ(S().params.NumberPointsPeak, 3);
    EXPECT_EQ(S().params.PeakDirection, 1);
    EXPECT_TRUE(S().options.ComplexPeak);
    // Nothing changed them, so the boxes keep their text as typed.
    EXPECT_EQ(Find<QLineEdit>("Text4(0)")->text(), "7.5abc");
}

TEST_F(MainWindowTest, KeysMoveScreensAndEventsButNotWhileTypingInABox) {
    window_->OpenFileAsClick(recording_);
    const double first = S().recording.ScreenBlock;
    Press(Picture(), Qt::Key_D);
    EXPECT_EQ(S().recording.ScreenBlock, first + 4);
    EXPECT_EQ(Find<QSlider>("Slider2")->value(), int(first + 4));
    Press(Picture(), Qt::Key_S);
    EXPECT_EQ(S().recording.ScreenBlock, first);
    Press(Picture(), Qt::Key_F7);
    EXPECT_EQ(S().recording.ScreenBlock, first + 4);
    Press(Picture(), Qt::Key_A);
    EXPECT_EQ(S().recording.ScreenBlock, first);

    auto* box = Find<QLineEdit>("Text4(0)");
    window_->activateWindow();
    box->setFocus();
    box->setText("5");
    Press(box, Qt::Key_D, Qt::NoModifier, "d");
    EXPECT_EQ(S().recording.ScreenBlock, first);
    EXPECT_EQ(box->text(), "5d");
    box->setText("5");
    // Function keys are the window's even there.
    Press(box, Qt::Key_F7);
    EXPECT_EQ(S().recording.ScreenBlock, first + 4);
    Picture()->setFocus();

    // Events: analyse the whole file, then move through the table.
    Press(Picture(), Qt::Key_A);
    Press(Picture(), Qt::Key_F9);
    Press(Picture(), Qt::Key_F11);
    const std::int32_t count = S().events.EventCount();
    ASSERT_GE(count, 3);
    auto* grid = Find<QTableView>("TDBGrid1");
    Press(Picture(), Qt::Key_Z);
    EXPECT_EQ(S().events.CurrentEvent, 1);
    EXPECT_EQ(grid->currentIndex().row(), 0);
    EXPECT_EQ(S().recording.ScreenBlock, ScreenBlockForEvent(S(), 1));
    Press(Picture(), Qt::Key_C);
    EXPECT_EQ(S().events.CurrentEvent, 2);
    EXPECT_EQ(grid->currentIndex().row(), 1);
    Press(Picture(), Qt::Key_V);
    EXPECT_EQ(S().events.CurrentEvent, count);
    EXPECT_EQ(S().display.SelectedEvent, count);

    // Home doubles the gain and the box shows it.
    Press(Picture(), Qt::Key_Home);
    EXPECT_EQ(Find<QLineEdit>("Text1")->text(), "2");
}

TEST_F(MainWindowTest, AClickInTheGridSelectsTheEventAndMovesTheScreen) {
    window_->OpenFileAsClick(recording_);
    Press(Picture(), Qt::Key_F9);
    Press(Picture(), Qt::Key_F11);
    ASSERT_GE(S().events.EventCount(), 4);
    Press(Picture(), Qt::Key_A);
    auto* grid = Find<QTableView>("TDBGrid1");
    ClickRow(grid, 3);
    EXPECT_EQ(S().events.CurrentEvent, 4);
    EXPECT_EQ(S().display.SelectedEvent, 4);
    EXPECT_EQ(S().recording.ScreenBlock, ScreenBlockForEvent(S(), 4));

    // A second click on the same row, after the screen moved away, brings it back.
    Press(Picture(), Qt::Key_A);
    ClickRow(grid, 3);
    EXPECT_EQ(S().recording.ScreenBlock, ScreenBlockForEvent(S(), 4));

    // A keyboard move in the grid does the same.
    grid->selectionModel()->setCurrentIndex(
        grid->model()->index(1, 0),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    EXPECT_EQ(S().events.CurrentEvent, 2);
    EXPECT_EQ(S().recording.ScreenBlock, ScreenBlockForEvent(S(), 2));

    // Highlighted rows are kept in the order they were highlighted.
    grid->selectionModel()->select(grid->model()->index(3, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    grid->selectionModel()->select(grid->model()->index(0, 0),
                                   QItemSelectionModel::Select | QItemSelectionModel::Rows);
    EXPECT_EQ(window_->HighlightedEvents(), (std::vector<std::int32_t>{2, 4, 1}));

    // The grid's popup deletes the selected event.
    const std::int32_t before = S().events.EventCount();
    const float third = S().events[3].Time;
    auto* popup = Find<QMenu>("menu_events");
    ASSERT_FALSE(popup->actions().isEmpty());
    QAction* del = popup->actions().front();
    EXPECT_EQ(del->objectName(), "menu_DeletEvent");
    del->trigger();
    EXPECT_EQ(S().events.EventCount(), before - 1);
    EXPECT_EQ(S().events[2].Time, third);
}

TEST_F(MainWindowTest, MouseOnTheTraceDetectsSelectsAndEditsEvents) {
    window_->OpenFileAsClick(recording_);
    // A left click near the first event detects it, once.
    ClickTrace(Picture(), 402, Qt::LeftButton);
    ASSERT_EQ(S().events.EventCount(), 1);
    const float time = S().events[1].Time;
    EXPECT_NEAR(time, 40.0, 1.0);
    ClickTrace(Picture(), 402, Qt::LeftButton);
    EXPECT_EQ(S().events.EventCount(), 1);
    EXPECT_EQ(Find<QTableView>("TDBGrid1")->model()->rowCount(), 1);

    // The right button selects it and shows the event menu with the mark blinking; the
    // reject item puts it into group 255.
    auto* menu = Find<QMenu>("menu_EventEdit");
    auto* timer1 = window_->findChild<QTimer*>("Timer1");
    bool blinked = false;
    QTimer::singleShot(0, menu, [&] {
        blinked = timer1->isActive();
        Find<QAction>("menu_RejectThisEvent")->trigger();
        menu->close();
    });
    ClickTrace(Picture(), 400, Qt::RightButton);
    EXPECT_TRUE(blinked);
    EXPECT_FALSE(timer1->isActive());
    EXPECT_EQ(S().events.CurrentEvent, 1);
    EXPECT_EQ(S().events[1].GroupNumber, 255);

    // Where there is no event the right button shows nothing.
    ClickTrace(Picture(), 900, Qt::RightButton);
    EXPECT_FALSE(timer1->isActive());

    // Ctrl+click deletes the event under the pointer.
    ClickTrace(Picture(), 400, Qt::LeftButton, Qt::ControlModifier);
    EXPECT_EQ(S().events.EventCount(), 0);

    // The cursors appear with their readout.
    Find<QCheckBox>("ckCursors")->click();
    EXPECT_TRUE(window_->Cursors().ckCursors);
    EXPECT_FALSE(Find<QLabel>("lbCursor")->text().isEmpty());
}

TEST_F(MainWindowTest, TimedDisplayStepsThroughTheRecordingAndStopsAtTheEnd) {
    window_->OpenFileAsClick(recording_);
    dialogs_.ExpectInput("Display Interval", std::nullopt, "1");
    Find<QAction>("menu_DisplayContinously")->trigger();
    auto* timer2 = window_->findChild<QTimer*>("Timer2");
    ASSERT_TRUE(timer2->isActive());
    QElapsedTimer clock;
    clock.start();
    while (timer2->isActive() && clock.elapsed() < 5000) QApplication::processEvents();
    EXPECT_FALSE(timer2->isActive());
    EXPECT_FALSE(S().display.NonStopRunning);
    // The last screen that starts within the recording: 16 Blocks in screens of 4.
    EXPECT_EQ(S().recording.ScreenBlock, S().recording.header.lDataSectionPtr + 16);
}

TEST_F(MainWindowTest, BatchAnalysisSavesAnEventFileBesideEachRecording) {
    const fs::path second = MakeRecording(dir_ / "cell2.abf");
    dialogs_.ExpectOpenFiles({recording_, second});
    Find<QAction>("menu_batch")->trigger();
    EXPECT_TRUE(fs::exists(dir_ / "cell1.EVT"));
    EXPECT_TRUE(fs::exists(dir_ / "cell2.EVT"));
    EXPECT_FALSE(window_->IsRunning());
    EXPECT_EQ(S().events.EventCount(), 0);  // reset after each file
    EXPECT_EQ(Find<QLabel>("Label11")->text(), "cell2.abf");
}

TEST_F(MainWindowTest, DisplayBoxesKeepTheirLimits) {
    window_->OpenFileAsClick(recording_);
    auto enter = [](QLineEdit* box, const char* text) {
        box->setText(text);
        box->setModified(true);
        emit box->editingFinished();
    };
    auto* text1 = Find<QLineEdit>("Text1");
    enter(text1, "0");
    EXPECT_EQ(text1->text(), "0.001");
    EXPECT_FLOAT_EQ(S().display.DisplayGain[0], 0.001f);
    auto* text3 = Find<QLineEdit>("Text3");
    enter(text3, "100000");
    EXPECT_EQ(text3->text(), "32767");
    EXPECT_FLOAT_EQ(S().recording.BlocksPerScreen, 32767.0f);
    enter(text3, "2");
    EXPECT_EQ(S().recording.ScreenPoints(), 512);
    auto* slider1 = Find<QSlider>("Slider1");
    slider1->setValue(1000);
    EXPECT_EQ(S().display.DisplayOffset[0], 1000);
}

TEST_F(MainWindowTest, SettingsGoThroughTheControlsBothWays) {
    Find<QLineEdit>("Text4(0)")->setText("7.5");
    Find<QLineEdit>("Text4(1)")->setText("12000");
    Find<QComboBox>("Combo1")->setCurrentIndex(1);
    Find<QComboBox>("Combo2")->setCurrentText("3");
    Find<QCheckBox>("ckComplexPeak")->setChecked(true);
    Find<QComboBox>("cbFraction")->setCurrentText("0.4");
    Find<QComboBox>("cbGpNav")->setCurrentText("7");
    Find<QCheckBox>("ckDisplayTrace")->setChecked(false);
    dialogs_.ExpectMessage(std::string(kSettingsSavedTitle), std::string(kSettingsSavedText));
    Find<QPushButton>("Command6")->click();
    dialogs_.ExpectMessage(std::string(kSettingsSavedTitle), std::string(kSettingsSavedText));
    Find<QPushButton>("Command7")->click();
    ASSERT_TRUE(fs::exists(window_->IniPath()));
    EXPECT_EQ(window_->IniPath(), dir_ / "Ardelvan.ini");

    ScriptedDialogs quiet;
    Ardelvantine second(dir_.path(), &quiet);
    auto find = [&](const char* name) { return second.findChild<QWidget*>(name); };
    EXPECT_EQ(static_cast<QLineEdit*>(find("Text4(0)"))->text(), "7.5");
    EXPECT_EQ(static_cast<QLineEdit*>(find("Text4(1)"))->text(), "12000");
    EXPECT_EQ(static_cast<QComboBox*>(find("Combo1"))->currentText(), "Positive");
    EXPECT_EQ(static_cast<QComboBox*>(find("Combo2"))->currentText(), "3");
    EXPECT_TRUE(static_cast<QCheckBox*>(find("ckComplexPeak"))->isChecked());
    EXPECT_EQ(static_cast<QComboBox*>(find("cbFraction"))->currentText(), "0.4");
    EXPECT_EQ(static_cast<QComboBox*>(find("cbGpNav"))->currentText(), "7");
    EXPECT_FALSE(static_cast<QCheckBox*>(find("ckDisplayTrace"))->isChecked());
    EXPECT_FLOAT_EQ(second.session().params.ThresholdAmplitude, 7.5f);
    EXPECT_EQ(second.session().params.PeakDirection, 1);
}

TEST(MainWindowSettings, ABadFlagIsReportedAndTheDefaultsAreShown) {
    TempDir dir;
    std::ofstream(dir / "Ardelvan.ini") << "[Analysis]\nThresholdAmplitude!=9\n"
                                           "ComplexPeak=perhaps\n";
    ScriptedDialogs dialogs;
    dialogs.ExpectMessage("Ardelvan.ini");
    {
        Ardelvantine w(dir.path(), &dialogs);
        EXPECT_EQ(w.findChild<QLineEdit*>("Text4(0)")->text(), "5");
        EXPECT_FLOAT_EQ(w.session().params.ThresholdAmplitude, 5.0f);
    }
    EXPECT_TRUE(dialogs.Done());
}

TEST(MainWindowSettings, ToolTipsOffParksTheTipsAndTheBoxBringsThemBack) {
    TempDir dir;
    std::ofstream(dir / "Ardelvan.ini") << "[Program]\nDisplayTooltips=False\n";
    ScriptedDialogs dialogs;
    Ardelvantine w(dir.path(), &dialogs);
    auto* command6 = w.findChild<QPushButton*>("Command6");
    auto* box = w.findChild<QCheckBox*>("ckTooltips");
    EXPECT_TRUE(command6->toolTip().isEmpty());
    EXPECT_EQ(command6->property("Tag").toString(), "Save settings in Ardelvan.ini");
    EXPECT_FALSE(box->isChecked());
    box->click();
    EXPECT_EQ(command6->toolTip(), "Save settings in Ardelvan.ini");
}

TEST_F(MainWindowTest, EventFilesRoundTripAndLoadedParametersReachTheControls) {
    window_->OpenFileAsClick(recording_);
    Press(Picture(), Qt::Key_F9);
    const std::int32_t count = S().events.EventCount();
    ASSERT_GT(count, 0);
    const fs::path evt = dir_ / "cell1.EVT";
    dialogs_.ExpectSaveFile(evt);
    Find<QAction>("menu_SaveEvent")->trigger();
    ASSERT_TRUE(fs::exists(evt));

    dialogs_.ExpectAsk("Confrim Reset", std::nullopt, Answer::OK);
    Find<QPushButton>("Command5")->click();
    EXPECT_EQ(S().events.EventCount(), 0);
    EXPECT_EQ(Find<QTableView>("TDBGrid1")->model()->rowCount(), 0);

    // The box is changed, then the event file brings the stored threshold back into it.
    Find<QLineEdit>("Text4(0)")->setText("9");
    dialogs_.ExpectOpenFile(evt);
    Find<QAction>("menu_OpenEvent")->trigger();
    EXPECT_EQ(S().events.EventCount(), count);
    EXPECT_EQ(Find<QLineEdit>("Text4(0)")->text(), "5");
    EXPECT_EQ(Find<QTableView>("TDBGrid1")->model()->rowCount(), count);
}

TEST_F(MainWindowTest, AnUnexpectedErrorBecomesAMessageAndTheSessionStaysUsable) {
    window_->OpenFileAsClick(recording_);
    Find<QLineEdit>("Text4(1)")->setText("99999999999");  // too large for its variable
    // The message names the program in its title and the command in its text, as a script
    // prints it.
    dialogs_.ExpectMessage("Ardelvantine");
    Press(Picture(), Qt::Key_F9);
    EXPECT_EQ(S().events.EventCount(), 0);
    Find<QLineEdit>("Text4(1)")->setText("10000");
    Press(Picture(), Qt::Key_F9);
    EXPECT_EQ(S().events.EventCount(), Reference().events.EventCount());
}

TEST_F(MainWindowTest, Label11OpensTheHeaderWindow) {
    window_->OpenFileAsClick(recording_);
    auto* label = Find<QLabel>("Label11");
    const QPointF p(2, 2);
    QMouseEvent press(QEvent::MouseButtonPress, p, label->mapToGlobal(p), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, p, label->mapToGlobal(p), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(label, &press);
    QCoreApplication::sendEvent(label, &release);
    auto* info = window_->findChild<DatInfoDialog*>("DatInfo");
    ASSERT_NE(info, nullptr);
    EXPECT_TRUE(info->isVisible());
    EXPECT_EQ(info->windowTitle().toStdString(), DatInfoTitle(S()));
    EXPECT_EQ(info->Grid()->rowCount(), int(DatInfoRows(S()).size()));
    EXPECT_EQ(info->Grid()->horizontalHeaderItem(0)->text(), "Parameter");
}

TEST_F(MainWindowTest, TwoChannelsAskForTheChannelAndCombo3SwitchesIt) {
    const fs::path two = MakeRecording(dir_ / "two.abf", 2);
    dialogs_.ExpectInput("Enter Channel Number", std::nullopt, "1");
    window_->OpenFileAsClick(two);
    auto* combo3 = Find<QComboBox>("Combo3");
    ASSERT_EQ(combo3->count(), 2);
    EXPECT_EQ(combo3->currentIndex(), 1);
    EXPECT_EQ(S().recording.ChannelIndex, 1);
    emit combo3->activated(0);
    EXPECT_EQ(S().recording.ChannelIndex, 0);
}

TEST_F(MainWindowTest, ScreenshotOfTheWindowShowsTheTraceAndTheMarks) {
    window_->OpenFileAsClick(recording_);
    Press(Picture(), Qt::Key_F9);
    ASSERT_GT(S().events.EventCount(), 0);
    QApplication::processEvents();
    const QImage shot = window_->grab().toImage();
    auto* picture = Picture();
    const QRect area(picture->mapTo(window_.get(), QPoint(0, 0)), picture->size());
    int dark = 0, red = 0, other = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor c = shot.pixelColor(x, y);
            if (c.red() < 80 && c.green() < 80 && c.blue() < 80)
                ++dark;
            else if (c.red() > 200 && c.green() < 80 && c.blue() < 80)
                ++red;
            else if (c != Qt::white)
                ++other;
        }
    }
    EXPECT_GE(dark, area.width() / 2);  // the trace runs across the picture
    EXPECT_GT(red, 0);                  // the events' marks
    const TraceScene scene = static_cast<TraceView*>(picture)->CurrentScene();
    ASSERT_EQ(scene.traces.size(), 1u);
    EXPECT_LE(scene.traces[0].points.size(), std::size_t(2 * picture->width() + 2));
}

// A real run with the Qt dialogs: the Interrupt posted before the run is seen at the first
// yield, so the run stops after one screen, and F9 pressed meanwhile is refused.
TEST(MainWindowRun, InterruptStopsANonStopRunWithinOneScreen) {
    TempDir dir;
    const fs::path file = MakeRecording(dir / "cell1.abf");
    ScriptedDialogs dialogs;  // yields to the event loop as the real dialogs do
    dialogs.onYield = [] { QCoreApplication::processEvents(); };
    Ardelvantine w(dir.path(), &dialogs);
    w.show();
    w.OpenFileAsClick(file);
    QWidget* picture = w.findChild<QWidget*>("Picture1");
    const double first = w.session().recording.ScreenBlock;
    QCoreApplication::postEvent(picture,
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_F9, Qt::NoModifier));
    QCoreApplication::postEvent(picture,
                                new QKeyEvent(QEvent::KeyPress, Qt::Key_F12, Qt::NoModifier));
    Press(picture, Qt::Key_F11);
    EXPECT_EQ(w.session().recording.ScreenBlock, first + 4);
    EXPECT_FALSE(w.session().display.NonStopRunning);
    EXPECT_FALSE(w.IsRunning());

    Session ref;
    SilentDialogs quiet;
    ASSERT_TRUE(OpenDataFile(ref, quiet, file));
    Command2(ref, quiet);
    EXPECT_EQ(w.session().events.EventCount(), ref.events.EventCount());

    // Unsaved events are offered for saving on close; Cancel keeps the window and the events.
    const std::int32_t found = w.session().events.EventCount();
    ASSERT_GT(found, 0);
    dialogs.ExpectAsk("Save Previous Event Data",
                      "There are " + std::to_string(found) +
                          " events analysed for cell1.abf.  Do you want to save the event data?",
                      Answer::Cancel);
    EXPECT_FALSE(w.close());
    EXPECT_TRUE(w.isVisible());
    EXPECT_EQ(w.session().events.EventCount(), found);

    // Closing the window during a run stops the run first and closes once it has ended.
    dialogs.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No);
    Press(picture, Qt::Key_A);
    QTimer::singleShot(0, &w, [&w] { w.close(); });
    Press(picture, Qt::Key_F11);
    EXPECT_EQ(w.session().recording.ScreenBlock, first + 4);
    QApplication::processEvents();
    EXPECT_FALSE(w.isVisible());
    EXPECT_TRUE(dialogs.Done());
}

}  // namespace
}  // namespace ardel::testing

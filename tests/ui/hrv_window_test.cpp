// The heart rate windows offscreen: the menu opens the time-domain window with the settings
// file's options, a typed option reaches the analysis, the grids follow each "Start Analysis",
// a header click shows its definition, and the spurious scan runs from its button.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>

#include "core/ini_file.h"
#include "script/command_table.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "ui/main/hrv_menus.h"

namespace ardel::testing {
namespace {

struct HrvRig {
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandTable table;
    QMainWindow main;
    HrvWindows* windows = nullptr;
    std::filesystem::path dir = std::filesystem::path(::testing::TempDir()) / "hrv_window";

    HrvRig() {
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        RegisterAllCommands(table);
        const auto run = [this](const std::string& name) {
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            CommandContext c(session, ui, forms, dir);
            RunCommand(c, *entry);
            windows->FollowForms();
        };
        windows = AddHrvMenu(&main, forms, run);
        session.recording.FileIsOpen = true;
        session.recording.SampleInterval = 1000;
        session.recording.header.nADCNumChannels = 1;
        session.recording.header.lActualAcqLength = 600;
        session.Label11 = "beats.abf";
        for (float t : {0.0f, 100.0f, 250.0f, 350.0f, 500.0f}) session.events.Add().Time = t;
    }
    void Trigger(const char* name) {
        QAction* a = main.menuBar()->findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
    }
    QMainWindow* Window(const char* name) { return main.findChild<QMainWindow*>(name); }
};

TEST(HrvWindow, OpensWithItsSettingsAndFillsTheGrids) {
    HrvRig rig;
    WritePrivateProfileString("HRV", "RRUBound", "200", ArdelvanIniPath(rig.dir));
    rig.Trigger("menu_TimeDomainHRV");
    QMainWindow* w = rig.Window("HRV");
    ASSERT_NE(w, nullptr);
    ASSERT_TRUE(w->isVisible());
    EXPECT_EQ(w->windowTitle(), "Heart Rate Variability Analysis: Time Domain Measurements");
    EXPECT_EQ(w->findChild<QComboBox*>("Combo2")->currentText(), "200");
    EXPECT_EQ(w->findChild<QLabel*>("Label4")->text(), "30000");

    // A typed segment size updates the duration beside it and is used by the analysis.
    auto* text1 = w->findChild<QLineEdit*>("Text1");
    text1->setText("250");
    emit text1->textEdited("250");
    EXPECT_EQ(w->findChild<QLabel*>("Label4")->text(), "250");
    w->findChild<QCheckBox*>("Check2")->setChecked(true);
    rig.ui.ExpectAsk("Sort Events", std::nullopt, Answer::Yes);
    w->findChild<QPushButton*>("Command1")->click();
    auto* grid1 = w->findChild<QTableWidget*>("TDBGrid1");
    auto* grid2 = w->findChild<QTableWidget*>("TDBGrid2");
    ASSERT_EQ(grid1->rowCount(), 1);
    EXPECT_EQ(grid1->item(0, 0)->text(), "beats.abf");
    EXPECT_EQ(grid1->item(0, 1)->text(), "125");
    EXPECT_EQ(grid1->item(0, 10)->text(), "2");  // three segments, the last excluded
    EXPECT_EQ(grid2->rowCount(), 2);

    rig.ui.ExpectMessage("Definition", "MRR is the mean of RR-intervals.");
    emit grid1->horizontalHeader()->sectionClicked(1);
    EXPECT_TRUE(rig.ui.Done());

    w->findChild<QAction*>("menu_Exit")->trigger();
    EXPECT_FALSE(w->isVisible());
}

TEST(HrvWindow, SpuriousScanRunsFromItsButton) {
    HrvRig rig;
    rig.Trigger("menu_ScanRejectRRIntervals");
    QMainWindow* w = rig.Window("HRVSpurious");
    ASSERT_NE(w, nullptr);
    ASSERT_TRUE(w->isVisible());
    rig.ui.ExpectInput("Maximum Interval", std::nullopt, "120")
        .ExpectMessage("Search Finished", " 2 events are rejected and marked as group #255");
    w->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(rig.session.events[2].GroupNumber, 255);
    EXPECT_EQ(rig.session.events[4].GroupNumber, 255);
}

}  // namespace
}  // namespace ardel::testing

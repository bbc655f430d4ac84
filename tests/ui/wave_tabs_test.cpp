// The AP wave, noise and multi-peak tabs bound to the group window's form, their buttons and
// menu items running the handlers by name.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <gtest/gtest.h>

#include "group/grp_anal_form.h"
#include "ui/group/wave_tabs.h"

namespace ardel {
namespace {

TEST(WaveTabs, ControlsFollowTheFormBothWaysAndButtonsRunByName) {
    group::GrpAnalForm form;
    std::vector<std::string> ran;
    RunHandler run = [&ran](const std::string& name) { ran.push_back(name); };
    ApWaveTab ap(form, run);
    NoiseTab noise(form, run);
    MultiPeakTab multi(form, run);
    // Filling the lists left the defaults alone.
    EXPECT_EQ(form.Combo12, "90-37%");
    EXPECT_EQ(form.Combo21, "Synaptic Currents");
    EXPECT_EQ(form.Combo30, "99");
    EXPECT_EQ(ap.findChild<QComboBox*>("Combo12")->currentText(), "90-37%");

    ap.findChild<QComboBox*>("Combo12")->setCurrentText("80-10%");
    ap.findChild<QCheckBox*>("Check2")->setChecked(true);
    noise.findChild<QComboBox*>("Combo21")->setCurrentText("Macroscopic Currents");
    multi.findChild<QComboBox*>("Combo22")->setCurrentText("7");
    EXPECT_EQ(form.Combo12, "80-10%");
    EXPECT_TRUE(form.Check2);
    EXPECT_EQ(form.Combo21, "Macroscopic Currents");
    EXPECT_EQ(form.Combo22, "7");

    ap.findChild<QPushButton*>("Command17")->click();
    ap.findChild<QPushButton*>("Command4")->click();
    noise.findChild<QPushButton*>("Command18")->click();
    multi.findChild<QPushButton*>("Command16")->click();
    EXPECT_EQ(ran, (std::vector<std::string>{"GrpAnal.Command17", "GrpAnal.Command4",
                                             "GrpAnal.Command18", "GrpAnal.Command16"}));

    // A run's captions and progress show after Refresh.
    form.Command18 = "Interrupt";
    form.Label10 = "Iteration =12";
    form.Text4 = "50";
    noise.Refresh();
    EXPECT_EQ(noise.findChild<QPushButton*>("Command18")->text(), "Interrupt");
    EXPECT_EQ(noise.findChild<QLineEdit*>("Text4")->text(), "50");

    QMenu menu;
    AddWaveMenuItems(&menu, run);
    menu.findChild<QAction*>("menu_multipeak")->trigger();
    EXPECT_EQ(ran.back(), "GrpAnal.menu_multipeak");
}

}  // namespace
}  // namespace ardel

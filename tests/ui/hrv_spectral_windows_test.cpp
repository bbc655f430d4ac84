// The spectral and geometrical heart rate windows offscreen: the menu handlers show them with
// the saved options, Generate Plots draws every display, the boxes reach the form, a spin button
// moves the spectrum's axis, and an empty result shows the display's title instead of a plot.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>

#include "script/command_table.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "ui/hrv/geo_window.h"
#include "ui/hrv/spectral_window.h"

namespace ardel::testing {
namespace {

struct HrvRig {
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandTable table;
    std::unique_ptr<HrvSpectralWindow> spectral;
    std::unique_ptr<HrvGeoWindow> geo;

    HrvRig() {
        RegisterAllCommands(table);
        const auto run = [this](const std::string& name) {
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            CommandContext c(session, ui, forms, ::testing::TempDir());
            RunCommand(c, *entry);
            spectral->FollowForms();
            geo->FollowForms();
        };
        spectral = std::make_unique<HrvSpectralWindow>(forms, run);
        geo = std::make_unique<HrvGeoWindow>(forms, run);
        float t = 0;
        for (int i = 0; i < 60; ++i) session.events.Add().Time = t += float(60 + (i * 7) % 25);
    }
    bool Drawn(QWidget* w, const char* name) const {
        auto* display = w->findChild<QLabel*>(name);
        return display && !display->pixmap().isNull();
    }
};

TEST(HrvSpectralWindow, GeneratePlotsDrawsEveryDisplayFromTheBoxes) {
    HrvRig rig;
    rig.forms.hrvSpectralShown = true;
    rig.spectral->FollowForms();
    ASSERT_TRUE(rig.spectral->isVisible());
    EXPECT_EQ(rig.spectral->windowTitle(), "Heart Rate Variability:Spectral Analysis");
    EXPECT_EQ(rig.spectral->findChild<QComboBox*>("Combo5")->currentText(), "Blackman");
    rig.spectral->findChild<QComboBox*>("Combo1")->setCurrentText("5");
    rig.spectral->findChild<QComboBox*>("Combo5")->setCurrentText("Flat Top");
    rig.spectral->findChild<QPushButton*>("Command1")->click();
    EXPECT_EQ(rig.forms.hrvSpectral.options.RRBinSize, "5");
    EXPECT_EQ(rig.forms.hrvSpectral.options.Windowing, "Flat Top");
    for (const char* name : {"Graph1", "Graph2", "Picture2", "CWGraph1"})
        EXPECT_TRUE(rig.Drawn(rig.spectral.get(), name)) << name;
    EXPECT_EQ(rig.forms.hrvSpectral.CWGraph1->PointCount(), 30);

    rig.spectral->findChild<QToolButton*>("SpinButton1Down")->click();
    EXPECT_EQ(rig.forms.hrvSpectral.CWGraph1->XAxisStyleFlag, kAxisUserDefined);

    // Bounds that take nothing: one message, and the spectrum shows its title only.
    rig.ui.ExpectMessage("Too Few RR Intervals");
    rig.spectral->findChild<QComboBox*>("Combo2")->setCurrentText("20");
    rig.spectral->findChild<QPushButton*>("Command1")->click();
    auto* spectrum = rig.spectral->findChild<QLabel*>("CWGraph1");
    EXPECT_TRUE(spectrum->pixmap().isNull());
    EXPECT_EQ(spectrum->text(), "Power Spectral Density (FFT)");

    rig.spectral->close();
    EXPECT_FALSE(rig.forms.hrvSpectralShown);
}

TEST(HrvGeoWindow, OpensWithTheSavedOptionsAndDrawsItsFourFrames) {
    HrvRig rig;
    // The spectral window saves its bounds; the geometrical one reads them when it opens.
    rig.spectral->findChild<QComboBox*>("Combo2")->setCurrentText("90");
    rig.ui.ExpectMessage("Settings Saved", "The settings are saved into Ardelvan.ini file.");
    rig.spectral->findChild<QPushButton*>("Command2")->click();
    const CommandEntry* open = rig.table.Find("menu_GeoHRV");
    ASSERT_NE(open, nullptr);
    CommandContext c(rig.session, rig.ui, rig.forms, ::testing::TempDir());
    RunCommand(c, *open);
    rig.geo->FollowForms();
    ASSERT_TRUE(rig.geo->isVisible());
    EXPECT_EQ(rig.geo->findChild<QComboBox*>("Combo2")->currentText(), "90");
    rig.geo->findChild<QPushButton*>("Command1")->click();
    for (const char* name : {"Graph1", "Graph2", "Picture1", "Picture2"})
        EXPECT_TRUE(rig.Drawn(rig.geo.get(), name)) << name;
}

}  // namespace
}  // namespace ardel::testing

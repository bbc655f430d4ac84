// The group analysis window offscreen: F3's menu item opens it, the source buttons cut the
// group's traces and draw them (not a blank picture), keys step through the traces, the
// cursors follow the mouse, and the other tabs and the results grid find their places.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableWidget>

#include "core/open_file.h"
#include "script/command_table.h"
#include "script/script_runner.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"
#include "ui/group/group_analysis_window.h"
#include "ui/group/group_picture.h"
#include "ui/main/group_menus.h"
#include "window_rig.h"

namespace ardel::testing {
namespace {

struct GroupRig {
    TempDir dir;
    Session session;
    Forms forms;
    ScriptedDialogs ui;
    CommandTable table;
    QMenu menu;
    std::unique_ptr<GroupAnalysisWindow> window;

    GroupRig() {
        RegisterAllCommands(table);
        ScriptedDialogs open;
        EXPECT_TRUE(OpenDataFile(session, open, MakeRecording(dir / "group.abf")));
        for (float t : {40.0f, 70.0f, 132.4f, 254.8f}) {
            EventRecord& e = session.events.Add();
            e = EventRecord{};
            e.Time = t;
            e.Amplitude = -200;
            e.GroupNumber = 1;
        }
        const auto run = [this](const std::string& name) {
            const CommandEntry* entry = table.Find(name);
            ASSERT_NE(entry, nullptr) << name;
            CommandContext c(session, ui, forms, dir.path());
            RunCommand(c, *entry);
            window->FollowForms();
        };
        AddGroupAnalysisItem(&menu, run);
        window.reset(CreateGroupAnalysisWindow(session, forms, run, nullptr));
    }
    template <typename T>
    T* Find(const char* name) {
        T* widget = window->findChild<T*>(name);
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    // Pixels of the picture that are not the white background.
    int InkedPixels() {
        GroupPicture* picture = window->Picture();
        QImage image(picture->size(), QImage::Format_RGB32);
        QPainter p(&image);
        picture->Paint(p);
        p.end();
        int inked = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) inked += image.pixel(x, y) != qRgb(255, 255, 255);
        return inked;
    }
};

TEST(GroupWindow, OpensFromTheMenuCutsTheGroupAndDrawsIt) {
    GroupRig rig;
    QAction* open = rig.menu.findChild<QAction*>("menu_AnalyseGp");
    ASSERT_NE(open, nullptr);
    open->trigger();
    ASSERT_TRUE(rig.window->isVisible());
    EXPECT_EQ(rig.window->windowTitle(), "Group Analysis and Curve Fitting");
    EXPECT_EQ(rig.InkedPixels(), 0);

    rig.Find<QRadioButton>("Option2(1)")->click();
    EXPECT_EQ(rig.Find<QLabel>("Label6")->text(), "Trace:  0 of 4");
    EXPECT_GT(rig.InkedPixels(), 500);
    EXPECT_FALSE(rig.Find<QLabel>("Label21")->isVisibleTo(rig.window.get()));

    // Individual: the keys step through the traces.
    rig.forms.grpAnal.form.Combo2 = "Individual";
    rig.window->Refresh();
    EXPECT_TRUE(rig.Find<QLabel>("Label21")->isVisibleTo(rig.window.get()));
    Press(rig.window->Picture(), Qt::Key_D);
    Press(rig.window->Picture(), Qt::Key_D);
    EXPECT_EQ(rig.Find<QLabel>("Label6")->text(), "Trace: 2 of 4");
    Press(rig.window->Picture(), Qt::Key_F);
    EXPECT_EQ(rig.forms.grpAnal.store.CurrentTrace, 4);

    // The cursors: shown, picked up with a click and moved with the mouse.
    rig.Find<QCheckBox>("Check1")->click();
    auto& x = rig.forms.grpAnal.form.Line1X;
    ASSERT_EQ(x[0], 85);
    GroupPicture* picture = rig.window->Picture();
    const double pixelsPerPoint = double(picture->width()) / rig.forms.grpAnal.store.TracePoints;
    const QPointF at(85 * pixelsPerPoint, 50);
    QMouseEvent press(QEvent::MouseButtonPress, at, picture->mapToGlobal(at), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(picture, &press);
    const QPointF to(40 * pixelsPerPoint + 0.5, 50);
    QMouseEvent move(QEvent::MouseMove, to, picture->mapToGlobal(to), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(picture, &move);
    EXPECT_EQ(x[0], 40);
    EXPECT_TRUE(rig.Find<QLabel>("lbCursor")->text().startsWith("x1:4.000"));

    // The other tabs and the results grid.
    const int tabs = rig.window->Tabs()->count();
    rig.window->AddTab(new QWidget, "Random Walk", 5, {});
    EXPECT_EQ(rig.window->Tabs()->count(), tabs + 1);
    auto* grid = new QTableWidget(2, 2);
    rig.window->SetResultsGrid(grid);
    EXPECT_TRUE(grid->isVisibleTo(rig.window.get()));

    rig.window->close();
    EXPECT_FALSE(rig.forms.grpAnal.shown);
}

}  // namespace
}  // namespace ardel::testing

// The burst tab of the Criteria window bound to its form and run from its button, and the menu
// items of the correlograms, the coastline and the burst analysis running their handlers.
#include <QAction>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabWidget>

#include "ui/criteria/criteria_window.h"
#include "ui/main/analysis_menus.h"
#include "window_rig.h"

namespace ardel::testing {
namespace {

class AnalysisDesktopTest : public MainWindowTest {};

TEST_F(AnalysisDesktopTest, BurstTabRunsFromItsButtonWithTheTypedValues) {
    window_->OpenFileAsClick(recording_);
    ASSERT_TRUE(window_->RunHandler("Command1"));
    for (int i = 0; i < 3; ++i) window_->RunHandler("Command2");
    ASSERT_EQ(S().events.EventCount(), 5);

    window_->RunHandler("menu_groupBursts");
    CriteriaWindow* w = window_->criteriaWindow();
    ASSERT_NE(w, nullptr);
    EXPECT_EQ(w->findChild<QTabWidget*>("SSTab1")->currentIndex(), kBurstTab);
    auto* minimum = w->findChild<QLineEdit*>("Text7");
    auto* interval = w->findChild<QLineEdit*>("Text6");
    ASSERT_TRUE(minimum && interval);
    EXPECT_EQ(minimum->text(), "3");  // the form's defaults are shown
    minimum->setText("5");
    interval->setText("1e9");
    dialogs_.ExpectAsk("Save Reports", std::nullopt, Answer::No);
    w->findChild<QPushButton*>("Command4")->click();
    EXPECT_EQ(window_->forms().criteria.Text7, "5");
    for (std::int32_t i = 1; i <= 5; ++i) {
        EXPECT_EQ(S().events[i].GroupNumber, kGroupBurst);
        EXPECT_EQ(S().events[i].BurstEventNumber, i);
    }
    EXPECT_EQ(S().dataArray2(1), 5.0f);

    // The refused minimum is set back to 2 in the box.
    minimum->setText("1");
    dialogs_.ExpectMessage("", std::nullopt);
    w->findChild<QPushButton*>("Command4")->click();
    EXPECT_EQ(minimum->text(), "2");
}

TEST(AnalysisMenus, ItemsCarryTheirHandlerNames) {
    QMenu menu;
    std::vector<std::string> ran;
    const auto run = [&ran](const std::string& name) { ran.push_back(name); };
    AddCorrelogramItems(&menu, run);
    AddPlotCorrelogramItems(&menu, run);
    AddBurstItem(&menu, run);
    for (const char* name : {"menu_AutoCorrelogram(2)", "menu_CrossCorrelogram(1)",
                             "menu_CoastlineM(0)", "menu_CoastlineM(1)",
                             "menu_AutoCorrelogram2(1)", "menu_CrossCorrelogram2(2)",
                             "menu_groupBursts"}) {
        auto* a = menu.findChild<QAction*>(name);
        ASSERT_NE(a, nullptr) << name;
        a->trigger();
        EXPECT_EQ(ran.back(), name);
    }
}

}  // namespace
}  // namespace ardel::testing

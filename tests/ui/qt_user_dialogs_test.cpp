#include "ui/qt_user_dialogs.h"

#include <gtest/gtest.h>

namespace ardel {
namespace {

TEST(QtFileFilter, OldFiltersBecomeQtFiltersThatAlsoMatchLowerCase) {
    EXPECT_EQ(QtFileFilter("Event File (*.EVT)"), "Event File (*.EVT *.evt)");
    EXPECT_EQ(QtFileFilter("Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT"),
              "Parameter File (*.PAR *.par);;Event File (*.EVT *.evt)");
    EXPECT_EQ(QtFileFilter("Custom Settings File (*.SET)|*.SET"),
              "Custom Settings File (*.SET *.set)");
    EXPECT_EQ(QtFileFilter("ABF Data File (*.DAT *.ABF)"),
              "ABF Data File (*.DAT *.dat *.ABF *.abf)");
    // The pattern after the bar is what filters, whatever the description says.
    EXPECT_EQ(QtFileFilter("Text|*.txt;*.asc"), "Text (*.txt *.asc)");
    EXPECT_EQ(QtFileFilter(""), "");
}

}  // namespace
}  // namespace ardel

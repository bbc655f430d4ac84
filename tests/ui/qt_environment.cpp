// One QApplication for the whole test program, on the offscreen platform unless another is
// asked for, so that the tests run without a display.
#include <QApplication>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class QtEnvironment : public ::testing::Environment {
  public:
    void SetUp() override {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
        app_ = new QApplication(argc_, argv_);
        // The desktop's preferences (recent files, last folder) go to a scratch folder, never
        // to the user's own.
        preferences_ = new QTemporaryDir;
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, preferences_->path());
    }
    void TearDown() override {
        delete preferences_;
        preferences_ = nullptr;
        delete app_;
        app_ = nullptr;
    }

  private:
    int argc_ = 1;
    char name_[16] = "ardel_ui_tests";
    char* argv_[2] = {name_, nullptr};
    QApplication* app_ = nullptr;
    QTemporaryDir* preferences_ = nullptr;
};

[[maybe_unused]] ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace

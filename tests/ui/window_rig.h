// What the main window's tests share: a small recording with known events, key presses and
// clicks, and a window with scripted dialogs.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <vector>

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTableView>

#include "core/open_file.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"
#include "ui/main_window.h"

namespace ardel::testing {

namespace fs = std::filesystem;

// 10 kHz, 4096 points: four screens of the default 4 Blocks, with downward events on each.
inline fs::path MakeRecording(const fs::path& path, int channels = 1) {
    AbfBuildSpec spec;
    spec.channels = channels;
    spec.sampleIntervalUs = 100.0f / float(channels);
    const std::vector<SynthEvent> events = {
        {400, -200}, {700, -150}, {1324, -250}, {2548, -200}, {3672, -180}};
    std::vector<std::vector<std::int16_t>> data = {MakeTrace(4096, 0, events, 2.0, 7)};
    if (channels == 2) {
        spec.units = {"pA", "mV"};
        spec.scaleFactors = {0.0005f, 0.001f};
        data.push_back(MakeTrace(4096, 100, {}, 1.0, 3));
    }
    return WriteAbf(path, spec, data);
}

inline void Press(QWidget* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
           const QString& text = {}) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QCoreApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QCoreApplication::sendEvent(target, &release);
}

inline void ClickRow(QTableView* grid, int row) {
    grid->scrollTo(grid->model()->index(row, 1));
    QWidget* vp = grid->viewport();
    const QPointF p = grid->visualRect(grid->model()->index(row, 1)).center();
    QMouseEvent press(QEvent::MouseButtonPress, p, vp->mapToGlobal(p), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(vp, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, p, vp->mapToGlobal(p), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(vp, &release);
}

// A click on the trace at point x of the screen, in widget coordinates.
inline void ClickTrace(QWidget* picture, double x, Qt::MouseButton button,
                Qt::KeyboardModifiers modifiers = Qt::NoModifier, int screenPoints = 1024) {
    const QPointF p(x * picture->width() / screenPoints, picture->height() / 2.0);
    QMouseEvent press(QEvent::MouseButtonPress, p, picture->mapToGlobal(p), button, button,
                      modifiers);
    QCoreApplication::sendEvent(picture, &press);
    QMouseEvent release(QEvent::MouseButtonRelease, p, picture->mapToGlobal(p), button,
                        Qt::NoButton, modifiers);
    QCoreApplication::sendEvent(picture, &release);
}

class MainWindowTest : public ::testing::Test {
  protected:
    void SetUp() override {
        recording_ = MakeRecording(dir_ / "cell1.abf");
        window_ = std::make_unique<Ardelvantine>(dir_.path(), &dialogs_);
        window_->show();
        QApplication::processEvents();
    }
    void TearDown() override {
        window_.reset();
        EXPECT_TRUE(dialogs_.Done());
    }

    template <class T>
    T* Find(const char* name) {
        T* w = window_->findChild<T*>(name);
        EXPECT_NE(w, nullptr) << name;
        return w;
    }
    Session& S() { return window_->session(); }
    QWidget* Picture() { return Find<QWidget>("Picture1"); }

    // The same file analysed by the engine alone, for comparison.
    Session Reference(int screens = 1) {
        Session ref;
        SilentDialogs quiet;
        EXPECT_TRUE(OpenDataFile(ref, quiet, recording_));
        Command1(ref, quiet);
        for (int i = 1; i < screens; ++i) Command2(ref, quiet);
        return ref;
    }

    TempDir dir_;
    fs::path recording_;
    ScriptedDialogs dialogs_;  // outlives the window
    std::unique_ptr<Ardelvantine> window_;
};

}  // namespace ardel::testing

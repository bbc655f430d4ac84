// Small pieces shared by the files of the main window.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QString>
#include <QStringList>

#include "ui/qt_text.h"

namespace ardel::mainwindow {

inline constexpr const char* kText4Labels[7] = {
    "Threshold :",
    "Period to search a local maximum (us)",
    "Time before a peak for baseline (us)",
    "Period to search a decay time (us)",
    "Fraction of peak to find a decay time",
    "Period to average a baseline (us)",
    "Area Threshold:",
};

// While a long run goes on, the picture and the grid follow at most this often.
inline constexpr int kRunRepaintMs = 40;
// The selected event blinks at this pace.
inline constexpr int kBlinkMs = 300;
// Slider1's travel: two picture heights each way, which covers every offset a lock of the
// baseline gives at the usual gains.
inline constexpr int kOffsetRange = 2 * 65536;


// Menu captions show "&" as a mnemonic; a literal one is doubled.
inline QString MenuText(std::string_view s) {
    return QString::fromUtf8(s.data(), qsizetype(s.size())).replace("&", "&&");
}

inline QComboBox* EditableCombo(const char* name, const QStringList& items) {
    auto* c = new QComboBox;
    c->setObjectName(name);
    c->setEditable(true);
    c->addItems(items);
    c->setInsertPolicy(QComboBox::NoInsert);
    return c;
}

inline QCheckBox* CheckBox(const char* name, const QString& caption) {
    auto* c = new QCheckBox(caption);
    c->setObjectName(name);
    return c;
}

// A menu item whose objectName is its handler's name and that runs the handler.
inline void AddHandlerItem(QMenu* menu, const QString& caption, const std::string& name,
                           const std::function<void(const std::string&)>& run) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(QString::fromStdString(name));
    QObject::connect(a, &QAction::triggered, menu, [run, name] { run(name); });
}

inline void SetComboText(QComboBox* c, const std::string& text) {
    c->setCurrentText(Q(text));
}

}  // namespace ardel::mainwindow

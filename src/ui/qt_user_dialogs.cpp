#include "ui/qt_user_dialogs.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScreen>

#include "ui/qt_text.h"

namespace ardel {

namespace {

std::filesystem::path PathOf(const QString& s) {
    return std::filesystem::path(s.toStdString());
}

QMessageBox::StandardButton ToQt(Answer a) {
    switch (a) {
        case Answer::OK:
            return QMessageBox::Ok;
        case Answer::Cancel:
            return QMessageBox::Cancel;
        case Answer::Yes:
            return QMessageBox::Yes;
        case Answer::No:
            return QMessageBox::No;
        case Answer::Retry:
            return QMessageBox::Retry;
        case Answer::None:
            break;
    }
    return QMessageBox::NoButton;
}

// "*.EVT" also matches "*.evt".
QString PatternsWithLowerCase(const QString& patterns) {
    QStringList out;
    for (const QString& p : patterns.split(QRegularExpression("[;\\s]+"), Qt::SkipEmptyParts)) {
        out << p;
        const QString lower = p.toLower();
        if (lower != p && !out.contains(lower)) out << lower;
    }
    return out.join(' ');
}

// "Event File (*.EVT)" -> "Event File" and "*.EVT".
void SplitDescription(const QString& entry, QString& description, QString& patterns) {
    static const QRegularExpression kTrailing("^(.*)\\(([^()]*)\\)\\s*$");
    const auto m = kTrailing.match(entry);
    if (m.hasMatch()) {
        description = m.captured(1).trimmed();
        patterns = m.captured(2).trimmed();
    } else {
        description = entry.trimmed();
        patterns.clear();
    }
}

// Every dialog fits a small laptop screen (1280 x 720) whatever the length of its text.
constexpr QSize kSmallestScreen(1280, 720);
// Texts wrap at this width: a line of about eighty characters.
constexpr int kTextWidth = 560;

QSize Room(const QWidget* parent) {
    const QScreen* screen = parent ? parent->screen() : QGuiApplication::primaryScreen();
    QSize room = screen ? screen->availableGeometry().size() : kSmallestScreen;
    // Leave room for the window frame.
    return room.boundedTo(kSmallestScreen) - QSize(16, 40);
}

void WrapLabels(QWidget& d) {
    for (QLabel* label : d.findChildren<QLabel*>()) {
        if (label->pixmap().isNull() && !label->text().isEmpty()) {
            label->setWordWrap(true);
            label->setMaximumWidth(kTextWidth);
        }
    }
}

void FitToScreen(QWidget& d, const QWidget* parent) {
    const QSize room = Room(parent);
    d.setMaximumSize(room);
    d.adjustSize();
    d.resize(d.size().boundedTo(room));
}

void Prepare(QFileDialog& d, const FileDialogSpec& spec) {
    d.setNameFilter(QtFileFilter(spec.filter));
    d.setDirectory(QString::fromStdString(spec.initialDirectory.string()));
    if (!spec.defaultExtension.empty()) d.setDefaultSuffix(Q(spec.defaultExtension));
    // "*.EVT" in the name box was the old way of showing the filter; a real name is kept.
    const QString name = Q(spec.fileName);
    if (!name.isEmpty() && !name.contains('*') && !name.contains('?')) d.selectFile(name);
    if (!spec.title.empty()) d.setWindowTitle(Q(spec.title));
    const QSize room = Room(d.parentWidget());
    d.setMaximumSize(room);
    d.resize(d.sizeHint().expandedTo(QSize(720, 480)).boundedTo(room));
}

}  // namespace

QString QtFileFilter(const std::string& filter) {
    const QStringList parts = Q(filter).split('|');
    QStringList entries;
    if (parts.size() == 1) {
        QString description, patterns;
        SplitDescription(parts[0], description, patterns);
        if (patterns.isEmpty()) return parts[0];
        entries << description + " (" + PatternsWithLowerCase(patterns) + ")";
    } else {
        for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
            QString description, ignored;
            SplitDescription(parts[i], description, ignored);
            entries << description + " (" + PatternsWithLowerCase(parts[i + 1]) + ")";
        }
    }
    return entries.join(";;");
}

void QtUserDialogs::Message(std::string_view title, std::string_view text) {
    QMessageBox box(QMessageBox::Information, Q(title), Q(text), QMessageBox::Ok, parent_);
    box.setTextFormat(Qt::PlainText);
    WrapLabels(box);
    FitToScreen(box, parent_);
    box.exec();
}

Answer QtUserDialogs::Ask(std::string_view title, std::string_view text, Buttons buttons,
                          Answer defaultAnswer) {
    QMessageBox box(QMessageBox::Question, Q(title), Q(text), QMessageBox::NoButton, parent_);
    switch (buttons) {
        case Buttons::OK:
            box.setStandardButtons(QMessageBox::Ok);
            break;
        case Buttons::OKCancel:
            box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
            break;
        case Buttons::YesNo:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
            break;
        case Buttons::YesNoCancel:
            box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            break;
        case Buttons::RetryCancel:
            box.setStandardButtons(QMessageBox::Retry | QMessageBox::Cancel);
            break;
    }
    if (const auto def = ToQt(defaultAnswer); def != QMessageBox::NoButton)
        box.setDefaultButton(def);
    box.setTextFormat(Qt::PlainText);
    WrapLabels(box);
    FitToScreen(box, parent_);
    switch (box.exec()) {
        case QMessageBox::Ok:
            return Answer::OK;
        case QMessageBox::Cancel:
            return Answer::Cancel;
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        case QMessageBox::Retry:
            return Answer::Retry;
        default:
            break;
    }
    // Escape on a box without Cancel.
    return buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
}

std::optional<std::string> QtUserDialogs::Input(std::string_view title, std::string_view prompt,
                                                std::string_view defaultText) {
    QInputDialog d(parent_);
    d.setInputMode(QInputDialog::TextInput);
    d.setWindowTitle(Q(title));
    d.setLabelText(Q(prompt));
    d.setTextValue(Q(defaultText));
    // The prompts are long sentences: wrapped, they keep the box and its buttons on screen.
    WrapLabels(d);
    FitToScreen(d, parent_);
    if (d.exec() != QDialog::Accepted) return std::nullopt;
    return d.textValue().toStdString();
}

std::optional<std::filesystem::path> QtUserDialogs::SaveFileName(const FileDialogSpec& spec) {
    QFileDialog d(parent_);
    d.setAcceptMode(QFileDialog::AcceptSave);
    d.setFileMode(QFileDialog::AnyFile);
    // The commands ask "Replace File" themselves.
    d.setOption(QFileDialog::DontConfirmOverwrite);
    Prepare(d, spec);
    if (d.exec() != QDialog::Accepted || d.selectedFiles().isEmpty()) return std::nullopt;
    return PathOf(d.selectedFiles().first());
}

std::optional<std::filesystem::path> QtUserDialogs::OpenFileName(const FileDialogSpec& spec) {
    QFileDialog d(parent_);
    d.setAcceptMode(QFileDialog::AcceptOpen);
    d.setFileMode(QFileDialog::ExistingFile);
    Prepare(d, spec);
    if (d.exec() != QDialog::Accepted || d.selectedFiles().isEmpty()) return std::nullopt;
    return PathOf(d.selectedFiles().first());
}

std::vector<std::filesystem::path> QtUserDialogs::OpenFileNames(const FileDialogSpec& spec) {
    QFileDialog d(parent_);
    d.setAcceptMode(QFileDialog::AcceptOpen);
    d.setFileMode(spec.multiSelect ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    Prepare(d, spec);
    std::vector<std::filesystem::path> out;
    if (d.exec() != QDialog::Accepted) return out;
    for (const QString& f : d.selectedFiles()) out.push_back(PathOf(f));
    return out;
}

std::string QtUserDialogs::ClipboardText() {
    return QGuiApplication::clipboard()->text().toStdString();
}

void QtUserDialogs::SetClipboardText(std::string_view text) {
    QGuiApplication::clipboard()->setText(Q(text));
}

void QtUserDialogs::Beep() {
    QApplication::beep();
}

void QtUserDialogs::Yield() {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

}  // namespace ardel

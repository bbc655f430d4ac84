// The program's questions, messages and file dialogs as Qt dialogs.
#pragma once

#include <QString>
#include <QStringList>

#include "core/user_dialogs.h"

class QWidget;

namespace ardel {

// The old dialogs took filters as "Description (*.a)|*.a|Other (*.b)|*.b" or a single
// "Description (*.a)"; Qt wants "Description (*.a);;Other (*.b)". Each pattern also matches
// its lower-case form, since names on this system are case-sensitive and files come from
// systems where they were not.
QString QtFileFilter(const std::string& filter);

class QtUserDialogs : public UserDialogs {
  public:
    explicit QtUserDialogs(QWidget* parent) : parent_(parent) {}

    void Message(std::string_view title, std::string_view text) override;
    Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
               Answer defaultAnswer) override;
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override;
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override;
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override;
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override;
    std::string ClipboardText() override;
    void SetClipboardText(std::string_view text) override;
    void Beep() override;
    // Runs the event loop once. Long runs call this once per screen or per event, so every
    // call lets a pending Interrupt through; the window keeps repainting cheap on its side.
    void Yield() override;

  private:
    QWidget* parent_;
};

}  // namespace ardel

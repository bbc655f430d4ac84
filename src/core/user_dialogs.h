// Every question, message and file dialog of the program goes through this interface, so that
// the commands can be run by the desktop program, by the command line and by tests alike.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ardel {

// The program's name: the title of the runtime's error messages and of a command that broke off.
inline constexpr std::string_view kProgramName = "Ardelvantine";

enum class Buttons { OK, OKCancel, YesNo, YesNoCancel, RetryCancel };
enum class Answer { None, OK, Cancel, Yes, No, Retry };

struct FileDialogSpec {
    std::string title;
    std::string fileName;          // initial name, e.g. "*.EVT" or "cell1"
    std::string defaultExtension;  // without the dot, e.g. "EVT"
    std::string filter;            // "Event File (*.EVT)" or "A (*.a)|*.a|B (*.b)|*.b"
    std::filesystem::path initialDirectory;
    bool multiSelect = false;
};

class UserDialogs {
public:
    virtual ~UserDialogs() = default;

    virtual void Message(std::string_view title, std::string_view text) = 0;
    // defaultAnswer is the button that Enter presses (Answer::None: the first).
    virtual Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
                       Answer defaultAnswer = Answer::None) = 0;
    // nullopt when cancelled. The old input box gave an empty text on Cancel; callers that
    // follow that rule use InputText() below.
    virtual std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                             std::string_view defaultText) = 0;
    virtual std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) = 0;
    virtual std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) = 0;
    // Several files at once; an empty list when cancelled.
    virtual std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) = 0;
    virtual std::string ClipboardText() = 0;
    virtual void SetClipboardText(std::string_view text) = 0;
    virtual void Beep() = 0;
    // Lets the event loop run (interrupt buttons, keys). Called once per screen of long runs.
    virtual void Yield() = 0;

    // A run-time error that the program keeps ("Overflow", "Subscript out of range") ends its
    // command with the runtime's text under the program's name.
    void RuntimeError(std::string_view text) { Message(kProgramName, text); }

    // The input box as the old runtime had it: Cancel gives an empty text.
    std::string InputText(std::string_view title, std::string_view prompt,
                          std::string_view defaultText) {
        return Input(title, prompt, defaultText).value_or(std::string());
    }
};

// Answers nothing and shows nothing: every question takes its default answer, input boxes
// their default text, file dialogs are cancelled. Used where no user is present.
class SilentDialogs : public UserDialogs {
public:
    void Message(std::string_view, std::string_view) override {}
    Answer Ask(std::string_view, std::string_view, Buttons buttons, Answer defaultAnswer) override;
    std::optional<std::string> Input(std::string_view, std::string_view,
                                     std::string_view defaultText) override {
        return std::string(defaultText);
    }
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec&) override {
        return std::nullopt;
    }
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec&) override {
        return std::nullopt;
    }
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec&) override { return {}; }
    std::string ClipboardText() override { return clipboard_; }
    void SetClipboardText(std::string_view text) override { clipboard_ = std::string(text); }
    void Beep() override {}
    void Yield() override {}

private:
    std::string clipboard_;
};

}  // namespace ardel

// Dialogs that pass everything to another implementation, as a base for those that change
// one kind of interaction: a batch that answers its own reset question, a redraw hook whose
// message is shown once per command.
#pragma once

#include <set>
#include <string>
#include <utility>

#include "core/user_dialogs.h"

namespace ardel {

class ForwardingDialogs : public UserDialogs {
public:
    explicit ForwardingDialogs(UserDialogs& inner) : inner_(inner) {}

    void Message(std::string_view title, std::string_view text) override {
        inner_.Message(title, text);
    }
    Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
               Answer defaultAnswer) override {
        return inner_.Ask(title, text, buttons, defaultAnswer);
    }
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override {
        return inner_.Input(title, prompt, defaultText);
    }
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override {
        return inner_.SaveFileName(spec);
    }
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override {
        return inner_.OpenFileName(spec);
    }
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override {
        return inner_.OpenFileNames(spec);
    }
    std::string ClipboardText() override { return inner_.ClipboardText(); }
    void SetClipboardText(std::string_view text) override { inner_.SetClipboardText(text); }
    void Beep() override { inner_.Beep(); }
    void Yield() override { inner_.Yield(); }

protected:
    UserDialogs& inner_;
};

// Shows each message once until NewCommand(): a hook that runs on every redraw (the screen
// filter's cut-off warning) would otherwise ask for a click on every screen of a long run.
class OncePerCommandMessages final : public ForwardingDialogs {
public:
    using ForwardingDialogs::ForwardingDialogs;

    void Message(std::string_view title, std::string_view text) override {
        if (shown_.emplace(std::string(title), std::string(text)).second)
            inner_.Message(title, text);
    }
    void NewCommand() { shown_.clear(); }

private:
    std::set<std::pair<std::string, std::string>> shown_;
};

}  // namespace ardel

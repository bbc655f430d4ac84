// A UserDialogs that plays a script: each expected interaction names its kind, title and text
// and carries the answer. An interaction that is not the next one expected, or one left over
// at the end, fails the test.
#pragma once

#include <deque>
#include <functional>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/user_dialogs.h"

namespace ardel::testing {

enum class DialogKind { Message, Ask, Input, SaveFile, OpenFile, OpenFiles };

struct Expected {
    DialogKind kind;
    std::string title;
    std::optional<std::string> text;  // nullopt: any text
    Answer answer = Answer::None;
    std::optional<std::string> input;  // Input answer; nullopt = Cancel
    std::optional<std::filesystem::path> file;  // SaveFile / OpenFile answer
    std::vector<std::filesystem::path> files;   // OpenFiles answer
};

class ScriptedDialogs : public UserDialogs {
public:
    ScriptedDialogs() = default;
    ~ScriptedDialogs() override;

    ScriptedDialogs& ExpectMessage(std::string title, std::optional<std::string> text = {});
    ScriptedDialogs& ExpectAsk(std::string title, std::optional<std::string> text, Answer answer);
    ScriptedDialogs& ExpectInput(std::string title, std::optional<std::string> prompt,
                                 std::optional<std::string> answer);
    ScriptedDialogs& ExpectSaveFile(std::optional<std::filesystem::path> answer);
    ScriptedDialogs& ExpectOpenFile(std::optional<std::filesystem::path> answer);
    ScriptedDialogs& ExpectOpenFiles(std::vector<std::filesystem::path> answer);

    void Message(std::string_view title, std::string_view text) override;
    Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
               Answer defaultAnswer) override;
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override;
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override;
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override;
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override;
    std::string ClipboardText() override { return clipboard; }
    void SetClipboardText(std::string_view text) override { clipboard = std::string(text); }
    void Beep() override { ++beeps; }
    void Yield() override {
        ++yields;
        if (onYield) onYield();
    }

    bool Done() const { return script_.empty(); }

    std::string clipboard;
    int beeps = 0;
    int yields = 0;
    std::function<void()> onYield;
    // The specs the file dialogs were shown with, for tests that check them.
    std::vector<FileDialogSpec> fileDialogs;
    // Buttons and default of the last Ask.
    Buttons lastButtons = Buttons::OK;
    Answer lastDefault = Answer::None;

private:
    std::optional<Expected> Next(DialogKind kind, std::string_view title, std::string_view text);
    std::deque<Expected> script_;
};

}  // namespace ardel::testing

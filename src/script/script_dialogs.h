// The user of a script: every message is printed as "MESSAGE title|text", every question,
// input box and file dialog as "QUESTION title|text|answer taken", and the answers come from
// the script's queue. A question with nothing queued stops the script.
#pragma once

#include <deque>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "core/user_dialogs.h"

namespace ardel {

class ScriptDialogs : public UserDialogs {
  public:
    explicit ScriptDialogs(std::ostream& out) : out_(out) {}

    void Message(std::string_view title, std::string_view text) override;
    Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
               Answer defaultAnswer) override;
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override;
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override;
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override;
    // One queued answer names every file, separated by "|".
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override;
    std::string ClipboardText() override { return clipboard; }
    void SetClipboardText(std::string_view text) override { clipboard = std::string(text); }
    void Beep() override {}
    void Yield() override {}

    // line: the script line that queued the answer, for the report of one left unused.
    void Queue(std::string answer, int line = 0) { answers_.push_back({std::move(answer), line}); }
    std::size_t Queued() const { return answers_.size(); }
    // The line of the oldest answer still queued; 0 when none is.
    int FirstQueuedLine() const { return answers_.empty() ? 0 : answers_.front().line; }

    // The channel named on an "open" line answers the channel question of that open, if the
    // file asks it; unset: the question takes the queue's next answer.
    std::optional<std::string> channelAnswer;

    std::string clipboard;

  private:
    // The next answer; ScriptError when there is none.
    std::string Take(std::string_view title, std::string_view text);
    void Print(std::string_view kind, std::string_view title, std::string_view text,
               std::optional<std::string_view> answer);

    std::ostream& out_;
    struct QueuedAnswer {
        std::string text;
        int line = 0;
    };
    std::deque<QueuedAnswer> answers_;
};

// The word that cancels a question or a file dialog.
inline constexpr std::string_view kCancelAnswer = "cancel";

}  // namespace ardel

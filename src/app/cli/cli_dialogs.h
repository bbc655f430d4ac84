// The command line's answer to the program's questions: messages go to standard error, the
// channel question takes the --channel value, every other question its cautious default.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "core/user_dialogs.h"

namespace ardel::cli {

// Text from a file (a stored name, a comment, a unit) as it may go to a terminal: control bytes
// and bytes that are no valid UTF-8 (NUL, 0xFF ...) are shown as \xNN instead of being sent raw,
// where they could cut the line or drive the terminal.
std::string EscapeForTerminal(std::string_view text);

class CliDialogs : public SilentDialogs {
  public:
    explicit CliDialogs(std::ostream& err) : err_(err) {}
    ~CliDialogs() override;
    CliDialogs(const CliDialogs&) = delete;
    CliDialogs& operator=(const CliDialogs&) = delete;

    void Message(std::string_view title, std::string_view text) override;
    Answer Ask(std::string_view title, std::string_view text, Buttons buttons,
               Answer defaultAnswer) override;
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override;
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override;
    void Yield() override;

    // Says how often the last message came again since it was printed.
    void FlushRepeats();

    // Answer of the next open-file dialog (a parameter file given on the command line).
    std::optional<std::filesystem::path> openFileAnswer;

    // Answer of the channel question; unset: the question's default (0).
    std::optional<std::string> channelAnswer;
    // Answers given by title, for questions the command has decided in advance.
    std::function<std::optional<Answer>(std::string_view title)> answerFor;
    // Called on Yield at most a few times a second (progress display).
    std::function<void()> onProgress;
    // The name of the file the messages are about, put before them; none when empty or unset.
    std::function<std::string()> context;
    int messages = 0;

  private:
    std::string Prefix() const;

    std::ostream& err_;
    std::chrono::steady_clock::time_point lastProgress_{};
    std::string lastMessage_;
    int repeats_ = 0;
};

}  // namespace ardel::cli

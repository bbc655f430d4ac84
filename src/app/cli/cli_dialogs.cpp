#include "app/cli/cli_dialogs.h"

#include <ostream>
#include <utility>

namespace ardel::cli {

void CliDialogs::Message(std::string_view title, std::string_view text) {
    ++messages;
    err_ << title << ": " << text << '\n';
}

Answer CliDialogs::Ask(std::string_view title, std::string_view text, Buttons buttons,
                       Answer defaultAnswer) {
    if (answerFor)
        if (auto a = answerFor(title)) return *a;
    return SilentDialogs::Ask(title, text, buttons, defaultAnswer);
}

std::optional<std::string> CliDialogs::Input(std::string_view title, std::string_view prompt,
                                             std::string_view defaultText) {
    if (title == "Enter Channel Number" && channelAnswer) return channelAnswer;
    return std::string(defaultText);
}

std::optional<std::filesystem::path> CliDialogs::OpenFileName(const FileDialogSpec&) {
    return std::exchange(openFileAnswer, std::nullopt);
}

void CliDialogs::Yield() {
    if (!onProgress) return;
    auto now = std::chrono::steady_clock::now();
    if (now - lastProgress_ < std::chrono::milliseconds(200)) return;
    lastProgress_ = now;
    onProgress();
}

}  // namespace ardel::cli

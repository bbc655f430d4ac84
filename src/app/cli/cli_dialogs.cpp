#include "app/cli/cli_dialogs.h"

#include <ostream>
#include <utility>

namespace ardel::cli {

namespace {

const char* AnswerText(Answer a) {
    switch (a) {
        case Answer::OK:
            return "OK";
        case Answer::Yes:
            return "Yes";
        case Answer::No:
            return "No";
        case Answer::Cancel:
            return "Cancel";
        default:
            return "none";
    }
}

}  // namespace

CliDialogs::~CliDialogs() {
    FlushRepeats();
}

std::string CliDialogs::Prefix() const {
    std::string name = context ? context() : std::string();
    return name.empty() ? name : name + ": ";
}

void CliDialogs::FlushRepeats() {
    if (repeats_ > 0)
        err_ << "(the message above came " << repeats_ << " more time" << (repeats_ == 1 ? "" : "s")
             << ")\n";
    repeats_ = 0;
}

void CliDialogs::Message(std::string_view title, std::string_view text) {
    ++messages;
    std::string line = Prefix();
    line.append(title).append(": ").append(text);
    // A scan that meets bad parameters says so on every screen; once is enough here.
    if (line == lastMessage_) {
        ++repeats_;
        return;
    }
    FlushRepeats();
    err_ << line << '\n';
    lastMessage_ = std::move(line);
}

Answer CliDialogs::Ask(std::string_view title, std::string_view text, Buttons buttons,
                       Answer defaultAnswer) {
    if (answerFor)
        if (auto a = answerFor(title)) return *a;
    const Answer a = SilentDialogs::Ask(title, text, buttons, defaultAnswer);
    FlushRepeats();
    lastMessage_.clear();
    err_ << Prefix() << title << ": " << text << " [answered " << AnswerText(a) << "]\n";
    return a;
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

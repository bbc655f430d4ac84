#include "app/cli/cli_dialogs.h"

#include <ostream>
#include <string>
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
        case Answer::Retry:
            return "Retry";
        default:
            return "none";
    }
}

// Length of the valid UTF-8 sequence at text[i] that prints as a character, or 0.
std::size_t PrintableSequence(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    std::size_t n = 0;
    if (lead >= 0x20 && lead < 0x7F) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) n = 2;
    else if (lead >= 0xE0 && lead <= 0xEF) n = 3;
    else if (lead >= 0xF0 && lead <= 0xF4) n = 4;
    else return 0;
    if (i + n > text.size()) return 0;
    for (std::size_t k = 1; k < n; ++k)
        if ((byte(i + k) & 0xC0) != 0x80) return 0;
    if (lead == 0xC2 && byte(i + 1) < 0xA0) return 0;  // C1 control characters
    return n;
}

}  // namespace

std::string EscapeForTerminal(std::string_view text) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        if (const std::size_t n = PrintableSequence(text, i)) {
            out.append(text.substr(i, n));
            i += n;
            continue;
        }
        const auto b = static_cast<unsigned char>(text[i++]);
        out += "\\x";
        out += digits[b >> 4];
        out += digits[b & 0xF];
    }
    return out;
}

CliDialogs::~CliDialogs() {
    FlushRepeats();
}

std::string CliDialogs::Prefix() const {
    std::string name = context ? context() : std::string();
    return name.empty() ? name : EscapeForTerminal(name) + ": ";
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
    line.append(EscapeForTerminal(title)).append(": ").append(EscapeForTerminal(text));
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
    err_ << Prefix() << EscapeForTerminal(title) << ": " << EscapeForTerminal(text) << " [answered "
         << AnswerText(a) << "]\n";
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

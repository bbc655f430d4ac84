#include "script/script_dialogs.h"

#include <cctype>
#include <ostream>
#include <utility>

#include "script/script_error.h"

namespace ardel {

namespace {

// One output line per dialog: a line break in a text is written as "\n".
std::string OneLine(std::string_view text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
            out += "\\n";
        } else if (text[i] == '\n') {
            out += "\\n";
        } else {
            out += text[i];
        }
    }
    return out;
}

bool SameWord(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

bool IsCancel(std::string_view answer) {
    return SameWord(answer, kCancelAnswer);
}

std::string ButtonNames(Buttons buttons) {
    switch (buttons) {
        case Buttons::OK: return "OK";
        case Buttons::OKCancel: return "OK or Cancel";
        case Buttons::YesNo: return "Yes or No";
        case Buttons::YesNoCancel: return "Yes, No or Cancel";
        case Buttons::RetryCancel: return "Retry or Cancel";
    }
    return "";
}

}  // namespace

void ScriptDialogs::Print(std::string_view kind, std::string_view title, std::string_view text,
                          std::optional<std::string_view> answer) {
    out_ << kind << ' ' << OneLine(title) << '|' << OneLine(text);
    if (answer) out_ << '|' << OneLine(*answer);
    out_ << '\n';
}

std::string ScriptDialogs::Take(std::string_view title, std::string_view text) {
    if (answers_.empty()) {
        out_.flush();
        throw ScriptError("no answer queued for the question \"" + OneLine(title) + "|" +
                          OneLine(text) + "\"");
    }
    std::string answer = std::move(answers_.front().text);
    answers_.pop_front();
    return answer;
}

void ScriptDialogs::Message(std::string_view title, std::string_view text) {
    Print("MESSAGE", title, text, std::nullopt);
}

Answer ScriptDialogs::Ask(std::string_view title, std::string_view text, Buttons buttons,
                          Answer) {
    const std::string answer = Take(title, text);
    const bool yesNo = buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel;
    const bool cancel = buttons != Buttons::OK && buttons != Buttons::YesNo;
    Answer a = Answer::None;
    if (yesNo && SameWord(answer, "Yes")) a = Answer::Yes;
    if (yesNo && SameWord(answer, "No")) a = Answer::No;
    const bool retry = buttons == Buttons::RetryCancel;
    if (!yesNo && !retry && SameWord(answer, "OK")) a = Answer::OK;
    if (retry && SameWord(answer, "Retry")) a = Answer::Retry;
    if (cancel && IsCancel(answer)) a = Answer::Cancel;
    if (a == Answer::None) {
        throw ScriptError("the answer \"" + answer + "\" does not fit the question \"" +
                          OneLine(title) + "|" + OneLine(text) + "\", which takes " +
                          ButtonNames(buttons));
    }
    Print("QUESTION", title, text, answer);
    return a;
}

std::optional<std::string> ScriptDialogs::Input(std::string_view title, std::string_view prompt,
                                                std::string_view) {
    std::string answer;
    if (channelAnswer && title == "Enter Channel Number") {
        answer = *std::exchange(channelAnswer, std::nullopt);
    } else {
        answer = Take(title, prompt);
    }
    Print("QUESTION", title, prompt, answer);
    if (IsCancel(answer)) return std::nullopt;
    return answer;
}

std::optional<std::filesystem::path> ScriptDialogs::SaveFileName(const FileDialogSpec& spec) {
    const std::string answer = Take(spec.title, spec.fileName);
    Print("QUESTION", spec.title, spec.fileName, answer);
    if (IsCancel(answer)) return std::nullopt;
    return std::filesystem::path(answer);
}

std::optional<std::filesystem::path> ScriptDialogs::OpenFileName(const FileDialogSpec& spec) {
    const std::string answer = Take(spec.title, spec.fileName);
    Print("QUESTION", spec.title, spec.fileName, answer);
    if (IsCancel(answer)) return std::nullopt;
    return std::filesystem::path(answer);
}

std::vector<std::filesystem::path> ScriptDialogs::OpenFileNames(const FileDialogSpec& spec) {
    const std::string answer = Take(spec.title, spec.fileName);
    Print("QUESTION", spec.title, spec.fileName, answer);
    std::vector<std::filesystem::path> files;
    if (IsCancel(answer)) return files;
    std::size_t start = 0;
    while (start <= answer.size()) {
        const std::size_t bar = answer.find('|', start);
        const std::string part =
            answer.substr(start, bar == std::string::npos ? std::string::npos : bar - start);
        if (!part.empty()) files.emplace_back(part);
        if (bar == std::string::npos) break;
        start = bar + 1;
    }
    return files;
}

}  // namespace ardel

#include "support/scripted_dialogs.h"

namespace ardel::testing {

namespace {
const char* KindName(DialogKind k) {
    switch (k) {
        case DialogKind::Message: return "Message";
        case DialogKind::Ask: return "Ask";
        case DialogKind::Input: return "Input";
        case DialogKind::SaveFile: return "SaveFile";
        case DialogKind::OpenFile: return "OpenFile";
        case DialogKind::OpenFiles: return "OpenFiles";
    }
    return "?";
}
}  // namespace

ScriptedDialogs::~ScriptedDialogs() {
    for (const auto& e : script_)
        ADD_FAILURE() << "expected " << KindName(e.kind) << " \"" << e.title
                      << "\" never happened";
}

ScriptedDialogs& ScriptedDialogs::ExpectMessage(std::string title, std::optional<std::string> text) {
    script_.push_back({DialogKind::Message, std::move(title), std::move(text)});
    return *this;
}
ScriptedDialogs& ScriptedDialogs::ExpectAsk(std::string title, std::optional<std::string> text,
                                            Answer answer) {
    script_.push_back({DialogKind::Ask, std::move(title), std::move(text), answer});
    return *this;
}
ScriptedDialogs& ScriptedDialogs::ExpectInput(std::string title, std::optional<std::string> prompt,
                                              std::optional<std::string> answer) {
    Expected e{DialogKind::Input, std::move(title), std::move(prompt)};
    e.input = std::move(answer);
    script_.push_back(std::move(e));
    return *this;
}
ScriptedDialogs& ScriptedDialogs::ExpectSaveFile(std::optional<std::filesystem::path> answer) {
    Expected e{DialogKind::SaveFile, "", std::nullopt};
    e.file = std::move(answer);
    script_.push_back(std::move(e));
    return *this;
}
ScriptedDialogs& ScriptedDialogs::ExpectOpenFile(std::optional<std::filesystem::path> answer) {
    Expected e{DialogKind::OpenFile, "", std::nullopt};
    e.file = std::move(answer);
    script_.push_back(std::move(e));
    return *this;
}
ScriptedDialogs& ScriptedDialogs::ExpectOpenFiles(std::vector<std::filesystem::path> answer) {
    Expected e{DialogKind::OpenFiles, "", std::nullopt};
    e.files = std::move(answer);
    script_.push_back(std::move(e));
    return *this;
}

std::optional<Expected> ScriptedDialogs::Next(DialogKind kind, std::string_view title,
                                              std::string_view text) {
    if (script_.empty()) {
        ADD_FAILURE() << "unexpected " << KindName(kind) << " \"" << title << "\": " << text;
        return std::nullopt;
    }
    Expected e = script_.front();
    script_.pop_front();
    EXPECT_EQ(KindName(e.kind), std::string(KindName(kind))) << "title \"" << title << "\"";
    if (kind != DialogKind::SaveFile && kind != DialogKind::OpenFile &&
        kind != DialogKind::OpenFiles)
        EXPECT_EQ(e.title, std::string(title));
    if (e.text) EXPECT_EQ(*e.text, std::string(text)) << "in \"" << title << "\"";
    if (e.kind != kind) return std::nullopt;
    return e;
}

void ScriptedDialogs::Message(std::string_view title, std::string_view text) {
    Next(DialogKind::Message, title, text);
}

Answer ScriptedDialogs::Ask(std::string_view title, std::string_view text, Buttons buttons,
                            Answer defaultAnswer) {
    lastButtons = buttons;
    lastDefault = defaultAnswer;
    auto e = Next(DialogKind::Ask, title, text);
    return e ? e->answer : Answer::Cancel;
}

std::optional<std::string> ScriptedDialogs::Input(std::string_view title, std::string_view prompt,
                                                  std::string_view) {
    auto e = Next(DialogKind::Input, title, prompt);
    return e ? e->input : std::nullopt;
}

std::optional<std::filesystem::path> ScriptedDialogs::SaveFileName(const FileDialogSpec& spec) {
    fileDialogs.push_back(spec);
    auto e = Next(DialogKind::SaveFile, spec.title, "");
    return e ? e->file : std::nullopt;
}

std::optional<std::filesystem::path> ScriptedDialogs::OpenFileName(const FileDialogSpec& spec) {
    fileDialogs.push_back(spec);
    auto e = Next(DialogKind::OpenFile, spec.title, "");
    return e ? e->file : std::nullopt;
}

std::vector<std::filesystem::path> ScriptedDialogs::OpenFileNames(const FileDialogSpec& spec) {
    fileDialogs.push_back(spec);
    auto e = Next(DialogKind::OpenFiles, spec.title, "");
    return e ? e->files : std::vector<std::filesystem::path>{};
}

}  // namespace ardel::testing

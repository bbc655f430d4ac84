#include "script/script_runner.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <istream>
#include <ostream>
#include <set>

#include "core/ini_file.h"
#include "detect/digital_filter.h"
#include "script/array_commands.h"
#include "script/correlogram_commands.h"
#include "script/data_analysis_commands.h"
#include "script/event_list_commands.h"
#include "script/group_commands.h"
#include "script/fitting_commands.h"
#include "script/print_commands.h"
#include "script/results_commands.h"
#include "script/graph_commands.h"
#include "script/hrv_commands.h"
#include "script/hrv_spectral_commands.h"
#include "script/script_error.h"
#include "script/wave_commands.h"

namespace ardel {

namespace fs = std::filesystem;

void RegisterAllCommands(CommandTable& table) {
    RegisterMainWindowCommands(table);
    RegisterEventListCommands(table);
    RegisterArrayCommands(table);
    RegisterDataAnalysisCommands(table);
    RegisterPrintCommands(table);
    RegisterGraphCommands(table);
    RegisterCorrelogramCommands(table);
    RegisterHrvCommands(table);
    RegisterWaveCommands(table);
    RegisterGroupCommands(table);
    RegisterFittingCommands(table);
    RegisterResultsCommands(table);
    RegisterHrvSpectralCommands(table);
}

void RegisterAllControls(ControlRegistry& registry, Forms& forms, const Session& s) {
    RegisterMainFormControls(registry, forms, s);
    RegisterCriteriaControls(registry, forms);
    RegisterArrayControls(registry, forms);
    RegisterDataAnalysisControls(registry, forms);
    RegisterHrvControls(registry, forms, s);
    RegisterWaveControls(registry, forms);
    RegisterGroupControls(registry, forms);
    RegisterResultsControls(registry, forms, s);
    RegisterHrvSpectralControls(registry, forms);
}

std::vector<std::string> ScriptNames() {
    CommandTable table;
    RegisterAllCommands(table);
    Session s;
    Forms forms;
    ControlRegistry controls;
    RegisterAllControls(controls, forms, s);
    std::set<std::string> names;
    for (auto& n : table.Names()) names.insert(std::move(n));
    for (auto& n : controls.Names()) names.insert(std::move(n));
    names.insert(std::string(kGraphControlName));
    return {names.begin(), names.end()};
}

namespace {

std::string_view TrimBlanks(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r'))
        s.remove_suffix(1);
    return s;
}

// A value is the rest of the line after one blank; surrounding double quotes go.
std::string Value(std::string_view rest) {
    if (rest.size() >= 2 && rest.front() == '"' && rest.back() == '"')
        rest = rest.substr(1, rest.size() - 2);
    return std::string(rest);
}

// Splits "WORD rest": the first word, and what follows the one blank after it.
std::pair<std::string_view, std::string_view> SplitWord(std::string_view s) {
    const auto blank = s.find_first_of(" \t");
    if (blank == std::string_view::npos) return {s, {}};
    return {s.substr(0, blank), s.substr(blank + 1)};
}

std::vector<std::string_view> Words(std::string_view s) {
    std::vector<std::string_view> words;
    while (true) {
        s = TrimBlanks(s);
        if (s.empty()) return words;
        const auto [word, rest] = SplitWord(s);
        words.push_back(word);
        s = rest;
    }
}

std::optional<std::int32_t> Integer(std::string_view s) {
    std::int32_t v = 0;
    const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || end != s.data() + s.size()) return std::nullopt;
    return v;
}

std::int32_t RowNumber(std::string_view word) {
    const auto n = Integer(word);
    if (!n || *n < 1) throw ScriptError("\"" + std::string(word) + "\" is no row number (1 or more)");
    return *n;
}

std::string Upper(std::string_view s) {
    std::string out;
    for (char c : s)
        if (c != ' ') out += char(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

// "F11", "Z", "Ctrl+T", "PageUp", "Home", ... as the key table knows them.
KeyBinding ParseKey(std::string_view text) {
    std::string k = Upper(text);
    bool ctrl = false;
    if (k.starts_with("CTRL+")) {
        ctrl = true;
        k.erase(0, 5);
    }
    Key key = Key::None;
    if (k.size() == 1) {
        key = KeyFromChar(k[0]);
    } else if (k == "PAGEUP") {
        key = Key::PageUp;
    } else if (k == "PAGEDOWN") {
        key = Key::PageDown;
    } else if (k == "HOME") {
        key = Key::Home;
    } else if (k == "END") {
        key = Key::End;
    } else if (k.size() >= 2 && k[0] == 'F') {
        static constexpr std::pair<int, Key> kFunctionKeys[] = {
            {3, Key::F3}, {5, Key::F5},  {6, Key::F6},   {7, Key::F7},  {8, Key::F8},
            {9, Key::F9}, {10, Key::F10}, {11, Key::F11}, {12, Key::F12}};
        if (const auto n = Integer(std::string_view(k).substr(1)))
            for (const auto& [number, fkey] : kFunctionKeys)
                if (number == *n) key = fkey;
    }
    const KeyBinding binding = key == Key::None ? KeyBinding{} : BindingForKey(key, ctrl);
    if (binding.command == KeyCommand::None)
        throw ScriptError("the key \"" + std::string(text) + "\" has no command");
    return binding;
}

}  // namespace

ScriptRunner::ScriptRunner(std::ostream& out, fs::path programDir)
    : out_(out),
      dialogs_(out),
      context_(session_, dialogs_, forms_, std::move(programDir)) {
    context_.headless = true;
    RegisterAllCommands(table_);
    RegisterAllControls(controls_, forms_, session_);
    session_.CurrentFolder = context_.programDir;
    // Display filters the freshly loaded screens whenever the filter box is checked.
    InstallDigitalFilter(session_, dialogs_);
    session_.onLabel4 = [this](Session&, std::string_view text) {
        forms_.main.Label4 = std::string(text);
    };
    // The program starts: its settings load as the window's load does.
    LoadStartupSettings(session_, forms_.main, dialogs_, context_.programDir);
}

int ScriptRunner::Run(std::istream& in, std::string_view fileName, std::ostream& err) {
    int lineNumber = 0;
    auto fail = [&](int line, const std::string& what) {
        out_.flush();
        err << fileName << ':' << line << ": " << what << '\n';
        return 2;
    };
    try {
        std::string line;
        while (std::getline(in, line)) {
            ++lineNumber;
            if (!RunLine(line, lineNumber)) break;
        }
    } catch (const ScriptError& e) {
        return fail(lineNumber, e.What());
    }
    if (dialogs_.Queued() > 0) {
        return fail(dialogs_.FirstQueuedLine(),
                    "an answer was left unused at the end of the script");
    }
    out_.flush();
    return 0;
}

bool ScriptRunner::RunLine(std::string_view line, int lineNumber) {
    const std::string_view trimmed = TrimBlanks(line);
    if (trimmed.empty() || trimmed.front() == '#') return true;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    const auto [verb, rest] = SplitWord(line);
    if (verb == "open") {
        Open(rest);
    } else if (verb == "set") {
        Set(rest);
    } else if (verb == "select") {
        Select(rest);
    } else if (verb == "current") {
        Current(rest);
    } else if (verb == "answer") {
        if (verb.size() == line.size()) throw ScriptError("answer needs a value");
        dialogs_.Queue(Value(rest), lineNumber);
    } else if (verb == "do") {
        return Do(TrimBlanks(rest));
    } else if (verb == "key") {
        Key(rest);
    } else if (verb == "clipboard") {
        const std::string path = Value(TrimBlanks(rest));
        if (path.empty()) throw ScriptError("clipboard needs a file to write");
        try {
            WriteFileReplacing(path, dialogs_.clipboard);
        } catch (const std::exception& e) {
            throw ScriptError("cannot write " + path + ": " + e.what());
        }
    } else if (verb == "clipboard-from") {
        const std::string path = Value(TrimBlanks(rest));
        std::error_code ec;
        const auto text = fs::is_regular_file(path, ec) ? ReadFileBytes(path) : std::nullopt;
        if (!text) throw ScriptError("cannot open " + path);
        dialogs_.clipboard = *text;
    } else if (verb == "show") {
        Show(rest);
    } else {
        throw ScriptError("unknown line form \"" + std::string(verb) +
                          "\" (open, set, select, current, answer, do, key, clipboard, "
                          "clipboard-from, show, or # for a comment)");
    }
    return true;
}

void ScriptRunner::Open(std::string_view rest) {
    rest = TrimBlanks(rest);
    std::string path;
    std::optional<std::string> channel;
    if (rest.starts_with('"')) {
        const auto close = rest.find('"', 1);
        if (close == std::string_view::npos) throw ScriptError("open: the path's quote is not closed");
        path = std::string(rest.substr(1, close - 1));
        const std::string_view after = TrimBlanks(rest.substr(close + 1));
        if (!after.empty()) channel = std::string(after);
    } else {
        // A last word that is a number is the channel; the path may hold blanks.
        const auto blank = rest.find_last_of(" \t");
        if (blank != std::string_view::npos && Integer(rest.substr(blank + 1))) {
            path = std::string(TrimBlanks(rest.substr(0, blank)));
            channel = std::string(rest.substr(blank + 1));
        } else {
            path = std::string(rest);
        }
    }
    if (path.empty()) throw ScriptError("open needs a file");
    if (channel && !Integer(*channel)) throw ScriptError("open: \"" + *channel + "\" is no channel");
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) throw ScriptError("cannot open " + path + ": no such file");
    dialogs_.channelAnswer = channel;
    OpenFileAsClick(context_, path);
    // A single-channel file asks nothing; the channel given is not left for a later question.
    dialogs_.channelAnswer.reset();
}

void ScriptRunner::Set(std::string_view rest) {
    rest = TrimBlanks(rest);
    const auto blank = rest.find_first_of(" \t");
    if (rest.empty() || blank == std::string_view::npos)
        throw ScriptError("set needs a control and a value");
    const std::string name(rest.substr(0, blank));
    const Control* control = controls_.Find(name);
    if (!control) throw ScriptError("unknown control " + name);
    if (!control->set) {
        throw ScriptError(name + " is a " + std::string(ControlKindName(control->kind)) +
                          "; it shows only what the program puts there");
    }
    try {
        control->set(Value(rest.substr(blank + 1)));
    } catch (const ControlValueError& e) {
        throw ScriptError(name + ": " + e.what());
    }
}

void ScriptRunner::Select(std::string_view rest) {
    std::vector<std::int32_t> rows;
    for (std::string_view word : Words(rest)) {
        const auto dash = word.find('-', 1);
        if (dash == std::string_view::npos) {
            rows.push_back(RowNumber(word));
            continue;
        }
        const std::int32_t first = RowNumber(word.substr(0, dash));
        const std::int32_t last = RowNumber(word.substr(dash + 1));
        if (last < first) throw ScriptError("the range " + std::string(word) + " runs backwards");
        for (std::int32_t n = first; n <= last; ++n) {
            // A row highlighted twice stays where it was first highlighted, as in the grid.
            if (std::find(rows.begin(), rows.end(), n) == rows.end()) rows.push_back(n);
        }
    }
    std::vector<std::int32_t> unique;
    for (std::int32_t n : rows)
        if (std::find(unique.begin(), unique.end(), n) == unique.end()) unique.push_back(n);
    session_.HighlightedRows = std::move(unique);
}

void ScriptRunner::Current(std::string_view rest) {
    const auto words = Words(rest);
    if (words.size() != 1) throw ScriptError("current needs one row number");
    ChooseGridRow(context_, RowNumber(words[0]));
}

bool ScriptRunner::Do(std::string_view name) {
    if (name.empty()) throw ScriptError("do needs a handler");
    const CommandEntry* entry = table_.Find(name);
    if (!entry) {
        // A control without a click or change handler: nothing happens, as a click on it.
        if (controls_.Find(name)) return true;
        throw ScriptError("unknown handler " + std::string(name));
    }
    RunCommand(context_, *entry);
    return !context_.exitRequested;
}

void ScriptRunner::Key(std::string_view rest) {
    const std::string_view text = TrimBlanks(rest);
    if (text.empty()) throw ScriptError("key needs a key");
    const KeyBinding binding = ParseKey(text);
    const auto entry = KeyEntry(table_, binding);
    if (!entry) {
        throw ScriptError("the key \"" + std::string(text) + "\" runs " +
                          KeyHandlerName(binding) + ", which is not available");
    }
    RunCommand(context_, *entry);
}

void ScriptRunner::Show(std::string_view rest) {
    rest = TrimBlanks(rest);
    const auto [name, pathText] = SplitWord(rest);
    if (name.empty()) throw ScriptError("show needs a control");
    const Control* control = controls_.Find(name);
    std::optional<std::string> graphText;
    if (!control) graphText = GraphControlText(session_, name);
    if (!control && !graphText) throw ScriptError("unknown control " + std::string(name));
    std::string text = control ? control->get() : *graphText;
    const std::string path = Value(TrimBlanks(pathText));
    // A text box's or label's text becomes one line; lists and grids end their lines already.
    if (text.empty() || text.back() != '\n') text += '\n';
    if (path.empty()) {
        out_ << text;
        return;
    }
    try {
        WriteFileReplacing(path, text);
    } catch (const std::exception& e) {
        throw ScriptError("cannot write " + path + ": " + e.what());
    }
}

}  // namespace ardel

#include "script/command_table.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "core/event_commands.h"
#include "core/open_file.h"
#include "core/settings.h"
#include "script/script_error.h"
#include "view/trace_scene.h"

namespace ardel {

std::filesystem::path CommandContext::IniPath() const {
    return ArdelvanIniPath(programDir);
}

void CommandTable::Add(std::string name, std::string title, unsigned flags,
                       std::function<void(CommandContext&)> body) {
    entries_[std::move(name)] = CommandEntry{std::move(title), flags, std::move(body)};
}

void CommandTable::AddNumbered(std::string prefix, std::string item, std::string title,
                               unsigned flags, std::function<void(CommandContext&, int)> body) {
    numbered_[prefix + "(N)." + item] = NumberedEntry{std::move(title), flags, std::move(body)};
}

const CommandEntry* CommandTable::Find(std::string_view name) const {
    const auto it = entries_.find(name);
    if (it != entries_.end()) return &it->second;
    if (const auto b = bound_.find(name); b != bound_.end()) return &b->second;
    // "PREFIX(digits).ITEM"
    const auto open = name.find('(');
    const auto close = name.find(").", open == std::string_view::npos ? 0 : open);
    if (open == std::string_view::npos || close == std::string_view::npos || close == open + 1)
        return nullptr;
    const std::string_view digits = name.substr(open + 1, close - open - 1);
    if (digits.size() > 9 || !std::all_of(digits.begin(), digits.end(),
                                          [](char ch) { return ch >= '0' && ch <= '9'; }))
        return nullptr;
    const std::string key =
        std::string(name.substr(0, open)) + "(N)" + std::string(name.substr(close + 1));
    const auto n = numbered_.find(key);
    if (n == numbered_.end()) return nullptr;
    const int number = std::stoi(std::string(digits));
    auto body = [inner = n->second.body, number](CommandContext& c) { inner(c, number); };
    const auto [added, unused] =
        bound_.emplace(std::string(name), CommandEntry{n->second.title, n->second.flags, body});
    return &added->second;
}

std::vector<std::string> CommandTable::Names() const {
    std::vector<std::string> names;
    for (const auto& [name, entry] : entries_) names.push_back(name);
    for (const auto& [name, entry] : numbered_) names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

bool RunCommand(CommandContext& c, const CommandEntry& entry) {
    Session& s = c.session;
    bool controlsRead = false;
    std::string failure;
    DetectionParameters paramsBefore;
    ProgramOptions optionsBefore;
    // A run that broke off leaves no flag behind that would stop the next one.
    auto clearRunFlags = [&] {
        if (entry.flags & kLongRun) {
            s.display.NonStopRunning = false;
            s.display.BatchRunning = false;
        }
    };
    try {
        ReadControls(s, c.forms.main);
        controlsRead = true;
        paramsBefore = s.params;
        optionsBefore = s.options;
        entry.body(c);
    } catch (const ScriptError&) {
        // The script stops here; what the command did so far stays.
        clearRunFlags();
        throw;
    } catch (const std::exception& e) {
        failure = e.what();
        if (failure.empty()) failure = "Unknown error.";
    } catch (...) {
        failure = "Unknown error.";
    }
    if (!failure.empty()) clearRunFlags();
    if (controlsRead && (!(s.params == paramsBefore) || !(s.options == optionsBefore))) {
        WriteParameterControls(s, c.forms.main);
        WriteOptionControls(s, c.forms.main);
    }
    ShowDisplayControls(s, c.forms.main);
    const auto after = std::exchange(c.afterCommand, nullptr);
    if (failure.empty()) {
        if (after) after();
        return true;
    }
    c.ui.Message(kProgramName, "The command \"" + entry.title + "\" could not be completed.\n\n" +
                                   failure);
    return false;
}

std::string KeyHandlerName(const KeyBinding& b) {
    switch (b.command) {
        case KeyCommand::Navigate:
            return "menu_Navigates(" + std::to_string(int(b.item)) + ")";
        case KeyCommand::RejectThisEvent: return "menu_RejectThisEvent";
        case KeyCommand::DeletEvent: return "menu_DeletEvent";
        case KeyCommand::RecalculatePeak: return "menu_RecalculatePeak";
        case KeyCommand::Unmark: return "menu_Unmark";
        case KeyCommand::MarkAllWindow: return "menu_MarkAllWindow";
        case KeyCommand::MarkAllEvents: return "menu_MarkAllEvents";
        case KeyCommand::DoublePeak: return "menu_DoublePeak_Click";
        case KeyCommand::AnalyseGp: return "menu_AnalyseGp";
        case KeyCommand::Command1: return "Command1";
        case KeyCommand::Command2: return "Command2";
        case KeyCommand::Command3: return "Command3";
        case KeyCommand::Command4: return "Command4";
        default: return {};
    }
}

namespace {

CommandEntry DisplayKeyEntry(const KeyBinding& binding) {
    return {"Navigate", kDuringRun, [binding](CommandContext& cc) {
                Session& s = cc.session;
                const int channel = std::min<int>(s.recording.ChannelIndex, 15);
                const float gain = s.display.DisplayGain[std::size_t(channel)];
                RunViewKey(s, cc.ui, binding);
                if (s.display.DisplayGain[std::size_t(channel)] != gain)
                    cc.forms.main.Text1 = DisplayGainText(s);
            }};
}

}  // namespace

std::optional<CommandEntry> KeyEntry(const CommandTable& table, const KeyBinding& binding) {
    const std::string handler = KeyHandlerName(binding);
    if (handler.empty()) {
        if (binding.command == KeyCommand::None) return std::nullopt;
        return DisplayKeyEntry(binding);
    }
    const CommandEntry* entry = table.Find(handler);
    if (!entry) return std::nullopt;
    CommandEntry e = *entry;
    if (binding.command == KeyCommand::Unmark) {
        // U unmarks and then redraws.
        e.body = [body = entry->body](CommandContext& cc) {
            body(cc);
            Display(cc.session);
        };
    }
    return e;
}

void RunDisplayKey(CommandContext& c, const KeyBinding& binding) {
    RunCommand(c, DisplayKeyEntry(binding));
}

CommandEntry OpenFileEntry(const std::filesystem::path& full) {
    return {"FListBoxFETCH", kPlainCommand, [full](CommandContext& cc) {
                Session& s = cc.session;
                MainForm& f = cc.forms.main;
                if (!QueryUnsavedEventsBeforeOpen(s, cc.ui)) return;
                // The readout of the last file's pointer position means nothing for the next
                // one.
                f.Label4.clear();
                OpenDataFile(s, cc.ui, full);
                // A refused file leaves nothing open: the name of the one before must not stay.
                if (!s.recording.FileIsOpen) s.Label11.clear();
                f.Text1 = DisplayGainText(s);
                const auto& w = s.recording.warnings;
                if (w.empty()) return;
                f.StatusText = "Opened with warnings:";
                for (std::size_t i = 0; i < w.size(); ++i) f.StatusText += (i ? "  " : " ") + w[i];
            }};
}

void ShowFolderAndOpen(CommandContext& c, const std::filesystem::path& file) {
    std::error_code ec;
    const std::filesystem::path full = std::filesystem::absolute(file, ec);
    ShowFolder(c.session, c.forms.main, full.parent_path());
    OpenFileEntry(full).body(c);
}

void OpenFileAsClick(CommandContext& c, const std::filesystem::path& file) {
    RunCommand(c, {"FListBoxFETCH", kPlainCommand,
                   [file](CommandContext& cc) { ShowFolderAndOpen(cc, file); }});
}

CommandEntry GridRowEntry(std::int32_t row) {
    return {"TDBGrid1", kDuringRun, [row](CommandContext& cc) {
                Session& s = cc.session;
                SelectEventFromGrid(s, row);
                if (s.recording.FileIsOpen && s.events.EventCount() > 0)
                    s.events.GridCurrentRow = s.events.CurrentEvent;
            }};
}

void ChooseGridRow(CommandContext& c, std::int32_t row) {
    RunCommand(c, GridRowEntry(row));
}

}  // namespace ardel

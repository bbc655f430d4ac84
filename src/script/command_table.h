// Every handler of every form by its name ("Command1", "menu_Navigates(3)",
// "Criteria.Command4"), run against one session, one dialogs object and the forms' controls.
// The desktop's buttons, menu items and keys and the script runner all call through here, so
// that each command has one path.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <cstdint>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"
#include "script/forms.h"
#include "view/navigation.h"

namespace ardel {


struct CommandContext {
    CommandContext(Session& s, UserDialogs& dialogs, Forms& f, std::filesystem::path dir = {})
        : session(s), ui(dialogs), forms(f), programDir(std::move(dir)) {}

    Session& session;
    UserDialogs& ui;
    Forms& forms;
    // The folder of Ardelvan.ini.
    std::filesystem::path programDir;
    // Set by "Exit" when the program is to close.
    bool exitRequested = false;
    // No user is there to press a button while a command yields (a script run).
    bool headless = false;
    // Set by a command for what it puts into the controls after they have followed the
    // session (a box that shows an unrounded value); run once, then cleared.
    std::function<void()> afterCommand;
    // The desktop shows a form's controls at once when a command calls this in its middle (a
    // tab brought forward before a question); unset without a window.
    std::function<void()> showForms;
    // The desktop drives the timed display from its timer at this interval (ms); unset, the
    // command steps through the recording itself.
    std::function<void(std::int32_t)> startTimedDisplay;

    void ShowForms() const {
        if (showForms) showForms();
    }
    std::filesystem::path IniPath() const;
};

enum CommandFlags : unsigned {
    kPlainCommand = 0,
    kLongRun = 1,    // loops that yield: the window stays live and shows progress
    kDuringRun = 2,  // may run while a long run is yielding (moves, display, Interrupt)
};

struct CommandEntry {
    std::string title;  // what the failure message calls the command
    unsigned flags = kPlainCommand;
    std::function<void(CommandContext&)> body;
};

// The name of one element of a control array or of an indexed menu item: "menu_sort(3)".
inline std::string IndexedName(std::string_view name, int index) {
    return std::string(name) + "(" + std::to_string(index) + ")";
}

// The bodies of handlers that call one engine command with the session alone, or with the
// session and the dialogs.
inline std::function<void(CommandContext&)> SessionCommand(void (*command)(Session&)) {
    return [command](CommandContext& c) { command(c.session); };
}
inline std::function<void(CommandContext&)> DialogCommand(void (*command)(Session&,
                                                                          UserDialogs&)) {
    return [command](CommandContext& c) { command(c.session, c.ui); };
}

class CommandTable {
  public:
    void Add(std::string name, std::string title, unsigned flags,
             std::function<void(CommandContext&)> body);
    // A handler of every open window of a kind, named "PREFIX(N).ITEM" ("Graph(2).menu_cascade"):
    // body gets N. Names() lists it as "PREFIX(N).ITEM".
    void AddNumbered(std::string prefix, std::string item, std::string title, unsigned flags,
                     std::function<void(CommandContext&, int)> body);
    const CommandEntry* Find(std::string_view name) const;
    // Every name, sorted.
    std::vector<std::string> Names() const;

  private:
    struct NumberedEntry {
        std::string title;
        unsigned flags = kPlainCommand;
        std::function<void(CommandContext&, int)> body;
    };
    std::map<std::string, CommandEntry, std::less<>> entries_;
    // Keyed by "PREFIX(N).ITEM" with a literal N.
    std::map<std::string, NumberedEntry, std::less<>> numbered_;
    // Entries bound to a window number when first asked for; map nodes stay where they are, so
    // the pointers Find hands out stay valid.
    mutable std::map<std::string, CommandEntry, std::less<>> bound_;
};

// Runs one handler as every handler runs: the main form's controls into the session, the
// command, the controls back where the command changed parameters or options, the display
// controls brought up to date. An unexpected exception ends the command with a message
// titled with the program's name that names the command; the session stays usable.
// Returns false when the command broke off so.
bool RunCommand(CommandContext& c, const CommandEntry& entry);

// What a key runs: the handler of KeyHandlerName (U then redraws), or for the display keys an
// entry of their own. Nothing for a key whose handler is not in the table.
std::optional<CommandEntry> KeyEntry(const CommandTable& table, const KeyBinding& binding);

// The handler a key stands for in the main window: "Command1" for F9, "menu_Navigates(3)" for
// D, "menu_Unmark" for U, ... Empty for the keys that step the display offset or gain, which
// have no menu item (RunDisplayKey runs them), and for keys without a command.
std::string KeyHandlerName(const KeyBinding& binding);
// Page Up, Page Down, Home and End as the window runs them; the gain box follows the gain.
void RunDisplayKey(CommandContext& c, const KeyBinding& binding);

// The main window's handlers: the buttons, every menu item with its index as the window names
// it, the change handlers of its boxes and the spin buttons. Criteria, event list and the
// other forms register theirs with one call each, beside this one.
void RegisterMainWindowCommands(CommandTable& table);

// A click in the file list on a data file: unsaved events are offered for saving, the file
// opens (with its questions) and the gain box shows the channel's gain. The file's folder is
// shown first.
void OpenFileAsClick(CommandContext& c, const std::filesystem::path& file);
// The command of that click, for a caller that shows the folder itself. file is absolute.
CommandEntry OpenFileEntry(const std::filesystem::path& file);
// Inside a running command: the file's folder is shown, then the file opens as a click on it.
void ShowFolderAndOpen(CommandContext& c, const std::filesystem::path& file);

// A row chosen in the grid (1-based): the event becomes current and its screen is shown.
void ChooseGridRow(CommandContext& c, std::int32_t row);
CommandEntry GridRowEntry(std::int32_t row);

}  // namespace ardel

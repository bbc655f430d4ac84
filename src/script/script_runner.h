// Runs a script line by line against one session, as a user at the desktop would: the line
// forms are open, set, select, current, answer, do, key, clipboard, clipboard-from, show and
// "#" comments. Output goes to one stream; a script error stops the run with
// "FILE:LINE: what was wrong" on the error stream.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "script/command_table.h"
#include "script/control_registry.h"
#include "script/forms.h"
#include "script/script_dialogs.h"

namespace ardel {

// Every form's handlers in one table, and every form's controls bound to one session's forms.
// Each further form adds its one registration call to these two.
void RegisterAllCommands(CommandTable& table);
void RegisterAllControls(ControlRegistry& registry, Forms& forms, const Session& s);

// Every handler and control name, sorted, each once, as a script writes it.
std::vector<std::string> ScriptNames();

class ScriptRunner {
  public:
    // programDir is the folder of Ardelvan.ini; the settings load from there here, as the
    // program starts (a message about them goes to out).
    ScriptRunner(std::ostream& out, std::filesystem::path programDir);
    ScriptRunner(const ScriptRunner&) = delete;
    ScriptRunner& operator=(const ScriptRunner&) = delete;

    // Runs every line of in. Returns 0, or 2 after "fileName:LINE: what was wrong" on err.
    int Run(std::istream& in, std::string_view fileName, std::ostream& err);

    Session& session() { return session_; }
    Forms& forms() { return forms_; }
    ScriptDialogs& dialogs() { return dialogs_; }

  private:
    // Runs one line; throws ScriptError. Returns false when the program was closed.
    bool RunLine(std::string_view line, int lineNumber);
    void Open(std::string_view rest);
    void Set(std::string_view rest);
    void Select(std::string_view rest);
    void Current(std::string_view rest);
    bool Do(std::string_view name);
    void Key(std::string_view rest);
    void Show(std::string_view rest);

    std::ostream& out_;
    Session session_;
    Forms forms_;
    ScriptDialogs dialogs_;
    CommandTable table_;
    ControlRegistry controls_;
    CommandContext context_;
};

}  // namespace ardel

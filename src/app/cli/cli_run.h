// "run SCRIPT": a script of the desktop's commands against one session, and "run --list".
#pragma once

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>

namespace CLI {
class App;
}

namespace ardel {
class ScriptRunner;
}

namespace ardel::cli {

struct RunOptions {
    std::string script;      // a file, or "-" for standard input
    bool list = false;       // print every handler and control name instead
    std::string programDir;  // folder of Ardelvan.ini; empty: the program's own folder
    // Called with the runner before the script runs (the desktop program hands it the
    // drawing of graph pictures).
    std::function<void(ScriptRunner&)> prepare;
};

// Adds the subcommand to app; returns it so that the caller can tell whether it was given.
CLI::App* AddRunSubcommand(CLI::App& app, RunOptions& o);

// Exit code 0, or 2 for a script error ("FILE:LINE: what was wrong" on err) or a usage error.
int RunScriptCommand(const RunOptions& o, const std::filesystem::path& programDir,
                     std::ostream& out, std::ostream& err);

}  // namespace ardel::cli

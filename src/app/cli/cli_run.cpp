#include "app/cli/cli_run.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>

#include "script/script_runner.h"

namespace ardel::cli {

CLI::App* AddRunSubcommand(CLI::App& app, RunOptions& o) {
    auto* run = app.add_subcommand(
        "run",
        "Run a script of the desktop's commands against one session: open, set, select, "
        "current, answer, do, key, clipboard, clipboard-from, show (see the README). Messages "
        "print as MESSAGE title|text and questions as QUESTION title|text|answer on standard "
        "output; a script error prints FILE:LINE: what was wrong on standard error and exits "
        "with 2");
    run->add_option("SCRIPT", o.script, "Script file, or - for standard input");
    run->add_flag("--list", o.list, "Print every handler and control name a script can use");
    run->add_option("--program-dir", o.programDir,
                    "Folder of Ardelvan.ini, where the settings load from and save to "
                    "(default: the program's own folder)");
    return run;
}

int RunScriptCommand(const RunOptions& o, const std::filesystem::path& programDir,
                     std::ostream& out, std::ostream& err) {
    if (o.list) {
        for (const std::string& name : ScriptNames()) out << name << '\n';
        return 0;
    }
    if (o.script.empty()) {
        err << "error: run needs a SCRIPT (or - for standard input, or --list)\n";
        return 2;
    }
    const std::filesystem::path dir =
        o.programDir.empty() ? programDir : std::filesystem::path(o.programDir);
    std::error_code ec;
    if (!std::filesystem::is_directory(dir, ec)) {
        err << "error: the program folder " << dir.string() << " is not a folder\n";
        return 2;
    }
    ScriptRunner runner(out, dir);
    if (o.prepare) o.prepare(runner);
    if (o.script == "-") return runner.Run(std::cin, "-", err);
    std::ifstream in(o.script, std::ios::binary);
    if (!in || std::filesystem::is_directory(o.script, ec)) {
        err << o.script << ":0: cannot open the script\n";
        return 2;
    }
    return runner.Run(in, o.script, err);
}

}  // namespace ardel::cli

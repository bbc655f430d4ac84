// ardelvantine-cli: header info, detection over files, export of event tables.
#pragma once

#include <filesystem>
#include <iosfwd>

namespace ardel::cli {

// Runs the command line; returns the process exit code (0 success, 1 a file could not be
// analysed, 2 a usage error). programDir is where Ardelvan.ini is looked for by default.
int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
           const std::filesystem::path& programDir);

}  // namespace ardel::cli

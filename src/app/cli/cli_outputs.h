// Where the command line's results go, and the check that no result of a run is written over
// another (or over one of the run's own inputs) before anything is written.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace ardel::cli {

// "-" names standard output.
inline bool IsStandardOutput(std::string_view target) {
    return target == "-";
}

// The file --csv or --grid (the option's text) means for one data file: the option itself for a
// single file, standard output or a pipe or device; with several files, the file named after the
// data file's stem, with ext, in the folder the option names.
std::string TableOutputPath(const std::string& option, const std::string& dataFile, bool several,
                            const char* ext);

// The event file a run saves for a data file: beside it, the name up to its first "." and
// ".EVT".
std::filesystem::path PlannedEventFile(const std::string& dataFile);

struct PlannedOutput {
    std::string path;   // as the user will see it
    std::string input;  // the file whose results these are
    std::string what;   // "event file", "CSV table", "grid"
};

// One line for each file that two outputs would share, naming the inputs whose results would be
// lost, and for each output that would be written over an input of the run. Standard output,
// pipes and devices clash with nothing. Empty when every output has a file of its own.
std::vector<std::string> FindOutputClashes(const std::vector<PlannedOutput>& outputs,
                                           const std::vector<std::string>& inputs);

}  // namespace ardel::cli

#include "app/cli/cli_outputs.h"

#include <map>
#include <system_error>

#include "core/safe_file.h"

namespace ardel::cli {

namespace fs = std::filesystem;

namespace {

// Two spellings of one file ("out/x.csv", "./out/../out/x.csv", a link to the folder) meet
// under one key.
std::string FileKey(const std::string& path) {
    std::error_code ec;
    fs::path p = fs::weakly_canonical(fs::absolute(path, ec), ec);
    if (ec) p = fs::absolute(path, ec).lexically_normal();
    return p.string();
}

bool ClashesWithNothing(const std::string& path) {
    return IsStandardOutput(path) || IsWrittenInPlace(path);
}

std::string JoinNames(const std::vector<std::string>& names) {
    std::string out;
    for (std::size_t k = 0; k < names.size(); ++k) {
        if (k) out += k + 1 == names.size() ? " and " : ", ";
        out += names[k];
    }
    return out;
}

}  // namespace

std::string TableOutputPath(const std::string& option, const std::string& dataFile, bool several,
                            const char* ext) {
    if (!several || ClashesWithNothing(option)) return option;
    return (fs::path(option) / (fs::path(dataFile).stem().string() + ext)).string();
}

fs::path PlannedEventFile(const std::string& dataFile) {
    const fs::path p(dataFile);
    const std::string name = p.filename().string();
    return p.parent_path() / (name.substr(0, name.find('.')) + ".EVT");
}

std::vector<std::string> FindOutputClashes(const std::vector<PlannedOutput>& outputs,
                                           const std::vector<std::string>& inputs) {
    struct Use {
        std::string shownAs;
        std::vector<std::string> writers;
    };
    std::map<std::string, Use> byFile;
    std::vector<std::string> order;  // keys in the order first met, for a stable report
    for (const PlannedOutput& o : outputs) {
        if (ClashesWithNothing(o.path)) continue;
        const std::string key = FileKey(o.path);
        auto [it, fresh] = byFile.try_emplace(key, Use{o.path, {}});
        if (fresh) order.push_back(key);
        it->second.writers.push_back("the " + o.what + " of " + o.input);
    }
    std::map<std::string, std::string> inputByFile;
    for (const std::string& in : inputs)
        if (!in.empty() && !ClashesWithNothing(in)) inputByFile.emplace(FileKey(in), in);

    std::vector<std::string> clashes;
    for (const std::string& key : order) {
        const Use& use = byFile[key];
        if (const auto in = inputByFile.find(key); in != inputByFile.end())
            clashes.push_back(use.shownAs + " is an input of this run and would be replaced by " +
                              JoinNames(use.writers));
        else if (use.writers.size() > 1)
            clashes.push_back(use.shownAs + " would hold " + JoinNames(use.writers) +
                              ", each replacing the one before");
    }
    return clashes;
}

}  // namespace ardel::cli

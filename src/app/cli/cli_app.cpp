#include "app/cli/cli_app.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <sstream>

#include "app/cli/cli_dialogs.h"
#include "core/event_table.h"
#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "core/settings.h"
#include "detect/window_analysis.h"

namespace ardel::cli {

namespace {

struct DetectOptions {
    std::vector<std::string> files;
    std::optional<int> channel;
    std::optional<double> blocksPerScreen;
    bool complexPeak = false;
    std::vector<std::string> params;
    std::string ini;
    std::string csv;
    std::string grid;
};

// Everything a file's analysis needs before it starts: settings file, then --param, then the
// screen and complex-peak flags. Returns false (after a message) on a bad setting.
bool PrepareSession(Session& s, const DetectOptions& o, const std::filesystem::path& programDir,
                    std::ostream& err) {
    const std::filesystem::path ini = o.ini.empty() ? ArdelvanIniPath(programDir) : std::filesystem::path(o.ini);
    try {
        LoadIniSettings(s, ini, programDir);
        for (const std::string& kv : o.params) {
            auto eq = kv.find('=');
            if (eq == std::string::npos) {
                err << "error: --param needs KEY=VALUE, got \"" << kv << "\"\n";
                return false;
            }
            if (!ApplyAnalysisParam(s, std::string_view(kv).substr(0, eq),
                                    std::string_view(kv).substr(eq + 1))) {
                err << "error: unknown key \"" << kv.substr(0, eq)
                    << "\" (use a key of the settings file's Analysis section with its type "
                       "mark, e.g. ThresholdAmplitude!)\n";
                return false;
            }
        }
    } catch (const std::exception& e) {
        err << "error: " << e.what() << '\n';
        return false;
    }
    if (o.blocksPerScreen) {
        double b = *o.blocksPerScreen;
        s.recording.BlocksPerScreen = float(std::clamp(b, 1.0, 32767.0));
    }
    if (o.complexPeak) s.options.ComplexPeak = true;
    return true;
}

std::string EventCsv(const EventTable& t) {
    std::string text;
    for (std::size_t k = 0; k < kEventFieldNames.size(); ++k) {
        if (k) text += ',';
        text += kEventFieldNames[k];
    }
    text += '\n';
    for (std::int32_t n = 1; n <= t.EventCount(); ++n) {
        text += EventCsvLine(t[n]);
        text += '\n';
    }
    return text;
}

std::string EventGrid(const Session& s) {
    std::string text;
    for (int c = 0; c < kGridColumns; ++c) {
        if (c) text += '\t';
        text += GridCaption(s.events, c);
    }
    text += '\n';
    for (std::int32_t n = 1; n <= s.events.EventCount(); ++n) {
        for (int c = 0; c < kGridColumns; ++c) {
            if (c) text += '\t';
            text += GridCellText(s.events, s.recording, n, c).value_or("");
        }
        text += '\n';
    }
    return text;
}

bool WriteText(const std::string& path, const std::string& text, std::ostream& err) {
    try {
        WriteFileReplacing(path, text);
        return true;
    } catch (const std::exception& e) {
        err << "error: cannot write " << path << ": " << e.what() << '\n';
        return false;
    }
}

// Opens as a click in the file list does, the channel question answered by --channel.
bool OpenForCli(Session& s, CliDialogs& ui, const std::string& file,
                const std::optional<int>& channel, std::ostream& err) {
    if (channel) ui.channelAnswer = std::to_string(*channel);
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) {
        err << "error: " << file << ": no such file\n";
        return false;
    }
    if (!OpenDataFile(s, ui, file)) {
        if (ui.messages == 0) err << "error: " << file << " could not be opened\n";
        return false;
    }
    for (const std::string& w : s.recording.warnings) err << "warning: " << w << '\n';
    const int last = s.recording.LastChannelIndex;
    if (channel && (*channel > last || *channel < 0))
        err << "warning: " << file << " has channels 0 to " << last << "; channel "
            << int(s.recording.ChannelIndex) << " opened instead of " << *channel << '\n';
    return true;
}

int RunDetect(const DetectOptions& o, const std::filesystem::path& programDir, std::ostream& out,
              std::ostream& err) {
    int status = 0;
    const bool tty = ::isatty(STDERR_FILENO) && &err == &std::cerr;
    for (const std::string& file : o.files) {
        Session s;
        if (!PrepareSession(s, o, programDir, err)) return 2;
        CliDialogs ui(err);
        if (!OpenForCli(s, ui, file, o.channel, err)) {
            status = 1;
            continue;
        }
        const Recording& r = s.recording;
        const std::string name = std::filesystem::path(file).filename().string();
        if (tty) {
            ui.onProgress = [&] {
                double done = (r.ScreenBlock - r.header.lDataSectionPtr) /
                              std::max<double>(1.0, r.TotalBlocks);
                char line[160];
                std::snprintf(line, sizeof line, "\r%s: %3.0f%%, %d events", name.c_str(),
                              std::clamp(done, 0.0, 1.0) * 100.0, int(s.events.EventCount()));
                err << line << std::flush;
            };
        }
        const auto t0 = std::chrono::steady_clock::now();
        const int messagesBefore = ui.messages;
        Command1(s, ui);
        if (ui.messages > messagesBefore) {  // improper parameters: nothing was analysed
            status = 1;
            continue;
        }
        Command3(s, ui);
        const double wall =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        if (tty) err << "\r\033[K" << std::flush;

        const double totalPoints = double(std::max(0, r.header.lActualAcqLength)) / r.Channels();
        const double reached = (r.ScreenBlock + r.BlocksPerScreen - r.header.lDataSectionPtr) * 256.0;
        const double points = std::clamp(reached, 0.0, std::max(totalPoints, 0.0));
        const double seconds = points * r.SampleInterval / 1e6;
        char summary[512];
        std::snprintf(summary, sizeof summary,
                      "%s: channel %d, %d events, %.3f s of recording analysed in %.3f s "
                      "(%.0f samples/s)",
                      name.c_str(), int(r.ChannelIndex), int(s.events.EventCount()), seconds,
                      wall, wall > 0 ? points / wall : 0.0);
        err << summary << '\n';

        const bool several = o.files.size() > 1;
        auto target = [&](const std::string& opt, const char* ext) {
            if (!several) return opt;
            return (std::filesystem::path(opt) /
                    (std::filesystem::path(file).stem().string() + ext))
                .string();
        };
        if (!o.csv.empty()) {
            const std::string path = target(o.csv, ".csv");
            if (!WriteText(path, EventCsv(s.events), err)) status = 1;
            else out << "events written to " << path << '\n';
        }
        if (!o.grid.empty()) {
            const std::string path = target(o.grid, ".txt");
            if (!WriteText(path, EventGrid(s), err)) status = 1;
            else out << "grid written to " << path << '\n';
        }
    }
    return status;
}

int RunInfo(const std::string& file, std::optional<int> channel, std::ostream& out,
            std::ostream& err) {
    Session s;
    CliDialogs ui(err);
    if (!OpenForCli(s, ui, file, channel, err)) return 1;
    out << DatInfoTitle(s) << '\n';
    for (const auto& [label, value] : DatInfoRows(s)) out << label << '\t' << value << '\n';
    return 0;
}

}  // namespace

int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
           const std::filesystem::path& programDir) {
    CLI::App app{"Ardelvantine command line: header info and event detection for ABF recordings",
                 "ardelvantine-cli"};
    app.require_subcommand(1);

    std::string infoFile;
    std::optional<int> infoChannel;
    auto* info = app.add_subcommand("info", "Print the header rows of an ABF file");
    info->add_option("FILE", infoFile, "ABF data file")->required();
    info->add_option("--channel", infoChannel, "Channel whose scale rows are shown (default 0)");

    DetectOptions d;
    auto* detect = app.add_subcommand(
        "detect",
        "Detect events: open each file as the desktop does, analyse the first screen, then "
        "non-stop to the end");
    detect->add_option("FILE", d.files, "ABF data files")->required();
    detect->add_option("--channel", d.channel,
                       "Channel to analyse (0-based); above the last it is clamped");
    detect->add_option("--blocks-per-screen", d.blocksPerScreen,
                       "Screen length in Blocks of 256 points (default from the settings, 4)");
    detect->add_flag("--complex-peak", d.complexPeak, "Follow peaks riding on a decay");
    detect->add_option("--param", d.params,
                       "Detection parameter as KEY=VALUE, KEY a key of the settings file's "
                       "Analysis section with its type mark, e.g. ThresholdAmplitude!=8")
        ->take_all();
    detect->add_option("--ini", d.ini,
                       "Settings file (default: Ardelvan.ini beside the program; defaults when "
                       "it is missing)");
    detect->add_option("--csv", d.csv,
                       "Write the stored fields of every event as CSV (a folder when several "
                       "files are given)");
    detect->add_option("--grid", d.grid,
                       "Write the table as the grid shows it, tab-separated (a folder when "
                       "several files are given)");

    std::string settingsIni;
    auto* settings = app.add_subcommand(
        "settings", "Print the detection parameters and display settings as they would load");
    settings->add_option("--ini", settingsIni, "Settings file (default: Ardelvan.ini beside the program)");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::ostringstream o, e2;
        int code = app.exit(e, o, e2);
        out << o.str();
        err << e2.str();
        return code == 0 ? 0 : 2;
    }

    if (*info) return RunInfo(infoFile, infoChannel, out, err);
    if (*detect) return RunDetect(d, programDir, out, err);
    if (*settings) {
        Session s;
        try {
            const std::filesystem::path ini =
                settingsIni.empty() ? ArdelvanIniPath(programDir) : std::filesystem::path(settingsIni);
            LoadIniSettings(s, ini, programDir);
            for (const std::string& line : RenderEffectiveSettings(s)) out << line << '\n';
        } catch (const std::exception& e) {
            err << "error: " << e.what() << '\n';
            return 2;
        }
        return 0;
    }
    return 2;
}

}  // namespace ardel::cli

#include "app/cli/cli_app.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ostream>
#include <sstream>
#include <thread>

#include "app/cli/cli_dialogs.h"
#include "app/cli/cli_outputs.h"
#include "app/cli/cli_run.h"
#include "core/event_files.h"
#include "core/event_table.h"
#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "core/safe_file.h"
#include "core/settings.h"
#include "detect/batch_analysis.h"
#include "detect/digital_filter.h"
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
    std::string par;
    std::string csv;
    std::string grid;
    int jobs = 1;
    bool desktopBatch = false;
    bool noEvt = false;
    bool filter = false;
};

// The settings file to read. The one beside the program may be missing (its defaults hold);
// a file named on the command line must be there, or a mistyped name would pass unnoticed.
std::optional<std::filesystem::path> SettingsFile(const std::string& named,
                                                  const std::filesystem::path& programDir,
                                                  std::ostream& err) {
    if (named.empty()) return ArdelvanIniPath(programDir);
    std::error_code ec;
    if (const auto reason = NotARegularFile(named)) {
        err << "error: the settings file " << named;
        if (std::filesystem::exists(named, ec))
            err << " cannot be read: " << *reason << '\n';
        else
            err << " does not exist\n";
        return std::nullopt;
    }
    return std::filesystem::path(named);
}

// Everything a file's analysis needs before it starts: settings file, then --param, then the
// screen and complex-peak flags. Returns false (after a message) on a bad setting.
bool PrepareSession(Session& s, const DetectOptions& o, const std::filesystem::path& programDir,
                    std::ostream& err) {
    const auto ini = SettingsFile(o.ini, programDir, err);
    if (!ini) return false;
    try {
        LoadIniSettings(s, *ini, programDir);
        if (!o.par.empty()) {
            // The menu command passes over a file it cannot read without a word; here that
            // would run the analysis with parameters the user did not ask for. A pipe is refused
            // before it is opened, which would wait for a writer.
            if (const auto reason = NotARegularFile(o.par)) {
                err << "error: the parameter file " << o.par << " cannot be read: " << *reason
                    << '\n';
                return false;
            }
            const FileSource readable(o.par);
            CliDialogs ui(err);
            ui.openFileAnswer = o.par;
            menu_LoadParameter(s, ui, programDir);
            if (ui.messages > 0) return false;  // not a parameter or event file
        }
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
    // The recording holds the screen length to the box's limits when it dimensions its
    // buffers; here the option only has to fit a float.
    if (o.blocksPerScreen) {
        const double b = *o.blocksPerScreen;
        s.recording.BlocksPerScreen = float(b >= 1.0 ? std::min(b, 32767.0) : 1.0);
    }
    if (o.complexPeak) s.options.ComplexPeak = true;
    if (o.filter) s.options.FilterOn = true;
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

// "-" is standard output; a pipe or device is written as it is, anything else replaced safely.
bool WriteText(const std::string& path, const std::string& text, std::ostream& err,
               std::ostream& data) {
    if (IsStandardOutput(path)) {
        data << text;
        return true;
    }
    try {
        data.flush();  // what went to standard output before stays before, should path be it
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
    const std::string name = std::filesystem::path(file).filename().string();
    ui.context = [name] { return name; };
    const int messagesBefore = ui.messages;
    if (!OpenDataFile(s, ui, file)) {
        if (ui.messages == messagesBefore) err << "error: " << file << " could not be opened\n";
        return false;
    }
    for (const std::string& w : s.recording.warnings)
        err << "warning: " << EscapeForTerminal(w) << '\n';
    const int last = s.recording.LastChannelIndex;
    if (channel && (*channel > last || *channel < 0))
        err << "warning: " << file << " has channels 0 to " << last << "; channel "
            << int(s.recording.ChannelIndex) << " opened instead of " << *channel << '\n';
    return true;
}

// Writes --csv and --grid for one analysed file; with several files the options name folders.
// What goes to standard output goes to data.
bool WriteTables(const Session& s, const DetectOptions& o, const std::string& file, bool several,
                 std::ostream& log, std::ostream& data) {
    bool ok = true;
    auto write = [&](const std::string& option, const char* ext, const std::string& text,
                     const char* said) {
        if (option.empty()) return;
        const std::string path = TableOutputPath(option, file, several, ext);
        if (!WriteText(path, text, log, data))
            ok = false;
        else if (!IsStandardOutput(path))
            log << said << path << '\n';
    };
    write(o.csv, ".csv", EventCsv(s.events), "events written to ");
    write(o.grid, ".txt", GridText(s.events, s.recording), "grid written to ");
    return ok;
}

// Every file this run would write, so that a name two files share is found before the first
// is written.
std::vector<PlannedOutput> PlannedOutputs(const DetectOptions& o) {
    const bool several = o.files.size() > 1;
    std::vector<PlannedOutput> planned;
    for (const std::string& file : o.files) {
        if (!o.noEvt) planned.push_back({PlannedEventFile(file).string(), file, "event file"});
        if (!o.csv.empty())
            planned.push_back({TableOutputPath(o.csv, file, several, ".csv"), file, "CSV table"});
        if (!o.grid.empty())
            planned.push_back({TableOutputPath(o.grid, file, several, ".txt"), file, "grid"});
    }
    return planned;
}

// Refuses the run, before anything is written, when results would be lost. True when refused.
bool RefuseClashes(const std::vector<PlannedOutput>& planned, std::vector<std::string> inputs,
                   std::ostream& err) {
    const auto clashes = FindOutputClashes(planned, inputs);
    if (clashes.empty()) return false;
    for (const std::string& c : clashes) err << "error: " << c << '\n';
    err << "error: nothing was written; give the outputs names of their own\n";
    return true;
}

// Re-running over the same files replaces their event files.
void AnswerReplaceWithYes(CliDialogs& ui) {
    ui.answerFor = [](std::string_view title) -> std::optional<Answer> {
        if (title == "Replace File") return Answer::Yes;
        return std::nullopt;
    };
}

// One file as a user would do it: open, F9, F11, save the event file beside the data file.
int AnalyseFile(const DetectOptions& o, const std::string& file, bool several,
                const std::filesystem::path& programDir, std::ostream& log, std::ostream& data,
                bool progress) {
    Session s;
    if (!PrepareSession(s, o, programDir, log)) return 2;
    CliDialogs ui(log);
    AnswerReplaceWithYes(ui);
    if (s.options.FilterOn) InstallDigitalFilter(s, ui);
    if (!OpenForCli(s, ui, file, o.channel, log)) return 1;
    if (s.options.FilterOn) {
        // Said once here rather than on every screen of the run.
        const double rate = SamplingFrequency(s.recording);
        if (auto message = CutoffMessage(Val(s.options.FilterFreq), rate)) {
            log << "error: " << *message << '\n';
            return 2;
        }
    }
    const Recording& r = s.recording;
    const std::string name = std::filesystem::path(file).filename().string();
    if (progress) {
        ui.onProgress = [&] {
            double done =
                (r.ScreenBlock - r.header.lDataSectionPtr) / std::max<double>(1.0, r.TotalBlocks);
            char line[160];
            std::snprintf(line, sizeof line, "\r%s: %3.0f%%, %d events", name.c_str(),
                          std::clamp(done, 0.0, 1.0) * 100.0, int(s.events.EventCount()));
            log << line << std::flush;
        };
    }
    const auto t0 = std::chrono::steady_clock::now();
    const int messagesBefore = ui.messages;
    Command1(s, ui);
    if (ui.messages > messagesBefore) return 1;  // improper parameters: nothing was analysed
    Command3(s, ui);
    const double wall =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    if (progress) log << "\r\033[K" << std::flush;

    const double totalPoints = double(std::max(0, r.header.lActualAcqLength)) / r.Channels();
    const double reached = (r.ScreenBlock + r.BlocksPerScreen - r.header.lDataSectionPtr) * 256.0;
    const double points = std::clamp(reached, 0.0, std::max(totalPoints, 0.0));
    char summary[512];
    std::snprintf(summary, sizeof summary,
                  "%s: channel %d, %d events, %.3f s of recording analysed in %.3f s "
                  "(%.0f samples/s)",
                  name.c_str(), int(r.ChannelIndex), int(s.events.EventCount()),
                  points * r.SampleInterval / 1e6, wall, wall > 0 ? points / wall : 0.0);
    log << summary << '\n';

    int status = 0;
    if (!o.noEvt) {
        // The batch path of the save: no dialog, NAME.EVT beside the data file.
        const auto evt = BatchEventFilePath(s);
        s.display.BatchRunning = true;
        const bool saved = menu_SaveEvent(s, ui);
        s.display.BatchRunning = false;
        if (saved)
            log << "event file written to " << evt.string() << '\n';
        else if (s.events.EventCount() > 0) {
            log << "error: the event file " << evt.string() << " could not be written\n";
            status = 1;
        }
    }
    if (!WriteTables(s, o, file, several, log, data)) status = 1;
    return status;
}

int RunDesktopBatch(const DetectOptions& o, const std::filesystem::path& programDir,
                    std::ostream& err) {
    Session s;
    if (!PrepareSession(s, o, programDir, err)) return 2;
    if (o.channel) s.recording.ChannelIndex = std::uint8_t(std::clamp(*o.channel, 0, 15));
    CliDialogs ui(err);
    AnswerReplaceWithYes(ui);
    ui.context = [&s] { return s.Label11; };
    if (s.options.FilterOn) InstallDigitalFilter(s, ui);
    // A pipe or device in the list would hold the batch at its open; it is left out.
    int status = 0;
    std::vector<std::filesystem::path> files;
    for (const std::string& f : o.files) {
        if (IsSpecialFile(f)) {
            err << EscapeForTerminal(std::filesystem::path(f).filename().string()) << ": "
                << NotARegularFile(f).value_or("") << ", skipped\n";
            status = 1;
            continue;
        }
        files.emplace_back(f);
    }
    const BatchReport report = RunBatch(s, ui, files);
    ui.FlushRepeats();
    // A message (bad parameters, a filter it cannot design) means the results need a look.
    if (ui.messages > 0) status = 1;
    for (const BatchFileOutcome& f : report.files) {
        for (const std::string& w : f.warnings) err << "warning: " << w << '\n';
        const std::string name = f.file.filename().string();
        switch (f.status) {
            case BatchFileStatus::Analysed:
                err << name << ": " << f.eventCount << " events\n";
                if (!f.eventFile.empty())
                    err << "event file written to " << f.eventFile.string() << '\n';
                break;
            case BatchFileStatus::PassedOver:
                err << name << ": passed over\n";
                break;
            case BatchFileStatus::NotAbf:
                err << name << ": not an ABF file, skipped\n";
                status = 1;
                break;
            case BatchFileStatus::Unreadable:
                err << name << ": cannot be read, skipped\n";
                status = 1;
                break;
            case BatchFileStatus::Unusable:
                err << name << ": header unusable for the analysis, skipped\n";
                status = 1;
                break;
        }
    }
    return status;
}

int RunDetect(const DetectOptions& o, const std::filesystem::path& programDir, std::ostream& out,
              std::ostream& err) {
    // The settings are checked once, before any file: a settings file that cannot be read
    // ends the run without a result written.
    {
        Session probe;
        if (!PrepareSession(probe, o, programDir, err)) return 2;
    }
    std::vector<std::string> inputs = o.files;
    inputs.insert(inputs.end(), {o.ini, o.par});
    if (RefuseClashes(PlannedOutputs(o), inputs, err)) return 2;
    if (o.desktopBatch) return RunDesktopBatch(o, programDir, err);
    const bool several = o.files.size() > 1;
    const bool tty = ::isatty(STDERR_FILENO) && &err == &std::cerr;
    const int jobs = std::clamp(o.jobs, 1, 64);
    if (jobs == 1) {
        int status = 0;
        for (const std::string& file : o.files) {
            std::ostringstream log;
            int st = AnalyseFile(o, file, several, programDir, tty ? err : log, out, tty);
            err << log.str();
            if (st == 2) return 2;
            status = std::max(status, st);
        }
        return status;
    }
    // Each file in its own session on its own thread; the reports and what goes to standard
    // output come out in file order.
    std::vector<std::ostringstream> logs(o.files.size());
    std::vector<std::ostringstream> data(o.files.size());
    std::vector<int> codes(o.files.size(), 0);
    std::atomic<std::size_t> next{0};
    std::vector<std::thread> workers;
    for (int w = 0; w < jobs; ++w) {
        workers.emplace_back([&] {
            for (std::size_t i; (i = next.fetch_add(1)) < o.files.size();) {
                try {
                    codes[i] = AnalyseFile(o, o.files[i], several, programDir, logs[i], data[i],
                                           false);
                } catch (const std::exception& e) {
                    logs[i] << "error: " << o.files[i] << ": " << e.what() << '\n';
                    codes[i] = 1;
                }
            }
        });
    }
    for (auto& t : workers) t.join();
    int status = 0;
    for (std::size_t i = 0; i < o.files.size(); ++i) {
        out << data[i].str();
        err << logs[i].str();
        status = std::max(status, codes[i]);
    }
    return status;
}

// The table of an event file, opened against its data file beside it.
int RunEvents(const std::string& file, const DetectOptions& o, std::ostream& out,
              std::ostream& err) {
    std::error_code ec;
    if (!std::filesystem::exists(file, ec)) {
        err << "error: " << file << ": no such file\n";
        return 1;
    }
    if (const auto reason = NotARegularFile(file)) {
        err << "error: " << file << " cannot be opened: " << *reason << '\n';
        return 1;
    }
    std::vector<PlannedOutput> planned;
    if (!o.csv.empty()) planned.push_back({o.csv, file, "CSV table"});
    if (!o.grid.empty()) planned.push_back({o.grid, file, "grid"});
    if (RefuseClashes(planned, {file}, err)) return 2;
    std::vector<std::uint8_t> head(kAbfHeaderSize);
    try {
        FileSource(file).Read(0, head);
    } catch (const std::exception& e) {
        err << "error: " << e.what() << '\n';
        return 1;
    }
    if (!IsArdelvantineFile(AbfHeader::FromBytes(head))) {
        err << "Not an Event File: This file is not an event file.  Please check the file and "
               "try again.\n";
        return 1;
    }
    Session s;
    CliDialogs ui(err);  // the conversion question of an older file is answered No
    if (!OpenForCli(s, ui, file, o.channel, err)) return 1;
    err << std::filesystem::path(file).filename().string() << ": " << s.events.EventCount()
        << " events of " << EscapeForTerminal(s.Label11) << '\n';
    const bool ok = WriteTables(s, o, file, false, err, out);
    if (o.csv.empty() && o.grid.empty()) out << EventCsv(s.events);
    return ok ? 0 : 1;
}

int RunInfo(const std::string& file, std::optional<int> channel, std::ostream& out,
            std::ostream& err) {
    Session s;
    CliDialogs ui(err);
    if (!OpenForCli(s, ui, file, channel, err)) return 1;
    out << EscapeForTerminal(DatInfoTitle(s)) << '\n';
    for (const auto& [label, value] : DatInfoRows(s))
        out << label << '\t' << EscapeForTerminal(value) << '\n';
    return 0;
}

}  // namespace

int RunCli(int argc, const char* const* argv, std::ostream& out, std::ostream& err,
           const std::filesystem::path& programDir) {
    CLI::App app{
        "Ardelvantine command line: header info, event detection and event files of ABF "
        "recordings (1.x and 2)",
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
        "non-stop to the end, and save NAME.EVT beside each data file (an existing one is "
        "replaced). A run whose outputs would share a file (two data files named alike) is "
        "refused before anything is written");
    detect->add_option("FILE", d.files, "ABF data files")->required();
    detect->add_option("--channel", d.channel,
                       "Channel to analyse (0-based); above the last it is clamped");
    detect->add_option("--blocks-per-screen", d.blocksPerScreen,
                       "Screen length in Blocks of 256 points (default from the settings, 4)");
    detect->add_flag("--complex-peak", d.complexPeak, "Follow peaks riding on a decay");
    detect
        ->add_option("--param", d.params,
                     "Detection parameter as KEY=VALUE (repeatable), KEY a key of the settings "
                     "file's Analysis section with its type mark: ThresholdAmplitude!, "
                     "PeriodToSearchMax&, PeriodStartBaseline&, PeriodFindDecayTime&, "
                     "DecayPercent!, PeriodBaselineAverage&, AreaThreshold!, PeakDirection% "
                     "(1 positive, else negative), ComplexPeak, NumberPointsPeak; also "
                     "FilterType and FilterFreq. Example: --param ThresholdAmplitude!=8")
        ->take_all();
    detect->add_option("--ini", d.ini,
                       "Settings file to take the parameters from (default: Ardelvan.ini beside "
                       "the program, whose defaults hold when it is missing; a file named here "
                       "must exist)");
    detect->add_option("--par", d.par,
                       "Parameter file (.PAR, or an event file) whose detection parameters "
                       "replace those of the settings file; --param still applies after it");
    auto* jobsOpt =
        detect->add_option("--jobs", d.jobs, "Analyse this many files at once (default 1)")
            ->check(CLI::Range(1, 64));
    auto* noEvtOpt =
        detect->add_flag("--no-evt", d.noEvt, "Do not save NAME.EVT beside each data file");
    auto* batchOpt = detect->add_flag(
        "--desktop-batch", d.desktopBatch,
        "Run the desktop's Batch Analysis instead: files one after the other in one session, "
        "with the batch's own rules: TotalBlocks = samples / 256 whatever the channel count "
        "(so multi-channel files run on past their end, reading zeros), and the gain always "
        "multiplied by the stored fAutosampleAdditGain (a file storing 0 there finds no "
        "events). Its event files are byte for byte those of the desktop's batch. Cannot be "
        "combined with --jobs, --no-evt, --csv or --grid.");
    detect->add_flag("--filter", d.filter,
                     "Filter the trace before detection with the digital filter of the settings "
                     "(Display section FilterType and FilterFreq, or --param FilterType=N "
                     "--param FilterFreq=HZ): 0 Butterworth low-pass, 1 high-pass, 2 Chebychev "
                     "low-pass, 3 high-pass, 4 Inv Chebychev low-pass, 5 high-pass, 6 elliptic "
                     "low-pass, 7 high-pass; order 8, causal");
    auto* csvOpt = detect->add_option("--csv", d.csv,
                                      "Write the stored fields of every event as CSV (an "
                                      "existing folder when several files are given; \"-\" "
                                      "for standard output)");
    auto* gridOpt = detect->add_option("--grid", d.grid,
                                       "Write the table as the grid shows it, tab-separated (an "
                                       "existing folder when several files are given; \"-\" "
                                       "for standard output)");
    batchOpt->excludes(jobsOpt)->excludes(noEvtOpt)->excludes(csvOpt)->excludes(gridOpt);

    std::string eventsFile;
    DetectOptions ev;
    auto* events = app.add_subcommand(
        "events",
        "Open an event file against its data file (in the same folder) and write its table");
    events->add_option("FILE", eventsFile, "Event file (.EVT)")->required();
    events->add_option("--channel", ev.channel, "Channel of the data file (default 0)");
    events->add_option("--csv", ev.csv,
                       "Write the stored fields as CSV (standard output when "
                       "neither --csv nor --grid is given)");
    events->add_option("--grid", ev.grid, "Write the table as the grid shows it, tab-separated");

    std::string settingsIni;
    auto* settings = app.add_subcommand(
        "settings", "Print the detection parameters and display settings as they would load");
    settings->add_option("--ini", settingsIni,
                         "Settings file (default: Ardelvan.ini beside the program, whose defaults "
                         "hold when it is missing; a file named here must exist)");

    RunOptions runOptions;
    auto* run = AddRunSubcommand(app, runOptions);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        std::ostringstream o, e2;
        int code = app.exit(e, o, e2);
        out << o.str();
        err << e2.str();
        return code == 0 ? 0 : 2;
    }

    if (*run) return RunScriptCommand(runOptions, programDir, out, err);
    if (*info) return RunInfo(infoFile, infoChannel, out, err);
    if (*detect) return RunDetect(d, programDir, out, err);
    if (*events) return RunEvents(eventsFile, ev, out, err);
    if (*settings) {
        Session s;
        const auto ini = SettingsFile(settingsIni, programDir, err);
        if (!ini) return 2;
        try {
            LoadIniSettings(s, *ini, programDir);
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

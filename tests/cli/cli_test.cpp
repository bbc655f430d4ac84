// The command line end to end, in process: outputs, messages and exit codes on good and bad
// input.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <fstream>
#include <sstream>

#include "app/cli/cli_app.h"
#include "core/abf_build.h"
#include "core/ini_file.h"
#include "core/safe_file.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TempDir;
using testing::TestDataDir;

struct Run {
    int code;
    std::string out, err;
};

Run Cli(const TempDir& dir, std::vector<std::string> args) {
    std::vector<const char*> argv{"ardelvantine-cli"};
    for (const auto& a : args) argv.push_back(a.c_str());
    std::ostringstream out, err;
    int code = cli::RunCli(int(argv.size()), argv.data(), out, err, dir.path());
    return {code, out.str(), err.str()};
}

std::string ReadAll(const std::filesystem::path& p) {
    std::ifstream f(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

// 20 s at 10 kHz with three clear inward events, 0.061 pA per raw unit.
std::filesystem::path ThreeEvents(const TempDir& dir, const std::string& name = "cell.abf") {
    AbfBuildSpec spec;
    spec.sampleIntervalUs = 100;
    spec.scaleFactors = {0.005f};
    auto trace = testing::MakeTrace(200000, 0,
                                    {{50000, -500, 10, 80}, {100050, -700, 10, 80},
                                     {150000, -600, 10, 80}});
    return testing::WriteAbf(dir / name, spec, {trace});
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    return lines;
}

TEST(CliDetect, WritesCsvAndGridAndSummary) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    auto r = Cli(dir, {"detect", file.string(), "--csv", (dir / "e.csv").string(), "--grid",
                       (dir / "g.txt").string()});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_THAT(r.err, HasSubstr("cell.abf: channel 0, 3 events, 20.000 s of recording analysed"));

    auto csv = Lines(ReadAll(dir / "e.csv"));
    ASSERT_EQ(csv.size(), 4u);
    EXPECT_EQ(csv[0],
              "Time,Amplitude,Noise,Rise,Decay,Baseline,Area,GroupNumber,Channel,BaselineLead,"
              "Rise1090,HalfWidth,Rise50,PeakDirection,BurstNumber,BurstEventNumber,Slope1090,"
              "EventText,RelativeTime,PeakPoint");
    // Peak times in ms, amplitude in raw units, direction -1, peak point from the start.
    EXPECT_THAT(csv[1], StartsWith("5000,500,"));
    EXPECT_THAT(csv[2], StartsWith("10005,700,"));
    EXPECT_THAT(csv[3], HasSubstr(",-1,0,0,"));
    EXPECT_THAT(csv[3], ::testing::EndsWith(",150000"));

    auto grid = Lines(ReadAll(dir / "g.txt"));
    ASSERT_EQ(grid.size(), 4u);
    EXPECT_THAT(grid[0], StartsWith("3\tTime (ms)\tAmplitude\tRise (ms)"));
    EXPECT_THAT(grid[1], StartsWith("1\t5,000.00\t"));
}

TEST(CliDetect, ParamsAndSettingsFileApply) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    // A threshold above the two smaller events leaves only the largest one (700 raw = 42.7 pA).
    auto r = Cli(dir, {"detect", file.string(), "--param", "ThresholdAmplitude!=40"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_THAT(r.err, HasSubstr(", 1 events,"));

    WritePrivateProfileString("Analysis", "ThresholdAmplitude!", " 40", dir / "my.ini");
    r = Cli(dir, {"detect", file.string(), "--ini", (dir / "my.ini").string()});
    EXPECT_THAT(r.err, HasSubstr(", 1 events,"));
    // --param comes after the file.
    r = Cli(dir, {"detect", file.string(), "--ini", (dir / "my.ini").string(), "--param",
                  "ThresholdAmplitude!=5"});
    EXPECT_THAT(r.err, HasSubstr(", 3 events,"));

    r = Cli(dir, {"detect", file.string(), "--param", "Threshold=4"});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("unknown key \"Threshold\""));
    r = Cli(dir, {"detect", file.string(), "--param", "ThresholdAmplitude!"});
    EXPECT_EQ(r.code, 2);
    // A screen length the window's box would refuse takes its limit instead of never ending.
    WritePrivateProfileString("Display", "DisplayTotalNumberBlockPerScreen", " 0", dir / "my.ini");
    r = Cli(dir, {"detect", file.string(), "--ini", (dir / "my.ini").string(), "--no-evt"});
    EXPECT_THAT(r.err, HasSubstr(", 1 events, 20.000 s"));

    // A settings file named but not there is a mistake, not a run on the defaults.
    r = Cli(dir, {"detect", file.string(), "--ini", (dir / "typo.ini").string()});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("typo.ini does not exist"));
    r = Cli(dir, {"settings", "--ini", (dir / "typo.ini").string()});
    EXPECT_EQ(r.code, 2);
}

TEST(CliDetect, ImproperParametersFailWithTheProgramsMessage) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    auto r = Cli(dir, {"detect", file.string(), "--param", "PeriodBaselineAverage&=50"});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("Improper Analysis Parameters: The analysis parameters are not "
                                 "set properly."));
}

TEST(CliDetect, ChannelAboveTheLastIsClampedWithAWarning) {
    TempDir dir;
    AbfBuildSpec spec;
    spec.sampleIntervalUs = 50;
    spec.units = {"pA", "mV"};
    spec.scaleFactors = {0.005f, 0.005f};
    auto quiet = testing::MakeTrace(100000, 0, {});
    auto busy = testing::MakeTrace(100000, 0, {{50000, -600, 10, 80}});
    auto file = testing::WriteAbf(dir / "two.abf", spec, {quiet, busy});
    auto r = Cli(dir, {"detect", file.string(), "--channel", "7"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_THAT(r.err, HasSubstr("has channels 0 to 1; channel 1 opened instead of 7"));
    EXPECT_THAT(r.err, HasSubstr("two.abf: channel 1, 1 events"));
    r = Cli(dir, {"detect", file.string()});
    EXPECT_THAT(r.err, HasSubstr("two.abf: channel 0, 0 events"));
}

TEST(CliBadInput, RefusedFilesGiveMessagesAndExitCodes) {
    TempDir dir;
    auto r = Cli(dir, {"detect", (dir / "missing.abf").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("no such file"));

    std::ofstream(dir / "text.abf") << "hello, this is not a recording";
    r = Cli(dir, {"detect", (dir / "text.abf").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("Not ABF File: This is not an Axon Binary File.  Try another file."));

    // "ABF2" over nothing: the sections are missing.
    std::ofstream(dir / "v2.abf", std::ios::binary) << std::string("ABF2") + std::string(600, '\0');
    r = Cli(dir, {"info", (dir / "v2.abf").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("v2.abf: Inconsistent ABF Header: The ABF 2 file v2.abf cannot be "
                                 "opened (byte 76): the Protocol section is missing"));

    AbfBuildSpec spec;
    AbfHeader h = MakeAbfHeader(spec, 1000);
    h.nDataFormat = 1;
    auto bytes = h.ToBytes();
    WriteFileReplacing(dir / "float.abf", std::string(bytes.begin(), bytes.end()));
    r = Cli(dir, {"detect", (dir / "float.abf").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("Not in Integer Format: This ABF file is saved in floating-point "
                                 "format."));

    auto empty = dir / "empty.abf";
    std::ofstream(empty).close();
    r = Cli(dir, {"detect", empty.string()});
    EXPECT_EQ(r.code, 1);

    r = Cli(dir, {"detect", dir.path().string()});  // a folder
    EXPECT_EQ(r.code, 1);
}

TEST(CliBadInput, TruncatedAndInconsistentFilesAreReadAsFarAsTheyGo) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    std::string all = ReadAll(file);

    // Cut in the middle of the data: the first event is still found, the rest reads as zeros.
    WriteFileReplacing(dir / "cut.abf", all.substr(0, 6144 + 2 * 120000));
    auto r = Cli(dir, {"detect", (dir / "cut.abf").string()});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_THAT(r.err, HasSubstr("warning: cut.abf: the header gives 200000 samples but the file "
                                 "holds only 120000"));
    EXPECT_THAT(r.err, HasSubstr("cut.abf: channel 0, 2 events"));

    // A header cut short.
    WriteFileReplacing(dir / "head.abf", all.substr(0, 3000));
    r = Cli(dir, {"info", (dir / "head.abf").string()});
    EXPECT_THAT(r.err, HasSubstr("shorter than the 6144-byte header"));

    // Counts and pointers that make no sense.
    AbfBuildSpec spec;
    for (auto mutate : std::vector<std::function<void(AbfHeader&)>>{
             [](AbfHeader& h) { h.nADCNumChannels = 0; },
             [](AbfHeader& h) { h.nADCNumChannels = 99; },
             [](AbfHeader& h) { h.fADCSampleInterval = 0; },
             [](AbfHeader& h) { h.lDataSectionPtr = -5; },
             [](AbfHeader& h) { h.lDataSectionPtr = 1 << 30; },
             [](AbfHeader& h) { h.lActualAcqLength = -1000; },
             [](AbfHeader& h) { h.lActualAcqLength = 2000000000; h.fADCSampleInterval = 1e6f; },
             [](AbfHeader& h) { h.nADCSamplingSeq[0] = 40; },
             [](AbfHeader& h) { h.lNumTagEntries = 1 << 28; h.lTagSectionPtr = 3; },
             [](AbfHeader& h) { h.fInstrumentScaleFactor[0] = 0; },
         }) {
        AbfHeader h = MakeAbfHeader(spec, 200000);
        mutate(h);
        auto head = h.ToBytes();
        WriteFileReplacing(dir / "bad.abf", std::string(head.begin(), head.end()) + all.substr(6144));
        r = Cli(dir, {"detect", (dir / "bad.abf").string()});
        EXPECT_TRUE(r.code == 0 || r.code == 1) << r.err;
        EXPECT_FALSE(r.err.empty());
    }
}

TEST(CliInfo, PrintsTheHeaderRows) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    auto r = Cli(dir, {"info", file.string()});
    ASSERT_EQ(r.code, 0) << r.err;
    auto lines = Lines(r.out);
    ASSERT_GE(lines.size(), 30u);
    EXPECT_EQ(lines[0], "DAT File Info:  cell.abf");
    EXPECT_EQ(lines[2], "FileSignature\tABF");
    EXPECT_THAT(r.out, HasSubstr("\nADCSampleInterval \t100\n"));
    EXPECT_THAT(r.out, HasSubstr("\nADCUnits (0) \tpA\n"));
    EXPECT_THAT(r.out, HasSubstr("\nSignalOffset (0 )     \t0\n"));
}

// The ABF 2 recording and its ABF 1.x conversion print the same rows; only the title, the
// version numbers and the stored autosample gain tell them apart (the conversion stored 0,
// which a batch run would multiply every amplitude by; the header built from ABF 2 stores 1).
TEST(CliInfo, Abf2AndItsConversionPrintTheSameRows) {
    TempDir dir;
    for (const char* channel : {"0", "3"}) {
        auto two = Cli(dir, {"info", (TestDataDir() / "pclamp11_4ch.abf").string(), "--channel", channel});
        auto one =
            Cli(dir, {"info", (TestDataDir() / "pclamp11_4ch_abf1.abf").string(), "--channel", channel});
        ASSERT_EQ(two.code, 0) << two.err;
        ASSERT_EQ(one.code, 0) << one.err;
        EXPECT_EQ(two.err, "");
        const auto a = Lines(two.out), b = Lines(one.out);
        ASSERT_EQ(a.size(), b.size());
        EXPECT_EQ(a[0], "DAT File Info:  pclamp11_4ch.abf");
        for (std::size_t i = 1; i < a.size(); ++i) {
            if (a[i].starts_with("FileVersionNumber") || a[i].starts_with("HeaderVersionNumber"))
                EXPECT_EQ(a[i].substr(a[i].find('\t')), "\t2.9");
            else if (a[i].starts_with("AutosampleAdditGain"))
                EXPECT_EQ(a[i].substr(a[i].find('\t')), "\t1");
            else
                EXPECT_EQ(a[i], b[i]);
        }
    }
}

TEST(CliUsage, MissingArgumentsAreUsageErrors) {
    TempDir dir;
    EXPECT_EQ(Cli(dir, {}).code, 2);
    EXPECT_EQ(Cli(dir, {"detect"}).code, 2);
    auto r = Cli(dir, {"--help"});
    EXPECT_EQ(r.code, 0);
    EXPECT_THAT(r.out, HasSubstr("detect"));
}

}  // namespace
}  // namespace ardel

namespace ardel {
namespace {

TEST(CliEventFiles, ParallelRunsWriteTheSameEventFilesThatReadBackToTheSameTables) {
    TempDir serial, parallel;
    std::vector<std::string> names{"a.abf", "b.abf", "c.abf"};
    for (const auto* dir : {&serial, &parallel})
        for (std::size_t k = 0; k < names.size(); ++k) {
            AbfBuildSpec spec;
            spec.sampleIntervalUs = 100;
            spec.scaleFactors = {0.005f};
            auto trace = testing::MakeTrace(
                120000, 0, {{20000 + 7000 * std::int64_t(k), -400, 10, 60}, {80050, -650, 8, 90}},
                20, 7 + unsigned(k));
            testing::WriteAbf(dir->path() / names[k], spec, {trace});
        }
    auto args = [&](const TempDir& d, const char* jobs) {
        std::vector<std::string> a{"detect"};
        for (auto& n : names) a.push_back((d.path() / n).string());
        a.insert(a.end(), {"--jobs", jobs, "--csv", d.path().string()});
        return a;
    };
    auto r1 = Cli(serial, args(serial, "1"));
    auto r2 = Cli(parallel, args(parallel, "2"));
    ASSERT_EQ(r1.code, 0) << r1.err;
    ASSERT_EQ(r2.code, 0) << r2.err;
    for (const auto& n : names) {
        const std::string stem = std::filesystem::path(n).stem().string();
        const std::string evt1 = ReadAll(serial.path() / (stem + ".EVT"));
        ASSERT_EQ(evt1.size(), 6144u) << n;  // a few events lie inside the header copy
        EXPECT_EQ(evt1, ReadAll(parallel.path() / (stem + ".EVT"))) << n;

        // The event file read back gives the table the detection wrote.
        const auto back = serial.path() / (stem + "_back.csv");
        auto r = Cli(serial, {"events", (serial.path() / (stem + ".EVT")).string(), "--csv",
                              back.string()});
        ASSERT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(ReadAll(back), ReadAll(serial.path() / (stem + ".csv"))) << n;
    }
    // The reports come in file order whatever finished first.
    EXPECT_LT(r2.err.find("a.abf:"), r2.err.find("b.abf:"));
    EXPECT_LT(r2.err.find("b.abf:"), r2.err.find("c.abf:"));
}

TEST(CliEventFiles, EventsRefusesAFileThatIsNoEventFile) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    auto r = Cli(dir, {"events", file.string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("Not an Event File: This file is not an event file."));
}

TEST(CliEventFiles, ParameterFileAndDesktopBatch) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    // A first run leaves an event file whose parameters a second run takes over with --par.
    auto r = Cli(dir, {"detect", file.string(), "--param", "ThresholdAmplitude!=40"});
    ASSERT_EQ(r.code, 0) << r.err;
    r = Cli(dir, {"detect", file.string(), "--par", (dir / "cell.EVT").string(), "--no-evt"});
    EXPECT_THAT(r.err, HasSubstr(", 1 events,"));
    r = Cli(dir, {"detect", file.string(), "--par", file.string()});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("Not a Parameter File"));
    // A parameter file that is not there is an error, not a run with the settings file's values.
    r = Cli(dir, {"detect", file.string(), "--par", (dir / "missing.PAR").string(), "--no-evt"});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("missing.PAR"));
    EXPECT_THAT(r.err, ::testing::Not(HasSubstr("events,")));

    // The desktop batch on a one-channel file writes the same event file as the plain run.
    const std::string plain = ReadAll(dir / "cell.EVT");
    std::filesystem::remove(dir / "cell.EVT");
    r = Cli(dir, {"detect", file.string(), "--desktop-batch", "--param", "ThresholdAmplitude!=40"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_THAT(r.err, HasSubstr("cell.abf: 1 events"));
    EXPECT_EQ(ReadAll(dir / "cell.EVT"), plain);

    // Parameters the scan refuses are said once per file, not once per screen, and fail the run.
    r = Cli(dir,
            {"detect", file.string(), "--desktop-batch", "--param", "PeriodBaselineAverage&=50"});
    EXPECT_EQ(r.code, 1);
    const auto lines = Lines(r.err);
    ASSERT_GE(lines.size(), 2u) << r.err;
    EXPECT_THAT(lines[0], StartsWith("cell.abf: Improper Analysis Parameters"));
    EXPECT_THAT(lines[1], StartsWith("(the message above came "));
    r = Cli(dir, {"detect", file.string(), "--desktop-batch", "--csv", "x.csv"});
    EXPECT_EQ(r.code, 2);
}

}  // namespace
}  // namespace ardel

namespace ardel {
namespace {

// A disk that is full from the first byte on.
WriteCall DiskFull() {
    return [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
}

TEST(CliOutputs, AFailedWriteLeavesTheOldResultsAndSaysSo) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    const auto csv = dir / "e.csv";
    ASSERT_EQ(Cli(dir, {"detect", file.string(), "--csv", csv.string()}).code, 0);
    const std::string evt = ReadAll(dir / "cell.EVT"), table = ReadAll(csv);
    auto r = [&] {
        ScopedWriteCall full(DiskFull());
        return Cli(dir, {"detect", file.string(), "--csv", csv.string(), "--param",
                      "ThresholdAmplitude!=40"});
    }();
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("File Not Saved: The event file cell.EVT could not be written: "
                                 "No space left on device."));
    EXPECT_THAT(r.err, HasSubstr("cannot write " + csv.string()));
    EXPECT_TRUE(ReadAll(dir / "cell.EVT") == evt);
    EXPECT_TRUE(ReadAll(csv) == table);
}

TEST(CliOutputs, StandardOutputPipesAndDevicesAreWrittenAsTheyAre) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    auto r = Cli(dir, {"detect", file.string(), "--no-evt", "--csv", "-"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(Lines(r.out).size(), 4u);
    EXPECT_THAT(r.out, StartsWith("Time,Amplitude,"));
    EXPECT_THAT(r.err, ::testing::Not(HasSubstr("written to")));

    // Several files, in parallel: each table in file order.
    auto second = ThreeEvents(dir, "b.abf");
    r = Cli(dir, {"detect", file.string(), second.string(), "--no-evt", "--jobs", "2", "--grid",
                  "-"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(Lines(r.out).size(), 8u);

    std::filesystem::create_symlink("/dev/null", dir / "null.csv");
    r = Cli(dir, {"detect", file.string(), "--no-evt", "--csv", (dir / "null.csv").string(),
                  "--grid", "/dev/null"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "null.csv"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));

    r = Cli(dir, {"events", (dir / "cell.EVT").string()});
    EXPECT_EQ(r.code, 1);  // no event file was saved above
    ASSERT_EQ(Cli(dir, {"detect", file.string()}).code, 0);
    r = Cli(dir, {"events", (dir / "cell.EVT").string(), "--csv", "-", "--grid", "-"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(Lines(r.out).size(), 8u);
}

TEST(CliOutputs, OutputsThatWouldShareAFileAreRefusedBeforeAnythingIsWritten) {
    TempDir dir;
    for (const char* sub : {"a", "b", "out"}) std::filesystem::create_directory(dir / sub);
    auto a = ThreeEvents(dir, "a/x.abf"), b = ThreeEvents(dir, "b/x.abf");
    auto r = Cli(dir, {"detect", a.string(), b.string(), "--csv", (dir / "out").string()});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr((dir / "out/x.csv").string() + " would hold the CSV table of " +
                                 a.string() + " and the CSV table of " + b.string()));
    EXPECT_THAT(r.err, ::testing::Not(HasSubstr("events,")));
    EXPECT_FALSE(std::filesystem::exists(dir / "out/x.csv"));
    EXPECT_FALSE(std::filesystem::exists(dir / "a/x.EVT"));

    // The event file takes the name up to its first ".".
    auto r1 = ThreeEvents(dir, "rec.1.abf"), r2 = ThreeEvents(dir, "rec.2.abf");
    for (bool desktop : {false, true}) {
        std::vector<std::string> args{"detect", r1.string(), r2.string()};
        if (desktop) args.push_back("--desktop-batch");
        r = Cli(dir, args);
        EXPECT_EQ(r.code, 2);
        EXPECT_THAT(r.err, HasSubstr((dir / "rec.EVT").string() + " would hold the event file of " +
                                     r1.string() + " and the event file of " + r2.string()));
        EXPECT_FALSE(std::filesystem::exists(dir / "rec.EVT"));
    }
    EXPECT_EQ(Cli(dir, {"detect", r1.string(), r2.string(), "--no-evt"}).code, 0);

    // An output over an input, and two outputs of one file on one name.
    const std::string before = ReadAll(r1);
    r = Cli(dir, {"detect", r1.string(), "--no-evt", "--csv", r1.string()});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("is an input of this run"));
    EXPECT_TRUE(ReadAll(r1) == before);
    r = Cli(dir, {"detect", r1.string(), "--csv", (dir / "t").string(), "--grid",
                  (dir / "./t").string()});
    EXPECT_EQ(r.code, 2);
    r = Cli(dir, {"events", (dir / "x.EVT").string(), "--csv", "t", "--grid", "t"});
    EXPECT_EQ(r.code, 1);  // no such event file: said before the clash
}

TEST(CliBadInput, PipesAreRefusedWithoutWaitingForAWriter) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    const auto pipe = dir / "pipe.abf";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    auto r = Cli(dir, {"detect", pipe.string(), file.string(), "--jobs", "2"});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("pipe.abf cannot be opened: it is a pipe, not a regular file"));
    EXPECT_THAT(r.err, HasSubstr("cell.abf: channel 0, 3 events"));

    r = Cli(dir, {"detect", pipe.string(), file.string(), "--desktop-batch"});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("pipe.abf: it is a pipe, not a regular file, skipped"));
    EXPECT_THAT(r.err, HasSubstr("cell.abf: 3 events"));

    r = Cli(dir, {"events", pipe.string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("it is a pipe"));
    for (const char* option : {"--par", "--ini"}) {
        r = Cli(dir, {"detect", file.string(), option, pipe.string()});
        EXPECT_EQ(r.code, 2) << option;
        EXPECT_THAT(r.err, HasSubstr(pipe.string() + " cannot be read: it is a pipe")) << option;
    }
}

TEST(CliBadInput, ASettingsFileThatCannotBeReadEndsTheRun) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    std::filesystem::create_directory(dir / "Ardelvan.ini");  // beside the program
    auto r = Cli(dir, {"detect", file.string()});
    EXPECT_EQ(r.code, 2);
    EXPECT_THAT(r.err, HasSubstr("Ardelvan.ini\" cannot be read: it is a folder"));
    EXPECT_FALSE(std::filesystem::exists(dir / "cell.EVT"));
    EXPECT_EQ(Cli(dir, {"settings"}).code, 2);

    if (::geteuid() != 0) {  // the superuser reads whatever the permissions say
        WritePrivateProfileString("Analysis", "ThresholdAmplitude!", " 40", dir / "my.ini");
        std::filesystem::permissions(dir / "my.ini", std::filesystem::perms::none);
        r = Cli(dir, {"detect", file.string(), "--ini", (dir / "my.ini").string()});
        EXPECT_EQ(r.code, 2);
        EXPECT_THAT(r.err, HasSubstr("my.ini"));
    }
}

TEST(CliBadInput, StoredTextIsEscapedAndACutHeaderIsTooShort) {
    TempDir dir;
    auto file = ThreeEvents(dir);
    ASSERT_EQ(Cli(dir, {"detect", file.string()}).code, 0);
    std::string evt = ReadAll(dir / "cell.EVT");
    evt.replace(2014, 10, std::string("ab\xFF\x01\x1B[2Jc.abf", 12).substr(0, 10));
    WriteFileReplacing(dir / "odd.EVT", evt);
    auto r = Cli(dir, {"events", (dir / "odd.EVT").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("The original data file ab\\xFF\\x01\\x1B[2Jc. does not exist"));
    EXPECT_EQ(r.err.find('\xFF'), std::string::npos);
    EXPECT_EQ(r.err.find('\x1B'), std::string::npos);

    AbfBuildSpec spec;
    AbfHeader h = MakeAbfHeader(spec, 1000);
    SetFixedText(h.sFileComment, "x\x01y\xFFz \xC2\xB5V");
    auto head = h.ToBytes();
    WriteFileReplacing(dir / "odd.abf", std::string(head.begin(), head.end()));
    r = Cli(dir, {"info", (dir / "odd.abf").string()});
    EXPECT_THAT(r.out, HasSubstr("\nFile Comment\tx\\x01y\\xFFz \xC2\xB5V\n"));  // UTF-8 stays

    WriteFileReplacing(dir / "cut.abf", ReadAll(file).substr(0, 100));
    r = Cli(dir, {"info", (dir / "cut.abf").string()});
    EXPECT_EQ(r.code, 1);
    EXPECT_THAT(r.err, HasSubstr("File Too Short: The file cut.abf is only 100 bytes long"));
}

}  // namespace
}  // namespace ardel

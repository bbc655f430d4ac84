// The commands made from the beat intervals: the scans on series with planted spurious and
// missing beats, the tachogram text, the interval histograms and the Lorenz plot, and the
// tachogram written as an ABF file and opened again as a recording.
#include "hrv/tachogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

#include "core/abf_build.h"
#include "core/abf_writer.h"
#include "core/open_file.h"
#include "graph/graph_model.h"
#include "support/scripted_dialogs.h"

namespace ardel::hrv {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedDialogs;

void Fill(Session& s, const std::vector<float>& times) {
    for (float t : times) s.events.Add().Time = t;
}

std::vector<int> Groups(const Session& s) {
    std::vector<int> g;
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) g.push_back(s.events[i].GroupNumber);
    return g;
}

std::string ReadText(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

fs::path FreshDir(const std::string& name) {
    const fs::path dir = fs::path(::testing::TempDir()) / name;
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

TEST(HrvScans, SpuriousIntervalsRejectTheirSecondBeat) {
    Session s;
    // A double detection at 810 and, out of order, a beat at 1590 before 1600.
    Fill(s, {0, 800, 810, 1600, 1590, 2400});
    ScriptedDialogs ui;
    ui.ExpectInput("Maximum Interval", std::nullopt, "20")
        .ExpectMessage("Search Finished", " 2 events are rejected and marked as group #255");
    HRVSpurious_Command1(s, ui);
    // The negative difference of the unsorted pair counts as too short.
    EXPECT_EQ(Groups(s), (std::vector<int>{0, 0, 255, 0, 255, 0}));
    // An empty reply or 0 ends the scan.
    ui.ExpectInput("Maximum Interval", std::nullopt, "0").ExpectInput("Maximum Interval", std::nullopt, std::nullopt);
    HRVSpurious_Command1(s, ui);
    HRVSpurious_Command1(s, ui);
    EXPECT_TRUE(ui.Done());
}

TEST(HrvScans, MissingBeatsMarkTheBeatBeforeTheGap) {
    Session s;
    Fill(s, {0, 800, 1600, 3200, 4000, 6400});
    s.events[2].GroupNumber = 7;
    ScriptedDialogs ui;
    ui.ExpectInput("Missing Beats", std::nullopt, "1000")
        .ExpectMessage("Search Finished",
                       "There are 2 areas with potential missing beats.  The events are marked as "
                       "group #253.");
    menu_ScanMissingBeats(s, ui);
    // Marks overwrite what the group held.
    EXPECT_EQ(Groups(s), (std::vector<int>{0, 7, 253, 0, 253, 0}));
}

struct TachogramRig : ::testing::Test {
    Session s;
    ScriptedDialogs ui;
    void SetUp() override {
        s.Label11 = "heart.abf";
        s.recording.DataFilePath = "/data/heart.abf";
    }
};

TEST_F(TachogramRig, CommandsSortByTimeAndFillTheIntervals) {
    Fill(s, {1000, 0, 600});
    menu_TachogramPlot(s);
    EXPECT_EQ(s.events[1].Time, 0);
    EXPECT_EQ(s.HistogramData, (std::vector<float>{0, 0, 600, 400}));
    ASSERT_EQ(s.graphs.size(), 1u);
    const GraphModel& g = *s.graphs[0];
    EXPECT_EQ(g.Caption, "Tachogram heart.abf");
    EXPECT_EQ(g.LeftTitle, "RR Interval (msec)");
    ASSERT_EQ(g.PointCount(), 2);
    EXPECT_EQ(g.Point(1, 1).x, 2);
    EXPECT_EQ(g.Point(1, 2).y, 400);
    // The time-domain window's tachogram keeps the intervals within its bounds only.
    menu_TachogramPlot(s, RRBounds{500, 10});
    ASSERT_EQ(s.graphs[1]->PointCount(), 1);
    EXPECT_EQ(s.graphs[1]->Point(1, 1).x, 3);
    // Without events nothing happens.
    Session empty;
    menu_TachogramPlot(empty);
    EXPECT_TRUE(empty.graphs.empty());
}

TEST_F(TachogramRig, TextFileWithItsHeaderAndTheReplaceQuestion) {
    Fill(s, {0, 812.5f, 1600});
    const fs::path dir = FreshDir("hrv_text");
    ui.ExpectSaveFile(dir / "heart");
    menu_TachogramASCII(s, ui);
    EXPECT_EQ(ReadText(dir / "heart.txt"),
              "ATF\t1.0\r\n3\t2\r\n\"Tachogram: /data/heart.abf\"\r\n"
              "\"Beat #\"\t\"RR Interval (ms)\"\r\n 2\t812.500\r\n 3\t787.500\r\n");
    EXPECT_EQ(ui.fileDialogs.back().fileName, "heart");
    ui.ExpectSaveFile(dir / "heart.txt")
        .ExpectAsk("Replace File", "File already exist.  Do you want to replace this file?",
                   Answer::No);
    s.events[3].Time = 2000;
    menu_TachogramASCII(s, ui);
    EXPECT_NE(ReadText(dir / "heart.txt").find("787.500"), std::string::npos);
    EXPECT_TRUE(ui.Done());
}

TEST_F(TachogramRig, HistogramsCountTheZeroElements) {
    Fill(s, {0, 800, 1700, 2500});
    ui.ExpectInput("Bin Size", "Please enter the bin size for RR Interval in msec.", "100");
    menu_RRHisto(s, ui);
    const GraphModel& rr = *s.graphs.back();
    EXPECT_EQ(rr.Caption, "RR Interval Histogram heart.abf");
    EXPECT_EQ(rr.LeftTitle, "Number of RR Intervals");
    // Bins 0..9 of 100 ms: the zero of element 1, then 800, 900 and 800.
    ASSERT_EQ(rr.PointCount(), 10);
    EXPECT_EQ(rr.Point(1, 1).y, 1);
    EXPECT_EQ(rr.Point(1, 9).y, 2);
    EXPECT_EQ(rr.Point(1, 10).y, 1);

    // Differences +100 and -100 with the two zeros at elements 1 and N.
    ui.ExpectInput("Bin Size", "Please enter the bin size for Delta RR Interval in msec.", "100");
    menu_DeltaRRHisto(s, ui);
    const GraphModel& d = *s.graphs.back();
    EXPECT_EQ(d.LeftTitle, "Number of Pairs of RR Intervals");
    ASSERT_EQ(d.PointCount(), 3);
    EXPECT_EQ(d.Point(1, 1).x, -100);
    EXPECT_EQ(d.Point(1, 2).y, 2);
    EXPECT_EQ(d.Point(1, 3).y, 1);

    // Two beats: one interval, and only the zeros in the delta histogram.
    Session two;
    Fill(two, {0, 800});
    ui.ExpectInput("Bin Size", std::nullopt, "1");
    menu_DeltaRRHisto(two, ui);
    ASSERT_EQ(two.graphs.back()->PointCount(), 1);
    EXPECT_EQ(two.graphs.back()->Point(1, 1).y, 2);
    EXPECT_TRUE(ui.Done());
}

TEST_F(TachogramRig, LorenzPlotPairsEachIntervalWithTheNext) {
    Fill(s, {0, 800, 1700, 2500});
    menu_LorenzPlot(s);
    const GraphModel& g = *s.graphs.back();
    EXPECT_EQ(g.Caption, "Lorenz Plot heart.abf");
    EXPECT_EQ(g.BottomTitle, "R(i)R(i+1) Interval (msec)");
    ASSERT_EQ(g.PointCount(), 2);
    EXPECT_EQ(g.Point(1, 1).x, 800);
    EXPECT_EQ(g.Point(1, 1).y, 900);
    EXPECT_EQ(g.Point(1, 2).y, 800);
}

// A template as the build writes it, in a folder of its own.
fs::path TemplateDir(const std::string& name) {
    const fs::path dir = FreshDir(name);
    AbfBuildSpec spec;
    spec.creator = "ABF template";
    const auto bytes = BuildAbfFile(spec, {});
    std::ofstream(dir / "SamplABF.dat", std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return dir;
}

TEST_F(TachogramRig, AbfFileOpensAndReadsBackTheIntervals) {
    const fs::path dir = TemplateDir("hrv_abf");
    s.recording.DataFilePath = dir / "heart.abf";
    // In table order, unsorted on purpose: the second interval is negative.
    Fill(s, {0, 800, 700, 1900, 2500});
    ui.ExpectMessage("", "The Tachogram is saved as " + (dir / "heartTachogram.ABF").string() + ".");
    menu_TachogramABF(s, ui, dir);
    ASSERT_TRUE(ui.Done());

    Session back;
    ScriptedDialogs quiet;
    ASSERT_TRUE(OpenDataFile(back, quiet, dir / "heartTachogram.ABF"));
    const Recording& r = back.recording;
    EXPECT_EQ(r.header.lActualAcqLength, 4);
    EXPECT_EQ(r.ADCUnits, "ms");
    EXPECT_FLOAT_EQ(r.header.fSecondsPerRun, 0.004f);
    EXPECT_EQ(r.GetSampleValue(2), 16383);  // the largest interval
    const float lsb = 1200.0f / 16384;
    const float expected[] = {800, -100, 1200, 600};
    for (int i = 0; i < 4; ++i)
        EXPECT_NEAR(r.Bit2pA(r.GetSampleValue(i)), expected[i], 1.5 * lsb) << i;
}

TEST(AbfWriter, HeaderFieldsAndSamplesOfTheTachogram) {
    AbfBuildSpec spec;
    spec.channels = 3;
    spec.units = {"pA", "mV", "V"};
    spec.comment = "kept";
    const AbfHeader t = MakeAbfHeader(spec, 999);
    const float equal[] = {750, 750, 750};
    const AbfHeader h = TachogramHeader(t, equal, {20240229, 3723});
    EXPECT_EQ(h.lActualAcqLength, 3);
    EXPECT_EQ(h.lFileStartDate, 20240229);
    EXPECT_EQ(h.lFileStartTime, 3723);
    EXPECT_EQ(h.nADCNumChannels, 1);
    EXPECT_EQ(h.fADCSampleInterval, 1000.0f);
    EXPECT_EQ(h.lADCResolution, 32768);
    EXPECT_EQ(h.Units(0), "ms");
    EXPECT_FLOAT_EQ(h.fInstrumentScaleFactor[0], 10.24f / 750 / 2);
    EXPECT_EQ(h.FileComment(), "kept");  // everything else as the template has it
    EXPECT_EQ(h.lDataSectionPtr, t.lDataSectionPtr);
    EXPECT_EQ(*TachogramSamples(h, equal), (std::vector<std::int16_t>{16383, 16383, 16383}));
    // A negative interval larger than twice the largest does not fit 16 bits.
    const float wild[] = {10, -30};
    EXPECT_FALSE(TachogramSamples(TachogramHeader(t, wild, {}), wild));
    // No positive interval: the scale is infinite and nothing fits.
    const float zero[] = {0, 0};
    EXPECT_FALSE(TachogramSamples(TachogramHeader(t, zero, {}), zero));
}

TEST(AbfWriter, NameIsCutAtTheFirstDotOfThePath) {
    EXPECT_EQ(TachogramAbfName("/data/run.2/cell.abf"), fs::path("/data/runTachogram.ABF"));
    EXPECT_EQ(TachogramAbfName("/data/cell.abf"), fs::path("/data/cellTachogram.ABF"));
    EXPECT_EQ(TachogramAbfName("/data/cell"), fs::path("/data/cellTachogram.ABF"));
}

TEST(AbfWriter, MissingShortOrForeignTemplatesAreRefused) {
    const fs::path dir = FreshDir("hrv_templates");
    ScriptedDialogs ui;
    ui.ExpectMessage("Error",
                     "The file SamplABF.dat does not exist.  The program cannot continue without "
                     "this file.  Please contact technical support at Velmorand.");
    EXPECT_FALSE(LoadAbfTemplate(dir, ui));
    std::ofstream(dir / "SamplABF.dat", std::ios::binary) << std::string(6000, 'A');
    ui.ExpectMessage("Error", "The file SamplABF.dat holds 6000 bytes, fewer than the 6144 of an "
                              "ABF header, and cannot be used to write a new data file.");
    EXPECT_FALSE(LoadAbfTemplate(dir, ui));
    std::ofstream(dir / "SamplABF.dat", std::ios::binary) << std::string(7000, 'A');
    ui.ExpectMessage("Error");
    EXPECT_FALSE(LoadAbfTemplate(dir, ui));
    // With no template, the command writes nothing.
    Session s;
    s.recording.DataFilePath = dir / "x.abf";
    for (float t : {0.0f, 500.0f}) s.events.Add().Time = t;
    fs::remove(dir / "SamplABF.dat");
    ui.ExpectMessage("Error");
    menu_TachogramABF(s, ui, dir);
    EXPECT_FALSE(fs::exists(dir / "xTachogram.ABF"));
    EXPECT_TRUE(ui.Done());
}

}  // namespace
}  // namespace ardel::hrv

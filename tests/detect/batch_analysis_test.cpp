// Batch analysis over synthetic recordings with known events: the file list, the per-file
// sequence and its own block count and gain, and an interrupt part-way.
#include "detect/batch_analysis.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "core/event_files.h"
#include "core/open_file.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedDialogs;
using testing::SynthEvent;
using testing::TempDir;

std::vector<std::uint8_t> ReadAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

TEST(BatchFileList, SplitAtBlanksWithTheFolderFirst) {
    auto one = BatchFileList("/data/cell1.dat");
    ASSERT_TRUE(one);
    EXPECT_EQ(*one, std::vector<fs::path>{"/data/cell1.dat"});

    auto three = BatchFileList("/data a.dat b.abf c.dat");
    ASSERT_TRUE(three);
    EXPECT_EQ(*three, (std::vector<fs::path>{"/data/a.dat", "/data/b.abf", "/data/c.dat"}));

    // A single name with a blank falls apart into a folder and a name.
    auto broken = BatchFileList("/data/my cell.dat");
    EXPECT_EQ(*broken, std::vector<fs::path>{"/data/my/cell.dat"});

    EXPECT_EQ(BatchDialogResult({"/d/x.dat"}), "/d/x.dat");
    EXPECT_EQ(BatchDialogResult({"/d/x.dat", "/d/y.dat"}), "/d x.dat y.dat");

    std::string many = "/d";
    for (int i = 0; i < 100; ++i) many += " f" + std::to_string(i);
    EXPECT_TRUE(BatchFileList(many));  // 101 parts fill the old list
    EXPECT_FALSE(BatchFileList(many + " one-more"));
}

TEST(BatchRules, BlocksIgnoreTheChannelCountAndGainAlwaysTakesTheAutosampleFactor) {
    AbfBuildSpec spec;
    spec.channels = 2;
    AbfHeader h = MakeAbfHeader(spec, 2 * 5000);
    EXPECT_EQ(OpenSequenceTotalBlocks(h), 19);  // 5000 / 256, whole Blocks
    EXPECT_EQ(BatchTotalBlocks(h), 39);         // 10000 / 256 = 39.06
    h.lActualAcqLength = 640;                   // 2.5: halves to even
    EXPECT_EQ(BatchTotalBlocks(h), 2);
    h.lActualAcqLength = 100;  // no minimum of 1
    EXPECT_EQ(BatchTotalBlocks(h), 0);

    h.fADCProgrammableGain[1] = 2;
    h.fSignalGain[1] = 3;
    h.fInstrumentScaleFactor[1] = 0.5f;
    h.fAutosampleAdditGain = 10;
    h.nAutosampleEnable = 0;  // the open sequence would leave the factor out
    EXPECT_EQ(BatchChannelGain(h, 1), 30.0f);
    h.fAutosampleAdditGain = 0;
    EXPECT_EQ(BatchChannelGain(h, 1), 0.0f);
}

class BatchTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;

    void SetUp() override { s.CurrentFolder = dir.path(); }

    // 64 Blocks with a downward event every 2000 points.
    fs::path MakeData(const std::string& name, float autosampleGain = 1) {
        std::vector<SynthEvent> events;
        for (std::int64_t p = 1500; p < 14000; p += 2000) events.push_back({p, -150.0, 8, 60});
        const fs::path file =
            testing::WriteAbf(dir / name, AbfBuildSpec{}, {testing::MakeTrace(16384, 0, events)});
        if (autosampleGain != 1) {
            std::fstream f(file, std::ios::in | std::ios::out | std::ios::binary);
            f.seekp(abf_offset::fAutosampleAdditGain);
            f.write(reinterpret_cast<const char*>(&autosampleGain), 4);
        }
        return file;
    }

    // What the window finds when the user opens the file and runs F9 and F11.
    std::vector<EventRecord> AnalyseByHand(const fs::path& file) {
        Session t;
        ScriptedDialogs ui;
        EXPECT_TRUE(OpenDataFile(t, ui, file));
        Command1(t, ui);
        Command3(t, ui);
        std::vector<EventRecord> out;
        for (std::int32_t i = 1; i <= t.events.EventCount(); ++i) out.push_back(t.events[i]);
        return out;
    }
};

TEST_F(BatchTest, ThreeFilesFromTheDialogAreEachSavedBesideTheirData) {
    const fs::path a = MakeData("a.dat"), b = MakeData("b.abf"), c = dir / "notes.dat";
    std::ofstream(c) << "not a recording";
    const auto expected = AnalyseByHand(a);
    ASSERT_GE(expected.size(), 7u);

    ScriptedDialogs ui;
    ui.ExpectOpenFiles({a, c, b});
    const BatchReport report = menu_batch(s, ui);
    ASSERT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(ui.fileDialogs[0].defaultExtension, "DAT");
    EXPECT_EQ(ui.fileDialogs[0].filter, "ABF Data File (*.DAT *.ABF)");
    EXPECT_TRUE(ui.fileDialogs[0].multiSelect);
    EXPECT_EQ(ui.fileDialogs[0].initialDirectory, dir.path());

    ASSERT_EQ(report.files.size(), 3u);
    EXPECT_EQ(report.files[0].status, BatchFileStatus::Analysed);
    EXPECT_EQ(report.files[1].status, BatchFileStatus::NotAbf);
    EXPECT_EQ(report.files[2].status, BatchFileStatus::Analysed);
    EXPECT_EQ(report.files[2].eventFile, dir / "b.EVT");
    EXPECT_FALSE(report.interrupted);
    EXPECT_FALSE(s.display.BatchRunning);
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_EQ(s.Label11, "b.abf");

    for (const char* evt : {"a.EVT", "b.EVT"}) {
        const auto contents = DecodeEventFile(ReadAll(dir / evt));
        EXPECT_EQ(contents.records, expected) << evt;
    }
    EXPECT_EQ(DecodeEventFile(ReadAll(dir / "a.EVT")).sourceName.substr(0, 6), "a.dat ");

    // A second run finds the event files there and asks before replacing each.
    ScriptedDialogs again;
    again.ExpectOpenFiles({a}).ExpectAsk(
        "Replace File", "File already exist.  Do you want to replace this file?", Answer::No);
    EXPECT_EQ(menu_batch(s, again).files.size(), 1u);
    EXPECT_EQ(s.events.EventCount(), 0);
}

TEST_F(BatchTest, InterruptDuringTheFirstFileSavesItAndPassesOverTheRest) {
    const fs::path a = MakeData("a.dat"), b = MakeData("b.dat"), c = MakeData("c.dat");
    const auto all = AnalyseByHand(a);
    ScriptedDialogs ui;
    // Yield 1 follows the first Display; then one per screen of the non-stop run.
    ui.onYield = [&] {
        if (ui.yields == 4) Command4(s);
    };
    // The interrupt cleared the batch flag, so the save of the running file shows its dialog.
    ui.ExpectSaveFile(dir / "a.EVT");
    const BatchReport report = RunBatch(s, ui, {a, b, c});
    ASSERT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(ui.fileDialogs[0].fileName, "a");
    EXPECT_TRUE(report.interrupted);
    ASSERT_EQ(report.files.size(), 3u);
    EXPECT_EQ(report.files[0].status, BatchFileStatus::Analysed);
    EXPECT_EQ(report.files[1].status, BatchFileStatus::PassedOver);
    EXPECT_EQ(report.files[2].status, BatchFileStatus::PassedOver);
    EXPECT_FALSE(fs::exists(dir / "b.EVT"));
    EXPECT_FALSE(fs::exists(dir / "c.EVT"));
    EXPECT_EQ(s.Label11, "a.dat");
    EXPECT_EQ(ui.yields, 4);

    // Four screens were analysed: the events up to there, no further.
    const auto saved = DecodeEventFile(ReadAll(dir / "a.EVT")).records;
    ASSERT_GE(saved.size(), 1u);
    ASSERT_LT(saved.size(), all.size());
    EXPECT_TRUE(std::equal(saved.begin(), saved.end(), all.begin()));
    EXPECT_EQ(report.files[0].eventCount, std::int32_t(saved.size()));
    EXPECT_LT(saved.back().Time, 4 * 1024 * 0.05f);
}

TEST_F(BatchTest, ZeroAutosampleGainFindsNothingInTheBatchButDoesByHand) {
    const fs::path z = MakeData("zero.dat", 0.0f);
    EXPECT_GE(AnalyseByHand(z).size(), 7u);

    ScriptedDialogs ui;
    const BatchReport report = RunBatch(s, ui, {z});
    ASSERT_EQ(report.files.size(), 1u);
    EXPECT_EQ(report.files[0].status, BatchFileStatus::Analysed);
    EXPECT_EQ(report.files[0].eventCount, 0);
    EXPECT_TRUE(report.files[0].eventFile.empty());  // nothing to save, so nothing written
    EXPECT_FALSE(fs::exists(dir / "zero.EVT"));
    EXPECT_FALSE(report.files[0].warnings.empty());
    EXPECT_EQ(s.recording.ChannelGain, 0.0f);
}

TEST_F(BatchTest, AFileWithoutTheActiveChannelIsLeftOut) {
    const fs::path a = MakeData("a.dat");
    s.recording.ChannelIndex = 1;  // chosen on an earlier two-channel recording
    ScriptedDialogs ui;
    const BatchReport report = RunBatch(s, ui, {a, dir / "missing.dat"});
    EXPECT_EQ(report.files[0].status, BatchFileStatus::Unusable);
    EXPECT_EQ(report.files[1].status, BatchFileStatus::Unreadable);
    EXPECT_FALSE(s.recording.FileIsOpen);
}

TEST(BatchClashes, FilesThatWouldWriteOneEventFileAreGrouped) {
    EXPECT_EQ(BatchEventFileFor("/d/rec.1.abf"), fs::path("/d/rec.EVT"));
    EXPECT_EQ(BatchEventFileFor("/d/cell"), fs::path("/d/cell.EVT"));
    const auto clashes = BatchEventFileClashes(
        {"/d/rec.1.abf", "/d/other.abf", "/d/rec.2.abf", "/e/rec.abf", "/d/rec.1.abf"});
    ASSERT_EQ(clashes.size(), 1u);
    EXPECT_EQ(clashes[0].eventFile, fs::path("/d/rec.EVT"));
    EXPECT_EQ(clashes[0].dataFiles, (std::vector<fs::path>{"/d/rec.1.abf", "/d/rec.2.abf"}));
    EXPECT_TRUE(BatchEventFileClashes({"/d/a.abf", "/e/a.abf"}).empty());
}

TEST_F(BatchTest, AClashIsNamedBeforeTheStartAndCancelRunsNothing) {
    const fs::path a = MakeData("rec.1.dat"), b = MakeData("rec.2.dat");
    ScriptedDialogs ui;
    ui.ExpectOpenFiles({a, b}).ExpectAsk(
        "Batch Analysis",
        "These files would write the same event file, so that the later file's events would "
        "replace the earlier's:\n\nrec.EVT: rec.1.dat, rec.2.dat\n\nAnalyse them all the same?",
        Answer::Cancel);
    EXPECT_TRUE(menu_batch(s, ui).files.empty());
    EXPECT_FALSE(fs::exists(dir / "rec.EVT"));
    EXPECT_TRUE(ui.Done());
}

TEST_F(BatchTest, EventsInTheTableAreOfferedAndNeverMixedIntoTheFirstFile) {
    const fs::path a = MakeData("a.dat"), b = MakeData("b.dat");
    const auto expected = AnalyseByHand(a);
    ASSERT_TRUE(OpenDataFile(s, *std::make_unique<SilentDialogs>(), b));
    for (int i = 0; i < 5; ++i) s.events.Add().Time = float(i);
    UpdateTDBGrid(s.events);

    // Cancel ends the batch before any file is touched.
    ScriptedDialogs cancel;
    cancel.ExpectOpenFiles({a}).ExpectAsk("Save Previous Event Data", std::nullopt, Answer::Cancel);
    EXPECT_TRUE(menu_batch(s, cancel).files.empty());
    EXPECT_EQ(s.events.EventCount(), 5);
    EXPECT_FALSE(fs::exists(dir / "a.EVT"));

    // No: the events are dropped and the first file's event file holds its own events only.
    ScriptedDialogs no;
    no.ExpectOpenFiles({a}).ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No);
    ASSERT_EQ(menu_batch(s, no).files.size(), 1u);
    EXPECT_EQ(DecodeEventFile(ReadAll(dir / "a.EVT")).records, expected);
    EXPECT_TRUE(no.Done());

    // Even events that need no question (saved already) stay out of the batch.
    for (int i = 0; i < 3; ++i) s.events.Add().Time = float(i);
    s.events.MarkSaved();
    fs::remove(dir / "a.EVT");
    ScriptedDialogs quiet;
    quiet.ExpectOpenFiles({a});
    menu_batch(s, quiet);
    EXPECT_EQ(DecodeEventFile(ReadAll(dir / "a.EVT")).records, expected);
}

}  // namespace
}  // namespace ardel

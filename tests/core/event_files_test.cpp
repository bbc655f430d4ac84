// Event and parameter files: the byte layout of all three record versions, what the menu
// commands ask and refuse, writing over an existing file, and damaged files.
#include "core/event_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "core/number_text.h"
#include "core/open_file.h"
#include "core/safe_file.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::ScriptedDialogs;
using testing::TempDir;

std::vector<std::uint8_t> ReadAll(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}
void WriteAll(const fs::path& p, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}
std::string Text(const std::vector<std::uint8_t>& b, std::size_t at, std::size_t n) {
    return std::string(reinterpret_cast<const char*>(b.data()) + at, n);
}
template <typename T>
T At(const std::vector<std::uint8_t>& b, std::size_t at) {
    T v;
    std::memcpy(&v, b.data() + at, sizeof v);
    return v;
}
template <typename T>
void Put(std::vector<std::uint8_t>& b, std::size_t at, T v) {
    std::memcpy(b.data() + at, &v, sizeof v);
}

// Every field different, so that a field read from the wrong place shows.
EventRecord MakeRecord(int i) {
    EventRecord e;
    e.Time = 1.5f * float(i) + 0.25f;
    e.Amplitude = 70000 + i;
    e.Noise = std::int16_t(-i);
    e.Rise = std::int16_t(10 + i);
    e.Decay = std::int16_t(2000 + i);
    e.Baseline = std::int16_t(-300 + i);
    e.Area = 2.5f * float(i);
    e.GroupNumber = std::uint8_t(200 + i % 50);
    e.Channel = std::uint8_t(i % 3);
    e.BaselineLead = 120;
    e.Rise1090 = 0.1f * float(i);
    e.HalfWidth = 0.2f * float(i);
    e.Rise50 = std::int16_t(5 + i);
    e.PeakDirection = i % 2 ? 1 : -1;
    e.BurstNumber = std::int16_t(i / 7);
    e.BurstEventNumber = std::int16_t(i % 7);
    e.Slope1090 = -3.5f * float(i);
    std::memcpy(e.EventText.data(), "text-of-12ch", 12);
    e.RelativeTime = 100 * i;
    e.PeakPoint = 1000 * i;
    return e;
}

DetectionParameters SomeParams() {
    DetectionParameters p;
    p.ThresholdAmplitude = 7.5f;
    p.PeriodToSearchMax = 12000;
    p.PeriodStartBaseline = 4000;
    p.PeriodFindDecayTime = 30000;
    p.DecayPercent = 0.37f;
    p.PeriodBaselineAverage = 1500;
    p.AreaThreshold = 25;
    p.PeakDirection = 1;
    p.NumberPointsPeak = 3;
    return p;
}

// An event file of an older version as those versions wrote it: header fields, then 24-byte
// records.
std::vector<std::uint8_t> OldFile(const std::string& mark, const DetectionParameters& p,
                                  std::int32_t n, const std::string& source,
                                  const std::vector<std::array<std::uint8_t, 24>>& records) {
    std::vector<std::uint8_t> f(std::max<std::size_t>(6144, 2048 + 24 * records.size()), 0);
    std::memcpy(f.data(), "ABF ", 4);
    std::memcpy(f.data() + 294, (mark + std::string(16, ' ')).data(), 16);
    Put(f, 1954, p.AreaThreshold);
    Put(f, 1958, p.PeakDirection);
    Put(f, 1986, n);
    Put(f, 1990, p.ThresholdAmplitude);
    Put(f, 1994, p.PeriodToSearchMax);
    Put(f, 1998, p.PeriodStartBaseline);
    Put(f, 2002, p.PeriodFindDecayTime);
    Put(f, 2006, p.DecayPercent);
    Put(f, 2010, p.PeriodBaselineAverage);
    std::memcpy(f.data() + 2014, (source + std::string(34, ' ')).data(), 34);
    for (std::size_t i = 0; i < records.size(); ++i)
        std::memcpy(f.data() + 2048 + 24 * i, records[i].data(), 24);
    return f;
}

std::array<std::uint8_t, 24> OldestRecord(float time, std::int16_t amp, std::uint8_t group) {
    std::array<std::uint8_t, 24> r{};
    std::memcpy(r.data(), &time, 4);
    std::memcpy(r.data() + 4, &amp, 2);
    const std::int16_t noise = 3, rise = 4, decay = 5, base = -6;
    std::memcpy(r.data() + 6, &noise, 2);
    std::memcpy(r.data() + 8, &rise, 2);
    std::memcpy(r.data() + 10, &decay, 2);
    std::memcpy(r.data() + 12, &base, 2);
    const float area = 9.5f;
    std::memcpy(r.data() + 14, &area, 4);
    r[18] = group;
    std::memcpy(r.data() + 19, "junk!", 5);
    return r;
}

// ---------------------------------------------------------------------------------------
// Byte layout without the disk.

TEST(EventFileBytes, CurrentLayoutRoundTripsEveryFieldAtItsOffset) {
    AbfHeader h = MakeAbfHeader(AbfBuildSpec{}, 4096);
    SetFixedText(h.sComment, "recorded comment");
    h.raw[1970] = 0xAB;  // a header byte between the program's fields
    std::vector<EventRecord> recs;
    for (int i = 1; i <= 3; ++i) recs.push_back(MakeRecord(i));
    const auto f = EncodeEventFile(h, SomeParams(), "my comment", "cell1.dat", recs);

    ASSERT_EQ(f.size(), 6144u);  // never shorter than the header
    EXPECT_EQ(Text(f, 0, 4), "ABF ");
    EXPECT_EQ(Text(f, 294, 16), "Ardelvantine 5.0");
    EXPECT_EQ(Text(f, 310, 16), "recorded comment");
    EXPECT_EQ(Text(f, 5154, 128), "my comment" + std::string(118, ' '));
    EXPECT_EQ(At<float>(f, 1954), 25.0f);
    EXPECT_EQ(At<std::int16_t>(f, 1958), 1);
    EXPECT_EQ(At<std::int16_t>(f, 1960), 3);
    EXPECT_EQ(f[1970], 0xAB);
    EXPECT_EQ(At<std::int32_t>(f, 1986), 3);
    EXPECT_EQ(At<float>(f, 1990), 7.5f);
    EXPECT_EQ(At<std::int32_t>(f, 1994), 12000);
    EXPECT_EQ(At<std::int32_t>(f, 1998), 4000);
    EXPECT_EQ(At<std::int32_t>(f, 2002), 30000);
    EXPECT_EQ(At<float>(f, 2006), 0.37f);
    EXPECT_EQ(At<std::int32_t>(f, 2010), 1500);
    EXPECT_EQ(Text(f, 2014, 34), "cell1.dat" + std::string(25, ' '));
    // Second record, spot checks of the 64-byte layout.
    EXPECT_EQ(At<float>(f, 2048 + 64), 3.25f);
    EXPECT_EQ(At<std::int32_t>(f, 2048 + 64 + 4), 70002);
    EXPECT_EQ(f[2048 + 64 + 21], 2);
    EXPECT_EQ(Text(f, 2048 + 64 + 44, 12), "text-of-12ch");
    EXPECT_EQ(At<std::int32_t>(f, 2048 + 64 + 60), 2000);

    const EventFileContents c = DecodeEventFile(f);
    EXPECT_EQ(c.layout, EventFileLayout::Current);
    EXPECT_EQ(c.params, SomeParams());
    EXPECT_EQ(c.storedCount, 3);
    EXPECT_EQ(c.records, recs);
    EXPECT_EQ(c.comment.substr(0, 16), "recorded comment");
    EXPECT_TRUE(c.warnings.empty());
}

TEST(EventFileBytes, CommentAt5154SurvivesOnlyUpTo48Events) {
    const AbfHeader h = MakeAbfHeader(AbfBuildSpec{}, 4096);
    const std::string comment = "abcdefghijklmnopqrstuvwxyz0123456789ABCDEFGHIJKLMNOPQRST";
    std::vector<EventRecord> recs;
    for (int i = 1; i <= 48; ++i) recs.push_back(MakeRecord(i));
    auto f = EncodeEventFile(h, SomeParams(), comment, "a", recs);
    EXPECT_EQ(Text(f, 5154, 56), comment);

    recs.push_back(MakeRecord(49));
    f = EncodeEventFile(h, SomeParams(), comment, "a", recs);
    ASSERT_EQ(f.size(), 6144u);
    // Record 49 ends at 5184: the comment's first 30 characters are gone, the rest stays.
    EXPECT_NE(Text(f, 5154, 30), comment.substr(0, 30));
    EXPECT_EQ(Text(f, 5184, 26), comment.substr(30));
    EXPECT_EQ(DecodeEventFile(f).records, recs);
}

TEST(EventFileBytes, Version3TakesTheFirst24BytesAndTheFileDirection) {
    DetectionParameters p = SomeParams();
    p.PeakDirection = -1;
    std::vector<std::array<std::uint8_t, 24>> recs(2);
    for (int i = 0; i < 2; ++i) {
        std::array<std::uint8_t, 64> full{};
        EncodeEventRecord(MakeRecord(i + 1), full);
        std::copy_n(full.begin(), 24, recs[std::size_t(i)].begin());
    }
    const auto c = DecodeEventFile(OldFile("Ardelvantine 3.0", p, 2, "x.dat", recs));
    EXPECT_EQ(c.layout, EventFileLayout::Version3);
    ASSERT_EQ(c.records.size(), 2u);
    EventRecord want = MakeRecord(2);
    // The fields of the first 24 bytes as saved, the direction from the header, the rest zero.
    want.Rise1090 = want.HalfWidth = want.Slope1090 = 0;
    want.Rise50 = want.BurstNumber = want.BurstEventNumber = 0;
    want.EventText = {};
    want.RelativeTime = want.PeakPoint = 0;
    want.PeakDirection = -1;
    EXPECT_EQ(c.records[1], want);
}

TEST(EventFileBytes, OldestLayoutWidensAmplitudeAndFillsLeadAndDirection) {
    DetectionParameters p = SomeParams();
    const auto f = OldFile("Ardelvantine 1.0", p, 2, "x.dat",
                           {OldestRecord(12.5f, -5, 7), OldestRecord(99.0f, 32767, 255)});
    const auto c = DecodeEventFile(f);
    EXPECT_EQ(c.layout, EventFileLayout::Oldest);
    ASSERT_EQ(c.records.size(), 2u);
    const EventRecord& e = c.records[0];
    EXPECT_EQ(e.Time, 12.5f);
    EXPECT_EQ(e.Amplitude, -5);
    EXPECT_EQ(e.Noise, 3);
    EXPECT_EQ(e.Rise, 4);
    EXPECT_EQ(e.Decay, 5);
    EXPECT_EQ(e.Baseline, -6);
    EXPECT_EQ(e.Area, 9.5f);
    EXPECT_EQ(e.GroupNumber, 7);
    EXPECT_EQ(e.Channel, 0);
    EXPECT_EQ(e.BaselineLead, 4000);
    EXPECT_EQ(e.PeakDirection, 1);
    EXPECT_EQ(e.Rise1090, 0.0f);
    EXPECT_EQ(c.records[1].Amplitude, 32767);

    // A baseline period beyond 16 bits stopped the old conversion at its first row.
    p.PeriodStartBaseline = 40000;
    const auto over = DecodeEventFile(OldFile("Ardelvantine 1.0", p, 2, "x", {}));
    EXPECT_TRUE(over.baselineLeadOverflow);
    EXPECT_TRUE(over.records.empty());
    EXPECT_EQ(over.params.PeriodStartBaseline, 40000);
}

TEST(EventFileBytes, ShortAndDamagedFilesNeverCrashAndReadZerosPastTheEnd) {
    const AbfHeader h = MakeAbfHeader(AbfBuildSpec{}, 4096);
    std::vector<EventRecord> recs;
    for (int i = 1; i <= 100; ++i) recs.push_back(MakeRecord(i));
    auto f = EncodeEventFile(h, SomeParams(), "", "a", recs);

    // Cut in the middle of record 80: 79 whole records, a partial one, then zeros up to N.
    f.resize(2048 + 79 * 64 + 10);
    auto c = DecodeEventFile(f);
    ASSERT_EQ(c.records.size(), 100u);
    EXPECT_EQ(c.records[78], recs[78]);
    EXPECT_EQ(c.records[79].Time, recs[79].Time);
    EXPECT_EQ(c.records[79].Rise, 0);
    EXPECT_EQ(c.records[99], EventRecord{});
    EXPECT_EQ(c.warnings.size(), 1u);

    Put(f, 1986, std::int32_t(-5));
    c = DecodeEventFile(f);
    EXPECT_TRUE(c.records.empty());
    EXPECT_EQ(c.warnings.size(), 1u);

    // A count no file could hold: the records the file has, no more.
    Put(f, 1986, std::int32_t(0x7FFFFFFF));
    c = DecodeEventFile(f);
    EXPECT_EQ(c.records.size(), 80u);
    EXPECT_EQ(c.records[0], recs[0]);

    // Headers cut anywhere, and random bytes with random counts.
    for (std::size_t len : {0u, 1u, 295u, 1987u, 2048u, 2049u, 6000u}) {
        std::vector<std::uint8_t> head(f.begin(), f.begin() + std::ptrdiff_t(len));
        EXPECT_NO_THROW(DecodeEventFile(head));
    }
    std::mt19937 gen(7);
    for (int k = 0; k < 200; ++k) {
        std::vector<std::uint8_t> junk(std::size_t(gen() % 9000));
        for (auto& b : junk) b = std::uint8_t(gen());
        if (junk.size() > 1990 && k % 2) Put(junk, 1986, std::int32_t(gen() % 70000));
        const auto d = DecodeEventFile(junk);
        EXPECT_LE(d.records.size(), 70000u + 2u);
    }
}

// ---------------------------------------------------------------------------------------
// The menu commands over files.

class EventFileTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;

    fs::path MakeData(const std::string& name) {
        return testing::WriteAbf(dir / name, AbfBuildSpec{}, {testing::MakeTrace(8192, 0, {})});
    }
    void Open(Session& session, const fs::path& file) {
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(session, ui, file));
    }
    void AddEvents(Session& session, int n) {
        for (int i = 1; i <= n; ++i) session.events.Add() = MakeRecord(i);
        UpdateTDBGrid(session.events);
    }
    // Saves through the dialog to the path given.
    fs::path Save(Session& session, const fs::path& p) {
        ScriptedDialogs ui;
        ui.ExpectSaveFile(p);
        EXPECT_TRUE(menu_SaveEvent(session, ui));
        return p;
    }
    void SetUp() override { s.CurrentFolder = dir.path(); }
};

const std::string kReplaceText = "File already exist.  Do you want to replace this file?";

TEST_F(EventFileTest, SaveDialogAndReplacingWritesOverTheOldFileInPlace) {
    Open(s, MakeData("cell1.dat"));
    {
        ScriptedDialogs ui;  // no events: nothing at all
        EXPECT_FALSE(menu_SaveEvent(s, ui));
    }
    AddEvents(s, 100);
    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "cell1");  // the dialog's default extension is added
    ASSERT_TRUE(menu_SaveEvent(s, ui));
    ASSERT_EQ(ui.fileDialogs.size(), 1u);
    EXPECT_EQ(ui.fileDialogs[0].fileName, "cell1");
    EXPECT_EQ(ui.fileDialogs[0].defaultExtension, "EVT");
    EXPECT_EQ(ui.fileDialogs[0].filter, "Event File (*.EVT)");
    EXPECT_EQ(ui.fileDialogs[0].initialDirectory, dir.path());
    EXPECT_TRUE(s.events.EventsSaved);
    const fs::path evt = dir / "cell1.EVT";
    const auto longFile = ReadAll(evt);
    ASSERT_EQ(longFile.size(), 2048u + 100 * 64);

    // Declining leaves the file alone.
    s.events.SetCount(2);
    UpdateTDBGrid(s.events);
    ScriptedDialogs no;
    no.ExpectSaveFile(evt).ExpectAsk("Replace File", kReplaceText, Answer::No);
    EXPECT_FALSE(menu_SaveEvent(s, no));
    EXPECT_EQ(ReadAll(evt), longFile);
    EXPECT_FALSE(s.events.EventsSaved);

    // Yes writes over the old file from its first byte: a shorter table leaves the old tail.
    s.events.SetCount(3);
    ScriptedDialogs yes;
    yes.ExpectSaveFile(evt).ExpectAsk("Replace File", kReplaceText, Answer::Yes);
    ASSERT_TRUE(menu_SaveEvent(s, yes));
    const auto shorter = ReadAll(evt);
    ASSERT_EQ(shorter.size(), longFile.size());
    EXPECT_TRUE(std::equal(shorter.begin() + 6144, shorter.end(), longFile.begin() + 6144));
    EXPECT_FALSE(std::equal(shorter.begin(), shorter.begin() + 6144, longFile.begin()));
    EXPECT_EQ(At<std::int32_t>(shorter, 1986), 3);

    // Loading ignores the tail.
    Session t;
    Open(t, dir / "cell1.dat");
    ASSERT_TRUE(OpenEventFile(t, ui, evt));
    EXPECT_EQ(t.events.EventCount(), 3);
    EXPECT_EQ(t.events[3], MakeRecord(3));
    // The save cut the array to its rows: what was behind them is gone.
    EXPECT_EQ(s.events.SlotCount(), 4u);
}

TEST_F(EventFileTest, BatchRunSavesBesideTheDataFileWithoutADialog) {
    const fs::path sub = dir / "sub";
    fs::create_directory(sub);
    Open(s, MakeData("sub/Cell.2.abf"));
    AddEvents(s, 2);
    s.display.BatchRunning = true;
    ScriptedDialogs ui;
    ASSERT_TRUE(menu_SaveEvent(s, ui));
    EXPECT_TRUE(fs::exists(sub / "Cell.EVT"));
    // The file exists now: the batch asks before writing over it like anyone else.
    ui.ExpectAsk("Replace File", kReplaceText, Answer::No);
    EXPECT_FALSE(menu_SaveEvent(s, ui));
}

TEST_F(EventFileTest, OpenEventChecksTheMarkAndTheNameAgainstLabel11) {
    const std::string longName = "a_data_file_with_a_very_long_name_0001.dat";  // 42 characters
    Open(s, MakeData(longName));
    AddEvents(s, 3);
    const fs::path longEvt = Save(s, dir / "long.EVT");
    Open(s, MakeData("cell1.dat"));
    AddEvents(s, 3);
    const fs::path evt = Save(s, dir / "cell1.EVT");

    // With events in the table the question names no recording.
    ScriptedDialogs ui;
    ui.ExpectAsk("Save Previous Event Data",
                 "There are  3 events analysed for .  Do you want to save the event data?",
                 Answer::Cancel);
    menu_OpenEvent(s, ui);
    EXPECT_EQ(s.events.EventCount(), 3);

    ScriptedDialogs ui2;
    ui2.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No)
        .ExpectOpenFile(dir / longName)
        .ExpectMessage("Not an Event File",
                       "This file is not an event file.  Please check the file and try again.");
    menu_OpenEvent(s, ui2);
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_EQ(ui2.fileDialogs[0].fileName, "*.evt");

    // The stored name is cut to 34 characters: a long name never matches.
    Session t;
    Open(t, dir / longName);
    ScriptedDialogs ui3;
    ui3.ExpectOpenFile(longEvt).ExpectMessage(
        "File Not Matching", "This event file was analysed from " + longName.substr(0, 34) +
                                 " and does not match " + longName +
                                 ".  Please find the appropriate event file.");
    menu_OpenEvent(t, ui3);

    // Case counts.
    Session u;
    Open(u, MakeData("Cell1.dat"));
    ScriptedDialogs ui4;
    ui4.ExpectOpenFile(evt).ExpectMessage(
        "File Not Matching",
        "This event file was analysed from cell1.dat and does not match "
        "Cell1.dat.  Please find the appropriate event file.");
    menu_OpenEvent(u, ui4);
    EXPECT_EQ(u.events.EventCount(), 0);

    // The right one loads, with its parameters and the comment of offset 310.
    Session v;
    Open(v, dir / "cell1.dat");
    SetFixedText(s.recording.header.sComment, "from the header");
    s.params = SomeParams();
    s.params.NumberPointsPeak = 0;
    s.events.SetCount(3);
    ScriptedDialogs yes;
    yes.ExpectSaveFile(evt).ExpectAsk("Replace File", kReplaceText, Answer::Yes);
    ASSERT_TRUE(menu_SaveEvent(s, yes));
    ScriptedDialogs ui5;
    ui5.ExpectOpenFile(evt);
    menu_OpenEvent(v, ui5);
    ASSERT_EQ(v.events.EventCount(), 3);
    EXPECT_EQ(v.events[2], MakeRecord(2));
    EXPECT_TRUE(v.events.EventsSaved);
    EXPECT_EQ(v.params.ThresholdAmplitude, 7.5f);
    EXPECT_EQ(v.params.NumberPointsPeak, 1);  // a stored 0 is made 1
    EXPECT_EQ(v.options.Combo2, "1");
    EXPECT_EQ(v.FileComment.substr(0, 15), "from the header");
}

TEST_F(EventFileTest, ClickingAnEventFileOpensItsDataFileAndLoadsTheEvents) {
    Open(s, MakeData("cell1.dat"));
    AddEvents(s, 5);
    Save(s, dir / "results.EVT");

    Session t;
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(t, ui, dir / "results.EVT"));
    EXPECT_EQ(t.recording.DataFilePath, dir / "cell1.dat");
    EXPECT_EQ(t.Label11, "cell1.dat");
    ASSERT_EQ(t.events.EventCount(), 5);
    EXPECT_EQ(t.events[5], MakeRecord(5));
    EXPECT_TRUE(t.events.EventsSaved);
}

TEST_F(EventFileTest, OlderVersionIsLoadedThenConvertedOnYes) {
    Open(s, MakeData("cell1.dat"));
    const fs::path evt = dir / "old.EVT";
    WriteAll(evt, OldFile("Ardelvantine 1.0", SomeParams(), 2, "cell1.dat",
                          {OldestRecord(1.0f, -40, 0), OldestRecord(2.0f, -50, 3)}));
    ScriptedDialogs ui;
    ui.ExpectOpenFile(evt)
        .ExpectAsk("Older Version Event File",
                   "This Event file was saved as a previous version.  Would you like to convert "
                   "to newer version?",
                   Answer::Yes)
        .ExpectSaveFile(evt)
        .ExpectAsk("Replace File", kReplaceText, Answer::Yes);
    std::vector<std::string> label4;
    s.onLabel4 = [&label4](Session&, std::string_view text) { label4.emplace_back(text); };
    menu_OpenEvent(s, ui);
    EXPECT_EQ(label4, (std::vector<std::string>{"25", "50"}));  // i * 50 / N while converting
    ASSERT_EQ(s.events.EventCount(), 2);
    EXPECT_EQ(s.events[2].Amplitude, -50);
    EXPECT_EQ(s.events[2].BaselineLead, 4000);
    EXPECT_TRUE(s.events.EventsSaved);

    const auto converted = DecodeEventFile(ReadAll(evt));
    EXPECT_EQ(converted.layout, EventFileLayout::Current);
    ASSERT_EQ(converted.records.size(), 2u);
    EXPECT_EQ(converted.records[1], s.events[2]);

    // A truncated file of the current layout loads its zero rows without a question.
    auto bytes = ReadAll(evt);
    Put(bytes, 1986, std::int32_t(4));
    bytes.resize(2048 + 2 * 64);
    WriteAll(evt, bytes);
    ScriptedDialogs quiet;
    label4.clear();
    ASSERT_TRUE(OpenEventFile(s, quiet, evt));
    EXPECT_TRUE(label4.empty());
    EXPECT_EQ(s.events.EventCount(), 4);
    EXPECT_EQ(s.events[4], EventRecord{});
    EXPECT_FALSE(OpenEventFile(s, quiet, dir / "missing.EVT"));
}

TEST_F(EventFileTest, ParameterFilesCarryTheSettingsButNotNumberPointsPeak) {
    Open(s, MakeData("cell1.dat"));
    s.recording.header.raw[1960] = 0x5A;  // the header's own bytes where events keep the points
    s.params = SomeParams();
    AddEvents(s, 4);
    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "set1.PAR");
    menu_SaveParameter(s, ui, dir.path());
    EXPECT_EQ(ui.fileDialogs[0].filter, "Event File (*.PAR)");
    EXPECT_EQ(ui.fileDialogs[0].fileName, "*.PAR");
    const auto f = ReadAll(dir / "set1.PAR");
    ASSERT_EQ(f.size(), 6144u);
    EXPECT_EQ(Text(f, 294, 16), "Ardelvantine 3.0");
    EXPECT_EQ(f[1960], 0x5A);
    EXPECT_EQ(At<std::int32_t>(f, 1986), 4);
    EXPECT_EQ(Text(f, 2014, 9), "cell1.dat");

    Session t;
    t.params.NumberPointsPeak = 9;
    ScriptedDialogs load;
    load.ExpectOpenFile(dir / "set1.PAR");
    menu_LoadParameter(t, load, dir.path());
    EXPECT_EQ(load.fileDialogs[0].filter, "Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT");
    DetectionParameters want = SomeParams();
    want.NumberPointsPeak = 9;
    EXPECT_EQ(t.params, want);
    EXPECT_EQ(t.events.EventCount(), 0);

    ScriptedDialogs refuse;
    refuse.ExpectOpenFile(dir / "cell1.dat")
        .ExpectMessage("Not a Parameter File",
                       "This file is not a parameter or an event file.  Please check the file "
                       "and try again.");
    menu_LoadParameter(t, refuse, dir.path());
}

// A disk that is full from the first byte on.
WriteCall DiskFull() {
    return [](int, const void*, std::size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
}

TEST_F(EventFileTest, AFailedRewriteSaysSoAndLeavesTheOldFilesAsTheyWere) {
    Open(s, MakeData("cell1.dat"));
    AddEvents(s, 100);
    const fs::path evt = Save(s, dir / "cell1.EVT");
    const auto good = ReadAll(evt);
    s.events.SetCount(3);
    UpdateTDBGrid(s.events);
    {
        ScopedWriteCall full(DiskFull());
        ScriptedDialogs ui;
        ui.ExpectSaveFile(evt)
            .ExpectAsk("Replace File", kReplaceText, Answer::Yes)
            .ExpectMessage("File Not Saved",
                           "The event file cell1.EVT could not be written: No space left on "
                           "device.  The file on disk is as it was before.");
        EXPECT_FALSE(menu_SaveEvent(s, ui));
    }
    EXPECT_EQ(ReadAll(evt), good);
    EXPECT_FALSE(s.events.EventsSaved);

    ScriptedDialogs ui;
    ui.ExpectSaveFile(dir / "p.PAR");
    menu_SaveParameter(s, ui, dir.path());
    const auto par = ReadAll(dir / "p.PAR");
    s.params.ThresholdAmplitude = 99;
    {
        ScopedWriteCall full(DiskFull());
        ScriptedDialogs again;
        again.ExpectSaveFile(dir / "p.PAR")
            .ExpectAsk("Replace File", kReplaceText, Answer::Yes)
            .ExpectMessage("File Not Saved", std::nullopt);
        menu_SaveParameter(s, again, dir.path());
    }
    EXPECT_EQ(ReadAll(dir / "p.PAR"), par);
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir.path())) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"cell1.EVT", "cell1.dat", "p.PAR"}));
}

TEST_F(EventFileTest, APipeIsRefusedAsEventOrParameterFileWithoutWaiting) {
    Open(s, MakeData("cell1.dat"));
    const fs::path pipe = dir / "pipe.EVT";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string refused =
        "The file pipe.EVT cannot be opened: it is a pipe, not a regular file.";
    ScriptedDialogs ui;
    ui.ExpectOpenFile(pipe).ExpectMessage("File Error", refused);
    menu_OpenEvent(s, ui);
    ScriptedDialogs par;
    par.ExpectOpenFile(pipe).ExpectMessage("File Error", refused);
    menu_LoadParameter(s, par, dir.path());
    ScriptedDialogs direct;
    direct.ExpectMessage("File Error", refused);
    EXPECT_FALSE(OpenEventFile(s, direct, pipe));
    // Clicked in the file list, as a recording.
    ScriptedDialogs click;
    click.ExpectMessage("File Error", refused);
    EXPECT_FALSE(OpenDataFile(s, click, pipe));
}

TEST_F(EventFileTest, FileCommentsEditAndTheSaveLoadAsymmetry) {
    Open(s, MakeData("cell1.dat"));
    SetFixedText(s.recording.header.sFileComment, "  header comment  ");
    const std::string prompt =
        "File Comments.  To edit, make necessary changes and press OK to keep changes.";
    ScriptedDialogs ui;
    ui.ExpectInput("File Comments", prompt, std::nullopt)     // Cancel keeps the header's text
        .ExpectInput("File Comments", prompt, std::string())  // an empty answer keeps it too
        .ExpectInput("File Comments", prompt, std::string("edited"));
    menu_FileComments(s, ui);
    EXPECT_EQ(Trim(s.FileComment), "header comment");
    menu_FileComments(s, ui);
    EXPECT_EQ(Trim(s.FileComment), "header comment");
    menu_FileComments(s, ui);
    EXPECT_EQ(Trim(s.FileComment), "edited");

    // Saved at 5154, but a load takes the comment from 310.
    AddEvents(s, 1);
    const fs::path evt = Save(s, dir / "c.EVT");
    EXPECT_EQ(Text(ReadAll(evt), 5154, 6), "edited");
    ScriptedDialogs quiet;
    ASSERT_TRUE(OpenEventFile(s, quiet, evt));
    EXPECT_NE(Trim(s.FileComment), "edited");
}

}  // namespace
}  // namespace ardel

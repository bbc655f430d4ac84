// ABF 2 recordings in detection: the events of an ABF 2 file and of its ABF 1.x conversion,
// event files that carry the header built from the sections and reopen, and batch runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "core/abf2_files.h"
#include "core/abf_files.h"
#include "core/event_files.h"
#include "core/open_file.h"
#include "core/session.h"
#include "detect/batch_analysis.h"
#include "detect/window_analysis.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::Abf2Builder;
using testing::ReadBytes;
using testing::RecordingDialogs;
using testing::ScriptedDialogs;
using testing::TempDir;
using testing::TestDataDir;
using testing::WriteBytes;

std::vector<EventRecord> Detect(Session& s) {
    ScriptedDialogs ui;
    s.params.PeakDirection = 1;
    s.params.ThresholdAmplitude = 20;
    s.params.AreaThreshold = 0;
    Command1(s, ui);
    Command3(s, ui);
    std::vector<EventRecord> out;
    for (std::int32_t i = 1; i <= s.events.EventCount(); ++i) out.push_back(s.events[i]);
    return out;
}

std::vector<EventRecord> DetectOnChannel1(const fs::path& file) {
    Session s;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    EXPECT_TRUE(OpenDataFile(s, ui, file));
    return Detect(s);
}

TEST(Abf2Files, DetectionFindsTheEventsOfTheConversion) {
    TempDir dir;
    const auto abf1 = ReadBytes(TestDataDir() / "18425108_abf1.abf");
    auto abf2 = ReadBytes(TestDataDir() / "18425108.abf");
    const auto one = DetectOnChannel1(TestDataDir() / "18425108_abf1.abf");
    const auto two = DetectOnChannel1(TestDataDir() / "18425108.abf");
    ASSERT_GE(one.size(), 20u);
    // The rounded samples may move a measure by a point or an LSB, never the events found.
    ASSERT_EQ(two.size(), one.size());
    for (std::size_t k = 0; k < one.size(); ++k) {
        EXPECT_NEAR(two[k].Time, one[k].Time, 0.041) << k;
        EXPECT_NEAR(two[k].Amplitude, one[k].Amplitude, 2) << k;
    }
    // With the conversion's samples put into the ABF 2 file, everything agrees.
    std::memcpy(abf2.data() + 38 * 512, abf1.data() + 12 * 512, 1000000);
    WriteBytes(dir.path() / "same.abf", abf2);
    const auto same = DetectOnChannel1(dir.path() / "same.abf");
    ASSERT_EQ(same.size(), one.size());
    for (std::size_t k = 0; k < one.size(); ++k) EXPECT_TRUE(same[k] == one[k]) << k;
}

TEST(Abf2Files, EventFilesCarryTheBuiltHeaderAndReopen) {
    TempDir dir;
    const fs::path data = dir.path() / "18425108.abf";
    fs::copy_file(TestDataDir() / "18425108.abf", data);
    Session s;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(s, ui, data));
    const auto events = Detect(s);
    ASSERT_FALSE(events.empty());
    const fs::path evt = dir.path() / "18425108.EVT";
    ui.ExpectSaveFile(evt);
    ASSERT_TRUE(menu_SaveEvent(s, ui));

    // The header copy is the one built from the sections, with the program's fields over it.
    const auto bytes = ReadBytes(evt);
    const auto built = s.recording.header.ToBytes();
    ASSERT_GE(bytes.size(), kAbfHeaderSize);
    EXPECT_EQ(std::memcmp(bytes.data(), built.data(), abf_offset::sCreatorInfo), 0);
    EXPECT_EQ(std::memcmp(bytes.data() + 366, built.data() + 366, 1954 - 366), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(bytes.data()) + 294, 16), "Ardelvantine 5.0");

    // A click on the event file opens the ABF 2 file beside it and loads the events.
    Session t;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(t, ui, evt));
    EXPECT_EQ(t.Label11, "18425108.abf");
    EXPECT_EQ(t.recording.header.ToBytes(), built);
    ASSERT_EQ(t.events.EventCount(), std::int32_t(events.size()));
    for (std::int32_t i = 1; i <= t.events.EventCount(); ++i) EXPECT_TRUE(t.events[i] == events[std::size_t(i - 1)]);
}

TEST(Abf2Files, BatchAnalysesAbf2FilesAndSaysWhyABrokenOneIsLeftOut) {
    TempDir dir;
    Abf2Builder good;
    good.instrumentScale = 10.0f / 32768;  // 1 LSB = 1 pA
    for (int i = 0; i < 8192; ++i) {
        const int since = i % 1500 - 700;
        const double dip = since < 0 ? 0 : -400 * std::exp(-since / 40.0) * (1 - std::exp(-since / 3.0));
        good.samples.push_back(std::int16_t(dip + (i * 7) % 5));
    }
    WriteBytes(dir.path() / "good.abf", good.Build());
    auto broken = good.Build();
    Abf2Builder::SetSection(broken, testing::kAbf2Adc, 2, 128, 40);
    WriteBytes(dir.path() / "broken.abf", broken);

    Session s;
    s.params.ThresholdAmplitude = 50;
    s.params.AreaThreshold = 0;
    RecordingDialogs ui;
    const BatchReport report = RunBatch(s, ui, {dir.path() / "good.abf", dir.path() / "broken.abf"});
    ASSERT_EQ(report.files.size(), 2u);
    EXPECT_EQ(report.files[0].status, BatchFileStatus::Analysed);
    EXPECT_GT(report.files[0].eventCount, 0);
    EXPECT_EQ(report.files[1].status, BatchFileStatus::Unusable);
    ASSERT_EQ(report.files[1].warnings.size(), 1u);
    EXPECT_EQ(report.files[1].warnings[0],
              "The ABF 2 file broken.abf cannot be opened (byte 92): the header gives 40 input "
              "channels; an ABF file has 1 to 16.");
}

}  // namespace
}  // namespace ardel

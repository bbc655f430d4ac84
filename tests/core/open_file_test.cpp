// Opening a recording as a click in the file list does: the real ABF files of tests/data,
// the questions and messages of the open sequence, tags, the header window's rows, the
// Synch Array extraction, and files whose header or data do not fit.
#include "core/open_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "abf_files.h"
#include "core/abf_build.h"
#include "core/number_text.h"
#include "core/session.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::AbfFileBuilder;
using testing::Ramp;
using testing::RawSample;
using testing::ReadBytes;
using testing::RecordingDialogs;
using testing::ScriptedDialogs;
using testing::TempDir;
using testing::TestDataDir;
using testing::WriteBytes;

constexpr std::int32_t kN = 1024;  // points per screen at the default 4 Blocks

const std::string kChannelQuestion = "Enter Channel Number";
std::string ChannelPrompt(int n) {
    return "There are " + std::to_string(n) +
           " input channels, starting from channel 0.  Please enter the channel number to "
           "open.";
}
const std::string kNotAbfText = "This is not an Axon Binary File.  Try another file.";
const std::string kFloatText =
    "This ABF file is saved in floating-point format.  Ardelvantine recognizes only the integer "
    "format.  Please open this file in Axoscope or Clampfit and save as integer format.  Then "
    "try again.";

// Relative comparison for scaled values: the reference readers computed them in double
// precision, the program stores 32-bit floats.
void ExpectScaled(float actual, double expected) {
    EXPECT_NEAR(actual, expected, std::abs(expected) * 2e-7 + 1e-9) << "expected " << expected;
}

// ---------------------------------------------------------------------------------------
// Real recordings. Expected values: tests/data/README.md (raw header values as stored;
// scale and offset as pyABF 2.3.8 and neo 0.11.1 report them, value = raw x scale + offset).

class RealFileTest : public ::testing::Test {
  protected:
    Session s;
    fs::path Data(const std::string& name) { return TestDataDir() / name; }
};

TEST_F(RealFileTest, TwoChannelEpisodicFileWithTelegraphOnChannel0) {
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, ChannelPrompt(2), "0");
    ASSERT_TRUE(OpenDataFile(s, ui, Data("multichannelAbf1WithTags.abf")));
    const Recording& r = s.recording;
    const AbfHeader& h = r.header;
    EXPECT_TRUE(r.FileIsOpen);
    EXPECT_EQ(s.Label11, "multichannelAbf1WithTags.abf");
    EXPECT_FLOAT_EQ(h.fFileVersionNumber, 1.84f);
    EXPECT_EQ(h.nOperationMode, 5);
    EXPECT_EQ(h.lActualAcqLength, 618222);
    EXPECT_EQ(h.lActualEpisodes, 187);
    EXPECT_EQ(h.lFileStartDate, 20161205);
    EXPECT_EQ(h.lDataSectionPtr, 12);
    EXPECT_EQ(h.lSynchArraySize, 187);
    EXPECT_EQ(h.nADCNumChannels, 2);
    EXPECT_FLOAT_EQ(h.fADCSampleInterval, 25);
    EXPECT_FLOAT_EQ(h.fSynchTimeUnit, 12.5f);
    EXPECT_EQ(h.lADCResolution, 32768);
    EXPECT_EQ(h.FileComment(), "SWHLab5[0402]");
    EXPECT_EQ(r.ChannelIndex, 0);
    EXPECT_EQ(r.LastChannelIndex, 1);
    EXPECT_FLOAT_EQ(r.SampleInterval, 50);
    EXPECT_EQ(r.TotalBlocks, 1207);
    EXPECT_EQ(r.ScreenBlock, 12);
    EXPECT_EQ(r.ADCUnits, "pA");
    EXPECT_TRUE(r.warnings.empty());
    // Telegraphed gain 5 on ADC 0 (version 1.84): gain 0.0005 x 5.
    EXPECT_FLOAT_EQ(r.ChannelGain, 0.0025f);
    EXPECT_EQ(h.nAutosampleEnable, 1);
    EXPECT_FLOAT_EQ(h.fAutosampleAdditGain, 5);

    const std::int16_t first[] = {7, 8, 6, 7};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(r.GetSampleValue(i), first[i]);
    EXPECT_EQ(r.GetSampleValue(1000), -671);
    const double scale = 0.12207030670197155;
    ExpectScaled(r.Bit2pA(-671), -81.90917579702291);
    for (std::int16_t raw : {7, 8, -671, 32767, -32768}) ExpectScaled(r.Bit2pA(raw), raw * scale);
    ExpectScaled(r.Bit2pA2(-671), -81.90917579702291);
    EXPECT_EQ(r.pA2Bit(-81.90917579702291), -671);

    // Every sample of the first two screens, and of a later screen, against the file's bytes.
    const auto bytes = ReadBytes(Data("multichannelAbf1WithTags.abf"));
    for (std::int32_t i = 0; i < 2 * kN; ++i)
        ASSERT_EQ(r.GetSampleValue(i), RawSample(bytes, 12, 2, i, 0)) << i;
    s.recording.ScreenBlock = 12 + 400;
    Display(s);
    for (std::int32_t i = 0; i < 2 * kN; ++i)
        ASSERT_EQ(r.GetSampleValue(i), RawSample(bytes, 12, 2, 400 * 256 + i, 0)) << i;
}

TEST_F(RealFileTest, Channel1HasItsOwnUnitsScaleAndOffset) {
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, ChannelPrompt(2), "1");
    ASSERT_TRUE(OpenDataFile(s, ui, Data("multichannelAbf1WithTags.abf")));
    const Recording& r = s.recording;
    EXPECT_EQ(r.ChannelIndex, 1);
    EXPECT_EQ(r.ADCUnits, "mV");
    EXPECT_FLOAT_EQ(r.SampleInterval, 50);
    // No telegraph on ADC 1: the autosample factor is switched off.
    EXPECT_EQ(r.header.nAutosampleEnable, 0);
    EXPECT_FLOAT_EQ(r.ChannelGain, 0.049955252557992935f);
    // fSignalOffset is 0 in this file, so the program's sum of the two offsets and the other
    // readers' difference agree: 0.006103515625 mV.
    EXPECT_FLOAT_EQ(r.ChannelOffset, 0.006103515625f);
    const double scale = 0.006108982852117946, offset = 0.006103515625;
    EXPECT_EQ(r.GetSampleValue(1000), -9819);
    ExpectScaled(r.Bit2pA(-9819), -9819 * scale + offset);
    ExpectScaled(r.Bit2pA(0), offset);
    ExpectScaled(r.Bit2pA2(-9819), -9819 * scale);
    const auto bytes = ReadBytes(Data("multichannelAbf1WithTags.abf"));
    for (std::int32_t i = 0; i < 2 * kN; ++i)
        ASSERT_EQ(r.GetSampleValue(i), RawSample(bytes, 12, 2, i, 1)) << i;

    // Back to channel 0: the telegraph applies again.
    SelectChannel(s, 0);
    EXPECT_EQ(r.ADCUnits, "pA");
    EXPECT_FLOAT_EQ(r.ChannelGain, 0.0025f);
    EXPECT_FLOAT_EQ(r.ChannelOffset, 0);
    EXPECT_EQ(r.GetSampleValue(1000), -671);
    // A channel beyond the last is clamped.
    SelectChannel(s, 9);
    EXPECT_EQ(r.ChannelIndex, 1);
}

TEST_F(RealFileTest, TagsAreReadFromTheTagSection) {
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, std::nullopt, "0");
    ASSERT_TRUE(OpenDataFile(s, ui, Data("multichannelAbf1WithTags.abf")));
    const auto& tags = s.recording.TagRecords;
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].lTagTime, 13918208);
    EXPECT_EQ(tags[1].lTagTime, 23588864);
    EXPECT_EQ(Trim(FixedText(tags[0].sComment)), "+TGOT");
    EXPECT_EQ(Trim(FixedText(tags[1].sComment)), "-TGOT");
}

TEST_F(RealFileTest, FourChannelFileAtTheLastChannel) {
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, ChannelPrompt(4), "3");
    ASSERT_TRUE(OpenDataFile(s, ui, Data("pclamp11_4ch_abf1.abf")));
    const Recording& r = s.recording;
    EXPECT_EQ(r.ChannelIndex, 3);
    EXPECT_EQ(r.LastChannelIndex, 3);
    EXPECT_FLOAT_EQ(r.SampleInterval, 50);  // 4 x 12.5 us
    EXPECT_EQ(r.TotalBlocks, 156);
    // Neighbouring points of the channel are 4 samples apart in the file.
    EXPECT_EQ(r.GetSampleValue(0), 895);
    EXPECT_EQ(r.GetSampleValue(1), -128);
    EXPECT_EQ(r.GetSampleValue(1000), 422);
    ExpectScaled(r.Bit2pA(422), 422 * 0.00030517578125);
}

TEST_F(RealFileTest, OldHeaderOfVersion13IgnoresTheGarbageWhereTelegraphsWouldBe) {
    // The header is 2048 bytes long; from there on the "telegraph" fields are samples.
    ScriptedDialogs ui;  // one channel: no question
    ASSERT_TRUE(OpenDataFile(s, ui, Data("130618-1-12.abf")));
    const Recording& r = s.recording;
    EXPECT_FLOAT_EQ(r.header.fFileVersionNumber, 1.3f);
    EXPECT_EQ(r.header.nTelegraphEnable[0], -636);
    EXPECT_EQ(r.header.lDataSectionPtr, 4);
    EXPECT_FLOAT_EQ(r.SampleInterval, 20);
    EXPECT_EQ(r.TotalBlocks, 585);
    EXPECT_EQ(r.ADCUnits, "pA");
    EXPECT_FLOAT_EQ(r.ChannelGain, 0.0009989106329157948f);
    const std::int16_t first[] = {-602, -602, -607, -611, -613};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r.GetSampleValue(i), first[i]);
    EXPECT_EQ(r.GetSampleValue(1000), -610);
    ExpectScaled(r.Bit2pA(-610), -190.83288280030584);
    ExpectScaled(r.Bit2pA(1), 0.3128407914759112);

    // The last screen: sample 149999 is point 495 of the screen at Block 4 + 146 x 4; after
    // it the file ends.
    s.recording.ScreenBlock = 4 + 146 * 4;
    Display(s);
    EXPECT_EQ(r.GetSampleValue(495), -629);
    for (std::int32_t i = 496; i < 2 * kN; ++i) ASSERT_EQ(r.GetSampleValue(i), 0) << i;
}

TEST_F(RealFileTest, InvalidStartDateAndTimeStillOpen) {
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, Data("invalidDate-abf1.abf")));
    const Recording& r = s.recording;
    EXPECT_EQ(r.header.lFileStartDate, -1);
    EXPECT_EQ(r.header.lFileStartTime, -1);
    EXPECT_FLOAT_EQ(r.SampleInterval, 50);
    EXPECT_EQ(r.GetSampleValue(0), -4535);
    EXPECT_EQ(r.GetSampleValue(4), -4627);
    EXPECT_EQ(r.GetSampleValue(1000), -5459);
    ExpectScaled(r.Bit2pA(-5459), -5459 * 0.030517578807121044);
    auto rows = DatInfoRows(s);
    ASSERT_FALSE(rows.empty());
    EXPECT_EQ(rows[8].first, "FileStartDate ");
    EXPECT_EQ(rows[8].second, "-1");
}

TEST_F(RealFileTest, HeaderWindowRowsInOrder) {
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, std::nullopt, "1");
    EXPECT_TRUE(DatInfoRows(s).empty());  // nothing without an open file
    ASSERT_TRUE(OpenDataFile(s, ui, Data("multichannelAbf1WithTags.abf")));
    EXPECT_EQ(DatInfoTitle(s), "DAT File Info:  multichannelAbf1WithTags.abf");
    const std::vector<std::string> labels = {
        "File Comment",
        "FileSignature",
        "FileVersionNumber ",
        "HeaderVersionNumber ",
        "FileType ",
        "CreatorInfo    ",
        "MSBinFormat ",
        "DataFormat ",
        "FileStartDate ",
        "FileStartTime ",
        "StopwatchTime ",
        "OperationMode ",
        "ActualAcqLength (Actual # of ADC samples)",
        "NumPointsIgnored ",
        "ActualEpisodes ",
        "EpisodesPerRun ",
        "NumSamplesPerEpisode ",
        "EpisodeStartToStart ",
        "RunsPerTrial ",
        "RunStartToStart ",
        "SecondsPerRun ",
        "NumberOfTrials ",
        "TrialStartToStart ",
        "ADCSampleInterval ",
        "ADCNumChannels ",
        "ADCRange ",
        "ADCResolution ",
        "AutosampleAdditGain ",
        "AutosampleEnable    ",
        "AutosampleADCNum       ",
        "ADCSamplingSeq (1) ",
        "ADCUnits (1) ",
        "ADCProgrammableGain (1) ",
        "InstrumentScaleFactor(1) ",
        "InstrumentOffset(1)     ",
        "SignalGain(1) ",
        "SignalOffset (1 )     ",
    };
    const auto rows = DatInfoRows(s);
    ASSERT_EQ(rows.size(), labels.size());
    for (std::size_t k = 0; k < labels.size(); ++k) EXPECT_EQ(rows[k].first, labels[k]) << k;
    auto value = [&](const std::string& label) {
        for (const auto& [l, v] : rows)
            if (l == label) return v;
        return std::string("<missing>");
    };
    EXPECT_EQ(value("File Comment"), "SWHLab5[0402]");
    EXPECT_EQ(value("FileVersionNumber "), "1.84");
    EXPECT_EQ(value("CreatorInfo    "), "Clampex");
    EXPECT_EQ(value("FileStartDate "), "20161205");
    EXPECT_EQ(value("FileStartTime "), "12:40:20");  // 45620 s
    EXPECT_EQ(value("ActualAcqLength (Actual # of ADC samples)"), "618222");
    EXPECT_EQ(value("ADCSampleInterval "), "50");  // SampleInterval, not fADCSampleInterval
    EXPECT_EQ(value("ADCNumChannels "), "2");
    EXPECT_EQ(value("ADCResolution "), "32768");
    EXPECT_EQ(value("AutosampleEnable    "), "0");
    EXPECT_EQ(value("ADCSamplingSeq (1) "), "1");
    EXPECT_EQ(value("ADCUnits (1) "), "mV");
    EXPECT_EQ(value("SignalOffset (1 )     "), "0");
}

TEST(DatInfo, ClockRowsAreHoursMinutesSecondsOfTwoDigits) {
    TempDir dir;
    AbfFileBuilder b(AbfBuildSpec{}, {Ramp(512)});
    b.header.lFileStartTime = 3600 * 23 + 60 * 5 + 9;
    b.header.lStopwatchTime = 3600 * 100 + 59;
    Session s;
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "clock.abf")));
    const auto rows = DatInfoRows(s);
    EXPECT_EQ(rows[9].second, "23:05:09");
    EXPECT_EQ(rows[10].second, "100:00:59");
}

// ---------------------------------------------------------------------------------------
// The open sequence's questions and messages.

class OpenSequenceTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;

    fs::path MakeFile(const std::string& name, int channels = 1, std::size_t points = 4096,
                      std::function<void(AbfHeader&)> change = {}) {
        std::vector<std::vector<std::int16_t>> data;
        for (int c = 0; c < channels; ++c) data.push_back(Ramp(points, -1000 * (c + 1), c + 1));
        AbfBuildSpec spec;
        spec.units = {"pA", "mV", "V", "nA"};
        spec.scaleFactors = {0.5f, 0.25f, 0.125f, 1};
        AbfFileBuilder b(spec, data);
        if (change) change(b.header);
        return b.Write(dir / name);
    }

    void OpenWithEvents(int count) {
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("a.abf")));
        for (int k = 0; k < count; ++k) s.events.Add().Time = float(k + 1);
        UpdateTDBGrid(s.events);
    }
};

TEST_F(OpenSequenceTest, NotAnAbfFile) {
    const fs::path text = dir / "notes.dat";
    WriteBytes(text, std::vector<std::uint8_t>(8000, 'x'));
    ScriptedDialogs ui;
    ui.ExpectMessage("Not ABF File", kNotAbfText);
    EXPECT_FALSE(OpenDataFile(s, ui, text));
    EXPECT_FALSE(s.recording.FileIsOpen);

    const fs::path empty = dir / "empty.abf";
    WriteBytes(empty, {});
    ui.ExpectMessage("Not ABF File", kNotAbfText);
    EXPECT_FALSE(OpenDataFile(s, ui, empty));
}

TEST_F(OpenSequenceTest, TheSignatureMustHoldAbfAndABlank) {
    for (const char* sig : {" ABF", "abf ", "ABF\0"}) {
        ScriptedDialogs ui;
        ui.ExpectMessage("Not ABF File", kNotAbfText);
        auto f = MakeFile("sig.abf", 1, 4096,
                          [&](AbfHeader& h) { std::memcpy(h.lFileSignature.data(), sig, 4); });
        EXPECT_FALSE(OpenDataFile(s, ui, f)) << sig;
    }
    ScriptedDialogs ui;
    EXPECT_TRUE(OpenDataFile(s, ui, MakeFile("good.abf")));
}

TEST_F(OpenSequenceTest, FloatingPointDataIsRefused) {
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("a.abf")));
    ui.ExpectMessage("Not in Integer Format", kFloatText);
    auto f = MakeFile("float.abf", 1, 4096, [](AbfHeader& h) { h.nDataFormat = 1; });
    EXPECT_FALSE(OpenDataFile(s, ui, f));
    EXPECT_FALSE(s.recording.FileIsOpen);
    // The refused file's header has replaced the old one.
    EXPECT_EQ(s.recording.header.nDataFormat, 1);
}

TEST_F(OpenSequenceTest, OneChannelAsksNothingAndThreeChannelsClampTheAnswer) {
    {
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("one.abf")));
        EXPECT_EQ(s.recording.ChannelIndex, 0);
    }
    const fs::path three = MakeFile("three.abf", 3);
    struct Case {
        std::optional<std::string> answer;  // nullopt: Cancel
        int channel;
    } cases[] = {
        {"7", 2},    {"0.5", 0}, {"", 0},     {std::nullopt, 0}, {"2", 2},
        {"1", 1},    {"-4", 0},  {"1abc", 1}, {"  2", 2},        {"0", 0},
        {"0.99", 0}, {"1.5", 2}, {"2.5", 2},  {"1e9", 2},        {"x", 0},
    };
    for (const auto& c : cases) {
        ScriptedDialogs ui;
        ui.ExpectInput(kChannelQuestion, ChannelPrompt(3), c.answer);
        ASSERT_TRUE(OpenDataFile(s, ui, three)) << c.answer.value_or("<cancel>");
        EXPECT_EQ(s.recording.ChannelIndex, c.channel) << c.answer.value_or("<cancel>");
        EXPECT_EQ(s.recording.ADCUnits, std::vector<std::string>({"pA", "mV", "V"})[c.channel]);
        EXPECT_EQ(s.recording.GetSampleValue(5), -1000 * (c.channel + 1) + 5 * (c.channel + 1));
    }
}

TEST_F(OpenSequenceTest, UnsavedEventsAnsweredNoAreDropped) {
    OpenWithEvents(2);
    ScriptedDialogs ui;
    ui.ExpectAsk("Save Previous Event Data",
                 "There are 2 events analysed for a.abf.  Do you want to save the event data?",
                 Answer::No);
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("b.abf")));
    EXPECT_EQ(ui.lastButtons, Buttons::YesNoCancel);
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_EQ(s.Label11, "b.abf");
}

TEST_F(OpenSequenceTest, UnsavedEventsAnsweredCancelChangeNothingButThePath) {
    OpenWithEvents(3);
    const AbfHeader before = s.recording.header;
    const auto previous = s.recording.CurrentScreen;
    ScriptedDialogs ui;  // no channel question follows although b has 3 channels
    ui.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::Cancel);
    const fs::path b = MakeFile("b.abf", 3, 9000);
    OpenDataFile(s, ui, b);
    EXPECT_EQ(s.recording.DataFilePath, b);
    EXPECT_TRUE(s.recording.FileIsOpen);
    EXPECT_EQ(s.Label11, "a.abf");
    EXPECT_EQ(s.events.EventCount(), 3);
    EXPECT_EQ(s.recording.header.lActualAcqLength, before.lActualAcqLength);
    EXPECT_EQ(s.recording.header.nADCNumChannels, 1);
    EXPECT_EQ(s.recording.CurrentScreen, previous);
}

TEST_F(OpenSequenceTest, UnsavedEventsAnsweredYesAreSavedThenDropped) {
    OpenWithEvents(1234);
    RecordingDialogs ui;
    ui.answers = {Answer::Yes};
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("b.abf")));
    ASSERT_FALSE(ui.log.empty());
    EXPECT_EQ(ui.log.front(),
              "Ask|Save Previous Event Data|There are 1234 events analysed for a.abf.  Do you "
              "want to save the event data?");
    // What saving asks is its own business; afterwards the table is empty whatever happened.
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_TRUE(s.recording.FileIsOpen);
    EXPECT_EQ(s.Label11, "b.abf");
}

TEST_F(OpenSequenceTest, SavedEventsAreDroppedWithoutAQuestion) {
    OpenWithEvents(5);
    s.events.EventsSaved = true;
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("b.abf")));
    EXPECT_EQ(s.events.EventCount(), 0);
}

TEST_F(OpenSequenceTest, TheEventQuestionComesFirstAndTheTableIsGoneEvenIfTheFileIsRefused) {
    OpenWithEvents(2);
    const fs::path junk = dir / "junk.abf";
    WriteBytes(junk, std::vector<std::uint8_t>(7000, 0));
    ScriptedDialogs ui;
    ui.ExpectAsk("Save Previous Event Data", std::nullopt, Answer::No);
    ui.ExpectMessage("Not ABF File", kNotAbfText);
    EXPECT_FALSE(OpenDataFile(s, ui, junk));
    EXPECT_EQ(s.events.EventCount(), 0);
    EXPECT_FALSE(s.recording.FileIsOpen);
}

TEST_F(OpenSequenceTest, EventFileWithoutItsDataFileIsReported) {
    auto f = MakeFile("cell.EVT", 1, 4096, [](AbfHeader& h) {
        SetFixedText(h.sCreatorInfo, "Ardelvantine");
        SetFixedText(h.sSourceFileName, "cell.abf");
    });
    RecordingDialogs ui;
    EXPECT_FALSE(OpenDataFile(s, ui, f));
    EXPECT_FALSE(s.recording.FileIsOpen);
    ASSERT_EQ(ui.log.size(), 1u);
    const std::string text =
        "The original data file cell.abf does not exist in this directory.  Please make sure "
        "the event file and the original data file are present in the same directory.";
    EXPECT_EQ(ui.log[0].substr(ui.log[0].size() - text.size()), text);
}

TEST_F(OpenSequenceTest, AnEventFileFindsItsDataFileOnlyByNameInItsOwnFolder) {
    fs::create_directories(dir / "data");
    fs::create_directories(dir / "evts");
    MakeFile("data/other.abf");
    for (const char* stored : {"../data/other.abf", "..\\data\\other.abf", "/tmp/../x/other.abf"}) {
        auto evt = MakeFile("evts/cell.EVT", 1, 4096, [&](AbfHeader& h) {
            SetFixedText(h.sCreatorInfo, "Ardelvantine 5.0");
            SetFixedText(h.sSourceFileName, stored);
        });
        ScriptedDialogs ui;
        ui.ExpectMessage("Data File Not Found",
                         "The original data file other.abf does not exist in this directory.  "
                         "Please make sure the event file and the original data file are present "
                         "in the same directory.");
        EXPECT_FALSE(OpenDataFile(s, ui, evt)) << stored;
    }
    // The same name beside the event file is the one taken.
    MakeFile("evts/other.abf");
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, dir / "evts/cell.EVT"));
    EXPECT_EQ(s.recording.DataFilePath, dir / "evts/other.abf");
    EXPECT_EQ(s.Label11, "other.abf");
}

TEST_F(OpenSequenceTest, TagCommentsKeepTheirBytes) {
    AbfFileBuilder b(AbfBuildSpec{}, {Ramp(2048)});
    b.AddTags({{100, "start"}, {2500, "r\xE9sultats \xB5M"}, {-7, std::string(60, 'z')}});
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "tags.abf")));
    const auto& tags = s.recording.TagRecords;
    ASSERT_EQ(tags.size(), 3u);
    EXPECT_EQ(tags[0].lTagTime, 100);
    EXPECT_EQ(tags[1].lTagTime, 2500);
    EXPECT_EQ(tags[2].lTagTime, -7);
    // The Latin-1 bytes stay as they are: no decoding, no dropping.
    EXPECT_EQ(Trim(FixedText(tags[1].sComment)), "r\xE9sultats \xB5M");
    EXPECT_EQ(FixedText(tags[2].sComment), std::string(56, 'z'));
    EXPECT_EQ(tags[1].rest[0], 1);
    EXPECT_EQ(tags[1].rest[2], 8);
    // The samples are untouched by the sections behind them.
    EXPECT_EQ(s.recording.GetSampleValue(2047), Ramp(2048)[2047]);
}

TEST_F(OpenSequenceTest, NoTagsWhenTheCountIsNotPositive) {
    for (std::int32_t count : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        AbfFileBuilder b(AbfBuildSpec{}, {Ramp(2048)});
        b.AddTags({{1, "a"}});
        b.header.lNumTagEntries = count;
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "t.abf")));
        EXPECT_TRUE(s.recording.TagRecords.empty()) << count;
    }
}

// ---------------------------------------------------------------------------------------
// Synch Array.

const std::string kSynchQuestion =
    "This function will extract Synch Array data and put it into Data Array #1 or #2.  Synch "
    "Array contains time of each event-driven segment.  There are 4 events in this file.  Do you "
    "want to calculate the inter-event intervals from the Synch Array?";

class SynchArrayTest : public OpenSequenceTest {
  protected:
    void OpenEventDriven(float synchTimeUnit) {
        AbfBuildSpec spec;
        spec.channels = 2;
        spec.sampleIntervalUs = 25;  // SampleInterval 50
        AbfFileBuilder b(spec, {Ramp(8192), Ramp(8192, 0)});
        b.header.nOperationMode = 1;
        b.header.fSynchTimeUnit = synchTimeUnit;
        b.header.lNumSamplesPerEpisode = 1000;
        b.AddSynchArray({{0, 1000}, {4000, 1000}, {10000, 1000}, {10400, 1000}}, {99999, 7});
        ScriptedDialogs ui;
        ui.ExpectInput(kChannelQuestion, std::nullopt, "0");
        ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "synch.abf")));
    }
};

TEST_F(SynchArrayTest, OnlyEventDrivenFilesHaveOne) {
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("gapfree.abf")));
    ui.ExpectMessage("Synch Array",
                     "This file does not contain Synch Array because the file is acquired as "
                     "either Gap-free or Episodic mode.  This function will only work when a "
                     "data file is saved as Event-driven, variable length or Event-driven, fixed "
                     "mode.");
    menu_ExtractSynchArray(s, ui, SynchTarget::DataArray1);
    EXPECT_TRUE(s.dataArray1.IsEmpty());
}

TEST_F(SynchArrayTest, StartTimesInMillisecondsOnNo) {
    OpenEventDriven(12.5f);
    ScriptedDialogs ui;
    ui.ExpectAsk("Inter-event Interval", kSynchQuestion, Answer::No);
    menu_ExtractSynchArray(s, ui, SynchTarget::DataArray2);
    EXPECT_EQ(ui.lastButtons, Buttons::YesNo);
    ASSERT_EQ(s.dataArray2.UpperBound(), 4);
    EXPECT_FLOAT_EQ(s.dataArray2(1), 0);
    EXPECT_FLOAT_EQ(s.dataArray2(2), 50);  // 4000 ticks of 12.5 us
    EXPECT_FLOAT_EQ(s.dataArray2(3), 125);
    EXPECT_FLOAT_EQ(s.dataArray2(4), 130);
    EXPECT_TRUE(s.dataArray1.IsEmpty());
}

TEST_F(SynchArrayTest, IntervalsOnYesWithTheSampleIntervalAsTickWhenNoUnitIsGiven) {
    OpenEventDriven(0);
    ScriptedDialogs ui;
    ui.ExpectAsk("Inter-event Interval", kSynchQuestion, Answer::Yes);
    menu_ExtractSynchArray(s, ui, SynchTarget::DataArray1);
    ASSERT_EQ(s.dataArray1.UpperBound(), 4);
    EXPECT_FLOAT_EQ(s.dataArray1(1), 200);  // 4000 ticks of 50 us
    EXPECT_FLOAT_EQ(s.dataArray1(2), 300);
    EXPECT_FLOAT_EQ(s.dataArray1(3), 20);
    // Row 4 reads the pair behind the last one; what lies there is not part of the array.
}

TEST_F(SynchArrayTest, ACountBeyondTheFileEndsTheArrayWithTheFile) {
    AbfBuildSpec spec;
    AbfFileBuilder b(spec, {Ramp(4096)});
    b.header.nOperationMode = 2;
    b.header.fSynchTimeUnit = 10;
    b.AddSynchArray({{100, 50}, {300, 50}});
    b.header.lSynchArraySize = std::numeric_limits<std::int32_t>::max();
    ScriptedDialogs open;
    ASSERT_TRUE(OpenDataFile(s, open, b.Write(dir / "huge.abf")));
    RecordingDialogs ui;
    ui.answers = {Answer::No};
    menu_ExtractSynchArray(s, ui, SynchTarget::DataArray1);
    // The section is one block of 64 pairs, the last 62 of them zero padding.
    ASSERT_EQ(s.dataArray1.UpperBound(), 64);
    EXPECT_FLOAT_EQ(s.dataArray1(1), 1);
    EXPECT_FLOAT_EQ(s.dataArray1(2), 3);
    EXPECT_FLOAT_EQ(s.dataArray1(64), 0);
    // The question still quotes the header's count.
    ASSERT_EQ(ui.log.size(), 1u);
    EXPECT_NE(ui.log[0].find("There are 2147483647 events"), std::string::npos);
}

TEST_F(SynchArrayTest, EventTableTargetSetsRelativeTimeToTheSegmentStart) {
    OpenEventDriven(12.5f);
    // Points = Time / 0.05 ms; segment = points / 1000.
    const float times[] = {0.0f, 49.9f, 50.5f, 160.0f, 199.0f};
    for (float t : times) s.events.Add().Time = t;
    ScriptedDialogs ui;
    ui.ExpectMessage("Synch Array",
                     "This file contains 4 Synch Arrays.  And the time of all the events are "
                     "updated and set to Relative Time.");
    menu_ExtractSynchArray(s, ui, SynchTarget::EventTable);
    EXPECT_EQ(s.events[1].RelativeTime, 0);
    EXPECT_EQ(s.events[2].RelativeTime, 0);
    EXPECT_EQ(s.events[3].RelativeTime, 4000);
    EXPECT_EQ(s.events[4].RelativeTime, 10400);
    EXPECT_EQ(s.events[5].RelativeTime, 10400);
}

// ---------------------------------------------------------------------------------------
// Files that do not fit their header, and headers that make no sense. None may crash; the
// sanitizer build checks every read.

class DamagedFileTest : public OpenSequenceTest {
  protected:
    // Reads every point of a few screens of every channel.
    void SweepAllChannels() {
        Recording& r = s.recording;
        for (int screen = 0; screen < 3; ++screen) {
            for (int c = 0; c <= r.LastChannelIndex; ++c) {
                SelectChannel(s, c);
                for (std::int32_t i = -r.ScreenPoints() - 2; i < 2 * r.ScreenPoints() + 2; ++i)
                    (void)r.GetSampleValue(i);
            }
            r.ScreenBlock += r.BlocksPerScreen;
            Display(s);
        }
        (void)DatInfoRows(s);
    }
};

TEST_F(DamagedFileTest, HeaderShorterThan6144BytesOpensWithAWarningAndZeroSamples) {
    auto full = ReadBytes(MakeFile("full.abf"));
    for (std::size_t size : {4000u, 1200u, 200u}) {
        const fs::path cut = dir / ("cut" + std::to_string(size) + ".abf");
        WriteBytes(cut, std::vector<std::uint8_t>(full.begin(), full.begin() + size));
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, cut)) << size;
        EXPECT_FALSE(s.recording.warnings.empty()) << size;
        for (std::int32_t i = -kN; i < 2 * kN; ++i)
            ASSERT_EQ(s.recording.GetSampleValue(i), 0) << size << " at " << i;
        SweepAllChannels();
    }
}

TEST_F(DamagedFileTest, AHeaderCutBeforeTheChannelCountIsAFileTooShort) {
    auto full = ReadBytes(MakeFile("full.abf"));
    for (std::size_t size : {4u, 60u, 121u, 122u, 125u}) {
        const fs::path cut = dir / "cut.abf";
        WriteBytes(cut, std::vector<std::uint8_t>(full.begin(), full.begin() + size));
        ScriptedDialogs ui;
        ui.ExpectMessage("File Too Short", "The file cut.abf is only " + std::to_string(size) +
                                               " bytes long, too short for an ABF header (6144 "
                                               "bytes).  The file cannot be opened.");
        EXPECT_FALSE(OpenDataFile(s, ui, cut)) << size;
        EXPECT_FALSE(s.recording.FileIsOpen);
    }
}

TEST_F(DamagedFileTest, DataShorterThanTheHeaderSaysReadsAsZerosAfterTheEnd) {
    auto full = ReadBytes(MakeFile("full.abf", 2, 3000));
    const std::size_t keep = 6144 + 2 * 2 * 700;  // 700 points of both channels
    const fs::path cut = dir / "short.abf";
    WriteBytes(cut, std::vector<std::uint8_t>(full.begin(), full.begin() + keep));
    ScriptedDialogs ui;
    ui.ExpectInput(kChannelQuestion, std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(s, ui, cut));
    EXPECT_EQ(s.recording.TotalBlocks, 11);  // from the header: 6000 / 256 / 2
    EXPECT_EQ(s.recording.warnings.size(), 1u);
    const auto ch1 = Ramp(3000, -2000, 2);
    for (std::int32_t i = 0; i < 700; ++i) ASSERT_EQ(s.recording.GetSampleValue(i), ch1[i]) << i;
    for (std::int32_t i = 700; i < 2 * kN; ++i) ASSERT_EQ(s.recording.GetSampleValue(i), 0) << i;
    // A file that holds what its header says gives no warning.
    ScriptedDialogs ui2;
    ui2.ExpectInput(kChannelQuestion, std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(s, ui2, dir / "full.abf"));
    EXPECT_TRUE(s.recording.warnings.empty());
}

TEST_F(DamagedFileTest, ChannelCountsOutsideOneToSixteenAreRefused) {
    for (int n : {0, -1, 17, 99, -32768}) {
        RecordingDialogs ui;
        auto f =
            MakeFile("n.abf", 1, 4096, [&](AbfHeader& h) { h.nADCNumChannels = std::int16_t(n); });
        EXPECT_FALSE(OpenDataFile(s, ui, f)) << n;
        EXPECT_FALSE(s.recording.FileIsOpen) << n;
        ASSERT_EQ(ui.log.size(), 1u) << n;
        EXPECT_EQ(ui.log[0].rfind("Message|", 0), 0u) << ui.log[0];
    }
}

TEST_F(DamagedFileTest, NonsenseCountsAndPointersNeverCrash) {
    const std::function<void(AbfHeader&)> changes[] = {
        [](AbfHeader& h) { h.lDataSectionPtr = -5; },
        [](AbfHeader& h) { h.lDataSectionPtr = std::numeric_limits<std::int32_t>::max(); },
        [](AbfHeader& h) { h.lDataSectionPtr = std::numeric_limits<std::int32_t>::min(); },
        [](AbfHeader& h) { h.lDataSectionPtr = 0; },
        [](AbfHeader& h) { h.lActualAcqLength = -1000; },
        [](AbfHeader& h) { h.lActualAcqLength = std::numeric_limits<std::int32_t>::max(); },
        [](AbfHeader& h) {
            h.lTagSectionPtr = -3;
            h.lNumTagEntries = 4;
        },
        [](AbfHeader& h) {
            h.lTagSectionPtr = 12;
            h.lNumTagEntries = std::numeric_limits<std::int32_t>::max();
        },
        [](AbfHeader& h) {
            h.lTagSectionPtr = std::numeric_limits<std::int32_t>::max();
            h.lNumTagEntries = 3;
        },
        [](AbfHeader& h) { h.fADCRange = 0; },
        [](AbfHeader& h) { h.lADCResolution = 0; },
        [](AbfHeader& h) { h.fInstrumentScaleFactor[0] = 0; },
        [](AbfHeader& h) { h.fInstrumentScaleFactor[0] = std::numeric_limits<float>::quiet_NaN(); },
        [](AbfHeader& h) { h.fADCSampleInterval = std::numeric_limits<float>::max(); },
        [](AbfHeader& h) { h.fFileVersionNumber = std::numeric_limits<float>::quiet_NaN(); },
        [](AbfHeader& h) {
            h.nTelegraphEnable[0] = 1;
            h.fTelegraphAdditGain[0] = std::numeric_limits<float>::infinity();
        },
    };
    int k = 0;
    for (const auto& change : changes) {
        RecordingDialogs ui;
        auto f = MakeFile("bad" + std::to_string(k) + ".abf", 2, 3000, change);
        if (OpenDataFile(s, ui, f)) SweepAllChannels();
        ++k;
    }
}

TEST_F(DamagedFileTest, BadSamplingSequenceOrIntervalIsRefusedWithAMessage) {
    const std::function<void(AbfHeader&)> changes[] = {
        [](AbfHeader& h) { h.nADCSamplingSeq[1] = -1; },
        [](AbfHeader& h) { h.nADCSamplingSeq[1] = 16; },
        [](AbfHeader& h) { h.nADCSamplingSeq[1] = 32767; },
        [](AbfHeader& h) { h.fADCSampleInterval = 0; },
        [](AbfHeader& h) { h.fADCSampleInterval = -25; },
        // Faster than any converter: every search window of the detection would be billions
        // of points long.
        [](AbfHeader& h) { h.fADCSampleInterval = 3.6e-6f; },
        [](AbfHeader& h) { h.fADCSampleInterval = std::numeric_limits<float>::quiet_NaN(); },
        [](AbfHeader& h) { h.fADCSampleInterval = std::numeric_limits<float>::infinity(); },
    };
    for (const auto& change : changes) {
        RecordingDialogs ui;
        ui.input = "1";
        EXPECT_FALSE(OpenDataFile(s, ui, MakeFile("seq.abf", 2, 3000, change)));
        EXPECT_FALSE(s.recording.FileIsOpen);
        ASSERT_FALSE(ui.log.empty());
        EXPECT_EQ(ui.log.back().rfind("Message|", 0), 0u) << ui.log.back();
    }
}

TEST_F(DamagedFileTest, ARefusedOpenLeavesTheBuffersSafeToRead) {
    // The old file has one channel; the refused one has four and is refused at the channel
    // asked for. Whatever the screen shows until the next open must not read outside the
    // buffers.
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, MakeFile("one.abf")));
    RecordingDialogs ui2;
    ui2.input = "3";
    auto f = MakeFile("four.abf", 4, 3000, [](AbfHeader& h) { h.nADCSamplingSeq[3] = -1; });
    EXPECT_FALSE(OpenDataFile(s, ui2, f));
    EXPECT_FALSE(s.recording.FileIsOpen);
    for (std::int32_t i = -kN; i < 2 * kN; ++i) (void)s.recording.GetSampleValue(i);
}

}  // namespace
}  // namespace ardel

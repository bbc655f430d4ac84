// ABF 2 recordings: the real twins of tests/data (an ABF 2 file and its ABF 1.x conversion)
// read alike, the event-driven file opens with its two sweeps, and damaged files built byte
// by byte give their reason or a warning.
#include "core/abf2_reader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>

#include "abf2_files.h"
#include "abf_files.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "core/session.h"
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

Abf2Result Read(const std::vector<std::uint8_t>& bytes) {
    return ReadAbf2Header(std::as_bytes(std::span<const std::uint8_t>(bytes)));
}

DataFileHeader HeaderOf(const fs::path& file) {
    return ReadDataFileHeader(FileSource(file), file.filename().string());
}

std::string Text(const auto& field) { return Trim(TrimNul(FixedText(field))); }

// ---------------------------------------------------------------------------------------
// The twins. Their ABF 1.x conversions were written by the acquisition software's own
// converter; the samples were rounded on the way, by 0 or +1 LSB.

struct Twin {
    const char* abf2;
    const char* abf1;
};

class TwinTest : public ::testing::TestWithParam<Twin> {};

TEST_P(TwinTest, HeaderValuesMatchTheConversion) {
    const DataFileHeader two = HeaderOf(TestDataDir() / GetParam().abf2);
    const DataFileHeader one = HeaderOf(TestDataDir() / GetParam().abf1);
    ASSERT_FALSE(two.abf2Error) << two.abf2Error->what;
    EXPECT_TRUE(two.abf2);
    EXPECT_TRUE(two.warnings.empty());
    const AbfHeader& a = two.header;
    const AbfHeader& b = one.header;
    EXPECT_TRUE(a.HasAbfSignature());
    EXPECT_FLOAT_EQ(a.fFileVersionNumber, 2.9f);
    EXPECT_EQ(a.lActualAcqLength, b.lActualAcqLength);
    EXPECT_EQ(a.fADCSampleInterval, b.fADCSampleInterval);
    EXPECT_EQ(a.fSynchTimeUnit, b.fSynchTimeUnit);
    EXPECT_EQ(a.lSynchArraySize, b.lSynchArraySize);
    EXPECT_EQ(a.lNumTagEntries, b.lNumTagEntries);
    EXPECT_EQ(a.nADCSamplingSeq, b.nADCSamplingSeq);
    // Fields the program never names but a reader of the header expects: pre-trigger samples,
    // the start's milliseconds, the channel names.
    for (std::size_t at : {142u, 366u}) EXPECT_EQ(ReadI16(a.raw, at), ReadI16(b.raw, at)) << at;
    for (int i = 0; i < a.nADCNumChannels; ++i) {
        const std::size_t adc = std::size_t(a.nADCSamplingSeq[std::size_t(i)]);
        EXPECT_EQ(std::memcmp(a.raw.data() + 442 + 10 * adc, b.raw.data() + 442 + 10 * adc, 10), 0);
        EXPECT_EQ(a.nTelegraphEnable[adc], b.nTelegraphEnable[adc]);
    }
    // The Synch Array, read where each header says it is.
    FileSource sa(TestDataDir() / GetParam().abf2), sb(TestDataDir() / GetParam().abf1);
    std::vector<std::uint8_t> pa(std::size_t(a.lSynchArraySize) * 8), pb(pa.size());
    sa.Read(std::int64_t(a.lSynchArrayPtr) * 512, pa);
    sb.Read(std::int64_t(b.lSynchArrayPtr) * 512, pb);
    EXPECT_EQ(pa, pb);
}

// Every channel: the same gain, offset and units, and every sample within one LSB, through the
// screen buffers as detection reads them.
TEST_P(TwinTest, EveryChannelScalesAndReadsLikeTheConversion) {
    const int channels = HeaderOf(TestDataDir() / GetParam().abf1).header.nADCNumChannels;
    std::int64_t differing = 0;
    for (int c = 0; c < channels; ++c) {
        Session two, one;
        ScriptedDialogs ui;
        ui.ExpectInput("Enter Channel Number", std::nullopt, std::to_string(c))
            .ExpectInput("Enter Channel Number", std::nullopt, std::to_string(c));
        ASSERT_TRUE(OpenDataFile(two, ui, TestDataDir() / GetParam().abf2));
        ASSERT_TRUE(OpenDataFile(one, ui, TestDataDir() / GetParam().abf1));
        Recording& a = two.recording;
        Recording& b = one.recording;
        EXPECT_TRUE(a.warnings.empty()) << a.warnings.front();
        EXPECT_NEAR(a.ChannelGain, b.ChannelGain, std::abs(b.ChannelGain) * 1e-6) << c;
        EXPECT_EQ(a.ChannelOffset, b.ChannelOffset);
        EXPECT_EQ(a.ADCUnits, b.ADCUnits);
        EXPECT_EQ(a.SampleInterval, b.SampleInterval);
        EXPECT_EQ(a.TotalBlocks, b.TotalBlocks);
        // The header window: the same rows but for the versions and the stored autosample gain
        // (the conversion stored 0, the header built from ABF 2 stores 1).
        const auto rowsA = DatInfoRows(two), rowsB = DatInfoRows(one);
        ASSERT_EQ(rowsA.size(), rowsB.size());
        for (std::size_t k = 0; k < rowsA.size(); ++k) {
            if (k != 2 && k != 3 && rowsA[k].first != "AutosampleAdditGain ") {
                EXPECT_EQ(rowsA[k], rowsB[k]) << k;
            }
        }
        std::int64_t points = 0;
        const std::int64_t total = a.header.lActualAcqLength / channels;
        for (std::int64_t start = 0; start < total; start += a.ScreenPoints()) {
            a.ScreenBlock = a.header.lDataSectionPtr + double(start) / 256;
            b.ScreenBlock = b.header.lDataSectionPtr + double(start) / 256;
            a.LoadScreens();
            b.LoadScreens();
            for (std::int32_t i = 0; i < a.ScreenPoints() && start + i < total; ++i, ++points) {
                const int d = b.GetSampleValue(i) - a.GetSampleValue(i);
                ASSERT_TRUE(d == 0 || d == 1) << "channel " << c << " point " << start + i;
                differing += d;
            }
        }
        EXPECT_EQ(points, total);
    }
    EXPECT_GT(differing, 0);  // the rounding is there, so the comparison saw the real data
}

INSTANTIATE_TEST_SUITE_P(RealFiles, TwinTest,
                         ::testing::Values(Twin{"pclamp11_4ch.abf", "pclamp11_4ch_abf1.abf"},
                                           Twin{"18425108.abf", "18425108_abf1.abf"}));

TEST(Abf2Files, EventDrivenFileOpensWithItsTwoSweeps) {
    Session s;
    ScriptedDialogs ui;  // one channel: no question
    ASSERT_TRUE(OpenDataFile(s, ui, TestDataDir() / "2020_06_16_0001.abf"));
    const Recording& r = s.recording;
    EXPECT_EQ(r.header.nOperationMode, 1);
    EXPECT_EQ(r.header.lActualAcqLength, 33080);
    EXPECT_EQ(r.header.lActualEpisodes, 2);
    EXPECT_FLOAT_EQ(r.SampleInterval, 100);
    EXPECT_EQ(r.ADCUnits, "pA");
    EXPECT_NEAR(r.Bit2pA2(1), 0.30517576675492886, 1e-7);
    const std::int16_t first[] = {2, 1, 3, 3, 1};
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r.GetSampleValue(i), first[i]);
    EXPECT_EQ(r.GetSampleValue(1000), 1);

    // The sweeps' starts (in sample intervals, fSynchTimeUnit being 0) and lengths.
    ui.ExpectAsk("Inter-event Interval", std::nullopt, Answer::No);
    menu_ExtractSynchArray(s, ui, SynchTarget::DataArray1);
    ASSERT_EQ(s.dataArray1.values.size(), 3u);
    EXPECT_FLOAT_EQ(s.dataArray1(1), 2697.9f);
    EXPECT_FLOAT_EQ(s.dataArray1(2), 5997.9f);
    std::vector<std::uint8_t> pairs(16);
    r.source->Read(std::int64_t(r.header.lSynchArrayPtr) * 512, pairs);
    EXPECT_EQ(ReadI32(pairs, 4), 22040);
    EXPECT_EQ(ReadI32(pairs, 12), 11040);

    const auto rows = DatInfoRows(s);
    ASSERT_GT(rows.size(), 11u);
    EXPECT_EQ(rows[2].second, "2.3");  // FileVersionNumber
    EXPECT_EQ(rows[5].second, "Clampex");
    EXPECT_EQ(rows[11].second, "1");  // OperationMode
}

// ---------------------------------------------------------------------------------------
// Files built byte by byte.

TEST(Abf2Reader, BuildsTheHeaderFromTheSections) {
    Abf2Builder b;
    b.adcNumbers = {3, 1};
    b.units = {"mV", "\xb5V"};
    b.sequenceInterval = 50;
    b.samples = {10, 20, 11, 21, 12, 22};
    b.tags = {{1234, "drug on"}};
    b.synch = {{0, 4}, {100, 2}};
    b.operationMode = 1;
    b.telegraph = 1;
    b.telegraphGain = 5;
    const auto read = Read(b.Build());
    ASSERT_TRUE(std::holds_alternative<Abf2Header>(read)) << std::get<Abf2Error>(read).what;
    const AbfHeader& h = std::get<Abf2Header>(read).header;
    EXPECT_EQ(h.nADCNumChannels, 2);
    EXPECT_EQ(h.fADCSampleInterval, 25);
    EXPECT_EQ(h.nADCSamplingSeq[0], 3);
    EXPECT_EQ(h.nADCSamplingSeq[1], 1);
    EXPECT_EQ(h.nADCSamplingSeq[2], -1);
    EXPECT_EQ(h.Units(3), "mV");
    EXPECT_EQ(h.Units(1), "\xb5V");  // Latin-1 micro sign, as an ABF 1.x file stores it
    EXPECT_EQ(h.Units(0), "");
    EXPECT_EQ(h.fInstrumentScaleFactor[3], 0.5f);
    EXPECT_EQ(h.fInstrumentScaleFactor[0], 1.0f);
    EXPECT_EQ(h.nTelegraphEnable[1], 1);
    EXPECT_EQ(h.fTelegraphAdditGain[1], 5);
    // The first sampled ADC with its telegraph on, as ABF 1.x writers stored it.
    EXPECT_EQ(h.nAutosampleEnable, 1);
    EXPECT_EQ(h.nAutosampleADCNum, 3);
    EXPECT_EQ(h.fAutosampleAdditGain, 5);
    EXPECT_EQ(h.lFileStartTime, 3723);  // 01:02:03.456, the milliseconds kept apart
    EXPECT_EQ(ReadI16(h.raw, 366), 456);
    EXPECT_EQ(h.FileComment(), "a comment");

    // Opened: tags read, channel 0 is ADC 3 with its telegraphed gain applied once.
    TempDir dir;
    WriteBytes(dir.path() / "b.abf", b.Build());
    Session s;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
    ASSERT_TRUE(OpenDataFile(s, ui, dir.path() / "b.abf"));
    EXPECT_EQ(s.recording.ChannelGain, 2.5f);  // 0.5 x telegraph 5
    EXPECT_EQ(s.recording.ADCUnits, "\xb5V");
    EXPECT_EQ(s.recording.GetSampleValue(2), 22);
    ASSERT_EQ(s.recording.TagRecords.size(), 1u);
    EXPECT_EQ(s.recording.TagRecords[0].lTagTime, 1234);
    EXPECT_EQ(Text(s.recording.TagRecords[0].sComment), "drug on");
}

struct BadCase {
    const char* name;
    std::function<void(std::vector<std::uint8_t>&)> damage;
    Abf2ErrorKind kind;
    const char* what;  // a part of the sentence
};

TEST(Abf2Reader, DamagedFilesAreRefusedWithTheirReason) {
    using B = Abf2Builder;
    namespace t = testing;
    const BadCase cases[] = {
        {"ADC section past the end", [](auto& b) { B::SetSection(b, t::kAbf2Adc, 4000, 128, 1); },
         Abf2ErrorKind::Truncated, "the ADC section (block 4000, 1 entries of 128 bytes) runs past"},
        {"protocol count past the end",
         [](auto& b) { B::SetSection(b, t::kAbf2Protocol, 1, 512, std::int64_t(1) << 40); },
         Abf2ErrorKind::Truncated, "the Protocol section"},
        {"record size times count overflows",
         [](auto& b) { B::SetSection(b, t::kAbf2Strings, 3, 0xffffffffu, 1); },
         Abf2ErrorKind::Truncated, "the Strings section"},
        {"absurd channel count", [](auto& b) { B::SetSection(b, t::kAbf2Adc, 2, 1, 1 << 30); },
         Abf2ErrorKind::Truncated, "the ADC section"},
        {"seventeen channels", [](auto& b) { B::SetSection(b, t::kAbf2Adc, 2, 16, 17); },
         Abf2ErrorKind::InconsistentHeader, "gives 17 input channels"},
        {"no channels", [](auto& b) { B::SetSection(b, t::kAbf2Adc, 2, 128, 0); },
         Abf2ErrorKind::InconsistentHeader, "gives 0 input channels"},
        {"negative count", [](auto& b) { B::SetSection(b, t::kAbf2Tag, 5, 64, -3); },
         Abf2ErrorKind::InconsistentHeader, "the Tag section gives a negative count (-3)"},
        {"overlapping sections", [](auto& b) { B::SetSection(b, t::kAbf2Strings, 2, 200, 4); },
         Abf2ErrorKind::InconsistentHeader, "the Strings section (block 2) overlaps the ADC section"},
        {"section over the file header", [](auto& b) { B::SetSection(b, t::kAbf2Protocol, 0, 512, 1); },
         Abf2ErrorKind::InconsistentHeader, "overlaps the file header"},
        {"synch array inside the data",
         [](auto& b) { B::SetSection(b, t::kAbf2Synch, 4, 8, 2); },
         Abf2ErrorKind::InconsistentHeader, "the SynchArray section (block 4) overlaps the Data section"},
        {"short ADC records", [](auto& b) { B::SetSection(b, t::kAbf2Adc, 2, 40, 1); },
         Abf2ErrorKind::InconsistentHeader, "the ADC records are 40 bytes long"},
        {"no protocol", [](auto& b) { B::SetSection(b, t::kAbf2Protocol, 0, 0, 0); },
         Abf2ErrorKind::InconsistentHeader, "the Protocol section is missing"},
        {"ADC number 16", [](auto& b) { B::Put<std::int16_t>(b, 1024, 16); },
         Abf2ErrorKind::InconsistentHeader, "channel 0 gives ADC number 16"},
        {"float samples", [](auto& b) { B::Put<std::uint16_t>(b, 30, 1); },
         Abf2ErrorKind::FloatingPoint, "floating-point"},
        {"4-byte samples", [](auto& b) { B::SetSection(b, t::kAbf2Data, 4, 4, 4); },
         Abf2ErrorKind::FloatingPoint, "floating-point"},
        {"3-byte samples", [](auto& b) { B::SetSection(b, t::kAbf2Data, 4, 3, 4); },
         Abf2ErrorKind::Unsupported, "3 bytes each"},
        {"too many samples for ABF 1.x",
         [](auto& b) { B::SetSection(b, t::kAbf2Data, 4, 2, std::int64_t(1) << 31); },
         Abf2ErrorKind::Unsupported, "2147483648 samples"},
        {"data beyond any block", [](auto& b) { B::SetSection(b, t::kAbf2Data, 0x80000000u, 2, 4); },
         Abf2ErrorKind::InconsistentHeader, "the Data section starts at block 2147483648"},
        {"cut inside the section map", [](auto& b) { b.resize(300); }, Abf2ErrorKind::Truncated,
         "too short for the header"},
    };
    for (const BadCase& c : cases) {
        Abf2Builder b;
        b.samples = {1, 2, 3, 4};
        auto bytes = b.Build();
        c.damage(bytes);
        const auto read = Read(bytes);
        ASSERT_TRUE(std::holds_alternative<Abf2Error>(read)) << c.name;
        const Abf2Error& e = std::get<Abf2Error>(read);
        EXPECT_EQ(e.kind, c.kind) << c.name << ": " << e.what;
        EXPECT_NE(e.what.find(c.what), std::string::npos) << c.name << ": " << e.what;
    }

    // "ABF2" over random bytes: a reason, never a crash.
    std::vector<std::uint8_t> noise(4096);
    std::uint32_t x = 12345;
    for (auto& v : noise) v = std::uint8_t((x = x * 1103515245 + 12345) >> 16);
    std::memcpy(noise.data(), "ABF2", 4);
    EXPECT_TRUE(std::holds_alternative<Abf2Error>(Read(noise)));
}

TEST(Abf2Reader, WhatCanBeReadIsReadWithAWarning) {
    Abf2Builder b;
    b.samples = std::vector<std::int16_t>(600, 7);
    b.tags = {{10, "a"}, {20, "b"}};
    b.synch = {{0, 300}, {1000, 300}};
    TempDir dir;

    // Strings without a terminator end with their section.
    auto bytes = b.Build();
    const std::size_t strings = 512 * 3 + 44;
    for (std::size_t i = strings; i < strings + 40; ++i)
        if (bytes[i] == 0) bytes[i] = 'x';
    auto read = Read(bytes);
    ASSERT_TRUE(std::holds_alternative<Abf2Header>(read));
    EXPECT_EQ(std::get<Abf2Header>(read).header.CreatorInfo(), "Clampexxa commen");

    // Tags of another record size are left out; a Synch Array past the end is kept, counted.
    bytes = b.Build();
    Abf2Builder::SetSection(bytes, testing::kAbf2Tag, Abf2Builder::BlockOf(bytes, testing::kAbf2Tag),
                            60, 2);
    Abf2Builder::SetSection(bytes, testing::kAbf2Synch, Abf2Builder::BlockOf(bytes, testing::kAbf2Synch),
                            8, 100);
    read = Read(bytes);
    ASSERT_TRUE(std::holds_alternative<Abf2Header>(read));
    const auto& ok = std::get<Abf2Header>(read);
    EXPECT_EQ(ok.header.lNumTagEntries, 0);
    EXPECT_EQ(ok.header.lSynchArraySize, 100);
    ASSERT_EQ(ok.warnings.size(), 2u);
    EXPECT_EQ(ok.warnings[0], "the tags are 60-byte records, not 64; they are left out");
    EXPECT_EQ(ok.warnings[1], "the Synch Array lists 100 segments but the file holds 64; the "
                              "others read as zeros");

    // A data section shorter than its count: opened, read as far as it goes, with a warning.
    bytes = b.Build();
    bytes.resize(512 * 4 + 800);
    WriteBytes(dir.path() / "cut.abf", bytes);
    Session s;
    ScriptedDialogs ui;
    ASSERT_TRUE(OpenDataFile(s, ui, dir.path() / "cut.abf"));
    EXPECT_EQ(s.recording.GetSampleValue(399), 7);
    EXPECT_EQ(s.recording.GetSampleValue(400), 0);
    const auto& w = s.recording.warnings;
    EXPECT_NE(std::find(w.begin(), w.end(),
                        "cut.abf: the header gives 600 samples but the file holds only 400 "
                        "(truncated file?); the missing samples read as zeros."),
              w.end());

    // A refused file: the message names the file and the fault.
    bytes = b.Build();
    Abf2Builder::SetSection(bytes, testing::kAbf2Adc, 9999, 128, 1);
    WriteBytes(dir.path() / "bad.abf", bytes);
    ui.ExpectMessage("Inconsistent ABF Header",
                     "The ABF 2 file bad.abf cannot be opened (byte 5119488): the ADC section "
                     "(block 9999, 1 entries of 128 bytes) runs past the end of the file (4608 "
                     "bytes).");
    EXPECT_FALSE(OpenDataFile(s, ui, dir.path() / "bad.abf"));
    EXPECT_FALSE(s.recording.FileIsOpen);
}

}  // namespace
}  // namespace ardel

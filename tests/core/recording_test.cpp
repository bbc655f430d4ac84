// The recording's sample access and conversions: TotalBlocks, the scale factors with the
// telegraph rule, the three screen buffers and their loading rule, GetSampleValue and
// GetAverageValue at and beyond the buffer edges, and the unit routines.
#include "core/recording.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "abf_files.h"
#include "core/abf_build.h"
#include "core/open_file.h"
#include "core/session.h"
#include "support/scripted_dialogs.h"
#include "support/synthetic.h"

namespace ardel {
namespace {

using testing::AbfFileBuilder;
using testing::Ramp;
using testing::ScriptedDialogs;
using testing::TempDir;

TEST(TotalBlocks, WholeBlocksOfOneChannelAndNeverZero) {
    struct Case {
        std::int32_t acq;
        std::int16_t channels;
        std::int32_t blocks;
    } cases[] = {
        {0, 1, 1},         {1, 1, 1},        {255, 1, 1},  {256, 1, 1},  {511, 1, 1},
        {512, 1, 2},       {1535, 2, 2},     {1536, 2, 3}, {1536, 3, 2}, {150000, 1, 585},
        {618222, 2, 1207}, {160000, 4, 156}, {767, 3, 1},  // 0.998 Blocks of each of 3 channels
    };
    for (const auto& c : cases) {
        AbfHeader h;
        h.lActualAcqLength = c.acq;
        h.nADCNumChannels = c.channels;
        EXPECT_EQ(OpenSequenceTotalBlocks(h), c.blocks) << c.acq << " samples, " << c.channels;
    }
}

TEST(FreshRecording, SampleRoutinesGiveZeroBeforeAnyFileIsOpened) {
    // Nothing is dimensioned yet: a read is a subscript error, which gives 0. Run in a child
    // process so that a crash fails this test alone.
    EXPECT_EXIT(
        {
            Recording r;
            bool zeros = true;
            for (std::int32_t i : {-1, 0, 1, 1023, 1024, 2047})
                zeros = zeros && r.GetSampleValue(i) == 0;
            const auto avg = r.GetAverageValue(10, 1, 3);
            std::exit(zeros && (!avg || *avg == 0) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

// Gain factors chosen so that every product is exact: programmable 2, instrument 0.5,
// signal 3 give 3 without the additional gain.
TEST(ChannelScaling, TelegraphRuleFromVersion165AndStoredAutosampleValuesBefore) {
    struct Case {
        const char* what;
        float version;
        std::int16_t telegraph;  // nTelegraphEnable of ADC 0, fTelegraphAdditGain 5
        std::int16_t enable, adc;
        float autoGain;  // stored nAutosampleEnable, nAutosampleADCNum, fAutosampleAdditGain
        int channel;
        float gain;
    } cases[] = {
        {"telegraph on from 1.65", 1.65f, 1, 0, 0, 0, 0, 15},
        {"telegraph off switches the stored gain off", 1.65f, 0, 1, 0, 20, 0, 3},
        {"only 1 means on", 1.65f, 2, 1, 0, 20, 0, 3},
        {"telegraph and stored gain of the same ADC: once", 1.83f, 1, 1, 0, 20, 0, 15},
        {"1.64 ignores the telegraph", 1.64f, 1, 0, 0, 0, 0, 3},
        {"1.64 trusts the stored gain", 1.64f, 0, 1, 0, 20, 0, 60},
        {"... of its own ADC only", 1.64f, 0, 1, 0, 20, 1, 3},
        {"... which may be another", 1.64f, 1, 1, 1, 20, 1, 60},
        {"... when enabled", 1.64f, 0, 0, 1, 20, 1, 3},
        {"... and above 0", 1.64f, 0, 1, 1, 0, 1, 3},
    };
    for (const auto& c : cases) {
        AbfBuildSpec spec;
        spec.channels = 2;
        spec.fileVersion = c.version;
        spec.scaleFactors = {0.5f, 0.5f};
        Recording r;
        r.header = MakeAbfHeader(spec, 1024);
        AbfHeader& h = r.header;
        for (int a = 0; a < 16; ++a) {
            h.fADCProgrammableGain[a] = 2;
            h.fSignalGain[a] = 3;
        }
        h.nTelegraphEnable[0] = c.telegraph;
        h.fTelegraphAdditGain[0] = 5;
        h.nAutosampleEnable = c.enable;
        h.nAutosampleADCNum = c.adc;
        h.fAutosampleAdditGain = c.autoGain;
        r.ChannelIndex = std::uint8_t(c.channel);
        r.ApplyChannelScaling();
        EXPECT_FLOAT_EQ(r.ChannelGain, c.gain) << c.what;
        if (c.version >= 1.65f && c.channel == 0) {
            // The telegraph's values are written into the header's autosample fields.
            EXPECT_EQ(h.nAutosampleEnable, c.telegraph == 1 ? 1 : 0) << c.what;
            if (c.telegraph == 1) {
                EXPECT_FLOAT_EQ(h.fAutosampleAdditGain, 5) << c.what;
            }
        } else {
            EXPECT_EQ(h.nAutosampleEnable, c.enable) << c.what;
            EXPECT_FLOAT_EQ(h.fAutosampleAdditGain, c.autoGain) << c.what;
        }
    }
}

TEST(ChannelScaling, UsesThePhysicalAdcOfTheSequencePositionAndAddsBothOffsets) {
    AbfBuildSpec spec;
    spec.units = {"pA", "V", "  mV    ", "pA"};
    spec.scaleFactors = {1, 1, 0.25f, 1};
    AbfHeader h = MakeAbfHeader(spec, 1024);
    h.nADCNumChannels = 2;
    h.nADCSamplingSeq[0] = 0;
    h.nADCSamplingSeq[1] = 2;  // sequence position 1 samples ADC 2
    h.fSignalOffset[2] = 1.5f;
    h.fInstrumentOffset[2] = 0.25f;
    h.fSignalOffset[1] = 100;  // ADC 1 is not sampled and must not be used
    Recording r;
    r.header = h;
    r.ChannelIndex = 1;
    r.ApplyChannelScaling();
    EXPECT_FLOAT_EQ(r.ChannelGain, 0.25f);
    // The program adds the two offsets. Other ABF readers take fInstrumentOffset minus
    // fSignalOffset, which would give -1.25 here.
    EXPECT_FLOAT_EQ(r.ChannelOffset, 1.75f);
    EXPECT_EQ(r.ADCUnits, "mV");
    // The trimmed text is stored back into the fixed-length field.
    EXPECT_EQ(FixedText(r.header.sADCUnits[2]), "mV      ");
}

// A session with a synthetic recording opened through the open sequence.
class BufferTest : public ::testing::Test {
  protected:
    static constexpr std::int32_t kN = 1024;  // 4 Blocks per screen
    TempDir dir;
    Session s;
    std::vector<std::int16_t> ch0, ch1;

    void OpenOneChannel(std::size_t points, float blocksPerScreen = 4) {
        ch0 = Ramp(points);
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 50;
        AbfFileBuilder b(spec, {ch0});
        s.recording.BlocksPerScreen = blocksPerScreen;
        ScriptedDialogs ui;
        ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "one.abf")));
    }

    void OpenTwoChannelsAtChannel1(std::size_t points, float blocksPerScreen = 4) {
        ch0 = Ramp(points, -30000, 2);
        ch1 = Ramp(points, 5000, -3);
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 25;
        spec.units = {"pA", "mV"};
        spec.scaleFactors = {0.0005f, 0.01f};
        AbfFileBuilder b(spec, {ch0, ch1});
        s.recording.BlocksPerScreen = blocksPerScreen;
        ScriptedDialogs ui;
        ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
        ASSERT_TRUE(OpenDataFile(s, ui, b.Write(dir / "two.abf")));
    }

    std::int16_t Sample(std::int32_t i) const { return s.recording.GetSampleValue(i); }
    void Step(double blocks) {
        s.recording.ScreenBlock += blocks;
        Display(s);
    }
};

TEST_F(BufferTest, FirstScreenReadsCurrentAndNextAndAZeroPreviousScreen) {
    OpenOneChannel(5000);
    const Recording& r = s.recording;
    EXPECT_EQ(r.ScreenBlock, r.header.lDataSectionPtr);
    EXPECT_EQ(r.ScreenPoints(), kN);
    for (std::int32_t i = 0; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), ch0[std::size_t(i)]) << i;
    // No real screen lies before the first: PreviousScreen is still zeros.
    for (std::int32_t i = -kN; i < 0; ++i) ASSERT_EQ(Sample(i), 0) << i;
    // Outside -N .. 2N-1 the value is 0, whatever the index.
    for (std::int32_t i : {-kN - 1, 2 * kN, 3 * kN, std::numeric_limits<std::int32_t>::min(),
                           std::numeric_limits<std::int32_t>::max()})
        EXPECT_EQ(Sample(i), 0) << i;
}

TEST_F(BufferTest, EveryDisplayCopiesTheCurrentScreenOverThePreviousOne) {
    OpenOneChannel(20000);
    // Redrawing the same screen: the look-back now sees the screen itself.
    Display(s);
    EXPECT_EQ(Sample(-1), ch0[kN - 1]);
    EXPECT_EQ(Sample(-kN), ch0[0]);
    EXPECT_EQ(Sample(0), ch0[0]);

    // One screen forward: the previous screen is the true neighbour.
    Step(4);
    for (std::int32_t i = -kN; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), ch0[std::size_t(kN + i)]) << i;

    // A jump of three screens: the look-back holds the screen shown last (points N..2N-1),
    // not the neighbour of the new position.
    Step(12);
    EXPECT_EQ(Sample(0), ch0[4 * kN]);
    EXPECT_EQ(Sample(kN), ch0[5 * kN]);
    for (std::int32_t i = -kN; i < 0; ++i) ASSERT_EQ(Sample(i), ch0[std::size_t(2 * kN + i)]) << i;

    // And back again: the same rule, backwards.
    s.recording.ScreenBlock = s.recording.header.lDataSectionPtr;
    Display(s);
    EXPECT_EQ(Sample(-1), ch0[5 * kN - 1]);
    EXPECT_EQ(Sample(0), ch0[0]);
}

TEST_F(BufferTest, PastTheEndOfTheRecordingTheBuffersHoldZeros) {
    // 1.5 screens: the next screen is half empty; on the second screen the current screen's
    // tail and the whole next screen are empty.
    OpenOneChannel(kN + kN / 2);
    EXPECT_EQ(s.recording.TotalBlocks, 6);
    EXPECT_EQ(Sample(kN + kN / 2 - 1), ch0.back());
    EXPECT_EQ(Sample(kN + kN / 2), 0);
    Step(4);
    EXPECT_EQ(Sample(kN / 2 - 1), ch0.back());
    for (std::int32_t i = kN / 2; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), 0) << i;
}

TEST_F(BufferTest, AFileShorterThanOneBlockHasOneBlockAndAnEmptyTail) {
    OpenOneChannel(100);
    EXPECT_EQ(s.recording.TotalBlocks, 1);
    EXPECT_EQ(Sample(99), ch0[99]);
    for (std::int32_t i = 100; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), 0) << i;
}

TEST_F(BufferTest, Channel1OfTwoReadsEverySecondSampleOfTheFile) {
    OpenTwoChannelsAtChannel1(6 * kN);
    const Recording& r = s.recording;
    EXPECT_EQ(r.ChannelIndex, 1);
    EXPECT_EQ(r.LastChannelIndex, 1);
    EXPECT_FLOAT_EQ(r.SampleInterval, 2 * r.header.fADCSampleInterval);
    EXPECT_FLOAT_EQ(r.SampleInterval, 50);
    EXPECT_EQ(r.ADCUnits, "mV");
    EXPECT_EQ(r.TotalBlocks, 24);
    for (std::int32_t i = 0; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), ch1[std::size_t(i)]) << i;
    Step(4);
    for (std::int32_t i = -kN; i < 2 * kN; ++i) ASSERT_EQ(Sample(i), ch1[std::size_t(kN + i)]) << i;
    // Switching the channel redraws the same screen for channel 0; that redraw, like every
    // other, copies the current screen over the previous one.
    SelectChannel(s, 0);
    EXPECT_EQ(Sample(0), ch0[kN]);
    EXPECT_EQ(Sample(kN), ch0[2 * kN]);
    EXPECT_EQ(Sample(-1), ch0[2 * kN - 1]);
}

TEST_F(BufferTest, AFractionalScreenLengthMovesByAFractionOfABlockOfEachChannel) {
    OpenTwoChannelsAtChannel1(8 * kN, 2.5f);
    ASSERT_EQ(s.recording.ScreenPoints(), 640);
    EXPECT_EQ(Sample(639), ch1[639]);
    EXPECT_EQ(Sample(640), ch1[640]);
    Step(2.5);
    EXPECT_EQ(Sample(0), ch1[640]);
    EXPECT_EQ(Sample(-1), ch1[639]);
    EXPECT_EQ(Sample(1279), ch1[1919]);

    // A length outside 1 .. 32767 Blocks (a damaged settings file) takes the nearer limit when
    // the buffers are dimensioned for it, so that a non-stop run always moves.
    for (const auto& [asked, taken] : {std::pair{0.0f, 1.0f}, {-3.0f, 1.0f}, {0.2f, 1.0f},
                                       {std::nanf(""), 1.0f}, {1e9f, 32767.0f}}) {
        s.recording.BlocksPerScreen = asked;
        s.recording.DimensionBuffers();
        EXPECT_EQ(s.recording.BlocksPerScreen, taken) << asked;
        EXPECT_EQ(s.recording.ScreenPoints(), std::int32_t(taken) * 256) << asked;
    }
}

TEST_F(BufferTest, GetAverageValueDividesByTheSettingNotByThePointsSummed) {
    OpenOneChannel(20000);
    Step(4);  // a real previous screen
    const Recording& r = s.recording;
    auto sum = [&](std::int32_t i, std::int32_t n) {
        std::int64_t t = 0;
        for (std::int32_t k = i - n; k <= i + n; ++k) t += ch0[std::size_t(kN + k)];
        return t;
    };
    // Odd setting: exactly that many points.
    EXPECT_EQ(r.GetAverageValue(10, 1, 3), std::int16_t(sum(10, 1) / 3));
    EXPECT_EQ(r.GetAverageValue(10, 0, 1), Sample(10));
    // Even setting 2: three points summed, divided by 2 (the ramp makes them consecutive
    // values, so the result is 1.5 times the middle one).
    ASSERT_EQ(sum(100, 1) % 2, 0);
    EXPECT_EQ(r.GetAverageValue(100, 1, 2), std::int16_t(sum(100, 1) / 2));
    // Even setting 4: five points over 4, halves to even.
    for (std::int32_t i : {10, 11, 12, 13, 14, 15}) {
        const double exact = double(sum(i, 2)) / 4.0;
        const double even = std::nearbyint(exact);  // default rounding: halves to even
        EXPECT_EQ(r.GetAverageValue(i, 2, 4), std::int16_t(even)) << i << " " << exact;
    }
    // Across both buffer edges the three-way rule applies to every point.
    EXPECT_EQ(r.GetAverageValue(-1, 1, 3), std::int16_t(std::nearbyint(sum(-1, 1) / 3.0)));
    EXPECT_EQ(r.GetAverageValue(kN, 2, 5), std::int16_t(std::nearbyint(sum(kN, 2) / 5.0)));
}

TEST_F(BufferTest, GetAverageValueFailsWhereAPointLiesOutsideTheBuffers) {
    OpenOneChannel(20000);
    const Recording& r = s.recording;
    EXPECT_TRUE(r.GetAverageValue(-kN + 1, 1, 3).has_value());
    EXPECT_TRUE(r.GetAverageValue(2 * kN - 2, 1, 3).has_value());
    EXPECT_FALSE(r.GetAverageValue(-kN, 1, 3).has_value());
    EXPECT_FALSE(r.GetAverageValue(2 * kN - 1, 1, 3).has_value());
    EXPECT_FALSE(r.GetAverageValue(-5 * kN, 0, 1).has_value());
    EXPECT_FALSE(r.GetAverageValue(std::numeric_limits<std::int32_t>::max(), 2, 4).has_value());
    EXPECT_FALSE(r.GetAverageValue(std::numeric_limits<std::int32_t>::min(), 2, 4).has_value());
}

class UnitTest : public ::testing::Test {
  protected:
    Recording r;
    void SetUp() override {
        // Range 16 and gain 0.5 make one bit exactly 1/1024 of the unit.
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 50;
        spec.adcRange = 16;
        spec.scaleFactors = {0.5f};
        r.header = MakeAbfHeader(spec, 1 << 20);
        r.header.fSignalOffset[0] = 1.5f;
        r.header.fInstrumentOffset[0] = 0.25f;
        r.ApplyChannelScaling();
        r.SampleInterval = 50;
        r.ScreenBlock = r.header.lDataSectionPtr;
    }
};

TEST_F(UnitTest, AmplitudeConversionsUseGainRangeResolutionAndOffset) {
    const double lsb = 1.0 / 1024;  // units per bit
    EXPECT_FLOAT_EQ(r.Bit2pA2(100), float(100 * lsb));
    EXPECT_FLOAT_EQ(r.Bit2pA2(-3), float(-3 * lsb));
    EXPECT_FLOAT_EQ(r.Bit2pA(100), float(100 * lsb + 1.75));
    EXPECT_FLOAT_EQ(r.Bit2pA(0), 1.75f);
    EXPECT_EQ(r.pA2Bit(100 * lsb + 1.75), 100);
    EXPECT_EQ(r.pA2Bit(1.75), 0);
    // Halves to even.
    EXPECT_EQ(r.pA2Bit(100.5 * lsb + 1.75), 100);
    EXPECT_EQ(r.pA2Bit(101.5 * lsb + 1.75), 102);
    EXPECT_EQ(r.pA2Bit(-2.5 * lsb + 1.75), -2);
    // Beyond 16 bits the conversion overflows.
    EXPECT_EQ(r.pA2Bit(32767 * lsb + 1.75), 32767);
    EXPECT_FALSE(r.pA2Bit(40000 * lsb).has_value());
}

TEST_F(UnitTest, TimesCountFromTheStartOfTheRecording) {
    EXPECT_FLOAT_EQ(r.Bit2msec(20), 1.0f);
    EXPECT_FLOAT_EQ(r.Bit2msec(-3), -0.15f);
    EXPECT_FLOAT_EQ(r.CalculateTime(0), 0);
    EXPECT_FLOAT_EQ(r.CalculateTime(-20), -1);
    r.ScreenBlock += 4;
    EXPECT_FLOAT_EQ(r.CalculateTime(0), 51.2f);  // 1024 points of 50 us
    EXPECT_FLOAT_EQ(r.CalculateTime(10), 51.7f);
    EXPECT_EQ(r.CalculateTimeBit(51.2), 0);
    EXPECT_EQ(r.CalculateTimeBit(50.2), -20);
    EXPECT_EQ(r.CalculateTimeBit(0), -1024);
}

TEST_F(UnitTest, CalculateTimeOfCalculateTimeBitIsWithinOneSample) {
    const double oneSampleMs = r.SampleInterval / 1000.0;
    for (double offsetBlocks : {0.0, 4.0, 7.5, 123.25, 40000.0}) {
        r.ScreenBlock = r.header.lDataSectionPtr + offsetBlocks;
        for (double t : {0.0, 0.024, 0.026, 1.0, 17.3333, 512.0125, 9999.99, 123456.789}) {
            auto i = r.CalculateTimeBit(t);
            ASSERT_TRUE(i.has_value()) << t;
            EXPECT_NEAR(r.CalculateTime(*i), t, oneSampleMs * (1 + 1e-6) + t * 1e-7)
                << "t " << t << " at block offset " << offsetBlocks;
        }
    }
}

}  // namespace
}  // namespace ardel

namespace ardel::testing {
namespace {

TEST(ScreenBuffersBySize, AWideScreenOfManyChannelsHoldsNoMoreThanTheFileCanFill) {
    // 16 channels of 2000 points and a screen of 32767 Blocks: zero-filled buffers of the full
    // screen would take 16 x 32767 x 256 x 2 bytes each, 800 MB for the three.
    TempDir dir;
    std::vector<std::vector<std::int16_t>> channels;
    for (int c = 0; c < 16; ++c) channels.push_back(Ramp(2000, std::int16_t(100 * c), 1));
    AbfBuildSpec spec;
    spec.channels = 16;
    spec.units.assign(16, "pA");
    spec.scaleFactors.assign(16, 0.0005f);
    const auto file = WriteAbf(dir / "wide.abf", spec, channels);
    Session s;
    s.recording.BlocksPerScreen = 32767;
    ScriptedDialogs ui;
    ui.ExpectInput("Enter Channel Number", std::nullopt, "5");
    ASSERT_TRUE(OpenDataFile(s, ui, file));
    const Recording& r = s.recording;
    ASSERT_EQ(r.ScreenPoints(), 32767 * 256);
    for (const auto* b : {&r.PreviousScreen, &r.CurrentScreen, &r.NextScreen})
        EXPECT_LE(b->size() * 2, 16 * 2000 * 2 + 6144 + 32) << "bytes held beyond the file's";
    // What is held reads as the file; the rest of the screen reads 0 as before.
    for (std::int32_t i = 0; i < 2000; ++i) ASSERT_EQ(r.GetSampleValue(i), channels[5][std::size_t(i)]);
    for (std::int32_t i : {2000, 100000, r.ScreenPoints() - 1, r.ScreenPoints(), 2 * r.ScreenPoints() - 1, -1})
        EXPECT_EQ(r.GetSampleValue(i), 0) << i;
    EXPECT_EQ(r.GetAverageValue(2001, 1, 3), 0);
    EXPECT_EQ(r.GetAverageValue(1999, 1, 3),
              std::int16_t(std::nearbyint((channels[5][1998] + channels[5][1999]) / 3.0)));
}

}  // namespace
}  // namespace ardel::testing

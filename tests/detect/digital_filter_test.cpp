// The digital filters judged by what they do to signals: pass and stop bands, the Butterworth's
// -3 dB point, causality, the cut-off limits, the three-screen run, the detection on filtered
// buffers, and the Gaussian low-pass.
#include "detect/digital_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

#include <liquid/liquid.h>

#include "core/number_text.h"
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

constexpr double kFs = 20000;
constexpr double kPi = std::numbers::pi;

double Db(double ratio) {
    return 20 * std::log10(ratio);
}

// Amplitude of the sinusoid of frequency f in the last `window` samples (a whole number of
// periods), by projection on sine and cosine.
double Amplitude(const std::vector<double>& y, double f, std::size_t window) {
    double c = 0, s = 0;
    for (std::size_t i = y.size() - window; i < y.size(); ++i) {
        c += y[i] * std::cos(2 * kPi * f * double(i) / kFs);
        s += y[i] * std::sin(2 * kPi * f * double(i) / kFs);
    }
    return 2 * std::hypot(c, s) / double(window);
}

// Gain in dB of the filter for a sinusoid of f Hz, once the start has died away.
double SteadyGainDb(const IirFilter& filter, double f) {
    std::vector<double> x(40000);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(2 * kPi * f * double(i) / kFs);
    filter.Apply(x);
    return Db(Amplitude(x, f, 8000));
}

TEST(DigitalFilterDesign, EachTypePassesItsPassBandStopsItsStopBandAndIsCausal) {
    const double fc = 1000;
    for (int type = 0; type < 8; ++type) {
        SCOPED_TRACE(kFilterTypeCaptions[std::size_t(type)]);
        const auto filter = DesignDigitalFilter(type, kFs, fc);
        ASSERT_TRUE(filter);
        EXPECT_EQ(filter->sections.size(), 4u);  // order 8 in second-order sections
        const bool highPass = type % 2 == 1;
        const double pass = highPass ? 4 * fc : fc / 4;
        const double stop = highPass ? fc / 2 : 2 * fc;
        const double passDb = SteadyGainDb(*filter, pass);
        EXPECT_LE(passDb, 0.05);
        EXPECT_GE(passDb, -kFilterRippleDb - 0.05);
        // Butterworth falls 48 dB in the octave; the others reach their attenuation sooner.
        EXPECT_LE(SteadyGainDb(*filter, stop), type < 2 ? -45.0 : -55.0);
        // Causal: nothing comes out before the impulse goes in.
        std::vector<double> x(2000, 0.0);
        x[500] = 1000;
        filter->Apply(x);
        EXPECT_EQ(std::count(x.begin(), x.begin() + 500, 0.0), 500);
        EXPECT_NE(x[500], 0.0);
    }
}

TEST(DigitalFilterDesign, ButterworthIsThreeDecibelsDownAtItsCutoffEvenForDriftRemoval) {
    for (double fc : {1.0, 100.0, 1000.0, 5000.0}) {
        for (int type : {0, 1}) {
            const auto filter = DesignDigitalFilter(type, kFs, fc);
            ASSERT_TRUE(filter);
            EXPECT_NEAR(Db(std::abs(filter->Response(fc / kFs))), -3.0103, 0.01)
                << kFilterTypeCaptions[std::size_t(type)] << " at " << fc;
        }
    }
    // A high-pass of 1 Hz at 20 kHz takes a step out completely: its poles sit 3e-4 from 1,
    // where single-precision coefficients would not hold them.
    const auto hp = DesignDigitalFilter(1, kFs, 1);
    std::vector<double> step(400000, 1000.0);
    hp->Apply(step);
    EXPECT_LT(std::abs(step.back()), 0.01);
    EXPECT_GT(step.front(), 999.0);
}

TEST(DigitalFilterDesign, StopBandsAndInverseChebyshevCornersLieWhereTheHelpTextSays) {
    const double fc = 1000 / kFs;
    auto worst = [](const IirFilter& f, double from, double to) {
        double w = -1e9;
        for (int i = 0; i <= 400; ++i)
            w = std::max(w, Db(std::abs(f.Response(from + (to - from) * i / 400.0))));
        return w;
    };
    // Inverse Chebyshev: the attenuation holds from the cut-off on (low-pass) or up to it
    // (high-pass); elliptic: from a fifth of the cut-off beyond it.
    const double limit = -kFilterAttenuationDb + 0.01;
    EXPECT_LE(worst(*DesignDigitalFilter(4, kFs, 1000), fc, 0.5), limit);
    EXPECT_LE(worst(*DesignDigitalFilter(5, kFs, 1000), 0, fc), limit);
    EXPECT_LE(worst(*DesignDigitalFilter(6, kFs, 1000), 1.2 * fc, 0.5), limit);
    EXPECT_LE(worst(*DesignDigitalFilter(7, kFs, 1000), 0, fc / 1.2), limit);
    // The inverse Chebyshev's -3 dB points, as the help text gives them.
    auto minus3 = [](const IirFilter& f, bool rising) {
        for (int i = 1; i < 5000; ++i) {
            const double x = 0.5 * i / 5000.0;
            const double g = Db(std::abs(f.Response(x)));
            if (rising ? g > -3 : g < -3) return x;
        }
        return 0.0;
    };
    EXPECT_NEAR(minus3(*DesignDigitalFilter(4, kFs, 1000), false) / fc, 0.7, 0.05);
    EXPECT_NEAR(minus3(*DesignDigitalFilter(5, kFs, 1000), true) / fc, 1.5, 0.1);
}

TEST(DigitalFilterDesign, AgreesWithLiquidsOwnDesignerWhereSinglePrecisionSuffices) {
    const double fc = 0.05;
    const liquid_iirdes_filtertype families[4] = {LIQUID_IIRDES_BUTTER, LIQUID_IIRDES_CHEBY1,
                                                  LIQUID_IIRDES_CHEBY2, LIQUID_IIRDES_ELLIP};
    for (int type = 0; type < 8; ++type) {
        const auto mine = DesignDigitalFilter(type, kFs, fc * kFs);
        iirfilt_rrrf ref = iirfilt_rrrf_create_prototype(
            families[type / 2], type % 2 ? LIQUID_IIRDES_HIGHPASS : LIQUID_IIRDES_LOWPASS,
            LIQUID_IIRDES_SOS, kFilterOrder, float(fc), 0.0f, float(kFilterRippleDb),
            float(kFilterAttenuationDb));
        for (int i = 1; i < 100; ++i) {
            const double f = 0.5 * i / 100.0;
            std::complex<float> h;
            iirfilt_rrrf_freqresponse(ref, float(f), &h);
            const double refDb = Db(std::abs(h));
            if (refDb > -40) {
                EXPECT_NEAR(Db(std::abs(mine->Response(f))), refDb, 0.05)
                    << kFilterTypeCaptions[std::size_t(type)] << " at " << f;
            }
        }
        iirfilt_rrrf_destroy(ref);
    }
}

TEST(DigitalFilterDesign, CutoffsOutsideTheOpenBandAreRefused) {
    for (double fc : {0.0, -10.0, kFs / 2, kFs / 2 + 1, kFs})
        EXPECT_FALSE(DesignDigitalFilter(0, kFs, fc)) << fc;
    EXPECT_TRUE(DesignDigitalFilter(0, kFs, kFs / 2 - 1));
    EXPECT_FALSE(DesignDigitalFilter(8, kFs, 1000));
    EXPECT_FALSE(DesignDigitalFilter(-1, kFs, 1000));
    EXPECT_FALSE(DesignDigitalFilter(0, 0, 1000));

    EXPECT_FALSE(CutoffMessage(10000, kFs));  // exactly half: no message
    EXPECT_EQ(CutoffMessage(10000.5, kFs).value_or(""),
              "The cutoff frequency has to be less than a half of sampling frequency.  The "
              "sampling frequency of this record is 20000.  Please adjust the cut-off "
              "frequency accordingly.");
}

// A two-channel recording whose channel 1 is a noisy trace with events and channel 0 a ramp.
class FilterSessionTest : public ::testing::Test {
  protected:
    TempDir dir;
    Session s;
    ScriptedDialogs ui;

    void OpenTwoChannels() {
        std::vector<std::int16_t> ramp(8192);
        for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = std::int16_t(i % 2000);
        std::vector<SynthEvent> ev;
        for (std::int64_t p = 700; p < 8000; p += 1500) ev.push_back({p, -300.0, 8, 60});
        const auto trace = testing::MakeTrace(8192, 50, ev, 20);
        AbfBuildSpec spec;
        spec.sampleIntervalUs = 25;  // 50 us a channel
        spec.units = {"mV", "pA"};
        spec.scaleFactors = {0.0005f, 0.0005f};
        const fs::path file = testing::WriteAbf(dir / "two.abf", spec, {ramp, trace});
        ui.ExpectInput("Enter Channel Number", std::nullopt, "1");
        ASSERT_TRUE(OpenDataFile(s, ui, file));
        ASSERT_EQ(s.recording.ChannelIndex, 1);
    }

    std::vector<double> ActiveChannel(const Recording& r) const {
        std::vector<double> v;
        for (const auto* b : {&r.PreviousScreen, &r.CurrentScreen, &r.NextScreen})
            for (std::size_t i = 0; i < b->size() / 2; ++i) v.push_back((*b)[2 * i + 1]);
        return v;
    }
};

TEST_F(FilterSessionTest, FiltersTheActiveChannelOfThreeScreensAsOneRunOnlyForAProperCutoff) {
    OpenTwoChannels();
    InstallDigitalFilter(s, ui);
    s.recording.ScreenBlock += s.recording.BlocksPerScreen;

    // With the box off the buffers keep the file's samples.
    Session plain = s;
    Display(plain);
    s.options.FilterOn = false;
    Display(s);
    EXPECT_EQ(s.recording.CurrentScreen, plain.recording.CurrentScreen);

    // Back on the same screen with the box on: previous, current and next in one run.
    s.recording.ScreenBlock -= s.recording.BlocksPerScreen;
    Display(s);
    s.recording.ScreenBlock += s.recording.BlocksPerScreen;
    s.options.FilterOn = true;
    s.options.FilterType = 0;
    s.options.FilterFreq = "500";
    Display(s);

    std::vector<double> expected = ActiveChannel(plain.recording);
    DesignDigitalFilter(0, 20000, 500)->Apply(expected);
    const std::vector<double> got = ActiveChannel(s.recording);
    ASSERT_EQ(got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_EQ(got[i], std::nearbyint(expected[i])) << i;
    // The other channel is left alone.
    for (std::size_t i = 0; i < s.recording.CurrentScreen.size(); i += 2)
        ASSERT_EQ(s.recording.CurrentScreen[i], plain.recording.CurrentScreen[i]);

    // Cut-offs at or beyond half the rate, at 0 or no number leave the buffers as read; only
    // one beyond half the rate is told.
    ui.ExpectMessage("Digital Filter",
                     "The cutoff frequency has to be less than a half of sampling frequency.  "
                     "The sampling frequency of this record is 20000.  Please adjust the cut-off "
                     "frequency accordingly.");
    for (const char* text : {"10000", "0", "-5", "abc", "15000"}) {
        s.options.FilterFreq = text;
        Display(s);
        Display(plain);
        EXPECT_EQ(s.recording.CurrentScreen, plain.recording.CurrentScreen) << text;
    }
    EXPECT_TRUE(ui.Done());
}

TEST_F(FilterSessionTest, TheLastScreenRunsOnIntoTheZerosPastTheFile) {
    // 5000 points: the screen of points 4096-5119 holds 904 of them, the next screen none. The
    // filter's output past the file is written into the buffers where it is not 0.
    const auto trace = testing::MakeTrace(5000, 300, {{4500, -2000.0, 8, 60}}, 40);
    const fs::path file = testing::WriteAbf(dir / "short.abf", AbfBuildSpec{}, {trace});
    ASSERT_TRUE(OpenDataFile(s, ui, file));
    InstallDigitalFilter(s, ui);
    s.recording.ScreenBlock = 12;
    Display(s);
    s.recording.ScreenBlock = 16;
    Session plain = s;
    Display(plain);
    ASSERT_EQ(s.recording.ScreenPoints(), 1024);
    s.options.FilterOn = true;
    s.options.FilterType = 4;
    s.options.FilterFreq = "1500";
    Display(s);

    std::vector<double> run;
    for (std::int32_t i = -1024; i < 2048; ++i) run.push_back(plain.recording.GetSampleValue(i));
    std::vector<double> filtered = run;
    DesignDigitalFilter(4, 20000, 1500)->Apply(filtered);
    for (std::int32_t i = -1024; i < 2048; ++i) {
        const std::size_t k = std::size_t(i + 1024);
        const double expected = ToInt16(filtered[k]).value_or(std::int16_t(run[k]));
        ASSERT_EQ(s.recording.GetSampleValue(i), expected) << i;
    }
    // Past the file the trace decays towards 0 from the baseline of 300.
    EXPECT_NE(s.recording.GetSampleValue(904), 0);
    EXPECT_NE(s.recording.GetSampleValue(1024), 0);
}

TEST(FilteredDetection, NarrowSpikesVanishUnderALowPassWhileTheEventStays) {
    TempDir dir;
    // One synaptic event and, a screen later, a spike three samples wide and far larger.
    auto trace = testing::MakeTrace(8192, 0, {{1500, -150.0, 8, 60}}, 0);
    for (int k = 0; k < 3; ++k) trace[2600 + std::size_t(k)] = -400;
    const fs::path file = testing::WriteAbf(dir / "spike.abf", AbfBuildSpec{}, {trace});

    auto detect = [&](bool filterOn) {
        Session s;
        ScriptedDialogs ui;
        EXPECT_TRUE(OpenDataFile(s, ui, file));
        s.params.ThresholdAmplitude = 50;
        s.params.AreaThreshold = 1;
        InstallDigitalFilter(s, ui);
        s.options.FilterOn = filterOn;
        s.options.FilterType = 0;
        s.options.FilterFreq = "300";
        Display(s);
        Command1(s, ui);
        Command3(s, ui);
        std::vector<EventRecord> found;
        for (std::int32_t n = 1; n <= s.events.EventCount(); ++n) found.push_back(s.events[n]);
        return found;
    };
    const auto raw = detect(false);
    const auto filtered = detect(true);
    ASSERT_EQ(raw.size(), 2u);
    EXPECT_NEAR(raw[0].Time, 75.0, 0.01);
    EXPECT_NEAR(raw[1].Time, 130.0, 0.01);
    ASSERT_EQ(filtered.size(), 1u);
    // The event is smaller and later: the filter runs forward only.
    EXPECT_GT(filtered[0].Time, raw[0].Time);
    EXPECT_LT(filtered[0].Amplitude, raw[0].Amplitude);
}

TEST(GaussianFilter, HalvesThePowerAtItsCutoffAndKeepsALevelUnchanged) {
    for (double fc : {0.02, 0.05, 0.1}) {
        for (double mult : {1.0, 2.0}) {
            const double f = fc * mult;
            std::vector<double> x(4000);
            for (std::size_t i = 0; i < x.size(); ++i)
                x[i] = 100 * std::cos(2 * kPi * f * double(i));
            const auto y = GaussianFilter(x, fc);
            // At the middle, where the ends play no part; a crest of every frequency here, and
            // the filter has no phase shift, so a crest stays a crest.
            const std::size_t i = 2000;
            EXPECT_NEAR(y[i] / x[i], mult == 1 ? std::sqrt(0.5) : 0.25, 0.005)
                << fc << " x" << mult;
        }
    }
    const std::vector<float> level(300, 42.0f);
    for (float v : GaussianFilter(level, 0.01)) EXPECT_FLOAT_EQ(v, 42.0f);
    const std::vector<double> some{1, 5, 2};
    EXPECT_EQ(GaussianFilter(some, 0), some);
    // A wide cut-off gives the three-point filter, which still keeps a level.
    const std::vector<double> flat(10, 3.0);
    for (double v : GaussianFilter(flat, 0.4)) EXPECT_NEAR(v, 3.0, 1e-12);

    // A bell wider than the data (sigma 13 points, cut at 53, on 20 points) gives what the
    // whole bell would give over the data extended by its ends.
    std::vector<double> shortRun(20);
    for (std::size_t i = 0; i < shortRun.size(); ++i) shortRun[i] = double(i * i % 7);
    const double sigma = std::sqrt(std::log(2.0)) / (2 * kPi) / 0.01;
    const auto wide = GaussianFilter(shortRun, 0.01);
    for (int i = 0; i < 20; ++i) {
        double acc = 0, sum = 0;
        for (int k = -53; k <= 53; ++k) {
            const double w = std::exp(-k * k / (2 * sigma * sigma));
            acc += w * shortRun[std::size_t(std::clamp(i + k, 0, 19))];
            sum += w;
        }
        EXPECT_NEAR(wide[std::size_t(i)], acc / sum, 1e-3) << i;
    }
    // A cut-off far too low for any kernel leaves the mean of the two ends everywhere.
    for (double v : GaussianFilter(std::vector<double>{0, 10, 20, 30}, 1e-300))
        EXPECT_NEAR(v, 15.0, 1e-9);
}

}  // namespace
}  // namespace ardel

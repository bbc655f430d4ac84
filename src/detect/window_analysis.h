// The detector: scans the current screen in fixed chunks, takes each chunk's extreme as a
// candidate and measures it against a baseline window a fixed time before the peak.
#pragma once

#include <cstdint>
#include <optional>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The detection periods in points of the active channel.
struct PointCounts {
    // Periods divided by the sample interval, before rounding.
    double maxRaw = 0, leadRaw = 0, averageRaw = 0, decayRaw = 0;
    std::int32_t MaxPoints = 0, LeadPoints = 0, AveragePoints = 0, DecayPoints = 0;
    std::int32_t PeakHalf = 0;
};

// nullopt when any of the four periods is shorter than one sample interval (or cannot be
// converted): the parameters are improper for this recording.
std::optional<PointCounts> ComputePointCounts(const Recording& rec, const DetectionParameters& p);

// Everything the measuring routines read: the recording, the parameters and the counts.
struct DetectContext {
    const Recording& rec;
    const DetectionParameters& params;
    PointCounts counts;
    int D;  // PeakDirection: +1 or -1; multiplies every comparison

    std::int16_t Sample(std::int32_t i) const { return rec.GetSampleValue(i); }
};

struct Peak {
    std::int32_t index = 0;
    std::int16_t value = 0;
};

// The first point strictly beyond `best` in direction D over first..last (points outside the
// buffers count as 0), and the sum of the samples over first..last.
Peak ScanExtreme(const Recording& rec, int D, std::int32_t first, std::int32_t last, Peak best);
std::int64_t SumSamples(const Recording& rec, std::int32_t first, std::int32_t last);

// area := area + d, rounded; an overflow leaves the area as it was.
void AddToArea(std::int32_t& area, double d);
// AddToArea repeated count times, in a time that does not grow with count.
void AddToAreaTimes(std::int32_t& area, double d, std::int64_t count);

// Walks k from `from` by dir (+1 or -1) up to and including `end`, calling step(k), which
// returns true to stop the walk at k. A run of points whose values, and those of their `reach`
// neighbours on each side, all read 0 because nothing is held there goes to zeroRun(first,
// count)
// instead: it returns true after taking the whole run as points that did not stop the walk,
// or false when the run's first point stops it (step is then called for that point). So a
// walk costs no more than the buffers hold, however long its limit. Returns the point where
// the walk stopped, or the one past `end`.
template <typename Step, typename ZeroRun>
std::int64_t Walk(const Recording& rec, std::int64_t from, int dir, std::int64_t end,
                  std::int64_t reach, Step&& step, ZeroRun&& zeroRun) {
    std::int64_t k = from;
    while ((end - k) * dir >= 0) {
        const Recording::Run run = rec.NextRun(k, dir, end, reach);
        if (run.zero) {
            if (zeroRun(k, run.count)) {
                k += dir * run.count;
                continue;
            }
            step(std::int32_t(k));
            return k;
        }
        for (std::int64_t left = run.count; left > 0; --left, k += dir)
            if (step(std::int32_t(k))) return k;
    }
    return k;
}
// |Bit2pA2(area)| x SampleInterval / 1000, amplitude unit x ms; nullopt for a zero gain.
std::optional<float> AreaUnits(const Recording& rec, std::int32_t area);

// The scan's rise and decay walks from a peak at p with baseline b and amplitude amp (bits):
// back over raw samples to within 1% of the amplitude, forward over three-point means down to
// DecayPercent, the area summed over both. A walk that does not stop ends one past its limit.
struct RiseDecayWalk {
    std::int32_t riseStart = 0;
    std::int32_t decayEnd = 0;
    double decayValue = 0;  // the three-point mean at decayEnd
    std::int32_t area = 0;
};
RiseDecayWalk WalkRiseAndDecay(const DetectContext& c, std::int32_t p, double b, std::int32_t amp);

std::int16_t FindBaseline(const DetectContext& c, std::int32_t p, std::int32_t lead,
                          std::int32_t n);
Peak FindMax(const DetectContext& c, std::int32_t start, std::int32_t length, std::int32_t half);
// Sum of (sample - baseline) over first..last, each step rounded to an integer.
std::int32_t FindArea(const DetectContext& c, std::int32_t first, std::int32_t last,
                      double baseline);
// Rise start: the walk back from the peak to the first point within 1% of the peak's
// amplitude of the baseline; p - lead - 1 when none is.
std::int32_t FindTimetoPeak(const DetectContext& c, std::int32_t p, std::int32_t lead,
                            double baseline);
float Detect1090Rise(const DetectContext& c, std::int32_t p, double v, std::int32_t r, double b);
// nullopt: the point count does not fit 16 bits (an overflow of the old program).
std::optional<std::int16_t> Detect50RiseTime(const DetectContext& c, std::int32_t p, double v,
                                             std::int32_t r, double b);
float DetectHalfWidth(const DetectContext& c, std::int32_t p, double v, std::int32_t r50,
                      double n, double b);
std::int32_t DetectPrepeak(const DetectContext& c, std::int32_t p);

// "Analyse this window" (F9).
void Command1(Session& s, UserDialogs& ui);
// "Analyse next window" (F10).
void Command2(Session& s, UserDialogs& ui);
// "Nonstop Analys." (F11): to the end, or until NonStopRunning is cleared during a Yield.
void Command3(Session& s, UserDialogs& ui);
// "Interrupt" (F12).
void Command4(Session& s);

// Shared by the scan and the complex-peak search: the four marks of an accepted event.
void AddEventMarks(Session& s, double peakX, double peakValue, double baselineX, double baseline,
                   double riseX, double riseValue, double decayX, double decayValue);

}  // namespace ardel

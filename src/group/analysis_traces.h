// What the waveform analyses of the group window share: which traces a run visits, the peak and
// baseline of a trace, the results row they append, the text over the picture, and the
// difference of a trace scaled to the trace's own range.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/result_table.h"
#include "core/session.h"
#include "group/group_display.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

// What a button of a running analysis reads; a click on it then asks the run to stop.
inline constexpr const char* kInterruptCaption = "Interrupt";

// The traces a run visits by the display type: 0 for the average types, CurrentTrace for the
// individual types, 1..TraceCount for the superimposed types. Empty for an empty store.
std::vector<std::int32_t> TracesToAnalyse(const GrpAnalForm& form, const TraceStore& store);

// Peak direction as a factor: +1 or -1.
inline int Polarity(const DetectionParameters& p) { return p.PeakDirection < 0 ? -1 : 1; }

// Microseconds in points of one channel: the integer part, and the rounded value that an
// assignment to an integer gives. A recording without a sample interval gives 0.
std::int32_t PointsFloor(double microseconds, double interval);
std::int32_t PointsRounded(double microseconds, double interval);

// The peak of a trace and its baseline as the waveform analyses take them.
struct PeakAndBase {
    std::int32_t IPeak = 0;
    std::int32_t Base = 0;
};

// The peak index by the alignment (Combo3): at PeriodStartBaseline for "Peak", else the largest
// Pol * sample from there to the end of the search period, first occurrence, not past
// TracePoints - 2. Then Base, the rounded mean of the PeriodBaselineAverage points that start
// PeriodStartBaseline before the peak; points outside the trace add nothing to the sum, and a
// window shorter than one point leaves Base at 0.
PeakAndBase FindPeakAndBase(std::span<const std::int16_t> trace, const DetectionParameters& p,
                            double interval, std::string_view alignment);

// The difference of consecutive points (the last point's difference is 0) scaled so that its
// largest magnitude equals the largest magnitude of the data. A flat trace gives zeros.
std::vector<double> ScaledDifference(std::span<const double> data);

// A value as the 16-bit store holds it: rounded, limited to the 16-bit range.
std::int16_t ToSample(double value);

// Appends a row to the results table: all 40 values 0, the identifier cut to 60 characters.
ResultRow& AppendResultRow(ResultTable& table, std::string identifier);

// The start of every row's identifier: data file title, " G", Combo1's text.
std::string IdentifierStart(const Session& s, const GrpAnalForm& form);

// The first line printed over the picture: the count of averaged traces, or which trace.
std::string TraceCountLine(const TraceStore& store, std::int32_t trace);

// Event time (ms) of a trace's event; 0 for trace 0 or an event number outside the table.
float TraceEventTime(const Session& s, const TraceStore& store, std::int32_t trace);

}  // namespace ardel::group

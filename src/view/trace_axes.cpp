#include "view/trace_axes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "core/number_text.h"

namespace ardel {

namespace {

constexpr float kMinGain = 0.001f;
constexpr float kMaxGain = 1000.0f;
// The fitted trace leaves a tenth of the picture free above and below.
constexpr double kFillFraction = 0.8;

int ActiveChannel(const Session& s) {
    return std::clamp<int>(s.recording.ChannelIndex, 0, 15);
}

// Enough decimals to tell neighbouring ticks apart, and no more.
std::string TickLabel(double value, double step) {
    const int decimals = std::clamp(int(-std::floor(std::log10(step) + 1e-9)), 0, 9);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, value == 0 ? 0.0 : value);
    return buf;
}

TraceAxis Axis(double lo, double hi, int maxTicks, const auto& positionOf) {
    TraceAxis axis;
    const auto values = NiceTicks(lo, hi, maxTicks);
    const double step = values.size() >= 2 ? values[1] - values[0] : (hi - lo);
    for (double v : values) axis.ticks.push_back({positionOf(v), TickLabel(v, step)});
    return axis;
}

}  // namespace

std::vector<double> NiceTicks(double lo, double hi, int maxTicks) {
    if (lo > hi) std::swap(lo, hi);
    if (!std::isfinite(lo) || !std::isfinite(hi) || !(hi > lo) || maxTicks < 1) return {};
    // The finest round step whose ticks stay within the limit.
    const double top = std::floor(std::log10(hi - lo));
    for (double decade = std::pow(10.0, top - 2); decade <= std::pow(10.0, top + 1); decade *= 10) {
        for (double m : {1.0, 2.0, 5.0}) {
            const double step = m * decade;
            const double first = std::ceil(lo / step - 1e-9);
            const double last = std::floor(hi / step + 1e-9);
            if (last - first + 1 > maxTicks) continue;
            std::vector<double> ticks;
            for (double k = first; k <= last; ++k) ticks.push_back(k * step);
            return ticks;
        }
    }
    return {};
}

TraceAxis TimeAxis(const Session& s, int maxTicks) {
    const Recording& r = s.recording;
    if (!r.FileIsOpen || !(r.SampleInterval > 0) || r.ScreenPoints() < 1) return {};
    const double msPerPoint = double(r.SampleInterval) / 1000.0;
    const double startMs =
        (r.ScreenBlock - double(r.header.lDataSectionPtr)) * 256.0 * msPerPoint;
    const double lengthMs = r.ScreenPoints() * msPerPoint;
    const bool seconds = lengthMs >= 1000.0;
    const double unitMs = seconds ? 1000.0 : 1.0;
    TraceAxis axis = Axis(startMs / unitMs, (startMs + lengthMs) / unitMs, maxTicks,
                          [&](double v) { return (v * unitMs - startMs) / msPerPoint; });
    axis.unit = seconds ? "s" : "ms";
    return axis;
}

TraceAxis AmplitudeAxis(const Session& s, int maxTicks) {
    const Recording& r = s.recording;
    if (!r.FileIsOpen) return {};
    const int c = ActiveChannel(s);
    const double gain = s.display.DisplayGain[std::size_t(c)];
    const double offset = s.display.DisplayOffset[std::size_t(c)];
    // Amplitude is linear in the raw value: a = k * raw + b.
    const double b = r.Bit2pA(0);
    const double k = double(r.Bit2pA(1)) - b;
    if (!(gain > 0) || !std::isfinite(k) || k == 0) return {};
    // The drawing's own centre (32786) so that the ticks sit where the trace is drawn.
    auto rawAt = [&](double y) { return (32786.0 - offset - y) / gain; };
    TraceAxis axis = Axis(k * rawAt(65536) + b, k * rawAt(0) + b, maxTicks, [&](double a) {
        return 32786.0 - offset - gain * ((a - b) / k);
    });
    axis.unit = r.ADCUnits;
    return axis;
}

void AutoScale(Session& s) {
    Recording& r = s.recording;
    const std::int32_t n = r.ScreenPoints();
    if (!r.FileIsOpen || n < 1) return;
    const std::size_t stride = std::max<std::size_t>(1, r.CurrentScreen.size() / std::size_t(n));
    const int c = ActiveChannel(s);
    if (std::size_t(c) >= stride || r.CurrentScreen.size() < std::size_t(n) * stride) return;
    int lo = std::numeric_limits<int>::max(), hi = std::numeric_limits<int>::min();
    for (std::int32_t i = 0; i < n; ++i) {
        const int v = r.CurrentScreen[std::size_t(i) * stride + std::size_t(c)];
        lo = std::min(lo, v);
        hi = std::max(hi, v);
    }
    double gain = kFillFraction * 65536.0 / std::max(1, hi - lo);
    // Three significant digits keep the gain box readable.
    const double decade = std::pow(10.0, std::floor(std::log10(gain)) - 2);
    gain = std::clamp(std::floor(gain / decade) * decade, double(kMinGain), double(kMaxGain));
    s.display.DisplayGain[std::size_t(c)] = float(gain);
    s.display.DisplayOffset[std::size_t(c)] = ToInt32Clamped(
        RoundHalfEven(32786.0 - 32768.0 - double(float(gain)) * (double(lo) + double(hi)) / 2.0));
    Display(s);
}

}  // namespace ardel

#include "view/trace_scene.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/number_text.h"

namespace ardel {

namespace {

constexpr Rgb kBlack{0, 0, 0};
constexpr Rgb kBlue{0, 0, 255};
constexpr Rgb kRed{255, 0, 0};
constexpr Rgb kGreen{0, 255, 0};
constexpr Rgb kYellow{255, 255, 0};
constexpr Rgb kMagenta{255, 0, 255};

constexpr float kMinGain = 0.001f;
constexpr float kMaxGain = 1000.0f;
constexpr float kMinBlocks = 1.0f;
constexpr float kMaxBlocks = 32767.0f;

int ActiveChannel(const Session& s) {
    return std::min<int>(s.recording.ChannelIndex, 15);
}

std::string TimeText(double milliseconds) {
    return Format(milliseconds, "#,###.00") + " ms";
}

// Appends the polyline of one channel. y of a sample is top - gain * sample, the same
// position as CalculateYPosition2 before its rounding.
//
// With more points than pixel columns, each column keeps its first point, its minimum and
// maximum in the order they occur, and its last point. Every segment between two points of a
// column lies within the column and spans at most min..max, and the segment into the next
// column starts at the same last point, so the picture is the one that every point draws.
void AppendChannel(const std::int16_t* data, std::size_t stride, std::int32_t n, int pixelWidth,
                   double top, double gain, std::vector<ScenePoint>& out) {
    auto y = [&](std::int32_t i) { return top - gain * double(data[std::size_t(i) * stride]); };
    if (pixelWidth < 1 || n <= pixelWidth) {
        out.reserve(std::size_t(n));
        for (std::int32_t i = 0; i < n; ++i) out.push_back({double(i), y(i)});
        return;
    }
    const std::int64_t w = pixelWidth;
    out.reserve(std::size_t(w) * 4);
    // Point i falls in column floor(i * w / n); column k starts at ceil(k * n / w).
    std::int32_t start = 0;
    for (std::int64_t col = 0; col < w && start < n; ++col) {
        std::int32_t end = std::int32_t(((col + 1) * n + w - 1) / w);
        end = std::min(end, n);
        if (end <= start) continue;
        const std::int16_t* p = data + std::size_t(start) * stride;
        std::int16_t lo = *p, hi = *p;
        std::int32_t loAt = start, hiAt = start;
        for (std::int32_t i = start + 1; i < end; ++i) {
            p += stride;
            const std::int16_t v = *p;
            if (v < lo) {
                lo = v;
                loAt = i;
            } else if (v > hi) {
                hi = v;
                hiAt = i;
            }
        }
        const std::int32_t order[4] = {start, std::min(loAt, hiAt), std::max(loAt, hiAt), end - 1};
        std::int32_t previous = -1;
        for (std::int32_t i : order) {
            if (i == previous) continue;
            out.push_back({double(i), y(i)});
            previous = i;
        }
        start = end;
    }
}

SceneMark Mark(SceneMark::Kind kind, double x, double y, Rgb color, int penWidth = 1) {
    SceneMark m;
    m.kind = kind;
    m.x = x;
    m.y = y;
    m.color = color;
    m.penWidth = penWidth;
    return m;
}

std::string GroupText(const EventRecord& e) {
    if (e.GroupNumber == 0) return {};
    if (e.GroupNumber == kGroupBurst)
        return "B" + CStr(e.BurstNumber) + "." + CStr(e.BurstEventNumber);
    return CStr(int(e.GroupNumber));
}

// The comment of a tag up to its first zero character.
std::string TagComment(const AbfTag& tag) {
    return TrimNul(std::string_view(tag.sComment.data(), tag.sComment.size()));
}

void AddTableMarks(const Session& s, std::int32_t pointCount, std::size_t stride, double textHeight,
                   std::vector<SceneMark>& marks) {
    const Recording& r = s.recording;
    const DisplayState& d = s.display;
    for (std::int32_t k = 1; k <= s.events.EventCount(); ++k) {
        const EventRecord& e = s.events[k];
        const auto xAt = r.CalculateTimeBit(e.Time);
        if (!xAt || *xAt < 0 || *xAt > pointCount - 1) continue;
        const double x = *xAt;
        const int ch = e.Channel;
        const double peak = double(e.PeakDirection) * double(e.Amplitude) + double(e.Baseline);

        SceneMark peakMark = Mark(SceneMark::Kind::Cross, x, d.CalculateYPosition(peak, ch), kRed);
        peakMark.label = GroupText(e);
        // The label goes beyond the peak: above an upward event, below a downward one.
        if (!peakMark.label.empty()) peakMark.labelDy = (e.PeakDirection < 0 ? 2 : -2) * textHeight;
        marks.push_back(std::move(peakMark));

        const double baselineX =
            x - double(e.BaselineLead) +
            double(s.params.PeriodBaselineAverage) / double(r.SampleInterval) / 2.0;
        marks.push_back(
            Mark(SceneMark::Kind::Cross, baselineX, d.CalculateYPosition(e.Baseline, ch), kGreen));

        // The rise and decay ends sit on the event's own channel of the current screen.
        auto point = [&](double at, Rgb color) {
            if (at < 0 || at > pointCount - 1 || std::size_t(ch) >= stride) return;
            // A point the buffer does not hold reads as 0.
            const std::size_t idx = std::size_t(at) * stride + std::size_t(ch);
            const std::int16_t v = idx < r.CurrentScreen.size() ? r.CurrentScreen[idx] : 0;
            marks.push_back(
                Mark(SceneMark::Kind::Point, at, d.CalculateYPosition(v, ch), color, 4));
        };
        point(x - e.Rise, kYellow);
        point(x + e.Decay, kMagenta);
    }
}

}  // namespace

Rgb ChannelColor(int channel) {
    static constexpr std::array<Rgb, 8> kPens{{{0, 0, 0},
                                               {0, 0, 139},
                                               {0, 100, 0},
                                               {139, 69, 19},
                                               {128, 0, 128},
                                               {0, 128, 128},
                                               {128, 128, 0},
                                               {105, 105, 105}}};
    return kPens[std::size_t(channel < 0 ? 0 : channel) % kPens.size()];
}

Rgb SelectionBlinkColor(std::uint64_t tick) {
    return tick % 2 == 0 ? kBlue : kRed;
}

TraceScene BuildTraceScene(const Session& s, int pixelWidth, double textHeight) {
    TraceScene scene;
    const Recording& r = s.recording;
    const DisplayState& d = s.display;
    const std::int32_t n = r.ScreenPoints();
    scene.width = n;
    // While the channel question of an open is up, the file is open but not yet measured.
    if (!r.FileIsOpen || !(r.SampleInterval > 0)) return scene;

    // Times of the screen's start and end.
    const double ptr = r.header.lDataSectionPtr;
    const double start = (r.ScreenBlock - ptr) * 256.0 * double(r.SampleInterval) / 1000.0;
    const double end = (r.ScreenBlock + double(r.BlocksPerScreen) - ptr) * 256.0 *
                       double(r.SampleInterval) / 1000.0;
    scene.texts.push_back({TimeText(start), 0, 0, TextAnchor::TopLeft, kBlack});
    scene.texts.push_back({TimeText(end), double(n), 0, TextAnchor::TopRight, kBlack});

    const std::size_t stride = std::size_t(r.Stride());
    const bool hidden = d.NonStopRunning && !d.DisplayTrace;
    scene.traceHidden = hidden;

    if (!hidden) {
        const int lastChannel = std::min<int>({int(r.LastChannelIndex), int(stride) - 1, 15});
        scene.traces.reserve(std::size_t(lastChannel) + 1);
        for (int c = 0; c <= lastChannel; ++c) {
            SceneTrace& t = scene.traces.emplace_back();
            t.channel = c;
            t.color = ChannelColor(c);
            const std::int16_t* samples = r.CurrentScreen.data() + c;
            std::size_t step = stride;
            // The buffer holds only what the file filled; the rest of the screen reads as 0.
            std::vector<std::int16_t> padded;
            if (r.CurrentScreen.size() < std::size_t(n) * stride) {
                padded.assign(std::size_t(n), 0);
                for (std::size_t i = 0; i < r.CurrentScreen.size() / stride; ++i)
                    padded[i] = r.CurrentScreen[i * stride + std::size_t(c)];
                samples = padded.data();
                step = 1;
            }
            AppendChannel(samples, step, n, pixelWidth,
                          32786.0 - double(d.DisplayOffset[std::size_t(c)]),
                          double(d.DisplayGain[std::size_t(c)]), t.points);
        }
        if (scene.traces.size() > 1)
            for (const SceneTrace& t : scene.traces)
                scene.legend.push_back({"Channel " + CStr(std::int64_t(t.channel)), 0,
                                        double(t.channel), TextAnchor::TopRight, t.color});

        // The amplitude of one tenth of the picture's height.
        const double tenth = 65536.0 / 10.0 / double(r.ChannelGain) * double(r.header.fADCRange) /
                             double(r.header.lADCResolution) /
                             double(d.DisplayGain[std::size_t(ActiveChannel(s))]);
        if (std::isfinite(tenth))
            scene.texts.push_back({Format(tenth, "#,###.00") + r.ADCUnits, 0, textHeight,
                                   TextAnchor::TopLeft, kBlue});

        // Voice tags. Their times are taken as points of the channel, as they always were.
        for (std::size_t k = 0; k < r.TagRecords.size(); ++k) {
            const AbfTag& tag = r.TagRecords[k];
            const auto x =
                r.CalculateTimeBit(double(tag.lTagTime) * double(r.SampleInterval) / 1000.0);
            if (!x || *x < 0 || *x > n - 1) continue;
            scene.texts.push_back({"V", double(*x), 2.5 * textHeight, TextAnchor::Center, kBlack});
            scene.texts.push_back({CStr(std::int64_t(k + 1)) + " " + TagComment(tag) + "V Tag",
                                   double(*x), 3.5 * textHeight, TextAnchor::Left, kMagenta});
        }

        // Events are left out during a non-stop run for speed.
        if (s.events.EventCount() > 0 && !d.NonStopRunning)
            AddTableMarks(s, n, stride, textHeight, scene.marks);
    }

    for (const TraceMark& m : d.transientMarks) {
        scene.marks.push_back(
            Mark(m.kind == TraceMark::Kind::Point ? SceneMark::Kind::Point : SceneMark::Kind::Cross,
                 m.x, m.y, {m.r, m.g, m.b}, m.penWidth));
    }

    const std::int32_t sel = d.SelectedEvent;
    if (sel >= 1 && sel <= s.events.EventCount()) {
        const EventRecord& e = s.events[sel];
        const auto x = r.CalculateTimeBit(e.Time);
        if (x && *x >= 0 && *x <= n - 1) {
            const double peak = double(e.PeakDirection) * double(e.Amplitude) + double(e.Baseline);
            SceneMark m = Mark(SceneMark::Kind::Cross, double(*x),
                               d.CalculateYPosition(peak, ActiveChannel(s)), kBlack);
            m.selected = true;
            scene.marks.push_back(m);
        }
    }
    return scene;
}

float CalculateAmplitude(const Session& s, double y) {
    const int c = ActiveChannel(s);
    const double raw = (32768.0 - y - double(s.display.DisplayOffset[std::size_t(c)])) /
                       double(s.display.DisplayGain[std::size_t(c)]);
    return s.recording.Bit2pA(RoundHalfEven(raw));
}

std::string Label4Text(const Session& s, double x, double y) {
    const Recording& r = s.recording;
    x = std::clamp(x, 0.0, double(r.ScreenPoints() - 1));
    const float t = r.CalculateTime(x);
    const float amplitude = CalculateAmplitude(s, RoundHalfEven(y));
    return Format(t, "#,###.00") + "ms  " + Format(amplitude, "0.000") + r.ADCUnits;
}

std::string SetDisplayGainText(Session& s, std::string_view text) {
    double v = Val(text);
    std::string shown(text);
    if (v < kMinGain) {
        v = kMinGain;
        shown = CStr(kMinGain);
    } else if (v > kMaxGain) {
        v = kMaxGain;
        shown = CStr(kMaxGain);
    }
    s.display.DisplayGain[std::size_t(ActiveChannel(s))] = float(v);
    Display(s);
    return shown;
}

std::string SetBlocksPerScreenText(Session& s, std::string_view text) {
    double v = Val(text);
    std::string shown(text);
    if (v < kMinBlocks) {
        v = kMinBlocks;
        shown = CStr(kMinBlocks);
    } else if (v > kMaxBlocks) {
        v = kMaxBlocks;
        shown = CStr(kMaxBlocks);
    }
    s.recording.BlocksPerScreen = float(v);
    s.recording.DimensionBuffers();
    Display(s);
    return shown;
}

std::string DisplayGainText(const Session& s) {
    return CStr(s.display.DisplayGain[std::size_t(ActiveChannel(s))]);
}

std::string BlocksPerScreenText(const Session& s) {
    return CStr(s.recording.BlocksPerScreen);
}

void StepDisplayGain(Session& s, int direction) {
    if (direction == 0) return;
    float& gain = s.display.DisplayGain[std::size_t(ActiveChannel(s))];
    const double next = direction > 0 ? double(gain) * 2.0 : double(gain) / 2.0;
    gain = float(std::clamp(next, double(kMinGain), double(kMaxGain)));
    Display(s);
}

void StepBlocksPerScreen(Session& s, int direction) {
    if (direction == 0) return;
    const double b = s.recording.BlocksPerScreen;
    const double next = direction > 0 ? b * 2.0 : b / 2.0;
    s.recording.BlocksPerScreen = float(std::clamp(next, double(kMinBlocks), double(kMaxBlocks)));
    s.recording.DimensionBuffers();
    Display(s);
}

void SetDisplayOffset(Session& s, std::int32_t offset) {
    s.display.DisplayOffset[std::size_t(ActiveChannel(s))] = offset;
    Display(s);
}

void SetScreenFromSlider(Session& s, double value) {
    const double first = s.recording.header.lDataSectionPtr;
    s.recording.ScreenBlock = value < first ? first : value;
    Display(s);
}

std::optional<int> StartTimedDisplay(Session& s, UserDialogs& ui) {
    if (!s.recording.FileIsOpen) return std::nullopt;
    const std::string answer = ui.InputText(
        "Display Interval",
        "How fast do you want to display the data trace? Please enter time interval for each "
        "display in msec.",
        "");
    const double v = RoundHalfEven(Val(answer));
    // A timer of no interval never fires; starting the run then would only hide the marks.
    if (!(v >= 1)) return std::nullopt;
    s.display.NonStopRunning = true;
    return int(std::min(v, 65535.0));
}

bool TimedDisplayTick(Session& s) {
    if (!s.display.NonStopRunning) return false;
    Recording& r = s.recording;
    r.ScreenBlock += r.BlocksPerScreen;
    if (r.ScreenBlock > double(r.header.lDataSectionPtr) + double(r.TotalBlocks)) {
        r.ScreenBlock -= r.BlocksPerScreen;
        s.display.NonStopRunning = false;
    }
    Display(s);
    return s.display.NonStopRunning;
}

}  // namespace ardel

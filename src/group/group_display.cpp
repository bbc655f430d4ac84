#include "group/group_display.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>

#include "core/number_text.h"

namespace ardel::group {

namespace {

bool OneOf(std::string_view type, std::string_view a, std::string_view b) {
    return type == a || type == b;
}

std::int32_t Channels(const AbfHeader& h) {
    return std::max<std::int32_t>(1, h.nADCNumChannels);
}

// Reads `samples` 16-bit values from byte position pos into buffer. A position before the
// start of the file is a failed read that leaves the buffer as it was (the trace then repeats
// the one before); bytes past the end read as 0.
void ReadTrace(const Recording& r, std::int64_t pos, std::vector<std::uint8_t>& bytes,
               std::vector<std::int16_t>& buffer) {
    if (pos < 0 || !r.source) return;
    r.source->Read(pos, std::span<std::uint8_t>(bytes));
    for (std::size_t i = 0; i < buffer.size(); ++i) {
        buffer[i] = std::int16_t(std::uint16_t(bytes[2 * i]) | std::uint16_t(bytes[2 * i + 1]) << 8);
    }
}

// An odd byte position is made even by taking one byte off; the channel frame is not enforced.
std::int64_t EvenPosition(std::int64_t pos) {
    return pos % 2 != 0 ? pos - 1 : pos;
}

std::int16_t Clamp16(double value) {
    return std::int16_t(RoundHalfEven(std::clamp(value, -32768.0, 32767.0)));
}

// Combo4 as a point count, with the message for what the window refuses.
std::optional<std::int32_t> TracePointsOf(UserDialogs& ui, const GrpAnalForm& f) {
    const double blocks = Val(f.Combo4);
    const double points = RoundHalfEven(blocks * 256);
    if (!(points >= 1) || blocks > kMaxTraceBlocks) {
        ui.Message("Blocks to Analyse",
                   "Please enter from 1 to 32767 Blocks to analyse (1 block = 256 points).");
        return std::nullopt;
    }
    return std::int32_t(points);
}

bool StoreFits(UserDialogs& ui, std::int64_t traces, std::int32_t points) {
    const std::int64_t samples = (traces + 2) * std::int64_t(points);
    if (samples <= kMaxStoreSamples) return true;
    ui.Message(kGroupAnalysisTitle,
               "These traces would take " + CStr(std::int64_t(samples * 2 / (1 << 20))) +
                   " MB, more than the " + CStr(std::int64_t(kMaxStoreSamples * 2 / (1 << 20))) +
                   " MB the window keeps for them. Please analyse fewer Blocks or a smaller "
                   "group.");
    return false;
}

void CutEpisodes(const Session& s, GroupWindow& w, std::int32_t points) {
    const Recording& r = s.recording;
    const AbfHeader& h = r.header;
    TraceStore& store = w.store;
    const std::int32_t channels = Channels(h);
    const std::size_t ch = std::min<std::size_t>(r.ChannelIndex, std::size_t(channels - 1));
    std::vector<std::int16_t> buffer(std::size_t(channels) * std::size_t(points), 0);
    std::vector<std::uint8_t> bytes(buffer.size() * 2);
    for (std::int32_t e = 1; e <= store.TraceCount; ++e) {
        const std::int64_t pos = std::int64_t(h.lDataSectionPtr) * 512 +
                                 std::int64_t(e - 1) * h.lNumSamplesPerEpisode * 2;
        ReadTrace(r, EvenPosition(pos), bytes, buffer);
        double baseline = 0;
        if (w.form.ckBaseline) {
            // The mean of the episode's first 5 points; a shorter trace adds what it has.
            double sum = 0;
            for (std::int32_t k = 0; k < std::min(points, 5); ++k) sum += buffer[std::size_t(k) * channels + ch];
            baseline = sum / 5;
        }
        std::int16_t* row = store.Row(e);
        for (std::int32_t k = 0; k < points; ++k)
            row[k] = Clamp16(buffer[std::size_t(k) * channels + ch] - baseline);
    }
}

void CutGroup(const Session& s, GroupWindow& w, double group, std::int32_t points,
              std::int32_t preEvent) {
    const Recording& r = s.recording;
    const AbfHeader& h = r.header;
    const GrpAnalForm& f = w.form;
    TraceStore& store = w.store;
    const std::int32_t channels = Channels(h);
    const bool scaled = IsScaledType(f.Combo2);
    std::vector<std::int16_t> buffer(std::size_t(channels) * std::size_t(points), 0);
    std::vector<std::uint8_t> bytes(buffer.size() * 2);
    std::int32_t n = 0;
    for (std::int32_t e = 1; e <= s.events.EventCount(); ++e) {
        const EventRecord& ev = s.events[e];
        if (double(ev.GroupNumber) != group) continue;
        ++n;
        store.TraceEvent[std::size_t(n)] = std::int16_t(e);
        double correction = 0;
        if (f.Combo3 == "Rise-time") correction = ev.Rise;
        if (f.Combo3 == "Rise 50") correction = ev.Rise50;
        const float align = float(double(ev.Time) * 1000 / r.SampleInterval - correction);
        const double pos = double(h.lDataSectionPtr) * 512 +
                           double(channels) * 2 * (double(align) - preEvent);
        ReadTrace(r, EvenPosition(std::int64_t(RoundHalfEven(pos))), bytes, buffer);
        // A channel the file does not have leaves the row at 0, as the failing statement did.
        if (ev.Channel >= channels) continue;
        std::int16_t* row = store.Row(n);
        const std::size_t ch = ev.Channel;
        for (std::int32_t k = 0; k < points; ++k) {
            const double v = buffer[std::size_t(k) * std::size_t(channels) + ch];
            if (scaled) {
                // A zero amplitude is a division by zero: the point stays 0.
                if (ev.Amplitude == 0) continue;
                row[k] = Clamp16(double(store.MeanAmplitude) / ev.Amplitude * (v - ev.Baseline));
            } else {
                row[k] = Clamp16(f.ckBaseline ? v - ev.Baseline : v);
            }
        }
    }
}

// Row 0: the point-by-point mean of rows 1..TraceCount, halves to even.
void Average(TraceStore& store) {
    const std::size_t points = std::size_t(store.TracePoints);
    std::vector<std::int64_t> sums(points, 0);
    for (std::int32_t n = 1; n <= store.TraceCount; ++n) {
        const std::int16_t* row = store.Row(n);
        for (std::size_t k = 0; k < points; ++k) sums[k] += row[k];
    }
    std::int16_t* avg = store.Row(0);
    for (std::size_t k = 0; k < points; ++k)
        avg[k] = std::int16_t(RoundHalfEven(double(sums[k]) / store.TraceCount));
}

}  // namespace

bool IsScaledType(std::string_view type) {
    return type == "Scaled Average" || type == "Scaled Individual" ||
           type == "Scaled Superimpose";
}
bool IsIndividualType(std::string_view type) {
    return OneOf(type, "Individual", "Scaled Individual");
}
bool IsSuperimposeType(std::string_view type) {
    return OneOf(type, "Superimpose", "Scaled Superimpose");
}

std::string Label6Text(std::int32_t trace, std::int32_t count) {
    return "Trace: " + CStr(trace) + " of " + CStr(count);
}

bool StartDisplay(Session& s, UserDialogs& ui, GroupWindow& w) {
    const Recording& r = s.recording;
    if (w.loading || !r.FileIsOpen) return false;
    GrpAnalForm& f = w.form;
    const AbfHeader& h = r.header;
    const bool episodes = f.Option2_0;
    if (episodes && f.Check10)
        f.Combo4 = CStr(double(h.lNumSamplesPerEpisode) / Channels(h) / 256);
    if (!episodes && s.events.Empty()) return false;
    const auto points = TracePointsOf(ui, f);
    if (!points) return false;
    const std::int32_t preEvent =
        r.SampleInterval > 0 ? std::int32_t(Int(s.params.PeriodStartBaseline / double(r.SampleInterval))) : 0;

    if (episodes) {
        if (h.lActualEpisodes < 1) return false;
        if (!StoreFits(ui, h.lActualEpisodes, *points)) return false;
        w.store.Dimension(h.lActualEpisodes, *points);
        w.store.MeanAmplitude = 0;
        CutEpisodes(s, w, *points);
    } else {
        const double group = Val(f.Combo1);
        std::int64_t count = 0;
        double sum = 0;
        std::int32_t beyond = 0;
        for (std::int32_t e = 1; e <= s.events.EventCount(); ++e) {
            const EventRecord& ev = s.events[e];
            if (double(ev.GroupNumber) != group) continue;
            ++count;
            sum += ev.Amplitude;
            if (e > 32767 && beyond == 0) beyond = e;
        }
        // An empty group leaves the former store and picture as they were.
        if (count == 0) return false;
        if (beyond != 0) {
            ui.Message(kGroupAnalysisTitle,
                       "Event # " + CStr(beyond) +
                           " of this group lies beyond event 32767, the last that the group "
                           "window can take. Please split the event list or regroup the "
                           "events.");
            return false;
        }
        if (!StoreFits(ui, count, *points)) return false;
        w.store.Dimension(std::int32_t(count), *points);
        w.store.MeanAmplitude = ToInt32Clamped(sum / double(count));
        CutGroup(s, w, group, *points, preEvent);
    }
    Average(w.store);
    f.Label6 = "Trace:  0 of " + CStr(w.store.TraceCount);
    w.store.CurrentTrace = 0;
    w.HighlightTrace = -1;
    GroupDisplay(s, w);
    if (f.Check15) {
        // The time-locked cursors keep their points; one beyond the new trace comes back in.
        const std::int32_t last = w.store.TracePoints - 1;
        if (f.Line1X[0] > last) f.Line1X[0] = w.store.TracePoints - 10;
        if (f.Line1X[1] > last) f.Line1X[1] = w.store.TracePoints - 5;
    }
    f.lbCursor = CursorReadout(s, w);
    return true;
}

// ---- Drawing -----------------------------------------------------------------------------

namespace {

struct YMap {
    double offset, scale;
    std::int32_t operator()(double sample) const {
        return ToInt32Clamped(offset - sample * scale);
    }
};

YMap YMapOf(const GroupWindow& w) {
    return {(32786 - Val(w.form.Combo6)) * w.PicHeight / 65536.0,
            w.PicHeight / 65536.0 * Val(w.form.Combo5)};
}

double XStep(const GroupWindow& w) {
    return w.store.TracePoints > 0 ? double(w.PicWidth) / w.store.TracePoints : 0;
}

}  // namespace

std::int32_t CalculateYPosition(const GroupWindow& w, double sample) {
    return YMapOf(w)(sample);
}

std::int32_t PixelX(const GroupWindow& w, double point) {
    return ToInt32Clamped(point * XStep(w));
}

std::vector<PixelPoint> RowPolyline(const GroupWindow& w, std::int32_t row, std::int32_t from,
                                    std::int32_t to) {
    std::vector<PixelPoint> line;
    const TraceStore& store = w.store;
    if (row < 0 || row > store.TraceCount + 1 || store.TracePoints < 1 ||
        store.Traces.size() < std::size_t(store.TraceCount + 2) * std::size_t(store.TracePoints))
        return line;
    from = std::max(from, 0);
    to = std::min(to, store.TracePoints - 1);
    if (from > to) return line;
    const YMap y = YMapOf(w);
    const double step = XStep(w);
    const std::int16_t* samples = store.Row(row);
    line.reserve(std::size_t(to - from + 1));
    for (std::int32_t k = from; k <= to; ++k)
        line.push_back({ToInt32Clamped(k * step), y(samples[k])});
    return line;
}

void GroupDisplay(const Session& s, GroupWindow& w) {
    const TraceStore& store = w.store;
    if (w.loading || s.events.Empty() || store.TraceCount < 1) return;
    GrpAnalForm& f = w.form;
    const double gain = Val(f.Combo5);
    if (gain < 0.001) f.Combo5 = "0.001";
    else if (gain >= 1000) f.Combo5 = "1000";
    // A redraw loses what the analyses printed over the last picture.
    w.overlay = GroupOverlay{};

    GroupScene& scene = w.scene;
    scene.width = w.PicWidth;
    scene.height = w.PicHeight;
    scene.traces.clear();
    scene.rows.clear();
    auto draw = [&](std::int32_t row) {
        scene.traces.push_back(RowPolyline(w, row, 0, store.TracePoints - 1));
        scene.rows.push_back(row);
    };
    if (IsSuperimposeType(f.Combo2)) {
        for (std::int32_t n = 1; n <= store.TraceCount; ++n) draw(n);
    } else if (IsIndividualType(f.Combo2)) {
        draw(std::clamp(store.CurrentTrace, 0, store.TraceCount));
    } else if (f.Combo2 == "Average" || f.Combo2 == "Scaled Average") {
        draw(0);
    }
    f.Slider1 = CalculateYPosition(w, store.At(0, 0));

    // The scale bar: arms from 85% to 95% of the width and of the height.
    const double step = XStep(w);
    auto px = [&](double fraction) { return ToInt32Clamped(fraction * store.TracePoints * step); };
    auto py = [&](double fraction) { return ToInt32Clamped(fraction * 65536 * w.PicHeight / 65536.0); };
    scene.barLeft = {px(0.85), py(0.95)};
    scene.barCorner = {px(0.95), py(0.95)};
    scene.barTop = {px(0.95), py(0.85)};
    const Recording& r = s.recording;
    scene.timeLabel = Format(store.TracePoints / 10.0 * r.SampleInterval / 1000.0, "#,###") + "ms";
    const double shownGain = Val(f.Combo5);
    scene.amplitudeLabel =
        Format(double(r.Bit2pA2(6553.6)) / (shownGain != 0 ? shownGain : 1), "#,###.0") + r.ADCUnits;
    ++scene.version;
}

std::string GroupPictureText(const GroupWindow& w) {
    const GroupScene& scene = w.scene;
    std::string text = "Rows";
    for (const std::int32_t row : scene.rows) text += "\t" + CStr(row);
    text += "\nTime bar\t" + scene.timeLabel + "\nAmplitude bar\t" + scene.amplitudeLabel +
            "\nSlider1\t" + CStr(w.form.Slider1) + "\n";
    for (const std::string& line : w.overlay.text) text += "Text\t" + line + "\n";
    for (const auto& [point, sample] : w.overlay.marks)
        text += "Mark\t" + CStr(point) + "\t" + CStr(std::int32_t(sample)) + "\n";
    if (w.overlay.curveFrom >= 0)
        text += "Curve\t" + CStr(w.overlay.curveFrom) + "\t" + CStr(w.overlay.curveTo) + "\n";
    for (const auto& l : w.overlay.lines)
        text += "Line\t" + Format(l.x1, "0.00") + "\t" + Format(l.y1, "0.00") + "\t" +
                Format(l.x2, "0.00") + "\t" + Format(l.y2, "0.00") + "\n";
    for (const auto& l : w.overlay.labels)
        text += "Label\t" + CStr(l.point) + "\t" + CStr(std::int32_t(l.sample)) + "\t" + l.text +
                (l.above ? "\tabove\n" : "\tbelow\n");
    return text;
}

// ---- Cursors -----------------------------------------------------------------------------

void CursorClick(const Session& s, GroupWindow& w, double xPoints) {
    GrpAnalForm& f = w.form;
    if (w.SelectedCursor != 255) {
        w.SelectedCursor = 255;
        return;
    }
    if (!f.Check1) return;
    const double reach = 1 + w.store.TracePoints / 100.0;
    for (std::uint8_t i = 0; i < 2; ++i) {
        if (std::abs(f.Line1X[i] - xPoints) <= reach) {
            w.SelectedCursor = i;
            break;
        }
    }
    f.lbCursor = CursorReadout(s, w);
}

void CursorMove(const Session& s, GroupWindow& w, double xPoints) {
    if (w.SelectedCursor > 1) return;
    w.form.Line1X[w.SelectedCursor] = Int(xPoints);
    w.form.lbCursor = CursorReadout(s, w);
}

std::string CursorReadout(const Session& s, const GroupWindow& w) {
    const GrpAnalForm& f = w.form;
    const TraceStore& store = w.store;
    const Recording& r = s.recording;
    float x[2], y[2];
    for (int i = 0; i < 2; ++i) {
        const double point = Int(f.Line1X[std::size_t(i)]);
        // The header's interval, not the channel's: with several channels the readout is low
        // by their number, as it has always been.
        x[i] = float(point * r.header.fADCSampleInterval / 1000);
        y[i] = 0;
        const bool inStore = store.TraceCount >= 1 && point >= 0 && point < store.TracePoints &&
                             store.CurrentTrace >= 0 && store.CurrentTrace <= store.TraceCount + 1;
        if (!IsSuperimposeType(f.Combo2) && inStore)
            y[i] = r.Bit2pA(store.At(store.CurrentTrace, std::int32_t(point)));
    }
    // Character 240 of the label's symbol font is the Greek delta.
    const std::string delta = "\xCE\x94";
    return "x1:" + Format(x[0], "0.000") + "  y1:" + Format(y[0], "0.000") + "\r\n" + "x2:" +
           Format(x[1], "0.000") + "  y2:" + Format(y[1], "0.000") + "\r\n" + delta + "x:" +
           Format(x[0] - x[1], "0.000") + "  " + delta + "y:" + Format(y[0] - y[1], "0.000");
}

// ---- Right button and slider -------------------------------------------------------------

std::int32_t HitTestTrace(const GroupWindow& w, std::int32_t px, std::int32_t py,
                          std::int32_t boxWidth, std::int32_t boxHeight) {
    const TraceStore& store = w.store;
    if (store.TraceCount < 1 || store.TracePoints < 1) return -1;
    const double left = std::max(0, px - boxWidth / 2);
    const double right = px + boxWidth / 2;
    const std::int32_t top = py - boxHeight / 2, bottom = py + boxHeight / 2;
    const double step = XStep(w);
    if (step <= 0) return -1;
    const std::int32_t from = std::max<std::int32_t>(0, std::int32_t(std::ceil(left / step)));
    const std::int32_t to =
        std::min<std::int32_t>(store.TracePoints - 1, std::int32_t(std::floor(right / step)));
    const YMap y = YMapOf(w);
    auto hit = [&](std::int32_t row) {
        const std::int16_t* samples = store.Row(row);
        for (std::int32_t k = from; k <= to; ++k) {
            const std::int32_t at = y(samples[k]);
            if (at >= top && at <= bottom) return true;
        }
        return false;
    };
    if (IsSuperimposeType(w.form.Combo2)) {
        for (std::int32_t n = 1; n <= store.TraceCount; ++n)
            if (hit(n)) return n;
        return -1;
    }
    const std::int32_t current = store.CurrentTrace;
    if (current < 0 || current > store.TraceCount) return -1;
    return hit(current) ? current : -1;
}

void Slider1Change(const Session& s, GroupWindow& w, std::int32_t newValue) {
    const TraceStore& store = w.store;
    if (store.TraceCount < 1) return;
    const std::int32_t current = std::clamp(store.CurrentTrace, 0, store.TraceCount);
    const std::int32_t row = CalculateYPosition(w, store.At(current, 0));
    w.form.Combo6 = CStr(Val(w.form.Combo6) + double(row - newValue));
    GroupDisplay(s, w);
}

void Check10Click(const Session& s, GroupWindow& w) {
    if (!w.form.Check10) return;
    w.form.Combo4 = CStr(double(s.recording.header.lNumSamplesPerEpisode) / 256);
}

}  // namespace ardel::group

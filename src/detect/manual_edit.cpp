#include "detect/manual_edit.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "core/event_commands.h"
#include "core/number_text.h"
#include "detect/complex_peaks.h"
#include "detect/window_analysis.h"

namespace ardel {

namespace {

// U+0394 GREEK CAPITAL LETTER DELTA in UTF-8: the label's old symbol font drew its character
// 240 as this letter.
constexpr const char* kDelta = "\xCE\x94";

std::int32_t Index(double v) {
    return ToInt32Clamped(RoundHalfEven(v));
}

// As in the scan: any direction other than +1 looks for downward peaks.
int Direction(const DetectionParameters& p) {
    return p.PeakDirection == 1 ? 1 : -1;
}

std::optional<std::uint8_t> CursorHit(const Session& s, const CursorState& c, double x, double y) {
    // The grip is 1/80 of the picture on each side of the line, plus one unit.
    const double mx = 1.0 + double(s.recording.BlocksPerScreen) * 256.0 / 80.0;
    const double my = 1.0 + 65536.0 / 80.0;
    const double xi = Int(x);
    const double yi = Int(y);
    for (std::uint8_t i = 0; i < 4; ++i) {
        const CursorLine& l = c.Line1[i];
        // A vertical line spans the whole height and a horizontal one the whole width, so only
        // the coordinate across the line tells whether it was hit.
        if (i < 2) {
            const double lo = std::min(Int(l.X1), Int(l.X2)) - mx;
            const double hi = std::max(Int(l.X1), Int(l.X2)) + mx;
            if (xi >= lo && xi <= hi) return i;
        } else {
            const double lo = std::min(Int(l.Y1), Int(l.Y2)) - my;
            const double hi = std::max(Int(l.Y1), Int(l.Y2)) + my;
            if (yi >= lo && yi <= hi) return i;
        }
    }
    return std::nullopt;
}

// Selects the event under the pointer for the modifier clicks; false when there is none.
bool SelectAtPoint(Session& s, double x, double xTextWidth) {
    s.events.CurrentEvent = 0;
    const std::int32_t n = EventAtPoint(s, x, xTextWidth);
    if (n == 0) return false;
    s.events.CurrentEvent = n;
    return true;
}

}  // namespace

void PlaceCursors(CursorState& c, double screenPoints) {
    const double w = screenPoints;
    c.Line1[0] = {Int(w / 3), 0, Int(w / 3), 65536};
    c.Line1[1] = {Int(2 * w / 3), 0, Int(2 * w / 3), 65536};
    c.Line1[2] = {0, 65536.0 / 3, w, 65536.0 / 3};
    c.Line1[3] = {0, 2 * 65536.0 / 3, w, 2 * 65536.0 / 3};
    c.DraggedCursor = kNoCursor;
}

std::int32_t EventAtPoint(const Session& s, double x, double xTextWidth) {
    const Recording& rec = s.recording;
    const float t1 = rec.CalculateTime(x - xTextWidth);
    const float t2 = rec.CalculateTime(x + xTextWidth);
    for (std::int32_t n = 1; n <= s.events.EventCount(); ++n) {
        const float t = s.events[n].Time;
        if (t1 < t && t < t2) return n;
    }
    return 0;
}

void PictureMouseDown(Session& s, UserDialogs& ui, CursorState& cursors, double x, double y,
                      int shiftMask, double xTextWidth) {
    if (!s.recording.FileIsOpen) return;
    const int mask = shiftMask & (kShiftMask | kCtrlMask | kAltMask);
    if (cursors.ckCursors && mask == 0 && cursors.DraggedCursor == kNoCursor) {
        if (auto hit = CursorHit(s, cursors, x, y)) {
            cursors.DraggedCursor = *hit;
            return;
        }
    } else if (cursors.ckCursors && mask == 0 && cursors.DraggedCursor <= 1) {
        // A second click puts a held vertical cursor down and does nothing else.
        cursors.DraggedCursor = kNoCursor;
        return;
    } else {
        // A held horizontal cursor is put down by a click that also acts.
        cursors.DraggedCursor = kNoCursor;
    }

    switch (mask) {
        case kShiftMask:
            if (!SelectAtPoint(s, x, xTextWidth)) return;
            menu_RecalculatePeak(s, ui);
            Display(s);
            break;
        case kCtrlMask:
            if (!SelectAtPoint(s, x, xTextWidth)) return;
            menu_DeletEvent(s, ui);
            Display(s);
            break;
        case kCtrlMask | kShiftMask:
            if (!SelectAtPoint(s, x, xTextWidth)) return;
            menu_RejectThisEvent(s, ui);
            Display(s);
            break;
        case kAltMask:
            if (!SelectAtPoint(s, x, xTextWidth)) return;
            menu_DoublePeak_Click(s, ui);
            Display(s);
            break;
        case kCtrlMask | kAltMask:
            ManualDetection(s, ui, x, true);
            break;
        default:  // no modifier, and the combinations without a meaning of their own
            ManualDetection(s, ui, x, false);
            break;
    }
}

std::string CursorReadout(const Session& s, const CursorState& cursors) {
    const Recording& rec = s.recording;
    auto read = [&](int i, double& t, float& v) {
        const double xi = Int(cursors.Line1[std::size_t(i)].X1);
        // The file's interval between two samples, not the channel's.
        t = xi * double(rec.header.fADCSampleInterval) / 1000.0;
        v = 0;
        if (xi >= 0 && xi < rec.ScreenPoints())
            v = rec.Bit2pA(rec.GetSampleValue(std::int32_t(xi)));
    };
    double x1 = 0, x2 = 0;
    float y1 = 0, y2 = 0;
    read(0, x1, y1);
    read(1, x2, y2);
    return "x1:" + Format(x1, "0.000") + "  y1:" + Format(y1, "0.000") + "\n" +
           "x2:" + Format(x2, "0.000") + "  y2:" + Format(y2, "0.000") + "\n" + kDelta +
           "x:" + Format(x2 - x1, "0.000") + "  " + kDelta + "y:" + Format(float(y2 - y1), "0.000");
}

bool PictureMouseMove(Session& s, CursorState& cursors, double x, double y) {
    const Recording& rec = s.recording;
    if (!rec.FileIsOpen) return false;
    x = std::clamp(x, 0.0, std::max(0.0, double(rec.BlocksPerScreen) * 256.0 - 1.0));
    // A held cursor follows with or without a button: one click takes it, the next puts it down.
    const std::uint8_t d = cursors.DraggedCursor;
    if (d <= 1) {
        cursors.Line1[d].X1 = x;
        cursors.Line1[d].X2 = x;
        cursors.lbCursor = CursorReadout(s, cursors);
        return true;
    }
    if (d <= 3) {
        cursors.Line1[d].Y1 = y;
        cursors.Line1[d].Y2 = y;
        return true;
    }
    return false;
}

TracePopup PictureMouseUpRight(Session& s, double x, double xTextWidth) {
    if (!s.recording.FileIsOpen) return TracePopup::None;
    const std::int32_t n = EventAtPoint(s, x, xTextWidth);
    if (n == 0) return TracePopup::None;
    s.events.CurrentEvent = n;
    s.events.GridCurrentRow = n;
    return TracePopup::EventEdit;
}

void EventEditMenuClosed(Session& s) {
    Display(s);
}

bool ManualDetection(Session& s, UserDialogs& ui, double x, bool tenthOfThresholds) {
    Recording& rec = s.recording;
    if (!rec.FileIsOpen) return false;
    const DetectionParameters& prm = s.params;
    const float thresholdAmplitude =
        tenthOfThresholds ? prm.ThresholdAmplitude / 10.0f : prm.ThresholdAmplitude;
    const float thresholdArea = tenthOfThresholds ? prm.AreaThreshold / 10.0f : prm.AreaThreshold;
    const auto counts = ComputePointCounts(rec, prm);
    if (!counts) {
        ui.Message("Improper Analysis Parameters",
                   "The analysis parameters are not set properly.  Please run 'Suggest Analysis "
                   "Paramters' command under File menu.");
        return false;
    }
    const DetectContext c{rec, prm, *counts, Direction(prm)};
    const int D = c.D;
    const std::int32_t maxPts = counts->MaxPoints;
    const std::int32_t lead = counts->LeadPoints;
    const std::int32_t avg = counts->AveragePoints;
    const std::int32_t decayPts = counts->DecayPoints;

    const std::int32_t xi = Index(x);
    const Peak pk = FindMax(c, Index(xi - maxPts / 2.0), maxPts, counts->PeakHalf);
    const std::int32_t p = pk.index;
    const std::int32_t v = pk.value;
    // On the first screen there is nothing before the data for the baseline window.
    if (rec.ScreenBlock == rec.header.lDataSectionPtr && p - lead < 0) return false;

    const std::int16_t b = FindBaseline(c, p, lead, avg);
    const std::int32_t amp = std::abs(v - b);
    float ampU = 0;
    if (auto u = rec.TryBit2pA2(amp)) ampU = *u;

    // By hand an event is never taken twice: every record is compared, not only the last.
    const float t0 = rec.CalculateTime(p);
    for (std::int32_t n = 1; n <= s.events.EventCount(); ++n)
        if (s.events[n].Time == t0) return false;
    if (!(ampU >= thresholdAmplitude && D * v > D * b)) return false;

    std::int16_t noise = 0;
    if (auto m = ToInt32((p - lead) + avg / 2.0))
        if (auto n16 = ToInt16(double(c.Sample(*m)) - b)) noise = *n16;

    // The same walks as the scan, so that a click measures a peak as the scan does.
    const RiseDecayWalk walk = WalkRiseAndDecay(c, p, b, amp);
    const std::int32_t r = walk.riseStart;
    const std::int32_t e = walk.decayEnd;
    const double xe = walk.decayValue;
    const float areaU = AreaUnits(rec, walk.area).value_or(0.0f);
    if (areaU < thresholdArea) return false;

    const float rise1090 = Detect1090Rise(c, p, v, r, b);
    // A zero rise time is a division by zero: the slope stays 0.
    float slope1090 = 0;
    if (rise1090 != 0) slope1090 = float(D * double(ampU) * 0.8 / double(rise1090));
    const std::int16_t rise50 = Detect50RiseTime(c, p, v, r, b).value_or(0);
    const float halfWidth = DetectHalfWidth(c, p, v, rise50, decayPts, b);

    AddEventMarks(s, p, v, p - lead + avg / 2.0, b, r, c.Sample(r), e, xe);
    if (s.options.SoundOn) ui.Beep();

    EventRecord& ev = s.events.Add();
    ev.Time = t0;
    ev.Amplitude = amp;
    ev.Noise = noise;
    if (auto v16 = ToInt16(p - r)) ev.Rise = *v16;
    if (auto v16 = ToInt16(e - p)) ev.Decay = *v16;
    ev.Baseline = b;
    ev.Area = areaU;
    ev.Channel = rec.ChannelIndex;
    ev.BaselineLead = std::int16_t(std::min<std::int32_t>(lead, 32767));
    ev.Rise1090 = rise1090;
    ev.HalfWidth = halfWidth;
    ev.Rise50 = rise50;
    ev.PeakDirection = std::int16_t(D);
    ev.Slope1090 = slope1090;
    ev.GroupNumber = 0;
    ev.RelativeTime = p;
    if (auto pp = ToInt32(rec.ScreenStartPoint() + p)) ev.PeakPoint = *pp;

    UpdateTDBGrid(s.events);
    s.events.GridCurrentRow = s.events.EventCount();
    return true;
}

void menu_RejectThisEvent(Session& s, UserDialogs&) {
    EventTable& t = s.events;
    if (!s.recording.FileIsOpen || t.EventCount() == 0) return;
    if (t.CurrentEvent > t.EventCount()) return;
    if (t.CurrentEvent < 1) t.CurrentEvent = 1;
    t[t.CurrentEvent].GroupNumber = kGroupRejected;
    // Only the Group cell is rewritten, in place: the grid is not rebound, and the table
    // does not count as changed for the question about unsaved events.
    ++t.GridVersion;
    Display(s);
}

void menu_DeletEvent(Session& s, UserDialogs&) {
    if (!ClampSelectedEvent(s)) return;
    EventTable& t = s.events;
    const std::int32_t count = t.EventCount();
    for (std::int32_t k = t.CurrentEvent; k < count; ++k) t[k] = t[k + 1];
    // The array is cut to the new count: a record added later starts from an empty slot.
    t[count] = EventRecord{};
    t.SetCount(count - 1);
    UpdateTDBGrid(t);
    t.CurrentEvent = t.CurrentEvent - 1;
}

void menu_RecalculatePeak(Session& s, UserDialogs& ui) {
    if (!ClampSelectedEvent(s)) return;
    Recording& rec = s.recording;
    EventTable& t = s.events;
    const DetectionParameters& prm = s.params;
    const auto counts = ComputePointCounts(rec, prm);
    if (!counts) return;
    const DetectContext c{rec, prm, *counts, Direction(prm)};
    const int D = c.D;
    const std::int32_t maxPts = counts->MaxPoints;
    const std::int32_t lead = counts->LeadPoints;
    const std::int32_t avg = counts->AveragePoints;
    const std::int32_t decayPts = counts->DecayPoints;
    EventRecord& ev = t[t.CurrentEvent];

    const auto p0 = rec.CalculateTimeBit(ev.Time);
    if (!p0) return;
    const Peak pk = FindMax(c, Index(*p0 - maxPts / 2.0), maxPts, counts->PeakHalf);
    const std::int32_t p = pk.index;
    const std::int32_t v = pk.value;
    // The baseline stays a fraction here.
    const double b = double(SumSamples(rec, p - lead, p - lead + avg - 1)) / avg;
    const std::int32_t amp = Index(std::abs(v - b));
    const auto ampUOpt = rec.TryBit2pA2(amp);
    if (!ampUOpt) return;
    const float ampU = *ampUOpt;
    if (!(ampU >= prm.ThresholdAmplitude && D * v > D * b)) return;

    std::int16_t noise = ev.Noise;
    if (auto n16 = ToInt16(c.Sample(Index(p - lead + avg / 2.0)) - b)) noise = *n16;

    // The rise ends within 5% of the amplitude, a limit in amplitude units held against a
    // distance in raw bits; recalculated events have always been measured so.
    std::int32_t area = 0;
    std::int32_t r = p;
    const double riseLimit = double(ampU) * 0.05;
    for (; r >= p - lead; --r) {
        const double x = c.Sample(r);
        AddToArea(area, x - b);
        if (D * (x - b) <= riseLimit) break;
    }
    // The decay on raw samples, without the scan's three-point mean.
    std::int32_t e = p + 1;
    const double decayLevel = double(prm.DecayPercent) * amp;
    for (; e <= p + decayPts; ++e) {
        const double x = c.Sample(e);
        AddToArea(area, x - b);
        if (D * (x - b) <= decayLevel) break;
    }
    const float areaU = AreaUnits(rec, area).value_or(ev.Area);

    const float rise1090 = Detect1090Rise(c, p, v, r, b);
    // A zero rise time is a division by zero: the slope keeps the record's value.
    float slope1090 = ev.Slope1090;
    if (rise1090 != 0) slope1090 = float(D * double(ampU) * 0.8 / double(rise1090));
    const std::int16_t rise50 = Detect50RiseTime(c, p, v, r, b).value_or(ev.Rise50);
    const float halfWidth = DetectHalfWidth(c, p, v, rise50, decayPts, b);

    AddEventMarks(s, p, v, p - lead + avg / 2.0, b, r, c.Sample(r), e, c.Sample(e));
    if (s.options.SoundOn) ui.Beep();

    ev.Time = rec.CalculateTime(p);
    ev.Amplitude = amp;
    ev.Noise = noise;
    if (auto v16 = ToInt16(p - r)) ev.Rise = *v16;
    if (auto v16 = ToInt16(e - p)) ev.Decay = *v16;
    if (auto v16 = ToInt16(b)) ev.Baseline = *v16;
    ev.Area = areaU;
    ev.Rise1090 = rise1090;
    ev.HalfWidth = halfWidth;
    ev.Slope1090 = slope1090;
    ev.Rise50 = rise50;
    ev.RelativeTime = p;
    if (auto pp = ToInt32(rec.ScreenStartPoint() + p)) ev.PeakPoint = *pp;

    UpdateTDBGrid(t);
    t.GridCurrentRow = t.CurrentEvent;
}

void menu_BaselineThreshold(Session& s, UserDialogs& ui) {
    if (!ClampSelectedEvent(s)) return;
    Recording& rec = s.recording;
    EventTable& t = s.events;
    const DetectionParameters& prm = s.params;
    const auto counts = ComputePointCounts(rec, prm);
    if (!counts) return;
    const DetectContext c{rec, prm, *counts, Direction(prm)};
    const int D = c.D;
    const std::int32_t lead = counts->LeadPoints;
    const std::int32_t avg = counts->AveragePoints;
    const std::int32_t decayPts = counts->DecayPoints;
    const double dt = double(rec.SampleInterval) / 1000.0;
    auto x = [&c](std::int32_t k) { return double(c.Sample(k)); };
    EventRecord& ev = t[t.CurrentEvent];

    const auto pOpt = rec.CalculateTimeBit(ev.Time);
    if (!pOpt) return;
    const std::int32_t p = *pOpt;
    std::int32_t s0 = p;
    double y = x(p);
    // When the rise starts on the baseline itself, the search starts there.
    if (c.Sample(p - ev.Rise) == ev.Baseline) {
        s0 = p - ev.Rise;
        y = ev.Baseline;
    }

    // Steepest point of the upstroke, by the first differential. The loop's limits are fixed
    // when it starts.
    {
        double d = (x(p + 1) - x(p)) / dt;
        const std::int32_t from = s0 - 1, to = s0 - lead;
        for (std::int32_t k = from; k >= to; --k) {
            const double d1 = (x(k + 1) - x(k)) / dt;
            if (D * d < D * d1) {
                s0 = k;
                y = x(k);
                d = d1;
            }
        }
    }
    // Foot of the upstroke: the first point back where the trace runs the other way.
    std::int32_t f = s0 - 1;
    {
        const std::int32_t to = s0 - lead;
        for (; f >= to; --f) {
            const double d1 = (x(f + 1) - x(f)) / dt;
            if (D * d1 < 0) break;
        }
    }
    // Between the foot and the steepest point: the largest second, then third, differential,
    // each smoothed over three points.
    const double dt2 = dt * dt;
    auto D2 = [&](std::int32_t k) { return (x(k + 2) - 2 * x(k + 1) + x(k)) / dt2; };
    {
        double d = D2(s0);
        const std::int32_t from = s0 - 1;
        for (std::int32_t k = from; k >= f; --k) {
            const double m = D2(k) / 3 + D2(k - 1) / 3 + D2(k + 1) / 3;
            if (D * d < D * m) {
                s0 = k;
                y = x(k);
                d = m;
            }
        }
    }
    const double dt3 = dt2 * dt;
    auto D3 = [&](std::int32_t k) { return (x(k + 3) - 3 * x(k + 2) + 3 * x(k + 1) - x(k)) / dt3; };
    {
        double d = D3(s0);
        const std::int32_t from = s0 - 1;
        for (std::int32_t k = from; k >= f; --k) {
            const double m = D3(k) / 3 + D3(k - 1) / 3 + D3(k + 1) / 3;
            if (D * d < D * m) {
                s0 = k;
                y = x(k);
                d = m;
            }
        }
    }

    // Measured anew from the threshold, which is both baseline and rise start.
    const double v = x(p);
    const double B = y;
    const std::int32_t amp = Index(std::abs(v - B));
    float ampU = 0;
    if (auto u = rec.TryBit2pA2(amp)) ampU = *u;
    std::int32_t area = 0;
    for (std::int32_t k = p; k >= s0; --k) AddToArea(area, x(k) - B);
    std::int32_t e = p + 1;
    double xe = 0;
    // Both sides carry the direction here, unlike the scan's decay test.
    const double decayLevel = D * double(prm.DecayPercent) * amp;
    for (; e <= p + decayPts; ++e) {
        const double xm = x(e - 1) / 3.0 + x(e + 1) / 3.0 + x(e) / 3.0;
        xe = xm;
        AddToArea(area, xm - B);
        if (D * (xm - B) <= decayLevel) break;
    }
    const float areaU = AreaUnits(rec, area).value_or(ev.Area);

    const float rise1090 = Detect1090Rise(c, p, v, s0, B);
    float slope1090 = ev.Slope1090;  // a zero rise time leaves the record's slope
    if (rise1090 != 0) slope1090 = float(D * double(ampU) * 0.8 / double(rise1090));
    const std::int16_t rise50 = Detect50RiseTime(c, p, v, s0, B).value_or(ev.Rise50);
    const float halfWidth = DetectHalfWidth(c, p, v, rise50, decayPts, B);

    ev.Time = rec.CalculateTime(p);
    ev.Amplitude = amp;
    if (auto v16 = ToInt16(p - s0)) ev.Rise = *v16;
    if (auto v16 = ToInt16(e - p)) ev.Decay = *v16;
    if (auto v16 = ToInt16(B)) ev.Baseline = *v16;
    ev.Area = areaU;
    ev.Channel = rec.ChannelIndex;
    // Only a click limits the lead to 16 bits; here, as in the scan, a lead too long for the
    // field leaves it as it was.
    if (auto v16 = ToInt16(lead)) ev.BaselineLead = *v16;
    ev.Rise1090 = rise1090;
    ev.Slope1090 = slope1090;
    ev.HalfWidth = halfWidth;
    ev.Rise50 = rise50;
    ev.RelativeTime = p;
    if (auto pp = ToInt32(rec.ScreenStartPoint() + p)) ev.PeakPoint = *pp;

    UpdateTDBGrid(t);
    AddEventMarks(s, p, v, p - lead + avg / 2.0, B, s0, x(s0), e, xe);
    if (s.options.SoundOn) ui.Beep();
    t.GridCurrentRow = t.CurrentEvent;
}

void menu_ScanAdjustBaseline(Session& s, UserDialogs& ui) {
    ScanEachEvent(s, ui, menu_BaselineThreshold);
}

}  // namespace ardel

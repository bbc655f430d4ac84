#include "events/criteria_search.h"

#include <optional>

#include "core/number_text.h"
#include "events/event_list.h"

namespace ardel {

namespace {

constexpr std::array<std::string_view, kCriteriaCount> kLabels = {
    "Time (ms):",     "Amplitude:",        "RiseTime(ms):",    "DecayTime(ms):",
    "Area:",          "Inter-event Interval (ms):", "Baseline:", "Rise 10-90 (ms):",
    "Halfwidth (ms):", "Group #:",         "Channel #:",       "Peak Direction:",
    "Burst #:",       "Burst Event #:",    "Slope 10-90:",     "Relative Time (ms):"};

// The interval is not one of the nested tests; it follows them when Check5 is set.
constexpr int kIntervalCriterion = 5;
constexpr std::array<int, kCriteriaCount - 1> kTestOrder = {0, 1, 2, 3, 4, 6, 7, 8,
                                                           9, 10, 11, 12, 13, 14, 15};

// The group number a box holds, as the byte conversion takes it; nullopt is an overflow.
std::optional<std::uint8_t> GroupOf(const std::string& text) { return ToUInt8(Val(text)); }

// One criterion's bounds as the boxes hold them. The boxes cannot change during a search (it
// does not yield), so they are read once rather than for every row.
struct Bounds {
    bool hasLow = false, hasHigh = false;
    double low = 0, high = 0;
    float lowF = 0, highF = 0;

    Bounds(const std::string& lowText, const std::string& highText)
        : hasLow(lowText != kNoLowerBound), hasHigh(highText != kNoUpperBound),
          low(hasLow ? Val(lowText) : 0), high(hasHigh ? Val(highText) : 0),
          lowF(float(low)), highF(float(high)) {}

    // Inclusive at both ends. Single keys are compared in single precision, so that a bound
    // typed as the grid shows a value matches that value.
    bool Pass(float key) const { return (!hasLow || lowF <= key) && (!hasHigh || highF >= key); }
    bool Pass(int key) const {
        return (!hasLow || low <= double(key)) && (!hasHigh || high >= double(key));
    }
};

bool CriterionPasses(const Bounds& b, int k, const EventRecord& e, const Recording& rec) {
    switch (k) {
        case 0: return b.Pass(e.Time);
        case 1: return b.Pass(rec.Bit2pA2(e.Amplitude));
        case 2: return b.Pass(rec.Bit2msec(e.Rise));
        case 3: return b.Pass(rec.Bit2msec(e.Decay));
        case 4: return b.Pass(e.Area);
        case 6: return b.Pass(rec.Bit2pA(e.Baseline));
        case 7: return b.Pass(e.Rise1090);
        case 8: return b.Pass(e.HalfWidth);
        case 9: return b.Pass(int(e.GroupNumber));
        case 10: return b.Pass(int(e.Channel));
        case 11: return b.Pass(int(e.PeakDirection));
        case 12: return b.Pass(int(e.BurstNumber));
        case 13: return b.Pass(int(e.BurstEventNumber));
        // The direction's sign is taken out, so one range serves upward and downward events.
        case 14: return b.Pass(float(e.Slope1090 * float(e.PeakDirection)));
        case 15: return b.Pass(rec.Bit2msec(e.RelativeTime));
        default: return true;
    }
}

// Both neighbouring intervals lie above the lower bound (exclusive) and at most the upper.
// The last row has no row after it and fails.
bool IntervalPasses(const CriteriaForm& f, const EventTable& t, std::int32_t i) {
    if (i >= t.EventCount()) return false;
    const Bounds b(f.Combo1[kIntervalCriterion], f.Combo2[kIntervalCriterion]);
    const float next = t[i + 1].Time - t[i].Time;
    const float previous = i > 1 ? t[i].Time - t[i - 1].Time : 0.0f;
    auto within = [&b](float v) { return (!b.hasHigh || v <= b.highF) && v > b.lowF; };
    return within(next) && within(previous);
}

std::vector<std::string> DecadeSteps(bool times) {
    std::vector<std::string> list;
    for (double decade = 100; decade <= 100000; decade *= 10)
        for (const double step : {1.0, 2.0, 5.0}) {
            const double v = decade * step;
            if (!times) {
                list.push_back(Format(v, "0"));
            } else {
                std::string text = Format(v / 1000.0, "0.000");
                if (text.starts_with("0.")) text.erase(0, 1);
                list.push_back(text);
            }
        }
    return list;
}

}  // namespace

std::string_view CriteriaLabel(int k) {
    if (k < 0 || k >= kCriteriaCount) return {};
    return kLabels[std::size_t(k)];
}

bool CriteriaIsTime(int k) {
    return k == 0 || k == 2 || k == 3 || k == kIntervalCriterion || k == 7 || k == 8 || k == 15;
}

std::vector<std::string> CriteriaBoundList(int k, bool upper) {
    std::vector<std::string> list{std::string(upper ? kNoUpperBound : kNoLowerBound)};
    for (auto& v : DecadeSteps(CriteriaIsTime(k))) list.push_back(std::move(v));
    return list;
}

std::vector<std::string> GroupNumberList() {
    std::vector<std::string> list;
    for (int g = 0; g <= 255; ++g) list.push_back(CStr(g));
    return list;
}

void Criteria_Command1(Session& s, UserDialogs& ui, CriteriaForm& f) {
    if (f.Check5) {
        if (ui.Ask("Sorting Required",
                   "A search by inter-event interval requires sorting of the events by time.  "
                   "Do you want to proceed?",
                   Buttons::YesNo) != Answer::Yes)
            return;
        menu_sort(s, kSortByTime);
    }
    std::vector<Bounds> bounds;
    bounds.reserve(kCriteriaCount);
    for (int k = 0; k < kCriteriaCount; ++k) bounds.emplace_back(f.Combo1[std::size_t(k)],
                                                                 f.Combo2[std::size_t(k)]);
    const auto match = GroupOf(f.Combo3);
    const auto rest = GroupOf(f.Combo4);

    EventTable& t = s.events;
    const Recording& rec = s.recording;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) {
        EventRecord& e = t[i];
        bool pass = true;
        for (const int k : kTestOrder) {
            if (!CriterionPasses(bounds[std::size_t(k)], k, e, rec)) {
                pass = false;
                break;
            }
        }
        if (pass && f.Check5) pass = IntervalPasses(f, t, i);
        if (pass || f.Check1) {
            const auto& group = pass ? match : rest;
            if (!group) return ui.RuntimeError("Overflow");
            e.GroupNumber = *group;
        }
    }
    UpdateTDBGrid(t);
    Display(s);
}

void Criteria_Command2(Session& s, UserDialogs& ui, CriteriaForm& f) {
    f.Command2Caption =
        std::string(f.Command2Caption == kStartSelection ? kStopSelection : kStartSelection);
    EventTable& t = s.events;
    if (Val(f.Text1) > double(t.EventCount())) {
        ui.Message("Error",
                   "Total number of selection cannot be greater than the total number of events.  "
                   "Please check the number and try again.");
        return;
    }
    if (f.Check3) {
        const double group = Val(f.Combo5);
        for (std::int32_t i = 1; i <= t.EventCount(); ++i)
            if (double(t[i].GroupNumber) == group) t[i].GroupNumber = 0;
    }
    std::int64_t k = 0;
    // The boxes are read at every draw: the window stays live while the run yields.
    while (double(k) < Val(f.Text1)) {
        ui.Yield();
        if (f.Command2Caption == kStartSelection) break;
        const double n = t.EventCount();
        const auto row = std::int32_t(Int(double(Rnd(s)) * n + 1));
        // Rows deleted while the run yielded are not drawn.
        if (row < 1 || row > t.EventCount()) continue;
        EventRecord& e = t[row];
        const double group = Val(f.Combo5);
        if (double(e.GroupNumber) == group) continue;
        if (f.Check4 && e.GroupNumber != 0) continue;
        const auto byte = ToUInt8(group);
        if (!byte) return ui.RuntimeError("Overflow");
        e.GroupNumber = *byte;
        ++k;
    }
    if (f.Check2) {
        const double group = Val(f.Combo5);
        const auto rest = GroupOf(f.Combo6);
        for (std::int32_t i = 1; i <= t.EventCount(); ++i) {
            if (double(t[i].GroupNumber) == group) continue;
            if (!rest) return ui.RuntimeError("Overflow");
            t[i].GroupNumber = *rest;
        }
    }
    // The grid is not rebuilt: the new groups show when the list is next rebuilt.
    f.Command2Caption = std::string(kStartSelection);
    ui.Message("Selection Finished",
               Str(k) + " events are randomly selected and grouped as number " + f.Combo5);
}

void Criteria_Command3(Session& s, UserDialogs& ui, CriteriaForm& f) {
    const double start = Val(f.Text3);
    const double end = Val(f.Text4);
    if (end < start) {
        ui.Message("Error",
                   "End time should be greater than start time.  Please check the numbers and "
                   "try again.");
        return;
    }
    // From here each statement that fails (a zero duration, a group that no byte holds) is
    // passed over and the next runs with the values as they stand.
    const double duration = Val(f.Text2);
    const auto durationInt = ToInt32(duration);
    const auto selectionGroup = GroupOf(f.Combo7);
    const auto restGroup = GroupOf(f.Combo8);
    EventTable& t = s.events;
    std::int64_t count = 0;
    std::int32_t e = 0;
    std::int32_t lastEpisode = 0;
    std::int32_t sequence = 0;
    for (std::int32_t i = 1; i <= t.EventCount(); ++i) {
        EventRecord& ev = t[i];
        // A failed division leaves the row with the episode of the row before.
        const auto timeInt = ToInt32(ev.Time);
        if (timeInt && durationInt && *durationInt != 0) e = *timeInt / *durationInt;
        const double offset = double(ev.Time) - double(e) * duration;
        if (offset > start && offset < end) {
            if (f.Check7) {
                if (e > 255) e = 255;
                // Episode 255 does not fit the byte and leaves the group as it was; episode
                // 254 gives 255, the rejected mark. Both stay as they always were.
                if (const auto g = ToUInt8(double(e) + 1)) ev.GroupNumber = *g;
            } else if (f.Check8) {
                sequence = e == lastEpisode ? sequence + 1 : 1;
                ev.GroupNumber = kGroupBurst;
                if (const auto b = ToInt16(double(e) + 1)) ev.BurstNumber = *b;
                if (const auto n = ToInt16(double(sequence))) ev.BurstEventNumber = *n;
            } else if (selectionGroup) {
                ev.GroupNumber = *selectionGroup;
            }
            ++count;
            lastEpisode = e;
        } else if (f.Check6 && restGroup) {
            ev.GroupNumber = *restGroup;
        }
    }
    ui.Message("Finished", Str(count) + " events are grouped.");
}

float Rnd(Session& s) {
    constexpr std::uint32_t kMask = (1u << 24) - 1;
    s.RndState = (s.RndState * 0x43FD43FDu + 0xC39EC3u) & kMask;
    return float(s.RndState) / float(1u << 24);
}

}  // namespace ardel

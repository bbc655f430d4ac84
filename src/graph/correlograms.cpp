#include "graph/correlograms.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "core/number_text.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"
#include "graph/histograms.h"

namespace ardel {

namespace {

// The values without NaN, ascending. A NaN difference lies in no range, so dropping them
// changes no count.
std::vector<float> SortedFinite(std::span<const float> values) {
    std::vector<float> v;
    v.reserve(values.size());
    for (const float x : values)
        if (!std::isnan(x)) v.push_back(x);
    std::sort(v.begin(), v.end());
    return v;
}

// Counts differences that lie in low..high, both inclusive, into counts; offset is the index
// of bin 0.
struct Counter {
    double low = 0, high = 0, bin = 0;
    std::int64_t offset = 0;
    std::vector<std::int64_t>& counts;
    double inverse = 1 / bin;
    bool Below(float d) const { return double(d) < low; }
    bool Above(float d) const { return double(d) > high; }
    // A bin of a power of two has an exact inverse, and the product is the quotient.
    bool exact = [](double b) {
        int e = 0;
        return std::frexp(b, &e) == 0.5;
    }(bin);

    // floor(d / bin). A product with the inverse is much cheaper than the division and differs
    // from it by a few units in the last place, which can only matter next to a whole number;
    // there the division decides, so the bins are exactly those of the division. The quotients
    // in range are small, so a truncating conversion does the floor.
    std::int64_t Bin(float d) const {
        const double q = double(d) * inverse;
        std::int64_t k = std::int64_t(q);
        if (double(k) > q) --k;
        if (exact) return k;
        const double fraction = q - double(k);
        if (fraction < 1e-9 || fraction > 1 - 1e-9)
            return std::int64_t(std::floor(double(d) / bin));
        return k;
    }
    void Put(std::int64_t k, std::int64_t n) const {
        k += offset;
        // Rounding at the ends of the range may not leave the counters.
        if (k >= 0 && k < std::int64_t(counts.size())) counts[std::size_t(k)] += n;
    }
    // Distances from x to the values first..last, all known to lie in range.
    template <typename It>
    void AddAll(float x, It first, It last) const {
        for (; first != last; ++first) Put(Bin(*first - x), 1);
    }
};

// The Data Array's values 1..upper.
std::span<const float> Values(const DataArray& a) {
    return std::span<const float>(a.values).subspan(1);
}

struct BinChoice {
    float binSize = 0;
    std::int32_t upperBin = 0;
    bool normalise = false;
};

// The two input boxes, the Normalize question (auto-correlograms only) and the bin limit with
// Retry and Cancel. nullopt ends the command.
std::optional<BinChoice> AskBins(UserDialogs& ui, bool cross) {
    const std::string name = cross ? "Cross-Interval" : "Interval";
    for (;;) {
        BinChoice c;
        const std::string bin =
            ui.InputText("Bin Size", "Please enter the bin size for " + name + " in ms.", "1");
        c.binSize = float(Val(bin));
        if (bin.empty() || c.binSize == 0) return std::nullopt;
        const std::string text =
            cross ? "Please enter the maximum number of bins.  This value determines the upper "
                    "and lower range of the x-axis.  For example, 1000 bins of bin size 1 ms sets "
                    "the x range as -1000 ms < x < +1000 ms."
                  : "Please enter the maximum number of bins.  This value determines the upper "
                    "range of the x-axis.  For example, 1000 bins of bin size 1 ms sets the x "
                    "range as 0 < x < +1000 ms.";
        const double upper = Int(Val(ui.InputText("Maximum Number of Bin", text, "1000")));
        if (!cross)
            c.normalise = ui.Ask("Normalize",
                                 "Do you want to normalize by the total number of events?",
                                 Buttons::YesNo) == Answer::Yes;
        const double bins = cross ? 2 * upper + 1 : upper + 1;
        if (bins > double(kMaxBins)) {
            if (ui.Ask("Too many bins", "Too many bins!  Please readjust the bin size and try again.",
                       Buttons::RetryCancel) == Answer::Retry)
                continue;
            return std::nullopt;
        }
        // No counters at all: the array of counters cannot be dimensioned.
        if (upper < 0) {
            ui.RuntimeError("Subscript out of range");
            return std::nullopt;
        }
        c.upperBin = std::int32_t(upper);
        return c;
    }
}

GraphModel CorrelogramGraph(const std::string& caption, const std::string& title,
                            const std::string& left, const std::string& bottom) {
    GraphModel g;
    g.Caption = GraphTitleText(caption);
    g.GraphTitle = GraphTitleText(title);
    g.LeftTitle = left;
    g.BottomTitle = bottom;
    g.GraphStyle = kStyleLines;
    return g;
}

}  // namespace

std::vector<std::int64_t> AutoCorrelogramCounts(std::span<const float> values, float binSize,
                                                std::int32_t upperBin) {
    std::vector<std::int64_t> counts(std::size_t(std::max(upperBin, -1) + 1), 0);
    if (counts.empty() || binSize == 0) return counts;
    const Counter c{0, double(upperBin) * double(binSize), double(binSize), 0, counts};
    const std::vector<float> v = SortedFinite(values);
    // A negative bin size makes a range below 0 that no distance reaches.
    if (c.high < 0) return counts;
    for (std::size_t i = 0; i + 1 < v.size(); ++i) {
        // Single subtraction is monotonic in the later value, so the pairs of i inside the
        // range are the values up to the first distance past it.
        const float x = v[i];
        const auto end = std::partition_point(v.begin() + std::ptrdiff_t(i) + 1, v.end(),
                                              [&](float y) { return !c.Above(y - x); });
        c.AddAll(x, v.begin() + std::ptrdiff_t(i) + 1, end);
    }
    return counts;
}

std::vector<std::int64_t> CrossCorrelogramCounts(std::span<const float> from,
                                                 std::span<const float> to, float binSize,
                                                 std::int32_t upperBin) {
    std::vector<std::int64_t> counts(
        std::size_t(std::max<std::int64_t>(2 * std::int64_t(upperBin) + 1, 0)), 0);
    if (counts.empty() || binSize == 0) return counts;
    const double range = double(upperBin) * double(binSize);
    const Counter c{-std::fabs(range), std::fabs(range), double(binSize), upperBin, counts};
    if (range < 0) return counts;
    const std::vector<float> target = SortedFinite(to);
    for (const float x : from) {
        if (std::isnan(x)) continue;
        // The differences to x grow with the target value: the ones in range are contiguous.
        const auto first = std::partition_point(target.begin(), target.end(),
                                                [&](float y) { return c.Below(y - x); });
        const auto last =
            std::partition_point(first, target.end(), [&](float y) { return !c.Above(y - x); });
        c.AddAll(x, first, last);
    }
    return counts;
}

void menu_AutoCorrelogram(Session& s, UserDialogs& ui, int index) {
    const DataArray& a = index == 2 ? s.dataArray2 : s.dataArray1;
    if (a.IsEmpty()) return;
    const auto c = AskBins(ui, false);
    if (!c) return;
    const auto counts = AutoCorrelogramCounts(Values(a), c->binSize, c->upperBin);
    const std::string which = index == 2 ? "Array#2" : "Array#1";
    GraphModel g = CorrelogramGraph(" Auto-correlogram of " + which + " " + s.Label11,
                                    "Auto-correlogram of " + which + " bin size=" + CStr(c->binSize),
                                    "Auto-correlation", "Interval (ms)");
    const double n = double(a.UpperBound());
    g.SetPointCount(int(counts.size()));
    for (std::size_t i = 0; i < counts.size(); ++i) {
        const double count = double(counts[i]);
        g.AddPoint(float(double(i) * double(c->binSize)), float(c->normalise ? count / n : count));
    }
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void menu_CrossCorrelogram(Session& s, UserDialogs& ui, int index) {
    if (s.dataArray1.IsEmpty() || s.dataArray2.IsEmpty()) return;
    const auto c = AskBins(ui, true);
    if (!c) return;
    const bool second = index == 2;
    const DataArray& from = second ? s.dataArray2 : s.dataArray1;
    const DataArray& to = second ? s.dataArray1 : s.dataArray2;
    const auto counts = CrossCorrelogramCounts(Values(from), Values(to), c->binSize, c->upperBin);
    const std::string which =
        second ? "Array#2 against Array #1" : "Array#1 against Array #2";
    GraphModel g =
        CorrelogramGraph(" Cross-correlogram of " + which + " " + s.Label11,
                         "Cross-correlogram of " + which + " bin size=" + CStr(c->binSize),
                         "Cross-correlation", "Cross-Interval (ms)");
    g.SetPointCount(int(counts.size()));
    const double lower = -double(c->upperBin);
    for (std::size_t i = 0; i < counts.size(); ++i)
        g.AddPoint(float((lower + double(i)) * double(c->binSize)), float(counts[i]));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

}  // namespace ardel

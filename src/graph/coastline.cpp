#include "graph/coastline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>

#include "core/number_text.h"
#include "graph/graph_model.h"
#include "graph/graph_sink.h"
#include "graph/histograms.h"

namespace ardel {

namespace {

// Every raw value in the recording's units, so that the per-sample work is a lookup.
std::vector<float> UnitTable(const Recording& r) {
    std::vector<float> table(65536);
    for (int v = -32768; v <= 32767; ++v) table[std::size_t(v + 32768)] = r.Bit2pA(double(v));
    return table;
}

std::int64_t DataStart(const Recording& r) {
    return std::int64_t(r.header.lDataSectionPtr) * std::int64_t(kAbfBlockSize);
}

void WholeRecording(Session& s, UserDialogs& ui) {
    const Recording& r = s.recording;
    const std::string reply =
        ui.InputText("Time Bin", "Please enter the length of time for each bin in msec.", "");
    const double binTime = Val(reply);
    if (reply.empty() || binTime == 0) return;
    // Microseconds between points; a bin holds the whole points of its time.
    const double points = RoundHalfEven(binTime * 1000.0 / double(r.SampleInterval));
    const double total = double(RecordingPoints(r));
    if (!(points >= 1) || total / points > double(kMaxBins)) {
        ui.Message("Too many bins", "Too many bins!  Please readjust the bin size and try again.");
        return;
    }
    const std::vector<double> bins = CoastlineBins(r, std::int64_t(points));
    GraphModel g;
    g.Caption = GraphTitleText(" Coastline Time Course " + s.Label11);
    g.GraphTitle = GraphTitleText(" Coastline Time Course  " + s.Label11 + " bin size=" +
                                  CStr(binTime) + " ms");
    g.LeftTitle = "Coastline Length";
    g.BottomTitle = "Time (s)";
    g.GraphStyle = kStyleLines;
    g.SetPointCount(int(bins.size()));
    for (std::size_t b = 0; b < bins.size(); ++b)
        g.AddPoint(float(double(b) * binTime / 1000.0), float(bins[b]));
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void DisplayWindow(Session& s, UserDialogs& ui) {
    const Recording& r = s.recording;
    const std::vector<float> table = UnitTable(r);
    auto unit = [&](std::int16_t v) { return double(table[std::size_t(v + 32768)]); };
    double sum = 0;
    for (std::int32_t i = 1; i < r.ScreenPoints(); ++i)
        sum += std::fabs(unit(r.GetSampleValue(i)) - unit(r.GetSampleValue(i - 1)));
    ui.Message("Coastline Length",
               "The coastline length of the trace in this display window is " +
                   Format(sum, "0.000") + ".");
}

}  // namespace

std::int64_t RecordingPoints(const Recording& r) {
    if (!r.source) return 0;
    const std::int64_t bytes = std::int64_t(r.source->Size()) - DataStart(r);
    const std::int64_t pointBytes = 2 * std::int64_t(std::max(r.Stride(), 1));
    return bytes > 0 ? bytes / pointBytes : 0;
}

std::vector<double> CoastlineBins(const Recording& r, std::int64_t pointsPerBin) {
    std::vector<double> bins;
    if (!r.source || pointsPerBin < 1) return bins;
    const std::int64_t count = RecordingPoints(r) / pointsPerBin;
    bins.assign(std::size_t(count), 0.0);
    const std::vector<float> table = UnitTable(r);
    const std::int64_t stride = std::max(r.Stride(), 1);
    const std::int64_t start = DataStart(r) + 2 * std::int64_t(r.ChannelIndex);
    // A few hundred kilobytes at a time, whatever the bin's length.
    constexpr std::int64_t kChunkPoints = 1 << 16;
    std::vector<std::int16_t> chunk;
    const std::int64_t last = count * pointsPerBin;
    float previous = 0;
    std::size_t bin = 0;
    std::int64_t inBin = 0;  // the point's place in its bin
    for (std::int64_t p = 0; p < last;) {
        const std::int64_t n = std::min(kChunkPoints, last - p);
        chunk.resize(std::size_t(n * stride));
        r.source->Read(start + p * stride * 2,
                       std::span<std::uint8_t>(reinterpret_cast<std::uint8_t*>(chunk.data()),
                                               chunk.size() * 2 - std::size_t(2 * r.ChannelIndex)));
        for (std::int64_t k = 0; k < n; ++k, ++p) {
            const float v = table[std::size_t(chunk[std::size_t(k * stride)] + 32768)];
            if (inBin != 0) bins[bin] += std::fabs(double(v) - double(previous));
            previous = v;
            if (++inBin == pointsPerBin) {
                inBin = 0;
                ++bin;
            }
        }
    }
    return bins;
}

void menu_CoastlineM(Session& s, UserDialogs& ui, int index) {
    if (!s.recording.FileIsOpen) return;
    if (index == 0)
        WholeRecording(s, ui);
    else
        DisplayWindow(s, ui);
}

}  // namespace ardel

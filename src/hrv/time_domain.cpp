#include "hrv/time_domain.h"

#include <cmath>

#include "arrays/numeric_library.h"
#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/settings.h"
#include "core/text_save.h"
#include "events/event_list.h"

namespace ardel::hrv {

namespace fs = std::filesystem;

const std::array<std::string_view, 16> kTimeDomainColumns = {
    "File Name", "MRR",   "SDRR (CLV)", "CV%",  "MANN",  "SDANN", "MSDNN", "SDSDNN",
    "n RR",      "n dRR", "nSegment",   "MdRR", "SDdRR", "rMSSD", "%NN",   "nNN"};
const std::array<std::string_view, 5> kSegmentColumns = {"Seg #", "Time (s)", "n RR", "Mean RR",
                                                         "Std RR"};

namespace {

constexpr std::array<std::string_view, 16> kDefinitions = {
    "File name of the original data file.",
    "MRR is the mean of RR-intervals.",
    "SDRR is the standard deviation of RR-intervals.  It is also called cyclic length variation "
    "(CLV).",
    "CV% is the coefficient of variance in percentage.  CV%=SDRR/MRR*100.",
    "MANN is the mean of the mean of RR-intervals for each segment of the 24 hr ECG recording.",
    "SDANN is the standard deviation of the mean of RR-intervals for each segment of the 24 hr "
    "ECG recording.",
    "MSDNN is the mean of the standard deviation of RR-intervals for each segment of the 24 hr "
    "ECG recording.",
    "SDSDNN is the standard deviation of the standard deviation of RR-intervals for each segment "
    "of the 24 hr ECG recording.",
    "n RR is the total number of RR-intervals used in this analysis.",
    "n dRR is the total number of delta RR-intervals (e.g. successive difference between "
    "adjoining RR-intervals) used in this analysis.",
    "nSegment is the total number of segments in 24 hr ECG recording.",
    "MdRR is the mean of delta RR-intervals (e.g. successive difference between adjoining "
    "RR-intervals).",
    "SDdRR is the standard deviation of delta RR-intervals (e.g. successive difference between "
    "adjoining RR-intervals).",
    "rMSSD is the root mean square of delta RR-intervals, the square root of the mean of the sum "
    "of the squares of differences between adjoining RR-intervals.",
    "%NN is the percentage of delta RR-intervals that are greater than the threshold indicated "
    "in the above option box.",
    "nNN is the number of times that a delta RR-interval is greater than the threshold indicated "
    "in the above option box."};

// More segments than this are refused: each takes a record, and a segment of a few points over
// a day's recording would take gigabytes.
constexpr double kMaxSegments = 10000000;

constexpr std::string_view kSection = "HRV";
// Every value of the HRV section is read through a buffer of 100 characters.
constexpr std::size_t kIniBuffer = 100;

// Division and square root as the analysis meets them: a zero divisor or a negative radicand is
// a run-time error that the analysis passes over, so the value stays as it was.
void DivideInto(double& out, double numerator, double denominator) {
    if (denominator == 0) return;
    out = numerator / denominator;
}
void SqrtDivideInto(double& out, double numerator, double denominator) {
    if (denominator == 0) return;
    const double q = numerator / denominator;
    if (!(q >= 0)) return;
    out = std::sqrt(q) + 0.0;  // + 0.0 turns a -0 into 0
}

// The segments' work records: count, sum and sum of squares besides what the grid shows.
struct SegmentWork {
    std::int64_t count = 0;
    double sum = 0;
    double squares = 0;
    double mean = 0;
    double sd = 0;
};

class Segmenter {
  public:
    Segmenter(const TimeDomainInput& in, std::size_t segments)
        : pointsPerSegment_(in.pointsPerSegment),
          msPerPoint_(double(in.sampleIntervalUs) / 1000.0),
          work_(segments) {}
    // The segment of a beat at time t (ms); nullptr where the index falls outside the segments
    // made (a beat beyond the recording's end, no sample interval): the subscript error skips
    // the segment's update and nothing else.
    SegmentWork* At(float t) {
        const double k = Int(double(t) / msPerPoint_ / pointsPerSegment_);
        if (!(k >= 0 && k < double(work_.size()))) return nullptr;
        return &work_[std::size_t(k)];
    }
    std::vector<SegmentWork>& Work() { return work_; }

  private:
    double pointsPerSegment_;
    double msPerPoint_;
    std::vector<SegmentWork> work_;
};

std::string GridText(std::span<const std::string_view> captions,
                     const std::vector<std::vector<std::string>>& rows) {
    std::string text;
    for (const auto c : captions) text += std::string(c) + "\t";
    text += "\r\n";
    for (const auto& row : rows) {
        for (const auto& cell : row) text += cell + "\t";
        text += "\r\n";
    }
    return text;
}

// The rows with numbers through Str (files) or CStr (the window).
template <typename Conv>
std::vector<std::vector<std::string>> MeasureRows(const HrvForm& f, Conv conv) {
    std::vector<std::vector<std::string>> rows;
    for (const TimeDomainRow& r : f.TDBGrid1) {
        std::vector<std::string> row{r.FileName};
        for (int m = 0; m < kTimeDomainMeasures; ++m) row.push_back(conv(r.values[std::size_t(m)]));
        rows.push_back(std::move(row));
    }
    return rows;
}
template <typename Conv>
std::vector<std::vector<std::string>> SegmentRows(const HrvForm& f, Conv conv) {
    std::vector<std::vector<std::string>> rows;
    for (const SegmentRecord& r : f.TDBGrid2)
        rows.push_back({conv(double(r.number)), conv(r.startTime), conv(double(r.nRR)),
                        conv(r.mean), conv(r.sd)});
    return rows;
}

}  // namespace

RRBounds HrvForm::Bounds() const { return {Val(Combo2), Val(Combo3)}; }

std::string_view TimeDomainDefinition(int column) {
    if (column < 0 || column >= int(kDefinitions.size())) return {};
    return kDefinitions[std::size_t(column)];
}

void HRV_TDBGrid1_HeadClick(UserDialogs& ui, int column) {
    const auto text = TimeDomainDefinition(column);
    if (!text.empty()) ui.Message("Definition", text);
}

void UpdateSegmentTime(HrvForm& f, const Session& s) {
    f.Label4 = CStr(float(Val(f.Text1) * double(s.recording.SampleInterval) / 1000.0));
}

std::string SegmentCountProblem(double totalPoints, double pointsPerSegment) {
    if (!(pointsPerSegment > 0))
        return "The number of sample points of a segment must be greater than 0.";
    if (Int(totalPoints / pointsPerSegment + 0.9999) > kMaxSegments)
        return "The recording would be divided into more than 10,000,000 segments.  Please "
               "enter a larger number of sample points.";
    return {};
}

TimeDomainResult ComputeTimeDomain(const EventTable& events, const TimeDomainInput& in) {
    TimeDomainResult out;
    const std::int32_t n = events.EventCount();
    // Int as floor, with 0.9999 for a ceiling: a total just past a multiple adds no segment.
    auto nSeg = std::int64_t(Int(in.totalPoints / in.pointsPerSegment + 0.9999));
    Segmenter seg(in, std::size_t(std::max<std::int64_t>(nSeg, 0)));

    std::vector<double> rr;
    rr.reserve(std::size_t(std::max(n - 1, 0)));
    for (std::int32_t i = 2; i <= n; ++i) {
        const float t = events[i].Time;
        const float v = t - events[i - 1].Time;
        if (!in.bounds.Accepts(v)) continue;
        rr.push_back(v);
        if (SegmentWork* w = seg.At(t)) {
            ++w->count;
            w->sum += double(v);
        }
    }
    const double segmentSeconds = in.pointsPerSegment * double(in.sampleIntervalUs) / 1000000.0;
    if (in.excludeLastSegment) --nSeg;
    auto& work = seg.Work();
    const auto used = std::size_t(std::max<std::int64_t>(nSeg, 0));

    double sumMeans = 0;
    std::int64_t empty = 0;
    for (std::size_t k = 0; k < used; ++k) {
        SegmentWork& w = work[k];
        if (w.count > 0) w.mean = w.sum / double(w.count);
        else ++empty;
        sumMeans += w.mean;
    }
    const auto segments = double(nSeg);
    double mann = 0, sdann = 0, msdnn = 0, sdsdnn = 0;
    DivideInto(mann, sumMeans, in.includeZero ? segments : segments - double(empty));
    double squares = 0;
    for (std::size_t k = 0; k < used; ++k) {
        if (work[k].count > 0 || in.includeZero) squares += (work[k].mean - mann) * (work[k].mean - mann);
    }
    SqrtDivideInto(sdann, squares,
                   in.includeZero ? segments - 1 : segments - double(empty) - 1);

    for (std::int32_t i = 2; i <= n; ++i) {
        const float t = events[i].Time;
        const float v = t - events[i - 1].Time;
        if (!in.bounds.Accepts(v)) continue;
        if (SegmentWork* w = seg.At(t)) w->squares += (double(v) - w->mean) * (double(v) - w->mean);
    }
    double sumSds = 0;
    std::int64_t thin = 0;
    for (std::size_t k = 0; k < used; ++k) {
        SegmentWork& w = work[k];
        if (w.count > 1) w.sd = std::sqrt(w.squares / double(w.count - 1));
        else ++thin;
        sumSds += w.sd;
    }
    DivideInto(msdnn, sumSds, in.includeZero ? segments : segments - double(thin));
    squares = 0;
    for (std::size_t k = 0; k < used; ++k) {
        if (work[k].count > 1 || in.includeZero) squares += (work[k].sd - msdnn) * (work[k].sd - msdnn);
    }
    SqrtDivideInto(sdsdnn, squares, in.includeZero ? segments - 1 : segments - double(thin) - 1);

    // Successive differences of the accepted list: neighbours after filtering, even across a
    // dropped beat.
    std::vector<double> drr;
    drr.reserve(rr.size());
    double deltaSquares = 0;
    std::int64_t nnn = 0;
    for (std::size_t i = 1; i < rr.size(); ++i) {
        const auto delta = double(float(rr[i]) - float(rr[i - 1]));
        drr.push_back(delta);
        deltaSquares += delta * delta;
        if (std::abs(delta) > in.thresholdDeltaRR) ++nnn;
    }
    const auto nRR = double(rr.size());
    const auto ndRR = double(drr.size());
    const Descriptive rrStats = DescriptiveStatistics(rr);
    const Descriptive drrStats = DescriptiveStatistics(drr);
    double rmssd = 0, percentNN = 0;
    SqrtDivideInto(rmssd, deltaSquares, ndRR);
    if (ndRR != 0) percentNN = double(nnn) / ndRR * 100.0;

    const std::array<double, kTimeDomainMeasures> m = {
        rrStats.mean, rrStats.sd, rrStats.cv, mann,          sdann,        msdnn, sdsdnn, nRR,
        ndRR,         segments,   drrStats.mean, drrStats.sd, rmssd, percentNN, double(nnn)};
    for (std::size_t k = 0; k < m.size(); ++k) {
        // A value the runtime could not compute stays as the new row held it.
        if (std::isfinite(m[k])) out.measures[k] = float(m[k]);
    }
    out.segments.reserve(used);
    for (std::size_t k = 0; k < used; ++k)
        out.segments.push_back({std::int32_t(k), double(k) * segmentSeconds, work[k].count,
                                work[k].mean, work[k].sd});
    return out;
}

void HRV_Command1(Session& s, UserDialogs& ui, HrvForm& f) {
    if (s.events.EventCount() == 0) return;
    const Recording& r = s.recording;
    TimeDomainInput in;
    in.bounds = f.Bounds();
    in.pointsPerSegment = Val(f.Text1);
    in.thresholdDeltaRR = Val(f.Combo1);
    in.includeZero = f.Check1;
    in.excludeLastSegment = f.Check2;
    const int channels = std::max<int>(r.header.nADCNumChannels, 1);
    in.totalPoints = r.FileIsOpen ? double(r.header.lActualAcqLength / channels) : 0.0;
    in.sampleIntervalUs = r.SampleInterval;
    if (const auto problem = SegmentCountProblem(in.totalPoints, in.pointsPerSegment);
        !problem.empty()) {
        ui.Message("Segments", problem);
        return;
    }
    f.TDBGrid1.push_back({s.Label11, {}});
    const Answer a = ui.Ask("Sort Events",
                            "This function requires that the events are sorted by time.  Would "
                            "you like to sort the events now?",
                            Buttons::YesNo);
    if (a == Answer::Yes) menu_sort(s, kSortByTime);
    TimeDomainResult result = ComputeTimeDomain(s.events, in);
    std::copy(result.measures.begin(), result.measures.end(), f.TDBGrid1.back().values.begin());
    f.TDBGrid2 = std::move(result.segments);
}

std::vector<std::vector<std::string>> TimeDomainGridCells(const HrvForm& f) {
    return MeasureRows(f, [](float v) { return CStr(v); });
}
std::vector<std::vector<std::string>> SegmentGridCells(const HrvForm& f) {
    return SegmentRows(f, [](double v) { return CStr(v); });
}
std::string TimeDomainGridText(const HrvForm& f) {
    return GridText(kTimeDomainColumns, MeasureRows(f, [](float v) { return Str(v); }));
}
std::string SegmentGridText(const HrvForm& f) {
    return GridText(kSegmentColumns, SegmentRows(f, [](double v) { return Str(v); }));
}

void SaveGridText(const Session& s, UserDialogs& ui, const std::string& text) {
    FileDialogSpec spec;
    spec.defaultExtension = "txt";
    spec.filter = "ASCII File (*.txt)";
    spec.initialDirectory = s.CurrentFolder;
    SaveTextThroughDialog(ui, spec, text, ExistingFile::Refuse);
}

void LoadIniSettings(HrvForm& f, const fs::path& iniFile) {
    auto read = [&](std::string_view key, std::string_view def) {
        return GetPrivateProfileString(kSection, key, def, kIniBuffer, iniFile);
    };
    f.Combo2 = read("RRUBound", "100");
    f.Combo3 = read("RRLBound", "10");
    f.Text1 = read("NPointsSeg", "30000");
    f.Combo1 = read("ThreshdeltaRR", "50");
    // A flag the runtime cannot read as a Boolean is an error, never a default.
    auto flag = [&](std::string_view key) {
        const std::string text = read(key, "0");
        if (const auto b = TextToBoolean(text)) return *b;
        throw SettingsError(std::string(kSection), std::string(key), text,
                            "is neither \"True\", \"False\" nor a number");
    };
    f.Check1 = flag("IncludeZero");
    f.Check2 = flag("ExcludeLastSeg");
}

void HRV_Command2(UserDialogs& ui, const HrvForm& f, const fs::path& iniFile) {
    const std::pair<std::string_view, std::string> keys[] = {
        {"RRUBound", f.Combo2},
        {"RRLBound", f.Combo3},
        {"NPointsSeg", f.Text1},
        {"ThreshdeltaRR", f.Combo1},
        {"IncludeZero", FlagText(f.Check1)},
        {"ExcludeLastSeg", FlagText(f.Check2)}};
    for (const auto& [key, value] : keys) WritePrivateProfileString(kSection, key, value, iniFile);
    ui.Message(kSettingsSavedTitle, kSettingsSavedText);
}

}  // namespace ardel::hrv

#include "core/event_table.h"

#include <cstdio>

#include "core/number_text.h"
#include "core/recording.h"

namespace ardel {

EventRecord& EventTable::Add() {
    ++count_;
    // A preserving resize to 0..count: it cuts a longer array and keeps the old slot.
    slots_.resize(std::size_t(count_) + 1);
    return slots_[std::size_t(count_)];
}

void EventTable::SetCount(std::int32_t n) {
    if (n < 0) n = 0;
    if (std::size_t(n) + 1 > slots_.size()) slots_.resize(std::size_t(n) + 1);
    count_ = n;
}

void EventTable::Resize(std::int32_t n) {
    if (n < 0) n = 0;
    slots_.assign(std::size_t(n) + 1, EventRecord{});
    count_ = n;
}

namespace {

// FNV-1a over the bytes of each field; the records have padding, so they are not hashed whole.
class Digest {
  public:
    template <class T>
    void Add(const T& value) {
        const auto* p = reinterpret_cast<const unsigned char*>(&value);
        for (std::size_t i = 0; i < sizeof(T); ++i) h_ = (h_ ^ p[i]) * 1099511628211ull;
    }
    std::uint64_t Value() const { return h_; }

  private:
    std::uint64_t h_ = 14695981039346656037ull;
};

}  // namespace

std::uint64_t EventTable::Fingerprint() const {
    Digest d;
    d.Add(count_);
    for (std::int32_t n = 1; n <= count_; ++n) {
        const EventRecord& e = slots_[std::size_t(n)];
        d.Add(e.Time);
        d.Add(e.Amplitude);
        d.Add(e.Noise);
        d.Add(e.Rise);
        d.Add(e.Decay);
        d.Add(e.Baseline);
        d.Add(e.Area);
        d.Add(e.GroupNumber);
        d.Add(e.Channel);
        d.Add(e.BaselineLead);
        d.Add(e.Rise1090);
        d.Add(e.HalfWidth);
        d.Add(e.Rise50);
        d.Add(e.PeakDirection);
        d.Add(e.BurstNumber);
        d.Add(e.BurstEventNumber);
        d.Add(e.Slope1090);
        d.Add(e.EventText);
        d.Add(e.RelativeTime);
        d.Add(e.PeakPoint);
    }
    return d.Value();
}

void EventTable::MarkSaved() {
    EventsSaved = true;
    savedFingerprint_ = Fingerprint();
}

bool EventTable::HasUnsavedChanges() const {
    if (count_ == 0) return false;
    return !EventsSaved || Fingerprint() != savedFingerprint_;
}

void UpdateTDBGrid(EventTable& table) {
    ++table.GridVersion;
    table.EventsSaved = false;
}

std::string GridCaption(const EventTable& table, int column) {
    static const char* const kCaptions[kGridColumns] = {
        "",          "Time (ms)", "Amplitude", "Rise (ms)", "Decay (ms)", "Area",
        "Baseline",  "Noise",     "Group",     "Channel",   "10-90Rise",  "HalfWidth",
        "Rise50",    "Peak Dir",  "Burst#",    "BurstE#",   "10-90Slope", "Rel Time"};
    if (column < 0 || column >= kGridColumns) return {};
    if (column == 0) return Format(table.EventCount(), "#,##0");
    return kCaptions[column];
}

std::optional<std::string> GridCellText(const EventTable& table, const Recording& rec,
                                        std::int32_t row, int column) {
    if (row < 1 || row > table.EventCount() || column < 0 || column >= kGridColumns)
        return std::nullopt;
    const EventRecord& e = table[row];
    auto standard = [](float v) { return Format(v, "Standard"); };
    switch (column) {
        case 0: return CStr(row);
        case 1: return standard(e.Time);
        case 2: return CStr(rec.Bit2pA2(e.Amplitude));
        case 3: return standard(rec.Bit2msec(e.Rise));
        case 4: return standard(rec.Bit2msec(e.Decay));
        case 5: return standard(e.Area);
        case 6: return CStr(rec.Bit2pA(e.Baseline));
        case 7: return CStr(rec.Bit2pA2(e.Noise));
        case 8: return CStr(int(e.GroupNumber));
        case 9: return CStr(int(e.Channel));
        case 10: return standard(e.Rise1090);
        case 11: return standard(e.HalfWidth);
        case 12: return standard(rec.Bit2msec(e.Rise50));
        case 13: return CStr(int(e.PeakDirection));
        case 14: return CStr(int(e.BurstNumber));
        case 15: return CStr(int(e.BurstEventNumber));
        case 16: return standard(e.Slope1090);
        case 17: return standard(rec.Bit2msec(e.RelativeTime));
    }
    return std::nullopt;
}

const std::array<const char*, 20> kEventFieldNames = {
    "Time",      "Amplitude",    "Noise",         "Rise",        "Decay",
    "Baseline",  "Area",         "GroupNumber",   "Channel",     "BaselineLead",
    "Rise1090",  "HalfWidth",    "Rise50",        "PeakDirection", "BurstNumber",
    "BurstEventNumber", "Slope1090", "EventText", "RelativeTime", "PeakPoint"};

namespace {

std::string FloatText(float v) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.9g", double(v));
    return buf;
}

// The opaque text field, trimmed of padding, quoted when it holds a separator or a quote.
std::string CsvText(const std::array<char, 12>& field) {
    std::string t = RTrim(TrimNul(std::string(field.data(), field.size())));
    if (t.find_first_of(",\"\r\n") == std::string::npos) return t;
    std::string q = "\"";
    for (char c : t) {
        if (c == '"') q += '"';
        q += c;
    }
    return q + "\"";
}

}  // namespace

std::string EventCsvLine(const EventRecord& e) {
    std::string s;
    s.reserve(160);
    auto add = [&s](const std::string& v) {
        if (!s.empty()) s += ',';
        s += v;
    };
    auto num = [](long long v) { return std::to_string(v); };
    add(FloatText(e.Time));
    add(num(e.Amplitude));
    add(num(e.Noise));
    add(num(e.Rise));
    add(num(e.Decay));
    add(num(e.Baseline));
    add(FloatText(e.Area));
    add(num(e.GroupNumber));
    add(num(e.Channel));
    add(num(e.BaselineLead));
    add(FloatText(e.Rise1090));
    add(FloatText(e.HalfWidth));
    add(num(e.Rise50));
    add(num(e.PeakDirection));
    add(num(e.BurstNumber));
    add(num(e.BurstEventNumber));
    add(FloatText(e.Slope1090));
    // An empty text must still take its column.
    s += ',';
    s += CsvText(e.EventText);
    s += ',';
    s += num(e.RelativeTime);
    s += ',';
    s += num(e.PeakPoint);
    return s;
}

std::string GridText(const EventTable& table, const Recording& recording) {
    std::string text;
    for (int c = 0; c < kGridColumns; ++c) {
        if (c) text += '\t';
        text += GridCaption(table, c);
    }
    text += '\n';
    for (std::int32_t n = 1; n <= table.EventCount(); ++n) {
        for (int c = 0; c < kGridColumns; ++c) {
            if (c) text += '\t';
            text += GridCellText(table, recording, n, c).value_or("");
        }
        text += '\n';
    }
    return text;
}

}  // namespace ardel

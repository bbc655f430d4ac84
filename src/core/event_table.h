// The event table: one record per detected event, numbered from 1.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ardel {

struct Recording;

// Amplitudes and baselines in raw ADC values ("bits"), rise and decay in points, Time in
// milliseconds from the start of the recording.
struct EventRecord {
    float Time = 0;
    std::int32_t Amplitude = 0;
    std::int16_t Noise = 0;
    std::int16_t Rise = 0;
    std::int16_t Decay = 0;
    std::int16_t Baseline = 0;
    float Area = 0;
    std::uint8_t GroupNumber = 0;
    std::uint8_t Channel = 0;
    std::int16_t BaselineLead = 0;
    float Rise1090 = 0;
    float HalfWidth = 0;
    std::int16_t Rise50 = 0;
    std::int16_t PeakDirection = 0;
    std::int16_t BurstNumber = 0;
    std::int16_t BurstEventNumber = 0;
    float Slope1090 = 0;
    std::array<char, 12> EventText{};  // opaque, carried through files
    std::int32_t RelativeTime = 0;
    std::int32_t PeakPoint = 0;

    bool operator==(const EventRecord&) const = default;
};

inline constexpr std::uint8_t kGroupMissingBeat = 253;
inline constexpr std::uint8_t kGroupBurst = 254;
inline constexpr std::uint8_t kGroupRejected = 255;

class EventTable {
public:
    EventTable() : slots_(1) {}

    std::int32_t EventCount() const { return count_; }
    bool Empty() const { return count_ == 0; }

    // Event n, 1 <= n <= EventCount(). Slot 0 is no event; it reads as a zero record.
    EventRecord& operator[](std::int32_t n) { return slots_[std::size_t(n)]; }
    const EventRecord& operator[](std::int32_t n) const { return slots_[std::size_t(n)]; }
    // The last record, or slot 0 when the table is empty.
    const EventRecord& Last() const { return slots_[std::size_t(count_)]; }

    // Adds one slot and returns it for filling. The slot keeps whatever an earlier, longer
    // table left in it (a cleared table is not wiped), so fields that the caller does not
    // write keep that content, as they always have.
    EventRecord& Add();
    // Sets the count; slots beyond it keep their contents until the next Add cuts the array.
    void SetCount(std::int32_t n);
    // Sizes the table for rows 1..n, all fields zero (loading a file).
    void Resize(std::int32_t n);
    // Number of slots the array holds (at least EventCount() + 1).
    std::size_t SlotCount() const { return slots_.size(); }

    std::int32_t CurrentEvent = 0;
    // The old flag: cleared by every rebind of the grid, set by saving and loading. Some edits
    // (a rejection in place) never clear it, so the question about unsaved events asks
    // HasUnsavedChanges() instead.
    bool EventsSaved = false;

    // Sets EventsSaved and remembers what the table holds, so that any later change to it,
    // whichever command made it, counts as unsaved.
    void MarkSaved();
    // True when the table holds events that differ from what was last saved or loaded.
    bool HasUnsavedChanges() const;
    // A digest of the count and of every field of records 1..EventCount.
    std::uint64_t Fingerprint() const;

    // What the grid shows: the row that the last command made current (0: none), and a
    // counter of rebinds so that a view can tell that it must refresh.
    std::int32_t GridCurrentRow = 0;
    std::uint64_t GridVersion = 0;

private:
    std::vector<EventRecord> slots_;
    std::int32_t count_ = 0;
    std::uint64_t savedFingerprint_ = 0;
};

// Tells the grid the new row count and clears EventsSaved.
void UpdateTDBGrid(EventTable& table);

// The grid's columns 0..17. Column 0's caption is the event count.
inline constexpr int kGridColumns = 18;
std::string GridCaption(const EventTable& table, int column);
// Text of one cell as the grid shows it; nullopt (Null) for a row outside 1..EventCount or a
// column outside 0..17. Amplitudes are converted with the recording's current channel scale.
std::optional<std::string> GridCellText(const EventTable& table, const Recording& recording,
                                        std::int32_t row, int column);

// The whole grid as it shows: the captions line, then one line per event, cells separated by
// tabs, each line ended by a line feed.
std::string GridText(const EventTable& table, const Recording& recording);

// The names of the stored fields, in record order, as the CSV export heads its columns.
extern const std::array<const char*, 20> kEventFieldNames;
// One CSV line of the stored fields (floats with 9 significant digits, so they read back
// exactly), without the line end.
std::string EventCsvLine(const EventRecord& e);

}  // namespace ardel

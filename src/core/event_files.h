// Event files (.EVT) and parameter files (.PAR): a copy of the recording's ABF header with the
// program's identity and values written over it, and the events from offset 2048.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/abf_header.h"
#include "core/event_table.h"
#include "core/parameters.h"
#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Where the program's own values lie in the header copy.
namespace event_offset {
inline constexpr std::size_t AreaThreshold = 1954;
inline constexpr std::size_t PeakDirection = 1958;
inline constexpr std::size_t NumberPointsPeak = 1960;  // event files only
inline constexpr std::size_t EventCount = 1986;
inline constexpr std::size_t ThresholdAmplitude = 1990;
inline constexpr std::size_t PeriodToSearchMax = 1994;
inline constexpr std::size_t PeriodStartBaseline = 1998;
inline constexpr std::size_t PeriodFindDecayTime = 2002;
inline constexpr std::size_t DecayPercent = 2006;
inline constexpr std::size_t PeriodBaselineAverage = 2010;
inline constexpr std::size_t SourceFileName = 2014;  // 34 characters
inline constexpr std::size_t Records = 2048;
}  // namespace event_offset

inline constexpr std::size_t kSourceNameLength = 34;
inline constexpr std::size_t kFileCommentLength = 56;
inline constexpr std::size_t kEventRecordSize = 64;     // current layout ("5.0")
inline constexpr std::size_t kOldEventRecordSize = 24;  // "3.0" and the oldest layout
inline constexpr std::string_view kEventFileMark = "Ardelvantine 5.0";
inline constexpr std::string_view kParameterFileMark = "Ardelvantine 3.0";

// How the records of an event file are laid out, told by the version mark at 294.
enum class EventFileLayout {
    Current,   // the mark holds "5.0": 64-byte records
    Version3,  // the mark holds "3.0": the first 24 bytes of the current record
    Oldest,    // neither: 24-byte records with a 16-bit amplitude
};

// An event file as read. Bytes past the end of the file read as zeros, as they always did:
// a short file yields zero fields, never an error.
struct EventFileContents {
    std::string versionMark;       // the 16 characters at 294
    std::string comment;           // the 56 characters at 310
    std::string sourceName;        // the 34 characters at 2014, untrimmed
    DetectionParameters params;    // NumberPointsPeak as stored (0 is not yet made 1)
    std::int32_t storedCount = 0;  // N at 1986 as stored
    EventFileLayout layout = EventFileLayout::Current;
    std::vector<EventRecord> records;  // events 1..n in records[0..n-1]
    // The oldest layout stores no BaselineLead; the load gives every row PeriodStartBaseline as
    // a 16-bit integer, which overflows beyond 32767: the load then ends with no rows.
    bool baselineLeadOverflow = false;
    // Counts that the file cannot back (negative, or far beyond its length), and what the
    // reader did about them.
    std::vector<std::string> warnings;
};

// At most this many rows past the records the file holds are filled with zeros. A count that
// asks for more is taken as damage: the table keeps only the records in the file.
inline constexpr std::int64_t kMaxZeroFilledEventRows = 65536;

// True when the creator mark at 294 contains "Ardelvantine" (event and parameter files).
bool IsArdelvantineFile(const AbfHeader& header);

// Layout for a version mark.
EventFileLayout LayoutOfMark(std::string_view versionMark);

// The whole event file as menu_SaveEvent writes it: the header copy with the mark and the
// comment (blank-padded into sFileComment), the program's values from 1954 to 2047, and the
// records from 2048. Never shorter than 6144 bytes.
std::vector<std::uint8_t> EncodeEventFile(const AbfHeader& header,
                                          const DetectionParameters& params,
                                          std::string_view comment, std::string_view label11,
                                          std::span<const EventRecord> records);
// Reads any bytes, however short or damaged, with the rules above.
EventFileContents DecodeEventFile(std::span<const std::uint8_t> bytes);

// The 6144-byte parameter file: the header copy with the mark "Ardelvantine 3.0", the
// parameters without NumberPointsPeak, the event count of the moment and the file name.
std::array<std::uint8_t, kAbfHeaderSize> EncodeParameterFile(const AbfHeader& header,
                                                             const DetectionParameters& params,
                                                             std::int32_t eventCount,
                                                             std::string_view label11);

// Record codecs of the three layouts (the 24-byte ones for tests and converters).
void EncodeEventRecord(const EventRecord& e, std::span<std::uint8_t, kEventRecordSize> out);
EventRecord DecodeEventRecord(std::span<const std::uint8_t, kEventRecordSize> in);

// The name of the event file that a batch run saves: Label11 up to its first "." plus ".EVT",
// in the folder of the data file.
std::filesystem::path BatchEventFilePath(const Session& s);

// Saves the event table. Outside a batch run the save dialog is shown; during one
// (display.BatchRunning) the file is BatchEventFilePath without a dialog. An existing file is
// replaced only after "Replace File" is answered Yes, and is written over in place: bytes of an
// older, longer file stay behind the new contents. Returns true when the file was written.
bool menu_SaveEvent(Session& s, UserDialogs& ui);
// Asks for an event file, checks it against the open recording and loads it.
void menu_OpenEvent(Session& s, UserDialogs& ui);
// Loads the event file named (all three layouts), replacing the detection parameters and the
// comment; asks whether to convert an older layout. Returns false when the file cannot be read
// (nothing changes then). What a damaged file made the reader do is added to
// s.recording.warnings.
bool OpenEventFile(Session& s, UserDialogs& ui, const std::filesystem::path& path);
// Saves and loads the detection parameters alone; the dialogs start in programDir.
void menu_SaveParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir);
void menu_LoadParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir);
// Shows the comment for editing; an empty answer or Cancel keeps it.
void menu_FileComments(Session& s, UserDialogs& ui);

}  // namespace ardel

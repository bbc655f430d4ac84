// Opening a recording as a click in the file list does, the header window's rows, and the
// Synch Array extraction.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/abf2_reader.h"
#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The whole open sequence: the question about unsaved events, the header checks with their
// messages, the event-file branch, the channel question, scale factors, buffers, tags, the
// first Display. Returns FileIsOpen. Problems that do not stop the open (a truncated file,
// counts beyond the file's end) are listed in s.recording.warnings.
bool OpenDataFile(Session& s, UserDialogs& ui, const std::filesystem::path& file);

// The header of a data file as the program works on it: an ABF 1.x header as read (the first
// 6144 bytes, zeros past a short file's end), or the ABF 1.x header built from an ABF 2 file.
struct DataFileHeader {
    AbfHeader header;
    bool abf2 = false;
    std::optional<Abf2Error> abf2Error;  // an ABF 2 file that cannot be read; header is then raw
    std::vector<std::string> warnings;   // each begins with the file's name
};
DataFileHeader ReadDataFileHeader(const SampleSource& src, const std::string& name);

// Why an ABF 2 file cannot be read, as a message box says it: title and text.
std::pair<std::string, std::string> Abf2ErrorMessage(const Abf2Error& e, const std::string& name);

// Makes the file behind source the recording's data file as a batch run takes it, without the
// open sequence's questions: the header as read, the source, LastChannelIndex, SampleInterval,
// fresh screen buffers, the tags and the warnings about the file's layout. The caller has
// checked the header (1 to 16 channels) and keeps FileIsOpen, Label11, the channel, TotalBlocks
// and ScreenBlock; it sets the scale factors first, since the warnings look at them.
void AttachRecordingFile(Recording& r, std::shared_ptr<const SampleSource> source,
                         const DataFileHeader& header, const std::string& name);

// Switches the active channel (Combo3): scale factors again, then Display. The buffers hold
// every channel already, so they keep their shape.
void SelectChannel(Session& s, int channelIndex);

// The rows of the header window, label and value, and its title.
std::vector<std::pair<std::string, std::string>> DatInfoRows(const Session& s);
std::string DatInfoTitle(const Session& s);

enum class SynchTarget { DataArray1, DataArray2, EventTable };
// Synch Array to a data array (start times or inter-event intervals) or into the events'
// RelativeTime.
void menu_ExtractSynchArray(Session& s, UserDialogs& ui, SynchTarget target);

}  // namespace ardel

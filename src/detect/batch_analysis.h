// Batch analysis: every chosen data file is opened, analysed from its first screen to its
// last with the settings of the moment, saved as an event file beside it, and the table reset.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/abf_header.h"
#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

enum class BatchFileStatus {
    Analysed,    // analysed to the end (or to an interrupt) and, with events, saved
    PassedOver,  // the run had been interrupted before this file
    NotAbf,      // no "ABF " signature: skipped without a message
    Unreadable,  // could not be opened: skipped
    Unusable,    // a header the analysis cannot work with, or without the active channel
};

struct BatchFileOutcome {
    std::filesystem::path file;
    BatchFileStatus status = BatchFileStatus::PassedOver;
    std::int32_t eventCount = 0;      // events in the table when the file was saved
    std::filesystem::path eventFile;  // the event file written; empty when none was
    std::vector<std::string> warnings;
};

struct BatchReport {
    std::vector<BatchFileOutcome> files;
    bool interrupted = false;  // BatchRunning was cleared during the run
};

// The file list from the file dialog's result string: cut at every blank; with more than one
// part the first is the folder and the others are names in it, a single part is the full
// path. A name holding a blank falls apart, as it always did. nullopt for more than 101
// parts, the size of the old list, which ended the command.
std::optional<std::vector<std::filesystem::path>> BatchFileList(std::string_view result);
// The result string of the old multiple-choice dialog for the files chosen: the full path of
// a single file, else the folder and the names, joined by blanks.
std::string BatchDialogResult(const std::vector<std::filesystem::path>& chosen);

// TotalBlocks of a batch run: lActualAcqLength / 256, halves to even. Unlike the open
// sequence it does not divide by the channel count and has no minimum of 1.
std::int32_t BatchTotalBlocks(const AbfHeader& h);
// The gain of a batch run for ADC number adc: the four factors always multiplied, the
// autosample gain included whatever the autosample and telegraph fields say.
float BatchChannelGain(const AbfHeader& h, int adc);

// The event file a batch run writes for a data file: its name up to the first "." plus
// ".EVT", in the data file's folder.
std::filesystem::path BatchEventFileFor(const std::filesystem::path& dataFile);
// Files of the list that would write the same event file, grouped by that file, in the order
// of the list; the later file's events would replace the earlier's.
struct EventFileClash {
    std::filesystem::path eventFile;
    std::vector<std::filesystem::path> dataFiles;
};
std::vector<EventFileClash> BatchEventFileClashes(const std::vector<std::filesystem::path>& files);

// Every file starts from an empty table. The per-file sequence over full paths: header, TotalBlocks, ScreenBlock, gain and offset,
// Display, a yield, Command1, Command3, menu_SaveEvent without a dialog, Command5. Sets
// BatchRunning for the run and clears it at the end; an Interrupt (Command4) during a yield
// lets the running file finish at its next screen and be saved, and passes over the rest.
// The channel, the parameters and the display settings stay as they are. Command5's question
// is answered OK without being shown, so that the run never waits for it and the table is
// empty after each file. Other questions (replacing an existing event file) go to ui.
BatchReport RunBatch(Session& s, UserDialogs& ui, const std::vector<std::filesystem::path>& files);

// "&Batch Analysis": the multiple-choice file dialog in the current folder, then RunBatch over
// the list. Nothing happens when the dialog is cancelled. Before the run, files that would
// write the same event file are named and the user may cancel; events in the table are
// offered for saving as closing the window does (Cancel ends the batch), so that no file's
// event file ever holds another file's events.
BatchReport menu_batch(Session& s, UserDialogs& ui);

}  // namespace ardel

// Event files (.EVT) and parameter files (.PAR): a copy of the recording's ABF header with the
// program's identity and values written over it, and the events from offset 2048.
#pragma once

#include <filesystem>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Saves the event table. Outside a batch run the save dialog is shown; during one
// (display.BatchRunning) the file is Label11 up to its first "." plus ".EVT" in the data
// file's folder. Returns true when the file was written.
bool menu_SaveEvent(Session& s, UserDialogs& ui);
// Asks for an event file, checks it against the open recording and loads it.
void menu_OpenEvent(Session& s, UserDialogs& ui);
// Loads the event file named (all three layouts), replacing the detection parameters.
// Returns false when the file cannot be read.
bool OpenEventFile(Session& s, UserDialogs& ui, const std::filesystem::path& path);
void menu_SaveParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir);
void menu_LoadParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir);
void menu_FileComments(Session& s, UserDialogs& ui);

}  // namespace ardel

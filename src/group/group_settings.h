// The group window's settings: its four sections of Ardelvan.ini in and out of its controls,
// and the window's first use, which reads them.
#pragma once

#include <filesystem>

#include "core/settings.h"
#include "core/user_dialogs.h"
#include "group/grp_anal_form.h"

namespace ardel::group {

GroupAnalysisSettings SettingsFromForm(const GrpAnalForm& f);
void SettingsToForm(const GroupAnalysisSettings& g, GrpAnalForm& f);

// LoadIniSettings of the window: the four sections of the file into the controls.
void LoadIniSettings(GroupWindow& w, const std::filesystem::path& file);

// The window's load, the first time it is used: reads Ardelvan.ini, empties the store and
// selects the default list positions; values set into its controls before are put back over
// what was read. Does nothing after the first time.
void LoadGroupWindow(GroupWindow& w, const std::filesystem::path& iniFile);

// The menu items of the "Settings" menu.
void menu_SaveSettings(const GroupWindow& w, UserDialogs& ui, const std::filesystem::path& iniFile);
void menu_SaveAsCustomSetup(const GroupWindow& w, UserDialogs& ui,
                            const std::filesystem::path& iniFile);
void menu_LoadSettings(GroupWindow& w, UserDialogs& ui, const std::filesystem::path& iniFile);

}  // namespace ardel::group

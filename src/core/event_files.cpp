#include "core/event_files.h"

// Placeholder until the event file formats land: saving and loading refuse with a message.
namespace ardel {

bool menu_SaveEvent(Session&, UserDialogs& ui) {
    ui.Message("Save Event", "Saving event files is not yet supported.");
    return false;
}
void menu_OpenEvent(Session&, UserDialogs& ui) {
    ui.Message("Open Event", "Opening event files is not yet supported.");
}
bool OpenEventFile(Session&, UserDialogs& ui, const std::filesystem::path&) {
    ui.Message("Open Event", "Opening event files is not yet supported.");
    return false;
}
void menu_SaveParameter(Session&, UserDialogs&, const std::filesystem::path&) {}
void menu_LoadParameter(Session&, UserDialogs&, const std::filesystem::path&) {}
void menu_FileComments(Session&, UserDialogs&) {}

}  // namespace ardel

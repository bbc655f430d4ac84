// Saving a text through a save dialog, as the program's text exports do: the default extension
// is added to a name without one, an existing file is asked about or refused, and the text is
// written beside and renamed over, so a failed write leaves the old file whole.
#pragma once

#include <string_view>

#include "core/user_dialogs.h"

namespace ardel {

enum class ExistingFile {
    AskToReplace,  // "Replace File": only Yes writes over it
    Refuse,        // "File Exist": the command ends
};

// Shows the dialog and writes the text; returns true when the file was written. A cancelled
// dialog or a write error (reported as the runtime's message) writes nothing.
bool SaveTextThroughDialog(UserDialogs& ui, const FileDialogSpec& spec, std::string_view text,
                           ExistingFile existing);

}  // namespace ardel

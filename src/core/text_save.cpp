#include "core/text_save.h"

#include <filesystem>

#include "core/ini_file.h"

namespace ardel {

bool SaveTextThroughDialog(UserDialogs& ui, const FileDialogSpec& spec, std::string_view text,
                           ExistingFile existing) {
    const auto chosen = ui.SaveFileName(spec);
    if (!chosen || chosen->empty()) return false;
    std::filesystem::path path = *chosen;
    if (!path.has_extension() && !spec.defaultExtension.empty())
        path += "." + spec.defaultExtension;
    std::error_code ec;
    // A link that leads nowhere is an existing name too.
    if (std::filesystem::exists(std::filesystem::symlink_status(path, ec))) {
        if (existing == ExistingFile::Refuse) {
            ui.Message("File Exist", "File already exist.  Try again with different file name.");
            return false;
        }
        if (ui.Ask("Replace File", "File already exist.  Do you want to replace this file?",
                   Buttons::YesNo) != Answer::Yes) {
            return false;
        }
    }
    try {
        WriteFileReplacing(path, text);
    } catch (const std::exception& e) {
        ui.RuntimeError(e.what());
        return false;
    }
    return true;
}

}  // namespace ardel

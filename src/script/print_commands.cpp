#include "script/print_commands.h"

namespace ardel {

void RegisterPrintCommands(CommandTable& table) {
    const auto refuse = [](CommandContext& c) { c.ui.Message(kProgramName, kPrintNeedsDesktop); };
    for (int index = 0; index <= 1; ++index) {
        table.Add(IndexedName("menu_printeventsdirect", index), "Print", kPlainCommand,
                  refuse);
        table.Add(IndexedName("menu_EventsPrintPreview", index), "Print Preview",
                  kPlainCommand, refuse);
    }
    table.Add("menu_eventspagesetup", "Print Page Setup", kPlainCommand, refuse);
}

}  // namespace ardel

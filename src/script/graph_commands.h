// The Plot menu's handlers and every graph window's menu by name: "menu_FreqHisto(3)",
// "Graph(2).menu_CopyDataASCII". Graphs are numbered in opening order.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "script/command_table.h"

namespace ardel {

void RegisterGraphCommands(CommandTable& table);

// The name a script gives graph N's value text in "show": "Graph(N)".
inline constexpr std::string_view kGraphControlName = "Graph(N)";
// The value text of the graph a "show Graph(N)" line names; nullopt when the name is no graph
// name. A graph that is not open is a script error.
std::optional<std::string> GraphControlText(const Session& s, std::string_view name);

}  // namespace ardel

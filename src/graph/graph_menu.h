// The menu of a graph window ("Graph and Data" and the window arrangement), as engine commands
// on one graph. The desktop's menu items and scripts' Graph(N).menu_... run these.
#pragma once

#include "core/session.h"
#include "core/user_dialogs.h"
#include "graph/graph_model.h"

namespace ardel {

// "Copy Graph as Picture" and "Save Graph as Picture" (PNG, SVG or PDF by the extension).
void menu_CopyGraph(Session& s, UserDialogs& ui, GraphModel& g);
void menu_Copy2BMP(Session& s, UserDialogs& ui, GraphModel& g);
// "Copy Graph Values to Clipboard": each set is made current and takes colour 9 and symbol 3
// before its rows are written, and keeps them.
void menu_copydata(UserDialogs& ui, GraphModel& g);
// "Save Graph Values as ASCII file".
void menu_CopyDataASCII(Session& s, UserDialogs& ui, const GraphModel& g);
// "Copy Graph Values to Array #1 and Array #2": x and y of the current set.
void menu_Array1(Session& s, UserDialogs& ui, const GraphModel& g);
// "Add a Plot from Array #1 and Array #2": a new set, x from array 1 and y from array 2.
void menu_AddPlot1(Session& s, UserDialogs& ui, GraphModel& g);
// "Open a Blank Graph" (also the main window's menu_OpenGraph).
void menu_BlankGraph(Session& s);
void menu_PrintGraph(Session& s, UserDialogs& ui, const std::shared_ptr<GraphModel>& g);
void menu_SelectPlot(Session& s, UserDialogs& ui);
void menu_customize(Session& s, UserDialogs& ui, GraphModel& g);
void menu_changeXMax(UserDialogs& ui, GraphModel& g);
void menu_changeYMax(UserDialogs& ui, GraphModel& g);
void menu_XTicks(UserDialogs& ui, GraphModel& g);
void menu_YTicks(UserDialogs& ui, GraphModel& g);
void menu_EditTitle(UserDialogs& ui, GraphModel& g);
void menu_XTitle(UserDialogs& ui, GraphModel& g);
void menu_YTitle(UserDialogs& ui, GraphModel& g);
// menu_tile_horizontal (1), menu_tile_vertical (2), menu_cascade (0).
void ArrangeGraphs(Session& s, int code);

// What the command line says where a picture or a printer is asked for.
inline constexpr std::string_view kNeedsDesktopTitle = "Graph Window";
inline constexpr std::string_view kNeedsDesktopText =
    "Pictures and printing of graphs need the desktop program.  Run the script with "
    "\"ardelvantine --run\" to save pictures; the values can be saved here.";

}  // namespace ardel

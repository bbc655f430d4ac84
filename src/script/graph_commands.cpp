// The Plot menu's handlers (histograms, running averages, the arrays' plots, the blank graph)
// and the menu of every open graph window, by name.
#include "script/graph_commands.h"

#include <array>
#include <charconv>

#include "events/event_list.h"
#include "graph/graph_menu.h"
#include "graph/graph_sink.h"
#include "graph/histograms.h"
#include "script/script_error.h"

namespace ardel {

namespace {

void SortEventsByTime(Session& s) { menu_sort(s, kSortByTime); }

std::shared_ptr<GraphModel> OpenGraphOrFail(const Session& s, int number) {
    auto g = GraphNumber(s, number);
    if (!g) {
        throw ScriptError("there is no graph " + std::to_string(number) + " (" +
                          std::to_string(s.graphs.size()) + " open)");
    }
    return g;
}

void RegisterPlotMenu(CommandTable& t) {
    struct Family {
        const char* menu;
        const char* title;
        int offset;
    };
    const Family families[] = {
        {"menu_FreqHisto", "Frequency Histogram", kFrequencyKind},
        {"menu_CumulHisto", "Cumulative Histogram", kCumulativeKind},
        {"menu_CumulHistoNoBin", "Cumulative Histogram without Bins", kCumulativeNoBinKind},
        {"menu_InverseCumuloHisto", "Inverse Cumulative Histogram", kInverseCumulativeKind},
    };
    for (const Family& f : families) {
        for (int field = 1; field <= kFieldArray2; ++field) {
            const int kind = f.offset + field;
            t.Add(std::string(f.menu) + "(" + std::to_string(kind) + ")", f.title, kPlainCommand,
                  [kind](CommandContext& c) { Histogram(c.session, c.ui, kind, SortEventsByTime); });
        }
    }
    // The Data Array menu's entries pass fixed kinds.
    const std::pair<const char*, int> arrayPlots[] = {
        {"menu_plotFreqHist1", 14},     {"menu_plotFreqHist2", 15},
        {"menu_plotCumHist1", 34},      {"menu_plotCumHist2", 35},
        {"menu_plotCumHistnobin1", 54}, {"menu_plotCumHistnobin2", 55}};
    for (const auto& [name, kind] : arrayPlots) {
        t.Add(name, "Histogram of Data Array", kPlainCommand, [kind = kind](CommandContext& c) {
            Histogram(c.session, c.ui, kind, SortEventsByTime);
        });
    }
    for (int field = 1; field <= kFieldArray1; ++field) {
        if (RunningAverageCaption(field).empty()) continue;
        t.Add("menu_RunningAverage(" + std::to_string(field) + ")",
              "Running Average Histo (Avg+SEM)", kPlainCommand, [field](CommandContext& c) {
                  RunningAveragePlot(c.session, c.ui, field, SortEventsByTime);
              });
    }
    t.Add("menu_plotscatterXY", "X-Y Plot of Array #1 and Array #2", kPlainCommand,
          [](CommandContext& c) { menu_plotscatterXY(c.session, c.ui); });
    t.Add("menu_OpenGraph", "Open a Blank Graph", kPlainCommand,
          [](CommandContext& c) { menu_BlankGraph(c.session); });
}

using GraphBody = void (*)(CommandContext&, const std::shared_ptr<GraphModel>&);

void RegisterGraphMenu(CommandTable& t) {
    struct Item {
        const char* name;
        const char* title;
        GraphBody body;
    };
    static constexpr Item kItems[] = {
        {"menu_CopyGraph", "Copy Graph as Picture",
         [](CommandContext& c, const auto& g) { menu_CopyGraph(c.session, c.ui, *g); }},
        {"menu_Copy2BMP", "Save Graph as Picture",
         [](CommandContext& c, const auto& g) { menu_Copy2BMP(c.session, c.ui, *g); }},
        {"menu_copydata", "Copy Graph Values to Clipboard",
         [](CommandContext& c, const auto& g) { menu_copydata(c.ui, *g); }},
        {"menu_CopyDataASCII", "Save Graph Values as ASCII file",
         [](CommandContext& c, const auto& g) { menu_CopyDataASCII(c.session, c.ui, *g); }},
        {"menu_Array1", "Copy Graph Values to Array #1 and Array #2",
         [](CommandContext& c, const auto& g) { menu_Array1(c.session, c.ui, *g); }},
        {"menu_AddPlot1", "Add a Plot from Array #1 and Array #2",
         [](CommandContext& c, const auto& g) { menu_AddPlot1(c.session, c.ui, *g); }},
        {"menu_BlankGraph", "Open a Blank Graph",
         [](CommandContext& c, const auto&) { menu_BlankGraph(c.session); }},
        {"menu_PrintGraph", "Print Current Graph",
         [](CommandContext& c, const auto& g) { menu_PrintGraph(c.session, c.ui, g); }},
        {"menu_SelectPlot", "Select Graphs to Print",
         [](CommandContext& c, const auto&) { menu_SelectPlot(c.session, c.ui); }},
        {"menu_customize", "Customize Graph",
         [](CommandContext& c, const auto& g) { menu_customize(c.session, c.ui, *g); }},
        {"menu_changeXMax", "Change X axis Maximum",
         [](CommandContext& c, const auto& g) { menu_changeXMax(c.ui, *g); }},
        {"menu_changeYMax", "Change Y axis Maximum",
         [](CommandContext& c, const auto& g) { menu_changeYMax(c.ui, *g); }},
        {"menu_XTicks", "Change X axis Number of Ticks",
         [](CommandContext& c, const auto& g) { menu_XTicks(c.ui, *g); }},
        {"menu_YTicks", "Change Y axis Number of Ticks",
         [](CommandContext& c, const auto& g) { menu_YTicks(c.ui, *g); }},
        {"menu_EditTitle", "Graph Title",
         [](CommandContext& c, const auto& g) { menu_EditTitle(c.ui, *g); }},
        {"menu_XTitle", "X Axis Title", [](CommandContext& c, const auto& g) { menu_XTitle(c.ui, *g); }},
        {"menu_YTitle", "Y Axis Title", [](CommandContext& c, const auto& g) { menu_YTitle(c.ui, *g); }},
        {"menu_tile_horizontal", "Tile Horizontally",
         [](CommandContext& c, const auto&) { ArrangeGraphs(c.session, 1); }},
        {"menu_tile_vertical", "Tile Vertically",
         [](CommandContext& c, const auto&) { ArrangeGraphs(c.session, 2); }},
        {"menu_cascade", "Cascade", [](CommandContext& c, const auto&) { ArrangeGraphs(c.session, 0); }},
    };
    for (const Item& item : kItems) {
        t.AddNumbered("Graph", item.name, item.title, kPlainCommand,
                      [body = item.body](CommandContext& c, int number) {
                          body(c, OpenGraphOrFail(c.session, number));
                      });
    }
}

}  // namespace

void RegisterGraphCommands(CommandTable& table) {
    RegisterPlotMenu(table);
    RegisterGraphMenu(table);
}

std::optional<std::string> GraphControlText(const Session& s, std::string_view name) {
    if (!name.starts_with("Graph(") || !name.ends_with(")")) return std::nullopt;
    const std::string_view digits = name.substr(6, name.size() - 7);
    int number = 0;
    const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (ec != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    return GraphValueText(*OpenGraphOrFail(s, number));
}

}  // namespace ardel

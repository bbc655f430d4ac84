#include "graph/graph_menu.h"

#include <algorithm>
#include <cctype>
#include <exception>

#include "core/number_text.h"
#include "core/safe_file.h"
#include "graph/graph_sink.h"

namespace ardel {

namespace {

constexpr std::string_view kReplaceTitle = "Replace File";
constexpr std::string_view kReplaceText = "File already exist.  Do you want to replace this file?";

std::string ProposedName(const Session& s) { return s.Label11.substr(0, s.Label11.find('.')); }

// The save dialog, the default extension for a bare name, and the replace question. nullopt
// when the user went back on it.
std::optional<std::filesystem::path> ChooseTarget(Session& s, UserDialogs& ui,
                                                  FileDialogSpec spec) {
    spec.fileName = ProposedName(s);
    spec.initialDirectory = s.CurrentFolder;
    auto chosen = ui.SaveFileName(spec);
    if (!chosen || chosen->empty()) return std::nullopt;
    std::filesystem::path path = *chosen;
    if (!path.has_extension()) path += "." + spec.defaultExtension;
    return path;
}

bool ConfirmReplace(UserDialogs& ui, const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::exists(std::filesystem::symlink_status(path, ec))) return true;
    return ui.Ask(kReplaceTitle, kReplaceText, Buttons::YesNo) == Answer::Yes;
}

// Writes through a temporary file, so a failed write leaves nothing half written.
void WriteOrSay(UserDialogs& ui, const std::filesystem::path& path, std::string_view bytes) {
    try {
        WriteFileSafely(path, bytes);
    } catch (const std::system_error& e) {
        ui.RuntimeError("The file " + path.string() + " could not be written (" +
                                       e.code().message() + ").  Nothing was written.");
    }
}

void SayNeedsDesktop(UserDialogs& ui) { ui.Message(kNeedsDesktopTitle, kNeedsDesktopText); }

// An input box whose reply, when one was given, is taken by Val.
std::optional<double> AskNumber(UserDialogs& ui, std::string_view title, std::string_view text,
                                const std::string& present) {
    const std::string reply = ui.InputText(title, text, present);
    if (reply.empty()) return std::nullopt;
    return Val(reply);
}

void AskTitle(UserDialogs& ui, GraphModel& g, std::string& field, std::string_view title,
              std::string_view text) {
    std::string reply = ui.InputText(title, text, field);
    if (reply.empty()) return;
    field = std::move(reply);
    g.Redraw();
}

}  // namespace

void menu_CopyGraph(Session& s, UserDialogs& ui, GraphModel& g) {
    if (!s.graphSink) return SayNeedsDesktop(ui);
    s.graphSink->CopyPicture(g);
}

void menu_Copy2BMP(Session& s, UserDialogs& ui, GraphModel& g) {
    FileDialogSpec spec;
    spec.title = "Save Graph as Picture";
    spec.defaultExtension = "png";
    spec.filter = "PNG Picture (*.png)|*.png|SVG Drawing (*.svg)|*.svg|PDF Document (*.pdf)|*.pdf";
    const auto path = ChooseTarget(s, ui, spec);
    if (!path) return;
    const auto format = PictureFormatOf(*path);
    if (!format) {
        ui.Message("Save Graph as Picture",
                   "Graphs are saved as PNG, SVG or PDF pictures.  Please choose a name ending "
                   "in .png, .svg or .pdf.");
        return;
    }
    if (!s.graphSink) return SayNeedsDesktop(ui);
    if (!ConfirmReplace(ui, *path)) return;
    std::string bytes;
    try {
        bytes = s.graphSink->PictureBytes(g, *format);
    } catch (const std::exception& e) {
        ui.RuntimeError(e.what());
        return;
    }
    WriteOrSay(ui, *path, bytes);
}

void menu_copydata(UserDialogs& ui, GraphModel& g) {
    // The copy walks the sets as the current set and marks each; the marks stay visible.
    for (int set = 1; set <= g.SetCount(); ++set) {
        g.CurrentSet = set;
        g.SetColor(set) = 9;
        g.SetSymbol(set) = kSymbolCircle;
    }
    g.Redraw();
    ui.SetClipboardText(GraphValueText(g));
}

void menu_CopyDataASCII(Session& s, UserDialogs& ui, const GraphModel& g) {
    FileDialogSpec spec;
    spec.title = "Save Graph Values as ASCII file";
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)";
    const auto path = ChooseTarget(s, ui, spec);
    if (!path || !ConfirmReplace(ui, *path)) return;
    WriteOrSay(ui, *path, GraphValueText(g));
}

void menu_Array1(Session& s, UserDialogs& ui, const GraphModel& g) {
    const int n = g.PointCount();
    s.dataArray1.Redim(n);
    s.dataArray2.Redim(n);
    for (int i = 1; i <= n; ++i) {
        const GraphPoint& p = g.Point(g.CurrentSet, i);
        s.dataArray1(i) = p.x;
        s.dataArray2(i) = p.y;
    }
    ui.Message("Done Filling Array #1 and Array #2",
               "All of " + Str(n) +
                   " graph data are safely put into Array #1 and Array #2 for further data "
                   "analysis.");
}

void menu_AddPlot1(Session& s, UserDialogs& ui, GraphModel& g) {
    g.SetSetCount(g.SetCount() + 1);
    const int set = g.SetCount();
    g.CurrentSet = set;
    const std::int32_t n1 = s.dataArray1.UpperBound();
    if (n1 > g.PointCount()) g.SetPointCount(n1);
    for (std::int32_t i = 1; i <= n1; ++i) {
        // The arrays are walked by the length of array 1; a shorter array 2 stops the loop
        // with the runtime's array check, after the points written so far.
        if (i > s.dataArray2.UpperBound()) {
            g.Redraw();
            ui.RuntimeError("Subscript out of range");
            return;
        }
        GraphPoint& p = g.Point(set, i);
        p.y = s.dataArray2(i);
        p.x = s.dataArray1(i);
    }
    g.SetColor(set) = (set + 1) % kColorCount;
    g.Redraw();
}

void menu_BlankGraph(Session& s) {
    GraphModel g;
    g.Caption = "Blank Graph";
    g.Redraw();
    OpenGraph(s, std::move(g));
}

void menu_PrintGraph(Session& s, UserDialogs& ui, const std::shared_ptr<GraphModel>& g) {
    if (!s.graphSink) return SayNeedsDesktop(ui);
    s.graphSink->Print(ui, {g});
}

void menu_SelectPlot(Session& s, UserDialogs& ui) {
    if (!s.graphSink) return SayNeedsDesktop(ui);
    s.graphSink->SelectGraphsToPrint(s, ui);
}

void menu_customize(Session& s, UserDialogs& ui, GraphModel& g) {
    if (!s.graphSink) return SayNeedsDesktop(ui);
    if (s.graphSink->Customize(g)) g.Redraw();
}

void menu_changeXMax(UserDialogs& ui, GraphModel& g) {
    const auto v = AskNumber(ui, "X Max", "Please enter the new value for X maximum.",
                             CStr(g.PointCount()));
    if (!v) return;
    g.XAxisStyleFlag = kAxisUserDefined;
    g.XAxisMaximum = std::max(*v, 5.0);
    g.Redraw();
}

void menu_changeYMax(UserDialogs& ui, GraphModel& g) {
    const double present =
        g.YAxisStyleFlag == kAxisUserDefined ? g.YAxisMaximum : g.AutoYMaximum();
    const auto v = AskNumber(ui, "Y Max", "Please enter the new value for Y maximum.",
                             CStr(float(present)));
    if (!v) return;
    g.YAxisStyleFlag = kAxisUserDefined;
    g.YAxisMaximum = *v;
    g.Redraw();
}

void menu_XTicks(UserDialogs& ui, GraphModel& g) {
    const auto v = AskNumber(ui, "X Axis Ticks",
                             "Please enter a new value for number of ticks on x-axis.",
                             CStr(g.XAxisTicks));
    if (!v) return;
    g.XAxisStyleFlag = kAxisUserDefined;
    g.XAxisTicks = ToInt32Clamped(*v);
    g.Redraw();
}

void menu_YTicks(UserDialogs& ui, GraphModel& g) {
    const auto v = AskNumber(ui, "Y Axis Ticks",
                             "Please enter a new value for number of ticks on y-axis.",
                             CStr(g.YAxisTicks));
    if (!v) return;
    g.YAxisStyleFlag = kAxisUserDefined;
    g.YAxisTicks = ToInt32Clamped(*v);
    g.Redraw();
}

void menu_EditTitle(UserDialogs& ui, GraphModel& g) {
    AskTitle(ui, g, g.GraphTitle, "Graph Title", "Please edit the graph titile.");
}

void menu_XTitle(UserDialogs& ui, GraphModel& g) {
    AskTitle(ui, g, g.BottomTitle, "X Axis Title", "Please edit the X axis title.");
}

void menu_YTitle(UserDialogs& ui, GraphModel& g) {
    AskTitle(ui, g, g.LeftTitle, "Y Axis Title", "Please edit the Y axis title.");
}

void ArrangeGraphs(Session& s, int code) {
    if (s.graphSink) s.graphSink->Arrange(code);
}

}  // namespace ardel

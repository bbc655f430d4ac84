// The group analysis window ("Group Analysis and Curve Fitting") as data: one field per control,
// holding what the control shows, with the defaults of a freshly loaded window. Commands read
// the controls from here at the moment of use; the desktop binds its widgets to these fields.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "graph/graph_model.h"
#include "group/group_scene.h"
#include "group/fit_picture.h"
#include "group/results_table.h"
#include "group/trace_store.h"

namespace ardel::group {

// The lists of the fitting tab's quality controls. A freshly loaded window selects the first
// minimum R-squared and the second change in R-squared: with an empty criterion Compare Fits
// would take any two-exponential fit that is better at all.
inline const std::vector<std::string> kMinimumRSquaredList{"0.9", "0.8", "0.7", "0.6", "0.5"};
inline const std::vector<std::string> kRSquaredChangeList{"0.5", "1", "2", "5", "10"};

struct GrpAnalForm {
    // The selected tab of SSTab1, by the window's own numbering: 0 display, 1 curve fitting,
    // 2 AP wave, 7 non-stationary noise, 8 multi peak (the numbers the results grid's captions
    // go by).
    int SSTab1 = 0;

    // ---- Display tab -------------------------------------------------------------------
    // Source of the traces: Option2(0) "Episodes", Option2(1) "Group #".
    bool Option2_0 = true;
    bool Option2_1 = false;
    std::string Combo1 = "1";          // group number
    std::string Combo2 = "Average";    // display type
    std::string Combo3 = "Peak";       // alignment
    std::string Combo4 = "1";          // Blocks to analyse (1 Block = 256 points)
    std::string Combo5 = "1";          // gain
    std::string Combo6 = "0";          // offset in sample units
    std::string Combo7 = "1";          // display every ... points (kept with the settings only)
    bool ckBaseline = false;
    bool Check10 = false;              // display full sweep
    bool Check1 = false;               // display cursors
    bool Check15 = false;              // time-lock cursors
    std::int32_t Slider1 = 0;
    std::string Label6;
    std::string lbCursor;
    // The cursors' x positions in points (Line1(0), Line1(1)).
    std::array<double, 2> Line1X{0.0, 0.0};

    // ---- Curve fitting tab -------------------------------------------------------------
    std::string Combo9 = "2";              // number of exponentials
    std::string Combo8 = "Peak to End";    // fit range
    std::string Combo11 = "1000";          // max iterations
    std::string Text5 = "0.001";           // tolerance
    int Combo29 = 0;                       // rise time: 0 "10-90%", 1 "20-80%", 2 "30-70%"
    bool Check3 = false;                   // include offset
    bool Check4 = false;                   // fix amplitude
    bool UseGuess = false;
    std::array<std::string, 3> Tau{"5", "100", "1000"};
    std::array<std::string, 3> Amp{"100", "50", "25"};
    bool Check16 = false;                  // difference area from the fit
    bool Check13 = false;                  // auto-reject
    std::string Combo10 = kMinimumRSquaredList[0];  // minimum R-squared
    std::string Combo31 = kRSquaredChangeList[1];   // compare fits: change in R-squared (%)
    bool Check14 = false;                  // regroup two-exponential traces
    std::string Combo32;                   // ... as this group
    std::string Command2 = "Start Fitting";
    std::string Label10;
    std::string Label11;
    // What the last fit drew over the trace.
    FitPicture Picture;
    // The results grid under the tabs.
    ResultsGrid TDBGrid1;

    // ---- AP wave analysis tab ----------------------------------------------------------
    std::string Text6;                     // points for smoothing
    std::string Combo14 = "20";            // width at a constant above threshold
    std::string Combo12 = "90-37%";        // decay calculation by %
    bool Check2 = false;                   // threshold as baseline
    std::string Combo19 = "5";             // Ym level (mV)
    std::string Combo20 = "2";             // Yt level (mV)
    std::string Combo13 = "50-90% Rise";   // amperometric rise (kept with the settings)
    std::string Combo15 = "2";             // electrons (kept with the settings)
    // The two routines' buttons: their captions are the run state ("Interrupt" while running).
    std::string Command17 = "AP Wave Analysis 1";
    std::string Command4 = "AP Wave Analysis 2";

    // ---- Random walk (kept with the settings) ------------------------------------------
    std::string Combo16 = "Amperometry in Slice";
    std::string Combo17 = "Diffusing";
    std::array<std::string, 8> Text1{"3.500", "0.240", "2.000", "4.000", "1.000", "25.000", "", "2.7e-6"};
    std::string Text2 = "500";
    std::string Text3 = "0.001";

    // ---- Non-stationary noise tab ------------------------------------------------------
    std::string Text4 = "100";             // number of amplitude bins
    std::string Combo18 = "5";             // consecutive traces to average
    bool Check5 = false;                   // subtract baseline variance
    bool Check6 = false;                   // include offset in fitting
    std::string Combo21 = "Synaptic Currents";  // recording type
    bool Check12 = false;                  // auto-rejection by confidence interval
    std::string Combo30 = "99";            // ... of this many percent
    std::string Command18 = "Start";       // "Interrupt" while running
    // The variance-current plot of the last run (also opened as a graph window).
    std::shared_ptr<GraphModel> Graph1;

    // ---- Multi peak tab ----------------------------------------------------------------
    std::string Combo22 = "1";             // points to avoid a duplicate peak
    std::string Command16 = "Analyze";     // "Interrupt" while running
};

// What the analyses print over the drawn trace. A redraw loses it, as printing on the picture
// did: GroupDisplay clears it before drawing.
struct GroupOverlay {
    // Lines of text, from the top left of the drawing area down.
    std::vector<std::string> text;
    // "X" marks at (point, sample value) of the picture's scale.
    std::vector<std::pair<std::int32_t, std::int16_t>> marks;
    // The fitted curve: store row TraceCount + 1 from point curveFrom to curveTo (-1: none).
    std::int32_t curveFrom = -1, curveTo = -1;
    // Straight lines from (point, sample value) to (point, sample value), fractional where a
    // crossing was interpolated: the width and the slope of an action potential.
    struct Segment {
        double x1, y1, x2, y2;
    };
    std::vector<Segment> lines;
    // Numbers beside marks: a turning point's ordinal, above a peak and below a trough.
    struct Label {
        std::int32_t point;
        std::int16_t sample;
        std::string text;
        bool above;
    };
    std::vector<Label> labels;
};

// The window's caption; also the heading of an extracted trace.
inline constexpr const char* kGrpAnalCaption = "Group Analysis and Curve Fitting";

// What the window holds between commands: its controls and the trace store.
struct GroupWindow {
    GrpAnalForm form;
    TraceStore store;
    GroupOverlay overlay;
    bool shown = false;
    // Set by the menu item (F3) that opens the window: an open window comes to the front.
    bool bringToFront = false;

    // ---- Display state -----------------------------------------------------------------
    // Size of the drawing area in pixels, read once when the window loads.
    std::int32_t PicWidth = 640;
    std::int32_t PicHeight = 400;
    // The cursor being dragged: 0 or 1, 255 for none.
    std::uint8_t SelectedCursor = 255;
    // The trace hit by the right mouse button, -1 for none.
    std::int32_t HighlightTrace = -1;
    // True while the window loads: Start Display and GroupDisplay do nothing then.
    bool loading = false;
    // The window has read its settings (it does so when first used).
    bool loaded = false;
    // What GroupDisplay drew last.
    GroupScene scene;
    // Values put into controls before the window was first used; they are applied again over
    // the settings that the first use reads, as if the window had loaded first.
    std::vector<std::function<void()>> pendingSets;
};

}  // namespace ardel::group

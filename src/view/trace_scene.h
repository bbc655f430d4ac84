// What the trace picture shows, as data: polylines per channel in picture units, texts and
// marks. The Qt trace widget only paints a scene; tests check scenes, not pixels.
//
// Picture units: x runs over the points of the screen (0 .. ScreenPoints()-1), y over raw
// display units, 0 at the top and 65536 at the bottom, as CalculateYPosition gives them.
//
// The picture is white. Channel pens: channel 0 black, then dark blue, dark green, brown,
// purple, teal, olive and grey, repeating from channel 8 on (ChannelColor). The mark colours
// (red, green, yellow, magenta) and the scale text's blue stay free for what they mean.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

struct ScenePoint {
    double x = 0, y = 0;
};

struct SceneTrace {
    int channel = 0;
    Rgb color;
    // Consecutive points joined by lines. A screen wider than the picture is reduced to the
    // minimum and maximum of the samples of each pixel column, which draws the same picture.
    std::vector<ScenePoint> points;
};

// Where (x, y) sits on the text: TopLeft and TopRight corners; Center the middle of the text;
// Left the middle of its left edge.
enum class TextAnchor { TopLeft, TopRight, Center, Left };

struct SceneText {
    std::string text;
    double x = 0, y = 0;
    TextAnchor anchor = TextAnchor::TopLeft;
    Rgb color;
};

struct SceneMark {
    enum class Kind { Cross, Point } kind = Kind::Cross;  // an "X" centred on (x, y), or a dot
    double x = 0, y = 0;
    Rgb color;
    int penWidth = 1;
    std::string label;   // group text beside the mark ("3", "B3.2"), empty for none
    double labelDy = 0;  // offset of the label in picture units (twice the text height)
    // The selected event's "X": painted in the blink colour while the selection blinks
    // (SelectionBlinkColor), in `color` otherwise.
    bool selected = false;
};

struct TraceScene {
    double width = 1024;    // points of the screen
    double height = 65536;  // picture units
    std::vector<SceneTrace> traces;
    std::vector<SceneText> texts;
    std::vector<SceneMark> marks;
    bool traceHidden = false;  // a non-stop run with "Display trace" off draws nothing
    // With several channels drawn: one entry per channel in its pen colour ("Channel 1").
    std::vector<SceneText> legend;
};

// The scene of the current screen for a picture pixelWidth pixels wide (the min/max reduction
// needs it) and textHeight picture units tall for one line of text. Reads the session only:
// Display has loaded the buffers already.
//
// Layout: the start and end times on the first text line (top left, top right), the scale
// value below the start time, voice tags ("V" centred on the third line, their text on the
// fourth). Marks: each event's red peak X with its group label, green baseline X, yellow
// rise and magenta decay points; then the marks the scan drew since the last Display; last the
// selected event's X (black).
TraceScene BuildTraceScene(const Session& s, int pixelWidth, double textHeight = 2048);

// Pen colour of a channel's trace.
Rgb ChannelColor(int channel);
// The selected event blinks: blue on even ticks, red on odd ones.
Rgb SelectionBlinkColor(std::uint64_t tick);

// Amplitude at a height of the picture for the active channel's gain and offset. The inverse
// of the picture's position uses 32768, not the 32786 of the drawing.
float CalculateAmplitude(const Session& s, double y);
// The pointer readout under the picture: time and amplitude at (x, y), x limited to the screen.
std::string Label4Text(const Session& s, double x, double y);

// Gain box: "0" and other values below 0.001 become 0.001, above 1000 become 1000; the value
// goes to the active channel's gain and the screen is redrawn. Returns the box's new text.
std::string SetDisplayGainText(Session& s, std::string_view text);
// Blocks-per-screen box: below 1 becomes 1, above 32767 becomes 32767; the buffers are
// dimensioned anew and the screen redrawn. Returns the box's new text.
std::string SetBlocksPerScreenText(Session& s, std::string_view text);
// What the two boxes show for the session's values.
std::string DisplayGainText(const Session& s);
std::string BlocksPerScreenText(const Session& s);

// Spin buttons (and Home/End for the gain): the gain doubles or halves, the screen length
// doubles or halves, each within the limits of its box; then Display. direction > 0 is up.
void StepDisplayGain(Session& s, int direction);
void StepBlocksPerScreen(Session& s, int direction);

// Slider1: the active channel's display offset; Display.
void SetDisplayOffset(Session& s, std::int32_t offset);
// Slider2: a position below the data section's start is raised to it; Display.
void SetScreenFromSlider(Session& s, double value);

// The timed display ("Display Data Trace Continously"): asks for the interval and starts the
// run. Returns the interval for the timer in milliseconds (1 .. 65535), or nullopt when
// nothing starts (no file, or no positive interval given).
inline constexpr std::string_view kTimedDisplayCaption = "Display Data Trace Continously";
std::optional<int> StartTimedDisplay(Session& s, UserDialogs& ui);
// One timer tick: the next screen, until the end of the recording clears the run. Returns
// false when the timer is to stop.
bool TimedDisplayTick(Session& s);

}  // namespace ardel

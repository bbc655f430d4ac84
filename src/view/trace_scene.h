// What the trace picture shows, as data: polylines per channel in picture units, texts and
// marks. The Qt trace widget only paints a scene; tests check scenes, not pixels.
//
// Picture units: x runs over the points of the screen (0 .. ScreenPoints()-1), y over raw
// display units, 0 at the top and 65536 at the bottom, as CalculateYPosition gives them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/session.h"

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
    std::string label;  // group text beside the mark ("3", "B3.2"), empty for none
    double labelDy = 0; // offset of the label in picture units (twice the text height)
};

struct TraceScene {
    double width = 1024;    // points of the screen
    double height = 65536;  // picture units
    std::vector<SceneTrace> traces;
    std::vector<SceneText> texts;
    std::vector<SceneMark> marks;
    bool traceHidden = false;  // a non-stop run with "Display trace" off draws nothing
};

// The scene of the current screen for a picture pixelWidth pixels wide (the min/max reduction
// needs it) and textHeight picture units tall for one line of text. Reads the session only:
// Display has loaded the buffers already.
TraceScene BuildTraceScene(const Session& s, int pixelWidth, double textHeight = 2048);

}  // namespace ardel

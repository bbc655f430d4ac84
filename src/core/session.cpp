#include "core/session.h"

#include "core/number_text.h"

namespace ardel {

double DisplayState::CalculateYPosition(double sample, int channel) const {
    const int c = channel < 0 || channel > 15 ? 0 : channel;
    return RoundHalfEven((32786.0 - DisplayOffset[c]) - double(DisplayGain[c]) * sample);
}

void Display(Session& s) {
    if (!s.recording.FileIsOpen) return;
    Recording& r = s.recording;
    r.LoadScreens();
    if (s.options.FilterOn && s.screenFilter) s.screenFilter(s);
    const bool drawsTrace = !(s.display.NonStopRunning && !s.display.DisplayTrace);
    if (s.display.LockBase && drawsTrace) {
        // The first point of each channel sits at the fraction FractionWindow from the bottom,
        // so the offset moves by itself from screen to screen.
        for (int c = 0; c <= r.LastChannelIndex && c < 16; ++c) {
            const double first = r.CurrentScreen.empty() ? 0 : r.CurrentScreen[std::size_t(c)];
            s.display.DisplayOffset[c] = ToInt32Clamped(
                RoundHalfEven(32786.0 - 65536.0 * double(s.display.FractionWindow) -
                              double(s.display.DisplayGain[c]) * first));
        }
    }
    // A redraw loses what was drawn over the trace: the scan's marks and the selection mark.
    s.display.transientMarks.clear();
    s.display.SelectedEvent = 0;
    if (s.onDisplay) s.onDisplay(s);
}

void ClearGrid(Session& s) {
    s.events.SetCount(0);
    UpdateTDBGrid(s.events);
    Display(s);
}

}  // namespace ardel

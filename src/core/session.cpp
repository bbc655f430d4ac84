#include "core/session.h"

#include "core/number_text.h"

namespace ardel {

double DisplayState::CalculateYPosition(double sample, int channel) const {
    const int c = channel < 0 || channel > 15 ? 0 : channel;
    return RoundHalfEven((32786.0 - DisplayOffset[c]) - double(DisplayGain[c]) * sample);
}

void Display(Session& s) {
    if (!s.recording.FileIsOpen) return;
    s.recording.LoadScreens();
    if (s.options.FilterOn && s.screenFilter) s.screenFilter(s);
    s.display.transientMarks.clear();
    if (s.onDisplay) s.onDisplay(s);
}

void ClearGrid(Session& s) {
    s.events.SetCount(0);
    UpdateTDBGrid(s.events);
    Display(s);
}

}  // namespace ardel

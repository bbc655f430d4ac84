// The coastline length of the trace: the sum of the absolute differences of adjacent samples in
// the recording's units, as a time course over the whole recording or for the display window.
#pragma once

#include <cstdint>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The coastline of each whole bin of pointsPerBin points of the active channel, read from the
// data file in pieces (never the whole file at once). A bin sums the pointsPerBin - 1
// differences inside it; the difference across a bin boundary belongs to no bin, and a last
// partial bin is left out.
std::vector<double> CoastlineBins(const Recording& r, std::int64_t pointsPerBin);

// Points of the active channel that the data file holds.
std::int64_t RecordingPoints(const Recording& r);

// menu_CoastlineM(0): the time course over the whole recording; menu_CoastlineM(1): the
// coastline of the display window, in a message.
void menu_CoastlineM(Session& s, UserDialogs& ui, int index);

}  // namespace ardel

// Events riding on the decay of an earlier event: a further peak behind a known one is
// measured against the extrapolated decay of the first instead of the flat baseline.
#pragma once

#include <cstdint>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// Looks for one further peak behind event n. With replace set, a record of exactly the same
// Time is overwritten in place (its group and direction kept) and the result is false;
// otherwise a new record is appended and the result is true.
bool DetectMultiPeak(Session& s, UserDialogs& ui, std::int32_t n, bool replace);

// "Analyse Double Peak" on the current event.
void menu_DoublePeak_Click(Session& s, UserDialogs& ui);
// "Scan and Detect Double Peaks": every event of the table as it stands, screen by screen,
// until the end or until NonStopRunning is cleared during a Yield.
void menu_ScanDoublePeak(Session& s, UserDialogs& ui);

}  // namespace ardel

// The main window's heart rate variability menu and its windows.
#pragma once

#include "script/forms.h"
#include "ui/hrv/hrv_window.h"
#include "ui/run_handler.h"

class QMainWindow;
class QMenu;

namespace ardel {

// Adds "&Heart Rate Variability" to the window's menu bar: the tachogram's plot, text and ABF
// file, the interval histograms, the Lorenz plot, the two scans and the openers of the
// time-domain, spectral and geometrical windows. Makes the time-domain and spurious-scan
// windows, owned by the window; call FollowForms on them after every command.
HrvWindows* AddHrvMenu(QMainWindow* window, Forms& forms, RunHandler run);

}  // namespace ardel

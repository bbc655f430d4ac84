#include "group/trace_export.h"

#include <filesystem>

#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/safe_file.h"

namespace ardel::group {

namespace {

constexpr const char* kEol = "\r\n";

// The value written for a sample: the rounded quotient through the amplitude conversion.
float Value(const Recording& r, std::int16_t sample, double divisor) {
    return r.Bit2pA(RoundHalfEven(sample / divisor));
}

// The data lines: time, then the value of each trace written.
std::string DataLines(const Session& s, const GroupWindow& w, const TraceSelection& sel) {
    const Recording& r = s.recording;
    const TraceStore& store = w.store;
    std::string text;
    for (std::int32_t k = 0; k < store.TracePoints; ++k) {
        text += Str(float(k * double(r.SampleInterval) / 1000));
        if (sel.index == 2) {
            for (std::int32_t n = 1; n <= store.TraceCount; ++n)
                text += "\t" + Str(Value(r, store.At(n, k), 1));
        } else {
            text += "\t" + Str(Value(r, store.At(sel.trace, k), sel.divisor));
        }
        text += kEol;
    }
    return text;
}

}  // namespace

std::optional<TraceSelection> AskTraceSelection(UserDialogs& ui, const GroupWindow& w, int index) {
    if (w.store.TraceCount < 1 || index < 0 || index > 2) return std::nullopt;
    TraceSelection sel;
    sel.index = index;
    if (index == 0) {
        const double factor = Val(ui.InputText(
            "Normalize Trace",
            "Please enter normalization factor to divide the trace by.  This will normalize the "
            "trace to 100.  (Entering 1 will bypass the normalization).",
            "1"));
        if (factor != 0 && factor != 1) sel.divisor = factor / 100;
    } else if (index == 1) {
        const std::string answer = ui.InputText(
            "Copy Trace Data",
            "Please specify the trace number to copy (Trace 0 is the average trace).  Range: 0 "
            "to " + CStr(w.store.TraceCount) + ".",
            CStr(w.store.CurrentTrace));
        if (answer.empty()) return std::nullopt;
        const double n = Val(answer);
        if (n < 0 || n > w.store.TraceCount) return std::nullopt;
        sel.trace = std::int32_t(RoundHalfEven(n));
    }
    return sel;
}

std::string TraceDataHeading(const Session& s, const GroupWindow& w, const TraceSelection& sel) {
    // All traces name their range, 1 to the count.
    const std::string trace =
        sel.index == 2 ? "1-" + CStr(w.store.TraceCount) : CStr(sel.trace);
    return "Group Analysis: " + s.recording.DataFilePath.string() + " Group # " + w.form.Combo1 +
           " Trace # " + trace;
}

std::string TraceClipboardText(const Session& s, const GroupWindow& w, const TraceSelection& sel) {
    return TraceDataHeading(s, w, sel) + kEol + "Time (ms) \tAmplitude (" + s.recording.ADCUnits +
           ")" + kEol + DataLines(s, w, sel);
}

std::string TraceAtfText(const Session& s, const GroupWindow& w, const TraceSelection& sel) {
    const std::int32_t columns = sel.index == 2 ? w.store.TraceCount + 2 : 2;
    std::string text = std::string("ATF\t1.0") + kEol + "3\t" + CStr(columns) + kEol + "\"" +
                       TraceDataHeading(s, w, sel) + "\"" + kEol + "\"" + w.form.Combo2 + "\"" +
                       kEol + kEol + "\"Time(ms)\"";
    if (sel.index == 2) {
        for (std::int32_t n = 1; n <= w.store.TraceCount; ++n)
            text += "\t\"Amplitude #" + CStr(n) + "\"";
    } else {
        text += "\t\"Amplitude(" + s.recording.ADCUnits + ")\"";
    }
    return text + kEol + DataLines(s, w, sel);
}

void menu_copydata(const Session& s, UserDialogs& ui, const GroupWindow& w, int index,
                   const std::filesystem::path& programDir) {
    const auto sel = AskTraceSelection(ui, w, index);
    if (!sel) return;
    const std::string text = TraceClipboardText(s, w, *sel);
    // The text has always passed through Temp.txt beside the program; a folder that cannot be
    // written does not keep it from the clipboard.
    try {
        WriteFileSafely(programDir / "Temp.txt", text);
    } catch (const std::exception&) {
    }
    ui.SetClipboardText(text);
}

bool menu_saveascii(const Session& s, UserDialogs& ui, const GroupWindow& w, int index) {
    const auto sel = AskTraceSelection(ui, w, index);
    if (!sel) return false;
    FileDialogSpec spec;
    spec.title = "Save Trace Data";
    spec.defaultExtension = "txt";
    spec.filter = "Text File (*.txt)|*.txt";
    spec.fileName = "*.txt";
    spec.initialDirectory = s.CurrentFolder;
    const auto file = ui.SaveFileName(spec);
    if (!file) return false;
    std::error_code ec;
    if (std::filesystem::exists(*file, ec) &&
        ui.Ask("Replace File", "File already exist.  Do you want to replace this file?",
               Buttons::YesNo) != Answer::Yes)
        return false;
    WriteFileSafely(*file, TraceAtfText(s, w, *sel));
    return true;
}

}  // namespace ardel::group

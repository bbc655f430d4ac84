// The settings file reader and writer: any text, read by the profile functions' rules, a key
// replaced and the text written again; then loaded into a session as its settings file, with
// one screen of a recording shown and analysed under them, unfiltered and filtered.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/ini_file.h"
#include "core/open_file.h"
#include "core/session.h"
#include "core/settings.h"
#include "detect/digital_filter.h"
#include "detect/window_analysis.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ardel::IniDocument doc = ardel::IniDocument::Parse(text);
    (void)doc.Get("Analysis", "ThresholdAmplitude!", "5", 10);
    (void)doc.Get("Program", "DataDir", "", 100);
    doc.Set("Analysis", "ThresholdAmplitude!", " 7");
    const std::string written = doc.Text();
    // A replaced key reads back as written.
    if (ardel::IniDocument::Parse(written).Get("Analysis", "ThresholdAmplitude!", "", 100) != "7")
        __builtin_trap();

    const auto& dir = fuzzing::Folder("ini");
    static const bool recordingWritten = [&] {
        const auto rec = fuzzing::SmallRecording();
        fuzzing::WriteFile(dir / "data.abf", rec.data(), rec.size());
        return true;
    }();
    (void)recordingWritten;
    const auto file = dir / "Ardelvan.ini";
    fuzzing::WriteFile(file, data, size);

    ardel::Session s;
    ardel::SilentDialogs ui;
    try {
        (void)ardel::LoadIniSettings(s, file, dir);
    } catch (const ardel::SettingsError&) {
        return 0;  // refused with its message; nothing to run
    }
    ardel::InstallDigitalFilter(s, ui);
    if (!ardel::OpenDataFile(s, ui, dir / "data.abf")) return 0;
    ardel::Command1(s, ui);
    // The same screen again with the filter the settings name.
    // The filter runs over three whole screens on every redraw, by rule; under the sanitizers a
    // screen of thousands of Blocks takes seconds to filter, which would read as a hang.
    if (s.recording.BlocksPerScreen > 256) return 0;
    s.options.FilterOn = true;
    ardel::Display(s);
    ardel::Command1(s, ui);
    return 0;
}

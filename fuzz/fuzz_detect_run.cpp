// A whole recording analysed as the command line analyses it, with settings from the input:
// the first two bytes (little-endian) give the length of a settings file, which follows, in
// their lower 15 bits and the "Filter" box in the top bit; the rest is the data file. The settings open every value to the fuzzer (screen length,
// detection periods, the filter), the header every claim about the data, so that a run that
// does not end, or a screen whose work or memory does not fit what the file holds, shows
// up as a timeout or an out-of-memory report.
#include <cstddef>
#include <cstdint>
#include <string>

#include "core/open_file.h"
#include "core/session.h"
#include "core/settings.h"
#include "detect/digital_filter.h"
#include "detect/window_analysis.h"
#include "fuzz_support.h"

namespace {

class CountingDialogs : public ardel::SilentDialogs {
public:
    void Message(std::string_view, std::string_view) override { ++messages; }
    int messages = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    std::size_t settingsLength = std::size_t(data[0]) | std::size_t(data[1] & 0x7f) << 8;
    const bool filter = (data[1] & 0x80) != 0;
    settingsLength = std::min(settingsLength, size - 2);
    const auto& dir = fuzzing::Folder("detect");
    const auto settings = dir / "Ardelvan.ini";
    const auto recording = dir / "input.abf";
    fuzzing::WriteFile(settings, data + 2, settingsLength);
    fuzzing::WriteFile(recording, data + 2 + settingsLength, size - 2 - settingsLength);

    ardel::Session s;
    CountingDialogs ui;
    try {
        (void)ardel::LoadIniSettings(s, settings, dir);
    } catch (const ardel::SettingsError&) {
        return 0;
    }
    // The filter runs over three whole screens on every redraw, by rule; under the sanitizers a
    // screen of thousands of Blocks takes seconds to filter, which would read as a hang.
    s.options.FilterOn = (s.options.FilterOn || filter) && s.recording.BlocksPerScreen <= 256;
    if (s.options.FilterOn) ardel::InstallDigitalFilter(s, ui);
    if (!ardel::OpenDataFile(s, ui, recording)) return 0;
    const int before = ui.messages;
    ardel::Command1(s, ui);
    // As the command line does: improper parameters analyse nothing further.
    if (ui.messages > before) return 0;
    ardel::Command3(s, ui);
    return 0;
}

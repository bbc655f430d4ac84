// Fuzz target for the ABF reader: the input is written to a file and opened exactly as a click
// in the file list opens it, then shown and analysed for a few screens of every channel. Any
// crash, sanitizer report, hang or runaway allocation is a fault: a damaged file must give a
// message or a warning, never take the program down.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/open_file.h"
#include "core/session.h"
#include "core/user_dialogs.h"
#include "detect/window_analysis.h"

namespace {

namespace fs = std::filesystem;

// One folder per process, so that parallel fuzzing jobs do not share the file. The input is
// the only file in it, which also gives the event-file branch something to find: an input
// that names "input.abf" as its data file opens itself as the data. The folder is removed at
// exit; its name is kept in a plain buffer, which outlives every static object.
char folderName[4096];

const fs::path& InputFile() {
    static const fs::path file = [] {
        fs::path dir = fs::temp_directory_path() / ("ardel-fuzz-abf-" + std::to_string(::getpid()));
        fs::create_directories(dir);
        std::snprintf(folderName, sizeof folderName, "%s", dir.c_str());
        std::atexit([] {
            std::error_code ec;
            fs::remove_all(folderName, ec);
        });
        return dir / "input.abf";
    }();
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    {
        std::ofstream out(InputFile(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), std::streamsize(size));
    }
    ardel::Session s;
    ardel::SilentDialogs ui;
    if (!ardel::OpenDataFile(s, ui, InputFile())) return 0;
    (void)ardel::DatInfoRows(s);
    ardel::Display(s);
    ardel::Command1(s, ui);
    for (int screen = 0; screen < 3; ++screen) ardel::Command2(s, ui);
    // The last channel too: its scale factors and its place in the multiplexed samples.
    ardel::SelectChannel(s, s.recording.LastChannelIndex);
    ardel::Command1(s, ui);
    ardel::Command2(s, ui);
    for (std::int32_t i = -s.recording.ScreenPoints() - 1; i <= 2 * s.recording.ScreenPoints(); ++i)
        (void)s.recording.GetSampleValue(i);
    return 0;
}

// Event and parameter files as the program reads them: any bytes, decoded, written out again
// and decoded a second time; then opened against a recording as its event file, loaded as a
// parameter file, and clicked in the file list, where an event file names its data file.
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/event_files.h"
#include "core/open_file.h"
#include "core/session.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const ardel::EventFileContents read = ardel::DecodeEventFile(bytes);
    const ardel::AbfHeader header = ardel::AbfHeader::FromBytes(bytes);
    const auto again = ardel::EncodeEventFile(header, read.params, read.comment, read.sourceName,
                                              read.records);
    const ardel::EventFileContents back = ardel::DecodeEventFile(again);
    // What the program writes, it reads back unchanged.
    if (back.records.size() != read.records.size()) __builtin_trap();

    const auto& dir = fuzzing::Folder("event");
    static const bool recordingWritten = [&] {
        const auto rec = fuzzing::SmallRecording();
        fuzzing::WriteFile(dir / "data.abf", rec.data(), rec.size());
        return true;
    }();
    (void)recordingWritten;
    const auto file = dir / "input.EVT";
    fuzzing::WriteFile(file, data, size);

    ardel::SilentDialogs ui;
    {
        ardel::Session s;
        if (ardel::OpenDataFile(s, ui, dir / "data.abf")) {
            (void)ardel::OpenEventFile(s, ui, file);
            fuzzing::PathDialogs parameterFile(file);
            ardel::menu_LoadParameter(s, parameterFile, dir);
            ardel::Display(s);
        }
    }
    {
        // Clicked in the file list: the stored data-file name is looked up beside it.
        ardel::Session s;
        (void)ardel::OpenDataFile(s, ui, file);
    }
    return 0;
}

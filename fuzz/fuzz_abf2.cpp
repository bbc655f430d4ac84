// Fuzz target for the ABF 2 reader. Every input is made an ABF 2 file (its first four bytes
// become "ABF2"), so that the fuzzer spends its time on the section map and the sections. The
// reader gets the bytes directly; a file it takes is then opened as a click in the file list
// opens it, shown, and analysed for a few screens of its first and last channel. Any crash,
// sanitizer report, hang or runaway allocation is a fault.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <variant>
#include <vector>

#include "core/abf2_reader.h"
#include "core/open_file.h"
#include "core/session.h"
#include "detect/window_analysis.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> bytes(data, data + size);
    if (bytes.size() >= 4) std::memcpy(bytes.data(), "ABF2", 4);
    const ardel::Abf2Result read =
        ardel::ReadAbf2Header(std::as_bytes(std::span<const std::uint8_t>(bytes)));
    const auto* built = std::get_if<ardel::Abf2Header>(&read);
    if (!built) return 0;
    // The built header is an ABF 1.x header like any other: it survives its own round trip.
    const auto raw = built->header.ToBytes();
    if (ardel::AbfHeader::FromBytes(raw).ToBytes() != raw) __builtin_trap();

    const auto file = fuzzing::Folder("abf2") / "input.abf";
    fuzzing::WriteFile(file, bytes.data(), bytes.size());
    ardel::Session s;
    ardel::SilentDialogs ui;
    if (!ardel::OpenDataFile(s, ui, file)) return 0;
    (void)ardel::DatInfoRows(s);
    ardel::Command1(s, ui);
    ardel::Command2(s, ui);
    ardel::SelectChannel(s, s.recording.LastChannelIndex);
    ardel::Command1(s, ui);
    if (s.recording.header.nOperationMode == 1 || s.recording.header.nOperationMode == 2)
        ardel::menu_ExtractSynchArray(s, ui, ardel::SynchTarget::EventTable);
    return 0;
}

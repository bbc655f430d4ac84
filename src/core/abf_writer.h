// Writing new ABF 1.x data files. The program does not build a header from nothing: it reads a
// complete one from the template file beside the program, changes the fields that describe the
// new data and writes header and samples out, so that the file opens like any recording.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "core/abf_header.h"
#include "core/user_dialogs.h"

namespace ardel {

inline constexpr std::string_view kAbfTemplateName = "SamplABF.dat";

// The template's header, read from programDir. A missing template gives the program's message
// titled "Error"; one that is shorter than a header, or whose header is no ABF header or puts
// the data where no file can, is refused with a message of its own. nullopt then.
std::optional<AbfHeader> LoadAbfTemplate(const std::filesystem::path& programDir, UserDialogs& ui);

// Local date and time as the header stores them.
struct AbfStartTime {
    std::int32_t date = 0;  // year x 10000 + month x 100 + day
    std::int32_t time = 0;  // hour x 3600 + minute x 60 + second
};
AbfStartTime LocalAbfStartTime();

// The samples of a tachogram recording, or nullopt when one does not fit 16 bits (the
// runtime's overflow): interval i is stored as round(interval x resolution x scale / range - 1),
// halves to even, so that the largest interval comes out at 16383.
std::optional<std::vector<std::int16_t>> TachogramSamples(const AbfHeader& header,
                                                          std::span<const float> intervals);

// Sets the fields of a one-channel recording of intervals in ms, one sample per beat, on a copy
// of the template's header. Every other field stays as the template has it.
AbfHeader TachogramHeader(AbfHeader header, std::span<const float> intervals, AbfStartTime start);

// The whole file: the header at byte 0 and the samples at lDataSectionPtr x 512.
std::vector<std::uint8_t> AbfFileBytes(const AbfHeader& header,
                                       std::span<const std::int16_t> samples);

// The tachogram's name for a data file: its path up to the first "." anywhere in it (a dot of a
// folder counts), or the whole path, then "Tachogram.ABF".
std::filesystem::path TachogramAbfName(const std::filesystem::path& dataFile);

// Writes intervals (ms, in beat order) as a recording from the template beside the program and
// reports it. Returns the file written, nullopt when nothing was written.
std::optional<std::filesystem::path> WriteTachogramAbf(const std::filesystem::path& programDir,
                                                       const std::filesystem::path& dataFile,
                                                       std::span<const float> intervals,
                                                       UserDialogs& ui);

}  // namespace ardel

#include "core/abf_writer.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string>

#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/safe_file.h"

namespace ardel {

namespace fs = std::filesystem;

namespace {

// A template whose data would start beyond this many bytes is taken as damaged: no header of
// a real recording puts its samples so far out, and the file would be mostly empty.
constexpr std::int64_t kMaxDataOffset = std::int64_t(64) << 20;

}  // namespace

std::optional<AbfHeader> LoadAbfTemplate(const fs::path& programDir, UserDialogs& ui) {
    const fs::path file = programDir / std::string(kAbfTemplateName);
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) {
        ui.Message("Error",
                   "The file SamplABF.dat does not exist.  The program cannot continue without "
                   "this file.  Please contact technical support at Velmorand.");
        return std::nullopt;
    }
    const auto bytes = ReadFileBytes(file);
    if (!bytes || bytes->size() < kAbfHeaderSize) {
        ui.Message("Error", "The file SamplABF.dat holds " +
                                CStr(std::int64_t(bytes ? bytes->size() : 0)) +
                                " bytes, fewer than the 6144 of an ABF header, and cannot be "
                                "used to write a new data file.");
        return std::nullopt;
    }
    const auto* data = reinterpret_cast<const std::uint8_t*>(bytes->data());
    AbfHeader h = AbfHeader::FromBytes(std::span<const std::uint8_t>(data, kAbfHeaderSize));
    const std::int64_t dataOffset = std::int64_t(h.lDataSectionPtr) * std::int64_t(kAbfBlockSize);
    if (!h.HasAbfSignature() || dataOffset < 0 || dataOffset > kMaxDataOffset) {
        ui.Message("Error",
                   "The file SamplABF.dat is no ABF data file (its header does not start with "
                   "\"ABF \" or places the data outside any file) and cannot be used to write a "
                   "new data file.");
        return std::nullopt;
    }
    return h;
}

AbfStartTime LocalAbfStartTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {(local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday,
            local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec};
}

AbfHeader TachogramHeader(AbfHeader h, std::span<const float> intervals, AbfStartTime start) {
    float largest = 0;
    for (const float v : intervals) largest = std::max(largest, v);
    const auto n = std::int32_t(intervals.size());
    h.lActualAcqLength = n;
    h.lFileStartDate = start.date;
    h.lFileStartTime = start.time;
    h.lStopwatchTime = 0;
    h.nADCNumChannels = 1;
    h.fADCSampleInterval = 1000.0f;
    h.fSecondsPerRun = float(double(h.fADCSampleInterval) * n / 1000000.0);
    h.fADCRange = 10.24f;
    h.lADCResolution = 32768;
    h.nAutosampleEnable = 0;
    h.fAutosampleAdditGain = 1.0f;
    h.nADCSamplingSeq[0] = 0;
    SetFixedText(h.sADCUnits[0], "ms");
    h.fADCProgrammableGain[0] = 1.0f;
    // Single precision, as the field: with no positive interval this is infinite, and the
    // samples then overflow.
    h.fInstrumentScaleFactor[0] = float((10.24 / double(largest)) / 2.0);
    h.fInstrumentOffset[0] = 0;
    h.fSignalGain[0] = 1.0f;
    h.fSignalOffset[0] = 0;
    return h;
}

std::optional<std::vector<std::int16_t>> TachogramSamples(const AbfHeader& h,
                                                          std::span<const float> intervals) {
    std::vector<std::int16_t> samples;
    samples.reserve(intervals.size());
    const double factor =
        double(h.lADCResolution) * double(h.fInstrumentScaleFactor[0]) / double(h.fADCRange);
    for (const float v : intervals) {
        const auto sample = ToInt16(double(v) * factor - 1.0);
        if (!sample) return std::nullopt;
        samples.push_back(*sample);
    }
    return samples;
}

std::vector<std::uint8_t> AbfFileBytes(const AbfHeader& h, std::span<const std::int16_t> samples) {
    const auto head = h.ToBytes();
    const std::size_t at = std::size_t(h.lDataSectionPtr) * kAbfBlockSize;
    std::vector<std::uint8_t> out(std::max(kAbfHeaderSize, at + samples.size() * 2), 0);
    std::copy(head.begin(), head.end(), out.begin());
    // The samples follow the header in the order written, so an early data pointer puts them
    // over the header's tail.
    for (std::size_t i = 0; i < samples.size(); ++i)
        WriteI16(out, at + 2 * i, samples[i]);
    return out;
}

fs::path TachogramAbfName(const fs::path& dataFile) {
    const std::string path = dataFile.string();
    return fs::path(path.substr(0, path.find('.')) + "Tachogram.ABF");
}

std::optional<fs::path> WriteTachogramAbf(const fs::path& programDir, const fs::path& dataFile,
                                          std::span<const float> intervals, UserDialogs& ui) {
    const auto templ = LoadAbfTemplate(programDir, ui);
    if (!templ) return std::nullopt;
    const AbfHeader h = TachogramHeader(*templ, intervals, LocalAbfStartTime());
    const auto samples = TachogramSamples(h, intervals);
    if (!samples) {
        ui.RuntimeError("Overflow");
        return std::nullopt;
    }
    const fs::path out = TachogramAbfName(dataFile);
    const auto bytes = AbfFileBytes(h, *samples);
    try {
        WriteFileSafely(out, std::string_view(reinterpret_cast<const char*>(bytes.data()),
                                              bytes.size()));
    } catch (const std::exception& e) {
        ui.RuntimeError(e.what());
        return std::nullopt;
    }
    ui.Message("", "The Tachogram is saved as " + out.string() + ".");
    return out;
}

}  // namespace ardel

#include "core/open_file.h"

#include <algorithm>
#include <cmath>
#include <system_error>

#include "core/event_files.h"
#include "core/number_text.h"
#include "core/safe_file.h"

namespace ardel {

namespace {

constexpr const char* kInconsistentTitle = "Inconsistent ABF Header";
constexpr const char* kFloatingPointText =
    "This ABF file is saved in floating-point format.  Ardelvantine recognizes only the integer "
    "format.  Please open this file in Axoscope or Clampfit and save as integer format.  Then "
    "try again.";
constexpr float kMinSampleIntervalUs = 0.01f;
// The header bytes that must be in the file: up to the end of fADCSampleInterval.
constexpr std::uint64_t kHeaderNeeded = abf_offset::fADCSampleInterval + 4;

// Checks that keep a damaged header from taking the program down. The old program had no
// message for these; it failed with a run-time error instead.
bool CheckHeader(const AbfHeader& h, std::uint64_t fileSize, UserDialogs& ui,
                 const std::string& name) {
    // A header cut before the channel count and the sample interval would otherwise be taken
    // as zeros there and reported as a header giving 0 channels.
    if (fileSize < kHeaderNeeded) {
        ui.Message("File Too Short", "The file " + name + " is only " + std::to_string(fileSize) +
                                         " bytes long, too short for an ABF header (6144 "
                                         "bytes).  The file cannot be opened.");
        return false;
    }
    if (h.nADCNumChannels < 1 || h.nADCNumChannels > kAbfMaxChannels) {
        ui.Message(kInconsistentTitle, "The header of " + name + " gives " +
                                           CStr(int(h.nADCNumChannels)) +
                                           " input channels; an ABF file has 1 to 16.  The file "
                                           "cannot be opened.");
        return false;
    }
    // No converter samples faster than 100 MHz; an interval below that is a damaged header,
    // and it would turn every search window of the detection into billions of points.
    if (!(std::isfinite(h.fADCSampleInterval) && h.fADCSampleInterval >= kMinSampleIntervalUs)) {
        ui.Message(kInconsistentTitle, "The header of " + name + " gives a sample interval of " +
                                           CStr(h.fADCSampleInterval) +
                                           " us.  The file cannot be opened.");
        return false;
    }
    return true;
}

// The data file an event file names, as a name in the event file's own folder: the stored text
// up to a NUL (where the system's file calls end it), and of a path only its last part, so that
// a stored "../other/x.abf" cannot reach outside the folder.
std::string StoredDataFileName(const std::string& stored) {
    std::string name = Trim(stored.substr(0, stored.find('\0')));
    const auto slash = name.find_last_of("/\\");
    if (slash != std::string::npos) name = Trim(name.substr(slash + 1));
    return name;
}

void CollectLayoutWarnings(Recording& r, const std::string& name) {
    const AbfHeader& h = r.header;
    const std::int64_t size = std::int64_t(r.source->Size());
    const std::int64_t dataStart = std::int64_t(h.lDataSectionPtr) * std::int64_t(kAbfBlockSize);
    if (h.lDataSectionPtr < 0 || dataStart >= size) {
        r.warnings.push_back(name + ": the data section (block " +
                             std::to_string(h.lDataSectionPtr) +
                             ") lies outside the file; all samples read as zeros.");
    } else {
        const std::int64_t held = (size - dataStart) / 2;
        if (h.lActualAcqLength < 0) {
            r.warnings.push_back(name + ": the header gives a negative sample count (" +
                                 std::to_string(h.lActualAcqLength) + ").");
        } else if (std::int64_t(h.lActualAcqLength) > held) {
            r.warnings.push_back(name + ": the header gives " + std::to_string(h.lActualAcqLength) +
                                 " samples but the file holds only " + std::to_string(held) +
                                 " (truncated file?); the missing samples read as zeros.");
        }
    }
    if (!std::isfinite(r.ChannelGain) || r.ChannelGain == 0 || h.lADCResolution == 0 ||
        h.fADCRange == 0 || !std::isfinite(h.fADCRange))
        r.warnings.push_back(name + ": the scale factors of channel " +
                             std::to_string(r.ChannelIndex) +
                             " are zero or invalid; amplitudes cannot be converted and no event "
                             "can pass the thresholds.");
}

void ReadTags(Recording& r, const std::string& name) {
    r.TagRecords.clear();
    const AbfHeader& h = r.header;
    if (h.lNumTagEntries <= 0) return;
    const std::int64_t size = std::int64_t(r.source->Size());
    const std::int64_t start = std::int64_t(h.lTagSectionPtr) * std::int64_t(kAbfBlockSize);
    const std::int64_t fit =
        start < 0 || start >= size ? 0 : (size - start) / std::int64_t(kAbfTagSize);
    std::int64_t count = std::min<std::int64_t>(h.lNumTagEntries, fit);
    if (count < h.lNumTagEntries)
        r.warnings.push_back(name + ": the header lists " + std::to_string(h.lNumTagEntries) +
                             " tags but the file holds " + std::to_string(count) +
                             "; the others are left out.");
    if (count <= 0) return;
    std::vector<std::uint8_t> bytes(std::size_t(count) * kAbfTagSize);
    r.source->Read(start, bytes);
    r.TagRecords.resize(std::size_t(count));
    for (std::size_t k = 0; k < r.TagRecords.size(); ++k) {
        std::span<const std::uint8_t> t(bytes.data() + k * kAbfTagSize, kAbfTagSize);
        AbfTag& tag = r.TagRecords[k];
        tag.lTagTime = ReadI32(t, 0);
        std::copy_n(t.begin() + 4, 56, tag.sComment.begin());
        std::copy_n(t.begin() + 60, 4, tag.rest.begin());
    }
}

std::shared_ptr<const SampleSource> OpenSource(const std::filesystem::path& file, UserDialogs& ui) {
    // Looked at before the open: opening a pipe waits for a writer, for ever.
    if (const auto reason = NotARegularFile(file)) {
        ui.Message("File Error",
                   "The file " + file.filename().string() + " cannot be opened: " + *reason + ".");
        return nullptr;
    }
    try {
        return std::make_shared<FileSource>(file);
    } catch (const std::system_error& e) {
        ui.Message("File Error", "The file " + file.filename().string() +
                                     " cannot be opened: " + e.code().message() + ".");
        return nullptr;
    }
}

}  // namespace

DataFileHeader ReadDataFileHeader(const SampleSource& src, const std::string& name) {
    DataFileHeader out;
    std::array<std::uint8_t, kAbfHeaderSize> bytes{};
    src.Read(0, bytes);
    out.header = AbfHeader::FromBytes(bytes);
    if (HasAbf2Signature(std::as_bytes(std::span<const std::uint8_t>(bytes)))) {
        out.abf2 = true;
        src.View([&](std::span<const std::byte> file) {
            Abf2Result read = ReadAbf2Header(file);
            if (auto* e = std::get_if<Abf2Error>(&read)) {
                out.abf2Error = std::move(*e);
                return;
            }
            auto& built = std::get<Abf2Header>(read);
            out.header = built.header;
            for (const std::string& w : built.warnings) out.warnings.push_back(name + ": " + w + ".");
        });
        return out;
    }
    if (src.Size() < kAbfHeaderSize)
        out.warnings.push_back(name + ": the file is only " + std::to_string(src.Size()) +
                               " bytes long, shorter than the 6144-byte header; the missing bytes "
                               "read as zeros.");
    return out;
}

std::pair<std::string, std::string> Abf2ErrorMessage(const Abf2Error& e, const std::string& name) {
    switch (e.kind) {
        case Abf2ErrorKind::FloatingPoint:
            return {"Not in Integer Format", kFloatingPointText};
        case Abf2ErrorKind::Unsupported:
            return {"Unsupported ABF File", "The ABF 2 file " + name + " cannot be opened (byte " +
                                                std::to_string(e.offset) + "): " + e.what + "."};
        default:
            return {kInconsistentTitle, "The ABF 2 file " + name + " cannot be opened (byte " +
                                            std::to_string(e.offset) + "): " + e.what + "."};
    }
}

bool OpenDataFile(Session& s, UserDialogs& ui, const std::filesystem::path& file) {
    Recording& r = s.recording;
    r.DataFilePath = file;

    if (s.events.EventCount() > 0) {
        if (!s.events.EventsSaved) {
            Answer a = ui.Ask("Save Previous Event Data",
                              "There are " + CStr(s.events.EventCount()) + " events analysed for " +
                                  s.Label11 + ".  Do you want to save the event data?",
                              Buttons::YesNoCancel);
            if (a == Answer::Cancel || a == Answer::None) return r.FileIsOpen;
            if (a == Answer::Yes) menu_SaveEvent(s, ui);
        }
        s.events.SetCount(0);
        UpdateTDBGrid(s.events);
    }

    std::vector<std::string> warnings;
    auto source = OpenSource(file, ui);
    if (!source) {
        r.FileIsOpen = false;
        return false;
    }
    std::string name = file.filename().string();
    DataFileHeader read = ReadDataFileHeader(*source, name);
    AbfHeader header = read.header;
    warnings = std::move(read.warnings);
    std::string sourceName(header.sSourceFileName.data(), header.sSourceFileName.size());
    // A failed open leaves the previous header overwritten, as it always has.
    r.header = header;

    if (read.abf2Error) {
        const auto [title, text] = Abf2ErrorMessage(*read.abf2Error, name);
        ui.Message(title, text);
        r.FileIsOpen = false;
        return false;
    }
    if (!header.HasAbfSignature()) {
        ui.Message("Not ABF File", "This is not an Axon Binary File.  Try another file.");
        r.FileIsOpen = false;
        return false;
    }
    if (header.nDataFormat == 1) {
        ui.Message("Not in Integer Format", kFloatingPointText);
        r.FileIsOpen = false;
        return false;
    }

    std::filesystem::path eventFile;
    if (Contains(header.CreatorInfo(), "Ardelvantine")) {
        eventFile = file;
        const std::string dataName = StoredDataFileName(sourceName);
        r.DataFilePath = file.parent_path() / dataName;
        std::error_code ec;
        if (dataName.empty() || dataName == "." || dataName == ".." ||
            !std::filesystem::is_regular_file(r.DataFilePath, ec)) {
            ui.Message("Data File Not Found",
                       "The original data file " + dataName +
                           " does not exist in this directory.  Please make sure the event file "
                           "and the original data file are present in the same directory.");
            r.FileIsOpen = false;
            return false;
        }
        source = OpenSource(r.DataFilePath, ui);
        if (!source) {
            r.FileIsOpen = false;
            return false;
        }
        name = r.DataFilePath.filename().string();
        read = ReadDataFileHeader(*source, name);
        header = read.header;
        warnings.insert(warnings.end(), read.warnings.begin(), read.warnings.end());
        r.header = header;
        if (read.abf2Error) {
            const auto [title, text] = Abf2ErrorMessage(*read.abf2Error, name);
            ui.Message(title, text);
            r.FileIsOpen = false;
            return false;
        }
        if (!header.HasAbfSignature()) {
            ui.Message("Not ABF File", "This is not an Axon Binary File.  Try another file.");
            r.FileIsOpen = false;
            return false;
        }
    }

    if (!CheckHeader(header, source->Size(), ui, name)) {
        r.FileIsOpen = false;
        return false;
    }

    r.source = source;
    r.warnings = std::move(warnings);
    r.FileIsOpen = true;
    s.Label11 = name;

    const int channels = header.nADCNumChannels;
    double channel = 0;
    if (channels > 1) {
        std::string answer = ui.InputText(
            "Enter Channel Number",
            "There are " + CStr(channels) +
                " input channels, starting from channel 0.  Please enter the channel number to "
                "open.",
            "0");
        channel = Val(answer);
        if (channel > channels - 1) channel = channels - 1;
        if (channel < 1) channel = 0;
    }
    const std::uint8_t channelIndex = ToUInt8(channel).value_or(0);

    // Checked before the channel is taken over: the buffers still have the old file's shape,
    // and a channel beyond it must not reach them.
    const int seq = header.nADCSamplingSeq[channelIndex];
    if (seq < 0 || seq >= kAbfMaxChannels) {
        ui.Message(kInconsistentTitle, "The header of " + name + " gives ADC number " + CStr(seq) +
                                           " for channel " + CStr(int(channelIndex)) +
                                           ".  The file cannot be opened.");
        r.FileIsOpen = false;
        return false;
    }
    r.ChannelIndex = channelIndex;

    r.TotalBlocks = OpenSequenceTotalBlocks(r.header);
    r.ScreenBlock = r.header.lDataSectionPtr;
    r.ApplyChannelScaling();
    r.LastChannelIndex = std::uint8_t(channels - 1);
    r.SampleInterval = float(double(channels) * double(r.header.fADCSampleInterval));
    r.DimensionBuffers();
    CollectLayoutWarnings(r, name);
    ReadTags(r, name);

    if (!eventFile.empty()) OpenEventFile(s, ui, eventFile);
    Display(s);
    return true;
}

void SelectChannel(Session& s, int channelIndex) {
    Recording& r = s.recording;
    if (!r.FileIsOpen) return;
    int c = std::clamp(channelIndex, 0, int(r.LastChannelIndex));
    const int seq = r.header.nADCSamplingSeq[c];
    if (seq < 0 || seq >= kAbfMaxChannels) return;
    r.ChannelIndex = std::uint8_t(c);
    r.ApplyChannelScaling();
    Display(s);
}

namespace {

std::string Clock(std::int32_t seconds) {
    auto two = [](std::int32_t v) { return Format(v, "00"); };
    return two(seconds / 3600) + ":" + two(seconds % 3600 / 60) + ":" + two(seconds % 60);
}

}  // namespace

std::string DatInfoTitle(const Session& s) {
    return "DAT File Info:  " + s.Label11;
}

std::vector<std::pair<std::string, std::string>> DatInfoRows(const Session& s) {
    std::vector<std::pair<std::string, std::string>> rows;
    if (!s.recording.FileIsOpen) return rows;
    const Recording& r = s.recording;
    const AbfHeader& h = r.header;
    auto add = [&rows](std::string label, std::string value) {
        rows.emplace_back(std::move(label), std::move(value));
    };
    auto text = [](const auto& field) { return RTrim(TrimNul(FixedText(field))); };
    add("File Comment", text(h.sFileComment));
    add("FileSignature", text(h.lFileSignature));
    add("FileVersionNumber ", CStr(h.fFileVersionNumber));
    add("HeaderVersionNumber ", CStr(h.fHeaderVersionNumber));
    add("FileType ", CStr(h.nFileType));
    add("CreatorInfo    ", text(h.sCreatorInfo));
    add("MSBinFormat ", CStr(h.nMSBinFormat));
    add("DataFormat ", CStr(h.nDataFormat));
    add("FileStartDate ", CStr(h.lFileStartDate));
    add("FileStartTime ", Clock(h.lFileStartTime));
    add("StopwatchTime ", Clock(h.lStopwatchTime));
    add("OperationMode ", CStr(h.nOperationMode));
    add("ActualAcqLength (Actual # of ADC samples)", CStr(h.lActualAcqLength));
    add("NumPointsIgnored ", CStr(h.nNumPointsIgnored));
    add("ActualEpisodes ", CStr(h.lActualEpisodes));
    add("EpisodesPerRun ", CStr(h.lEpisodesPerRun));
    add("NumSamplesPerEpisode ", CStr(h.lNumSamplesPerEpisode));
    add("EpisodeStartToStart ", CStr(h.fEpisodeStartToStart));
    add("RunsPerTrial ", CStr(h.lRunsPerTrial));
    add("RunStartToStart ", CStr(h.fRunStartToStart));
    add("SecondsPerRun ", CStr(h.fSecondsPerRun));
    add("NumberOfTrials ", CStr(h.lNumberOfTrials));
    add("TrialStartToStart ", CStr(h.fTrialStartToStart));
    add("ADCSampleInterval ", CStr(r.SampleInterval));
    add("ADCNumChannels ", CStr(h.nADCNumChannels));
    add("ADCRange ", CStr(h.fADCRange));
    add("ADCResolution ", CStr(h.lADCResolution));
    add("AutosampleAdditGain ", CStr(h.fAutosampleAdditGain));
    add("AutosampleEnable    ", CStr(h.nAutosampleEnable));
    add("AutosampleADCNum       ", CStr(h.nAutosampleADCNum));
    const int c = r.ChannelIndex;
    const int sq = h.nADCSamplingSeq[c];
    add("ADCSamplingSeq (" + CStr(c) + ") ", CStr(sq));
    if (sq < 0 || sq >= kAbfMaxChannels) return rows;
    const std::string idx = CStr(sq);
    add("ADCUnits (" + idx + ") ", text(h.sADCUnits[sq]));
    add("ADCProgrammableGain (" + idx + ") ", CStr(h.fADCProgrammableGain[sq]));
    add("InstrumentScaleFactor(" + idx + ") ", CStr(h.fInstrumentScaleFactor[sq]));
    add("InstrumentOffset(" + idx + ")     ", CStr(h.fInstrumentOffset[sq]));
    add("SignalGain(" + idx + ") ", CStr(h.fSignalGain[sq]));
    add("SignalOffset (" + idx + " )     ", CStr(h.fSignalOffset[sq]));
    return rows;
}

void menu_ExtractSynchArray(Session& s, UserDialogs& ui, SynchTarget target) {
    Recording& r = s.recording;
    if (!r.FileIsOpen || !r.source) return;
    const AbfHeader& h = r.header;
    if (h.nOperationMode != 1 && h.nOperationMode != 2) {
        ui.Message("Synch Array",
                   "This file does not contain Synch Array because the file is acquired as "
                   "either Gap-free or Episodic mode.  This function will only work when a data "
                   "file is saved as Event-driven, variable length or Event-driven, fixed mode.");
        return;
    }
    const std::int32_t count = std::max<std::int32_t>(h.lSynchArraySize, 0);
    bool intervals = false;
    if (target != SynchTarget::EventTable) {
        Answer a = ui.Ask("Inter-event Interval",
                          "This function will extract Synch Array data and put it into Data "
                          "Array #1 or #2.  Synch Array contains time of each event-driven "
                          "segment.  There are " +
                              CStr(h.lSynchArraySize) +
                              " events in this file.  Do you want to calculate the inter-event "
                              "intervals from the Synch Array?",
                          Buttons::YesNo);
        intervals = a == Answer::Yes;
    }
    // The pairs, plus the one past the last that the interval branch reads. What the file
    // holds there is not part of the array; beyond the file's end it reads as zero.
    const std::int64_t maxPairs = std::int64_t(r.source->Size()) / 8 + 1;
    const std::int64_t pairs = std::min<std::int64_t>(std::int64_t(count) + 1, maxPairs);
    std::vector<std::uint8_t> bytes(std::size_t(pairs) * 8);
    r.source->Read(std::int64_t(h.lSynchArrayPtr) * std::int64_t(kAbfBlockSize), bytes);
    auto start = [&](std::int64_t i) -> std::int32_t {
        if (i < 0 || i >= pairs) return 0;
        return ReadI32(bytes, std::size_t(i) * 8);
    };
    const double tick = h.fSynchTimeUnit > 0 ? double(h.fSynchTimeUnit) : double(r.SampleInterval);

    if (target != SynchTarget::EventTable) {
        DataArray& arr = target == SynchTarget::DataArray1 ? s.dataArray1 : s.dataArray2;
        // A damaged header can claim up to 2^31 pairs; rows past the file's end would only be
        // zeros, and that many would exhaust the memory, so the array ends with the file.
        const std::int64_t synchStart =
            std::int64_t(h.lSynchArrayPtr) * std::int64_t(kAbfBlockSize);
        const std::int64_t size = std::int64_t(r.source->Size());
        const std::int64_t held =
            synchStart < 0 || synchStart >= size ? 0 : (size - synchStart) / 8;
        const std::int32_t rows = std::int32_t(std::min<std::int64_t>(count, held));
        arr.Redim(rows);
        for (std::int32_t i = 0; i < rows; ++i) {
            double v = intervals ? 0.001 * tick * (double(start(i + 1)) - double(start(i)))
                                 : 0.001 * tick * double(start(i));
            arr(i + 1) = float(v);
        }
        return;
    }

    for (std::int32_t n = 1; n <= s.events.EventCount(); ++n) {
        EventRecord& e = s.events[n];
        double p = double(e.Time) / (double(r.SampleInterval) / 1000.0);
        if (h.lNumSamplesPerEpisode == 0) continue;  // no segment length: nothing to map to
        double seg = Int(p / double(h.lNumSamplesPerEpisode));
        if (seg < 0 || seg >= count) continue;  // beyond the array: the event keeps its value
        e.RelativeTime = start(std::int64_t(seg));
    }
    UpdateTDBGrid(s.events);
    ui.Message("Synch Array", "This file contains " + CStr(h.lSynchArraySize) +
                                  " Synch Arrays.  And the time of all the events are updated "
                                  "and set to Relative Time.");
}

void AttachRecordingFile(Recording& r, std::shared_ptr<const SampleSource> source,
                         const DataFileHeader& read, const std::string& name) {
    const AbfHeader& header = read.header;
    r.warnings = read.warnings;
    r.header = header;
    r.source = std::move(source);
    const int channels = std::clamp<int>(header.nADCNumChannels, 1, kAbfMaxChannels);
    r.LastChannelIndex = std::uint8_t(channels - 1);
    r.SampleInterval = float(double(header.nADCNumChannels) * double(header.fADCSampleInterval));
    r.DimensionBuffers();
    CollectLayoutWarnings(r, name);
    ReadTags(r, name);
}

}  // namespace ardel

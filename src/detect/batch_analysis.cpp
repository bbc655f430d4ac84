#include "detect/batch_analysis.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <system_error>

#include "core/event_commands.h"
#include "core/event_files.h"
#include "core/forwarding_dialogs.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "core/recording.h"
#include "detect/window_analysis.h"

namespace ardel {

namespace {

constexpr std::size_t kMaxBatchFiles = 101;

// Passes everything to the user but answers the reset question itself: the batch resets the
// table after every file and must not wait for a button between two files.
class ResetConfirmed final : public ForwardingDialogs {
  public:
    using ForwardingDialogs::ForwardingDialogs;
    Answer Ask(std::string_view, std::string_view, Buttons, Answer) override { return Answer::OK; }
};

// Why a header cannot be analysed with the active channel; empty when it can.
std::string UnusableReason(const AbfHeader& h, int channelIndex) {
    if (h.nADCNumChannels < 1 || h.nADCNumChannels > kAbfMaxChannels)
        return "the header gives " + CStr(int(h.nADCNumChannels)) + " input channels";
    if (!(std::isfinite(h.fADCSampleInterval) && h.fADCSampleInterval > 0))
        return "the header gives a sample interval of " + CStr(h.fADCSampleInterval) + " us";
    if (channelIndex >= h.nADCNumChannels)
        return "the active channel " + CStr(channelIndex) + " is not in this file of " +
               CStr(int(h.nADCNumChannels)) + " channels";
    const int adc = h.nADCSamplingSeq[std::size_t(channelIndex)];
    if (adc < 0 || adc >= kAbfMaxChannels)
        return "the header gives ADC number " + CStr(adc) + " for channel " + CStr(channelIndex);
    return {};
}

}  // namespace

std::optional<std::vector<std::filesystem::path>> BatchFileList(std::string_view result) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t blank = result.find(' ', start);
        parts.emplace_back(result.substr(start, blank - start));
        if (blank == std::string_view::npos) break;
        start = blank + 1;
    }
    if (parts.size() > kMaxBatchFiles) return std::nullopt;
    std::vector<std::filesystem::path> files;
    if (parts.size() == 1) {
        files.emplace_back(parts[0]);
        return files;
    }
    const std::filesystem::path folder = parts[0];
    for (std::size_t k = 1; k < parts.size(); ++k) files.push_back(folder / parts[k]);
    return files;
}

std::string BatchDialogResult(const std::vector<std::filesystem::path>& chosen) {
    if (chosen.empty()) return {};
    if (chosen.size() == 1) return chosen[0].string();
    std::string result = chosen[0].parent_path().string();
    for (const auto& f : chosen) result += " " + f.filename().string();
    return result;
}

std::int32_t BatchTotalBlocks(const AbfHeader& h) {
    return ToInt32Clamped(double(h.lActualAcqLength) / 256.0);
}

float BatchChannelGain(const AbfHeader& h, int adc) {
    const auto a = std::size_t(adc);
    return float(double(h.fADCProgrammableGain[a]) * double(h.fInstrumentScaleFactor[a]) *
                 double(h.fSignalGain[a]) * double(h.fAutosampleAdditGain));
}

std::filesystem::path BatchEventFileFor(const std::filesystem::path& dataFile) {
    const std::string name = dataFile.filename().string();
    return dataFile.parent_path() / (name.substr(0, name.find('.')) + ".EVT");
}

std::vector<EventFileClash> BatchEventFileClashes(const std::vector<std::filesystem::path>& files) {
    std::vector<EventFileClash> groups;
    for (const auto& file : files) {
        const auto target = BatchEventFileFor(file).lexically_normal();
        auto it = std::find_if(groups.begin(), groups.end(),
                               [&](const EventFileClash& g) { return g.eventFile == target; });
        if (it == groups.end()) {
            groups.push_back({target, {file}});
        } else if (std::find(it->dataFiles.begin(), it->dataFiles.end(), file) ==
                   it->dataFiles.end()) {
            it->dataFiles.push_back(file);
        }
    }
    std::erase_if(groups, [](const EventFileClash& g) { return g.dataFiles.size() < 2; });
    return groups;
}

BatchReport RunBatch(Session& s, UserDialogs& ui, const std::vector<std::filesystem::path>& files) {
    BatchReport report;
    Recording& r = s.recording;
    // A batch never mixes tables: events left from before would be saved into the first
    // file's event file as if it had produced them.
    if (s.events.EventCount() > 0) {
        s.events.SetCount(0);
        UpdateTDBGrid(s.events);
    }
    s.display.BatchRunning = true;
    for (const auto& file : files) {
        BatchFileOutcome& out = report.files.emplace_back();
        out.file = file;
        if (!s.display.BatchRunning) {
            out.status = BatchFileStatus::PassedOver;
            continue;
        }
        std::shared_ptr<const SampleSource> source;
        try {
            source = std::make_shared<FileSource>(file);
        } catch (const std::system_error& e) {
            out.status = BatchFileStatus::Unreadable;
            out.warnings.push_back(file.filename().string() + ": " + e.code().message() + ".");
            continue;
        }
        const std::string name = file.filename().string();
        const DataFileHeader read = ReadDataFileHeader(*source, name);
        const AbfHeader& header = read.header;
        if (read.abf2Error) {
            out.status = BatchFileStatus::Unusable;
            out.warnings.push_back(Abf2ErrorMessage(*read.abf2Error, name).second);
            continue;
        }
        if (!header.HasAbfSignature()) {
            out.status = BatchFileStatus::NotAbf;
            continue;
        }
        if (auto why = UnusableReason(header, r.ChannelIndex); !why.empty()) {
            // The old program read such a file with the buffers of the one before; here it is
            // left out, and the recording stays as it was.
            out.status = BatchFileStatus::Unusable;
            out.warnings.push_back(name + ": " + why + "; the file is not analysed.");
            continue;
        }

        r.FileIsOpen = true;
        s.Label11 = name;
        r.DataFilePath = file;
        const int adc = header.nADCSamplingSeq[r.ChannelIndex];
        r.ChannelGain = BatchChannelGain(header, adc);
        r.ChannelOffset = float(double(header.fInstrumentOffset[std::size_t(adc)]) +
                                double(header.fSignalOffset[std::size_t(adc)]));
        AttachRecordingFile(r, source, read, name);
        r.TotalBlocks = BatchTotalBlocks(header);
        r.ScreenBlock = header.lDataSectionPtr;

        Display(s);
        ui.Yield();
        Command1(s, ui);
        Command3(s, ui);
        out.eventCount = s.events.EventCount();
        if (menu_SaveEvent(s, ui)) out.eventFile = BatchEventFilePath(s);
        out.warnings = r.warnings;
        ResetConfirmed confirmed(ui);
        Command5(s, confirmed);
        out.status = BatchFileStatus::Analysed;
    }
    report.interrupted = !s.display.BatchRunning;
    s.display.BatchRunning = false;
    return report;
}

BatchReport menu_batch(Session& s, UserDialogs& ui) {
    FileDialogSpec spec;
    spec.defaultExtension = "DAT";
    spec.filter = "ABF Data File (*.DAT *.ABF)";
    spec.initialDirectory = s.CurrentFolder;
    spec.multiSelect = true;
    const std::string result = BatchDialogResult(ui.OpenFileNames(spec));
    if (result.empty()) return {};
    auto files = BatchFileList(result);
    // Too many names overflowed the old list and ended the command before any file was read.
    if (!files) return {};
    if (const auto clashes = BatchEventFileClashes(*files); !clashes.empty()) {
        std::string text =
            "These files would write the same event file, so that the later file's events "
            "would replace the earlier's:\n";
        for (const auto& c : clashes) {
            text += "\n" + c.eventFile.filename().string() + ":";
            for (std::size_t k = 0; k < c.dataFiles.size(); ++k)
                text += (k ? ", " : " ") + c.dataFiles[k].filename().string();
        }
        text += "\n\nAnalyse them all the same?";
        if (ui.Ask("Batch Analysis", text, Buttons::OKCancel, Answer::Cancel) != Answer::OK)
            return {};
    }
    if (!QueryUnsavedEventsOnExit(s, ui)) return {};
    return RunBatch(s, ui, *files);
}

}  // namespace ardel

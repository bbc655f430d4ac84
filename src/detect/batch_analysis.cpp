#include "detect/batch_analysis.h"

#include <cmath>
#include <memory>
#include <system_error>

#include "core/event_commands.h"
#include "core/event_files.h"
#include "core/number_text.h"
#include "core/open_file.h"
#include "core/recording.h"
#include "detect/window_analysis.h"

namespace ardel {

namespace {

constexpr std::size_t kMaxBatchFiles = 101;

// Passes everything to the user but answers the reset question itself: the batch resets the
// table after every file and must not wait for a button between two files.
class ResetConfirmed final : public UserDialogs {
  public:
    explicit ResetConfirmed(UserDialogs& inner) : inner_(inner) {}
    void Message(std::string_view title, std::string_view text) override {
        inner_.Message(title, text);
    }
    Answer Ask(std::string_view, std::string_view, Buttons, Answer) override { return Answer::OK; }
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view defaultText) override {
        return inner_.Input(title, prompt, defaultText);
    }
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override {
        return inner_.SaveFileName(spec);
    }
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override {
        return inner_.OpenFileName(spec);
    }
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override {
        return inner_.OpenFileNames(spec);
    }
    std::string ClipboardText() override { return inner_.ClipboardText(); }
    void SetClipboardText(std::string_view text) override { inner_.SetClipboardText(text); }
    void Beep() override { inner_.Beep(); }
    void Yield() override { inner_.Yield(); }

  private:
    UserDialogs& inner_;
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

BatchReport RunBatch(Session& s, UserDialogs& ui, const std::vector<std::filesystem::path>& files) {
    BatchReport report;
    Recording& r = s.recording;
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
        std::array<std::uint8_t, kAbfHeaderSize> bytes{};
        source->Read(0, bytes);
        const AbfHeader header = AbfHeader::FromBytes(bytes);
        if (!header.HasAbfSignature()) {
            out.status = BatchFileStatus::NotAbf;
            continue;
        }
        const std::string name = file.filename().string();
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
        AttachRecordingFile(r, source, header, name);
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
    return RunBatch(s, ui, *files);
}

}  // namespace ardel

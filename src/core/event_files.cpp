#include "core/event_files.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <system_error>

#include "core/ini_file.h"
#include "core/number_text.h"
#include "core/recording.h"
#include "core/safe_file.h"

namespace ardel {

namespace {

constexpr const char* kReplaceTitle = "Replace File";
constexpr const char* kReplaceText = "File already exist.  Do you want to replace this file?";

// A fixed-length text of the old runtime: cut to n characters or padded with blanks.
std::string FixedLength(std::string_view text, std::size_t n) {
    std::string out(text.substr(0, std::min(text.size(), n)));
    out.resize(n, ' ');
    return out;
}

std::string TextAt(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t n) {
    return std::string(reinterpret_cast<const char*>(bytes.data()) + offset, n);
}

// The file name as the main window shows it, up to its first ".". A name without one is
// taken whole.
std::string NameBeforeDot(const std::string& label) {
    const auto dot = label.find('.');
    return dot == std::string::npos ? label : label.substr(0, dot);
}

// The program's values between 1954 and 2047, common to both kinds of file.
void WriteProgramFields(std::span<std::uint8_t> out, const DetectionParameters& p,
                        bool withNumberPointsPeak, std::int32_t eventCount,
                        std::string_view label11) {
    namespace o = event_offset;
    WriteF32(out, o::AreaThreshold, p.AreaThreshold);
    WriteI16(out, o::PeakDirection, p.PeakDirection);
    if (withNumberPointsPeak) WriteI16(out, o::NumberPointsPeak, p.NumberPointsPeak);
    WriteI32(out, o::EventCount, eventCount);
    WriteF32(out, o::ThresholdAmplitude, p.ThresholdAmplitude);
    WriteI32(out, o::PeriodToSearchMax, p.PeriodToSearchMax);
    WriteI32(out, o::PeriodStartBaseline, p.PeriodStartBaseline);
    WriteI32(out, o::PeriodFindDecayTime, p.PeriodFindDecayTime);
    WriteF32(out, o::DecayPercent, p.DecayPercent);
    WriteI32(out, o::PeriodBaselineAverage, p.PeriodBaselineAverage);
    const std::string name = FixedLength(label11, kSourceNameLength);
    std::memcpy(out.data() + o::SourceFileName, name.data(), kSourceNameLength);
}

// The detection values of the header; NumberPointsPeak only where the caller wants it.
void ReadProgramFields(std::span<const std::uint8_t> head, DetectionParameters& p,
                       bool withNumberPointsPeak) {
    namespace o = event_offset;
    p.AreaThreshold = ReadF32(head, o::AreaThreshold);
    p.PeakDirection = ReadI16(head, o::PeakDirection);
    if (withNumberPointsPeak) p.NumberPointsPeak = ReadI16(head, o::NumberPointsPeak);
    p.ThresholdAmplitude = ReadF32(head, o::ThresholdAmplitude);
    p.PeriodToSearchMax = ReadI32(head, o::PeriodToSearchMax);
    p.PeriodStartBaseline = ReadI32(head, o::PeriodStartBaseline);
    p.PeriodFindDecayTime = ReadI32(head, o::PeriodFindDecayTime);
    p.DecayPercent = ReadF32(head, o::DecayPercent);
    p.PeriodBaselineAverage = ReadI32(head, o::PeriodBaselineAverage);
}

// The first 24 bytes of the current record: what version 3.0 stored.
void DecodeVersion3(std::span<const std::uint8_t> in, EventRecord& e) {
    e.Time = ReadF32(in, 0);
    e.Amplitude = ReadI32(in, 4);
    e.Noise = ReadI16(in, 8);
    e.Rise = ReadI16(in, 10);
    e.Decay = ReadI16(in, 12);
    e.Baseline = ReadI16(in, 14);
    e.Area = ReadF32(in, 16);
    e.GroupNumber = in[20];
    e.Channel = in[21];
    e.BaselineLead = ReadI16(in, 22);
}

void DecodeOldest(std::span<const std::uint8_t> in, EventRecord& e) {
    e.Time = ReadF32(in, 0);
    e.Amplitude = ReadI16(in, 4);  // widened with its sign
    e.Noise = ReadI16(in, 6);
    e.Rise = ReadI16(in, 8);
    e.Decay = ReadI16(in, 10);
    e.Baseline = ReadI16(in, 12);
    e.Area = ReadF32(in, 14);
    e.GroupNumber = in[18];
}

// An input that is no regular file (a pipe would block the read for ever) is refused with a
// message before anything is read. A missing file ends the operation quietly, as the error trap
// of these commands always did. True when the file may be read.
bool ReadableInput(UserDialogs& ui, const std::filesystem::path& p) {
    std::error_code ec;
    if (!std::filesystem::exists(p, ec)) return false;
    const auto reason = NotARegularFile(p);
    if (!reason) return true;
    ui.Message("File Error",
               "The file " + p.filename().string() + " cannot be opened: " + *reason + ".");
    return false;
}

// The first 6144 bytes of a file, zeros past its end; nullopt when it cannot be read.
std::optional<std::array<std::uint8_t, kAbfHeaderSize>> ReadHead(const std::filesystem::path& p) {
    try {
        FileSource src(p);
        std::array<std::uint8_t, kAbfHeaderSize> head{};
        src.Read(0, head);
        return head;
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

std::optional<std::vector<std::uint8_t>> ReadWholeFile(const std::filesystem::path& p) {
    auto text = ReadFileBytes(p);
    if (!text) return std::nullopt;
    return std::vector<std::uint8_t>(text->begin(), text->end());
}

// The old program opened an existing file and wrote over it from byte 0, so a longer old file
// keeps its tail. The same bytes are built beside it and renamed over it, so that a full disk
// or a crash never leaves a file half old, half new. A failure is said, and the old file stands.
bool WriteFileAsSaved(UserDialogs& ui, const std::filesystem::path& path,
                      std::span<const std::uint8_t> bytes, const char* kind) {
    try {
        WriteFileSafely(
            path, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()),
            WriteMode::Overlay);
        return true;
    } catch (const std::system_error& e) {
        ui.Message("File Not Saved", std::string("The ") + kind + " " + path.filename().string() +
                                         " could not be written: " + e.code().message() +
                                         ".  The file on disk is as it was before.");
        return false;
    }
}

// "Replace File" before writing over an existing file. Returns whether to write.
bool ConfirmReplace(UserDialogs& ui, const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return true;
    return ui.Ask(kReplaceTitle, kReplaceText, Buttons::YesNo) == Answer::Yes;
}

// A dialog's answer without an extension takes the default one, as the dialog itself did.
std::filesystem::path WithDefaultExtension(std::filesystem::path p, const char* ext) {
    if (!p.has_extension()) p += ext;
    return p;
}

// Cuts the table's array to exactly its rows, as the save's resize did: slots beyond the count
// lose what earlier, longer tables left in them.
void TrimTable(EventTable& t) {
    const std::int32_t n = t.EventCount();
    if (t.SlotCount() <= std::size_t(n) + 1) return;
    std::vector<EventRecord> keep(static_cast<std::size_t>(n));
    for (std::int32_t i = 1; i <= n; ++i) keep[std::size_t(i - 1)] = t[i];
    t.Resize(n);
    for (std::int32_t i = 1; i <= n; ++i) t[i] = keep[std::size_t(i - 1)];
}

// What the window shows of NumberPointsPeak: a 0 is made 1 and goes to Combo2's text.
void TakeNumberPointsPeak(Session& s) {
    if (s.params.NumberPointsPeak == 0) s.params.NumberPointsPeak = 1;
    s.options.Combo2 = CStr(int(s.params.NumberPointsPeak));
}

// Loads decoded contents into the session: everything of OpenEventFile after the read.
void ApplyEventFile(Session& s, UserDialogs& ui, EventFileContents&& c,
                    const std::filesystem::path& path) {
    s.FileComment = c.comment;
    s.params = c.params;
    // Named, since the data file's own warnings stand in the same list.
    for (auto& w : c.warnings) s.recording.warnings.push_back(path.filename().string() + ": " + w);
    if (c.baselineLeadOverflow) {
        // The conversion stopped at the first row: the parameters are taken, the table is not.
        s.events.Resize(0);
        return;
    }
    const std::int32_t n = std::int32_t(c.records.size());
    s.events.Resize(n);
    const bool converting = c.layout != EventFileLayout::Current;
    std::int32_t shownPercent = -1;
    for (std::int32_t i = 1; i <= n; ++i) {
        s.events[i] = c.records[std::size_t(i - 1)];
        if (!converting || !s.onLabel4) continue;
        // The label takes i * 50 / N; only whole steps and the last row are shown.
        const double progress = double(i) * 50.0 / double(n);
        if (std::int32_t(progress) != shownPercent || i == n) {
            shownPercent = std::int32_t(progress);
            s.onLabel4(s, CStr(progress));
        }
    }
    c.records.clear();
    c.records.shrink_to_fit();
    TakeNumberPointsPeak(s);
    UpdateTDBGrid(s.events);
    if (c.layout != EventFileLayout::Current) {
        Answer a = ui.Ask("Older Version Event File",
                          "This Event file was saved as a previous version.  Would you like to "
                          "convert to newer version?",
                          Buttons::YesNo);
        if (a == Answer::Yes) menu_SaveEvent(s, ui);
    }
    s.events.MarkSaved();
}

}  // namespace

bool IsArdelvantineFile(const AbfHeader& header) {
    return Contains(header.CreatorInfo(), "Ardelvantine");
}

EventFileLayout LayoutOfMark(std::string_view versionMark) {
    if (Contains(versionMark, "5.0")) return EventFileLayout::Current;
    if (Contains(versionMark, "3.0")) return EventFileLayout::Version3;
    return EventFileLayout::Oldest;
}

void EncodeEventRecord(const EventRecord& e, std::span<std::uint8_t, kEventRecordSize> out) {
    WriteF32(out, 0, e.Time);
    WriteI32(out, 4, e.Amplitude);
    WriteI16(out, 8, e.Noise);
    WriteI16(out, 10, e.Rise);
    WriteI16(out, 12, e.Decay);
    WriteI16(out, 14, e.Baseline);
    WriteF32(out, 16, e.Area);
    out[20] = e.GroupNumber;
    out[21] = e.Channel;
    WriteI16(out, 22, e.BaselineLead);
    WriteF32(out, 24, e.Rise1090);
    WriteF32(out, 28, e.HalfWidth);
    WriteI16(out, 32, e.Rise50);
    WriteI16(out, 34, e.PeakDirection);
    WriteI16(out, 36, e.BurstNumber);
    WriteI16(out, 38, e.BurstEventNumber);
    WriteF32(out, 40, e.Slope1090);
    std::memcpy(out.data() + 44, e.EventText.data(), e.EventText.size());
    WriteI32(out, 56, e.RelativeTime);
    WriteI32(out, 60, e.PeakPoint);
}

EventRecord DecodeEventRecord(std::span<const std::uint8_t, kEventRecordSize> in) {
    EventRecord e;
    DecodeVersion3(in, e);
    e.Rise1090 = ReadF32(in, 24);
    e.HalfWidth = ReadF32(in, 28);
    e.Rise50 = ReadI16(in, 32);
    e.PeakDirection = ReadI16(in, 34);
    e.BurstNumber = ReadI16(in, 36);
    e.BurstEventNumber = ReadI16(in, 38);
    e.Slope1090 = ReadF32(in, 40);
    std::memcpy(e.EventText.data(), in.data() + 44, e.EventText.size());
    e.RelativeTime = ReadI32(in, 56);
    e.PeakPoint = ReadI32(in, 60);
    return e;
}

std::vector<std::uint8_t> EncodeEventFile(const AbfHeader& header,
                                          const DetectionParameters& params,
                                          std::string_view comment, std::string_view label11,
                                          std::span<const EventRecord> records) {
    AbfHeader copy = header;
    SetFixedText(copy.sCreatorInfo, std::string(kEventFileMark));
    SetFixedText(copy.sFileComment, FixedLength(comment, kFileCommentLength));
    const auto head = copy.ToBytes();

    const std::size_t end = event_offset::Records + records.size() * kEventRecordSize;
    std::vector<std::uint8_t> out(std::max(end, kAbfHeaderSize), 0);
    std::copy(head.begin(), head.end(), out.begin());
    WriteProgramFields(out, params, true, std::int32_t(records.size()), label11);
    // The records go over the header from 2048 on; from 49 events they reach the comment.
    std::uint8_t* at = out.data() + event_offset::Records;
    for (const EventRecord& e : records) {
        EncodeEventRecord(e, std::span<std::uint8_t, kEventRecordSize>(at, kEventRecordSize));
        at += kEventRecordSize;
    }
    return out;
}

EventFileContents DecodeEventFile(std::span<const std::uint8_t> bytes) {
    EventFileContents c;
    std::array<std::uint8_t, kAbfHeaderSize> head{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), kAbfHeaderSize), head.begin());
    c.versionMark = TextAt(head, abf_offset::sCreatorInfo, 16);
    c.comment = TextAt(head, abf_offset::sComment, kFileCommentLength);
    c.sourceName = TextAt(head, event_offset::SourceFileName, kSourceNameLength);
    ReadProgramFields(head, c.params, true);
    c.storedCount = ReadI32(head, event_offset::EventCount);
    c.layout = LayoutOfMark(c.versionMark);

    const std::size_t recordSize =
        c.layout == EventFileLayout::Current ? kEventRecordSize : kOldEventRecordSize;
    // Records the file holds, a last partial one included.
    const std::int64_t held =
        bytes.size() > event_offset::Records
            ? std::int64_t((bytes.size() - event_offset::Records + recordSize - 1) / recordSize)
            : 0;
    std::int64_t rows = c.storedCount;
    if (rows < 0) {
        c.warnings.push_back("The event file gives a negative event count (" +
                             std::to_string(c.storedCount) + "); no events are loaded.");
        rows = 0;
    } else if (rows > held + kMaxZeroFilledEventRows) {
        c.warnings.push_back("The event file gives " + std::to_string(c.storedCount) +
                             " events but holds only " + std::to_string(held) +
                             "; the count is taken as damaged and only those are loaded.");
        rows = held;
    } else if (rows > held) {
        c.warnings.push_back("The event file gives " + std::to_string(c.storedCount) +
                             " events but holds only " + std::to_string(held) +
                             "; the missing events read as zeros.");
    }
    if (rows == 0) return c;

    std::optional<std::int16_t> lead;
    if (c.layout == EventFileLayout::Oldest) {
        lead = ToInt16(c.params.PeriodStartBaseline);
        if (!lead) {
            c.baselineLeadOverflow = true;
            c.warnings.push_back(
                "The event file is of the oldest layout and its baseline period (" +
                std::to_string(c.params.PeriodStartBaseline) +
                " us) does not fit the events' 16-bit field; no events are "
                "loaded.");
            return c;
        }
    }

    c.records.resize(std::size_t(rows));
    std::array<std::uint8_t, kEventRecordSize> scratch{};
    for (std::int64_t i = 0; i < rows; ++i) {
        const std::size_t pos = event_offset::Records + std::size_t(i) * recordSize;
        std::span<const std::uint8_t> rec;
        if (pos + recordSize <= bytes.size()) {
            rec = bytes.subspan(pos, recordSize);
        } else {
            // Past the end of the file every field reads as zero.
            scratch.fill(0);
            if (pos < bytes.size())
                std::copy(bytes.begin() + std::ptrdiff_t(pos), bytes.end(), scratch.begin());
            rec = std::span<const std::uint8_t>(scratch.data(), recordSize);
        }
        EventRecord& e = c.records[std::size_t(i)];
        switch (c.layout) {
            case EventFileLayout::Current:
                e = DecodeEventRecord(rec.first<kEventRecordSize>());
                break;
            case EventFileLayout::Version3:
                DecodeVersion3(rec, e);
                e.PeakDirection = c.params.PeakDirection;
                break;
            case EventFileLayout::Oldest:
                DecodeOldest(rec, e);
                e.Channel = 0;
                e.BaselineLead = *lead;
                e.PeakDirection = c.params.PeakDirection;
                break;
        }
    }
    return c;
}

std::array<std::uint8_t, kAbfHeaderSize> EncodeParameterFile(const AbfHeader& header,
                                                             const DetectionParameters& params,
                                                             std::int32_t eventCount,
                                                             std::string_view label11) {
    AbfHeader copy = header;
    SetFixedText(copy.sCreatorInfo, std::string(kParameterFileMark));
    auto out = copy.ToBytes();
    WriteProgramFields(out, params, false, eventCount, label11);
    return out;
}

std::filesystem::path BatchEventFilePath(const Session& s) {
    return s.recording.DataFilePath.parent_path() / (NameBeforeDot(s.Label11) + ".EVT");
}

bool menu_SaveEvent(Session& s, UserDialogs& ui) {
    if (!s.recording.FileIsOpen || s.events.EventCount() < 1) return false;

    std::filesystem::path path;
    if (s.display.BatchRunning) {
        path = BatchEventFilePath(s);
    } else {
        FileDialogSpec spec;
        spec.fileName = NameBeforeDot(s.Label11);
        spec.defaultExtension = "EVT";
        spec.filter = "Event File (*.EVT)";
        spec.initialDirectory = s.CurrentFolder;
        auto chosen = ui.SaveFileName(spec);
        if (!chosen || chosen->empty()) return false;
        path = WithDefaultExtension(*chosen, ".EVT");
    }
    if (!ConfirmReplace(ui, path)) return false;

    TrimTable(s.events);
    const std::int32_t n = s.events.EventCount();
    const auto bytes = EncodeEventFile(s.recording.header, s.params, s.FileComment, s.Label11,
                                       std::span<const EventRecord>(&s.events[1], std::size_t(n)));
    if (!WriteFileAsSaved(ui, path, bytes, "event file")) return false;

    s.events.MarkSaved();
    Display(s);
    return true;
}

bool OpenEventFile(Session& s, UserDialogs& ui, const std::filesystem::path& path) {
    if (!ReadableInput(ui, path)) return false;
    auto bytes = ReadWholeFile(path);
    if (!bytes) return false;
    ApplyEventFile(s, ui, DecodeEventFile(*bytes), path);
    return true;
}

void menu_OpenEvent(Session& s, UserDialogs& ui) {
    if (!s.recording.FileIsOpen && s.events.EventCount() == 0) return;
    if (s.events.EventCount() > 0) {
        // The recording's name was never filled into this question.
        Answer a = ui.Ask("Save Previous Event Data",
                          "There are " + Str(s.events.EventCount()) + " events analysed for " +
                              ".  Do you want to save the event data?",
                          Buttons::YesNoCancel);
        if (a == Answer::Yes) {
            menu_SaveEvent(s, ui);
        } else if (a != Answer::No) {
            return;
        }
        s.events.SetCount(0);
        UpdateTDBGrid(s.events);
    }

    FileDialogSpec spec;
    spec.fileName = "*.evt";
    spec.defaultExtension = "EVT";
    spec.filter = "Event File (*.EVT)";
    spec.initialDirectory = s.CurrentFolder;
    auto chosen = ui.OpenFileName(spec);
    if (!chosen || chosen->empty()) return;
    if (!ReadableInput(ui, *chosen)) return;

    auto bytes = ReadWholeFile(*chosen);
    if (!bytes) return;
    const AbfHeader head = AbfHeader::FromBytes(*bytes);
    if (!IsArdelvantineFile(head)) {
        ui.Message("Not an Event File",
                   "This file is not an event file.  Please check the file and try again.");
        return;
    }
    const std::string stored = Trim(FixedText(head.sSourceFileName));
    if (stored != Trim(s.Label11)) {
        ui.Message("File Not Matching", "This event file was analysed from " + stored +
                                            " and does not match " + s.Label11 +
                                            ".  Please find the appropriate event file.");
        return;
    }
    ApplyEventFile(s, ui, DecodeEventFile(*bytes), *chosen);
    Display(s);
}

void menu_SaveParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir) {
    FileDialogSpec spec;
    spec.fileName = "*.PAR";
    spec.defaultExtension = "PAR";
    spec.filter = "Event File (*.PAR)";
    spec.initialDirectory = programDir;
    auto chosen = ui.SaveFileName(spec);
    if (!chosen || chosen->empty()) return;
    const std::filesystem::path path = WithDefaultExtension(*chosen, ".PAR");
    if (!ConfirmReplace(ui, path)) return;
    const auto bytes =
        EncodeParameterFile(s.recording.header, s.params, s.events.EventCount(), s.Label11);
    WriteFileAsSaved(ui, path, bytes, "parameter file");
}

void menu_LoadParameter(Session& s, UserDialogs& ui, const std::filesystem::path& programDir) {
    FileDialogSpec spec;
    spec.fileName = "*.PAR";
    spec.defaultExtension = "PAR";
    spec.filter = "Parameter File (*.PAR)|*.PAR|Event File (*.EVT)|*.EVT";
    spec.initialDirectory = programDir;
    auto chosen = ui.OpenFileName(spec);
    if (!chosen || chosen->empty()) return;
    if (!ReadableInput(ui, *chosen)) return;
    auto head = ReadHead(*chosen);
    if (!head) return;
    if (!IsArdelvantineFile(AbfHeader::FromBytes(*head))) {
        ui.Message("Not a Parameter File",
                   "This file is not a parameter or an event file.  Please check the file and "
                   "try again.");
        return;
    }
    // The stored count and NumberPointsPeak are not taken, even from an event file.
    ReadProgramFields(*head, s.params, false);
}

void menu_FileComments(Session& s, UserDialogs& ui) {
    std::string comment = Trim(TrimNul(s.FileComment));
    // The header's comment field is NUL padded in many recordings; such padding is no text.
    const std::string headerComment = s.recording.header.FileComment();
    if (comment.empty() && !headerComment.empty())
        comment = headerComment.substr(0, std::min(headerComment.size(), kFileCommentLength));
    s.FileComment = FixedLength(comment, kFileCommentLength);
    auto answer = ui.Input(
        "File Comments",
        "File Comments.  To edit, make necessary changes and press OK to keep changes.", comment);
    if (answer && !answer->empty() && *answer != comment)
        s.FileComment = FixedLength(*answer, kFileCommentLength);
}

}  // namespace ardel

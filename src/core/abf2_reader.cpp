#include "core/abf2_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string_view>

namespace ardel {

// How the ABF 2 values become the ABF 1.x header. Offsets are bytes within the file header
// (block 0) or within one record of the section named; "ADC[i]" is the i-th record of the ADC
// section, whose order is the sampling sequence, and p = ADC[i].nADCNum its physical number.
//
// | ABF 1.x field (offset)           | taken from                                         |
// |----------------------------------|----------------------------------------------------|
// | lFileSignature (0)               | "ABF ": the built header is an ABF 1.x header      |
// | fFileVersionNumber (4)           | file header 4..7, bytes build, bugfix, minor, major |
// |                                  | as major + minor/10 + bugfix/100 + build/1000       |
// |                                  | (2.9.0.0 gives 2.9; 1.83 was written 1.8.3 too)     |
// | fHeaderVersionNumber (32)        | the same number                                     |
// | nOperationMode (8)               | Protocol 0                                          |
// | lActualAcqLength (10)            | Data section's entry count (samples, all channels)  |
// | lActualEpisodes (16)             | file header 12 (uActualEpisodes)                    |
// | lFileStartDate (20)              | file header 16 (YYYYMMDD)                           |
// | lFileStartTime (24)              | file header 20 (milliseconds) / 1000                |
// | nFileStartMillisecs (366)        | file header 20 (milliseconds) mod 1000              |
// | lStopwatchTime (28)              | file header 24                                      |
// | nFileType (36)                   | file header 28                                      |
// | nDataFormat (100)                | file header 30 (1 = floating point, refused)        |
// | lDataSectionPtr (40)             | Data section's block                                |
// | lTagSectionPtr, lNumTagEntries   | Tag section's block and count (64-byte records)     |
// | lSynchArrayPtr, lSynchArraySize  | SynchArray section's block and count (8-byte pairs) |
// | nADCNumChannels (120)            | ADC section's entry count, 1 to 16                  |
// | fADCSampleInterval (122)         | Protocol 2 (fADCSequenceInterval) / channels: ABF 2 |
// |                                  | gives the interval of one channel, ABF 1.x that of  |
// |                                  | two successive samples of the multiplexed stream    |
// | fSynchTimeUnit (130)             | Protocol 14                                         |
// | fSecondsPerRun (134)             | Protocol 18                                         |
// | lNumSamplesPerEpisode (138)      | Protocol 22                                         |
// | lPreTriggerSamples (142)         | Protocol 26                                         |
// | lEpisodesPerRun (146)            | Protocol 30                                         |
// | lRunsPerTrial (150)              | Protocol 34                                         |
// | lNumberOfTrials (154)            | Protocol 38                                         |
// | fEpisodeStartToStart (178)       | Protocol 62                                         |
// | fRunStartToStart (182)           | Protocol 66                                         |
// | fTrialStartToStart (186)         | Protocol 74                                         |
// | fADCRange (244), fDACRange (248) | Protocol 110, 114                                   |
// | lADCResolution, lDACResolution   | Protocol 118, 122                                   |
// | nAutosampleEnable (262),         | ABF 2 has only the telegraph fields. As ABF 1.x     |
// | nAutosampleADCNum (264),         | writers did: the first sampled ADC whose telegraph  |
// | fAutosampleAdditGain (268)       | is on (1, its number, its gain), else 0, 0 and a    |
// |                                  | gain of 1. The open sequence applies the telegraph  |
// |                                  | fields itself; a batch run multiplies by this gain  |
// | sCreatorInfo (294)               | string number file header 60 (uCreatorNameIndex)    |
// | nADCPtoLChannelMap (378)         | 0 .. 15, as ABF 1.x writers leave it                |
// | nADCSamplingSeq[i] (410)         | ADC[i] 0 (nADCNum); -1 after the last channel       |
// | sADCChannelName[p] (442, 10 ch.) | string number ADC[i] 74                             |
// | sADCUnits[p] (602, 8 ch.)        | string number ADC[i] 78                             |
// | fADCProgrammableGain[p] (730)    | ADC[i] 28                                           |
// | fInstrumentScaleFactor[p] (922)  | ADC[i] 40                                           |
// | fInstrumentOffset[p] (986)       | ADC[i] 44                                           |
// | fSignalGain[p] (1050)            | ADC[i] 48                                           |
// | fSignalOffset[p] (1114)          | ADC[i] 52                                           |
// | nTelegraphEnable[p] (4512)       | ADC[i] 2                                            |
// | fTelegraphAdditGain[p] (4576)    | ADC[i] 6                                            |
// | sFileComment (5154, 128 ch.)     | string number Protocol 132 (lFileCommentIndex)      |
//
// ADC numbers not sampled keep gains and scale factors of 1 and no units. Every other byte of
// the built header is zero. The strings section starts with a 44-byte head ("SSCH", version,
// count ...) followed by NUL-separated strings; string number k is the k-th of them, 0 none.

namespace {

constexpr std::size_t kFileHeaderSize = 512;
constexpr std::size_t kSectionMapOffset = 76;
constexpr std::size_t kSectionEntrySize = 16;

enum Section : int {
    kProtocol = 0,
    kADC = 1,
    kStrings = 9,
    kData = 10,
    kTag = 11,
    kSynchArray = 15,
    kSectionCount = 18,
};
constexpr const char* kSectionNames[kSectionCount] = {
    "Protocol",  "ADC",   "DAC",  "Epoch", "ADCPerDAC", "EpochPerDAC", "UserList",
    "StatsRegion", "Math", "Strings", "Data", "Tag",   "Scope",       "Delta",
    "VoiceTag",  "SynchArray", "Annotation", "Stats"};

constexpr std::size_t kProtocolBytesNeeded = 136;  // through lFileCommentIndex
constexpr std::size_t kAdcBytesNeeded = 82;        // through lADCUnitsIndex
constexpr std::size_t kStringsHeadSize = 44;
constexpr std::size_t kSynchEntrySize = 8;
// Extra ABF 1.x fields that the program shows nowhere but keeps for whoever reads the header.
constexpr std::size_t kLPreTriggerSamples = 142;
constexpr std::size_t kFDACRange = 248;
constexpr std::size_t kLDACResolution = 256;
constexpr std::size_t kNFileStartMillisecs = 366;
constexpr std::size_t kNADCPtoLChannelMap = 378;
constexpr std::size_t kSADCChannelName = 442;

struct SectionEntry {
    std::uint32_t block = 0;
    std::uint32_t bytes = 0;
    std::int64_t count = 0;
    std::uint64_t Start() const { return std::uint64_t(block) * kAbfBlockSize; }
};

class Bytes {
public:
    explicit Bytes(std::span<const std::byte> b) : b_(b) {}
    std::size_t size() const { return b_.size(); }
    template <typename T>
    T At(std::uint64_t offset) const {
        T v{};
        std::memcpy(&v, b_.data() + offset, sizeof v);
        return v;
    }
    std::span<const std::byte> Sub(std::uint64_t offset, std::uint64_t length) const {
        return b_.subspan(std::size_t(offset), std::size_t(length));
    }

private:
    std::span<const std::byte> b_;
};

Abf2Error Fail(Abf2ErrorKind kind, std::uint64_t offset, std::string what) {
    return Abf2Error{kind, offset, std::move(what)};
}

std::string SectionName(int s) { return std::string("the ") + kSectionNames[s] + " section"; }

// The strings of the strings section; string number k is strings[k - 1].
std::vector<std::string> SplitStrings(std::span<const std::byte> section) {
    std::string_view text(reinterpret_cast<const char*>(section.data()), section.size());
    std::size_t start = 0;
    if (text.size() >= kStringsHeadSize && text.substr(0, 4) == "SSCH") {
        start = kStringsHeadSize;
    } else {
        // Without the usual head the strings follow the last pair of NULs before them.
        const std::size_t pair = text.rfind(std::string_view("\0\0", 2));
        start = pair == std::string_view::npos ? 0 : pair + 2;
    }
    std::vector<std::string> out;
    while (start < text.size()) {
        std::size_t end = text.find('\0', start);
        if (end == std::string_view::npos) end = text.size();  // no terminator: ends with the section
        out.emplace_back(text.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

std::string StringNumber(const std::vector<std::string>& strings, std::int64_t k) {
    if (k < 1 || std::uint64_t(k) > strings.size()) return {};
    return strings[std::size_t(k - 1)];
}

std::int32_t Saturate32(std::uint64_t v) {
    return std::int32_t(std::min<std::uint64_t>(v, std::uint64_t(std::numeric_limits<std::int32_t>::max())));
}

template <std::size_t N>
void PutText(std::span<std::uint8_t> raw, std::size_t offset, const std::string& text) {
    for (std::size_t i = 0; i < N; ++i) raw[offset + i] = std::uint8_t(i < text.size() ? text[i] : ' ');
}

// Bytes a section takes: the strings section gives the bytes of all its strings, the others the
// bytes of one record. Saturates instead of overflowing.
std::uint64_t Length(const SectionEntry& e, bool allInOne) {
    if (e.count <= 0) return 0;
    if (allInOne) return e.bytes;
    const auto n = std::uint64_t(e.count);
    if (e.bytes != 0 && n > std::numeric_limits<std::uint64_t>::max() / e.bytes)
        return std::numeric_limits<std::uint64_t>::max();
    return n * e.bytes;
}

bool Fits(const SectionEntry& e, bool allInOne, std::uint64_t size) {
    return e.Start() <= size && Length(e, allInOne) <= size - e.Start();
}

// The sections the program reads must not share a byte with each other or with the file
// header: one would be read as the other.
std::optional<Abf2Error> CheckOverlaps(const std::array<SectionEntry, kSectionCount>& map) {
    struct Extent {
        int section;
        std::uint64_t from, to;
    };
    std::vector<Extent> extents{{-1, 0, kFileHeaderSize}};
    for (int s : {kProtocol, kADC, kStrings, kData, kTag, kSynchArray}) {
        const SectionEntry& e = map[std::size_t(s)];
        if (e.count <= 0) continue;
        const std::uint64_t length = std::min(Length(e, s == kStrings), ~e.Start());
        extents.push_back({s, e.Start(), e.Start() + length});
    }
    for (std::size_t a = 0; a < extents.size(); ++a)
        for (std::size_t b = a + 1; b < extents.size(); ++b) {
            const Extent& x = extents[a];
            const Extent& y = extents[b];
            if (x.from < y.to && y.from < x.to && x.from < x.to && y.from < y.to) {
                const std::string first = x.section < 0 ? "the file header" : SectionName(x.section);
                return Fail(Abf2ErrorKind::InconsistentHeader, y.from,
                            SectionName(y.section) + " (block " +
                                std::to_string(map[std::size_t(y.section)].block) +
                                ") overlaps " + first);
            }
        }
    return std::nullopt;
}

}  // namespace

bool HasAbf2Signature(std::span<const std::byte> file) {
    return file.size() >= 4 && std::memcmp(file.data(), "ABF2", 4) == 0;
}

Abf2Result ReadAbf2Header(std::span<const std::byte> file) {
    const Bytes f(file);
    const std::uint64_t size = file.size();
    if (!HasAbf2Signature(file))
        return Fail(Abf2ErrorKind::NotThisFormat, 0, "the file does not start with \"ABF2\"");
    if (size < kSectionMapOffset + kSectionCount * kSectionEntrySize)
        return Fail(Abf2ErrorKind::Truncated, size,
                    "the file is only " + std::to_string(size) +
                        " bytes long, too short for the header of an ABF 2 file");

    std::array<SectionEntry, kSectionCount> map{};
    for (int s = 0; s < kSectionCount; ++s) {
        const std::uint64_t at = kSectionMapOffset + std::uint64_t(s) * kSectionEntrySize;
        map[std::size_t(s)] = {f.At<std::uint32_t>(at), f.At<std::uint32_t>(at + 4),
                               f.At<std::int64_t>(at + 8)};
    }
    // Each section the program reads: a count that is not negative, records of a usable size,
    // and all of it within the file. The data section may end early (a truncated recording);
    // its start is checked when the samples are read.
    for (int s : {kProtocol, kADC, kStrings, kTag, kSynchArray, kData}) {
        const SectionEntry& e = map[std::size_t(s)];
        const std::uint64_t at = kSectionMapOffset + std::uint64_t(s) * kSectionEntrySize;
        if (e.count < 0)
            return Fail(Abf2ErrorKind::InconsistentHeader, at + 8,
                        SectionName(s) + " gives a negative count (" + std::to_string(e.count) + ")");
        if (e.count == 0 || s == kData) continue;
        if (!Fits(e, s == kStrings, size)) {
            if (s == kTag || s == kSynchArray) continue;  // read as far as they go, with a warning
            return Fail(Abf2ErrorKind::Truncated, e.Start(),
                        SectionName(s) + " (block " + std::to_string(e.block) + ", " +
                            std::to_string(e.count) + " entries of " + std::to_string(e.bytes) +
                            " bytes) runs past the end of the file (" + std::to_string(size) +
                            " bytes)");
        }
    }
    const SectionEntry& protocol = map[kProtocol];
    const SectionEntry& adc = map[kADC];
    const SectionEntry& data = map[kData];
    if (protocol.count < 1 || protocol.bytes < kProtocolBytesNeeded)
        return Fail(Abf2ErrorKind::InconsistentHeader, kSectionMapOffset,
                    "the Protocol section is missing or too short (" +
                        std::to_string(protocol.bytes) + " bytes)");
    if (adc.count < 1 || adc.count > kAbfMaxChannels)
        return Fail(Abf2ErrorKind::InconsistentHeader, kSectionMapOffset + kADC * kSectionEntrySize,
                    "the header gives " + std::to_string(adc.count) +
                        " input channels; an ABF file has 1 to 16");
    if (adc.bytes < kAdcBytesNeeded)
        return Fail(Abf2ErrorKind::InconsistentHeader, kSectionMapOffset + kADC * kSectionEntrySize,
                    "the ADC records are " + std::to_string(adc.bytes) + " bytes long, too short");
    const std::uint16_t dataFormat = f.At<std::uint16_t>(30);
    if (dataFormat == 1 || (data.count > 0 && data.bytes == 4))
        return Fail(Abf2ErrorKind::FloatingPoint, 30, "the samples are floating-point numbers");
    if (data.count > 0 && data.bytes != 2)
        return Fail(Abf2ErrorKind::Unsupported, kSectionMapOffset + kData * kSectionEntrySize,
                    "the samples are " + std::to_string(data.bytes) +
                        " bytes each; only 16-bit samples can be read");
    if (data.count > std::numeric_limits<std::int32_t>::max())
        return Fail(Abf2ErrorKind::Unsupported, kSectionMapOffset + kData * kSectionEntrySize,
                    "the recording holds " + std::to_string(data.count) +
                        " samples, more than the 2,147,483,647 an ABF 1.x header can count");
    for (int s : {kData, kTag, kSynchArray})
        if (map[std::size_t(s)].block > std::uint32_t(std::numeric_limits<std::int32_t>::max()))
            return Fail(Abf2ErrorKind::InconsistentHeader,
                        kSectionMapOffset + std::uint64_t(s) * kSectionEntrySize,
                        SectionName(s) + " starts at block " +
                            std::to_string(map[std::size_t(s)].block) + ", beyond any file");
    if (auto overlap = CheckOverlaps(map)) return *overlap;

    Abf2Header out;
    AbfHeader& h = out.header;
    std::vector<std::string> strings;
    if (map[kStrings].count > 0)
        strings = SplitStrings(f.Sub(map[kStrings].Start(), map[kStrings].bytes));

    // The file header.
    std::copy_n("ABF ", 4, h.lFileSignature.begin());
    const auto v = [&](std::size_t i) { return double(f.At<std::uint8_t>(4 + i)); };
    h.fFileVersionNumber = float(v(3) + v(2) / 10 + v(1) / 100 + v(0) / 1000);
    h.fHeaderVersionNumber = h.fFileVersionNumber;
    h.lActualEpisodes = Saturate32(f.At<std::uint32_t>(12));
    h.lFileStartDate = Saturate32(f.At<std::uint32_t>(16));
    const std::uint32_t startMs = f.At<std::uint32_t>(20);
    h.lFileStartTime = Saturate32(startMs / 1000);
    h.lStopwatchTime = Saturate32(f.At<std::uint32_t>(24));
    h.nFileType = f.At<std::int16_t>(28);
    h.nDataFormat = std::int16_t(dataFormat);
    SetFixedText(h.sCreatorInfo, StringNumber(strings, f.At<std::uint32_t>(60)));

    // The protocol.
    const std::uint64_t p = protocol.Start();
    h.nOperationMode = f.At<std::int16_t>(p + 0);
    const float sequenceInterval = f.At<float>(p + 2);
    h.nADCNumChannels = std::int16_t(adc.count);
    h.fADCSampleInterval = float(double(sequenceInterval) / double(adc.count));
    h.fSynchTimeUnit = f.At<float>(p + 14);
    h.fSecondsPerRun = f.At<float>(p + 18);
    h.lNumSamplesPerEpisode = f.At<std::int32_t>(p + 22);
    h.lEpisodesPerRun = f.At<std::int32_t>(p + 30);
    h.lRunsPerTrial = f.At<std::int32_t>(p + 34);
    h.lNumberOfTrials = f.At<std::int32_t>(p + 38);
    h.fEpisodeStartToStart = f.At<float>(p + 62);
    h.fRunStartToStart = f.At<float>(p + 66);
    h.fTrialStartToStart = f.At<float>(p + 74);
    h.fADCRange = f.At<float>(p + 110);
    h.lADCResolution = f.At<std::int32_t>(p + 118);
    SetFixedText(h.sFileComment, StringNumber(strings, f.At<std::int32_t>(p + 132)));

    // Where the samples, tags and Synch Array are.
    h.lDataSectionPtr = std::int32_t(data.block);
    h.lActualAcqLength = std::int32_t(data.count);
    const SectionEntry& tag = map[kTag];
    if (tag.count > 0 && tag.bytes != kAbfTagSize) {
        out.warnings.push_back("the tags are " + std::to_string(tag.bytes) +
                               "-byte records, not 64; they are left out");
    } else if (tag.count > 0) {
        h.lTagSectionPtr = std::int32_t(tag.block);
        h.lNumTagEntries = Saturate32(std::uint64_t(tag.count));
    }
    const SectionEntry& synch = map[kSynchArray];
    if (synch.count > 0 && synch.bytes != kSynchEntrySize) {
        out.warnings.push_back("the Synch Array entries are " + std::to_string(synch.bytes) +
                               " bytes, not 8; the Synch Array is left out");
    } else if (synch.count > 0) {
        h.lSynchArrayPtr = std::int32_t(synch.block);
        h.lSynchArraySize = Saturate32(std::uint64_t(synch.count));
        const std::uint64_t held =
            synch.Start() >= size ? 0 : (size - synch.Start()) / kSynchEntrySize;
        if (held < std::uint64_t(synch.count))
            out.warnings.push_back("the Synch Array lists " + std::to_string(synch.count) +
                                   " segments but the file holds " + std::to_string(held) +
                                   "; the others read as zeros");
    }

    // The channels, by physical ADC number.
    h.nADCSamplingSeq.fill(-1);
    h.fADCProgrammableGain.fill(1);
    h.fInstrumentScaleFactor.fill(1);
    h.fSignalGain.fill(1);
    h.fTelegraphAdditGain.fill(1);
    for (auto& u : h.sADCUnits) SetFixedText(u, "");
    std::array<std::string, kAbfMaxChannels> names;
    std::array<bool, kAbfMaxChannels> seen{};
    for (std::int64_t i = 0; i < adc.count; ++i) {
        const std::uint64_t r = adc.Start() + std::uint64_t(i) * adc.bytes;
        const std::int16_t num = f.At<std::int16_t>(r + 0);
        if (num < 0 || num >= kAbfMaxChannels)
            return Fail(Abf2ErrorKind::InconsistentHeader, r,
                        "channel " + std::to_string(i) + " gives ADC number " +
                            std::to_string(num) + "; ADC numbers run from 0 to 15");
        if (seen[std::size_t(num)])
            return Fail(Abf2ErrorKind::InconsistentHeader, r,
                        "ADC " + std::to_string(num) + " is listed twice");
        seen[std::size_t(num)] = true;
        const std::size_t a = std::size_t(num);
        h.nADCSamplingSeq[std::size_t(i)] = num;
        h.nTelegraphEnable[a] = f.At<std::int16_t>(r + 2);
        h.fTelegraphAdditGain[a] = f.At<float>(r + 6);
        h.fADCProgrammableGain[a] = f.At<float>(r + 28);
        h.fInstrumentScaleFactor[a] = f.At<float>(r + 40);
        h.fInstrumentOffset[a] = f.At<float>(r + 44);
        h.fSignalGain[a] = f.At<float>(r + 48);
        h.fSignalOffset[a] = f.At<float>(r + 52);
        names[a] = StringNumber(strings, f.At<std::int32_t>(r + 74));
        SetFixedText(h.sADCUnits[a], StringNumber(strings, f.At<std::int32_t>(r + 78)));
    }

    h.fAutosampleAdditGain = 1;
    for (std::int64_t i = 0; i < adc.count; ++i) {
        const auto a = std::size_t(h.nADCSamplingSeq[std::size_t(i)]);
        if (h.nTelegraphEnable[a] != 1) continue;
        h.nAutosampleEnable = 1;
        h.nAutosampleADCNum = std::int16_t(a);
        h.fAutosampleAdditGain = h.fTelegraphAdditGain[a];
        break;
    }

    // Fields the program does not name, kept so that the header reads as a whole.
    auto raw = h.ToBytes();
    std::span<std::uint8_t> rs(raw);
    WriteI32(rs, kLPreTriggerSamples, f.At<std::int32_t>(p + 26));
    WriteF32(rs, kFDACRange, f.At<float>(p + 114));
    WriteI32(rs, kLDACResolution, f.At<std::int32_t>(p + 122));
    WriteI16(rs, kNFileStartMillisecs, std::int16_t(startMs % 1000));
    for (int k = 0; k < kAbfMaxChannels; ++k) {
        WriteI16(rs, kNADCPtoLChannelMap + 2 * std::size_t(k), std::int16_t(k));
        PutText<10>(rs, kSADCChannelName + 10 * std::size_t(k), names[std::size_t(k)]);
    }
    out.header = AbfHeader::FromBytes(raw);
    return out;
}

}  // namespace ardel

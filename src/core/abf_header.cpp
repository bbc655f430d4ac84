#include "core/abf_header.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/number_text.h"

namespace ardel {

static_assert(std::endian::native == std::endian::little,
              "the file formats are little-endian; a big-endian build needs byte swaps here");

std::int16_t ReadI16(std::span<const std::uint8_t> bytes, std::size_t offset) {
    std::int16_t v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}
std::int32_t ReadI32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    std::int32_t v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}
float ReadF32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    float v;
    std::memcpy(&v, bytes.data() + offset, sizeof v);
    return v;
}
void WriteI16(std::span<std::uint8_t> bytes, std::size_t offset, std::int16_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}
void WriteI32(std::span<std::uint8_t> bytes, std::size_t offset, std::int32_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}
void WriteF32(std::span<std::uint8_t> bytes, std::size_t offset, float value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

namespace {

// One table drives both directions, so a field cannot be read at one offset and written at
// another.
template <typename Visitor>
void VisitFields(AbfHeader& h, Visitor&& v) {
    namespace o = abf_offset;
    v(o::fFileVersionNumber, h.fFileVersionNumber);
    v(o::nOperationMode, h.nOperationMode);
    v(o::lActualAcqLength, h.lActualAcqLength);
    v(o::nNumPointsIgnored, h.nNumPointsIgnored);
    v(o::lActualEpisodes, h.lActualEpisodes);
    v(o::lFileStartDate, h.lFileStartDate);
    v(o::lFileStartTime, h.lFileStartTime);
    v(o::lStopwatchTime, h.lStopwatchTime);
    v(o::fHeaderVersionNumber, h.fHeaderVersionNumber);
    v(o::nFileType, h.nFileType);
    v(o::nMSBinFormat, h.nMSBinFormat);
    v(o::lDataSectionPtr, h.lDataSectionPtr);
    v(o::lTagSectionPtr, h.lTagSectionPtr);
    v(o::lNumTagEntries, h.lNumTagEntries);
    v(o::lSynchArrayPtr, h.lSynchArrayPtr);
    v(o::lSynchArraySize, h.lSynchArraySize);
    v(o::nDataFormat, h.nDataFormat);
    v(o::nADCNumChannels, h.nADCNumChannels);
    v(o::fADCSampleInterval, h.fADCSampleInterval);
    v(o::fSynchTimeUnit, h.fSynchTimeUnit);
    v(o::fSecondsPerRun, h.fSecondsPerRun);
    v(o::lNumSamplesPerEpisode, h.lNumSamplesPerEpisode);
    v(o::lEpisodesPerRun, h.lEpisodesPerRun);
    v(o::lRunsPerTrial, h.lRunsPerTrial);
    v(o::lNumberOfTrials, h.lNumberOfTrials);
    v(o::fEpisodeStartToStart, h.fEpisodeStartToStart);
    v(o::fRunStartToStart, h.fRunStartToStart);
    v(o::fTrialStartToStart, h.fTrialStartToStart);
    v(o::fADCRange, h.fADCRange);
    v(o::lADCResolution, h.lADCResolution);
    v(o::nAutosampleEnable, h.nAutosampleEnable);
    v(o::nAutosampleADCNum, h.nAutosampleADCNum);
    v(o::fAutosampleAdditGain, h.fAutosampleAdditGain);
    for (int i = 0; i < kAbfMaxChannels; ++i) {
        v(o::nADCSamplingSeq + 2 * i, h.nADCSamplingSeq[i]);
        v(o::fADCProgrammableGain + 4 * i, h.fADCProgrammableGain[i]);
        v(o::fInstrumentScaleFactor + 4 * i, h.fInstrumentScaleFactor[i]);
        v(o::fInstrumentOffset + 4 * i, h.fInstrumentOffset[i]);
        v(o::fSignalGain + 4 * i, h.fSignalGain[i]);
        v(o::fSignalOffset + 4 * i, h.fSignalOffset[i]);
        v(o::nTelegraphEnable + 2 * i, h.nTelegraphEnable[i]);
        v(o::fTelegraphAdditGain + 4 * i, h.fTelegraphAdditGain[i]);
        v(o::sADCUnits + 8 * i, h.sADCUnits[i]);
    }
    v(o::lFileSignature, h.lFileSignature);
    v(o::sCreatorInfo, h.sCreatorInfo);
    v(o::sComment, h.sComment);
    v(o::sSourceFileName, h.sSourceFileName);
    v(o::sFileComment, h.sFileComment);
}

struct Reader {
    std::span<const std::uint8_t> bytes;
    template <typename T>
    void operator()(std::size_t offset, T& field) const {
        std::memcpy(&field, bytes.data() + offset, sizeof field);
    }
};

struct Writer {
    std::span<std::uint8_t> bytes;
    template <typename T>
    void operator()(std::size_t offset, const T& field) const {
        std::memcpy(bytes.data() + offset, &field, sizeof field);
    }
};

}  // namespace

AbfHeader AbfHeader::FromBytes(std::span<const std::uint8_t> bytes) {
    AbfHeader h;
    std::size_t n = std::min(bytes.size(), kAbfHeaderSize);
    std::copy_n(bytes.begin(), n, h.raw.begin());
    VisitFields(h, Reader{std::span<const std::uint8_t>(h.raw)});
    return h;
}

std::array<std::uint8_t, kAbfHeaderSize> AbfHeader::ToBytes() const {
    auto out = raw;
    VisitFields(const_cast<AbfHeader&>(*this), Writer{std::span<std::uint8_t>(out)});
    return out;
}

bool AbfHeader::HasAbfSignature() const {
    return Contains(std::string_view(lFileSignature.data(), lFileSignature.size()), "ABF ");
}

std::string AbfHeader::CreatorInfo() const { return FixedText(sCreatorInfo); }

std::string AbfHeader::Units(int adc) const {
    if (adc < 0 || adc >= kAbfMaxChannels) return {};
    return Trim(TrimNul(FixedText(sADCUnits[adc])));
}

std::string AbfHeader::FileComment() const { return Trim(TrimNul(FixedText(sFileComment))); }

}  // namespace ardel

// The 6144-byte header of an ABF 1.x data file. The fields the program uses are named; every
// other byte is kept as read so that the header can be written out again unchanged (event
// files and new recordings start from a copy of it).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ardel {

inline constexpr std::size_t kAbfHeaderSize = 6144;
inline constexpr std::size_t kAbfBlockSize = 512;
inline constexpr int kAbfMaxChannels = 16;

// Byte offsets of the named fields.
namespace abf_offset {
inline constexpr std::size_t lFileSignature = 0;
inline constexpr std::size_t fFileVersionNumber = 4;
inline constexpr std::size_t nOperationMode = 8;
inline constexpr std::size_t lActualAcqLength = 10;
inline constexpr std::size_t nNumPointsIgnored = 14;
inline constexpr std::size_t lActualEpisodes = 16;
inline constexpr std::size_t lFileStartDate = 20;
inline constexpr std::size_t lFileStartTime = 24;
inline constexpr std::size_t lStopwatchTime = 28;
inline constexpr std::size_t fHeaderVersionNumber = 32;
inline constexpr std::size_t nFileType = 36;
inline constexpr std::size_t nMSBinFormat = 38;
inline constexpr std::size_t lDataSectionPtr = 40;
inline constexpr std::size_t lTagSectionPtr = 44;
inline constexpr std::size_t lNumTagEntries = 48;
inline constexpr std::size_t lSynchArrayPtr = 92;
inline constexpr std::size_t lSynchArraySize = 96;
inline constexpr std::size_t nDataFormat = 100;
inline constexpr std::size_t nADCNumChannels = 120;
inline constexpr std::size_t fADCSampleInterval = 122;
inline constexpr std::size_t fSynchTimeUnit = 130;
inline constexpr std::size_t fSecondsPerRun = 134;
inline constexpr std::size_t lNumSamplesPerEpisode = 138;
inline constexpr std::size_t lEpisodesPerRun = 146;
inline constexpr std::size_t lRunsPerTrial = 150;
inline constexpr std::size_t lNumberOfTrials = 154;
inline constexpr std::size_t fEpisodeStartToStart = 178;
inline constexpr std::size_t fRunStartToStart = 182;
inline constexpr std::size_t fTrialStartToStart = 186;
inline constexpr std::size_t fADCRange = 244;
inline constexpr std::size_t lADCResolution = 252;
inline constexpr std::size_t nAutosampleEnable = 262;
inline constexpr std::size_t nAutosampleADCNum = 264;
inline constexpr std::size_t fAutosampleAdditGain = 268;
inline constexpr std::size_t sCreatorInfo = 294;     // 16 characters
inline constexpr std::size_t sComment = 310;         // 56 characters
inline constexpr std::size_t nADCSamplingSeq = 410;  // 16 x int16
inline constexpr std::size_t sADCUnits = 602;        // 16 x 8 characters
inline constexpr std::size_t fADCProgrammableGain = 730;
inline constexpr std::size_t fInstrumentScaleFactor = 922;
inline constexpr std::size_t fInstrumentOffset = 986;
inline constexpr std::size_t fSignalGain = 1050;
inline constexpr std::size_t fSignalOffset = 1114;
inline constexpr std::size_t sSourceFileName = 2014;  // 34 characters, event files only
inline constexpr std::size_t nTelegraphEnable = 4512;
inline constexpr std::size_t fTelegraphAdditGain = 4576;
inline constexpr std::size_t sFileComment = 5154;  // 128 characters
}  // namespace abf_offset

struct AbfHeader {
    // Fixed-length texts are kept as their raw bytes (blank or NUL padded).
    std::array<char, 4> lFileSignature{};
    float fFileVersionNumber = 0;
    std::int16_t nOperationMode = 0;
    std::int32_t lActualAcqLength = 0;
    std::int16_t nNumPointsIgnored = 0;
    std::int32_t lActualEpisodes = 0;
    std::int32_t lFileStartDate = 0;
    std::int32_t lFileStartTime = 0;
    std::int32_t lStopwatchTime = 0;
    float fHeaderVersionNumber = 0;
    std::int16_t nFileType = 0;
    std::int16_t nMSBinFormat = 0;
    std::int32_t lDataSectionPtr = 0;
    std::int32_t lTagSectionPtr = 0;
    std::int32_t lNumTagEntries = 0;
    std::int32_t lSynchArrayPtr = 0;
    std::int32_t lSynchArraySize = 0;
    std::int16_t nDataFormat = 0;
    std::int16_t nADCNumChannels = 0;
    float fADCSampleInterval = 0;
    float fSynchTimeUnit = 0;
    float fSecondsPerRun = 0;
    std::int32_t lNumSamplesPerEpisode = 0;
    std::int32_t lEpisodesPerRun = 0;
    std::int32_t lRunsPerTrial = 0;
    std::int32_t lNumberOfTrials = 0;
    float fEpisodeStartToStart = 0;
    float fRunStartToStart = 0;
    float fTrialStartToStart = 0;
    float fADCRange = 0;
    std::int32_t lADCResolution = 0;
    std::int16_t nAutosampleEnable = 0;
    std::int16_t nAutosampleADCNum = 0;
    float fAutosampleAdditGain = 0;
    std::array<char, 16> sCreatorInfo{};
    std::array<char, 56> sComment{};
    std::array<std::int16_t, 16> nADCSamplingSeq{};
    std::array<std::array<char, 8>, 16> sADCUnits{};
    std::array<float, 16> fADCProgrammableGain{};
    std::array<float, 16> fInstrumentScaleFactor{};
    std::array<float, 16> fInstrumentOffset{};
    std::array<float, 16> fSignalGain{};
    std::array<float, 16> fSignalOffset{};
    std::array<char, 34> sSourceFileName{};
    std::array<std::int16_t, 16> nTelegraphEnable{};
    std::array<float, 16> fTelegraphAdditGain{};
    std::array<char, 128> sFileComment{};

    // All 6144 bytes as they were read; ToBytes() writes the named fields over a copy.
    std::array<std::uint8_t, kAbfHeaderSize> raw{};

    // Parses up to 6144 bytes; missing bytes of a short input read as zeros.
    static AbfHeader FromBytes(std::span<const std::uint8_t> bytes);
    std::array<std::uint8_t, kAbfHeaderSize> ToBytes() const;

    bool HasAbfSignature() const;  // the four signature bytes hold "ABF "
    std::string CreatorInfo() const;
    std::string Units(int adc) const;  // trimmed
    std::string FileComment() const;   // sFileComment cut at its first NUL, trimmed
};

// Fixed-length text helpers over the char arrays of the header.
template <std::size_t N>
std::string FixedText(const std::array<char, N>& field) {
    return std::string(field.data(), N);
}
template <std::size_t N>
void SetFixedText(std::array<char, N>& field, const std::string& text, char pad = ' ') {
    for (std::size_t i = 0; i < N; ++i) field[i] = i < text.size() ? text[i] : pad;
}

// Little-endian access into byte buffers, bounds-checked by the caller.
std::int16_t ReadI16(std::span<const std::uint8_t> bytes, std::size_t offset);
std::int32_t ReadI32(std::span<const std::uint8_t> bytes, std::size_t offset);
float ReadF32(std::span<const std::uint8_t> bytes, std::size_t offset);
void WriteI16(std::span<std::uint8_t> bytes, std::size_t offset, std::int16_t value);
void WriteI32(std::span<std::uint8_t> bytes, std::size_t offset, std::int32_t value);
void WriteF32(std::span<std::uint8_t> bytes, std::size_t offset, float value);

// One voice tag: lTagTime, the 56-character comment and 4 further bytes carried unread.
struct AbfTag {
    std::int32_t lTagTime = 0;
    std::array<char, 56> sComment{};
    std::array<std::uint8_t, 4> rest{};
};
inline constexpr std::size_t kAbfTagSize = 64;

}  // namespace ardel

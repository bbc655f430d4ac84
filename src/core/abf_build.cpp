#include "core/abf_build.h"

#include <cstring>

namespace ardel {

AbfHeader MakeAbfHeader(const AbfBuildSpec& spec, std::int64_t totalSamples) {
    AbfHeader h;
    std::memcpy(h.lFileSignature.data(), "ABF ", 4);
    h.fFileVersionNumber = spec.fileVersion;
    h.fHeaderVersionNumber = spec.fileVersion;
    h.nOperationMode = spec.operationMode;
    h.lActualAcqLength = std::int32_t(totalSamples);
    h.nFileType = 1;
    h.lDataSectionPtr = std::int32_t(kAbfHeaderSize / kAbfBlockSize);
    h.nADCNumChannels = std::int16_t(spec.channels);
    h.fADCSampleInterval = spec.sampleIntervalUs;
    h.lNumSamplesPerEpisode = 512;
    h.lActualEpisodes = std::int32_t((totalSamples + 511) / 512);
    h.fADCRange = spec.adcRange;
    h.lADCResolution = spec.adcResolution;
    h.fAutosampleAdditGain = 1;
    h.fSecondsPerRun = float(double(totalSamples) * spec.sampleIntervalUs / 1e6);
    SetFixedText(h.sCreatorInfo, spec.creator);
    SetFixedText(h.sFileComment, spec.comment);
    for (int i = 0; i < kAbfMaxChannels; ++i) {
        h.nADCSamplingSeq[i] = std::int16_t(i < spec.channels ? i : -1);
        h.fADCProgrammableGain[i] = 1;
        h.fSignalGain[i] = 1;
        h.fInstrumentScaleFactor[i] = 1;
        h.fTelegraphAdditGain[i] = 1;
        SetFixedText(h.sADCUnits[i], i < int(spec.units.size()) ? spec.units[i] : "V");
        if (i < int(spec.scaleFactors.size())) h.fInstrumentScaleFactor[i] = spec.scaleFactors[i];
    }
    return h;
}

std::vector<std::uint8_t> BuildAbfFile(const AbfBuildSpec& spec,
                                       std::span<const std::int16_t> multiplexed) {
    AbfHeader h = MakeAbfHeader(spec, std::int64_t(multiplexed.size()));
    auto head = h.ToBytes();
    std::vector<std::uint8_t> out(head.begin(), head.end());
    const std::size_t at = out.size();
    out.resize(at + multiplexed.size() * 2);
    if (!multiplexed.empty()) std::memcpy(out.data() + at, multiplexed.data(), multiplexed.size() * 2);
    return out;
}

}  // namespace ardel

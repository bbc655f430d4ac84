// The one open data file: its header, the active channel, the three screen buffers through
// which every sample is reached, and the conversions between raw values, points and times.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/abf_header.h"

namespace ardel {

// Where the samples come from: a file read with pread, or bytes in memory (tests). Reads past
// the end give zeros, as the recording's last screens always have.
class SampleSource {
public:
    virtual ~SampleSource() = default;
    virtual std::uint64_t Size() const = 0;
    // Fills dest with the bytes at offset; bytes past the end (or before 0) are zero.
    virtual void Read(std::int64_t offset, std::span<std::uint8_t> dest) const = 0;
};

class MemorySource final : public SampleSource {
public:
    explicit MemorySource(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t Size() const override { return bytes_.size(); }
    void Read(std::int64_t offset, std::span<std::uint8_t> dest) const override;

private:
    std::vector<std::uint8_t> bytes_;
};

class FileSource final : public SampleSource {
public:
    // Throws std::system_error when the file cannot be opened.
    explicit FileSource(const std::filesystem::path& path);
    ~FileSource() override;
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    std::uint64_t Size() const override;
    void Read(std::int64_t offset, std::span<std::uint8_t> dest) const override;

private:
    int fd_ = -1;
};

struct Recording {
    // The buffers exist from the start, zero-filled, so the sample routines are safe to call
    // before any file is opened.
    Recording() { DimensionBuffers(); }

    std::filesystem::path DataFilePath;
    bool FileIsOpen = false;
    AbfHeader header;
    std::uint8_t ChannelIndex = 0;
    std::uint8_t LastChannelIndex = 0;
    float SampleInterval = 0;  // microseconds between two points of one channel
    float ChannelGain = 1;
    float ChannelOffset = 0;
    std::string ADCUnits;
    double ScreenBlock = 0;      // may be fractional
    float BlocksPerScreen = 4;   // may be fractional
    std::int32_t TotalBlocks = 1;
    std::vector<AbfTag> TagRecords;

    // The three screen buffers, channel fastest as in the file: sample of channel c at point
    // i is buffer[i * channels + c]. Their point count is ScreenPoints().
    std::vector<std::int16_t> PreviousScreen, CurrentScreen, NextScreen;

    std::shared_ptr<const SampleSource> source;
    // What did not fit when the file was opened (truncated data, counts beyond the file...).
    std::vector<std::string> warnings;

    int Channels() const { return header.nADCNumChannels; }
    // Points of one channel on a screen: BlocksPerScreen x 256, at least 1.
    std::int32_t ScreenPoints() const { return screenPoints_; }

    // Dimensions the three buffers afresh (zeros) for the current BlocksPerScreen and channels.
    void DimensionBuffers();
    // The loading rule of every redraw: current over previous, then current and next read
    // from the file at ScreenBlock.
    void LoadScreens();
    // Byte position of the screen that starts at the given block.
    std::int64_t ScreenByteOffset(double screenBlock) const;

    // Raw value of the active channel at point i relative to the current screen; 0 outside
    // -N .. 2N-1.
    std::int16_t GetSampleValue(std::int32_t i) const {
        const std::int32_t n = screenPoints_;
        const int ch = ChannelIndex;
        const int stride = channels_;
        if (i < 0) {
            std::int32_t j = i + n;
            return j >= 0 ? PreviousScreen[std::size_t(j) * stride + ch] : std::int16_t(0);
        }
        if (i >= n) {
            std::int32_t j = i - n;
            return j < n ? NextScreen[std::size_t(j) * stride + ch] : std::int16_t(0);
        }
        return CurrentScreen[std::size_t(i) * stride + ch];
    }
    // Calls f(firstIndex, pointer, count, stride) for the pieces of first..last that lie in the
    // buffers, in index order; points outside the buffers (which read as 0) are passed over.
    template <typename F>
    void VisitSamples(std::int32_t first, std::int32_t last, F&& f) const {
        const std::int32_t n = screenPoints_;
        const std::vector<std::int16_t>* buffers[3] = {&PreviousScreen, &CurrentScreen,
                                                       &NextScreen};
        for (int b = 0; b < 3; ++b) {
            const std::int32_t origin = (b - 1) * n;
            const std::int32_t from = std::max(first, origin);
            const std::int32_t to = std::min(last, origin + n - 1);
            if (from > to) continue;
            f(from, buffers[b]->data() + std::size_t(from - origin) * channels_ + ChannelIndex,
              to - from + 1, channels_);
        }
    }
    bool InBuffers(std::int64_t i) const { return i >= -screenPoints_ && i < 2LL * screenPoints_; }

    // Sum of points i-n .. i+n divided by the NumberPointsPeak setting, halves to even. nullopt
    // where the old program raised an error: a point outside the buffers, a zero divisor, or a
    // result that does not fit 16 bits.
    std::optional<std::int16_t> GetAverageValue(std::int32_t i, std::int32_t n,
                                                std::int32_t numberPointsPeak) const;

    // Unit routines.
    float Bit2pA2(double bits) const;  // raw difference to amplitude, no offset
    float Bit2pA(double bits) const;   // raw value to amplitude, with offset
    // Bit2pA2 as the old runtime computed it: a zero gain or resolution is a division by zero.
    std::optional<float> TryBit2pA2(double bits) const;
    std::optional<std::int16_t> pA2Bit(double amplitude) const;
    float Bit2msec(double points) const;
    float CalculateTime(double index) const;
    std::optional<std::int32_t> CalculateTimeBit(double milliseconds) const;
    // Start of the screen in points of one channel from the start of the recording.
    double ScreenStartPoint() const { return (ScreenBlock - header.lDataSectionPtr) * 256.0; }

    // The scale factors of the active channel: the telegraph rule, gain and offset, units.
    void ApplyChannelScaling();

private:
    std::int32_t screenPoints_ = 1024;
    int channels_ = 1;
};

// TotalBlocks as the open sequence computes it: whole Blocks of one channel, at least 1.
std::int32_t OpenSequenceTotalBlocks(const AbfHeader& h);

}  // namespace ardel

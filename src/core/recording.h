// The one open data file: its header, the active channel, the three screen buffers through
// which every sample is reached, and the conversions between raw values, points and times.
#pragma once

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
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
    // Calls f with all the bytes at once, for the readers that follow pointers through a whole
    // file (ABF 2 headers). A file is mapped read-only for the call, not read.
    virtual void View(const std::function<void(std::span<const std::byte>)>& f) const = 0;
};

class MemorySource final : public SampleSource {
public:
    explicit MemorySource(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t Size() const override { return bytes_.size(); }
    void Read(std::int64_t offset, std::span<std::uint8_t> dest) const override;
    void View(const std::function<void(std::span<const std::byte>)>& f) const override;

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
    void View(const std::function<void(std::span<const std::byte>)>& f) const override;

private:
    int fd_ = -1;
    mutable std::optional<std::uint64_t> size_;
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
    // i is buffer[i * channels + c]. Each screen is ScreenPoints() long, but a buffer holds only
    // the points the file could fill (and what the filter wrote beyond them); the points past
    // its end read as 0, as they would from a zero-filled buffer. A screen of 32767 Blocks of
    // 16 channels would otherwise take 800 MB for a file of a few.
    std::vector<std::int16_t> PreviousScreen, CurrentScreen, NextScreen;

    std::shared_ptr<const SampleSource> source;
    // What did not fit when the file was opened (truncated data, counts beyond the file...).
    std::vector<std::string> warnings;

    int Channels() const { return header.nADCNumChannels; }
    // Samples per point in the buffers: the channels, at least 1.
    int Stride() const { return channels_; }
    // Points held by a buffer; the rest of its screen reads as 0.
    std::int32_t HeldPoints(const std::vector<std::int16_t>& buffer) const {
        return std::int32_t(buffer.size() / std::size_t(channels_));
    }
    // Points of one channel on a screen: BlocksPerScreen x 256, at least 1.
    std::int32_t ScreenPoints() const { return screenPoints_; }

    // Dimensions the three buffers afresh (all points 0) for the current BlocksPerScreen and
    // channels.
    void DimensionBuffers();
    // The loading rule of every redraw: current over previous, then current and next read
    // from the file at ScreenBlock.
    void LoadScreens();
    // True when a screen starting at screenBlock, and every one after it, reads nothing from
    // the file, and the current and next buffers hold only zeros: from the next load on, all
    // three buffers read 0 throughout.
    bool ZeroFromNextScreenOn(double screenBlock) const;
    // Byte position of the screen that starts at the given block.
    std::int64_t ScreenByteOffset(double screenBlock) const;

    // Raw value of the active channel at point i relative to the current screen; 0 outside
    // -N .. 2N-1.
    std::int16_t GetSampleValue(std::int32_t i) const {
        const std::int32_t n = screenPoints_;
        const std::size_t ch = ChannelIndex;
        const std::size_t stride = std::size_t(channels_);
        // A point past what a buffer holds reads as 0: the index test covers both.
        if (i < 0) {
            const std::int32_t j = i + n;
            if (j < 0) return 0;
            const std::size_t at = std::size_t(j) * stride + ch;
            return at < PreviousScreen.size() ? PreviousScreen[at] : std::int16_t(0);
        }
        if (i >= n) {
            const std::size_t at = std::size_t(i - n) * stride + ch;
            return at < NextScreen.size() ? NextScreen[at] : std::int16_t(0);
        }
        const std::size_t at = std::size_t(i) * stride + ch;
        return at < CurrentScreen.size() ? CurrentScreen[at] : std::int16_t(0);
    }
    // Calls f(firstIndex, pointer, count, stride) for the pieces of first..last that the buffers
    // hold, in index order; the points between them read as 0 and are passed over.
    template <typename F>
    void VisitSamples(std::int32_t first, std::int32_t last, F&& f) const {
        const std::int32_t n = screenPoints_;
        const std::vector<std::int16_t>* buffers[3] = {&PreviousScreen, &CurrentScreen,
                                                       &NextScreen};
        for (int b = 0; b < 3; ++b) {
            const std::int32_t origin = (b - 1) * n;
            const std::int32_t from = std::max(first, origin);
            const std::int32_t to = std::min(last, origin + HeldPoints(*buffers[b]) - 1);
            if (from > to) continue;
            f(from, buffers[b]->data() + std::size_t(from - origin) * channels_ + ChannelIndex,
              to - from + 1, channels_);
        }
    }
    bool InBuffers(std::int64_t i) const { return i >= -screenPoints_ && i < 2LL * screenPoints_; }

    // From point k, stepping by dir (+1 or -1) and not past `end`: how many points in a row
    // share whether they and their `reach` neighbours on each side all read as 0 for lack of
    // anything held there (zero = true), or not. A walk over a zero run can count it instead of
    // stepping through it. count is 0 when end lies behind k.
    struct Run {
        std::int64_t count = 0;
        bool zero = false;
    };
    Run NextRun(std::int64_t k, int dir, std::int64_t end, std::int64_t reach) const;

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
    // Points of one channel that the file can fill in a buffer read from byte `offset`.
    std::int32_t FillablePoints(std::int64_t offset) const;
};

// TotalBlocks as the open sequence computes it: whole Blocks of one channel, at least 1.
std::int32_t OpenSequenceTotalBlocks(const AbfHeader& h);

}  // namespace ardel

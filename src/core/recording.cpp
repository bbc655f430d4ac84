#include "core/recording.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

#include "core/number_text.h"

namespace ardel {

void MemorySource::Read(std::int64_t offset, std::span<std::uint8_t> dest) const {
    std::fill(dest.begin(), dest.end(), std::uint8_t(0));
    const std::int64_t size = std::int64_t(bytes_.size());
    const std::int64_t len = std::int64_t(dest.size());
    std::int64_t from = std::max<std::int64_t>(offset, 0);
    std::int64_t to = std::min<std::int64_t>(offset + len, size);
    if (from >= to) return;
    std::memcpy(dest.data() + (from - offset), bytes_.data() + from, std::size_t(to - from));
}

void MemorySource::View(const std::function<void(std::span<const std::byte>)>& f) const {
    f(std::as_bytes(std::span<const std::uint8_t>(bytes_)));
}

FileSource::FileSource(const std::filesystem::path& path) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path.string());
    struct stat st {};
    if (::fstat(fd_, &st) == 0 && S_ISDIR(st.st_mode)) {
        ::close(fd_);
        fd_ = -1;
        throw std::system_error(EISDIR, std::generic_category(), path.string());
    }
}

FileSource::~FileSource() {
    if (fd_ >= 0) ::close(fd_);
}

std::uint64_t FileSource::Size() const {
    // Taken once: every screen load asks, and a system call per load costs more than
    // scanning the screen itself does.
    if (!size_) {
        struct stat st {};
        size_ = ::fstat(fd_, &st) == 0 ? std::uint64_t(st.st_size) : 0;
    }
    return *size_;
}

void FileSource::Read(std::int64_t offset, std::span<std::uint8_t> dest) const {
    std::size_t done = 0;
    if (offset < 0) {
        // Nothing lies before the file's start; those bytes read as zeros.
        std::size_t skip = std::size_t(std::min<std::int64_t>(-offset, std::int64_t(dest.size())));
        std::fill_n(dest.begin(), skip, std::uint8_t(0));
        done = skip;
    }
    while (done < dest.size()) {
        ssize_t got = ::pread(fd_, dest.data() + done, dest.size() - done, offset + std::int64_t(done));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;  // end of file, or the file cannot be read any more
        done += std::size_t(got);
    }
    std::fill(dest.begin() + std::ptrdiff_t(done), dest.end(), std::uint8_t(0));
}

void FileSource::View(const std::function<void(std::span<const std::byte>)>& f) const {
    const std::uint64_t size = Size();
    void* map = size == 0 ? MAP_FAILED : ::mmap(nullptr, std::size_t(size), PROT_READ, MAP_PRIVATE, fd_, 0);
    if (map == MAP_FAILED) {
        // Nothing to map (an empty file), or a file system that cannot map: read it instead.
        std::vector<std::uint8_t> bytes(std::size_t(std::min<std::uint64_t>(size, 1u << 30)));
        Read(0, bytes);
        f(std::as_bytes(std::span<const std::uint8_t>(bytes)));
        return;
    }
    struct Unmap {
        void* p;
        std::size_t n;
        ~Unmap() { ::munmap(p, n); }
    } unmap{map, std::size_t(size)};
    f(std::span<const std::byte>(static_cast<const std::byte*>(map), std::size_t(size)));
}

std::int32_t OpenSequenceTotalBlocks(const AbfHeader& h) {
    if (h.nADCNumChannels <= 0) return 1;
    double blocks = Int(double(h.lActualAcqLength) / 256.0 / double(h.nADCNumChannels));
    std::int32_t total = ToInt32Clamped(blocks);
    return total == 0 ? 1 : total;
}

void Recording::DimensionBuffers() {
    channels_ = std::clamp<int>(header.nADCNumChannels, 1, kAbfMaxChannels);
    // A screen is 1 to 32767 Blocks, as its box allows. A length outside (from a damaged
    // settings file, say) would make a non-stop run step by nothing or overflow the indices.
    if (!(BlocksPerScreen >= 1.0f))
        BlocksPerScreen = 1.0f;
    else if (BlocksPerScreen > 32767.0f)
        BlocksPerScreen = 32767.0f;
    // A fractional screen length is allowed; its point count is rounded like any other
    // conversion to an integer.
    double points = RoundHalfEven(double(BlocksPerScreen) * 256.0);
    screenPoints_ = std::max<std::int32_t>(1, ToInt32Clamped(points));
    // Nothing held: every point reads as 0.
    PreviousScreen.clear();
    CurrentScreen.clear();
    NextScreen.clear();
    PreviousScreen.shrink_to_fit();
    CurrentScreen.shrink_to_fit();
    NextScreen.shrink_to_fit();
}

std::int32_t Recording::FillablePoints(std::int64_t offset) const {
    if (!source) return 0;
    const std::int64_t size = std::int64_t(std::min<std::uint64_t>(source->Size(), INT64_MAX / 4));
    const std::int64_t pointBytes = 2 * std::int64_t(channels_);
    if (offset >= size) return 0;
    // Zeros before the file's start are held too: they lie before the bytes that are.
    const std::int64_t bytes = size - offset;
    return std::int32_t(std::min<std::int64_t>((bytes + pointBytes - 1) / pointBytes, screenPoints_));
}

std::int64_t Recording::ScreenByteOffset(double screenBlock) const {
    const double ptr = header.lDataSectionPtr;
    double pos = (((screenBlock - ptr) * channels_) + ptr) * double(kAbfBlockSize);
    pos = RoundHalfEven(pos);
    if (!(pos > -9.0e18 && pos < 9.0e18)) return std::numeric_limits<std::int64_t>::max() / 2;
    return std::int64_t(pos);
}

void Recording::LoadScreens() {
    const std::size_t stride = std::size_t(channels_);
    if (CurrentScreen.size() % stride != 0 || CurrentScreen.size() > std::size_t(screenPoints_) * stride)
        DimensionBuffers();
    // Current over previous on every load, however far ScreenBlock moved: after a jump the
    // look-back sees the screen shown last, not the neighbour of the new one.
    PreviousScreen.assign(CurrentScreen.begin(), CurrentScreen.end());
    auto load = [&](std::vector<std::int16_t>& buffer, double block) {
        const std::int64_t offset = ScreenByteOffset(block);
        buffer.assign(std::size_t(FillablePoints(offset)) * stride, 0);
        if (buffer.empty()) return;
        source->Read(offset, std::span<std::uint8_t>(reinterpret_cast<std::uint8_t*>(buffer.data()),
                                                     buffer.size() * 2));
    };
    load(CurrentScreen, ScreenBlock);
    load(NextScreen, ScreenBlock + BlocksPerScreen);
}

bool Recording::ZeroFromNextScreenOn(double screenBlock) const {
    // Reads move forward with the block, so nothing read at screenBlock means nothing after.
    if (FillablePoints(ScreenByteOffset(screenBlock)) != 0) return false;
    auto zeros = [](const std::vector<std::int16_t>& b) {
        return std::all_of(b.begin(), b.end(), [](std::int16_t v) { return v == 0; });
    };
    return zeros(CurrentScreen) && zeros(NextScreen);
}

Recording::Run Recording::NextRun(std::int64_t k, int dir, std::int64_t end,
                                  std::int64_t reach) const {
    if ((end - k) * dir < 0) return {};
    const std::int64_t n = screenPoints_;
    // The stretches that read as 0, in index order: before the buffers, the unheld tails of
    // the three screens, after the buffers. Neighbouring ones join.
    std::int64_t zero[5][2];
    int count = 0;
    auto add = [&](std::int64_t from, std::int64_t to) {
        if (from > to) return;
        if (count > 0 && zero[count - 1][1] + 1 >= from) {
            zero[count - 1][1] = std::max(zero[count - 1][1], to);
            return;
        }
        zero[count][0] = from;
        zero[count][1] = to;
        ++count;
    };
    constexpr std::int64_t kFar = std::int64_t(1) << 62;
    add(-kFar, -n - 1);
    add(-n + HeldPoints(PreviousScreen), -1);
    add(HeldPoints(CurrentScreen), n - 1);
    add(n + HeldPoints(NextScreen), 2 * n - 1);
    add(2 * n, kFar);
    // A point is in a zero run when its window k-reach .. k+reach lies in one stretch, that is
    // k in the stretch shrunk by reach at both ends.
    std::int64_t runEnd = 0;
    bool inZero = false;
    std::int64_t nextZero = dir > 0 ? kFar : -kFar;  // nearest zero run ahead of k
    for (int z = 0; z < count; ++z) {
        const std::int64_t from = zero[z][0] + reach, to = zero[z][1] - reach;
        if (from > to) continue;
        if (k >= from && k <= to) {
            inZero = true;
            runEnd = dir > 0 ? to : from;
            break;
        }
        if (dir > 0 && from > k) nextZero = std::min(nextZero, from - 1);
        if (dir < 0 && to < k) nextZero = std::max(nextZero, to + 1);
    }
    if (!inZero) runEnd = nextZero;
    if ((end - runEnd) * dir < 0) runEnd = end;
    return {(runEnd - k) * dir + 1, inZero};
}

std::optional<std::int16_t> Recording::GetAverageValue(std::int32_t i, std::int32_t n,
                                                       std::int32_t numberPointsPeak) const {
    const std::int64_t first = std::int64_t(i) - n;
    const std::int64_t last = std::int64_t(i) + n;
    if (n < 0 || !InBuffers(first) || !InBuffers(last)) return std::nullopt;
    if (numberPointsPeak == 0) return std::nullopt;
    if (n == 0 && numberPointsPeak == 1) return GetSampleValue(i);
    std::int64_t sum = 0;
    for (std::int64_t k = first; k <= last; ++k) sum += GetSampleValue(std::int32_t(k));
    // The sum was a 32-bit integer; more than 65536 points of full scale would overflow it.
    if (sum > INT32_MAX || sum < INT32_MIN) return std::nullopt;
    return ToInt16(double(sum) / double(numberPointsPeak));
}

std::optional<float> Recording::TryBit2pA2(double bits) const {
    if (ChannelGain == 0 || header.lADCResolution == 0) return std::nullopt;
    double v = bits / double(ChannelGain) * double(header.fADCRange) /
               double(header.lADCResolution);
    if (!std::isfinite(v)) return std::nullopt;
    return float(v);
}

float Recording::Bit2pA2(double bits) const {
    return float(bits / double(ChannelGain) * double(header.fADCRange) /
                 double(header.lADCResolution));
}

float Recording::Bit2pA(double bits) const {
    return float(double(Bit2pA2(bits)) + double(ChannelOffset));
}

std::optional<std::int16_t> Recording::pA2Bit(double amplitude) const {
    if (header.fADCRange == 0) return std::nullopt;
    return ToInt16((amplitude - ChannelOffset) * double(header.lADCResolution) /
                   double(header.fADCRange) * double(ChannelGain));
}

float Recording::Bit2msec(double points) const {
    return float(double(SampleInterval) * points / 1000.0);
}

float Recording::CalculateTime(double index) const {
    return float((ScreenStartPoint() + index) * double(SampleInterval) / 1000.0);
}

std::optional<std::int32_t> Recording::CalculateTimeBit(double milliseconds) const {
    if (SampleInterval == 0) return std::nullopt;
    return ToInt32(milliseconds * 1000.0 / double(SampleInterval) - ScreenStartPoint());
}

void Recording::ApplyChannelScaling() {
    AbfHeader& h = header;
    const int s = h.nADCSamplingSeq[std::min<int>(ChannelIndex, kAbfMaxChannels - 1)];
    if (s < 0 || s >= kAbfMaxChannels) return;  // refused when the file was opened
    // Files from version 1.65 on carry the telegraphed gain per ADC; it replaces the stored
    // autosample values for the channel being opened.
    if (h.fFileVersionNumber >= 1.65f) {
        if (h.nTelegraphEnable[s] == 1) {
            h.fAutosampleAdditGain = h.fTelegraphAdditGain[s];
            h.nAutosampleEnable = 1;
            h.nAutosampleADCNum = std::int16_t(s);
        } else {
            h.nAutosampleEnable = 0;
        }
    }
    double gain = double(h.fADCProgrammableGain[s]) * double(h.fInstrumentScaleFactor[s]) *
                  double(h.fSignalGain[s]);
    if (h.fAutosampleAdditGain > 0 && s == h.nAutosampleADCNum && h.nAutosampleEnable > 0)
        gain *= double(h.fAutosampleAdditGain);
    ChannelGain = float(gain);
    // The two offsets add; this is the program's rule, whatever sign other readers use.
    ChannelOffset = float(double(h.fSignalOffset[s]) + double(h.fInstrumentOffset[s]));
    // The trimmed text goes back into the fixed-length field, blank padded.
    const std::string trimmed = Trim(FixedText(h.sADCUnits[s]));
    SetFixedText(h.sADCUnits[s], trimmed);
    ADCUnits = Trim(TrimNul(trimmed));
}

}  // namespace ardel

// Small helpers for the recording tests: ABF files built byte by byte (with tags, a Synch
// Array, damaged headers), raw sample access that does not go through the reader under test,
// and a dialog double that records everything for the cases where only the order matters.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "core/abf_build.h"
#include "core/abf_header.h"
#include "core/user_dialogs.h"

namespace ardel::testing {

inline std::vector<std::uint8_t> ReadBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void WriteBytes(const std::filesystem::path& path, const std::vector<std::uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

// Sample `point` of sequence position `channel`, straight from the file's bytes; 0 past the
// end.
inline std::int16_t RawSample(const std::vector<std::uint8_t>& file, std::int64_t dataBlock,
                              int channels, std::int64_t point, int channel) {
    const std::int64_t at = dataBlock * 512 + (point * channels + channel) * 2;
    if (at < 0 || at + 2 > std::int64_t(file.size())) return 0;
    std::int16_t v;
    std::memcpy(&v, file.data() + at, 2);
    return v;
}

// An ABF 1.x file under construction: a header from MakeAbfHeader that the test may change,
// the multiplexed samples, and sections appended after them.
struct AbfFileBuilder {
    AbfHeader header;
    std::vector<std::int16_t> samples;  // multiplexed
    std::vector<std::uint8_t> tail;     // blocks after the data (tags, Synch Array)
    std::int32_t dataBlock = 0;         // where the samples go, whatever the header says later

    AbfFileBuilder(AbfBuildSpec spec, std::vector<std::vector<std::int16_t>> channels) {
        const std::size_t n = channels.empty() ? 0 : channels[0].size();
        spec.channels = int(channels.size());
        for (std::size_t i = 0; i < n; ++i)
            for (const auto& c : channels) samples.push_back(c[i]);
        header = MakeAbfHeader(spec, std::int64_t(samples.size()));
        dataBlock = header.lDataSectionPtr;
    }

    // Block number at which the next appended section starts.
    std::int32_t NextBlock() const {
        const std::size_t dataBytes = samples.size() * 2;
        const std::size_t dataBlocks = (dataBytes + 511) / 512;
        return std::int32_t(dataBlock + dataBlocks + tail.size() / 512);
    }

    void AppendBlocks(const std::vector<std::uint8_t>& section) {
        tail.insert(tail.end(), section.begin(), section.end());
        tail.resize((tail.size() + 511) / 512 * 512, 0);
    }

    void AddTags(const std::vector<std::pair<std::int32_t, std::string>>& tags) {
        header.lTagSectionPtr = NextBlock();
        header.lNumTagEntries = std::int32_t(tags.size());
        std::vector<std::uint8_t> bytes(tags.size() * 64, 0);
        for (std::size_t k = 0; k < tags.size(); ++k) {
            std::uint8_t* t = bytes.data() + k * 64;
            std::memcpy(t, &tags[k].first, 4);
            std::memset(t + 4, ' ', 56);
            std::memcpy(t + 4, tags[k].second.data(),
                        std::min<std::size_t>(56, tags[k].second.size()));
            t[60] = 1;  // nTagType and the voice tag number, carried unread
            t[62] = std::uint8_t(k + 7);
        }
        AppendBlocks(bytes);
    }

    // Pairs of start and length; `after` is written right behind the last pair.
    void AddSynchArray(const std::vector<std::pair<std::int32_t, std::int32_t>>& pairs,
                       std::pair<std::int32_t, std::int32_t> after = {0, 0}) {
        header.lSynchArrayPtr = NextBlock();
        header.lSynchArraySize = std::int32_t(pairs.size());
        std::vector<std::uint8_t> bytes((pairs.size() + 1) * 8, 0);
        for (std::size_t k = 0; k <= pairs.size(); ++k) {
            auto p = k < pairs.size() ? pairs[k] : after;
            std::memcpy(bytes.data() + k * 8, &p.first, 4);
            std::memcpy(bytes.data() + k * 8 + 4, &p.second, 4);
        }
        AppendBlocks(bytes);
    }

    std::vector<std::uint8_t> Bytes() const {
        auto head = header.ToBytes();
        std::vector<std::uint8_t> out(head.begin(), head.end());
        out.resize(std::size_t(dataBlock) * 512, 0);
        const std::size_t at = out.size();
        out.resize(at + samples.size() * 2);
        if (!samples.empty()) std::memcpy(out.data() + at, samples.data(), samples.size() * 2);
        if (!tail.empty()) {
            out.resize((out.size() + 511) / 512 * 512, 0);
            out.insert(out.end(), tail.begin(), tail.end());
        }
        return out;
    }

    std::filesystem::path Write(const std::filesystem::path& path) const {
        WriteBytes(path, Bytes());
        return path;
    }
};

// Every interaction as one line "Kind|title|text"; questions take the scripted answers in
// turn and then `fallback`, input boxes `input`, file dialogs are cancelled.
class RecordingDialogs : public UserDialogs {
  public:
    std::vector<std::string> log;
    std::vector<Answer> answers;
    Answer fallback = Answer::Cancel;
    std::optional<std::string> input = std::string("0");

    void Message(std::string_view title, std::string_view text) override {
        log.push_back("Message|" + std::string(title) + "|" + std::string(text));
    }
    Answer Ask(std::string_view title, std::string_view text, Buttons, Answer) override {
        log.push_back("Ask|" + std::string(title) + "|" + std::string(text));
        if (asked_ < answers.size()) return answers[asked_++];
        return fallback;
    }
    std::optional<std::string> Input(std::string_view title, std::string_view prompt,
                                     std::string_view) override {
        log.push_back("Input|" + std::string(title) + "|" + std::string(prompt));
        return input;
    }
    std::optional<std::filesystem::path> SaveFileName(const FileDialogSpec& spec) override {
        log.push_back("SaveFile|" + spec.title);
        return std::nullopt;
    }
    std::optional<std::filesystem::path> OpenFileName(const FileDialogSpec& spec) override {
        log.push_back("OpenFile|" + spec.title);
        return std::nullopt;
    }
    std::vector<std::filesystem::path> OpenFileNames(const FileDialogSpec& spec) override {
        log.push_back("OpenFiles|" + spec.title);
        return {};
    }
    std::string ClipboardText() override { return {}; }
    void SetClipboardText(std::string_view) override {}
    void Beep() override {}
    void Yield() override {}

  private:
    std::size_t asked_ = 0;
};

// A ramp that stays within 16 bits and never repeats within a few screens.
inline std::vector<std::int16_t> Ramp(std::size_t n, int start = -20000, int step = 1) {
    std::vector<std::int16_t> v(n);
    for (std::size_t k = 0; k < n; ++k) {
        const long long x = ((start + (long long)(k)*step + 32768) % 65536 + 65536) % 65536;
        v[k] = std::int16_t(x - 32768);
    }
    return v;
}

}  // namespace ardel::testing

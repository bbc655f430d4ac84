// Small ABF 2 files built byte by byte for the reader tests: a file header with its section
// map, a protocol, the ADC records, a strings section, the samples, tags and a Synch Array,
// each on blocks of its own. A test changes a section's map entry or any byte afterwards.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace ardel::testing {

enum Abf2Section : int {
    kAbf2Protocol = 0,
    kAbf2Adc = 1,
    kAbf2Strings = 9,
    kAbf2Data = 10,
    kAbf2Tag = 11,
    kAbf2Synch = 15,
};

struct Abf2Builder {
    std::vector<std::int16_t> adcNumbers{0};  // the sampling sequence
    std::vector<std::string> units{"pA"};     // by sequence position
    float sequenceInterval = 100;             // microseconds per channel
    std::int16_t operationMode = 3;
    std::vector<std::int16_t> samples;        // multiplexed
    std::vector<std::pair<std::int32_t, std::string>> tags;
    std::vector<std::pair<std::int32_t, std::int32_t>> synch;
    float instrumentScale = 0.5f;
    std::int16_t telegraph = 0;
    float telegraphGain = 1;

    template <typename T>
    static void Put(std::vector<std::uint8_t>& b, std::size_t at, T v) {
        if (b.size() < at + sizeof v) b.resize(at + sizeof v, 0);
        std::memcpy(b.data() + at, &v, sizeof v);
    }
    static void SetSection(std::vector<std::uint8_t>& b, int section, std::uint32_t block,
                           std::uint32_t bytes, std::int64_t count) {
        const std::size_t at = 76 + 16 * std::size_t(section);
        Put(b, at, block);
        Put(b, at + 4, bytes);
        Put(b, at + 8, count);
    }
    static std::uint32_t BlockOf(const std::vector<std::uint8_t>& b, int section) {
        std::uint32_t v;
        std::memcpy(&v, b.data() + 76 + 16 * std::size_t(section), 4);
        return v;
    }

    std::vector<std::uint8_t> Build() const {
        std::vector<std::uint8_t> b(512, 0);
        std::memcpy(b.data(), "ABF2", 4);
        const std::uint8_t version[4] = {0, 0, 9, 2};  // 2.9.0.0, stored build first
        std::memcpy(b.data() + 4, version, 4);
        Put<std::uint32_t>(b, 8, 512);
        Put<std::uint32_t>(b, 12, synch.empty() ? 1 : std::uint32_t(synch.size()));
        Put<std::uint32_t>(b, 16, 20240102);
        Put<std::uint32_t>(b, 20, 3723456);  // 01:02:03.456
        Put<std::uint16_t>(b, 28, 1);
        Put<std::uint32_t>(b, 60, 1);  // creator: string 1

        // Strings: creator, comment, then name and units per channel.
        std::vector<std::string> strings{"Clampex", "a comment"};
        for (std::size_t i = 0; i < adcNumbers.size(); ++i) {
            strings.push_back("IN " + std::to_string(adcNumbers[i]));
            strings.push_back(i < units.size() ? units[i] : "");
        }
        std::string text(44, '\0');
        std::memcpy(text.data(), "SSCH", 4);
        for (const auto& s : strings) text += s + '\0';

        const std::uint32_t protocolBlock = 1, adcBlock = 2, stringsBlock = 3, dataBlock = 4;
        b.resize(512 * 4, 0);
        const std::size_t p = 512 * protocolBlock;
        Put<std::int16_t>(b, p + 0, operationMode);
        Put<float>(b, p + 2, sequenceInterval);
        Put<float>(b, p + 14, 0);
        Put<std::int32_t>(b, p + 22, 1024);
        Put<float>(b, p + 110, 10);
        Put<std::int32_t>(b, p + 118, 32768);
        Put<std::int32_t>(b, p + 132, 2);  // comment: string 2
        for (std::size_t i = 0; i < adcNumbers.size(); ++i) {
            const std::size_t r = 512 * adcBlock + 128 * i;
            Put<std::int16_t>(b, r + 0, adcNumbers[i]);
            Put<std::int16_t>(b, r + 2, telegraph);
            Put<float>(b, r + 6, telegraphGain);
            Put<float>(b, r + 28, 1);
            Put<float>(b, r + 40, instrumentScale);
            Put<float>(b, r + 48, 1);
            Put<std::int32_t>(b, r + 74, std::int32_t(3 + 2 * i));
            Put<std::int32_t>(b, r + 78, std::int32_t(4 + 2 * i));
        }
        b.resize(512 * stringsBlock, 0);
        b.insert(b.end(), text.begin(), text.end());
        b.resize(512 * dataBlock, 0);
        for (std::int16_t v : samples) Put(b, b.size(), v);
        auto nextBlock = [&b] {
            b.resize((b.size() + 511) / 512 * 512, 0);
            return std::uint32_t(b.size() / 512);
        };
        const std::uint32_t tagBlock = nextBlock();
        for (const auto& [time, comment] : tags) {
            const std::size_t at = b.size();
            b.resize(at + 64, 0);
            Put(b, at, time);
            std::memcpy(b.data() + at + 4, comment.data(), std::min<std::size_t>(comment.size(), 56));
        }
        const std::uint32_t synchBlock = nextBlock();
        for (const auto& [start, length] : synch) {
            Put(b, b.size(), start);
            Put(b, b.size(), length);
        }
        nextBlock();

        SetSection(b, kAbf2Protocol, protocolBlock, 512, 1);
        SetSection(b, kAbf2Adc, adcBlock, 128, std::int64_t(adcNumbers.size()));
        SetSection(b, kAbf2Strings, stringsBlock, std::uint32_t(text.size()),
                   std::int64_t(strings.size()));
        SetSection(b, kAbf2Data, dataBlock, 2, std::int64_t(samples.size()));
        if (!tags.empty()) SetSection(b, kAbf2Tag, tagBlock, 64, std::int64_t(tags.size()));
        if (!synch.empty()) SetSection(b, kAbf2Synch, synchBlock, 8, std::int64_t(synch.size()));
        return b;
    }
};

}  // namespace ardel::testing

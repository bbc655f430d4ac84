// The settings file reader and writer: any text, read by the profile functions' rules, a key
// replaced and the text written again.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/ini_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    ardel::IniDocument doc = ardel::IniDocument::Parse(text);
    (void)doc.Get("Analysis", "ThresholdAmplitude!", "5", 10);
    (void)doc.Get("Program", "DataDir", "", 100);
    doc.Set("Analysis", "ThresholdAmplitude!", " 7");
    const std::string written = doc.Text();
    // A replaced key reads back as written.
    if (ardel::IniDocument::Parse(written).Get("Analysis", "ThresholdAmplitude!", "", 100) != "7")
        __builtin_trap();
    return 0;
}

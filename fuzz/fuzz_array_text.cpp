// The array text reader: any bytes are refused or read, and what is read writes back to a text
// that reads the same lengths.
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "arrays/array_text.h"
#include "arrays/data_arrays.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    auto parsed = ardel::ParseArrayText(text);
    auto* arrays = std::get_if<ardel::ArrayTextData>(&parsed);
    if (!arrays) return 0;
    if (arrays->values1.size() > std::size_t(ardel::kMaxArrayLength) + 1 ||
        arrays->values2.size() > std::size_t(ardel::kMaxArrayLength) + 1)
        __builtin_trap();
    ardel::Session s;
    s.dataArray1.values = arrays->values1;
    s.dataArray2.values = arrays->values2;
    const std::string written = ardel::EncodeArrayText(s);
    if (written.empty()) return 0;
    auto again = ardel::ParseArrayText(written);
    auto* back = std::get_if<ardel::ArrayTextData>(&again);
    if (!back || back->values1.size() != arrays->values1.size() ||
        back->values2.size() != arrays->values2.size())
        __builtin_trap();
    return 0;
}

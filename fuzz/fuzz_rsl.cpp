// The results file reader: any bytes are refused or read, never more rows than the length
// holds, and what is read writes back to a file that reads the same rows.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "group/results_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto rows = ardel::group::ReadRsl(bytes);
    if (!rows) return 0;
    if (rows->size() > size / ardel::group::kRslRowSize + 1) __builtin_trap();
    const std::string written = ardel::group::RslBytes(*rows);
    const auto again = ardel::group::ReadRsl(written);
    if (!again || again->size() != rows->size() || ardel::group::RslBytes(*again) != written)
        __builtin_trap();
    return 0;
}

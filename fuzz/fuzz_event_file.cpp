// Event and parameter files as the program reads them: any bytes, decoded, then written out
// again and decoded a second time.
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/event_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> bytes(data, size);
    const ardel::EventFileContents read = ardel::DecodeEventFile(bytes);
    const ardel::AbfHeader header = ardel::AbfHeader::FromBytes(bytes);
    const auto again = ardel::EncodeEventFile(header, read.params, read.comment, read.sourceName,
                                              read.records);
    const ardel::EventFileContents back = ardel::DecodeEventFile(again);
    // What the program writes, it reads back unchanged.
    if (back.records.size() != read.records.size()) __builtin_trap();
    return 0;
}

// Reader of ABF 2 recordings. The newer format keeps its values in sections that a map in the
// first block points to; this reader turns them into the 6144-byte ABF 1.x header the rest of
// the program works on, so that the screen buffers, the unit routines, the header window and
// the event files treat both versions alike. The samples stay where the file has them: the
// data, tag and Synch Array sections start on 512-byte blocks and keep the ABF 1.x record
// layouts, so their block numbers go into lDataSectionPtr, lTagSectionPtr and lSynchArrayPtr.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "core/abf_header.h"

namespace ardel {

enum class Abf2ErrorKind {
    NotThisFormat,       // the signature is not "ABF2"
    Truncated,           // a section the program needs lies (partly) past the end of the file
    InconsistentHeader,  // counts, sizes or places that cannot belong to a recording
    Unsupported,         // a valid file the program cannot take (too long, odd record sizes)
    FloatingPoint,       // samples stored as floats, refused like ABF 1.x floating-point files
};

struct Abf2Error {
    Abf2ErrorKind kind = Abf2ErrorKind::InconsistentHeader;
    std::uint64_t offset = 0;  // byte of the file where the fault lies
    std::string what;          // a sentence about the data, without the file's name
};

struct Abf2Header {
    AbfHeader header;                   // the ABF 1.x header built from the sections
    std::vector<std::string> warnings;  // what was left out (tags of an odd size, ...)
};

using Abf2Result = std::variant<Abf2Header, Abf2Error>;

// True when the bytes start with the signature "ABF2".
bool HasAbf2Signature(std::span<const std::byte> file);

// Parses a whole ABF 2 file given as its bytes. Every section place, size and count is checked
// against the length of `file` before it is read. The data section may be shorter than its
// count: the samples are read as far as they go later, with the warning of a truncated file.
Abf2Result ReadAbf2Header(std::span<const std::byte> file);

}  // namespace ardel

// The "Array Data" text: both Data Arrays side by side under a five-line heading, written by
// "Save Array Data as ASCII" and read back by "Open ASCII to import data into Arrays".
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/session.h"
#include "core/user_dialogs.h"

namespace ardel {

// The text of both arrays (CR LF line ends). Empty when both arrays are empty.
std::string EncodeArrayText(const Session& s);

// What an import puts into the arrays: index 0 up to the announced length, element 0 being 0.
struct ArrayTextData {
    std::vector<float> values1, values2;
};

struct ArrayTextError {
    enum class Kind {
        NotThisFormat,       // the first three lines are not those of an array text
        Truncated,           // the text ends before its heading does
        InconsistentHeader,  // a length that no array can have
    };
    Kind kind = Kind::NotThisFormat;
    std::size_t offset = 0;  // byte offset of the line at fault
    std::string sentence;
};

// Reads an array text from its bytes. Lines end at CR LF, LF or a lone CR. A length that is
// negative, does not fit 32 bits or exceeds kMaxArrayLength is refused; rows the text lacks
// stay 0, and rows beyond the announced lengths are ignored.
std::variant<ArrayTextData, ArrayTextError> ParseArrayText(std::string_view bytes);

// "Save Array Data as ASCII" (menu_ArrayAscii).
void menu_ArrayAscii(Session& s, UserDialogs& ui);
// "Open ASCII to import data into Arrays" (menu_importAscii).
void menu_importAscii(Session& s, UserDialogs& ui);

}  // namespace ardel

// Number and text rules of the runtime the program was first written for. Every text box,
// settings value, message and export goes through these, so that numbers read and print
// exactly as users of the program have always seen them.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace ardel {

// Numeric prefix of a text: leading blanks and tabs are skipped, then the longest prefix of
// the form [sign] digits [. digits] [E|D [sign] digits] is taken ("12abc" -> 12, " -1.5e3x" ->
// -1500, ".5" -> 0.5, "abc" -> 0, "" -> 0). Hexadecimal "&H" prefixes are also understood.
double Val(std::string_view text);

// Str(): decimal text with a leading blank for values that are not negative and "-" for
// negative ones. The leading zero of a value below 1 is left out (" .25", "-.5"), as the old
// runtime did. A 32-bit float is printed with at most 7 significant digits, a double with at
// most 15; trailing zeros are dropped. E notation ("1.234568E+07", "1E-05") is used when the
// decimal exponent is at least the number of significant digits or below -4.
std::string Str(float value);
std::string Str(double value);
std::string Str(std::int64_t value);
inline std::string Str(int value) { return Str(static_cast<std::int64_t>(value)); }
inline std::string Str(short value) { return Str(static_cast<std::int64_t>(value)); }

// CStr(): as Str() but without the leading blank, and with the leading zero ("0.25"); this is
// the text that a number takes when it is joined to a string.
std::string CStr(float value);
std::string CStr(double value);
std::string CStr(std::int64_t value);
inline std::string CStr(int value) { return CStr(static_cast<std::int64_t>(value)); }
inline std::string CStr(short value) { return CStr(static_cast<std::int64_t>(value)); }

// Format(x, pattern) for the numeric patterns the program uses: "0", "00", "#,##0",
// "#,##0.00", "#,##0.000", "0.000", "0.00000", "#,###.00", "##0.000", "#0.00", "###",
// "0.00000000", and the named format "Standard" (thousands separators, two decimals).
// '0' is a digit that is always shown, '#' one that is shown only when significant, ','
// in the integer part asks for thousands separators, '.' is the decimal point. Rounding is
// half away from zero on the decimal value (2.5 -> "3", 1.005 -> "1.01"). A float is taken
// with its 7-digit decimal value, a double with its 15-digit one.
std::string Format(double value, std::string_view pattern);
std::string Format(float value, std::string_view pattern);
inline std::string Format(std::int64_t value, std::string_view pattern) {
    return Format(static_cast<double>(value), pattern);
}
inline std::string Format(int value, std::string_view pattern) {
    return Format(static_cast<double>(value), pattern);
}

// Rounding to nearest with halves to even (CInt, CLng, CByte). nullopt is the runtime's
// overflow: NaN, infinities and values that do not fit after rounding.
// These sit on the detector's per-sample paths, so they are inline.
inline double RoundHalfEven(double value) {
    // Adding and taking away 1.5 x 2^52 leaves the value rounded to an integer by the FPU's
    // default mode, which is halves to even. It holds for magnitudes below 2^51; beyond, the
    // library does it, and NaN and infinities pass through.
    constexpr double kShift = 6755399441055744.0;
    if (value > -2251799813685248.0 && value < 2251799813685248.0) return (value + kShift) - kShift;
    return std::nearbyint(value);
}
namespace detail {
template <typename T>
inline std::optional<T> RoundInto(double value) {
    const double r = RoundHalfEven(value);
    if (!(r >= double(std::numeric_limits<T>::min()) && r <= double(std::numeric_limits<T>::max())))
        return std::nullopt;  // NaN fails both comparisons
    return static_cast<T>(r);
}
}  // namespace detail
inline std::optional<std::int16_t> ToInt16(double value) {
    return detail::RoundInto<std::int16_t>(value);
}
inline std::optional<std::int32_t> ToInt32(double value) {
    return detail::RoundInto<std::int32_t>(value);
}
inline std::optional<std::uint8_t> ToUInt8(double value) {
    return detail::RoundInto<std::uint8_t>(value);
}

// The same conversions where an overflow is out of the question or is to clamp (the caller
// says which): saturating variants.
std::int32_t ToInt32Clamped(double value);

// Int(): floor. Fix(): towards zero.
double Int(double value);
double Fix(double value);

// Text helpers: Trim removes leading and trailing blanks (only the space character, as the
// runtime's Trim did); TrimNul cuts a fixed-length text at its first NUL character.
std::string Trim(std::string_view text);
std::string RTrim(std::string_view text);
std::string TrimNul(std::string_view text);

// InStr-style containment test, case-sensitive.
inline bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

}  // namespace ardel

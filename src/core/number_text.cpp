#include "core/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace ardel {

namespace {

constexpr int kFloatDigits = 7;
constexpr int kDoubleDigits = 15;

// A finite number as the old runtime saw it: its significant decimal digits (no leading or
// trailing zeros; empty for zero) and where the decimal point sits among them. The value is
// digits[0 .. pointPos) "." digits[pointPos ..], with zeros filling in either side.
struct Decimal {
    bool negative = false;
    std::string digits;
    int pointPos = 0;
};

// Rounds to `significant` digits first (the precision the runtime printed a single or a
// double with), so that 1.83f reads 1.83 and not 1.83000004.
Decimal ToDecimal(double value, int significant) {
    Decimal d;
    d.negative = std::signbit(value) && value != 0.0;
    if (value == 0.0) return d;
    // to_chars rather than printf: the GUI toolkit switches the C locale to the user's, which
    // would turn the decimal point into a comma.
    char buffer[64];
    const char* end = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value),
                                    std::chars_format::scientific, significant - 1)
                          .ptr;
    const std::string_view text(buffer, static_cast<std::size_t>(end - buffer));
    const std::size_t e = text.find('e');
    for (std::size_t i = 0; i < e; ++i) {
        if (text[i] != '.') d.digits.push_back(text[i]);
    }
    int exponent = 0;
    std::string_view expText = text.substr(e + 1);
    if (!expText.empty() && expText.front() == '+') expText.remove_prefix(1);
    std::from_chars(expText.data(), expText.data() + expText.size(), exponent);
    while (!d.digits.empty() && d.digits.back() == '0') d.digits.pop_back();
    d.pointPos = exponent + 1;
    return d;
}

std::string NonFiniteText(double value) {
    // The old runtime's own spelling of these, so that a broken value is recognisable.
    if (std::isnan(value)) return "-1.#IND";
    return value < 0 ? "-1.#INF" : "1.#INF";
}

// The digits of a number in the runtime's print form, without any sign: plain decimal for
// decimal exponents from -4 up to one less than the significant digits, E notation beyond.
std::string PrintDigits(const Decimal& d, int significant, bool leadingZero) {
    if (d.digits.empty()) return "0";
    const int exponent = d.pointPos - 1;
    const auto size = static_cast<int>(d.digits.size());
    std::string out;
    if (exponent >= significant || exponent < -4) {
        out.push_back(d.digits[0]);
        if (size > 1) {
            out.push_back('.');
            out.append(d.digits, 1);
        }
        out.push_back('E');
        out.push_back(exponent < 0 ? '-' : '+');
        const std::string magnitude = std::to_string(std::abs(exponent));
        if (magnitude.size() < 2) out.push_back('0');
        out += magnitude;
    } else if (d.pointPos <= 0) {
        if (leadingZero) out.push_back('0');
        out.push_back('.');
        out.append(static_cast<std::size_t>(-d.pointPos), '0');
        out += d.digits;
    } else if (d.pointPos >= size) {
        out = d.digits;
        out.append(static_cast<std::size_t>(d.pointPos - size), '0');
    } else {
        out.assign(d.digits, 0, static_cast<std::size_t>(d.pointPos));
        out.push_back('.');
        out.append(d.digits, static_cast<std::size_t>(d.pointPos));
    }
    return out;
}

std::string StrOf(double value, int significant) {
    if (!std::isfinite(value)) return value < 0 ? NonFiniteText(value) : " " + NonFiniteText(value);
    const Decimal d = ToDecimal(value, significant);
    return (d.negative ? "-" : " ") + PrintDigits(d, significant, false);
}

std::string CStrOf(double value, int significant) {
    if (!std::isfinite(value)) return NonFiniteText(value);
    const Decimal d = ToDecimal(value, significant);
    return (d.negative ? "-" : "") + PrintDigits(d, significant, true);
}

// ---- Val -------------------------------------------------------------------------------------

bool IsValBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

int DigitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return 99;
}

// "&H..." and "&O..." (or just "&" and octal digits). As with the runtime's hexadecimal
// constants, a value that fits 16 bits is a 16-bit signed integer (&HFFFF is -1), one that fits
// 32 bits a 32-bit signed one, unless a trailing '&' asks for the 32-bit reading. Longer
// texts are taken as they stand rather than failing.
double ValRadix(std::string_view text, std::size_t pos) {
    int radix = 8;
    if (pos < text.size() && (text[pos] == 'H' || text[pos] == 'h')) {
        radix = 16;
        ++pos;
    } else if (pos < text.size() && (text[pos] == 'O' || text[pos] == 'o')) {
        ++pos;
    }
    double value = 0.0;
    bool any = false;
    for (; pos < text.size(); ++pos) {
        if (IsValBlank(text[pos])) continue;
        const int digit = DigitValue(text[pos]);
        if (digit >= radix) break;
        value = value * radix + digit;
        any = true;
    }
    if (!any) return 0.0;
    while (pos < text.size() && IsValBlank(text[pos])) ++pos;
    const bool forceLong = pos < text.size() && text[pos] == '&';
    if (!forceLong && value <= 65535.0) return value > 32767.0 ? value - 65536.0 : value;
    if (value <= 4294967295.0) return value > 2147483647.0 ? value - 4294967296.0 : value;
    return value;
}

}  // namespace

double Val(std::string_view text) {
    std::size_t pos = 0;
    while (pos < text.size() && IsValBlank(text[pos])) ++pos;
    if (pos < text.size() && text[pos] == '&') return ValRadix(text, pos + 1);

    // Gather the number without its blanks, then let the library convert it exactly.
    std::string mantissa;
    bool negative = false;
    if (pos < text.size() && (text[pos] == '-' || text[pos] == '+')) {
        negative = text[pos] == '-';
        ++pos;
    }
    bool seenPoint = false;
    bool anyDigit = false;
    // Decimal magnitude of the mantissa (digits before the point, or minus the zeros right
    // after it), to tell an overflow from an underflow when the library gives up.
    long long magnitude = 0;
    bool significant = false;
    for (; pos < text.size(); ++pos) {
        const char c = text[pos];
        if (IsValBlank(c)) continue;
        if (c >= '0' && c <= '9') {
            anyDigit = true;
            if (c != '0') significant = true;
            if (!significant && seenPoint) --magnitude;
            if (significant && !seenPoint) ++magnitude;
            mantissa.push_back(c);
        } else if (c == '.' && !seenPoint) {
            seenPoint = true;
            mantissa.push_back(c);
        } else {
            break;
        }
    }
    if (!anyDigit) return 0.0;

    // Exponent: E or D, an optional sign, digits. Without digits the letter is not part of it.
    long long exponent = 0;
    std::string exponentText;
    if (pos < text.size() &&
        (text[pos] == 'E' || text[pos] == 'e' || text[pos] == 'D' || text[pos] == 'd')) {
        std::size_t p = pos + 1;
        while (p < text.size() && IsValBlank(text[p])) ++p;
        bool negativeExponent = false;
        if (p < text.size() && (text[p] == '-' || text[p] == '+')) {
            negativeExponent = text[p] == '-';
            ++p;
        }
        bool anyExponentDigit = false;
        for (; p < text.size(); ++p) {
            if (IsValBlank(text[p])) continue;
            if (text[p] < '0' || text[p] > '9') break;
            anyExponentDigit = true;
            // Far beyond any double either way; capping keeps absurd exponents harmless.
            exponent = std::min(exponent * 10 + (text[p] - '0'), 99999999LL);
        }
        if (anyExponentDigit) {
            if (negativeExponent) exponent = -exponent;
            exponentText = "e" + std::to_string(exponent);
        }
    }

    const std::string number = mantissa + exponentText;
    double result = 0.0;
    const std::errc error =
        std::from_chars(number.data(), number.data() + number.size(), result).ec;
    if (error == std::errc::result_out_of_range) {
        // The runtime raised an overflow here; an infinity lets the caller carry on. A tiny
        // value simply reads as zero.
        result = magnitude + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (error != std::errc()) {
        result = 0.0;
    }
    if (result == 0.0) return 0.0;  // no negative zero
    return negative ? -result : result;
}

std::string Str(float value) {
    return StrOf(static_cast<double>(value), kFloatDigits);
}
std::string Str(double value) {
    return StrOf(value, kDoubleDigits);
}
std::string Str(std::int64_t value) {
    return value < 0 ? std::to_string(value) : " " + std::to_string(value);
}

std::string CStr(float value) {
    return CStrOf(static_cast<double>(value), kFloatDigits);
}
std::string CStr(double value) {
    return CStrOf(value, kDoubleDigits);
}
std::string CStr(std::int64_t value) {
    return std::to_string(value);
}

// ---- Format ----------------------------------------------------------------------------------

namespace {

// A digit pattern split into what Format needs to know about it.
struct NumberPattern {
    std::string prefix;      // literal text before the first placeholder
    std::string suffix;      // literal text after the last one
    int minInteger = 0;      // integer digits always shown ('0' and everything right of it)
    bool thousands = false;  // ',' between integer placeholders
    int scaleDown = 0;       // ',' right after the integer placeholders: divide by 1000 each
    bool hasPoint = false;
    int fraction = 0;     // decimal places rounded to
    int minFraction = 0;  // decimal places always shown (up to the last '0')
    int percent = 0;      // each '%' multiplies by 100
};

// Appends one literal character of a pattern, honouring "\x" and "quoted text". Returns the
// position after it.
std::size_t TakeLiteral(std::string_view pattern, std::size_t pos, std::string& out, int& percent) {
    const char c = pattern[pos];
    if (c == '\\' && pos + 1 < pattern.size()) {
        out.push_back(pattern[pos + 1]);
        return pos + 2;
    }
    if (c == '"') {
        const std::size_t close = pattern.find('"', pos + 1);
        const std::size_t end = close == std::string_view::npos ? pattern.size() : close;
        out.append(pattern.substr(pos + 1, end - pos - 1));
        return close == std::string_view::npos ? end : close + 1;
    }
    if (c == '%') ++percent;
    out.push_back(c);
    return pos + 1;
}

bool IsPlaceholder(char c) {
    return c == '0' || c == '#';
}

NumberPattern ParsePattern(std::string_view pattern) {
    NumberPattern p;
    std::size_t pos = 0;
    while (pos < pattern.size() && !IsPlaceholder(pattern[pos]) && pattern[pos] != '.') {
        pos = TakeLiteral(pattern, pos, p.prefix, p.percent);
    }
    // Integer part.
    int placeholders = 0;
    int firstZero = -1;
    int pendingCommas = 0;
    for (; pos < pattern.size(); ++pos) {
        const char c = pattern[pos];
        if (IsPlaceholder(c)) {
            if (c == '0' && firstZero < 0) firstZero = placeholders;
            ++placeholders;
            if (pendingCommas > 0) p.thousands = true;
            pendingCommas = 0;
        } else if (c == ',') {
            if (placeholders > 0) ++pendingCommas;
        } else {
            break;
        }
    }
    p.scaleDown = pendingCommas;
    p.minInteger = firstZero < 0 ? 0 : placeholders - firstZero;
    // Fraction part.
    if (pos < pattern.size() && pattern[pos] == '.') {
        p.hasPoint = true;
        for (++pos; pos < pattern.size() && IsPlaceholder(pattern[pos]); ++pos) {
            ++p.fraction;
            if (pattern[pos] == '0') p.minFraction = p.fraction;
        }
    }
    while (pos < pattern.size()) pos = TakeLiteral(pattern, pos, p.suffix, p.percent);
    return p;
}

// Adds one unit in the last place of a string of decimal digits.
void IncrementDigits(std::string& digits) {
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (*it != '9') {
            ++*it;
            return;
        }
        *it = '0';
    }
    digits.insert(digits.begin(), '1');
}

std::string FormatDecimal(Decimal d, const NumberPattern& p) {
    if (!d.digits.empty()) d.pointPos += 2 * p.percent - 3 * p.scaleDown;

    // Split into integer and fraction digits, then round half away from zero on the decimal
    // text itself so that 1.005 (read as 1.00500000000000) gives 1.01.
    std::string integer;
    std::string fraction;
    const auto size = static_cast<int>(d.digits.size());
    if (d.pointPos <= 0) {
        fraction.assign(static_cast<std::size_t>(-d.pointPos), '0');
        fraction += d.digits;
    } else if (d.pointPos >= size) {
        integer = d.digits;
        integer.append(static_cast<std::size_t>(d.pointPos - size), '0');
    } else {
        integer.assign(d.digits, 0, static_cast<std::size_t>(d.pointPos));
        fraction.assign(d.digits, static_cast<std::size_t>(d.pointPos));
    }
    const auto places = static_cast<std::size_t>(p.fraction);
    if (fraction.size() > places) {
        const bool roundUp = fraction[places] >= '5';
        fraction.resize(places);
        if (roundUp) {
            std::string all = integer + fraction;
            IncrementDigits(all);
            integer = all.substr(0, all.size() - places);
            fraction = all.substr(all.size() - places);
        }
    }
    fraction.resize(places, '0');
    while (fraction.size() > static_cast<std::size_t>(p.minFraction) && fraction.back() == '0') {
        fraction.pop_back();
    }
    const std::size_t firstNonZero = integer.find_first_not_of('0');
    integer.erase(0, firstNonZero == std::string::npos ? integer.size() : firstNonZero);
    if (integer.size() < static_cast<std::size_t>(p.minInteger)) {
        integer.insert(0, static_cast<std::size_t>(p.minInteger) - integer.size(), '0');
    }
    if (p.thousands) {
        std::string grouped;
        grouped.reserve(integer.size() + integer.size() / 3);
        for (std::size_t i = 0; i < integer.size(); ++i) {
            if (i > 0 && (integer.size() - i) % 3 == 0) grouped.push_back(',');
            grouped.push_back(integer[i]);
        }
        integer = std::move(grouped);
    }

    // The sign follows the value, not the rounded text: -0.001 shows as "-0.00".
    std::string out = d.negative ? "-" : "";
    out += p.prefix;
    out += integer;
    // The point stays even when no decimals are left ("#.##" gives "5."), as it always did.
    if (p.hasPoint) out.push_back('.');
    out += fraction;
    out += p.suffix;
    return out;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
               return lower(x) == lower(y);
           });
}

std::string FormatOf(double value, std::string_view pattern, int significant) {
    if (!std::isfinite(value)) return NonFiniteText(value);
    const bool digitPattern = std::any_of(pattern.begin(), pattern.end(), IsPlaceholder);
    std::string_view effective = pattern;
    if (!digitPattern) {
        if (EqualsIgnoringCase(pattern, "Standard")) {
            effective = "#,##0.00";
        } else if (EqualsIgnoringCase(pattern, "Fixed")) {
            effective = "0.00";
        } else if (EqualsIgnoringCase(pattern, "Percent")) {
            effective = "0.00%";
        } else {
            return CStrOf(value, significant);  // "General Number" and anything unknown
        }
    }
    return FormatDecimal(ToDecimal(value, significant), ParsePattern(effective));
}

}  // namespace

std::string Format(double value, std::string_view pattern) {
    return FormatOf(value, pattern, kDoubleDigits);
}
std::string Format(float value, std::string_view pattern) {
    return FormatOf(static_cast<double>(value), pattern, kFloatDigits);
}

// ---- Conversions -----------------------------------------------------------------------------

std::int32_t ToInt32Clamped(double value) {
    if (std::isnan(value)) return 0;
    const double rounded = RoundHalfEven(value);
    if (rounded <= static_cast<double>(std::numeric_limits<std::int32_t>::min())) {
        return std::numeric_limits<std::int32_t>::min();
    }
    if (rounded >= static_cast<double>(std::numeric_limits<std::int32_t>::max())) {
        return std::numeric_limits<std::int32_t>::max();
    }
    return static_cast<std::int32_t>(rounded);
}

double Int(double value) {
    return std::floor(value);
}
double Fix(double value) {
    return std::trunc(value);
}

// ---- Text ------------------------------------------------------------------------------------

std::string Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const std::size_t last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

std::string RTrim(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string() : std::string(text.substr(0, last + 1));
}

std::string TrimNul(std::string_view text) {
    return std::string(text.substr(0, text.find('\0')));
}

}  // namespace ardel

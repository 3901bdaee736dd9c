#ifndef GENETRAIN_COMMON_FORMAT_H
#define GENETRAIN_COMMON_FORMAT_H

#include <charconv>
#include <concepts>
#include <cstdint>
#include <string>

namespace genetrain {

// An integer in plain decimal, appended without a temporary text.
template <std::integral Integer>
void AppendInteger(std::string& text, Integer value) {
  char digits[24];
  text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// General notation with six significant digits, as a default output stream writes a double
// (printf's "%g": 0.124308, 43.1064, 1e+06).
void AppendGeneral(std::string& text, double value);

// Precisions beyond this many digits print as this many: a double holds no more.
inline constexpr std::uint32_t kMaxPrecision = 340;

// Fixed notation with the given number of digits after the point, as printf's "%.*f" writes it
// (precision 0 prints no point). Appends to the text.
void AppendFixed(std::string& text, double value, std::uint32_t precision);
std::string FormatFixed(double value, std::uint32_t precision);

// The same, but the decimal point is always shown (printf's "%#.*f"): 0 digits print "2.".
void AppendFixedPoint(std::string& text, double value, std::uint32_t precision);

}  // namespace genetrain

#endif

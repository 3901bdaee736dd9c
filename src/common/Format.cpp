#include "common/Format.h"

#include <algorithm>
#include <cstdio>

namespace genetrain {

namespace {

void AppendFormatted(std::string& text, const char* format, double value, std::uint32_t precision) {
  const int digits = static_cast<int>(std::min(precision, kMaxPrecision));
  char buffer[512];
  const int length = std::snprintf(buffer, sizeof buffer, format, digits, value);
  if (length >= 0 && static_cast<std::size_t>(length) < sizeof buffer) {
    text.append(buffer, static_cast<std::size_t>(length));
    return;
  }
  // Only huge magnitudes with many digits get here.
  std::string wide(static_cast<std::size_t>(length) + 1, '\0');
  std::snprintf(wide.data(), wide.size(), format, digits, value);
  wide.pop_back();
  text.append(wide);
}

}  // namespace

void AppendGeneral(std::string& text, double value) {
  char buffer[32];
  const int length = std::snprintf(buffer, sizeof buffer, "%g", value);
  if (length > 0) text.append(buffer, static_cast<std::size_t>(length));
}

void AppendFixed(std::string& text, double value, std::uint32_t precision) {
  AppendFormatted(text, "%.*f", value, precision);
}

std::string FormatFixed(double value, std::uint32_t precision) {
  std::string text;
  AppendFixed(text, value, precision);
  return text;
}

void AppendFixedPoint(std::string& text, double value, std::uint32_t precision) {
  AppendFormatted(text, "%#.*f", value, precision);
}

}  // namespace genetrain

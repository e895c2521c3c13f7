#include "base/LenientNumber.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace quillmoor {
namespace {

template <class Integer>
Integer narrowed(double number) {
  const double whole = std::nearbyint(number);  // the default rounding mode is half to even
  if (!(whole >= std::numeric_limits<Integer>::min() && whole <= std::numeric_limits<Integer>::max())) {
    throw std::overflow_error("The number " + std::to_string(number) + " is too large.");
  }
  return static_cast<Integer>(whole);
}

}  // namespace

std::optional<double> LeadingNumber(std::string_view text) {
  std::string compact;
  for (const char c : text.substr(0, 400)) {
    if (c != ' ' && c != '\t' && c != '\r' && c != '\n') compact += c;
  }
  const char* begin = compact.data();
  const char* const end = begin + compact.size();
  if (begin != end && *begin == '+') ++begin;
  // "inf" and "nan", which from_chars accepts, are not numbers here.
  const char* digit = begin;
  if (digit != end && *digit == '-') ++digit;
  if (digit == end || (*digit != '.' && (*digit < '0' || *digit > '9'))) return std::nullopt;
  double number = 0;
  const auto [rest, error] = std::from_chars(begin, end, number);
  if (error == std::errc::result_out_of_range) {
    return std::string_view(begin, static_cast<std::size_t>(rest - begin)).find("e-") !=
                   std::string_view::npos
               ? 0.0
               : std::numeric_limits<double>::max();
  }
  return error == std::errc() ? std::optional(number) : std::nullopt;
}

double Val(std::string_view text) {
  return LeadingNumber(text).value_or(0);
}

std::int32_t ToLong(double number) {
  return narrowed<std::int32_t>(number);
}
std::int32_t ToLong(std::string_view text) {
  return ToLong(Val(text));
}
std::int16_t ToInteger(double number) {
  return narrowed<std::int16_t>(number);
}

std::int32_t MultiplyLong(std::int32_t a, std::int32_t b) {
  return narrowed<std::int32_t>(static_cast<double>(a) * static_cast<double>(b));
}

}  // namespace quillmoor

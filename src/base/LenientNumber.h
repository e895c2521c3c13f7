// Lenient number parsing for stored settings and edit boxes: a leading number counts, and only one that is
// too large is an error.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmoor {

/// The number at the start of the text (sign, digits, decimal point, exponent), ignoring whitespace; nullopt
/// without one. "60 s" is 60; a number out of range is the largest double.
std::optional<double> LeadingNumber(std::string_view text);

/// The same, but 0 when there is none.
double Val(std::string_view text);

/// Rounds to the nearest integer, halves to even. Raises std::overflow_error beyond 32 bits.
std::int32_t ToLong(double number);

/// `ToLong(Val(text))`.
std::int32_t ToLong(std::string_view text);

/// As ToLong, for 16 bits.
std::int16_t ToInteger(double number);

/// Raises std::overflow_error when the product does not fit.
std::int32_t MultiplyLong(std::int32_t a, std::int32_t b);

}  // namespace quillmoor

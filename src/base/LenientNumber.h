// Numbers in stored texts and edit boxes: whatever leads the text counts, and nothing is an error but a
// number that is too large.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmoor {

/// The number that leads the text (sign, digits, decimal point, exponent), blanks passed over; nothing when
/// there is none. "60 s" is 60, "1e999" the largest number there is.
std::optional<double> LeadingNumber(std::string_view text);

/// The same, but 0 when there is none.
double Val(std::string_view text);

/// To the nearest whole number, a half to the even one. Raises std::overflow_error beyond 32 bits.
std::int32_t ToLong(double number);

/// `ToLong(Val(text))`.
std::int32_t ToLong(std::string_view text);

/// As ToLong, beyond 16 bits.
std::int16_t ToInteger(double number);

/// Raises std::overflow_error when the product does not fit.
std::int32_t MultiplyLong(std::int32_t a, std::int32_t b);

}  // namespace quillmoor

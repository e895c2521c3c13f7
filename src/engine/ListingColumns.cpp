#include "engine/ListingColumns.h"

#include <limits>
#include <string>

namespace quillmoor::listing {
namespace {

constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();

bool isPlainSize(std::string_view word) {
  if (word.starts_with('-')) word.remove_prefix(1);
  return !word.empty() && isDigit(word.front()) && isDigit(word.back()) &&
         std::all_of(word.begin(), word.end(), [](char c) { return isDigit(c) || c == ','; });
}

std::int64_t plainSize(std::string_view word) {
  std::string digits;
  if (word.find(',') != std::string_view::npos) {
    digits = word;
    std::erase(digits, ',');
    word = digits;
  }
  std::int64_t size = 0;
  const auto result = std::from_chars(word.data(), word.data() + word.size(), size);
  if (result.ec == std::errc::result_out_of_range) return kLargest;
  return size >= 0 ? size : std::max<std::int64_t>(size + (std::int64_t{1} << 32), 0);
}

/// A number with thousands separators, or a rounded one with its unit.
struct UnusualSize {
  std::string digits;      // of the integer part
  std::string tenths;      // digits after the decimal separator
  unsigned unitShift = 0;  // 10 for K, 20 for M and so on; 0: bytes
};

std::optional<UnusualSize> readUnusualSize(std::string_view word) {
  if (word.empty() || !isDigit(word.front())) return std::nullopt;
  UnusualSize size;
  const std::size_t end = std::min(word.find_first_not_of("0123456789.,"), word.size());
  std::string_view unit = word.substr(end);
  if (!unit.empty() && unit != "B") {
    const std::size_t power = std::string_view("kmgtp").find(static_cast<char>(unit[0] | 0x20));
    unit.remove_prefix(1);
    if (power == std::string_view::npos || !(unit.empty() || unit == "B" || unit == "b" || unit == "iB"))
      return std::nullopt;
    size.unitShift = 10 * (static_cast<unsigned>(power) + 1);
  }
  // A sign before every three digits separates thousands; a single one before any other number of digits is
  // the decimal separator.
  std::string_view number = word.substr(0, end);
  while (!number.empty()) {
    const std::size_t sign = std::min(number.find_first_of(".,"), number.size());
    const std::string_view group = number.substr(0, sign);
    if (group.empty()) return std::nullopt;
    size.digits.append(group);
    if (sign == number.size()) return size;
    number.remove_prefix(sign + 1);
    const std::size_t next = std::min(number.find_first_of(".,"), number.size());
    if (next == 3) continue;
    if (size.unitShift == 0 || next == 0 || next != number.size()) return std::nullopt;
    size.tenths = number;
    return size;
  }
  return std::nullopt;
}

std::int64_t roundedSize(const UnusualSize& size) {
  const std::string text = size.digits + "." + (size.tenths.empty() ? "0" : size.tenths);
  double value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) return kLargest;
  value *= static_cast<double>(std::int64_t{1} << size.unitShift);
  return value < static_cast<double>(kLargest) ? static_cast<std::int64_t>(value) : kLargest;
}

}  // namespace

bool isAnyWord(std::string_view word) {
  if (word.ends_with('.')) word.remove_suffix(1);
  return !word.empty() && std::all_of(word.begin(), word.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
  });
}

bool isSize(std::string_view word) {
  return isPlainSize(word) || readUnusualSize(word);
}

void setSize(RemoteEntry& entry, std::string_view word) {
  if (isPlainSize(word)) {
    entry.sizeBytes = plainSize(word);
    entry.sizeExact = entry.sizeBytes != kLargest;
  } else if (const auto unusual = readUnusualSize(word)) {
    entry.sizeExact = unusual->unitShift == 0;
    entry.sizeBytes = entry.sizeExact ? plainSize(unusual->digits) : roundedSize(*unusual);
  }
  entry.size = static_cast<std::int32_t>(
      std::min<std::int64_t>(entry.sizeBytes, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace quillmoor::listing

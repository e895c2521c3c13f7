#include "engine/mGeneral.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace quillmoor {
namespace {

constexpr std::array<const char*, 9> kUnits = {"Bytes", "KB", "MB", "GB", "TB", "PB", "EB", "ZB", "YB"};

template <class... Values>
std::string formatted(const char* pattern, Values... values) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, values...);
  return text;
}

/// With a decimal point whatever the program's locale: a window system may set the user's.
std::string withDecimals(double value, int decimals) {
  char text[512];  // the largest double has 309 digits
  const auto result = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
  return {text, result.ptr};
}

std::string withThousands(std::string number) {
  for (auto at = static_cast<std::ptrdiff_t>(number.find('.')) - 3; at > 0; at -= 3) {
    number.insert(static_cast<std::size_t>(at), 1, ',');
  }
  return number;
}

}  // namespace

std::string FormatSize(double bytes) {
  if (!std::isfinite(bytes)) return "";
  for (std::size_t unit = kUnits.size(); unit-- > 0;) {
    const double power = std::pow(1024.0, static_cast<double>(unit));
    if (power <= bytes) return withThousands(withDecimals(bytes / power, 3)) + " " + kUnits[unit];
  }
  return "";
}

int Percentage(std::int64_t count, std::int64_t size) {
  const double percent = static_cast<double>(count) / static_cast<double>(size) * 100;
  return static_cast<int>(std::lrint(std::min(percent, 100.0)));
}

std::string FormatRate(std::int64_t bytes, std::int64_t elapsedMs) {
  if (elapsedMs <= 0) return "";
  const double rate = std::nearbyint(static_cast<double>(bytes) * 1000 / static_cast<double>(elapsedMs));
  if (rate <= 0) return "";
  if (rate <= 1000) return withDecimals(rate, 0) + " Bytes/sec";
  // Halves are rounded up here: 1280 is 1.3 KB.
  const auto tenths = [rate](double unit) { return withDecimals(std::round(rate / unit * 10) / 10, 1); };
  if (rate <= 1048576) return tenths(1024) + " KB/sec";
  return tenths(1048576) + " MB/sec";
}

std::string TimeText(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  return formatted("%02d:%02d:%02d", t.hour, t.minute, t.second);
}

std::string FinishedText(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  return formatted("%02d-%02d-%04d %02d:%02d:%02d", t.month, t.day, t.year, t.hour, t.minute, t.second);
}

std::string ReportTimeText(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  return formatted("%02d-%02d-%04d %02d:%02d", t.month, t.day, t.year, t.hour, t.minute);
}

std::string DatedFolderSuffix(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  return formatted("-%02d-%02d-%04d", t.month, t.day, t.year);
}

std::string GeneralDateText(LocalDateTime time) {
  const auto t = SplitLocalDateTime(time);
  return formatted("%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute, t.second);
}

}  // namespace quillmoor

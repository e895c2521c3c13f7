#include "engine/mGeneral.h"

#include <array>
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

std::string withThousands(std::string number) {
  for (auto at = static_cast<std::ptrdiff_t>(number.find('.')) - 3; at > 0; at -= 3) {
    number.insert(static_cast<std::size_t>(at), 1, ',');
  }
  return number;
}

}  // namespace

std::string FormatSize(double bytes) {
  for (std::size_t unit = kUnits.size(); unit-- > 0;) {
    const double power = std::pow(1024.0, static_cast<double>(unit));
    if (power <= bytes) return withThousands(formatted("%.3f", bytes / power)) + " " + kUnits[unit];
  }
  return "";
}

std::string FormatRate(std::int64_t bytes, std::int64_t elapsedMs) {
  if (elapsedMs <= 0) return "";
  const double rate = std::nearbyint(static_cast<double>(bytes) * 1000 / static_cast<double>(elapsedMs));
  if (rate <= 0) return "";
  if (rate <= 1000) return formatted("%.0f Bytes/sec", rate);
  if (rate <= 1048576) return formatted("%.1f KB/sec", rate / 1024);
  return formatted("%.1f MB/sec", rate / 1048576);
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

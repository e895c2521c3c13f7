#include "platform/files/ReservedNames.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <random>

#include "base/Ascii.h"

namespace quillmoor {
namespace {

constexpr std::string_view kUnfinished = ".quillmoor-unfinished";
constexpr std::string_view kTemporaryEnding = ".tmp";

bool beginsWith(std::string_view name, std::string_view start) {
  return AsciiLower(name.substr(0, start.size())) == start;
}

std::uint64_t randomNumber() {
  std::random_device random;
  return static_cast<std::uint64_t>(random()) << 32 | random();
}

}  // namespace

bool IsReservedLocalName(std::string_view name) {
  return beginsWith(name, kUnfinished) || beginsWith(name, kLockFileName);
}

std::string NewTemporaryName() {
  static const std::uint64_t process = randomNumber();
  static std::atomic<std::uint64_t> counter{0};
  char number[48];
  std::snprintf(number, sizeof number, "-%016llx-%llu", static_cast<unsigned long long>(process),
                static_cast<unsigned long long>(++counter));
  return std::string(kUnfinished).append(number).append(kTemporaryEnding);
}

bool IsTemporaryName(std::string_view name) {
  return name.starts_with(kUnfinished) && (name.ends_with(kTemporaryEnding) || name.ends_with(".tmp2"));
}

std::string WaitingFolderName(std::string_view mainName) {
  return std::string(kUnfinished).append("-").append(mainName);
}

std::optional<std::string> SetOfWaitingFolder(std::string_view name) {
  if (!name.starts_with(kUnfinished) || IsTemporaryName(name)) return std::nullopt;
  name.remove_prefix(kUnfinished.size());
  if (name.size() < 2 || name[0] != '-') return std::nullopt;
  return std::string(name.substr(1));
}

}  // namespace quillmoor

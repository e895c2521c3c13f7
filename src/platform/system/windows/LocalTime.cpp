#include "platform/system/LocalTime.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "platform/system/windows/SystemTime.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

using std::chrono::sys_seconds;
using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
constexpr std::chrono::seconds kFrom1601To1970{11'644'473'600};

/// The time zone rules of a year; a zone may have changed them. Reading them from the registry is slow and
/// they are needed several times per file, so they are cached, but only for a second, as the machine's zone
/// may change.
const TIME_ZONE_INFORMATION& rulesOf(int year) {
  constexpr std::int64_t kLastMs = 1000;
  thread_local std::map<int, TIME_ZONE_INFORMATION> known;
  thread_local std::int64_t since = 0;
  const std::int64_t now = TickCountMs();
  if (now - since >= kLastMs) {
    known.clear();
    since = now;
  }
  const auto [place, isNew] = known.try_emplace(std::clamp(year, 1601, 9999));
  if (isNew &&
      ::GetTimeZoneInformationForYear(static_cast<USHORT>(place->first), nullptr, &place->second) == FALSE) {
    ::GetTimeZoneInformation(&place->second);
  }
  return place->second;
}

int yearOf(LocalDateTime time) {
  return SplitLocalDateTime(time).year;
}

}  // namespace

FILETIME ToFileTime(sys_seconds time) {
  const auto since1601 = std::max(std::chrono::seconds(0), time.time_since_epoch() + kFrom1601To1970);
  const auto ticks = static_cast<std::uint64_t>(Ticks(since1601).count());
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

sys_seconds FromFileTime(const FILETIME& time) {
  const auto ticks = (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  return sys_seconds(std::chrono::floor<std::chrono::seconds>(Ticks(static_cast<std::int64_t>(ticks))) -
                     kFrom1601To1970);
}

LocalDateTime UtcToLocal(sys_seconds time, const TIME_ZONE_INFORMATION& rules) {
  const FILETIME utcTime = ToFileTime(time);
  SYSTEMTIME utc, local;
  FILETIME localTime;
  if (::FileTimeToSystemTime(&utcTime, &utc) == FALSE ||
      ::SystemTimeToTzSpecificLocalTime(&rules, &utc, &local) == FALSE ||
      ::SystemTimeToFileTime(&local, &localTime) == FALSE) {
    return LocalDateTime(time.time_since_epoch());
  }
  return LocalDateTime(FromFileTime(localTime).time_since_epoch());
}

sys_seconds LocalToUtc(LocalDateTime time, const TIME_ZONE_INFORMATION& rules) {
  // A zone is at most a day and a half away from UTC and changes by hours, so either the offset before or the
  // one after is right. For a skipped time neither is: then the one before.
  const sys_seconds asUtc(time.time_since_epoch());
  const auto offsetAt = [&](sys_seconds moment) {
    return UtcToLocal(moment, rules).time_since_epoch() - moment.time_since_epoch();
  };
  const sys_seconds byTheOneBefore = asUtc - offsetAt(asUtc - std::chrono::days(2));
  const sys_seconds byTheOneAfter = asUtc - offsetAt(asUtc + std::chrono::days(2));
  return UtcToLocal(byTheOneBefore, rules) != time && UtcToLocal(byTheOneAfter, rules) == time
             ? byTheOneAfter
             : byTheOneBefore;
}

LocalDateTime UtcToLocal(sys_seconds time) {
  return UtcToLocal(time, rulesOf(yearOf(LocalDateTime(time.time_since_epoch()))));
}

sys_seconds LocalToUtc(LocalDateTime time) {
  return LocalToUtc(time, rulesOf(yearOf(time)));
}

std::string DayHalfText(bool afternoon) {
  wchar_t text[16] = {};  // at most 15 characters
  ::GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, afternoon ? LOCALE_S2359 : LOCALE_S1159, text,
                    static_cast<int>(std::size(text)));
  return text[0] != L'\0' ? Narrow(text) : afternoon ? "PM" : "AM";
}

}  // namespace quillmoor

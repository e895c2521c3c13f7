// Local times and the times of files, in zones whose clocks change.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <string>

#include "platform/FileTimes.h"
#include "platform/LocalTime.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_seconds;

/// A time zone for as long as this lives; nobody is told of it but the environment.
class TimeZone {
 public:
  explicit TimeZone(const char* name) : before_(std::getenv("TZ") ? std::getenv("TZ") : "") {
    ::setenv("TZ", name, 1);
  }
  ~TimeZone() {
    before_.empty() ? ::unsetenv("TZ") : ::setenv("TZ", before_.c_str(), 1);
    ::tzset();
  }

 private:
  std::string before_;
};

LocalDateTime at(int month, int day, int hour, int minute) {
  return *MakeLocalDateTime({2026, month, day, hour, minute, 0, 0});
}

TEST(LocalTime, GoesToUtcAndBackAllYearLong) {
  const sys_seconds newYear{seconds(1767225600)};
  for (const char* zone : {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0",
                           "AEST-10AEDT,M10.1.0,M4.1.0/3", "LHST-10:30LHDT-11,M10.1.0,M4.1.0", "XYZ-5:45"}) {
    const TimeZone here(zone);
    for (sys_seconds utc = newYear; utc < newYear + hours(365 * 24); utc += minutes(15)) {
      const LocalDateTime local = UtcToLocal(utc);
      const sys_seconds again = LocalToUtc(local);
      // Of two moments with the same local time either may come, but it has that local time.
      ASSERT_EQ(UtcToLocal(again), local) << zone << " " << utc.time_since_epoch().count();
      ASSERT_LE(std::chrono::abs(again - utc), hours(1)) << zone;
    }
  }
}

TEST(LocalTime, ReadsASkippedTimeAsAClockNotYetChangedWould) {
  const struct {
    const char* zone;
    LocalDateTime skipped, shown;
  } cases[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", at(3, 29, 2, 0), at(3, 29, 3, 0)},
      {"CET-1CEST,M3.5.0,M10.5.0/3", at(3, 29, 2, 59), at(3, 29, 3, 59)},
      {"EST5EDT,M3.2.0,M11.1.0", at(3, 8, 2, 30), at(3, 8, 3, 30)},
      {"AEST-10AEDT,M10.1.0,M4.1.0/3", at(10, 4, 2, 30), at(10, 4, 3, 30)},
      {"LHST-10:30LHDT-11,M10.1.0,M4.1.0", at(10, 4, 2, 15), at(10, 4, 2, 45)},
  };
  for (const auto& c : cases) {
    const TimeZone here(c.zone);
    // Whatever was asked before.
    for (const LocalDateTime before : {at(1, 1, 0, 0), at(7, 1, 0, 0), at(12, 31, 23, 59)}) {
      LocalToUtc(before);
      EXPECT_EQ(UtcToLocal(LocalToUtc(c.skipped)), c.shown) << c.zone;
    }
  }
}

TEST(LocalTime, FollowsTheMachineIntoAnotherZone) {
  const sys_seconds noon{seconds(1767268800)};
  const TimeZone home("UTC0");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 12);
  const TimeZone abroad("XYZ-3");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 15);
}

TEST(FileTimes, AreReadAndSetToTheSecond) {
  const testing::TemporaryFolder folder;
  const std::string file = (folder / "f").string();
  const auto start = std::chrono::floor<seconds>(std::chrono::system_clock::now());
  testing::writeFile(file, "kept");
  const sys_seconds before1970{seconds(-86400)};
  for (const sys_seconds time :
       {sys_seconds{seconds(1231981200)}, sys_seconds{seconds(4102444800)}, before1970}) {
    ASSERT_TRUE(WriteModifiedTime(file, time));
    const auto times = ReadFileTimes(file);
    ASSERT_TRUE(times);
    EXPECT_EQ(times->modified, time);
    EXPECT_GE(times->accessed, start - seconds(1)) << "of no concern to the writer";
  }
  EXPECT_EQ(testing::contentsOf(file), "kept");
}

TEST(FileTimes, LeaveAloneWhatIsNoFile) {
  const testing::TemporaryFolder folder;
  const std::string pipe = (folder / "pipe").string();
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const sys_seconds time{seconds(1231981200)};
  EXPECT_FALSE(WriteModifiedTime(pipe, time)) << "and without waiting for a reader";
  EXPECT_FALSE(WriteModifiedTime(folder.path().string(), time));
  EXPECT_FALSE(ReadFileTimes(folder.path().string()));
  EXPECT_FALSE(WriteModifiedTime((folder / "none").string(), time));
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
  EXPECT_FALSE(ReadFileTimes((folder / "none").string()));
}

}  // namespace
}  // namespace quillmoor

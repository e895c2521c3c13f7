// Local times in zones whose clocks change.
#include <cstdlib>
#include <ctime>
#include <utility>

#include "../LocalTimeCases.h"
#include "TestPlatform.h"

namespace quillmoor {
namespace {

using std::chrono::sys_seconds;
using testing::setEnvironment;

/// Puts the time zone in the environment back.
class LocalTime : public ::testing::Test {
 protected:
  ~LocalTime() override {
    before_.empty() ? testing::unsetEnvironment("TZ") : setEnvironment("TZ", before_);
    ::tzset();
  }
  const std::string before_ = std::getenv("TZ") ? std::getenv("TZ") : "";
};

TEST_F(LocalTime, GoesToUtcAndBack) {
  for (const auto& [name, rules] :
       {std::pair{"UTC", "UTC0"}, std::pair{"central Europe", "CET-1CEST,M3.5.0,M10.5.0/3"},
        std::pair{"eastern America", "EST5EDT,M3.2.0,M11.1.0"},
        std::pair{"southern Australia", "AEST-10AEDT,M10.1.0,M4.1.0/3"},
        std::pair{"an island of half an hour", "LHST-10:30LHDT-11,M10.1.0,M4.1.0"},
        std::pair{"Nepal", "XYZ-5:45"}}) {
    setEnvironment("TZ", rules);
    testing::expectLocalTimes(
        name, [](sys_seconds utc) { return UtcToLocal(utc); },
        [](LocalDateTime local) { return LocalToUtc(local); });
  }
}

TEST_F(LocalTime, FollowsTheMachineIntoAnotherZone) {
  const sys_seconds noon{std::chrono::seconds(1767268800)};
  setEnvironment("TZ", "UTC0");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 12);
  setEnvironment("TZ", "XYZ-3");
  EXPECT_EQ(SplitLocalDateTime(UtcToLocal(noon)).hour, 15);
}

}  // namespace
}  // namespace quillmoor

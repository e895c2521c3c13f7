#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "connectivity/modProcessPriority.h"
#include "platform/system/ProcessPriority.h"
#include "profiles/PrioritySlider.h"
#include "profiles/SettingsStore.h"

namespace quillmoor::modProcessPriority {
namespace {

TEST(ProcessPriority, GoesBetweenSliderAndClass) {
  const struct {
    std::int32_t position, number;
    const char* name;
  } cases[] = {{1, 64, "Idle"},  {2, 16384, "Below Normal"}, {3, 32, "Normal"}, {4, 32768, "Above Normal"},
               {5, 128, "High"}, {6, 256, "Realtime"}};
  for (const auto& c : cases) {
    EXPECT_EQ(PositionToClass(c.position), c.number);
    EXPECT_EQ(ClassToPosition(c.number), c.position);
    EXPECT_EQ(ClassName(c.number), c.name);
  }
}

TEST(ProcessPriority, MeetsWhatIsNoClass) {
  for (const std::int32_t position : {-1, 0, 7, 100}) EXPECT_EQ(PositionToClass(position), 32) << position;
  for (const std::int32_t number : {-5, 0, 1, 3, 12, 100000}) {
    EXPECT_EQ(ClassToPosition(number), 7) << number;
    EXPECT_EQ(ClassName(number), "Unknown:" + std::to_string(number));
  }
}

TEST(ProcessPriority, TellsWhatIsInForceWhenNothingCouldBeSet) {
  const std::int32_t own = SetPriority(0, 0, 12);
  EXPECT_LT(ClassToPosition(own), 7) << own;
  EXPECT_EQ(SetPriority(CurrentProcessId(), 0, 12), own);
  EXPECT_EQ(SetPriority(0x7FFFFFF0, 0, 32), 0) << "there is no such process";
  EXPECT_EQ(SetPriority(0, 1, 32), 0) << "there is no such window";
}

TEST(ProcessPriority, FollowsTheSliderAndIsStored) {
  const testing::OwnRegistry registry;
  ApplicationSettings settings;
  EXPECT_EQ(PrioritySliderMoved(2, settings), "Below Normal");
  EXPECT_EQ(settings.ProcessPriority, 16384);
  EXPECT_EQ(ReadSetting("ProcessPriority", ""), "16384");
  const std::int32_t inForce = SetPriority(0, 0, 12);
  EXPECT_TRUE(inForce == 16384 || inForce == 64) << inForce << ": idle when the test was started so";
}

}  // namespace
}  // namespace quillmoor::modProcessPriority

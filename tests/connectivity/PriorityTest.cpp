#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "connectivity/modProcessPriority.h"
#include "platform/system/ProcessPriority.h"
#include "profiles/PrioritySlider.h"

namespace quillmoor::modProcessPriority {
namespace {

TEST(ProcessPriority, ConvertsBetweenSliderAndClass) {
  const char* const names[] = {"Idle", "Below Normal", "Normal", "Above Normal", "High", "Realtime"};
  std::int32_t position = 0;
  for (const std::int32_t number : {64, 16384, 32, 32768, 128, 256}) {
    EXPECT_EQ(ClassName(number), names[position++]);
    EXPECT_EQ(PositionToClass(position), number);
    EXPECT_EQ(ClassToPosition(number), position);
  }
  for (const std::int32_t none : {-1, 0, 7}) EXPECT_EQ(PositionToClass(none), 32) << none;
  for (const std::int32_t number : {-5, 0, 100000}) {
    EXPECT_EQ(ClassToPosition(number), 7) << number;
    EXPECT_EQ(ClassName(number), "Unknown:" + std::to_string(number));
  }
}

TEST(ProcessPriority, IsReturnedWhenNothingCouldBeSet) {
  const std::int32_t own = SetPriority(0, 0, 12);
  EXPECT_LT(ClassToPosition(own), 7) << own;
  EXPECT_EQ(SetPriority(CurrentProcessId(), 0, 12), own);
  EXPECT_EQ(SetPriority(0x7FFFFFF0, 0, 32), 0) << "there is no such process";
  EXPECT_EQ(SetPriority(0, 1, 32), 0) << "there is no such window";
}

TEST(ProcessPriority, FollowsTheSlider) {
  const testing::OwnRegistry registry;
  ApplicationSettings settings;
  EXPECT_EQ(PrioritySliderMoved(2, settings), "Below Normal");
  EXPECT_EQ(settings.ProcessPriority, 16384);
  const std::int32_t inForce = SetPriority(0, 0, 12);
  EXPECT_TRUE(inForce == 16384 || inForce == 64) << inForce << ": idle when the test was started so";
}

}  // namespace
}  // namespace quillmoor::modProcessPriority

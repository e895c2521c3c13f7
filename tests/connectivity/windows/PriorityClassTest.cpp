#include <gtest/gtest.h>
#include <windows.h>

#include "connectivity/modProcessPriority.h"

namespace quillmoor::modProcessPriority {
namespace {

TEST(PriorityClasses, AreThoseOfTheSystem) {
  const auto before = static_cast<std::int32_t>(::GetPriorityClass(::GetCurrentProcess()));
  for (const PriorityClass& known : kClasses) {
    const std::int32_t inForce = SetPriority(0, 0, known.number);
    EXPECT_EQ(static_cast<DWORD>(inForce), ::GetPriorityClass(::GetCurrentProcess()));
    // Without the right to it the system makes "High" of "Realtime" and says nothing.
    const bool lowered = known.number == 256 && inForce == 128;
    EXPECT_EQ(inForce, lowered ? 128 : known.number) << known.name;
  }
  SetPriority(0, 0, before);
}

}  // namespace
}  // namespace quillmoor::modProcessPriority

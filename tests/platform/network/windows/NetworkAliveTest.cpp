// What this system says of its network.
#include "platform/network/NetworkAlive.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace quillmoor {
namespace {

TEST(NetworkAlive, AsksTheSystem) {
  // What it answers is the machine's business; that it can be asked is ours. No network leaves the kinds
  // alone.
  std::uint32_t kinds = 77;
  if (!IsNetworkAlive(kinds))
    EXPECT_EQ(kinds, 77U);
  else
    EXPECT_LT(kinds, 8U);
}

}  // namespace
}  // namespace quillmoor

#include <gtest/gtest.h>

#include "connectivity/mNetworkConnection.h"

namespace quillmoor {
namespace {

TEST(NetworkConnection, AnswersByTheKindsThatAreUp) {
  const struct {
    bool alive;
    std::uint32_t kinds;
    bool available, lan;
  } cases[] = {{true, 1, true, true},  {true, 2, true, false}, {true, 3, true, false},
               {true, 0, true, false}, {true, 4, true, false}, {false, 1, false, false}};
  for (const auto& c : cases) {
    std::uint32_t handedOver = 99;
    const NetworkSource source = [&](std::uint32_t& kinds) {
      handedOver = kinds;
      kinds = c.kinds;
      return c.alive;
    };
    EXPECT_EQ(IsNetworkAvailable(source), c.available) << c.kinds;
    EXPECT_EQ(IsLanConnected(source), c.lan) << c.kinds;
    EXPECT_EQ(handedOver, 0U);
  }
}

}  // namespace
}  // namespace quillmoor

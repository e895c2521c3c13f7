#include <gtest/gtest.h>
#include <net/if.h>

#include "connectivity/mNetworkConnection.h"
#include "platform/posix/NetworkInterfaces.h"

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

TEST(NetworkInterfaces, CountWhenTheyWorkAndLeadSomewhere) {
  constexpr unsigned kWorking = IFF_UP | IFF_RUNNING;
  const struct {
    const char* name;
    NetworkInterface interface;
    std::uint32_t kind;
  } cases[] = {{"Ethernet", {kWorking | IFF_BROADCAST, true}, 1},
               {"cable pulled", {IFF_UP | IFF_BROADCAST, true}, 0},
               {"switched off", {IFF_BROADCAST, true}, 0},
               {"no address yet", {kWorking | IFF_BROADCAST, false}, 0},
               {"loopback", {kWorking | IFF_LOOPBACK, true}, 0},
               {"dial-up", {kWorking | IFF_POINTOPOINT, true}, 2}};
  for (const auto& c : cases) EXPECT_EQ(networkKind(c.interface), c.kind) << c.name;
}

}  // namespace
}  // namespace quillmoor

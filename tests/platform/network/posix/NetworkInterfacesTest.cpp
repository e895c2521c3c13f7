#include "platform/network/posix/NetworkInterfaces.h"

#include <gtest/gtest.h>
#include <net/if.h>

namespace quillmoor {
namespace {

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

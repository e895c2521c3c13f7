// Dial-up through the test's own nmcli, first on the PATH; and which interfaces count as a network.
#include "platform/network/posix/NetworkManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "TestPlatform.h"
#include "platform/network/posix/NetworkInterfaces.h"
#include "platform/system/LocalTime.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// How the test's own nmcli records that it was to dial and to hang up.
const std::string kUp = "up uuid u1 C.UTF-8\n", kDown = "down uuid u1\n";

constexpr const char* kScript = R"sh(#!/bin/sh
cd "${0%/*}" || exit 99
case "$*" in
*"connection show")
  [ ! -p answer ] || read -r go <answer
  cat shown
  exit "$(cat status)" ;;
*"connection up"*)
  echo "${*##* connection } $LC_ALL" >>calls
  read -r status <dialled
  exit "$status" ;;
*"connection down"*)
  echo "${*##* connection }" >>calls
  : >shown
  exit "$(cat status)" ;;
esac
exit 98
)sh";

class NmcliTest : public ::testing::Test {
 protected:
  NmcliTest() {
    writeFile(folder / "nmcli", kScript);
    ::chmod((folder / "nmcli").c_str(), 0755);
    ::mkfifo((folder / "dialled").c_str(), 0600);
    writeFile(folder / "calls", "");
    writeFile(folder / "status", "0");
    shows("u1:gsm:::Mobile\n");
    setEnvironment("PATH", folder.path().string() + ":" + path);
  }
  ~NmcliTest() override {
    system.reset();
    setEnvironment("PATH", path);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a program is left";
    EXPECT_EQ(errno, ECHILD);
  }

  /// Lines of UUID, type, state, device and name.
  void shows(const std::string& lines) { writeFile(folder / "shown", lines); }
  /// The nmcli that dials ends with this status.
  void dialEnds(int status) { std::ofstream(folder / "dialled") << status << '\n'; }
  std::string calls() const { return contentsOf(folder / "calls"); }
  template <class Condition>
  bool comesTrue(Condition condition) {
    const std::int64_t end = TickCountMs() + 20'000;
    while (!condition()) {
      if (TickCountMs() > end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
  }
  bool reaches(std::int32_t state) {
    return comesTrue([&] {
      for (const std::int32_t one : system->takeStates()) states.push_back(one);
      return std::find(states.begin(), states.end(), state) != states.end();
    });
  }
  /// Dials, and waits until nmcli does.
  void dialMobile() {
    const std::string before = calls();
    system->dial("Mobile");
    ASSERT_TRUE(comesTrue([&] { return calls() == before + kUp; }));
  }

  std::string path = std::getenv("PATH");
  TemporaryFolder folder;
  Pump pump;
  std::unique_ptr<RemoteAccess> system = MakeRemoteAccess([this] {
    if (pump) pump();
  });
  std::vector<std::int32_t> states;
};

TEST_F(NmcliTest, OffersTheEntriesThatDial) {
  shows(
      "u1:gsm:activated:ttyUSB0:Mobile\n"
      "u2:802-3-ethernet:activated:eth0:Wired\n"
      "u3:pppoe:::Caf\xC3\xA9\\: \\\\ upstairs\n\n"
      "u4:cdma:::C\nu5:adsl:::A\nu6:bluetooth:::B\nu7:vpn:::V\nu8:802-11-wireless:::W\n"
      "u9:gsm:::Mobile\n"
      "a line of something else\n"
      "u10:gsm:::half a name\\\nu11:gsm:::end\\");
  EXPECT_THAT(system->entries(),
              ElementsAre("Mobile", "Café: \\ upstairs", "C", "A", "B", "half a name\\", "end\\"));
}

TEST_F(NmcliTest, HasNoEntriesWithoutNetworkManager) {
  const auto expectNone = [](const char* why) {
    const auto other = MakeRemoteAccess([] {});
    EXPECT_THAT(other->entries(), IsEmpty()) << why;
    EXPECT_THAT(other->activeConnections(), IsEmpty()) << why;
    EXPECT_THROW(other->dial("Mobile"), std::runtime_error) << why;
  };
  writeFile(folder / "status", "8");
  expectNone("it does not run");
  writeFile(folder / "status", "0");
  shows("u1:gsm:::Mobile\n" + std::string(2 << 20, 'x'));
  expectNone("it says too much");
  setEnvironment("PATH", "/nonexistent");
  expectNone("there is no nmcli");
}

TEST_F(NmcliTest, WithoutAPumpDoesNotWaitForAnAnswer) {
  shows("u1:gsm:activated:ttyUSB0:Mobile\n");
  const auto first = MakeRemoteAccess({}), second = MakeRemoteAccess({});
  EXPECT_TRUE(first->activeConnections().empty() && second->entries().empty());
  EXPECT_TRUE(comesTrue([&] { return first->activeConnections().size() == 1; }));
  EXPECT_TRUE(comesTrue([&] { return second->entries().size() == 1; }));
}

TEST_F(NmcliTest, WithoutAPumpADialWaitsForItsEntryInTheBackground) {
  system = MakeRemoteAccess({});
  system->dial("Mobile");
  EXPECT_TRUE(comesTrue([&] {
    EXPECT_THAT(system->takeStates(), IsEmpty());
    return calls() == kUp;
  }));
  dialEnds(0);
  EXPECT_TRUE(reaches(kDialUpConnected));
  for (const bool closed : {false, true}) {
    system = MakeRemoteAccess({});
    system->dial(closed ? "Mobile" : "no such entry");
    if (closed) system->close();
    states.clear();
    EXPECT_TRUE(reaches(kDialUpDisconnected)) << closed;
    EXPECT_THAT(states, ElementsAre(kDialUpDisconnected)) << closed;
    EXPECT_THAT(system->takeStates(), IsEmpty()) << closed;
  }
  EXPECT_EQ(calls(), kUp) << "only the first one was dialled";
}

TEST_F(NmcliTest, DialsUntilConnectedAndNoticesTheEnd) {
  dialMobile();
  shows("u1:gsm:activating:ttyUSB0:Mobile\n");
  EXPECT_TRUE(reaches(2));
  shows("u1:gsm:activated:ttyUSB0:Mobile\n");
  dialEnds(0);
  EXPECT_TRUE(reaches(kDialUpConnected));
  const auto active = system->activeConnections();
  ASSERT_EQ(active.size(), 1U) << "at once, not when an older answer has grown old";
  EXPECT_EQ(active[0].entryName + active[0].deviceType + active[0].deviceName, "MobilegsmttyUSB0");
  EXPECT_EQ(system->stateOf(active[0]), kDialUpConnected);
  EXPECT_THAT(system->takeStates(), IsEmpty());
  shows("u1:gsm:::Mobile\n");
  EXPECT_TRUE(reaches(kDialUpDisconnected));
  EXPECT_THAT(states, ElementsAre(2, kDialUpConnected, kDialUpDisconnected));
}

TEST_F(NmcliTest, ReportsTheEndOfADialThatFailsOrIsClosed) {
  dialMobile();
  dialEnds(4);
  EXPECT_TRUE(reaches(kDialUpDisconnected));
  EXPECT_THAT(states, ElementsAre(kDialUpDisconnected));
  dialMobile();
  system->close();
  states.clear();
  EXPECT_TRUE(reaches(kDialUpDisconnected));
  EXPECT_EQ(calls(), kUp + kUp + kDown);
}

TEST_F(NmcliTest, EndsADialButNoConnectionWhenItGoes) {
  dialMobile();
  dialEnds(0);
  // Ended, but not yet noticed: to wait for it is the component's part.
  siginfo_t ended{};
  ASSERT_EQ(::waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT), 0);
  system = MakeRemoteAccess([] {});
  dialMobile();
  system.reset();
  EXPECT_EQ(calls(), kUp + kUp + kDown);
}

TEST_F(NmcliTest, HangsUpWhatOthersHaveMade) {
  shows("u1:gsm:activated:ttyUSB0:Mobile\nu3:pppoe:deactivating:ppp0:Other\n");
  const auto active = system->activeConnections();
  ASSERT_EQ(active.size(), 2U);
  EXPECT_EQ(system->stateOf(active[1]), 8198);
  writeFile(folder / "status", "3");
  EXPECT_EQ(system->hangUp(active[0]), 3U);
  writeFile(folder / "status", "0");
  EXPECT_EQ(system->hangUp(active[0]), 0U);
  EXPECT_THAT(system->activeConnections(), IsEmpty());
  EXPECT_EQ(system->stateOf(active[0]), kDialUpDisconnected);
  EXPECT_EQ(calls(), kDown + kDown);
}

TEST_F(NmcliTest, PumpsWhileTheAnswerTakesItsTime) {
  ::mkfifo((folder / "answer").c_str(), 0600);
  int turns = 0;
  pump = [&] {
    EXPECT_THAT(system->activeConnections(), IsEmpty()) << "what was known before";
    if (++turns == 3) std::ofstream(folder / "answer") << "now\n";
  };
  EXPECT_THAT(system->entries(), ElementsAre("Mobile"));
  EXPECT_GE(turns, 3);
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

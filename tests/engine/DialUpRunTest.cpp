// Backup runs over dial-up: dialling, waiting, trying again, hanging up, and a Stop in the middle.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/RunWorld.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using Session = testing::ScriptedFtpServer::Session;

class DialUpRunTest : public ::testing::Test, protected RunWorld {
 protected:
  DialUpRunTest() {
    settings.AutoDial = 1;
    settings.AutoDialUpConnection = "Office";
    settings.ConnectionDelay = 5;
    ticks = 0;
    server.addFile("/a.bin", "x");
  }
  void connect(bool up = true) {
    dialUp.state = up ? kDialUpConnected : kDialUpDisconnected;
    dialUp.systemUp = up;
    dialUp.busy = false;
  }
  int waits() const { return display.count("Waiting 5 Seconds Before Retrying...\r\n"); }
  int dials() const { return display.count("Dialing the connection Office\r\n"); }
};

TEST_F(DialUpRunTest, DialsUntilAConnectionIsUp) {
  const struct {
    const char* name;
    const char* entry;
    std::function<void()> atDial;
    std::function<bool()> comesUp;  // asked by the pump
    int dials, waits;
    bool fails = false;
  } cases[] = {
      {"at once", "Office", [this] { connect(); }, [] { return false; }, 1, 0},
      {"while the pump runs", "Office", [this] { dialUp.busy = true; }, [this] { return *ticks >= 12'000; },
       3, 3},
      {"after a dial that failed", "Office", nullptr, [this] { return waits() == 2; }, 2, 2, true},
      {"once system and component agree", "Office", [this] { dialUp.state = kDialUpConnected; },
       [this] { return waits() == 1; }, 1, 1},
      {"made by somebody else, no entry being chosen", "", nullptr, [this] { return waits() == 3; }, 3, 3},
      {"up already", "Office", nullptr, [] { return true; }, 0, 0},
  };
  for (const auto& c : cases) {
    display = {};
    dialUp.calls.clear();
    dialUp.onDial = c.atDial;
    dialUp.dialThrows = c.fails;
    settings.AutoDialUpConnection = c.entry;
    ticks = 0;
    connect(c.dials == 0);
    pump = [&] {
      if (c.comesUp()) connect();
    };
    EXPECT_TRUE(run().at(0).completed) << c.name;
    EXPECT_EQ(display.count("Dialing the connection " + std::string(c.entry) + "\r\n"), c.dials) << c.name;
    EXPECT_EQ(display.count("Dialing"), c.dials) << c.name;
    EXPECT_EQ(waits(), c.waits) << c.name;
    EXPECT_GE(*ticks, c.waits * 5000) << c.name;
    EXPECT_FALSE(display.logged("LAN")) << c.name;
    std::vector<std::string> calls;
    for (int i = 0; i < c.dials && *c.entry; ++i) calls.insert(calls.end(), {"hang up", "dial Office"});
    EXPECT_EQ(dialUp.calls, calls) << c.name << ": and AutoHangUp is 0";
  }
}

TEST_F(DialUpRunTest, LogsInAgainAndAgainWithoutADelay) {
  connect();
  int refusals = 3;
  server.on("PASS", [&](Session& s) { refusals-- > 0 ? s.reply("530 Not yet.") : s.answerAsUsual(); });
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(server.count("PASS"), 4U);
  EXPECT_EQ(waits(), 0);
  EXPECT_FALSE(display.logged("LAN"));
}

TEST_F(DialUpRunTest, DialsAgainWhenTheLineDropsBeforeTheLogin) {
  connect();
  server.on("PASS", [this](Session& s) { s.reply("530 Not yet."); });
  pump = [this] {
    if (server.count("PASS") == 1) {
      server.on("PASS", [](Session& s) { s.answerAsUsual(); });
      connect(false);
    }
  };
  dialUp.onDial = [this] {
    pump = nullptr;
    connect();
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(dials(), 1);
}

TEST_F(DialUpRunTest, AStopEndsTheDialling) {
  const struct {
    const char* name;
    bool atDial;  // or in the wait behind it
    int waits;
  } cases[] = {{"at the dial", true, 0}, {"while waiting", false, 1}};
  for (const auto& c : cases) {
    display = {};
    dialUp.calls.clear();
    connect(false);
    dialUp.onDial = [&] {
      dialUp.busy = true;
      if (c.atDial) controller->Stop();
    };
    pump = [&] {
      if (!c.atDial && waits() == 1 && !controller->state().StopRequested) controller->Stop();
    };
    EXPECT_TRUE(run().empty()) << c.name;
    EXPECT_EQ(dials(), 1) << c.name;
    EXPECT_EQ(waits(), c.waits) << c.name;
    EXPECT_THAT(dialUp.calls, ElementsAre("hang up", "dial Office", "abort")) << c.name;
    EXPECT_TRUE(display.logged("Good Bye.")) << c.name;
  }
}

TEST_F(DialUpRunTest, HangsUpAtTheEndWhatSystemOrComponentHave) {
  settings.AutoDial = 0;
  profile.name.clear();
  const struct {
    const char* name;
    std::int32_t state;
    bool systemUp, busy;
    std::int32_t autoHangUp;
    std::vector<std::string> calls;
  } cases[] = {
      {"both", 8192, true, false, 1, {"hang up system", "hang up"}},
      {"the component alone", 8192, false, false, 1, {"hang up system", "hang up"}},
      {"the system alone", 8193, true, false, 1, {"hang up system", "hang up"}},
      {"the system, and a dial in progress", 3, true, true, 1, {"hang up system", "abort", "hang up"}},
      {"none", 8193, false, false, 1, {}},
      {"not asked for", 8192, true, false, 0, {}},
      {"asked for by no 1", 8192, true, false, -1, {}},
  };
  for (const auto& c : cases) {
    display = {};
    dialUp.calls.clear();
    dialUp.state = c.state;
    dialUp.systemUp = c.systemUp;
    dialUp.busy = c.busy;
    settings.AutoHangUp = c.autoHangUp;
    run();
    EXPECT_EQ(dialUp.calls, c.calls) << c.name;
    EXPECT_EQ(display.logged("Disconnecting Dial-up connection.\r\nDisconnected.\r\nFinished all at: "),
              c.autoHangUp == 1)
        << c.name;
  }
}

TEST_F(DialUpRunTest, OnlyAOneDials) {
  for (const std::int32_t autoDial : {0, 2, -1}) {
    display = {};
    settings.AutoDial = autoDial;
    EXPECT_TRUE(run().at(0).completed);
    EXPECT_TRUE(display.logged("through LAN connection."));
    EXPECT_FALSE(display.logged("Dialing"));
  }
}

}  // namespace
}  // namespace quillmoor

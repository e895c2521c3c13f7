// Backup runs over dial-up: dialling, waiting, trying again, hanging up, and a Stop in the middle.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/RunWorld.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
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
    dialUp.states = Script<std::int32_t>(up ? kDialUpConnected : kDialUpDisconnected);
    dialUp.systemUp = Script<bool>(up);
    dialUp.busy = false;
  }
  int waits() const { return display.count("Waiting 5 Seconds Before Retrying...\r\n"); }
  int dials() const { return display.count("Dialing the connection Office\r\n"); }
};

TEST_F(DialUpRunTest, WaitsForAConnectionThatComesUpWhileThePumpRuns) {
  dialUp.onDial = [this] { dialUp.busy = true; };
  pump = [this] {
    if (*ticks >= 12'000 && dialUp.busy) connect();
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(dials(), 3);
  EXPECT_EQ(waits(), 3);
  EXPECT_GE(*ticks, 15'000);
  EXPECT_THAT(dialUp.calls,
              ElementsAre("hang up", "dial Office", "hang up", "dial Office", "hang up", "dial Office"))
      << "and AutoHangUp is 0";
}

TEST_F(DialUpRunTest, DialsAgainAfterADialThatFails) {
  dialUp.dialThrows = true;
  pump = [this] {
    if (waits() == 2) connect();
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(dials(), 2);
}

TEST_F(DialUpRunTest, WaitsOnceMoreUntilSystemAndComponentAgree) {
  dialUp.onDial = [this] { dialUp.states = Script<std::int32_t>(kDialUpConnected); };
  pump = [this] {
    if (waits() == 1) connect();
  };
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_EQ(dials(), 1);
  EXPECT_EQ(waits(), 1);
}

TEST_F(DialUpRunTest, DialsNothingWhileSomethingIsUp) {
  connect();
  EXPECT_TRUE(run().at(0).completed);
  EXPECT_THAT(dialUp.calls, IsEmpty());
  EXPECT_FALSE(display.logged("Dialing"));
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
    dialUp.states = Script<std::int32_t>(c.state);
    dialUp.systemUp = Script<bool>(c.systemUp);
    dialUp.busy = c.busy;
    settings.AutoHangUp = c.autoHangUp;
    run();
    EXPECT_EQ(dialUp.calls, c.calls) << c.name;
    EXPECT_EQ(display.logged("Disconnecting Dial-up connection.\r\nDisconnected.\r\n"), c.autoHangUp == 1)
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

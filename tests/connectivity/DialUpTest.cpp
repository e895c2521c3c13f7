// The dial-up component and the rules for the connections of the whole system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <sstream>

#include "ScriptedRemoteAccess.h"
#include "connectivity/DialUpStates.h"
#include "connectivity/SystemDialUp.h"
#include "connectivity/mRasAPI.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(RasApi, TakesTheFirstConnectionAndNoOther) {
  const struct {
    const char* name;
    std::map<std::uint64_t, std::int32_t> connections;
    bool connected;
    std::uint32_t hangUpError;
    bool reportedError;
    std::vector<std::string> calls;
  } cases[] = {
      {"none", {}, false, 0, false, {}},
      {"one up", {{5, 8192}}, true, 0, false, {"hang up 5"}},
      {"an error at hanging up", {{5, 8192}}, true, 668, true, {"hang up 5"}},
      {"one coming up", {{5, 3}}, false, 668, false, {}},
      {"the second up", {{5, 14}, {6, 8192}}, false, 668, false, {}},
      {"the first up", {{5, 8192}, {6, 8193}}, true, 0, false, {"hang up 5"}},
  };
  for (const auto& c : cases) {
    ScriptedRemoteAccess system;
    system.connections = c.connections;
    system.hangUpError = c.hangUpError;
    EXPECT_EQ(mRasAPI::IsDialUpConnected(system), c.connected) << c.name;
    EXPECT_THAT(system.calls, IsEmpty()) << c.name;
    EXPECT_EQ(mRasAPI::HangUpDialUp(system), c.reportedError) << c.name;
    EXPECT_EQ(system.calls, c.calls) << c.name;
  }
}

TEST(DialUpStates, HaveTheirTexts) {
  EXPECT_EQ(DialUpStateText(17), DialUpStateText(15));
  EXPECT_EQ(DialUpStateText(kDialUpConnected), "Connected");
  EXPECT_EQ(DialUpStateText(kDialUpDisconnected), "Disconnected");
  for (const std::int32_t state : {-1, 22, 4095, 4099, 8194, 9999})
    EXPECT_EQ(DialUpStateText(state), "") << state;
}

class DialUpComponent : public ::testing::Test {
 protected:
  DialUpComponent() { make(); }
  void make() {
    shown.clear();
    auto access = std::make_unique<ScriptedRemoteAccess>();
    system = access.get();
    dialUp = std::make_unique<SystemDialUp>(std::move(access), [this] { return ticks; });
    dialUp->onStateChange = [this](std::int32_t state) {
      EXPECT_EQ(dialUp->State(), state) << "it may be asked by the one it tells";
      shown.push_back(state);
    };
  }
  void reports(std::vector<std::int32_t> states) {
    system->states = std::move(states);
    dialUp->Busy();
  }

  std::int64_t ticks = 0;
  ScriptedRemoteAccess* system;
  std::unique_ptr<SystemDialUp> dialUp;
  std::vector<std::int32_t> shown;
};

TEST_F(DialUpComponent, DoesOneThingAfterTheOther) {
  const struct {
    const char* name;
    const char* steps;  // an order, or states that the system reports
    const char* shown;
    const char* calls;
    bool busy;
  } cases[] = {
      {"nothing", "hang up,abort", "", "", false},
      {"each change told once", "Office,0 1 1 2,14 8192", "8195 0 1 2 14 8192", "dial Office|", false},
      {"hung up", "Office,8192,hang up,hang up", "8195 8192 8198", "dial Office|close|", true},
      {"lost", "Office,8192,8193,hang up,abort", "8195 8192 8193", "dial Office|", false},
      {"asked for again", "Office,2,hang up,Office", "8195 2", "dial Office|", true},
      {"late news of what is ended", "Office,abort,3 8192 8193", "8195 8199 8193", "dial Office|close|",
       false},
      {"another dial", "Home,Office", "8195 8199", "dial Home|close|", true},
      {"the first has ended", "Home,Office,8193", "8195 8199 8193 8195", "dial Home|close|dial Office|",
       true},
      {"a dial in place of a connection", "Home,8192,Office,8193", "8195 8192 8198 8193 8195",
       "dial Home|close|dial Office|", true},
      {"forgotten at an abort", "Home,Office,abort,8193", "8195 8199 8193", "dial Home|close|", false},
  };
  for (const auto& c : cases) {
    make();
    std::istringstream steps(c.steps);
    for (std::string step; std::getline(steps, step, ',');) {
      if (step == "hang up") {
        dialUp->HangUp();
      } else if (step == "abort") {
        dialUp->Abort();
      } else if (step[0] > '9') {
        dialUp->Dial(step);
      } else {
        std::istringstream numbers(step);
        reports({std::istream_iterator<std::int32_t>(numbers), {}});
      }
    }
    std::string told, calls;
    for (const std::int32_t state : shown) told += (told.empty() ? "" : " ") + std::to_string(state);
    for (const std::string& call : system->calls) calls += call + "|";
    EXPECT_EQ(told, c.shown) << c.name;
    EXPECT_EQ(calls, c.calls) << c.name;
    EXPECT_EQ(dialUp->Busy(), c.busy) << c.name;
    EXPECT_EQ(dialUp->State(), shown.empty() ? 8193 : shown.back()) << c.name;
  }
}

TEST_F(DialUpComponent, AbortsADialThatIsStillBeingStarted) {
  system->pump = [this] { dialUp->Abort(); };
  dialUp->Dial("Office");
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
  reports({8193});
  EXPECT_THAT(shown, ElementsAre(8195, 8199, 8193));
}

TEST_F(DialUpComponent, RaisesWhatCannotBeDialled) {
  EXPECT_THROW(dialUp->Dial("office"), std::runtime_error);
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_EQ(dialUp->State(), 8193);
  dialUp->Dial("Office");
  dialUp->Dial("office");  // later, when nobody waits for it
  EXPECT_NO_THROW(reports({8193}));
  EXPECT_FALSE(dialUp->Busy());
}

TEST_F(DialUpComponent, GivesUpADialThatHangs) {
  dialUp->Dial("Office");
  ticks += kDialTimeoutMs;
  EXPECT_EQ(dialUp->State(), 8195);
  ticks += 1;
  EXPECT_EQ(dialUp->State(), 8199);
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
}

}  // namespace
}  // namespace quillmoor

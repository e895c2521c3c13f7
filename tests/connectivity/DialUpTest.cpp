// The dial-up component and the rules for the connections of the whole system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  DialUpComponent() {
    auto access = std::make_unique<ScriptedRemoteAccess>();
    system = access.get();
    dialUp = std::make_unique<SystemDialUp>(std::move(access), [this] { return ticks; });
    dialUp->onStateChange = [this](std::int32_t state) { shown.push_back(state); };
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

TEST_F(DialUpComponent, DialsAndHangsUp) {
  EXPECT_EQ(dialUp->State(), 8193);
  dialUp->Dial("Office");
  EXPECT_TRUE(dialUp->Busy());
  reports({0, 1, 1, 2});
  reports({14, 8192});
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_EQ(dialUp->State(), 8192);
  dialUp->HangUp();
  EXPECT_TRUE(dialUp->Busy());
  dialUp->HangUp();
  reports({8193});
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_THAT(shown, ElementsAre(8195, 0, 1, 2, 14, 8192, 8198, 8193)) << "each change once";
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
}

TEST_F(DialUpComponent, LosesAConnection) {
  dialUp->Dial("Office");
  reports({8192});
  reports({8193});
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_EQ(dialUp->State(), 8193);
  dialUp->HangUp();
  dialUp->Abort();
  EXPECT_THAT(system->calls, ElementsAre("dial Office")) << "there is nothing to end";
}

TEST_F(DialUpComponent, GoesOnWithADialThatIsAskedForAgain) {
  dialUp->Dial("Office");
  reports({2});
  dialUp->HangUp();
  dialUp->Dial("Office");
  EXPECT_EQ(dialUp->State(), 2);
  EXPECT_THAT(system->calls, ElementsAre("dial Office"));
}

TEST_F(DialUpComponent, AbortsADial) {
  dialUp->Dial("Office");
  dialUp->Abort();
  EXPECT_TRUE(dialUp->Busy());
  reports({3, 8192, 8193});
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_THAT(shown, ElementsAre(8195, 8199, 8193)) << "late news of what is being ended is none";
}

TEST_F(DialUpComponent, AbortsADialThatIsStillBeingStarted) {
  system->pump = [this] { dialUp->Abort(); };
  dialUp->Dial("Office");
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
  reports({8193});
  EXPECT_THAT(shown, ElementsAre(8195, 8199, 8193));
}

TEST_F(DialUpComponent, DialsWhenWhatWasThereHasBeenEnded) {
  const struct {
    const char* name;
    bool connected;
    std::int32_t closing;
  } cases[] = {{"another dial", false, 8199}, {"a connection", true, 8198}};
  for (const auto& c : cases) {
    system->calls.clear();
    shown.clear();
    dialUp->Dial("Home");
    if (c.connected) reports({8192});
    dialUp->Dial("Office");
    EXPECT_EQ(dialUp->State(), c.closing) << c.name;
    EXPECT_THAT(system->calls, ElementsAre("dial Home", "close")) << c.name;
    reports({8193});
    EXPECT_THAT(system->calls, ElementsAre("dial Home", "close", "dial Office")) << c.name;
    EXPECT_EQ(dialUp->State(), 8195) << c.name;
    reports({8193});
  }
}

TEST_F(DialUpComponent, ForgetsTheNextDialAtAnAbort) {
  dialUp->Dial("Home");
  dialUp->Dial("Office");
  dialUp->Abort();
  reports({8193});
  EXPECT_THAT(system->calls, ElementsAre("dial Home", "close"));
  EXPECT_FALSE(dialUp->Busy());
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
  ticks += kDialPatienceMs;
  EXPECT_EQ(dialUp->State(), 8195);
  ticks += 1;
  EXPECT_EQ(dialUp->State(), 8199);
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
}

TEST_F(DialUpComponent, MayBeAskedByTheOneItTells) {
  dialUp->onStateChange = [this](std::int32_t state) {
    EXPECT_EQ(dialUp->State(), state);
    shown.push_back(state);
  };
  dialUp->Dial("Office");
  reports({1, 2, 8192});
  EXPECT_THAT(shown, ElementsAre(8195, 1, 2, 8192));
}

}  // namespace
}  // namespace quillmoor

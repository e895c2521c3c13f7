// The dial-up component, and the rules for the connections and networks of the whole system.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "connectivity/DialUpStates.h"
#include "connectivity/SystemDialUp.h"
#include "connectivity/mNetworkConnection.h"
#include "connectivity/mRasAPI.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;

TEST(NetworkConnection, GoesByTheKindsThatAreUp) {
  const struct {
    bool alive;
    std::uint32_t kinds;
    bool lan;
  } cases[] = {{true, 1, true}, {true, 2, false}, {true, 3, false}, {true, 0, false}, {false, 1, false}};
  for (const auto& c : cases) {
    const NetworkSource source = [&](std::uint32_t& kinds) {
      EXPECT_EQ(std::exchange(kinds, c.kinds), 0U);
      return c.alive;
    };
    EXPECT_EQ(IsNetworkAvailable(source), c.alive) << c.kinds;
    EXPECT_EQ(IsLanConnected(source), c.lan) << c.kinds;
  }
}

/// A system with the phonebook entries "Office" and "Home", which does what a test says.
struct ScriptedRemoteAccess final : RemoteAccess {
  std::vector<std::string> calls;
  std::vector<std::int32_t> states;                   // that takeStates returns next
  std::map<std::uint64_t, std::int32_t> connections;  // by handle; each with its state
  std::uint32_t hangUpError = 0;
  Pump pump;  // called by dial

  std::vector<std::string> entries() override { return {"Office", "Home"}; }
  void dial(const std::string& entry) override {
    if (pump) pump();
    calls.push_back("dial " + entry);
    if (entry != "Office" && entry != "Home") throw std::runtime_error("no such entry");
  }
  void close() override { calls.push_back("close"); }
  std::vector<std::int32_t> takeStates() override { return std::exchange(states, {}); }
  std::vector<ActiveConnection> activeConnections() override {
    std::vector<ActiveConnection> active;
    for (const auto& [handle, state] : connections) active.push_back({handle, "", "", "", ""});
    return active;
  }
  std::int32_t stateOf(const ActiveConnection& one) override { return connections.at(one.handle); }
  std::uint32_t hangUp(const ActiveConnection& one) override {
    calls.push_back("hang up " + std::to_string(one.handle));
    return hangUpError;
  }
};

TEST(RasApi, UsesTheFirstConnectionOnly) {
  const struct {
    const char* name;
    std::map<std::uint64_t, std::int32_t> connections;
    bool connected;
  } cases[] = {{"none", {}, false},
               {"one coming up", {{5, 3}}, false},
               {"the second up", {{5, 14}, {6, 8192}}, false},
               {"the first up", {{5, 8192}, {6, 8193}}, true}};
  for (const auto& c : cases) {
    for (const std::uint32_t error : {0, 668}) {
      ScriptedRemoteAccess system;
      system.connections = c.connections;
      system.hangUpError = error;
      EXPECT_EQ(mRasAPI::IsDialUpConnected(system), c.connected) << c.name;
      EXPECT_EQ(mRasAPI::HangUpDialUp(system), c.connected && error != 0) << c.name;
      EXPECT_EQ(system.calls, std::vector<std::string>(c.connected ? 1 : 0, "hang up 5")) << c.name;
    }
  }
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
      EXPECT_EQ(dialUp->State(), state) << "asked from the handler";
      shown += std::to_string(state) + " ";
    };
  }
  void reports(std::vector<std::int32_t> states) {
    system->states = std::move(states);
    dialUp->Busy();
  }

  std::int64_t ticks = 0;
  ScriptedRemoteAccess* system;
  std::unique_ptr<SystemDialUp> dialUp;
  std::string shown;
};

TEST_F(DialUpComponent, DoesOneThingAfterTheOther) {
  const struct {
    const char* name;
    const char* steps;  // an order, or a state that the system reports
    const char* shown;
    std::vector<std::string> calls;
    bool busy;
  } cases[] = {
      {"nothing", "hang-up abort", "", {}, false},
      {"each change shown once", "Office 0 1 1 2 14 8192", "8195 0 1 2 14 8192 ", {"dial Office"}, false},
      {"hung up", "Office 8192 hang-up hang-up", "8195 8192 8198 ", {"dial Office", "close"}, true},
      {"lost", "Office 8192 8193 hang-up abort", "8195 8192 8193 ", {"dial Office"}, false},
      {"asked for again", "Office 2 hang-up Office", "8195 2 ", {"dial Office"}, true},
      {"late states", "Office abort 3 8192 8193", "8195 8199 8193 ", {"dial Office", "close"}, false},
      {"another dial", "Home Office", "8195 8199 ", {"dial Home", "close"}, true},
      {"the first has ended",
       "Home Office 8193",
       "8195 8199 8193 8195 ",
       {"dial Home", "close", "dial Office"},
       true},
      {"a dial in place of a connection",
       "Home 8192 Office 8193",
       "8195 8192 8198 8193 8195 ",
       {"dial Home", "close", "dial Office"},
       true},
      {"forgotten at an abort", "Home Office abort 8193", "8195 8199 8193 ", {"dial Home", "close"}, false},
  };
  for (const auto& c : cases) {
    make();
    std::istringstream steps(c.steps);
    for (std::string step; steps >> step;) {
      if (step == "hang-up") {
        dialUp->HangUp();
      } else if (step == "abort") {
        dialUp->Abort();
      } else if (step[0] > '9') {
        dialUp->Dial(step);
      } else {
        reports({std::stoi(step)});
      }
    }
    EXPECT_EQ(shown, c.shown) << c.name;
    EXPECT_EQ(system->calls, c.calls) << c.name;
    EXPECT_EQ(dialUp->Busy(), c.busy) << c.name;
  }
}

TEST_F(DialUpComponent, AbortsADialThatIsStillBeingStarted) {
  system->pump = [this] { dialUp->Abort(); };
  dialUp->Dial("Office");
  EXPECT_THAT(system->calls, ElementsAre("dial Office", "close"));
  reports({8193});
  EXPECT_EQ(shown, "8195 8199 8193 ");
}

TEST_F(DialUpComponent, RaisesWhatCannotBeDialled) {
  EXPECT_THROW(dialUp->Dial("office"), std::runtime_error);
  EXPECT_FALSE(dialUp->Busy());
  EXPECT_EQ(dialUp->State(), 8193);
  dialUp->Dial("Office");
  dialUp->Dial("office");  // is dialled later, when there is no caller
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

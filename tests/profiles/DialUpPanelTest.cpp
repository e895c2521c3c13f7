#include "profiles/DialUpPanel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "connectivity/ScriptedDialUp.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DialUpPanelTest : public ::testing::Test {
 protected:
  testing::OwnRegistry registry;
  ApplicationSettings settings;
  testing::ScriptedDialUp dialUp;
  DialUpPanel panel{dialUp, settings};
};

TEST_F(DialUpPanelTest, ShowsHowTheConnectionStands) {
  const struct {
    const char* name;
    bool busy;
    std::int32_t state;
    bool systemUp;
    const char* label;  // as it was where it says "before"
    bool dial, hangUp;
    int asked;
  } cases[] = {
      {"dialling", true, 2, false, "before", false, true, 1},
      {"dialling beside a connection", true, 2, true, "before", false, true, 1},
      {"connected here", false, 8192, false, "Connected", false, true, 1},
      {"connected elsewhere", false, 8193, true, "Connected", false, true, 2},
      {"not connected", false, 8193, false, "Not Connected", true, false, 2},
      {"in no state of a connection", false, 3, false, "Not Connected", true, false, 3},
  };
  for (const auto& c : cases) {
    panel.lblRasStatus = "before";
    panel.cmdDialEnabled = !c.dial;
    panel.cmdHangUpEnabled = !c.hangUp;
    dialUp.busy = c.busy;
    dialUp.state = c.state;
    dialUp.systemUp = c.systemUp;
    dialUp.systemAsked = 0;
    panel.RefreshStatus();
    EXPECT_EQ(panel.lblRasStatus, c.label) << c.name;
    EXPECT_EQ(panel.cmdDialEnabled, c.dial) << c.name;
    EXPECT_EQ(panel.cmdHangUpEnabled, c.hangUp) << c.name;
    EXPECT_EQ(dialUp.systemAsked, c.asked) << c.name << ": once more at the end of every tick";
  }
}

TEST_F(DialUpPanelTest, TellsEveryStateAndNothingOfAnUnknownOne) {
  dialUp.onStateChange(8195);
  EXPECT_EQ(panel.lblRasStatus, "Starting a connection");
  dialUp.onStateChange(9999);
  EXPECT_EQ(panel.lblRasStatus, "");
}

TEST_F(DialUpPanelTest, SelectsTheStoredEntryByItsExactName) {
  const struct {
    const char* stored;
    std::vector<std::string> entries;
    std::optional<std::size_t> selected;
  } cases[] = {{"Office", {"Home", "Office"}, 1},
               {"Office", {"office"}, std::nullopt},
               {"Office", {}, std::nullopt},
               {"", {"Home"}, std::nullopt}};
  for (const auto& c : cases) {
    WriteSetting("AutoDialUpConnection", c.stored);
    settings.AutoDialUpConnection = "of before";
    dialUp.entries = c.entries;
    const auto list = panel.LoadEntries();
    EXPECT_EQ(list.names, c.entries);
    EXPECT_EQ(list.selected, c.selected) << c.stored;
    EXPECT_EQ(settings.AutoDialUpConnection, c.stored) << "what is not in the phonebook stays chosen";
  }
}

TEST_F(DialUpPanelTest, StoresWhatIsChosenAndNotThatNothingIs) {
  panel.ChooseEntry("Home");
  panel.ChooseEntry("");
  EXPECT_EQ(settings.AutoDialUpConnection + ReadSetting("AutoDialUpConnection", "?"), "HomeHome");
}

TEST_F(DialUpPanelTest, DialsTheChosenEntry) {
  panel.Dial();
  EXPECT_THAT(dialUp.calls, IsEmpty()) << "none is chosen";
  EXPECT_TRUE(panel.cmdDialEnabled);
  settings.AutoDialUpConnection = "Home";
  dialUp.dialThrows = true;
  panel.Dial();
  EXPECT_TRUE(panel.cmdDialEnabled);
  EXPECT_FALSE(panel.cmdHangUpEnabled);
  dialUp.dialThrows = false;
  panel.Dial();
  EXPECT_FALSE(panel.cmdDialEnabled);
  EXPECT_TRUE(panel.cmdHangUpEnabled);
  EXPECT_THAT(dialUp.calls, ElementsAre("dial Home", "dial Home"));
}

TEST_F(DialUpPanelTest, EndsWhatThereIs) {
  dialUp.systemUp = true;  // made elsewhere: not to be ended by this button
  panel.HangUp();
  EXPECT_THAT(dialUp.calls, IsEmpty());
  dialUp.state = kDialUpConnected;
  panel.HangUp();
  dialUp.busy = true;
  panel.HangUp();
  EXPECT_THAT(dialUp.calls, ElementsAre("hang up", "abort"));
}

}  // namespace
}  // namespace quillmoor

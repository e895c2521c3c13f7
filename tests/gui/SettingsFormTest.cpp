// The settings form under the user's hands: every control reaches its rule, every label says what is so.
#include <gmock/gmock.h>
#include <wx/dateevt.h>

#include "FormFixture.h"
#include "connectivity/ScriptedDialUp.h"
#include "profiles/ScheduleText.h"
#include "profiles/frmSettings.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class SettingsFormTest : public FormTest {
  std::unique_ptr<testing::ScriptedDialUp> dialUp_ = std::make_unique<testing::ScriptedDialUp>();

 protected:
  SettingsFormTest() {
    line.entries = {"Office", "Home & Co"};
    line.onDial = [this] {
      line.busy = true;
      line.onStateChange(5);
    };
  }
  void open() {
    s = new frmSettings(frame, {settings,
                                network,
                                [] {
                                  return *MakeLocalDateTime({2026, 11, 24, 15, 5, 9});
                                },
                                {0, 0, 1, 0, 0, 1, 0, 0},
                                std::move(dialUp_),
                                ownPrompts()});
    present(s);
  }
  void setTime(int hour, int minute) {
    s->dtpStartTime->SetTime(hour, minute, 0);
    wxDateEvent event(s->dtpStartTime, s->dtpStartTime->GetValue(), wxEVT_TIME_CHANGED);
    s->dtpStartTime->ProcessWindowEvent(event);
  }
  void move(int position) {
    s->SliderlPriority->SetValue(position);
    wxScrollEvent event(wxEVT_SCROLL_CHANGED, s->SliderlPriority->GetId(), position);
    s->SliderlPriority->ProcessWindowEvent(event);
  }
  void choose(int entry) {
    s->cboConnections->SetSelection(entry);
    command(s->cboConnections, wxEVT_CHOICE);
  }

  testing::ScriptedDialUp& line = *dialUp_;  // the form's own
  std::uint32_t kinds = kNetworkLan;
  NetworkSource network = [this](std::uint32_t& found) {
    found = kinds;
    return true;
  };
  frmSettings* s = nullptr;
};

TEST_F(SettingsFormTest, StoresWhatEveryControlSays) {
  settings.ProcessPriority = 64;  // so that the slider can be moved to normal
  WriteSetting("AsciiExts", ".b|.a");
  bool reset = false;
  open();
  s->onResetLayout = [&] { reset = true; };
  const std::vector<ControlRow> rows = {
      {s->dtpStartTime, [&] { setTime(3, 7); }, "SchedualHour", "3"},
      {s->dtpStartTime, [&] { setTime(23, 59); }, "SchedualMinute", "59"},
      {s->chkDay[1], [&] { tick(s->chkDay[1], true); }, "SchedualSunday", "1"},
      {s->chkDay[7], [&] { tick(s->chkDay[7], true); }, "SchedualSaturday", "1"},
      {s->chkDay[7], [&] { tick(s->chkDay[7], false); }, "SchedualSaturday", "0"},
      {s->txtRetryCount, [&] { s->txtRetryCount->SetValue("12 times"); }, "FtpRetryCount", "12"},
      {s->txtConnectionDelay, [&] { s->txtConnectionDelay->SetValue("90"); }, "ConnectionDelay", "90"},
      {s->txtLoginAttempts, [&] { s->txtLoginAttempts->SetValue("3"); }, "LoginAttempts", "3"},
      {s->cboConnections, [&] { choose(1); }, "AutoDialUpConnection", "Home & Co"},
      {s->chkAutoDial, [&] { tick(s->chkAutoDial, false); }, "AutoDial", "0"},
      {s->chkAutoHangUp, [&] { tick(s->chkAutoHangUp, false); }, "AutoHangUp", "0"},
      {s->chkAutoStartUp, [&] { tick(s->chkAutoStartUp, false); }, "AutoStartUp", "0"},
      {s->chkAutoStartUp, [&] { tick(s->chkAutoStartUp, true); }, "AutoStartUp", "1"},
      {s->SliderlPriority, [&] { move(3); }, "ProcessPriority", "32"},
      {s->txtExtension, [&] { s->txtExtension->SetValue("TXT"); }, "AsciiExts", ".b|.a"},
      {s->cmdAddExtension, [&] { press(s->cmdAddExtension); }, "AsciiExts", ".b|.a|.txt"},
      {s->txtExtension,
       [&] {
         s->txtExtension->SetValue("css");
         command(s->txtExtension, wxEVT_TEXT_ENTER);
       },
       "AsciiExts", ".b|.a|.txt|.css"},
      {s->lstExtensions,
       [&] {
         s->lstExtensions->SetSelection(0);
         command(s->lstExtensions, wxEVT_LISTBOX);
         press(s->cmdRemoveExtension);
       },
       "AsciiExts", ".a|.txt|.css"},
      {s->cmdRestoreExtensions, [&] { press(s->cmdRestoreExtensions); }, "AsciiExts",
       kDefaultAsciiExtensions},
      {s->cmdResetLayout, [&] { press(s->cmdResetLayout); }, "PaneLayout", "nothing"},
      {s->cmdDial, [&] { press(s->cmdDial); }, "AutoDialUpConnection", "Home & Co"},
      {s->cmdHangUp, [&] { press(s->cmdHangUp); }, "AutoDialUpConnection", "Home & Co"},
  };
  expectEachDoesAsSaid(
      rows, {"cmdRemoveExtension", "chkMonday", "chkTuesday", "chkWednesday", "chkThursday", "chkFriday"});
  EXPECT_TRUE(reset);
  EXPECT_EQ(s->lstExtensions->GetCount(), 41U);
  EXPECT_THAT(line.calls, ElementsAre("dial Home & Co", "abort"));
  EXPECT_EQ(s->txtRetryCount->GetValue(), "12 times") << "left as typed";
  EXPECT_EQ(text(s->lblPriority), "Normal");
  EXPECT_TRUE(prompts.messages.empty());
}

TEST_F(SettingsFormTest, ShowsTheSettingsInForce) {
  settings.ScheduleHour = 4;
  settings.ScheduleMinute = 56;
  settings.ScheduleDays = {0, 1, 0, 0, 0, 0, 0, 1};
  settings.AutoDial = settings.AutoStartUp = 0;
  settings.FtpRetryCount = 7;
  settings.ConnectionDelay = 8;
  settings.ProcessPriority = 12;
  WriteSetting("AutoDialUpConnection", "Home & Co");
  WriteSetting("AsciiExts", ".b|.a");
  open();
  int hour = 0, minute = 0, second = 0;
  ASSERT_TRUE(s->dtpStartTime->GetTime(&hour, &minute, &second));
  EXPECT_EQ(hour * 100 + minute, 456);
  for (std::size_t day = 1; day <= 7; ++day) {
    EXPECT_EQ(s->chkDay[day]->GetValue(), day == 1 || day == 7) << day;
    EXPECT_EQ(s->chkDay[day]->GetLabel(), kWeekdayNames[day]);
  }
  EXPECT_FALSE(s->chkAutoDial->GetValue() || s->chkAutoStartUp->GetValue());
  EXPECT_TRUE(s->chkAutoHangUp->GetValue());
  EXPECT_EQ(s->txtRetryCount->GetValue() + s->txtConnectionDelay->GetValue(), "78");
  EXPECT_EQ(s->cboConnections->GetStringSelection(), "Home & Co");
  EXPECT_EQ(text(s->lblPriority), "Unknown:12");
  EXPECT_EQ(s->SliderlPriority->GetValue(), 3) << "not at a choice that nobody has made";
  EXPECT_EQ(s->lstExtensions->GetCount(), 2u);
  EXPECT_FALSE(s->cmdRemoveExtension->IsEnabled());
  s->showAutostartProblem("no right & reason");
  EXPECT_EQ(text(s->lblAutoStartNote), "Could not be set:\nno right & reason");
  tick(s->chkAutoStartUp, true);
  EXPECT_FALSE(s->lblAutoStartNote->IsShown()) << "now it could";
}

TEST_F(SettingsFormTest, KeepsItsLabelsAndButtonsUpToDate) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  const auto shows = [&](const wxStaticText* label, const char* wanted) {
    return waitUntil([&] { return text(label) == wanted; });
  };
  EXPECT_TRUE(shows(s->lblTimeNow, "03:05:09 PM"));
  EXPECT_TRUE(shows(s->lblLANstatus, "Connected"));
  kinds = kNetworkLan | kNetworkWan;
  EXPECT_TRUE(shows(s->lblLANstatus, "Not Connected"));
  EXPECT_TRUE(shows(s->lblSchedule, "In force: Every Monday and Thursday at 12:30"));
  setTime(1, 2);
  EXPECT_TRUE(shows(s->lblSchedule, "In force: Every Monday and Thursday at 01:02")) << "at once";
  EXPECT_TRUE(shows(s->lblRasStatus, "Not Connected"));
  EXPECT_TRUE(s->cmdDial->IsEnabled());
  EXPECT_FALSE(s->cmdHangUp->IsEnabled());
  press(s->cmdDial);
  EXPECT_EQ(text(s->lblRasStatus), "Authenticate");
  EXPECT_FALSE(s->cmdDial->IsEnabled());
  EXPECT_TRUE(s->cmdHangUp->IsEnabled());
  line.busy = false;
  line.state = kDialUpConnected;
  EXPECT_TRUE(shows(s->lblRasStatus, "Connected"));
  press(s->cmdHangUp);
  EXPECT_THAT(line.calls, ElementsAre("dial Office", "hang up"));
}

TEST_F(SettingsFormTest, OffersTheConnectionsThatTheSystemNamesLater) {
  WriteSetting("AutoDialUpConnection", "Home & Co");
  line.entries.clear();
  open();
  EXPECT_EQ(s->cboConnections->GetCount(), 0u);
  line.entries = {"Office", "home & co", "Home & Co"};
  EXPECT_TRUE(waitUntil([&] { return s->cboConnections->GetCount() != 0; })) << "with nobody's doing";
  s->wake();
  EXPECT_EQ(s->cboConnections->GetCount(), 3u) << "each once";
  EXPECT_EQ(s->cboConnections->GetStringSelection(), "Home & Co");
}

TEST_F(SettingsFormTest, StoresWhatIsEnteredWithTheKeys) {
  settings.ProcessPriority = 16384;
  settings.ScheduleHour = 4;
  open();
  focus(s->chkDay[3]);
  hand.Char(WXK_SPACE);
  EXPECT_TRUE(waitUntil([] { return ReadSetting("SchedualTusday", "") == "1"; }));
  focus(s->SliderlPriority);
  hand.Char(WXK_RIGHT);
  EXPECT_TRUE(waitUntil([] { return ReadSetting("ProcessPriority", "") == "32"; }))
      << s->SliderlPriority->GetValue();
  hand.Char('S', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([&] { return hasFocus(s->dtpStartTime); })) << "the label's key leads there";
  const auto type = [&](int digit, const std::int32_t& value, std::chrono::seconds patience = kPatience) {
    hand.Char(digit);
    hand.Char(WXK_RIGHT);
    return waitUntil([&] { return value == digit - '0'; }, patience);
  };
  // Not every toolkit has a part of the time selected from the beginning.
  EXPECT_TRUE(type('3', settings.ScheduleHour, std::chrono::seconds(10)) || type('3', settings.ScheduleHour));
  EXPECT_TRUE(type('5', settings.ScheduleMinute));
  EXPECT_EQ(ReadSetting("SchedualHour", "") + ReadSetting("SchedualMinute", ""), "35");
  hand.Char('T', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([&] { return hasFocus(s->txtRetryCount); })) << "and another's leads out again";
  hand.Char('F', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([] { return ReadSetting("AutoHangUp", "") == "0"; })) << "a box of another group";
}

TEST_F(SettingsFormTest, AsksTheLineThatItDialsAlsoWhileItIsNotSeen) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  press(s->cmdDial);
  form->Hide();
  line.busyAsked = 0;
  ASSERT_TRUE(waitUntil([&] { return line.busyAsked > 5; }));
  EXPECT_EQ(s->tmrOnlineStatus.GetInterval(), frmSettings::kTmrOnlineStatus);
  line.busy = false;
  EXPECT_TRUE(waitUntil([&] { return s->tmrOnlineStatus.GetInterval() > frmSettings::kTmrOnlineStatus; }))
      << "it never rests";
  EXPECT_TRUE(waitUntil([&] { return s->tmrTimeNow.GetInterval() > frmSettings::kTmrTimeNow; }));
}

TEST_F(SettingsFormTest, SavesWhatItShowsWhenItIsUnloaded) {
  settings.ScheduleHour = 4;
  settings.ScheduleDays[3] = 1;
  open();
  WriteSetting("AsciiExts", "somebody else's");
  s->unload();
  EXPECT_EQ(ReadSetting("SchedualHour", "") + ReadSetting("SchedualMinute", "") +
                ReadSetting("SchedualTusday", "") + ReadSetting("SchedualMonday", "") +
                ReadSetting("ProcessPriority", ""),
            "4301032");
  EXPECT_EQ(ReadSetting("AsciiExts", ""), kDefaultAsciiExtensions);
  EXPECT_FALSE(s->tmrOnlineStatus.IsRunning() || s->tmrLANstatus.IsRunning() || s->tmrTimeNow.IsRunning());
  registry.refuseWrites();
  tick(s->chkAutoStartUp, true);
  EXPECT_TRUE(s->lblAutoStartNote->IsShown());
  s->unload();
  EXPECT_EQ(prompts.messages.size(), 1u) << "whoever leaves has been told";
}

TEST_F(SettingsFormTest, LeavesItsValuesAloneWhenTheWheelScrollsTheForm) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  resize(wxSize(500, 200));
  for (wxWindow* const input : inputs()) {
    if (input == s->lstExtensions) continue;
    s->Scroll(0, 0);
    wxMouseEvent event(wxEVT_MOUSEWHEEL);
    event.SetEventObject(input);
    event.m_wheelRotation = -240;
    event.m_wheelDelta = 120;
    event.m_linesPerAction = 3;
    input->ProcessWindowEvent(event);
    EXPECT_GT(s->GetViewStart().y, 0) << input->GetName();
    EXPECT_FALSE(event.GetSkipped()) << input->GetName() << " would take it, too";
  }
}

TEST_F(SettingsFormTest, StaysScrolledAsItIsWhenTheWindowIsReturnedTo) {
  open();
  resize(wxSize(500, 200));
  const auto tellOfFocus = [](wxWindow* control) {
    wxChildFocusEvent event(control);
    control->ProcessWindowEvent(event);
  };
  tellOfFocus(s->chkDay[1]);
  s->Scroll(0, 25);
  const wxPoint view = s->GetViewStart();
  ASSERT_GT(view.y, 20);
  tellOfFocus(s->chkDay[1]);
  EXPECT_EQ(s->GetViewStart(), view) << "what is about to be clicked moves away";
  tellOfFocus(s->chkDay[2]);
  EXPECT_LT(s->GetViewStart().y, 20);
}

TEST_F(SettingsFormTest, LeadsTheTabKeyThroughEveryControlInReadingOrder) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  s->lstExtensions->SetSelection(0);
  command(s->lstExtensions, wxEVT_LISTBOX);
  EXPECT_THAT(tabOrder(s->dtpStartTime),
              ElementsAre("dtpStartTime", "chkSunday", "chkMonday", "chkTuesday", "chkWednesday",
                          "chkThursday", "chkFriday", "chkSaturday", "txtRetryCount", "txtConnectionDelay",
                          "txtLoginAttempts", "cboConnections", "chkAutoDial", "chkAutoHangUp", "cmdDial",
                          "lstExtensions", "txtExtension", "cmdAddExtension", "cmdRemoveExtension",
                          "cmdRestoreExtensions", "chkAutoStartUp", "SliderlPriority", "cmdResetLayout"));
}

TEST_F(SettingsFormTest, ScrollsInASmallPaneAndCutsNothing) {
  std::string extensions = ".a";
  for (int i = 0; i < 2000; ++i) extensions += "|." + std::string(60, 'x') + std::to_string(i);
  WriteSetting("AsciiExts", extensions);
  open();
  std::string problem;
  for (int i = 0; i < 200; ++i) problem += "no right ";
  problem += "\n" + std::string(300, 'x') + "/" + std::string(300, 'y');
  s->showAutostartProblem(problem);
  expectRoom(form->FromDIP(wxSize(780, 520)));
  expectRoom(form->FromDIP(wxSize(420, 240)));
  expectRoom(wxSize(300, 200));
}

}  // namespace
}  // namespace quillmoor

// The settings form: each control is wired to its setting, each label shows its state.
#include <gmock/gmock.h>

#include "FormFixture.h"
#include "connectivity/ScriptedDialUp.h"
#include "profiles/frmSettings.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;

class SettingsFormTest : public FormTest {
 protected:
  void open() {
    auto dialUp = std::make_unique<testing::ScriptedDialUp>();
    line = dialUp.get();
    line->entries = entries;
    line->onDial = [this] {
      line->busy = true;
      line->onStateChange(5);
    };
    const auto now = [] { return *MakeLocalDateTime({2026, 11, 24, 15, 5, 9}); };
    s = new frmSettings(frame, {settings, network, now, {0, 0, 1, 0, 0, 1}, std::move(dialUp), ownPrompts()});
    present(s);
  }
  bool shows(const wxStaticText* label, const char* wanted) {
    return waitUntil([&] { return text(label) == wanted; });
  }

  std::vector<std::string> entries = {"Office", "Home & Co"};
  testing::ScriptedDialUp* line = nullptr;
  std::uint32_t kinds = kNetworkLan;
  NetworkSource network = [this](std::uint32_t& found) {
    found = kinds;
    return true;
  };
  frmSettings* s = nullptr;
};

TEST_F(SettingsFormTest, StoresWhatIsEnteredAndShowsItAgain) {
  settings.AutoDial = settings.AutoHangUp = settings.AutoStartUp = 0;
  WriteSetting("AsciiExts", ".b|.a");
  open();
  bool reset = false;
  s->onResetLayout = [&] { reset = true; };
  const std::vector<ControlRow> rows = {
      {s->dtpStartTime, "03:07", "SchedualHour", "3"},
      {s->dtpStartTime, "23:59", "SchedualMinute", "59"},
      {s->chkDay[1], "1", "SchedualSunday", "1"},
      {s->chkDay[7], "1", "SchedualSaturday", "1"},
      {s->txtRetryCount, "12", "FtpRetryCount", "12"},
      {s->txtConnectionDelay, "90", "ConnectionDelay", "90"},
      {s->txtLoginAttempts, "3", "LoginAttempts", "3"},
      {s->cboConnections, "Home & Co", "AutoDialUpConnection", "Home & Co"},
      {s->chkAutoDial, "1", "AutoDial", "1"},
      {s->chkAutoHangUp, "1", "AutoHangUp", "1"},
      {s->chkAutoStartUp, "1", "AutoStartUp", "1"},
      {s->txtExtension, "TXT", "AsciiExts", ".b|.a"},
      {s->cmdAddExtension, "", "AsciiExts", ".b|.a|.txt"},
      {s->lstExtensions, ".b", "AsciiExts", ".b|.a|.txt"},
      {s->cmdRemoveExtension, "", "AsciiExts", ".a|.txt"},
      {s->cmdRestoreExtensions, "", "AsciiExts", kDefaultAsciiExtensions},
      {s->cmdResetLayout, "", "PaneLayout", "nothing"},
      {s->cmdDial, "", "AutoDial", "1"},
      {s->cmdHangUp, "", "AutoHangUp", "1"},
  };
  expectStored(rows,
               {"SliderlPriority", "chkMonday", "chkTuesday", "chkWednesday", "chkThursday", "chkFriday"});
  EXPECT_TRUE(reset);
  EXPECT_THAT(line->calls, ElementsAre("dial Home & Co", "abort"));
  use(s->txtExtension, "css2");
  command(s->txtExtension, wxEVT_TEXT_ENTER);
  EXPECT_EQ(s->lstExtensions->GetStringSelection(), ".css2");
  use(s->txtExtension, "");
  WriteSetting("AsciiExts", "somebody else's");
  s->unload();
  EXPECT_EQ(ReadSetting("AsciiExts", ""), kDefaultAsciiExtensions + std::string("|.css2"));
  EXPECT_FALSE(s->tmrOnlineStatus.IsRunning() || s->tmrLANstatus.IsRunning() || s->tmrTimeNow.IsRunning());
  EXPECT_TRUE(prompts.messages.empty());
  const auto before = shown();
  settings = LoadApplicationSettings();
  open();
  EXPECT_EQ(shown(), before);
}

TEST_F(SettingsFormTest, ShowsUnknownPrioritiesAndNotesOnWrongInput) {
  settings.ProcessPriority = 12;
  settings.AutoStartUp = 0;
  open();
  EXPECT_EQ(text(s->lblPriority), "Unknown:12");
  EXPECT_EQ(s->SliderlPriority->GetValue(), 3) << "not moved to a priority that nobody has chosen";
  s->showAutostartProblem("no right & reason");
  EXPECT_EQ(text(s->lblAutoStartNote), "Could not be set:\nno right & reason");
  use(s->chkAutoStartUp, "1");
  EXPECT_FALSE(s->lblAutoStartNote->IsShown());
  registry.refuseWrites();
  use(s->chkAutoStartUp, "0");
  EXPECT_TRUE(s->lblAutoStartNote->IsShown());
  for (wxTextCtrl* const box : {s->txtRetryCount, s->txtConnectionDelay, s->txtLoginAttempts}) use(box, "x");
  for (const auto* note : {s->lblRetryCountNote, s->lblConnectionDelayNote, s->lblLoginAttemptsNote})
    EXPECT_TRUE(note->IsShown());
}

TEST_F(SettingsFormTest, KeepsItsLabelsAndButtonsUpToDate) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  EXPECT_TRUE(shows(s->lblTimeNow, "03:05:09 PM"));
  EXPECT_TRUE(shows(s->lblLANstatus, "Connected"));
  kinds = kNetworkLan | kNetworkWan;
  EXPECT_TRUE(shows(s->lblLANstatus, "Not Connected"));
  EXPECT_TRUE(shows(s->lblSchedule, "In force: Every Monday and Thursday at 12:30"));
  use(s->dtpStartTime, "01:02");
  EXPECT_TRUE(shows(s->lblSchedule, "In force: Every Monday and Thursday at 01:02")) << "at once";
  EXPECT_TRUE(shows(s->lblRasStatus, "Not Connected"));
  EXPECT_FALSE(s->cmdHangUp->IsEnabled());
  use(s->cmdDial);
  EXPECT_EQ(text(s->lblRasStatus), "Authenticate");
  EXPECT_FALSE(s->cmdDial->IsEnabled());
}

TEST_F(SettingsFormTest, OffersTheConnectionsThatTheSystemNamesLater) {
  WriteSetting("AutoDialUpConnection", "Home & Co");
  entries.clear();
  open();
  EXPECT_EQ(s->cboConnections->GetCount(), 0u);
  line->entries = {"Office", "home & co", "Home & Co"};
  EXPECT_TRUE(waitUntil([&] { return s->cboConnections->GetCount() != 0; })) << "none appear";
  s->wake();
  EXPECT_EQ(s->cboConnections->GetCount(), 3u) << "each once";
  EXPECT_EQ(s->cboConnections->GetStringSelection(), "Home & Co");
}

TEST_F(SettingsFormTest, StoresWhatIsEnteredWithTheKeys) {
  settings.ProcessPriority = 16384;
  open();
  focus(s->SliderlPriority);
  hand.Char(WXK_RIGHT);
  EXPECT_TRUE(waitUntil([&] { return text(s->lblPriority) == "Normal"; }));
  EXPECT_EQ(ReadSetting("ProcessPriority", ""), "32");
  hand.Char('S', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([&] { return hasFocus(s->dtpStartTime); })) << "Alt+S fails";
  hand.Char('T', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([&] { return hasFocus(s->txtRetryCount); })) << "Alt+T fails";
  hand.Char('F', wxMOD_ALT);
  EXPECT_TRUE(waitUntil([] { return ReadSetting("AutoHangUp", "") == "0"; })) << "Alt+F fails";
}

TEST_F(SettingsFormTest, PollsTheDialUpLineWhileItDialsEvenWhenHidden) {
  WriteSetting("AutoDialUpConnection", "Office");
  open();
  use(s->cmdDial);
  form->Hide();
  line->busyAsked = 0;
  ASSERT_TRUE(waitUntil([&] { return line->busyAsked > 5; }));
  line->busy = false;
  EXPECT_TRUE(waitUntil([&] { return s->tmrOnlineStatus.GetInterval() > frmSettings::kTmrOnlineStatus; }))
      << "it does not rest when hidden";
  EXPECT_TRUE(waitUntil([&] { return s->tmrTimeNow.GetInterval() > frmSettings::kTmrTimeNow; }));
}

TEST_F(SettingsFormTest, ScrollsForTheWheelAndForANewFocusOnly) {
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
    EXPECT_FALSE(event.GetSkipped()) << input->GetName() << " changes its value";
  }
  const auto reportFocus = [](wxWindow* control) {
    wxChildFocusEvent event(control);
    control->ProcessWindowEvent(event);
  };
  reportFocus(s->chkDay[1]);
  s->Scroll(0, 25);
  const wxPoint view = s->GetViewStart();
  ASSERT_GT(view.y, 20);
  reportFocus(s->chkDay[1]);
  EXPECT_EQ(s->GetViewStart(), view) << "the focus that returns with the window moves what is to be clicked";
  reportFocus(s->chkDay[2]);
  EXPECT_LT(s->GetViewStart().y, 20);
}

TEST_F(SettingsFormTest, IsReachedByTheTabKeyAndCutsNothingInASmallPane) {
  WriteSetting("AutoDialUpConnection", "Office");
  std::string extensions = ".a";
  for (int i = 0; i < 2000; ++i) extensions += "|." + std::string(60, 'x') + std::to_string(i);
  WriteSetting("AsciiExts", extensions);
  open();
  std::string problem;
  for (int i = 0; i < 200; ++i) problem += "no right ";
  problem += "\n" + std::string(300, 'x') + "/" + std::string(300, 'y');
  s->showAutostartProblem(problem);
  use(s->lstExtensions, ".a");
  expectTabOrder(s->dtpStartTime);
  expectRoom(form->FromDIP(wxSize(780, 520)));
  expectRoom(form->FromDIP(wxSize(420, 240)));
  expectRoom(wxSize(300, 200));
}

}  // namespace
}  // namespace quillmoor

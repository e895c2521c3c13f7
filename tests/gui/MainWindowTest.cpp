// The program from its start to its end, through its windows.
#include <wx/app.h>

#include <cmath>
#include <future>

#include "GuiFixture.h"
#include "connectivity/modProcessPriority.h"
#include "controls/UserHoldsEventLoop.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/Notices.h"
#include "platform/system/ProgramFolder.h"
#include "shell/WindowPlacement.h"

namespace quillmoor {
namespace {

namespace fs = std::filesystem;
using testing::contentsOf;
using Session = testing::ScriptedFtpServer::Session;

/// Begins a transfer that does not end by itself.
void sendsSomeAndWaits(Session& s) {
  s.openData();
  s.reply("150 Here it comes.");
  s.sendData("some");
  s.waitForClient();
  s.closeData();
  s.reply("426 Broken off.");
}

class MainWindowTest : public GuiTest {
 protected:
  void goIntoTheMiddleOfAFile() {
    server.addFile("/a.bin", "x");
    server.addFile("/b.bin", std::string(1 << 20, 'x'));
    server.on("RETR /b.bin", sendsSomeAndWaits);
    startAtTheBackup();
    clickEvent(process->cmdStart);
    steps.when([&] { return server.count("RETR /b.bin") == 1; });
  }
  bool seen() const { return main->IsShown() && !main->IsIconized(); }
  bool idle() const { return !process->active(); }
};

TEST_F(MainWindowTest, StandsWhereItIsStoredAndHidesByItself) {
  for (const auto& [key, twips] : {std::pair{"MainLeft", "1500"}, std::pair{"MainTop", "2250"},
                                   std::pair{"MainWidth", "9000"}, std::pair{"MainHeight", "7500"}})
    WriteSetting(key, twips);
  start();
  const double scale = main->FromDIP(9600) / 9600.0;
  const auto at = [&](int dip) { return static_cast<int>(std::lround(dip * scale)); };
  const wxRect stored(at(100), at(150), at(600), at(500));
  EXPECT_TRUE(waitUntil([&] { return main->GetRect() == stored; })) << main->GetRect().x;
  EXPECT_EQ(main->GetTitle(), "Quillmoor");
  EXPECT_EQ(main->panes->activePane(), kProfilesPane);
  main->tmrHide.Start(frmMain::kTmrHide);
  EXPECT_TRUE(waitUntil([&] { return !seen(); }));
  EXPECT_FALSE(main->tmrHide.IsRunning());
  main->restore();
  EXPECT_TRUE(waitUntil([&] { return seen(); }));
  if (CTray::isAvailable()) {
    EXPECT_TRUE(waitUntil([&] { return main->GetRect() == stored; })) << "moved by hiding";
  }
  main->Iconize();
  ASSERT_TRUE(waitUntil([&] { return main->IsIconized(); }));
  endProgram();
  EXPECT_EQ(ReadSetting("MainLeft", "") + ReadSetting("MainWidth", ""), "15009000")
      << "the placement of a minimised window was stored";
}

TEST_F(MainWindowTest, SetsItsPriorityAndItsAutostartEntryAsItStarts) {
  using modProcessPriority::SetPriority;
  constexpr std::int32_t kNoClass = 12;  // no class: the call only returns the one in force
  const std::int32_t before = SetPriority(0, 0, kNoClass);
  WriteSetting("ProcessPriority", "16384");
  for (const char* autostart : {"1", "0"}) {
    WriteSetting("AutoStartUp", autostart);
    start();
    const auto entry = RegistryApi::queryValue(
        HKEY_LOCAL_MACHINE_VALUE, "Software\\Microsoft\\Windows\\CurrentVersion\\Run", ProgramName());
    EXPECT_EQ(entry.has_value(), *autostart == '1');
    endProgram();
  }
  const std::int32_t inForce = SetPriority(0, 0, kNoClass);
  EXPECT_TRUE(inForce == 16384 || inForce == 64) << inForce << "; idle when the test was started so";
  SetPriority(0, 0, before);  // restores it where that is allowed
}

TEST_F(MainWindowTest, LetsTheSessionEndAndKeepsThePlaceThatItWasMovedTo) {
  start();
  const double perInch = main->FromDIP(9600) / 100.0;
  const wxPoint wanted = main->GetPosition() + wxPoint(30, 45);
  ASSERT_TRUE(waitUntil([&] { return !main->tmrPlace.IsRunning(); }));
  bool moved = false;
  main->Bind(wxEVT_MOVE, [&](wxMoveEvent& event) {
    moved = true;
    event.Skip();
  });
  main->Move(wanted);
  ASSERT_TRUE(waitUntil([&] { return moved; }));
  ASSERT_EQ(main->GetPosition(), wanted) << "the user's own move was undone";
  wxCloseEvent query(wxEVT_QUERY_END_SESSION), end(wxEVT_END_SESSION);
  query.SetCanVeto(true);
  EXPECT_TRUE(wxTheApp->ProcessEvent(query)) << "not handled: the toolkit closes the window";
  EXPECT_TRUE(main->IsShown() && !query.GetVeto());
  EXPECT_TRUE(wxTheApp->ProcessEvent(end));
  EXPECT_EQ(ReadSetting("MainLeft", ""), std::to_string(std::lround(wanted.x * kTwipsPerInch / perInch)));
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(MainWindowTest, BacksUpAtTheClickOfStartNow) {
  server.addFile("/a.bin", "bytes");
  server.addFile("/sub/b.bin", "more bytes");
  std::promise<void> seen;  // holds the run until the test has looked
  server.on("RETR /a.bin", [looked = seen.get_future().share()](Session& s) {
    looked.wait_for(kPatience);
    s.answerAsUsual();
  });
  startAtTheBackup();
  frmProcess& form = *process;
  EXPECT_FALSE(form.cmdStop->IsEnabled());
  focus(form.cmdStart);
  steps.when([&] { return true; }, [&] { click(form.cmdStart); })
      .when([&] { return form.active() && hasFocus(form.cmdStop); },
            [&] {
              EXPECT_FALSE(form.cmdStart->IsEnabled());
              EXPECT_TRUE(form.Animation1->IsPlaying() || !form.Animation1->error().empty());
              seen.set_value();
            })
      .when([&] { return idle() && hasFocus(form.cmdStart); })
      .take();
  EXPECT_EQ(status(), "Completed");
  EXPECT_EQ(form.wndReportControl->item(0, static_cast<std::size_t>(ReportColumn::files)), "2");
  EXPECT_EQ(contentsOf(target() / "sub" / "b.bin"), "more bytes");
  EXPECT_FALSE(form.cmdStop->IsEnabled() || form.Animation1->IsPlaying() || BackupRunning());
  EXPECT_EQ(main->tray().Tip(), "Quillmoor");
}

TEST_F(MainWindowTest, AsksBeforeItStopsInTheMiddleOfAFileAndCanBeStartedAtOnce) {
  goIntoTheMiddleOfAFile();
  frmProcess& form = *process;
  const auto answer = [&](int button) {
    wxTEST_DIALOG(clickEvent(form.cmdStop),
                  ExpectBox("Warrning", "Are you sure you want to stop the current backup process",
                            wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_ERROR, button));
  };
  steps
      .when([&] { return form.picFtpConnected->IsShown() && !form.picFtpDisonnected->IsShown(); },
            [&] {
              EXPECT_EQ(status(), "Running");
              for (const int no : {wxID_NO, wxID_CANCEL}) {
                answer(no);
                EXPECT_TRUE(BackupRunning() && form.active());
              }
              server.on("RETR /b.bin", [](Session& s) { s.answerAsUsual(); });
              answer(wxID_YES);
              EXPECT_TRUE(!BackupRunning() && form.active()) << "the stopped run is still unwinding";
              clickEvent(form.cmdStart);
            })
      .when([&] { return status(1) == "Completed" && idle(); })
      .take();
  EXPECT_EQ(status(0), "Stoped");
  EXPECT_TRUE(waitUntil([&] { return form.picFtpDisonnected->IsShown(); }));
}

TEST_F(MainWindowTest, EndsInTheMiddleOfARunAndLeavesNoHalfFile) {
  goIntoTheMiddleOfAFile();
  const auto begin = std::chrono::steady_clock::now();
  steps.when([] { return true; }, [&] { main->ExitRoutine(); }).when([&] { return !main; }).take();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15)) << "it waited for the run";
  EXPECT_TRUE(fs::exists(target() / "a.bin"));
  const auto files = std::distance(fs::directory_iterator(target()), fs::directory_iterator());
  EXPECT_EQ(files, 1) << "a half file is left";
}

TEST_F(MainWindowTest, ExitsFromTheProfilesPaneWhenThatIsConfirmed) {
  start();
  wxTEST_DIALOG(clickEvent(main->site->wndTaskPanel->command(kExitItem)),
                ExpectBox("Quillmoor", "Are you sure you want to exit the application?.",
                          wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_WARNING, wxID_YES));
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(MainWindowTest, StartsAScheduledRunOnceTheOpenBoxIsAnswered) {
  server.addFile("/a.bin", "bytes");
  for (const auto& [key, text] :
       {std::pair{"SchedualHour", "12"}, std::pair{"SchedualMinute", "30"}, std::pair{"SchedualTusday", "1"}})
    WriteSetting(key, text);
  LocalDateTime clock = *MakeLocalDateTime({2026, 11, 24, 12, 29, 58, 0});  // a Tuesday
  now = [&] { return clock; };
  start();
  wxDialog box(main, wxID_ANY, "A question");
  int starts = 0;
  main->process->TimerStartBackup.Bind(wxEVT_TIMER, [&](wxTimerEvent& event) {
    ++starts;
    event.Skip();
  });
  main->tmrHide.Start(50);
  main->CallAfter([&] { box.ShowModal(); });
  Steps hands([&] { box.EndModal(wxID_OK); });
  hands.when([&] { return box.IsModal() && !BackupRunning(); }, [&] { clock += std::chrono::seconds(2); })
      .when([&] { return starts == 3; },
            [&] {
              EXPECT_FALSE(main->process->active()) << "the box cannot be answered until the run ends";
              EXPECT_TRUE(seen()) << "the box lost its window";
              main->hide();
              main->tray().mouseMessage(515);
              EXPECT_TRUE(seen()) << "the tray does not lead to the box";
              box.EndModal(wxID_OK);
              main->hide();  // the run needs no window
            })
      .take();
  EXPECT_TRUE(waitUntil([&] { return status() == "Completed" && !main->process->active(); })) << status();
}

TEST_F(MainWindowTest, StartsNoRunInsideAnOpenMenu) {
  start();
  int waiting = 0;
  main->process->onWaiting = [&] { ++waiting; };
  wxMenu menu;
  menu.Append(wxID_ANY, "An item");
  main->CallAfter([&] { main->PopupMenu(&menu, 20, 20); });
  Steps hands([&] { hand.Char(WXK_ESCAPE); });
  hands
      .when([] { return UserHoldsEventLoop(); },
            [&] {
              main->process->startBackup();
              main->process->TimerStartBackup.Start(1);
            })
      .when([&] { return waiting == 1; },
            [&] {
              EXPECT_TRUE(UserHoldsEventLoop() && !main->process->active())
                  << "the menu cannot be closed until the run ends";
              hand.Char(WXK_ESCAPE);
            })
      .take();
  EXPECT_TRUE(waitUntil([&] { return status() == "Completed" && !main->process->active(); })) << status();
  EXPECT_EQ(waiting, 1);
}

TEST_F(MainWindowTest, IsRefusedASecondTimeAndLeftAlone) {
  start();
  ASSERT_TRUE(main->Initialise());
  frmMain second;
  wxTEST_DIALOG(EXPECT_FALSE(second.Initialise()),
                ExpectBox("Quillmoor", "Program already running, Click the program icon in the Taskbar. ",
                          wxOK | wxICON_EXCLAMATION, wxID_OK));
  EXPECT_TRUE(main->IsShown() && main->TimerMain.IsRunning());
}

TEST_F(MainWindowTest, IsHiddenByItsCloseBoxAndHasItsMenuInTheTray) {
  start();
  main->Close();
  EXPECT_TRUE(waitUntil([&] { return !seen(); }));
  const std::unique_ptr<wxMenu> menu = main->mnuTrayPopup();
  std::vector<std::string> items;
  for (const wxMenuItem* item : menu->GetMenuItems()) items.push_back(item->GetItemLabel().utf8_string());
  EXPECT_EQ(items, (std::vector<std::string>{"Show Window", "", "Hide Window", "", "&Exit"}));
  const auto choose = [&](std::size_t place) {
    wxCommandEvent event(wxEVT_MENU, menu->FindItemByPosition(place)->GetId());
    menu->ProcessEvent(event);
  };
  choose(0);
  EXPECT_TRUE(waitUntil([&] { return seen(); }));
  choose(2);
  EXPECT_TRUE(waitUntil([&] { return !seen(); }));
  choose(4);
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(MainWindowTest, ShowsTheProfilesThatTheFileHoldsNow) {
  start();
  profile.name = "another";
  profile.ID.clear();
  ASSERT_TRUE(SaveSiteProfile(profile, profilesFile()));
  const std::vector<std::string> both = {"another", "site"};
  EXPECT_TRUE(waitUntil([&] { return rowsOf(main->site->wndTaskPanel->list()) == both; }));
}

TEST_F(MainWindowTest, NamesWhatFailedAndLeadsToItInTheLog) {
  WriteSetting("FtpRetryCount", "99999999999");
  for (int i = 0; i < 60; ++i) server.addFile("/f" + std::to_string(100 + i), "x");
  server.on("RETR /f101", testing::replies("550 Forbidden."));
  startAtTheBackup();
  const auto says = [&](const wxString& text) {
    return waitUntil([&] { return process->lblNotice->GetLabelText().Contains(text); });
  };
  EXPECT_TRUE(says("FtpRetryCount")) << "a setting that cannot be used";
  Notice("Other users could read it.");
  EXPECT_TRUE(says("Other users could read it."));

  const frmProcess& form = *process;
  EXPECT_TRUE(waitUntil([&] {
    const int report = form.wndReportControl->GetSize().y;
    return report > 5 * form.GetCharHeight() && form.rtfLog->GetSize().y > report;
  })) << "room for three profiles, and more for the log";
  main->SetSize(main->GetMinSize());
  process->startBackup();
  EXPECT_TRUE(says("site: 1 failure: /f101: The server refused RETR: 550 Forbidden."));
  const auto isWhole = [&](const wxWindow* part) {
    return part->GetClientSize().y >= form.GetCharHeight() &&
           form.GetScreenRect().Contains(part->GetScreenRect());
  };
  for (const wxWindow* const part : std::initializer_list<const wxWindow*>{
           form.cmdStart, form.cmdStop, form.Animation1, form.picFtpDisonnected, form.rtfLog,
           form.wndReportControl, form.cmdShowFailure})
    EXPECT_TRUE(waitUntil([&] { return isWhole(part); })) << part->GetName() << ", in the smallest window";
  clickEvent(process->cmdShowFailure);
  EXPECT_EQ(process->rtfLog->selectedText(), "Ftp Error: The server refused RETR: 550 Forbidden.");

  server.forgetRules();
  process->startBackup();
  EXPECT_TRUE(
      waitUntil([&] { return !process->lblNotice->IsShown() && status(1) == "Completed" && idle(); }));
}

}  // namespace
}  // namespace quillmoor

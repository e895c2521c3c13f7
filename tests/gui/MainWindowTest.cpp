// The program from its start to its end, through its windows.
#include <wx/app.h>

#include <cmath>
#include <future>

#include "GuiFixture.h"
#include "connectivity/modProcessPriority.h"
#include "controls/UserHoldsEventLoop.h"
#include "platform/registry/RegistryApi.h"
#include "platform/system/ProgramFolder.h"
#include "shell/WindowPlacement.h"

namespace quillmoor {
namespace {

namespace fs = std::filesystem;
using testing::contentsOf;
using Session = testing::ScriptedFtpServer::Session;

/// A file whose transfer does not end by itself.
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
  static ExpectBox stopBox(int answer) {
    return {"Warrning", "Are you sure you want to stop the current backup process",
            static_cast<long>(wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_ERROR), answer};
  }
  bool seen() const { return main->IsShown() && !main->IsIconized(); }
  bool idle() const { return !process->active(); }
  /// Opens the program two seconds before a scheduled run.
  void startBeforeTheMinute() {
    server.addFile("/a.bin", "bytes");
    for (const auto& [key, text] : {std::pair{"SchedualHour", "12"}, std::pair{"SchedualMinute", "30"},
                                    std::pair{"SchedualTusday", "1"}})
      WriteSetting(key, text);
    now = [this] { return clock; };
    start();
  }
  LocalDateTime clock = *MakeLocalDateTime({2026, 11, 24, 12, 29, 58, 0});  // a Tuesday
};

TEST_F(MainWindowTest, StandsWhereItIsStoredAndHidesByItself) {
  WriteSetting("MainLeft", "1500");
  WriteSetting("MainTop", "2250");
  WriteSetting("MainWidth", "9000");
  WriteSetting("MainHeight", "7500");
  start();
  const double scale = main->FromDIP(9600) / 9600.0;
  const auto at = [&](int dip) { return static_cast<int>(std::lround(dip * scale)); };
  EXPECT_TRUE(waitUntil([&] { return main->GetPosition() == wxPoint(at(100), at(150)); }))
      << main->GetPosition().x << "," << main->GetPosition().y;
  EXPECT_TRUE(waitUntil([&] { return main->GetSize() == wxSize(at(600), at(500)); }))
      << main->GetSize().x << "," << main->GetSize().y;
  EXPECT_EQ(main->GetTitle(), "Quillmoor");
  EXPECT_EQ(main->panes->activePane(), kProfilesPane);
  main->tmrHide.Start(frmMain::kTmrHide);
  EXPECT_TRUE(waitUntil([&] { return !seen(); }));
  EXPECT_FALSE(main->tmrHide.IsRunning());

  main->restore();
  EXPECT_TRUE(waitUntil([&] { return seen(); }));
  if (CTray::isAvailable()) {
    EXPECT_TRUE(waitUntil([&] { return main->GetPosition() == wxPoint(at(100), at(150)); }))
        << "moved by hiding";
  }
}

TEST_F(MainWindowTest, TakesItsPriorityAndItsPlaceInTheAutostartAsItStarts) {
  using modProcessPriority::SetPriority;
  constexpr std::int32_t kNoClass = 12;  // only asks for the class in force
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
  EXPECT_TRUE(inForce == 16384 || inForce == 64) << inForce << ": idle when the test was started so";
  SetPriority(0, 0, before);  // back, where that is allowed
}

TEST_F(MainWindowTest, KeepsItsPlacementButNotOfAMinimisedWindow) {
  WriteSetting("MainLeft", "1500");
  WriteSetting("MainWidth", "9000");
  start();
  main->Iconize();
  ASSERT_TRUE(waitUntil([&] { return main->IsIconized(); }));
  endProgram();
  EXPECT_EQ(ReadSetting("MainLeft", ""), "1500");
  EXPECT_EQ(ReadSetting("MainWidth", ""), "9000");

  start();
  const double perInch = main->FromDIP(9600) / 100.0;
  const wxPoint wanted = main->GetPosition() + wxPoint(30, 45);
  ASSERT_TRUE(waitUntil([&] { return !main->tmrPlace.IsRunning(); }));
  bool told = false;
  main->Bind(wxEVT_MOVE, [&](wxMoveEvent& event) {
    told = true;
    event.Skip();
  });
  main->Move(wanted);
  ASSERT_TRUE(waitUntil([&] { return told; }));
  ASSERT_EQ(main->GetPosition(), wanted) << "the user's own move was undone";
  endProgram();
  EXPECT_EQ(ReadSetting("MainLeft", ""), std::to_string(std::lround(wanted.x * kTwipsPerInch / perInch)));
}

TEST_F(MainWindowTest, BacksUpAtTheClickOfStartNow) {
  server.addFile("/a.bin", "bytes");
  server.addFile("/sub/b.bin", "more bytes");
  std::promise<void> seen;  // a run of two files can be over before anybody has looked
  server.on("RETR /a.bin", [looked = seen.get_future().share()](Session& s) {
    looked.wait_for(kPatience);
    s.answerAsUsual();
  });
  startAtTheBackup();
  frmProcess& form = *process;
  EXPECT_FALSE(form.cmdStop->IsEnabled());
  steps.when([&] { return true; }, [&] { click(form.cmdStart); })
      .when([&] { return form.active(); },
            [&] {
              EXPECT_FALSE(form.cmdStart->IsEnabled());
              EXPECT_TRUE(form.Animation1->IsPlaying() || !form.Animation1->error().empty());
              seen.set_value();
            })
      .when([&] { return idle(); })
      .take();
  EXPECT_EQ(status(), "Completed");
  EXPECT_EQ(form.wndReportControl->item(0, static_cast<std::size_t>(ReportColumn::files)), "2");
  EXPECT_NE(logged().find("Good Bye.\n"), std::string::npos);
  EXPECT_EQ(contentsOf(target() / "sub" / "b.bin"), "more bytes");
  EXPECT_TRUE(form.cmdStart->IsEnabled());
  EXPECT_FALSE(form.cmdStop->IsEnabled());
  EXPECT_FALSE(form.Animation1->IsPlaying());
  EXPECT_FALSE(BackupRunning());
  EXPECT_EQ(main->tray().Tip(), "Quillmoor");
}

TEST_F(MainWindowTest, LeadsTheKeyboardFromStartToStopAndBack) {
  server.addFile("/b.bin", std::string(1 << 20, 'x'));
  server.on("RETR /b.bin", sendsSomeAndWaits);
  startAtTheBackup();
  process->cmdStart->SetFocus();
  ASSERT_TRUE(waitUntil([&] { return hasFocus(process->cmdStart); }));
  hand.Char(WXK_SPACE);
  steps.when([&] { return server.count("RETR /b.bin") == 1; })
      .when([&] { return hasFocus(process->cmdStop); },
            [&] { wxTEST_DIALOG(clickEvent(process->cmdStop), stopBox(wxID_YES)); })
      .when([&] { return idle(); })
      .take();
  EXPECT_TRUE(waitUntil([&] { return hasFocus(process->cmdStart); }));
}

TEST_F(MainWindowTest, AsksBeforeItStopsInTheMiddleOfAFile) {
  goIntoTheMiddleOfAFile();
  frmProcess& form = *main->process;
  const auto answer = [&](int button) { wxTEST_DIALOG(clickEvent(form.cmdStop), stopBox(button)); };
  steps
      .when([&] { return form.picFtpConnected->IsShown() && !form.picFtpDisonnected->IsShown(); },
            [&] {
              EXPECT_EQ(status(), "Running");
              for (const int no : {wxID_NO, wxID_CANCEL}) {
                answer(no);
                EXPECT_TRUE(BackupRunning());
                EXPECT_TRUE(form.active());
              }
              answer(wxID_YES);
              EXPECT_FALSE(BackupRunning());
              EXPECT_TRUE(form.cmdStart->IsEnabled());
            })
      .when([&] { return !form.active(); })
      .take();
  EXPECT_EQ(status(), "Stoped");
  EXPECT_NE(logged().find("Good Bye.\n"), std::string::npos);
  EXPECT_FALSE(fs::exists(target() / "b.bin"));
  EXPECT_TRUE(waitUntil([&] { return form.picFtpDisonnected->IsShown(); }));
}

TEST_F(MainWindowTest, StartsAgainOnceAStoppedRunHasUnwound) {
  goIntoTheMiddleOfAFile();
  frmProcess& form = *main->process;
  steps
      .when([] { return true; },
            [&] {
              server.on("RETR /b.bin", [](Session& s) { s.answerAsUsual(); });
              wxTEST_DIALOG(clickEvent(form.cmdStop), stopBox(wxID_YES));
              EXPECT_TRUE(form.active()) << "the stopped run is still below us";
              clickEvent(form.cmdStart);
            })
      .when([&] { return status(1) == "Completed" && !form.active(); })
      .take();
  EXPECT_EQ(status(0), "Stoped");
}

TEST_F(MainWindowTest, EndsInTheMiddleOfARunAndLeavesNoHalfFile) {
  goIntoTheMiddleOfAFile();
  std::chrono::steady_clock::time_point begin;
  steps
      .when([] { return true; },
            [&] {
              begin = std::chrono::steady_clock::now();
              main->ExitRoutine();
            })
      .when([&] { return !main; })
      .take();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15)) << "it waited for the run";
  std::vector<std::string> left;
  for (const auto& entry : fs::directory_iterator(target())) left.push_back(entry.path().filename().string());
  EXPECT_EQ(left, std::vector<std::string>{"a.bin"});
}

TEST_F(MainWindowTest, ExitsFromTheProfilesPaneOnlyWhenThatIsConfirmed) {
  start();
  constexpr long style = wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_WARNING;
  const char* const text = "Are you sure you want to exit the application?.";
  wxTEST_DIALOG(clickEvent(main->site->wndTaskPanel->command(kExitItem)),
                ExpectBox("Quillmoor", text, style, wxID_CANCEL));
  EXPECT_FALSE(main->tmrEndProgram.IsRunning());
  wxTEST_DIALOG(clickEvent(main->site->wndTaskPanel->command(kExitItem)),
                ExpectBox("Quillmoor", text, style, wxID_YES));
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(MainWindowTest, BacksUpAtTheScheduledMinuteWhileItIsHidden) {
  startBeforeTheMinute();
  main->hide();
  ASSERT_TRUE(main->TimerMain.IsRunning());
  EXPECT_FALSE(BackupRunning());
  EXPECT_EQ(status(), "");
  clock += std::chrono::seconds(2);
  ASSERT_TRUE(waitUntil([&] { return status() == "Completed" && !main->process->active(); })) << status();
  EXPECT_EQ(contentsOf(target() / "a.bin"), "bytes");
}

TEST_F(MainWindowTest, StartsAScheduledRunOnceTheOpenBoxIsAnswered) {
  startBeforeTheMinute();
  wxDialog box(main, wxID_ANY, "A question");
  const auto answer = [&] {
    if (box.IsModal()) box.EndModal(wxID_OK);
  };
  int starts = 0, hides = 0;
  const auto count = [](wxTimer& timer, int& ticks) {
    timer.Bind(wxEVT_TIMER, [&ticks](wxTimerEvent& event) {
      ++ticks;
      event.Skip();
    });
  };
  count(main->process->TimerStartBackup, starts);
  count(main->tmrHide, hides);
  main->tmrHide.Start(50);
  main->CallAfter([&] { box.ShowModal(); });
  Steps hands(answer);
  hands.when([&] { return box.IsModal(); }, [&] { clock += std::chrono::seconds(2); })
      .when([&] { return starts >= 3 && hides >= 3; },
            [&] {
              EXPECT_FALSE(main->process->active()) << "the box is dead until the run ends";
              EXPECT_TRUE(seen()) << "the box lost its window";
              main->hide();
              main->tray().mouseMessage(515);
              EXPECT_TRUE(seen()) << "the tray does not lead to the box";
              answer();
            })
      .take();
  EXPECT_TRUE(waitUntil([&] { return status() == "Completed" && !main->process->active(); })) << status();
}

TEST_F(MainWindowTest, StartsNoRunInsideAnOpenMenu) {
  server.addFile("/a.bin", "bytes");
  start();
  int told = 0;
  main->process->onWaiting = [&] { ++told; };
  wxMenu menu;
  menu.Append(wxID_ANY, "An item");
  bool open = true;
  main->CallAfter([&] {
    main->PopupMenu(&menu, 20, 20);
    open = false;
  });
  Steps hands([&] { hand.Char(WXK_ESCAPE); });
  hands
      .when([] { return UserHoldsEventLoop(); },
            [&] {
              main->process->startBackup();
              main->process->TimerStartBackup.Start(1);
            })
      .when([&] { return told == 1; },
            [&] {
              EXPECT_TRUE(open && !main->process->active()) << "the menu cannot be closed until the run ends";
              hand.Char(WXK_ESCAPE);
            })
      .take();
  EXPECT_TRUE(waitUntil([&] { return status() == "Completed" && !main->process->active(); })) << status();
  EXPECT_FALSE(open);
  EXPECT_EQ(told, 1);
}

TEST_F(MainWindowTest, LetsTheSessionEndAndKeepsItsPlacement) {
  start();
  wxCloseEvent query(wxEVT_QUERY_END_SESSION);
  query.SetCanVeto(true);
  EXPECT_TRUE(wxTheApp->ProcessEvent(query)) << "left to the toolkit, which closes the window";
  EXPECT_FALSE(query.GetVeto());
  EXPECT_TRUE(main->IsShown());
  WriteSetting("MainLeft", "");
  wxCloseEvent end(wxEVT_END_SESSION);
  EXPECT_TRUE(wxTheApp->ProcessEvent(end));
  EXPECT_NE(ReadSetting("MainLeft", ""), "");
  EXPECT_TRUE(waitUntil([&] { return !main; }));
}

TEST_F(MainWindowTest, IsRefusedASecondTimeAndLeftAlone) {
  start();
  ASSERT_TRUE(main->Initialise());
  {
    frmMain second;
    wxTEST_DIALOG(EXPECT_FALSE(second.Initialise()),
                  ExpectBox("Quillmoor", "Program already running, Click the program icon in the Taskbar. ",
                            wxOK | wxICON_EXCLAMATION, wxID_OK));
  }
  EXPECT_TRUE(main->IsShown());
  EXPECT_TRUE(main->TimerMain.IsRunning());
}

TEST_F(MainWindowTest, ShowsThreeProfilesOfARunAndTheLogAboveThem) {
  startAtTheBackup();
  const auto shared = [&] {
    const int report = process->wndReportControl->GetSize().y;
    return report > 5 * process->GetCharHeight() && process->rtfLog->GetSize().y > report;
  };
  EXPECT_TRUE(waitUntil(shared)) << process->wndReportControl->GetSize().y;
}

TEST_F(MainWindowTest, ShowsEveryPartOfARunInTheSmallestWindow) {
  WriteSetting("MainWidth", "100");
  WriteSetting("MainHeight", "100");
  startAtTheBackup();
  main->SetSize(main->GetMinSize());
  const frmProcess& form = *process;
  const auto isWhole = [&](const wxWindow* part) {
    return part->GetClientSize().y > 20 && form.GetScreenRect().Contains(part->GetScreenRect());
  };
  for (const wxWindow* const part :
       std::initializer_list<const wxWindow*>{form.cmdStart, form.cmdStop, form.Animation1,
                                              form.picFtpDisonnected, form.rtfLog, form.wndReportControl})
    EXPECT_TRUE(waitUntil([&] { return isWhole(part); })) << part->GetName();
}

TEST_F(MainWindowTest, IsHiddenByItsCloseBoxAndHasItsMenuInTheTray) {
  start();
  main->Close();
  EXPECT_TRUE(waitUntil([&] { return !seen(); }));
  const std::unique_ptr<wxMenu> menu = main->mnuTrayPopup();
  std::vector<std::string> items;
  for (const wxMenuItem* item : menu->GetMenuItems())
    items.push_back(item->IsSeparator() ? "-" : item->GetItemLabel().utf8_string());
  EXPECT_EQ(items, (std::vector<std::string>{"Show Window", "-", "Hide Window", "-", "&Exit"}));
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
  ReportControl& list = main->site->wndTaskPanel->list();
  ASSERT_EQ(list.rowCount(), 1u);
  EXPECT_EQ(list.item(0, 0), "site");
  profile.name = "another";
  profile.ID.clear();
  ASSERT_TRUE(SaveSiteProfile(profile, profilesFile()));
  ASSERT_TRUE(waitUntil([&] { return list.rowCount() == 2; }));
  EXPECT_EQ(list.item(0, 0), "another");
}

TEST_F(MainWindowTest, ShowsNetworkAndClockWhileTheSettingsAreSeen) {
  now = [] { return *MakeLocalDateTime({2026, 11, 24, 15, 5, 9, 0}); };
  start();
  main->panes->activate(kSettingsPane);
  frmSettings& form = *main->settingsForm;
  EXPECT_TRUE(waitUntil([&] { return form.lblTimeNow->GetLabelText() == "03:05:09 PM"; }));
  EXPECT_TRUE(waitUntil([&] { return form.lblLANstatus->GetLabelText() == "Connected"; }));
  EXPECT_TRUE(waitUntil([&] { return form.lblRasStatus->GetLabelText() == "Not Connected"; }));
  EXPECT_EQ(form.lblSchedule->GetLabelText(), "In force: Never: no weekday is selected");
}

}  // namespace
}  // namespace quillmoor

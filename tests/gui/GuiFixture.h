// The program with its windows, a server to back up, and simulated user input.
#pragma once

#include <gtest/gtest.h>
#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/testing.h>
#include <wx/timer.h>
#include <wx/uiaction.h>
#include <wx/utils.h>
#include <wx/weakref.h>

#include <chrono>
#include <deque>
#include <functional>
#include <string>
#include <utility>

#include "TestPlatform.h"
#include "engine/BackupRunning.h"
#include "profiles/SettingsStore.h"
#include "profiles/SiteProfileStore.h"
#include "shell/PaneTable.h"
#include "shell/frmMain.h"
#include "support/ScriptedFtpServer.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {

inline constexpr std::chrono::seconds kPatience{60};

/// Serves events until the condition holds; false when it does not in time.
inline bool waitUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds patience = kPatience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    wxEventLoopBase::GetActive()->YieldFor(wxEVT_CATEGORY_ALL);
    wxMilliSleep(1);
  }
  return true;
}

/// Sends the event that the toolkit sends when a control is used.
inline void command(wxWindow* control, const wxEventTypeTag<wxCommandEvent>& type) {
  wxCommandEvent event(type, control->GetId());
  event.SetEventObject(control);
  control->ProcessWindowEvent(event);
}
inline void clickEvent(wxButton* button) {
  command(button, wxEVT_BUTTON);
}
inline void tick(wxCheckBox* box, bool on) {
  box->SetValue(on);
  command(box, wxEVT_CHECKBOX);
}
/// Whether the control, or a part of it, has the focus.
inline bool hasFocus(const wxWindow* control) {
  for (const wxWindow* window = wxWindow::FindFocus(); window; window = window->GetParent()) {
    if (window == control) return true;
  }
  return false;
}
/// Puts the focus on a control of the window that is in front then.
inline void focus(wxWindow* control) {
  auto* const window = static_cast<wxTopLevelWindow*>(wxGetTopLevelParent(control));
  window->Raise();
  EXPECT_TRUE(waitUntil([&] { return window->IsActive(); })) << control->GetName();
  control->SetFocus();
  EXPECT_TRUE(waitUntil([&] { return hasFocus(control); })) << control->GetName();
}

/// The texts in the first column.
inline std::vector<std::string> rowsOf(const ReportControl& list) {
  std::vector<std::string> rows;
  for (std::size_t row = 0; row < list.rowCount(); ++row) rows.push_back(list.item(row, 0));
  return rows;
}

/// A frame of its own for what a test shows; destroyed with the test.
class FrameTest : public ::testing::Test {
 protected:
  explicit FrameTest(wxSize size = wxSize(700, 400))
      : frame(new wxFrame(nullptr, wxID_ANY, "test", wxPoint(40, 40), size)) {}
  void TearDown() override {
    frame->Destroy();
    EXPECT_TRUE(waitUntil([&] { return !frame; }));
  }

  wxWeakRef<wxFrame> frame;  // null once it is destroyed
  wxUIActionSimulator hand;
};

/// What the user does while a run blocks the program and only the run's pump serves events: steps, each taken
/// once its condition holds.
class Steps {
 public:
  explicit Steps(std::function<void()> giveUp) : giveUp_(std::move(giveUp)) {
    timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { look(); });
  }
  Steps& when(
      std::function<bool()> condition, std::function<void()> action = [] {}) {
    steps_.emplace_back(std::move(condition), std::move(action));
    return *this;
  }
  /// Serves events until all steps are taken.
  void take() {
    end_ = std::chrono::steady_clock::now() + kPatience;
    timer_.Start(5);
    EXPECT_TRUE(waitUntil([this] { return steps_.empty(); }));
    timer_.Stop();
  }

 private:
  void look() {
    if (steps_.empty() || std::exchange(acting_, true)) return;
    if (steps_.front().first()) {
      steps_.front().second();
      steps_.pop_front();
    } else if (std::chrono::steady_clock::now() > end_) {
      ADD_FAILURE() << steps_.size() << " steps were never reached";
      steps_.clear();
      giveUp_();
    }
    acting_ = false;
  }

  std::deque<std::pair<std::function<bool()>, std::function<void()>>> steps_;
  std::function<void()> giveUp_;
  wxTimer timer_;
  std::chrono::steady_clock::time_point end_;
  bool acting_ = false;
};

/// Expects one message box, checks its text and answers it.
class ExpectBox : public wxExpectModalBase<wxMessageDialog> {
 public:
  ExpectBox(const wxString& title, const wxString& text, long style, int answer)
      : title_(title), text_(text), style_(style), answer_(answer) {}
  wxModalExpectation* Clone() const { return new ExpectBox(*this); }

 protected:
  int OnInvoked(wxMessageDialog* box) const override {
    EXPECT_EQ(box->GetTitle(), title_);
    EXPECT_EQ(box->GetMessage(), text_);
    EXPECT_EQ(box->GetMessageDialogStyle() & style_, style_);
    return answer_;
  }

 private:
  wxString title_, text_;
  long style_;
  int answer_;
};

class GuiTest : public ::testing::Test {
 protected:
  GuiTest() {
    backupRun = {};
    for (const char* key : {"AutoDial", "AutoHangUp", "CreateZip", "AutoStartUp", "ConnectionDelay"})
      WriteSetting(key, "0");
    WriteSetting("PaneLayout", "");
    profile.name = "site";
    profile.Host = "127.0.0.1";
    profile.Port = std::to_string(server.port());
    profile.UserID = "joe";
    profile.Password = "hunter22";
    profile.SaveTo = folder.path().string();
    profile.Folders = {"/"};
    SaveSiteProfile(profile, profilesFile());
  }
  ~GuiTest() override {
    if (main) endProgram();
    backupRun = {};
  }

  std::string profilesFile() const { return (folder / "Profiles.ini").string(); }
  std::filesystem::path target() const { return folder / "site"; }

  /// Starts the program. Its window stays visible until the test hides it.
  void start() {
    main = new frmMain;
    main->profilesFile = profilesFile();
    main->network = [](std::uint32_t& kinds) {
      kinds = kNetworkLan;
      return true;
    };
    if (now) main->now = now;
    main->Load();
    EXPECT_TRUE(main->tmrHide.IsRunning());
    main->tmrHide.Stop();  // on a slow machine it would fire before the window is shown
    main->restore();
    ASSERT_TRUE(waitUntil([&] { return main->IsActive() && main->GetPosition() == main->placement(); }));
  }
  /// Starts the program, with the pane of the backup in front.
  void startAtTheBackup() {
    start();
    main->panes->activate(kBackupPane);
    process = main->process;
    ASSERT_TRUE(waitUntil([&] { return process->cmdStart->IsShownOnScreen(); }));
  }
  void endProgram() {
    main->ExitRoutine();
    ASSERT_TRUE(waitUntil([&] { return !main; }));
  }

  /// A real click into the middle of a control.
  void click(wxWindow* control) {
    EXPECT_TRUE(waitUntil([&] { return !main->tmrPlace.IsRunning(); })) << "the window may still move";
    wxUIActionSimulator mouse;  // its constructor serves events: only then has the control its final place
    const wxRect place = control->GetScreenRect();
    mouse.MouseMove(place.x + place.width / 2, place.y + place.height / 2);
    mouse.MouseClick();
  }
  /// The Tab key must lead from each of them to the next.
  void expectTabOrder(const std::vector<wxWindow*>& order) {
    focus(order.front());
    for (std::size_t i = 1; i < order.size(); ++i) {
      hand.Char(WXK_TAB);
      ASSERT_TRUE(waitUntil([&] { return hasFocus(order[i]); })) << order[i]->GetName();
    }
  }
  std::string status(std::size_t row = 0) const {
    const ReportControl& report = *main->process->wndReportControl;
    return row < report.rowCount() ? report.item(row, static_cast<std::size_t>(ReportColumn::status)) : "";
  }

  testing::OwnRegistry registry;  // settings of this test alone
  testing::TemporaryFolder folder;
  testing::ScriptedFtpServer server;
  SiteProfile profile;
  std::function<LocalDateTime()> now;
  wxWeakRef<frmMain> main;  // null once it is destroyed
  frmProcess* process = nullptr;
  wxUIActionSimulator hand;
  Steps steps{[this] { main->ExitRoutine(); }};
};

}  // namespace quillmoor

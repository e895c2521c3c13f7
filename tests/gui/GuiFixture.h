// A program with its windows, a server to back up, and the user's hands.
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

#include <chrono>
#include <deque>
#include <functional>
#include <string>

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

/// What the toolkit sends when a control is used.
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
/// Of a composite control a part may have it.
inline bool hasFocus(const wxWindow* control) {
  for (const wxWindow* window = wxWindow::FindFocus(); window; window = window->GetParent()) {
    if (window == control) return true;
  }
  return false;
}

/// A frame of its own for what a test shows, gone when the test is.
class FrameTest : public ::testing::Test {
 protected:
  explicit FrameTest(wxSize size = wxSize(700, 400))
      : frame(new wxFrame(nullptr, wxID_ANY, "test", wxPoint(40, 40), size)) {}
  void TearDown() override {
    bool gone = false;
    frame->Bind(wxEVT_DESTROY, [&](wxWindowDestroyEvent& event) {
      gone = gone || event.GetEventObject() == frame;
      event.Skip();
    });
    frame->Destroy();
    EXPECT_TRUE(waitUntil([&] { return gone; }));
  }

  wxFrame* frame;
  wxUIActionSimulator hand;
};

/// What the user does while a run blocks the program and only its pump serves events: steps, each taken once
/// its condition holds.
class Steps {
 public:
  explicit Steps(std::function<void()> giveUp) : giveUp_(std::move(giveUp)) {
    timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { look(); });
  }
  Steps& when(
      std::function<bool()> condition, std::function<void()> action = [] {}) {
    steps_.push_back({std::move(condition), std::move(action)});
    return *this;
  }
  /// Serves events until all steps are taken.
  void take() {
    end_ = std::chrono::steady_clock::now() + kPatience;
    timer_.Start(5);
    EXPECT_TRUE(waitUntil([this] { return steps_.empty() || gaveUp_; }));
    timer_.Stop();
    EXPECT_FALSE(gaveUp_) << "step " << taken_ + 1 << " never came";
  }

 private:
  void look() {
    if (acting_ || steps_.empty() || gaveUp_) return;
    acting_ = true;
    if (steps_.front().condition()) {
      steps_.front().action();
      steps_.pop_front();
      ++taken_;
    } else if (std::chrono::steady_clock::now() > end_) {
      gaveUp_ = true;
      giveUp_();
    }
    acting_ = false;
  }

  struct Step {
    std::function<bool()> condition;
    std::function<void()> action;
  };
  std::deque<Step> steps_;
  std::function<void()> giveUp_;
  wxTimer timer_;
  std::chrono::steady_clock::time_point end_;
  int taken_ = 0;
  bool acting_ = false, gaveUp_ = false;
};

/// Answers the one box that is expected, and checks what it says.
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
    if (!main) return;
    endProgram();
    backupRun = {};
  }

  std::string profilesFile() const { return (folder / "Profiles.ini").string(); }
  std::filesystem::path target() const { return folder / "site"; }

  /// Its window stays until the test hides it.
  void start() {
    main = new frmMain;
    main->profilesFile = profilesFile();
    main->network = [](std::uint32_t& kinds) {
      kinds = kNetworkLan;
      return true;
    };
    if (now) main->now = now;
    main->Bind(wxEVT_DESTROY, [this](wxWindowDestroyEvent& event) {
      if (event.GetEventObject() == main) main = nullptr;
      event.Skip();
    });
    main->Load();
    EXPECT_TRUE(main->tmrHide.IsRunning());
    main->tmrHide.Stop();  // on a slow machine it would come before the window does
    main->restore();
    const auto settled = [&] { return main->IsActive() && main->GetPosition() == main->placement(); };
    ASSERT_TRUE(waitUntil(settled)) << main->GetPosition().x << "," << main->GetPosition().y;
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
    wxUIActionSimulator mouse;  // serves events when it is made: the control is where it will be
    const wxRect place = control->GetScreenRect();
    mouse.MouseMove(place.x + place.width / 2, place.y + place.height / 2);
    mouse.MouseClick();
  }
  std::string logged() const {
    std::string all;
    const LogText& log = main->process->logText();
    for (std::size_t i = 0; i < log.lineCount(); ++i) all += log.line(i).text + "\n";
    return all;
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
  frmMain* main = nullptr;
  frmProcess* process = nullptr;
  wxUIActionSimulator hand;
  Steps steps{[this] { main->ExitRoutine(); }};
};

}  // namespace quillmoor

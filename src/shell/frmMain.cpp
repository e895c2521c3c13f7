#include "shell/frmMain.h"

#include <wx/app.h>
#include <wx/display.h>
#include <wx/menu.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>

#include <cmath>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "connectivity/modProcessPriority.h"
#include "controls/Pictures.h"
#include "engine/BackupRunning.h"
#include "engine/ErrorGuard.h"
#include "platform/NetworkAlive.h"
#include "profiles/SettingsStore.h"
#include "profiles/SiteProfileStore.h"
#include "profiles/mAutoRun.h"
#include "shell/PaneTable.h"
#include "shell/RunNotice.h"
#include "shell/TaskbarProgress.h"
#include "shell/WindowPlacement.h"
#include "shell/frmHelp.h"

namespace quillmoor {
namespace {

constexpr const char* kTitle = "Quillmoor";
constexpr const char* kLayoutKey = "PaneLayout";
constexpr int kDestroyEvery = 10;  // milliseconds between two looks whether the window can go

/// The one window animation.
enum Effect { kSlide = 3 };
void AnimateWindow(wxWindow* window, Effect, bool hide) {
  if (window->IsShown() != hide) return;
  if (hide) {
    window->HideWithEffect(wxSHOW_EFFECT_SLIDE_TO_BOTTOM, 100);
  } else {
    window->ShowWithEffect(wxSHOW_EFFECT_SLIDE_TO_TOP, 100);
  }
}

std::vector<PixelRect> screens() {
  std::vector<PixelRect> all;
  for (unsigned i = 0; i < wxDisplay::GetCount(); ++i) {
    const wxRect area = wxDisplay(i).GetClientArea();
    all.push_back({area.x, area.y, area.width, area.height});
  }
  return all;
}

}  // namespace

frmMain::frmMain() : network(IsNetworkAlive), profilesFile(ProfilesFilePath()) {}

frmMain::~frmMain() {
  if (panes) panes->SetEvtHandlerEnabled(false);
}

bool frmMain::Initialise() {
  instance_ = std::make_unique<SingleInstance>();
  if (!instance_->anotherIsRunning()) return true;
  wxMessageBox("Program already running, Click the program icon in the Taskbar. ", kTitle,
               wxOK | wxICON_EXCLAMATION);
  return false;
}

void frmMain::Load() {
  // Every tick of a timer ends in an idle turn; no window here needs to be asked in it.
  wxIdleEvent::SetMode(wxIDLE_PROCESS_SPECIFIED);
  wxUpdateUIEvent::SetMode(wxUPDATE_UI_PROCESS_SPECIFIED);
  settings = LoadApplicationSettings();
  // Its place is given before it exists: some window managers take a later move for their own business.
  const PixelRect window = BroughtOntoScreen(StoredPlacement(settings, pixelsPerInch()), screens());
  Create(nullptr, wxID_ANY, kTitle, {window.left, window.top}, {window.width, window.height},
         wxDEFAULT_FRAME_STYLE, "frmMain");
  SetMinSize(FromDIP(wxSize(360, 300)));
  SetIcons(ApplicationIcon());
  services_ = std::make_unique<MachineServices>(settings, profilesFile, [this] { pump_.turn(); });
  services_->network = network;
  services_->now = now;
  scheduler_ = std::make_unique<Scheduler>(settings, now, [this] { process->startBackup(); });
  createPanes();
  createTray();
  modProcessPriority::SetPriority(0, 0, settings.ProcessPriority);
  setAutostart();

  Bind(wxEVT_CLOSE_WINDOW, &frmMain::onClose, this);
  Bind(wxEVT_MOVE, &frmMain::onMove, this);
  TimerMain.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    scheduler_->tick();
    stayReachable();
  });
  tmrHide.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    tmrHide.Stop();
    hide();
  });
  tmrEndProgram.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    tmrEndProgram.Stop();
    ExitRoutine();
  });
  tmrDestroy_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { destroyWhenIdle(); });
  TimerMain.Start(kTimerMain);
  tmrHide.Start(kTmrHide);
}

double frmMain::pixelsPerInch() const {
  return FromDIP(kPlainPixelsPerInch * 100) / 100.0;
}

void frmMain::notePlacement() {
  const wxRect window = GetRect();
  NotePlacement(settings, {window.x, window.y, window.width, window.height}, pixelsPerInch());
}

void frmMain::createPanes() {
  panes = new DockingPanes(this);
  auto* const all = new wxBoxSizer(wxVERTICAL);
  all->Add(panes, wxSizerFlags(1).Expand());
  SetSizer(all);

  site = new frmSite(panes, services_->profilesFile);
  process = new frmProcess(panes, *services_, pump_);
  settingsForm = new frmSettings(panes, {settings, services_->network, now, scheduler_->ScheduleDays()});
  options = new frmOptions(panes, settings);
  panes->addPane(kProfilesPane, site);
  panes->addPane(kBackupPane, process);
  panes->addPane(kSettingsPane, settingsForm);
  panes->addPane(kOptionsPane, options);
  panes->addPane(kHelpPane, new frmHelp(panes));
  Guarded([&] {
    if (const auto stored = ReadLayout(ReadSetting(kLayoutKey, ""))) panes->setLayout(*stored);
  });
  panes->activate(BackupRunning ? kBackupPane : kProfilesPane);

  site->onExit = [this] { tmrEndProgram.Start(kTmrEndProgram); };
  settingsForm->onResetLayout = [this] { panes->resetLayout(); };
  process->onProgress = [this](const auto& progress) { onProgress(progress); };
  process->onFinished = [this](const auto& outcome) { onFinished(outcome); };
}

void frmMain::createTray() {
  picNotify_ = new wxStaticBitmap(this, wxID_ANY, Picture("icons/tray"), wxDefaultPosition, wxDefaultSize, 0,
                                  "picNotify");
  picNotify_->Hide();
  tray_ = std::make_unique<CTray>();
  tray_->SetHost(picNotify_);
  tray_->SetTip(kTitle);
  tray_->LButtonDblClk = [this] { boxes_.any() ? Raise() : restore(); };
  tray_->RButtonUp = [this] { boxes_.any() ? Raise() : showTrayMenu(); };
  tray_->Show();
}

void frmMain::setAutostart() {
  std::string problem;
  try {
    mAutoRun::SetAutoRun(settings.AutoStartUp == 1 ? mAutoRun::Mode::always : mAutoRun::Mode::off);
  } catch (const std::exception& error) {
    problem = error.what();
  }
  settingsForm->showAutostartProblem(problem);
}

void frmMain::showTrayMenu() {
  wxMenu mnuTrayPopup;
  const int mnuTrayShow = mnuTrayPopup.Append(wxID_ANY, "Show Window")->GetId();
  mnuTrayPopup.AppendSeparator();
  const int mnuTrayHide = mnuTrayPopup.Append(wxID_ANY, "Hide Window")->GetId();
  mnuTrayPopup.AppendSeparator();
  const int mnuTrayExit = mnuTrayPopup.Append(wxID_ANY, "&Exit")->GetId();
  mnuTrayPopup.Bind(wxEVT_MENU, [&](wxCommandEvent& event) {
    if (event.GetId() == mnuTrayShow) restore();
    if (event.GetId() == mnuTrayHide) hide();
    if (event.GetId() == mnuTrayExit) ExitRoutine();
  });
  tray_->popUp(mnuTrayPopup);
}

void frmMain::restore() {
  if (ending_) return;
  if (IsIconized()) Iconize(false);
  showAtItsPlace();
  Raise();
  site->wake();
  process->wake();
  settingsForm->wake();
}

/// Some window managers place a window that appears as they like, also one that has been there before. The
/// first move after the showing tells; it is answered with the place that the window is to have.
void frmMain::showAtItsPlace() {
  if (IsShown()) return;
  shownAt_ = GetPosition();
  place_ = shownAt_;
  AnimateWindow(this, kSlide, false);
}

void frmMain::onMove(wxMoveEvent& event) {
  event.Skip();
  if (!place_) return;
  const wxPoint place = *std::exchange(place_, std::nullopt);
  if (GetPosition() != place) Move(place);
}

void frmMain::hide() {
  if (CTray::isAvailable()) {
    AnimateWindow(this, kSlide, true);
  } else {
    Iconize();
  }
}

/// A window that is hidden in a tray which has gone for good would be lost.
void frmMain::stayReachable() {
  if (ending_ || IsShown() || CTray::isAvailable()) return;
  Iconize();
  Show();
}

void frmMain::onClose(wxCloseEvent& event) {
  if (!event.CanVeto()) {
    ExitRoutine();
    return;
  }
  event.Veto();
  hide();
  tray_->Show();
}

void frmMain::onProgress(const frmProcess::Progress& progress) {
  tray_->SetTip(RunTip(kTitle, progress.profile, progress.percent));
  ShowTaskbarProgress(*this, progress.percent);
}

void frmMain::onFinished(const frmProcess::Outcome& outcome) {
  tray_->SetTip(kTitle);
  ShowTaskbarProgress(*this, -1);
  NotifyRunEnded(this, kTitle, RunNotice(outcome.results, outcome.stopped, outcome.files));
}

void frmMain::ExitRoutine() {
  if (ending_) return;
  ending_ = true;
  const bool minimised = IsIconized();
  if (!minimised) notePlacement();
  Hide();
  tray_->Remove();
  Guarded([&] {
    if (minimised) return;
    const auto write = [](const char* key, double twips) {
      WriteSetting(key, std::to_string(std::lround(twips)));
    };
    write("MainLeft", settings.MainLeft);
    write("MainTop", settings.MainTop);
    write("MainWidth", settings.MainWidth);
    write("MainHeight", settings.MainHeight);
  });
  Guarded([&] { WriteSetting(kLayoutKey, WriteLayout(panes->layout())); });
  TimerMain.Stop();
  tmrHide.Stop();
  tmrEndProgram.Stop();
  pump_.endProgram();
  site->unload();
  process->unload();
  settingsForm->unload();
  tmrDestroy_.Start(kDestroyEvery);
}

/// The routine may have been called from inside a run's pump or from the tray's menu: both have to be off the
/// stack, which takes them no longer than one turn.
void frmMain::destroyWhenIdle() {
  if (process->active() || tray_->handling() || boxes_.any()) return;
  tmrDestroy_.Stop();
  Destroy();
}

}  // namespace quillmoor

#include "shell/frmMain.h"

#include <wx/app.h>
#include <wx/display.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>

#include <cmath>
#include <exception>
#include <string>
#include <vector>

#include "base/ErrorGuard.h"
#include "connectivity/modProcessPriority.h"
#include "controls/Pictures.h"
#include "controls/UserHoldsEventLoop.h"
#include "engine/BackupRunning.h"
#include "engine/mGeneral.h"
#include "platform/network/NetworkAlive.h"
#include "platform/system/Notices.h"
#include "profiles/SettingWriter.h"
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
constexpr int kDestroyEvery = 10;  // milliseconds between attempts to destroy the window

/// The only window animation.
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

frmMain::frmMain() : network(IsNetworkAlive), profilesFile(ProfilesFilePath()) {
  // A notice may arrive on the browser's thread, while a setting is being stored, and before there is a form
  // to show it.
  SetNoticeSink([this](const std::string& line) {
    CallAfter([this, line] {
      if (process) process->reportError(line);
    });
  });
}

frmMain::~frmMain() {
  SetNoticeSink({});
  wxTheApp->Unbind(wxEVT_QUERY_END_SESSION, &frmMain::onQueryEndSession, this);
  wxTheApp->Unbind(wxEVT_END_SESSION, &frmMain::onEndSession, this);
  if (panes) panes->SetEvtHandlerEnabled(false);
}

bool frmMain::Initialise() {
  instance_ = std::make_unique<SingleInstance>(SingleInstance::Lock::desktop);
  if (!instance_->anotherIsRunning()) return true;
  wxMessageBox("Program already running, Click the program icon in the Taskbar. ", kTitle,
               wxOK | wxICON_EXCLAMATION);
  return false;
}

void frmMain::Load() {
  // Every timer tick ends with idle processing, which no window here needs.
  wxIdleEvent::SetMode(wxIDLE_PROCESS_SPECIFIED);
  wxUpdateUIEvent::SetMode(wxUPDATE_UI_PROCESS_SPECIFIED);
  std::vector<std::string> notes;
  settings = LoadApplicationSettings(&notes);
  // The position is set at creation, since some window managers ignore a later move.
  pixelsPerInch_ = FromDIP(kPlainPixelsPerInch * 100) / 100.0;
  const PixelRect stored = StoredPlacement(settings, pixelsPerInch_);
  // The default position was not chosen by the user and may not fit a small screen.
  const bool chosen = stored != StoredPlacement({}, pixelsPerInch_);
  const PixelRect window = (chosen ? BroughtOntoScreen : WhollyOnScreen)(stored, screens());
  Create(nullptr, wxID_ANY, kTitle, {window.left, window.top}, {window.width, window.height},
         wxDEFAULT_FRAME_STYLE, "frmMain");
  SetMinSize(FromDIP(wxSize(360, 340)));
  SetIcons(ApplicationIcon());
  services_ = std::make_unique<MachineServices>(settings, profilesFile, [this] { pump_.turn(); });
  services_->network = network;
  services_->now = now;
  scheduler_ = std::make_unique<Scheduler>(settings, now, [this] { process->startBackup(); });
  scheduler_->mayStart = [this] { return services_->reserveRun(); };
  scheduler_->onMissed = [this] { onMissed(); };
  createPanes();
  for (const std::string& note : notes) process->reportError(note);
  createTray();
  modProcessPriority::SetPriority(0, 0, settings.ProcessPriority);
  setAutostart();

  Bind(wxEVT_CLOSE_WINDOW, &frmMain::onClose, this);
  Bind(wxEVT_MOVE, &frmMain::onMove, this);
  Bind(wxEVT_ICONIZE, [this](wxIconizeEvent& event) {
    event.Skip();
    if (!event.IsIconized()) wakeForms();
  });
  wxTheApp->Bind(wxEVT_QUERY_END_SESSION, &frmMain::onQueryEndSession, this);
  wxTheApp->Bind(wxEVT_END_SESSION, &frmMain::onEndSession, this);
  TimerMain.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    scheduler_->tick();
    stayReachable();
  });
  tmrHide.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    if (boxes_.any()) return;  // the dialog would stay without its window
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

void frmMain::savePlacement(const wxRect& window) {
  NotePlacement(settings, {window.x, window.y, window.width, window.height}, pixelsPerInch_);
  Guarded([&] {
    const auto write = [](const char* key, double twips) {
      WriteSetting(key, std::to_string(std::lround(twips)));
    };
    write("MainLeft", settings.MainLeft);
    write("MainTop", settings.MainTop);
    write("MainWidth", settings.MainWidth);
    write("MainHeight", settings.MainHeight);
  });
}

void frmMain::createPanes() {
  panes = new DockingPanes(this);
  auto* const all = new wxBoxSizer(wxVERTICAL);
  all->Add(panes, wxSizerFlags(1).Expand());
  SetSizer(all);

  site = new frmSite(panes, settings, services_->profilesFile);
  process = new frmProcess(panes, *services_, pump_);
  // Its dial-up component gets no pump: events handled during a tick could end the program.
  settingsForm = new frmSettings(
      panes, {settings, services_->network, now, scheduler_->ScheduleDays(), MakeDialUp(Pump())});
  options = new frmOptions(panes, settings);
  panes->addPane(kProfilesPane, site);
  panes->addPane(kBackupPane, process);
  panes->addPane(kSettingsPane, settingsForm);
  panes->addPane(kOptionsPane, options);
  panes->addPane(kHelpPane, new frmHelp(panes));
  Guarded([&] {
    if (const auto stored = ReadLayout(ReadSetting(kLayoutKey, ""))) panes->setLayout(*stored);
  });
  panes->activate(BackupRunning() ? kBackupPane : kProfilesPane);

  site->onExit = [this] { tmrEndProgram.Start(kTmrEndProgram); };
  settingsForm->onResetLayout = [this] { panes->resetLayout(); };
  process->mustWait = [this] { return boxes_.any() || tray_->handling() || UserHoldsEventLoop(); };
  process->onWaiting = [this] {
    Notify(this, kTitle, "A backup is due. It starts when the open dialog, list or menu is closed.");
  };
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
  tray_->LButtonDblClk = [this] { boxes_.any() ? raiseDialog() : restore(); };
  tray_->RButtonUp = [this] { boxes_.any() ? raiseDialog() : tray_->popUp(*mnuTrayPopup()); };
  tray_->Show();
}

void frmMain::setAutostart() {
  std::string problem;
  try {
    mAutoRun::SetAutoRun(settings.AutoStartUp == 1 ? mAutoRun::Mode::always : mAutoRun::Mode::off);
  } catch (const std::exception& error) {
    problem = StorageFailure(error);
  }
  settingsForm->showAutostartProblem(problem);
}

std::unique_ptr<wxMenu> frmMain::mnuTrayPopup() {
  auto menu = std::make_unique<wxMenu>();
  const int mnuTrayShow = menu->Append(wxID_ANY, "Show Window")->GetId();
  menu->AppendSeparator();
  const int mnuTrayHide = menu->Append(wxID_ANY, "Hide Window")->GetId();
  menu->AppendSeparator();
  const int mnuTrayExit = menu->Append(wxID_ANY, "&Exit")->GetId();
  menu->Bind(wxEVT_MENU, [=, this](wxCommandEvent& event) {
    if (event.GetId() == mnuTrayShow) restore();
    if (event.GetId() == mnuTrayHide) hide();
    if (event.GetId() == mnuTrayExit) ExitRoutine();
  });
  return menu;
}

void frmMain::raiseDialog() {
  if (!IsShown() || IsIconized()) restore();
  boxes_.last()->Raise();
}

void frmMain::restore() {
  if (ending_) return;
  if (IsIconized()) Iconize(false);
  showAtItsPlace();
  Raise();
  wakeForms();
}

/// The forms' timers rest while the window is hidden.
void frmMain::wakeForms() {
  site->wake();
  process->wake();
  settingsForm->wake();
}

/// Some window managers choose the position of a window that is shown, even if it was shown before. Such a
/// move follows at once, and onMove undoes it; later moves are the user's.
void frmMain::showAtItsPlace() {
  if (IsShown()) return;
  shownAt_ = GetPosition();
  AnimateWindow(this, kSlide, false);
  tmrPlace.StartOnce(kTmrPlace);
}

void frmMain::onMove(wxMoveEvent& event) {
  event.Skip();
  if (!tmrPlace.IsRunning() || IsMaximized() || IsIconized()) return;
  if (GetPosition() == shownAt_) return;
  tmrPlace.Stop();
  Move(shownAt_);
}

void frmMain::hide() {
  if (CTray::isAvailable()) {
    AnimateWindow(this, kSlide, true);
  } else {
    Iconize();
  }
}

/// A window hidden in a tray that has disappeared could not be reached.
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

/// Does not delay the end of the session: there is nothing to ask, and a run leaves only complete files.
void frmMain::onQueryEndSession(wxCloseEvent&) {}

void frmMain::onEndSession(wxCloseEvent&) {
  ExitRoutine();
}

void frmMain::onProgress(const frmProcess::Progress& progress) {
  tray_->SetTip(RunTip(kTitle, progress.profile, progress.percent));
  ShowTaskbarProgress(*this, progress.percent);
}

void frmMain::onFinished(const frmProcess::Outcome& outcome) {
  tray_->SetTip(kTitle);
  ShowTaskbarProgress(*this, -1);
  Notify(this, kTitle,
         outcome.refused ? "Another backup run is in progress. This one was not started."
                         : RunNotice(outcome.results, outcome.stopped, outcome.files));
}

void frmMain::onMissed() {
  const std::string text = "The scheduled run of " + ReportTimeText(now()).substr(11) +
                           " has not started: another backup run is in progress.";
  process->showNotice(text);
  Notify(this, kTitle, text);
}

void frmMain::ExitRoutine() {
  if (ending_) return;
  ending_ = true;
  tmrPlace.Stop();
  const bool minimised = IsIconized();
  const wxRect window = GetRect();
  Hide();
  tray_->Remove();
  if (!minimised) savePlacement(window);
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

/// ExitRoutine may have been called from inside a run's pump or the tray's menu; both must have left the
/// stack first.
void frmMain::destroyWhenIdle() {
  if (process->active() || tray_->handling() || boxes_.any()) return;
  tmrDestroy_.Stop();
  Destroy();
}

}  // namespace quillmoor

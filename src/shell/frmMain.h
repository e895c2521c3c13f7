// The main window: starts the program and ends it, and lives in the notification area in between.
#pragma once

#include <wx/dialog.h>
#include <wx/frame.h>
#include <wx/menu.h>
#include <wx/modalhook.h>
#include <wx/statbmp.h>
#include <wx/timer.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "controls/EventPump.h"
#include "engine/MachineServices.h"
#include "engine/frmProcess.h"
#include "platform/files/SingleInstance.h"
#include "platform/system/LocalTime.h"
#include "profiles/ApplicationSettings.h"
#include "profiles/frmOptions.h"
#include "profiles/frmSettings.h"
#include "profiles/frmSite.h"
#include "shell/CTray.h"
#include "shell/DockingPanes.h"
#include "shell/Scheduler.h"

namespace quillmoor {

class frmMain : public wxFrame {
 public:
  /// Makes the object, to which the program's notices (platform/system/Notices.h) go from now on.
  frmMain();
  ~frmMain() override;

  /// Tells the user and returns false when another copy of the program is running; then nothing may follow
  /// but the end of the process.
  bool Initialise();

  /// Everything up to the window that is ready to be shown, in the order of the start-up. Raises what reading
  /// the settings raises (see LoadApplicationSettings), with nothing changed.
  void Load();

  /// The one way out: hides the window, removes the tray icon, saves the placement unless minimised, unloads
  /// the forms and destroys the window. Asks nobody and does not wait for a run, which its pump unwinds. The
  /// end of the user's session takes it too.
  void ExitRoutine();

  /// Shows the window and brings it to the front.
  void restore();
  /// Into the tray, or minimised where there is none.
  void hide();

  /// Where the window was to stand when it was shown last.
  wxPoint placement() const { return shownAt_; }

  /// These may be replaced before `Load`.
  std::function<LocalDateTime()> now = LocalNow;
  NetworkSource network;
  std::string profilesFile;

  // Milliseconds.
  static constexpr int kTimerMain = 1000;
  static constexpr int kTmrHide = 1500;
  static constexpr int kTmrEndProgram = 50;
  static constexpr int kTmrPlace = 300;

  // The forms, from `Load` on.
  frmSite* site = nullptr;
  frmProcess* process = nullptr;
  frmSettings* settingsForm = nullptr;
  frmOptions* options = nullptr;
  DockingPanes* panes = nullptr;

  ApplicationSettings settings;
  CTray& tray() { return *tray_; }
  wxTimer TimerMain;
  wxTimer tmrHide;
  wxTimer tmrEndProgram;
  wxTimer tmrPlace;  // runs while the window manager's own idea of a place is awaited

  /// The menu of the tray icon.
  std::unique_ptr<wxMenu> mnuTrayPopup();

 private:
  /// Boxes that wait for an answer. While one does, the tray leads to it and to nothing else.
  class OpenBoxes : public wxModalDialogHook {
   public:
    OpenBoxes() { Register(); }
    ~OpenBoxes() override { Unregister(); }
    bool any() const { return !open_.empty(); }
    /// The one in front of all others.
    wxDialog* last() const { return open_.back(); }

   protected:
    int Enter(wxDialog* box) override {
      open_.push_back(box);
      return wxID_NONE;
    }
    void Exit(wxDialog*) override { open_.pop_back(); }

   private:
    std::vector<wxDialog*> open_;
  };

  void createPanes();
  void createTray();
  void setAutostart();
  void savePlacement(const wxRect& window);
  void leadToBox();
  void wakeForms();
  void showAtItsPlace();
  void onMove(wxMoveEvent& event);
  void onClose(wxCloseEvent& event);
  void onQueryEndSession(wxCloseEvent& event);
  void onEndSession(wxCloseEvent& event);
  void onProgress(const frmProcess::Progress& progress);
  void onFinished(const frmProcess::Outcome& outcome);
  void onMissed();
  void stayReachable();
  void destroyWhenIdle();

  EventPump pump_;
  OpenBoxes boxes_;
  std::unique_ptr<SingleInstance> instance_;
  std::unique_ptr<MachineServices> services_;
  std::unique_ptr<Scheduler> scheduler_;
  std::unique_ptr<CTray> tray_;
  wxStaticBitmap* picNotify_ = nullptr;
  wxTimer tmrDestroy_;
  wxPoint shownAt_;
  double pixelsPerInch_ = 0;  // that the placement was read with, and so is stored with, on whatever screen
  bool ending_ = false;
};

}  // namespace quillmoor

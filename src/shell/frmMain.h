// The main window: starts and ends the program, and hides in the notification area in between.
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
  /// Creates the object, not yet its window, and makes it the receiver of the program's notices
  /// (platform/system/Notices.h).
  frmMain();
  ~frmMain() override;

  /// False, after a message to the user, when another instance of the program is running; the process must
  /// then end.
  bool Initialise();

  /// Performs the start-up and creates the window, ready to be shown. Raises what LoadApplicationSettings
  /// raises, with nothing changed.
  void Load();

  /// The only way to end the program, also used at the end of the user's session: hides the window, removes
  /// the tray icon, saves the placement unless minimised, unloads the forms and destroys the window. Does not
  /// ask the user, and does not wait for a run, which the pump unwinds.
  void ExitRoutine();

  /// Shows the window and brings it to the front.
  void restore();
  /// Hides the window in the tray, or minimises it without a tray.
  void hide();

  /// The position requested when the window was last shown.
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

  // The forms, available after `Load`.
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
  wxTimer tmrPlace;  // runs while the window manager may still move the shown window

  /// The menu of the tray icon.
  std::unique_ptr<wxMenu> mnuTrayPopup();

 private:
  /// The open modal dialogs. While there is one, the tray icon only brings it to the front.
  class OpenBoxes : public wxModalDialogHook {
   public:
    OpenBoxes() { Register(); }
    ~OpenBoxes() override { Unregister(); }
    bool any() const { return !open_.empty(); }
    /// The frontmost dialog.
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
  void raiseDialog();
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
  double pixelsPerInch_ = 0;  // used to read and to store the placement, whatever the screen
  bool ending_ = false;
};

}  // namespace quillmoor

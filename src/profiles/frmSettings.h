// The settings: the schedule, the connection, and how the program behaves on this machine.
#pragma once

#include <wx/choice.h>
#include <wx/listbox.h>
#include <wx/slider.h>
#include <wx/timectrl.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "connectivity/DialUp.h"
#include "connectivity/mNetworkConnection.h"
#include "controls/ScrolledForm.h"
#include "controls/SeenTimer.h"
#include "platform/system/LocalTime.h"
#include "profiles/DialUpPanel.h"
#include "profiles/SettingsEditor.h"
#include "profiles/UserPrompts.h"

namespace quillmoor {

class frmSettings : public ScrolledForm {
 public:
  /// What the form works with; everything referred to must outlive it.
  struct Sources {
    ApplicationSettings& settings;
    const NetworkSource& network;
    std::function<LocalDateTime()> now;
    std::array<std::int32_t, 8> ScheduleDays;  // as read at start-up
    std::unique_ptr<DialUp> dialUp;            // the form's own component; the run has another
    std::unique_ptr<UserPrompts> prompts{};    // without, the form shows its own windows
  };
  /// Raises RegistryStoreError when the store cannot be read.
  frmSettings(wxWindow* parent, Sources sources);

  /// Why the autostart entry could not be set; "" when it was.
  void showAutostartProblem(const std::string& problem);

  /// The window is shown again.
  void wake();
  /// Stops the timers and runs the editor's save step.
  void unload();

  std::function<void()> onResetLayout;

  // Milliseconds.
  static constexpr int kTmrOnlineStatus = 100;
  static constexpr int kTmrLANstatus = 500;
  static constexpr int kTmrTimeNow = 500;

  wxTimePickerCtrl* dtpStartTime;
  wxStaticText* lblTimeNow;
  std::array<wxCheckBox*, 8> chkDay{};  // 1 = Sunday .. 7 = Saturday
  wxStaticText* lblSchedule;
  wxStaticText* lblLANstatus;
  wxTextCtrl* txtRetryCount;
  wxTextCtrl* txtConnectionDelay;
  wxTextCtrl* txtLoginAttempts;
  wxChoice* cboConnections;
  wxCheckBox* chkAutoDial;
  wxCheckBox* chkAutoHangUp;
  wxStaticText* lblRasStatus;
  wxButton* cmdDial;
  wxButton* cmdHangUp;
  wxListBox* lstExtensions;
  wxTextCtrl* txtExtension;
  wxButton* cmdAddExtension;
  wxButton* cmdRemoveExtension;
  wxButton* cmdRestoreExtensions;
  wxCheckBox* chkAutoStartUp;
  wxStaticText* lblAutoStartNote;
  wxStaticText* lblRetryCountNote;
  wxStaticText* lblConnectionDelayNote;
  wxStaticText* lblLoginAttemptsNote;
  wxSlider* SliderlPriority;
  wxStaticText* lblPriority;
  wxButton* cmdResetLayout;
  SeenTimer tmrOnlineStatus;
  SeenTimer tmrLANstatus;
  SeenTimer tmrTimeNow;

 private:
  UserPrompts& prompts();
  void layOutSchedule();
  void layOutConnection();
  void layOutDialUp();
  void layOutExtensions();
  void layOutProgram();
  wxStaticText* status(const char* name);
  void fillConnections();
  void refillConnections();
  void connect();
  void startTimers();
  /// Changes the editor for a control's event, and shows the result.
  template <class Event>
  void on(wxWindow* control, const wxEventTypeTag<Event>& event, std::function<void()> change);
  void setStartTime();
  void addExtension();
  void removeExtension();
  void show();
  void showStartTime();
  void showExtensions();
  void showPriority();
  void showDialUp();
  void tmrOnlineStatus_Timer();
  void tmrLANstatus_Timer();
  void tmrTimeNow_Timer();

  Sources sources_;
  DialUpPanel dialUp_;
  SettingsEditor editor_;
};

}  // namespace quillmoor

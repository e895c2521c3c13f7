// The settings in force: the network, the clock and the schedule, the program itself.
#pragma once

#include <wx/button.h>
#include <wx/panel.h>
#include <wx/stattext.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "connectivity/DialUp.h"
#include "connectivity/DialUpPanel.h"
#include "connectivity/mNetworkConnection.h"
#include "controls/SeenTimer.h"
#include "platform/LocalTime.h"
#include "profiles/ApplicationSettings.h"

namespace quillmoor {

class frmSettings : public wxPanel {
 public:
  /// What the form asks; all must outlive it.
  struct Sources {
    ApplicationSettings& settings;
    const NetworkSource& network;
    std::function<LocalDateTime()> now;
    std::array<std::int32_t, 8> ScheduleDays;  // in force since the start
  };
  frmSettings(wxWindow* parent, Sources sources);

  /// Why the entry that starts the program with the user's session could not be set; "" when it was.
  void showAutostartProblem(const std::string& problem);

  /// The window is shown again.
  void wake();
  void unload();

  std::function<void()> onResetLayout;

  // Milliseconds.
  static constexpr int kTmrOnlineStatus = 100;
  static constexpr int kTmrLANstatus = 500;
  static constexpr int kTmrTimeNow = 500;

  wxStaticText* lblLANstatus;
  wxStaticText* lblRasStatus;
  wxStaticText* lblTimeNow;
  wxStaticText* lblSchedule;
  wxStaticText* lblPriority;
  wxStaticText* lblAutoStartUp;
  wxButton* cmdResetLayout;
  SeenTimer tmrOnlineStatus;
  SeenTimer tmrLANstatus;
  SeenTimer tmrTimeNow;

 private:
  void layOut();
  void tmrOnlineStatus_Timer();
  void tmrLANstatus_Timer();
  void tmrTimeNow_Timer();

  Sources sources_;
  /// The form's own component; the run has another.
  std::unique_ptr<DialUp> Ras1_;
  DialUpPanel dialUp_;
};

}  // namespace quillmoor

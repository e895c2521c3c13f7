// The backup form: starts and stops a run, and shows its progress.
#pragma once

#include <wx/bmpbndl.h>
#include <wx/button.h>
#include <wx/panel.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>
#include <wx/timer.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "controls/AnimationPlayer.h"
#include "controls/EventPump.h"
#include "controls/LogView.h"
#include "controls/ReportControl.h"
#include "controls/SeenTimer.h"
#include "controls/xpProgressBar.h"
#include "engine/LogText.h"
#include "engine/MachineServices.h"
#include "engine/RunController.h"
#include "engine/RunDisplay.h"

namespace quillmoor {

class frmProcess : public wxPanel, private RunDisplay {
 public:
  /// `services` and `pump` must outlive the form.
  frmProcess(wxWindow* parent, MachineServices& services, EventPump& pump);
  ~frmProcess() override;

  /// Starts `TimerStartBackup`, whose tick performs the run. For the scheduler.
  void startBackup();

  /// For closing: aborts the session and a web request, stops the animation and the timers. A run on the
  /// stack is unwound by the pump.
  void unload();

  /// Shows a line below the report until the next run begins or another notice replaces it; "" removes it.
  /// With `logLine` (see LogView::showLine) the button "Show" beside it jumps there.
  void showNotice(const std::string& text, std::optional<std::size_t> logLine = std::nullopt);

  /// Logs an error that does not belong to a run, and shows it below the report with the button "Show".
  void reportError(const std::string& line);

  /// To be called when the window is shown again.
  void wake() { tmrFtpStatus.wake(); }

  /// Whether a run is on the stack: the form must then not be destroyed.
  bool active() const { return controller_->active(); }

  /// The progress of a run, for display outside this form. `profile` is the current one.
  struct Progress {
    std::string profile;
    int percent = 0;
  };
  /// `onProgress` is called when that changes, at most a few times a second; `onFinished` at the end of a
  /// run, with its results, whether it was stopped, and the number of its files. Each may be empty.
  std::function<void(const Progress&)> onProgress;
  struct Outcome {
    std::vector<ProfileResult> results;
    bool stopped = false;
    double files = 0;
    bool refused = false;  // another process was running a backup
  };
  std::function<void(const Outcome&)> onFinished;

  /// No run starts while this returns true: a run begun inside the event loop of a dialog or menu would block
  /// that until the run's end. May be empty.
  std::function<bool()> mustWait;
  /// Called once when `mustWait` has delayed a run for a while: the user may be away. May be empty.
  std::function<void()> onWaiting;

  // Milliseconds.
  static constexpr int kTimerStartBackup = 100;
  static constexpr int kReportWaitingAfter = 300;  // ticks of TimerStartBackup
  static constexpr int kTmrFtpStatus = 100;
  static constexpr int kTmrOnlineLogin = 5;

  // The controls; public for the form's tests.
  wxButton* cmdStart;
  wxButton* cmdStop;
  LogView* rtfLog;
  xpProgressBar* pbProgress;
  wxStaticText* lblFile;
  wxStaticText* lblFileSize;
  wxStaticText* lblRate;
  AnimationPlayer* Animation1;
  ReportControl* wndReportControl;
  wxStaticText* lblNotice;
  wxButton* cmdShowFailure;
  wxStaticBitmap* picFtpConnected;
  wxStaticBitmap* picFtpDisonnected;
  wxTimer TimerStartBackup;
  /// Deliberate: never started and without a handler.
  wxTimer tmrOnlineLogin;
  SeenTimer tmrFtpStatus;

  const LogText& logText() const { return log_; }

 private:
  wxSizer* layOutHead();
  wxSizer* layOutFigures();
  wxSizer* layOutNotice();
  void layOut();

  void cmdStart_Click();
  void cmdStop_Click();
  void TimerStartBackup_Timer();
  void tmrFtpStatus_Timer();
  void cmdShowFailure_Click();
  void showFailures(const std::vector<ProfileResult>& results);
  void reopenAnimation();
  void showFigures();
  void figuresChanged();
  Outcome outcome(std::vector<ProfileResult> results) const;

  // RunDisplay
  std::size_t logLength() const override { return log_.length(); }
  void trimLog(std::size_t characters) override { log_.trim(characters); }
  void setLogColour(Colour colour) override;
  void insertLogText(std::string_view text) override;
  void showCurrentFile(const std::string& remoteFile) override;
  void showProgress(int percent) override;
  void showRate(const std::string& text) override;
  void showFileSize(const std::string& text) override;
  std::size_t addReportRow() override;
  void setReportItem(std::size_t row, ReportColumn column, const std::string& text) override;
  void setReportColour(std::size_t row, ReportColumn column, Colour colour) override;
  void repopulateReport() override { figuresChanged(); }
  void showBusyCursor(bool busy) override;
  void showRunning(bool running) override;

  /// The latest figures of the run. The controls are updated a few times a second, not at every change.
  struct Figures {
    std::string file, size, rate;
    int percent = 0;
    bool changed = false;
  };

  MachineServices& services_;
  EventPump& pump_;
  LogText log_;
  Figures figures_;
  wxTimer tmrFigures_;
  std::unique_ptr<RunController> controller_;
  std::size_t firstRow_ = 0;     // first report row of the current run
  std::size_t firstLine_ = 0;    // its first log line, numbered as in LogText
  std::size_t failureLine_ = 0;  // log line that cmdShowFailure jumps to
  bool stopConfirmed_ = false;
  bool asking_ = false;
  int waitingTicks_ = 0;        // ticks that a due run has waited
  bool startHadFocus_ = false;  // when cmdStart was clicked
};

}  // namespace quillmoor

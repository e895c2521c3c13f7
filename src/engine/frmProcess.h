// The backup form: starts and stops a run, and shows what it does.
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

  /// Arms `TimerStartBackup`, from whose tick the run executes. For the scheduler.
  void startBackup();

  /// Form unload: aborts the session and a web request, stops the animation and the timers. A run that is on
  /// the stack is left to the pump, which unwinds it.
  void unload();

  /// Shows a line under the report until the next run begins or another one takes its place; "" takes it
  /// away. With `logLine` (see LogView::showLine) "Show" beside it leads there.
  void showNotice(const std::string& text, std::optional<std::size_t> logLine = std::nullopt);

  /// Writes a line of the program's own into the log, and shows it under the report, with "Show" beside it.
  void tell(const std::string& line);

  /// The window is shown again.
  void wake() { tmrFtpStatus.wake(); }

  /// A run is on the stack: the form must not be destroyed.
  bool active() const { return controller_->active(); }

  /// What a run has done so far, for those who show it elsewhere. `profile` is the one being run.
  struct Progress {
    std::string profile;
    int percent = 0;
  };
  /// Called when that changes, some times a second at most; and at the end of a run with its results, whether
  /// it was stopped, and the number of its files. Any may be empty.
  std::function<void(const Progress&)> onProgress;
  struct Outcome {
    std::vector<ProfileResult> results;
    bool stopped = false;
    double files = 0;
    bool refused = false;  // another program's run was going on
  };
  std::function<void(const Outcome&)> onFinished;

  /// While it says so no run starts: one that began inside a box's or a menu's event loop would keep it from
  /// being answered until the run's end. May be empty.
  std::function<bool()> mustWait;
  /// Called once when a run has waited for that for a while: the user may have gone. May be empty.
  std::function<void()> onWaiting;

  // Milliseconds.
  static constexpr int kTimerStartBackup = 100;
  static constexpr int kTellWaitingAfter = 300;  // ticks of it
  static constexpr int kTmrFtpStatus = 100;
  static constexpr int kTmrOnlineLogin = 5;

  // The controls, for the form's tests.
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
  /// Set going and stopped by nobody, and without anything to do at a tick: it is kept inert.
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

  /// What the run has said since it was last shown. Texts and bars are set some times a second, not at every
  /// word of the run.
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
  std::size_t firstRow_ = 0;     // of the report, for the run in progress
  std::size_t firstLine_ = 0;    // of the log, for the same, as LogText counts
  std::size_t failureLine_ = 0;  // that cmdShowFailure leads to
  bool stopConfirmed_ = false;
  bool asking_ = false;
  int waitingTicks_ = 0;        // of a run that is due
  bool startHadFocus_ = false;  // when it was clicked
};

}  // namespace quillmoor
